#pragma once
#include "ActionEditor.h"

class QCheckBox;
class QLineEdit;

// A Forward action: where the original goes, its subject, and whether its
// attachments go with it.
class ctlActionForward : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionForward(QWidget *parent = nullptr);

    QLineEdit *txtForwardTo = nullptr;
    QLineEdit *txtForwardSubject = nullptr;
    QCheckBox *chkPlusAttach = nullptr;

    void Load() override;
    bool Save() override;
};
