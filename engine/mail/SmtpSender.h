#pragma once
#include <QByteArray>
#include <QString>
#include <QStringList>

// Where outgoing mail goes: the smart host of the settings, or a mail
// exchanger of the recipients' domain.
struct SmtpRelay
{
    enum Security { NoEncryption = 0, StartTls = 1, ImplicitTls = 2 };

    QString Host;
    int Port = 25;
    int Encryption = NoEncryption;
    QString User;
    QString Password;
    // STARTTLS when the server offers it, plain otherwise (mail exchangers).
    bool TlsIfOffered = false;

    // MailServerUseSmartHost and its host, port, security ("No Encryption",
    // "STARTTLS", "SSL Implicit" as 0, 1, 2), user and password; an empty
    // Host when no smart host is used.
    static SmtpRelay SmartHost();
};

// An SMTP client for one thread, on libcurl: one handle, whose connection
// is used again for the next message to the same server.
class SmtpSender
{
public:
    SmtpSender();
    ~SmtpSender();
    SmtpSender(const SmtpSender &) = delete;
    SmtpSender &operator=(const SmtpSender &) = delete;

    // Sends the message to every recipient through the relay. False with
    // Error set; Permanent when the server refused for good (a 5xx reply).
    bool Send(const SmtpRelay &Relay, const QString &MailFrom, const QStringList &Recipients, const QByteArray &Mime);
    QString Error;
    bool Permanent = false;

    // The mail exchangers of a domain, best first; the domain itself when it
    // has none (its address record stands in).
    static QStringList MailExchangers(const QString &Domain);

private:
    void *m_curl = nullptr;
};
