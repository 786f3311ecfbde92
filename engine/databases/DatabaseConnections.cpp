#include "DatabaseConnections.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QHash>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <atomic>

namespace {

// This thread's connections by connection string; closed when the thread ends.
struct ThreadConnections
{
    struct Entry
    {
        QString Name;
        int Timeout = -1; // as last applied
        ConnectionString::DriverKind Kind = ConnectionString::Invalid;
        QHash<QString, QSqlQuery> Prepared; // by statement text
    };
    QHash<QString, Entry> ByText;

    ~ThreadConnections()
    {
        for (Entry &entry : ByText) {
            entry.Prepared.clear();
            Remove(entry.Name);
        }
    }
    static void Remove(const QString &Name)
    {
        if (!QSqlDatabase::contains(Name))
            return;
        {
            QSqlDatabase db = QSqlDatabase::database(Name, false);
            db.close();
        }
        QSqlDatabase::removeDatabase(Name);
    }
};

thread_local ThreadConnections Connections;

QString NewName(const QString &Text)
{
    static std::atomic<int> counter{0};
    const QByteArray hash = QCryptographicHash::hash(Text.toUtf8(), QCryptographicHash::Md5).toHex().left(12);
    return QStringLiteral("PostvaneDB.%1.%2").arg(QString::fromLatin1(hash)).arg(++counter);
}

} // namespace

QString DatabaseConnections::Reason(const QString &ErrorText, const QString &Text)
{
    QString reason = ErrorText.trimmed();
    const ConnectionString parsed = ConnectionString::Parse(Text);
    if (parsed.Password.size() >= 2)
        reason.replace(parsed.Password, QStringLiteral("****"));
    if (Text.contains(u'=')) // a driver that repeats the connection text
        reason.replace(Text.trimmed(), ConnectionString::Masked(Text));
    return reason.isEmpty() ? QStringLiteral("The database gave no reason.") : reason;
}

QString DatabaseConnections::Reason(const QSqlError &Error, const QString &Text)
{
    QString text = Error.databaseText().trimmed();
    const QString driver = Error.driverText().trimmed();
    if (text.isEmpty())
        text = driver;
    else if (!driver.isEmpty() && !text.contains(driver))
        text = driver + QStringLiteral(": ") + text;
    return Reason(text, Text);
}

void DatabaseConnections::ApplyTimeout(QSqlDatabase &Db, ConnectionString::DriverKind Kind, int Timeout)
{
    QSqlQuery query(Db);
    switch (Kind) {
    case ConnectionString::PostgreSQL:
        query.exec(QStringLiteral("SET statement_timeout = %1").arg(Timeout * 1000));
        break;
    case ConnectionString::MySQL:
        // MariaDB's name; MySQL's own server ignores the attempt.
        query.exec(QStringLiteral("SET SESSION max_statement_time = %1").arg(Timeout));
        break;
    case ConnectionString::SQLite:
        query.exec(QStringLiteral("PRAGMA busy_timeout = %1").arg(Timeout > 0 ? Timeout * 1000 : 5000));
        break;
    default: // ODBC: the login and connection time-outs set at opening
        break;
    }
}

QString DatabaseConnections::OpenNamed(const QString &Name, const ConnectionString &Parsed, bool MustExist)
{
    if (!QSqlDatabase::isDriverAvailable(Parsed.QtDriver()))
        return QStringLiteral("The database driver ") + Parsed.QtDriver() + QStringLiteral(" is not installed on the server.");
    if (Parsed.Kind == ConnectionString::SQLite && MustExist && !QFileInfo(Parsed.Database).isFile())
        return QStringLiteral("The database file ") + Parsed.Database + QStringLiteral(" does not exist.");
    QSqlDatabase db = QSqlDatabase::addDatabase(Parsed.QtDriver(), Name);
    switch (Parsed.Kind) {
    case ConnectionString::SQLite:
        db.setDatabaseName(Parsed.Database);
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        break;
    case ConnectionString::ODBC:
        db.setDatabaseName(Parsed.ODBCText);
        db.setConnectOptions(QStringLiteral("SQL_ATTR_LOGIN_TIMEOUT=10;SQL_ATTR_CONNECTION_TIMEOUT=10"));
        break;
    default:
        db.setHostName(Parsed.Host.isEmpty() ? QStringLiteral("127.0.0.1") : Parsed.Host);
        if (Parsed.Port > 0)
            db.setPort(Parsed.Port);
        db.setDatabaseName(Parsed.Database);
        db.setUserName(Parsed.User);
        db.setPassword(Parsed.Password);
        db.setConnectOptions(Parsed.Kind == ConnectionString::PostgreSQL ? QStringLiteral("connect_timeout=10")
                                                                         : QStringLiteral("MYSQL_OPT_CONNECT_TIMEOUT=10"));
        break;
    }
    if (!db.open())
        return QStringLiteral("Could not open the database: ") + db.lastError().text().trimmed();
    if (Parsed.Kind == ConnectionString::SQLite) { // a file that isn't a database fails here, not later
        QSqlQuery probe(db);
        if (!probe.exec(QStringLiteral("SELECT COUNT(*) FROM sqlite_master")))
            return probe.lastError().text().trimmed();
    }
    return QString();
}

