#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QtGlobal>

class clsXML;

// Gives a variable of the run a value, or one looked up in a database, and
// may work on it by one of the numbered operations.
class clsActionSetVariable
{
public:
    // Under a new ID unless one is given.
    explicit clsActionSetVariable(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString Name;
    QString Value;
    bool Persist = false;
    qint16 Operation = 0; // stored by number: see OperationDesc
    bool Append = false;
    bool DBLookup = false;
    QString DBConnectionString; // travels enciphered
    QString DBSQL;
    QString DBReturnField;

    QString ClassName() const { return QStringLiteral("Set"); }
    QString ClassDesc() const { return QStringLiteral("Set Variable"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);

    // Name of an operation, 0 to 30 in the order of the operation list;
    // empty for any other number.
    static QString OperationDesc(int OperationNumber);
    static constexpr int OperationCount = 31;
};
