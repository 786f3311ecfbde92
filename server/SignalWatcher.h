#pragma once
#include <QObject>

class QSocketNotifier;

// Turns SIGTERM and SIGINT into the signal Stop on the event loop. Block()
// must run before the process starts any thread, so that every thread leaves
// the two signals to the watcher.
class SignalWatcher : public QObject
{
    Q_OBJECT
public:
    static void Block();

    SignalWatcher();
    ~SignalWatcher() override;

signals:
    void Stop(int Signal);

private:
    void Read();

    int m_descriptor = -1;
    QSocketNotifier *m_notifier = nullptr;
};
