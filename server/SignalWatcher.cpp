#include "SignalWatcher.h"

#include <QSocketNotifier>
#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

sigset_t StopSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    return set;
}

} // namespace

void SignalWatcher::Block()
{
    const sigset_t set = StopSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

SignalWatcher::SignalWatcher()
{
    const sigset_t set = StopSignals();
    m_descriptor = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_descriptor < 0)
        return;
    m_notifier = new QSocketNotifier(m_descriptor, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &SignalWatcher::Read);
}

SignalWatcher::~SignalWatcher()
{
    delete m_notifier;
    if (m_descriptor >= 0)
        close(m_descriptor);
}

void SignalWatcher::Read()
{
    signalfd_siginfo info{};
    while (read(m_descriptor, &info, sizeof info) == ssize_t(sizeof info))
        emit Stop(int(info.ssi_signo));
}
