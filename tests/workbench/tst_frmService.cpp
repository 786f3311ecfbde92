#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "workbench/frmService.h"

#include <QFile>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

namespace {

QString Stamp(const QDateTime &time)
{
    return time.toString(QStringLiteral("yyyy-MM-dd:hh:mm:ss"));
}

void Write(const QString &file, const QStringList &lines, QIODevice::OpenMode mode = QIODevice::WriteOnly)
{
    QFile out(file);
    QVERIFY(out.open(mode));
    for (const QString &line : lines)
        out.write((line + QStringLiteral("\r\n")).toUtf8());
}

// What each row shows: the text, or the header's caption for a day header.
QStringList Rows(const frmService &pane)
{
    QStringList rows;
    for (int row = 0; row < pane.GridSVC->rowCount(); ++row) {
        const auto kind = pane.GridSVC->item(row, frmService::ColTime)->data(frmService::RowKindRole).toInt();
        rows << (kind == frmService::DayHeaderRow ? QStringLiteral("# ") + pane.GridSVC->item(row, 0)->text()
                                                  : pane.GridSVC->item(row, frmService::ColText)->text());
    }
    return rows;
}

int Kind(const frmService &pane, int row)
{
    return pane.GridSVC->item(row, frmService::ColTime)->data(frmService::RowKindRole).toInt();
}

QString Header(const QDate &date)
{
    return QStringLiteral("# Postvane Server Log For: ") + QLocale::c().toString(date, QStringLiteral("dddd dd MMM yyyy"));
}

} // namespace

class tst_frmService : public QObject
{
    Q_OBJECT
private:
    QTemporaryDir data;
    QString LogFile() const { return data.path() + QStringLiteral("/PostvaneServerLog.LOG"); }

private slots:
    void init()
    {
        Global.DataPath = data.path() + u'/';
        QFile::remove(LogFile());
    }

    void shortFileIsShownWholeAndFollowed()
    {
        const QDateTime yesterday = QDateTime::currentDateTime().addDays(-1);
        const QDateTime today(QDate::currentDate(), QTime(0, 0, 5));
        Write(LogFile(), {Stamp(yesterday) + QStringLiteral(" old line"), Stamp(today) + QStringLiteral(" new line")});
        frmService pane(QStringLiteral("Server"), QStringLiteral("PostvaneServerLog.LOG"));
        pane.ShowLog(pane.LogName);
        QVERIFY(pane.Following());
        pane.ReadLog();
        QCOMPARE(Rows(pane), (QStringList{Header(yesterday.date()), QStringLiteral("old line"), Header(today.date()),
                                          QStringLiteral("new line")}));

        // A line still being written waits for its end.
        QFile out(LogFile());
        QVERIFY(out.open(QIODevice::Append));
        out.write((Stamp(today) + QStringLiteral(" half")).toUtf8());
        out.flush();
        pane.ReadLog();
        QCOMPARE(pane.GridSVC->rowCount(), 4);
        out.write(" done\r\n\r\n");
        out.close();
        pane.ReadLog();
        QCOMPARE(Rows(pane).last(), QStringLiteral("half done"));
        QCOMPARE(pane.GridSVC->rowCount(), 5);

        // The same line pushed by the server is not shown twice.
        pane.AddRemoteLog(QStringLiteral("<TimeStamp>") + Stamp(today) + QStringLiteral("</TimeStamp><Msg>half done</Msg>"));
        QCOMPARE(pane.GridSVC->rowCount(), 5);
    }

