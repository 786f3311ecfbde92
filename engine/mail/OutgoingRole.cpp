#include "OutgoingRole.h"
#include "SmtpSender.h"
#include "actions/clsActionMSG.h"
#include "engine/actions/MessageActionRun.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "store/MessageMime.h"
#include "store/MimeMail.h"
#include "store/clsMessageStore.h"

#include <QDeadlineTimer>
#include <QMap>
#include <QRegularExpression>

namespace {

QStringList Recipients(const QString &MailTo)
{
    static const QRegularExpression separators(QStringLiteral("[,;]"));
    QStringList addresses;
    for (QString address : MailTo.split(separators, Qt::SkipEmptyParts)) {
        address = address.trimmed();
        if (address.startsWith(QStringLiteral("mailto:"), Qt::CaseInsensitive))
            address = address.mid(7);
        // "Name <address>" gives the address.
        const qsizetype open = address.lastIndexOf(u'<');
        if (open >= 0 && address.endsWith(u'>'))
            address = address.mid(open + 1, address.size() - open - 2).trimmed();
        if (!address.isEmpty())
            addresses << address;
    }
    return addresses;
}

QString FromAddress(const OutboxMessage &Message)
{
    if (!Message.MailFrom.trimmed().isEmpty())
        return Recipients(Message.MailFrom).value(0);
    const auto &settings = Global.Settings;
    return settings.DefaultFromAddress.isEmpty() ? settings.AdminEmail : settings.DefaultFromAddress;
}

// The other mail server a Message action chose for the mail (its header,
// which never leaves this server); an empty Host when there is none.
SmtpRelay ChosenRelay(const QString &Mime)
{
    SmtpRelay relay;
    const QString header = MimeHeaderValue(Mime, MessageActionRun::SendViaHeader());
    if (header.isEmpty())
        return relay;
    const clsActionMSG::Relay via = clsActionMSG::SplitSendVia(header);
    if (!via.Use || via.Server.isEmpty())
        return relay;
    relay.Host = via.Server;
    relay.Port = via.Port;
    relay.Encryption = via.Security;
    relay.User = via.User;
    relay.Password = DecryptText(via.Password);
    return relay;
}

} // namespace

OutgoingRole::OutgoingRole(ConfigurationCopy::Loader Load, int Threads)
    : Role(QStringLiteral("Outgoing Email"), QStringLiteral("SMTPCLIENT.LOG"), QStringLiteral("Outgoing Email"), Threads)
    , m_load(std::move(Load))
{
    Role.Body = [this](int) { Run(); };
}

OutgoingRole::~OutgoingRole()
{
    Role.Stop();
}

void OutgoingRole::Run()
{
    ConfigurationCopy configuration(m_load);
    clsMessageStore store;
    if (!configuration.Refresh() || !store.OpenMessageStore()) {
        Role.LogKeptErrors();
        Role.Log.Add(QStringLiteral("* The outgoing mail sender cannot read the configuration or open the message store: ")
                     + store.LastError);
        return;
    }
    SmtpSender sender;
    QDeadlineTimer lookForAbandoned(0);
    while (!Role.Stopping()) {
        configuration.Refresh();
        if (lookForAbandoned.hasExpired()) {
            store.ReturnTakenOutBox();
            lookForAbandoned.setRemainingTime(60000);
        }
        OutboxMessage message;
        if (store.GetOutBox(message))
            Deliver(store, sender, message);
        else
            Role.Idle(1000);
        Role.LogKeptErrors();
    }
}

void OutgoingRole::Deliver(clsMessageStore &Store, SmtpSender &Sender, const OutboxMessage &Message)
{
    const QStringList recipients = Recipients(Message.MailTo);
    const QString what = (Message.SMS ? QStringLiteral("SMS to ") : QStringLiteral("Message to ")) + Message.MailTo
        + QStringLiteral(" subject ") + Message.Subject;
    bool sent = false;
    if (Message.SMS) {
        Sender.Error = QStringLiteral("no SMS service is set up on this server");
        Sender.Permanent = true;
    } else if (recipients.isEmpty()) {
        Sender.Error = QStringLiteral("it has no recipient");
        Sender.Permanent = true;
    } else {
        sent = Send(Sender, Message, recipients);
    }
    if (sent) {
        Store.DeleteOutBox(Message.RecordNo);
        Role.Log.Add(what + QStringLiteral(" sent"));
        return;
    }
    if (Sender.Permanent || Message.Status >= MaxAttempts) {
        Store.DeleteOutBox(Message.RecordNo);
        Role.Log.Add(QStringLiteral("* ") + what + QStringLiteral(" given up after ") + QString::number(Message.Status)
                     + (Message.Status == 1 ? QStringLiteral(" attempt: ") : QStringLiteral(" attempts: ")) + Sender.Error);
        return;
    }
    const QDateTime next = QDateTime::currentDateTime().addSecs(RetryMinutes * 60);
    Store.ReturnOutBox(Message.RecordNo, Message.Status, next);
    Role.Log.Add(QStringLiteral("* ") + what + QStringLiteral(" not sent (attempt ") + QString::number(Message.Status)
                 + QStringLiteral("): ") + Sender.Error + QStringLiteral("; tried again at ")
                 + next.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
}

bool OutgoingRole::Send(SmtpSender &Sender, const OutboxMessage &Message, const QStringList &Recipients)
{
    const QByteArray mime = Message.Mime.toUtf8();
    const QString from = FromAddress(Message);
    const SmtpRelay chosen = ChosenRelay(Message.Mime);
    if (!chosen.Host.isEmpty()) {
        MimeMail mail;
        mail.LoadMime(mime);
        mail.RemoveHeader(MessageActionRun::SendViaHeader());
        return Sender.Send(chosen, from, Recipients, mail.GetMime());
    }
    const SmtpRelay smartHost = SmtpRelay::SmartHost();
    if (!smartHost.Host.isEmpty())
        return Sender.Send(smartHost, from, Recipients, mime);
    // Without a smart host: each domain's exchangers in turn, best first.
    QMap<QString, QStringList> byDomain;
    for (const QString &recipient : Recipients)
        byDomain[recipient.section(u'@', -1).toLower()] << recipient;
    for (auto it = byDomain.cbegin(); it != byDomain.cend(); ++it) {
        bool done = false;
        for (const QString &exchanger : SmtpSender::MailExchangers(it.key())) {
            SmtpRelay relay;
            relay.Host = exchanger;
            relay.TlsIfOffered = true;
            done = Sender.Send(relay, from, it.value(), mime);
            if (done || Sender.Permanent)
                break;
        }
        if (!done)
            return false;
    }
    return true;
}
