// Requests on the stored messages, the day summary, and the message store as
// a whole.
//
// Rights: a system administrator reaches every message. An organization
// administrator reaches the messages of its organization: every message set
// is narrowed to it, and a single message is looked up before it is touched.
// A plain user reaches only the folders it sees (UserFoldersXML): a set must
// name one of them, and a single message must lie in one.
#include "MessagePage.h"
#include "RequestChecks.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "engine/databases/DatabaseConnections.h"
#include "foundation/GlobalBlock.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"
#include "store/StoreFiles.h"
#include "store/clsMessageStore.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <atomic>
#include <variant>

namespace {

clsMessageStore &Store(RequestContext &Context)
{
    return Context.Services.MessageStore;
}

// The 500 reply and the log line for a statement the store did not run.
ServerReply MessageStoreFailure(RequestContext &Context)
{
    Context.Services.Log.Add(QStringLiteral("* The message store failed: ") + Store(Context).LastError);
    return ServerReply::Refusal(QStringLiteral("The message store failed."));
}

ServerReply PlainText(const QString &Text)
{
    ServerReply reply = ServerReply::Ok(Text);
    reply.ContentType = "text/plain; charset=utf-8";
    return reply;
}

// Input checks ------------------------------------------------------------

// The 400 reply when the value of Key is not a whole number from 0 up (from
// 1 when Positive); nothing when it is, or when it is empty and Optional.
std::optional<ServerReply> CheckNumber(const RequestContext &Context, const QString &Key, bool Optional,
                                       bool Positive = false)
{
    static const QRegularExpression number(QStringLiteral("^[0-9]{1,9}$"));
    const QString value = Context.Client.Value(Key);
    if (Optional && value.isEmpty())
        return std::nullopt;
    if (number.match(value).hasMatch() && (!Positive || value.toInt() > 0))
        return std::nullopt;
    return ServerReply::Refusal(QStringLiteral("The value of \"") + Key + QStringLiteral("\" is no number."));
}

// The flags are "Y" or "N": anything else would widen a set that is deleted.
std::optional<ServerReply> CheckYesNo(const RequestContext &Context, const QString &Key)
{
    const QString value = Context.Client.Value(Key).toUpper();
    if (value.isEmpty() || value == u"Y" || value == u"N")
        return std::nullopt;
    return ServerReply::Refusal(QStringLiteral("The value of \"") + Key + QStringLiteral("\" is neither Y nor N."));
}

std::optional<ServerReply> CheckDate(const RequestContext &Context, const QString &Key, const QDate &Parsed)
{
    if (Context.Client.Value(Key).isEmpty() || Parsed.isValid())
        return std::nullopt;
    return ServerReply::Refusal(QStringLiteral("The value of \"") + Key + QStringLiteral("\" is no date (yyyy-mm-dd)."));
}

// The period of the query; a missing end keeps the filter's default.
std::optional<ServerReply> ReadPeriod(const RequestContext &Context, QDate &From, QDate &To)
{
    const clsUserClient &client = Context.Client;
    if (auto bad = CheckDate(Context, QStringLiteral("fromdate"), client.FromDate))
        return bad;
    if (auto bad = CheckDate(Context, QStringLiteral("todate"), client.ToDate))
        return bad;
    if (client.FromDate.isValid())
        From = client.FromDate;
    if (client.ToDate.isValid())
        To = client.ToDate;
    return std::nullopt;
}

// Rights ------------------------------------------------------------------

bool MaySeeFolder(const clsUser &User, const QString &FolderID)
{
    colUserFolders visible;
    visible.setXML(UserFolders().UserFoldersXML(&User));
    return visible.Item(FolderID) != nullptr;
}

// The message set of the query, narrowed to what the user may reach.
std::optional<ServerReply> ReadMessageSet(RequestContext &Context, MessageSetFilter &Filter)
{
    for (const char *key : {"accountid", "triggerid", "folderid"})
        if (auto bad = CheckIdentifier(Context, QLatin1String(key), true))
            return bad;
    for (const char *key : {"errorsonly", "matchesonly"})
        if (auto bad = CheckYesNo(Context, QLatin1String(key)))
            return bad;
    if (auto bad = ReadPeriod(Context, Filter.FromDate, Filter.ToDate))
        return bad;

    const clsUserClient &client = Context.Client;
    Filter.AccountID = client.AccountID;
    Filter.TriggerID = client.TriggerID;
    Filter.ErrorsOnly = client.ErrorsOnly;
    Filter.MatchesOnly = client.MatchesOnly;
    Filter.SearchText = client.SearchText;
    Filter.FolderID = client.FolderID;

    if (Filter.FolderID.size() > 1 && !UserFolders().Item(Filter.FolderID))
        return ServerReply::Refusal(QStringLiteral("There is no folder with the ID \"%1\".").arg(Filter.FolderID));
    const clsUser &user = Context.User;
    if (!user.Admin) {
        Filter.OrganizationID = user.OrganizationID;
        // A folder of one character is no filter: the organization's whole
        // store, which only its administrator reaches.
        const bool namesFolder = Filter.FolderID.size() > 1;
        if (namesFolder ? !MaySeeFolder(user, Filter.FolderID) : !user.OrganizationAdmin)
            return ServerReply::Refusal(namesFolder ? QStringLiteral("This folder is not yours to see.")
                                                       : QStringLiteral("Name one of your folders (folderid)."));
    }
    // An empty condition is the whole store; clearing it is deletemailstore.xml.
    if (Store(Context).MessageSetWhere(Filter).isEmpty())
        return ServerReply::Refusal(QStringLiteral("A message set needs an account, a trigger, a folder or another filter."));
    return std::nullopt;
}

// One stored message: its number and where it lies.
struct StoredMessage
{
    qint64 RecordNo = 0;
    QString FolderID;
    QString OrganizationID;
};

// The message of the query's recordno (in the query's folderid, when one is
// given), when the user may reach it.
std::variant<StoredMessage, ServerReply> FindMessage(RequestContext &Context)
{
    for (const char *key : {"accountid", "folderid"})
        if (auto bad = CheckIdentifier(Context, QLatin1String(key), true))
            return *bad;
    if (auto bad = CheckNumber(Context, QStringLiteral("recordno"), false, true))
        return *bad;

    StoredMessage message;
    message.RecordNo = Context.Client.RecordNo;
    QSqlQuery query(QSqlDatabase::database(Store(Context).ReaderConnection(), false));
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT FolderID,OrganizationID FROM MessageStore WHERE RecordNo=")
                    + QString::number(message.RecordNo))) {
        Store(Context).LastError = query.lastError().text();
        return MessageStoreFailure(Context);
    }
    if (!query.next())
        return ServerReply::Refusal(QStringLiteral("There is no message with this number."));
    message.FolderID = query.value(0).toString().trimmed();
    message.OrganizationID = query.value(1).toString().trimmed();
    const QString folder = Context.Client.FolderID;
    if (!folder.isEmpty() && folder != message.FolderID)
        return ServerReply::Refusal(QStringLiteral("There is no message with this number in the folder."));

    const clsUser &user = Context.User;
    const bool reachable = user.Admin
        || (message.OrganizationID == user.OrganizationID
            && (user.OrganizationAdmin || MaySeeFolder(user, message.FolderID)));
    if (!reachable)
        return ServerReply::Refusal(QStringLiteral("This message is not yours to see."));
    return message;
}

