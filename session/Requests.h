#pragma once
#include <QString>

// The addresses of every request the console makes to the server's web
// service, relative to ServerURL and without the credentials. Each function
// composes its request's keys in their fixed order and URL-encodes exactly the
// values that can hold free text (folder IDs and names, user names,
// passwords, e-mail addresses, message UIDs, search and free text);
// identifiers, numbers, dates and flags stand as given. Windows call these
// and never compose an address themselves.
namespace Requests {

// "username=" + encoded name + "&password=" + encoded digest.
QString AuthQuery(const QString &UserName, const QString &PasswordHash);
// The address with the credentials behind "?", or behind "&" when it already
// holds a "?".
QString WithAuth(const QString &Address, const QString &Auth);

// The query that selects a set of messages, composed by the message browser.
// TriggerID is left out when empty, the row range when FromRow is 0.
struct MessageSet
{
    QString AccountID;
    QString TriggerID;
    QString FromDate; // "yyyy-mm-dd"
    QString ToDate;
    bool ErrorsOnly = false;
    bool MatchesOnly = false;
    QString SearchText;
    QString FolderID;
    qint32 FromRow = 0;
    qint32 ToRow = 0;
};

// Session and globals
QString GetSession();
QString GetGlobals();
QString PostGlobals();
// The body of the test message is posted.
QString SendTestEmail(const QString &Subject);
QString TestDBConnection(const QString &ConnectionString);
QString CheckNow();
QString DeleteMailStore();
QString DeleteLog();

// Accounts and triggers
QString GetAccounts();
QString GetAccount(const QString &AccountID);
QString PostAccount(const QString &AccountID);
QString DeleteAccount(const QString &AccountID);
QString EnableAccount(const QString &AccountID);
QString DisableAccount(const QString &AccountID);
QString GetTriggers(const QString &AccountID);
QString GetTriggerConditions(const QString &AccountID);
QString GetTrigger(const QString &AccountID, const QString &TriggerID);
QString GetTriggerList(const QString &AccountID);
QString PostTrigger(const QString &AccountID, const QString &TriggerID);
QString DeleteTrigger(const QString &AccountID, const QString &TriggerID);
QString EnableTrigger(const QString &AccountID, const QString &TriggerID);
QString DisableTrigger(const QString &AccountID, const QString &TriggerID);
// The neighbour trigger travels as "movetofolderid".
QString SwapTrigger(const QString &AccountID, const QString &TriggerID, const QString &OtherTriggerID);
QString ReceivedAfterReset(const QString &AccountID, const QString &TriggerID = QString());
QString RunWith(const QString &AccountID, const QString &TriggerID);
QString DeployAccount(const QString &AccountID);
QString DeployFolder(const QString &FolderID, const QString &ParentID, const QString &Folder, const QString &AccountID);

// Users, organizations and folders
QString GetOrganizations();
QString PostOrganization(const QString &OrganizationID);
QString DeleteOrganization(const QString &OrganizationID);
QString GetUsers();
QString GetUser(const QString &UserID);
QString PostUser(const QString &UserID);
QString DeleteUser(const QString &UserID);
QString GetFolders();
QString AddFolder(const QString &FolderID, const QString &ParentID, const QString &Folder, const QString &AccountID);
QString UpdateFolder(const QString &FolderID, const QString &ParentID, const QString &Folder, const QString &AccountID,
                     const QString &Email);
QString DeleteFolder(const QString &FolderID);

// Messages
QString MessageSetQuery(const MessageSet &Set);
QString CountMessages(const MessageSet &Set);
QString GetMessages(const MessageSet &Set);
QString GetMessage(const QString &FolderID, qint32 RecordNo);
// The page a viewer opens itself, with its own credentials in the query.
QString GetMessagePage(const QString &UserName, const QString &Password, const QString &FolderID, qint32 RecordNo,
                       bool Preview = false);
QString ViewMessage(const QString &ID);
QString DeleteMessage(const QString &FolderID, qint32 RecordNo);
QString DeleteMessages(const MessageSet &Set);
QString MoveMessage(const QString &FolderID, qint32 RecordNo, const QString &MoveToFolderID, const QString &AccountID);
QString ForwardMessage(const QString &FolderID, qint32 RecordNo, const QString &Email);
QString ReprocessMessage(const QString &AccountID, const QString &FolderID, qint32 RecordNo);
QString MarkAsRead(const QString &AccountID, const QString &FolderID, qint32 RecordNo);
QString MarkAsUnread(const QString &AccountID, const QString &FolderID, qint32 RecordNo);
QString MarkAllAsRead(const MessageSet &Set);
QString GetDaySummary(const QString &AccountID, const QString &FromDate, const QString &ToDate,
                      const QString &SearchText);

// Scheduled messages
QString GetScheduledMessages(const QString &AccountID, const QString &TriggerID, const QString &SearchText);
QString GetScheduledMessage(const QString &AccountID, qint32 RecordNo);
QString DeleteScheduledMessage(const QString &AccountID, qint32 RecordNo);
QString DeleteScheduledMessages(const QString &AccountID, const QString &TriggerID, const QString &SearchText);
QString SendScheduledMessage(const QString &AccountID, qint32 RecordNo);

// Logs and nodes
QString GetLog();
QString GetEdgeLog();
QString GetMsgpLog();
QString GetEdgeQueueCount();
QString GetNodes();
QString UpdateNodeStats();
// The push subscription carries the credentials first, then the subscriber.
QString Subscribe(const QString &Auth, const QString &NodeName, const QString &Text);

// Documents
QString GetDocumentFolders();
// "ROOT" names the top folder.
QString GetDocumentFolderContents(const QString &Folder);
QString CreateDocumentFolder(const QString &Folder);
QString DeleteDocumentFolder(const QString &Folder);
QString DeleteDocumentFile(const QString &Folder, const QString &FileName);
QString Upload(const QString &Folder);

} // namespace Requests
