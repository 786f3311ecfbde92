#include "LogonThrottle.h"

#include <QDateTime>

namespace {

qint64 SystemNow()
{
    return QDateTime::currentSecsSinceEpoch();
}

// Past this many addresses, the ones with nothing left to remember go.
constexpr int RecordsBeforeForgetting = 4096;

} // namespace

LogonThrottle::LogonThrottle(Clock Now) : m_now(Now ? Now : SystemNow) {}

QString LogonThrottle::Key(const QHostAddress &Client)
{
    bool mapped = false;
    const QHostAddress v4(Client.toIPv4Address(&mapped));
    return mapped ? v4.toString() : Client.toString();
}

bool LogonThrottle::IsBlocked(const QHostAddress &Client)
{
    const auto found = m_records.constFind(Key(Client));
    return found != m_records.constEnd() && found->BlockedUntil > m_now();
}

QString LogonThrottle::Failed(const QHostAddress &Client)
{
    const qint64 now = m_now();
    if (m_records.size() > RecordsBeforeForgetting)
        Forget(now);
    const QString key = Key(Client);
    Record &record = m_records[key];
    if (record.BlockedUntil > 0 && now - record.BlockedUntil > LastBackOff)
        record = Record();
    while (!record.Failures.isEmpty() && now - record.Failures.constFirst() >= Window)
        record.Failures.removeFirst();
    record.Failures.append(now);
    if (record.Failures.size() < MaxFailures)
        return QString();

    const qint64 backOff = record.NextBackOff;
    record.BlockedUntil = now + backOff;
    record.NextBackOff = qMin(backOff * 2, LastBackOff);
    record.Failures.clear();
    return QStringLiteral("Log-ons from %1 are refused for %2 seconds after %3 failed log-ons within a minute.")
        .arg(key)
        .arg(backOff)
        .arg(MaxFailures);
}

void LogonThrottle::Succeeded(const QHostAddress &Client)
{
    m_records.remove(Key(Client));
}

void LogonThrottle::Forget(qint64 Now)
{
    for (auto record = m_records.begin(); record != m_records.end();) {
        const bool recentFailure = !record->Failures.isEmpty() && Now - record->Failures.constLast() < Window;
        const bool remembersBlock = record->BlockedUntil > 0 && Now - record->BlockedUntil <= LastBackOff;
        record = recentFailure || remembersBlock ? std::next(record) : m_records.erase(record);
    }
}
