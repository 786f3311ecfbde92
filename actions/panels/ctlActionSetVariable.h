#pragma once
#include "ActionEditor.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;

// A Set action: the variable, its value or the database lookup that gives
// it, and the operation worked on it. The lookup is on when its tab is the
// open one as the action is saved.
class ctlActionSetVariable : public ActionEditor
{
    Q_OBJECT
public:
    enum Tab { TabValue, TabLookup };

    explicit ctlActionSetVariable(QWidget *parent = nullptr);

    QComboBox *cmboName = nullptr;
    QTabWidget *Tabs = nullptr;
    QPlainTextEdit *txtValue = nullptr;
    QComboBox *cmboOperation = nullptr;
    QCheckBox *chkAppend = nullptr;
    QCheckBox *chkPersist = nullptr;
    QLineEdit *txtLUConnection = nullptr;
    QPlainTextEdit *txtLUSQL = nullptr;
    QLineEdit *txtLUField = nullptr;
    QPushButton *btnEditSQL = nullptr;

    void Load() override;
    bool Save() override;
};
