#pragma once
#include <QTreeWidget>

// The tree of insertable values beside an action's editor: its child nodes
// drag their text (DragRole) onto the editor's text boxes; the roots don't
// drag.
class FieldsTree : public QTreeWidget
{
    Q_OBJECT
public:
    static constexpr int DragRole = Qt::UserRole + 1;
    static constexpr int KeyRole = Qt::UserRole;

    explicit FieldsTree(QWidget *parent = nullptr);

protected:
    QMimeData *mimeData(const QList<QTreeWidgetItem *> &Items) const override;
    QStringList mimeTypes() const override;
};
