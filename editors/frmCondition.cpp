#include "frmCondition.h"
#include "EditorBoxes.h"
#include "actions/ActionItem.h"
#include "foundation/GlobalBlock.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/Tokens.h"
#include "workbench/TaskDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

enum Column { ColJoiner, ColLeft, ColOperator, ColRight };

// The operator combo's pairs: key and label.
QList<QPair<QString, QString>> Operators()
{
    QList<QPair<QString, QString>> pairs;
    for (const QString &pair : ConditionOperators().split(u'|')) {
        const qsizetype split = pair.indexOf(u';');
        pairs.append({pair.mid(1, split - 1), pair.mid(split + 1)});
    }
    return pairs;
}

} // namespace

frmCondition::frmCondition(clsAccountTrigger &Trigger, ActionItem *Action, QWidget *parent)
    : QDialog(parent), Trigger(Trigger), Action(Action)
{
    setObjectName(QStringLiteral("frmCondition"));
    m_tokens = FieldTokenList(&Trigger).split(u',', Qt::SkipEmptyParts);
    Grid = new QTableWidget(0, 4, this);
    Grid->setHorizontalHeaderLabels({EditorText("CONDJOINER", "And/Or"), EditorText("CONDLEFT", "Field Or Value"),
                                     EditorText("CONDOPERATOR", "Operator"), EditorText("CONDRIGHT", "Value")});
    Grid->horizontalHeader()->setStretchLastSection(true);
    Grid->verticalHeader()->hide();
    Grid->setColumnWidth(ColJoiner, 70);
    Grid->setColumnWidth(ColLeft, 325);
    Grid->setColumnWidth(ColOperator, 170);
    Grid->setMinimumWidth(820);
    connect(Grid, &QTableWidget::currentCellChanged, this, [this](int Row) { EnterRow(Row); });

    btnAdd = new QPushButton(EditorText("ADD", "Add"), this);
    btnDelete = new QPushButton(EditorText("DELETE", "Delete"), this);
    btnClear = new QPushButton(EditorText("CLEAR", "Clear"), this);
    chkScriptEnabled = new QCheckBox(EditorText("CONDITIONSCRIPT", "Condition Script:"), this);
    btnEditScript = new QPushButton(EditorText("EDITSCRIPT", "Edit Script..."), this);
    btnOK = new QPushButton(EditorText("OK", "OK"), this);
    btnOK->setDefault(true);
    btnCancel = new QPushButton(EditorText("CANCEL", "Cancel"), this);
    connect(btnAdd, &QPushButton::clicked, this, &frmCondition::AddRow);
    connect(btnDelete, &QPushButton::clicked, this, &frmCondition::DeleteRow);
    connect(btnClear, &QPushButton::clicked, this, &frmCondition::Clear);
    connect(btnOK, &QPushButton::clicked, this, &frmCondition::Accept);
    connect(btnCancel, &QPushButton::clicked, this, &frmCondition::reject);
    connect(chkScriptEnabled, &QCheckBox::toggled, this, [this](bool On) {
        ScriptEnabled = On;
        btnEditScript->setEnabled(On);
    });
    connect(btnEditScript, &QPushButton::clicked, this, [this] {
        bool ok = false;
        const QString text = QInputDialog::getMultiLineText(this, EditorText("CONDITIONSCRIPT", "Condition Script:"),
                                                            EditorText("SCRIPTTEXT", "Script:"), Script, &ok);
        if (ok)
            Script = text;
    });

    auto *rowButtons = new QHBoxLayout;
    rowButtons->addWidget(btnAdd);
    rowButtons->addWidget(btnDelete);
    rowButtons->addWidget(btnClear);
    rowButtons->addStretch();
    rowButtons->addWidget(chkScriptEnabled);
    rowButtons->addWidget(btnEditScript);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(Grid);
    layout->addLayout(rowButtons);
    layout->addLayout(buttons);
    resize(880, 360);
}

QComboBox *frmCondition::Cell(int Index, int Column) const
{
    return qobject_cast<QComboBox *>(Grid->cellWidget(Index, Column));
}

void frmCondition::InsertRow(int Index)
{
    Grid->insertRow(Index);
    auto *joiner = new QComboBox(Grid);
    joiner->addItems({QString(), QStringLiteral("And"), QStringLiteral("Or")});
    auto *left = new QComboBox(Grid);
    left->setEditable(true);
    left->addItems(m_tokens);
    left->setCurrentIndex(-1);
    auto *op = new QComboBox(Grid);
    for (const auto &[key, label] : Operators())
        op->addItem(label, key);
    auto *right = new QComboBox(Grid);
    right->setEditable(true);
    right->addItems(m_tokens);
    right->setCurrentIndex(-1);
    Grid->setCellWidget(Index, ColJoiner, joiner);
    Grid->setCellWidget(Index, ColLeft, left);
    Grid->setCellWidget(Index, ColOperator, op);
    Grid->setCellWidget(Index, ColRight, right);
    connect(left, &QComboBox::currentTextChanged, this, [this, left](const QString &Text) {
        for (int row = 0; row < Grid->rowCount(); ++row)
            if (Cell(row, ColLeft) == left && !Text.isEmpty())
                EnterRow(row);
    });
}

