#pragma once
#include <QList>
#include <QPair>
#include <QString>

// A connection string as administrators write them: "Key=Value;" pairs, a
// value in braces when it holds ";" ("Pwd={a;b}"). Which Qt driver opens it
// follows from its keys:
//   Driver=SQLite3 (or SQLite)          -> QSQLITE, Database= the file
//   Driver=PostgreSQL (or Postgres)     -> QPSQL
//   Driver=MySQL (or MariaDB)           -> QMYSQL
//   any other Driver=, DSN=             -> QODBC, the text handed on as it is
//   Provider=SQLOLEDB (or SQLNCLI...)   -> QODBC through FreeTDS
//   Driver={SQL Server} (or {SQL Server Native Client ...}, the Windows
//   drivers)                            -> QODBC through FreeTDS, Encrypt=yes
//                                          as Encryption=require
// A text without "=" names an SQLite file, relative to the data folder.
class ConnectionString
{
public:
    enum DriverKind { Invalid, SQLite, PostgreSQL, MySQL, ODBC };

    static ConnectionString Parse(const QString &Text);

    DriverKind Kind = Invalid;
    QString Problem;      // why it is Invalid
    QString Driver;       // as written, braces removed
    QString Host;
    int Port = 0;         // 0: the driver's default
    QString Database;     // SQLite: the file's path
    QString User;
    QString Password;
    QString ODBCText;     // ODBC: what the driver manager gets

    // The Qt driver's name ("QSQLITE", ...); empty when Invalid.
    QString QtDriver() const;
    // The text with every password value replaced by "****", for logs and replies.
    static QString Masked(const QString &Text);
    // The pairs in written order, keys trimmed, values with braces removed.
    static QList<QPair<QString, QString>> Pairs(const QString &Text);

private:
    static QString Value(const QList<QPair<QString, QString>> &Pairs, const QStringList &Keys);
    void ReadProvider(const QList<QPair<QString, QString>> &Pairs);
    void ReadServerAndPort(const QString &Server);
};
