#include "ServerFixture.h"
#include "TestRegistry.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

namespace {

const QString Admin = QStringLiteral("Admin");
const QString Boss = QStringLiteral("boss");
const QString BossPassword = QStringLiteral("pw-boss");

// Requests of every group that name one record; %1 stands for its ID. The
// record named as "foreign" belongs to organization OrgA, which the
// administrator of OrgB may not reach.
struct Probe
{
    const char *Request;
    const char *Foreign;
    const char *FragmentOf; // for a POST: the request that reads the record's fragment
};
const Probe Probes[] = {
    {"getaccount.xml?accountid=%1", "AccA", nullptr},
    {"postaccount.htm?accountid=%1", "AccA", "getaccount.xml?accountid=AccA"},
    {"deleteaccount.xml?accountid=%1", "AccA", nullptr},
    {"enableaccount.xml?accountid=%1", "AccA", nullptr},
    {"disableaccount.xml?accountid=%1", "AccA", nullptr},
    {"gettriggers.xml?accountid=%1", "AccA", nullptr},
    {"gettriggerlist.txt?accountid=%1", "AccA", nullptr},
    {"receivedafterreset.xml?accountid=%1", "AccA", nullptr},
    {"gettrigger.xml?accountid=AccA&triggerid=%1", "TrA", nullptr},
    {"posttrigger.htm?accountid=AccA&triggerid=%1", "TrA", "gettrigger.xml?accountid=AccA&triggerid=TrA"},
    {"deletetrigger.xml?accountid=AccA&triggerid=%1", "TrA", nullptr},
    {"disabletrigger.xml?accountid=AccA&triggerid=%1", "TrA", nullptr},
    {"getuser.xml?userid=%1", "AnnA", nullptr},
    {"postuser.htm?userid=%1", "AnnA", "getuser.xml?userid=AnnA"},
    {"deleteuser.xml?userid=%1", "AnnA", nullptr},
    {"deleteorganization.xml?organizationid=%1", "OrgA", nullptr},
    {"updatefolder.xml?folderid=%1&folder=Renamed", "FoldA", nullptr},
    {"deletefolder.xml?folderid=%1", "FoldA", nullptr},
    {"countmessages.xml?folderid=%1", "FoldA", nullptr},
    {"getmessage.xml?folderid=%1&recordno=1", "FoldA", nullptr},
};

} // namespace

// Every refusal of a well-formed request is a reply the console can show:
// status 200, "Error: " and the reason, at the location "error"; nothing
// changes. Only credentials that fail get a 401.
class tst_ServerRefusals : public QObject
{
    Q_OBJECT
    ServerFixture server;

    HttpReply Send(const QString &Request, const QByteArray &Body, const QString &As)
    {
        const QString password = As == Admin ? QString() : BossPassword;
        return Body.isNull() ? server.Get(Request, As, password) : server.Post(Request, Body, As, password);
    }
    QString Ok(const QString &Request, const QByteArray &Body = QByteArray())
    {
        return Send(Request, Body, Admin).Text();
    }
    // All that Admin reads of the configuration.
    QByteArray Snapshot()
    {
        QByteArray all;
        for (const char *request : {"getorganizations.xml", "getusers.xml", "getfolders.xml", "getaccounts.xml",
                                    "gettriggers.xml?accountid=AccA", "getaccount.xml?accountid=AccA"})
            all += server.Get(QString::fromLatin1(request)).Body;
        return all;
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        for (const QString &id : {QStringLiteral("OrgA"), QStringLiteral("OrgB")}) {
            clsUserOrganization organization;
            organization.ID = organization.Name = id;
            QCOMPARE(Ok(QStringLiteral("postorganization.htm?organizationid=") + id, organization.XML().toUtf8()),
                     QStringLiteral("OK"));
        }
        clsUser ann;
        ann.ID = QStringLiteral("AnnA");
        ann.Username = QStringLiteral("ann");
        ann.OrganizationID = QStringLiteral("OrgA");
        QCOMPARE(Ok(QStringLiteral("postuser.htm?userid=AnnA"), ann.XML().toUtf8()), QStringLiteral("OK"));
        clsUser boss;
        boss.ID = QStringLiteral("BossB");
        boss.Username = Boss;
        boss.Password = BossPassword;
        boss.OrganizationID = QStringLiteral("OrgB");
        boss.OrganizationAdmin = true;
        QCOMPARE(Ok(QStringLiteral("postuser.htm?userid=BossB"), boss.XML().toUtf8()), QStringLiteral("OK"));
        clsAccount account;
        account.AccountID = QStringLiteral("AccA");
        account.Name = QStringLiteral("Orders of A");
        account.OrganizationID = QStringLiteral("OrgA");
        auto trigger = std::make_unique<clsAccountTrigger>();
        trigger->TriggerID = QStringLiteral("TrA");
        trigger->Name = QStringLiteral("Order");
        account.Triggers.Add(std::move(trigger));
        QCOMPARE(Ok(QStringLiteral("postaccount.htm?accountid=AccA"), account.XML().toUtf8()), QStringLiteral("OK"));
        QCOMPARE(Ok(QStringLiteral("addfolder.xml?folderid=FoldA&folder=Inbox&accountid=AccA")), QStringLiteral("OK"));
        QCOMPARE(Ok(QStringLiteral("updatefolder.xml?folderid=FoldA&folder=Inbox&accountid=AccA")), QStringLiteral("OK"));
        QCOMPARE(server.Get(QStringLiteral("getsession.xml"), Boss, BossPassword).Status, 200);
    }

