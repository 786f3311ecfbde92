// The Outbox operations of clsMessageStore: mail and SMS waiting to be sent,
// scheduled mail, and forwarding stored messages.
#include "clsMessageStore.h"
#include "foundation/Startup.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace {

QString Number(qint64 Value)
{
    return QString::number(Value);
}

QVariantMap OutboxValues(const OutboxMessage &Message, const QDateTime &Due)
{
    return {{QStringLiteral("AccountID"), Message.AccountID},
            {QStringLiteral("TriggerID"), Message.TriggerID},
            {QStringLiteral("ReferenceID"), Message.ReferenceID},
            {QStringLiteral("DateAdded"), QDateTime::currentDateTime()},
            {QStringLiteral("ScheduledDate"), Due},
            {QStringLiteral("Scheduled"), Message.Scheduled ? 1 : 0},
            {QStringLiteral("Subject"), Message.Subject},
            {QStringLiteral("MailTo"), Message.MailTo},
            {QStringLiteral("MailFrom"), Message.MailFrom},
            {QStringLiteral("Importance"), Message.Importance},
            {QStringLiteral("Attachments"), Message.Attachments ? 1 : 0},
            {QStringLiteral("Mime"), Message.Mime},
            {QStringLiteral("SMS"), Message.SMS ? 1 : 0},
            {QStringLiteral("Status"), 0}};
}

// Headers and body of a stored message as one MIME text.
QString StoredMime(const QSqlQuery &Row)
{
    return Row.value(QStringLiteral("Headers")).toString() + QStringLiteral("\r\n")
        + Row.value(QStringLiteral("Body")).toString();
}

QString MimeHeader(const QString &Mime, const QString &Name)
{
    const qsizetype end = Mime.indexOf(QStringLiteral("\r\n\r\n"));
    const QStringList lines = (end < 0 ? Mime : Mime.left(end)).split(QStringLiteral("\r\n"));
    for (int n = 0; n < lines.size(); ++n) {
        if (!lines.at(n).startsWith(Name + u':', Qt::CaseInsensitive))
            continue;
        QString value = lines.at(n).mid(Name.size() + 1);
        while (n + 1 < lines.size() && (lines.at(n + 1).startsWith(u' ') || lines.at(n + 1).startsWith(u'\t')))
            value += u' ' + lines.at(++n).trimmed();
        return value.trimmed();
    }
    return QString();
}

} // namespace

qint64 clsMessageStore::AddToOutBox(const OutboxMessage &Message, const QDateTime &Schedule)
{
    const QDateTime due = Schedule.isValid() ? Schedule : QDateTime::currentDateTime();
    const qint64 recordNo = AddRow(QStringLiteral("Outbox"), OutboxValues(Message, due), QStringLiteral("AddToOutBox"));
    if (recordNo > 0 && !Message.SMS) {
        const clsAccount *account = Accounts().Item(Message.AccountID);
        UpdateDaySummary(account ? account->OrganizationID : QString(), Message.AccountID, false,
                         Message.Mime.size());
    }
    return recordNo;
}

qint64 clsMessageStore::AddScheduledEmail(const OutboxMessage &Message)
{
    OutboxMessage scheduled = Message;
    scheduled.Scheduled = true;
    return AddRow(QStringLiteral("Outbox"), OutboxValues(scheduled, Message.ScheduledDate),
                  QStringLiteral("AddScheduledEmail"));
}

qint64 clsMessageStore::AddScheduledSMS(const OutboxMessage &Message)
{
    OutboxMessage sms = Message;
    sms.SMS = true;
    const QDateTime due = Message.ScheduledDate.isValid() ? Message.ScheduledDate : QDateTime::currentDateTime();
    return AddRow(QStringLiteral("Outbox"), OutboxValues(sms, due), QStringLiteral("AddScheduledSMS"));
}

bool clsMessageStore::ScheduledDuplicate(const QString &TriggerID, const QString &MailTo, const QString &Subject,
                                         const QString &MailFrom)
{
    auto rows = Select(m_store,
                       QStringLiteral("SELECT Subject,MailFrom FROM Outbox WHERE (Scheduled = 1) AND (TriggerID = ")
                           + Quote(TriggerID) + QStringLiteral(") AND (MailTo = ") + Quote(MailTo) + u')',
                       QStringLiteral("AddScheduledEmail"));
    while (rows && rows->next())
        if (rows->value(0).toString() == Subject && rows->value(1).toString() == MailFrom)
            return true;
    return false;
}

