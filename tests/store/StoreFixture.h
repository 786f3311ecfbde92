#pragma once
#include "foundation/GlobalBlock.h"
#include "store/clsMessageStore.h"
#include "store/clsRowSet.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariantMap>

// An open SQLite message store in a temporary data folder, made from the
// blank databases the build put beside the test program. The global block is
// restored when it ends.
class StoreFixture
{
public:
    StoreFixture()
    {
        m_saved = Global;
        Global.DataPath = Folder.path() + u'/';
        Global.DatabaseKind = 99;
        Global.DBVersion = GlobalBlock::CurrentDBVersion;
        Global.DBConnection.clear();
        Store.Dialect = 99;
    }
    ~StoreFixture() { Global = m_saved; }
    StoreFixture(const StoreFixture &) = delete;
    StoreFixture &operator=(const StoreFixture &) = delete;

    QString Path(const QString &Name) const { return Global.DataPath + Name; }
    // The first value of a statement on the writer; invalid without a row.
    QVariant Value(const QString &SQL) const { return ValueOn(Store.StoreConnection(), SQL); }
    qint64 Count(const QString &Table, const QString &Condition = QStringLiteral("1=1")) const
    {
        return Value(QStringLiteral("SELECT COUNT(*) FROM ") + Table + QStringLiteral(" WHERE ") + Condition)
            .toLongLong();
    }
    // Adds a row through a row set of the writer; its RecordNo, -1 on failure.
    qint64 Add(const QString &Table, const QVariantMap &Values)
    {
        clsRowSet row(Store.StoreConnection());
        if (!row.Open(Table, QStringLiteral("1=0")))
            return -1;
        row.AddNew();
        for (auto it = Values.cbegin(); it != Values.cend(); ++it)
            if (!row.setField(it.key(), it.value()))
                return -1;
        return row.Update() ? row.Field(QStringLiteral("RecordNo")).toLongLong() : -1;
    }

    static QVariant ValueOn(const QString &Connection, const QString &SQL)
    {
        QSqlQuery query(QSqlDatabase::database(Connection, false));
        return query.exec(SQL) && query.next() ? query.value(0) : QVariant();
    }

    QTemporaryDir Folder;
    clsMessageStore Store; // made after the data folder is set, opened by the test

private:
    GlobalBlock m_saved;
};
