#pragma once
#include <QString>

#include <functional>

class clsActionPopup;

// Where the texts of Popup actions go: the web service sets a receiver
// that pushes them as "popup.xml" to the connected consoles. A process that
// serves no consoles has none, and a Popup action there says so.
class PopupPush
{
public:
    using Receiver = std::function<void(const QString &Body)>;

    // Any thread; an empty receiver ends the pushes.
    static void setReceiver(Receiver Value);
    // The popup's fragment: its Settings (the action's PopupStyle), its
    // Message and its Title. False when nobody receives it.
    static bool Send(const QString &Settings, const QString &Message, const QString &Title);
    static QString Body(const QString &Settings, const QString &Message, const QString &Title);
};
