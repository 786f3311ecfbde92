#pragma once
#include "LogonThrottle.h"
#include "RequestTable.h"

#include <QAbstractHttpServer>
#include <QHostAddress>
#include <QSslConfiguration>

class QSslSocket;
struct ServerServices;

// The server's HTTPS web service. Every request names a document
// ("getusers.xml") and carries the credentials in its query; the service
// checks them, finds the request's handler in the table by the name and
// answers with what the handler gives.
//
// Every reply carries "Content-Location" with the request's name and its
// parameters (never the credentials) and "X-Powered-By" with the product
// name. Answers before a handler runs: 401 with an empty body for
// credentials that fail and for every log-on of a client address that the
// throttle holds back, a refusal for a query that holds a key twice, 404 for
// an unknown name, 405 for the wrong verb. Connections are watched by a
// ConnectionGuard each; at most MaxConnections are open at once.
class WebService : public QAbstractHttpServer
{
    Q_OBJECT
public:
    static constexpr int MaxConnections = 1000;
    static constexpr int HandshakeTimeout = 10000;

    explicit WebService(ServerServices &Services, QObject *Parent = nullptr);

    // Listens with TLS; the port listened on, 0 on failure. After Close it
    // can listen again, on another address; open connections go on.
    quint16 Listen(const QHostAddress &Address, quint16 Port, const QSslConfiguration &Tls);
    void Close();

protected:
    bool handleRequest(const QHttpServerRequest &Request, QTcpSocket *Socket) override;
    void missingHandler(const QHttpServerRequest &Request, QTcpSocket *Socket) override;

private:
    ServerReply Answer(const QHttpServerRequest &Request, QTcpSocket *Socket, const clsUserClient &Client);
    void Send(const QHttpServerRequest &Request, QTcpSocket *Socket, const clsUserClient &Client,
              const ServerReply &Reply);
    void Watch(QSslSocket *Socket);

    ServerServices &m_services;
    RequestTable m_table;
    LogonThrottle m_throttle;
    int m_open = 0;
};

// "/" + the request's name, and "?" + its parameters without the credentials.
QByteArray ContentLocation(const clsUserClient &Client);
