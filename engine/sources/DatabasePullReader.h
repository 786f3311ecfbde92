#pragma once
#include "SourceReader.h"

#include <QSqlDatabase>
#include <QVariant>
#include <QStringList>

// Reads the records of a database query (DBSQL on DBConnection, any
// connection string the data actions take): one message per record, its
// identity the value of DBUIDField; the body holds every column as
// "Name: value" (DBMSGBody) or the text of the column DBMSGField, which
// stays the whole message when it is one. After a record's message is
// queued the record is deleted (DBDelete) or its DBUpdateField set to
// DBUpdateValue, in the table the query reads from; a record already queued
// by a read that ended before that is settled so at the next read.
class DatabasePullReader : public SourceReader
{
public:
    QString Source() const override { return QStringLiteral("DB"); }
    SourceReadResult Read(SourceAccount &Account, MessageSink &Sink) override;

    static constexpr int BatchMessages = 100;
    // The table a select reads from: the name after its first FROM.
    static QString Table(const QString &Select);

private:
    struct Record
    {
        QString UID;
        QStringList Values;
    };

    // Deletes or updates the records at the source; false with Failure set.
    static bool Settle(QSqlDatabase &Db, const SourceAccount &Account, const QStringList &UIDs, QString &Failure);
    static QString Text(const QVariant &Value);
};
