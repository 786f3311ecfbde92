#include "ServerFixture.h"
#include "TestRegistry.h"
#include "actions/ActionItem.h"
#include "actions/clsActionSetVariable.h"
#include "model/GlobalCollections.h"

#include <QTest>

namespace {

const QString Admin = QStringLiteral("Admin");
const QString NoPassword;
const QString Alice = QStringLiteral("alice"); // administers OrgA
const QString AlicePassword = QStringLiteral("pw-alice");
const QString Pat = QStringLiteral("pat"); // a plain user of OrgA
const QString PatPassword = QStringLiteral("pw-pat");

QDateTime At(int Year, int Month, int Day)
{
    return QDateTime(QDate(Year, Month, Day), QTime(0, 0));
}

// A trigger with a condition, one field and one action, so that its full,
// short and subset forms all differ.
std::unique_ptr<clsAccountTrigger> MakeTrigger(const QString &ID, const QString &Name)
{
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->TriggerID = ID;
    trigger->Name = Name;
    trigger->FromAddressLIKE = QStringLiteral("*@") + ID.toLower() + QStringLiteral(".example");
    trigger->ReceivedAfter = At(2024, 1, 1);
    trigger->Condition = QStringLiteral("<Lines><Line>|%msg_subject%|=|") + Name + QStringLiteral("</Line></Lines>");
    auto field = std::make_unique<clsTriggerField>();
    field->ID = ID + QStringLiteral("F");
    field->Name = QStringLiteral("OrderNo");
    trigger->FieldsToProcess().Add(std::move(field));
    clsActionSetVariable set;
    set.ID = ID + QStringLiteral("S");
    set.Name = QStringLiteral("Total");
    trigger->ActionList().Add(ActionItem::Make(set));
    return trigger;
}

QByteArray TriggerFragment(const QString &ID, const QString &Name)
{
    return MakeTrigger(ID, Name)->XML().toUtf8();
}

// An account reading IMAP on an interval, last checked and last read in
// 2024, with triggers of the given IDs named after them.
std::unique_ptr<clsAccount> MakeAccount(const QString &ID, const QString &OrganizationID,
                                        const QStringList &TriggerIDs = {})
{
    auto account = std::make_unique<clsAccount>();
    account->AccountID = ID;
    account->OrganizationID = OrganizationID;
    account->Name = QStringLiteral("Account ") + ID;
    account->SCHEDULE = QStringLiteral("05|YYYYYYY");
    account->LastChecked = At(2024, 5, 1);
    account->IMAP = true;
    account->IMAPServer = QStringLiteral("imap.example");
    account->IMAPPassword = QStringLiteral("imap & secret");
    account->IMAPLastEmail = At(2024, 6, 1);
    for (const QString &trigger : TriggerIDs)
        account->Triggers.Add(MakeTrigger(trigger, trigger + QStringLiteral(" rule")));
    account->XMLIncludeTriggers = !TriggerIDs.isEmpty();
    return account;
}

QByteArray AccountFragment(const QString &ID, const QString &OrganizationID, const QStringList &TriggerIDs = {})
{
    return MakeAccount(ID, OrganizationID, TriggerIDs)->XML().toUtf8();
}

} // namespace

// Accounts and triggers through the web service: the forms they are read
// in, what a post changes, what a restart keeps, and who may touch which.
class tst_ServerAccounts : public QObject
{
    Q_OBJECT
    ServerFixture server;

