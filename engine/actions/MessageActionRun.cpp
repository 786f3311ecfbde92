#include "MessageActionRun.h"
#include "actions/clsActionForward.h"
#include "actions/clsActionMSG.h"
#include "actions/clsActionSMS.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/MimeMail.h"
#include "store/Tokens.h"
#include "store/clsMessage.h"
#include "store/clsMessageStore.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QRegularExpression>

namespace {

// Joins the non-empty address lists with ", ".
QString JoinAddresses(const QStringList &Lists)
{
    QStringList parts;
    for (const QString &list : Lists)
        if (!list.trimmed().isEmpty())
            parts << list.trimmed();
    return parts.join(QStringLiteral(", "));
}

QString Stamp(const QDateTime &When)
{
    return When.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

// The headers of an action's mail that say how it is to be read.
void AddMarks(MimeMail &Mail, const clsActionMSG &Action, const QString &From)
{
    if (Action.Importance >= clsActionMSG::HighImportance) {
        Mail.SetHeader(QStringLiteral("X-Priority"), QStringLiteral("1"));
        Mail.SetHeader(QStringLiteral("Importance"), QStringLiteral("High"));
    }
    static const QStringList sensitivities{QString(), QStringLiteral("Personal"), QStringLiteral("Private"),
                                           QStringLiteral("Company-Confidential")};
    const QString sensitivity = sensitivities.value(Action.Sensitivity);
    if (!sensitivity.isEmpty())
        Mail.SetHeader(QStringLiteral("Sensitivity"), sensitivity);
    if (Action.ReadReceipt)
        Mail.SetHeader(QStringLiteral("Disposition-Notification-To"), From);
    if (Action.DeliveryReceipt)
        Mail.SetHeader(QStringLiteral("Return-Receipt-To"), From);
    for (const auto &[name, value] : clsActionMSG::SplitHeaders(Action.CustomHeaders))
        Mail.AddHeader(name, MessageActionRun::HeaderText(value));
    clsActionMSG::Relay via = clsActionMSG::SplitSendVia(Action.SendVia);
    if (via.Use && !via.Server.isEmpty()) {
        via.Password = EncryptText(via.Password);
        Mail.SetHeader(MessageActionRun::SendViaHeader(), clsActionMSG::JoinSendVia(via));
    }
}

} // namespace

MessageActionRun::MessageActionRun(clsMessage &Message, const clsAccountTrigger &Trigger, clsMessageStore *Store,
                                   LogFunction Log)
    : m_message(Message), m_trigger(Trigger), m_store(Store), m_log(std::move(Log))
{
}

QString MessageActionRun::SenderAddress(const QString &From)
{
    if (!From.trimmed().isEmpty())
        return From.trimmed();
    const auto &settings = Global.Settings;
    return settings.DefaultFromAddress.trimmed().isEmpty() ? settings.AdminEmail.trimmed()
                                                           : settings.DefaultFromAddress.trimmed();
}

QString MessageActionRun::HeaderText(const QString &Value)
{
    static const QRegularExpression breaks(QStringLiteral("[\\r\\n\\t]+"));
    return ExpandTokens(Value).replace(breaks, QStringLiteral(" ")).trimmed();
}

qint64 MessageActionRun::Queue(MimeMail &Mail, const QString &From, const QString &Recipients, const QString &Subject,
                               const QDateTime &Due, bool Scheduled)
{
    Mail.SetHeader(QStringLiteral("X-Mailer"), Global.ProductName + QStringLiteral(" Version ") + Global.VersionText);
    OutboxMessage row;
    row.AccountID = m_message.Account ? m_message.Account->AccountID : QString();
    row.TriggerID = m_trigger.TriggerID;
    row.ReferenceID = m_message.MessageID;
    row.MailFrom = From;
    row.MailTo = Recipients;
    row.Subject = Subject;
    row.Importance = Mail.Header(QStringLiteral("X-Priority")).toInt();
    row.Attachments = !Mail.Attachments().isEmpty();
    row.Mime = Mail.GetMimeText();
    row.ScheduledDate = Due;
    qint64 recordNo = 0;
    if (!m_store)
        m_log(QStringLiteral("* No message store is open: the mail to ") + Recipients + QStringLiteral(" cannot be queued"));
    else if ((recordNo = Scheduled ? m_store->AddScheduledEmail(row) : m_store->AddToOutBox(row, Due)) <= 0)
        m_log(QStringLiteral("* The Outbox refused the mail to ") + Recipients + QStringLiteral(": ") + m_store->LastError);
    return recordNo > 0 ? recordNo : 0;
}

bool MessageActionRun::AddFiles(MimeMail &Mail, const QString &Files)
{
    static const QMimeDatabase types;
    for (const QString &name : ExpandTokens(Files).split(u';', Qt::SkipEmptyParts)) {
        const QString path = name.trimmed();
        if (path.isEmpty())
            continue;
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            m_log(QStringLiteral("* Send An Email: the attachment ") + path + QStringLiteral(" cannot be read: ")
                  + file.errorString());
            return false;
        }
        Mail.AddAttachment(QFileInfo(path).fileName(), file.readAll(), types.mimeTypeForFile(path).name());
    }
    return true;
}

