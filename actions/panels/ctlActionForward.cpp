#include "ctlActionForward.h"
#include "actions/ActionItem.h"
#include "actions/clsActionForward.h"
#include "editors/EditorBoxes.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLineEdit>

ctlActionForward::ctlActionForward(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("Forward"));
    txtForwardTo = new QLineEdit(this);
    txtForwardTo->setMinimumWidth(320);
    txtForwardSubject = new QLineEdit(this);
    chkPlusAttach = new QCheckBox(EditorText("FORWARDATTACH", "Include The Attachments Of The Original Message"), this);
    auto *layout = new QFormLayout(this);
    layout->addRow(EditorText("FORWARDTO", "Forward To:"), txtForwardTo);
    layout->addRow(EditorText("FORWARDSUBJECT", "Subject:"), txtForwardSubject);
    layout->addRow(chkPlusAttach);
    WatchEdits();
}

void ctlActionForward::Load()
{
    const auto *action = ThisAction->As<clsActionForward>();
    txtForwardTo->setText(action->EmailForwardTo);
    txtForwardSubject->setText(action->EmailForwardSubject);
    chkPlusAttach->setChecked(action->EmailForwardPlusAttach);
    Dirty = false;
}

bool ctlActionForward::Save()
{
    auto *action = ThisAction->As<clsActionForward>();
    action->EmailForwardTo = txtForwardTo->text();
    action->EmailForwardSubject = txtForwardSubject->text();
    action->EmailForwardPlusAttach = chkPlusAttach->isChecked();
    return true;
}