    QString Ok(const HttpReply &Reply)
    {
        return Reply.Status == 200 ? Reply.Text() : QString::number(Reply.Status) + u' ' + Reply.Text();
    }
    QString Text(const QString &Request, const QString &As = Admin, const QString &Password = NoPassword)
    {
        return Ok(server.Get(Request, As, Password));
    }
    QString Post(const QString &Request, const QByteArray &Body, const QString &As = Admin,
                 const QString &Password = NoPassword)
    {
        return Ok(server.Post(Request, Body, As, Password));
    }
    struct Attempt
    {
        QString Request;
        QByteArray Body;
    };
    void ExpectRefused(const QList<Attempt> &Attempts, const QString &As = Admin, const QString &Password = NoPassword)
    {
        for (const Attempt &attempt : Attempts) {
            const HttpReply reply = attempt.Body.isEmpty() ? server.Get(attempt.Request, As, Password)
                                                           : server.Post(attempt.Request, attempt.Body, As, Password);
            QVERIFY2(reply.Refused(), qPrintable(attempt.Request));
        }
    }
    std::unique_ptr<clsAccount> ReadAccount(const QString &ID)
    {
        auto account = std::make_unique<clsAccount>();
        account->setXML(Text(QStringLiteral("getaccount.xml?accountid=") + ID));
        return account;
    }
    QString TriggerList(const QString &AccountID)
    {
        return Text(QStringLiteral("gettriggerlist.txt?accountid=") + AccountID);
    }
    // Everything Admin reads of the accounts, for before-and-after checks.
    QString Snapshot()
    {
        QString all = Text(QStringLiteral("getaccounts.xml"));
        colAccounts accounts;
        accounts.setXML(all);
        for (const clsAccount *account : accounts)
            all += Text(QStringLiteral("gettriggers.xml?accountid=") + account->AccountID);
        return all;
    }
    void Restart()
    {
        QCOMPARE(server.Stop(), 0);
        QVERIFY2(server.Start(), qPrintable(server.Problem));
    }

private slots:
    void initTestCase()
    {
        // The web service alone: no edge role reads the accounts and changes their dates.
        server.Arguments = {QStringLiteral("--roles"), QStringLiteral("web")};
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        for (const QString &organization : {QStringLiteral("OrgA"), QStringLiteral("OrgB")}) {
            clsUserOrganization record;
            record.ID = organization;
            record.Name = organization + QStringLiteral(" Ltd");
            QCOMPARE(Post(QStringLiteral("postorganization.htm?organizationid=") + organization, record.XML().toUtf8()),
                     QStringLiteral("OK"));
        }
        const struct
        {
            QString ID, Name, Password, OrganizationID;
            bool OrganizationAdmin;
        } users[] = {
            {QStringLiteral("AliceA"), Alice, AlicePassword, QStringLiteral("OrgA"), true},
            {QStringLiteral("PatA"), Pat, PatPassword, QStringLiteral("OrgA"), false},
            {QStringLiteral("BobB"), QStringLiteral("bob"), QStringLiteral("pw-bob"), QStringLiteral("OrgB"), true}};
        for (const auto &entry : users) {
            clsUser user;
            user.ID = entry.ID;
            user.Username = entry.Name;
            user.Password = entry.Password;
            user.OrganizationID = entry.OrganizationID;
            user.OrganizationAdmin = entry.OrganizationAdmin;
            QCOMPARE(Post(QStringLiteral("postuser.htm?userid=") + entry.ID, user.XML().toUtf8()),
                     QStringLiteral("OK"));
        }
        QCOMPARE(Text(QStringLiteral("addfolder.xml?folderid=FolderB&folder=Bolt"), QStringLiteral("bob"),
                      QStringLiteral("pw-bob")),
                 QStringLiteral("OK"));

        const QStringList triggers{QStringLiteral("T1"), QStringLiteral("T2"), QStringLiteral("T3")};
        QCOMPARE(Post(QStringLiteral("postaccount.htm?accountid=A1"),
                      AccountFragment(QStringLiteral("A1"), QStringLiteral("OrgA"), triggers)),
                 QStringLiteral("OK"));
        QCOMPARE(Post(QStringLiteral("postaccount.htm?accountid=B1"),
                      AccountFragment(QStringLiteral("B1"), QStringLiteral("OrgB"), {QStringLiteral("TB1")})),
                 QStringLiteral("OK"));
        QCOMPARE(Post(QStringLiteral("postaccount.htm?accountid=Shared"),
                      AccountFragment(QStringLiteral("Shared"), QString())),
                 QStringLiteral("OK"));
    }

