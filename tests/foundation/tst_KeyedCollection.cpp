#include "TestRegistry.h"
#include "foundation/KeyedCollection.h"

#include <QTest>

namespace {
struct Item
{
    QString name;
};

QString Names(const KeyedCollection<Item> &items)
{
    QStringList names;
    for (Item *item : items)
        names << item->name;
    return names.join(u',');
}

KeyedCollection<Item> Abc()
{
    KeyedCollection<Item> items;
    for (const char *name : {"a", "b", "c"})
        items.Add(std::make_unique<Item>(Item{QString::fromLatin1(name)}), QStringLiteral("K") + QString::fromLatin1(name));
    return items;
}
} // namespace

class tst_KeyedCollection : public QObject
{
    Q_OBJECT
private slots:
    void keysIgnoreCaseAndStayUnique()
    {
        KeyedCollection<Item> items = Abc();
        QCOMPARE(items.Item(QStringLiteral("kB"))->name, QStringLiteral("b"));
        QCOMPARE(items.IndexOf(QStringLiteral("KC")), 3);
        QCOMPARE(items.IndexOf(QStringLiteral("nope")), 0);
        QVERIFY(!items.Add(std::make_unique<Item>(Item{QStringLiteral("dup")}), QStringLiteral("ka")));
        QCOMPARE(items.Count(), 3);
        QVERIFY(!items.Item(0));
        QVERIFY(!items.Item(4));
    }

    void insertDeleteAndTakeKeepKeysInStep()
    {
        KeyedCollection<Item> items = Abc();
        items.Add(std::make_unique<Item>(Item{QStringLiteral("x")}), QStringLiteral("Kx"), 2);
        QCOMPARE(Names(items), QStringLiteral("a,x,b,c"));
        QCOMPARE(items.IndexOf(QStringLiteral("kc")), 4);
        QVERIFY(items.Delete(QStringLiteral("ka")));
        QCOMPARE(items.IndexOf(QStringLiteral("kc")), 3);
        std::unique_ptr<Item> taken = items.Take(1);
        QCOMPARE(taken->name, QStringLiteral("x"));
        QVERIFY(!items.Contains(QStringLiteral("kx")));
        QCOMPARE(Names(items), QStringLiteral("b,c"));
        QVERIFY(!items.Delete(7));
    }

    // The table grows and is rebuilt as keys come and go; every key stays
    // found at its position, whatever its case, ASCII or not.
    void manyKeysStayFoundThroughGrowthAndRemoval()
    {
        KeyedCollection<Item> items;
        for (int i = 0; i < 1000; ++i)
            items.Add(std::make_unique<Item>(Item{QString::number(i)}), QStringLiteral("Key%1").arg(i));
        items.Add(std::make_unique<Item>(Item{QStringLiteral("umlaut")}), QStringLiteral("ÄRGER"));
        items.Add(std::make_unique<Item>(Item{QStringLiteral("unkeyed")}));
        QCOMPARE(items.Count(), 1002);
        for (int i = 0; i < 1000; i += 37)
            QCOMPARE(items.IndexOf(QStringLiteral("kEY%1").arg(i)), i + 1);
        QCOMPARE(items.Item(QStringLiteral("ärger"))->name, QStringLiteral("umlaut"));
        QVERIFY(!items.Add(std::make_unique<Item>(Item{QStringLiteral("dup")}), QStringLiteral("Ärger")));
        QVERIFY(!items.Contains(QStringLiteral("Key1000")));
        QVERIFY(!items.Contains(QString()));

        for (int i = 0; i < 500; ++i)
            QVERIFY(items.Delete(QStringLiteral("KEY%1").arg(i * 2)));
        QCOMPARE(items.Count(), 502);
        QVERIFY(!items.Contains(QStringLiteral("key0")));
        QCOMPARE(items.IndexOf(QStringLiteral("key999")), 500);
        QCOMPARE(items.IndexOf(QStringLiteral("ärger")), 501);
        QCOMPARE(items.Item(502)->name, QStringLiteral("unkeyed"));
        items.Clear();
        QVERIFY(!items.Contains(QStringLiteral("key1")));
        items.Add(std::make_unique<Item>(Item{QStringLiteral("again")}), QStringLiteral("key1"));
        QCOMPARE(items.IndexOf(QStringLiteral("KEY1")), 1);
    }

    void swapExchangesWithinRangeOnly()
    {
        KeyedCollection<Item> items = Abc();
        items.Swap(3, 1);
        QCOMPARE(Names(items), QStringLiteral("c,b,a"));
        QCOMPARE(items.Item(QStringLiteral("ka"))->name, QStringLiteral("a"));
        QCOMPARE(items.IndexOf(QStringLiteral("ka")), 3);
        for (auto [x, y] : {std::pair{2, 2}, {-1, 2}, {0, 1}, {1, 4}})
            items.Swap(x, y);
        QCOMPARE(Names(items), QStringLiteral("c,b,a"));
    }
};

POSTVANE_TEST(tst_KeyedCollection)
#include "tst_KeyedCollection.moc"
