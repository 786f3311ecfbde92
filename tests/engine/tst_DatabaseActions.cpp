#include "ActionFixture.h"
#include "DatabasePeers.h"
#include "TestRegistry.h"
#include "actions/ActionItem.h"
#include "actions/clsActionCSV.h"
#include "actions/clsActionDB.h"
#include "actions/clsActionDBCustom.h"
#include "actions/clsActionText.h"
#include "actions/colActions.h"
#include "engine/actions/DataActions.h"
#include "engine/databases/DatabaseConnections.h"
#include "foundation/GlobalBlock.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"
#include "store/clsMessage.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTest>
#include <chrono>
#include <latch>
#include <thread>

using namespace Qt::StringLiterals;
using namespace ActionTests;

namespace {

QString DirectAction(const QString &Connection, int Dialect, bool Internal = false)
{
    clsActionDB action;
    action.ConnectionString = Connection;
    action.Dialect = qint16(Dialect);
    action.UseInternal = Internal;
    return action.XML();
}

// One error line closes the run, and no line before it says something went in.
bool Failed(const QStringList &Lines)
{
    return !Lines.isEmpty() && Lines.last().startsWith(u"* "_s) && !Lines.join(u'\n').contains(u"inserted"_s);
}

// The rows of the table, each column as text joined by "|", ordered by key.
QStringList Rows(const QString &Connection, const QString &Select)
{
    QString error;
    QSqlDatabase db = DatabaseConnections::Open(Connection, &error);
    QSqlQuery query(db);
    QStringList rows;
    if (!query.exec(Select))
        return {u"query failed: "_s + query.lastError().text()};
    while (query.next()) {
        QStringList values;
        for (int n = 0; n < query.record().count(); ++n)
            values << query.value(n).toString();
        rows << values.join(u'|');
    }
    return rows;
}

} // namespace

