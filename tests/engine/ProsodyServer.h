#pragma once
#include "MailFixture.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

// An XMPP server for the tests: Prosody on a loopback port with a
// configuration and data folder of its own, the domain "chat.test", plain
// log-ons allowed (no certificate: no STARTTLS), and messages to users who
// are offline kept in its storage, where the test reads them.
class ProsodyServer
{
public:
    quint16 Port = MailFixture::FreePort();
    QString Domain = QStringLiteral("chat.test");
    QString Problem;

    bool Start()
    {
        QFile config(Config());
        if (!config.open(QIODevice::WriteOnly)) {
            Problem = QStringLiteral("cannot write the configuration");
            return false;
        }
        const QString root = m_folder.path();
        config.write(QStringLiteral(
                         "run_as_root = true\npidfile = \"%1/prosody.pid\"\ndata_path = \"%1/data\"\n"
                         "certificates = \"%1\"\ninterfaces = { \"127.0.0.1\" }\nc2s_ports = { %2 }\n"
                         "s2s_ports = { }\nhttp_ports = { }\nhttps_ports = { }\ncomponent_ports = { }\n"
                         "modules_enabled = { \"roster\"; \"saslauth\"; \"disco\"; \"offline\" }\n"
                         "modules_disabled = { \"s2s\" }\nc2s_require_encryption = false\n"
                         "allow_unencrypted_plain_auth = true\nauthentication = \"internal_plain\"\n"
                         "storage = \"internal\"\nlog = { info = \"%1/prosody.log\" }\nVirtualHost \"%3\"\n")
                         .arg(root)
                         .arg(Port)
                         .arg(Domain)
                         .toUtf8());
        config.close();
        QDir().mkpath(root + QStringLiteral("/data"));
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral("/usr/bin/prosody"), {QStringLiteral("-F"), QStringLiteral("--config"), Config()});
        if (!m_process.waitForStarted(10000)) {
            Problem = QStringLiteral("prosody does not start: ") + m_process.errorString();
            return false;
        }
        for (int n = 0; n < 100; ++n) {
            QTcpSocket probe;
            probe.connectToHost(QStringLiteral("127.0.0.1"), Port);
            if (probe.waitForConnected(200))
                return true;
            QTest::qWait(100);
        }
        Problem = QStringLiteral("prosody does not listen: ") + QString::fromUtf8(m_process.readAll());
        return false;
    }
    ~ProsodyServer()
    {
        m_process.terminate();
        if (!m_process.waitForFinished(5000))
            m_process.kill();
    }

    bool Register(const QString &User, const QString &Password)
    {
        QProcess control;
        control.start(QStringLiteral("/usr/bin/prosodyctl"),
                      {QStringLiteral("--config"), Config(), QStringLiteral("register"), User, Domain, Password});
        return control.waitForFinished(20000) && control.exitCode() == 0;
    }

    // What the server keeps for a user who is offline.
    QString Offline(const QString &User) const
    {
        QFile kept(m_folder.path() + QStringLiteral("/data/") + QString(Domain).replace(u'.', QStringLiteral("%2e"))
                   + QStringLiteral("/offline/") + User + QStringLiteral(".list"));
        return kept.open(QIODevice::ReadOnly) ? QString::fromUtf8(kept.readAll()) : QString();
    }

private:
    QString Config() const { return m_folder.path() + QStringLiteral("/prosody.cfg.lua"); }

    QTemporaryDir m_folder;
    QProcess m_process;
};
