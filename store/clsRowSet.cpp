#include "clsRowSet.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlField>
#include <QSqlIndex>

namespace {

struct TableShape
{
    QSqlRecord Fields;
    QStringList Key;
};

// What each connection of this thread has learned of its tables: asking the
// driver for columns and keys, and preparing an insert, cost far more than
// writing a row.
struct ConnectionCache
{
    QHash<QString, TableShape> Tables;
    QHash<QString, QSqlQuery> Inserts; // by table and column list
};

thread_local QHash<QString, ConnectionCache> Caches;

const QString EmptyFilter = QStringLiteral("1=0");

} // namespace

void clsRowSet::ForgetConnection(const QString &ConnectionName)
{
    Caches.remove(ConnectionName);
}

clsRowSet::clsRowSet(const QString &ConnectionName)
    : m_connection(ConnectionName)
    , m_query(QSqlDatabase::database(ConnectionName, false))
{
}

bool clsRowSet::Open(const QString &Table, const QString &Filter)
{
    QSqlDatabase db = QSqlDatabase::database(m_connection, false);
    m_table = Table;
    m_adding = false;
    m_changed.clear();
    m_query = QSqlQuery(db);
    m_query.setForwardOnly(true);
    QHash<QString, TableShape> &shapes = Caches[m_connection].Tables;
    const auto known = shapes.constFind(Table.toLower());
    if (known != shapes.cend() && Filter == EmptyFilter) {
        m_fields = known->Fields;
        m_key = known->Key;
        MoveNext();
        return true;
    }
    if (!m_query.exec(QStringLiteral("SELECT * FROM ") + Table + QStringLiteral(" WHERE ") + Filter))
        return Fail(m_query.lastError().text());
    m_fields = m_query.record();
    if (known != shapes.cend()) {
        m_key = known->Key;
    } else {
        m_key.clear();
        const QSqlIndex primary = db.primaryIndex(Table);
        for (int i = 0; i < primary.count(); ++i)
            m_key << primary.fieldName(i);
        shapes.insert(Table.toLower(), {m_fields, m_key});
    }
    MoveNext();
    return true;
}

void clsRowSet::MoveNext()
{
    m_adding = false;
    m_changed.clear();
    m_atEnd = !m_query.isActive() || !m_query.next();
    m_row = m_atEnd ? m_fields : m_query.record();
    RememberKey();
}

void clsRowSet::RememberKey()
{
    m_keyValues.clear();
    for (const QString &name : std::as_const(m_key))
        m_keyValues << m_row.value(name);
}

void clsRowSet::AddNew()
{
    m_row = m_fields;
    m_row.clearValues();
    m_changed.clear();
    m_adding = true;
}

bool clsRowSet::setField(const QString &Name, const QVariant &Value)
{
    const int index = m_row.indexOf(Name);
    if (index < 0)
        return Fail(QStringLiteral("No field %1 in %2").arg(Name, m_table));
    m_row.setValue(index, Value);
    const QString name = m_row.fieldName(index);
    if (!m_changed.contains(name))
        m_changed << name;
    return true;
}

bool clsRowSet::Update()
{
    if (m_adding)
        return Insert();
    if (m_atEnd)
        return Fail(QStringLiteral("No current row in ") + m_table);
    return Change();
}

QString clsRowSet::InsertStatement() const
{
    QString sql = QStringLiteral("INSERT INTO ") + m_table;
    if (m_changed.isEmpty())
        return sql + QStringLiteral(" DEFAULT VALUES");
    QStringList marks;
    for (qsizetype i = 0; i < m_changed.size(); ++i)
        marks << QStringLiteral("?");
    return sql + QStringLiteral(" (") + m_changed.join(u',') + QStringLiteral(") VALUES (") + marks.join(u',') + u')';
}

bool clsRowSet::Insert()
{
    QSqlDatabase db = QSqlDatabase::database(m_connection, false);
    QHash<QString, QSqlQuery> &inserts = Caches[m_connection].Inserts;
    const QString statementKey = m_table.toLower() + u'|' + m_changed.join(u',');
    auto prepared = inserts.find(statementKey);
    if (prepared == inserts.end()) {
        QSqlQuery statement(db);
        if (!statement.prepare(InsertStatement()))
            return Fail(statement.lastError().text());
        prepared = inserts.insert(statementKey, statement);
    }
    QSqlQuery &insert = *prepared;
    for (qsizetype i = 0; i < m_changed.size(); ++i)
        insert.bindValue(int(i), ToDatabase(m_row.value(m_changed.at(i))));
    if (!insert.exec())
        return Fail(insert.lastError().text());

    // The automatic number of the new row, where the key is one.
    if (m_key.size() == 1 && m_row.isNull(m_key.first())) {
        QVariant number = insert.lastInsertId();
        if (!number.isValid()) {
            QSqlQuery identity(db);
            if (identity.exec(QStringLiteral("SELECT @@IDENTITY")) && identity.next())
                number = identity.value(0);
        }
        m_row.setValue(m_key.first(), number);
    }
    m_adding = false;
    m_atEnd = false;
    m_changed.clear();
    RememberKey();
    return true;
}

bool clsRowSet::Change()
{
    if (m_changed.isEmpty())
        return true;
    if (m_key.isEmpty())
        return Fail(QStringLiteral("No primary key in ") + m_table);
    QStringList sets;
    for (const QString &name : std::as_const(m_changed))
        sets << name + QStringLiteral("=?");
    QStringList keys;
    for (const QString &name : std::as_const(m_key))
        keys << name + QStringLiteral("=?");
    QSqlQuery update(QSqlDatabase::database(m_connection, false));
    if (!update.prepare(QStringLiteral("UPDATE ") + m_table + QStringLiteral(" SET ") + sets.join(u',')
                        + QStringLiteral(" WHERE ") + keys.join(QStringLiteral(" AND "))))
        return Fail(update.lastError().text());
    for (const QString &name : std::as_const(m_changed))
        update.addBindValue(ToDatabase(m_row.value(name)));
    for (const QVariant &value : std::as_const(m_keyValues))
        update.addBindValue(ToDatabase(value));
    if (!update.exec())
        return Fail(update.lastError().text());
    m_changed.clear();
    RememberKey();
    return true;
}

QVariant clsRowSet::ToDatabase(const QVariant &Value) const
{
    if (QSqlDatabase::database(m_connection, false).driverName() != QStringLiteral("QSQLITE"))
        return Value;
    switch (Value.typeId()) {
    case QMetaType::QDateTime:
        return Value.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    case QMetaType::QDate:
        return Value.toDate().toString(QStringLiteral("yyyy-MM-dd")) + QStringLiteral(" 00:00:00");
    default:
        return Value;
    }
}

bool clsRowSet::Fail(const QString &Text)
{
    LastError = Text;
    return false;
}
