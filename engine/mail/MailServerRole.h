#pragma once
#include "InboundMail.h"
#include "engine/ConfigurationCopy.h"
#include "engine/ServerRole.h"

#include <QSslConfiguration>
#include <functional>

class clsMessageStore;
class SmtpListener;

// The mail server role: when MailServerListenIncoming is on, the SMTP
// listener on MailServerPort (STARTTLS) and MailServerPortSSL (TLS from the
// first byte) of MailServerBindTo, on the role's thread.
//
// Mail for an account (MailServerDomain, MailServerAliases) goes to the
// edge queue with the account's process headers, Source "SMTP" and the
// message's Message-ID as its UID; relayed mail goes to the Outbox. A
// message is answered "250" only after its rows are committed; messages
// that end at about the same time share one commit. A message whose
// identity is queued or stored already is answered "250" and not queued
// again, so that a client that sends again after a lost reply leaves one
// message.
class MailServerRole
{
public:
    explicit MailServerRole(ConfigurationCopy::Loader Load);
    ~MailServerRole();

    ServerRole Role;
    // Set before the role starts: the certificate for STARTTLS and the TLS
    // port; the check of a user's name and password, called on the role's
    // thread with its copy of the configuration; what to do when messages
    // were queued (wake the processor).
    QSslConfiguration Tls;
    std::function<bool(const QString &User, const QString &Password)> Authenticate;
    std::function<void()> Queued;

    // The ports listened on once the role runs (0: none); for tests that
    // ask for any free port.
    quint16 Port() const { return m_port.load(); }
    quint16 PortSSL() const { return m_portSSL.load(); }

private:
    struct Pending
    {
        InboundMail Mail;
        std::function<void(bool, const QString &)> Done;
    };

    void Run();
    bool Listen(SmtpListener &Listener);
    void Commit();
    // Writes one message's rows; false when the store refused them.
    bool Write(const InboundMail &Mail, QString &ID);

    ConfigurationCopy::Loader m_load;
    clsMessageStore *m_store = nullptr;
    QString m_hostName;
    QList<Pending> m_pending;
    bool m_commitDue = false;
    std::atomic<quint16> m_port{0};
    std::atomic<quint16> m_portSSL{0};
};
