#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Startup.h"
#include "foundation/TextHelpers.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/StoreFiles.h"
#include "store/clsEventLog.h"
#include "store/clsMessage.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Runs a statement on the log file through a connection of its own, as
// another process would.
bool ExecOnFile(const QString &path, const QString &sql)
{
    const QString name = u"tst_clsEventLog.other"_s;
    bool ok = OpenSQLite(name, path, false);
    if (ok) {
        QSqlQuery query(QSqlDatabase::database(name, false));
        ok = query.exec(sql);
    }
    CloseConnection(name);
    return ok;
}

} // namespace

class tst_clsEventLog : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    GlobalBlock m_saved;

private slots:
    void init()
    {
        m_saved = Global;
        QVERIFY(m_folder.isValid());
        Global.DataPath = m_folder.path() + u"/case-"_s + QTest::currentTestFunction() + u'/';
        QVERIFY(MakePath(Global.DataPath));
        ReplaceCurrentMessage(nullptr);
    }
    void cleanup()
    {
        ReplaceCurrentMessage(nullptr);
        Global = m_saved;
    }

    void fileNameGivesBothFilesOfOneStem()
    {
        clsEventLog log;
        QCOMPARE(log.FileName(), Global.DataPath + u"ServerLog.db3"_s);
        QCOMPARE(log.TextFileName(), Global.DataPath + u"ServerLog.log"_s);
        log.setFileName(u"PostvaneEdgeServerLog.LOG"_s);
        QCOMPARE(log.FileName(), Global.DataPath + u"PostvaneEdgeServerLog.db3"_s);
        log.setFileName(u"/var/tmp/logs.d/Trace.v2.txt"_s);
        QCOMPARE(log.FileName(), u"/var/tmp/logs.d/Trace.v2.db3"_s);
        QCOMPARE(log.TextFileName(), u"/var/tmp/logs.d/Trace.v2.log"_s);

        QVERIFY(log.OpenLog(Global.DataPath + u"Other.db3"_s));
        QVERIFY(log.IsOpen());
        log.setFileName(u"Third.db3"_s);
        QVERIFY(!log.IsOpen());
    }

    void openMakesANewLogFromTheBlank()
    {
        clsEventLog log;
        QFile stale(log.TextFileName());
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.close();
        QVERIFY(log.OpenLog());
        QVERIFY(QFileInfo::exists(log.FileName()));
        QVERIFY(!QFileInfo::exists(log.TextFileName()));
        QVERIFY(log.OpenLog());

        // An existing log keeps its text file.
        log.CloseLog();
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.close();
        QVERIFY(log.OpenLog());
        QVERIFY(QFileInfo::exists(log.TextFileName()));
    }

    void linesCarryTheCurrentMessage()
    {
        clsAccount account;
        account.AccountID = u"A1"_s;
        clsAccountTrigger trigger;
        trigger.TriggerID = u"T1"_s;
        clsMessage &message = CurrentMessage();
        message.Account = &account;
        message.setTrigger(&trigger);

        clsEventLog log;
        log.AddEvent(u"first"_s);
        log.AddEvent(u"it's second"_s);
        log.AddRemoteEvent(u"elsewhere"_s, QDateTime::currentDateTime(), u"A2"_s, QString(), u"other"_s);
        QCOMPARE(log.GetLogsForUID(message.MessageID), u"first\nit's second"_s);
        QCOMPARE(log.GetLogsForUID(u"none"_s), QString());
        QCOMPARE(log.GetLogsForUID(u"x' OR '1'='1"_s), QString());
        const QString today = log.GetTodaysLogs(u"A1"_s, QDate::currentDate());
        QCOMPARE(today.count(u"\r\n"_s), 2);
        QVERIFY(today.contains(u" first\r\n"_s));
        QVERIFY(!today.contains(u"elsewhere"_s));
        QVERIFY(!log.GetTodaysLogs(QString(), QDate::currentDate()).isEmpty());
        message.Account = nullptr;
        message.setTrigger(nullptr);
    }

    void remoteLinesKeepTheirDateUnlessBefore2000()
    {
        clsEventLog log;
        const QDateTime old(QDate(1999, 12, 31), QTime(23, 59, 59));
        const QDateTime given(QDate(2023, 4, 5), QTime(6, 7, 8));
        log.AddRemoteEvent(u"millennium"_s, old, u"A1"_s, u"T1"_s, u"U1"_s);
        log.AddRemoteEvent(u"given"_s, given, u"A1"_s, u"T1"_s, u"U1"_s);
        QCOMPARE(log.GetLogs(given.date(), given.date()), u"2023-04-05:06:07:08 given\n"_s);
        QVERIFY(log.GetLogs(QDate::currentDate(), QDate::currentDate()).endsWith(u" millennium\n"_s));
        QCOMPARE(log.GetLogs(old.date(), old.date()), QString());
        QCOMPARE(log.GetTodaysLogs(u"A1"_s, given.date(), u"iv"_s, true), u"2023-04-05:06:07:08 given\n"_s);
        QCOMPARE(log.GetTodaysLogs(u"A1"_s, given.date(), u"nothing like it"_s), QString());
    }

    void aLineTheDatabaseRefusesGoesToTheTextFile()
    {
        clsEventLog log;
        log.AddEvent(u"stored"_s);
        QVERIFY(ExecOnFile(log.FileName(), u"ALTER TABLE EventLog RENAME TO Moved"_s));
        const QDateTime stamp(QDate(2024, 7, 8), QTime(9, 10, 11));
        log.AddRemoteEvent(u"kept anyway"_s, stamp, QString(), QString(), u"U1"_s);
        QFile text(log.TextFileName());
        QVERIFY(text.open(QIODevice::ReadOnly));
        QCOMPARE(text.readAll(), QByteArray("2024-07-08 09:10:11: kept anyway\r\n"));
        text.close();

        // The next line opens the database afresh and is stored again.
        QVERIFY(ExecOnFile(log.FileName(), u"ALTER TABLE Moved RENAME TO EventLog"_s));
        log.AddRemoteEvent(u"back"_s, stamp, QString(), QString(), u"U1"_s);
        QCOMPARE(log.GetLogsForUID(u"U1"_s), u"back"_s);
        QCOMPARE(QFileInfo(log.TextFileName()).size(), qint64(34));
    }

    void oldLinesAndWholeLogsAreDeleted()
    {
        clsEventLog log;
        for (int day = 1; day <= 3; ++day)
            log.AddRemoteEvent(u"day %1"_s.arg(day), QDateTime(QDate(2024, 1, day), QTime(12, 0)), QString(), QString(),
                               u"U1"_s);
        QVERIFY(WriteTextFile(log.TextFileName(), u"2024-01-01 00:00:00: text\r\n"_s));
        QCOMPARE(log.DeleteOldLogs(QDate(2024, 1, 3)), 2);
        QCOMPARE(log.GetLogsForUID(u"U1"_s), u"day 3"_s);
        QVERIFY(log.GetLogs(QDate::currentDate(), QDate::currentDate()).contains(u"Deleted 2 log entries."_s));
        QVERIFY(!QFileInfo::exists(log.TextFileName()));
        QCOMPARE(log.DeleteOldLogs(QDate(2024, 1, 3)), 0);

        log.ClearLog();
        QVERIFY(!log.IsOpen());
        QVERIFY(!QFileInfo::exists(log.FileName()));
        QCOMPARE(log.GetLogsForUID(u"U1"_s), QString());
    }
};

POSTVANE_TEST(tst_clsEventLog)
#include "tst_clsEventLog.moc"
