#pragma once
#include "ActionEditor.h"

class QCheckBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;

// An Azure database: server, database, user and password, with the
// connection they make shown as they are typed. The trigger's generated
// statements apply unless FrameSQLModified is on, after a question, and
// the statements are the action's own.
class ctlActionAZ : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionAZ(QWidget *parent = nullptr);

    QLineEdit *txtServer = nullptr;
    QLineEdit *txtDatabase = nullptr;
    QLineEdit *txtUser = nullptr;
    QLineEdit *txtPassword = nullptr;
    QPushButton *btnConnectionTest = nullptr;
    QPlainTextEdit *txtDetails = nullptr;
    QCheckBox *FrameSQLModified = nullptr;
    QPushButton *btnInsert = nullptr;
    QPushButton *btnSelect = nullptr;
    QPushButton *btnUpdate = nullptr;
    QTabWidget *Statements = nullptr;
    QPlainTextEdit *txtSQL = nullptr;
    QPlainTextEdit *txtSQLSelect = nullptr;
    QPlainTextEdit *txtSQLUpdate = nullptr;

    void Load() override;
    bool Save() override;

private:
    // The action as the boxes have it now, for its connection string.
    QString Connection() const;
    void ShowDetails();
    void SetModified(bool Modified);
};
