#pragma once
#include "ActionEditor.h"

class QComboBox;

// The jump of a GoTo action: a label of the trigger, or "#Start" and "#End"
// for the head and the end of the list.
class ctlActionGoTo : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionGoTo(QWidget *parent = nullptr);

    QComboBox *cmboLabel = nullptr;

    void Load() override;
    bool Save() override;
};
