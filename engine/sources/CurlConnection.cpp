#include "CurlConnection.h"

#include <curl/curl.h>
#include <poll.h>

#include <mutex>

namespace
{
void GlobalInit()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

// Keeps the last line the server sent while libcurl logs on; what the client
// sends (the password among it) is never looked at.
int Trace(CURL *, curl_infotype Type, char *Data, size_t Size, void *Connection)
{
    if (Type == CURLINFO_HEADER_IN) {
        const QByteArray line = QByteArray(Data, qsizetype(Size)).trimmed();
        if (!line.isEmpty())
            static_cast<CurlConnection *>(Connection)->LastServerLine = line;
    }
    return 0;
}

bool ImplicitTls(const QString &Protocol, const SourceEndpoint &Endpoint, QString &Host)
{
    Host = Endpoint.Host;
    const QString secureScheme = Protocol + u's' + QStringLiteral("://");
    const QString plainScheme = Protocol + QStringLiteral("://");
    if (Host.startsWith(secureScheme, Qt::CaseInsensitive)) {
        Host = Host.mid(secureScheme.size());
        return true;
    }
    if (Host.startsWith(plainScheme, Qt::CaseInsensitive))
        Host = Host.mid(plainScheme.size());
    return Endpoint.Secure && (Endpoint.Port == 993 || Endpoint.Port == 995);
}
}

CurlConnection::~CurlConnection()
{
    Close();
}

