#include "ConnectionString.h"
#include "foundation/GlobalBlock.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace {

const QStringList DriverKeys{QStringLiteral("Driver")};
const QStringList ServerKeys{QStringLiteral("Server"), QStringLiteral("Host"), QStringLiteral("Data Source"),
                             QStringLiteral("Address"), QStringLiteral("Addr")};
const QStringList PortKeys{QStringLiteral("Port")};
const QStringList DatabaseKeys{QStringLiteral("Database"), QStringLiteral("Initial Catalog"),
                               QStringLiteral("DBQ"), QStringLiteral("DBName")};
const QStringList UserKeys{QStringLiteral("Uid"), QStringLiteral("User ID"), QStringLiteral("User"),
                           QStringLiteral("Username"), QStringLiteral("User Name")};
const QStringList PasswordKeys{QStringLiteral("Pwd"), QStringLiteral("Password")};

bool IsOneOf(const QString &Value, std::initializer_list<const char *> Names)
{
    for (const char *name : Names)
        if (Value.compare(QLatin1String(name), Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

// An ODBC value: in braces when it holds a character that would end it.
QString ODBCValue(const QString &Value)
{
    if (!Value.contains(u';') && !Value.contains(u'{') && !Value.contains(u'}') && Value.trimmed() == Value)
        return Value;
    return u'{' + QString(Value).replace(QStringLiteral("}"), QStringLiteral("}}")) + u'}';
}

QString AbsoluteFile(const QString &Path)
{
    return QFileInfo(Path).isAbsolute() ? Path : QDir(Global.DataPath).filePath(Path);
}

} // namespace

QList<QPair<QString, QString>> ConnectionString::Pairs(const QString &Text)
{
    QList<QPair<QString, QString>> pairs;
    qsizetype at = 0;
    while (at < Text.size()) {
        const qsizetype equals = Text.indexOf(u'=', at);
        const qsizetype semicolon = Text.indexOf(u';', at);
        if (equals < 0 || (semicolon >= 0 && semicolon < equals)) { // a part without "=": skipped
            if (semicolon < 0)
                break;
            at = semicolon + 1;
            continue;
        }
        const QString key = Text.mid(at, equals - at).trimmed();
        qsizetype valueStart = equals + 1;
        while (valueStart < Text.size() && Text.at(valueStart) == u' ')
            ++valueStart;
        QString value;
        if (valueStart < Text.size() && Text.at(valueStart) == u'{') {
            // "}}" inside braces stands for "}".
            qsizetype p = valueStart + 1;
            while (p < Text.size()) {
                if (Text.at(p) == u'}') {
                    if (p + 1 < Text.size() && Text.at(p + 1) == u'}') {
                        value += u'}';
                        p += 2;
                        continue;
                    }
                    break;
                }
                value += Text.at(p++);
            }
            const qsizetype end = Text.indexOf(u';', p);
            at = end < 0 ? Text.size() : end + 1;
        } else {
            const qsizetype end = Text.indexOf(u';', valueStart);
            value = Text.mid(valueStart, (end < 0 ? Text.size() : end) - valueStart).trimmed();
            at = end < 0 ? Text.size() : end + 1;
        }
        if (!key.isEmpty())
            pairs.append({key, value});
    }
    return pairs;
}

QString ConnectionString::Value(const QList<QPair<QString, QString>> &Pairs, const QStringList &Keys)
{
    for (const auto &pair : Pairs)
        for (const QString &key : Keys)
            if (pair.first.compare(key, Qt::CaseInsensitive) == 0)
                return pair.second;
    return QString();
}

QString ConnectionString::Masked(const QString &Text)
{
    if (!Text.contains(u'='))
        return Text;
    QStringList parts;
    for (const auto &pair : Pairs(Text)) {
        const bool secret = PasswordKeys.contains(pair.first, Qt::CaseInsensitive);
        parts << pair.first + u'=' + (secret ? QStringLiteral("****") : ODBCValue(pair.second));
    }
    return parts.join(u';');
}

void ConnectionString::ReadServerAndPort(const QString &Server)
{
    // "tcp:host,1433", "host:5432", "host\instance" are all written.
    QString server = Server.trimmed();
    if (server.startsWith(QStringLiteral("tcp:"), Qt::CaseInsensitive))
        server = server.mid(4);
    const qsizetype comma = server.lastIndexOf(u',');
    const qsizetype colon = server.lastIndexOf(u':');
    const qsizetype split = comma >= 0 ? comma : colon;
    if (split > 0) {
        bool number = false;
        const int port = server.mid(split + 1).trimmed().toInt(&number);
        if (number) {
            Port = port;
            server = server.left(split);
        }
    }
    Host = server;
}

void ConnectionString::ReadProvider(const QList<QPair<QString, QString>> &Pairs)
{
    // ADO's SQL Server providers, and the Windows drivers of SQL Server,
    // go through FreeTDS.
    Kind = ODBC;
    Driver = QStringLiteral("FreeTDS");
    ReadServerAndPort(Value(Pairs, ServerKeys));
    QStringList parts{QStringLiteral("Driver=FreeTDS")};
    QString server = Host;
    if (server.isEmpty() || server == u"." || server.compare(QStringLiteral("(local)"), Qt::CaseInsensitive) == 0)
        server = QStringLiteral("127.0.0.1");
    parts << QStringLiteral("Server=") + ODBCValue(server);
    parts << QStringLiteral("Port=") + QString::number(Port ? Port : 1433);
    if (!Database.isEmpty())
        parts << QStringLiteral("Database=") + ODBCValue(Database);
    if (!User.isEmpty())
        parts << QStringLiteral("Uid=") + ODBCValue(User);
    if (!Password.isEmpty())
        parts << QStringLiteral("Pwd=") + ODBCValue(Password);
    if (IsOneOf(Value(Pairs, {QStringLiteral("Encrypt")}), {"yes", "true", "mandatory", "strict"}))
        parts << QStringLiteral("Encryption=require");
    ODBCText = parts.join(u';');
}

ConnectionString ConnectionString::Parse(const QString &Text)
{
    ConnectionString result;
    const QString text = Text.trimmed();
    if (text.isEmpty()) {
        result.Problem = QStringLiteral("The connection string is empty.");
        return result;
    }
    if (!text.contains(u'=')) {
        result.Kind = SQLite;
        result.Driver = QStringLiteral("SQLite3");
        result.Database = AbsoluteFile(text);
        return result;
    }
    const auto pairs = Pairs(text);
    result.Driver = Value(pairs, DriverKeys).trimmed();
    result.Database = Value(pairs, DatabaseKeys);
    result.User = Value(pairs, UserKeys);
    result.Password = Value(pairs, PasswordKeys);
    const QString provider = Value(pairs, {QStringLiteral("Provider")});
    const QString dsn = Value(pairs, {QStringLiteral("DSN"), QStringLiteral("FileDSN")});
    if (result.Driver.isEmpty() && provider.isEmpty() && dsn.isEmpty()) {
        result.Problem = QStringLiteral("The connection string names no Driver, DSN or Provider.");
        return result;
    }
    if (!provider.isEmpty() && result.Driver.isEmpty() && dsn.isEmpty()) {
        if (!provider.startsWith(QStringLiteral("SQLOLEDB"), Qt::CaseInsensitive)
            && !provider.startsWith(QStringLiteral("SQLNCLI"), Qt::CaseInsensitive)
            && !provider.startsWith(QStringLiteral("MSOLEDBSQL"), Qt::CaseInsensitive)) {
            result.Problem = QStringLiteral("The provider ") + provider + QStringLiteral(" is not known on this server.");
            return result;
        }
        result.ReadProvider(pairs);
        return result;
    }
    if (IsOneOf(result.Driver, {"SQL Server"}) || result.Driver.startsWith(QStringLiteral("SQL Server Native Client"), Qt::CaseInsensitive)) {
        result.ReadProvider(pairs);
        return result;
    }
    if (IsOneOf(result.Driver, {"SQLite3", "SQLite"})) {
        result.Kind = SQLite;
        if (result.Database.isEmpty()) {
            result.Kind = Invalid;
            result.Problem = QStringLiteral("The connection string names no Database file.");
            return result;
        }
        result.Database = AbsoluteFile(result.Database);
        return result;
    }
    if (IsOneOf(result.Driver, {"PostgreSQL", "Postgres", "QPSQL"}))
        result.Kind = PostgreSQL;
    else if (IsOneOf(result.Driver, {"MySQL", "MariaDB", "QMYSQL"}))
        result.Kind = MySQL;
    else {
        result.Kind = ODBC;
        result.ODBCText = text;
        return result;
    }
    result.ReadServerAndPort(Value(pairs, ServerKeys));
    const QString port = Value(pairs, PortKeys);
    if (!port.isEmpty()) {
        bool number = false;
        result.Port = port.toInt(&number);
        if (!number || result.Port <= 0 || result.Port > 65535) {
            result.Kind = Invalid;
            result.Problem = QStringLiteral("The port ") + port + QStringLiteral(" is not a port number.");
            return result;
        }
    }
    if (result.Database.isEmpty()) {
        result.Kind = Invalid;
        result.Problem = QStringLiteral("The connection string names no Database.");
    }
    return result;
}

QString ConnectionString::QtDriver() const
{
    switch (Kind) {
    case SQLite:
        return QStringLiteral("QSQLITE");
    case PostgreSQL:
        return QStringLiteral("QPSQL");
    case MySQL:
        return QStringLiteral("QMYSQL");
    case ODBC:
        return QStringLiteral("QODBC");
    case Invalid:
        break;
    }
    return QString();
}
