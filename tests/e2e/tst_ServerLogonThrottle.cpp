#include "ServerFixture.h"
#include "TestRegistry.h"

#include <QFile>
#include <QTest>

// Guessing passwords from one address shuts that address out for a while;
// everyone else goes on logging on.
class tst_ServerLogonThrottle : public QObject
{
    Q_OBJECT
    ServerFixture server;

    QByteArray StatusFrom(const QString &Client, const QString &User, const QString &Password)
    {
        const QByteArray request = "GET /getsession.xml?" + ServerFixture::AuthQuery(User, Password).toUtf8()
            + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n";
        return server.RawExchange(request, 10000, Client).left(12);
    }
    QString ServerLog() const
    {
        QFile log(server.DataPath() + QStringLiteral("PostvaneServerLog.LOG"));
        return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
    }

private slots:
    void initTestCase() { QVERIFY2(server.Start(), qPrintable(server.Problem)); }

    void sixFailuresShutTheAddressOutAndNoOtherOne()
    {
        QCOMPARE(server.Get(QStringLiteral("getsession.xml")).Status, 200);
        for (int attempt = 0; attempt < 6; ++attempt) {
            const QString user = attempt % 2 ? QStringLiteral("Admin") : QStringLiteral("nobody");
            QCOMPARE(server.Get(QStringLiteral("getsession.xml"), user, QStringLiteral("guess%1").arg(attempt)).Status, 401);
        }
        QCOMPARE(server.Get(QStringLiteral("getsession.xml")).Status, 401);
        QCOMPARE(StatusFrom(QStringLiteral("127.0.0.1"), QStringLiteral("Admin"), QString()), QByteArray("HTTP/1.1 401"));
        QCOMPARE(StatusFrom(QStringLiteral("127.0.0.2"), QStringLiteral("Admin"), QString()), QByteArray("HTTP/1.1 200"));
        QCOMPARE(ServerLog().count(QStringLiteral("Log-ons from 127.0.0.1 are refused for 30 seconds")), 1);
    }

    void cleanupTestCase() { server.Stop(); }
};

POSTVANE_TEST(tst_ServerLogonThrottle)
#include "tst_ServerLogonThrottle.moc"
