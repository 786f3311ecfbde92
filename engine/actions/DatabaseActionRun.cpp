#include "DatabaseActionRun.h"
#include "actions/clsActionAZ.h"
#include "actions/clsActionDB.h"
#include "actions/clsActionDBCustom.h"
#include "engine/databases/DatabaseConnections.h"
#include "engine/databases/NamedStatement.h"
#include "foundation/Formatting.h"
#include "model/TriggerSQL.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"
#include "store/Tokens.h"
#include "store/clsMessage.h"

#include <QHash>
#include <QLocale>
#include <QSqlError>
#include <QSqlQuery>

namespace {

enum FieldTypes { TextType = 0, NumericType, DateType, TimeType, DateTimeType, LongTextType, IntType, DecimalType, BitType };

QString Shown(const QString &Value)
{
    constexpr int Longest = 60;
    return Value.size() > Longest ? Value.left(Longest) + QStringLiteral("...") : Value;
}

// The internal tables need the message's identity in each row.
QString WithMessageColumn(const QString &Inserts)
{
    QStringList statements;
    for (QString statement : Inserts.split(QStringLiteral("\r\n\r\n"), Qt::SkipEmptyParts)) {
        const qsizetype columns = statement.indexOf(QStringLiteral(" ("));
        if (columns < 0)
            continue;
        statement.insert(columns + 2, QStringLiteral("[pvane_msg_uid], "));
        const qsizetype values = statement.lastIndexOf(QStringLiteral("VALUES ("));
        statement.insert(values + 8, QStringLiteral("@UID, "));
        statements << statement;
    }
    return statements.join(QStringLiteral("\r\n\r\n"));
}

QVariant NullOf(QMetaType Type)
{
    return QVariant(Type);
}

// The statements of a script, split once in each thread: the same scripts
// come with every message of a trigger.
QList<NamedStatement> SplitOnce(const QString &Script)
{
    constexpr qsizetype Kept = 256;
    thread_local QHash<QString, QList<NamedStatement>> scripts;
    auto found = scripts.constFind(Script);
    if (found != scripts.constEnd())
        return *found;
    if (scripts.size() >= Kept)
        scripts.clear();
    return *scripts.insert(Script, NamedStatement::Split(Script));
}

// A column or field name as its parameter is written: blanks as "_", in any case.
bool SameParameterName(const QString &Written, const QString &Parameter)
{
    if (Written.size() != Parameter.size())
        return false;
    for (qsizetype n = 0; n < Written.size(); ++n) {
        const QChar written = Written.at(n) == u' ' ? QChar(u'_') : Written.at(n);
        if (written != Parameter.at(n) && written.toCaseFolded() != Parameter.at(n).toCaseFolded())
            return false;
    }
    return true;
}

} // namespace

DatabaseActionRun::DatabaseActionRun(clsMessage &Message, LogFunction Log) : m_message(Message), m_log(std::move(Log)) {}

QString DatabaseActionRun::InternalConnection(const clsAccountTrigger &Trigger)
{
    return QStringLiteral("Driver=SQLite3;Database=") + Trigger.InternalDatabaseFile();
}

QVariant DatabaseActionRun::TypedValue(const clsMessageField &Field, QString *Problem)
{
    const QString value = Field.Value.trimmed();
    const auto refuse = [&](const QString &What) {
        *Problem = QStringLiteral("the value \"") + Shown(Field.Value) + QStringLiteral("\" of field ") + Field.Name
                   + QStringLiteral(" is not ") + What;
        return QVariant();
    };
    switch (Field.FieldType) {
    case NumericType:
    case DecimalType: {
        if (value.isEmpty())
            return NullOf(QMetaType::fromType<double>());
        bool ok = false;
        const double number = QLocale::c().toDouble(QString(value).remove(u','), &ok);
        return ok ? QVariant(number) : refuse(QStringLiteral("a number"));
    }
    case IntType: {
        if (value.isEmpty())
            return NullOf(QMetaType::fromType<qlonglong>());
        bool ok = false;
        const qlonglong number = QLocale::c().toLongLong(QString(value).remove(u','), &ok);
        return ok ? QVariant(number) : refuse(QStringLiteral("a whole number"));
    }
    case DateType:
        if (value.isEmpty())
            return NullOf(QMetaType::fromType<QDate>());
        return IsDate(value) ? QVariant(SafeDate(value).date()) : refuse(QStringLiteral("a date"));
    case DateTimeType:
        if (value.isEmpty())
            return NullOf(QMetaType::fromType<QDateTime>());
        return IsDate(value) ? QVariant(SafeDate(value)) : refuse(QStringLiteral("a date"));
    case TimeType: {
        if (value.isEmpty())
            return NullOf(QMetaType::fromType<QTime>());
        const QTime time = SafeTime(value);
        const bool midnight = value.startsWith(u'0') || value.startsWith(QStringLiteral("12:00"));
        return time.isValid() && (time != QTime(0, 0) || midnight) ? QVariant(time) : refuse(QStringLiteral("a time"));
    }
    case BitType: {
        static const QStringList yes{QStringLiteral("1"), QStringLiteral("-1"), QStringLiteral("true"),
                                     QStringLiteral("yes"), QStringLiteral("y"), QStringLiteral("on")};
        static const QStringList no{QStringLiteral("0"), QStringLiteral("false"), QStringLiteral("no"),
                                    QStringLiteral("n"), QStringLiteral("off")};
        if (value.isEmpty())
            return NullOf(QMetaType::fromType<bool>());
        if (yes.contains(value, Qt::CaseInsensitive))
            return true;
        return no.contains(value, Qt::CaseInsensitive) ? QVariant(false) : refuse(QStringLiteral("yes or no"));
    }
    default:
        return Field.Value;
    }
}

