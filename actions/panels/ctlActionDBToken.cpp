#include "ctlActionDBToken.h"
#include "actions/ActionItem.h"
#include "actions/clsActionDBToken.h"
#include "editors/EditorBoxes.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>

ctlActionDBToken::ctlActionDBToken(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("UpdateToken"));
    txtTokenName = new QLineEdit(this);
    txtTokenName->setMinimumWidth(260);
    txtValue = new QLineEdit(this);
    cmboAssignTo = new QComboBox(this);
    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(EditorText("TOKENNAME", "Token Name:"), txtTokenName);
    form->addRow(EditorText("TOKENVALUE", "Value:"), txtValue);
    form->addRow(EditorText("ASSIGNRESULTTO", "Assign Result To:"), cmboAssignTo);
    WatchEdits();
}

void ctlActionDBToken::Load()
{
    const auto *action = ThisAction->As<clsActionDBToken>();
    txtTokenName->setText(action->TokenName);
    txtValue->setText(action->Value);
    ListVariables(cmboAssignTo, action->AssignResultTo);
    Dirty = false;
}

bool ctlActionDBToken::Save()
{
    if (txtValue->text().trimmed().isEmpty())
        return Refuse(EditorText("NOTOKENVALUE", "You must enter a token value."));
    if (txtTokenName->text().trimmed().isEmpty())
        return Refuse(EditorText("NOTOKENNAME", "You must enter a Token Name"));
    auto *action = ThisAction->As<clsActionDBToken>();
    action->TokenName = txtTokenName->text().trimmed();
    action->Value = txtValue->text().trimmed();
    action->AssignResultTo = cmboAssignTo->currentText().trimmed();
    return true;
}