bool clsMessageStore::GetOutBox(OutboxMessage &Message)
{
    const QString routine = QStringLiteral("GetOutBox");
    const QDateTime now = QDateTime::currentDateTime();
    // Another sender may take the row between the pick and the update: the
    // update then changes nothing and the next row is tried.
    for (int attempt = 0; attempt < 5; ++attempt) {
        auto picked = Select(m_store,
                             SelectFirst(QStringLiteral("RecordNo,Status"),
                                         QStringLiteral("Outbox WHERE ScheduledDate < ") + DateTimeLiteral(now)
                                             + QStringLiteral(" AND Status < 100 ORDER BY ScheduledDate")),
                             routine);
        if (!picked || !picked->next())
            return false;
        const qint64 recordNo = picked->value(0).toLongLong();
        const int attempts = picked->value(1).toInt() + 1;
        picked.reset();
        const qint64 changed = Run(m_store,
                                   QStringLiteral("UPDATE Outbox SET Status=") + Number(attempts + 100)
                                       + QStringLiteral(",ScheduledDate=") + DateTimeLiteral(now.addSecs(600))
                                       + QStringLiteral(" WHERE RecordNo = ") + Number(recordNo)
                                       + QStringLiteral(" AND Status < 100"),
                                   routine);
        if (changed < 0)
            return false;
        if (changed == 0)
            continue;
        auto row = Select(m_store, QStringLiteral("SELECT * FROM Outbox WHERE RecordNo = ") + Number(recordNo), routine);
        if (!row || !row->next())
            return false;
        Message = OutboxMessage();
        Message.RecordNo = recordNo;
        Message.AccountID = row->value(QStringLiteral("AccountID")).toString();
        Message.TriggerID = row->value(QStringLiteral("TriggerID")).toString();
        Message.ReferenceID = row->value(QStringLiteral("ReferenceID")).toString();
        Message.MailFrom = row->value(QStringLiteral("MailFrom")).toString();
        Message.MailTo = row->value(QStringLiteral("MailTo")).toString();
        Message.Subject = row->value(QStringLiteral("Subject")).toString();
        Message.Mime = row->value(QStringLiteral("Mime")).toString();
        Message.Importance = row->value(QStringLiteral("Importance")).toInt();
        Message.Attachments = row->value(QStringLiteral("Attachments")).toBool();
        Message.SMS = row->value(QStringLiteral("SMS")).toBool();
        Message.Scheduled = row->value(QStringLiteral("Scheduled")).toBool();
        Message.ScheduledDate = row->value(QStringLiteral("ScheduledDate")).toDateTime();
        Message.Status = attempts;
        return true;
    }
    return false;
}

bool clsMessageStore::ReturnOutBox(qint64 RecordNo, int Attempts, const QDateTime &NextTry)
{
    return Run(m_store,
               QStringLiteral("UPDATE Outbox SET Status=") + Number(qBound(0, Attempts, 99))
                   + QStringLiteral(",ScheduledDate=") + DateTimeLiteral(NextTry) + QStringLiteral(" WHERE RecordNo = ")
                   + Number(RecordNo),
               QStringLiteral("ReturnOutBox"))
        >= 0;
}

qint64 clsMessageStore::ReturnTakenOutBox()
{
    return Run(m_store,
               QStringLiteral("UPDATE Outbox SET Status=Status-100 WHERE Status >= 100 AND ScheduledDate < ")
                   + DateTimeLiteral(QDateTime::currentDateTime()),
               QStringLiteral("ReturnTakenOutBox"));
}

bool clsMessageStore::DeleteOutBox(qint64 RecordNo)
{
    return Run(m_store, QStringLiteral("DELETE FROM Outbox WHERE RecordNo = ") + Number(RecordNo),
               QStringLiteral("DeleteOutBox"))
        >= 0;
}

bool clsMessageStore::GetOutBoxRecord(qint64 RecordNo)
{
    const auto found = Scalar(m_store, QStringLiteral("SELECT RecordNo FROM Outbox WHERE RecordNo = ") + Number(RecordNo),
                              QStringLiteral("GetOutBoxRecord"));
    return found && found->isValid();
}

