// Requests about the processing of messages: a test run of a trigger with a
// posted message, reprocessing a stored message, the length of the edge
// queue, and rewinding an account's sources. Each logs to the message
// processor's log, which a connected console shows in its Message Processor
// pane.
#include "ConfigStore.h"
#include "RequestChecks.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "engine/RoleLog.h"
#include "engine/ServerRoles.h"
#include "engine/processor/ProcessorRole.h"
#include "foundation/Formatting.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "model/clsUser.h"
#include "store/MessageMime.h"
#include "store/MimeMail.h"
#include "store/clsMessageStore.h"

#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>

#include <variant>

namespace {

// The test-run window sends at most this many characters.
constexpr qsizetype LargestRun = 10000000;

void LogProcessing(RequestContext &Context, const QString &Text)
{
    if (Context.Services.Roles)
        Context.Services.Roles->MessageLog().Add(Text);
    else
        Context.Services.Log.Add(Text);
}

// Lets an idle processor of this process look at the queue at once.
void WakeProcessor(RequestContext &Context)
{
    if (Context.Services.Roles && Context.Services.Roles->Processor())
        Context.Services.Roles->Processor()->Role.Wake();
}

bool MayChangeAccount(const clsUser &Actor, const clsAccount &Account)
{
    if (Actor.Admin)
        return true;
    return Actor.OrganizationAdmin && !Account.OrganizationID.trimmed().isEmpty()
        && Account.OrganizationID == Actor.OrganizationID;
}

// The account of the query, when the user may change it; else the refusal.
std::variant<clsAccount *, ServerReply> ChangeableAccount(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("accountid")))
        return *bad;
    clsAccount *account = Accounts().Item(Context.Client.AccountID);
    if (!account)
        return ServerReply::Refusal(QStringLiteral("There is no account with this ID."));
    if (!account->UserAccess(&Context.User) || !MayChangeAccount(Context.User, *account))
        return ServerReply::Refusal(QStringLiteral("This account is not yours to change."));
    return account;
}

// A text that begins with a header line and has a header block is a MIME
// message; anything else is the bare text of a test message.
bool IsMime(const QString &Text)
{
    static const QRegularExpression headerLine(QStringLiteral("^[!-9;-~]+:"));
    return headerLine.match(Text).hasMatch()
        && (Text.contains(QStringLiteral("\r\n\r\n")) || Text.contains(QStringLiteral("\n\n")));
}

// The posted message with the process headers of a test run of the trigger.
QString TestRunMime(const QString &Posted, const QString &AccountID, const QString &TriggerID, QString &UID,
                    QString &Source)
{
    MimeMail mail;
    mail.LoadMime(Posted);
    UID = mail.Header(QStringLiteral("Postvane-UID")).trimmed();
    if (UID.isEmpty())
        UID = GUIDDigits();
    Source = mail.Header(QStringLiteral("Postvane-Source")).trimmed();
    if (Source.isEmpty())
        Source = QStringLiteral("Admin");
    mail.SetHeader(QStringLiteral("Postvane-AccountID"), AccountID);
    if (TriggerID.isEmpty())
        mail.RemoveHeader(QStringLiteral("Postvane-TriggerID"));
    else
        mail.SetHeader(QStringLiteral("Postvane-TriggerID"), TriggerID);
    mail.SetHeader(QStringLiteral("Postvane-UID"), UID);
    mail.SetHeader(QStringLiteral("Postvane-Source"), Source);
    mail.SetHeader(QStringLiteral("Postvane-TestMessage"), QStringLiteral("1"));
    return mail.GetMimeText();
}

ServerReply RunWith(RequestContext &Context)
{
    const auto found = ChangeableAccount(Context);
    if (const auto *refused = std::get_if<ServerReply>(&found))
        return *refused;
    clsAccount &account = *std::get<clsAccount *>(found);
    if (auto bad = CheckIdentifier(Context, QStringLiteral("triggerid"), true))
        return *bad;
    const QString triggerID = Context.Client.TriggerID;
    const clsAccountTrigger *trigger = triggerID.isEmpty() ? nullptr : account.TriggerFromID(triggerID);
    if (!triggerID.isEmpty() && !trigger)
        return ServerReply::Refusal(QStringLiteral("The account has no trigger with this ID."));
    const QString &posted = Context.Client.Body;
    if (posted.trimmed().isEmpty())
        return ServerReply::Refusal(QStringLiteral("Post the message to run with."));
    if (posted.size() > LargestRun)
        return ServerReply::Refusal(QStringLiteral("The message is larger than 10 million characters."));

    clsMessageStore &store = Context.Services.MessageStore;
    qint64 row = 0;
    if (IsMime(posted)) {
        QString uid;
        QString source;
        const QString mime = TestRunMime(posted, account.AccountID, triggerID, uid, source);
        row = store.AddEMLToEdgeQueue(account.AccountID, source, uid, QDateTime::currentDateTime(), mime);
    } else {
        row = store.AddTestToEdgeQueue(account.AccountID, triggerID, posted);
    }
    if (row <= 0) {
        Context.Services.Log.Add(QStringLiteral("* The edge queue refused a test message: ") + store.LastError);
        return ServerReply::Refusal(QStringLiteral("The edge queue refused the message."));
    }
    LogProcessing(Context, QStringLiteral("Test message queued by ") + Context.User.Username + QStringLiteral(" for ")
                               + (trigger ? QStringLiteral("trigger ") + trigger->Name + QStringLiteral(" of ")
                                          : QString())
                               + QStringLiteral("account ") + account.Name);
    WakeProcessor(Context);
    return ServerReply::Ok();
}

