#pragma once
#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QString>

// Slows down the guessing of passwords: after MaxFailures failed log-ons from
// one client address within Window seconds, every log-on from that address is
// refused for a back-off that starts at FirstBackOff seconds and doubles with
// each further block up to LastBackOff. A successful log-on, or a quiet
// LastBackOff after the last block, forgets the address. Other addresses are
// never affected.
class LogonThrottle
{
public:
    static constexpr int MaxFailures = 5;
    static constexpr qint64 Window = 60;
    static constexpr qint64 FirstBackOff = 30;
    static constexpr qint64 LastBackOff = 15 * 60;

    // Seconds since the epoch; the clock the throttle reads.
    using Clock = qint64 (*)();
    explicit LogonThrottle(Clock Now = nullptr);

    // True while the address is in a back-off: its log-on is refused unchecked.
    bool IsBlocked(const QHostAddress &Client);
    // Counts a failed log-on. When it starts a back-off, the line to log
    // about it; empty otherwise.
    QString Failed(const QHostAddress &Client);
    void Succeeded(const QHostAddress &Client);

private:
    struct Record
    {
        QList<qint64> Failures; // within the window, oldest first
        qint64 BlockedUntil = 0;
        qint64 NextBackOff = FirstBackOff;
    };
    static QString Key(const QHostAddress &Client);
    void Forget(qint64 Now);

    Clock m_now;
    QHash<QString, Record> m_records;
};
