#include "EdgeRole.h"
#include "foundation/GlobalBlock.h"
#include "store/clsMessageStore.h"

EdgeRole::EdgeRole(ConfigurationCopy::Loader Load)
    : Role(QStringLiteral("Edge Server"), Global.ProductName + QStringLiteral("EdgeServerLog.LOG"),
           QStringLiteral("Edge Server"))
    , m_load(std::move(Load))
{
    Role.Body = [this](int) { Run(); };
}

EdgeRole::~EdgeRole()
{
    Role.Stop();
}

void EdgeRole::AddJob(const QString &Name, int IntervalMilliseconds, Job Work)
{
    m_jobs.append(PeriodicJob{Name, qMax(1, IntervalMilliseconds), std::move(Work), QDeadlineTimer(0)});
}

void EdgeRole::Run()
{
    ConfigurationCopy configuration(m_load);
    clsMessageStore store;
    if (!store.OpenMessageStore()) {
        Role.LogKeptErrors();
        Role.Log.Add(QStringLiteral("* The edge server cannot open the message store: ") + store.LastError);
        return;
    }
    m_store = &store;
    m_configuration = &configuration;
    while (!Role.Stopping()) {
        const int rest = RunDueJobs();
        Role.LogKeptErrors();
        Role.Idle(rest);
    }
    m_store = nullptr;
    m_configuration = nullptr;
}

int EdgeRole::RunDueJobs()
{
    constexpr int LongestRest = 1000;
    int rest = LongestRest;
    for (PeriodicJob &job : m_jobs) {
        if (Role.Stopping())
            break;
        if (job.Due.hasExpired()) {
            if (!m_configuration->Refresh()) {
                Role.Log.Add(QStringLiteral("* The edge server cannot read the configuration."));
                return LongestRest;
            }
            job.Work(*this);
            job.Due.setRemainingTime(job.Interval);
        }
        rest = qMin<qint64>(rest, job.Due.remainingTime());
    }
    return rest;
}
