#pragma once
#include "ActionEditor.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;

// A DatabaseUpdate: the trigger's internal database or an external one by
// its connection string and dialect, with the statements the trigger will
// run shown for the chosen dialect.
class ctlActionDB : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionDB(QWidget *parent = nullptr);

    QRadioButton *optDBInt = nullptr;
    QRadioButton *optDBExt = nullptr;
    QLabel *lblConnection = nullptr;
    QLineEdit *txtConnectionString = nullptr;
    QPushButton *btnConnectionString = nullptr;
    QPushButton *btnConnectionTest = nullptr;
    QComboBox *cmboDialect = nullptr;
    QTabWidget *Statements = nullptr;
    QPlainTextEdit *txtInsert = nullptr;
    QPlainTextEdit *txtUpdate = nullptr;
    QPlainTextEdit *txtSelect = nullptr;

    // Where the console's mode allows no internal database: external only.
    void DisableInternal();

    void Load() override;
    bool Save() override;

private:
    void ShowChoice();
};
