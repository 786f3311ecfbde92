#include "ServerFixture.h"
#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "store/clsEventLog.h"
#include "store/clsMessage.h"
#include "store/clsMessageStore.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>
#include <QUrl>

namespace {

const QString Admin = QStringLiteral("Admin");

QByteArray UserFragment(const QString &ID, const QString &Name, const QString &OrganizationID, bool OrganizationAdmin,
                        const QString &Folders = QString())
{
    clsUser user;
    user.ID = ID;
    user.Username = Name;
    user.Password = QStringLiteral("pw-") + Name;
    user.OrganizationID = OrganizationID;
    user.OrganizationAdmin = OrganizationAdmin;
    user.Folders = Folders;
    return user.XML().toUtf8();
}

QByteArray OrganizationFragment(const QString &ID)
{
    clsUserOrganization organization;
    organization.ID = ID;
    organization.Name = ID;
    return organization.XML().toUtf8();
}

QString Encoded(const QString &Text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(Text));
}

QString Today()
{
    return QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd"));
}

} // namespace

// The stored messages through the web service: sets counted, paged, marked
// and deleted by the same filter; single messages read, moved and deleted;
// the day summary, the logs, and who may reach what.
//
// Organization OrgA has the public folders FolderA1 (four messages),
// FolderA2 (three), FolderA3 (empty), its administrator alice and the plain
// user carl, who sees FolderA2 only. OrgB has FolderB (one message) and its
// administrator bob.
class tst_ServerMessages : public QObject
{
    Q_OBJECT
    ServerFixture server;
    QString savedDataPath;
    QHash<QString, qint64> records; // by subject
    QString invoiceUID;

    HttpReply Get(const QString &Request, const QString &As = Admin)
    {
        return server.Get(Request, As, As == Admin ? QString() : QStringLiteral("pw-") + As);
    }
    QString Ok(const HttpReply &Reply)
    {
        return Reply.Status == 200 ? Reply.Text() : QString::number(Reply.Status) + u' ' + Reply.Text();
    }
    qint64 Count(const QString &Query, const QString &As = Admin)
    {
        const HttpReply reply = Get(QStringLiteral("countmessages.xml?") + Query, As);
        if (reply.Refused())
            return -1;
        return reply.Status == 200 ? reply.Text().toLongLong() : -reply.Status;
    }
    // The rows of a page, each split into its fields.
    QList<QStringList> Rows(const QString &Query, const QString &As = Admin)
    {
        QList<QStringList> rows;
        for (const QString &line : Get(QStringLiteral("getmessages.xml?") + Query, As).Text().split(u'\n', Qt::SkipEmptyParts))
            rows << line.split(u'\t');
        return rows;
    }
    QStringList Subjects(const QString &Query, const QString &As = Admin)
    {
        QStringList subjects;
        for (const QStringList &row : Rows(Query, As))
            subjects << row.value(5);
        return subjects;
    }
    QString Flags(const QString &Subject)
    {
        for (const QStringList &row : Rows(QStringLiteral("folderid=FolderA1&searchtext=") + Encoded(Subject)))
            if (row.value(5) == Subject)
                return row.value(8);
        return QString();
    }
    QString Record(const QString &Subject) { return QString::number(records.value(Subject)); }

