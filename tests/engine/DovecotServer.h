#pragma once
#include <QByteArray>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <grp.h>
#include <signal.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

// A real Dovecot on loopback ports for the source tests: its own
// configuration, runtime and state folders, a Maildir for the user
// "postvane" (password "secret") of a passwd file, and a certificate made for
// the test. Plain IMAP and POP3 (with STARTTLS) and IMAPS and POP3S listen on
// free ports. Start() is false with Problem saying why when it doesn't come up.
class DovecotServer
{
public:
    ~DovecotServer() { Stop(); }

    static quint16 FreePort()
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        return probe.serverPort();
    }

    // A start right after Kill may meet the last of the old processes still
    // holding a socket, and then ends soon after it began listening: it is
    // started again.
    bool Start()
    {
        if (!m_configured && !Configure())
            return false;
        for (int attempt = 0; attempt < 5; ++attempt) {
            if (StartOnce())
                return true;
            QTest::qWait(300);
        }
        return false;
    }

    void Stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.terminate();
        if (!m_process.waitForFinished(5000))
            m_process.kill();
        m_process.waitForFinished(2000);
    }

    // Ends Dovecot at once, the master and every process it started, as a
    // crash or a pulled cable would: connections drop without a word.
    void Kill()
    {
        const qint64 master = m_process.processId();
        if (master <= 0)
            return;
        QStringList children;
        for (const QString &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
            QFile stat(QStringLiteral("/proc/") + entry + QStringLiteral("/stat"));
            if (!stat.open(QIODevice::ReadOnly))
                continue;
            const QByteArray text = stat.readAll();
            const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
            if (fields.value(1).toLongLong() == master) {
                ::kill(pid_t(entry.toLongLong()), SIGKILL);
                children.append(entry);
            }
        }
        m_process.kill();
        m_process.waitForFinished(5000);
        // Gone means reaped: a zombie's sockets are closed too.
        for (const QString &child : children) {
            for (int wait = 0; wait < 100; ++wait) {
                QFile stat(QStringLiteral("/proc/") + child + QStringLiteral("/stat"));
                if (!stat.open(QIODevice::ReadOnly) || stat.readAll().contains(") Z "))
                    break;
                QTest::qWait(20);
            }
        }
    }

    // Delivers a message into a folder ("" is the inbox, else a Maildir++
    // subfolder) as a new file, owned by the mail user; its file name.
    QString Deliver(const QByteArray &Mime, const QString &Folder = QString())
    {
        static std::atomic<int> counter{0};
        const QString dir = FolderPath(Folder);
        const QString name = QStringLiteral("%1.M%2P%3.test").arg(QDateTime::currentSecsSinceEpoch()).arg(++counter).arg(QString::number(getpid()) + u'-' + QString::number(++s_instances));
        const QString tmp = dir + QStringLiteral("/tmp/") + name;
        QFile file(tmp);
        if (!file.open(QIODevice::WriteOnly))
            return {};
        file.write(Mime);
        file.close();
        Own(tmp);
        const QString target = dir + QStringLiteral("/new/") + name;
        QFile::rename(tmp, target);
        return target;
    }

    // Messages in the folder's new/ and cur/.
    int Count(const QString &Folder = QString()) const
    {
        const QString dir = FolderPath(Folder);
        return int(QDir(dir + QStringLiteral("/new")).entryList(QDir::Files).size()
                   + QDir(dir + QStringLiteral("/cur")).entryList(QDir::Files).size());
    }

    // Makes a folder (a Maildir++ subfolder of the inbox) and subscribes nothing.
    void MakeFolder(const QString &Folder) { FolderPath(Folder, true); }

    // The test's certificate, to be trusted by a client that verifies.
    QString CertificateFile() const { return m_dir.filePath(QStringLiteral("cert.pem")); }
    QString MailDir() const { return m_dir.filePath(QStringLiteral("mail/postvane")); }
    QString ReadLog(qsizetype Tail = 2000) const
    {
        QFile log(m_dir.filePath(QStringLiteral("dovecot.log")));
        log.open(QIODevice::ReadOnly);
        return QString::fromLocal8Bit(Tail > 0 ? log.readAll().right(Tail) : log.readAll());
    }

    quint16 ImapPort = 0;
    quint16 ImapsPort = 0;
    quint16 Pop3Port = 0;
    quint16 Pop3sPort = 0;
    QString Problem;

