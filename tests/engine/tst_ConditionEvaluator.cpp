#include "TestRegistry.h"
#include "engine/processor/ConditionEvaluator.h"
#include "model/Condition.h"
#include "store/clsMessage.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString Fragment(const QList<ConditionLine> &Lines, const QString &Script = QString())
{
    ConditionFragment condition;
    condition.Lines = Lines;
    condition.ScriptEnabled = !Script.isEmpty();
    condition.Script = Script;
    return ConditionXML(condition);
}

} // namespace

// Conditions of triggers and actions as the processor evaluates them.
class tst_ConditionEvaluator : public QObject
{
    Q_OBJECT

private slots:
    void init() { ReplaceCurrentMessage(nullptr); }

    void everyOperatorCompares_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("op");
        QTest::addColumn<QString>("right");
        QTest::addColumn<bool>("holds");
        QTest::newRow("= text ignores case") << u"Apple"_s << u"="_s << u"apple"_s << true;
        QTest::newRow("= numbers as numbers") << u"5.0"_s << u"="_s << u"5"_s << true;
        QTest::newRow("<> text") << u"a"_s << u"<>"_s << u"b"_s << true;
        QTest::newRow("<> same number") << u"007"_s << u"<>"_s << u"7"_s << false;
        QTest::newRow("< numbers, not text") << u"9"_s << u"<"_s << u"10"_s << true;
        QTest::newRow("< text when one side is no number") << u"9"_s << u"<"_s << u"10a"_s << false;
        QTest::newRow("> numbers") << u"-1"_s << u">"_s << u"-2"_s << true;
        QTest::newRow("<= equal") << u"3"_s << u"<="_s << u"3"_s << true;
        QTest::newRow(">= text") << u"b"_s << u">="_s << u"A"_s << true;
        QTest::newRow("! blank") << u"  "_s << u"!"_s << QString() << true;
        QTest::newRow("! not blank") << u"x"_s << u"!"_s << QString() << false;
        QTest::newRow("^ not blank") << u"x"_s << u"^"_s << QString() << true;
        QTest::newRow("? contains, any case") << u"Order Form"_s << u"?"_s << u"FORM"_s << true;
        QTest::newRow("!? does not contain") << u"Order Form"_s << u"!?"_s << u"invoice"_s << true;
        QTest::newRow("s? starts with") << u"Invoice 12"_s << u"s?"_s << u"inv"_s << true;
        QTest::newRow("s? not at the start") << u"My Invoice"_s << u"s?"_s << u"inv"_s << false;
        QTest::newRow("len=") << u"abcd"_s << u"len="_s << u"4"_s << true;
        QTest::newRow("len<") << u"abcd"_s << u"len<"_s << u"4"_s << false;
        QTest::newRow("len>") << u"abcd"_s << u"len>"_s << u"3"_s << true;
        QTest::newRow("len with no number") << u"abcd"_s << u"len="_s << u"four"_s << false;
    }
    void everyOperatorCompares()
    {
        QFETCH(QString, left);
        QFETCH(QString, op);
        QFETCH(QString, right);
        QFETCH(bool, holds);
        const auto result = ConditionEvaluator::Evaluate(Fragment({{QString(), left, op, right}}));
        QVERIFY(result.Problem.isEmpty());
        QCOMPARE(result.Holds, holds);
    }

    void joinersApplyInWrittenOrder()
    {
        // true Or false And false: left to right gives false; with And
        // binding first it would be true.
        const QString fragment
            = Fragment({{QString(), u"1"_s, u"="_s, u"1"_s}, {u"Or"_s, u"1"_s, u"="_s, u"2"_s}, {u"And"_s, u"1"_s, u"="_s, u"3"_s}});
        QVERIFY(!ConditionEvaluator::Evaluate(fragment).Holds);
        QVERIFY(ConditionEvaluator::Evaluate(Fragment({{QString(), u"1"_s, u"="_s, u"2"_s}, {u"Or"_s, u"a"_s, u"="_s, u"A"_s}}))
                    .Holds);
    }

    void tokensExpandOnBothSides()
    {
        clsMessage &message = CurrentMessage();
        message.Subject = u"Order 17"_s;
        message.From = u"ann@example.com"_s;
        QVERIFY(ConditionEvaluator::Evaluate(Fragment({{QString(), u"%msg_subject%"_s, u"?"_s, u"17"_s}})).Holds);
        QVERIFY(ConditionEvaluator::Evaluate(Fragment({{QString(), u"ann@example.com"_s, u"="_s, u"%msg_from%"_s}})).Holds);
        QVERIFY(!ConditionEvaluator::Evaluate(Fragment({{QString(), u"%msg_subject%"_s, u"s?"_s, u"17"_s}})).Holds);
    }

    void emptyConditionsHoldAndScriptsCannotRun()
    {
        QVERIFY(ConditionEvaluator::Evaluate(QString()).Holds);
        QVERIFY(ConditionEvaluator::Evaluate(Fragment({})).Holds);
        const auto scripted = ConditionEvaluator::Evaluate(Fragment({}, u"Main = True"_s));
        QVERIFY(!scripted.Holds);
        QVERIFY(scripted.Problem.contains(u"script"_s));
        const auto unknown = ConditionEvaluator::Evaluate(Fragment({{QString(), u"a"_s, u"~"_s, u"a"_s}}));
        QVERIFY(!unknown.Holds);
        QVERIFY(unknown.Problem.contains(u"~"_s));
    }
};

POSTVANE_TEST(tst_ConditionEvaluator)
#include "tst_ConditionEvaluator.moc"
