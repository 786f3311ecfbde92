#pragma once
#include "ConnectionString.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

class QSqlError;

// The one opener of connection strings (ConnectionString) for data actions,
// database pull and the connection test. Connections are kept per thread and
// per connection string, so that a thread's next action on the same database
// reuses its connection; one that failed is discarded and opened anew.
// Errors never carry a password.
class DatabaseConnections
{
public:
    // This thread's open connection for the text, opened now when there is
    // none or it was closed. Timeout (seconds, 0 for none) limits each
    // statement where the driver allows it. MustExist refuses an SQLite file
    // that isn't there instead of making it. On failure the result is not
    // valid and Error holds the reason.
    static QSqlDatabase Open(const QString &Text, QString *Error, int Timeout = 0, bool MustExist = false);
    // The statement prepared once on this thread's connection Db (from
    // Open) and kept with it; nullptr with Error when the database refuses it.
    static QSqlQuery *Prepared(const QSqlDatabase &Db, const QString &Statement, QString *Error);
    // Drops the statements kept for the text's connection: after a change of
    // its tables, whose columns a kept statement would still assume.
    static void ForgetStatements(const QString &Text);
    // Starts a transaction that will write on Db (from Open); an empty
    // result, or the reason it could not start. SQLite takes its write lock
    // now, waiting out the busy timeout: a transaction that has read first
    // cannot wait for another writer later and fails with "database is locked".
    static QString BeginWriting(QSqlDatabase &Db);
    // Closes this thread's connection for the text; the next Open opens anew.
    static void Discard(const QString &Text);
    // Closes all connections of this thread.
    static void CloseAll();
    // False when the connection no longer answers (a server restarted, a
    // network gone): then it is discarded.
    static bool StillAlive(const QString &Text);
    // "OK", or "Error: " and the reason: opens a connection of its own and
    // closes it again, never making a database.
    static QString Test(const QString &Text);
    // The error's text without the password of the connection string.
    static QString Reason(const QSqlError &Error, const QString &Text);
    static QString Reason(const QString &ErrorText, const QString &Text);

private:
    static QString OpenNamed(const QString &Name, const ConnectionString &Parsed, bool MustExist);
    static void ApplyTimeout(QSqlDatabase &Db, ConnectionString::DriverKind Kind, int Timeout);
};
