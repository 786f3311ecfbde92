#pragma once
#include <QTimer>
#include <QWidget>

#include <memory>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;
class QTableWidget;
class QTreeWidget;
class QTreeWidgetItem;
class clsAccount;
class clsAccountTrigger;
class clsTriggerField;

// The window in which one trigger is edited: its conditions, extracted
// fields, actions, active hours, target folder and notes. Fields and actions
// go straight into the live trigger; the other controls are copied into it
// on save, which posts the whole fragment to the server.
class frmTrigger : public QWidget
{
    Q_OBJECT
public:
    // Tabs, in their order.
    enum Tab { TabGeneral, TabFields, TabActions, TabSchedule, TabSaveTo, TabNotes };

    // IsNew: the trigger isn't in the account's collection yet; the window
    // then owns it until it is saved.
    frmTrigger(clsAccount &Account, clsAccountTrigger &Trigger, bool IsNew, QWidget *parent = nullptr);
    ~frmTrigger() override;

    clsAccount &Account;
    clsAccountTrigger &Trigger;
    bool IsNew = false;
    bool Dirty = false;
    // ID of the selected action.
    QString SelectedActionID;

    QTabWidget *Tabs = nullptr;
    // General
    QLineEdit *txtName = nullptr;
    QLineEdit *txtFrom = nullptr;
    QTableWidget *WordsGrid = nullptr;
    QPushButton *btnContains = nullptr;
    QPushButton *btnCheckBodyAlso = nullptr;
    QComboBox *cmboImportant = nullptr;
    QComboBox *cmboSensitivity = nullptr;
    QDateEdit *txtReceivedDate = nullptr;
    QPushButton *btnCondition = nullptr;
    QLabel *lblCondition = nullptr;
    QCheckBox *chkScriptEnabled = nullptr;
    QPushButton *btnEditScript = nullptr;
    QComboBox *cmboThenProcess = nullptr;
    QComboBox *cmboThenProcessTrigger = nullptr;
    // Extracted Fields
    QTableWidget *FieldsGrid = nullptr;
    // Actions
    QTreeWidget *ActionsPanel = nullptr;
    QTreeWidget *ReportActions = nullptr;
    QTimer AddActionTimer;
    // Schedule
    QTableWidget *GridSchedule = nullptr;
    QTableWidget *GridKey = nullptr;
    // Save To
    QTreeWidget *FolderTree = nullptr;
    // Notes
    QPlainTextEdit *txtDetails = nullptr;
    QPushButton *btnOK = nullptr;
    QPushButton *btnCancel = nullptr;

    int SelectedTab() const;
    void setSelectedTab(int Tab);

    // Object to controls.
    void UnCrunch();
    // The first failed check says why in a warning box; true when all pass.
    bool ValidateControls();
    // Controls to object, in the order the fragment is built.
    void ReadControls();
    // Validates, stores, posts. False when a check failed or the post did.
    bool ButtonOK();
    // Asks to save when changed; false when the answer was Cancel.
    bool ButtonCancel();
    // With the dirty flag set, asks "Save Changes?": Yes saves (Saved tells
    // whether it did), No drops the changes; false for Cancel.
    bool SaveChanges(bool *Saved = nullptr);

    // Field list commands.
    void ShowFieldForm(bool New, bool Lookup = false);
    void MoveUp();
    void MoveDown();
    void DeleteField();
    void FillFields();

    // Action list commands. CreateAction returns the new action's ID, empty
    // when it was refused.
    QString CreateAction(const QString &Kind, const QString &AfterID = QString(), const QString &Defaults = QString());
    void ShowActionForm(const QString &ID, bool New);
    void MoveActionUp();
    void MoveActionDown();
    void CopyAction();
    void PasteAction();
    void DeleteAction();
    void FillActions();

    // The condition label from the trigger's condition.
    void ShowCondition();

    // Whether the schedule cell of a day (1 Sunday to 7) and hour is active.
    bool ScheduleActive(int Day, int Hour) const;
    void setScheduleActive(int Day, int Hour, bool Active);

    // A new trigger that the window keeps until it is saved into the account.
    void AdoptNewTrigger(std::unique_ptr<clsAccountTrigger> NewTrigger);

signals:
    // The trigger was stored and posted: the navigator and list refresh and
    // select it.
    void TriggerSaved(const QString &TriggerID);

protected:
    void closeEvent(QCloseEvent *event) override;
    // Drops from the catalogue on the action list.
    bool eventFilter(QObject *Watched, QEvent *Event) override;

private:
    QWidget *MakeGeneralTab();
    QWidget *MakeFieldsTab();
    QWidget *MakeActionsTab();
    QWidget *MakeScheduleTab();
    QWidget *MakeSaveToTab();
    QWidget *MakeNotesTab();
    void FillWords();
    void FillSchedule();
    void FillFolders();
    void FillThenProcess();
    void ShowToggleCaptions();
    void MarkDirty();
    int SelectedFieldRow() const;
    clsTriggerField *SelectedField() const;
    int SelectedActionPosition() const;
    void SelectAction(const QString &ID);
    void EditCondition();
    void EditScript();
    // Runs CreateAction for the kind dropped, after the drop event ends.
    void CreateDroppedAction();

    bool m_containsAll = false;
    bool m_checkBody = false;
    bool m_filling = false;
    QString m_droppedKind;
    QString m_droppedAfter;
    // A new trigger until it is added to the account.
    std::unique_ptr<clsAccountTrigger> m_newTrigger;

};

// Opens the trigger editor of an account's trigger as a window of its own;
// a null trigger edits a new one. The window deletes itself when closed.
frmTrigger *ShowTriggerEditor(clsAccount &Account, clsAccountTrigger *Trigger, QWidget *Parent = nullptr);
// The same window, not shown yet: for the main window, which shows it.
frmTrigger *NewTriggerEditor(clsAccount &Account, clsAccountTrigger *Trigger, QWidget *Parent = nullptr);