    // Writes the messages into the running server's store, the way the
    // message processor will.
    void StoreMessages()
    {
        UserFolders().setXML(Get(QStringLiteral("getfolders.xml")).Text());
        clsMessageStore store;
        QVERIFY2(store.OpenMessageStore(), qPrintable(store.LastError));
        struct Stored
        {
            const char *Folder, *Subject, *From, *Day;
            bool Matched, Failed;
        };
        const Stored messages[] = {
            {"FolderA1", "Invoice 1001", "ann@acme.example", "2024-03-01", true, false},
            {"FolderA1", "Invoice 1002", "ann@acme.example", "2024-03-02", true, false},
            {"FolderA1", "O'Brien's order", "ann@acme.example", "2024-03-03", false, false},
            {"FolderA1", "100% sure", "ann@acme.example", "2024-03-04", true, true},
            {"FolderA2", "Weekly report", "ann@acme.example", "2024-03-05", false, false},
            {"FolderA2", "Monthly report", "ann@acme.example", "2024-03-06", false, false},
            {"FolderA2", "Daily note", "ann@acme.example", "2024-03-07", false, false},
            {"FolderB", "Secret of Bolt", "boss@bolt.example", "2024-03-08", false, false},
        };
        // As in the processor, the message is the current one: its header
        // slots follow the current message's count.
        std::unique_ptr<clsMessage> saved = ReplaceCurrentMessage(nullptr);
        for (const Stored &stored : messages) {
            ReplaceCurrentMessage(nullptr);
            clsMessage &message = CurrentMessage();
            message.FolderID = QString::fromUtf8(stored.Folder);
            message.Subject = QString::fromUtf8(stored.Subject);
            message.From = QString::fromUtf8(stored.From);
            message.ToAddress = QStringLiteral("in@acme.example");
            message.Dated = QDateTime(QDate::fromString(QString::fromUtf8(stored.Day), QStringLiteral("yyyy-MM-dd")),
                                      QTime(10, 0));
            message.TriggerConditionPassed = stored.Matched;
            if (stored.Failed) {
                message.ErrorCount = 1;
                message.LastError = QStringLiteral("the action failed");
            }
            const QString headers = QStringLiteral("From: ") + message.From + QStringLiteral("\r\nSubject: ")
                + message.Subject + QStringLiteral("\r\nX-Mailer: Test\r\n");
            message.MessageText = headers + QStringLiteral("\r\nBody of ") + message.Subject + QStringLiteral("\r\n");
            message.setMessageHeader(headers);
            const qint64 recordNo = store.AddToMailStore(message);
            QVERIFY2(recordNo > 0, qPrintable(store.LastError));
            records.insert(message.Subject, recordNo);
            if (message.Subject == u"Invoice 1001")
                invoiceUID = message.MessageID;
        }
        ReplaceCurrentMessage(std::move(saved));
    }

    // The edge server's log holds a line about the first invoice.
    void WriteEdgeLog()
    {
        clsEventLog log;
        log.setFileName(server.DataPath() + Global.ProductName + QStringLiteral("EdgeServerLog.db3"));
        log.AddRemoteEvent(QStringLiteral("Edge took Invoice 1001"), QDateTime::currentDateTime(), QStringLiteral("-"),
                           QString(), invoiceUID);
        QVERIFY(log.IsOpen());
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QVERIFY(QFileInfo::exists(server.DataPath() + QStringLiteral("MessageStore.db3")));
        QVERIFY(QFileInfo::exists(server.DataPath() + QStringLiteral("EdgeQueue.db3")));
        savedDataPath = Global.DataPath;
        Global.DataPath = server.DataPath();

        for (const QString &organization : {QStringLiteral("OrgA"), QStringLiteral("OrgB")})
            QCOMPARE(Ok(server.Post(QStringLiteral("postorganization.htm?organizationid=") + organization,
                                    OrganizationFragment(organization))),
                     QStringLiteral("OK"));
        const QList<QPair<QString, QByteArray>> users{
            {QStringLiteral("AliceA"), UserFragment(QStringLiteral("AliceA"), QStringLiteral("alice"), QStringLiteral("OrgA"), true)},
            {QStringLiteral("CarlA"), UserFragment(QStringLiteral("CarlA"), QStringLiteral("carl"), QStringLiteral("OrgA"), false,
                                                   QStringLiteral("FolderA2"))},
            {QStringLiteral("BobB"), UserFragment(QStringLiteral("BobB"), QStringLiteral("bob"), QStringLiteral("OrgB"), true)}};
        for (const auto &[id, fragment] : users)
            QCOMPARE(Ok(server.Post(QStringLiteral("postuser.htm?userid=") + id, fragment)), QStringLiteral("OK"));
        for (const QString &folder : {QStringLiteral("FolderA1"), QStringLiteral("FolderA2"), QStringLiteral("FolderA3")})
            QCOMPARE(Ok(Get(QStringLiteral("addfolder.xml?folderid=%1&folder=%1").arg(folder), QStringLiteral("alice"))),
                     QStringLiteral("OK"));
        QCOMPARE(Ok(Get(QStringLiteral("addfolder.xml?folderid=FolderB&folder=Bolt"), QStringLiteral("bob"))),
                 QStringLiteral("OK"));
        StoreMessages();
        WriteEdgeLog();
    }

