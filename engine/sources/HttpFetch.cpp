#include "HttpFetch.h"

#include <QUrl>
#include <curl/curl.h>

#include <mutex>

namespace
{
struct Receiving
{
    QByteArray *Content;
    qint64 MaxBytes;
};

size_t Write(char *Data, size_t Size, size_t Count, void *Target)
{
    auto *receiving = static_cast<Receiving *>(Target);
    const size_t bytes = Size * Count;
    if (receiving->Content->size() + qint64(bytes) > receiving->MaxBytes)
        return 0; // libcurl ends the transfer with a write error
    receiving->Content->append(Data, qsizetype(bytes));
    return bytes;
}
}

QString HttpFetch::Displayed(const QString &Url)
{
    return QUrl(Url).toDisplayString(QUrl::RemovePassword);
}

bool HttpFetch::Get()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    Status = 0;
    Content.clear();
    ContentType.clear();
    Error.clear();
    const QUrl url(Url);
    if (!url.isValid() || (url.scheme() != u"http" && url.scheme() != u"https")) {
        Error = QStringLiteral("\"%1\" is not an http or https address").arg(Where());
        return false;
    }
    CURL *curl = curl_easy_init();
    if (!curl) {
        Error = QStringLiteral("libcurl cannot start a transfer");
        return false;
    }
    char reason[CURL_ERROR_SIZE] = {0};
    Receiving receiving{&Content, MaxBytes};
    const QByteArray address = Url.toUtf8();
    const QByteArray user = User.toUtf8();
    const QByteArray password = Password.toUtf8();
    curl_easy_setopt(curl, CURLOPT_URL, address.constData());
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, reason);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, Write);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &receiving);
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, Follow ? 1L : 0L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, 10L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, long(TimeoutSeconds));
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, long(TimeoutSeconds));
    curl_easy_setopt(curl, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(curl, CURLOPT_USERAGENT, "Postvane");
    if (LogOn == Basic || LogOn == Digest) {
        curl_easy_setopt(curl, CURLOPT_HTTPAUTH, LogOn == Basic ? CURLAUTH_BASIC : CURLAUTH_DIGEST);
        curl_easy_setopt(curl, CURLOPT_USERNAME, user.constData());
        curl_easy_setopt(curl, CURLOPT_PASSWORD, password.constData());
    }
    const CURLcode code = curl_easy_perform(curl);
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &Status);
    char *type = nullptr;
    curl_easy_getinfo(curl, CURLINFO_CONTENT_TYPE, &type);
    ContentType = type ? QString::fromLatin1(type) : QString();
    curl_easy_cleanup(curl);
    if (code != CURLE_OK) {
        Error = Where() + QStringLiteral(": ")
            + (code == CURLE_WRITE_ERROR ? QStringLiteral("the content is larger than %1 bytes").arg(MaxBytes)
                                         : QString::fromUtf8(reason[0] ? reason : curl_easy_strerror(code)));
        if (!password.isEmpty())
            Error.replace(Password, QStringLiteral("****"));
        return false;
    }
    if (Status < 200 || Status >= 300) {
        Error = Where() + QStringLiteral(": the server answered HTTP %1").arg(Status);
        return false;
    }
    return true;
}
