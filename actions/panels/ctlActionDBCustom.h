#pragma once
#include "ActionEditor.h"

class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;
class QTabWidget;

// A DatabaseUpdateCustom: the connection, the dialect, the command time-out
// and the action's own insert, update and select statements. An empty
// statement starts as the trigger's generated one; another dialect
// generates all three anew.
class ctlActionDBCustom : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionDBCustom(QWidget *parent = nullptr);

    QLineEdit *txtConnectionString = nullptr;
    QPushButton *btnConnectionString = nullptr;
    QPushButton *btnConnectionTest = nullptr;
    QComboBox *cmboDialect = nullptr;
    QSpinBox *txtTimeout = nullptr;
    QTabWidget *Statements = nullptr;
    QPlainTextEdit *txtSQL = nullptr;
    QPlainTextEdit *txtSQLUpdate = nullptr;
    QPlainTextEdit *txtSQLSelect = nullptr;

    void Load() override;
    bool Save() override;

private:
    void Generate(bool EmptyOnly);
};