    void setsAreCountedAndPagedNewestFirst()
    {
        // The query as the message browser composes it.
        const QString all = QStringLiteral("accountid=&fromdate=2000-01-01&todate=") + Today()
            + QStringLiteral("&errorsonly=N&matchesonly=N&searchtext=&folderid=FolderA1");
        QCOMPARE(Count(all), 4);
        QCOMPARE(Subjects(all + QStringLiteral("&fromrow=1&torow=2")),
                 (QStringList{QStringLiteral("100% sure"), QStringLiteral("O'Brien's order")}));
        QCOMPARE(Subjects(all + QStringLiteral("&fromrow=3&torow=500")),
                 (QStringList{QStringLiteral("Invoice 1002"), QStringLiteral("Invoice 1001")}));

        const QList<QStringList> failed = Rows(QStringLiteral("folderid=FolderA1&errorsonly=Y"));
        QCOMPARE(failed.size(), 1);
        const QStringList row = failed.first();
        QCOMPARE(row.size(), 13); // twelve fields, each closed by a tab
        QCOMPARE(row.at(0), Record(QStringLiteral("100% sure")));
        QCOMPARE(row.at(3), QStringLiteral("FolderA1"));
        QCOMPARE(row.at(4), QStringLiteral("ann@acme.example"));
        QCOMPARE(row.at(6), QStringLiteral("2024-03-04 10:00:00"));
        QCOMPARE(row.mid(9, 3), (QStringList{QStringLiteral("Y"), QStringLiteral("N"), QStringLiteral("the action failed")}));

        QCOMPARE(Count(QStringLiteral("folderid=FolderA1&matchesonly=Y")), 3);
        QCOMPARE(Count(QStringLiteral("folderid=FolderA1&fromdate=2024-03-02&todate=2024-03-03")), 2);
        QCOMPARE(Count(QStringLiteral("folderid=FolderA1&fromdate=2024-03-02&todate=2024-03-03&matchesonly=Y")), 1);
        QCOMPARE(Count(QStringLiteral("folderid=FolderB")), 1);
    }

    void searchTextsAreTextNotSQL_data()
    {
        QTest::addColumn<QString>("search");
        QTest::addColumn<QStringList>("found");
        QTest::newRow("quote") << QStringLiteral("O'Brien") << QStringList{QStringLiteral("O'Brien's order")};
        QTest::newRow("lone quote") << QStringLiteral("'") << QStringList{QStringLiteral("O'Brien's order")};
        QTest::newRow("percent is the wildcard") << QStringLiteral("Inv%02") << QStringList{QStringLiteral("Invoice 1002")};
        QTest::newRow("percent in the subject") << QStringLiteral("0% s") << QStringList{QStringLiteral("100% sure")};
        QTest::newRow("address") << QStringLiteral("ann@acme") << QStringList{QStringLiteral("100% sure"), QStringLiteral("O'Brien's order"),
                                                                             QStringLiteral("Invoice 1002"), QStringLiteral("Invoice 1001")};
        QTest::newRow("always true") << QStringLiteral("x' OR '1'='1") << QStringList();
        QTest::newRow("statement") << QStringLiteral("'); DELETE FROM MessageStore; --") << QStringList();
        QTest::newRow("comment and ampersand") << QStringLiteral("a&b=c/* */") << QStringList();
    }
    void searchTextsAreTextNotSQL()
    {
        QFETCH(QString, search);
        QFETCH(QStringList, found);
        const QString query = QStringLiteral("folderid=FolderA1&searchtext=") + Encoded(search);
        QCOMPARE(Subjects(query), found);
        QCOMPARE(Count(query), found.size());
        // A set that matches nothing deletes nothing.
        if (found.isEmpty()) {
            QCOMPARE(Ok(Get(QStringLiteral("deletemessages.xml?") + query)), QStringLiteral("OK"));
            QCOMPARE(Count(QStringLiteral("folderid=FolderA1")), 4);
        }
    }

