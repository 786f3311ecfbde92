#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QtGlobal>

class clsXML;

// Runs its own insert, select and update statements on a database, the
// tokens and fields as their parameters.
class clsActionDBCustom
{
public:
    // Under a new ID unless one is given.
    explicit clsActionDBCustom(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString SQLStatement; // the insert statement
    QString SQLSelectStatement;
    QString SQLUpdateStatement;
    QString ConnectionString; // travels enciphered
    qint32 Timeout = 0; // command time-out in seconds
    qint16 SQLDialect = 0; // 0 Generic, 1 SQL Server, 2 MySQL, 3 Access JET

    QString ClassName() const { return QStringLiteral("DatabaseUpdateCustom"); }
    QString ClassDesc() const { return QStringLiteral("Update A Database Using Custom SQL"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