clsMessageField *DatabaseActionRun::FieldForParameter(const QString &Name) const
{
    clsMessageField *byName = nullptr;
    for (clsMessageField *field : m_message.ExtractedFields()) {
        if (SameParameterName(field->InsertField, Name))
            return field;
        if (!byName && SameParameterName(field->Name, Name))
            byName = field;
    }
    return byName;
}

QVariant DatabaseActionRun::ParameterValue(const QString &Name, QString *Problem) const
{
    if (Name.compare(QStringLiteral("UID"), Qt::CaseInsensitive) == 0)
        return m_message.MessageID;
    if (const clsMessageField *field = FieldForParameter(Name))
        return TypedValue(*field, Problem);
    const QString token = u'%' + Name + u'%';
    const QString value = ExpandTokens(token);
    if (value.compare(token, Qt::CaseInsensitive) != 0)
        return value;
    *Problem = QStringLiteral("no field or token is named ") + Name;
    return QVariant();
}

QString DatabaseActionRun::RunOnce(QSqlDatabase &Db, const Script &Statements, int *Inserted, int *Updated)
{
    const QList<NamedStatement> inserts = SplitOnce(Statements.Insert);
    const QList<NamedStatement> updates = SplitOnce(Statements.Update);
    const QList<NamedStatement> selects = SplitOnce(Statements.Select);
    // Every value is worked out and checked once, before anything is sent.
    QHash<QString, QVariant> values;
    QString problem;
    int statements = 0;
    for (const QList<NamedStatement> *list : {&inserts, &updates, &selects})
        for (const NamedStatement &statement : *list) {
            statements += statement.IsEmpty() ? 0 : 1;
            for (const QString &name : statement.Names) {
                if (values.contains(name))
                    continue;
                values.insert(name, ParameterValue(name, &problem));
                if (!problem.isEmpty())
                    return problem;
            }
        }
    const auto run = [&](const NamedStatement &Statement, QString *Problem) -> QSqlQuery * {
        QSqlQuery *query = DatabaseConnections::Prepared(Db, Statement.Text, Problem);
        if (!query)
            return nullptr;
        for (int n = 0; n < Statement.Names.size(); ++n)
            query->bindValue(n, values.value(Statement.Names.at(n)));
        if (!query->exec()) {
            *Problem = DatabaseConnections::Reason(query->lastError(), QString());
            query->finish();
            return nullptr;
        }
        return query;
    };
    // A single statement is whole by itself; more go in one transaction.
    const bool transaction = statements > 1;
    if (transaction) {
        problem = DatabaseConnections::BeginWriting(Db);
        if (!problem.isEmpty())
            return problem;
    }
    for (qsizetype n = 0; n < inserts.size() && problem.isEmpty(); ++n) {
        if (inserts.at(n).IsEmpty())
            continue;
        bool update = false;
        if (n < selects.size() && !selects.at(n).IsEmpty() && n < updates.size() && !updates.at(n).IsEmpty()) {
            QSqlQuery *select = run(selects.at(n), &problem);
            if (!select)
                break;
            update = select->next();
            select->finish();
        }
        if (update && Statements.Generated && updates.at(n).Names.size() <= selects.at(n).Names.size())
            continue; // every column is a key: the row found is the row
        if (QSqlQuery *done = run(update ? updates.at(n) : inserts.at(n), &problem)) {
            done->finish();
            ++*(update ? Updated : Inserted);
        }
    }
    if (!transaction)
        return problem;
    if (problem.isEmpty() && Db.commit())
        return QString();
    if (problem.isEmpty())
        problem = DatabaseConnections::Reason(Db.lastError(), QString());
    Db.rollback();
    return problem;
}