    void malformedQueriesChangeNothing_data()
    {
        QTest::addColumn<QString>("request");
        QTest::newRow("no filter at all") << QStringLiteral("deletemessages.xml?accountid=&searchtext=");
        QTest::newRow("folder with quote") << QStringLiteral("deletemessages.xml?folderid=F%27%20OR%20%271");
        QTest::newRow("account with SQL") << QStringLiteral("deletemessages.xml?folderid=FolderA1&accountid=a%27)%20OR%20(1=1");
        QTest::newRow("flag neither Y nor N") << QStringLiteral("deletemessages.xml?folderid=FolderA1&errorsonly=yes");
        QTest::newRow("bad date") << QStringLiteral("deletemessages.xml?folderid=FolderA1&fromdate=2024-02-30");
        QTest::newRow("record no number") << QStringLiteral("deletemessage.xml?folderid=FolderA1&recordno=1%20OR%201=1");
        QTest::newRow("record zero") << QStringLiteral("deletemessage.xml?folderid=FolderA1&recordno=0");
        QTest::newRow("unknown record") << QStringLiteral("deletemessage.xml?recordno=999999");
        QTest::newRow("rows backwards") << QStringLiteral("getmessages.xml?folderid=FolderA1&fromrow=5&torow=2");
        QTest::newRow("report no number") << QStringLiteral("getdaysummary.xml?accountid=-&searchtext=1;DROP");
    }
    void malformedQueriesChangeNothing()
    {
        QFETCH(QString, request);
        const HttpReply reply = Get(request);
        QVERIFY2(reply.Refused(), reply.Body.constData());
        QCOMPARE(Count(QStringLiteral("folderid=FolderA1")), 4);
    }

    void oneMessageIsReadAsMimeAndMarked()
    {
        const QString invoice = QStringLiteral("Invoice 1001");
        const QString address = QStringLiteral("getmessage.xml?folderid=FolderA1&recordno=") + Record(invoice);
        QCOMPARE(Ok(Get(QStringLiteral("markasunread.xml?accountid=-&folderid=FolderA1&recordno=") + Record(invoice))),
                 QStringLiteral("OK"));
        QCOMPARE(Flags(invoice), QStringLiteral("0"));

        const HttpReply reply = Get(address);
        QCOMPARE(reply.Status, 200);
        QVERIFY(reply.ContentLocation.startsWith("/getmessage.xml?"));
        const QString mime = reply.Text();
        for (const QString &part : {QStringLiteral("Subject: Invoice 1001"), QStringLiteral("Body of Invoice 1001"),
                                    QStringLiteral("Postvane-TriggerMatch: Y"), QStringLiteral("ProcessLog.log")})
            QVERIFY2(mime.contains(part), qPrintable(part));
        QVERIFY(!mime.contains(QStringLiteral("X-Mailer")));
        // The process log comes from the edge server's log in the data folder.
        QVERIFY(mime.section(QStringLiteral("ProcessLog.log"), 1).contains(QStringLiteral("Edge took Invoice 1001")));
        QCOMPARE(Flags(invoice), QStringLiteral("2")); // reading marks it read

        QCOMPARE(Ok(Get(QStringLiteral("markasunread.xml?folderid=FolderA1&recordno=") + Record(invoice))), QStringLiteral("OK"));
        QCOMPARE(Flags(invoice), QStringLiteral("0"));
        QCOMPARE(Ok(Get(QStringLiteral("markasread.xml?folderid=FolderA1&recordno=") + Record(invoice))), QStringLiteral("OK"));
        QCOMPARE(Flags(invoice), QStringLiteral("2"));

        // A message asked for in a folder it isn't in is not there.
        QVERIFY(Get(QStringLiteral("getmessage.xml?folderid=FolderA2&recordno=") + Record(invoice)).Refused());
        QVERIFY(Get(QStringLiteral("markasunread.xml?folderid=FolderA2&recordno=") + Record(invoice)).Refused());
        QCOMPARE(Flags(invoice), QStringLiteral("2"));
    }

