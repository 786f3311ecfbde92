#pragma once
#include <QString>

// The SQL that the model generates for a trigger's fields: the statements of
// the direct database action and the tables of the internal database. The
// statements are members of clsAccountTrigger and clsTriggerField; their
// definitions live in TriggerSQL.cpp beside the helpers declared here.

// Dialects of generated SQL. The direct database action offers the first
// four (the index of its list; Generic is taken as SQL Server); SQLite is the
// embedded database, also the dialect of the internal database's tables when
// Global.DatabaseKind is 99.
enum SQLDialect : int {
    DialectGeneric = 0,
    DialectSQLServer = 1,
    DialectMySQL = 2,
    DialectAccessJET = 3,
    DialectSQLite = 99,
};

// The identifier as a statement of the dialect needs it: Access JET always in
// brackets; the others only when it holds a blank or is a reserved word, then
// in brackets (SQL Server), backticks (MySQL) or double quotes (any other
// dialect, Generic and SQLite among them).
QString QuoteIdentifier(const QString &Name, int Dialect);
