#pragma once
#include <QSqlDatabase>
#include <QString>
#include <QVariant>

#include <functional>

class clsAccountTrigger;
class clsActionAZ;
class clsActionDB;
class clsActionDBCustom;
class clsMessage;
class clsMessageField;
struct NamedValues;

// Runs the database actions on the current message: the trigger's generated
// statements (DatabaseUpdate, Azure) or the action's own (DatabaseUpdateCustom).
// For each table, a select that finds a row turns the insert into the update.
// Values are bound as parameters of the field's type, never pasted into the
// text; all statements of one action commit together or not at all. Each
// failure is one "*" line with the driver's reason; a connection that died
// is opened anew and the action tried once more.
class DatabaseActionRun
{
public:
    using LogFunction = std::function<void(const QString &Text)>;

    DatabaseActionRun(clsMessage &Message, LogFunction Log);

    bool RunDirect(const clsActionDB &Action, clsAccountTrigger &Trigger);
    bool RunCustom(const clsActionDBCustom &Action);
    bool RunAzure(const clsActionAZ &Action, clsAccountTrigger &Trigger);

    // The value a parameter of a statement gets: "UID" the message's
    // identity, a field by its column's parameter name or by its own name,
    // else the token of that name. Problem is set when the value doesn't fit
    // the field's type or nothing has the name.
    QVariant ParameterValue(const QString &Name, QString *Problem) const;
    // The field's value as the type of its column: numbers, dates, times and
    // bits converted; an empty value is NULL of that type.
    static QVariant TypedValue(const clsMessageField &Field, QString *Problem);

    // The connection text for the internal database of the trigger.
    static QString InternalConnection(const clsAccountTrigger &Trigger);

private:
    struct Script
    {
        QString Insert;
        QString Update;
        QString Select;
        // The trigger's statements: a table of key fields alone has no
        // update, and a row found is left as it is.
        bool Generated = false;
        int Dialect = 0; // of generated statements
    };
    // The trigger's statements for the dialect (the internal database's with
    // the message's identity). They follow from the tables, columns, keys and
    // switches of its fields alone, so they are made once in each thread for
    // each set of these.
    static Script GeneratedScript(const clsAccountTrigger &Trigger, int Dialect, bool Internal);
    bool Run(const QString &Of, const QString &Connection, int Timeout, const Script &Statements);
    // Empty when all went in; otherwise the reason, all rolled back.
    QString RunOnce(QSqlDatabase &Db, const Script &Statements, int *Inserted, int *Updated);
    clsMessageField *FieldForParameter(const QString &Name) const;

    clsMessage &m_message;
    LogFunction m_log;
};
