#include "TestRegistry.h"
#include "actions/clsActionComment.h"
#include "actions/clsActionPassTo.h"
#include "actions/clsActionScript.h"
#include "actions/clsActionSetVariable.h"
#include "foundation/GlobalBlock.h"

#include <QTest>

namespace {

const QString StoredCondition = QStringLiteral("<Lines><Line>|%a%|=|1</Line></Lines>");
const QString Head = QStringLiteral("<TextBlock VerticalAlignment='Center'>");

clsActionSetVariable FullSet()
{
    clsActionSetVariable action;
    action.ID = QStringLiteral("S1");
    action.Condition = StoredCondition;
    action.Name = QStringLiteral("Total");
    action.Value = QStringLiteral("%amount% <net>");
    action.Persist = true;
    action.Operation = 3;
    action.Append = true;
    action.DBLookup = true;
    action.DBConnectionString = QStringLiteral("Driver=SQLite;Pwd=secret");
    action.DBSQL = QStringLiteral("SELECT x FROM t WHERE a = '1'");
    action.DBReturnField = QStringLiteral("x");
    return action;
}

// Write, read into a fresh object, write again.
template <class Action> QString Rewritten(const Action &action)
{
    Action read;
    read.setXML(action.XML());
    return read.XML();
}

} // namespace

class tst_ValueActions : public QObject
{
    Q_OBJECT
private slots:
    void commentStoresOnlyClassIDAndText()
    {
        clsActionComment comment;
        comment.ID = QStringLiteral("C1");
        comment.Comment = QStringLiteral("Check totals");
        comment.Enabled = false;
        comment.Condition = StoredCondition;
        QCOMPARE(comment.XML(),
                 QStringLiteral("<Class>Comment</Class>\n<ID>C1</ID>\n<Comment>Check totals</Comment>\n"));

        clsActionComment read;
        read.Enabled = false;
        read.Condition = StoredCondition;
        read.setXML(comment.XML());
        QCOMPARE(read.Comment, comment.Comment);
        QVERIFY(read.Enabled);
        QVERIFY(read.Condition.isEmpty());
        QCOMPARE(read.XML(), comment.XML());
    }

    void commentDescriptionIsAGreenRun()
    {
        clsActionComment comment;
        comment.Comment = QStringLiteral("It's done");
        QCOMPARE(comment.ActionDescription(),
                 Head + QStringLiteral(" <Run Foreground='DarkGreen' Text='// It&apos;s done'/></TextBlock>"));
    }

    void setKeepsItsStoredTagsAndEnciphersTheConnection()
    {
        const clsActionSetVariable action = FullSet();
        const QString xml = action.XML();
        qsizetype last = -1; // the tags stored configurations hold, in their order
        for (const char *tag : {"Class", "ID", "Enabled", "Name", "Value", "Persist", "Operation", "Append",
                                "DBLookup", "DBConnectionString", "DBSQL", "DBReturnField", "Condition"}) {
            const qsizetype at = xml.indexOf(QStringLiteral("<%1>").arg(QString::fromLatin1(tag)));
            QVERIFY2(at > last, tag);
            last = at;
        }
        QVERIFY(xml.contains(QStringLiteral("<DBConnectionString>enc:")));
        QVERIFY(!xml.contains(QStringLiteral("secret")));
        clsActionSetVariable read;
        read.setXML(xml);
        QCOMPARE(read.XML(), xml);
        QCOMPARE(read.Value, action.Value);
        QCOMPARE(read.DBConnectionString, action.DBConnectionString);
        QCOMPARE(read.DBSQL, action.DBSQL);
        QVERIFY(read.Persist && read.Append && read.DBLookup);
        QCOMPARE(int(read.Operation), 3);
        QCOMPARE(read.Condition, StoredCondition);
    }

    void setFalseAndZeroAreLeftOutAndReadBack()
    {
        clsActionSetVariable action;
        action.Enabled = false;
        action.Name = QStringLiteral("n");
        const QString xml = action.XML();
        QVERIFY(!xml.contains(QStringLiteral("Enabled")));
        QVERIFY(!xml.contains(QStringLiteral("Operation")));
        clsActionSetVariable read;
        read.setXML(xml);
        QVERIFY(!read.Enabled);
        QCOMPARE(Rewritten(read), xml);
    }

