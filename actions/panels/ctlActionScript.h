#pragma once
#include "ActionEditor.h"

class QPlainTextEdit;

// The source text of a Script action, edited as text.
class ctlActionScript : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionScript(QWidget *parent = nullptr);

    QPlainTextEdit *ScriptEdit = nullptr;

    void Load() override;
    bool Save() override;
};
