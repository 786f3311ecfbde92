#pragma once
#include <QString>

class QWidget;

// Asks the server, by "testdbconnection.htm", whether it opens the
// connection string. A failure is shown in a warning box with the server's
// reason; true when the server opened the database.
bool ServerOpensDatabase(QWidget *Parent, const QString &ConnectionString);

// The statement run here, in the console, on the connection string.
struct DatabaseRun
{
    int Rows = 0;
    QString Error; // empty on success
};
DatabaseRun RunQuery(const QString &ConnectionString, const QString &Statement, int TimeoutSeconds);
