#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QStringList>

class clsXML;

// Shows a popup with a text on the desktops of the connected consoles.
class clsActionPopup
{
public:
    // Under a new ID unless one is given.
    explicit clsActionPopup(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    // Colour, style (position in StyleNames), fade (position in FadeNames)
    // and the flag that leaves the popup open, separated by "|".
    QString PopupStyle = QStringLiteral("-2147483635|1|0|0");
    QString PopupMessage;

    QString ClassName() const { return QStringLiteral("Popup"); }
    QString ClassDesc() const { return QStringLiteral("Send Popup Message"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);

    static QStringList StyleNames();
    static QStringList FadeNames();
};
