#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QtGlobal>

class clsXML;

// Writes the trigger's fields into the tables and columns that they name,
// in an external database or in the trigger's internal one, by the
// statements the trigger generates for the dialect.
class clsActionDB
{
public:
    // Under a new ID unless one is given.
    explicit clsActionDB(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString ConnectionString; // travels enciphered
    bool UseInternal = false;
    qint16 Dialect = 0; // SQLDialect: 0 Generic, 1 SQL Server, 2 MySQL, 3 Access JET

    QString ClassName() const { return QStringLiteral("DatabaseUpdate"); }
    QString ClassDesc() const { return QStringLiteral("Update A Database"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