private:
    bool StartOnce()
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral("/usr/sbin/dovecot"), {QStringLiteral("-F"), QStringLiteral("-c"), ConfigFile()});
        QDeadlineTimer deadline(15000);
        while (!deadline.hasExpired()) {
            if (m_process.state() == QProcess::NotRunning) {
                Problem = QStringLiteral("dovecot ended at once: ") + QString::fromLocal8Bit(m_process.readAll());
                return false;
            }
            if (Listening(ImapPort) && Listening(Pop3Port) && Listening(ImapsPort) && Listening(Pop3sPort)) {
                QTest::qWait(200);
                if (m_process.state() == QProcess::Running)
                    return true;
            }
            QTest::qWait(50);
        }
        Problem = QStringLiteral("dovecot did not listen: ") + ReadLog();
        Stop();
        return false;
    }

    static bool Listening(quint16 Port)
    {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, Port);
        return socket.waitForConnected(200);
    }

    QString ConfigFile() const { return m_dir.filePath(QStringLiteral("dovecot.conf")); }

    QString FolderPath(const QString &Folder, bool Make = false) const
    {
        const QString dir = Folder.isEmpty() ? MailDir() : MailDir() + QStringLiteral("/.") + Folder;
        if (Make || !QDir(dir).exists()) {
            for (const char *sub : {"new", "cur", "tmp"}) {
                QDir().mkpath(dir + u'/' + QLatin1String(sub));
                Own(dir + u'/' + QLatin1String(sub));
            }
            Own(dir);
        }
        return dir;
    }

    void Own(const QString &Path) const
    {
        if (chown(QFile::encodeName(Path).constData(), m_uid, m_gid) != 0)
            qWarning("chown %s failed", qPrintable(Path));
    }

    bool Configure()
    {
        const passwd *user = getpwnam("dovecot");
        if (!user) {
            Problem = QStringLiteral("there is no user dovecot: is dovecot-imapd installed?");
            return false;
        }
        m_uid = user->pw_uid;
        m_gid = user->pw_gid;
        chmod(QFile::encodeName(m_dir.path()).constData(), 0755);
        QDir(m_dir.path()).mkpath(QStringLiteral("run"));
        QDir(m_dir.path()).mkpath(QStringLiteral("state"));
        QDir(m_dir.path()).mkpath(QStringLiteral("mail"));
        Own(m_dir.filePath(QStringLiteral("mail")));
        FolderPath(QString(), true);
        QProcess openssl;
        openssl.start(QStringLiteral("openssl"),
                      {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), QStringLiteral("rsa:2048"),
                       QStringLiteral("-nodes"), QStringLiteral("-keyout"), m_dir.filePath(QStringLiteral("key.pem")),
                       QStringLiteral("-out"), CertificateFile(), QStringLiteral("-days"), QStringLiteral("2"),
                       QStringLiteral("-subj"), QStringLiteral("/CN=localhost"), QStringLiteral("-addext"),
                       QStringLiteral("subjectAltName=DNS:localhost,IP:127.0.0.1")});
        if (!openssl.waitForFinished(60000) || openssl.exitCode() != 0) {
            Problem = QStringLiteral("openssl could not make the certificate: ") + QString::fromLocal8Bit(openssl.readAllStandardError());
            return false;
        }
        QFile passwd(m_dir.filePath(QStringLiteral("passwd")));
        passwd.open(QIODevice::WriteOnly);
        passwd.write("postvane:{PLAIN}secret::::::\n");
        passwd.close();
        ImapPort = FreePort();
        ImapsPort = FreePort();
        Pop3Port = FreePort();
        Pop3sPort = FreePort();
        const QString t = m_dir.path();
        QString config = QStringLiteral(
            "base_dir = %1/run\nstate_dir = %1/state\ninstance_name = postvane-test-%2\n"
            "protocols = imap pop3\nlisten = 127.0.0.1\nssl = yes\nssl_cert = <%1/cert.pem\nssl_key = <%1/key.pem\n"
            "disable_plaintext_auth = no\nauth_mechanisms = plain login\nmail_location = maildir:%1/mail/%u\n"
            "log_path = %1/dovecot.log\nfirst_valid_uid = 1\nfirst_valid_gid = 1\n"
            "passdb {\n  driver = passwd-file\n  args = %1/passwd\n}\n"
            "userdb {\n  driver = static\n  args = uid=%3 gid=%4 home=%1/mail/%u\n}\n"
            "service imap-login {\n  inet_listener imap {\n    port = %5\n  }\n  inet_listener imaps {\n    port = %6\n    ssl = yes\n  }\n}\n"
            "service pop3-login {\n  inet_listener pop3 {\n    port = %7\n  }\n  inet_listener pop3s {\n    port = %8\n    ssl = yes\n  }\n}\n"
            "service anvil {\n  chroot =\n}\n")
                             .arg(t)
                             .arg(QString::number(getpid()) + u'-' + QString::number(++s_instances))
                             .arg(m_uid)
                             .arg(m_gid)
                             .arg(ImapPort)
                             .arg(ImapsPort)
                             .arg(Pop3Port)
                             .arg(Pop3sPort);
        QFile file(ConfigFile());
        file.open(QIODevice::WriteOnly);
        file.write(config.toUtf8());
        m_configured = true;
        return true;
    }

    static inline std::atomic<int> s_instances{0};
    QTemporaryDir m_dir;
    QProcess m_process;
    uid_t m_uid = 0;
    gid_t m_gid = 0;
    bool m_configured = false;
};
