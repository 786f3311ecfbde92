#include "FieldsTree.h"

#include <QMimeData>

FieldsTree::FieldsTree(QWidget *parent) : QTreeWidget(parent)
{
    setHeaderHidden(true);
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
}

QMimeData *FieldsTree::mimeData(const QList<QTreeWidgetItem *> &Items) const
{
    if (Items.isEmpty() || !Items.first()->parent())
        return nullptr;
    auto *data = new QMimeData;
    data->setText(Items.first()->data(0, DragRole).toString());
    return data;
}

QStringList FieldsTree::mimeTypes() const
{
    return {QStringLiteral("text/plain")};
}
