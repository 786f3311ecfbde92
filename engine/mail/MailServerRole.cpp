#include "MailServerRole.h"
#include "SmtpListener.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "store/MessageMime.h"
#include "store/clsMessageStore.h"

#include <QEventLoop>
#include <QTimer>

namespace {

QString ProcessHeaders(const QString &AccountID, const QString &UID)
{
    return QStringLiteral("Postvane-AccountID: ") + AccountID + QStringLiteral("\r\nPostvane-Source: SMTP\r\nPostvane-UID: ")
        + UID + QStringLiteral("\r\n");
}

} // namespace

MailServerRole::MailServerRole(ConfigurationCopy::Loader Load)
    : Role(QStringLiteral("Mail Server"), QStringLiteral("SMTP.LOG"), QStringLiteral("Mail Server"))
    , m_load(std::move(Load))
{
    Role.Body = [this](int) { Run(); };
}

MailServerRole::~MailServerRole()
{
    Role.Stop();
}

void MailServerRole::Run()
{
    if (!Global.Settings.MailServerListenIncoming) {
        Role.Log.Add(QStringLiteral("The mail server does not listen: listening for incoming mail is switched off."));
        return;
    }
    ConfigurationCopy configuration(m_load);
    clsMessageStore store;
    if (!configuration.Refresh() || !store.OpenMessageStore()) {
        Role.LogKeptErrors();
        Role.Log.Add(QStringLiteral("* The mail server cannot read the configuration or open the message store: ")
                     + store.LastError);
        return;
    }
    m_store = &store;
    SmtpOptions options = SmtpOptions::FromSettings();
    options.Tls = Tls;
    m_hostName = options.HostName;
    SmtpListener listener(options);
    listener.Authenticate = Authenticate;
    listener.Log = [this](const QString &text) { Role.Log.Add(text); };
    listener.Deliver = [this](InboundMail mail, SmtpListener::DoneFunction done) {
        m_pending.append({std::move(mail), std::move(done)});
        if (!m_commitDue) {
            m_commitDue = true;
            QTimer::singleShot(0, [this] { Commit(); });
        }
    };
    if (Listen(listener)) {
        QEventLoop loop;
        QTimer tick;
        // A change of the configuration in this process is read at the next
        // tick; one of another process within ConfigurationCopy::RereadAfter.
        QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
            if (Role.Stopping())
                loop.quit();
            else
                configuration.Refresh();
            Role.LogKeptErrors();
        });
        tick.start(250);
        loop.exec();
    }
    Commit();
    m_store = nullptr;
    Role.LogKeptErrors();
}

bool MailServerRole::Listen(SmtpListener &Listener)
{
    const auto &settings = Global.Settings;
    QHostAddress address(QHostAddress::Any);
    if (!settings.MailServerBindTo.trimmed().isEmpty() && !address.setAddress(settings.MailServerBindTo.trimmed())) {
        Role.Log.Add(QStringLiteral("* The mail server's address \"") + settings.MailServerBindTo
                     + QStringLiteral("\" is no IP address."));
        return false;
    }
    const QString where = address == QHostAddress::Any ? QStringLiteral("*") : address.toString();
    const quint16 port = quint16(settings.MailServerPort);
    const quint16 portSSL = quint16(settings.MailServerPortSSL);
    if (port) {
        m_port = Listener.Listen(address, port, false);
        Role.Log.Add(m_port ? QStringLiteral("Listening for mail on ") + where + u':' + QString::number(m_port)
                                  + (Listener.Options.HasTls() ? QStringLiteral(" (STARTTLS)") : QString())
                            : QStringLiteral("* The mail server cannot listen on ") + where + u':'
                                  + QString::number(port) + QStringLiteral(": ") + Listener.LastError);
    }
    if (portSSL) {
        m_portSSL = Listener.Listen(address, portSSL, true);
        Role.Log.Add(m_portSSL ? QStringLiteral("Listening for mail over TLS on ") + where + u':'
                                     + QString::number(m_portSSL)
                               : QStringLiteral("* The mail server cannot listen on ") + where + u':'
                                     + QString::number(portSSL) + QStringLiteral(": ") + Listener.LastError);
    }
    if (!port && !portSSL)
        Role.Log.Add(QStringLiteral("* The mail server has no port to listen on."));
    return m_port || m_portSSL;
}

