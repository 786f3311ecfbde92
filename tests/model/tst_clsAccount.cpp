#include "TestRegistry.h"
#include "actions/clsActionSetVariable.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

// The account's tags as stored configurations hold them: a renamed, dropped or
// moved tag would leave what is stored unread, which no round trip shows.
const QStringList AccountTagOrder = QStringLiteral(
    "AccountID OrganizationID AccountAddress CheckEveryMins CreatedDate ViewType Details Enabled AutoPause "
    "GroupName FilePickUp FilePickUpFolder FilePickUpMask IMAP IMAPAccount IMAPDeleteAll IMAPFolder "
    "IMAPLastEmail IMAPLeaveMessageOn IMAPMarkAsRead IMAPMove IMAPMoveToFolder IMAPPassword IMAPPort "
    "IMAPServer IMAPSSL IMAPServerIDs LastChecked Name OutBox Sample ServerAccount ServerDeleteAll ServerIP "
    "ServerLastEmail ServerLeaveMessageOn ServerPassword ServerPort ServerSSL SMTPServer StoreFull MailServer "
    "MailServerAliases MailServerDomain MailServerPassword MailServerUserName MailServerPOP3 DBConnection "
    "DBDelete DBMSGBody DBMSGField DBPull DBSQL DBUIDField DBUpdateField DBUpdateValue RSS RSSUrl "
    "RSSLastMessage RSSAtom HTTP HTTPUrl HTTPFollow HTTPLogin HTTPPass HTTPUser HTTPClean HTTPFail EWS "
    "EWSUrl EWSUsername EWSPassword EWSFolders EWSMove EWSMoveToFolder EWSDeleteProcessed EWSDeleteAll "
    "EWSLastEmail EWSOtherMailbox DropBox DropBoxToAddress DropBoxSubject UnzipAttachments AppendText "
    "Schedule MaxMessagesPerRun EdgeServer Archive ArchiveDays MarkAsReadType AutoRun AutoRunMessageMime "
    "CSVPickup CSVPickupFolder CSVPickupMask CSVPickupDelete CSVPickupWorkSheet CSVPickupHeaderRow "
    "CSVPickupLastStatus TwitterFeed TwitterSettings TriggersCount Triggers").split(u' ');

const QString TwitterFragment = QStringLiteral(
    "<Class>Twitter</Class><ID>TW1</ID><Enabled>-1</Enabled><Name>feed</Name>"
    "<OAuthToken>enc:abc</OAuthToken><Schedule>ignored</Schedule>");
const QString FoldersFragment =
    QStringLiteral("<Folder><Id>AAMk1</Id><Name>Inbox &amp; more</Name><State>H4sI</State></Folder>");

QDateTime At(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second));
}

// A Set action's fragment, for a trigger's action list.
std::unique_ptr<ActionItem> SetAction(const QString &id, const QString &name, bool persist = false)
{
    clsActionSetVariable set;
    set.ID = id;
    set.Name = name;
    set.Value = QStringLiteral("%msg_subject%");
    set.Persist = persist;
    return ActionItem::Make(set);
}

// A trigger with fields and actions whose tags repeat the account's own
// tag names (Name, Enabled, ID, Schedule).
std::unique_ptr<clsAccountTrigger> BusyTrigger(const QString &id)
{
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->TriggerID = id;
    trigger->Name = QStringLiteral("Orders ") + id;
    trigger->SCHEDULE = QString(170, u'Y');
    trigger->Condition = QStringLiteral("<Lines><Line>|%a%|=|1</Line></Lines>");
    for (const char *name : {"OrderNo", "Customer"}) {
        auto field = std::make_unique<clsTriggerField>();
        field->ID = id + QString::fromLatin1(name);
        field->Name = QString::fromLatin1(name);
        trigger->FieldsToProcess().Add(std::move(field));
    }
    trigger->ActionList().Add(SetAction(id + QStringLiteral("S1"), QStringLiteral("Total")));
    // A kind without its own record, held as read: on one line.
    trigger->ActionList().AddXML(QStringLiteral("<Class>Validation</Class><ID>") + id +
                                 QStringLiteral("V1</ID><Enabled>-1</Enabled>"
                                                "<ConfirmationHTML>&lt;p&gt;Thanks&lt;/p&gt;</ConfirmationHTML>"));
    return trigger;
}

