#include "ActionEditors.h"
#include "ctlActionGoTo.h"
#include "ctlActionPassTo.h"
#include "ctlActionScript.h"
#include "ctlActionSetVariable.h"

#include <QHash>

namespace {

template <class Control> ActionEditorMaker Maker()
{
    return [](QWidget *Parent) -> ActionEditor * { return new Control(Parent); };
}

// The flow and value kinds come with the console; the other families add
// theirs through RegisterActionEditor.
QHash<QString, ActionEditorMaker> &Makers()
{
    static QHash<QString, ActionEditorMaker> makers{
        {QStringLiteral("GoTo"), Maker<ctlActionGoTo>()},
        {QStringLiteral("Set"), Maker<ctlActionSetVariable>()},
        {QStringLiteral("PassTo"), Maker<ctlActionPassTo>()},
        {QStringLiteral("Script"), Maker<ctlActionScript>()},
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
