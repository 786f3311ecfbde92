#include "ctlActionGoTo.h"
#include "actions/clsActionLogical.h"
#include "editors/EditorBoxes.h"
#include "model/clsAccountTrigger.h"

#include <QComboBox>
#include <QFormLayout>

ctlActionGoTo::ctlActionGoTo(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("GoTo"));
    cmboLabel = new QComboBox(this);
    cmboLabel->setEditable(true);
    cmboLabel->addItems({QStringLiteral("#Start"), QStringLiteral("#End")});
    cmboLabel->setMinimumWidth(260);
    auto *layout = new QFormLayout(this);
    layout->addRow(EditorText("GOTOLABEL", "Go To Label:"), cmboLabel);
    WatchEdits();
}

void ctlActionGoTo::Load()
{
    for (const ActionItem *action : ThisTrigger->ActionList())
        if (const auto *logical = action->As<clsActionLogical>())
            if (logical->LogicalType == 5 && !logical->LabelName.isEmpty() && cmboLabel->findText(logical->LabelName) < 0)
                cmboLabel->addItem(logical->LabelName);
    cmboLabel->setEditText(ThisAction->As<clsActionLogical>()->LabelName);
    Dirty = false;
}

bool ctlActionGoTo::Save()
{
    auto *logical = ThisAction->As<clsActionLogical>();
    logical->LabelName = cmboLabel->currentText();
    logical->LogicalType = 6;
    return true;
}