    void longFileStartsAtTodaysFirstLine()
    {
        const QDateTime yesterday(QDate::currentDate().addDays(-1), QTime(0, 0));
        QStringList lines;
        for (int i = 0; i < 3000; ++i)
            lines << Stamp(yesterday.addSecs(i * 20)) + QStringLiteral(" yesterday %1").arg(i);
        lines << QStringLiteral("a continuation of the last line of yesterday");
        const QDateTime today(QDate::currentDate(), QTime(0, 0, 1));
        for (int i = 0; i < 5; ++i)
            lines << Stamp(today.addSecs(i)) + QStringLiteral(" today %1").arg(i);
        Write(LogFile(), lines);

        frmService pane(QStringLiteral("Server"), QStringLiteral("PostvaneServerLog.LOG"));
        pane.ShowLog(pane.LogName);
        pane.ReadLog();
        QCOMPARE(Rows(pane), (QStringList{Header(today.date()), QStringLiteral("today 0"), QStringLiteral("today 1"),
                                          QStringLiteral("today 2"), QStringLiteral("today 3"), QStringLiteral("today 4")}));

        // Nothing of today yet: the pane starts at the end and waits.
        Write(LogFile(), lines.mid(0, 3000));
        QCOMPARE(frmService::StartPosition(LogFile(), QDateTime(QDate::currentDate(), QTime(0, 0))),
                 QFileInfo(LogFile()).size());
    }

    void rolledFileIsReadFromTheTop()
    {
        const QDateTime now = QDateTime::currentDateTime();
        Write(LogFile(), {Stamp(now) + QStringLiteral(" first of the old file, long enough to be longer"),
                          Stamp(now) + QStringLiteral(" second of the old file")});
        frmService pane(QStringLiteral("Server"), QStringLiteral("PostvaneServerLog.LOG"));
        pane.ShowLog(pane.LogName);
        pane.ReadLog();
        QCOMPARE(pane.GridSVC->rowCount(), 3);
        Write(LogFile(), {Stamp(now) + QStringLiteral(" new file")});
        pane.ReadLog();
        QCOMPARE(Rows(pane).last(), QStringLiteral("new file"));
        QCOMPARE(pane.GridSVC->rowCount(), 4);
    }

    void missingFileWaitsForItsCreation()
    {
        frmService pane(QStringLiteral("Server"), QStringLiteral("PostvaneServerLog.LOG"));
        pane.ShowLog(pane.LogName);
        pane.ReadLog();
        QCOMPARE(pane.GridSVC->rowCount(), 0);
        Write(LogFile(), {Stamp(QDateTime::currentDateTime()) + QStringLiteral(" created")});
        pane.ReadLog();
        QCOMPARE(Rows(pane).last(), QStringLiteral("created"));
    }

    void midnightAddsDayHeaderAndContinuationsKeepTheirDay()
    {
        frmService pane(QStringLiteral("Edge"), QString());
        pane.AddLine(QStringLiteral("2024-03-01:23:59:59 before midnight"));
        pane.AddLine(QStringLiteral("continued text"));
        pane.AddLine(QStringLiteral("2024-03-02:00:00:01 after midnight"));
        QCOMPARE(Rows(pane), (QStringList{QStringLiteral("# Postvane Server Log For: Friday 01 Mar 2024"),
                                          QStringLiteral("before midnight"), QStringLiteral("continued text"),
                                          QStringLiteral("# Postvane Server Log For: Saturday 02 Mar 2024"),
                                          QStringLiteral("after midnight")}));
        QCOMPARE(pane.GridSVC->item(1, frmService::ColTime)->text(), QStringLiteral("23:59:59"));
        QCOMPARE(pane.GridSVC->item(2, frmService::ColTime)->text(), QString());
        QCOMPARE(pane.GridSVC->item(1, frmService::ColSource)->text(), QStringLiteral("Edge"));
        QCOMPARE(pane.CurrentDate, QDate(2024, 3, 2));
    }

