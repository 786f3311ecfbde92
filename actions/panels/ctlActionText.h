#pragma once
#include "ActionEditor.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;

// A TextFile: the tab for writing (file, encoding, terminator, append,
// backup, the text) and the tab for reading the file into a variable.
class ctlActionText : public ActionEditor
{
    Q_OBJECT
public:
    enum Tab { TabWrite, TabRead };

    explicit ctlActionText(QWidget *parent = nullptr);

    QTabWidget *Tabs = nullptr;
    QLineEdit *txtFileName = nullptr;
    QPushButton *btnFileName = nullptr;
    QComboBox *cmboFormat = nullptr;
    QComboBox *cmboTerminator = nullptr;
    QCheckBox *chkAppend = nullptr;
    QCheckBox *chkBackup = nullptr;
    QPlainTextEdit *txtText = nullptr;
    QComboBox *cmboAssign = nullptr;

    void Load() override;
    bool Save() override;
};