    void accountWithTriggersReadsBackInEveryForm()
    {
        const QString list = Text(QStringLiteral("getaccounts.xml"));
        QVERIFY2(!list.contains(QStringLiteral("<Trigger>")), qPrintable(list));
        colAccounts accounts;
        accounts.setXML(list);
        QCOMPARE(accounts.Count(), 3);

        const std::unique_ptr<clsAccount> posted = MakeAccount(QStringLiteral("A1"), QStringLiteral("OrgA"));
        const std::unique_ptr<clsAccount> read = ReadAccount(QStringLiteral("A1"));
        QCOMPARE(read->Name, posted->Name);
        QCOMPARE(read->IMAPPassword, posted->IMAPPassword);
        QCOMPARE(read->IMAPLastEmail, posted->IMAPLastEmail);

        const std::unique_ptr<clsAccountTrigger> t2 = MakeTrigger(QStringLiteral("T2"), QStringLiteral("T2 rule"));
        QCOMPARE(Text(QStringLiteral("gettrigger.xml?accountid=A1&triggerid=T2")), t2->XML());

        colTriggers full;
        full.setXML(Text(QStringLiteral("gettriggers.xml?accountid=A1")));
        QCOMPARE(full.Count(), 3);
        QCOMPARE(full.Item(3)->TriggerID, QStringLiteral("T3"));
        QCOMPARE(full.Item(2)->ActionList().Count(), 1);

        const QString conditions = Text(QStringLiteral("gettriggerconditions.xml?accountid=A1"));
        QVERIFY2(!conditions.contains(QStringLiteral("Trigger.Actions")), qPrintable(conditions));
        colTriggers headers;
        headers.setXMLConditionsOnly(conditions);
        QCOMPARE(headers.Count(), 3);
        QCOMPARE(headers.Item(2)->FieldsList(), QStringLiteral("OrderNo"));
        QCOMPARE(headers.Item(2)->Condition, t2->Condition);

        const QString names = Text(QStringLiteral("gettriggernames.xml?accountid=A1"));
        QVERIFY2(names.contains(QStringLiteral("<TriggerSubset>")) && !names.contains(QStringLiteral("OrderNo")),
                 qPrintable(names));
        colTriggers subsets;
        subsets.setXMLNames(names);
        QCOMPARE(subsets.Item(QStringLiteral("T3"))->Name, QStringLiteral("T3 rule"));

        QCOMPARE(TriggerList(QStringLiteral("A1")), QStringLiteral("T1 rule\r\nT2 rule\r\nT3 rule"));
    }

    void postingOneTriggerChangesOnlyIt()
    {
        const QString first = Text(QStringLiteral("gettrigger.xml?accountid=A1&triggerid=T1"));
        const QString third = Text(QStringLiteral("gettrigger.xml?accountid=A1&triggerid=T3"));
        const QString account = Text(QStringLiteral("getaccount.xml?accountid=A1"));

        // The ID may be left out of the fragment; the query gives it.
        QByteArray changed = TriggerFragment(QStringLiteral("T2"), QStringLiteral("Second"));
        changed.replace("<TriggerID>T2</TriggerID>", "");
        QCOMPARE(Post(QStringLiteral("posttrigger.htm?accountid=A1&triggerid=T2"), changed), QStringLiteral("OK"));
        QCOMPARE(Post(QStringLiteral("posttrigger.htm?accountid=A1&triggerid=T4"),
                      TriggerFragment(QStringLiteral("T4"), QStringLiteral("Fourth"))),
                 QStringLiteral("OK"));

        QCOMPARE(TriggerList(QStringLiteral("A1")), QStringLiteral("T1 rule\r\nSecond\r\nT3 rule\r\nFourth"));
        QCOMPARE(Text(QStringLiteral("gettrigger.xml?accountid=A1&triggerid=T2")),
                 MakeTrigger(QStringLiteral("T2"), QStringLiteral("Second"))->XML());
        QCOMPARE(Text(QStringLiteral("gettrigger.xml?accountid=A1&triggerid=T1")), first);
        QCOMPARE(Text(QStringLiteral("gettrigger.xml?accountid=A1&triggerid=T3")), third);
        QCOMPARE(Text(QStringLiteral("getaccount.xml?accountid=A1")),
                 QString(account).replace(QStringLiteral("<TriggersCount>3<"), QStringLiteral("<TriggersCount>4<")));

        // An account posted without triggers keeps its own.
        QByteArray renamed = AccountFragment(QStringLiteral("A1"), QStringLiteral("OrgA"));
        renamed.replace("<Name>Account A1</Name>", "<Name>Orders</Name>");
        QCOMPARE(Post(QStringLiteral("postaccount.htm?accountid=A1"), renamed), QStringLiteral("OK"));
        QCOMPARE(ReadAccount(QStringLiteral("A1"))->Name, QStringLiteral("Orders"));
        QCOMPARE(TriggerList(QStringLiteral("A1")), QStringLiteral("T1 rule\r\nSecond\r\nT3 rule\r\nFourth"));
    }

