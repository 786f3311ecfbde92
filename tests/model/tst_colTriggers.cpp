#include "TestRegistry.h"
#include "model/Selection.h"
#include "model/colTriggers.h"

#include <QTest>

namespace {

std::unique_ptr<clsAccountTrigger> NewTrigger(const QString &id, const QString &name)
{
    auto t = std::make_unique<clsAccountTrigger>();
    t->TriggerID = id;
    t->Name = name;
    return t;
}

// Triggers "a", "b", "c" under the IDs "idA" to "idC", each with one field
// and one action.
void FillThree(colTriggers &triggers)
{
    for (const QString &name : {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}) {
        clsAccountTrigger *t = triggers.Add(NewTrigger(QStringLiteral("id") + name.toUpper(), name));
        auto field = std::make_unique<clsTriggerField>();
        field->Name = name + QStringLiteral("Field");
        t->FieldsToProcess().Add(std::move(field));
        t->ActionList().AddXML(QStringLiteral("<Class>Comment</Class><ID>C") + name + QStringLiteral("</ID>"));
        t->HelperMessage = QStringLiteral("sample ") + name;
    }
}

QString Names(const colTriggers &triggers)
{
    QString names;
    for (const clsAccountTrigger *t : triggers)
        names += t->Name;
    return names;
}

// Stands for the owning account, which is only ever held as a pointer here.
clsAccount *FakeAccount(int &anchor)
{
    return reinterpret_cast<clsAccount *>(&anchor);
}

} // namespace

