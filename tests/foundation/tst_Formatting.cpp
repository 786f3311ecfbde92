#include "TestRegistry.h"
#include "foundation/Formatting.h"

#include <QRegularExpression>
#include <QSet>
#include <QTest>

class tst_Formatting : public QObject
{
    Q_OBJECT

private slots:
    // Sizes, durations in seconds and zone offsets in minutes as shown.
    void numbersAsText_data()
    {
        QTest::addColumn<QString>("function");
        QTest::addColumn<qint64>("value");
        QTest::addColumn<QString>("expected");
        const auto add = [](const char *function, const char *name, qint64 value, const char *expected) {
            QTest::addRow("%s: %s", function, name) << QString::fromLatin1(function) << value
                                                   << QString::fromLatin1(expected);
        };
        add("FormatBytes", "zero", 0, "0 Bytes");
        add("FormatBytes", "1024 still bytes", 1024, "1024 Bytes");
        add("FormatBytes", "1025 first K", 1025, "1 K");
        add("FormatBytes", "K rounds half up", 1536, "2 K");
        add("FormatBytes", "last K", 1048575, "1024 K");
        add("FormatBytes", "first Mb", 1048576, "1.00 Mb");
        add("FormatBytes", "Mb two decimals", 1572864, "1.50 Mb");
        add("FormatBytes", "gigabytes stay Mb", 5368709120, "5120.00 Mb");
        add("FormatDuration", "negative", -1, "");
        add("FormatDuration", "under a minute", 59, "0 Mins");
        add("FormatDuration", "one minute", 60, "1 Min");
        add("FormatDuration", "minutes", 150, "2 Mins");
        add("FormatDuration", "one hour", 3600, "1 Hour 0 Mins");
        add("FormatDuration", "hours and a minute", 7260, "2 Hours 1 Min");
        add("FormatDuration", "one day", 86400, "1 Day 0 Mins");
        add("FormatDuration", "all singular", 90060, "1 Day 1 Hour 1 Min");
        add("FormatDuration", "all plural", 2 * 86400 + 3 * 3600 + 4 * 60 + 5, "2 Days 3 Hours 4 Mins");
        add("FormatOffset", "zero", 0, "00:00");
        add("FormatOffset", "half hour zone", 330, "05:30");
        add("FormatOffset", "negative drops sign", -300, "05:00");
        add("FormatOffset", "quarter hour zone", 765, "12:45");
    }
    void numbersAsText()
    {
        QFETCH(QString, function);
        QFETCH(qint64, value);
        QFETCH(QString, expected);
        const QString text = function == u"FormatBytes"      ? FormatBytes(value)
                             : function == u"FormatDuration" ? FormatDuration(value)
                                                             : FormatOffset(int(value));
        QCOMPARE(text, expected);
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
        QTest::newRow("mail date") << QVariant(QStringLiteral("Fri, 01 Mar 2024 10:20:30 +0000"))
                                   << QDateTime(QDate(2024, 3, 1), QTime(10, 20, 30), Qt::UTC).toLocalTime();
    }
    void safeDate()
    {
        QFETCH(QVariant, value);
        QFETCH(QDateTime, expected);
        QCOMPARE(SafeDate(value), expected);
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
};

POSTVANE_TEST(tst_Formatting)
#include "tst_Formatting.moc"
