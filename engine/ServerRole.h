#pragma once
#include "RoleLog.h"

#include <QMutex>
#include <QString>
#include <QWaitCondition>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

class QThread;

// One role of the server (edge, processor, mail server, outgoing): a log of
// its own and worker threads that run its body until the role stops. The
// body is given the thread's number (from 1) and loops while Stopping() is
// false, resting with Idle() when there is nothing to do. Stop() asks every
// thread to end and waits for them: a body finishes what it has in hand
// first.
//
// LogError on a role's threads is kept back and written to the role's log
// as an error line ("* "), since the process's error sink belongs to the
// main thread.
class ServerRole
{
public:
    ServerRole(const QString &Name, const QString &LogFile, const QString &Source, int Threads = 1);
    ~ServerRole();
    ServerRole(const ServerRole &) = delete;
    ServerRole &operator=(const ServerRole &) = delete;

    const QString Name; // "Message Processor"
    RoleLog Log;
    int Threads;
    // The body of each thread; without one the role only waits to be stopped.
    std::function<void(int ThreadNumber)> Body;

    // Starts the threads and logs that the role is ready.
    void Start();
    // Asks the threads to end, without waiting.
    void RequestStop();
    // Asks the threads to end, waits for them and logs that the role stopped.
    void Stop();
    bool Stopping() const { return m_stopping.load(); }
    // Rests the calling thread for up to Milliseconds, less when woken or stopped.
    void Idle(int Milliseconds);
    // Ends the rest of every idle thread: there is work.
    void Wake();
    // Writes the errors LogError kept on the calling thread of the role.
    void LogKeptErrors();

private:
    void Run(int ThreadNumber);

    std::vector<std::unique_ptr<QThread>> m_threads;
    std::atomic<bool> m_stopping{false};
    QMutex m_idleLock;
    QWaitCondition m_idle;
    quint64 m_wakes = 0; // counted under m_idleLock
};
