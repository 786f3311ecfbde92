#pragma once
// Real database servers for tests, each on a loopback port with its own
// temporary folder: a PostgreSQL cluster made by initdb and a MariaDB server
// with its own data folder and socket. Started and stopped by the tests.
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>
#include <sys/prctl.h>

namespace DatabasePeers {

inline int FreePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

// Runs a program to its end; its output on failure.
inline bool Run(const QString &Program, const QStringList &Arguments, QString *Output, int TimeoutMs = 120000)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(Program, Arguments);
    const bool ended = process.waitForFinished(TimeoutMs);
    if (Output)
        *Output = QString::fromLocal8Bit(process.readAll());
    return ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

// Runs a command as the postgres user, since PostgreSQL refuses root.
inline bool RunAsPostgres(const QString &Program, const QStringList &Arguments, QString *Output)
{
    return Run(QStringLiteral("runuser"),
               QStringList{QStringLiteral("-u"), QStringLiteral("postgres"), QStringLiteral("--"),
                           QStringLiteral("/usr/lib/postgresql/15/bin/") + Program}
                   + Arguments,
               Output);
}

class PostgreSQL
{
public:
    QString Password = QStringLiteral("s3cret;pw");
    QString Problem;
    int Port = 0;

    ~PostgreSQL() { Stop(); }

    QString Connection(const QString &Database = QStringLiteral("pvtest")) const
    {
        return QStringLiteral("Driver=PostgreSQL;Server=127.0.0.1;Port=%1;Database=%2;Uid=postgres;Pwd={%3}")
            .arg(Port)
            .arg(Database, Password);
    }

    bool Start()
    {
        m_dir = QStringLiteral("/tmp/pvpg-%1").arg(QCoreApplication::applicationPid());
        QDir(m_dir).removeRecursively();
        QDir().mkpath(m_dir);
        QFile pw(m_dir + QStringLiteral("/pw"));
        pw.open(QIODevice::WriteOnly);
        pw.write(Password.toUtf8() + '\n');
        pw.close();
        QString output;
        Run(QStringLiteral("chown"), {QStringLiteral("-R"), QStringLiteral("postgres"), m_dir}, &output);
        if (!RunAsPostgres(QStringLiteral("initdb"),
                           {QStringLiteral("-D"), m_dir + QStringLiteral("/data"), QStringLiteral("-U"),
                            QStringLiteral("postgres"), QStringLiteral("--auth-local=trust"), QStringLiteral("--auth-host=scram-sha-256"),
                            QStringLiteral("--pwfile=") + m_dir + QStringLiteral("/pw")},
                           &output)) {
            Problem = QStringLiteral("initdb: ") + output;
            return false;
        }
        return Resume() && CreateDatabase();
    }

    // Starts the cluster made before (after Stop).
    bool Resume()
    {
        Port = Port ? Port : FreePort();
        QString output;
        if (!RunAsPostgres(QStringLiteral("pg_ctl"),
                           {QStringLiteral("-D"), m_dir + QStringLiteral("/data"), QStringLiteral("-l"),
                            m_dir + QStringLiteral("/log"), QStringLiteral("-w"), QStringLiteral("-o"),
                            QStringLiteral("-p %1 -k %2 -c listen_addresses=127.0.0.1 -c fsync=off").arg(Port).arg(m_dir),
                            QStringLiteral("start")},
                           &output)) {
            Problem = QStringLiteral("pg_ctl start: ") + output;
            return false;
        }
        m_running = true;
        return true;
    }

    void Stop()
    {
        if (!m_running)
            return;
        RunAsPostgres(QStringLiteral("pg_ctl"),
                      {QStringLiteral("-D"), m_dir + QStringLiteral("/data"), QStringLiteral("-m"),
                       QStringLiteral("immediate"), QStringLiteral("-w"), QStringLiteral("stop")},
                      nullptr);
        m_running = false;
    }

    void Remove()
    {
        Stop();
        QDir(m_dir).removeRecursively();
    }

    bool Sql(const QString &Statement, const QString &Database = QStringLiteral("pvtest"))
    {
        QString output;
        const bool ok = Run(QStringLiteral("runuser"),
                            {QStringLiteral("-u"), QStringLiteral("postgres"), QStringLiteral("--"),
                             QStringLiteral("psql"), QStringLiteral("-h"), m_dir, QStringLiteral("-p"),
                             QString::number(Port), QStringLiteral("-d"), Database, QStringLiteral("-v"),
                             QStringLiteral("ON_ERROR_STOP=1"), QStringLiteral("-c"), Statement},
                            &output);
        if (!ok)
            Problem = output;
        return ok;
    }

private:
    bool CreateDatabase() { return Sql(QStringLiteral("CREATE DATABASE pvtest"), QStringLiteral("postgres")); }