bool CurlConnection::Open(const QString &Protocol, const SourceEndpoint &Endpoint)
{
    Close();
    GlobalInit();
    Error.clear();
    LastServerLine.clear();
    CertificateRejected = false;
    CertificateIssuer.clear();
    CertificateSubject.clear();
    m_timeoutMs = Endpoint.TimeoutSeconds * 1000;
    QString host;
    const bool implicit = ImplicitTls(Protocol, Endpoint, host);
    m_where = Protocol.toUpper() + u' ' + host + u':' + QString::number(Endpoint.Port);
    if (host.isEmpty())
        return Fail(QStringLiteral("no server is set"));

    m_curl = curl_easy_init();
    const QByteArray url = ((implicit ? Protocol + u's' : Protocol) + QStringLiteral("://") + host + u':'
                            + QString::number(Endpoint.Port) + u'/')
                               .toUtf8();
    const QByteArray user = Endpoint.User.toUtf8();
    const QByteArray password = Endpoint.Password.toUtf8();
    char reason[CURL_ERROR_SIZE] = {0};
    curl_easy_setopt(m_curl, CURLOPT_URL, url.constData());
    curl_easy_setopt(m_curl, CURLOPT_USERNAME, user.constData());
    curl_easy_setopt(m_curl, CURLOPT_PASSWORD, password.constData());
    curl_easy_setopt(m_curl, CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(m_curl, CURLOPT_CONNECTTIMEOUT_MS, long(m_timeoutMs));
    curl_easy_setopt(m_curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(m_curl, CURLOPT_ERRORBUFFER, reason);
    curl_easy_setopt(m_curl, CURLOPT_DEBUGFUNCTION, Trace);
    curl_easy_setopt(m_curl, CURLOPT_DEBUGDATA, this);
    curl_easy_setopt(m_curl, CURLOPT_VERBOSE, 1L);
    if (!implicit)
        curl_easy_setopt(m_curl, CURLOPT_USE_SSL, long(Endpoint.Secure ? CURLUSESSL_ALL : CURLUSESSL_NONE));
    if (Endpoint.AcceptAnyCertificate) {
        curl_easy_setopt(m_curl, CURLOPT_SSL_VERIFYPEER, 0L);
        curl_easy_setopt(m_curl, CURLOPT_SSL_VERIFYHOST, 0L);
        curl_easy_setopt(m_curl, CURLOPT_CERTINFO, 1L);
    } else if (!Endpoint.CAFile.isEmpty()) {
        curl_easy_setopt(m_curl, CURLOPT_CAINFO, Endpoint.CAFile.toLocal8Bit().constData());
    }
    const CURLcode code = curl_easy_perform(m_curl);
    curl_easy_setopt(m_curl, CURLOPT_VERBOSE, 0L);
    curl_easy_setopt(m_curl, CURLOPT_ERRORBUFFER, nullptr);
    if (Endpoint.AcceptAnyCertificate)
        ReadCertificate();
    CertificateRejected = code == CURLE_PEER_FAILED_VERIFICATION;
    if (code != CURLE_OK)
        return Fail(QString::fromUtf8(reason[0] ? reason : curl_easy_strerror(code)));
    return true;
}

void CurlConnection::ReadCertificate()
{
    curl_certinfo *chain = nullptr;
    if (curl_easy_getinfo(m_curl, CURLINFO_CERTINFO, &chain) != CURLE_OK || !chain || chain->num_of_certs < 1)
        return;
    for (curl_slist *field = chain->certinfo[0]; field; field = field->next) {
        const QString line = QString::fromUtf8(field->data);
        if (line.startsWith(QLatin1String("Issuer:")))
            CertificateIssuer = line.mid(7);
        else if (line.startsWith(QLatin1String("Subject:")))
            CertificateSubject = line.mid(8);
    }
}

void CurlConnection::Close()
{
    if (m_curl)
        curl_easy_cleanup(m_curl);
    m_curl = nullptr;
    m_buffer.clear();
    m_start = 0;
}

bool CurlConnection::Fail(const QString &Text)
{
    Error = m_where + QStringLiteral(": ") + Text;
    if (!LastServerLine.isEmpty())
        Error += QStringLiteral(" (server said: ") + QString::fromUtf8(LastServerLine.left(300)) + u')';
    Close();
    return false;
}

bool CurlConnection::WaitReadable()
{
    curl_socket_t socket = CURL_SOCKET_BAD;
    curl_easy_getinfo(m_curl, CURLINFO_ACTIVESOCKET, &socket);
    if (socket == CURL_SOCKET_BAD)
        return Fail(QStringLiteral("the connection is closed"));
    pollfd wanted{int(socket), POLLIN, 0};
    const int ready = ::poll(&wanted, 1, m_timeoutMs);
    if (ready == 0)
        return Fail(QStringLiteral("no answer within %1 seconds").arg(m_timeoutMs / 1000));
    return ready > 0 || Fail(QStringLiteral("waiting failed"));
}

bool CurlConnection::Send(const QByteArray &Data)
{
    if (!m_curl)
        return false;
    qsizetype sent = 0;
    while (sent < Data.size()) {
        size_t n = 0;
        const CURLcode code = curl_easy_send(m_curl, Data.constData() + sent, size_t(Data.size() - sent), &n);
        if (code == CURLE_AGAIN) {
            curl_socket_t socket = CURL_SOCKET_BAD;
            curl_easy_getinfo(m_curl, CURLINFO_ACTIVESOCKET, &socket);
            pollfd wanted{int(socket), POLLOUT, 0};
            if (::poll(&wanted, 1, m_timeoutMs) <= 0)
                return Fail(QStringLiteral("sending timed out"));
            continue;
        }
        if (code != CURLE_OK)
            return Fail(QString::fromUtf8(curl_easy_strerror(code)));
        sent += qsizetype(n);
    }
    return true;
}

// Reads what has arrived into the buffer, waiting for at least one byte.
bool CurlConnection::Fill()
{
    if (!m_curl)
        return false;
    if (m_start > 0 && m_start * 2 > m_buffer.size()) {
        m_buffer.remove(0, m_start);
        m_start = 0;
    }
    char chunk[65536];
    for (;;) {
        size_t n = 0;
        const CURLcode code = curl_easy_recv(m_curl, chunk, sizeof chunk, &n);
        if (code == CURLE_AGAIN) {
            if (!WaitReadable())
                return false;
            continue;
        }
        if (code != CURLE_OK)
            return Fail(QString::fromUtf8(curl_easy_strerror(code)));
        if (n == 0)
            return Fail(QStringLiteral("the server closed the connection"));
        m_buffer.append(chunk, qsizetype(n));
        return true;
    }
}

bool CurlConnection::ReadLine(QByteArray &Line)
{
    for (;;) {
        const qsizetype end = m_buffer.indexOf('\n', m_start);
        if (end >= 0) {
            qsizetype stop = end;
            if (stop > m_start && m_buffer.at(stop - 1) == '\r')
                --stop;
            Line = m_buffer.mid(m_start, stop - m_start);
            m_start = end + 1;
            return true;
        }
        if (!Fill())
            return false;
    }
}

bool CurlConnection::ReadBytes(qsizetype Count, QByteArray &Data)
{
    while (m_buffer.size() - m_start < Count) {
        if (!Fill())
            return false;
    }
    Data = m_buffer.mid(m_start, Count);
    m_start += Count;
    return true;
}