// The database actions writing into SQLite, PostgreSQL and MariaDB, through
// the trigger's generated statements with bound values, and the file actions.
class tst_DatabaseActions : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    DatabasePeers::PostgreSQL m_postgres;
    DatabasePeers::MariaDB m_maria;

    QString SQLiteConnection() const { return u"Driver=SQLite3;Database="_s + m_dir.filePath(u"target.db"_s); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        Global.DataPath = m_dir.path() + u'/';
        QVERIFY2(m_postgres.Start(), qPrintable(m_postgres.Problem));
        QVERIFY2(m_maria.Start(), qPrintable(m_maria.Problem));
        QVERIFY(m_postgres.Sql(u"CREATE TABLE Invoices (InvoiceNo varchar(20) PRIMARY KEY, Amount numeric(12,4), "
                               "Due date, Paid boolean, Qty integer, Note varchar(2000))"_s));
        QVERIFY(m_maria.Sql(u"CREATE TABLE pvtest.Invoices (InvoiceNo varchar(20) PRIMARY KEY, Amount decimal(12,4), "
                            "Due date, Paid boolean, Qty int, Note varchar(2000)) ENGINE=InnoDB"_s));
        QString error;
        QSqlDatabase db = DatabaseConnections::Open(SQLiteConnection(), &error);
        QVERIFY(QSqlQuery(db).exec(u"CREATE TABLE Invoices (InvoiceNo TEXT PRIMARY KEY, Amount NUMERIC, Due DATE, "
                                   "Paid BOOLEAN, Qty INTEGER, Note TEXT)"_s));
    }

    void keyedRowsAreInsertedThenUpdated_data()
    {
        QTest::addColumn<QString>("connection");
        QTest::addColumn<int>("dialect");
        QTest::addColumn<QString>("firstRow");
        QTest::addColumn<QString>("updatedRow");
        QTest::newRow("sqlite") << SQLiteConnection() << 0 << u"A-1|12.5|2024-03-01|1|3|it's; DROP TABLE Invoices; --"_s
                                << u"A-1|99.25|2024-04-30|0|7|second"_s;
        QTest::newRow("postgresql") << m_postgres.Connection() << 0 << u"A-1|12.5|2024-03-01|true|3|it's; DROP TABLE Invoices; --"_s
                                    << u"A-1|99.25|2024-04-30|false|7|second"_s;
        QTest::newRow("mariadb") << m_maria.Connection() << 2 << u"A-1|12.5|2024-03-01|1|3|it's; DROP TABLE Invoices; --"_s
                                 << u"A-1|99.25|2024-04-30|0|7|second"_s;
    }
    void keyedRowsAreInsertedThenUpdated()
    {
        QFETCH(QString, connection);
        QFETCH(int, dialect);
        QFETCH(QString, firstRow);
        QFETCH(QString, updatedRow);
        Fixture fixture(DirectAction(connection, dialect));
        const QString select = u"SELECT InvoiceNo, Amount, Due, Paid, Qty, Note FROM Invoices ORDER BY InvoiceNo"_s;
        QStringList lines = fixture.Run({u"A-1"_s, u"12.5"_s, u"2024-03-01"_s, u"yes"_s, u"3"_s,
                                         u"it's; DROP TABLE Invoices; --"_s});
        QCOMPARE(lines, QStringList{u"Update A Database: 1 row(s) inserted, 0 updated"_s});
        QCOMPARE(Rows(connection, select).join(u'\n'), firstRow);
        lines = fixture.Run({u"A-1"_s, u"99.25"_s, u"2024-04-30"_s, u"no"_s, u"7"_s, u"second"_s}, u"MSG-2"_s);
        QCOMPARE(lines, QStringList{u"Update A Database: 0 row(s) inserted, 1 updated"_s});
        QCOMPARE(Rows(connection, select).join(u'\n'), updatedRow);
        QVERIFY(!CurrentMessage().SQLConnection.contains(u"s3cret"_s));

        // Types as the database keeps them.
        QSqlDatabase db = DatabaseConnections::Open(connection, nullptr);
        QSqlQuery typed(db);
        QVERIFY(typed.exec(u"SELECT Amount, Due, Qty FROM Invoices"_s) && typed.next());
        QCOMPARE(typed.value(0).toDouble(), 99.25);
        QCOMPARE(typed.value(1).toDate(), QDate(2024, 4, 30));
        QCOMPARE(typed.value(2).toInt(), 7);
    }

    void badValuesWriteNothing_data()
    {
        QTest::addColumn<QString>("connection");
        QTest::addColumn<int>("dialect");
        QTest::newRow("sqlite") << SQLiteConnection() << 0;
        QTest::newRow("postgresql") << m_postgres.Connection() << 0;
        QTest::newRow("mariadb") << m_maria.Connection() << 2;
    }
    void badValuesWriteNothing()
    {
        QFETCH(QString, connection);
        QFETCH(int, dialect);
        Fixture fixture(DirectAction(connection, dialect));
        const QString count = u"SELECT COUNT(*) FROM Invoices WHERE InvoiceNo LIKE 'B%'"_s;
        QStringList lines = fixture.Run({u"B-1"_s, u"twelve"_s, u"2024-01-01"_s, u"1"_s, u"1"_s, u""_s});
        QVERIFY2(Failed(lines) && lines.last().contains(u"\"twelve\" of field Amount is not a number"_s), qPrintable(lines.join(u'\n')));
        lines = fixture.Run({u"B-2"_s, u"1"_s, u"the 32nd of Smarch"_s, u"1"_s, u"1"_s, u""_s});
        QVERIFY2(Failed(lines) && lines.last().contains(u"of field Due is not a date"_s), qPrintable(lines.join(u'\n')));
        QCOMPARE(Rows(connection, count), QStringList{u"0"_s});
        // Longer than its column: the database refuses, with its reason.
        const QString megabyte(1024 * 1024, u'x');
        lines = fixture.Run({u"B-3"_s, u"1"_s, u"2024-01-01"_s, u"1"_s, u"1"_s, megabyte});
        if (!connection.startsWith(u"Driver=SQLite3"_s)) {
            QVERIFY2(Failed(lines) && lines.last().contains(u"nothing was written"_s), qPrintable(lines.join(u'\n').left(300)));
            QVERIFY(lines.last().size() < 2000);
            QCOMPARE(Rows(connection, count), QStringList{u"0"_s});
        } else {
            QCOMPARE(Rows(connection, u"SELECT LENGTH(Note) FROM Invoices WHERE InvoiceNo = 'B-3'"_s),
                     QStringList{QString::number(megabyte.size())});
        }
    }

    void missingTablesAndBadConnectionsAreExplained()
    {
        Fixture wrongTable(DirectAction(m_postgres.Connection(), 0));
        wrongTable.Trigger->Field(1)->InsertInto = u"NoSuchTable"_s;
        QStringList lines = wrongTable.Run({u"C-1"_s, u"1"_s, u"2024-01-01"_s, u"1"_s, u"1"_s, u""_s});
        QVERIFY2(Failed(lines) && lines.last().contains(u"nosuchtable"_s, Qt::CaseInsensitive), qPrintable(lines.join(u'\n')));

        Fixture wrongColumn(DirectAction(m_maria.Connection(), 2));
        wrongColumn.Trigger->Field(2)->InsertFieldName = u"NoSuchColumn"_s;
        lines = wrongColumn.Run({u"C-2"_s, u"1"_s, u"2024-01-01"_s, u"1"_s, u"1"_s, u""_s});
        QVERIFY2(Failed(lines) && lines.last().contains(u"NoSuchColumn"_s), qPrintable(lines.join(u'\n')));

        for (const QString &connection : {u"Driver=PostgreSQL;Server=127.0.0.1"_s, u"Driver={Nothing};Database=x"_s,
                                          QString(m_postgres.Connection()).replace(m_postgres.Password, u"wrongpw1"_s)}) {
            Fixture bad(DirectAction(connection, 0));
            lines = bad.Run({u"C-3"_s, u"1"_s, u"2024-01-01"_s, u"1"_s, u"1"_s, u""_s});
            QVERIFY2(Failed(lines) && !lines.last().contains(u"wrongpw1"_s), qPrintable(lines.join(u'\n')));
        }
        QCOMPARE(Rows(m_postgres.Connection(), u"SELECT COUNT(*) FROM Invoices WHERE InvoiceNo LIKE 'C%'"_s), QStringList{u"0"_s});
    }

    void aServerStoppedInTheMiddleIsReopened()
    {
        Fixture fixture(DirectAction(m_postgres.Connection(), 0));
        QVERIFY(!Failed(fixture.Run({u"D-1"_s, u"1"_s, u"2024-01-01"_s, u"1"_s, u"1"_s, u""_s})));
        m_postgres.Stop();
        QVERIFY(Failed(fixture.Run({u"D-2"_s, u"1"_s, u"2024-01-01"_s, u"1"_s, u"1"_s, u""_s})));
        QVERIFY2(m_postgres.Resume(), qPrintable(m_postgres.Problem));
        const QStringList lines = fixture.Run({u"D-3"_s, u"1"_s, u"2024-01-01"_s, u"1"_s, u"1"_s, u""_s});
        QCOMPARE(lines.last(), u"Update A Database: 1 row(s) inserted, 0 updated"_s);
        QCOMPARE(Rows(m_postgres.Connection(), u"SELECT InvoiceNo FROM Invoices WHERE InvoiceNo LIKE 'D%' ORDER BY 1"_s),
                 (QStringList{u"D-1"_s, u"D-3"_s}));
    }

    void theInternalDatabaseIsMadeAndExtended()
    {
        Fixture fixture(DirectAction(QString(), 0, true));
        QVERIFY(!Failed(fixture.Run({u"E-1"_s, u"5"_s, u"2024-02-02"_s, u"0"_s, u"2"_s, u"first"_s}, u"M1"_s)));
        const QString internal = u"Driver=SQLite3;Database="_s + fixture.Trigger->InternalDatabaseFile();
        QVERIFY(fixture.Trigger->InternalDatabaseFile().startsWith(Global.DataPath));
        QCOMPARE(Rows(internal, u"SELECT pvane_msg_uid, InvoiceNo, Amount, Note FROM Invoices"_s),
                 QStringList{u"M1|E-1|5|first"_s});
        // A field added later becomes a column; the rows stay.
        auto field = std::make_unique<clsTriggerField>();
        field->Name = u"Customer"_s;
        field->InsertInto = u"invoices "_s;
        field->InsertFieldName = u"Customer"_s;
        fixture.Trigger->FieldsToProcess().Add(std::move(field));
        QStringList lines = fixture.Run({u"E-1"_s, u"6"_s, u"2024-02-03"_s, u"1"_s, u"2"_s, u"again"_s, u"Ann"_s}, u"M2"_s);
        QCOMPARE(lines, QStringList{u"Update A Database: 0 row(s) inserted, 1 updated"_s});
        QCOMPARE(Rows(internal, u"SELECT InvoiceNo, Amount, Note, Customer FROM Invoices"_s),
                 QStringList{u"E-1|6|again|Ann"_s});
        QVERIFY(fixture.Trigger->CreateTablesForTrigger(false));
        QVERIFY(fixture.Trigger->INTDBString(u"M1"_s).contains(u"Customer: Ann\r\n"_s));
        QVERIFY(!fixture.Trigger->INTDBString(u"M1"_s).contains(u"pvane_msg_uid:"_s));
        QCOMPARE(fixture.Trigger->INTDBString(u"M9"_s), QString());
        QVERIFY(fixture.Trigger->CreateTablesForTrigger(true));
        QCOMPARE(Rows(internal, u"SELECT COUNT(*) FROM Invoices"_s), QStringList{u"0"_s});
    }

    // Another processor thread writing to the internal database at the same
    // moment: the action waits for it instead of losing the message's row.
    void aBusyInternalDatabaseIsWaitedFor()
    {
        Fixture fixture(DirectAction(QString(), 0, true));
        fixture.Trigger->TriggerID = u"Busy"_s;
        QVERIFY(!Failed(fixture.Run({u"B-1"_s, u"1"_s}, u"M1"_s)));
        const QString file = fixture.Trigger->InternalDatabaseFile();
        std::latch writing(2);
        QString other;
        std::thread writer([&] {
            {
                QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"writer"_s);
                db.setDatabaseName(file);
                QSqlQuery query(db);
                if (!db.open() || !query.exec(u"BEGIN IMMEDIATE"_s)
                    || !query.exec(u"INSERT INTO Invoices (pvane_msg_uid, InvoiceNo) VALUES ('M2', 'B-2')"_s))
                    other = query.lastError().text();
                writing.arrive_and_wait();
                std::this_thread::sleep_for(std::chrono::milliseconds(500));
                if (!query.exec(u"COMMIT"_s))
                    other = query.lastError().text();
            }
            QSqlDatabase::removeDatabase(u"writer"_s);
        });
        writing.arrive_and_wait();
        const QStringList lines = fixture.Run({u"B-3"_s, u"3"_s}, u"M3"_s);
        writer.join();
        QVERIFY2(other.isEmpty(), qPrintable(other));
        QCOMPARE(lines, QStringList{u"Update A Database: 1 row(s) inserted, 0 updated"_s});
        QCOMPARE(Rows(u"Driver=SQLite3;Database="_s + file, u"SELECT InvoiceNo FROM Invoices ORDER BY InvoiceNo"_s),
                 (QStringList{u"B-1"_s, u"B-2"_s, u"B-3"_s}));
    }

    void customStatementsTakeFieldsAndTokensAsParameters()
    {
        QVERIFY(m_postgres.Sql(u"CREATE TABLE Notes (Subject text, Who text, N integer)"_s));
        clsActionDBCustom action;
        action.ConnectionString = m_postgres.Connection();
        action.SQLStatement = u"-- the note\r\nINSERT INTO Notes (Subject, Who, N) VALUES (@msg_subject, '@not_a_parameter', @Qty);"_s;
        action.Timeout = 5;
        Fixture fixture(action.XML());
        CurrentMessage().Subject.clear();
        ReplaceCurrentMessage(std::make_unique<clsMessage>());
        QStringList lines = fixture.Run({u"F-1"_s, u"1"_s, u""_s, u""_s, u"42"_s, u""_s});
        QCOMPARE(lines, QStringList{u"Update A Database Using Custom SQL: 1 row(s) inserted, 0 updated"_s});
        QCOMPARE(Rows(m_postgres.Connection(), u"SELECT Who, N FROM Notes"_s), QStringList{u"@not_a_parameter|42"_s});

        action.SQLStatement = u"INSERT INTO Notes (Subject) VALUES (@nothing_named_so)"_s;
        Fixture unknown(action.XML());
        lines = unknown.Run({});
        QVERIFY2(Failed(lines) && lines.last().contains(u"nothing_named_so"_s), qPrintable(lines.join(u'\n')));
    }

    void csvRowsAreAppendedUnderOneHeader()
    {
        clsActionCSV action;
        action.FileName = m_dir.filePath(u"out/invoices.csv"_s);
        action.LineTerminator = u"LF"_s;
        action.FileFormat = 2;
        Fixture fixture(action.XML());
        QCOMPARE(fixture.Run({u"G-1"_s, u"1"_s, u""_s, u""_s, u""_s, u"say \"hi\", then"_s}).size(), 1);
        fixture.Run({u"G-2"_s, u"2"_s, u""_s, u""_s, u""_s, u"élan"_s});
        QFile file(action.FileName);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(file.readAll()),
                 u"InvoiceNo,Amount,Due,Paid,Qty,Note\nG-1,1,,,,\"say \"\"hi\"\", then\"\nG-2,2,,,,élan\n"_s);
    }

    void textFilesAreWrittenBackedUpAndRead()
    {
        clsActionText write;
        write.FileName = m_dir.filePath(u"note.txt"_s);
        write.Text = u"Invoice %InvoiceNo%\nAmount %Amount%"_s;
        write.Append = true;
        write.Backup = true;
        write.Format = 2;
        write.AssignTo = u"%Note%"_s;
        Fixture fixture(write.XML());
        fixture.Run({u"H-1"_s, u"3"_s});
        const QStringList lines = fixture.Run({u"H-2"_s, u"4"_s});
        QCOMPARE(lines.size(), 2);
        QCOMPARE(CurrentMessage().ExtractedFields().Item(6)->Value,
                 u"Invoice H-1\r\nAmount 3\r\nInvoice H-2\r\nAmount 4"_s);
        QFile backup(write.FileName + u".bak"_s);
        QVERIFY(backup.open(QIODevice::ReadOnly));
        QCOMPARE(backup.readAll(), QByteArray("Invoice H-1\r\nAmount 3"));
        write.FileName = m_dir.filePath(u"no/such/dir/../../missing.txt"_s);
        write.Text.clear();
        Fixture reading(write.XML());
        QVERIFY(Failed(reading.Run({})));
    }

    void cleanupTestCase()
    {
        DatabaseConnections::CloseAll();
        m_postgres.Remove();
        m_maria.Remove();
    }
};

POSTVANE_TEST(tst_DatabaseActions)
#include "tst_DatabaseActions.moc"