// The messages that ended since the last commit go to the queue in one
// transaction; each is answered after it.
void MailServerRole::Commit()
{
    m_commitDue = false;
    if (m_pending.isEmpty())
        return;
    const QList<Pending> batch = std::move(m_pending);
    m_pending.clear();
    // Taken for writing at once: a transaction that reads first and writes
    // later could meet the processor's writes and fail where it can wait.
    const bool sqlite = m_store->Dialect == 99;
    QStringList ids;
    bool ok = m_store->ExecuteEQ(sqlite ? QStringLiteral("BEGIN IMMEDIATE") : QStringLiteral("BEGIN TRANSACTION")) >= 0;
    const bool begun = ok;
    for (const Pending &pending : batch) {
        QString id;
        ok = ok && Write(pending.Mail, id);
        ids << id;
    }
    ok = ok && m_store->ExecuteEQ(sqlite ? QStringLiteral("COMMIT") : QStringLiteral("COMMIT TRANSACTION")) >= 0;
    if (!ok) {
        const QString reason = m_store->LastError;
        if (begun)
            m_store->ExecuteEQ(sqlite ? QStringLiteral("ROLLBACK") : QStringLiteral("ROLLBACK TRANSACTION"));
        Role.LogKeptErrors();
        Role.Log.Add(QStringLiteral("* Messages could not be queued: ") + reason);
    }
    for (int n = 0; n < batch.size(); ++n) {
        const InboundMail &mail = batch.at(n).Mail;
        if (ok)
            Role.Log.Add(QStringLiteral("Message ") + ids.at(n) + QStringLiteral(" from <") + mail.MailFrom
                         + QStringLiteral("> at ") + mail.Peer.toString() + QStringLiteral(" for ")
                         + [&] {
                               QStringList to;
                               for (const InboundRecipient &recipient : mail.Recipients)
                                   to << recipient.Address;
                               return to.join(QStringLiteral(", "));
                           }()
                         + QStringLiteral(" accepted, ") + QString::number(mail.Data.size()) + QStringLiteral(" bytes"));
        batch.at(n).Done(ok, ok ? QStringLiteral("250 2.0.0 Ok: queued as ") + ids.at(n)
                                : QStringLiteral("451 4.3.0 Temporary failure, try again later"));
    }
    if (ok && Queued)
        Queued();
}

bool MailServerRole::Write(const InboundMail &Mail, QString &ID)
{
    ID = GUIDDigits();
    const QString uid = Mail.UID();
    const QString text = QString::fromUtf8(Mail.WithReceivedLine(m_hostName, ID));
    for (const QString &account : Mail.Accounts()) {
        if (!m_store->IsNewMessage(account, QStringLiteral("SMTP"), uid))
            continue; // sent again: the first one is kept
        if (m_store->AddEMLToEdgeQueue(account, QStringLiteral("SMTP"), uid, Mail.Received,
                                       ProcessHeaders(account, uid) + text)
            <= 0)
            return false;
    }
    const QStringList relayed = Mail.RelayedAddresses();
    if (relayed.isEmpty())
        return true;
    OutboxMessage outgoing;
    outgoing.MailFrom = Mail.MailFrom;
    outgoing.MailTo = relayed.join(u',');
    outgoing.Subject = MimeHeaderValue(text.left(text.indexOf(QStringLiteral("\r\n\r\n")) + 2), QStringLiteral("Subject"));
    outgoing.ReferenceID = uid;
    outgoing.Mime = text;
    return m_store->AddToOutBox(outgoing) > 0;
}