// Message sets ------------------------------------------------------------

ServerReply CountMessages(RequestContext &Context)
{
    MessageSetFilter filter;
    if (auto refused = ReadMessageSet(Context, filter))
        return *refused;
    const qint64 count = Store(Context).CountMessageSet(filter);
    return count < 0 ? MessageStoreFailure(Context) : PlainText(QString::number(count));
}

ServerReply GetMessages(RequestContext &Context)
{
    for (const char *key : {"fromrow", "torow"})
        if (auto bad = CheckNumber(Context, QLatin1String(key), true))
            return *bad;
    const qint32 from = Context.Client.FromRow;
    const qint32 to = Context.Client.ToRow;
    if (to > 0 && to < qMax(from, 1))
        return ServerReply::Refusal(QStringLiteral("The row range ends before it begins."));
    MessageSetFilter filter;
    if (auto refused = ReadMessageSet(Context, filter))
        return *refused;
    clsMessageStore &store = Store(Context);
    store.LastError.clear();
    const QString rows = store.GetMessageSet(filter, from, to);
    return rows.isEmpty() && !store.LastError.isEmpty() ? MessageStoreFailure(Context) : PlainText(rows);
}

// Deleting or marking a set; Change answers the rows affected, -1 on failure.
ServerReply ChangeMessageSet(RequestContext &Context, qint64 (clsMessageStore::*Change)(const MessageSetFilter &),
                             const QString &Done)
{
    MessageSetFilter filter;
    if (auto refused = ReadMessageSet(Context, filter))
        return *refused;
    const qint64 rows = (Store(Context).*Change)(filter);
    if (rows < 0)
        return MessageStoreFailure(Context);
    Context.Services.Log.Add(Done.arg(rows) + QStringLiteral(" by ") + Context.User.Username);
    return ServerReply::Ok();
}

