#pragma once
#include <QSqlQuery>
#include <QSqlRecord>
#include <QString>
#include <QStringList>
#include <QVariant>

// The updatable row set of one table, what "OPEN TABLE <Table>
// FILTER(<Filter>)" gives: the rows of the table that meet the filter, read
// forward, each of them editable, and new rows added to it. A filter that no
// row meets ("1=0") gives the empty set that new rows are added to.
//
// Values travel as bound parameters, so no text needs quoting. On SQLite,
// where the store compares dates as text, a date is written as
// "yyyy-MM-dd HH:mm:ss" (a date alone with "00:00:00"), the form of the
// store's date literals.
class clsRowSet
{
public:
    // Works on the named connection of the store, the queue or a log.
    explicit clsRowSet(const QString &ConnectionName);

    bool Open(const QString &Table, const QString &Filter);
    bool AtEnd() const { return m_atEnd; }
    void MoveNext();
    // A value of the current or the new row; a null value is a null QVariant.
    QVariant Field(const QString &Name) const { return m_row.value(Name); }

    // Starts a new row with every field null.
    void AddNew();
    // False for a field the table does not have.
    bool setField(const QString &Name, const QVariant &Value);
    // Writes the new row, or the changed fields of the current row by its
    // primary key. A new row becomes the current row, its automatic number
    // readable through Field.
    bool Update();

    // The reason of the last failure.
    QString LastError;

    // Row sets remember the columns and key of each table and their prepared
    // inserts per connection; this forgets them, for a connection that closes
    // or whose tables change.
    static void ForgetConnection(const QString &ConnectionName);

private:
    bool Fail(const QString &Text);
    QVariant ToDatabase(const QVariant &Value) const;
    bool Insert();
    QString InsertStatement() const;
    bool Change();
    // Keeps the key of the current row, by which Update finds it again.
    void RememberKey();

    QString m_connection;
    QString m_table;
    QSqlQuery m_query;
    QSqlRecord m_row;
    QSqlRecord m_fields;
    QStringList m_key;
    QStringList m_changed;
    QVariantList m_keyValues;
    bool m_adding = false;
    bool m_atEnd = true;
};
