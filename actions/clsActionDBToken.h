#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QtGlobal>

class clsXML;

// Changes a token counter of the message store by name, and may assign
// the result to a variable.
class clsActionDBToken
{
public:
    // Under a new ID unless one is given.
    explicit clsActionDBToken(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString TokenName;
    QString Value; // an amount, tokens allowed
    QString AssignResultTo;

    QString ClassName() const { return QStringLiteral("UpdateToken"); }
    QString ClassDesc() const { return QStringLiteral("Update Message Store Count For Token"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
