#include "ViewClient.h"
#include "foundation/GlobalBlock.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QEventLoop>
#include <QNetworkReply>
#include <QTimer>
#include <QUrl>

bool ViewClient::Reply::Ok() const
{
    return Status == 200 && !Text.startsWith(QStringLiteral("Error:"));
}

QString ViewClient::Reply::Failure() const
{
    if (Status == 200 && Text.startsWith(QStringLiteral("Error:")))
        return Text.mid(6).trimmed();
    if (Status == 401)
        return QStringLiteral("Access Denied");
    if (Status != 200)
        return QStringLiteral("Connection Error With %1 Server: %2")
            .arg(Global.ProductName, StatusLine.isEmpty() ? QStringLiteral("no reply") : StatusLine);
    return QString();
}

ViewClient::ViewClient(QObject *parent) : QObject(parent)
{
    Network.setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
}

void ViewClient::Get(const QString &Address, Handler Done)
{
    Start(Address, std::move(Done), true);
}

void ViewClient::Start(const QString &Address, Handler Done, bool Droppable)
{
    QNetworkRequest request(QUrl(Global.ServerURL + Requests::WithAuth(Address, Global.AuthQuery)));
    request.setHeader(QNetworkRequest::UserAgentHeader, Global.ProductName);
    request.setRawHeader("Connection", "Keep-Alive");
    request.setTransferTimeout(TimeOutSeconds * 1000);
    QNetworkReply *reply = Network.get(request);
    connect(reply, &QNetworkReply::sslErrors, reply, [reply] { reply->ignoreSslErrors(); });
    if (Droppable)
        ++m_pending;
    connect(reply, &QNetworkReply::finished, this, [this, reply, Droppable, generation = m_generation, Done] {
        reply->deleteLater();
        if (Droppable) {
            if (generation != m_generation)
                return;
            --m_pending;
        }
        Reply result;
        const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        result.Status = status.isValid() ? status.toInt() : 0;
        result.StatusLine = result.Status
            ? QStringLiteral("HTTP/1.1 %1 %2")
                  .arg(result.Status)
                  .arg(reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString())
            : reply->errorString();
        result.Text = QString::fromUtf8(reply->readAll());
        Done(result);
    });
}

ViewClient::Reply ViewClient::Wait(const QString &Address)
{
    Reply result;
    QEventLoop loop;
    bool done = false;
    Start(
        Address,
        [&](const Reply &Answer) {
            result = Answer;
            done = true;
            loop.quit();
        },
        false);
    if (!done)
        loop.exec();
    return result;
}

void ViewClient::Drop()
{
    ++m_generation;
    m_pending = 0;
}

bool ViewClient::Report(const Reply &Result)
{
    if (Result.Ok())
        return true;
    emit Remote().MessageBar(Result.Failure());
    return false;
}
