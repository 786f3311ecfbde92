#include "ctlActionScript.h"
#include "actions/ActionItem.h"
#include "actions/clsActionScript.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QVBoxLayout>

ctlActionScript::ctlActionScript(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("Script"));
    ScriptEdit = new QPlainTextEdit(this);
    ScriptEdit->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    ScriptEdit->setMinimumSize(520, 300);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(ScriptEdit);
    WatchEdits();
}

void ctlActionScript::Load()
{
    ScriptEdit->setPlainText(ThisAction->As<clsActionScript>()->SBScriptToRun);
    Dirty = false;
}

bool ctlActionScript::Save()
{
    ThisAction->As<clsActionScript>()->SBScriptToRun = ScriptEdit->toPlainText();
    return true;
}
