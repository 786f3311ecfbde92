#pragma once
#include "MailFixture.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

// A smart host for the tests: aiosmtpd on a loopback port, keeping each
// message it receives as a file of a maildir, with the envelope in its
// X-MailFrom and X-RcptTo headers.
class SmartHost
{
public:
    quint16 Port = MailFixture::FreePort();

    bool Start()
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral("/usr/bin/python3"),
                        {QStringLiteral("-m"), QStringLiteral("aiosmtpd"), QStringLiteral("-n"), QStringLiteral("-l"),
                         QStringLiteral("127.0.0.1:") + QString::number(Port), QStringLiteral("-c"),
                         QStringLiteral("aiosmtpd.handlers.Mailbox"), m_folder.path() + QStringLiteral("/box")});
        if (!m_process.waitForStarted(10000))
            return false;
        // Ready when it takes connections.
        for (int n = 0; n < 100; ++n) {
            QTcpSocket probe;
            probe.connectToHost(QStringLiteral("127.0.0.1"), Port);
            if (probe.waitForConnected(200))
                return true;
            QTest::qWait(100);
        }
        return false;
    }
    void Stop()
    {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
    ~SmartHost() { Stop(); }

    // The messages received so far.
    QStringList Received() const
    {
        QStringList messages;
        const QDir box(m_folder.path() + QStringLiteral("/box/new"));
        for (const QString &name : box.entryList(QDir::Files, QDir::Name)) {
            QFile file(box.filePath(name));
            if (file.open(QIODevice::ReadOnly))
                messages << QString::fromUtf8(file.readAll());
        }
        return messages;
    }
    QStringList WaitFor(int Count, int TimeoutMs = 20000) const
    {
        QDeadlineTimer deadline(TimeoutMs);
        while (Received().size() < Count && !deadline.hasExpired())
            QTest::qWait(100);
        return Received();
    }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
};
