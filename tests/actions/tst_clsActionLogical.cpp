#include "TestRegistry.h"
#include "actions/clsActionLogical.h"
#include "model/Condition.h"

#include <QTest>

namespace {

// A condition as it is held after a trigger was read: one line of markup.
const QString StoredCondition = QStringLiteral("<Lines><Line>|%total%|&gt;|100</Line></Lines>");

clsActionLogical Logical(int type, const QString &condition = QString(), const QString &label = QString())
{
    clsActionLogical action;
    action.ID = QStringLiteral("L1");
    action.LogicalType = qint16(type);
    action.Condition = condition;
    action.LabelName = label;
    return action;
}

QString Keyword(const QString &text)
{
    return QStringLiteral("<Bold><Run Foreground='DarkRed' Text='") + text + QStringLiteral("'/></Bold>");
}

} // namespace

class tst_clsActionLogical : public QObject
{
    Q_OBJECT
private slots:
    void typeDecidesClassAndDescription_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("className");
        QTest::addColumn<QString>("classDesc");
        QTest::newRow("6") << 6 << "GoTo" << "Go To Label";
        QTest::newRow("0") << 0 << "Logical" << "If Block";
        QTest::newRow("7") << 7 << "Logical" << "If Block";
    }
    void typeDecidesClassAndDescription()
    {
        QFETCH(int, type);
        QFETCH(QString, className);
        QFETCH(QString, classDesc);
        QCOMPARE(Logical(type).ClassName(), className);
        QCOMPARE(Logical(type).ClassDesc(), classDesc);
    }

    void plainLineTexts()
    {
        QCOMPARE(Logical(1, StoredCondition).LogicalTypeString(false), QStringLiteral("If %total% > 100"));
        QCOMPARE(Logical(2).LogicalTypeString(false), QStringLiteral("Else"));
        QCOMPARE(Logical(3).LogicalTypeString(false), QStringLiteral("End If"));
        QCOMPARE(Logical(4).LogicalTypeString(false), QStringLiteral("End Processing"));
        QCOMPARE(Logical(4, StoredCondition).LogicalTypeString(false),
                 QStringLiteral("If %total% > 100 End Processing"));
        QCOMPARE(Logical(5, QString(), QStringLiteral("Retry")).LogicalTypeString(false), QStringLiteral("Retry:"));
        QCOMPARE(Logical(6, QString(), QStringLiteral("Retry")).LogicalTypeString(false),
                 QStringLiteral("Go To Retry"));
        QCOMPARE(Logical(6, StoredCondition, QStringLiteral("Retry")).LogicalTypeString(false),
                 QStringLiteral("If %total% > 100 Go To Retry"));
        QCOMPARE(Logical(7, StoredCondition).LogicalTypeString(false), QString());
    }

    void markupLineTexts()
    {
        const QString condition = ConditionDisplay(StoredCondition, true, true);
        QCOMPARE(Logical(1, StoredCondition).LogicalTypeString(true), condition);
        QCOMPARE(Logical(2).LogicalTypeString(true), Keyword(QStringLiteral("Else")));
        QCOMPARE(Logical(3).LogicalTypeString(true), Keyword(QStringLiteral("End If ")));
        QCOMPARE(Logical(4, StoredCondition).LogicalTypeString(true),
                 condition + Keyword(QStringLiteral("End Processing ")));
        QCOMPARE(Logical(5, QString(), QStringLiteral("Retry")).LogicalTypeString(true),
                 QStringLiteral("<Run Foreground='DarkMagenta' Text='Retry:'/>"));
        QCOMPARE(Logical(6, QString(), QStringLiteral("Retry")).LogicalTypeString(true),
                 QStringLiteral("<Bold><Run Foreground='DarkRed' Text='Go To ' /></Bold>"
                                "<Run Foreground='DarkMagenta' Text='Retry' />"));
        QVERIFY(Logical(6, StoredCondition, QStringLiteral("Retry")).LogicalTypeString(true).startsWith(condition));
    }

    void descriptionHasNoHead()
    {
        QCOMPARE(Logical(2).ActionDescription(),
                 "<TextBlock VerticalAlignment='Center'>" + Keyword(QStringLiteral("Else")) + "</TextBlock>");
        QCOMPARE(Logical(7).ActionDescription(), QStringLiteral("<TextBlock VerticalAlignment='Center'></TextBlock>"));
    }

    void fragmentLeavesEnabledOut()
    {
        clsActionLogical action = Logical(6, StoredCondition, QStringLiteral("Retry"));
        action.Enabled = false;
        QCOMPARE(action.XML(), QStringLiteral("<Class>GoTo</Class>\n<ID>L1</ID>\n<LogicalType>6</LogicalType>\n"
                                              "<LabelName>Retry</LabelName>\n<Condition>\n\t")
                                   + StoredCondition + QStringLiteral("\n</Condition>\n"));

        clsActionLogical read;
        read.Enabled = false;
        read.setXML(action.XML());
        QVERIFY(read.Enabled);
        QCOMPARE(read.ID, QStringLiteral("L1"));
        QCOMPARE(int(read.LogicalType), 6);
        QCOMPARE(read.LabelName, QStringLiteral("Retry"));
        QCOMPARE(read.Condition, StoredCondition);
        QCOMPARE(read.XML(), action.XML());
    }

    void conditionWrittenOnSeveralLinesReadsBackTheSame()
    {
        ConditionFragment fragment;
        fragment.Lines << ConditionLine{QString(), QStringLiteral("%a%"), QStringLiteral("="), QStringLiteral("1")};
        clsActionLogical action = Logical(1, ConditionXML(fragment));
        clsActionLogical read;
        read.setXML(action.XML());
        QCOMPARE(read.LogicalTypeString(false), QStringLiteral("If %a% = 1"));
        clsActionLogical again;
        again.setXML(read.XML());
        QCOMPARE(again.XML(), read.XML());
    }

    void badFragmentsLeaveEmptyValues_data()
    {
        QTest::addColumn<QString>("fragment");
        QTest::addColumn<int>("type");
        QTest::newRow("empty") << "" << 0;
        QTest::newRow("not a number") << "<Class>If</Class><ID>1</ID><LogicalType>abc</LogicalType>" << 0;
        QTest::newRow("out of range") << "<LogicalType>99999</LogicalType>" << 0;
        QTest::newRow("unclosed") << "<Class>If</Class><ID>1</ID><LogicalType>2" << 0;
        QTest::newRow("repeated") << "<LogicalType>2</LogicalType><LogicalType>3</LogicalType>" << 2;
        QTest::newRow("type inside condition only") << "<Condition><LogicalType>5</LogicalType></Condition>" << 0;
    }
    void badFragmentsLeaveEmptyValues()
    {
        QFETCH(QString, fragment);
        QFETCH(int, type);
        clsActionLogical action = Logical(4, StoredCondition, QStringLiteral("x"));
        action.setXML(fragment);
        QCOMPARE(int(action.LogicalType), type);
        QVERIFY(action.LabelName.isEmpty());
        QVERIFY(action.Enabled);
    }
};

POSTVANE_TEST(tst_clsActionLogical)
#include "tst_clsActionLogical.moc"