    void messagesMoveAndGo()
    {
        const QString weekly = Record(QStringLiteral("Weekly report"));
        QCOMPARE(Ok(Get(QStringLiteral("movemessage.xml?folderid=FolderA2&recordno=") + weekly
                        + QStringLiteral("&movetofolderid=FolderA3&accountid="))),
                 QStringLiteral("OK"));
        QCOMPARE(Count(QStringLiteral("folderid=FolderA2")), 2);
        QCOMPARE(Subjects(QStringLiteral("folderid=FolderA3")), QStringList{QStringLiteral("Weekly report")});
        QVERIFY(Get(QStringLiteral("getmessage.xml?folderid=FolderA2&recordno=") + weekly).Refused());

        // A message stays in its organization, and needs a folder to go to.
        const QString daily = Record(QStringLiteral("Daily note"));
        QCOMPARE(Get(QStringLiteral("movemessage.xml?folderid=FolderA2&recordno=") + daily + QStringLiteral("&movetofolderid=FolderB")).Text(),
                 QStringLiteral("Error: The folder belongs to another organization."));
        QVERIFY(Get(QStringLiteral("movemessage.xml?folderid=FolderA2&recordno=") + daily + QStringLiteral("&movetofolderid=Nowhere")).Refused());
        QCOMPARE(Count(QStringLiteral("folderid=FolderB")), 1);

        QCOMPARE(Ok(Get(QStringLiteral("deletemessage.xml?folderid=FolderA3&recordno=") + weekly)), QStringLiteral("OK"));
        QCOMPARE(Count(QStringLiteral("folderid=FolderA3")), 0);
        QVERIFY(Get(QStringLiteral("getmessage.xml?recordno=") + weekly).Refused());

        QCOMPARE(Rows(QStringLiteral("folderid=FolderA2&searchtext=report")).size(), 1);
        QCOMPARE(Ok(Get(QStringLiteral("markasunread.xml?recordno=") + daily)), QStringLiteral("OK"));
        QCOMPARE(Rows(QStringLiteral("folderid=FolderA2&searchtext=Daily")).value(0).value(8), QStringLiteral("0"));
        QCOMPARE(Ok(Get(QStringLiteral("markallasread.xml?folderid=FolderA2"))), QStringLiteral("OK"));
        for (const QStringList &row : Rows(QStringLiteral("folderid=FolderA2")))
            QCOMPARE(row.value(8), QStringLiteral("2"));
        QCOMPARE(Ok(Get(QStringLiteral("deletemessages.xml?folderid=FolderA2&searchtext=report"))), QStringLiteral("OK"));
        QCOMPARE(Subjects(QStringLiteral("folderid=FolderA2")), QStringList{QStringLiteral("Daily note")});
        QCOMPARE(Count(QStringLiteral("folderid=FolderA1")), 4);
    }

    void daySummaryCountsTodaysMessages()
    {
        const QString period = QStringLiteral("getdaysummary.xml?accountid=-&fromdate=%1&todate=%1&searchtext=").arg(Today());
        QCOMPARE(Ok(Get(period + QStringLiteral("1000"))),
                 QStringLiteral("<Lines><Line><Date>%1</Date><Value>8</Value></Line></Lines>").arg(Today()));
        const QString domains = Ok(Get(period + QStringLiteral("1")));
        QVERIFY2(domains.contains(QStringLiteral("<Token>acme.example</Token><Value>7</Value>")), qPrintable(domains));
        QVERIFY2(domains.contains(QStringLiteral("<Token>bolt.example</Token><Value>1</Value>")), qPrintable(domains));
        QCOMPARE(Ok(Get(QStringLiteral("getdaysummary.xml?accountid=-&fromdate=2024-01-01&todate=2024-01-31&searchtext=1000"))),
                 QStringLiteral("<Lines></Lines>"));
        // Statistics of accounts are their organization's.
        QVERIFY(Get(period + QStringLiteral("1000"), QStringLiteral("alice")).Refused());
    }

