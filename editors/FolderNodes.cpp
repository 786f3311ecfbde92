#include "FolderNodes.h"
#include "model/GlobalCollections.h"

#include <QHash>
#include <QTreeWidget>

QTreeWidgetItem *FillFolderNodes(QTreeWidget *Tree, const QString &RootCaption, QChar KeyLetter,
                                 const std::function<bool(const clsUserFolder &)> &Shown)
{
    Tree->clear();
    auto *root = new QTreeWidgetItem(Tree, {RootCaption});
    root->setData(0, FolderKeyRole, FolderRootKey);
    QHash<QString, QTreeWidgetItem *> nodes;
    QList<const clsUserFolder *> shown;
    for (const clsUserFolder *folder : UserFolders()) {
        if (!Shown(*folder))
            continue;
        auto *node = new QTreeWidgetItem({folder->Name});
        node->setData(0, FolderKeyRole, KeyLetter + folder->ID);
        nodes.insert(folder->ID, node);
        shown.append(folder);
    }
    // Parents may come after their children in the collection.
    for (const clsUserFolder *folder : shown)
        nodes.value(folder->Parent, root)->addChild(nodes.value(folder->ID));
    Tree->expandAll();
    return root;
}

bool SelectFolderNode(QTreeWidget *Tree, const QString &Key)
{
    for (QTreeWidgetItemIterator it(Tree); *it; ++it) {
        if ((*it)->data(0, FolderKeyRole).toString() == Key) {
            Tree->setCurrentItem(*it);
            return true;
        }
    }
    return false;
}
