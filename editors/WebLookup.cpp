#include "WebLookup.h"
#include "foundation/GlobalBlock.h"
#include "foundation/TextHelpers.h"

#include <QAuthenticator>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QStringDecoder>
#include <QUrl>
#include <QXmlStreamReader>

bool WebLookup::Fetch(const QString &Url, bool FollowRedirects)
{
    Body.clear();
    Error.clear();
    const QUrl url(Url, QUrl::StrictMode);
    if (Url.isEmpty() || !url.isValid() || url.host().isEmpty()) {
        Error = QStringLiteral("\"") + Url + QStringLiteral("\" is not a web address.");
        return false;
    }
    QNetworkAccessManager manager;
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, Global.ProductName);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         FollowRedirects ? QNetworkRequest::NoLessSafeRedirectPolicy : QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(TimeoutSeconds * 1000);
    bool asked = false;
    QObject::connect(&manager, &QNetworkAccessManager::authenticationRequired, &manager,
                     [this, &asked](QNetworkReply *, QAuthenticator *Authenticator) {
                         // One try only: wrong credentials end in the 401 reply.
                         if (Login == 0 || asked)
                             return;
                         asked = true;
                         Authenticator->setUser(User);
                         Authenticator->setPassword(Password);
                     });
    QNetworkReply *reply = manager.get(request);
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    if (reply->isOpen())
        Body = reply->readAll();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QString type = reply->header(QNetworkRequest::ContentTypeHeader).toString();
    const qsizetype charset = type.indexOf(QStringLiteral("charset="), 0, Qt::CaseInsensitive);
    m_charset = charset < 0 ? QString() : type.mid(charset + 8).section(u';', 0, 0).remove(u'"').trimmed();
    if (reply->error() == QNetworkReply::OperationCanceledError || reply->error() == QNetworkReply::TimeoutError)
        Error = QStringLiteral("No answer from %1 within %2 seconds.").arg(url.host()).arg(TimeoutSeconds);
    else if (reply->error() != QNetworkReply::NoError && status == 0)
        Error = reply->errorString();
    else if (status >= 400 || (status >= 300 && FollowRedirects))
        Error = QStringLiteral("HTTP ") + QString::number(status) + u' ' +
                reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
    delete reply;
    return Error.isEmpty();
}

QString WebLookup::Text() const
{
    QStringDecoder decoder(m_charset.isEmpty() ? "UTF-8" : m_charset.toLatin1().constData());
    if (!decoder.isValid())
        return QString::fromUtf8(Body);
    return decoder(Body);
}

bool WebLookup::FirstItem(bool Atom, FeedItem &Item)
{
    const QString element = Atom ? QStringLiteral("entry") : QStringLiteral("item");
    QXmlStreamReader xml(Body);
    bool inside = false;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isEndElement() && inside && xml.name() == element)
            return true;
        if (!xml.isStartElement())
            continue;
        const QStringView name = xml.name();
        if (name == element) {
            inside = true;
        } else if (inside && name == QLatin1String("title")) {
            Item.Title = xml.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
        } else if (inside && (name == QLatin1String("pubDate") || name == QLatin1String("updated") ||
                              (name == QLatin1String("published") && Item.Date.isEmpty()))) {
            Item.Date = xml.readElementText().trimmed();
        } else if (inside && (name == QLatin1String("description") || name == QLatin1String("summary") ||
                              (name == QLatin1String("content") && Item.Text.isEmpty()))) {
            Item.Text = StripTags(xml.readElementText(QXmlStreamReader::IncludeChildElements)).trimmed();
        }
    }
    Error = xml.hasError() ? QStringLiteral("The feed does not read: ") + xml.errorString()
                           : (Atom ? QStringLiteral("The feed has no entry.") : QStringLiteral("The feed has no item."));
    return false;
}
