#pragma once
#include "ActionEditor.h"

class QComboBox;
class QPlainTextEdit;

// The trigger a PassTo action hands its value to, chosen among all triggers
// of all accounts, and the value.
class ctlActionPassTo : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionPassTo(QWidget *parent = nullptr);

    QComboBox *cmboPassTo = nullptr;
    QPlainTextEdit *txtPassToBody = nullptr;

    void Load() override;
    bool Save() override;
};