    QString m_dir;
    bool m_running = false;
};

class MariaDB
{
public:
    QString Password = QStringLiteral("pw'x;1");
    QString Problem;
    int Port = 0;

    ~MariaDB() { Remove(); }

    QString Connection() const
    {
        return QStringLiteral("Driver=MariaDB;Server=127.0.0.1;Port=%1;Database=pvtest;Uid=pv;Pwd={%2}").arg(Port).arg(Password);
    }

    bool Start()
    {
        m_dir = QDir::tempPath() + QStringLiteral("/pvmaria-%1").arg(QCoreApplication::applicationPid());
        QDir(m_dir).removeRecursively();
        // Its own temporary folder: the shared one is not the server's alone.
        QDir().mkpath(m_dir + QStringLiteral("/tmp"));
        QString output;
        if (!Run(QStringLiteral("mariadb-install-db"),
                 {QStringLiteral("--no-defaults"), QStringLiteral("--datadir=") + m_dir + QStringLiteral("/data"),
                  QStringLiteral("--tmpdir=") + m_dir + QStringLiteral("/tmp"),
                  QStringLiteral("--user=root"), QStringLiteral("--auth-root-authentication-method=normal"),
                  QStringLiteral("--skip-test-db")},
                 &output)) {
            Problem = QStringLiteral("mariadb-install-db: ") + output;
            return false;
        }
        if (!Resume())
            return false;
        return Sql(QStringLiteral("CREATE DATABASE pvtest; CREATE USER 'pv'@'%' IDENTIFIED BY '%1'; "
                                  "GRANT ALL ON pvtest.* TO 'pv'@'%';")
                       .arg(QString(Password).replace(QStringLiteral("'"), QStringLiteral("''"))));
    }

    bool Resume()
    {
        Port = Port ? Port : FreePort();
        m_server.setProgram(QStringLiteral("mariadbd"));
        m_server.setArguments({QStringLiteral("--no-defaults"), QStringLiteral("--datadir=") + m_dir + QStringLiteral("/data"),
                               QStringLiteral("--socket=") + Socket(), QStringLiteral("--port=%1").arg(Port),
                               QStringLiteral("--tmpdir=") + m_dir + QStringLiteral("/tmp"),
                               QStringLiteral("--bind-address=127.0.0.1"), QStringLiteral("--user=root"),
                               QStringLiteral("--skip-log-bin"), QStringLiteral("--innodb-buffer-pool-size=32M"),
                               QStringLiteral("--pid-file=") + m_dir + QStringLiteral("/pid")});
        m_server.setProcessChannelMode(QProcess::MergedChannels);
        m_server.setStandardOutputFile(m_dir + QStringLiteral("/log"), QIODevice::Append);
        // A test that crashes takes its server with it.
        m_server.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_server.start();
        if (!m_server.waitForStarted()) {
            Problem = QStringLiteral("mariadbd did not start");
            return false;
        }
        for (int n = 0; n < 300; ++n) {
            if (Run(QStringLiteral("mariadb-admin"), {QStringLiteral("--no-defaults"), QStringLiteral("-S"), Socket(),
                                                       QStringLiteral("-u"), QStringLiteral("root"), QStringLiteral("ping")},
                    nullptr, 5000))
                return true;
            if (m_server.state() == QProcess::NotRunning)
                break;
            QThread::msleep(100);
        }
        QFile log(m_dir + QStringLiteral("/log"));
        log.open(QIODevice::ReadOnly);
        Problem = QStringLiteral("mariadbd did not answer: ") + QString::fromLocal8Bit(log.readAll().right(2000));
        return false;
    }

    void Stop()
    {
        if (m_server.state() == QProcess::NotRunning)
            return;
        m_server.kill();
        m_server.waitForFinished(10000);
    }

    void Remove()
    {
        Stop();
        if (!m_dir.isEmpty())
            QDir(m_dir).removeRecursively();
    }

    bool Sql(const QString &Statements)
    {
        QString output;
        const bool ok = Run(QStringLiteral("mariadb"), {QStringLiteral("--no-defaults"), QStringLiteral("-S"), Socket(),
                                                         QStringLiteral("-u"), QStringLiteral("root"), QStringLiteral("-e"),
                                                         Statements},
                            &output);
        if (!ok)
            Problem = output;
        return ok;
    }

private:
    QString Socket() const { return m_dir + QStringLiteral("/sock"); }

    QString m_dir;
    QProcess m_server;
};

} // namespace DatabasePeers