// Every property away from its new-account value and every source on.
void Populate(clsAccount &a)
{
    a.AccountID = QStringLiteral("ACC-1");
    a.OrganizationID = QStringLiteral("ORG-1");
    a.AccountAddress = QStringLiteral("orders@example.com");
    a.Name = QStringLiteral("Orders & <Returns>");
    a.Details = QStringLiteral("Line one\r\nLine \"two\"\twith tab");
    a.CreatedDate = At(2021, 3, 4, 5, 6, 7);
    a.GroupName = QStringLiteral("Sales");
    a.Sample = a.Enabled = a.AutoPause = a.Outbox = a.StoreFull = a.Archive = a.UnzipAttachments = a.AppendText =
        a.AutoRun = true;
    a.SMTPServer = a.ServerLeaveMessageOn = a.ServerDeleteAll = a.ServerSSL = true;
    a.IMAP = a.IMAPMove = a.IMAPLeaveMessageOn = a.IMAPDeleteAll = a.IMAPMarkAsRead = a.IMAPSSL = a.IMAPServerIDs = true;
    a.EWS = a.EWSMove = a.EWSDeleteProcessed = a.EWSDeleteAll = true;
    a.FilePickUp = a.CSVPickUp = a.CSVPickupDelete = a.MailServer = a.MailServerPOP3 = true;
    a.DBPull = a.DBMSGBody = a.DBDelete = a.HTTP = a.HTTPFollow = a.HTTPClean = a.HTTPFail = true;
    a.RSS = a.RSSAtom = a.Dropbox = a.TwitterFeed = true;
    a.ViewType = 2;
    a.ArchiveDays = 45;
    a.MarkAsReadType = 1;
    a.MaxMessagesPerRun = 250;
    a.CheckEveryMins = 10;
    a.ServerPort = 995;
    a.IMAPPort = 993;
    a.CSVPickupHeaderRow = 3;
    a.HTTPLogin = 2;
    a.EdgeServer = QStringLiteral("10.0.0.7");
    a.SCHEDULE = QStringLiteral("010|YNYYYYN");
    a.LastChecked = At(2022, 1, 2, 3, 4, 5);
    a.AutoRunMessageMime = QStringLiteral("Subject: test\r\n\r\nBody");
    a.ServerIP = QStringLiteral("pop.example.com");
    a.ServerAccount = QStringLiteral("popuser");
    a.ServerPassword = QStringLiteral("pop&secret");
    a.ServerLastEmail = At(2022, 2, 3);
    a.IMAPServer = QStringLiteral("imap.example.com");
    a.IMAPAccount = QStringLiteral("imapuser");
    a.IMAPPassword = QStringLiteral("imap secret");
    a.IMAPFolder = QStringLiteral("Orders");
    a.IMAPMoveToFolder = QStringLiteral("Done");
    a.IMAPLastEmail = At(2022, 2, 4);
    a.EWSUrl = QStringLiteral("https://mail.example.com/ews/exchange.asmx");
    a.EWSUsername = QStringLiteral("ewsuser");
    a.EWSPassword = QStringLiteral("ews-secret");
    a.EWSOtherMailbox = QStringLiteral("shared@example.com");
    a.EWSFolders = FoldersFragment;
    a.EWSMoveToFolder = QStringLiteral("Archive");
    a.EWSLastEmail = At(2022, 2, 5);
    a.FilePickupFolder = QStringLiteral("/srv/pickup");
    a.FilePickUpMask = QStringLiteral("*.eml");
    a.CSVPickupFolder = QStringLiteral("/srv/csv");
    a.CSVPickupMask = QStringLiteral("*.xlsx");
    a.CSVPickupWorkSheet = QStringLiteral("Sheet2");
    a.CSVPickupLastStatus = QStringLiteral("12 rows");
    a.MailServerDomain = QStringLiteral("example.com;example.org");
    a.MailServerAliases = QStringLiteral("orders*;sales");
    a.MailServerUserName = QStringLiteral("mailuser");
    a.MailServerPassword = QStringLiteral("mail-secret");
    a.DBConnection = QStringLiteral("Driver={SQLite3};Database=/srv/in.db3");
    a.DBSQL = QStringLiteral("SELECT * FROM Inbox WHERE Done = 0 AND Qty > 1");
    a.DBUIDField = QStringLiteral("RowID");
    a.DBMSGField = QStringLiteral("Body");
    a.DBUpdateField = QStringLiteral("Done");
    a.DBUpdateValue = QStringLiteral("1");
    a.HTTPUrl = QStringLiteral("https://example.com/status?a=1&b=2");
    a.HTTPUser = QStringLiteral("webuser");
    a.HTTPPass = QStringLiteral("web-secret");
    a.RSSUrl = QStringLiteral("https://example.com/feed.xml");
    a.RSSLastMessage = At(2022, 2, 6);
    a.DropBoxToAddress = QStringLiteral("drop@example.com;*@drop.example.com");
    a.DropBoxSubject = QStringLiteral("Dropped");
    a.TwitterSettings = TwitterFragment;
    a.Triggers.Add(BusyTrigger(QStringLiteral("T1")));
    a.Triggers.Add(BusyTrigger(QStringLiteral("T2")));
}

