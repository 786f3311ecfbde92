#pragma once
#include "model/Condition.h"

#include <QDialog>

class ActionItem;
class QCheckBox;
class QComboBox;
class QPushButton;
class QTableWidget;
class clsAccountTrigger;

// Edits one condition fragment: the trigger's Condition, or an action's when
// an action is given. Rows of joiner, left side, operator and right side,
// and a script that may decide instead. Cancel sets DialogCancelled.
class frmCondition : public QDialog
{
    Q_OBJECT
public:
    frmCondition(clsAccountTrigger &Trigger, ActionItem *Action, QWidget *parent = nullptr);

    clsAccountTrigger &Trigger;
    ActionItem *Action = nullptr;
    QString Script;
    bool ScriptEnabled = false;

    QTableWidget *Grid = nullptr;
    QPushButton *btnAdd = nullptr;
    QPushButton *btnDelete = nullptr;
    QPushButton *btnClear = nullptr;
    QPushButton *btnOK = nullptr;
    QPushButton *btnCancel = nullptr;
    QPushButton *btnEditScript = nullptr;
    QCheckBox *chkScriptEnabled = nullptr;

    // Object to window: rows, script and title.
    void FillCondition();
    int RowCount() const;
    ConditionLine Row(int Index) const;
    void SetRow(int Index, const ConditionLine &Line);
    // Adds a row at the end and makes it current.
    void AddRow();
    void DeleteRow();
    // Entering a row below the first with an empty joiner puts "And" in.
    void EnterRow(int Index);
    // Asks, and on Yes stores an empty condition and closes.
    void Clear();
    // Rows and script to the fragment, stored on the action or trigger.
    void Accept();
    // Closes without a change and sets DialogCancelled.
    void reject() override;
    // The fragment the window holds now.
    QString ConditionXMLText() const;

private:
    void InsertRow(int Index);
    QComboBox *Cell(int Index, int Column) const;
    void Store(const QString &Fragment);

    QStringList m_tokens;
};
