#include "TriggerSQL.h"
#include "actions/ActionItem.h"
#include "actions/clsActionDB.h"
#include "clsAccountTrigger.h"
#include "clsTriggerField.h"
#include "engine/databases/DatabaseConnections.h"
#include "engine/databases/NamedStatement.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Startup.h"

#include <QDir>
#include <QFileInfo>
#include <QMutex>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>

namespace {

const QString CRLF = QStringLiteral("\r\n");

QString Connection(const clsAccountTrigger &Trigger)
{
    return QStringLiteral("Driver=SQLite3;Database=") + Trigger.InternalDatabaseFile();
}

// The tables of the fields that name a table and a column, in order of
// their first field; names differing in case or blanks are one table.
QStringList InternalTables(const colFields &Fields)
{
    QStringList tables;
    for (const clsTriggerField *field : Fields) {
        const QString table = field->InsertInto.trimmed();
        if (table.isEmpty() || field->InsertFieldName.trimmed().isEmpty())
            continue;
        if (!tables.contains(table, Qt::CaseInsensitive))
            tables << table;
    }
    return tables;
}

bool Execute(QSqlDatabase &Db, const QString &Script, QString *Problem)
{
    for (const NamedStatement &statement : NamedStatement::Split(Script)) {
        if (statement.IsEmpty())
            continue;
        QSqlQuery query(Db);
        if (!query.exec(statement.Text)) {
            *Problem = query.lastError().text().trimmed() + QStringLiteral(" (") + statement.Text + u')';
            return false;
        }
    }
    return true;
}

QString ExistingColumns(const QSqlDatabase &Db, const QString &Table)
{
    QString columns;
    const QSqlRecord record = Db.record(Table);
    for (int n = 0; n < record.count(); ++n)
        columns += record.fieldName(n) + u',';
    return columns;
}

} // namespace

QString clsAccountTrigger::InternalDatabaseFile() const
{
    return QDir(Global.DataPath).filePath(QStringLiteral("InternalDatabases/") + TriggerID + QStringLiteral(".db3"));
}

bool clsAccountTrigger::CreateInternalDB() const
{
    if (!QDir().mkpath(QFileInfo(InternalDatabaseFile()).absolutePath())) {
        InternalDatabaseProblem = QStringLiteral("The folder of ") + InternalDatabaseFile() + QStringLiteral(" cannot be made.");
        return false;
    }
    return DatabaseConnections::Open(Connection(*this), &InternalDatabaseProblem).isValid();
}

bool clsAccountTrigger::CreateTablesForTrigger(bool DropFirst) const
{
    // Processor threads taking a trigger's first messages together, or the
    // console asking meanwhile, would each make the missing file and tables.
    static QMutex making;
    const QMutexLocker made(&making);
    InternalDatabaseProblem.clear();
    const ActionItem *action = DatabaseUpdate();
    const clsActionDB *direct = action ? action->As<clsActionDB>() : nullptr;
    if (!direct || !direct->UseInternal) {
        InternalDatabaseProblem = QStringLiteral("The trigger has no database action using the internal database.");
        return false;
    }
    if (!CreateInternalDB())
        return false;
    DatabaseConnections::ForgetStatements(Connection(*this));
    QSqlDatabase db = DatabaseConnections::Open(Connection(*this), &InternalDatabaseProblem);
    const QStringList existing = db.tables();
    for (const QString &table : InternalTables(FieldsToProcess())) {
        bool present = existing.contains(table, Qt::CaseInsensitive);
        if (present && DropFirst) {
            if (!Execute(db, QStringLiteral("DROP TABLE [") + table + QStringLiteral("];"), &InternalDatabaseProblem))
                return false;
            present = false;
        }
        const QString script = present ? BuildINTAlter(table, ExistingColumns(db, table), DialectSQLite)
                                       : BuildINTCreate(table, DialectSQLite);
        if (!Execute(db, script, &InternalDatabaseProblem)) {
            LogError(QStringLiteral("clsAccountTrigger.CreateTablesForTrigger"), InternalDatabaseProblem);
            return false;
        }
    }
    return true;
}

bool clsAccountTrigger::CreateInternalTables() const
{
    const ActionItem *action = DatabaseUpdate();
    const clsActionDB *direct = action ? action->As<clsActionDB>() : nullptr;
    return direct && direct->UseInternal && CreateTablesForTrigger(false);
}

QString clsAccountTrigger::INTDBString(const QString &UID) const
{
    const ActionItem *action = DatabaseUpdate();
    const clsActionDB *direct = action ? action->As<clsActionDB>() : nullptr;
    if (!direct || !direct->UseInternal || !QFileInfo::exists(InternalDatabaseFile()))
        return QString();
    QSqlDatabase db = DatabaseConnections::Open(Connection(*this), &InternalDatabaseProblem);
    if (!db.isValid())
        return QString();
    int dialect = DialectSQLite;
    QString result;
    for (const QString &text : SQLSelectStatement(dialect, true).split(CRLF, Qt::SkipEmptyParts)) {
        const NamedStatement statement = NamedStatement::Parse(text);
        QSqlQuery query(db);
        query.setForwardOnly(true);
        if (!query.prepare(statement.Text)) {
            LogError(QStringLiteral("INTDBString"), query.lastError().text());
            continue;
        }
        for (int n = 0; n < statement.Names.size(); ++n)
            query.addBindValue(UID);
        if (!query.exec()) {
            LogError(QStringLiteral("INTDBString"), query.lastError().text());
            continue;
        }
        bool first = true;
        while (query.next()) {
            if (first)
                result += text + QStringLiteral(":") + CRLF + CRLF;
            first = false;
            const QSqlRecord record = query.record();
            for (int n = 0; n < record.count(); ++n)
                if (record.fieldName(n).compare(QStringLiteral("pvane_msg_uid"), Qt::CaseInsensitive) != 0)
                    result += record.fieldName(n) + QStringLiteral(": ") + record.value(n).toString() + CRLF;
        }
    }
    return result;
}