void MessageActionRun::AddIncoming(MimeMail &Mail, bool WithInline)
{
    MimeMail original;
    if (!original.LoadMime(m_message.MessageText))
        return;
    for (const MimeAttachment &part : original.Attachments())
        if (WithInline || !part.IsRelatedItem)
            Mail.AddAttachment(part.Name, part.Data, part.ContentType);
}

QString MessageActionRun::HtmlBody(const clsActionMSG &Action)
{
    if (!Action.HTML)
        return QString();
    const QString path = ExpandTokens(Action.HTMLFile).trimmed();
    if (path.isEmpty())
        return ExpandTokens(Action.HTMLText);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_log(QStringLiteral("* Send An Email: the HTML file ") + path + QStringLiteral(" cannot be read: ")
              + file.errorString());
        return ExpandTokens(Action.HTMLText);
    }
    return ExpandTokens(QString::fromUtf8(file.readAll()));
}

bool MessageActionRun::Schedule(MimeMail *Mail, OutboxMessage &Row, bool DeDup, const QDateTime &Due)
{
    if (DeDup && Due >= QDateTime::currentDateTime() && m_store
        && m_store->ScheduledDuplicate(m_trigger.TriggerID, Row.MailTo, Row.Subject, Row.MailFrom)) {
        m_log(QStringLiteral("Scheduled email to ") + Row.MailTo + QStringLiteral(" subject ") + Row.Subject
              + QStringLiteral(" was not added to the queue because a duplicate pending email exists."));
        return true;
    }
    if (Mail && Queue(*Mail, Row.MailFrom, Row.MailTo, Row.Subject, Due, true) == 0)
        return false;
    if (!Mail) {
        Row.ScheduledDate = Due;
        Row.Scheduled = true;
        if (!m_store || m_store->AddScheduledSMS(Row) <= 0) {
            m_log(QStringLiteral("* The Outbox refused the SMS to ") + Row.MailTo);
            return false;
        }
    }
    m_log((Mail ? QStringLiteral("Email To ") : QStringLiteral("SMS To ")) + Row.MailTo + QStringLiteral(" Subject ")
          + Row.Subject + QStringLiteral(" Scheduled To Be Sent On ") + Stamp(Due));
    return true;
}

