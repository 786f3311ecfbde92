#include "TestRegistry.h"
#include "actions/clsActionSetVariable.h"
#include "engine/processor/SetOperations.h"
#include "foundation/Crypt.h"

#include <QTest>

using namespace Qt::StringLiterals;

// The operations of the Set action, each by its stored number.
class tst_SetOperations : public QObject
{
    Q_OBJECT

private slots:
    void eachOperationGivesItsValue_data()
    {
        QTest::addColumn<int>("operation");
        QTest::addColumn<QString>("current");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("result");
        QTest::newRow("0 nothing") << 0 << u"old"_s << u"new"_s << u"new"_s;
        QTest::newRow("1 increment") << 1 << u"41"_s << QString() << u"42"_s;
        QTest::newRow("1 increment from empty") << 1 << QString() << QString() << u"1"_s;
        QTest::newRow("2 decrement") << 2 << u"0"_s << QString() << u"-1"_s;
        QTest::newRow("3 add to") << 3 << u"2.5"_s << u"0.25"_s << u"2.75"_s;
        QTest::newRow("4 subtract from") << 4 << u"10"_s << u"12"_s << u"-2"_s;
        QTest::newRow("5 add days") << 5 << u"2024-02-28"_s << u"2"_s << u"2024-03-01"_s;
        QTest::newRow("6 subtract days, time kept") << 6 << u"2024-03-01 10:30:00"_s << u"1"_s << u"2024-02-29 10:30:00"_s;
        QTest::newRow("7 upper") << 7 << QString() << u"Mixed Case"_s << u"MIXED CASE"_s;
        QTest::newRow("8 lower") << 8 << QString() << u"Mixed Case"_s << u"mixed case"_s;
        QTest::newRow("9 trim") << 9 << QString() << u"  a b  "_s << u"a b"_s;
        QTest::newRow("10 no whitespace") << 10 << QString() << u" a\tb\r\nc "_s << u"abc"_s;
        QTest::newRow("11 first and last") << 11 << QString() << u"[value]"_s << u"value"_s;
        QTest::newRow("12 space at end") << 12 << QString() << u"a"_s << u"a "_s;
        QTest::newRow("13 word capitalize") << 13 << QString() << u"mARY o'neil-smith"_s << u"Mary O'Neil-Smith"_s;
        QTest::newRow("14 html to text") << 14 << QString() << u"<p>Hello <b>you</b></p>"_s << u"Hello you"_s;
        QTest::newRow("15 html to xml") << 15 << QString() << u"<P class=x>a<br>b & c"_s
                                         << u"<p class=\"x\">a<br/>b &amp; c</p>"_s;
        QTest::newRow("16 first line") << 16 << QString() << u"one\r\ntwo"_s << u"one"_s;
        QTest::newRow("17 first address") << 17 << QString() << u"to: Ann <ann@a.com>, bob@b.org"_s << u"ann@a.com"_s;
        QTest::newRow("18 all addresses") << 18 << QString() << u"Ann <ann@a.com>, bob@b.org"_s << u"ann@a.com,bob@b.org"_s;
        QTest::newRow("19 first url") << 19 << QString() << u"see https://x.org/a?b=1 and www.y.com"_s
                                       << u"https://x.org/a?b=1"_s;
        QTest::newRow("20 all urls") << 20 << QString() << u"see https://x.org/a and www.y.com"_s
                                      << u"https://x.org/a,www.y.com"_s;
        QTest::newRow("23 url encode") << 23 << QString() << u"a b&c"_s << URLEncode(u"a b&c"_s);
        QTest::newRow("24 url decode") << 24 << QString() << u"a%20b"_s << u"a b"_s;
        QTest::newRow("25 base64") << 25 << QString() << u"héllo"_s << u"aMOpbGxv"_s;
        QTest::newRow("26 from base64") << 26 << QString() << u"aMOpbGxv"_s << u"héllo"_s;
        QTest::newRow("27 quoted printable") << 27 << QString() << u"a=b é"_s << u"a=3Db =C3=A9"_s;
        QTest::newRow("28 from quoted printable") << 28 << QString() << u"a=3Db =C3=A9 soft=\r\nbreak"_s
                                                  << u"a=b é softbreak"_s;
        QTest::newRow("29 md5") << 29 << QString() << u"x"_s << URLEncode(MD5Hash(u"x"_s));
    }
    void eachOperationGivesItsValue()
    {
        QFETCH(int, operation);
        QFETCH(QString, current);
        QFETCH(QString, value);
        QFETCH(QString, result);
        const SetOperations::Result done = SetOperations::Apply(operation, current, value);
        QVERIFY2(done.Problem.isEmpty(), qPrintable(done.Problem));
        QCOMPARE(done.Value, result);
    }

    void encryptionAndIdentifiersRoundTrip()
    {
        const QString secret = SetOperations::Apply(21, QString(), u"card 1234"_s).Value;
        QVERIFY(secret != u"card 1234"_s);
        QCOMPARE(SetOperations::Apply(22, QString(), secret).Value, u"card 1234"_s);
        const QString id = SetOperations::Apply(30, QString(), QString()).Value;
        QCOMPARE(id.size(), 32);
        QVERIFY(id != SetOperations::Apply(30, QString(), QString()).Value);
    }

    void valuesThatDoNotSuitKeepTheVariable()
    {
        for (int operation : {1, 3, 4}) {
            const auto done = SetOperations::Apply(operation, u"abc"_s, u"1"_s);
            QCOMPARE(done.Value, u"abc"_s);
            QVERIFY(!done.Problem.isEmpty());
        }
        QVERIFY(!SetOperations::Apply(3, u"1"_s, u"x"_s).Problem.isEmpty());
        QVERIFY(!SetOperations::Apply(5, u"not a date"_s, u"1"_s).Problem.isEmpty());
        QVERIFY(!SetOperations::Apply(26, QString(), u"***"_s).Problem.isEmpty());
        QVERIFY(!SetOperations::Apply(clsActionSetVariable::OperationCount, u"a"_s, u"b"_s).Problem.isEmpty());
    }
};

POSTVANE_TEST(tst_SetOperations)
#include "tst_SetOperations.moc"
