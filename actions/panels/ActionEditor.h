#pragma once
#include <QWidget>

class ActionItem;
class QComboBox;
class clsAccountTrigger;

// The editor control of one kind of action, shown on the first page of the
// action dialog. The dialog sets ThisTrigger and ThisAction, calls Load, and
// on OK calls Save, which checks the input, tells the user in one warning
// box what is wrong and gives false, or writes the input back to the action
// and gives true. Its text boxes take text dropped from the dialog's tree of
// insertable values.
class ActionEditor : public QWidget
{
    Q_OBJECT
public:
    using QWidget::QWidget;

    clsAccountTrigger *ThisTrigger = nullptr;
    ActionItem *ThisAction = nullptr;
    // Raised by any edit after Load.
    bool Dirty = false;

    virtual void Load() = 0;
    virtual bool Save() = 0;

protected:
    // Raises Dirty on every edit of the line, text and combo boxes inside.
    void WatchEdits();
    // The one warning box of a failed Save; always false.
    bool Refuse(const QString &Text);
    // Fills an "assign to" box with the account's variables, without their
    // percent signs, and shows Current; a new name can be typed.
    void ListVariables(QComboBox *Box, const QString &Current) const;
};
