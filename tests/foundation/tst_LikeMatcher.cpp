#include "TestRegistry.h"
#include "foundation/LikeMatcher.h"

#include <QElapsedTimer>
#include <QTest>

class tst_LikeMatcher : public QObject
{
    Q_OBJECT

    static void AddRows(std::initializer_list<std::tuple<const char *, const char *, bool>> rows)
    {
        for (const auto &[text, pattern, expected] : rows)
            QTest::addRow("%s ~ %s", text, pattern) << QString::fromUtf8(text) << QString::fromUtf8(pattern) << expected;
    }

private slots:
    void like_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<bool>("expected");
        AddRows({
            // whole text, literals and empty cases
            {"abc", "abc", true}, {"abcd", "abc", false}, {"", "", true}, {"a", "", false},
            {"", "*", true}, {"", "?", false},
            // stars and question marks
            {"abc", "a*", true}, {"abc", "*c", true}, {"abc", "a*c", true}, {"ac", "a*c", true},
            {"abd", "a*c", false}, {"abc", "a?c", true}, {"ac", "a?c", false}, {"a", "**a**", true},
            {"mississippi", "*sip*", true}, {"mississippi", "m*ss*p?", true},
            // digits
            {"a5", "a#", true}, {"ab", "a#", false}, {"7", "##", false}, {"2024-03", "####-##", true},
            // lists and ranges
            {"bx", "[a-c]x", true}, {"dx", "[a-c]x", false}, {"dx", "[!a-c]x", true}, {"bx", "[!a-c]x", false},
            {"y", "[a-cx-z]", true}, {"-", "[-a]", true}, {"-", "[a-]", true}, {"b", "[a-]", false},
            {"m", "[z-a]", false}, {"a", "[]", false}, {"a", "[!]", true}, {"", "[!]", false},
            {"*", "[*]", true}, {"x", "[*]", false}, {"?", "[?]", true}, {"#", "[#]", true}, {"[", "[[]", true},
            // an unclosed bracket stands for itself
            {"a[b", "a[b", true}, {"ab", "a[b", false}, {"x[", "*[", true}, {"[a-z", "[a-z", true},
            // addresses as accounts, users and relay lists use them
            {"192.168.0.17", "192.168.0.*", true}, {"192.168.1.17", "192.168.0.*", false},
            {"10.1.2.3", "10.*", true}, {"bob@example.com", "*@example.com", true},
            {"sales-eu@example.com", "sales*@example.com", true}, {"support@example.com", "sales*@example.com", false},
        });
    }
    void like()
    {
        QFETCH(QString, text);
        QFETCH(QString, pattern);
        QFETCH(bool, expected);
        QCOMPARE(Like(text, pattern), expected);
    }

    void caseIgnoredUnlessAsked()
    {
        QVERIFY(Like(QStringLiteral("Bob@Example.COM"), QStringLiteral("bob@example.com")));
        QVERIFY(Like(QStringLiteral("q"), QStringLiteral("[A-Z]")));
        QVERIFY(!Like(QStringLiteral("Bob"), QStringLiteral("bob"), Qt::CaseSensitive));
        QVERIFY(!Like(QStringLiteral("q"), QStringLiteral("[A-Z]"), Qt::CaseSensitive));
        QVERIFY(Like(QStringLiteral("Q"), QStringLiteral("[A-Z]"), Qt::CaseSensitive));
    }

    void pathologicalPatternsFinishFast()
    {
        const QString text(20000, u'a');
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!Like(text, QStringLiteral("*a*a*a*a*a*a*a*a*a*a*b")));
        QVERIFY(Like(text + u'b', QStringLiteral("*a*a*a*a*a*a*a*a*a*a*b")));
        QVERIFY(!Like(text, QStringLiteral("*?*?*?*?*?*?*?*?*?*?#")));
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    }
};

POSTVANE_TEST(tst_LikeMatcher)
#include "tst_LikeMatcher.moc"
