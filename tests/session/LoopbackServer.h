#pragma once
#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <functional>

// A plain HTTP server on a loopback port that answers each request with what
// the test's handler returns, and records the request lines. It stands in for
// the server where the real one cannot produce a case (a failure status, a
// push block cut in two).
class LoopbackServer : public QTcpServer
{
public:
    // Given the request's path and query, the bytes to send, as one or more
    // writes; WriteGap milliseconds pass between two writes.
    using Handler = std::function<QList<QByteArray>(const QString &Target)>;

    explicit LoopbackServer(Handler Answer) : m_answer(std::move(Answer))
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { Read(socket); });
        });
    }

    QString URL() const { return QStringLiteral("http://127.0.0.1:%1/").arg(serverPort()); }

    // "GET /path?query" of each request, in order.
    QStringList Requests;
    int WriteGap = 0;

    static QByteArray Response(int Status, const QByteArray &Body, const QByteArray &Location = QByteArray())
    {
        QByteArray text = "HTTP/1.1 " + QByteArray::number(Status) + (Status == 200 ? " OK" : " Failed") + "\r\n";
        if (!Location.isEmpty())
            text += "Content-Location: " + Location + "\r\n";
        text += "Content-Length: " + QByteArray::number(Body.size()) + "\r\n\r\n" + Body;
        return text;
    }

private:
    void Read(QTcpSocket *Socket)
    {
        QByteArray &buffer = m_buffers[Socket];
        buffer += Socket->readAll();
        const qsizetype end = buffer.indexOf("\r\n\r\n");
        if (end < 0)
            return;
        const QByteArray head = buffer.left(end);
        qsizetype length = 0;
        for (const QByteArray &line : head.split('\n')) {
            if (line.toLower().startsWith("content-length:"))
                length = line.mid(15).trimmed().toLongLong();
        }
        if (buffer.size() < end + 4 + length)
            return;
        buffer.remove(0, end + 4 + length);
        const QList<QByteArray> request = head.left(head.indexOf('\r')).split(' ');
        Requests.append(QString::fromLatin1(request.value(0) + ' ' + request.value(1)));
        Write(Socket, m_answer(QString::fromLatin1(request.value(1).mid(1))));
    }

    void Write(QTcpSocket *Socket, QList<QByteArray> Parts)
    {
        if (Parts.isEmpty())
            return;
        Socket->write(Parts.takeFirst());
        Socket->flush();
        if (!Parts.isEmpty())
            QTimer::singleShot(WriteGap, Socket, [this, Socket, Parts] { Write(Socket, Parts); });
    }

    Handler m_answer;
    QHash<QTcpSocket *, QByteArray> m_buffers;
};
