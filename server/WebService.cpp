#include "WebService.h"
#include "ConnectionGuard.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "UserPasswords.h"
#include "foundation/GlobalBlock.h"
#include "model/clsUser.h"

#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QSslServer>
#include <QSslSocket>
#include <QUrlQuery>

namespace {

// True when the client asked to close the connection after the reply.
bool ClosesAfterReply(const QHttpServerRequest &Request)
{
    for (const auto &[name, value] : Request.headers())
        if (name.compare("connection", Qt::CaseInsensitive) == 0)
            return value.trimmed().compare("close", Qt::CaseInsensitive) == 0;
    return false;
}

QString RequestAddress(const QHttpServerRequest &Request)
{
    const QUrl url = Request.url();
    const QString query = url.query(QUrl::FullyEncoded);
    return url.path(QUrl::FullyEncoded) + (query.isEmpty() ? QString() : u'?' + query);
}

} // namespace

QByteArray ContentLocation(const clsUserClient &Client)
{
    const QString query = Client.ComposeQuery();
    return (u'/' + Client.Name() + (query.isEmpty() ? QString() : u'?' + query)).toUtf8();
}

WebService::WebService(ServerServices &Services, QObject *Parent)
    : QAbstractHttpServer(Parent), m_services(Services), m_table(BuildRequestTable())
{
}

quint16 WebService::Listen(const QHostAddress &Address, quint16 Port, const QSslConfiguration &Tls)
{
    sslSetup(Tls);
    const quint16 port = listen(Address, Port);
    if (port == 0 || servers().isEmpty())
        return 0;
    QTcpServer *server = servers().constLast();
    server->setMaxPendingConnections(MaxConnections);
    if (auto *secure = qobject_cast<QSslServer *>(server)) {
        secure->setHandshakeTimeout(HandshakeTimeout);
        connect(secure, &QSslServer::startedEncryptionHandshake, this, &WebService::Watch);
    }
    return port;
}

void WebService::Close()
{
    for (QTcpServer *server : servers())
        server->close();
}

void WebService::Watch(QSslSocket *Socket)
{
    auto *guard = new ConnectionGuard(Socket, this);
    if (m_open >= MaxConnections) {
        connect(Socket, &QSslSocket::encrypted, guard, [guard] {
            guard->Reject(503, "Service Unavailable", QStringLiteral("The server has too many connections."));
        });
        return;
    }
    ++m_open;
    connect(Socket, &QObject::destroyed, this, [this] { --m_open; });
}

bool WebService::handleRequest(const QHttpServerRequest &Request, QTcpSocket *Socket)
{
    clsUserClient client;
    client.setURL(RequestAddress(Request));
    client.Body = QString::fromUtf8(Request.body());
    // The web service calls of client programs ("PostvaneWS.asmx/...") carry
    // the credentials as the form fields UserName and Password.
    if (client.Username.isEmpty() && client.Extension.startsWith(QStringLiteral("asmx/"))) {
        const QUrlQuery form(QString(client.Body).replace(u'+', u' '));
        client.Username = form.queryItemValue(QStringLiteral("UserName"), QUrl::FullyDecoded);
        client.Password = form.queryItemValue(QStringLiteral("Password"), QUrl::FullyDecoded);
    }
    Send(Request, Socket, client, Answer(Request, Socket, client));
    return true;
}

void WebService::missingHandler(const QHttpServerRequest &Request, QTcpSocket *Socket)
{
    clsUserClient client;
    client.setURL(RequestAddress(Request));
    Send(Request, Socket, client, ServerReply::Fault(404, QStringLiteral("Unknown request.")));
}

ServerReply WebService::Answer(const QHttpServerRequest &Request, QTcpSocket *Socket, const clsUserClient &Client)
{
    if (!Client.DuplicateKey.isEmpty())
        return ServerReply::Refusal(QStringLiteral("The query holds the key \"") + Client.DuplicateKey
                                           + QStringLiteral("\" more than once."));

    const QHostAddress peer = Request.remoteAddress();
    const RequestRoute *route = m_table.Find(Client.Name());
    if (route && route->Anonymous && Client.Username.isEmpty() && Request.method() == QHttpServerRequest::Method::Get) {
        clsUser nobody;
        RequestContext context{Client, nobody, peer, Socket, m_services};
        return route->Handler(context);
    }
    if (m_throttle.IsBlocked(peer))
        return ServerReply::Unauthorized();
    clsUser *user = m_services.Passwords.Authenticate(Client.Username, Client.Password);
    if (!user) {
        m_services.Log.Add(QStringLiteral("Access denied to \"") + Client.Username.left(100) + QStringLiteral("\" from ")
                           + peer.toString());
        const QString blocked = m_throttle.Failed(peer);
        if (!blocked.isEmpty())
            m_services.Log.Add(blocked);
        return ServerReply::Unauthorized();
    }
    m_throttle.Succeeded(peer);

    if (!route)
        return ServerReply::Fault(404, QStringLiteral("Unknown request: ") + Client.Name());
    const bool post = Request.method() == QHttpServerRequest::Method::Post;
    const bool get = Request.method() == QHttpServerRequest::Method::Get;
    if ((route->Verb == RequestVerb::Get && !get) || (route->Verb == RequestVerb::Post && !post)
        || (route->Verb == RequestVerb::Any && !get && !post))
        return ServerReply::Fault(405, route->Verb == RequestVerb::Post ? QStringLiteral("The request needs POST.")
                                                                        : QStringLiteral("The request needs GET."));

    RequestContext context{Client, *user, peer, Socket, m_services};
    return route->Handler(context);
}

void WebService::Send(const QHttpServerRequest &Request, QTcpSocket *Socket, const clsUserClient &Client,
                      const ServerReply &Reply)
{
    if (Reply.ConnectionTaken)
        return;
    const QByteArray body = Reply.Text.toUtf8();
    QHttpServerResponder responder = makeResponder(Request, Socket);
    responder.writeStatusLine(QHttpServerResponder::StatusCode(Reply.Status));
    responder.writeHeader("Content-Type", Reply.ContentType);
    responder.writeHeader("Content-Length", QByteArray::number(body.size()));
    responder.writeHeader("Content-Location", Reply.Refused ? QByteArray("/error") : ContentLocation(Client));
    responder.writeHeader("X-Powered-By", Global.ProductName.toUtf8());
    const bool close = ClosesAfterReply(Request);
    if (close)
        responder.writeHeader("Connection", "close");
    responder.writeBody(body);
    if (close)
        Socket->disconnectFromHost();
}