bool DatabaseActionRun::Run(const QString &Of, const QString &Connection, int Timeout, const Script &Statements)
{
    m_message.SQLConnection = ConnectionString::Masked(Connection);
    m_message.SQLStatement = Statements.Insert;
    m_message.SQLUpdate = Statements.Update;
    m_message.SQLSelect = Statements.Select;
    QString problem;
    int inserted = 0;
    int updated = 0;
    for (int attempt = 1; attempt <= 2; ++attempt) {
        {
            QSqlDatabase db = DatabaseConnections::Open(Connection, &problem, Timeout);
            if (!db.isValid())
                break;
            inserted = updated = 0;
            problem = RunOnce(db, Statements, &inserted, &updated);
            if (problem.isEmpty())
                break;
        }
        // A connection that no longer answers is opened anew once.
        if (attempt == 2 || DatabaseConnections::StillAlive(Connection))
            break;
        m_log(Of + QStringLiteral(": the connection was lost; it is opened again"));
    }
    m_message.SQLSuccess = problem.isEmpty();
    m_message.SQLError.clear();
    if (!problem.isEmpty()) {
        m_message.SQLError = DatabaseConnections::Reason(problem, Connection);
        m_log(QStringLiteral("* ") + Of + QStringLiteral(" failed, nothing was written: ") + m_message.SQLError);
        return false;
    }
    m_log(Of + QStringLiteral(": %1 row(s) inserted, %2 updated").arg(inserted).arg(updated));
    return true;
}

DatabaseActionRun::Script DatabaseActionRun::GeneratedScript(const clsAccountTrigger &Trigger, int Dialect, bool Internal)
{
    constexpr qsizetype Kept = 256;
    QString signature = QString::number(Dialect) + (Internal ? u'I' : u'E');
    for (const clsTriggerField *field : Trigger.FieldsToProcess())
        signature += u'\n' + field->InsertInto + u'\t' + field->InsertFieldName + (field->Enabled ? u'E' : u'-')
                     + (field->KeyExists ? u'K' : u'-');
    thread_local QHash<QString, Script> made;
    const auto found = made.constFind(signature);
    if (found != made.constEnd())
        return *found;
    Script statements;
    statements.Insert = Trigger.SQLInsertStatement(Dialect, true);
    if (Internal)
        statements.Insert = WithMessageColumn(statements.Insert);
    statements.Update = Trigger.SQLUpdateStatement(Dialect);
    statements.Select = Trigger.SQLSelectStatement(Dialect);
    statements.Generated = true;
    statements.Dialect = Dialect;
    if (made.size() >= Kept)
        made.clear();
    return *made.insert(signature, statements);
}

bool DatabaseActionRun::RunDirect(const clsActionDB &Action, clsAccountTrigger &Trigger)
{
    const QString of = QStringLiteral("Update A Database");
    QString connection;
    if (Action.UseInternal) {
        if (!Trigger.CreateInternalTables()) {
            m_log(QStringLiteral("* ") + of + QStringLiteral(": the internal database of trigger ") + Trigger.Name
                  + QStringLiteral(" could not be made: ") + Trigger.InternalDatabaseProblem);
            return false;
        }
        connection = InternalConnection(Trigger);
    } else {
        connection = ExpandTokens(Action.ConnectionString);
    }
    const Script statements
        = GeneratedScript(Trigger, Action.UseInternal ? int(DialectSQLite) : int(Action.Dialect), Action.UseInternal);
    if (statements.Insert.trimmed().isEmpty()) {
        m_log(QStringLiteral("* ") + of + QStringLiteral(": no field of trigger ") + Trigger.Name
              + QStringLiteral(" names a table"));
        return false;
    }
    m_message.SQLBuiltIN = true;
    m_message.SQLDialect = qint16(statements.Dialect);
    return Run(of, connection, 0, statements);
}

bool DatabaseActionRun::RunCustom(const clsActionDBCustom &Action)
{
    m_message.SQLCustom = true;
    m_message.SQLDialect = Action.SQLDialect;
    m_message.SQLTimeout = qint16(Action.Timeout);
    return Run(QStringLiteral("Update A Database Using Custom SQL"), ExpandTokens(Action.ConnectionString),
               Action.Timeout, {Action.SQLStatement, Action.SQLUpdateStatement, Action.SQLSelectStatement});
}

bool DatabaseActionRun::RunAzure(const clsActionAZ &Action, clsAccountTrigger &Trigger)
{
    const Script statements = Action.SQLModified
                                  ? Script{Action.SQLStatement, Action.SQLUpdateStatement, Action.SQLSelectStatement}
                                  : GeneratedScript(Trigger, DialectSQLServer, false);
    return Run(QStringLiteral("Update An Azure Database"), Action.ConnectionString(), 0, statements);
}
