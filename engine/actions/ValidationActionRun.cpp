#include "ValidationActionRun.h"
#include "MessageActionRun.h"
#include "actions/clsActionValidation.h"
#include "foundation/GlobalBlock.h"
#include "foundation/clsXML.h"
#include "model/clsAccount.h"
#include "store/MimeMail.h"
#include "store/Tokens.h"
#include "store/clsMessage.h"

namespace {

const MarkupTag FieldTag = QStringLiteral("field");
const MarkupTag NameTag = QStringLiteral("name");
const MarkupTag AssignToTag = QStringLiteral("assignto");
const MarkupTag ValueTag = QStringLiteral("value");

QString OrDefault(const QString &Value, const QString &Default)
{
    return Value.trimmed().isEmpty() ? Default : Value;
}

} // namespace

ValidationActionRun::ValidationActionRun(clsMessage &Message, MessageActionRun &Mailer, LogFunction Log)
    : m_message(Message), m_mailer(Mailer), m_log(std::move(Log))
{
}

bool ValidationActionRun::Run(const clsActionValidation &Action)
{
    if (!m_message.ValidateActionID.isEmpty() && m_message.ValidateActionID == Action.ID) {
        m_log(QStringLiteral("Validation of the message confirmed: the following actions run"));
        AssignAnswers();
        return true;
    }
    if (m_message.EdgeQueueRecordNo <= 0) {
        m_log(QStringLiteral("* Wait For Validation: the message is not in the queue, so it cannot wait; the "
                             "following actions do not run"));
        return false;
    }
    if (Action.SendEmail && !SendRequest(Action))
        return false;
    const QDateTime expires = QDateTime::currentDateTime().addSecs(qint64(qMax(0, Action.MaxWaitFor)) * 60);
    m_message.ValidationRequired = true;
    m_message.ValidateActionID = Action.ID;
    m_message.ValidateExpires = expires;
    m_message.ValidateExpiresType = Action.TimeOutAction;
    m_message.ValidateConfirmationMessage
        = ExpandTokens(OrDefault(Action.ConfirmationHTML, clsActionValidation::DefaultConfirmationHTML()))
              .replace(QStringLiteral("%APPNAME%"), Global.ProductName);
    m_log(QStringLiteral("The message waits for validation until ")
          + expires.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + QStringLiteral(" at ") + m_message.ValidateURL());
    return false;
}

void ValidationActionRun::AssignAnswers()
{
    clsXML answers(m_message.ValidationInputFieldsXML);
    clsXML field;
    while (answers.Extract(field, FieldTag)) {
        QString name;
        QString assignTo;
        QString value;
        field.Extract(name, NameTag);
        field.Extract(assignTo, AssignToTag);
        field.Extract(value, ValueTag);
        const QString target = QString(assignTo.isEmpty() ? name : assignTo).remove(u'%').trimmed();
        if (target.isEmpty())
            continue;
        const int fieldNo = m_message.ExtractedFields().FieldNoFromName(target);
        if (fieldNo > 0)
            m_message.ExtractedFields().Item(fieldNo)->Value = value;
        else if (m_message.Account)
            m_message.Account->setGlobalVar(target, false, value);
        m_log(QStringLiteral("Validation answer ") + target + QStringLiteral(" = ") + value.left(200));
    }
}

bool ValidationActionRun::SendRequest(const clsActionValidation &Action)
{
    const QString to = ExpandTokens(Action.SendTo).trimmed();
    if (to.isEmpty()) {
        m_log(QStringLiteral("* Wait For Validation: the action has no address to send the request to"));
        return false;
    }
    const QString from = MessageActionRun::SenderAddress(ExpandTokens(Action.FromAddress));
    const QString subject
        = MessageActionRun::HeaderText(OrDefault(Action.Subject, clsActionValidation::DefaultSubject()));
    const QString body = ExpandTokens(OrDefault(Action.MessageText, clsActionValidation::DefaultMessageText()));
    MimeMail mail;
    mail.Compose(from, to, subject, QDateTime::currentDateTime(), body);
    if (m_mailer.Queue(mail, from, to, subject) == 0)
        return false;
    m_log(QStringLiteral("Validation Request Email For ") + to + QStringLiteral(" Added To Outbox"));
    return true;
}
