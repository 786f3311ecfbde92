#include "PushChannel.h"
#include "ConnectionGuard.h"
#include "foundation/GlobalBlock.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTcpSocket>

namespace {

QByteArray Chunk(const QByteArray &Data)
{
    return QByteArray::number(Data.size(), 16) + "\r\n" + Data + "\r\n";
}

// One event: the marker, its location and the size of its body as headers,
// an empty line, the body.
QByteArray BlockChunk(const QString &Location, const QString &Body = QString())
{
    const QByteArray body = Body.toUtf8();
    return Chunk("X-Powered-By: " + Global.ProductName.toUtf8() + "\r\nContent-Location: " + Location.toUtf8()
                 + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
}

} // namespace

PushChannel::PushChannel()
{
    connect(&m_keepAlive, &QTimer::timeout, this, &PushChannel::KeepAlive);
    m_keepAlive.start(KeepAliveInterval);
}

void PushChannel::Subscribe(QTcpSocket *Socket, const clsUser &User, const QByteArray &ContentLocation)
{
    if (ConnectionGuard *guard = ConnectionGuard::Of(Socket))
        guard->TakeOverForStream();
    Socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=utf-8\r\nContent-Location: " + ContentLocation
                  + "\r\nX-Powered-By: " + Global.ProductName.toUtf8()
                  + "\r\nCache-Control: no-cache\r\nTransfer-Encoding: chunked\r\n\r\n");
    m_subscribers.append({Socket, User.ID});
}

void PushChannel::SendLog(const QDateTime &Stamp, const QString &Text, const QString &Source)
{
    DropClosed();
    if (m_subscribers.isEmpty())
        return;
    clsXML body;
    body.Append(Source, QStringLiteral("Source"));
    body.XMLSectionStart(QStringLiteral("Log"));
    body.Append(Stamp, QStringLiteral("TimeStamp"));
    body.Append(Text, QStringLiteral("Msg"));
    body.XMLSectionEnd(QStringLiteral("Log"));
    const QByteArray chunk = BlockChunk(QStringLiteral("log.xml"), body.GetXML());
    for (Subscriber &subscriber : m_subscribers) {
        const clsUser *user = Users().Item(subscriber.UserID);
        if (user && user->Admin)
            Send(subscriber, chunk);
    }
}

void PushChannel::SendPopup(const QString &Body)
{
    DropClosed();
    const QByteArray chunk = BlockChunk(QStringLiteral("popup.xml"), Body);
    for (Subscriber &subscriber : m_subscribers)
        Send(subscriber, chunk);
}

void PushChannel::DisconnectUser(const QString &UserID)
{
    for (Subscriber &subscriber : m_subscribers)
        if (subscriber.UserID == UserID)
            End(subscriber, QStringLiteral("disconnected.xml"));
    DropClosed();
}

void PushChannel::Close(int Milliseconds)
{
    for (Subscriber &subscriber : m_subscribers)
        End(subscriber, QStringLiteral("serverclosing.xml"));
    QDeadlineTimer deadline(Milliseconds);
    while (Count() > 0 && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
}

int PushChannel::Count()
{
    DropClosed();
    return int(m_subscribers.size());
}

void PushChannel::Send(Subscriber &Target, const QByteArray &Chunk)
{
    QTcpSocket *socket = Target.Socket;
    if (!socket || socket->state() != QAbstractSocket::ConnectedState)
        return;
    if (socket->bytesToWrite() > BacklogLimit) {
        socket->abort();
        return;
    }
    socket->write(Chunk);
}

void PushChannel::End(Subscriber &Target, const QString &Location)
{
    Send(Target, BlockChunk(Location) + "0\r\n\r\n");
    if (Target.Socket)
        Target.Socket->disconnectFromHost();
}

void PushChannel::KeepAlive()
{
    DropClosed();
    for (Subscriber &subscriber : m_subscribers)
        Send(subscriber, Chunk("\r\n"));
}

void PushChannel::DropClosed()
{
    m_subscribers.removeIf([](const Subscriber &subscriber) {
        return !subscriber.Socket || subscriber.Socket->state() == QAbstractSocket::UnconnectedState;
    });
}