// The names of the elements directly inside the account's section.
QStringList TopLevelTags(const QString &xml)
{
    static const QRegularExpression line(QStringLiteral("^\\t<([A-Za-z0-9.]+)>"), QRegularExpression::MultilineOption);
    QStringList tags;
    for (auto it = line.globalMatch(xml); it.hasNext();)
        tags << it.next().captured(1);
    return tags;
}

QString Fragment(const QString &inner)
{
    return QStringLiteral("<Account>") + inner + QStringLiteral("</Account>");
}

} // namespace

class tst_clsAccount : public QObject
{
    Q_OBJECT
private slots:
    void cleanup()
    {
        ResetGlobalCollections();
        OutboxAccount = nullptr;
    }

    // Only what the constructor derives: the first organization, the global
    // archive settings, today's start for the sources' last dates.
    void newAccountTakesOrganizationArchiveAndToday()
    {
        auto organization = std::make_unique<clsUserOrganization>();
        organization->ID = QStringLiteral("ORG-FIRST");
        Organizations().Add(std::move(organization));
        const GlobalSettings saved = Global.Settings;
        Global.Settings.Archive = true;
        Global.Settings.ArchiveDays = 30;
        const clsAccount a;
        Global.Settings = saved;
        QCOMPARE(a.AccountID.size(), 11);
        QCOMPARE(a.OrganizationID, QStringLiteral("ORG-FIRST"));
        QVERIFY(a.Archive);
        QCOMPARE(a.ArchiveDays, qint16(30));
        QCOMPARE(a.ServerLastEmail, QDateTime(QDate::currentDate(), QTime(0, 0)));
        QCOMPARE(a.IMAPLastEmail, a.ServerLastEmail);
        QCOMPARE(a.Triggers.Parent(), &a);
    }

    void fullAccountWritesEveryTagInOrderAndReadsBackIdentically()
    {
        clsAccount a;
        Populate(a);
        a.XMLIncludeTriggers = true;
        const QString first = a.XML();
        QCOMPARE(TopLevelTags(first), AccountTagOrder);

        clsAccount b;
        b.setXML(first);
        b.XMLIncludeTriggers = true;
        QCOMPARE(b.XML(), first);
        QCOMPARE(b.Triggers.Count(), 2);
        QCOMPARE(b.Triggers.Item(2)->ActionList().Count(), 2);
        QCOMPARE(b.Triggers.Item(1)->Parent, &b);
        QCOMPARE(b.TwitterSettings, TwitterFragment);
        QCOMPARE(b.EWSFolders, FoldersFragment);
        QCOMPARE(b.Details, a.Details);
    }

    void passwordsTravelEncipheredAndFragmentsAsSections()
    {
        clsAccount a;
        Populate(a);
        const QString xml = a.XML();
        for (const char *tag : {"IMAPPassword", "ServerPassword", "MailServerPassword", "HTTPPass", "EWSPassword"}) {
            clsXML reader(xml);
            QString stored;
            QVERIFY(reader.Extract(stored, QString::fromLatin1(tag), true));
            QVERIFY2(stored.startsWith(QStringLiteral("enc:")), tag);
        }
        QVERIFY(xml.contains(QStringLiteral("\t<EWSFolders>\n\t\t<Folder>")));
        QVERIFY(xml.contains(QStringLiteral("\t<TwitterSettings>\n\t\t<Class>Twitter</Class>")));
        QVERIFY(xml.contains(QStringLiteral("<TriggersCount>2</TriggersCount>")));
        QVERIFY(!xml.contains(QStringLiteral("<Triggers>")));

        clsAccount b;
        b.setXML(xml);
        QCOMPARE(b.ServerPassword, QStringLiteral("pop&secret"));
        QCOMPARE(b.HTTPPass, QStringLiteral("web-secret"));
    }

