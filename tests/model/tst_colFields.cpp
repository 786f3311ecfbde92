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
    void addKeysByIdRefusesDuplicatesAndHandsOnParent()
    {
        int anchor = 0;
        colFields fields;
        fields.setParent(FakeTrigger(anchor));
        FillThree(fields);
        QCOMPARE(fields.Item(QStringLiteral("id2"))->Name, QStringLiteral("b"));
        for (const clsTriggerField *f : fields)
            QCOMPARE(f->Parent, FakeTrigger(anchor));
        QVERIFY(fields.Add(NewField(QStringLiteral("id2"), QStringLiteral("again"))) == nullptr);

        clsTriggerField source;
        source.ID = QStringLiteral("X9");
        source.Name = QStringLiteral("Total");
        QCOMPARE(fields.AddXML(source.XML())->Name, QStringLiteral("Total"));
        QVERIFY(fields.AddXML(source.XML()) == nullptr);
        QCOMPARE(Names(fields), QStringLiteral("abcTotal"));

        int other = 0;
        fields.setParent(FakeTrigger(other));
        QCOMPARE(fields.Item(4)->Parent, FakeTrigger(other));
    }

    void listsJoinNamesWithoutTrailingSeparator()
    {
        colFields fields;
        QCOMPARE(fields.FieldsList(), QString());
        FillThree(fields);
        QCOMPARE(fields.FieldsList(), QStringLiteral("a\r\nb\r\nc"));
        QCOMPARE(fields.FieldsGridComboList(), QStringLiteral("%a%|%b%|%c%"));
    }

    // IDs compare exactly, names without case; both are trimmed.
    void lookUpsByIdNameAndObject()
    {
        colFields fields;
        FillThree(fields);
        fields.Item(2)->Name = QStringLiteral("OrderNo");
        QCOMPARE(fields.FieldNoFromID(QStringLiteral("  id3 ")), 3);
        QCOMPARE(fields.FieldNoFromID(QStringLiteral("ID3")), 0);
        QCOMPARE(fields.FieldNoFromID(QString()), 0);
        QCOMPARE(fields.FieldNoFromName(QStringLiteral("  ORDERNO\t")), 2);
        QCOMPARE(fields.FieldNoFromName(QStringLiteral("Order")), 0);

        QCOMPARE(fields.FieldPosition(fields.Item(2)), 2);
        const clsTriggerField lookalike = *fields.Item(2);
        QCOMPARE(fields.FieldPosition(&lookalike), 0);
        QCOMPARE(fields.FieldPosition(nullptr), 0);

        fields.Swap(3, 1);
        QCOMPARE(Names(fields), QStringLiteral("cOrderNoa"));
        QCOMPARE(fields.FieldNoFromID(QStringLiteral("id1")), 3);
        QCOMPARE(fields.Item(QStringLiteral("id3"))->Name, QStringLiteral("c"));
    }
};

POSTVANE_TEST(tst_colFields)
#include "tst_colFields.moc"
