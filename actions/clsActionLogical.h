#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QtGlobal>

class clsXML;

// A step of the list's own flow: If, Else, End If, End Processing, Label and
// GoTo, told apart by LogicalType.
class clsActionLogical
{
public:
    // Under a new ID unless one is given.
    explicit clsActionLogical(const QString &ActionID = NewUniqueID());

    QString ID;
    QString Condition;
    bool Enabled = true; // not stored: a read action is always enabled
    qint16 LogicalType = 1;
    QString LabelName;

    // "If", "Else", "EndIf", "End", "Label", "GoTo" for types 1 to 6,
    // "Logical" for any other.
    QString ClassName() const;
    QString ClassDesc() const;
    QString ActionDescription() const;
    // The line text of the action, plain or as markup; empty for an unknown
    // type.
    QString LogicalTypeString(bool UseMarkUp) const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