    void absentTagsResetToEmptyNotToNewAccountDefaults()
    {
        clsAccount a;
        Populate(a);
        const QString keptID = a.AccountID;
        a.setXML(Fragment(QStringLiteral("<Name>Bare</Name>")));
        QCOMPARE(a.AccountID, keptID); // no AccountID: the object's own stays
        QCOMPARE(a.Name, QStringLiteral("Bare"));
        QVERIFY(!a.Enabled && !a.StoreFull && !a.Dropbox && !a.IMAPLeaveMessageOn && !a.HTTPFollow);
        QVERIFY(!a.IMAP && !a.SMTPServer && !a.EWS && !a.RSS && !a.TwitterFeed && !a.MailServerPOP3);
        QVERIFY(a.OrganizationID.isEmpty() && a.IMAPFolder.isEmpty() && a.EWSFolders.isEmpty());
        QVERIFY(a.ServerPassword.isEmpty() && a.TwitterSettings.isEmpty());
        QCOMPARE(a.MarkAsReadType, qint16(0));
        QCOMPARE(a.CheckEveryMins, qint16(0));
        QCOMPARE(a.IMAPLastEmail, ZeroDate());
        QCOMPARE(a.SCHEDULE, QStringLiteral("00|YYYYYYY")); // rebuilt from CheckEveryMins
        QCOMPARE(a.Triggers.Count(), 2); // a fragment without triggers keeps them
    }

    void tagsInsideTriggersAreNeverTakenForTheAccounts()
    {
        clsAccount source;
        Populate(source);
        source.XMLIncludeTriggers = true;
        clsXML reader(source.XML());
        QString triggers;
        reader.Extract(triggers, QStringLiteral("Triggers"), true);

        // The triggers' fields and actions hold Name, Enabled, ID and
        // Schedule; the account holds none of them.
        clsAccount a;
        a.setXML(Fragment(QStringLiteral("<AccountID>A9</AccountID><Triggers>") + triggers +
                          QStringLiteral("</Triggers>")));
        QCOMPARE(a.AccountID, QStringLiteral("A9"));
        QVERIFY(a.Name.isEmpty());
        QVERIFY(!a.Enabled);
        QCOMPARE(a.SCHEDULE, QStringLiteral("00|YYYYYYY"));
        QCOMPARE(a.Triggers.Count(), 2);
        QCOMPARE(a.Triggers.Item(QStringLiteral("T1"))->Name, QStringLiteral("Orders T1"));

        // A Twitter section inside a trigger's action bounds nothing of the
        // account's.
        source.Triggers.Item(2)->ActionList().AddXML(QStringLiteral("<Class>Twitter</Class><ID>TW</ID><TwitterSettings>") +
                                                     TwitterFragment + QStringLiteral("</TwitterSettings>"));
        reader.setXML(source.XML());
        reader.Extract(triggers, QStringLiteral("Triggers"), true);
        a.setXML(Fragment(QStringLiteral("<AccountID>A9</AccountID><Triggers>") + triggers +
                          QStringLiteral("</Triggers>")));
        QVERIFY(a.Name.isEmpty() && !a.Enabled && !a.TwitterFeed);
        QCOMPARE(a.Triggers.Item(2)->ActionList().Count(), 3);
    }

    void twitterSettingsBoundTheScalarsAndNeedTheSwitch()
    {
        // The Twitter fragment holds Name and Schedule, which the account
        // lacks; it is read only when TwitterFeed is on.
        const QString withFeed = QStringLiteral("<TwitterFeed>-1</TwitterFeed><TwitterSettings>") + TwitterFragment +
                                 QStringLiteral("</TwitterSettings>");
        clsAccount a;
        a.setXML(Fragment(withFeed));
        QVERIFY(a.TwitterFeed);
        QVERIFY(a.Name.isEmpty() && !a.Enabled);
        QCOMPARE(a.SCHEDULE, QStringLiteral("00|YYYYYYY"));
        QCOMPARE(a.TwitterSettings, TwitterFragment);

        a.setXML(Fragment(QStringLiteral("<TwitterSettings>") + TwitterFragment + QStringLiteral("</TwitterSettings>")));
        QVERIFY(!a.TwitterFeed);
        QVERIFY(a.TwitterSettings.isEmpty());
        a.TwitterSettings = TwitterFragment;
        QVERIFY(!a.XML().contains(QStringLiteral("TwitterSettings")));
    }

    void badFragmentsGiveDefaultsWithoutCrashing_data()
    {
        QTest::addColumn<QString>("xml");
        QTest::newRow("unclosed tag") << Fragment(QStringLiteral("<Name>Never closed"));
        QTest::newRow("unclosed triggers") << Fragment(QStringLiteral("<Triggers><Trigger><TriggerID>T"));
        QTest::newRow("nested account") << Fragment(Fragment(QStringLiteral("<IMAP>-1</IMAP>")));
        QTest::newRow("bad values") << Fragment(QStringLiteral(
            "<CheckEveryMins>many</CheckEveryMins><CreatedDate>2021-13-45</CreatedDate><IMAPPort>99999</IMAPPort>"
            "<IMAPPassword>enc:%ZZ</IMAPPassword>"));
        QTest::newRow("empty twitter section") << Fragment(QStringLiteral(
            "<TwitterFeed>-1</TwitterFeed><TwitterSettings></TwitterSettings>"));
    }