class tst_colTriggers : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { SelectedTrigger = nullptr; }

    void addKeysByTriggerIDAndHandsOnParent()
    {
        int anchor = 0;
        colTriggers triggers;
        triggers.setParent(FakeAccount(anchor));
        FillThree(triggers);
        QCOMPARE(triggers.Item(QStringLiteral("idB"))->Name, QStringLiteral("b"));
        for (const clsAccountTrigger *t : triggers)
            QCOMPARE(t->Parent, FakeAccount(anchor));

        QVERIFY(triggers.Add(NewTrigger(QStringLiteral("idB"), QStringLiteral("again"))) == nullptr);
        QCOMPARE(Names(triggers), QStringLiteral("abc"));

        int other = 0;
        triggers.setParent(FakeAccount(other));
        QCOMPARE(triggers.Item(1)->Parent, FakeAccount(other));
        QVERIFY(triggers.Delete(QStringLiteral("idA")));
        QVERIFY(!triggers.Delete(7));
        QCOMPARE(Names(triggers), QStringLiteral("bc"));
    }

    void fragmentKeepsOrderFieldsAndActions()
    {
        colTriggers source;
        FillThree(source);
        source.Swap(1, 3);
        const QString text = source.XML();
        QVERIFY(text.startsWith(QStringLiteral("<Triggers>\n\t<Trigger>\n")));

        int anchor = 0;
        colTriggers read;
        read.setParent(FakeAccount(anchor));
        read.Add(NewTrigger(QStringLiteral("old"), QStringLiteral("replaced")));
        read.setXML(text);
        QCOMPARE(Names(read), QStringLiteral("cba"));
        QCOMPARE(read.XML(), text);
        QCOMPARE(read.Item(QStringLiteral("idA"))->FieldsToProcess().Count(), 1);
        QCOMPARE(read.Item(QStringLiteral("idA"))->ActionList().Item(1)->ID(), QStringLiteral("Ca"));
        QCOMPARE(read.Item(2)->Parent, FakeAccount(anchor));

        QVERIFY(read.AddXML(read.Item(1)->XML()) == nullptr);
        QCOMPARE(read.Count(), 3);
    }

    void conditionsOnlyIsTheShortFormOfEveryTrigger()
    {
        colTriggers source;
        FillThree(source);
        const QString text = source.XMLConditionsOnly();
        QCOMPARE(text.count(QStringLiteral("<Trigger>")), 3);
        QVERIFY(!text.contains(QStringLiteral("Trigger.Fields")));
        QVERIFY(text.contains(QStringLiteral("<FieldsList>bField</FieldsList>")));
        for (const clsAccountTrigger *t : source)
            QVERIFY(!t->JustHeaderInXML);
        QVERIFY(source.XML().contains(QStringLiteral("Trigger.Fields")));

        colTriggers read;
        read.setXMLConditionsOnly(text);
        QCOMPARE(Names(read), QStringLiteral("abc"));
        QCOMPARE(read.Item(2)->FieldsToProcess().Count(), 0);
        QCOMPARE(read.Item(2)->FieldsList(), QStringLiteral("bField"));
    }

    void namesUpdateKnownTriggersAndAddNewOnes()
    {
        int anchor = 0;
        colTriggers triggers;
        triggers.setParent(FakeAccount(anchor));
        FillThree(triggers);

        colTriggers names;
        names.Add(NewTrigger(QStringLiteral("idB"), QStringLiteral("renamed")));
        names.Add(NewTrigger(QStringLiteral("idD"), QStringLiteral("d")));
        const QString text = names.XMLNames();
        QVERIFY(text.startsWith(QStringLiteral("<TriggerNames>\n\t<TriggerSubset>\n")));
        QCOMPARE(text.count(QStringLiteral("<TriggerSubset>")), 2);

        triggers.setXMLNames(text);
        QCOMPARE(Names(triggers), QStringLiteral("arenamedcd"));
        const clsAccountTrigger *renamed = triggers.Item(QStringLiteral("idB"));
        QCOMPARE(renamed->FieldsToProcess().Count(), 1);
        QCOMPARE(renamed->ActionList().Count(), 1);
        QCOMPARE(renamed->HelperMessage, QStringLiteral("sample b"));
        const clsAccountTrigger *added = triggers.Item(4);
        QCOMPARE(added->TriggerID, QStringLiteral("idD"));
        QCOMPARE(added->Parent, FakeAccount(anchor));
        QCOMPARE(added->FieldsToProcess().Count(), 0);
        QCOMPARE(added->ActionList().Count(), 0);
        QCOMPARE(triggers.XMLNames().count(QStringLiteral("<TriggerSubset>")), 4);
    }

    void triggerNoFromIDFindsTrimmedExactID()
    {
        colTriggers triggers;
        QCOMPARE(triggers.TriggerNoFromID(QStringLiteral("idA")), 0);
        FillThree(triggers);
        QCOMPARE(triggers.TriggerNoFromID(QStringLiteral("idC")), 3);
        QCOMPARE(triggers.TriggerNoFromID(QStringLiteral("  idB\t")), 2);
        QCOMPARE(triggers.TriggerNoFromID(QStringLiteral("IDB")), 0);
        QCOMPARE(triggers.TriggerNoFromID(QString()), 0);
        triggers.Swap(1, 3);
        QCOMPARE(triggers.TriggerNoFromID(QStringLiteral("idC")), 1);
        triggers.Delete(1);
        QCOMPARE(triggers.TriggerNoFromID(QStringLiteral("idA")), 2);
    }

    void deleteCurrentMovesTheSelectionToTheLast()
    {
        colTriggers triggers;
        FillThree(triggers);
        triggers.DeleteCurrent();
        QCOMPARE(triggers.Count(), 3);

        SelectedTrigger = triggers.Item(2);
        triggers.DeleteCurrent();
        QCOMPARE(Names(triggers), QStringLiteral("ac"));
        QCOMPARE(SelectedTrigger, triggers.Item(2));
        triggers.DeleteCurrent();
        triggers.DeleteCurrent();
        QCOMPARE(triggers.Count(), 0);
        QVERIFY(SelectedTrigger == nullptr);

        colTriggers others;
        FillThree(others);
        FillThree(triggers);
        SelectedTrigger = others.Item(1);
        triggers.DeleteCurrent();
        QCOMPARE(triggers.Count(), 3);
        QCOMPARE(SelectedTrigger, others.Item(1));

        // Any other way of ending the selected trigger clears the selection.
        others.Delete(1);
        QVERIFY(SelectedTrigger == nullptr);
        SelectedTrigger = triggers.Item(3);
        triggers.setXML(QString());
        QVERIFY(SelectedTrigger == nullptr);
    }

    void receivedAfterAcrossTriggers()
    {
        const QDate today(2024, 3, 10);
        colTriggers triggers;
        QVERIFY(!triggers.ReceivedAfterReset());
        QCOMPARE(triggers.OldestReceivedAfter(today), today);
        FillThree(triggers);
        for (clsAccountTrigger *t : triggers)
            t->ReceivedAfter = QDateTime(today.addDays(5), QTime(8, 0));
        QCOMPARE(triggers.OldestReceivedAfter(today), today);
        triggers.Item(2)->ReceivedAfter = QDateTime(QDate(2023, 12, 1), QTime(23, 59));
        triggers.Item(3)->ReceivedAfter = QDateTime(QDate(2024, 1, 1), QTime(0, 1));
        QCOMPARE(triggers.OldestReceivedAfter(today), QDate(2023, 12, 1));
        QCOMPARE(triggers.OldestReceivedAfter(QDate(2020, 1, 1)), QDate(2020, 1, 1));

        QVERIFY(!triggers.ReceivedAfterReset());
        triggers.Item(3)->ReceivedAfterReset = true;
        QVERIFY(triggers.ReceivedAfterReset());
        triggers.setReceivedAfterReset(false);
        QVERIFY(!triggers.ReceivedAfterReset());
        triggers.setReceivedAfterReset(true);
        for (const clsAccountTrigger *t : triggers)
            QVERIFY(t->ReceivedAfterReset);
    }

    void badCollectionFragmentsAddWhatTheyCan_data()
    {
        QTest::addColumn<QString>("fragment");
        QTest::addColumn<QString>("names");
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("empty section") << QStringLiteral("<Triggers></Triggers>") << QString();
        QTest::newRow("unclosed trigger")
            << QStringLiteral("<Triggers><Trigger><TriggerID>1</TriggerID><TriggerName>x</TriggerName></Triggers>")
            << QString();
        QTest::newRow("repeated TriggerID")
            << QStringLiteral("<Trigger><TriggerID>1</TriggerID><TriggerName>x</TriggerName></Trigger>"
                              "<Trigger><TriggerID>1</TriggerID><TriggerName>y</TriggerName></Trigger>")
            << "x";
        QTest::newRow("nested triggers")
            << QStringLiteral("<Trigger><TriggerID>1</TriggerID><Trigger><TriggerID>2</TriggerID>"
                              "<TriggerName>in</TriggerName></Trigger><TriggerName>out</TriggerName></Trigger>")
            << "in";
        QTest::newRow("subsets are no triggers")
            << QStringLiteral("<TriggerNames><TriggerSubset><TriggerID>1</TriggerID></TriggerSubset></TriggerNames>")
            << QString();
    }

    void badCollectionFragmentsAddWhatTheyCan()
    {
        QFETCH(QString, fragment);
        QFETCH(QString, names);
        colTriggers triggers;
        FillThree(triggers);
        triggers.setXML(fragment);
        QCOMPARE(Names(triggers), names);
    }

    void badNameFragmentsChangeNothingKnown()
    {
        colTriggers triggers;
        FillThree(triggers);
        triggers.setXMLNames(QStringLiteral("<TriggerNames><TriggerSubset><TriggerName>lost"));
        triggers.setXMLNames(QStringLiteral("<Triggers><Trigger><TriggerID>idA</TriggerID></Trigger></Triggers>"));
        QCOMPARE(Names(triggers), QStringLiteral("abc"));
        QCOMPARE(triggers.Item(1)->FieldsToProcess().Count(), 1);
    }
};

POSTVANE_TEST(tst_colTriggers)
#include "tst_colTriggers.moc"
