#include "ServerFixture.h"
#include "TestRegistry.h"
#include "foundation/clsXML.h"

#include <QFile>
#include <QTest>

// First start, log-on and the global settings.
class tst_ServerSession : public QObject
{
    Q_OBJECT
    ServerFixture server;

private slots:
    void initTestCase() { QVERIFY2(server.Start(), qPrintable(server.Problem)); }

    void firstStartMakesSettingsCertificateAndLog()
    {
        const QString data = server.DataPath();
        QFile settings(data + QStringLiteral("SETTINGS.XML"));
        QVERIFY(settings.open(QIODevice::ReadOnly));
        QVERIFY(settings.readAll().contains("<WebAccessPort>8855</WebAccessPort>"));
        QVERIFY(QFile::exists(data + QStringLiteral("ServerCertificate.pem")));
        QCOMPARE(QFile::permissions(data + QStringLiteral("ServerKey.pem")),
                 QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadUser | QFileDevice::WriteUser);
        QFile log(data + QStringLiteral("PostvaneServerLog.LOG"));
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray lines = log.readAll();
        QVERIFY(lines.contains("Listening on https://127.0.0.1:"));
        QVERIFY(QRegularExpression(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d:\\d\\d:\\d\\d:\\d\\d \\S"))
                    .match(QString::fromUtf8(lines))
                    .hasMatch());
    }

    // The console's log-on: Admin with the empty password reads the session
    // fragment in the order StartSession reads it.
    void adminLogsOnWithEmptyPassword()
    {
        const HttpReply reply = server.Get(QStringLiteral("getsession.xml"));
        QCOMPARE(reply.Status, 200);
        QCOMPARE(reply.ContentLocation, QByteArray("/getsession.xml"));
        QCOMPARE(reply.PoweredBy, QByteArray("Postvane"));
        clsXML session(reply.Text());
        QString title, build, url, userID, organizationID, organization, email, fullName;
        bool hosted = true, admin = false, organizationAdmin = false;
        QVERIFY(session.Extract(title, QStringLiteral("Title")));
        session.Extract(build, QStringLiteral("Build"));
        session.Extract(hosted, QStringLiteral("Hosted"));
        session.Extract(url, QStringLiteral("WebServicesURL"));
        QVERIFY(session.Extract(userID, QStringLiteral("UserID")));
        QVERIFY(session.Extract(organizationID, QStringLiteral("UserOrganizationID")));
        QVERIFY(session.Extract(organization, QStringLiteral("UserOrganization")));
        session.Extract(email, QStringLiteral("UserEmail"));
        session.Extract(fullName, QStringLiteral("UserFullName"));
        QVERIFY(session.Extract(admin, QStringLiteral("Admin")));
        session.Extract(organizationAdmin, QStringLiteral("OrganizationAdmin"));
        QCOMPARE(title, QStringLiteral("Postvane"));
        QVERIFY(!build.isEmpty());
        QVERIFY(!hosted);
        QVERIFY(url.endsWith(u'/'));
        QCOMPARE(organization, QStringLiteral("Default"));
        QVERIFY(admin);
    }

    void failedCredentialsGetA401AndNothingElse_data()
    {
        QTest::addColumn<QString>("request");
        QTest::newRow("wrong password") << QStringLiteral("getsession.xml?") + ServerFixture::AuthQuery(QStringLiteral("Admin"), QStringLiteral("x"));
        QTest::newRow("unknown user") << QStringLiteral("getusers.xml?") + ServerFixture::AuthQuery(QStringLiteral("Nobody"), QString());
        QTest::newRow("name in another case") << QStringLiteral("getusers.xml?") + ServerFixture::AuthQuery(QStringLiteral("admin"), QString());
        QTest::newRow("empty password text") << QStringLiteral("getusers.xml?username=Admin&password=");
        QTest::newRow("no credentials") << QStringLiteral("getglobals.xml");
        QTest::newRow("unknown request") << QStringLiteral("nosuchthing.xml");
    }
    void failedCredentialsGetA401AndNothingElse()
    {
        QFETCH(QString, request);
        // From an address of its own, so that these failures hold back no other test's log-ons.
        const QByteArray reply = server.RawExchange(
            "GET /" + request.toUtf8() + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n", 10000,
            QStringLiteral("127.0.0.9"));
        QVERIFY2(reply.startsWith("HTTP/1.1 401"), reply.constData());
        QVERIFY(reply.endsWith("\r\n\r\n"));
        QVERIFY(reply.contains("\r\nContent-Length: 0\r\n"));
        QVERIFY(reply.contains("\r\nX-Powered-By: Postvane\r\n"));
    }

    void refusedPostChangesNothing()
    {
        const QByteArray organization = "<Organization><ID>Intruder1</ID><Name>Intruder</Name></Organization>";
        QCOMPARE(server.Post(QStringLiteral("postorganization.htm?organizationid=Intruder1"), organization,
                             QStringLiteral("Admin"), QStringLiteral("guess"))
                     .Status,
                 401);
        QVERIFY(!server.Get(QStringLiteral("getorganizations.xml")).Body.contains("Intruder"));
    }

    void unknownRequestIs404WithItsName()
    {
        const HttpReply reply = server.Get(QStringLiteral("getnothing.xml?userid=ABC"));
        QCOMPARE(reply.Status, 404);
        QVERIFY(reply.Text().startsWith(QStringLiteral("Error: ")));
        QCOMPARE(reply.ContentLocation, QByteArray("/getnothing.xml?userid=ABC"));
    }

    void wrongVerbIsRefused()
    {
        QCOMPARE(server.Get(QStringLiteral("postglobals.htm")).Status, 405);
        QCOMPARE(server.Post(QStringLiteral("getusers.xml"), "<Users></Users>").Status, 405);
    }

    void settingsRoundTripToTheFile()
    {
        HttpReply globals = server.Get(QStringLiteral("getglobals.xml"));
        QCOMPARE(globals.Status, 200);
        QVERIFY(globals.Body.startsWith("<GlobalSettings>"));
        QVERIFY(!globals.Body.contains("<ProxyServer>"));
        QByteArray changed = globals.Body;
        // The reader is forward-only: the tag must stand in its place.
        changed.replace("<SendDailyLogToAdmin>", "<ProxyServer>proxy.example</ProxyServer>\n<SendDailyLogToAdmin>");
        QCOMPARE(server.Post(QStringLiteral("postglobals.htm"), changed).Text(), QStringLiteral("OK"));
        QVERIFY(server.Get(QStringLiteral("getglobals.xml")).Body.contains("<ProxyServer>proxy.example</ProxyServer>"));
        QFile settings(server.DataPath() + QStringLiteral("SETTINGS.XML"));
        QVERIFY(settings.open(QIODevice::ReadOnly));
        QVERIFY(settings.readAll().contains("<ProxyServer>proxy.example</ProxyServer>"));
    }

    void settingsAreForSystemAdministratorsOnly()
    {
        const QByteArray user = "<User><ID>Plain1</ID><UserName>plain</UserName><Password>pw</Password></User>";
        QCOMPARE(server.Post(QStringLiteral("postuser.htm?userid=Plain1"), user).Text(), QStringLiteral("OK"));
        const HttpReply globals = server.Get(QStringLiteral("getglobals.xml"), QStringLiteral("plain"), QStringLiteral("pw"));
        QCOMPARE(globals.Status, 200);
        QVERIFY(globals.Body.isEmpty());
        const HttpReply post = server.Post(QStringLiteral("postglobals.htm"), "<GlobalSettings></GlobalSettings>",
                                           QStringLiteral("plain"), QStringLiteral("pw"));
        QVERIFY(post.Refused());
        QVERIFY(server.Get(QStringLiteral("getglobals.xml")).Body.contains("<WebAccessPort>"));
    }

    void cleanupTestCase() { QCOMPARE(server.Stop(), 0); }
};

POSTVANE_TEST(tst_ServerSession)
#include "tst_ServerSession.moc"
