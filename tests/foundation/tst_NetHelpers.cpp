#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "foundation/NetHelpers.h"
#include "foundation/Startup.h"

#include <QElapsedTimer>
#include <QFile>
#include <QMap>
#include <QNetworkDatagram>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QUdpSocket>
#include <QtEndian>

namespace {

// A name server on a loopback address that answers MX queries from a table,
// NXDOMAIN for other names, or nothing at all when silent. Port 53 is fixed
// for the resolver, so binding it needs the right to use low ports.
class FakeNameServer : public QObject
{
public:
    QMap<QString, QList<QPair<quint16, QString>>> Exchangers;
    bool Silent = false;
    int Queries = 0;

    bool Listen(const QHostAddress &address)
    {
        connect(&m_socket, &QUdpSocket::readyRead, this, &FakeNameServer::Answer);
        return m_socket.bind(address, 53);
    }

private:
    QUdpSocket m_socket;

    static QByteArray EncodeName(const QString &name)
    {
        QByteArray encoded;
        for (const QString &label : name.split(u'.'))
            encoded += char(label.size()) + label.toLatin1();
        return encoded + '\0';
    }

    static void AppendShort(QByteArray &data, quint16 value)
    {
        data += char(value >> 8);
        data += char(value & 0xFF);
    }

    void Answer()
    {
        while (m_socket.hasPendingDatagrams()) {
            const QNetworkDatagram query = m_socket.receiveDatagram();
            ++Queries;
            if (!Silent)
                m_socket.writeDatagram(Reply(query.data()), query.senderAddress(), quint16(query.senderPort()));
        }
    }

    QByteArray Reply(const QByteArray &query) const
    {
        // The question: labels from offset 12 up to the zero byte, then type and class.
        QStringList labels;
        qsizetype at = 12;
        while (at < query.size() && query.at(at) != 0) {
            const int length = quint8(query.at(at));
            labels << QString::fromLatin1(query.mid(at + 1, length));
            at += 1 + length;
        }
        const QByteArray question = query.mid(12, at + 5 - 12);
        const auto records = Exchangers.value(labels.join(u'.').toLower());

        QByteArray reply = query.left(2);
        AppendShort(reply, records.isEmpty() ? 0x8183 : 0x8180);
        AppendShort(reply, 1);
        AppendShort(reply, quint16(records.size()));
        AppendShort(reply, 0);
        AppendShort(reply, 0);
        reply += question;
        for (const auto &[preference, exchange] : records) {
            const QByteArray name = EncodeName(exchange);
            AppendShort(reply, 0xC00C);
            AppendShort(reply, 15);
            AppendShort(reply, 1);
            AppendShort(reply, 0);
            AppendShort(reply, 60);
            AppendShort(reply, quint16(2 + name.size()));
            AppendShort(reply, preference);
            reply += name;
        }
        return reply;
    }
};

// An HTTP server on 127.0.0.1 that gives one canned response to each request,
// or keeps the connection open without a word when Response is empty.
class FakeWebServer : public QObject
{
public:
    QByteArray Response;
    QByteArray Request;

    bool Listen()
    {
        connect(&m_server, &QTcpServer::newConnection, this, &FakeWebServer::Accept);
        return m_server.listen(QHostAddress::LocalHost);
    }
    QString Url(const QString &path) const
    {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path);
    }

private:
    QTcpServer m_server;

    void Accept()
    {
        while (QTcpSocket *socket = m_server.nextPendingConnection()) {
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                Request += socket->readAll();
                if (!Request.contains("\r\n\r\n") || Response.isEmpty())
                    return;
                socket->write(Response);
                socket->disconnectFromHost();
            });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    }
};

QByteArray HttpResponse(const QByteArray &status, const QByteArray &contentType, const QByteArray &body)
{
    return "HTTP/1.1 " + status + "\r\nContent-Type: " + contentType
           + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

const QHostAddress FakeDnsAddress(QStringLiteral("127.53.0.1"));
const QHostAddress DeafAddress(QStringLiteral("127.53.0.2"));

} // namespace