    void organizationAdministratorReachesOnlyItsOrganization()
    {
        const QString bob = QStringLiteral("bob");
        const QString invoice = Record(QStringLiteral("Invoice 1002"));
        QCOMPARE(Count(QStringLiteral("folderid=FolderA1"), bob), -1);
        // Without a folder the set is its organization's.
        QCOMPARE(Subjects(QStringLiteral("accountid=&searchtext="), bob), QStringList{QStringLiteral("Secret of Bolt")});
        QCOMPARE(Count(QStringLiteral("folderid=-&searchtext=e"), bob), 1);
        QCOMPARE(Ok(Get(QStringLiteral("markasunread.xml?recordno=") + invoice)), QStringLiteral("OK"));
        QCOMPARE(Ok(Get(QStringLiteral("markallasread.xml?searchtext=Invoice"), bob)), QStringLiteral("OK"));
        QCOMPARE(Ok(Get(QStringLiteral("deletemessages.xml?searchtext=Invoice"), bob)), QStringLiteral("OK"));
        for (const QString &request :
             {QStringLiteral("getmessage.xml?recordno="), QStringLiteral("markasunread.xml?recordno="),
              QStringLiteral("deletemessage.xml?recordno="), QStringLiteral("movemessage.xml?movetofolderid=FolderB&recordno=")})
            QVERIFY(Get(request + invoice, bob).Refused());
        QCOMPARE(Count(QStringLiteral("folderid=FolderA1")), 4);
        QCOMPARE(Count(QStringLiteral("folderid=FolderA1&searchtext=Invoice&matchesonly=Y")), 2);
        QCOMPARE(Flags(QStringLiteral("Invoice 1002")), QStringLiteral("0"));

        // Its own organization it does reach, and only that.
        QCOMPARE(Get(QStringLiteral("getmessage.xml?recordno=") + invoice, QStringLiteral("alice")).Status, 200);
        QVERIFY(Get(QStringLiteral("getmessage.xml?recordno=") + Record(QStringLiteral("Secret of Bolt")), QStringLiteral("alice")).Refused());
        QCOMPARE(Count(QStringLiteral("searchtext=Secret"), QStringLiteral("alice")), 0);
    }

    void plainUserReachesOnlyItsFolders()
    {
        const QString carl = QStringLiteral("carl");
        QCOMPARE(Subjects(QStringLiteral("folderid=FolderA2"), carl), QStringList{QStringLiteral("Daily note")});
        QCOMPARE(Get(QStringLiteral("getmessage.xml?recordno=") + Record(QStringLiteral("Daily note")), carl).Status, 200);
        QCOMPARE(Count(QStringLiteral("folderid=FolderA1"), carl), -1);
        QCOMPARE(Count(QStringLiteral("searchtext=Invoice"), carl), -1);
        QVERIFY(Get(QStringLiteral("getmessage.xml?recordno=") + Record(QStringLiteral("Invoice 1001")), carl).Refused());
        QVERIFY(Get(QStringLiteral("movemessage.xml?recordno=") + Record(QStringLiteral("Daily note"))
                         + QStringLiteral("&movetofolderid=FolderA1"),
                     carl)
                     .Refused());
        QVERIFY(Get(QStringLiteral("deletemailstore.xml"), carl).Refused());
        QVERIFY(Get(QStringLiteral("testdbconnection.htm?text=x"), carl).Refused());
        QCOMPARE(Count(QStringLiteral("folderid=FolderA2")), 1);
    }

