#include "DatabasePullReader.h"

#include "SourceMime.h"
#include "engine/databases/DatabaseConnections.h"

#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

QString DatabasePullReader::Table(const QString &Select)
{
    static const QRegularExpression from(QStringLiteral(R"(\bFROM\s+((?:\[[^\]]+\]|"[^"]+"|`[^`]+`|[^\s,;()]+)))"),
                                         QRegularExpression::CaseInsensitiveOption);
    return from.match(Select).captured(1);
}

QString DatabasePullReader::Text(const QVariant &Value)
{
    if (Value.isNull())
        return {};
    if (Value.typeId() == QMetaType::QDateTime)
        return Value.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    if (Value.typeId() == QMetaType::QByteArray)
        return QString::fromUtf8(Value.toByteArray());
    return Value.toString();
}

bool DatabasePullReader::Settle(QSqlDatabase &Db, const SourceAccount &Account, const QStringList &UIDs, QString &Failure)
{
    const bool update = !Account.DBDelete && !Account.DBUpdateField.isEmpty();
    if (UIDs.isEmpty() || (!Account.DBDelete && !update))
        return true;
    const QString table = Table(Account.DBSQL);
    if (table.isEmpty()) {
        Failure = QStringLiteral("the processed records cannot be changed: the query names no table after FROM");
        return false;
    }
    const QString statement = Account.DBDelete
        ? QStringLiteral("DELETE FROM %1 WHERE %2 = ?").arg(table, Account.DBUIDField)
        : QStringLiteral("UPDATE %1 SET %2 = ? WHERE %3 = ?").arg(table, Account.DBUpdateField, Account.DBUIDField);
    Db.transaction();
    QSqlQuery query(Db);
    if (!query.prepare(statement)) {
        Failure = QStringLiteral("the processed records cannot be changed: ") + DatabaseConnections::Reason(query.lastError(), Account.DBConnection);
        Db.rollback();
        return false;
    }
    for (const QString &uid : UIDs) {
        int at = 0;
        if (update)
            query.bindValue(at++, Account.DBUpdateValue);
        query.bindValue(at, uid);
        if (!query.exec()) {
            Failure = QStringLiteral("the processed records cannot be changed: ") + DatabaseConnections::Reason(query.lastError(), Account.DBConnection);
            Db.rollback();
            return false;
        }
    }
    if (!Db.commit()) {
        Failure = QStringLiteral("the processed records cannot be changed: ") + DatabaseConnections::Reason(Db.lastError(), Account.DBConnection);
        return false;
    }
    return true;
}

SourceReadResult DatabasePullReader::Read(SourceAccount &Account, MessageSink &Sink)
{
    SourceReadResult result;
    auto fail = [&](const QString &Reason) {
        result.Failed = true;
        result.Failure = Reason;
        return result;
    };
    if (Account.DBConnection.trimmed().isEmpty() || Account.DBSQL.trimmed().isEmpty())
        return fail(QStringLiteral("the account has no connection string or no query"));
    if (Account.DBUIDField.isEmpty())
        return fail(QStringLiteral("the account names no unique ID field"));
    QString problem;
    QSqlDatabase db = DatabaseConnections::Open(Account.DBConnection, &problem, Account.TimeoutSeconds, true);
    if (!db.isValid() || !db.isOpen())
        return fail(QStringLiteral("the database cannot be opened: ") + problem);

    QStringList names;
    QList<Record> records;
    {
        QSqlQuery query(db);
        query.setForwardOnly(true);
        if (!query.exec(Account.DBSQL)) {
            const QString reason = DatabaseConnections::Reason(query.lastError(), Account.DBConnection);
            DatabaseConnections::Discard(Account.DBConnection);
            return fail(QStringLiteral("the query failed: ") + reason);
        }
        const QSqlRecord columns = query.record();
        const int uid = columns.indexOf(Account.DBUIDField);
        const int text = Account.DBMSGBody ? -1 : columns.indexOf(Account.DBMSGField);
        if (uid < 0)
            return fail(QStringLiteral("the query has no column \"%1\" for the unique ID").arg(Account.DBUIDField));
        if (!Account.DBMSGBody && text < 0)
            return fail(QStringLiteral("the query has no column \"%1\" for the message text").arg(Account.DBMSGField));
        for (int i = 0; i < columns.count(); ++i)
            names << columns.fieldName(i);
        while (query.next()) {
            Record record;
            record.UID = Text(query.value(uid));
            if (Account.DBMSGBody) {
                for (int i = 0; i < columns.count(); ++i)
                    record.Values << Text(query.value(i));
            } else {
                record.Values << Text(query.value(text));
            }
            records.append(record);
        }
    }

    QList<SourceMessage> batch;
    QStringList queued, settle;
    auto commit = [&]() {
        if (!batch.isEmpty()) {
            if (!Sink.Queue(batch)) {
                fail(QStringLiteral("the edge queue did not take the records"));
                return false;
            }
            result.NewMessages += int(batch.size());
            settle += queued;
            batch.clear();
            queued.clear();
        }
        QString failure;
        if (!Settle(db, Account, settle, failure)) {
            fail(failure);
            return false;
        }
        settle.clear();
        return true;
    };
    const QDateTime now = QDateTime::currentDateTime();
    for (const Record &record : records) {
        if (Account.MaxMessagesPerRun > 0 && result.NewMessages + batch.size() >= Account.MaxMessagesPerRun)
            break;
        if (record.UID.isEmpty())
            continue;
        const MessageSink::Identity known = Sink.Lookup(Account.AccountID, Source(), record.UID);
        if (known == MessageSink::Identity::Unknown)
            return fail(QStringLiteral("the edge queue cannot be read"));
        if (known == MessageSink::Identity::Known) {
            settle << record.UID;
            continue;
        }
        QByteArray mime;
        if (Account.DBMSGBody) {
            mime = SourceMime::Compose(Account.Name + QStringLiteral(" record ") + record.UID,
                                       SourceMime::NamedValues(names, record.Values), now);
        } else {
            const QByteArray text = record.Values.value(0).toUtf8();
            mime = SourceMime::IsMessage(text) ? text
                                               : SourceMime::Compose(Account.Name + QStringLiteral(" record ") + record.UID,
                                                                     record.Values.value(0), now);
        }
        SourceMessage message;
        message.AccountID = Account.AccountID;
        message.Source = Source();
        message.UID = record.UID;
        message.MessageDate = SourceMime::DateHeader(mime).isValid() ? SourceMime::DateHeader(mime) : now;
        message.Mime = SourceMime::WithProcessHeaders(mime, Account.AccountID, Source(), record.UID, false);
        batch.append(std::move(message));
        queued << record.UID;
        if (batch.size() >= BatchMessages && !commit())
            return result;
    }
    commit();
    return result;
}
