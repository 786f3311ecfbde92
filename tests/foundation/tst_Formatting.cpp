#include "TestRegistry.h"
#include "foundation/Formatting.h"

#include <QRegularExpression>
#include <QSet>
#include <QTest>

class tst_Formatting : public QObject
{
    Q_OBJECT

private slots:
    void formatBytes_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("expected");
        QTest::newRow("zero") << qint64(0) << QStringLiteral("0 Bytes");
        QTest::newRow("1024 still bytes") << qint64(1024) << QStringLiteral("1024 Bytes");
        QTest::newRow("1025 first K") << qint64(1025) << QStringLiteral("1 K");
        QTest::newRow("K rounds half up") << qint64(1536) << QStringLiteral("2 K");
        QTest::newRow("last K") << qint64(1048575) << QStringLiteral("1024 K");
        QTest::newRow("first Mb") << qint64(1048576) << QStringLiteral("1.00 Mb");
        QTest::newRow("Mb two decimals") << qint64(1572864) << QStringLiteral("1.50 Mb");
        QTest::newRow("gigabytes stay Mb") << qint64(5368709120) << QStringLiteral("5120.00 Mb");
    }
    void formatBytes()
    {
        QFETCH(qint64, bytes);
        QFETCH(QString, expected);
        QCOMPARE(FormatBytes(bytes), expected);
    }

    void formatDuration_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QString>("expected");
        QTest::newRow("negative") << qint64(-1) << QString();
        QTest::newRow("under a minute") << qint64(59) << QStringLiteral("0 Mins");
        QTest::newRow("one minute") << qint64(60) << QStringLiteral("1 Min");
        QTest::newRow("minutes") << qint64(150) << QStringLiteral("2 Mins");
        QTest::newRow("one hour") << qint64(3600) << QStringLiteral("1 Hour 0 Mins");
        QTest::newRow("hours and a minute") << qint64(7260) << QStringLiteral("2 Hours 1 Min");
        QTest::newRow("one day") << qint64(86400) << QStringLiteral("1 Day 0 Mins");
        QTest::newRow("all singular") << qint64(90060) << QStringLiteral("1 Day 1 Hour 1 Min");
        QTest::newRow("all plural") << qint64(2 * 86400 + 3 * 3600 + 4 * 60 + 5) << QStringLiteral("2 Days 3 Hours 4 Mins");
    }
    void formatDuration()
    {
        QFETCH(qint64, seconds);
        QFETCH(QString, expected);
        QCOMPARE(FormatDuration(seconds), expected);
    }

    void formatOffset_data()
    {
        QTest::addColumn<int>("minutes");
        QTest::addColumn<QString>("expected");
        QTest::newRow("zero") << 0 << QStringLiteral("00:00");
        QTest::newRow("half hour zone") << 330 << QStringLiteral("05:30");
        QTest::newRow("negative drops sign") << -300 << QStringLiteral("05:00");
        QTest::newRow("quarter hour zone") << 765 << QStringLiteral("12:45");
    }
    void formatOffset()
    {
        QFETCH(int, minutes);
        QFETCH(QString, expected);
        QCOMPARE(FormatOffset(minutes), expected);
    }

    void safeDate_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QDateTime>("expected");
        const QDateTime march(QDate(2024, 3, 1), QTime(10, 20, 30));
        const QDateTime marchDay(QDate(2024, 3, 1), QTime(0, 0));
        QTest::newRow("null") << QVariant() << NoDate();
        QTest::newRow("empty text") << QVariant(QString()) << NoDate();
        QTest::newRow("no date") << QVariant(QStringLiteral("tomorrow")) << NoDate();
        QTest::newRow("impossible day") << QVariant(QStringLiteral("2024-02-30")) << NoDate();
        QTest::newRow("bad time part") << QVariant(QStringLiteral("2024-03-01 noon")) << NoDate();
        QTest::newRow("row text") << QVariant(QStringLiteral("2024-03-01 10:20:30")) << march;
        QTest::newRow("ISO with T") << QVariant(QStringLiteral("2024-03-01T10:20:30")) << march;
        QTest::newRow("log stamp") << QVariant(QStringLiteral("2024-03-01:10:20:30")) << march;
        QTest::newRow("date only") << QVariant(QStringLiteral("2024-03-01")) << marchDay;
        QTest::newRow("short parts") << QVariant(QStringLiteral("2024-3-1")) << marchDay;
        QTest::newRow("slashes") << QVariant(QStringLiteral("2024/03/01 10:20:30")) << march;
        QTest::newRow("US order") << QVariant(QStringLiteral("3/1/2024 10:20:30 AM")) << march;
        QTest::newRow("QDate") << QVariant(QDate(2024, 3, 1)) << marchDay;
        QTest::newRow("QDateTime") << QVariant(march) << march;
        QTest::newRow("invalid QDate") << QVariant(QDate()) << NoDate();
    }
    void safeDate()
    {
        QFETCH(QVariant, value);
        QFETCH(QDateTime, expected);
        QCOMPARE(SafeDate(value), expected);
    }

    void safeDateReadsMailDates()
    {
        const QString text = QStringLiteral("Fri, 01 Mar 2024 10:20:30 +0000");
        QCOMPARE(SafeDate(text), QDateTime(QDate(2024, 3, 1), QTime(10, 20, 30), Qt::UTC).toLocalTime());
    }

    void safeTime_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QTime>("expected");
        QTest::newRow("null") << QVariant() << QTime(0, 0);
        QTest::newRow("garbage") << QVariant(QStringLiteral("later")) << QTime(0, 0);
        QTest::newRow("hour out of range") << QVariant(QStringLiteral("25:00")) << QTime(0, 0);
        QTest::newRow("hours and minutes") << QVariant(QStringLiteral("14:05")) << QTime(14, 5);
        QTest::newRow("with seconds") << QVariant(QStringLiteral(" 14:05:09 ")) << QTime(14, 5, 9);
        QTest::newRow("afternoon") << QVariant(QStringLiteral("2:05 PM")) << QTime(14, 5);
        QTest::newRow("time of a date text") << QVariant(QStringLiteral("2024-03-01 10:20:30")) << QTime(10, 20, 30);
        QTest::newRow("QDateTime") << QVariant(QDateTime(QDate(2024, 3, 1), QTime(7, 8, 9))) << QTime(7, 8, 9);
        QTest::newRow("QTime") << QVariant(QTime(23, 59)) << QTime(23, 59);
    }
    void safeTime()
    {
        QFETCH(QVariant, value);
        QFETCH(QTime, expected);
        QCOMPARE(SafeTime(value), expected);
    }

    void uniqueNameJoinsDateTimeAndRandomHex()
    {
        const QDateTime now(QDate(2024, 3, 1), QTime(9, 8, 7));
        const QString name = UniqueName(now);
        QVERIFY2(QRegularExpression(QStringLiteral("^20240301_090807_[0-9A-F]{4}$")).match(name).hasMatch(),
                 qPrintable(name));
    }

    void guidsAreBracedUpperCaseAndNew()
    {
        const QRegularExpression form(
            QStringLiteral("^\\{[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\}$"));
        const QString first = GetGUID();
        QVERIFY2(form.match(first).hasMatch(), qPrintable(first));
        QVERIFY(GetGUID() != first);
    }

    void newUniqueIDDerivesTimeAndDayParts_data()
    {
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<QString>("derived");
        QTest::newRow("midnight, first day") << QDateTime(QDate(2024, 1, 1), QTime(0, 0)) << QStringLiteral("0000001");
        QTest::newRow("noon, day 61") << QDateTime(QDate(2024, 3, 1), QTime(12, 0)) << QStringLiteral("800003D");
        QTest::newRow("end of a leap year")
            << QDateTime(QDate(2024, 12, 31), QTime(23, 59, 59, 999)) << QStringLiteral("FFFF16E");
    }
    void newUniqueIDDerivesTimeAndDayParts()
    {
        QFETCH(QDateTime, now);
        QFETCH(QString, derived);
        const QString id = NewUniqueID(now);
        QVERIFY2(QRegularExpression(QStringLiteral("^[0-9A-F]{11}$")).match(id).hasMatch(), qPrintable(id));
        QCOMPARE(id.mid(4), derived);
    }

    void newUniqueIDVariesWithinOneMoment()
    {
        const QDateTime now = QDateTime::currentDateTime();
        QSet<QString> randomParts;
        for (int i = 0; i < 20; ++i)
            randomParts.insert(NewUniqueID(now).left(4));
        QVERIFY(randomParts.size() > 1);
    }

    void timeZoneListKeepsItsFixedShape()
    {
        const QString list = TimeZoneList();
        QVERIFY(list.startsWith(QStringLiteral("GMT,Eastern,Central,Mountain,Pacific,")));
        QVERIFY(list.endsWith(QStringLiteral(",UTC")));
        const QStringList names = list.split(u',');
        QVERIFY(!names.contains(QString()));
        QCOMPARE(QSet<QString>(names.begin(), names.end()).size(), names.size());
        QVERIFY(names.contains(QStringLiteral("Nepa")));
        QVERIFY(names.contains(QStringLiteral("Nnewfoundland")));
        QVERIFY(names.size() > 50);
    }
};

POSTVANE_TEST(tst_Formatting)
#include "tst_Formatting.moc"
