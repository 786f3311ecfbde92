#pragma once
#include "EdgeSourceState.h"
#include "SourceAccount.h"
#include "SourceReader.h"

#include <QMutex>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QThreadPool>
#include <functional>
#include <memory>

class RoleLog;
class EdgeRole;
class clsAccount;

// Reads every enabled account's sources when they are due: the account's
// schedule (CheckNow), at once when "checknow.xml" asked for it
// (MustCheckNow). Runs on the edge role's thread (Run, its periodic job) and
// hands each due account to a bounded pool of reader threads, so that a
// slow or dead source holds up no other account; an account is not read
// again while its last read still runs. Each read adds a line to the edge
// log: the account, the source, how many new messages, or why it failed.
class SourceScheduler
{
public:
    SourceScheduler(RoleLog &Log, const QString &DataFolder, int Threads = 4);
    ~SourceScheduler();
    SourceScheduler(const SourceScheduler &) = delete;
    SourceScheduler &operator=(const SourceScheduler &) = delete;

    // Plugs the scheduler into the edge role as its periodic job, checked
    // every second and whenever the role is woken.
    static void AddTo(EdgeRole &Edge, const QString &DataFolder);

    // One look at the accounts of the calling thread's configuration.
    void Run();
    // Waits until the reads under way have ended; their state is kept.
    void Finish();

    // The accounts are read at their next look, whatever their schedule;
    // from any thread.
    static void CheckNow(const QStringList &AccountIDs);
    // Called when a read ends, from its thread (the edge role wakes on it).
    std::function<void()> ReadEnded;
    // Milliseconds a file must rest before the file pickup takes it.
    int FileQuietMilliseconds = 2000;
    // The longest wait for a mail server's, a database's or a web server's answer.
    int TimeoutSeconds = 30;

private:
    struct Ended
    {
        SourceAccount Account;
    };

    void Start(clsAccount &Account);
    void TakeEnded();
    static bool ReadsAnything(const clsAccount &Account);
    static QStringList Unavailable(const clsAccount &Account);

    RoleLog &m_log;
    EdgeSourceState m_state;
    QThreadPool m_pool;
    QMutex m_lock; // guards the two below
    QSet<QString> m_running;
    QList<SourceAccount> m_ended;
};