// The stored message of the query's recordno, reachable by the user, back
// into the queue.
ServerReply ReprocessMessage(RequestContext &Context)
{
    for (const char *key : {"accountid", "folderid"})
        if (auto bad = CheckIdentifier(Context, QLatin1String(key), true))
            return *bad;
    const qint64 recordNo = Context.Client.RecordNo;
    if (recordNo <= 0)
        return ServerReply::Refusal(QStringLiteral("The value of \"recordno\" is no number."));
    clsMessageStore &store = Context.Services.MessageStore;
    QSqlQuery query(QSqlDatabase::database(store.ReaderConnection(), false));
    if (!query.exec(QStringLiteral("SELECT AccountID,OrganizationID FROM MessageStore WHERE RecordNo=")
                    + QString::number(recordNo))
        || !query.next())
        return ServerReply::Refusal(QStringLiteral("There is no message with this number."));
    const QString accountID = query.value(0).toString();
    const QString organizationID = query.value(1).toString().trimmed();
    query.finish();
    const clsUser &user = Context.User;
    if (!user.Admin && !(user.OrganizationAdmin && organizationID == user.OrganizationID))
        return ServerReply::Refusal(QStringLiteral("This message is not yours to reprocess."));
    if (store.SaveMessageToReprocess(Context.Client.FolderID, recordNo) <= 0)
        return ServerReply::Refusal(QStringLiteral("There is no message with this number in the folder."));
    const clsAccount *account = Accounts().Item(accountID);
    LogProcessing(Context, QStringLiteral("Message %1 of account %2 queued again by %3")
                               .arg(recordNo)
                               .arg(account ? account->Name : accountID, user.Username));
    WakeProcessor(Context);
    return ServerReply::Ok();
}

ServerReply GetEdgeQueueCount(RequestContext &Context)
{
    const qint64 count = Context.Services.MessageStore.GetEdgeQueueCount();
    if (count < 0)
        return ServerReply::Refusal(QStringLiteral("The edge queue cannot be read."));
    ServerReply reply = ServerReply::Ok(QString::number(count));
    reply.ContentType = "text/plain; charset=utf-8";
    return reply;
}

// The account's sources go back to the oldest date its triggers take, so
// that messages a widened trigger now wants are read again.
ServerReply ReceivedAfterReset(RequestContext &Context)
{
    const auto found = ChangeableAccount(Context);
    if (const auto *refused = std::get_if<ServerReply>(&found))
        return *refused;
    clsAccount &account = *std::get<clsAccount *>(found);
    if (auto bad = CheckIdentifier(Context, QStringLiteral("triggerid"), true))
        return *bad;
    if (!Context.Client.TriggerID.isEmpty() && !account.TriggerFromID(Context.Client.TriggerID))
        return ServerReply::Refusal(QStringLiteral("The account has no trigger with this ID."));
    account.ReceivedAfterReset();
    ConfigStore &store = Context.Services.Store;
    if (!store.Write([&] { return store.SaveAccount(account) && store.ReplaceTriggers(account.AccountID, account.Triggers); }))
        return StoreFailure(Context);
    LogProcessing(Context, QStringLiteral("The sources of account ") + account.Name
                               + QStringLiteral(" read again from the oldest date of its triggers, by ")
                               + Context.User.Username);
    return ServerReply::Ok();
}

} // namespace

void AddProcessorRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("runwith.xml"), RequestVerb::Post, RunWith);
    Table.Add(QStringLiteral("reprocessmessage.xml"), RequestVerb::Get, ReprocessMessage);
    Table.Add(QStringLiteral("getedgequeuecount.xml"), RequestVerb::Get, GetEdgeQueueCount);
    Table.Add(QStringLiteral("receivedafterreset.xml"), RequestVerb::Get, ReceivedAfterReset);
}
