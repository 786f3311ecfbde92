#pragma once
#include <QChar>
#include <QString>
#include <functional>

class QTreeWidget;
class QTreeWidgetItem;
class clsUserFolder;

// The folder trees of the user and folder editors. Each node keeps its key
// in FolderKeyRole: FolderRootKey for the root, a letter and the folder's
// ID for a folder.
inline constexpr int FolderKeyRole = Qt::UserRole + 1;
inline const QString FolderRootKey = QStringLiteral("ROOT");

// Clears Tree and fills it with a root node of RootCaption and, below it,
// the folders of the collection that Shown accepts, each under its parent,
// or under the root when its parent is not shown. The tree is expanded; the
// root is returned.
QTreeWidgetItem *FillFolderNodes(QTreeWidget *Tree, const QString &RootCaption, QChar KeyLetter,
                                 const std::function<bool(const clsUserFolder &)> &Shown);
// Makes the node of Key current; false when there is none.
bool SelectFolderNode(QTreeWidget *Tree, const QString &Key);
