#include "SmtpSender.h"
#include "foundation/GlobalBlock.h"

#include <QDnsLookup>
#include <QEventLoop>
#include <QHostInfo>
#include <QUrl>
#include <QTimer>
#include <algorithm>
#include <curl/curl.h>

namespace {

struct Upload
{
    const QByteArray &Data;
    qsizetype Sent = 0;
};

size_t ReadUpload(char *Buffer, size_t Size, size_t Count, void *User)
{
    auto *upload = static_cast<Upload *>(User);
    const size_t room = Size * Count;
    const size_t left = size_t(upload->Data.size() - upload->Sent);
    const size_t n = std::min(room, left);
    memcpy(Buffer, upload->Data.constData() + upload->Sent, n);
    upload->Sent += qsizetype(n);
    return n;
}

// libcurl is set up once for the process, before any thread uses it.
void EnsureCurl()
{
    static const bool done = [] { return curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK; }();
    Q_UNUSED(done);
}

// Every line ending CR LF, as SMTP wants it.
QByteArray WithCrLf(const QByteArray &Mime)
{
    QByteArray text;
    text.reserve(Mime.size() + Mime.size() / 40);
    for (qsizetype n = 0; n < Mime.size(); ++n) {
        const char c = Mime.at(n);
        if (c == '\n' && (n == 0 || Mime.at(n - 1) != '\r'))
            text += '\r';
        text += c;
    }
    return text;
}

} // namespace

SmtpRelay SmtpRelay::SmartHost()
{
    const auto &settings = Global.Settings;
    SmtpRelay relay;
    if (!settings.MailServerUseSmartHost || settings.MailServerSmartHostIP.trimmed().isEmpty())
        return relay;
    relay.Host = settings.MailServerSmartHostIP.trimmed();
    relay.Encryption = settings.MailServerSmartHostSSLOption;
    relay.Port = settings.MailServerSmartHostPort > 0 ? settings.MailServerSmartHostPort
                                                       : (relay.Encryption == ImplicitTls ? 465 : 25);
    relay.User = settings.MailServerSmartHostUserName;
    relay.Password = settings.MailServerSmartHostPassword;
    return relay;
}

SmtpSender::SmtpSender()
{
    EnsureCurl();
    m_curl = curl_easy_init();
}

SmtpSender::~SmtpSender()
{
    if (m_curl)
        curl_easy_cleanup(static_cast<CURL *>(m_curl));
}

bool SmtpSender::Send(const SmtpRelay &Relay, const QString &MailFrom, const QStringList &Recipients,
                      const QByteArray &Mime)
{
    Error.clear();
    Permanent = false;
    CURL *curl = static_cast<CURL *>(m_curl);
    if (!curl) {
        Error = QStringLiteral("libcurl could not be set up");
        return false;
    }
    curl_easy_reset(curl);
    const QByteArray url = (Relay.Encryption == SmtpRelay::ImplicitTls ? QByteArray("smtps://") : QByteArray("smtp://"))
        + Relay.Host.toUtf8() + ':' + QByteArray::number(Relay.Port) + '/'
        + QUrl::toPercentEncoding(Global.Settings.MailServerHostName.isEmpty() ? QHostInfo::localHostName()
                                                                               : Global.Settings.MailServerHostName);
    const QByteArray from = '<' + MailFrom.toUtf8() + '>';
    const QByteArray data = WithCrLf(Mime);
    Upload upload{data};
    curl_slist *recipients = nullptr;
    for (const QString &recipient : Recipients)
        recipients = curl_slist_append(recipients, ('<' + recipient.toUtf8() + '>').constData());
    const QByteArray user = Relay.User.toUtf8();
    const QByteArray password = Relay.Password.toUtf8();
    curl_easy_setopt(curl, CURLOPT_URL, url.constData());
    curl_easy_setopt(curl, CURLOPT_MAIL_FROM, from.constData());
    curl_easy_setopt(curl, CURLOPT_MAIL_RCPT, recipients);
    curl_easy_setopt(curl, CURLOPT_READFUNCTION, ReadUpload);
    curl_easy_setopt(curl, CURLOPT_READDATA, &upload);
    curl_easy_setopt(curl, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(curl, CURLOPT_INFILESIZE_LARGE, curl_off_t(data.size()));
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, 30L);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, 600L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    if (Relay.Encryption == SmtpRelay::StartTls)
        curl_easy_setopt(curl, CURLOPT_USE_SSL, long(CURLUSESSL_ALL));
    else if (Relay.TlsIfOffered)
        curl_easy_setopt(curl, CURLOPT_USE_SSL, long(CURLUSESSL_TRY));
    if (!user.isEmpty()) {
        curl_easy_setopt(curl, CURLOPT_USERNAME, user.constData());
        curl_easy_setopt(curl, CURLOPT_PASSWORD, password.constData());
    }
    const CURLcode result = curl_easy_perform(curl);
    long code = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &code);
    curl_slist_free_all(recipients);
    if (result == CURLE_OK)
        return true;
    Error = QString::fromUtf8(curl_easy_strerror(result));
    if (code > 0)
        Error += QStringLiteral(" (server reply ") + QString::number(code) + u')';
    Permanent = code >= 500 && code < 600;
    return false;
}

QStringList SmtpSender::MailExchangers(const QString &Domain)
{
    QDnsLookup lookup(QDnsLookup::MX, Domain);
    QEventLoop loop;
    QObject::connect(&lookup, &QDnsLookup::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(15000, &loop, &QEventLoop::quit);
    lookup.lookup();
    if (lookup.isFinished() == false)
        loop.exec();
    QList<QDnsMailExchangeRecord> records = lookup.mailExchangeRecords();
    std::stable_sort(records.begin(), records.end(),
                     [](const QDnsMailExchangeRecord &a, const QDnsMailExchangeRecord &b) { return a.preference() < b.preference(); });
    QStringList hosts;
    for (const QDnsMailExchangeRecord &record : records)
        hosts << record.exchange();
    if (hosts.isEmpty())
        hosts << Domain;
    return hosts;
}