    void logsReturnWhatTheServerLogged()
    {
        static const QRegularExpression line(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d:\\d\\d:\\d\\d:\\d\\d \\S"));
        const HttpReply log = Get(QStringLiteral("getlog.xml"));
        QCOMPARE(log.Status, 200);
        QVERIFY(log.ContentLocation.startsWith("/getlog.xml"));
        QVERIFY(!log.Body.contains('\r'));
        const QStringList lines = log.Text().split(u'\n', Qt::SkipEmptyParts);
        QVERIFY(!lines.isEmpty());
        for (const QString &text : lines)
            QVERIFY2(line.match(text).hasMatch(), qPrintable(text));
        QVERIFY(log.Text().contains(QStringLiteral("User alice saved by Admin")));
        QVERIFY(log.Text().contains(QStringLiteral("messages deleted by Admin")));

        QVERIFY(Get(QStringLiteral("getedgelog.xml")).Text().contains(QStringLiteral(" Edge took Invoice 1001\n")));
        QCOMPARE(Ok(Get(QStringLiteral("getmsgplog.xml"))), QString());
        QVERIFY(!QFileInfo::exists(server.DataPath() + Global.ProductName + QStringLiteral("MessageServerLog.db3")));
        // The logs are the server's: others get none.
        QCOMPARE(Ok(Get(QStringLiteral("getlog.xml"), QStringLiteral("alice"))), QString());
    }

    void databaseConnectionsAreReallyOpened()
    {
        const auto result = [this](const QString &Text) {
            return Ok(Get(QStringLiteral("testdbconnection.htm?text=") + Encoded(Text), QStringLiteral("alice")));
        };
        QVERIFY(result(server.DataPath() + QStringLiteral("MessageStore.db3")).contains(QStringLiteral("<result>OK</result>")));
        QVERIFY(result(QStringLiteral("EdgeQueue.db3")).contains(QStringLiteral("<result>OK</result>")));
        const QString missing = server.DataPath() + QStringLiteral("Missing.db3");
        for (const QString &text : {missing, server.DataPath() + Global.ProductName + QStringLiteral("ServerLog.LOG"),
                                    QStringLiteral("Driver={No Such Driver};Server=nowhere;Database=x"), QString()})
            QVERIFY2(result(text).contains(QStringLiteral("<result>Error: ")), qPrintable(result(text)));
        QVERIFY(!QFileInfo::exists(missing));
    }

    void clearingTheStoreAndTheLogs()
    {
        QCOMPARE(Ok(Get(QStringLiteral("deletemailstore.xml"), QStringLiteral("bob"))), QStringLiteral("OK"));
        QCOMPARE(Count(QStringLiteral("folderid=FolderB")), 0);
        QCOMPARE(Count(QStringLiteral("folderid=FolderA1")), 4);

        QVERIFY(Get(QStringLiteral("deletelog.xml"), QStringLiteral("alice")).Refused());
        QVERIFY(Get(QStringLiteral("getedgelog.xml")).Text().contains(QStringLiteral("Edge took Invoice 1001")));
        QCOMPARE(Ok(Get(QStringLiteral("deletelog.xml"))), QStringLiteral("OK"));
        QCOMPARE(Ok(Get(QStringLiteral("getedgelog.xml"))).contains(QStringLiteral("Edge took Invoice 1001")), false);
        const QString log = Ok(Get(QStringLiteral("getlog.xml")));
        QVERIFY(!log.contains(QStringLiteral("User alice saved by Admin")));
        QVERIFY(log.contains(QStringLiteral("Logs cleared by Admin")));
        QFile text(server.DataPath() + Global.ProductName + QStringLiteral("ServerLog.LOG"));
        QVERIFY(text.open(QIODevice::ReadOnly));
        QVERIFY(!text.readAll().contains("User alice saved by Admin"));

        QCOMPARE(Ok(Get(QStringLiteral("deletemailstore.xml"))), QStringLiteral("OK"));
        QCOMPARE(Count(QStringLiteral("folderid=FolderA1")), 0);
    }

    void cleanupTestCase()
    {
        server.Stop();
        UserFolders().Clear();
        Global.DataPath = savedDataPath;
    }
};

POSTVANE_TEST(tst_ServerMessages)
#include "tst_ServerMessages.moc"
