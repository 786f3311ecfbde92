#include "TriggerSQL.h"
#include "clsAccountTrigger.h"
#include "clsTriggerField.h"
#include "foundation/GlobalSettings.h"

#include <QList>
#include <QStringList>
#include <algorithm>

namespace {

const QString CRLF = QStringLiteral("\r\n");
const QString UIDColumn = QStringLiteral("pvane_msg_uid");

// One table of the generated statements with its fields in field order.
struct StatementTable
{
    QString Name; // quoted as the first field names it
    QList<const clsTriggerField *> Fields;
};

// The tables that the enabled fields name, in order of their first field.
// Names that differ only in case or surrounding blanks are one table.
QList<StatementTable> StatementTables(const colFields &Fields, int Dialect)
{
    QList<StatementTable> tables;
    for (const clsTriggerField *field : Fields) {
        if (!field->Enabled || field->InsertInto.isEmpty())
            continue;
        const QString name = QuoteIdentifier(field->InsertInto.trimmed(), Dialect);
        const QString key = name.toUpper();
        auto table = std::find_if(tables.begin(), tables.end(),
                                  [&key](const StatementTable &t) { return t.Name.toUpper() == key; });
        if (table == tables.end())
            table = tables.insert(tables.end(), StatementTable{name, {}});
        table->Fields.append(field);
    }
    return tables;
}

void TakeGenericAsSQLServer(int &Dialect)
{
    if (Dialect == DialectGeneric)
        Dialect = DialectSQLServer;
}

QString ColumnName(const clsTriggerField &Field, int Dialect)
{
    return QuoteIdentifier(Field.InsertFieldName.trimmed(), Dialect);
}

QString ParameterName(const clsTriggerField &Field)
{
    return u'@' + QString(Field.InsertFieldName).replace(u' ', u'_');
}

// "column = @parameter"
QString Assignment(const clsTriggerField &Field, int Dialect)
{
    return ColumnName(Field, Dialect) + QStringLiteral(" = ") + ParameterName(Field);
}

QString CommentStart(int Dialect)
{
    return Dialect == DialectMySQL ? QStringLiteral("# ") : QStringLiteral("-- ");
}

QString StatementEnd(int Dialect)
{
    return Dialect == DialectMySQL ? QStringLiteral(" ;") : QString();
}

QString NoKeysComment(const QString &Table, int Dialect)
{
    return CommentStart(Dialect) + QStringLiteral("No key fields for table ") + Table +
           QStringLiteral(" data will only be Inserted.") + CRLF;
}

// The fields of the trigger that make columns of this internal table.
QList<const clsTriggerField *> InternalTableFields(const colFields &Fields, const QString &Table)
{
    QList<const clsTriggerField *> fields;
    for (const clsTriggerField *field : Fields)
        if (field->InsertInto.trimmed().compare(Table.trimmed(), Qt::CaseInsensitive) == 0 &&
            !field->InsertFieldName.trimmed().isEmpty())
            fields.append(field);
    return fields;
}

// SQLite runs one statement at a time: its text ends each one with ";" so
// that a script can be split.
QString InternalStatementEnd(int Dialect)
{
    return Dialect == DialectSQLite ? QStringLiteral(";") : QString();
}

QString IndexStatement(const QString &Table, const QString &Column, int Dialect)
{
    return QStringLiteral("CREATE INDEX [%1_%2] ON [%1] ([%2])").arg(Table, Column) + InternalStatementEnd(Dialect) +
           CRLF;
}

} // namespace

QString QuoteIdentifier(const QString &Name, int Dialect)
{
    if (Dialect == DialectAccessJET)
        return u'[' + Name + u']';
    if (!Name.contains(u' ') && !IsReservedWord(Name))
        return Name;
    switch (Dialect) {
    case DialectSQLServer:
        return u'[' + Name + u']';
    case DialectMySQL:
        return u'`' + Name + u'`';
    default:
        return u'"' + Name + u'"';
    }
}

QString clsAccountTrigger::SQLInsertStatement(int &Dialect, bool FromServer) const
{
    TakeGenericAsSQLServer(Dialect);
    QString result;
    for (const StatementTable &table : StatementTables(FieldsToProcess(), Dialect)) {
        QStringList columns;
        QStringList parameters;
        for (const clsTriggerField *field : table.Fields) {
            columns << ColumnName(*field, Dialect);
            parameters << ParameterName(*field);
        }
        result += QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                      .arg(table.Name, columns.join(QStringLiteral(", ")), parameters.join(QStringLiteral(", "))) +
                  StatementEnd(Dialect) + CRLF + CRLF;
    }
    if (result.isEmpty() && !FromServer)
        result = CommentStart(Dialect) + QStringLiteral("No table names specified against extracted fields.") + CRLF;
    return result;
}