ServerReply DeleteMessages(RequestContext &Context)
{
    return ChangeMessageSet(Context, &clsMessageStore::DeleteMessageSet, QStringLiteral("%1 messages deleted"));
}

ServerReply MarkAllAsRead(RequestContext &Context)
{
    return ChangeMessageSet(Context, &clsMessageStore::MarkAllAsRead, QStringLiteral("%1 messages marked as read"));
}

// Single messages ---------------------------------------------------------

ServerReply GetMessage(RequestContext &Context)
{
    const auto found = FindMessage(Context);
    if (const auto *refused = std::get_if<ServerReply>(&found))
        return *refused;
    const QString mime = Store(Context).GetMessage(std::get<StoredMessage>(found).RecordNo);
    if (mime.isEmpty())
        return MessageStoreFailure(Context);
    ServerReply reply = ServerReply::Ok(mime);
    reply.ContentType = "message/rfc822; charset=utf-8";
    return reply;
}

ServerReply Page(const QString &Html)
{
    ServerReply reply = ServerReply::Ok(Html);
    reply.ContentType = "text/html; charset=utf-8";
    return reply;
}

// The page of a message for a browser, with the credentials in the query.
ServerReply GetMessagePage(RequestContext &Context)
{
    const auto found = FindMessage(Context);
    if (const auto *refused = std::get_if<ServerReply>(&found))
        return *refused;
    const QString mime = Store(Context).GetMessage(std::get<StoredMessage>(found).RecordNo);
    if (mime.isEmpty())
        return MessageStoreFailure(Context);
    return Page(MessagePage(mime, Context.Client.Value(QStringLiteral("preview")).compare(u"y", Qt::CaseInsensitive) == 0));
}

// The page behind a message's link: the organization's ID followed by the
// message's 32-digit Guid, which stands for the credentials. An ID that
// names no message gets the same answer as a malformed one.
ServerReply ViewMessagePage(RequestContext &Context)
{
    static const QRegularExpression link(QStringLiteral("^([A-Za-z0-9_-]{0,64})([0-9A-Fa-f]{32})$"));
    const QRegularExpressionMatch id = link.match(Context.Client.Value(QStringLiteral("id")));
    const ServerReply missing = Page(QStringLiteral("<!DOCTYPE html><html><body><p>There is no such message.</p></body></html>"));
    if (!id.hasMatch())
        return missing;
    QSqlQuery query(QSqlDatabase::database(Store(Context).ReaderConnection(), false));
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT RecordNo FROM MessageStore WHERE Guid=? AND OrganizationID=?"));
    query.addBindValue(id.captured(2));
    query.addBindValue(id.captured(1));
    if (!query.exec()) {
        Store(Context).LastError = query.lastError().text();
        return MessageStoreFailure(Context);
    }
    if (!query.next())
        return missing;
    const QString mime = Store(Context).GetMessage(query.value(0).toLongLong());
    return mime.isEmpty() ? missing : Page(MessagePage(mime, false));
}

ServerReply ChangeMessage(RequestContext &Context, bool (clsMessageStore::*Change)(qint64))
{
    const auto found = FindMessage(Context);
    if (const auto *refused = std::get_if<ServerReply>(&found))
        return *refused;
    if (!(Store(Context).*Change)(std::get<StoredMessage>(found).RecordNo))
        return MessageStoreFailure(Context);
    return ServerReply::Ok();
}

ServerReply DeleteMessage(RequestContext &Context)
{
    return ChangeMessage(Context, &clsMessageStore::DeleteMessage);
}

ServerReply MarkAsRead(RequestContext &Context)
{
    return ChangeMessage(Context, &clsMessageStore::MarkAsRead);
}

ServerReply MarkAsUnRead(RequestContext &Context)
{
    return ChangeMessage(Context, &clsMessageStore::MarkAsUnRead);
}

// A message stays in its organization: the target folder must be one of it
// that the user sees.
ServerReply MoveMessage(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("movetofolderid")))
        return *bad;
    const auto found = FindMessage(Context);
    if (const auto *refused = std::get_if<ServerReply>(&found))
        return *refused;
    const StoredMessage &message = std::get<StoredMessage>(found);
    const clsUserFolder *target = UserFolders().Item(Context.Client.MoveToFolderID);
    if (!target)
        return ServerReply::Refusal(QStringLiteral("There is no folder with the ID \"%1\".").arg(Context.Client.MoveToFolderID));
    if (!MaySeeFolder(Context.User, target->ID))
        return ServerReply::Refusal(QStringLiteral("This folder is not yours to see."));
    if (target->OrganizationID != message.OrganizationID)
        return ServerReply::Refusal(QStringLiteral("The folder belongs to another organization."));
    if (!Store(Context).MoveMessage(message.RecordNo, message.FolderID, target->ID, Context.Client.AccountID))
        return MessageStoreFailure(Context);
    return ServerReply::Ok();
}

