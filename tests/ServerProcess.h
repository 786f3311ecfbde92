#pragma once
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

// A real postvane-server on a free loopback port with a data folder of its
// own, for the console's tests. Start() is false, with Problem saying why,
// when the program is missing or does not come up.
class ServerProcess
{
public:
    ~ServerProcess() { Stop(); }

    bool Start(const QString &Program)
    {
        if (!QFileInfo(Program).isExecutable()) {
            Problem = QStringLiteral("no server program at ") + Program;
            return false;
        }
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        Port = probe.serverPort();
        probe.close();
        Process.setProcessChannelMode(QProcess::MergedChannels);
        Process.start(Program, {QStringLiteral("--data"), Data.path(), QStringLiteral("--port"), QString::number(Port),
                                QStringLiteral("--bind"), QStringLiteral("127.0.0.1")});
        QDeadlineTimer deadline(20000);
        while (!deadline.hasExpired()) {
            if (Process.state() == QProcess::NotRunning) {
                Problem = QStringLiteral("the server ended at once: ") + QString::fromLocal8Bit(Process.readAll());
                return false;
            }
            QTcpSocket socket;
            socket.connectToHost(QHostAddress::LocalHost, Port);
            if (socket.waitForConnected(200))
                return true;
            QTest::qWait(100);
        }
        Problem = QStringLiteral("the server did not listen on its port");
        Stop();
        return false;
    }

    void Stop()
    {
        if (Process.state() == QProcess::NotRunning)
            return;
        Process.terminate();
        if (!Process.waitForFinished(5000))
            Process.kill();
        Process.waitForFinished(2000);
    }

    QString ServerText() const { return QStringLiteral("127.0.0.1:%1").arg(Port); }

    QTemporaryDir Data;
    QProcess Process;
    quint16 Port = 0;
    QString Problem;
};
