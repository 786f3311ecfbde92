#pragma once
#include "InboundMail.h"

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QSslConfiguration>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

class QTcpServer;
class SmtpSession;

// What the mail server's SMTP listener is set to do.
struct SmtpOptions
{
    QString HostName;
    qint64 MaxMessageSize = 10000000;
    // AUTH mechanisms offered ("PLAIN", "LOGIN"); none: AUTH is not offered.
    QStringList AuthMechanisms;
    bool RequireAuthentication = false;
    // Client addresses that may relay: ";"-separated, "*" wildcards.
    QString RelayIP;
    // The certificate for STARTTLS and the TLS port; without one neither is offered.
    QSslConfiguration Tls;
    bool HasTls() const { return !Tls.localCertificate().isNull(); }
    int MaxConnections = 500;
    int MaxRecipients = 100;
    // A client silent this long is closed.
    int IdleMilliseconds = 300000;

    // The options of the global settings: MailServerHostName,
    // MailServerMaxMessageSize, MailServerAuthenticationTypes,
    // MailServerRequireAuthentication, MailServerRelayIP.
    //
    // MailServerAuthenticationTypes is a set of bits: 1 PLAIN, 2 LOGIN,
    // 4 CRAM-MD5 (never offered: the server keeps no password it could
    // check it with), 8 authentication denied. 0 offers PLAIN and LOGIN.
    static SmtpOptions FromSettings();
};

// Where a recipient goes: to an account (AccountID), relayed (Code 250 and
// no account), or refused (Code 550 with Reply).
struct RecipientRoute
{
    int Code = 250;
    QString Reply;
    QString AccountID;
};

// The SMTP listener of the mail server role: one or more ports (plain with
// STARTTLS, or TLS from the first byte), a session per connection, all on
// the thread that made it, which must turn an event loop.
//
// It decides routes and credentials; what happens to an accepted message is
// the owner's Deliver, which answers each message through its Done later
// (after the commit), so that "250" follows the commit.
class SmtpListener : public QObject
{
public:
    using DoneFunction = std::function<void(bool Accepted, const QString &Reply)>;

    explicit SmtpListener(const SmtpOptions &Options);
    ~SmtpListener() override;

    // Listens on the address and port; TLS from the first byte with
    // ImplicitTls. The port listened on (Port may be 0); 0 when it failed,
    // with the reason in LastError.
    quint16 Listen(const QHostAddress &Address, quint16 Port, bool ImplicitTls);
    QString LastError;

    const SmtpOptions Options;
    // Refused recipients for unknown accounts: who is behind an address of
    // the server's domains (MailServerDomain and MailServerAliases of the
    // accounts with the mail server switch).
    RecipientRoute Route(const QString &Address, const QHostAddress &Peer, bool Authenticated) const;
    // Checks a user's name and password; set by the owner.
    std::function<bool(const QString &User, const QString &Password)> Authenticate;
    // Takes an accepted message; Done is called on this thread when it is
    // committed (or not). Set by the owner.
    std::function<void(InboundMail Mail, DoneFunction Done)> Deliver;
    // A line for the mail server's log.
    std::function<void(const QString &Text)> Log;

    int Sessions() const { return m_sessions; }

private:
    friend class SmtpSession;
    void Accept(qintptr Descriptor, bool ImplicitTls);
    void SessionEnded() { --m_sessions; }
    bool MayRelay(const QHostAddress &Peer) const;

    std::vector<std::unique_ptr<QTcpServer>> m_servers;
    int m_sessions = 0;
};
