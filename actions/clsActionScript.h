#pragma once
#include "foundation/Formatting.h"

#include <QString>

class clsXML;

// Runs a script of the product's Basic on the message.
class clsActionScript
{
public:
    // Under a new ID unless one is given.
    explicit clsActionScript(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString SBScriptToRun; // the script's source text

    QString ClassName() const { return QStringLiteral("Script"); }
    QString ClassDesc() const;
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