    void setDescription()
    {
        clsActionSetVariable action;
        action.Name = QStringLiteral("Total");
        action.Value = QStringLiteral("42");
        action.Operation = 1;
        action.Append = true;
        action.Persist = true;
        QCOMPARE(action.ActionDescription(),
                 Head + QStringLiteral("<Bold>Set Variable </Bold>"
                                       " <Run Foreground='MediumBlue' Text='Total'/> = "
                                       " <Run Foreground='DodgerBlue' Text='42'/>"
                                       " <Run Foreground='Magenta' Text=' (Increment) '/>"
                                       " <Run Foreground='MediumPurple' Text=' (Append)'/>"
                                       " <Run Foreground='MediumPurple' Text=' (Persist)'/></TextBlock>"));
    }

    void setDescriptionShowsLookupInsteadOfValue()
    {
        clsActionSetVariable action = FullSet();
        action.Operation = 0;
        action.Append = false;
        action.Persist = false;
        const QString text = action.ActionDescription();
        QVERIFY(text.contains(QStringLiteral("Text='Lookup From Driver=SQLite;Pwd=secret'")));
        QVERIFY(!text.contains(QStringLiteral("%amount%")));
        QVERIFY(!text.contains(QStringLiteral("Text=' ("))); // no operation clause
        QVERIFY(action.XML().contains(QStringLiteral("<Value>%amount% &lt;net&gt;</Value>")));
    }

    void setBadFragments()
    {
        clsActionSetVariable action = FullSet();
        action.setXML(QStringLiteral("<Class>Set</Class><Name>a<Value>b</Value><Operation>x</Operation>"));
        QCOMPARE(action.Name, QString());
        QCOMPARE(action.Value, QStringLiteral("b"));
        QCOMPARE(int(action.Operation), 0);
        QVERIFY(!action.DBLookup);
        QVERIFY(action.Condition.isEmpty());

        // An own tag that is missing isn't taken from the nested condition.
        action.setXML(QStringLiteral("<Class>Set</Class><Value>b</Value><Condition><Name>inner</Name></Condition>"));
        QCOMPARE(action.Name, QString());
        QCOMPARE(action.Condition, QStringLiteral("<Name>inner</Name>"));
    }

    void passToRoundTripAndDescription()
    {
        clsActionPassTo action;
        action.ID = QStringLiteral("P1");
        action.TriggerID = QStringLiteral("T9");
        action.Value = QStringLiteral("line one\r\nline two\nthree");
        action.Condition = StoredCondition;
        QCOMPARE(action.XML().indexOf(QStringLiteral("<TriggerID>")) < action.XML().indexOf(QStringLiteral("<Value>")),
                 true);
        QCOMPARE(Rewritten(action), action.XML());

        clsActionPassTo::TriggerName = [](const QString &id) {
            return id == QStringLiteral("T9") ? QStringLiteral("Orders") : QString();
        };
        const QString text = action.ActionDescription();
        QVERIFY(text.endsWith(QStringLiteral("<Bold>Pass Value To Trigger </Bold> To "
                                             " <Run Foreground='MediumBlue' Text='Orders'/> "
                                             " <Run Foreground='DodgerBlue' Text='line one line two three'/>"
                                             "</TextBlock>")));
        action.TriggerID = QStringLiteral("gone");
        QVERIFY(!action.ActionDescription().contains(QStringLiteral("MediumBlue")));
        clsActionPassTo::TriggerName = nullptr;
    }

    void scriptRoundTripAndDescription()
    {
        clsActionScript action;
        action.ID = QStringLiteral("X1");
        action.SBScriptToRun = QStringLiteral("If a < b Then\r\n\tx = \"<Condition>\"\r\nEnd If");
        action.Condition = StoredCondition;
        clsActionScript read;
        read.setXML(action.XML());
        QCOMPARE(read.SBScriptToRun, action.SBScriptToRun);
        QCOMPARE(read.Condition, StoredCondition);
        QCOMPARE(read.XML(), action.XML());

        action.Condition.clear();
        QCOMPARE(action.ClassDesc(), "Run An " + Global.ProductName + " Script");
        QCOMPARE(action.ActionDescription(), Head + "<Bold>" + action.ClassDesc() + " </Bold></TextBlock>");
    }
};

POSTVANE_TEST(tst_ValueActions)
#include "tst_ValueActions.moc"