QSqlDatabase DatabaseConnections::Open(const QString &Text, QString *Error, int Timeout, bool MustExist)
{
    auto fail = [&](const QString &Reason) {
        if (Error)
            *Error = DatabaseConnections::Reason(Reason, Text);
        return QSqlDatabase();
    };
    auto found = Connections.ByText.find(Text);
    if (found != Connections.ByText.end()) {
        QSqlDatabase db = QSqlDatabase::database(found->Name, false);
        if (db.isOpen()) {
            if (found->Timeout != Timeout) {
                ApplyTimeout(db, found->Kind, Timeout);
                found->Timeout = Timeout;
            }
            return db;
        }
        Discard(Text);
    }
    const ConnectionString parsed = ConnectionString::Parse(Text);
    if (parsed.Kind == ConnectionString::Invalid)
        return fail(parsed.Problem);
    const QString name = NewName(Text);
    const QString problem = OpenNamed(name, parsed, MustExist);
    if (!problem.isEmpty()) {
        ThreadConnections::Remove(name);
        return fail(problem);
    }
    QSqlDatabase db = QSqlDatabase::database(name, false);
    ApplyTimeout(db, parsed.Kind, Timeout);
    Connections.ByText.insert(Text, {name, Timeout, parsed.Kind, {}});
    return db;
}

QString DatabaseConnections::BeginWriting(QSqlDatabase &Db)
{
    if (Db.driverName() != QLatin1String("QSQLITE"))
        return Db.transaction() ? QString() : Reason(Db.lastError(), QString());
    QSqlQuery begin(Db);
    return begin.exec(QStringLiteral("BEGIN IMMEDIATE")) ? QString() : Reason(begin.lastError(), QString());
}

void DatabaseConnections::Discard(const QString &Text)
{
    const auto found = Connections.ByText.find(Text);
    if (found == Connections.ByText.end())
        return;
    found->Prepared.clear();
    ThreadConnections::Remove(found->Name);
    Connections.ByText.erase(found);
}

void DatabaseConnections::CloseAll()
{
    for (auto &entry : Connections.ByText) {
        entry.Prepared.clear();
        ThreadConnections::Remove(entry.Name);
    }
    Connections.ByText.clear();
}

QSqlQuery *DatabaseConnections::Prepared(const QSqlDatabase &Db, const QString &Statement, QString *Error)
{
    for (auto &entry : Connections.ByText) {
        if (entry.Name != Db.connectionName())
            continue;
        auto found = entry.Prepared.find(Statement);
        if (found != entry.Prepared.end())
            return &*found;
        QSqlQuery query(Db);
        query.setForwardOnly(true);
        if (!query.prepare(Statement)) {
            *Error = Reason(query.lastError(), QString());
            return nullptr;
        }
        return &*entry.Prepared.insert(Statement, query);
    }
    *Error = QStringLiteral("The connection is not open.");
    return nullptr;
}

void DatabaseConnections::ForgetStatements(const QString &Text)
{
    const auto found = Connections.ByText.find(Text);
    if (found != Connections.ByText.end())
        found->Prepared.clear();
}

bool DatabaseConnections::StillAlive(const QString &Text)
{
    const auto found = Connections.ByText.find(Text);
    if (found == Connections.ByText.end())
        return false;
    bool alive = false;
    {
        QSqlDatabase db = QSqlDatabase::database(found->Name, false);
        QSqlQuery ping(db);
        alive = db.isOpen() && ping.exec(QStringLiteral("SELECT 1"));
    }
    if (!alive)
        Discard(Text);
    return alive;
}

QString DatabaseConnections::Test(const QString &Text)
{
    const ConnectionString parsed = ConnectionString::Parse(Text);
    if (parsed.Kind == ConnectionString::Invalid)
        return QStringLiteral("Error: ") + parsed.Problem;
    const QString name = NewName(Text) + QStringLiteral(".test");
    const QString problem = OpenNamed(name, parsed, true);
    ThreadConnections::Remove(name);
    return problem.isEmpty() ? QStringLiteral("OK") : QStringLiteral("Error: ") + Reason(problem, Text);
}
