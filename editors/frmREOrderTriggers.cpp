#include "frmREOrderTriggers.h"
#include "EditorBoxes.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "session/Requests.h"
#include "workbench/ServerCommand.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

frmREOrderTriggers::frmREOrderTriggers(clsAccount &Account, QWidget *parent) : QDialog(parent), Account(Account)
{
    setObjectName(QStringLiteral("frmREOrderTriggers"));
    setWindowTitle(EditorText("REORDERTITLE", "Order Triggers") + QStringLiteral(": ") + Account.Name);
    Grid = new QTableWidget(0, 2, this);
    QStringList head;
    for (QString column : EditorText("GRIDREORDER", ">Order| Trigger").split(u'|'))
        head << column.remove(u'>').trimmed();
    Grid->setHorizontalHeaderLabels(head);
    Grid->horizontalHeader()->setStretchLastSection(true);
    Grid->verticalHeader()->hide();
    Grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    Grid->setSelectionMode(QAbstractItemView::SingleSelection);
    Grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    btnUp = new QPushButton(EditorText("MOVEUP", "Move &Up"), this);
    btnDown = new QPushButton(EditorText("MOVEDOWN", "Move &Down"), this);
    btnOK = new QPushButton(EditorText("OK", "OK"), this);
    btnOK->setDefault(true);
    connect(btnUp, &QPushButton::clicked, this, [this] { MoveUp(Grid->currentRow()); });
    connect(btnDown, &QPushButton::clicked, this, [this] { MoveDown(Grid->currentRow()); });
    connect(btnOK, &QPushButton::clicked, this, &QDialog::accept);
    auto *side = new QVBoxLayout;
    side->addWidget(btnUp);
    side->addWidget(btnDown);
    side->addStretch();
    side->addWidget(btnOK);
    auto *layout = new QHBoxLayout(this);
    layout->addWidget(Grid);
    layout->addLayout(side);
    resize(480, 360);
    FillGrid(0);
}

void frmREOrderTriggers::FillGrid(int Selected)
{
    Grid->setRowCount(Account.Triggers.Count());
    for (int row = 0; row < Account.Triggers.Count(); ++row) {
        const clsAccountTrigger *trigger = Account.Triggers.Item(row + 1);
        Grid->setItem(row, 0, new QTableWidgetItem(QString::number(row + 1)));
        Grid->setItem(row, 1, new QTableWidgetItem(trigger->Name));
    }
    Grid->resizeColumnToContents(0);
    if (Selected >= 0 && Selected < Grid->rowCount())
        Grid->selectRow(Selected);
}

bool frmREOrderTriggers::MoveUp(int Row)
{
    return Row > 0 && Swap(Row, Row - 1);
}

bool frmREOrderTriggers::MoveDown(int Row)
{
    return Row >= 0 && Row < Account.Triggers.Count() - 1 && Swap(Row, Row + 1);
}

bool frmREOrderTriggers::Swap(int Row, int Other)
{
    const clsAccountTrigger *first = Account.Triggers.Item(Row + 1);
    const clsAccountTrigger *second = Account.Triggers.Item(Other + 1);
    if (!first || !second ||
        !ServerCommand(Requests::SwapTrigger(Account.AccountID, first->TriggerID, second->TriggerID)))
        return false;
    Account.Triggers.Swap(Row + 1, Other + 1);
    FillGrid(Other);
    return true;
}