int frmCondition::RowCount() const
{
    return Grid->rowCount();
}

ConditionLine frmCondition::Row(int Index) const
{
    ConditionLine line;
    line.Joiner = Cell(Index, ColJoiner)->currentText();
    line.LeftSide = Cell(Index, ColLeft)->currentText();
    line.Operator = Cell(Index, ColOperator)->currentData().toString();
    line.RightSide = Cell(Index, ColRight)->currentText();
    return line;
}

void frmCondition::SetRow(int Index, const ConditionLine &Line)
{
    while (Grid->rowCount() <= Index)
        InsertRow(Grid->rowCount());
    QComboBox *joiner = Cell(Index, ColJoiner);
    const int joinerAt = joiner->findText(Line.Joiner, Qt::MatchFixedString);
    joiner->setCurrentIndex(joinerAt < 0 ? 0 : joinerAt);
    Cell(Index, ColLeft)->setEditText(Line.LeftSide);
    QComboBox *op = Cell(Index, ColOperator);
    const int opAt = op->findData(Line.Operator);
    op->setCurrentIndex(opAt < 0 ? 0 : opAt);
    Cell(Index, ColRight)->setEditText(Line.RightSide);
}

void frmCondition::FillCondition()
{
    const ConditionFragment fragment = ReadCondition(Action ? Action->Condition() : Trigger.Condition);
    Grid->setRowCount(0);
    for (const ConditionLine &line : fragment.Lines)
        SetRow(Grid->rowCount(), line);
    ScriptEnabled = fragment.ScriptEnabled;
    Script = fragment.Script;
    chkScriptEnabled->setChecked(ScriptEnabled);
    btnEditScript->setEnabled(ScriptEnabled);
    if (Action)
        setWindowTitle(EditorText("ACTIONCONDITION", "Action Condition"));
    else
        setWindowTitle(EditorText("TRIGGERCONDITION", "Trigger Condition: ") +
                       (Trigger.Parent ? Trigger.Parent->Name : QString()) + QStringLiteral(" - ") + Trigger.Name);
    if (Grid->rowCount() == 0)
        InsertRow(0);
    Grid->setCurrentCell(0, ColLeft);
}

void frmCondition::EnterRow(int Index)
{
    if (Index < 1 || Index >= Grid->rowCount())
        return;
    QComboBox *joiner = Cell(Index, ColJoiner);
    if (joiner->currentText().isEmpty())
        joiner->setCurrentIndex(joiner->findText(QStringLiteral("And")));
}

void frmCondition::AddRow()
{
    InsertRow(Grid->rowCount());
    Grid->setCurrentCell(Grid->rowCount() - 1, ColLeft);
    EnterRow(Grid->rowCount() - 1);
}

void frmCondition::DeleteRow()
{
    const int row = Grid->currentRow();
    if (row < 0)
        return;
    Grid->removeRow(row);
    if (Grid->rowCount() == 0)
        InsertRow(0);
}

void frmCondition::Clear()
{
    if (ShowTaskDialog(this, EditorText("CLEARCONDITION1", "Clear Condition"),
                       EditorText("CLEARCONDITION2", "Are you sure you want to clear this condition?"), QString(),
                       QMessageBox::Yes | QMessageBox::No) !=
        QMessageBox::Yes)
        return;
    Store(QString());
    Global.DialogCancelled = false;
    accept();
}

QString frmCondition::ConditionXMLText() const
{
    ConditionFragment fragment;
    for (int row = 0; row < Grid->rowCount(); ++row) {
        ConditionLine line = Row(row);
        // The first row has nothing to join to.
        if (row == 0)
            line.Joiner.clear();
        fragment.Lines.append(line);
    }
    fragment.ScriptEnabled = ScriptEnabled;
    fragment.Script = Script;
    // The layout between the tags goes: a trigger stores the condition as it
    // reads it back, without it, and so the server's copy reads the same.
    static const QRegularExpression layout(QStringLiteral(">\\s+<"));
    return ConditionXML(fragment).replace(layout, QStringLiteral("><")).trimmed();
}

void frmCondition::Store(const QString &Fragment)
{
    if (Action)
        Action->setCondition(Fragment);
    else
        Trigger.Condition = Fragment;
}

void frmCondition::Accept()
{
    Store(ConditionXMLText());
    Global.DialogCancelled = false;
    accept();
}

void frmCondition::reject()
{
    Global.DialogCancelled = true;
    QDialog::reject();
}
