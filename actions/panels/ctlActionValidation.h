#pragma once
#include "ActionEditor.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QSpinBox;
class QTableWidget;

// A Validation action: the mail that carries the link, how long the message
// waits and what then, the question of the validation page with its
// buttons, and the survey the page asks.
class ctlActionValidation : public ActionEditor
{
    Q_OBJECT
public:
    enum SurveyColumn { ColumnName, ColumnType, ColumnAssignTo, ColumnPrompt, SurveyColumns };

    explicit ctlActionValidation(QWidget *parent = nullptr);

    QGroupBox *chkEmail = nullptr; // checkable: SendEmail
    QLineEdit *txtFrom = nullptr;
    QLineEdit *txtTo = nullptr;
    QLineEdit *txtSubject = nullptr;
    QPlainTextEdit *txtBody = nullptr;
    QSpinBox *txtMaxWait = nullptr; // minutes
    QComboBox *cmboTimeOut = nullptr;
    QPlainTextEdit *txtConfirmation = nullptr;
    QCheckBox *chkYesNo = nullptr;
    QTableWidget *GridFields = nullptr;
    QLabel *lblLink = nullptr;

    void Load() override;
    bool Save() override;

    // The page's address as the panel shows it, "?id=%id%" behind it.
    static QString LinkMarkup();
};
