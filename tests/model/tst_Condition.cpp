#include "TestRegistry.h"
#include "model/Condition.h"

#include <QTest>

namespace {

// A stored condition of the given "joiner|left|operator|right" rows.
QString Fragment(const QStringList &rows, bool scriptEnabled = false, const QString &script = QString())
{
    ConditionFragment fragment;
    for (const QString &row : rows) {
        const QStringList p = row.split(u'|');
        fragment.Lines << ConditionLine{p.value(0), p.value(1), p.value(2), p.value(3)};
    }
    fragment.ScriptEnabled = scriptEnabled;
    fragment.Script = script;
    return ConditionXML(fragment);
}

const QString IfKeyword = QStringLiteral("<Bold><Run Foreground='DarkRed' Text='If '/></Bold>");
const QString ThenKeyword = QStringLiteral("<Bold><Run Foreground='DarkRed' Text=' Then '/></Bold>");

QString MarkedLine(const QString &joiner, const QString &left, const QString &op, const QString &right)
{
    return joiner + QStringLiteral(" <Run Foreground='DarkBlue' Text='") + left
           + QStringLiteral(" '/><Run Foreground='Magenta' Text='") + op + QStringLiteral(" '/><Bold>") + right
           + QStringLiteral("</Bold> ");
}

} // namespace

class tst_Condition : public QObject
{
    Q_OBJECT
private slots:
    void fragmentKeepsRowsWithALeftSideOnly()
    {
        ConditionFragment fragment;
        fragment.Lines << ConditionLine{QString(), QStringLiteral("%from%"), QStringLiteral("="), QStringLiteral(" bob  ")}
                       << ConditionLine{QStringLiteral("And"), QString(), QStringLiteral("="), QStringLiteral("x")}
                       << ConditionLine{QStringLiteral("Or"), QStringLiteral("%to%"), QStringLiteral("<"),
                                        QStringLiteral("a&b")};
        fragment.ScriptEnabled = true;
        fragment.Script = QStringLiteral("Result = True");
        QCOMPARE(ConditionXML(fragment), QStringLiteral("<Lines>\n\t<Line>|%from%|=|bob</Line>\n"
                                                        "\t<Line>Or|%to%|&lt;|a&amp;b</Line>\n</Lines>\n"
                                                        "<ScriptEnabled>-1</ScriptEnabled>\n"
                                                        "<Script>Result = True</Script>\n"));

        const ConditionFragment read = ReadCondition(ConditionXML(fragment));
        QCOMPARE(read.Lines.size(), 2);
        QCOMPARE(read.Lines[1].Joiner, QStringLiteral("Or"));
        QCOMPARE(read.Lines[1].Operator, QStringLiteral("<"));
        QCOMPARE(read.Lines[1].RightSide, QStringLiteral("a&b"));
        QVERIFY(read.ScriptEnabled);
        QCOMPARE(read.Script, QStringLiteral("Result = True"));
    }

    void fragmentWritesAnEmptySectionAndNoDisabledScript()
    {
        ConditionFragment fragment;
        fragment.Script = QStringLiteral("ignored");
        QCOMPARE(ConditionXML(fragment), QStringLiteral("<Lines>\n</Lines>\n"));
        fragment.ScriptEnabled = true;
        fragment.Script.clear();
        QCOMPARE(ConditionXML(fragment), QStringLiteral("<Lines>\n</Lines>\n<ScriptEnabled>-1</ScriptEnabled>\n"));
    }

    void displayRunsJoinerIntoLeftSideAndColoursEachPart()
    {
        const QString condition = Fragment({"|%from%|=|bob", "And|%subject%|?|hello"});
        QCOMPARE(ConditionDisplay(condition, false, true),
                 QStringLiteral("If %from% = bob And%subject% Contains hello"));
        const QString body = (MarkedLine(QString(), "%from%", "=", "bob")
                              + MarkedLine("And", "%subject%", "Contains", "hello"))
                                 .trimmed();
        QCOMPARE(ConditionDisplay(condition, true, true), IfKeyword + body + ThenKeyword);
        QCOMPARE(ConditionDisplay(condition, true, false), IfKeyword + body);
    }

    void displayNamesOperators_data()
    {
        QTest::addColumn<QString>("op");
        QTest::addColumn<QString>("shown");
        QTest::newRow("does not contain") << "!?" << "Does Not Contain";
        QTest::newRow("blank") << "!" << "Is Blank";
        QTest::newRow("not blank") << "^" << "Not Blank";
        QTest::newRow("starts with") << "*?" << "Starts With";
        QTest::newRow("contains") << "?" << "Contains";
        QTest::newRow("stored starts-with key") << "s?" << "sContains";
        QTest::newRow("upper case key") << "S?" << "SContains";
        QTest::newRow("comparison stays") << ">=" << ">=";
    }
    void displayNamesOperators()
    {
        QFETCH(QString, op);
        QFETCH(QString, shown);
        QCOMPARE(ConditionDisplay(Fragment({"|a|" + op + "|b"}), false, false), "If a " + shown + " b");
    }

    void displayMovesLengthOperatorsIntoTheLeftSide()
    {
        QCOMPARE(ConditionDisplay(Fragment({"|%body%|len>|10"}), false, false),
                 QStringLiteral("If Len(%body%) &#62;  10"));
        QCOMPARE(ConditionDisplay(Fragment({"|%body%|LEN=|3"}), false, false), QStringLiteral("If Len(%body%) =  3"));
        QCOMPARE(ConditionDisplay(Fragment({"|%body%|len<|3"}), true, false),
                 IfKeyword + MarkedLine(QString(), "Len(%body%) &#60;", QString(), "3").trimmed());
    }

