#include "clsEventLog.h"
#include "StoreFiles.h"
#include "clsMessage.h"
#include "clsMessageStore.h"
#include "clsRowSet.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "foundation/TextHelpers.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <atomic>

namespace {

QString NewConnectionName()
{
    static std::atomic<int> instances{0};
    return QStringLiteral("PostvaneLog.%1").arg(++instances);
}

QString DayText(const QDate &Date)
{
    return Date.toString(QStringLiteral("yyyy-MM-dd"));
}

} // namespace

clsEventLog::clsEventLog()
    : m_connection(NewConnectionName())
{
    setFileName(QStringLiteral("ServerLog.db3"));
}

clsEventLog::~clsEventLog()
{
    CloseLog();
}

void clsEventLog::setFileName(const QString &Value)
{
    CloseLog();
    const QFileInfo file(Value);
    m_stem = (Value.contains(u'/') ? file.path() + u'/' : Global.DataPath) + file.completeBaseName();
}

bool clsEventLog::OpenLog(const QString &FileName)
{
    if (!FileName.isEmpty() && FileName != this->FileName())
        setFileName(FileName);
    if (m_open)
        return true;
    if (!QFileInfo::exists(this->FileName())) {
        if (!EnsureDatabaseFile(this->FileName(), QStringLiteral("MetaLog.db3")))
            return false;
        QFile::remove(TextFileName());
    }
    m_open = OpenSQLite(m_connection, this->FileName(), false);
    // A log line is not worth a disk sync of its own: in WAL mode the lines
    // reach the disk with the next checkpoint, and a crash loses at most the
    // last few, never the file.
    if (m_open)
        QSqlQuery(QSqlDatabase::database(m_connection, false)).exec(QStringLiteral("PRAGMA synchronous=NORMAL"));
    return m_open;
}

void clsEventLog::CloseLog()
{
    CloseConnection(m_connection);
    m_open = false;
}

bool clsEventLog::BeginTransaction()
{
    return OpenLog() && QSqlDatabase::database(m_connection, false).transaction();
}

bool clsEventLog::CommitTransaction()
{
    return m_open && QSqlDatabase::database(m_connection, false).commit();
}

void clsEventLog::AddEvent(const QString &Detail)
{
    const clsMessage &message = CurrentMessage();
    WriteEvent(QDateTime::currentDateTime(), message.Account ? message.Account->AccountID : QString(),
               message.Trigger() ? message.Trigger()->TriggerID : QString(), message.MessageID, Detail);
}

void clsEventLog::AddRemoteEvent(const QString &Detail, const QDateTime &Date, const QString &AccountID,
                                 const QString &TriggerID, const QString &UID)
{
    const QDateTime stamp = Date.date().year() < 2000 ? QDateTime::currentDateTime() : Date;
    WriteEvent(stamp, AccountID, TriggerID, UID, Detail);
}

void clsEventLog::WriteEvent(const QDateTime &Stamp, const QString &AccountID, const QString &TriggerID,
                             const QString &UID, const QString &Detail)
{
    if (OpenLog()) {
        clsRowSet row(m_connection);
        if (row.Open(QStringLiteral("EventLog"), QStringLiteral("1=0"))) {
            row.AddNew();
            row.setField(QStringLiteral("DateStamp"), Stamp);
            row.setField(QStringLiteral("AccountID"), AccountID);
            row.setField(QStringLiteral("TriggerID"), TriggerID);
            row.setField(QStringLiteral("UID"), UID);
            row.setField(QStringLiteral("Detail"), Detail);
            if (row.Update())
                return;
        }
    }
    // Logging never fails its caller: the line goes to the text file, and the
    // next line tries a fresh connection.
    QFile text(TextFileName());
    if (text.open(QIODevice::Append))
        text.write((Stamp.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + QStringLiteral(": ") + Detail
                    + QStringLiteral("\r\n"))
                       .toUtf8());
    CloseLog();
}

qint64 clsEventLog::DeleteOldLogs(const QDate &Before)
{
    if (!OpenLog())
        return -1;
    qint64 deleted = -1;
    {
        QSqlQuery query(QSqlDatabase::database(m_connection, false));
        if (query.exec(QStringLiteral("DELETE From EventLog WHERE (DateStamp < '") + DayText(Before)
                       + QStringLiteral("')")))
            deleted = query.numRowsAffected();
    }
    if (deleted > 0)
        AddEvent(QStringLiteral("Deleted %1 log entries.").arg(deleted));
    QFile::remove(TextFileName());
    return deleted;
}

void clsEventLog::ClearLog()
{
    CloseLog();
    RemoveDatabaseFile(FileName());
    QFile::remove(TextFileName());
}

QString clsEventLog::GetLogsForUID(const QString &UID)
{
    QStringList details;
    if (OpenLog()) {
        QSqlQuery query(QSqlDatabase::database(m_connection, false));
        query.setForwardOnly(true);
        if (query.exec(QStringLiteral("SELECT Detail FROM EventLog WHERE UID = ") + SQLQuote(UID, 0)
                       + QStringLiteral(" ORDER BY ID")))
            while (query.next())
                details << query.value(0).toString();
    }
    return details.join(u'\n');
}

QString clsEventLog::GetLogs(const QDate &From, const QDate &To)
{
    return LogLines(From, To, QString(), QString(), QStringLiteral("yyyy-MM-dd:HH:mm:ss"), QStringLiteral("\n"));
}

QString clsEventLog::GetTodaysLogs(const QString &AccountID, const QDate &Day, const QString &SearchText, bool ForGrid)
{
    const QString search = SearchText.isEmpty()
        ? QString()
        : QStringLiteral(" AND Detail LIKE ") + SQLQuote(u'%' + SearchText + u'%', 0);
    return ForGrid ? LogLines(Day, Day, search, AccountID, QStringLiteral("yyyy-MM-dd:HH:mm:ss"), QStringLiteral("\n"))
                   : LogLines(Day, Day, search, AccountID, QStringLiteral("HH:mm:ss"), QStringLiteral("\r\n"));
}

QString clsEventLog::LogLines(const QDate &From, const QDate &To, const QString &Narrow, const QString &AccountID,
                              const QString &StampFormat, const QString &LineEnd)
{
    QString lines;
    if (!OpenLog())
        return lines;
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT * FROM EventLog WHERE DateStamp BETWEEN '") + DayText(From)
                    + QStringLiteral(" 00:00:00' AND '") + DayText(To) + QStringLiteral(" 23:59:59'") + Narrow
                    + QStringLiteral(" ORDER BY DateStamp")))
        return lines;
    while (query.next()) {
        if (!AccountID.isEmpty() && query.value(QStringLiteral("AccountID")).toString().trimmed() != AccountID)
            continue;
        lines += SafeDate(query.value(QStringLiteral("DateStamp"))).toString(StampFormat) + u' '
            + query.value(QStringLiteral("Detail")).toString() + LineEnd;
    }
    return lines;
}