    void emphasisErrorsAndProductLines()
    {
        frmService pane(QStringLiteral("Server"), QString());
        pane.AddLine(QStringLiteral("2024-03-01:10:00:00 New Message For Account Sales"));
        pane.AddLine(QStringLiteral("2024-03-01:10:00:01 Subject: Order 42"));
        pane.AddLine(QStringLiteral("2024-03-01:10:00:02 *Could not open the database"));
        pane.AddLine(QStringLiteral("2024-03-01:10:00:03 Postvane Server Started"));
        pane.AddLine(QStringLiteral("2024-03-01:10:00:04 New account added"));
        QCOMPARE(Kind(pane, 1), int(frmService::EmphasisRow));
        QCOMPARE(Kind(pane, 2), int(frmService::EmphasisRow));
        QVERIFY(pane.GridSVC->item(1, frmService::ColText)->font().bold());
        QCOMPARE(Kind(pane, 3), int(frmService::ErrorRow));
        QVERIFY(pane.GridSVC->item(3, frmService::ColText)->foreground().color() != pane.GridSVC->item(6, frmService::ColText)->foreground().color());
        QCOMPARE(Rows(pane).mid(4, 2), (QStringList{QString(), QStringLiteral("Postvane Server Started")}));
        QCOMPARE(Kind(pane, 6), int(frmService::LineRow));
    }

    void remoteBatchAndPushedLinesRepaintOnTheTimer()
    {
        frmService pane(QStringLiteral("Server"), QString());
        pane.SetRemote();
        pane.AddFirstLog(QStringLiteral("2024-03-01:10:00:00 one\n\n2024-03-01:10:00:01 two\r\n"));
        QCOMPARE(Rows(pane), (QStringList{QStringLiteral("# Postvane Server Log For: Friday 01 Mar 2024"),
                                          QStringLiteral("one"), QStringLiteral("two")}));
        QVERIFY(pane.GridSVC->updatesEnabled());

        pane.AddRemoteLog(QStringLiteral("<TimeStamp>2024-03-01 10:00:02</TimeStamp><Msg>pushed &amp; shown</Msg>"));
        pane.AddRemoteLog(QStringLiteral("<TimeStamp>2024-03-01:10:00:03</TimeStamp><Msg>second</Msg>"));
        QCOMPARE(Rows(pane).mid(3), (QStringList{QStringLiteral("pushed & shown"), QStringLiteral("second")}));
        QCOMPARE(pane.GridSVC->item(4, frmService::ColTime)->text(), QStringLiteral("10:00:03"));
        QVERIFY(!pane.GridSVC->updatesEnabled());
        QVERIFY(pane.RemoteTimer.isActive());
        QTRY_VERIFY_WITH_TIMEOUT(pane.GridSVC->updatesEnabled(), 2000);
    }

    void selectedLinesAreCopiedAndSaved()
    {
        frmService pane(QStringLiteral("Server"), QString());
        pane.AddLine(QStringLiteral("2024-03-01:10:00:00 one"));
        pane.AddLine(QStringLiteral("2024-03-01:10:00:01 two"));
        pane.AddLine(QStringLiteral("2024-03-01:10:00:02 three"));
        pane.GridSVC->selectRow(3);
        pane.GridSVC->setSelectionMode(QAbstractItemView::MultiSelection);
        pane.GridSVC->selectRow(1);
        const QString expected = QStringLiteral("10:00:00 Server one\r\n10:00:02 Server three\r\n");
        QCOMPARE(pane.SelectedLines(), expected);
        const QString file = data.path() + QStringLiteral("/saved.txt");
        QVERIFY(pane.SaveLinesTo(file));
        QFile saved(file);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(saved.readAll()), expected);
    }

    void clearLogRestartsOnlyAFollowedPane()
    {
        Write(LogFile(), {Stamp(QDateTime::currentDateTime()) + QStringLiteral(" a")});
        frmService pane(QStringLiteral("Server"), QStringLiteral("PostvaneServerLog.LOG"));
        pane.ShowLog(pane.LogName);
        pane.ReadLog();
        pane.ClearLog();
        QCOMPARE(pane.GridSVC->rowCount(), 0);
        pane.ReadLog();
        QCOMPARE(Rows(pane).last(), QStringLiteral("a"));

        frmService remote(QStringLiteral("Server"), QString());
        remote.AddLine(QStringLiteral("2024-03-01:10:00:00 kept"));
        remote.ClearLog();
        QVERIFY(remote.NeedsReload);
        QCOMPARE(remote.GridSVC->rowCount(), 2);
    }
};

POSTVANE_TEST(tst_frmService)
#include "tst_frmService.moc"
