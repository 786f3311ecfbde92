#pragma once
#include "model/clsFieldExtractor.h"

#include <QDialog>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;
class QTabWidget;
class clsAccountTrigger;
class clsTriggerField;

// Edits one extracted field of a trigger, and shows at every change what the
// settings extract from the trigger's sample message, with the same
// extraction the server runs. A lookup field (Lookup set) shows its
// connection and statement in place of the search.
class frmField : public QDialog
{
    Q_OBJECT
public:
    enum Tab { TabGeneral, TabExtract, TabAttributes, TabDatabase, TabPassTo };

    // IsNew: the field isn't in the trigger yet; the caller adds it on
    // Accepted.
    frmField(clsAccountTrigger &Trigger, clsTriggerField &Field, bool IsNew, QWidget *parent = nullptr);

    clsAccountTrigger &Trigger;
    clsTriggerField &Field;
    bool IsNew = false;
    // Set by btnSaveNew: the caller opens the editor again on a new field.
    bool SaveAndNew = false;
    // The extraction of the last preview.
    clsFieldExtractor Extractor;
    QList<clsFieldExtractor::FoundValue> Found;

    QTabWidget *Tabs = nullptr;
    // General
    QLineEdit *txtName = nullptr;
    QCheckBox *chkEnabled = nullptr;
    QRadioButton *optFindField = nullptr;
    QRadioButton *optBuiltIn = nullptr;
    QComboBox *cmboBuiltIn = nullptr;
    QLineEdit *txtLookFor = nullptr;
    QLineEdit *txtThenLookFor = nullptr;
    QCheckBox *chkSubject = nullptr;
    QCheckBox *chkStartFromLast = nullptr;
    QCheckBox *chkCase = nullptr;
    QCheckBox *chkBlock = nullptr;
    QPushButton *btnRegHelp = nullptr;
    QLineEdit *txtSubject = nullptr;
    QPlainTextEdit *txtHelper = nullptr;
    QLabel *lblPreview = nullptr;
    // Lookup variant
    QGroupBox *GroupLookup = nullptr;
    QLineEdit *txtLUConnection = nullptr;
    QPlainTextEdit *txtLUSQL = nullptr;
    QLineEdit *txtLUField = nullptr;
    QCheckBox *chkLookupCancelOnFail = nullptr;
    QPushButton *btnLUTest = nullptr;
    QPushButton *btnEditSQL = nullptr;
    QPushButton *btnInternalDB = nullptr;
    // Extract Data
    QList<QRadioButton *> optUntil;
    QButtonGroup *UntilGroup = nullptr;
    QLineEdit *txtUntilChars = nullptr;
    QSpinBox *txtUntilNumber = nullptr;
    QLineEdit *txtUntilWords = nullptr;
    QCheckBox *chkTrim = nullptr;
    QSpinBox *txtRemoveFirstXChars = nullptr;
    QSpinBox *txtRemoveLastXChars = nullptr;
    QCheckBox *chkExtractScript = nullptr;
    QPushButton *btnExtractScipt = nullptr;
    // Attributes
    QComboBox *cmboFieldType = nullptr;
    QLineEdit *txtDefaultValue = nullptr;
    QList<QRadioButton *> optCase;
    QGroupBox *FrameValidate = nullptr;
    QList<QRadioButton *> optValidate;
    QLineEdit *txtValidateLow = nullptr;
    QLineEdit *txtValidateHigh = nullptr;
    QLineEdit *txtValidateList = nullptr;
    QComboBox *cmboInvalidAction = nullptr;
    QGroupBox *FrameEnvironmentVar = nullptr;
    QLineEdit *txtEnvironmentVar = nullptr;
    // Database Field
    QLineEdit *txtInsertInto = nullptr;
    QLineEdit *txtInsertFieldname = nullptr;
    QSpinBox *txtMaxLength = nullptr;
    QCheckBox *chkKeyField = nullptr;
    // Pass To
    QComboBox *cmboPassTo = nullptr;
    QLineEdit *txtPassToSubject = nullptr;
    QLineEdit *txtPassToBody = nullptr;

    QPushButton *btnOK = nullptr;
    QPushButton *btnSaveNew = nullptr;
    QPushButton *btnCancel = nullptr;

    // Field to controls.
    void Load();
    // Controls to a field, in the order of the fragment.
    void WriteTo(clsTriggerField &Target) const;
    // The first failed check says why in a warning box.
    bool ValidateControls();
    // Runs the extraction on the sample and selects what it found.
    void Preview();
    // Validates, writes the field and closes with OK.
    bool Accept();

private:
    QWidget *MakeGeneralTab();
    QWidget *MakeExtractTab();
    QWidget *MakeAttributesTab();
    QWidget *MakeDatabaseTab();
    QWidget *MakePassToTab();
    void NameChanged(const QString &Name);
    void ShowFindMode();
    void TypeChanged(int Type);
    void HelperChanged();
    void TestLookup();
    // The error of the field's expressions, empty when they compile.
    QString ExpressionError(const clsTriggerField &Probe) const;
    void ConnectPreview();

    QString m_lastName;
    bool m_loading = false;
    bool m_htmlAsked = false;
};