QString clsMessageStore::GetScheduledBody(qint64 RecordNo)
{
    const auto mime = Scalar(m_store, QStringLiteral("SELECT Mime FROM Outbox WHERE (RecordNo = ") + Number(RecordNo) + u')',
                             QStringLiteral("GetScheduledBody"));
    return mime ? mime->toString() : QString();
}

QString clsMessageStore::GetScheduledMessages(const QString &AccountID, const QString &TriggerID,
                                              const QString &SearchText)
{
    QString sql = QStringLiteral("SELECT RecordNo,TriggerID,ScheduledDate,MailFrom,MailTo,Subject,Importance,Attachments "
                                 "FROM Outbox WHERE (AccountID = ")
        + Quote(AccountID) + u')';
    if (!TriggerID.isEmpty())
        sql += QStringLiteral(" AND (TriggerID = ") + Quote(TriggerID) + u')';
    if (!SearchText.isEmpty())
        sql += QStringLiteral(" AND ") + SearchCondition(QStringLiteral("Subject,MailFrom,MailTo"), SearchText);
    sql += QStringLiteral(" AND (Scheduled<>0) ORDER By ScheduledDate");
    auto rows = Select(m_store, sql, QStringLiteral("GetScheduledMessages"));
    QString text;
    while (rows && rows->next()) {
        const QStringList fields{
            rows->value(0).toString(),
            rows->value(6).toString(),
            rows->value(7).toBool() ? QStringLiteral("Y") : QStringLiteral("N"),
            rows->value(1).toString(),
            rows->value(3).toString(),
            rows->value(4).toString(),
            rows->value(2).toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")),
            rows->value(5).toString(),
        };
        for (const QString &field : fields)
            text += QString(field).replace(u'\t', u' ').replace(u'\n', u' ') + u'\t';
        text += u'\n';
    }
    return text;
}

bool clsMessageStore::DeleteScheduledEmail(qint64 RecordNo)
{
    return Run(m_store, QStringLiteral("DELETE FROM OutBox WHERE (RecordNo=") + Number(RecordNo) + u')',
               QStringLiteral("DeleteScheduledEmail"))
        >= 0;
}

bool clsMessageStore::SendScheduledEmail(qint64 RecordNo, bool *Found)
{
    const qint64 changed = Run(m_store,
                               QStringLiteral("UPDATE OutBox SET ScheduledDate = ")
                                   + DateTimeLiteral(QDateTime::currentDateTime())
                                   + QStringLiteral(" WHERE (RecordNo=") + Number(RecordNo) + u')',
                               QStringLiteral("SendScheduledEmail"));
    if (Found)
        *Found = changed > 0;
    return changed >= 0;
}

int clsMessageStore::ForwardMessage(qint64 RecordNo, const QString &FolderID, const QString &Addresses)
{
    QString sql = QStringLiteral("SELECT * FROM MessageStore Where ");
    if (!FolderID.isEmpty())
        sql += QStringLiteral("FolderID = ") + Quote(FolderID) + QStringLiteral(" AND ");
    sql += QStringLiteral("RecordNo = ") + Number(RecordNo);
    auto row = Select(m_store, sql, QStringLiteral("ForwardMessage"));
    if (!row || !row->next())
        return -1;
    OutboxMessage message;
    message.AccountID = row->value(QStringLiteral("AccountID")).toString();
    message.ReferenceID = row->value(QStringLiteral("UID")).toString();
    message.Subject = row->value(QStringLiteral("Subject")).toString();
    message.MailFrom = row->value(QStringLiteral("FromAddress")).toString();
    message.Attachments = row->value(QStringLiteral("Attachments")).toBool();
    message.Mime = StoredMime(*row);
    message.Importance = MimeHeader(message.Mime, QStringLiteral("X-Priority")).left(1).toInt();
    row.reset();
    int added = 0;
    for (const QString &address : Addresses.split(u',', Qt::SkipEmptyParts)) {
        message.MailTo = address.trimmed();
        if (message.MailTo.isEmpty())
            continue;
        if (AddToOutBox(message) < 0)
            return -1;
        ++added;
    }
    return added;
}

qint64 clsMessageStore::GetOutBoxCount()
{
    const auto count = Scalar(m_store, QStringLiteral("SELECT Count(RecordNo) FROM Outbox"), QStringLiteral("GetOutBoxCount"));
    return count ? count->toLongLong() : -1;
}
