#include "ctlActionPassTo.h"
#include "actions/ActionItem.h"
#include "actions/clsActionPassTo.h"
#include "editors/EditorBoxes.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"

#include <QComboBox>
#include <QFormLayout>
#include <QPlainTextEdit>

ctlActionPassTo::ctlActionPassTo(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("PassTo"));
    cmboPassTo = new QComboBox(this);
    cmboPassTo->setMinimumWidth(320);
    txtPassToBody = new QPlainTextEdit(this);
    auto *layout = new QFormLayout(this);
    layout->addRow(EditorText("PASSTOTRIGGER", "Pass To Trigger:"), cmboPassTo);
    layout->addRow(EditorText("PASSTOVALUE", "Value:"), txtPassToBody);
    WatchEdits();
}

void ctlActionPassTo::Load()
{
    const auto *action = ThisAction->As<clsActionPassTo>();
    cmboPassTo->clear();
    for (const clsAccount *account : Accounts())
        for (const clsAccountTrigger *trigger : account->Triggers)
            cmboPassTo->addItem(account->Name + QStringLiteral(" - ") + trigger->Name, trigger->TriggerID);
    cmboPassTo->setCurrentIndex(cmboPassTo->findData(action->TriggerID));
    txtPassToBody->setPlainText(action->Value);
    Dirty = false;
}

bool ctlActionPassTo::Save()
{
    if (cmboPassTo->currentIndex() < 0)
        return Refuse(EditorText("NOPASSTO", "You Must Select A Trigger To Pass To"));
    auto *action = ThisAction->As<clsActionPassTo>();
    action->TriggerID = cmboPassTo->currentData().toString();
    action->Value = txtPassToBody->toPlainText();
    return true;
}
