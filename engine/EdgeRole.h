#pragma once
#include "ConfigurationCopy.h"
#include "ServerRole.h"

#include <QDeadlineTimer>
#include <QList>
#include <functional>
#include <memory>

class clsMessageStore;

// The edge role: reads the message sources into the edge queue. Its work is
// a list of periodic jobs (one per kind of source, the schedule of accounts
// that are due) run in turn on the role's thread; between them the thread
// rests until the next job is due, or until Wake().
class EdgeRole
{
public:
    explicit EdgeRole(ConfigurationCopy::Loader Load);
    ~EdgeRole();

    ServerRole Role;

    using Job = std::function<void(EdgeRole &Edge)>;
    // Adds a job before the role starts. It runs once at the start and then
    // every IntervalMilliseconds, on the role's thread, with that thread's
    // copy of the configuration fresh (Accounts() is the copy) and Store()
    // open. A job that runs long delays the others; Role.Stopping() tells it
    // to finish early.
    void AddJob(const QString &Name, int IntervalMilliseconds, Job Work);
    // The store of the role's thread: valid inside a job only.
    clsMessageStore &Store() { return *m_store; }

private:
    struct PeriodicJob
    {
        QString Name;
        int Interval;
        Job Work;
        QDeadlineTimer Due;
    };

    void Run();
    // Runs the jobs that are due; the milliseconds until the next one is due.
    int RunDueJobs();

    ConfigurationCopy::Loader m_load;
    QList<PeriodicJob> m_jobs;
    clsMessageStore *m_store = nullptr;
    ConfigurationCopy *m_configuration = nullptr;
};
