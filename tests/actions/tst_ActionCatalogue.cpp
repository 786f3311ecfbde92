#include "TestRegistry.h"
#include "actions/ActionCatalogue.h"
#include "actions/colActions.h"

#include <QSet>
#include <QTest>

class tst_ActionCatalogue : public QObject
{
    Q_OBJECT
private slots:
    // Groups are numbered in panel order; every item sits in one of them
    // under an ID and a key of its own.
    void itemsAreUniqueAndInKnownGroups()
    {
        const QList<ActionGroup> groups = ActionGroups();
        for (int i = 0; i < groups.size(); ++i)
            QCOMPARE(groups[i].Number, i + 1);
        const QList<ActionKind> items = ActionCatalogue();
        QSet<int> ids;
        QSet<QString> keys;
        for (const ActionKind &item : items) {
            QVERIFY(item.Group >= 1 && item.Group <= groups.size());
            ids.insert(item.ItemID);
            keys.insert(item.Key.toLower());
        }
        QCOMPARE(ids.size(), items.size());
        QCOMPARE(keys.size(), items.size());
    }

    void iconsFallBackToTheItemID()
    {
        QCOMPARE(ActionIcon(QStringLiteral("databaseupdatecustom")), 1000);
        QCOMPARE(ActionIcon(QStringLiteral("CRMAttach.MSD")), 1203);
        QCOMPARE(ActionIcon(QStringLiteral("CRMGet")), 0);
        QCOMPARE(ActionIcon(QStringLiteral("Amazon")), 0);
    }

    // What the object carries must be what the panel promises for its key.
    void factoryMakesEveryKindWithItsNameAndDescription()
    {
        QList<ActionKind> kinds = ActionCatalogue();
        kinds += ActionHiddenKinds();
        for (const ActionKind &kind : kinds) {
            const std::unique_ptr<ActionItem> action = colActions::NewObject(kind.Key);
            QVERIFY2(action, qPrintable(kind.Key));
            QCOMPARE(action->ClassName(), kind.Key.section(u'.', 0, 0));
            QCOMPARE(action->ClassDesc(), kind.ClassDesc);
            QVERIFY(colActions::NewObject(kind.Key.toUpper()));
        }
    }
};

POSTVANE_TEST(tst_ActionCatalogue)
#include "tst_ActionCatalogue.moc"
