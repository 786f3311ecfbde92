#pragma once
#include "SourceAccount.h"

#include <QByteArray>
#include <QString>

typedef void CURL;

// A logged-on connection to a mail server. libcurl makes it: the TCP
// connection, TLS (from the first byte or by STARTTLS), the server's greeting
// and the log-on; after that the reader speaks the protocol itself over it,
// so that it can send many commands at once and read the answers as they
// stream in. Every wait is bounded by the endpoint's time-out.
//
// Error says what went wrong for the log: the protocol, host and port,
// libcurl's reason and the last line the server sent. It never holds the
// password.
class CurlConnection
{
public:
    CurlConnection() = default;
    ~CurlConnection();
    CurlConnection(const CurlConnection &) = delete;
    CurlConnection &operator=(const CurlConnection &) = delete;

    // Protocol "imap" or "pop3".
    bool Open(const QString &Protocol, const SourceEndpoint &Endpoint);
    void Close();
    bool IsOpen() const { return m_curl != nullptr; }

    bool Send(const QByteArray &Data);
    // The next line without its CR LF.
    bool ReadLine(QByteArray &Line);
    // The next Count bytes as they are.
    bool ReadBytes(qsizetype Count, QByteArray &Data);
    // Fails the connection with the text, for answers a reader doesn't expect.
    bool Fail(const QString &Text);

    QString Error;
    // The last line the server answered, through libcurl or to the reader.
    QByteArray LastServerLine;
    // Open failed because the server's certificate is not trusted.
    bool CertificateRejected = false;
    // The server's certificate, read when the endpoint accepts any.
    QString CertificateIssuer;
    QString CertificateSubject;

private:
    bool Fill();
    void ReadCertificate();
    bool WaitReadable();

    CURL *m_curl = nullptr;
    QString m_where;
    int m_timeoutMs = 30000;
    QByteArray m_buffer;
    qsizetype m_start = 0;
};
