#pragma once
#include "ActionEditor.h"

class QComboBox;
class QLineEdit;

// An UpdateToken: the Message Store's counter of the token name, the value
// that is counted, and the variable that gets the result.
class ctlActionDBToken : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionDBToken(QWidget *parent = nullptr);

    QLineEdit *txtTokenName = nullptr;
    QLineEdit *txtValue = nullptr;
    QComboBox *cmboAssignTo = nullptr;

    void Load() override;
    bool Save() override;
};
