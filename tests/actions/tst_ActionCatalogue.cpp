#include "TestRegistry.h"
#include "actions/ActionCatalogue.h"
#include "actions/colActions.h"
#include "foundation/GlobalBlock.h"

#include <QSet>
#include <QTest>

class tst_ActionCatalogue : public QObject
{
    Q_OBJECT
private slots:
    void groupsInPanelOrder()
    {
        const QList<ActionGroup> groups = ActionGroups();
        QCOMPARE(groups.size(), 14);
        QStringList open;
        for (int i = 0; i < groups.size(); ++i) {
            QCOMPARE(groups[i].Number, i + 1);
            if (groups[i].Open)
                open << groups[i].Caption;
        }
        QCOMPARE(open, QStringList({"Data", "Outgoing Messages", "Attachments", "Reporting", "Web",
                                    "Social Networks", "System", "Misc", "Logical"}));
    }

    void itemsAreUniqueAndInKnownGroups()
    {
        const QList<ActionKind> items = ActionCatalogue();
        QCOMPARE(items.size(), 56);
        QSet<int> ids;
        QSet<QString> keys;
        for (const ActionKind &item : items) {
            QVERIFY(item.Group >= 1 && item.Group <= 14);
            ids.insert(item.ItemID);
            keys.insert(item.Key.toLower());
        }
        QCOMPARE(ids.size(), items.size());
        QCOMPARE(keys.size(), items.size());
        QCOMPARE(items.first().Key, QStringLiteral("DatabaseUpdate"));
        QCOMPARE(items.last().Key, QStringLiteral("Comment"));
    }

    void captionsKeepTheirOddities()
    {
        QHash<QString, QString> captions;
        for (const ActionKind &item : ActionCatalogue())
            captions.insert(item.Key, item.Caption);
        QCOMPARE(captions.value(QStringLiteral("CRMUpdate.MSD")), QStringLiteral("Update Dynamics "));
        QCOMPARE(captions.value(QStringLiteral("CRMUpdate.SFDC")), QStringLiteral("Update SFDC "));
        QCOMPARE(captions.value(QStringLiteral("Script")), "Run An " + Global.ProductName + "Script");
    }

    void iconsFallBackToTheItemID()
    {
        QCOMPARE(ActionIcon(QStringLiteral("CSV")), 1001);
        QCOMPARE(ActionIcon(QStringLiteral("databaseupdatecustom")), 1000);
        QCOMPARE(ActionIcon(QStringLiteral("SharePointUpload")), 1250);
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