// The day summary ---------------------------------------------------------

// searchtext carries the report's number: a token type, or 1000 to 1002 for
// the day counts. Others than system administrators see the accounts of
// their organization.
ServerReply GetDaySummary(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("accountid")))
        return *bad;
    if (auto bad = CheckNumber(Context, QStringLiteral("searchtext"), false))
        return *bad;
    QDate from = QDate::currentDate().addDays(1 - QDate::currentDate().day());
    QDate to = QDate::currentDate();
    if (auto bad = ReadPeriod(Context, from, to))
        return *bad;
    const QString accountID = Context.Client.AccountID;
    const clsUser &user = Context.User;
    if (!user.Admin) {
        const clsAccount *account = Accounts().Item(accountID);
        if (!account || account->OrganizationID != user.OrganizationID)
            return ServerReply::Refusal(QStringLiteral("This account is not yours to see."));
    }
    clsMessageStore &store = Store(Context);
    const QString report = store.GetDaySummary(accountID, from, to, Context.Client.SearchText.toInt());
    return report.isEmpty() ? MessageStoreFailure(Context) : ServerReply::Ok(report);
}

// The store as a whole ----------------------------------------------------

// A system administrator clears the whole store, an organization
// administrator its organization's part.
ServerReply DeleteMailStore(RequestContext &Context)
{
    const clsUser &user = Context.User;
    if (!IsAdministrator(user))
        return ServerReply::Refusal(QStringLiteral("Only an administrator can clear the message store."));
    const QString organization = user.Admin ? QString() : user.OrganizationID;
    // Clearing takes the token types with the counts; the built-in ones come back.
    if (!Store(Context).ClearAllMailStore(organization) || !Store(Context).AddMissingDaySummaryTokenTypes())
        return MessageStoreFailure(Context);
    const QString cleared = user.Admin ? QStringLiteral("The message store was cleared by ")
                                       : QStringLiteral("The messages of organization %1 were cleared by ").arg(organization);
    Context.Services.Log.Add(cleared + user.Username);
    return ServerReply::Ok();
}

// Connection test ---------------------------------------------------------

ServerReply TestDBConnection(RequestContext &Context)
{
    if (!IsAdministrator(Context.User))
        return ServerReply::Refusal(QStringLiteral("Only an administrator can test database connections."));
    const QString text = Context.Client.SearchText.trimmed();
    const QString result =
        text.isEmpty() ? QStringLiteral("Error: No connection text was given.") : DatabaseConnections::Test(text);
    clsXML reply;
    reply.Append(result, QStringLiteral("result"));
    return ServerReply::Ok(reply.GetXML());
}

} // namespace

void AddMessageRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("countmessages.xml"), RequestVerb::Get, CountMessages);
    Table.Add(QStringLiteral("getmessages.xml"), RequestVerb::Get, GetMessages);
    Table.Add(QStringLiteral("getmessage.xml"), RequestVerb::Get, GetMessage);
    Table.Add(QStringLiteral("getmessage.aspx"), RequestVerb::Get, GetMessagePage);
    Table.AddPublic(QStringLiteral("viewmessage.aspx"), RequestVerb::Get, ViewMessagePage);
    Table.Add(QStringLiteral("deletemessage.xml"), RequestVerb::Get, DeleteMessage);
    Table.Add(QStringLiteral("deletemessages.xml"), RequestVerb::Get, DeleteMessages);
    Table.Add(QStringLiteral("movemessage.xml"), RequestVerb::Get, MoveMessage);
    Table.Add(QStringLiteral("markasread.xml"), RequestVerb::Get, MarkAsRead);
    Table.Add(QStringLiteral("markasunread.xml"), RequestVerb::Get, MarkAsUnRead);
    Table.Add(QStringLiteral("markallasread.xml"), RequestVerb::Get, MarkAllAsRead);
    Table.Add(QStringLiteral("getdaysummary.xml"), RequestVerb::Get, GetDaySummary);
    Table.Add(QStringLiteral("deletemailstore.xml"), RequestVerb::Get, DeleteMailStore);
    Table.Add(QStringLiteral("testdbconnection.htm"), RequestVerb::Get, TestDBConnection);
}
