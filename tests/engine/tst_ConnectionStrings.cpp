#include "DatabasePeers.h"
#include "TestRegistry.h"
#include "actions/clsActionAZ.h"
#include "engine/databases/ConnectionString.h"
#include "engine/databases/DatabaseConnections.h"
#include "foundation/GlobalBlock.h"

#include <QSqlQuery>
#include <QTest>
#include <thread>

using namespace Qt::StringLiterals;

// Connection strings read and opened for every driver, against real SQLite
// files, a PostgreSQL cluster and a MariaDB server started here.
class tst_ConnectionStrings : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    DatabasePeers::PostgreSQL m_postgres;
    DatabasePeers::MariaDB m_maria;

    QString File(const QString &Name) const { return m_dir.filePath(Name); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        Global.DataPath = m_dir.path() + u'/';
        QVERIFY2(m_postgres.Start(), qPrintable(m_postgres.Problem));
        QVERIFY2(m_maria.Start(), qPrintable(m_maria.Problem));
    }

    void eachDriverIsRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("host");
        QTest::addColumn<int>("port");
        QTest::addColumn<QString>("database");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("password");
        QTest::newRow("sqlite") << u"Driver=SQLite3;Database=/x/a.db"_s << int(ConnectionString::SQLite) << QString() << 0
                                << u"/x/a.db"_s << QString() << QString();
        QTest::newRow("bare file in the data folder") << u"a.db3"_s << int(ConnectionString::SQLite) << QString() << 0
                                                      << u"DATA/a.db3"_s << QString() << QString();
        QTest::newRow("postgres, braces and blanks")
            << u" driver = PostgreSQL ; Server=db.example;Port=6543;Database=sales;Uid=ann;Pwd={a;b}}c} "_s
            << int(ConnectionString::PostgreSQL) << u"db.example"_s << 6543 << u"sales"_s << u"ann"_s << u"a;b}c"_s;
        QTest::newRow("mariadb, port in the server") << u"Driver={MariaDB};Server=h:3307;Database=d;User=u;Password=p"_s
                                                     << int(ConnectionString::MySQL) << u"h"_s << 3307 << u"d"_s << u"u"_s
                                                     << u"p"_s;
        QTest::newRow("odbc driver") << u"Driver={PostgreSQL Unicode};Server=h;Database=d"_s << int(ConnectionString::ODBC)
                                     << QString() << 0 << u"d"_s << QString() << QString();
        QTest::newRow("dsn") << u"DSN=Sales;Uid=u;Pwd=p"_s << int(ConnectionString::ODBC) << QString() << 0 << QString()
                             << u"u"_s << u"p"_s;
        QTest::newRow("provider") << u"Provider=SQLOLEDB;Data Source=tcp:sql1,1444;Initial Catalog=crm;User ID=sa;Password=x"_s
                                  << int(ConnectionString::ODBC) << u"sql1"_s << 1444 << u"crm"_s << u"sa"_s << u"x"_s;
        QTest::newRow("no driver") << u"Server=h;Database=d"_s << int(ConnectionString::Invalid) << QString() << 0
                                   << u"d"_s << QString() << QString();
        QTest::newRow("postgres without database") << u"Driver=PostgreSQL;Server=h"_s << int(ConnectionString::Invalid)
                                                   << u"h"_s << 0 << QString() << QString() << QString();
        QTest::newRow("bad port") << u"Driver=MySQL;Server=h;Port=x1;Database=d"_s << int(ConnectionString::Invalid)
                                  << u"h"_s << 0 << u"d"_s << QString() << QString();
        QTest::newRow("unknown provider") << u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.mdb"_s
                                          << int(ConnectionString::Invalid) << QString() << 0 << QString() << QString()
                                          << QString();
        QTest::newRow("empty") << u"  "_s << int(ConnectionString::Invalid) << QString() << 0 << QString() << QString()
                               << QString();
    }
    void eachDriverIsRead()
    {
        QFETCH(QString, text);
        QFETCH(int, kind);
        const ConnectionString parsed = ConnectionString::Parse(text);
        QCOMPARE(int(parsed.Kind), kind);
        QCOMPARE(parsed.Problem.isEmpty(), kind != ConnectionString::Invalid);
        if (kind == ConnectionString::Invalid)
            return;
        QTEST(parsed.Host, "host");
        QTEST(parsed.Port, "port");
        QFETCH(QString, database);
        QCOMPARE(parsed.Database, database.replace(u"DATA/"_s, Global.DataPath));
        QTEST(parsed.User, "user");
        QTEST(parsed.Password, "password");
    }

    void providersGoThroughFreeTDS()
    {
        const ConnectionString parsed
            = ConnectionString::Parse(u"Provider=SQLOLEDB.1;Data Source=(local);Initial Catalog=a;User ID=sa;Password={p;w}"_s);
        QCOMPARE(parsed.ODBCText, u"Driver=FreeTDS;Server=127.0.0.1;Port=1433;Database=a;Uid=sa;Pwd={p;w}"_s);
        clsActionAZ azure;
        azure.Server = u"pv1"_s;
        azure.Database = u"orders"_s;
        azure.Username = u"app"_s;
        azure.Password = u"pw9"_s;
        const ConnectionString cloud = ConnectionString::Parse(azure.ConnectionString());
        QCOMPARE(cloud.QtDriver(), u"QODBC"_s);
        QCOMPARE(cloud.ODBCText, u"Driver=FreeTDS;Server=pv1.database.windows.net;Port=1433;Database=orders;"
                                 "Uid=app@pv1;Pwd=pw9;Encryption=require"_s);
        const QString result = DatabaseConnections::Test(u"Provider=SQLOLEDB;Data Source=127.0.0.1,1;User ID=sa;Password=zz9x"_s);
        QVERIFY2(result.startsWith(u"Error: "_s), qPrintable(result));
        QVERIFY(!result.contains(u"zz9x"_s));
    }

    void passwordsAreMasked()
    {
        QCOMPARE(ConnectionString::Masked(u"Driver=MySQL;Database=d;PWD={x;y};Password=z"_s),
                 u"Driver=MySQL;Database=d;PWD=****;Password=****"_s);
        QCOMPARE(DatabaseConnections::Reason(u"login as u with secret42 failed"_s, u"Driver=x;Pwd=secret42"_s),
                 u"login as u with **** failed"_s);
    }

    void sqliteFilesAreOpenedAndKeptPerThread()
    {
        const QString text = u"Driver=SQLite3;Database="_s + File(u"pool.db"_s);
        QString error;
        QCOMPARE(DatabaseConnections::Test(text).left(7), u"Error: "_s); // a test never makes a database
        QVERIFY(!QFile::exists(File(u"pool.db"_s)));
        QSqlDatabase first = DatabaseConnections::Open(text, &error);
        QVERIFY2(first.isValid(), qPrintable(error));
        QVERIFY(QSqlQuery(first).exec(u"CREATE TABLE t (a INTEGER)"_s));
        QCOMPARE(DatabaseConnections::Open(text, &error).connectionName(), first.connectionName());
        QString other;
        std::thread([&] {
            QString e;
            other = DatabaseConnections::Open(text, &e).connectionName();
            DatabaseConnections::CloseAll();
        }).join();
        QVERIFY(!other.isEmpty());
        QVERIFY(other != first.connectionName());
        DatabaseConnections::Discard(text);
        QVERIFY(!first.isOpen());
        QSqlDatabase again = DatabaseConnections::Open(text, &error);
        QVERIFY(again.isOpen());
        QVERIFY(again.connectionName() != first.connectionName());
        QCOMPARE(DatabaseConnections::Test(text), u"OK"_s);
        QCOMPARE(DatabaseConnections::Test(File(u"pool.db"_s)), u"OK"_s);
        QFile notADatabase(File(u"text.db"_s));
        QVERIFY(notADatabase.open(QIODevice::WriteOnly));
        notADatabase.write(QByteArray(4096, 'x'));
        notADatabase.close();
        QVERIFY(DatabaseConnections::Test(File(u"text.db"_s)).startsWith(u"Error: "_s));
        DatabaseConnections::CloseAll();
    }

    void odbcReachesSQLiteAndPostgreSQL()
    {
        const QString file = File(u"odbc.db"_s);
        {
            QString error;
            QSqlDatabase db = DatabaseConnections::Open(u"Driver=SQLite3;Database="_s + file, &error);
            QVERIFY(QSqlQuery(db).exec(u"CREATE TABLE t (a TEXT)"_s));
            DatabaseConnections::CloseAll();
        }
        const QString sqlite = u"Driver=/usr/lib/x86_64-linux-gnu/odbc/libsqlite3odbc.so;Database="_s + file;
        QCOMPARE(ConnectionString::Parse(sqlite).QtDriver(), u"QODBC"_s);
        QCOMPARE(DatabaseConnections::Test(sqlite), u"OK"_s);
        const QString postgres = u"Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=%1;Database=pvtest;Uid=postgres;Pwd={%2}"_s
                                     .arg(m_postgres.Port)
                                     .arg(m_postgres.Password);
        QCOMPARE(DatabaseConnections::Test(postgres), u"OK"_s);
        QString error;
        QSqlDatabase db = DatabaseConnections::Open(postgres, &error);
        QSqlQuery query(db);
        QVERIFY(query.exec(u"SELECT current_database()"_s) && query.next());
        QCOMPARE(query.value(0).toString(), u"pvtest"_s);
        DatabaseConnections::CloseAll();
        QVERIFY(DatabaseConnections::Test(u"Driver={No Such Driver};Server=x;Database=y"_s).startsWith(u"Error: "_s));
        QVERIFY(DatabaseConnections::Test(u"DSN=NoSuchDSN"_s).startsWith(u"Error: "_s));
    }

    void serversAreOpenedAndRefusalsExplained_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("opens");
        QTest::newRow("postgres") << m_postgres.Connection() << true;
        QTest::newRow("mariadb") << m_maria.Connection() << true;
        QTest::newRow("postgres wrong password") << QString(m_postgres.Connection()).replace(m_postgres.Password, u"wrongpw1"_s) << false;
        QTest::newRow("mariadb wrong password") << QString(m_maria.Connection()).replace(m_maria.Password, u"wrongpw1"_s) << false;
        QTest::newRow("postgres missing database") << m_postgres.Connection(u"nosuchdb"_s) << false;
        QTest::newRow("mariadb nothing listening")
            << QString(m_maria.Connection()).replace(u"Port=%1"_s.arg(m_maria.Port), u"Port=%1"_s.arg(DatabasePeers::FreePort()))
            << false;
    }
    void serversAreOpenedAndRefusalsExplained()
    {
        QFETCH(QString, text);
        QFETCH(bool, opens);
        const QString result = DatabaseConnections::Test(text);
        if (opens) {
            QCOMPARE(result, u"OK"_s);
            return;
        }
        QVERIFY2(result.startsWith(u"Error: "_s) && result.size() > 20, qPrintable(result));
        QVERIFY2(!result.contains(u"wrongpw1"_s), qPrintable(result));
        QString error;
        QVERIFY(!DatabaseConnections::Open(text, &error).isValid());
        QVERIFY(!error.contains(u"wrongpw1"_s));
    }

    void aRestartedServerIsReopened()
    {
        QString error;
        const QString text = m_postgres.Connection();
        QVERIFY(DatabaseConnections::Open(text, &error).isValid());
        m_postgres.Stop();
        QVERIFY(!DatabaseConnections::StillAlive(text));
        QVERIFY(!DatabaseConnections::Open(text, &error).isValid());
        QVERIFY(!error.isEmpty());
        QVERIFY2(m_postgres.Resume(), qPrintable(m_postgres.Problem));
        QSqlDatabase db = DatabaseConnections::Open(text, &error);
        QVERIFY2(db.isValid(), qPrintable(error));
        QVERIFY(DatabaseConnections::StillAlive(text));
        DatabaseConnections::CloseAll();
    }

    void cleanupTestCase()
    {
        DatabaseConnections::CloseAll();
        m_postgres.Remove();
        m_maria.Remove();
    }
};

POSTVANE_TEST(tst_ConnectionStrings)
#include "tst_ConnectionStrings.moc"