bool MessageActionRun::RunMessage(const clsActionMSG &Action)
{
    const QString to = ExpandTokens(Action.SendTo).trimmed();
    const QString cc = ExpandTokens(Action.CC).trimmed();
    const QString bcc = ExpandTokens(Action.BCC).trimmed();
    const QString recipients = JoinAddresses({to, cc, bcc});
    if (recipients.isEmpty()) {
        m_log(QStringLiteral("* Send An Email: the action has no recipient"));
        return false;
    }
    const QString from = SenderAddress(ExpandTokens(Action.From));
    const QString subject = HeaderText(Action.Subject);
    MimeMail mail;
    mail.Compose(from, to.isEmpty() ? cc : to, subject, QDateTime::currentDateTime(), ExpandTokens(Action.Body),
                 HtmlBody(Action));
    if (!cc.isEmpty() && !to.isEmpty())
        mail.SetHeader(QStringLiteral("Cc"), cc);
    AddMarks(mail, Action, from);
    if (!AddFiles(mail, Action.Attachments))
        return false;
    if (Action.AttachmentsIncoming)
        AddIncoming(mail, Action.AttachmentsIncomingInline);
    if (Action.ScheduleSend) {
        OutboxMessage row;
        row.MailFrom = from;
        row.MailTo = recipients;
        row.Subject = subject;
        const QDateTime due = clsActionMSG::ScheduleDue(Action.ScheduleOn, Action.SchedulePeriod,
                                                        Action.ScheduleInterval, QDateTime::currentDateTime());
        return Schedule(&mail, row, Action.ScheduleDeDup, due);
    }
    if (Queue(mail, from, recipients, subject) == 0)
        return false;
    m_log(QStringLiteral("Message For ") + recipients + QStringLiteral(" Added To Outbox"));
    return true;
}

bool MessageActionRun::RunForward(const clsActionForward &Action)
{
    const QString to = ExpandTokens(Action.EmailForwardTo).trimmed();
    if (to.isEmpty()) {
        m_log(QStringLiteral("* Forward Original Message: the action has no address to forward to"));
        return false;
    }
    MimeMail original;
    original.LoadMime(m_message.MessageText);
    QString subject = HeaderText(Action.EmailForwardSubject);
    if (subject.isEmpty())
        subject = m_message.Subject;
    if (!subject.contains(QStringLiteral("FW:"), Qt::CaseInsensitive))
        subject = QStringLiteral("FW: ") + subject;
    const QString quoted = QStringLiteral("---------- Forwarded message ----------\r\nFrom: ") + m_message.FromFull()
        + QStringLiteral("\r\nDate: ") + original.Header(QStringLiteral("Date")) + QStringLiteral("\r\nSubject: ")
        + m_message.Subject + QStringLiteral("\r\nTo: ") + m_message.ToAddress + QStringLiteral("\r\n\r\n");
    const QString html = original.HtmlBody();
    const QString from = SenderAddress(QString());
    MimeMail mail;
    mail.Compose(from, to, subject, QDateTime::currentDateTime(), quoted + original.TextBody(),
                 html.isEmpty() ? QString() : QStringLiteral("<pre>") + quoted.toHtmlEscaped() + QStringLiteral("</pre>") + html);
    if (Action.EmailForwardPlusAttach)
        AddIncoming(mail, true);
    if (Queue(mail, from, to, subject) == 0)
        return false;
    m_log(QStringLiteral("Message forwarded to ") + to);
    return true;
}

bool MessageActionRun::RunSMS(const clsActionSMS &Action)
{
    OutboxMessage row;
    row.AccountID = m_message.Account ? m_message.Account->AccountID : QString();
    row.TriggerID = m_trigger.TriggerID;
    row.ReferenceID = m_message.MessageID;
    row.MailTo = ExpandTokens(Action.SendTo).trimmed();
    row.MailFrom = ExpandTokens(Action.From).trimmed();
    row.Subject = HeaderText(Action.Subject);
    row.Mime = ExpandTokens(Action.Body);
    if (row.MailTo.isEmpty()) {
        m_log(QStringLiteral("* Send SMS Message: the action has no number to send to"));
        return false;
    }
    const QDateTime now = QDateTime::currentDateTime();
    if (Action.ScheduleSend)
        return Schedule(nullptr, row, Action.ScheduleDeDup,
                        clsActionMSG::ScheduleDue(Action.ScheduleOn, Action.SchedulePeriod, Action.ScheduleInterval, now));
    row.ScheduledDate = now;
    if (!m_store || m_store->AddScheduledSMS(row) <= 0) {
        m_log(QStringLiteral("* The Outbox refused the SMS to ") + row.MailTo);
        return false;
    }
    m_log(QStringLiteral("SMS Message For ") + row.MailTo + QStringLiteral(" Added To Outbox"));
    return true;
}