    void switchesSwapAndRewind()
    {
        QCOMPARE(Text(QStringLiteral("disabletrigger.xml?accountid=A1&triggerid=T3")), QStringLiteral("OK"));
        QCOMPARE(Text(QStringLiteral("disableaccount.xml?accountid=A1")), QStringLiteral("OK"));
        colTriggers triggers;
        triggers.setXML(Text(QStringLiteral("gettriggers.xml?accountid=A1")));
        QVERIFY(!triggers.Item(QStringLiteral("T3"))->Enabled);
        QVERIFY(triggers.Item(QStringLiteral("T1"))->Enabled);
        QVERIFY(!ReadAccount(QStringLiteral("A1"))->Enabled);
        QCOMPARE(Text(QStringLiteral("enableaccount.xml?accountid=A1")), QStringLiteral("OK"));
        QVERIFY(ReadAccount(QStringLiteral("A1"))->Enabled);

        QCOMPARE(Text(QStringLiteral("swaptrigger.xml?accountid=A1&triggerid=T1&movetofolderid=T4")),
                 QStringLiteral("OK"));
        QCOMPARE(TriggerList(QStringLiteral("A1")), QStringLiteral("Fourth\r\nSecond\r\nT3 rule\r\nT1 rule"));

        // The enabled triggers accept mail from 2024-01-01: IMAP is read
        // again from there, and the first of them is flagged for it.
        QCOMPARE(Text(QStringLiteral("receivedafterreset.xml?accountid=A1&triggerid=T1")), QStringLiteral("OK"));
        QCOMPARE(ReadAccount(QStringLiteral("A1"))->IMAPLastEmail, At(2024, 1, 1));
        triggers.setXML(Text(QStringLiteral("gettriggers.xml?accountid=A1")));
        QVERIFY(triggers.Item(QStringLiteral("T4"))->ReceivedAfterReset);
        QVERIFY(!triggers.Item(QStringLiteral("T3"))->ReceivedAfterReset);
    }

    void checkNowStaysInsideTheOrganization()
    {
        QCOMPARE(Text(QStringLiteral("checknow.xml"), Alice, AlicePassword), QStringLiteral("OK"));
        QCOMPARE(ReadAccount(QStringLiteral("A1"))->LastChecked, At(2000, 1, 1));
        QCOMPARE(ReadAccount(QStringLiteral("B1"))->LastChecked, At(2024, 5, 1));
    }

    void restartKeepsEverything()
    {
        // A start makes every interval account due, as checknow does.
        QCOMPARE(Text(QStringLiteral("checknow.xml")), QStringLiteral("OK"));
        const QString before = Snapshot();
        Restart();
        QCOMPARE(Snapshot(), before);
        QCOMPARE(TriggerList(QStringLiteral("A1")), QStringLiteral("Fourth\r\nSecond\r\nT3 rule\r\nT1 rule"));
    }

