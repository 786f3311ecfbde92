#pragma once
#include <QDialog>

class ActionEditor;
class ActionItem;
class FieldsTree;
class QCheckBox;
class QLabel;
class QPushButton;
class QTabWidget;
class clsAccountTrigger;

// The dialog that hosts the editor control of one action: the control with
// the Enabled box on the first page, the action's condition on the second,
// the tree of insertable values at the side. OK writes Enabled and asks the
// control to Save, and closes only when it agrees; Cancel sets
// DialogCancelled.
class frmTriggerAction : public QDialog
{
    Q_OBJECT
public:
    explicit frmTriggerAction(QWidget *parent = nullptr);

    clsAccountTrigger *Trigger = nullptr;
    ActionItem *Action = nullptr;

    QTabWidget *Tabs = nullptr;
    // The kind's editor control, nullptr for a kind without one.
    ActionEditor *ActiveView = nullptr;
    QLabel *lblKept = nullptr;
    QCheckBox *chkEnabled = nullptr;
    QPushButton *btnClassImage = nullptr;
    QPushButton *btnCondition = nullptr;
    QLabel *lblCondition = nullptr;
    FieldsTree *TreeFields = nullptr;
    QPushButton *btnOK = nullptr;
    QPushButton *btnCancel = nullptr;
    QPushButton *btnHelp = nullptr;

    // Everything ShowForm does before it shows the dialog.
    void Prepare();
    // Prepare, then modal; the result of exec.
    int ShowForm();
    void FillFieldsTree();
    void ShowCondition();
    void Accept();
    void reject() override;

protected:
    void done(int Result) override;

private:
    void EditCondition();
    QString SettingKey(const char *Name) const;
};
