#pragma once
#include "ServerFixture.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QTest>
#include <QWidget>
#include <memory>

// A real server holding two organizations, three users besides Admin and an
// account of every source kind, and the console logged on to it as Admin.
namespace ShellFixture {

inline std::unique_ptr<clsAccountTrigger> MakeTrigger(const QString &ID, const QString &Name, bool Enabled = true)
{
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->TriggerID = ID;
    trigger->Name = Name;
    trigger->Enabled = Enabled;
    trigger->FromAddressLIKE = QStringLiteral("*@orders.example");
    trigger->ReceivedAfter = QDateTime(QDate(2024, 1, 1), QTime(0, 0));
    trigger->SubjectLineLIKE = QStringLiteral("order\tinvoice\t");
    trigger->Condition = QStringLiteral("<Lines><Line>|%msg_subject%|=|a &lt; b</Line></Lines>");
    auto field = std::make_unique<clsTriggerField>();
    field->ID = ID + QStringLiteral("F");
    field->Name = QStringLiteral("OrderNo");
    trigger->FieldsToProcess().Add(std::move(field));
    return trigger;
}

// The accounts in the order the server lists them: the name, then the
// Message Source and Account columns the list must show.
struct AccountCase
{
    QString ID;
    QString Name;
    QString Source;
    QString Account;
};

inline QList<AccountCase> AccountCases()
{
    return {
        {QStringLiteral("A01"), QStringLiteral("<Tom & 'Jerry' \"Co\">"), QStringLiteral("IMAP: imap.alpha.test"), QStringLiteral("tom")},
        {QStringLiteral("A02"), QStringLiteral("Pop"), QStringLiteral("POP3: pop.example"), QStringLiteral("pat")},
        {QStringLiteral("A03"), QStringLiteral("Web"), QStringLiteral("HTTP: https://web.example/x"), QString()},
        {QStringLiteral("A04"), QStringLiteral("Feed"), QStringLiteral("RSS: https://rss.example/feed"), QString()},
        {QStringLiteral("A05"), QStringLiteral("Pull"), QStringLiteral("DBPULL: Driver=SQLite3;Database=/tmp/x.db"), QStringLiteral("SELECT * FROM t")},
        {QStringLiteral("A06"), QStringLiteral("Files"), QStringLiteral("File: /srv/in"), QStringLiteral("*.eml")},
        {QStringLiteral("A07"), QStringLiteral("Direct"), QStringLiteral("Direct: alpha.test"), QStringLiteral("orders;sales")},
        {QStringLiteral("A08"), QStringLiteral("Exchange"), QStringLiteral("Exchange: https://ews.example/ews"), QStringLiteral("shared@alpha.test Via svc")},
        {QStringLiteral("A09"), QStringLiteral("Sheets"), QStringLiteral("CSV/Excel File: /srv/csv"), QStringLiteral("*.csv")},
        {QStringLiteral("A10"), QStringLiteral("Tweets"), QStringLiteral("Twitter: news"), QStringLiteral("Mentions news")},
        {QStringLiteral("A11"), QStringLiteral("Stopped"), QStringLiteral("IMAP: imap.beta.test"), QStringLiteral("off")},
    };
}

inline std::unique_ptr<clsAccount> MakeAccount(const AccountCase &Case)
{
    auto account = std::make_unique<clsAccount>();
    account->AccountID = Case.ID;
    account->Name = Case.Name;
    account->OrganizationID = QStringLiteral("OrgA");
    const int number = Case.ID.mid(1).toInt();
    switch (number) {
    case 1:
        account->IMAP = true;
        account->IMAPServer = QStringLiteral("%Host%");
        account->IMAPAccount = QStringLiteral("tom");
        account->Triggers.Add(MakeTrigger(QStringLiteral("T1"), QStringLiteral("Orders <new> & 'old'")));
        account->Triggers.Add(MakeTrigger(QStringLiteral("T2"), QStringLiteral("Paused"), false));
        account->XMLIncludeTriggers = true;
        break;
    case 2:
        account->SMTPServer = true;
        account->ServerIP = QStringLiteral("pop.example");
        account->ServerAccount = QStringLiteral("pat");
        break;
    case 3:
        account->HTTP = true;
        account->HTTPUrl = QStringLiteral("https://web.example/x");
        break;
    case 4:
        account->RSS = true;
        account->RSSUrl = QStringLiteral("https://rss.example/feed");
        break;
    case 5:
        account->DBPull = true;
        account->DBConnection = QStringLiteral("Driver=SQLite3;Database=/tmp/x.db");
        account->DBSQL = QStringLiteral("SELECT * FROM t");
        break;
    case 6:
        account->FilePickUp = true;
        account->FilePickupFolder = QStringLiteral("/srv/in");
        account->FilePickUpMask = QStringLiteral("*.eml");
        break;
    case 7:
        account->MailServer = true;
        account->MailServerDomain = QStringLiteral("alpha.test");
        account->MailServerAliases = QStringLiteral("orders;sales");
        break;
    case 8:
        account->EWS = true;
        account->EWSUrl = QStringLiteral("https://ews.example/ews");
        account->EWSUsername = QStringLiteral("svc");
        account->EWSOtherMailbox = QStringLiteral("shared@alpha.test");
        break;
    case 9:
        account->CSVPickUp = true;
        account->CSVPickupFolder = QStringLiteral("/srv/csv");
        account->CSVPickupMask = QStringLiteral("*.csv");
        break;
    case 10:
        account->TwitterFeed = true;
        account->TwitterSettings = QStringLiteral("<ScreenName>news</ScreenName><FeedType>1</FeedType>");
        break;
    default:
        account->IMAP = true;
        account->IMAPServer = QStringLiteral("imap.beta.test");
        account->IMAPAccount = QStringLiteral("off");
        account->Enabled = false;
        account->OrganizationID = QStringLiteral("OrgB");
        break;
    }
    return account;
}

inline bool Posted(ServerFixture &Server, const QString &Request, const QString &Fragment)
{
    const HttpReply reply = Server.Post(Request, Fragment.toUtf8());
    return reply.Status == 200 && reply.Text() == QStringLiteral("OK");
}

// Fills the server; false when a post was refused.
inline bool Fill(ServerFixture &Server)
{
    const struct
    {
        const char *ID, *Name, *Constants;
    } organizations[] = {{"OrgA", "Alpha Ltd", "Host=imap.alpha.test\t"}, {"OrgB", "Beta & Co", ""}};
    for (const auto &entry : organizations) {
        clsUserOrganization organization;
        organization.ID = QString::fromLatin1(entry.ID);
        organization.Name = QString::fromLatin1(entry.Name);
        organization.setConstants(QString::fromLatin1(entry.Constants));
        if (!Posted(Server, QStringLiteral("postorganization.htm?organizationid=") + organization.ID, organization.XML()))
            return false;
    }
    const struct
    {
        const char *ID, *Name, *Organization, *Email;
        bool Admin;
    } users[] = {{"UAlice", "alice", "OrgA", "alice@alpha.test", false},
                 {"UPat", "pat <p&p>", "OrgA", "", false},
                 {"UBob", "bob", "OrgB", "bob@beta.test,b2@beta.test", true}};
    for (const auto &entry : users) {
        clsUser user;
        user.ID = QString::fromLatin1(entry.ID);
        user.Username = QString::fromLatin1(entry.Name);
        user.Password = QStringLiteral("pw");
        user.OrganizationID = QString::fromLatin1(entry.Organization);
        user.Email = QString::fromLatin1(entry.Email);
        user.Admin = entry.Admin;
        if (!Posted(Server, QStringLiteral("postuser.htm?userid=") + user.ID, user.XML()))
            return false;
    }
    for (const AccountCase &entry : AccountCases()) {
        if (!Posted(Server, QStringLiteral("postaccount.htm?accountid=") + entry.ID, MakeAccount(entry)->XML()))
            return false;
    }
    return true;
}

// Set POSTVANE_SCREENSHOTS to a folder to keep a picture of a window there.
inline void Picture(QWidget *Window, const QString &Name)
{
    const QString folder = qEnvironmentVariable("POSTVANE_SCREENSHOTS");
    if (!folder.isEmpty())
        Window->grab().save(folder + u'/' + Name + QStringLiteral(".png"));
}

// The console's session on the server as Admin: true when it logged on.
inline bool LogOn(const ServerFixture &Server)
{
    Global.ServerName = QStringLiteral("127.0.0.1");
    Global.ServerURL = QStringLiteral("https://127.0.0.1:%1/").arg(Server.Port);
    Global.ServerPort = Server.Port;
    Global.UserName = QStringLiteral("Admin");
    Global.Password.clear();
    Global.PasswordHash = MD5Hash(QString());
    Global.IsLocal = false;
    Global.DevMode = true;
    Remote().Closing = false;
    return Remote().Login() == 0;
}

// A record as the server has it now.
inline std::unique_ptr<clsAccountTrigger> ServerTrigger(ServerFixture &Server, const QString &AccountID,
                                                        const QString &TriggerID)
{
    const HttpReply reply = Server.Get(Requests::GetTrigger(AccountID, TriggerID));
    if (reply.Status != 200 || reply.Text().startsWith(QStringLiteral("Error:")))
        return nullptr;
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->setXML(reply.Text());
    return trigger;
}

inline std::unique_ptr<clsAccount> ServerAccount(ServerFixture &Server, const QString &AccountID)
{
    const HttpReply reply = Server.Get(Requests::GetTriggers(AccountID));
    auto account = std::make_unique<clsAccount>();
    const HttpReply record = Server.Get(Requests::GetAccount(AccountID));
    if (record.Status != 200 || record.Text().startsWith(QStringLiteral("Error:")))
        return nullptr;
    account->setXML(record.Text());
    account->Triggers.setXML(reply.Text());
    return account;
}

} // namespace ShellFixture
