#include "ActionEditors.h"
#include "ctlActionGoTo.h"
#include "ctlActionPassTo.h"
#include "ctlActionScript.h"
#include "ctlActionSetVariable.h"

#include <QHash>

namespace {

// The flow and value kinds come with the console; the other families add
// theirs through RegisterActionEditor.
QHash<QString, ActionEditorMaker> &Makers()
{
    static QHash<QString, ActionEditorMaker> makers{
        {QStringLiteral("GoTo"), ControlMaker<ctlActionGoTo>()},
        {QStringLiteral("Set"), ControlMaker<ctlActionSetVariable>()},
        {QStringLiteral("PassTo"), ControlMaker<ctlActionPassTo>()},
        {QStringLiteral("Script"), ControlMaker<ctlActionScript>()},
    };
    return makers;
}

} // namespace

void RegisterActionEditor(const QString &ClassName, ActionEditorMaker Maker)
{
    Makers().insert(ClassName, std::move(Maker));
}

ActionEditor *CreateActionEditor(const QString &ClassName, QWidget *Parent)
{
    const ActionEditorMaker maker = Makers().value(ClassName);
    return maker ? maker(Parent) : nullptr;
}
