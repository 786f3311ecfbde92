// Requests about mail the server sends: a test message to the administrator,
// forwarding a stored message, and the scheduled mail of an account (listed,
// read, deleted, sent now). Mail goes to the Outbox, which the outgoing role
// sends.
#include "RequestChecks.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsUser.h"
#include "store/clsMessageStore.h"

#include <QLocale>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <variant>

namespace {

ServerReply PlainText(const QString &Text)
{
    ServerReply reply = ServerReply::Ok(Text);
    reply.ContentType = "text/plain; charset=utf-8";
    return reply;
}

ServerReply OutboxFailure(RequestContext &Context)
{
    Context.Services.Log.Add(QStringLiteral("* The message store failed: ") + Context.Services.MessageStore.LastError);
    return ServerReply::Refusal(QStringLiteral("The message store failed."));
}

bool MayChange(const clsUser &User, const clsAccount &Account)
{
    return User.Admin
        || (User.OrganizationAdmin && !Account.OrganizationID.trimmed().isEmpty()
            && Account.OrganizationID == User.OrganizationID);
}

// The account of the query when the user may see it (and change it, with
// Change); otherwise the refusal.
std::variant<const clsAccount *, ServerReply> AccountOf(RequestContext &Context, bool Change)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("accountid")))
        return *bad;
    const clsAccount *account = Accounts().Item(Context.Client.AccountID);
    if (!account || !account->UserAccess(&Context.User))
        return ServerReply::Refusal(QStringLiteral("There is no account with this ID."));
    if (Change && !MayChange(Context.User, *account))
        return ServerReply::Refusal(QStringLiteral("The scheduled mail of this account is not yours to change."));
    return account;
}

// The scheduled row of the query's number, when it belongs to the account
// of the query and the user may see (or change) it; else the refusal.
std::optional<ServerReply> CheckScheduledRow(RequestContext &Context, bool Change)
{
    const auto account = AccountOf(Context, Change);
    if (const auto *refused = std::get_if<ServerReply>(&account))
        return *refused;
    if (Context.Client.RecordNo <= 0)
        return ServerReply::Refusal(QStringLiteral("The value of \"recordno\" is no number."));
    QSqlQuery query(QSqlDatabase::database(Context.Services.MessageStore.ReaderConnection(), false));
    if (!query.exec(QStringLiteral("SELECT AccountID FROM Outbox WHERE (Scheduled<>0) AND RecordNo=")
                    + QString::number(Context.Client.RecordNo))
        || !query.next() || query.value(0).toString() != std::get<const clsAccount *>(account)->AccountID)
        return ServerReply::Refusal(QStringLiteral("The account has no scheduled message with this number."));
    return std::nullopt;
}

ServerReply GetScheduledMessages(RequestContext &Context)
{
    const auto account = AccountOf(Context, false);
    if (const auto *refused = std::get_if<ServerReply>(&account))
        return *refused;
    clsMessageStore &store = Context.Services.MessageStore;
    store.LastError.clear();
    const QString rows = store.GetScheduledMessages(Context.Client.AccountID, Context.Client.TriggerID,
                                                    Context.Client.SearchText);
    return rows.isEmpty() && !store.LastError.isEmpty() ? OutboxFailure(Context) : PlainText(rows);
}

ServerReply GetScheduledMessage(RequestContext &Context)
{
    if (auto refused = CheckScheduledRow(Context, false))
        return *refused;
    ServerReply reply = ServerReply::Ok(Context.Services.MessageStore.GetScheduledBody(Context.Client.RecordNo));
    reply.ContentType = "message/rfc822; charset=utf-8";
    return reply;
}

ServerReply DeleteScheduledMessage(RequestContext &Context)
{
    if (auto refused = CheckScheduledRow(Context, true))
        return *refused;
    if (!Context.Services.MessageStore.DeleteScheduledEmail(Context.Client.RecordNo))
        return OutboxFailure(Context);
    Context.Services.Log.Add(QStringLiteral("Scheduled message %1 deleted by %2")
                                 .arg(Context.Client.RecordNo)
                                 .arg(Context.User.Username));
    return ServerReply::Ok();
}

ServerReply DeleteScheduledMessages(RequestContext &Context)
{
    const auto account = AccountOf(Context, true);
    if (const auto *refused = std::get_if<ServerReply>(&account))
        return *refused;
    const qint64 rows = Context.Services.MessageStore.DeleteScheduledEmails(
        Context.Client.AccountID, Context.Client.TriggerID, Context.Client.SearchText);
    if (rows < 0)
        return OutboxFailure(Context);
    Context.Services.Log.Add(QStringLiteral("%1 scheduled messages of account %2 deleted by %3")
                                 .arg(rows)
                                 .arg(std::get<const clsAccount *>(account)->Name, Context.User.Username));
    return ServerReply::Ok();
}

ServerReply SendScheduledMessage(RequestContext &Context)
{
    if (auto refused = CheckScheduledRow(Context, true))
        return *refused;
    if (!Context.Services.MessageStore.SendScheduledEmail(Context.Client.RecordNo))
        return OutboxFailure(Context);
    Context.Services.Log.Add(QStringLiteral("Scheduled message %1 to be sent now, by %2")
                                 .arg(Context.Client.RecordNo)
                                 .arg(Context.User.Username));
    return ServerReply::Ok();
}

