#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QtGlobal>

class clsXML;

// Writes the fields into an Azure SQL database through ODBC, by the
// trigger's generated statements or modified ones.
class clsActionAZ
{
public:
    // Under a new ID unless one is given.
    explicit clsActionAZ(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString SQLStatement;
    QString SQLSelectStatement;
    QString SQLUpdateStatement;
    bool SQLModified = false;
    QString Server;
    QString Username;
    QString Password; // travels enciphered
    QString Database;

    QString ClassName() const { return QStringLiteral("Azure"); }
    QString ClassDesc() const { return QStringLiteral("Update An Azure Database"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);

    // The ODBC connection string; each empty argument is taken from the
    // property of its name.
    QString ConnectionString(const QString &ServerName = QString(), const QString &DatabaseName = QString(),
                             const QString &UserName = QString(), const QString &UserPassword = QString()) const;
    // The host suffix of Azure SQL servers.
    static QString HostSuffix() { return QStringLiteral(".database.windows.net"); }
};
