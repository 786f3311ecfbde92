#include "ServerFixture.h"
#include "TestRegistry.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTest>
#include <memory>
#include <vector>

// Input the server refuses without changing anything, and connections that
// misbehave; the server keeps serving everyone else.
class tst_ServerBadInput : public QObject
{
    Q_OBJECT
    ServerFixture server;
    QByteArray users;
    QByteArray folders;

    QByteArray Head(const QByteArray &RequestLine, const QByteArray &Headers = QByteArray())
    {
        return RequestLine + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + Headers + "\r\n";
    }
    QByteArray Auth() const { return ServerFixture::AuthQuery(QStringLiteral("Admin"), QString()).toUtf8(); }
    bool StillServing() { return server.Get(QStringLiteral("getsession.xml")).Status == 200; }

private slots:
    void initTestCase()
    {
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QCOMPARE(server.Get(QStringLiteral("addfolder.xml?folderid=Keep1&folder=Kept")).Text(), QStringLiteral("OK"));
        users = server.Get(QStringLiteral("getusers.xml")).Body;
        folders = server.Get(QStringLiteral("getfolders.xml")).Body;
    }

    void malformedRequestsChangeNothing_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<QByteArray>("body");
        const QByteArray user = "<User><ID>New1</ID><UserName>new</UserName></User>";
        QTest::newRow("body no fragment") << QStringLiteral("postuser.htm?userid=New1") << QByteArray("new user please");
        QTest::newRow("fragment of another kind") << QStringLiteral("postuser.htm?userid=New1")
                                                  << QByteArray("<Organization><ID>New1</ID></Organization>");
        QTest::newRow("cut fragment") << QStringLiteral("postuser.htm?userid=New1") << user.left(30);
        QTest::newRow("id of another record") << QStringLiteral("postuser.htm?userid=Other") << user;
        QTest::newRow("id with blanks") << QStringLiteral("postuser.htm?userid=New%201") << user;
        QTest::newRow("id with markup") << QStringLiteral("postuser.htm?userid=%3CID%3E") << user;
        QTest::newRow("key twice") << QStringLiteral("postuser.htm?userid=New1&userid=New2") << user;
        QTest::newRow("credentials twice") << QStringLiteral("postuser.htm?userid=New1&username=Admin") << user;
        QTest::newRow("folder id with slash") << QStringLiteral("addfolder.xml?folderid=a/b&folder=x") << QByteArray();
        QTest::newRow("folder without name") << QStringLiteral("addfolder.xml?folderid=NoName") << QByteArray();
        QTest::newRow("settings no fragment") << QStringLiteral("postglobals.htm") << QByteArray("<Nonsense/>");
        QTest::newRow("unknown folder") << QStringLiteral("deletefolder.xml?folderid=Missing1") << QByteArray();
    }
    void malformedRequestsChangeNothing()
    {
        QFETCH(QString, request);
        QFETCH(QByteArray, body);
        const HttpReply reply = body.isEmpty() ? server.Get(request) : server.Post(request, body);
        QVERIFY2(reply.Refused(), reply.Body.constData());
        QCOMPARE(server.Get(QStringLiteral("getusers.xml")).Body, users);
        QCOMPARE(server.Get(QStringLiteral("getfolders.xml")).Body, folders);
        QVERIFY(server.Get(QStringLiteral("getglobals.xml")).Body.startsWith("<GlobalSettings>"));
    }

    void oversizedRequestsAreCutShort_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("status");
        const QByteArray query = "/getsession.xml?" + Auth();
        QTest::newRow("request line of 300 kB") << Head("GET " + query + "&text=" + QByteArray(300000, 'a')) << QByteArray("414");
        QTest::newRow("header of 300 kB") << Head("GET " + query, "X-Filler: " + QByteArray(300000, 'b') + "\r\n")
                                          << QByteArray("431");
        QTest::newRow("body over 16 MB announced")
            << Head("POST /postuser.htm?userid=Big1&" + Auth(), "Content-Length: 16777217\r\n") << QByteArray("413");
        QTest::newRow("chunked body") << Head("POST /postuser.htm?userid=Big1&" + Auth(), "Transfer-Encoding: chunked\r\n")
                                      << QByteArray("411");
        QTest::newRow("two lengths") << Head("POST /postuser.htm?userid=Big1&" + Auth(),
                                             "Content-Length: 5\r\nContent-Length: 6\r\n")
                                     << QByteArray("400");
        QTest::newRow("no request line") << QByteArray("\x16\x03\x01 hello\r\n\r\n") << QByteArray("400");
        QTest::newRow("protocol upgrade") << Head("GET " + query, "Connection: Upgrade\r\nUpgrade: websocket\r\n")
                                          << QByteArray("400");
    }
    void oversizedRequestsAreCutShort()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, status);
        const QByteArray answer = server.RawExchange(request);
        QVERIFY2(answer.startsWith("HTTP/1.1 " + status + ' '), answer.left(200).constData());
        QVERIFY(answer.contains("\r\n\r\nError: "));
        QVERIFY(answer.contains("X-Powered-By: Postvane"));
        QVERIFY(StillServing());
        QCOMPARE(server.Get(QStringLiteral("getusers.xml")).Body, users);
    }

    // A real upload over the limit is refused as soon as its head is read.
    void uploadOverSixteenMegabytes()
    {
        const HttpReply reply = server.Post(QStringLiteral("postuser.htm?userid=Big1"), QByteArray(16 * 1024 * 1024 + 10, 'x'));
        QCOMPARE(reply.Status, 413);
        QVERIFY(StillServing());
    }

    void keepAliveServesRequestsInTurn()
    {
        const QByteArray request = Head("GET /getsession.xml?" + Auth());
        const QByteArray answer = server.RawExchange(request + request + Head("GET /nothing.xml?" + Auth()), 3000);
        QCOMPARE(answer.count("HTTP/1.1 200 OK"), 2);
        QCOMPARE(answer.count("HTTP/1.1 404"), 1);
    }

    // Silent and slow clients are timed out; the others are served at once.
    void silentClientsTimeOutWithoutHoldingUpOthers()
    {
        QTcpSocket silent;
        silent.connectToHost(QStringLiteral("127.0.0.1"), server.Port);
        QVERIFY(silent.waitForConnected(5000));
        QSslSocket slow;
        QSslConfiguration tls = slow.sslConfiguration();
        tls.setPeerVerifyMode(QSslSocket::VerifyNone);
        slow.setSslConfiguration(tls);
        slow.connectToHostEncrypted(QStringLiteral("127.0.0.1"), server.Port);
        QVERIFY(slow.waitForEncrypted(5000));
        slow.write("GET /getsession.xml HTTP/1.1\r\nHost: 127.0.0.1\r\n");
        slow.flush();

        QElapsedTimer served;
        served.start();
        QVERIFY(StillServing());
        QVERIFY(served.elapsed() < 3000);

        QByteArray answer;
        QDeadlineTimer deadline(20000);
        while (!deadline.hasExpired()
               && (silent.state() != QAbstractSocket::UnconnectedState || slow.state() != QAbstractSocket::UnconnectedState)) {
            if (silent.state() != QAbstractSocket::UnconnectedState)
                silent.waitForDisconnected(100);
            if (slow.state() != QAbstractSocket::UnconnectedState && slow.waitForReadyRead(100))
                answer += slow.readAll();
        }
        QCOMPARE(silent.state(), QAbstractSocket::UnconnectedState);
        QCOMPARE(slow.state(), QAbstractSocket::UnconnectedState);
        QVERIFY2(answer.startsWith("HTTP/1.1 408 "), answer.constData());
    }

    void manyConnectionsAtOnce()
    {
        std::vector<std::unique_ptr<QTcpSocket>> sockets;
        for (int i = 0; i < 500; ++i) {
            auto socket = std::make_unique<QTcpSocket>();
            socket->connectToHost(QStringLiteral("127.0.0.1"), server.Port);
            sockets.push_back(std::move(socket));
        }
        QTRY_VERIFY_WITH_TIMEOUT(std::all_of(sockets.begin(), sockets.end(),
                                             [](const auto &socket) {
                                                 return socket->state() == QAbstractSocket::ConnectedState;
                                             }),
                                 20000);
        // Half of them begin a handshake that never ends.
        for (std::size_t i = 0; i < sockets.size(); i += 2)
            sockets[i]->write("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03");
        QElapsedTimer served;
        served.start();
        QVERIFY(StillServing());
        QVERIFY(served.elapsed() < 5000);
        sockets.clear();
        QVERIFY(StillServing());
    }

    void cleanupTestCase() { QCOMPARE(server.Stop(), 0); }
};

POSTVANE_TEST(tst_ServerBadInput)
#include "tst_ServerBadInput.moc"