    void refusalsAreRepliesAndChangeNothing_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("as");
        QRandomGenerator random(4711);
        QByteArray noise(600, Qt::Uninitialized);
        for (char &byte : noise)
            byte = char(random.bounded(256));
        for (const Probe &probe : Probes) {
            const QString request = QString::fromLatin1(probe.Request);
            const bool post = probe.FragmentOf != nullptr;
            const QByteArray fragment = post ? Send(QString::fromLatin1(probe.FragmentOf), QByteArray(), Admin).Body
                                             : QByteArray();
            const QByteArray asRead = post ? fragment : QByteArray();
            QTest::newRow(qPrintable(request.arg(QStringLiteral("<another organization's>"))))
                << request.arg(QString::fromLatin1(probe.Foreign)) << asRead << Boss;
            QTest::newRow(qPrintable(request.arg(QStringLiteral("<empty>")))) << request.arg(QString()) << asRead << Admin;
            if (post)
                QTest::newRow(qPrintable(request.arg(QStringLiteral("<random bytes>"))))
                    << request.arg(QString::fromLatin1(probe.Foreign)) << noise << Admin;
            else
                QTest::newRow(qPrintable(request.arg(QStringLiteral("<missing>"))))
                    << request.arg(QStringLiteral("Missing9")) << QByteArray() << Admin;
        }
        QTest::newRow("organization of another") << QStringLiteral("postorganization.htm?organizationid=OrgA")
                                                 << QByteArray("<Organization><ID>OrgA</ID><Name>Mine</Name></Organization>")
                                                 << Boss;
        QTest::newRow("settings by an organization administrator")
            << QStringLiteral("postglobals.htm") << server.Get(QStringLiteral("getglobals.xml")).Body << Boss;
    }
    void refusalsAreRepliesAndChangeNothing()
    {
        QFETCH(QString, request);
        QFETCH(QByteArray, body);
        QFETCH(QString, as);
        const QByteArray before = Snapshot();
        const HttpReply reply = Send(request, body.isEmpty() ? QByteArray() : body, as);
        QVERIFY2(reply.Refused(), qPrintable(QString::number(reply.Status) + u' ' + reply.Text()));
        QCOMPARE(Snapshot(), before);
    }

    void theConsoleShowsTheReasonAndStaysConnected()
    {
        Global.ServerURL = QStringLiteral("https://127.0.0.1:%1/").arg(server.Port);
        Global.AuthQuery = Requests::AuthQuery(Admin, MD5Hash(QString()));
        Global.Connected = true;
        Accounts().setXML(server.Get(QStringLiteral("getaccounts.xml")).Text());
        frmRemote remote;
        QSignalSpy messages(&remote, &frmRemote::MessageBar);
        QSignalSpy connected(&remote, &frmRemote::ToolBarConnected);

        QVERIFY(remote.HTTPGet(QStringLiteral("getaccount.xml?accountid=Missing9")));
        QCOMPARE(messages.count(), 1);
        const QString shown = messages.takeFirst().at(0).toString();
        QVERIFY2(shown.contains(QStringLiteral("There is no account with the ID \"Missing9\".")), qPrintable(shown));
        QCOMPARE(Accounts().Count(), 1);
        QVERIFY(!Accounts().Item(QStringLiteral("Missing9")));

        QVERIFY(!remote.HTTPPut(QStringLiteral("postuser.htm?userid=AnnA"), QStringLiteral("no user at all")));
        QCOMPARE(messages.count(), 1);
        QVERIFY(messages.takeFirst().at(0).toString().contains(QStringLiteral("Error: ")));

        QVERIFY(remote.HTTPGet(QStringLiteral("getaccount.xml?accountid=AccA")));
        QCOMPARE(messages.count(), 0);
        QCOMPARE(connected.count(), 0);
        QVERIFY(Global.Connected);
    }

    void cleanupTestCase() { server.Stop(); }
};

POSTVANE_TEST(tst_ServerRefusals)
#include "tst_ServerRefusals.moc"