    void organizationAdministratorStaysInsideItsOrganization()
    {
        const QString before = Snapshot();
        colAccounts visible;
        visible.setXML(Text(QStringLiteral("getaccounts.xml"), Alice, AlicePassword));
        QCOMPARE(visible.Count(), 2);
        QVERIFY(visible.Item(QStringLiteral("A1")) && visible.Item(QStringLiteral("Shared")));

        ExpectRefused({{QStringLiteral("getaccount.xml?accountid=B1"), {}},
                      {QStringLiteral("gettriggers.xml?accountid=B1"), {}},
                      {QStringLiteral("gettriggerconditions.xml?accountid=B1"), {}},
                      {QStringLiteral("gettrigger.xml?accountid=B1&triggerid=TB1"), {}},
                      {QStringLiteral("deletetrigger.xml?accountid=B1&triggerid=TB1"), {}},
                      {QStringLiteral("disableaccount.xml?accountid=B1"), {}},
                      {QStringLiteral("deleteaccount.xml?accountid=Shared"), {}},
                      {QStringLiteral("posttrigger.htm?accountid=B1&triggerid=TB1"),
                       TriggerFragment(QStringLiteral("TB1"), QStringLiteral("x"))},
                      {QStringLiteral("postaccount.htm?accountid=B2"),
                       AccountFragment(QStringLiteral("B2"), QStringLiteral("OrgB"))},
                      // Its own account cannot go to another organization.
                      {QStringLiteral("postaccount.htm?accountid=A1"),
                       AccountFragment(QStringLiteral("A1"), QStringLiteral("OrgB"))},
                      {QStringLiteral("postaccount.htm?accountid=Shared"),
                       AccountFragment(QStringLiteral("Shared"), QString())}},
                     Alice, AlicePassword);
        // Nor can its triggers store into another organization's folder, or take another account's trigger.
        std::unique_ptr<clsAccountTrigger> intruder = MakeTrigger(QStringLiteral("T9"), QStringLiteral("Intruder"));
        intruder->SaveToFolderID = QStringLiteral("FolderB");
        QVERIFY(server
                     .Post(QStringLiteral("posttrigger.htm?accountid=A1&triggerid=T9"), intruder->XML().toUtf8(), Alice,
                           AlicePassword)
                     .Refused());
        QCOMPARE(Post(QStringLiteral("posttrigger.htm?accountid=A1&triggerid=TB1"),
                      TriggerFragment(QStringLiteral("TB1"), QStringLiteral("x")), Alice, AlicePassword),
                 QStringLiteral("Error: The trigger ID TB1 belongs to another account."));

        // A plain user reads its organization's accounts and changes none.
        QCOMPARE(server.Get(QStringLiteral("gettriggers.xml?accountid=A1"), Pat, PatPassword).Status, 200);
        ExpectRefused({{QStringLiteral("getaccount.xml?accountid=B1"), {}},
             {QStringLiteral("disabletrigger.xml?accountid=A1&triggerid=T1"), {}},
             {QStringLiteral("posttrigger.htm?accountid=A1&triggerid=T1"),
              TriggerFragment(QStringLiteral("T1"), QStringLiteral("x"))},
             {QStringLiteral("postaccount.htm?accountid=P1"), AccountFragment(QStringLiteral("P1"), QString())}},
            Pat, PatPassword);
        QCOMPARE(Snapshot(), before);

        // Inside its organization it does administer; a new account without
        // organization becomes its organization's, not a shared one.
        QCOMPARE(Post(QStringLiteral("postaccount.htm?accountid=A2"), AccountFragment(QStringLiteral("A2"), QString()),
                      Alice, AlicePassword),
                 QStringLiteral("OK"));
        QCOMPARE(ReadAccount(QStringLiteral("A2"))->OrganizationID, QStringLiteral("OrgA"));
        QCOMPARE(Text(QStringLiteral("deleteaccount.xml?accountid=A2"), Alice, AlicePassword), QStringLiteral("OK"));
    }