QString clsAccountTrigger::SQLUpdateStatement(int &Dialect) const
{
    TakeGenericAsSQLServer(Dialect);
    QString result;
    for (const StatementTable &table : StatementTables(FieldsToProcess(), Dialect)) {
        QString set = QStringLiteral("UPDATE ") + table.Name + QStringLiteral(" SET ");
        QStringList keys;
        for (const clsTriggerField *field : table.Fields) {
            if (field->KeyExists)
                keys << Assignment(*field, Dialect);
            else
                set += Assignment(*field, Dialect) + QStringLiteral(", ");
        }
        // A table of key fields alone loses two letters of " SET " here, and
        // its broken statement is given as it stands.
        set.chop(2);
        if (keys.isEmpty())
            result += NoKeysComment(table.Name, Dialect) + CRLF;
        else
            result += set + QStringLiteral(" WHERE ") + keys.join(QStringLiteral(" AND ")) + StatementEnd(Dialect) +
                      CRLF + CRLF;
    }
    return result;
}

QString clsAccountTrigger::SQLSelectStatement(int &Dialect, bool NOWhere) const
{
    TakeGenericAsSQLServer(Dialect);
    QString result;
    for (const StatementTable &table : StatementTables(FieldsToProcess(), Dialect)) {
        QStringList keys;
        if (NOWhere)
            keys << QStringLiteral("[%1] = @UID").arg(UIDColumn);
        else
            for (const clsTriggerField *field : table.Fields)
                if (field->KeyExists)
                    keys << Assignment(*field, Dialect);
        if (keys.isEmpty())
            result += NoKeysComment(table.Name, Dialect) + CRLF;
        else
            result += QStringLiteral("SELECT * FROM ") + table.Name + QStringLiteral(" WHERE ") +
                      keys.join(QStringLiteral(" AND ")) + StatementEnd(Dialect) + CRLF + CRLF;
    }
    return result;
}

QString clsAccountTrigger::BuildINTCreate(const QString &Table, int Dialect) const
{
    // SQLite numbers the rows itself when the key column is declared exactly
    // INTEGER; IDENTITY is SQL Server's way.
    const QString recordID = Dialect == DialectSQLite ? QStringLiteral("    [RecordID] INTEGER NOT NULL,")
                                                      : QStringLiteral("    [RecordID] [int] IDENTITY(1,1) NOT NULL,");
    QString columns;
    QString indexes;
    for (const clsTriggerField *field : InternalTableFields(FieldsToProcess(), Table)) {
        columns += field->FieldCreate(Dialect);
        if (field->KeyExists)
            indexes += IndexStatement(Table, field->InsertFieldName.trimmed(), Dialect);
    }
    return QStringLiteral("CREATE TABLE [") + Table + QStringLiteral("] (") + CRLF + recordID + CRLF +
           QStringLiteral("    [%1] [varchar] (250) NOT NULL,").arg(UIDColumn) + CRLF + columns +
           QStringLiteral("CONSTRAINT [%1_pk] PRIMARY KEY ([RecordID])").arg(Table) + CRLF + u')' +
           InternalStatementEnd(Dialect) + CRLF + CRLF + indexes + IndexStatement(Table, UIDColumn, Dialect) + CRLF;
}

QString clsAccountTrigger::BuildINTAlter(const QString &Table, const QString &ExistingColumns, int Dialect) const
{
    const QStringList existing = ExistingColumns.split(u',');
    const QString alterTable = QStringLiteral("ALTER TABLE [") + Table + u']';
    QString columns;
    QString indexes;
    for (const clsTriggerField *field : InternalTableFields(FieldsToProcess(), Table)) {
        const QString column = field->InsertFieldName.trimmed();
        if (existing.contains(column))
            continue;
        // SQLite adds one column per statement; SQL Server takes a list.
        if (Dialect == DialectSQLite)
            columns += alterTable + QStringLiteral(" ADD ") + field->ColumnDefinition(Dialect) + u';' + CRLF;
        else if (columns.isEmpty())
            columns = alterTable + CRLF + QStringLiteral("ADD ") + CRLF + field->FieldCreate(Dialect);
        else
            columns += field->FieldCreate(Dialect);
        if (field->KeyExists)
            indexes += IndexStatement(Table, column, Dialect);
    }
    if (Dialect != DialectSQLite && !columns.isEmpty())
        columns.remove(columns.lastIndexOf(u','), 1);
    return columns + indexes;
}

QString clsTriggerField::ColumnDefinition(int Dialect) const
{
    QString definition = u'[' + InsertFieldName.trimmed() + u']';
    if (FieldType < 0 || FieldType >= FieldTypeColumns.size())
        return definition;
    // "numeric (12,4)" is written "[numeric] (12,4)".
    const QString &type = FieldTypeColumns.at(FieldType);
    const qsizetype blank = type.indexOf(u' ');
    definition += QStringLiteral(" [") + type.left(blank < 0 ? type.size() : blank) + u']';
    if (blank >= 0)
        definition += type.mid(blank);
    if (FieldType == 0 && MaxLength > 0)
        definition += QStringLiteral(" (%1)").arg(MaxLength);
    else if (FieldType == 0 && Dialect != DialectSQLite) // SQLite takes numbers alone as a type's size
        definition += QStringLiteral(" (MAX)");
    return definition;
}

QString clsTriggerField::FieldCreate(int Dialect) const
{
    return QStringLiteral("    ") + ColumnDefinition(Dialect) + QStringLiteral(" ,") + CRLF;
}