    void displayEscapesAnglesInMarkupOnly()
    {
        const QString condition = Fragment({"|a<b|<>|<c>"});
        QCOMPARE(ConditionDisplay(condition, false, false), QStringLiteral("If a<b <> <c>"));
        QCOMPARE(ConditionDisplay(condition, true, false),
                 IfKeyword + MarkedLine(QString(), "a<b", "&#60;&#62;", "&#60;c&#62;").trimmed());
    }

    void displayAddsTheScript()
    {
        const QString scriptOnly = Fragment({}, true, QStringLiteral("Result = 1"));
        QCOMPARE(ConditionDisplay(scriptOnly, false, false), QStringLiteral("If Script Returns True"));
        QCOMPARE(ConditionDisplay(scriptOnly, true, true),
                 IfKeyword + QStringLiteral("<Run Foreground='FireBrick' Text='Script Returns True'/>") + ThenKeyword);
        QCOMPARE(ConditionDisplay(Fragment({"|a|=|1"}, true, QStringLiteral("x")), false, false),
                 QStringLiteral("If a = 1  And Script Returns True"));
        QCOMPARE(ConditionDisplay(Fragment({"|a|=|1"}, true), false, false), QStringLiteral("If a = 1"));
    }

    void displayOfNothing()
    {
        QCOMPARE(ConditionDisplay(QString(), false, false), QStringLiteral("No Condition"));
        QCOMPARE(ConditionDisplay(QString(), true, true), QStringLiteral("No Condition"));
        QCOMPARE(ConditionDisplay(Fragment({}), true, true), QString());
        QCOMPARE(ConditionDisplay(Fragment({}), false, true), QString());
    }

    void displaySurvivesBadFragments_data()
    {
        QTest::addColumn<QString>("fragment");
        QTest::addColumn<QString>("shown");
        QTest::newRow("unclosed line") << "<Lines><Line>|a|=|1</Lines>" << "";
        QTest::newRow("unclosed section") << "<Lines><Line>|a|=|1</Line>" << "";
        QTest::newRow("one part") << "<Lines><Line>a</Line></Lines>" << "If a";
        QTest::newRow("five parts") << "<Lines><Line>|a|=|b|c</Line></Lines>" << "If a = b";
        QTest::newRow("nested section") << "<Lines><Lines><Line>|x|=|1</Line></Lines></Lines>" << "If x = 1";
        QTest::newRow("empty line") << "<Lines><Line></Line><Line>|x|=|1</Line></Lines>" << "If x = 1";
        QTest::newRow("plain text") << "hello" << "";
        QTest::newRow("lines outside section") << "<Line>|x|=|1</Line>" << "";
    }
    void displaySurvivesBadFragments()
    {
        QFETCH(QString, fragment);
        QFETCH(QString, shown);
        QCOMPARE(ConditionDisplay(fragment, false, false), shown);
    }

    void olderTextReadsLinesSeparatedByLineFeeds()
    {
        const QString condition = QStringLiteral("|%from%|=|bob\n\nAnd|%to%|!?|x<y");
        QCOMPARE(ConditionText(condition, false), QStringLiteral("If %from%= bob And%to%Does Not Contain x<y"));
        QCOMPARE(ConditionText(condition, true),
                 QStringLiteral("If <Run Foreground='Blue' Text='%from%'/>= <Bold>bob</Bold> And <Run "
                                "Foreground='Blue' Text='%to%'/>Does Not Contain <Bold>x&#60;y</Bold>"));
        QCOMPARE(ConditionText(QStringLiteral("|a|len>|1"), false), QStringLiteral("If alen> 1"));
    }

    void olderTextOfNothing()
    {
        QCOMPARE(ConditionText(QString(), false), QStringLiteral("No Condition"));
        QCOMPARE(ConditionText(QStringLiteral("\n\n"), true), QStringLiteral("No Condition"));
    }

    void runEscapesAndShortens()
    {
        QCOMPARE(MarkupRun(QString(), QStringLiteral("Red")), QString());
        QCOMPARE(MarkupRun(QStringLiteral("O'Brien & <Co> \"x\"\r\nnext"), QStringLiteral("MediumBlue")),
                 QStringLiteral(" <Run Foreground='MediumBlue' Text='O&apos;Brien &amp; &lt;Co&gt; &quot;x&quot; "
                                "next'/>"));
        QCOMPARE(MarkupRun(QStringLiteral("x"), QStringLiteral("Red"), true),
                 QStringLiteral(" <Bold><Run Foreground='Red' Text='x'/></Bold>"));

        const QString hundred(100, u'a');
        QCOMPARE(MarkupRun(hundred, QStringLiteral("Red")), " <Run Foreground='Red' Text='" + hundred + "'/>");
        QCOMPARE(MarkupRun(hundred + u'b', QStringLiteral("Red")),
                 " <Run Foreground='Red' Text='" + hundred + "...'/>");
        // The cut counts the escaped text.
        QCOMPARE(MarkupRun(QString(98, u'a') + u'\'', QStringLiteral("Red")),
                 " <Run Foreground='Red' Text='" + QString(98, u'a') + "&a...'/>");
    }

    void headCarriesConditionWithoutThen()
    {
        QCOMPARE(ActionDescriptionHead(QStringLiteral("Send An Email"), QString()),
                 QStringLiteral("<TextBlock VerticalAlignment='Center'><Bold>Send An Email </Bold>"));
        const QString condition = Fragment({"|a|=|1"});
        QCOMPARE(ActionDescriptionHead(QStringLiteral("Comment"), condition),
                 "<TextBlock VerticalAlignment='Center'>" + ConditionDisplay(condition, true, false)
                     + "<Bold>Comment </Bold>");
    }
};

POSTVANE_TEST(tst_Condition)
#include "tst_Condition.moc"
