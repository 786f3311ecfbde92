#pragma once
#include "foundation/Formatting.h"

#include <QString>

class clsXML;

// Forwards the original message to an address, with its attachments or
// without.
class clsActionForward
{
public:
    // Under a new ID unless one is given.
    explicit clsActionForward(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString EmailForwardTo;
    QString EmailForwardSubject; // empty: "FW: " and the original's subject
    bool EmailForwardPlusAttach = false;

    QString ClassName() const { return QStringLiteral("Forward"); }
    QString ClassDesc() const { return QStringLiteral("Forward Original Message"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
