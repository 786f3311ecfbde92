#include "ErrorCapture.h"
#include "StoreFixture.h"
#include "TestRegistry.h"
#include "foundation/Registry.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/StoreFiles.h"
#include "store/clsMessage.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSqlRecord>
#include <QStandardPaths>
#include <QTest>
#include <QThread>
#include <tuple>

using namespace Qt::StringLiterals;

namespace {

bool Exec(const QString &connection, const QString &sql)
{
    QSqlQuery query(QSqlDatabase::database(connection, false));
    return query.exec(sql);
}

// A sqlite3 command line process on the database, fed the whole script.
void StartSQLite(QProcess &process, const QString &database, const QString &script)
{
    const QString program = QStandardPaths::findExecutable(u"sqlite3"_s);
    QVERIFY2(!program.isEmpty(), "the build needs the sqlite3 program, and so does this test");
    process.start(program, {database});
    QVERIFY(process.waitForStarted());
    process.write(script.toUtf8());
    process.closeWriteChannel();
}

} // namespace

class tst_clsMessageStore : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;

private slots:
    void init()
    {
        m_errors.clear();
        ResetGlobalCollections();
    }
    void cleanup() { ResetGlobalCollections(); }

    void blankDatabasesKeepWalJournaling()
    {
        for (const QString &name :
             {u"MessageStore.db3"_s, u"EdgeQueue.db3"_s, u"MetaLog.db3"_s, u"MetaMailServer.db3"_s}) {
            QVERIFY2(OpenSQLite(name, FindBlankDatabase(name), true), qPrintable(name));
            QCOMPARE(StoreFixture::ValueOn(name, u"PRAGMA journal_mode"_s).toString(), u"wal"_s);
            CloseConnection(name);
        }
        QVERIFY(QFileInfo::exists(QCoreApplication::applicationDirPath() + u"/PostvaneSQLServer.sql"_s));
    }

    void statementTextFollowsTheDialect()
    {
        StoreFixture f;
        Global.DBType = u"sqlite"_s; // an unknown word means SQL Server
        SettleDatabaseKind();
        clsMessageStore &store = f.Store;
        store.Dialect = clsMessageStore().Dialect;
        QCOMPARE(store.Dialect, 0);
        const QDate day(2024, 3, 5);
        QCOMPARE(store.DateLiteral(day), u"{ d '2024-03-05'}"_s);
        QCOMPARE(store.DateLiteral(day, u"23:59:59"_s), u"{ ts '2024-03-05 23:59:59'}"_s);
        QCOMPARE(store.DateTimeLiteral(QDateTime(day, QTime(7, 8, 9))), u"{ ts '2024-03-05 07:08:09'}"_s);
        QCOMPARE(store.SelectFirst(u"MessageDate"_s, u"EdgeQueue ORDER BY MessageDate"_s),
                 u"SELECT TOP 1 MessageDate FROM EdgeQueue ORDER BY MessageDate"_s);
        const QString awkward = u"O'Neil\r\n\tsays 'hi'"_s;
        QCOMPARE(store.Quote(awkward), u"'O''Neil' + CHAR(13) + '' + CHAR(10) + '' + CHAR(9) + 'says ''hi'''"_s);

        store.Dialect = 99;
        QCOMPARE(store.DateLiteral(day), u"'2024-03-05 00:00:00'"_s);
        QCOMPARE(store.DateLiteral(day, u"23:59:59"_s), u"'2024-03-05 23:59:59'"_s);
        QCOMPARE(store.DateTimeLiteral(QDateTime(day, QTime(7, 8, 9))), u"'2024-03-05 07:08:09'"_s);
        QCOMPARE(store.SelectFirst(u"MessageDate"_s, u"EdgeQueue ORDER BY MessageDate"_s),
                 u"SELECT MessageDate FROM EdgeQueue ORDER BY MessageDate LIMIT 1"_s);
        QVERIFY(store.OpenMessageStore());
        QCOMPARE(f.Value(u"SELECT "_s + store.Quote(awkward)).toString(), awkward);
    }

    void openingCopiesTheBlanksAndKeepsTheReaderReadOnly()
    {
        StoreFixture f;
        clsMessageStore second;
        QVERIFY(f.Store.OpenMessageStore());
        QVERIFY(QFileInfo::exists(f.Path(u"MessageStore.db3"_s)) && QFileInfo::exists(f.Path(u"EdgeQueue.db3"_s)));
        QVERIFY(second.OpenMessageStore());
        QVERIFY(f.Store.StoreConnection() != second.StoreConnection());

        QCOMPARE(f.Store.Execute(u"INSERT INTO MessageStore (AccountID) VALUES ('A1')"_s), 1);
        QCOMPARE(StoreFixture::ValueOn(second.ReaderConnection(), u"SELECT COUNT(*) FROM MessageStore"_s).toInt(), 1);
        QVERIFY(!Exec(second.ReaderConnection(), u"INSERT INTO MessageStore (AccountID) VALUES ('A2')"_s));
        QCOMPARE(f.Store.ExecuteEQ(u"INSERT INTO EdgeQueue (AccountID) VALUES ('A1')"_s), 1);
        QCOMPARE(StoreFixture::ValueOn(second.QueueConnection(), u"SELECT COUNT(*) FROM EdgeQueue"_s).toInt(), 1);

        second.CloseMessageStore();
        QVERIFY(!QSqlDatabase::contains(second.StoreConnection())
                && !QSqlDatabase::contains(second.ReaderConnection()));
        QCOMPARE(f.Count(u"MessageStore"_s), 1);
        QVERIFY(m_errors.isEmpty());
    }

    void sixFailedOpensLogSixLines_data()
    {
        QTest::addColumn<bool>("damaged");
        QTest::newRow("damaged store file") << true;
        QTest::newRow("no data folder for the blanks") << false;
    }
    void sixFailedOpensLogSixLines()
    {
        QFETCH(bool, damaged);
        StoreFixture f;
        QFile file(f.Path(u"MessageStore.db3"_s));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QByteArray(8192, 'x')) == 8192);
        file.close();
        if (!damaged)
            Global.DataPath = f.Path(u"missing/"_s);
        Global.StopWait = true; // the pauses between attempts are not what is tested
        QVERIFY(!f.Store.OpenMessageStore());
        QVERIFY(!f.Store.LastError.isEmpty());
        QCOMPARE(m_errors.size(), 6);
        for (int attempt = 1; attempt <= 6; ++attempt)
            QVERIFY2(m_errors.at(attempt - 1).contains(u"Could not open message store will retry %1"_s.arg(attempt)),
                     qPrintable(m_errors.at(attempt - 1)));
        QVERIFY(!QSqlDatabase::contains(f.Store.StoreConnection())
                && !QSqlDatabase::contains(f.Store.QueueConnection()));
    }

    void schemaUpgradeAddsTheColumnsOnce()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        const QString writer = f.Store.StoreConnection();
        const auto hasIndex = [&] { return f.Count(u"sqlite_master"_s, u"name='MessageStore_key6'"_s) == 1; };
        const auto hasColumns = [&] {
            const QSqlRecord record = QSqlDatabase::database(writer, false).record(u"MessageStore"_s);
            return record.contains(u"Guid"_s) && record.contains(u"MessageSize"_s)
                && record.contains(u"MessageDigest"_s) && record.contains(u"AttachmentNames"_s);
        };
        QVERIFY(Exec(writer, u"DROP INDEX MessageStore_key6"_s));
        QVERIFY(f.Store.UpdateDatabaseSchema()); // at 1090 nothing runs
        QVERIFY(!hasIndex());

        // The columns are there: the first statement fails as a duplicate,
        // no later one runs, the version is recorded.
        SaveMachineSetting(u"Settings"_s, u"DBVersion"_s, 1089);
        Global.DBVersion = 1089;
        QVERIFY(f.Store.UpdateDatabaseSchema());
        QVERIFY(!hasIndex());
        QCOMPARE(Global.DBVersion, 1090);
        QCOMPARE(GetMachineSetting(u"Settings"_s, u"DBVersion"_s), u"1090"_s);

        for (const QString &column : {u"Guid"_s, u"MessageSize"_s, u"MessageDigest"_s, u"AttachmentNames"_s})
            QVERIFY(Exec(writer, u"ALTER TABLE MessageStore DROP COLUMN "_s + column));
        Global.DBVersion = 1089;
        QVERIFY(f.Store.UpdateDatabaseSchema());
        QVERIFY(hasColumns() && hasIndex());
        QVERIFY(m_errors.isEmpty());

        QVERIFY(Exec(writer, u"DROP TABLE MessageStore"_s));
        Global.DBVersion = 1089;
        QVERIFY(!f.Store.UpdateDatabaseSchema());
        QCOMPARE(Global.DBVersion, 1089);
        QCOMPARE(m_errors.size(), 1);
        QVERIFY(m_errors.first().contains(u"no such table"_s)
                && m_errors.first().endsWith(u"FROM UpdateDatabaseSchema"_s));
    }

    void statementsCountRowsAndTransactionsCommitWhole()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        QVERIFY(f.Store.BeginTransaction());
        for (int i = 0; i < 3; ++i)
            QCOMPARE(f.Store.Execute(u"INSERT INTO MessageStore (AccountID) VALUES ('A1')"_s), 1);
        QCOMPARE(StoreFixture::ValueOn(f.Store.ReaderConnection(), u"SELECT COUNT(*) FROM MessageStore"_s).toInt(), 0);
        QVERIFY(f.Store.EndTransaction());
        QCOMPARE(StoreFixture::ValueOn(f.Store.ReaderConnection(), u"SELECT COUNT(*) FROM MessageStore"_s).toInt(), 3);
        QCOMPARE(f.Store.Execute(u"UPDATE MessageStore SET MessageFlags=2"_s), 3);
        QVERIFY(m_errors.isEmpty());

        QCOMPARE(f.Store.Execute(u"UPDATE NoSuchTable SET X=1"_s), -1);
        QCOMPARE(f.Store.ExecuteEQ(u"DELETE FROM MessageStore"_s), -1); // the queue is a file of its own
        QCOMPARE(m_errors.size(), 2);
        QVERIFY(m_errors.at(0).endsWith(u"FROM Execute"_s) && m_errors.at(1).endsWith(u"FROM ExecuteEQ"_s));
    }

    void rowSetAddsReadsAndEditsRows()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        const QDateTime dated(QDate(2024, 2, 29), QTime(23, 5, 1));
        clsRowSet row(f.Store.StoreConnection());
        QVERIFY(row.Open(u"MessageStore"_s, u"1=0"_s));
        QVERIFY(row.AtEnd());
        row.AddNew();
        QVERIFY(row.setField(u"Subject"_s, u"first"_s) && row.setField(u"MessageDate"_s, dated));
        QVERIFY(!row.setField(u"NoSuchColumn"_s, 1));
        QVERIFY(row.Update());
        const qint64 recordNo = row.Field(u"RecordNo"_s).toLongLong();
        QVERIFY(recordNo > 0);
        QVERIFY(row.setField(u"Subject"_s, u"edited"_s) && row.Update()); // the new row is the current one

        clsRowSet read(f.Store.StoreConnection());
        QVERIFY(read.Open(u"MessageStore"_s, u"RecordNo=%1"_s.arg(recordNo)));
        QCOMPARE(read.Field(u"Subject"_s).toString(), u"edited"_s);
        QVERIFY(read.Field(u"Body"_s).isNull());
        QVERIFY(read.setField(u"FolderID"_s, u"F1"_s) && read.Update());
        read.MoveNext();
        QVERIFY(read.AtEnd());
        // Dates are stored in the form of the date literals, so they compare.
        QCOMPARE(f.Count(u"MessageStore"_s, u"FolderID='F1' AND MessageDate="_s + f.Store.DateTimeLiteral(dated)), 1);

        // A table keyed by several columns is edited by all of them.
        for (const QString &token : {u"a.com"_s, u"b.com"_s})
            QVERIFY(f.Add(u"DaySummaryToken"_s,
                          {{u"AccountID"_s, u"A1"_s},
                           {u"TokenType"_s, 1},
                           {u"Token"_s, token},
                           {u"Dated"_s, QDate(2024, 1, 1)},
                           {u"Count"_s, 1}})
                    == 0);
        clsRowSet token(f.Store.StoreConnection());
        QVERIFY(token.Open(u"DaySummaryToken"_s, u"Token='b.com'"_s));
        QVERIFY(token.setField(u"Count"_s, 5) && token.Update());
        QCOMPARE(f.Value(u"SELECT group_concat(Count) FROM DaySummaryToken"_s).toString(), u"1,5"_s);

        QVERIFY(!read.Open(u"MessageStore"_s, u"NoSuchColumn=1"_s));
        QVERIFY(!read.LastError.isEmpty());
    }

    void resetEdgeQueueShrinksTheQueueOnceNothingIsLeft()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        const QString queue = f.Path(u"EdgeQueue.db3"_s);
        const auto size = [&] { return QFileInfo(queue).size() + QFileInfo(queue + u"-wal"_s).size(); };
        QCOMPARE(f.Store.ExecuteEQ(u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<100) "
                                   "INSERT INTO EdgeQueue (Mime, Processed) SELECT hex(randomblob(10000)), 1 FROM n"_s),
                 100);
        QCOMPARE(f.Store.ExecuteEQ(u"INSERT INTO EdgeQueue (Processed) VALUES (2)"_s), 1);
        QVERIFY(f.Store.ResetEdgeQueue()); // a row still waits: the file stays
        QCOMPARE(StoreFixture::ValueOn(f.Store.QueueConnection(), u"SELECT COUNT(*) FROM EdgeQueue"_s).toInt(), 1);
        QVERIFY(size() > 1000000);

        QCOMPARE(f.Store.ExecuteEQ(u"UPDATE EdgeQueue SET Processed=1"_s), 1);
        QVERIFY(f.Store.ResetEdgeQueue());
        QVERIFY2(size() <= 2 * QFileInfo(FindBlankDatabase(u"EdgeQueue.db3"_s)).size(),
                 qPrintable(QString::number(size())));
        QCOMPARE(f.Store.ExecuteEQ(u"INSERT INTO EdgeQueue (Processed) VALUES (0)"_s), 1);
        QVERIFY(m_errors.isEmpty());
    }

    void deleteOperationsRemoveTheirRowsOnly()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        auto other = std::make_unique<clsAccount>();
        other->AccountID = u"A2"_s;
        other->OrganizationID = u"O2"_s;
        Accounts().Add(std::move(other));
        for (const QString &n : {u"1"_s, u"2"_s}) {
            for (const QString &sql :
                 {u"INSERT INTO MessageStore (AccountID, TriggerID, OrganizationID, MessageDate) "
                  "VALUES ('An', 'T1', 'On', '2020-01-01 12:00:00')"_s,
                  u"INSERT INTO MessageStore (AccountID, TriggerID, OrganizationID, MessageDate) "
                  "VALUES ('An', 'T2', 'On', '2024-01-01 12:00:00')"_s,
                  u"INSERT INTO Folders (FolderID, AccountID, OrganizationID) VALUES ('Fn', 'An', 'On')"_s,
                  u"INSERT INTO Pending (AccountID, OrganizationID) VALUES ('An', 'On')"_s,
                  u"INSERT INTO Outbox (AccountID, TriggerID, Scheduled) VALUES ('An', 'T1', 1)"_s,
                  u"INSERT INTO Outbox (AccountID, TriggerID, Scheduled) VALUES ('An', 'T2', 0)"_s,
                  u"INSERT INTO DaySummary (OrganizationID, AccountID, Dated) "
                  "VALUES ('On', 'An', '2024-01-01 00:00:00')"_s,
                  u"INSERT INTO Users (UserID, OrganizationID) VALUES ('Un', 'On')"_s,
                  u"INSERT INTO FolderFlags (UserID, FolderID) VALUES ('Un', 'Fn')"_s,
                  u"INSERT INTO MessageFlags (UserID, FolderID, RecordNo) VALUES ('Un', 'Fn', 1)"_s,
                  u"INSERT INTO MessageStore (AccountID, OrganizationID) VALUES ('Un', 'On')"_s})
                QCOMPARE(f.Store.Execute(QString(sql).replace(u"n'"_s, n + u'\'')), 1);
            QCOMPARE(f.Store.ExecuteEQ(u"INSERT INTO EdgeQueue (AccountID) VALUES ('A%1')"_s.arg(n)), 1);
            QVERIFY(f.Store.AddDaySummaryTokenTypes(u"O"_s + n));
            QVERIFY(MakePath(f.Path(u"IMAP/Public"_s))
                    && QFile(f.Path(u"IMAP/Public/msg_A%1_1.eml"_s.arg(n))).open(QIODevice::WriteOnly));
        }
        const auto queued = [&] {
            return StoreFixture::ValueOn(f.Store.QueueConnection(), u"SELECT group_concat(AccountID) FROM EdgeQueue"_s)
                .toString();
        };

        QCOMPARE(f.Store.DeleteOldMessages(u"A1"_s, QDateTime(QDate(2023, 1, 1), QTime(0, 0))), 1);
        // A trigger narrows the stored messages only: the account's folders,
        // pending and queued messages and scheduled mail go all the same.
        QVERIFY(f.Store.DeleteMessages(u"A2"_s, u"T1"_s));
        QCOMPARE(f.Count(u"MessageStore"_s, u"AccountID='A2'"_s), 1);
        QCOMPARE(f.Count(u"Outbox"_s, u"AccountID='A2'"_s), 1); // mail already sent stays
        for (const QString &table : {u"Folders"_s, u"Pending"_s})
            QCOMPARE(f.Count(table, u"AccountID='A2'"_s), 0);
        QCOMPARE(queued(), u"A1"_s);
        QVERIFY(!QFileInfo::exists(f.Path(u"IMAP/Public/msg_A2_1.eml"_s)));
        QVERIFY(QFileInfo::exists(f.Path(u"IMAP/Public/msg_A1_1.eml"_s)));

        QVERIFY(f.Store.DeleteMessages(u"A1"_s));
        for (const QString &table : {u"MessageStore"_s, u"Folders"_s, u"Pending"_s})
            QCOMPARE(f.Count(table, u"AccountID='A1'"_s), 0);
        QCOMPARE(f.Count(u"Outbox"_s, u"AccountID='A1'"_s), 1);
        QCOMPARE(queued(), QString());
        QVERIFY(!QFileInfo::exists(f.Path(u"IMAP/Public/msg_A1_1.eml"_s)));

        QVERIFY(f.Store.DeleteUser(u"U1"_s));
        for (const QString &table : {u"Users"_s, u"Folders"_s, u"FolderFlags"_s, u"MessageFlags"_s})
            QCOMPARE(f.Count(table, u"UserID='U1'"_s), 0);
        QCOMPARE(f.Count(u"MessageStore"_s, u"AccountID LIKE 'U%'"_s), 1);

        QVERIFY(f.Store.DeleteOrganization(u"O2"_s));
        for (const QString &table : {u"Users"_s, u"Folders"_s, u"Pending"_s, u"MessageStore"_s, u"DaySummary"_s})
            QCOMPARE(f.Count(table, u"OrganizationID='O2'"_s), 0);
        QCOMPARE(f.Count(u"Outbox"_s, u"AccountID='A2'"_s), 0);
        QCOMPARE(queued(), QString());
        QCOMPARE(f.Count(u"DaySummary"_s), 1);

        QVERIFY(f.Store.ClearAllMailStore(u"O2"_s));
        QCOMPARE(f.Count(u"DaySummaryTokenTypes"_s), 3);
        QVERIFY(f.Store.ClearAllMailStore());
        QCOMPARE(f.Count(u"DaySummary"_s) + f.Count(u"DaySummaryTokenTypes"_s) + f.Count(u"Pending"_s), 0);
        QVERIFY(!QFileInfo::exists(f.Path(u"IMAP/Public/msg_A2_1.eml"_s)));
        QVERIFY(m_errors.isEmpty());
    }

    void daySummaryCountsEachDayAndToken()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        QVERIFY(f.Store.UpdateDaySummary(u"O1"_s, u"A1"_s, true, 100));
        QVERIFY(f.Store.UpdateDaySummary(u"O1"_s, u"A1"_s, true, 50));
        QVERIFY(f.Store.UpdateDaySummary(u"O1"_s, u"A1"_s, false, 7));
        QVERIFY(f.Store.UpdateDaySummary(u"O1"_s, u"A2"_s, false, 1));
        QCOMPARE(
            f.Value(u"SELECT group_concat(AccountID||':'||MessagesIn||','||MessagesOut||','||BytesIn||','||Dated, ';') "
                    "FROM DaySummary"_s)
                .toString(),
            u"A1:2,1,157,%1;A2:0,1,1,%1"_s.arg(QDate::currentDate().toString(u"yyyy-MM-dd 00:00:00"_s)));

        const QString quoted = u"o'brien.ie"_s;
        QVERIFY(f.Store.UpdateDaySummaryToken(u"O1"_s, u"A1"_s, 1, quoted));
        QVERIFY(f.Store.UpdateDaySummaryToken(u"O1"_s, u"A1"_s, 1, quoted));
        QVERIFY(f.Store.UpdateDaySummaryToken(u"O1"_s, u"A1"_s, 2, quoted));
        QVERIFY(f.Store.UpdateDaySummaryToken(u"O1"_s, u"A1"_s, 1, QString()));
        QCOMPARE(f.Value(u"SELECT group_concat(TokenType||'='||Count) FROM DaySummaryToken WHERE Token='o''brien.ie'"_s)
                     .toString(),
                 u"1=2,2=1"_s);

        // Custom types number from 100 in each organization.
        QVERIFY(f.Store.AddDaySummaryTokenTypes(u"O1"_s));
        QVERIFY(f.Store.UpdateDaySummaryTokenCustom(u"O1"_s, u"A1"_s, u"Region"_s, u"North"_s, 3));
        QVERIFY(f.Store.UpdateDaySummaryTokenCustom(u"O1"_s, u"A1"_s, u"Product"_s, u"Tea"_s));
        QVERIFY(f.Store.UpdateDaySummaryTokenCustom(u"O1"_s, u"A1"_s, u"Region"_s, u"North"_s, 2));
        QVERIFY(f.Store.UpdateDaySummaryTokenCustom(u"O2"_s, u"A9"_s, u"Product"_s, u"Tea"_s));
        QCOMPARE(f.Value(u"SELECT group_concat(OrganizationID||TokenTypeDesc||TokenType) FROM DaySummaryTokenTypes "
                         "WHERE TokenType>99"_s)
                     .toString(),
                 u"O1Region100,O1Product101,O2Product100"_s);
        QCOMPARE(f.Value(u"SELECT Count FROM DaySummaryToken WHERE TokenType=100 AND AccountID='A1'"_s).toInt(), 5);
        QVERIFY(m_errors.isEmpty());
    }

    void daySummaryReportListsThePeriod()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        for (const auto &[day, count, token] :
             {std::tuple{2, 4, u"a.com"_s}, std::tuple{1, 3, u"b.com"_s}, std::tuple{9, 9, u"c.com"_s}}) {
            const QDate dated(2024, 5, day);
            QCOMPARE(f.Add(u"DaySummary"_s,
                           {{u"AccountID"_s, u"A1"_s},
                            {u"Dated"_s, dated},
                            {u"MessagesIn"_s, count},
                            {u"MessagesOut"_s, 1},
                            {u"BytesIn"_s, count * 1000}}),
                     0);
            QCOMPARE(f.Add(u"DaySummaryToken"_s,
                           {{u"AccountID"_s, u"A1"_s},
                            {u"TokenType"_s, 1},
                            {u"Token"_s, token},
                            {u"Dated"_s, dated},
                            {u"Count"_s, count}}),
                     0);
        }
        const QDate from(2024, 5, 1);
        const QDate to(2024, 5, 2);
        QCOMPARE(f.Store.GetDaySummary(u"A1"_s, from, to, 1),
                 u"<Lines><Line><Dated>2024-05-01</Date><Token>b.com</Token><Value>3</Value></Line>"
                 "<Line><Dated>2024-05-02</Date><Token>a.com</Token><Value>4</Value></Line></Lines>"_s);
        QCOMPARE(f.Store.GetDaySummary(u"A1"_s, from, to, 1000),
                 u"<Lines><Line><Date>2024-05-01</Date><Value>3</Value></Line>"
                 "<Line><Date>2024-05-02</Date><Value>4</Value></Line></Lines>"_s);
        QCOMPARE(f.Store.GetDaySummary(u"A1"_s, from, to, 1001).count(u"<Value>1</Value>"_s), 2);
        QVERIFY(f.Store.GetDaySummary(u"A1"_s, from, to, 1002).contains(u"<Value>4000</Value>"_s));
        QCOMPARE(f.Store.GetDaySummary(u"A2"_s, from, to, 1000), u"<Lines></Lines>"_s);
        QVERIFY(m_errors.isEmpty());
    }

    void addToMailStoreKeepsTheMessageAndCountsIt()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        clsMessage message;
        message.Subject = QString(1000, u's') + u'!';
        message.From = u"Ann <ann@Example.COM>"_s;
        message.ToAddress = QString(300, u't');
        message.Importance = u"High"_s;
        message.Size = 321;
        message.MessageText = u"Subject: hi\r\nX-Long: one\r\n two\r\n\r\nbody\r\n\r\nmore"_s;
        message.setMessageHeader(u"Subject: hi\r\n"_s);
        message.Attachments.Add()->Name = u"report.PDF"_s;
        const qint64 recordNo = f.Store.AddToMailStore(message);
        QVERIFY(recordNo > 0);

        clsRowSet row(f.Store.StoreConnection());
        QVERIFY(row.Open(u"MessageStore"_s, u"RecordNo=%1"_s.arg(recordNo)));
        QCOMPARE(row.Field(u"Subject"_s).toString(), QString(1000, u's'));
        QCOMPARE(row.Field(u"ToAddress"_s).toString().size(), 250);
        for (const QString &column : {u"AccountID"_s, u"TriggerID"_s, u"FolderID"_s})
            QCOMPARE(row.Field(column).toString(), u"-"_s);
        QCOMPARE(row.Field(u"UID"_s).toString(), message.MessageID);
        QCOMPARE(row.Field(u"Guid"_s).toString(), message.LinkGUID());
        QCOMPARE(row.Field(u"Importance"_s).toString(), u"H"_s);
        QCOMPARE(row.Field(u"MessageFlags"_s).toInt(), 2);
        QCOMPARE(row.Field(u"HasFullBody"_s).toInt(), 1);
        QCOMPARE(row.Field(u"Body"_s).toString(), u"body\r\n\r\nmore"_s);
        QCOMPARE(row.Field(u"Attachments"_s).toInt(), 1);
        QCOMPARE(f.Value(u"SELECT MessagesIn||','||BytesIn FROM DaySummary WHERE AccountID='-'"_s).toString(),
                 u"1,321"_s);
        QCOMPARE(f.Value(u"SELECT group_concat(TokenType||Token) FROM DaySummaryToken"_s).toString(),
                 u"1example.com,3pdf"_s);
        QVERIFY(m_errors.isEmpty());
    }

    void accountDecidesBodyAndReadState_data()
    {
        QTest::addColumn<int>("markAsReadType");
        QTest::addColumn<bool>("isRead");
        QTest::addColumn<int>("flags");
        QTest::newRow("never") << 0 << true << 0;
        QTest::newRow("always") << 1 << false << 2;
        QTest::newRow("read at the source") << 2 << true << 2;
        QTest::newRow("unread at the source") << 2 << false << 0;
    }
    void accountDecidesBodyAndReadState()
    {
        QFETCH(int, markAsReadType);
        QFETCH(bool, isRead);
        QFETCH(int, flags);
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        auto folder = std::make_unique<clsUserFolder>();
        folder->ID = u"F1"_s;
        folder->AccountID = u"A1"_s;
        UserFolders().Add(std::move(folder));
        clsAccount account;
        account.AccountID = u"A1"_s;
        account.StoreFull = false;
        account.MarkAsReadType = qint16(markAsReadType);
        clsAccountTrigger trigger;
        trigger.TriggerID = u"T1"_s;
        clsMessage message;
        message.Account = &account;
        message.setTrigger(&trigger);
        message.IsRead = isRead;
        message.Body = u"plain text"_s;
        message.MessageText = u"Subject: x\r\n\r\nfull text"_s;
        message.AddToLog(u"*the action failed"_s);

        const qint64 recordNo = f.Store.AddToMailStore(message);
        QCOMPARE(
            f.Value(u"SELECT "
                    u"MessageFlags||HasFullBody||Body||AccountID||TriggerID||FolderID||TriggerSuccess||TriggerError "
                    "FROM MessageStore WHERE RecordNo=%1"_s.arg(recordNo))
                .toString(),
            QString::number(flags) + u"0plain textA1T1F10*the action failed"_s);
        QVERIFY(m_errors.isEmpty());
    }

    void lockedStoreWaitsForTheOtherWriter()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        const QString flag = f.Path(u"locked"_s);
        QProcess holder;
        StartSQLite(holder, f.Path(u"MessageStore.db3"_s),
                    u"BEGIN IMMEDIATE;\nINSERT INTO MessageStore (AccountID) VALUES ('CLI');\n"
                    ".shell touch '%1'\n.shell sleep 3\nCOMMIT;\n"_s.arg(flag));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(flag), 10000);

        QElapsedTimer waited;
        waited.start();
        QCOMPARE(f.Store.Execute(u"INSERT INTO MessageStore (AccountID) VALUES ('A1')"_s), 1);
        QVERIFY2(waited.elapsed() >= 1500, qPrintable(QString::number(waited.elapsed())));
        QVERIFY(holder.waitForFinished(10000));
        QCOMPARE(holder.exitCode(), 0);
        QCOMPARE(holder.readAllStandardError(), QByteArray());
        QCOMPARE(
            f.Value(u"SELECT group_concat(AccountID) FROM (SELECT AccountID FROM MessageStore ORDER BY RecordNo)"_s)
                .toString(),
            u"CLI,A1"_s);
        QCOMPARE(f.Value(u"PRAGMA integrity_check"_s).toString(), u"ok"_s);
        QVERIFY(m_errors.isEmpty());
    }

    void twoProcessesWriteTheSameStore()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        const int rows = 300;
        const QString flag = f.Path(u"started"_s);
        QString script = u".timeout 5000\n.shell touch '%1'\n"_s.arg(flag);
        for (int i = 0; i < rows; ++i)
            script += u"BEGIN IMMEDIATE; INSERT INTO MessageStore (AccountID) VALUES ('CLI'); COMMIT;\n"_s;
        QProcess other;
        StartSQLite(other, f.Path(u"MessageStore.db3"_s), script);
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(flag), 10000);

        // Plain statements, and transactions that read before they write
        // with the other writer getting in between.
        for (int i = 0; i < rows; ++i) {
            if (i % 2 == 0) {
                QCOMPARE(f.Store.Execute(u"INSERT INTO MessageStore (AccountID) VALUES ('A1')"_s), 1);
                continue;
            }
            QVERIFY(f.Store.BeginTransaction());
            const qint64 before = f.Count(u"MessageStore"_s, u"AccountID='A1'"_s);
            QThread::msleep(2);
            QVERIFY(f.Add(u"MessageStore"_s, {{u"AccountID"_s, u"A1"_s}, {u"MessageSize"_s, before}}) > 0);
            QVERIFY(f.Store.EndTransaction());
        }
        QVERIFY(other.waitForFinished(60000));
        QCOMPARE(other.exitCode(), 0);
        QCOMPARE(other.readAllStandardError(), QByteArray());
        QCOMPARE(f.Count(u"MessageStore"_s, u"AccountID='CLI'"_s), rows);
        QCOMPARE(f.Count(u"MessageStore"_s, u"AccountID='A1'"_s), rows);
        QCOMPARE(f.Value(u"PRAGMA integrity_check"_s).toString(), u"ok"_s);
        QVERIFY2(m_errors.isEmpty(), qPrintable(m_errors.join(u'\n')));
    }
};

POSTVANE_TEST(tst_clsMessageStore)
#include "tst_clsMessageStore.moc"
