#include "ServiceControl.h"
#include "foundation/GlobalBlock.h"

#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QProcess>
#include <QSaveFile>
#include <cerrno>
#include <csignal>

namespace ServiceControl {

namespace {

const QString ServerProgram = QStringLiteral("postvane-server");

bool IsInstalled(const QString &ServiceName)
{
    return ServiceName == Global.ProductName && QFileInfo(ServerProgramPath()).isExecutable();
}

// The process that holds the data folder's lock, 0 when none does.
qint64 RunningServer()
{
    QLockFile lock(ServerLockFile(Global.DataPath));
    qint64 pid = 0;
    QString host;
    QString application;
    if (!lock.getLockInfo(&pid, &host, &application) || application != ServerProgram || pid <= 0)
        return 0;
    if (::kill(pid_t(pid), 0) != 0 && errno != EPERM)
        return 0;
    QFile command(QStringLiteral("/proc/%1/comm").arg(pid));
    if (command.open(QIODevice::ReadOnly) && !ServerProgram.startsWith(QString::fromLocal8Bit(command.readAll()).trimmed()))
        return 0; // the number now belongs to another program
    return pid;
}

} // namespace

QString ServerProgramPath()
{
    return Global.AppPath + ServerProgram;
}

QString ServerLockFile(const QString &DataPath)
{
    return DataPath + ServerProgram + QStringLiteral(".lock");
}

QString ServerStateFile(const QString &DataPath)
{
    return DataPath + ServerProgram + QStringLiteral(".state");
}

void WriteServerState(const QString &DataPath, const QString &State)
{
    if (State.isEmpty()) {
        QFile::remove(ServerStateFile(DataPath));
        return;
    }
    QSaveFile file(ServerStateFile(DataPath));
    if (file.open(QIODevice::WriteOnly)) {
        file.write(State.toUtf8());
        file.commit();
    }
}

QString ServiceStatus(const QString &ServiceName)
{
    if (!IsInstalled(ServiceName))
        return QStringLiteral("Not Installed");
    if (RunningServer() == 0)
        return QStringLiteral("Stopped");
    QFile state(ServerStateFile(Global.DataPath));
    if (!state.open(QIODevice::ReadOnly))
        return QStringLiteral("Start Pending");
    const QString text = QString::fromUtf8(state.readAll()).trimmed();
    return text == QStringLiteral("Running") || text == QStringLiteral("Stop Pending") ? text
                                                                                       : QStringLiteral("Start Pending");
}

bool ServiceStart(const QString &ServiceName)
{
    if (!IsInstalled(ServiceName))
        return false;
    QProcess server;
    server.setProgram(ServerProgramPath());
    server.setArguments({QStringLiteral("--data"), Global.DataPath});
    server.setWorkingDirectory(Global.DataPath);
    server.setStandardInputFile(QProcess::nullDevice());
    server.setStandardOutputFile(QProcess::nullDevice());
    server.setStandardErrorFile(QProcess::nullDevice());
    return server.startDetached();
}

bool ServiceStop(const QString &ServiceName)
{
    if (!IsInstalled(ServiceName))
        return false;
    const qint64 pid = RunningServer();
    return pid != 0 && ::kill(pid_t(pid), SIGTERM) == 0;
}

} // namespace ServiceControl
