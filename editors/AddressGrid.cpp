#include "AddressGrid.h"
#include "EditorBoxes.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

AddressGrid::AddressGrid(const QString &Heading, QWidget *parent) : QWidget(parent), m_heading(Heading)
{
    Grid = new QTableWidget(0, 1, this);
    Grid->setObjectName(QStringLiteral("EmailGrid"));
    Grid->setHorizontalHeaderLabels({Heading});
    Grid->horizontalHeader()->setStretchLastSection(true);
    Grid->verticalHeader()->hide();
    Grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    Grid->setSelectionMode(QAbstractItemView::SingleSelection);
    Grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    btnAdd = NamedButton(QStringLiteral("Add"), "btnAdd", this);
    btnEdit = NamedButton(QStringLiteral("Edit"), "btnEdit", this);
    btnDelete = NamedButton(QStringLiteral("Delete"), "btnDelete", this);

    auto *buttons = new QVBoxLayout;
    buttons->addWidget(btnAdd);
    buttons->addWidget(btnEdit);
    buttons->addWidget(btnDelete);
    buttons->addStretch(1);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(Grid, 1);
    layout->addLayout(buttons);

    connect(btnAdd, &QPushButton::clicked, this, [this] { AskAddress(-1); });
    connect(btnEdit, &QPushButton::clicked, this, [this] {
        if (Grid->currentRow() >= 0)
            AskAddress(Grid->currentRow());
    });
    connect(btnDelete, &QPushButton::clicked, this, [this] {
        if (Grid->currentRow() < 0)
            return;
        Grid->removeRow(Grid->currentRow());
        emit Changed();
    });
}

void AddressGrid::SetAddresses(const QStringList &Addresses)
{
    Grid->setRowCount(0);
    for (const QString &address : Addresses)
        AddRow(address);
}

QStringList AddressGrid::Addresses() const
{
    QStringList addresses;
    for (int row = 0; row < Grid->rowCount(); ++row) {
        const QString text = Grid->item(row, 0) ? Grid->item(row, 0)->text().trimmed() : QString();
        if (!text.isEmpty())
            addresses << text;
    }
    return addresses;
}

void AddressGrid::AddRow(const QString &Address)
{
    Grid->insertRow(Grid->rowCount());
    Grid->setItem(Grid->rowCount() - 1, 0, new QTableWidgetItem(Address));
}

void AddressGrid::AskAddress(int Row)
{
    QTableWidgetItem *item = Row >= 0 ? Grid->item(Row, 0) : nullptr;
    bool ok = false;
    const QString address = QInputDialog::getText(this, window()->windowTitle(), m_heading, QLineEdit::Normal,
                                                  item ? item->text() : QString(), &ok)
                                .trimmed();
    if (!ok || address.isEmpty())
        return;
    if (item)
        item->setText(address);
    else
        AddRow(address);
    emit Changed();
}