    void badFragmentsGiveDefaultsWithoutCrashing()
    {
        QFETCH(QString, xml);
        clsAccount a;
        a.Name = QStringLiteral("before");
        a.setXML(xml);
        QVERIFY(a.Name.isEmpty());
        QCOMPARE(a.IMAPPort, qint16(0));
        QCOMPARE(a.CheckEveryMins, qint16(0));
        QVERIFY(!a.SCHEDULE.isEmpty());
        QVERIFY(!a.XML().isEmpty());
    }

    void enabledOutboxTakesTheRoleAndTheSentItemsFolder()
    {
        auto sent = std::make_unique<clsUserFolder>();
        sent->ID = QStringLiteral("SENT");
        sent->Name = QStringLiteral("Sent Items");
        UserFolders().Add(std::move(sent));
        clsAccount source;
        source.Triggers.Add(BusyTrigger(QStringLiteral("T1")));
        source.Triggers.Add(BusyTrigger(QStringLiteral("T2")));
        source.Triggers.Item(2)->SaveToFolderID = QStringLiteral("OWN");
        source.Outbox = true;
        source.XMLIncludeTriggers = true;

        clsAccount disabled;
        source.Enabled = false;
        disabled.setXML(source.XML());
        QVERIFY(!OutboxAccount);

        auto outbox = std::make_unique<clsAccount>();
        source.Enabled = true;
        outbox->setXML(source.XML());
        QCOMPARE(OutboxAccount, outbox.get());
        QCOMPARE(outbox->Triggers.Item(1)->SaveToFolderID, QStringLiteral("SENT"));
        QCOMPARE(outbox->Triggers.Item(2)->SaveToFolderID, QStringLiteral("OWN"));
        outbox.reset();
        QVERIFY(!OutboxAccount);
    }

    void checkNow_data()
    {
        QTest::addColumn<QString>("schedule");
        QTest::addColumn<int>("everyMins");
        QTest::addColumn<QDateTime>("lastChecked");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<bool>("due");
        // 2024-05-05 is a Sunday, 2024-05-06 a Monday.
        const QDateTime sunday = At(2024, 5, 5, 8, 0, 20);
        const QDateTime monday = At(2024, 5, 6, 8, 0, 20);
        QTest::newRow("interval not yet gone") << "05|YYYYYYY" << 3 << monday.addSecs(-299) << monday << false;
        QTest::newRow("interval gone") << "05|YYYYYYY" << 3 << monday.addSecs(-300) << monday << true;
        QTest::newRow("value overrides minutes") << "010|YYYYYYY" << 3 << monday.addSecs(-400) << monday << false;
        QTest::newRow("zero value keeps minutes") << "00|YYYYYYY" << 3 << monday.addSecs(-180) << monday << true;
        QTest::newRow("31 seconds not gone") << "00|YYYYYYY" << 0 << monday.addSecs(-30) << monday << false;
        QTest::newRow("31 seconds gone") << "00|YYYYYYY" << 0 << monday.addSecs(-31) << monday << true;
        QTest::newRow("Sunday off") << "01|NYYYYYY" << 1 << sunday.addDays(-1) << sunday << false;
        QTest::newRow("Monday off") << "01|NNYYYYY" << 1 << monday.addDays(-1) << monday << false;
        QTest::newRow("Monday on") << "01|NYNNNNN" << 1 << monday.addDays(-1) << monday << true;
        QTest::newRow("short day flags") << "01|N" << 1 << monday.addDays(-1) << monday << true;
        QTest::newRow("daily at the minute") << "108:00|YYYYYYY" << 3 << monday.addDays(-1).addSecs(600) << monday
                                             << true;
        QTest::newRow("daily off the minute") << "108:01|YYYYYYY" << 3 << monday.addDays(-1) << monday << false;
        QTest::newRow("daily stamped this minute") << "108:00|YYYYYYY" << 3 << monday.addSecs(-15) << monday << false;
        QTest::newRow("daily same minute yesterday") << "108:00|YYYYYYY" << 3 << monday.addDays(-1) << monday << true;
        QTest::newRow("times second matches") << "207:30,8:00,|YYYYYYY" << 3 << monday.addDays(-1).addSecs(600)
                                              << monday << true;
        QTest::newRow("times trailing comma") << "207:30,|YYYYYYY" << 3 << monday.addDays(-1) << monday << false;
        QTest::newRow("times unreadable part") << "2x,,08:00:00|YYYYYYY" << 3 << monday.addDays(-1).addSecs(600)
                                               << monday << true;
        QTest::newRow("unknown type") << "308:00|YYYYYYY" << 3 << monday.addDays(-1) << monday << false;
    }

