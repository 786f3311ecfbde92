#include "TestRegistry.h"
#include "model/colFields.h"

#include <QTest>

namespace {

std::unique_ptr<clsTriggerField> NewField(const QString &id, const QString &name)
{
    auto f = std::make_unique<clsTriggerField>();
    f->ID = id;
    f->Name = name;
    return f;
}

// Three fields "a", "b", "c" under the IDs "id1" to "id3".
void FillThree(colFields &fields)
{
    fields.Add(NewField(QStringLiteral("id1"), QStringLiteral("a")));
    fields.Add(NewField(QStringLiteral("id2"), QStringLiteral("b")));
    fields.Add(NewField(QStringLiteral("id3"), QStringLiteral("c")));
}

QString Names(const colFields &fields)
{
    QString names;
    for (const clsTriggerField *f : fields)
        names += f->Name;
    return names;
}

// Stands for the owning trigger, which is only ever held as a pointer here.
clsAccountTrigger *FakeTrigger(int &anchor)
{
    return reinterpret_cast<clsAccountTrigger *>(&anchor);
}

} // namespace

class tst_colFields : public QObject
{
    Q_OBJECT
private slots:
    void addKeysByIdAndHandsOnParent()
    {
        int anchor = 0;
        colFields fields;
        fields.setParent(FakeTrigger(anchor));
        FillThree(fields);
        QCOMPARE(fields.Count(), 3);
        QCOMPARE(fields.Item(QStringLiteral("id2"))->Name, QStringLiteral("b"));
        QCOMPARE(fields.Item(3)->Name, QStringLiteral("c"));
        QVERIFY(fields.Item(4) == nullptr);
        for (const clsTriggerField *f : fields)
            QCOMPARE(f->Parent, FakeTrigger(anchor));

        QVERIFY(fields.Add(NewField(QStringLiteral("id2"), QStringLiteral("again"))) == nullptr);
        QCOMPARE(fields.Count(), 3);

        int other = 0;
        fields.setParent(FakeTrigger(other));
        QCOMPARE(fields.Item(1)->Parent, FakeTrigger(other));
    }

    void addXmlReadsTheFieldFirst()
    {
        colFields fields;
        clsTriggerField source;
        source.ID = QStringLiteral("X9");
        source.Name = QStringLiteral("Total");
        clsTriggerField *added = fields.AddXML(source.XML());
        QVERIFY(added != nullptr);
        QCOMPARE(fields.FieldNoFromID(QStringLiteral("X9")), 1);
        QCOMPARE(added->Name, QStringLiteral("Total"));
        QVERIFY(fields.AddXML(source.XML()) == nullptr);
        QCOMPARE(fields.Count(), 1);
    }

    void listsJoinNamesWithoutTrailingSeparator()
    {
        colFields fields;
        QCOMPARE(fields.FieldsList(), QString());
        QCOMPARE(fields.FieldsGridComboList(), QString());
        FillThree(fields);
        QCOMPARE(fields.FieldsList(), QStringLiteral("a\r\nb\r\nc"));
        QCOMPARE(fields.FieldsGridComboList(), QStringLiteral("%a%|%b%|%c%"));
    }

    void fieldNoFromIdIsTrimmedAndExact()
    {
        colFields fields;
        FillThree(fields);
        QCOMPARE(fields.FieldNoFromID(QStringLiteral("  id3 ")), 3);
        QCOMPARE(fields.FieldNoFromID(QStringLiteral("ID3")), 0);
        QCOMPARE(fields.FieldNoFromID(QStringLiteral("id4")), 0);
        QCOMPARE(fields.FieldNoFromID(QString()), 0);
    }

    void fieldNoFromNameIgnoresCaseAndTrimsArgument()
    {
        colFields fields;
        fields.Add(NewField(QStringLiteral("id1"), QStringLiteral("Customer")));
        fields.Add(NewField(QStringLiteral("id2"), QStringLiteral("OrderNo")));
        QCOMPARE(fields.FieldNoFromName(QStringLiteral("orderno")), 2);
        QCOMPARE(fields.FieldNoFromName(QStringLiteral("  ORDERNO\t")), 2);
        QCOMPARE(fields.FieldNoFromName(QStringLiteral("Order No")), 0);
        QCOMPARE(fields.FieldNoFromName(QStringLiteral("Order")), 0);
    }

    void fieldPositionIsByObject()
    {
        colFields fields;
        FillThree(fields);
        QCOMPARE(fields.FieldPosition(fields.Item(2)), 2);

        clsTriggerField lookalike = *fields.Item(2);
        QCOMPARE(fields.FieldPosition(&lookalike), 0);
        const clsTriggerField fresh;
        QCOMPARE(fields.FieldPosition(&fresh), 0);
        QCOMPARE(fields.FieldPosition(nullptr), 0);
    }

    void swapExchangesAndKeepsKeys()
    {
        colFields fields;
        FillThree(fields);
        fields.Swap(3, 1);
        QCOMPARE(Names(fields), QStringLiteral("cba"));
        QCOMPARE(fields.FieldNoFromID(QStringLiteral("id1")), 3);
        QCOMPARE(fields.Item(QStringLiteral("id3"))->Name, QStringLiteral("c"));
        fields.Swap(1, 2);
        QCOMPARE(Names(fields), QStringLiteral("bca"));
    }

    void swapOutOfRangeChangesNothing_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("y");
        QTest::newRow("same") << 2 << 2;
        QTest::newRow("beyond count") << 1 << 9;
        QTest::newRow("first beyond") << 4 << 1;
        QTest::newRow("negative") << -1 << 2;
        QTest::newRow("zero") << 0 << 3;
    }

    void swapOutOfRangeChangesNothing()
    {
        QFETCH(int, x);
        QFETCH(int, y);
        colFields fields;
        FillThree(fields);
        fields.Swap(x, y);
        QCOMPARE(Names(fields), QStringLiteral("abc"));
        QCOMPARE(fields.FieldNoFromID(QStringLiteral("id3")), 3);
    }
};

POSTVANE_TEST(tst_colFields)
#include "tst_colFields.moc"