    void badInputChangesNothing()
    {
        const QString before = Snapshot();
        QByteArray duplicates = AccountFragment(QStringLiteral("A1"), QStringLiteral("OrgA"), {QStringLiteral("T1")});
        duplicates.replace("</Triggers>",
                           TriggerFragment(QStringLiteral("T1"), QStringLiteral("Twin")) + "</Triggers>");
        QByteArray badTriggerID = AccountFragment(QStringLiteral("A1"), QStringLiteral("OrgA"), {QStringLiteral("T1")});
        badTriggerID.replace("<TriggerID>T1</TriggerID>", "<TriggerID>T 1</TriggerID>");
        const QByteArray t1 = TriggerFragment(QStringLiteral("T1"), QStringLiteral("x"));
        ExpectRefused({{QStringLiteral("getaccount.xml?accountid=A1'--"), {}},
                           {QStringLiteral("getaccount.xml"), {}},
                           {QStringLiteral("gettrigger.xml?accountid=A1&triggerid=T1%20OR%201"), {}},
                           {QStringLiteral("deletetrigger.xml?accountid=A1&triggerid="), {}},
                           {QStringLiteral("swaptrigger.xml?accountid=A1&triggerid=T1&movetofolderid=../T2"), {}},
                           {QStringLiteral("receivedafterreset.xml?accountid=A1&triggerid=T*"), {}},
                           {QStringLiteral("deleteaccount.xml?accountid=") + QString(65, u'A'), {}},
                           {QStringLiteral("postaccount.htm?accountid=A1"), "<User><ID>A1</ID></User>"},
                           {QStringLiteral("postaccount.htm?accountid=A1"), "<Account><Name>cut short"},
                           {QStringLiteral("postaccount.htm?accountid=A1"),
                            AccountFragment(QStringLiteral("Other"), QStringLiteral("OrgA"))},
                           {QStringLiteral("postaccount.htm?accountid=A1"), duplicates},
                           {QStringLiteral("postaccount.htm?accountid=A1"), badTriggerID},
                           {QStringLiteral("posttrigger.htm?accountid=A1&triggerid=T1"),
                            AccountFragment(QStringLiteral("A1"), QStringLiteral("OrgA"))},
                           {QStringLiteral("posttrigger.htm?accountid=A1&triggerid=T2"), t1},
                           {QStringLiteral("posttrigger.htm?accountid=A%201&triggerid=T1"), t1}});
        QVERIFY(server.Get(QStringLiteral("swaptrigger.xml?accountid=A1&triggerid=T1&movetofolderid=TB1")).Refused());
        QCOMPARE(server.Get(QStringLiteral("postaccount.htm?accountid=A1")).Status, 405);

        // The rules of the records: one outbox, existing organizations.
        std::unique_ptr<clsAccount> outbox = MakeAccount(QStringLiteral("Out1"), QStringLiteral("OrgA"));
        outbox->Outbox = true;
        QCOMPARE(Post(QStringLiteral("postaccount.htm?accountid=Out1"), outbox->XML().toUtf8()), QStringLiteral("OK"));
        outbox->AccountID = QStringLiteral("Out2");
        QCOMPARE(Post(QStringLiteral("postaccount.htm?accountid=Out2"), outbox->XML().toUtf8()),
                 QStringLiteral("Error: Another account is the outbox already."));
        QCOMPARE(Text(QStringLiteral("deleteaccount.xml?accountid=Out1")), QStringLiteral("OK"));
        QCOMPARE(Post(QStringLiteral("postaccount.htm?accountid=X1"),
                      AccountFragment(QStringLiteral("X1"), QStringLiteral("NoSuchOrg"))),
                 QStringLiteral("Error: The account's organization does not exist."));
        QCOMPARE(Snapshot(), before);
    }

    void deletionsLastAndTakeTheTriggers()
    {
        QCOMPARE(Text(QStringLiteral("deletetrigger.xml?accountid=A1&triggerid=T3")), QStringLiteral("OK"));
        QCOMPARE(TriggerList(QStringLiteral("A1")), QStringLiteral("Fourth\r\nSecond\r\nT1 rule"));
        QCOMPARE(Text(QStringLiteral("deleteaccount.xml?accountid=B1")), QStringLiteral("OK"));
        QVERIFY(server.Get(QStringLiteral("gettriggers.xml?accountid=B1")).Refused());
        // Made anew, the account has none of the old one's triggers, even
        // after a restart, and their IDs are free for another account.
        QCOMPARE(Post(QStringLiteral("postaccount.htm?accountid=B1"),
                      AccountFragment(QStringLiteral("B1"), QStringLiteral("OrgB"))),
                 QStringLiteral("OK"));
        Restart();
        QCOMPARE(TriggerList(QStringLiteral("A1")), QStringLiteral("Fourth\r\nSecond\r\nT1 rule"));
        QCOMPARE(TriggerList(QStringLiteral("B1")), QString());
        QCOMPARE(Post(QStringLiteral("posttrigger.htm?accountid=A1&triggerid=TB1"),
                      TriggerFragment(QStringLiteral("TB1"), QStringLiteral("Moved"))),
                 QStringLiteral("OK"));
    }

    void cleanupTestCase() { server.Stop(); }
};

POSTVANE_TEST(tst_ServerAccounts)
#include "tst_ServerAccounts.moc"