    void checkNow()
    {
        QFETCH(QString, schedule);
        QFETCH(int, everyMins);
        QFETCH(QDateTime, lastChecked);
        QFETCH(QDateTime, now);
        QFETCH(bool, due);
        clsAccount a;
        a.SCHEDULE = schedule;
        a.CheckEveryMins = qint16(everyMins);
        a.LastChecked = lastChecked;
        QCOMPARE(a.CheckNow(now), due);
    }

    void checkNowTakesTheIntervalAndRunsAMustCheckOnce()
    {
        const QDateTime now = At(2024, 5, 6, 9, 0);
        clsAccount a;
        a.SCHEDULE = QStringLiteral("020|YYYYYYY");
        a.LastChecked = now;
        QVERIFY(!a.CheckNow(now));
        QCOMPARE(a.CheckEveryMins, qint16(20));
        a.MustCheckNow = true;
        QVERIFY(a.CheckNow(now));
        QVERIFY(!a.MustCheckNow);
        QVERIFY(!a.CheckNow(now));

        a.SCHEDULE.clear();
        a.CheckNow(now);
        QCOMPARE(a.SCHEDULE, QStringLiteral("03|YYYYYYY"));
    }

    void checkedEveryDescribesTheSchedule_data()
    {
        QTest::addColumn<QString>("schedule");
        QTest::addColumn<QString>("text");
        QTest::newRow("minutes") << "05|YYYYYYY" << "Every 5 Minutes";
        QTest::newRow("ten minutes") << "010|YYYYYYY" << "Every 10 Minutes";
        QTest::newRow("empty value") << "0|YYYYYYY" << "Every 7 Minutes";
        QTest::newRow("no text") << "" << "Every 7 Minutes";
        QTest::newRow("daily") << "108:30|YYYYYYY" << "Daily At 08:30";
        QTest::newRow("times") << "208:00,12:30,17:45|YYYYYYY" << "Daily At 08:00 12:30 17:45";
        QTest::newRow("weekdays") << "05|NYYYYYN" << "Every 5 Minutes (Mon,Tue,Wed,Thu,Fri)";
        QTest::newRow("weekend") << "109:00|YNNNNNY" << "Daily At 09:00 (Sun,Sat)";
        QTest::newRow("unknown type") << "9|YYYYYYY" << "";
    }

    void checkedEveryDescribesTheSchedule()
    {
        QFETCH(QString, schedule);
        QFETCH(QString, text);
        clsAccount a;
        a.CheckEveryMins = 7;
        a.SCHEDULE = schedule;
        QCOMPARE(a.CheckedEvery(), text);
    }

    void receivedAfterResetRewindsTheSourcesThatAreOn()
    {
        const QDate today(2024, 5, 6);
        clsAccount a;
        a.IMAP = true;
        a.SMTPServer = true;
        a.RSS = false;
        a.IMAPLastEmail = At(2024, 5, 1);
        a.ServerLastEmail = At(2024, 4, 1);
        a.RSSLastMessage = At(2024, 5, 1);
        a.ServerLastMessageNoChecked = 77;
        auto widened = std::make_unique<clsAccountTrigger>();
        widened->ReceivedAfter = At(2024, 4, 10);
        auto disabled = std::make_unique<clsAccountTrigger>();
        disabled->Enabled = false;
        disabled->ReceivedAfter = At(2000, 1, 1);
        clsAccountTrigger *w = a.Triggers.Add(std::move(widened));
        clsAccountTrigger *d = a.Triggers.Add(std::move(disabled));

        a.ReceivedAfterReset(today);
        QCOMPARE(a.IMAPLastEmail, At(2024, 4, 10));
        QCOMPARE(a.ServerLastEmail, At(2024, 4, 1)); // older already: untouched
        QCOMPARE(a.ServerLastMessageNoChecked, 77);
        QCOMPARE(a.RSSLastMessage, At(2024, 5, 1)); // source off
        QVERIFY(w->ReceivedAfterReset);
        QVERIFY(!d->ReceivedAfterReset);

        w->ReceivedAfter = At(1975, 6, 1);
        a.ReceivedAfterReset(today);
        QCOMPARE(a.IMAPLastEmail, At(1990, 1, 1));
        QCOMPARE(a.ServerLastEmail, At(1990, 1, 1));
        QCOMPARE(a.ServerLastMessageNoChecked, 0);
    }

