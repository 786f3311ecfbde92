#include "NetHelpers.h"
#include "Formatting.h"
#include "GlobalBlock.h"
#include "Startup.h"

#include <QDir>
#include <QDnsLookup>
#include <QEventLoop>
#include <QFile>
#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QTimer>
#include <memory>

Q_LOGGING_CATEGORY(lcPage, "postvane.page")

namespace {

constexpr int MXTimeoutMs = 10000;

// The bare address: no display name before "<", nothing from ">" on.
QString BareAddress(const QString &Address)
{
    QString address = Address.trimmed();
    const qsizetype open = address.lastIndexOf(u'<', address.indexOf(u'@'));
    if (open >= 0)
        address.remove(0, open + 1);
    const qsizetype close = address.indexOf(u'>');
    if (close >= 0)
        address.truncate(close);
    return address.trimmed();
}

// Waits for the lookup while the event loop turns; false on time-out.
bool AwaitLookup(QDnsLookup &lookup)
{
    QEventLoop loop;
    QObject::connect(&lookup, &QDnsLookup::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(MXTimeoutMs, &loop, &QEventLoop::quit);
    lookup.lookup();
    if (!lookup.isFinished())
        loop.exec();
    if (lookup.isFinished())
        return true;
    lookup.abort();
    return false;
}

QString LookUpMX(const QString &Domain, const QHostAddress &NameServer)
{
    QDnsLookup lookup(QDnsLookup::MX, Domain);
    if (!NameServer.isNull())
        lookup.setNameserver(NameServer);
    if (!AwaitLookup(lookup))
        return QString();
    if (lookup.error() != QDnsLookup::NoError) {
        if (lookup.error() != QDnsLookup::NotFoundError)
            LogError(QStringLiteral("FCN.GetMXRecord"), Domain + QStringLiteral(": ") + lookup.errorString());
        return QString();
    }
    const QList<QDnsMailExchangeRecord> records = lookup.mailExchangeRecords();
    return records.isEmpty() ? QString() : records.first().exchange();
}

// The decoder named by the reply's Content-Type, else by the page itself.
QStringDecoder PageDecoder(const QNetworkReply &reply, const QByteArray &page)
{
    static const QRegularExpression charset(QStringLiteral("charset\\s*=\\s*\"?([^\";\\s]+)"),
                                            QRegularExpression::CaseInsensitiveOption);
    const QString type = reply.header(QNetworkRequest::ContentTypeHeader).toString();
    const QRegularExpressionMatch match = charset.match(type);
    if (match.hasMatch()) {
        QStringDecoder named(match.captured(1).toLatin1().constData());
        if (named.isValid())
            return named;
    }
    return QStringDecoder::decoderForHtml(page);
}

// Keeps the page as a file; its path, or empty when it could not be written.
QString SavePage(const QByteArray &page)
{
    const QString folder = Global.TempPath.isEmpty() ? QDir::tempPath() + u'/' : Global.TempPath;
    const QString path = folder + QStringLiteral("Page_") + UniqueName() + QStringLiteral(".htm");
    QFile file(path);
    if (!MakePath(folder) || !file.open(QIODevice::WriteOnly) || file.write(page) != page.size()) {
        LogError(QStringLiteral("GetPage"), path + QStringLiteral(": ") + file.errorString());
        return QString();
    }
    return path;
}

} // namespace

QString GetDomain(const QString &Address)
{
    QString host = Address.trimmed();
    const qsizetype slashes = host.indexOf(QStringLiteral("//"));
    if (slashes >= 0)
        host.remove(0, slashes + 2);
    if (host.startsWith(QStringLiteral("www."), Qt::CaseInsensitive))
        host.remove(0, 4);
    const qsizetype slash = host.indexOf(u'/');
    if (slash >= 0)
        host.truncate(slash);
    return host;
}

QString GetMXRecord(const QString &Address, const QHostAddress &NameServer)
{
    // One entry: callers check the same recipient several times in a row.
    static QString lastAddress;
    static QHostAddress lastNameServer;
    static QString lastAnswer;

    const QString address = BareAddress(Address);
    const qsizetype at = address.indexOf(u'@');
    if (address.size() <= 6 || at < 2)
        return QString();
    if (address.compare(lastAddress, Qt::CaseInsensitive) == 0 && NameServer == lastNameServer)
        return lastAnswer;

    const QString answer = LookUpMX(address.mid(at + 1), NameServer);
    lastAddress = address;
    lastNameServer = NameServer;
    lastAnswer = answer;
    return answer;
}

QString GetPage(const QString &URL, QString *SavedPath, int TimeoutSeconds)
{
    const QString routine = QStringLiteral("GetPage");
    if (SavedPath)
        SavedPath->clear();
    const QUrl url(URL.trimmed());
    if (!url.isValid() || url.scheme().isEmpty()) {
        LogError(routine, QStringLiteral("Invalid address: ") + URL);
        return QString();
    }

    QNetworkAccessManager manager;
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QStringLiteral("Mozilla/4.0 (compatible; MSIE 9.0; ") + Global.ProductName + u')');
    std::unique_ptr<QNetworkReply> reply(manager.get(request));

    QEventLoop loop;
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(qMax(1, TimeoutSeconds) * 1000, &loop, &QEventLoop::quit);
    if (!reply->isFinished())
        loop.exec();
    if (!reply->isFinished()) {
        reply->abort();
        LogError(routine, QStringLiteral("No answer within %1 s from ").arg(TimeoutSeconds) + URL);
        return QString();
    }
    if (reply->error() != QNetworkReply::NoError) {
        LogError(routine, URL + QStringLiteral(": ") + reply->errorString());
        return QString();
    }

    const QByteArray page = reply->readAll();
    const QString path = SavePage(page);
    if (SavedPath)
        *SavedPath = path;
    qCInfo(lcPage).noquote() << QStringLiteral("Page retrieved via HTTP: ") + URL;
    qCInfo(lcPage).noquote() << QStringLiteral("Page Returned:") << path;
    QStringDecoder decoder = PageDecoder(*reply, page);
    return decoder.decode(page);
}
