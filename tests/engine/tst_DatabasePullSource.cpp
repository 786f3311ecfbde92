#include "DatabasePeers.h"
#include "RecordingSink.h"
#include "TestRegistry.h"

#include "engine/databases/DatabaseConnections.h"
#include "engine/sources/DatabasePullReader.h"
#include "engine/sources/SourceMime.h"
#include "foundation/GlobalBlock.h"

#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

// Records pulled from SQLite and from a real PostgreSQL: one message per
// record, and the record deleted or marked only once its message is queued.
class tst_DatabasePullSource : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    DatabasePeers::PostgreSQL m_postgres;

    static QString Body(const SourceMessage &Message)
    {
        return QString::fromUtf8(Message.Mime.mid(Message.Mime.indexOf("\r\n\r\n") + 4));
    }

    // A connection of the test's own to the SQLite file.
    static QSqlDatabase Direct(const QString &Path)
    {
        QSqlDatabase db = QSqlDatabase::contains(u"direct"_s) ? QSqlDatabase::database(u"direct"_s)
                                                               : QSqlDatabase::addDatabase(u"QSQLITE"_s, u"direct"_s);
        db.setDatabaseName(Path);
        db.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=100"_s);
        db.open();
        return db;
    }

    static QStringList Column(QSqlDatabase Db, const QString &Select)
    {
        QStringList values;
        QSqlQuery query(Db);
        query.exec(Select);
        while (query.next())
            values << query.value(0).toString();
        return values;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        Global.DataPath = m_dir.path() + u'/';
        QVERIFY2(m_postgres.Start(), qPrintable(m_postgres.Problem));
    }

    void cleanup() { DatabaseConnections::CloseAll(); }

    void sqliteRecordsWithAllColumnsAreMarkedOnceQueued()
    {
        const QString path = m_dir.filePath(u"orders.db"_s);
        QSqlDatabase db = Direct(path);
        QSqlQuery(db).exec(u"CREATE TABLE Orders (ID INTEGER PRIMARY KEY, Customer TEXT, Amount REAL, Done TEXT)"_s);
        QSqlQuery(db).exec(u"INSERT INTO Orders (ID, Customer, Amount) VALUES (1, 'Ann', 12.5), (2, 'Bob', NULL), (3, 'Cy', 3)"_s);

        SourceAccount account;
        account.AccountID = u"DB1"_s;
        account.Name = u"Orders"_s;
        account.DBConnection = u"Driver=SQLite3;Database="_s + path;
        account.DBSQL = u"SELECT ID, Customer, Amount FROM Orders WHERE Done IS NULL ORDER BY ID"_s;
        account.DBUIDField = u"id"_s;
        account.DBMSGBody = true;
        account.DBUpdateField = u"Done"_s;
        account.DBUpdateValue = u"Y"_s;
        account.TimeoutSeconds = 1;
        RecordingSink sink;
        SourceReadResult result = DatabasePullReader().Read(account, sink);
        QVERIFY2(!result.Failed, qPrintable(result.Failure));
        QCOMPARE(result.NewMessages, 3);
        QCOMPARE(Body(sink.Queued.at(0)), u"ID: 1\r\nCustomer: Ann\r\nAmount: 12.5\r\n"_s);
        QCOMPARE(Body(sink.Queued.at(1)), u"ID: 2\r\nCustomer: Bob\r\nAmount: \r\n"_s);
        QCOMPARE(sink.Queued.at(2).UID, u"3"_s);
        QVERIFY(sink.Queued.at(2).Mime.contains("Postvane-Source: DB\r\n"));
        QCOMPARE(Column(db, u"SELECT Done FROM Orders ORDER BY ID"_s), QStringList({u"Y"_s, u"Y"_s, u"Y"_s}));

        // Queued, then the source cannot be written: the next read marks the
        // record without queueing it again.
        QSqlQuery(db).exec(u"INSERT INTO Orders (ID, Customer) VALUES (4, 'Dee')"_s);
        sink.OnQueue = [&](const QList<SourceMessage> &) { QSqlQuery(db).exec(u"BEGIN EXCLUSIVE"_s); };
        result = DatabasePullReader().Read(account, sink);
        QCOMPARE(result.NewMessages, 1);
        QVERIFY(result.Failed);
        QVERIFY2(result.Failure.contains(u"the processed records cannot be changed"_s), qPrintable(result.Failure));
        QSqlQuery(db).exec(u"ROLLBACK"_s);
        sink.OnQueue = nullptr;
        QCOMPARE(Column(db, u"SELECT COUNT(*) FROM Orders WHERE Done IS NULL"_s), QStringList({u"1"_s}));
        result = DatabasePullReader().Read(account, sink);
        QVERIFY2(!result.Failed, qPrintable(result.Failure));
        QCOMPARE(result.NewMessages, 0);
        QCOMPARE(Column(db, u"SELECT COUNT(*) FROM Orders WHERE Done IS NULL"_s), QStringList({u"0"_s}));
        QCOMPARE(sink.Queued.size(), 4);
        QCOMPARE(sink.Duplicates, 0);
        db.close();
    }

    void postgresRecordsWithATextFieldAreDeletedOnceQueued()
    {
        QVERIFY(m_postgres.Sql(u"CREATE TABLE inbound (uid varchar(20) PRIMARY KEY, mime text, note text)"_s));
        QVERIFY(m_postgres.Sql(u"INSERT INTO inbound VALUES ('m-1', E'From: a@example.com\\r\\nSubject: Stored whole\\r\\n\\r\\nBody one\\r\\n', 'x'),"
                               " ('m-2', 'Just words: no head', 'y')"_s));
        SourceAccount account;
        account.AccountID = u"DB2"_s;
        account.Name = u"Inbound"_s;
        account.DBConnection = m_postgres.Connection();
        account.DBSQL = u"SELECT uid, mime FROM inbound ORDER BY uid"_s;
        account.DBUIDField = u"UID"_s;
        account.DBMSGField = u"mime"_s;
        account.DBDelete = true;

        RecordingSink sink;
        sink.Refuse = true;
        QVERIFY(DatabasePullReader().Read(account, sink).Failed);
        sink.Refuse = false;
        const SourceReadResult result = DatabasePullReader().Read(account, sink);
        QVERIFY2(!result.Failed, qPrintable(result.Failure));
        QCOMPARE(result.NewMessages, 2);
        QVERIFY(sink.Queued.at(0).Mime.contains("\r\nFrom: a@example.com\r\nSubject: Stored whole\r\n\r\nBody one\r\n"));
        QCOMPARE(SourceMime::HeaderValue(sink.Queued.at(1).Mime, "Subject"), QByteArray("Inbound record m-2"));
        QCOMPARE(Body(sink.Queued.at(1)), u"Just words: no head\r\n"_s);
        QString problem;
        QSqlQuery left(DatabaseConnections::Open(m_postgres.Connection(), &problem));
        QVERIFY(left.exec(u"SELECT COUNT(*) FROM inbound"_s) && left.next());
        QCOMPARE(left.value(0).toInt(), 0);
    }

    void badSettingsFailClearlyWithoutThePassword()
    {
        SourceAccount account;
        account.AccountID = u"DB3"_s;
        account.DBConnection = m_postgres.Connection();
        account.DBSQL = u"SELECT 1 AS one"_s;
        account.DBUIDField = u"Nothing"_s;
        account.DBMSGBody = true;
        RecordingSink sink;
        SourceReadResult result = DatabasePullReader().Read(account, sink);
        QVERIFY(result.Failed);
        QCOMPARE(result.Failure, u"the query has no column \"Nothing\" for the unique ID"_s);

        account.DBSQL = u"SELECT * FROM no_such_table"_s;
        result = DatabasePullReader().Read(account, sink);
        QVERIFY2(result.Failed && result.Failure.contains(u"no_such_table"_s), qPrintable(result.Failure));

        account.DBConnection = QString(m_postgres.Connection()).replace(m_postgres.Password, u"wrongpw1"_s);
        result = DatabasePullReader().Read(account, sink);
        QVERIFY2(result.Failed && result.Failure.startsWith(u"the database cannot be opened: "_s), qPrintable(result.Failure));
        QVERIFY(!result.Failure.contains(u"wrongpw1"_s));
        QVERIFY(sink.Queued.isEmpty());
    }
};

POSTVANE_TEST(tst_DatabasePullSource)
#include "tst_DatabasePullSource.moc"
