#include "DatabasePeers.h"
#include "TestRegistry.h"
#include "e2e/ServerFixture.h"

#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;

// "testdbconnection.htm" of a real server, for each driver, good and bad,
// never with the password in its reply.
class tst_TestDBConnection : public QObject
{
    Q_OBJECT

    ServerFixture m_server;
    DatabasePeers::PostgreSQL m_postgres;
    DatabasePeers::MariaDB m_maria;

    QString Result(const QString &Text)
    {
        const HttpReply reply = m_server.Get(u"testdbconnection.htm?text="_s
                                             + QString::fromLatin1(QUrl::toPercentEncoding(Text)));
        return reply.Status == 200 ? reply.Text().trimmed() : u"status %1"_s.arg(reply.Status);
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(m_server.Start(), qPrintable(m_server.Problem));
        QVERIFY2(m_postgres.Start(), qPrintable(m_postgres.Problem));
        QVERIFY2(m_maria.Start(), qPrintable(m_maria.Problem));
    }

    void eachDriverIsOpenedByTheServer_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("opens");
        const QString sqlite = m_server.DataPath() + u"MessageStore.db3"_s;
        QTest::newRow("sqlite") << u"Driver=SQLite3;Database="_s + sqlite << true;
        QTest::newRow("sqlite missing") << u"Driver=SQLite3;Database=/nonexistent/x.db"_s << false;
        QTest::newRow("postgresql") << m_postgres.Connection() << true;
        QTest::newRow("postgresql wrong password")
            << QString(m_postgres.Connection()).replace(m_postgres.Password, u"wrongpw1"_s) << false;
        QTest::newRow("mariadb") << m_maria.Connection() << true;
        QTest::newRow("mariadb wrong password")
            << QString(m_maria.Connection()).replace(m_maria.Password, u"wrongpw1"_s) << false;
        QTest::newRow("odbc sqlite") << u"Driver=/usr/lib/x86_64-linux-gnu/odbc/libsqlite3odbc.so;Database="_s + sqlite << true;
        QTest::newRow("odbc postgresql")
            << u"Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=%1;Database=pvtest;Uid=postgres;Pwd={%2}"_s
                   .arg(m_postgres.Port)
                   .arg(m_postgres.Password)
            << true;
        QTest::newRow("unknown odbc driver") << u"Driver={Nothing Here};Server=x;Database=y;Pwd=wrongpw1"_s << false;
        QTest::newRow("sql server provider, none running")
            << u"Provider=SQLOLEDB;Data Source=127.0.0.1,%1;Initial Catalog=x;User ID=sa;Password=wrongpw1"_s.arg(
                   DatabasePeers::FreePort())
            << false;
        QTest::newRow("no driver") << u"Server=x;Database=y"_s << false;
    }
    void eachDriverIsOpenedByTheServer()
    {
        QFETCH(QString, text);
        QFETCH(bool, opens);
        const QString reply = Result(text);
        if (opens) {
            QCOMPARE(reply, u"<result>OK</result>"_s);
            return;
        }
        QVERIFY2(reply.startsWith(u"<result>Error: "_s), qPrintable(reply));
        QVERIFY2(!reply.contains(u"wrongpw1"_s), qPrintable(reply));
    }

    void cleanupTestCase()
    {
        m_server.Stop();
        m_postgres.Remove();
        m_maria.Remove();
    }
};

POSTVANE_TEST(tst_TestDBConnection)
#include "tst_TestDBConnection.moc"