ServerReply ForwardMessage(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("folderid"), true))
        return *bad;
    if (Context.Client.RecordNo <= 0)
        return ServerReply::Refusal(QStringLiteral("The value of \"recordno\" is no number."));
    if (!Context.Client.Email.contains(u'@'))
        return ServerReply::Refusal(QStringLiteral("There is no address to forward the message to."));
    clsMessageStore &store = Context.Services.MessageStore;
    QSqlQuery query(QSqlDatabase::database(store.ReaderConnection(), false));
    if (!query.exec(QStringLiteral("SELECT OrganizationID FROM MessageStore WHERE RecordNo=")
                    + QString::number(Context.Client.RecordNo))
        || !query.next())
        return ServerReply::Refusal(QStringLiteral("There is no message with this number."));
    const QString organizationID = query.value(0).toString().trimmed();
    query.finish();
    const clsUser &user = Context.User;
    if (!user.Admin && !(user.OrganizationAdmin && organizationID == user.OrganizationID))
        return ServerReply::Refusal(QStringLiteral("This message is not yours to forward."));
    const int rows = store.ForwardMessage(Context.Client.RecordNo, Context.Client.FolderID, Context.Client.Email);
    if (rows < 0)
        return ServerReply::Refusal(QStringLiteral("There is no message with this number in the folder."));
    Context.Services.Log.Add(QStringLiteral("Message %1 forwarded to %2 by %3")
                                 .arg(Context.Client.RecordNo)
                                 .arg(Context.Client.Email, user.Username));
    return ServerReply::Ok();
}

// A plain-text test message to the administrator's address, with the
// subject and body the console composed ("subject" of the query; the body
// posted, or "body" of the query).
ServerReply SendTestEmail(RequestContext &Context)
{
    if (!Context.User.Admin)
        return ServerReply::Refusal(QStringLiteral("Only a system administrator may send a test message."));
    const auto &settings = Global.Settings;
    if (!settings.AdminEmail.contains(u'@'))
        return ServerReply::Refusal(QStringLiteral("The administrator's e-mail address is not set."));
    const QString from = settings.DefaultFromAddress.contains(u'@') ? settings.DefaultFromAddress : settings.AdminEmail;
    QString subject = Context.Client.Value(QStringLiteral("subject")).simplified();
    if (subject.isEmpty())
        subject = QStringLiteral("Test Message From ") + Global.ProductName;
    const QString body = Context.Client.Body.isEmpty() ? Context.Client.Value(QStringLiteral("body")) : Context.Client.Body;
    const QString domain = from.section(u'@', -1);
    OutboxMessage message;
    message.MailFrom = from;
    message.MailTo = settings.AdminEmail;
    message.Subject = subject;
    message.ReferenceID = GUIDDigits() + u'@' + domain;
    message.Mime = QStringList{QStringLiteral("From: ") + Global.ProductName + QStringLiteral(" Administrator <") + from + u'>',
                               QStringLiteral("To: ") + settings.AdminEmail,
                               QStringLiteral("Subject: ") + subject,
                               QStringLiteral("Date: ") + QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("ddd, "))
                                   + QDateTime::currentDateTime().toString(Qt::RFC2822Date),
                               QStringLiteral("Message-ID: <") + message.ReferenceID + u'>',
                               QStringLiteral("X-Mailer: ") + Global.ProductName + QStringLiteral(" Version ") + Global.VersionText,
                               QStringLiteral("MIME-Version: 1.0"),
                               QStringLiteral("Content-Type: text/plain; charset=utf-8"),
                               QStringLiteral("Content-Transfer-Encoding: 8bit"),
                               QString(),
                               QString(body).replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\n', QStringLiteral("\r\n"))}
                       .join(QStringLiteral("\r\n"));
    if (Context.Services.MessageStore.AddToOutBox(message) <= 0)
        return OutboxFailure(Context);
    Context.Services.Log.Add(QStringLiteral("Message For ") + message.MailTo + QStringLiteral(" Added To Outbox"));
    return ServerReply::Ok();
}

} // namespace

void AddMailRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("sendtestemail.xml"), RequestVerb::Any, SendTestEmail);
    Table.Add(QStringLiteral("forwardmessage.xml"), RequestVerb::Get, ForwardMessage);
    Table.Add(QStringLiteral("getscheduledmessages.xml"), RequestVerb::Get, GetScheduledMessages);
    Table.Add(QStringLiteral("getscheduledmessage.xml"), RequestVerb::Get, GetScheduledMessage);
    Table.Add(QStringLiteral("deletescheduledmessage.xml"), RequestVerb::Get, DeleteScheduledMessage);
    Table.Add(QStringLiteral("deletescheduledmessages.xml"), RequestVerb::Get, DeleteScheduledMessages);
    Table.Add(QStringLiteral("sendscheduledmessage.xml"), RequestVerb::Get, SendScheduledMessage);
}
