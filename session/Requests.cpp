#include "Requests.h"
#include "foundation/Crypt.h"

namespace Requests {
namespace {

// Builds "name?key=value&key=value" in the order the keys are added.
class Address
{
public:
    explicit Address(const char *Name) : m_text(QString::fromLatin1(Name)) {}

    Address &Plain(const char *Key, const QString &Value)
    {
        m_text += (m_first ? u'?' : u'&') + QString::fromLatin1(Key) + u'=' + Value;
        m_first = false;
        return *this;
    }
    Address &Encoded(const char *Key, const QString &Value) { return Plain(Key, URLEncode(Value)); }
    Address &Number(const char *Key, qint32 Value) { return Plain(Key, QString::number(Value)); }
    operator QString() const { return m_text; }

private:
    QString m_text;
    bool m_first = true;
};

QString YesNo(bool Value)
{
    return Value ? QStringLiteral("Y") : QStringLiteral("N");
}

Address WithSet(const char *Name, const MessageSet &Set)
{
    Address address(Name);
    address.Plain("accountid", Set.AccountID);
    if (!Set.TriggerID.isEmpty())
        address.Plain("triggerid", Set.TriggerID);
    address.Plain("fromdate", Set.FromDate)
        .Plain("todate", Set.ToDate)
        .Plain("errorsonly", YesNo(Set.ErrorsOnly))
        .Plain("matchesonly", YesNo(Set.MatchesOnly))
        .Encoded("searchtext", Set.SearchText)
        .Encoded("folderid", Set.FolderID);
    if (Set.FromRow > 0)
        address.Number("fromrow", Set.FromRow).Number("torow", Set.ToRow);
    return address;
}

Address FolderRecord(const char *Name, const QString &FolderID, qint32 RecordNo)
{
    return Address(Name).Encoded("folderid", FolderID).Number("recordno", RecordNo);
}

Address AccountFolderRecord(const char *Name, const QString &AccountID, const QString &FolderID, qint32 RecordNo)
{
    return Address(Name).Plain("accountid", AccountID).Encoded("folderid", FolderID).Number("recordno", RecordNo);
}

Address FolderPlace(const char *Name, const QString &FolderID, const QString &ParentID, const QString &Folder,
                    const QString &AccountID)
{
    return Address(Name)
        .Encoded("folderid", FolderID)
        .Plain("parentid", ParentID)
        .Encoded("folder", Folder)
        .Plain("accountid", AccountID);
}

Address AccountTrigger(const char *Name, const QString &AccountID, const QString &TriggerID)
{
    return Address(Name).Plain("accountid", AccountID).Plain("triggerid", TriggerID);
}

Address AccountRecord(const char *Name, const QString &AccountID, qint32 RecordNo)
{
    return Address(Name).Plain("accountid", AccountID).Number("recordno", RecordNo);
}

Address AccountTriggerSearch(const char *Name, const QString &AccountID, const QString &TriggerID,
                             const QString &SearchText)
{
    return AccountTrigger(Name, AccountID, TriggerID).Encoded("searchtext", SearchText);
}

} // namespace

QString AuthQuery(const QString &UserName, const QString &PasswordHash)
{
    return QStringLiteral("username=") + URLEncode(UserName) + QStringLiteral("&password=") + URLEncode(PasswordHash);
}

QString WithAuth(const QString &Address, const QString &Auth)
{
    return Address + (Address.contains(u'?') ? u'&' : u'?') + Auth;
}

QString GetSession() { return Address("getsession.xml"); }
QString GetGlobals() { return Address("getglobals.xml"); }
QString PostGlobals() { return Address("postglobals.htm"); }
QString SendTestEmail(const QString &Subject) { return Address("sendtestemail.xml").Encoded("subject", Subject); }
QString TestDBConnection(const QString &ConnectionString)
{
    return Address("testdbconnection.htm").Encoded("text", ConnectionString);
}
QString CheckNow() { return Address("checknow.xml"); }
QString DeleteMailStore() { return Address("deletemailstore.xml"); }
QString DeleteLog() { return Address("deletelog.xml"); }

QString GetAccounts() { return Address("getaccounts.xml"); }
QString GetAccount(const QString &AccountID) { return Address("getaccount.xml").Plain("accountid", AccountID); }
QString PostAccount(const QString &AccountID) { return Address("postaccount.htm").Plain("accountid", AccountID); }
QString DeleteAccount(const QString &AccountID) { return Address("deleteaccount.xml").Plain("accountid", AccountID); }
QString EnableAccount(const QString &AccountID) { return Address("enableaccount.xml").Plain("accountid", AccountID); }
QString DisableAccount(const QString &AccountID) { return Address("disableaccount.xml").Plain("accountid", AccountID); }
QString GetTriggers(const QString &AccountID) { return Address("gettriggers.xml").Plain("accountid", AccountID); }
QString GetTriggerConditions(const QString &AccountID)
{
    return Address("gettriggerconditions.xml").Plain("accountid", AccountID);
}
QString GetTrigger(const QString &AccountID, const QString &TriggerID)
{
    return AccountTrigger("gettrigger.xml", AccountID, TriggerID);
}
QString GetTriggerList(const QString &AccountID) { return Address("gettriggerlist.txt").Plain("accountid", AccountID); }
QString PostTrigger(const QString &AccountID, const QString &TriggerID)
{
    return AccountTrigger("posttrigger.htm", AccountID, TriggerID);
}
QString DeleteTrigger(const QString &AccountID, const QString &TriggerID)
{
    return AccountTrigger("deletetrigger.xml", AccountID, TriggerID);
}
QString EnableTrigger(const QString &AccountID, const QString &TriggerID)
{
    return AccountTrigger("enabletrigger.xml", AccountID, TriggerID);
}
QString DisableTrigger(const QString &AccountID, const QString &TriggerID)
{
    return AccountTrigger("disabletrigger.xml", AccountID, TriggerID);
}
QString SwapTrigger(const QString &AccountID, const QString &TriggerID, const QString &OtherTriggerID)
{
    return AccountTrigger("swaptrigger.xml", AccountID, TriggerID).Plain("movetofolderid", OtherTriggerID);
}
QString ReceivedAfterReset(const QString &AccountID, const QString &TriggerID)
{
    Address address("receivedafterreset.xml");
    address.Plain("accountid", AccountID);
    if (!TriggerID.isEmpty())
        address.Plain("triggerid", TriggerID);
    return address;
}
QString RunWith(const QString &AccountID, const QString &TriggerID)
{
    return AccountTrigger("runwith.xml", AccountID, TriggerID);
}
QString DeployAccount(const QString &AccountID) { return Address("deployaccount.htm").Plain("accountid", AccountID); }
QString DeployFolder(const QString &FolderID, const QString &ParentID, const QString &Folder, const QString &AccountID)
{
    return FolderPlace("deployfolder.xml", FolderID, ParentID, Folder, AccountID);
}

QString GetOrganizations() { return Address("getorganizations.xml"); }
QString PostOrganization(const QString &OrganizationID)
{
    return Address("postorganization.htm").Plain("organizationid", OrganizationID);
}
QString DeleteOrganization(const QString &OrganizationID)
{
    return Address("deleteorganization.xml").Plain("organizationid", OrganizationID);
}
QString GetUsers() { return Address("getusers.xml"); }
QString GetUser(const QString &UserID) { return Address("getuser.xml").Plain("userid", UserID); }
QString PostUser(const QString &UserID) { return Address("postuser.htm").Plain("userid", UserID); }
QString DeleteUser(const QString &UserID) { return Address("deleteuser.xml").Plain("userid", UserID); }
QString GetFolders() { return Address("getfolders.xml"); }
QString AddFolder(const QString &FolderID, const QString &ParentID, const QString &Folder, const QString &AccountID)
{
    return FolderPlace("addfolder.xml", FolderID, ParentID, Folder, AccountID);
}
QString UpdateFolder(const QString &FolderID, const QString &ParentID, const QString &Folder, const QString &AccountID,
                     const QString &Email)
{
    return FolderPlace("updatefolder.xml", FolderID, ParentID, Folder, AccountID).Encoded("email", Email);
}
QString DeleteFolder(const QString &FolderID) { return Address("deletefolder.xml").Encoded("folderid", FolderID); }

QString MessageSetQuery(const MessageSet &Set)
{
    return QString(WithSet("", Set)).mid(1);
}
QString CountMessages(const MessageSet &Set) { return WithSet("countmessages.xml", Set); }
QString GetMessages(const MessageSet &Set) { return WithSet("getmessages.xml", Set); }
QString GetMessage(const QString &FolderID, qint32 RecordNo) { return FolderRecord("getmessage.xml", FolderID, RecordNo); }
QString GetMessagePage(const QString &UserName, const QString &Password, const QString &FolderID, qint32 RecordNo,
                       bool Preview)
{
    Address address("getmessage.aspx");
    address.Encoded("username", UserName)
        .Encoded("password", Password)
        .Encoded("folderid", FolderID)
        .Number("recordno", RecordNo);
    if (Preview)
        address.Plain("preview", QStringLiteral("y"));
    return address;
}
QString ViewMessage(const QString &ID) { return Address("viewmessage.aspx").Plain("id", ID); }
QString DeleteMessage(const QString &FolderID, qint32 RecordNo)
{
    return FolderRecord("deletemessage.xml", FolderID, RecordNo);
}
QString DeleteMessages(const MessageSet &Set) { return WithSet("deletemessages.xml", Set); }
QString MoveMessage(const QString &FolderID, qint32 RecordNo, const QString &MoveToFolderID, const QString &AccountID)
{
    return FolderRecord("movemessage.xml", FolderID, RecordNo)
        .Plain("movetofolderid", MoveToFolderID)
        .Plain("accountid", AccountID);
}
QString ForwardMessage(const QString &FolderID, qint32 RecordNo, const QString &Email)
{
    return FolderRecord("forwardmessage.xml", FolderID, RecordNo).Encoded("email", Email);
}
QString ReprocessMessage(const QString &AccountID, const QString &FolderID, qint32 RecordNo)
{
    return AccountFolderRecord("reprocessmessage.xml", AccountID, FolderID, RecordNo);
}
QString MarkAsRead(const QString &AccountID, const QString &FolderID, qint32 RecordNo)
{
    return AccountFolderRecord("markasread.xml", AccountID, FolderID, RecordNo);
}
QString MarkAsUnread(const QString &AccountID, const QString &FolderID, qint32 RecordNo)
{
    return AccountFolderRecord("markasunread.xml", AccountID, FolderID, RecordNo);
}
QString MarkAllAsRead(const MessageSet &Set) { return WithSet("markallasread.xml", Set); }
QString GetDaySummary(const QString &AccountID, const QString &FromDate, const QString &ToDate,
                      const QString &SearchText)
{
    return Address("getdaysummary.xml")
        .Plain("accountid", AccountID)
        .Plain("fromdate", FromDate)
        .Plain("todate", ToDate)
        .Encoded("searchtext", SearchText);
}

QString GetScheduledMessages(const QString &AccountID, const QString &TriggerID, const QString &SearchText)
{
    return AccountTriggerSearch("getscheduledmessages.xml", AccountID, TriggerID, SearchText);
}
QString GetScheduledMessage(const QString &AccountID, qint32 RecordNo)
{
    return AccountRecord("getscheduledmessage.xml", AccountID, RecordNo);
}
QString DeleteScheduledMessage(const QString &AccountID, qint32 RecordNo)
{
    return AccountRecord("deletescheduledmessage.xml", AccountID, RecordNo);
}
QString DeleteScheduledMessages(const QString &AccountID, const QString &TriggerID, const QString &SearchText)
{
    return AccountTriggerSearch("deletescheduledmessages.xml", AccountID, TriggerID, SearchText);
}
QString SendScheduledMessage(const QString &AccountID, qint32 RecordNo)
{
    return AccountRecord("sendscheduledmessage.xml", AccountID, RecordNo);
}

QString GetLog() { return Address("getlog.xml"); }
QString GetEdgeLog() { return Address("getedgelog.xml"); }
QString GetMsgpLog() { return Address("getmsgplog.xml"); }
QString GetEdgeQueueCount() { return Address("getedgequeuecount.xml"); }
QString GetNodes() { return Address("getnodes.xml"); }
QString UpdateNodeStats() { return Address("updatenodestats.xml"); }
QString Subscribe(const QString &Auth, const QString &NodeName, const QString &Text)
{
    return QStringLiteral("subscribe.xml?") + Auth + QStringLiteral("&nodename=") + NodeName + QStringLiteral("&text=")
           + Text;
}

QString GetDocumentFolders() { return Address("getdocumentfolders.xml"); }
QString GetDocumentFolderContents(const QString &Folder)
{
    return Address("getdocumentfoldercontents.xml").Encoded("folder", Folder);
}
QString CreateDocumentFolder(const QString &Folder)
{
    return Address("createdocumentfolder.xml").Encoded("folder", Folder);
}
QString DeleteDocumentFolder(const QString &Folder)
{
    return Address("deletedocumentfolder.xml").Encoded("folder", Folder);
}
QString DeleteDocumentFile(const QString &Folder, const QString &FileName)
{
    return Address("deletedocumentfile.xml").Encoded("folder", Folder).Encoded("searchtext", FileName);
}
QString Upload(const QString &Folder) { return Address("upload.aspx").Encoded("folder", Folder); }

} // namespace Requests