    void userAccessByOrganizationOrAdmin()
    {
        clsAccount a;
        a.OrganizationID = QStringLiteral("ORG-1");
        clsUser member;
        member.OrganizationID = QStringLiteral("ORG-1");
        clsUser stranger;
        stranger.OrganizationID = QStringLiteral("ORG-2");
        clsUser admin;
        admin.OrganizationID = QStringLiteral("ORG-2");
        admin.Admin = true;
        QVERIFY(!a.UserAccess(nullptr));
        QVERIFY(a.UserAccess(&member));
        QVERIFY(!a.UserAccess(&stranger));
        QVERIFY(a.UserAccess(&admin));
        a.OrganizationID = QStringLiteral("  ");
        QVERIFY(a.UserAccess(&stranger));
    }

    void organizationNamesGiveDatabaseAndFolderNames()
    {
        auto organization = std::make_unique<clsUserOrganization>();
        organization->ID = QStringLiteral("ORG-1");
        organization->Name = QStringLiteral("Acme Corp: East");
        Organizations().Add(std::move(organization));
        clsAccount a;
        a.OrganizationID = QStringLiteral("ORG-1");
        QCOMPARE(a.OrganizationName(), QStringLiteral("Acme Corp: East"));
        QCOMPARE(a.InternalDatabaseName(), QStringLiteral("PostvaneI_Acme_Corp:_East"));

        const QString saved = Global.DBConnection;
        Global.DBConnection = QStringLiteral("Provider=SQLOLEDB;Initial Catalog=Main;User ID=sa");
        QCOMPARE(a.InternalDatabaseConnectionString(),
                 QStringLiteral("Provider=SQLOLEDB;Initial Catalog=PostvaneI_Acme_Corp:_East;User ID=sa"));
        QCOMPARE(a.InternalDatabaseConnectionString(QStringLiteral("master")),
                 QStringLiteral("Provider=SQLOLEDB;Initial Catalog=master;User ID=sa"));
        Global.DBConnection = QStringLiteral("Server=x;Initial Catalog=Main");
        QCOMPARE(a.InternalDatabaseConnectionString(QStringLiteral("db")), QStringLiteral("Server=x;Initial Catalog=db"));
        Global.DBConnection = QStringLiteral("Server=x;Database=Main");
        QVERIFY(a.InternalDatabaseConnectionString().isEmpty());
        Global.DBConnection = saved;

        QTemporaryDir data;
        const QString savedData = Global.DataPath;
        Global.DataPath = data.path() + u'/';
        const QString root = a.DocumentRoot();
        QVERIFY(root.endsWith(QStringLiteral("/Acme Corp_ East/")));
        QVERIFY(QDir(root).exists());
        a.OrganizationID.clear();
        QCOMPARE(a.InternalDatabaseName(), QStringLiteral("PostvaneI_Admin"));
        QCOMPARE(a.DocumentRoot(), Global.DataPath + QStringLiteral("Documents/"));
        Global.DataPath = savedData;

        organization = std::make_unique<clsUserOrganization>();
        organization->ID = QStringLiteral("ORG-LONG");
        organization->Name = QString(200, u'n');
        Organizations().Add(std::move(organization));
        a.OrganizationID = QStringLiteral("ORG-LONG");
        QCOMPARE(a.InternalDatabaseName().size(), 123);
    }

    void triggerQueriesByIdAndName()
    {
        clsAccount a;
        QVERIFY(!a.AnyTriggersActive());
        a.TriggerNameList = QStringLiteral("remote one\r\nremote two");
        QCOMPARE(a.TriggerNames(), a.TriggerNameList);
        a.Triggers.Add(BusyTrigger(QStringLiteral("T1")));
        a.Triggers.Add(BusyTrigger(QStringLiteral("T2")));
        QCOMPARE(a.TriggerNames(), QStringLiteral("Orders T1\r\nOrders T2"));
        QCOMPARE(a.TriggerNoFromID(QStringLiteral(" T2 ")), 2);
        QCOMPARE(a.TriggerNoFromID(QStringLiteral("T9")), 0);
        QCOMPARE(a.TriggerFromID(QStringLiteral("T1")), a.Triggers.Item(1));
        QVERIFY(!a.TriggerFromID(QStringLiteral("T9")));

        QVERIFY(a.AnyTriggersActive());
        a.Triggers.Item(1)->Enabled = false;
        a.Triggers.Item(2)->SCHEDULE = QString(170, u'N');
        QVERIFY(!a.AnyTriggersActive());
        a.Triggers.Item(1)->Enabled = true;
        a.Enabled = false;
        QVERIFY(!a.AnyTriggersActive());
    }

