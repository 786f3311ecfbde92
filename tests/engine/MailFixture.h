#pragma once
#include "../e2e/ServerFixture.h"

#include <QByteArray>
#include <QMap>
#include <QSslSocket>
#include <QString>
#include <QVariant>

// A real server with its mail server listening on free loopback ports, its
// settings written before the first start, and the accounts and users the
// tests of mail need, posted through the web service.
class MailFixture
{
public:
    // Settings in SETTINGS.XML besides the mail server's switch and ports;
    // any key of the mail server's part of the settings.
    QMap<QString, QString> Settings;
    ServerFixture Server;
    quint16 SmtpPort = 0;
    quint16 SmtpsPort = 0;
    QString OrganizationID;

    bool Start();
    QString Problem;

    // An enabled account with the mail server switch; "OK" or the reply.
    QString PostAccount(const QString &ID, const QString &Domains, const QString &Aliases);
    // A user of the default organization with that password.
    QString PostUser(const QString &ID, const QString &Name, const QString &Password);

    // A free loopback port that the settings can hold.
    static quint16 FreePort();
    // The first value of the first row of a statement on a database file of
    // the server's data folder ("MessageStore.db3", "EdgeQueue.db3").
    QVariant Scalar(const QString &File, const QString &SQL);
    // Waits up to TimeoutMs for the statement to give at least Count.
    qint64 WaitForCount(const QString &File, const QString &SQL, qint64 Count, int TimeoutMs = 15000);
    QString Log(const QString &File);
    // Runs swaks against the plain port with the arguments; its exit code,
    // and its conversation in Output.
    int Swaks(const QStringList &Arguments, QString *Output = nullptr);
};

// A plain SMTP client on a socket, for the conversations swaks will not
// have: bytes as they are, replies read whole.
class SmtpClient
{
public:
    // Connects from From (an address of the loopback range) and reads the greeting.
    bool Connect(quint16 Port, const QString &From = QStringLiteral("127.0.0.1"), bool Tls = false);
    void Send(const QByteArray &Bytes);
    // A whole reply (all its lines); empty when none came in TimeoutMs.
    QByteArray Reply(int TimeoutMs = 10000);
    QByteArray Command(const QByteArray &Line) { Send(Line + "\r\n"); return Reply(); }
    // The code of the last line of a reply.
    static int Code(const QByteArray &Reply) { return Reply.mid(Reply.lastIndexOf('\n', Reply.size() - 3) + 1, 3).toInt(); }
    bool StartTls();
    // True when the server closed the connection within TimeoutMs.
    bool Closed(int TimeoutMs = 5000);
    QByteArray Greeting;
    QSslSocket Socket;

private:
    QByteArray m_buffer;
};
