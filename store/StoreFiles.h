#pragma once
#include <QString>

// The database files of the store and the logs, and their SQLite connections.

// The blank database of that name ("MessageStore.db3") as installed: beside
// the program (Global.AppPath or the running executable's folder) or in
// ../share/postvane/ of an installed tree. Empty when there is none.
QString FindBlankDatabase(const QString &Name);

// Copies the blank database BlankName to Path unless Path exists already.
// False, with the reason in Error, when it is missing and cannot be copied.
bool EnsureDatabaseFile(const QString &Path, const QString &BlankName, QString *Error = nullptr);

// Opens the file as the named SQLite connection with the busy time-out of
// 5000 ms that orders all processes sharing it, read-only when asked. The
// file is read once, so that a damaged file fails here and not later. On
// failure the connection is removed again and Error holds the reason.
bool OpenSQLite(const QString &ConnectionName, const QString &Path, bool ReadOnly, QString *Error = nullptr);

// Closes and removes the named connection of any driver; nothing when there is none.
void CloseConnection(const QString &ConnectionName);

// Removes a database file together with its WAL and shared-memory files.
bool RemoveDatabaseFile(const QString &Path);
