#pragma once
#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

class QTcpSocket;
class clsUser;

// The subscribers of "subscribe.xml": connections that stay open and carry
// one block per event, each block one chunk of a chunked HTTP reply. A block
// is a small HTTP-like response: "X-Powered-By: " + ProductName (the marker),
// "Content-Location: " + the event's name, "Content-Length: " + the size of
// the body in bytes, an empty line, and the body as UTF-8. A line end is sent every KeepAliveInterval so that
// lost peers are noticed; a subscriber that falls more than BacklogLimit
// bytes behind is dropped.
class PushChannel : public QObject
{
    Q_OBJECT
public:
    static constexpr int KeepAliveInterval = 25000;
    static constexpr qint64 BacklogLimit = 4 * 1024 * 1024;

    PushChannel();

    // Answers the request on Socket with the head of the stream and keeps the
    // connection as the user's subscription.
    void Subscribe(QTcpSocket *Socket, const clsUser &User, const QByteArray &ContentLocation);

    // "log.xml" with the line, to the subscribers who are system administrators.
    // Source names the console's pane: "Server", "Edge Server", "Message Server".
    void SendLog(const QDateTime &Stamp, const QString &Text, const QString &Source = QStringLiteral("Server"));
    // "popup.xml" with the fragment, to every subscriber.
    void SendPopup(const QString &Body);
    // "disconnected.xml" to every subscription of the user, which then ends.
    void DisconnectUser(const QString &UserID);
    // "serverclosing.xml" to everyone; every stream ends. Waits at most
    // Milliseconds for the blocks to leave.
    void Close(int Milliseconds);

    int Count();

private:
    struct Subscriber
    {
        QPointer<QTcpSocket> Socket;
        QString UserID;
    };

    void Send(Subscriber &Target, const QByteArray &Chunk);
    void End(Subscriber &Target, const QString &Location);
    void KeepAlive();
    void DropClosed();

    QList<Subscriber> m_subscribers;
    QTimer m_keepAlive;
};
