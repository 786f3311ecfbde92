#include "ServerRole.h"
#include "foundation/Startup.h"

#include <QThread>

namespace {

thread_local DeferredErrors *t_keptErrors = nullptr;
// The wakes this thread has seen: a wake that came while it worked ends its
// next rest at once.
thread_local quint64 t_seenWakes = 0;

} // namespace

ServerRole::ServerRole(const QString &Name, const QString &LogFile, const QString &Source, int Threads)
    : Name(Name)
    , Log(LogFile, Source)
    , Threads(qMax(1, Threads))
{
}

ServerRole::~ServerRole()
{
    Stop();
}

void ServerRole::Start()
{
    if (!m_threads.empty())
        return;
    m_stopping = false;
    for (int n = 1; n <= Threads; ++n) {
        m_threads.emplace_back(QThread::create([this, n] { Run(n); }));
        m_threads.back()->setObjectName(Name + u' ' + QString::number(n));
        m_threads.back()->start();
    }
    Log.Add(Name + QStringLiteral(" ready") + (Threads > 1 ? QStringLiteral(" with %1 threads").arg(Threads) : QString()));
}

void ServerRole::RequestStop()
{
    m_stopping = true;
    Wake();
}

void ServerRole::Stop()
{
    if (m_threads.empty())
        return;
    RequestStop();
    for (auto &thread : m_threads)
        thread->wait();
    m_threads.clear();
    Log.Add(Name + QStringLiteral(" stopped"));
}

void ServerRole::Run(int ThreadNumber)
{
    DeferredErrors kept;
    DeferErrors keep(kept);
    t_keptErrors = &kept;
    if (Body)
        Body(ThreadNumber);
    while (!Stopping())
        Idle(1000);
    LogKeptErrors();
    t_keptErrors = nullptr;
}

void ServerRole::Idle(int Milliseconds)
{
    QMutexLocker locked(&m_idleLock);
    if (!Stopping() && m_wakes == t_seenWakes)
        m_idle.wait(&m_idleLock, QDeadlineTimer(Milliseconds));
    t_seenWakes = m_wakes;
}

void ServerRole::Wake()
{
    QMutexLocker locked(&m_idleLock);
    ++m_wakes;
    m_idle.wakeAll();
}

void ServerRole::LogKeptErrors()
{
    if (!t_keptErrors || t_keptErrors->empty())
        return;
    QStringList lines;
    for (const DeferredError &error : *t_keptErrors)
        lines << QStringLiteral("* ") + error.Text + QStringLiteral(" FROM ") + error.Routine;
    t_keptErrors->clear();
    Log.AddLines(lines);
}