    void globalVariablesAreKeptByTrimmedLowerCaseNameAndCut()
    {
        clsAccount a;
        QCOMPARE(a.GlobalVar(QStringLiteral(" Total ")), QVariant(QString()));
        QCOMPARE(a.GlobalVarCount(), 1);
        a.setGlobalVar(QStringLiteral("TOTAL"), false, 42);
        a.setGlobalVar(QStringLiteral("other"), false, QStringLiteral("x"));
        QCOMPARE(a.GlobalVar(QStringLiteral("total")).toInt(), 42);
        QCOMPARE(a.GlobalVarCount(), 2);
        QCOMPARE(a.GlobalVarNumber(QStringLiteral(" Other")), 2);
        QCOMPARE(a.GlobalVarNumber(QStringLiteral("missing")), 0);

        // The byte length of UTF-16 text is compared; the cut keeps that
        // many characters.
        const QString halfLimit(clsAccount::MaxVarBytes / 2 + 1, u'a');
        a.setGlobalVar(QStringLiteral("half"), false, halfLimit);
        QCOMPARE(a.GlobalVar(QStringLiteral("half")).toString().size(), halfLimit.size());
        a.setGlobalVar(QStringLiteral("big"), false, QString(clsAccount::MaxVarBytes + 5, u'b'));
        QCOMPARE(a.GlobalVar(QStringLiteral("big")).toString().size(), clsAccount::MaxVarBytes);
    }

    void persistedGlobalVariablesOutliveTheAccount()
    {
        const QString id = QStringLiteral("PERSIST-TEST");
        {
            clsAccount a;
            a.AccountID = id;
            a.setGlobalVar(QStringLiteral("Counter"), true, QStringLiteral("17"));
            a.setGlobalVar(QStringLiteral("Blob"), true, QString(clsAccount::MaxPersistedVarBytes + 3, u'z'));
            QCOMPARE(a.GlobalVar(QStringLiteral("blob")).toString().size(), clsAccount::MaxPersistedVarBytes);
        }
        clsAccount b;
        b.AccountID = id;
        QCOMPARE(b.GlobalVar(QStringLiteral("counter")), QVariant(QString()));
        clsAccount c;
        c.AccountID = id;
        QCOMPARE(c.GlobalVar(QStringLiteral("COUNTER"), true).toString(), QStringLiteral("17"));
        QCOMPARE(GetMachineSetting(QStringLiteral("GlobalVariables"), id + QStringLiteral(".blob")).size(),
                 clsAccount::MaxPersistedVarBytes);
        SaveMachineSetting(QStringLiteral("GlobalVariables"), id + QStringLiteral(".blob"), QString());
        SaveMachineSetting(QStringLiteral("GlobalVariables"), id + QStringLiteral(".counter"), QString());
    }

    void globalVarListNamesTheVariablesThatTriggersSet()
    {
        clsAccount a;
        a.Triggers.Add(BusyTrigger(QStringLiteral("T1")));
        a.Triggers.Add(BusyTrigger(QStringLiteral("T2")));
        clsAccountTrigger *t1 = a.Triggers.Item(1);
        t1->ActionList().Add(SetAction(QStringLiteral("S2"), QStringLiteral("OrderNo"))); // a field of T1
        t1->ActionList().Add(SetAction(QStringLiteral("S3"), QStringLiteral("NewTotal")));
        t1->ActionList().Add(SetAction(QStringLiteral("S4"), QStringLiteral("Kept"), true));
        SaveMachineSetting(QStringLiteral("GlobalVariables"), a.AccountID + QStringLiteral(".kept"),
                           QStringLiteral("stored"));

        QCOMPARE(a.GlobalVarList(), QStringLiteral("Total,NewTotal,Kept"));
        QCOMPARE(a.GlobalVar(QStringLiteral("kept")).toString(), QStringLiteral("stored"));
        t1->ActionList().Add(SetAction(QStringLiteral("S5"), QStringLiteral("Later")));
        QCOMPARE(a.GlobalVarList(), QStringLiteral("Total,NewTotal,Kept")); // cached
        QCOMPARE(a.GlobalVarList(true), QStringLiteral("Total,NewTotal,Kept,Later"));
        SaveMachineSetting(QStringLiteral("GlobalVariables"), a.AccountID + QStringLiteral(".kept"), QString());

        // Reading a fragment clears the cached list.
        t1->ActionList().Delete(QStringLiteral("S5"));
        a.setXML(a.XML());
        QCOMPARE(a.GlobalVarList(), QStringLiteral("Total,NewTotal,Kept"));
    }
};

POSTVANE_TEST(tst_clsAccount)
#include "tst_clsAccount.moc"
