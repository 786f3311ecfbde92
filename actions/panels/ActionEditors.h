#pragma once
#include <QString>

#include <functional>

class ActionEditor;
class QWidget;

// The editor controls of the action kinds, by ClassName. A family of actions
// plugs its controls in with RegisterActionEditor when the console starts;
// the action dialog asks CreateActionEditor and knows no kind itself.
using ActionEditorMaker = std::function<ActionEditor *(QWidget *Parent)>;

void RegisterActionEditor(const QString &ClassName, ActionEditorMaker Maker);
// The control of the kind, or nullptr when the kind has none.
ActionEditor *CreateActionEditor(const QString &ClassName, QWidget *Parent);

// The maker of a control whose constructor takes the parent alone.
template <class Control> ActionEditorMaker ControlMaker()
{
    return [](QWidget *Parent) -> ActionEditor * { return new Control(Parent); };
}
