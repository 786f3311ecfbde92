#include "TestRegistry.h"
#include "actions/clsActionLogical.h"
#include "actions/clsActionRaw.h"
#include "actions/colActions.h"
#include "foundation/clsXML.h"

#include <QTest>

namespace {

std::unique_ptr<ActionItem> NewAction(const QString &key, const QString &id)
{
    std::unique_ptr<ActionItem> action = colActions::NewObject(key);
    action->setID(id);
    return action;
}

// One action per key, under the IDs "1", "2", ... in order.
void Fill(colActions &list, const QStringList &keys)
{
    for (const QString &key : keys)
        list.Add(NewAction(key, QString::number(list.Count() + 1)));
}

// The IDs in list order, joined by blanks.
QString Order(const colActions &list)
{
    QStringList ids;
    for (const ActionItem *action : list)
        ids << action->ID();
    return ids.join(u' ');
}

clsAccountTrigger *FakeTrigger(int &anchor)
{
    return reinterpret_cast<clsAccountTrigger *>(&anchor);
}

} // namespace

class tst_colActions : public QObject
{
    Q_OBJECT
private slots:
    void factoryMakesLogicalActionsOfEachKey_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("className");
        QTest::newRow("logical keeps default") << "logical" << 1 << "If";
        QTest::newRow("if") << "If" << 1 << "If";
        QTest::newRow("else") << "ELSE" << 2 << "Else";
        QTest::newRow("endif") << "endif" << 3 << "EndIf";
        QTest::newRow("end") << "End" << 4 << "End";
        QTest::newRow("label") << "label" << 5 << "Label";
        QTest::newRow("goto") << "GoTo" << 6 << "GoTo";
    }
    void factoryMakesLogicalActionsOfEachKey()
    {
        QFETCH(QString, key);
        QFETCH(int, type);
        QFETCH(QString, className);
        const std::unique_ptr<ActionItem> action = colActions::NewObject(key);
        QVERIFY(action);
        QVERIFY(action->As<clsActionLogical>());
        QCOMPARE(int(action->As<clsActionLogical>()->LogicalType), type);
        QCOMPARE(action->ClassName(), className);
    }

    void factoryReadsCRMSuffixes_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("className");
        QTest::addColumn<QString>("crmType");
        QTest::newRow("no suffix") << "crmget" << "CRMGet" << "";
        QTest::newRow("dynamics") << "CRMUpdate.MSD" << "CRMUpdate" << "MSD";
        QTest::newRow("salesforce any case") << "crmattach.Sfdc" << "CRMAttach" << "SFDC";
    }
    void factoryReadsCRMSuffixes()
    {
        QFETCH(QString, key);
        QFETCH(QString, className);
        QFETCH(QString, crmType);
        const std::unique_ptr<ActionItem> action = colActions::NewObject(key);
        QVERIFY(action);
        QCOMPARE(action->ClassName(), className);
        QCOMPARE(action->As<clsActionRaw>()->CRMType, crmType);
    }

    void factoryRefusesUnknownKeys_data()
    {
        QTest::addColumn<QString>("key");
        QTest::newRow("empty") << "";
        QTest::newRow("nonsense") << "Teleport";
        QTest::newRow("class name") << "clsActionDB";
        QTest::newRow("trailing blank") << "If ";
        QTest::newRow("suffix on other kind") << "Set.MSD";
        QTest::newRow("suffix without dot") << "crmgetmsd";
        QTest::newRow("unknown suffix") << "crmget.xyz";
    }
    void factoryRefusesUnknownKeys()
    {
        QFETCH(QString, key);
        QVERIFY(!colActions::NewObject(key));
    }

    void factoryGivesEachActionItsOwnIdentity()
    {
        const std::unique_ptr<ActionItem> a = colActions::NewObject(QStringLiteral("Set"));
        QVERIFY(!a->ID().isEmpty());
        QVERIFY(a->ID() != colActions::NewObject(QStringLiteral("Set"))->ID());
    }

    void addXMLStoresUnderTheReadID()
    {
        colActions list;
        clsXML writer;
        writer.Append(QStringLiteral("Comment"), QStringLiteral("Class"));
        writer.Append(QStringLiteral("C-7"), QStringLiteral("ID"));
        writer.Append(QStringLiteral("hello"), QStringLiteral("Comment"));
        ActionItem *action = list.AddXML(writer.GetXML());
        QVERIFY(action);
        QCOMPARE(action->ID(), QStringLiteral("C-7"));
        QCOMPARE(list.Item(QStringLiteral("C-7")), action);
        QCOMPARE(list.Item(1), action);

        QVERIFY(!list.AddXML(writer.GetXML())); // the same ID again
        QCOMPARE(list.Count(), 1);
    }

    void addXMLIgnoresFragmentsWithoutAKnownClass_data()
    {
        QTest::addColumn<QString>("fragment");
        QTest::newRow("empty") << "";
        QTest::newRow("no class") << "<ID>1</ID>";
        QTest::newRow("unclosed class") << "<Class>Set<ID>1</ID>";
        QTest::newRow("close before open") << "</Class><Class>Set";
        QTest::newRow("empty class") << "<Class></Class><ID>1</ID>";
        QTest::newRow("tag in other case") << "<class>Set</class>";
        QTest::newRow("unknown class") << "<Class>Teleport</Class><ID>1</ID>";
    }
    void addXMLIgnoresFragmentsWithoutAKnownClass()
    {
        QFETCH(QString, fragment);
        colActions list;
        QVERIFY(!list.AddXML(fragment));
        QCOMPARE(list.Count(), 0);
    }

    void addXMLTakesTheFirstClassTag()
    {
        colActions list;
        ActionItem *action = list.AddXML(
            QStringLiteral("<Class>If</Class><ID>9</ID><LogicalType>1</LogicalType><Class>Set</Class>"));
        QVERIFY(action);
        QCOMPARE(action->ClassName(), QStringLiteral("If"));
    }

    // Beside an existing, trimmed ID only, and never under a taken one.
    void insertsBesideAnID()
    {
        colActions list;
        Fill(list, {"Set", "Set", "Set"});
        QVERIFY(list.AddAfter(NewAction(QStringLiteral("Comment"), QStringLiteral("x")), QStringLiteral("2")));
        QVERIFY(list.AddAfter(NewAction(QStringLiteral("Comment"), QStringLiteral("y")), QStringLiteral("3")));
        QVERIFY(list.AddBefore(NewAction(QStringLiteral("Comment"), QStringLiteral("z")), QStringLiteral(" 1 ")));
        QVERIFY(!list.AddAfter(NewAction(QStringLiteral("Comment"), QStringLiteral("v")), QStringLiteral("7")));
        QVERIFY(!list.AddBefore(NewAction(QStringLiteral("Comment"), QStringLiteral("w")), QString()));
        QVERIFY(!list.AddAfter(NewAction(QStringLiteral("Comment"), QStringLiteral("1")), QStringLiteral("2")));
        QCOMPARE(Order(list), QStringLiteral("z 1 2 x 3 y"));
        QCOMPARE(list.ActionNoFromID(QStringLiteral("x")), 4);
    }

    // Keys ignore case, IDs do not: "abc" is not the action "Abc".
    void findsSwapsAndDeletesByExactIDOrPosition()
    {
        colActions list;
        list.Add(NewAction(QStringLiteral("If"), QStringLiteral("Abc")));
        Fill(list, {"Set", "EndIf", "Set"});
        QCOMPARE(list.ActionNoFromID(QStringLiteral("  3 ")), 3);
        QCOMPARE(list.ActionNoFromID(QStringLiteral("Abc")), 1);
        QCOMPARE(list.ActionNoFromID(QStringLiteral("abc")), 0);
        QCOMPARE(list.ItemType(3), QStringLiteral("EndIf"));
        QCOMPARE(list.ItemType(0), QString());
        QCOMPARE(list.ItemType(5), QString());
        QVERIFY(!list.Item(QStringLiteral("nope")));

        list.Swap(3, 1);
        QCOMPARE(list.ItemType(1), QStringLiteral("EndIf"));
        QCOMPARE(list.ActionNoFromID(QStringLiteral("Abc")), 3);
        list.Delete(QStringLiteral("2"));
        list.Delete(1);
        list.Delete(9);
        QCOMPARE(Order(list), QStringLiteral("Abc 4"));
    }

    void emptyListAnswersDefaults()
    {
        colActions list;
        QVERIFY(list.IFBlocksClosed());
        QVERIFY(list.IFElseBlocksClosed());
        QCOMPARE(list.ActionNoFromID(QStringLiteral("1")), 0);
        QCOMPARE(list.ItemType(1), QString());
        QCOMPARE(list.IFBlockLevel(QStringLiteral("1")), 0);
        QCOMPARE(list.IFBlockID(QStringLiteral("1")), QString());
        QCOMPARE(list.HTMLForValidationID(QStringLiteral("1")), QString());
    }

    void levelsAndParentsOfNestedBlocks()
    {
        colActions list;
        Fill(list, {"If", "Set", "If", "Set", "EndIf", "Else", "EndIf", "Set"});
        const QList<int> levels{0, 1, 1, 2, 2, 1, 1, 0};
        const QStringList parents{"", "1", "1", "3", "3", "1", "1", ""};
        for (int p = 1; p <= list.Count(); ++p) {
            const QString id = QString::number(p);
            QCOMPARE(list.IFBlockLevel(id), levels[p - 1]);
            QCOMPARE(list.IFBlockID(id), parents[p - 1]);
        }
        QCOMPARE(list.IFBlockLevel(QStringLiteral("missing")), 0);
        QVERIFY(list.IFBlocksClosed());
        QVERIFY(list.IFElseBlocksClosed());
    }

    void levelNeverDropsBelowZero()
    {
        colActions list;
        Fill(list, {"EndIf", "EndIf", "If", "Set"});
        QCOMPARE(list.IFBlockLevel(QStringLiteral("3")), 0);
        QCOMPARE(list.IFBlockLevel(QStringLiteral("4")), 0);
        QCOMPARE(list.IFBlockID(QStringLiteral("4")), QString());
    }

    void closedBlocksCountIfAgainstEndIfInAnyOrder()
    {
        colActions malformed;
        Fill(malformed, {"If", "EndIf", "EndIf", "If"});
        QVERIFY(malformed.IFBlocksClosed());
        colActions open;
        Fill(open, {"If", "If", "EndIf", "Else"});
        QVERIFY(!open.IFBlocksClosed());
    }

    void elseBlocksNeedAnEndIfAtTheirLevel_data()
    {
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<bool>("closed");
        QTest::newRow("two else in one block") << QStringList{"If", "Else", "Else", "EndIf"} << false;
        QTest::newRow("nested else") << QStringList{"If", "Else", "If", "Else", "EndIf", "EndIf"} << true;
        QTest::newRow("else without end") << QStringList{"If", "Set", "Else", "Set"} << false;
        QTest::newRow("else behind its block") << QStringList{"If", "EndIf", "Else"} << false;
        QTest::newRow("end at another level") << QStringList{"If", "Else", "If", "EndIf"} << false;
        QTest::newRow("no else") << QStringList{"If", "If", "Set"} << true;
    }
    void elseBlocksNeedAnEndIfAtTheirLevel()
    {
        QFETCH(QStringList, keys);
        QFETCH(bool, closed);
        colActions list;
        Fill(list, keys);
        QCOMPARE(list.IFElseBlocksClosed(), closed);
    }

    void hasEndIfAlwaysAnswersFalse()
    {
        colActions list;
        Fill(list, {"If", "Set", "EndIf", "If"});
        for (const char *id : {"1", "2", "4", "missing"})
            QVERIFY(!list.IFBlockHasEndIf(QString::fromLatin1(id)));
    }

    void parentIsSetOnce()
    {
        int first = 0;
        int second = 0;
        colActions list;
        QVERIFY(!list.Parent());
        list.setParent(nullptr);
        list.setParent(FakeTrigger(first));
        list.setParent(FakeTrigger(second));
        QCOMPARE(list.Parent(), FakeTrigger(first));
    }

    void validationHTMLComesFromTheValidationAction()
    {
        clsXML writer;
        writer.Append(QStringLiteral("Validation"), QStringLiteral("Class"));
        writer.Append(QStringLiteral("V1"), QStringLiteral("ID"));
        writer.Append(true, QStringLiteral("Enabled"));
        writer.Append(QStringLiteral("Please confirm"), QStringLiteral("MessageText"));
        writer.Append(QStringLiteral("<p>Thanks & bye</p>"), QStringLiteral("ConfirmationHTML"));
        colActions list;
        QVERIFY(list.AddXML(writer.GetXML()));
        Fill(list, {"Set"});
        QCOMPARE(list.HTMLForValidationID(QStringLiteral("V1")), QStringLiteral("<p>Thanks & bye</p>"));
        QCOMPARE(list.HTMLForValidationID(QStringLiteral("V2")), QString());
    }
};

POSTVANE_TEST(tst_colActions)
#include "tst_colActions.moc"