class tst_NetHelpers : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;
    QTemporaryDir m_temp;
    QString m_savedTempPath;

    static qint64 Timed(const std::function<void()> &run)
    {
        QElapsedTimer timer;
        timer.start();
        run();
        return timer.elapsed();
    }

private slots:
    void initTestCase()
    {
        m_savedTempPath = Global.TempPath;
        Global.TempPath = m_temp.path() + u'/';
    }
    void cleanupTestCase() { Global.TempPath = m_savedTempPath; }
    void init()
    {
        m_errors.clear();
    }

    void getDomain_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("expected");
        QTest::newRow("scheme, www and path") << "http://www.example.com/a/b.htm" << "example.com";
        QTest::newRow("www in any case") << "https://WWW.Example.org" << "Example.org";
        QTest::newRow("no scheme") << "www.example.net/x" << "example.net";
        QTest::newRow("port stays") << "ftp://host.example:21/x" << "host.example:21";
        QTest::newRow("bare host") << " example.com " << "example.com";
        QTest::newRow("inner www kept") << "http://mail.www.example.com/" << "mail.www.example.com";
    }
    void getDomain()
    {
        QFETCH(QString, address);
        QFETCH(QString, expected);
        QCOMPARE(GetDomain(address), expected);
    }

    void mxEarlyExitsAskNoServer_data()
    {
        QTest::addColumn<QString>("address");
        QTest::newRow("empty") << "";
        QTest::newRow("six characters") << "a@b.cd";
        QTest::newRow("six after the name is dropped") << "Someone Long <a@b.cd>";
        QTest::newRow("@ first") << "@example.test";
        QTest::newRow("@ second") << "a@example.test";
        QTest::newRow("no @") << "example.test";
    }
    void mxEarlyExitsAskNoServer()
    {
        QFETCH(QString, address);
        FakeNameServer server;
        server.Silent = true;
        const bool listening = server.Listen(FakeDnsAddress);
        QString answer = QStringLiteral("unset");
        const qint64 elapsed = Timed([&] { answer = GetMXRecord(address, FakeDnsAddress); });
        QCOMPARE(answer, QString());
        QVERIFY(elapsed < 500);
        if (listening)
            QCOMPARE(server.Queries, 0);
    }

    void mxPicksPreferredExchangerAndRemembersLastAddress()
    {
        FakeNameServer server;
        if (!server.Listen(FakeDnsAddress))
            QSKIP("port 53 on a loopback address cannot be bound here");
        server.Exchangers.insert(QStringLiteral("example.test"),
                                 {{20, QStringLiteral("backup.example.test")}, {10, QStringLiteral("mail.example.test")}});

        QCOMPARE(GetMXRecord(QStringLiteral(" Jane Doe <jane@example.test> "), FakeDnsAddress),
                 QStringLiteral("mail.example.test"));
        QCOMPARE(server.Queries, 1);
        QCOMPARE(GetMXRecord(QStringLiteral("JANE@example.test"), FakeDnsAddress), QStringLiteral("mail.example.test"));
        QCOMPARE(server.Queries, 1);
        QCOMPARE(GetMXRecord(QStringLiteral("john@example.test"), FakeDnsAddress), QStringLiteral("mail.example.test"));
        QCOMPARE(server.Queries, 2);

        QCOMPARE(GetMXRecord(QStringLiteral("nobody@unknown.test"), FakeDnsAddress), QString());
        QVERIFY2(m_errors.isEmpty(), qPrintable(m_errors.join(u'\n')));
    }

    void mxGivesUpOnSilentServerAfterTenSeconds()
    {
        FakeNameServer server;
        server.Silent = true;
        if (!server.Listen(FakeDnsAddress))
            QSKIP("port 53 on a loopback address cannot be bound here");
        QString answer = QStringLiteral("unset");
        const qint64 elapsed = Timed([&] { answer = GetMXRecord(QStringLiteral("jane@silent.test"), FakeDnsAddress); });
        QCOMPARE(answer, QString());
        QVERIFY(server.Queries > 0);
        QVERIFY2(elapsed >= 9500 && elapsed < 12000, qPrintable(QString::number(elapsed)));
    }

    void mxFailureIsRecorded()
    {
        QString answer = QStringLiteral("unset");
        const qint64 elapsed = Timed([&] { answer = GetMXRecord(QStringLiteral("jane@refused.test"), DeafAddress); });
        QCOMPARE(answer, QString());
        QVERIFY(elapsed < 9500);
        QCOMPARE(m_errors.size(), 1);
        QVERIFY(m_errors.first().endsWith(QStringLiteral("FROM FCN.GetMXRecord")));
    }

    void getPageReturnsTextAndKeepsCopy_data()
    {
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("UTF-8 by header") << QByteArray("text/html; charset=utf-8") << QByteArray("<p>caf\xC3\xA9</p>");
        QTest::newRow("Latin-1 by header") << QByteArray("text/html; charset=ISO-8859-1") << QByteArray("<p>caf\xE9</p>");
        QTest::newRow("Latin-1 by page")
            << QByteArray("text/html") << QByteArray("<meta charset=\"iso-8859-1\"><p>caf\xE9</p>");
    }
    void getPageReturnsTextAndKeepsCopy()
    {
        QFETCH(QByteArray, contentType);
        QFETCH(QByteArray, body);
        FakeWebServer web;
        QVERIFY(web.Listen());
        web.Response = HttpResponse("200 OK", contentType, body);

        QString saved;
        const QString page = GetPage(web.Url(QStringLiteral("/page.htm")), &saved);
        QVERIFY2(m_errors.isEmpty(), qPrintable(m_errors.join(u'\n')));
        QVERIFY(page.endsWith(QStringLiteral("<p>café</p>")));
        QVERIFY(web.Request.startsWith("GET /page.htm HTTP/1.1\r\n"));
        QVERIFY(web.Request.contains("\r\nUser-Agent: Mozilla/4.0 (compatible; MSIE 9.0; " + Global.ProductName.toLatin1() + ")\r\n"));

        QVERIFY(saved.startsWith(Global.TempPath));
        QFile file(saved);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), body);
    }

    void getPageFailuresGiveEmpty()
    {
        FakeWebServer web;
        QVERIFY(web.Listen());
        web.Response = HttpResponse("404 Not Found", "text/html", "<p>gone</p>");
        QString saved = QStringLiteral("unset");
        QCOMPARE(GetPage(web.Url(QStringLiteral("/gone.htm")), &saved), QString());
        QCOMPARE(saved, QString());

        QCOMPARE(GetPage(QStringLiteral("no address at all")), QString());

        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        const quint16 port = closed.serverPort();
        closed.close();
        QCOMPARE(GetPage(QStringLiteral("http://127.0.0.1:%1/").arg(port)), QString());

        QCOMPARE(m_errors.size(), 3);
        for (const QString &error : std::as_const(m_errors))
            QVERIFY2(error.endsWith(QStringLiteral("FROM GetPage")), qPrintable(error));
    }

    void getPageTimesOut()
    {
        FakeWebServer web;
        QVERIFY(web.Listen());
        QString page = QStringLiteral("unset");
        const qint64 elapsed = Timed([&] { page = GetPage(web.Url(QStringLiteral("/slow")), nullptr, 1); });
        QCOMPARE(page, QString());
        QVERIFY(!web.Request.isEmpty());
        QVERIFY2(elapsed >= 900 && elapsed < 5000, qPrintable(QString::number(elapsed)));
        QCOMPARE(m_errors.size(), 1);
    }
};

POSTVANE_TEST(tst_NetHelpers)
#include "tst_NetHelpers.moc"
