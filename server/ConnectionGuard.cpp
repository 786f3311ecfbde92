#include "ConnectionGuard.h"
#include "foundation/GlobalBlock.h"

#include <QRegularExpression>
#include <QSslSocket>

namespace {

// The end of a head: its length and the length of the blank line closing it.
std::pair<qsizetype, qsizetype> HeadEnd(const QByteArray &Data)
{
    const qsizetype crlf = Data.indexOf("\r\n\r\n");
    const qsizetype lf = Data.indexOf("\n\n");
    if (lf >= 0 && (crlf < 0 || lf < crlf))
        return {lf, 2};
    return {crlf, 4};
}

// The name of the requested document, for the Content-Location of an answer.
QByteArray RequestName(const QByteArray &Target)
{
    QByteArray path = Target.left(Target.indexOf('?'));
    return path.mid(path.lastIndexOf('/') + 1).left(200);
}

} // namespace

ConnectionGuard::ConnectionGuard(QTcpSocket *Socket, QObject *Parser)
    : QObject(Socket), m_socket(Socket), m_parser(Parser)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ConnectionGuard::TimedOut);
    connect(Socket, &QIODevice::readyRead, this, &ConnectionGuard::Inspect);
    connect(Socket, &QAbstractSocket::disconnected, Socket, &QObject::deleteLater);
    Enter(Phase::Idle);
}

ConnectionGuard *ConnectionGuard::Of(QTcpSocket *Socket)
{
    return Socket ? Socket->findChild<ConnectionGuard *>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
}

void ConnectionGuard::TakeOverForStream()
{
    disconnect(m_socket, &QIODevice::readyRead, m_parser, nullptr);
    Enter(Phase::Stream);
}

void ConnectionGuard::Inspect()
{
    // Before the handshake ends the bytes are the handshake's.
    const auto *secure = qobject_cast<QSslSocket *>(m_socket);
    if (secure && !secure->isEncrypted())
        return;
    if (m_phase == Phase::Stream || m_phase == Phase::Rejected) {
        if (m_socket->isTransactionStarted())
            m_socket->commitTransaction();
        m_socket->readAll();
        return;
    }
    const qint64 available = m_socket->bytesAvailable();
    if (available > 0)
        Consume(m_socket->peek(available));
}

void ConnectionGuard::Consume(QByteArray Data)
{
    while (!Data.isEmpty() && m_phase != Phase::Rejected) {
        if (m_phase == Phase::Body) {
            const qint64 taken = qMin<qint64>(m_bodyLeft, Data.size());
            m_bodyLeft -= taken;
            Data.remove(0, taken);
            if (m_bodyLeft == 0)
                Enter(Phase::Idle);
            continue;
        }
        if (m_phase == Phase::Idle)
            Enter(Phase::Head);
        m_head += Data;
        Data.clear();
        const auto [end, blank] = HeadEnd(m_head);
        if (end < 0 || end > HeadLimit) {
            if (m_head.size() > HeadLimit) {
                const qsizetype lineEnd = m_head.indexOf('\n');
                if (lineEnd >= 0 && lineEnd < HeadLimit) {
                    m_requestName = RequestName(m_head.left(lineEnd).split(' ').value(1));
                    Reject(431, "Request Header Fields Too Large", QStringLiteral("The request's headers are too long."));
                } else {
                    Reject(414, "URI Too Long", QStringLiteral("The request line is too long."));
                }
            }
            return;
        }
        Data = m_head.mid(end + blank);
        const QByteArray head = m_head.left(end);
        m_head.clear();
        if (!AcceptHead(head))
            return;
        Enter(m_bodyLeft > 0 ? Phase::Body : Phase::Idle);
    }
}

bool ConnectionGuard::AcceptHead(const QByteArray &Head)
{
    QList<QByteArray> lines = Head.split('\n');
    for (QByteArray &line : lines)
        if (line.endsWith('\r'))
            line.chop(1);
    while (!lines.isEmpty() && lines.first().isEmpty())
        lines.removeFirst();

    static const QRegularExpression requestLine(QStringLiteral("^([A-Z]+) (\\S+) HTTP/1\\.[01]$"));
    const QRegularExpressionMatch match = requestLine.match(QString::fromLatin1(lines.value(0)));
    if (!match.hasMatch()) {
        Reject(400, "Bad Request", QStringLiteral("The request line is malformed."));
        return false;
    }
    m_requestName = RequestName(match.captured(2).toLatin1());

    qint64 length = -1;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray &line = lines.at(i);
        const qsizetype colon = line.indexOf(':');
        if (colon <= 0) {
            Reject(400, "Bad Request", QStringLiteral("A header line is malformed."));
            return false;
        }
        const QByteArray name = line.left(colon).trimmed().toLower();
        const QByteArray value = line.mid(colon + 1).trimmed();
        if (name == "transfer-encoding") {
            Reject(411, "Length Required", QStringLiteral("A request body needs a Content-Length."));
            return false;
        }
        if (name == "upgrade") {
            Reject(400, "Bad Request", QStringLiteral("No protocol upgrade is offered."));
            return false;
        }
        if (name != "content-length")
            continue;
        bool number = !value.isEmpty();
        for (char c : value)
            number = number && c >= '0' && c <= '9';
        const qint64 announced = number && value.size() <= 18 ? value.toLongLong() : -1;
        if (announced < 0 || (length >= 0 && announced != length)) {
            Reject(400, "Bad Request", QStringLiteral("The Content-Length is malformed."));
            return false;
        }
        length = announced;
    }
    if (length > BodyLimit) {
        Reject(413, "Content Too Large", QStringLiteral("A request body may hold at most 16 MB."));
        return false;
    }
    m_bodyLeft = qMax<qint64>(length, 0);
    return true;
}

void ConnectionGuard::Reject(int Status, const QByteArray &Reason, const QString &Message)
{
    disconnect(m_socket, &QIODevice::readyRead, m_parser, nullptr);
    Enter(Phase::Rejected);
    const QByteArray body = (QStringLiteral("Error: ") + Message).toUtf8();
    m_socket->write("HTTP/1.1 " + QByteArray::number(Status) + ' ' + Reason
                    + "\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: " + QByteArray::number(body.size())
                    + "\r\nContent-Location: /" + m_requestName + "\r\nX-Powered-By: " + Global.ProductName.toUtf8()
                    + "\r\nConnection: close\r\n\r\n" + body);
    if (m_socket->isTransactionStarted())
        m_socket->commitTransaction();
    m_socket->readAll();
}

void ConnectionGuard::TimedOut()
{
    switch (m_phase) {
    case Phase::Idle:
        m_socket->disconnectFromHost();
        break;
    case Phase::Head:
    case Phase::Body:
        Reject(408, "Request Timeout", QStringLiteral("The request did not arrive in time."));
        break;
    case Phase::Rejected:
        // The answer had its moment; a peer that doesn't close is cut off.
        m_socket->disconnectFromHost();
        QTimer::singleShot(Linger, m_socket, &QAbstractSocket::abort);
        break;
    case Phase::Stream:
        break;
    }
}

void ConnectionGuard::Enter(Phase Next)
{
    m_phase = Next;
    switch (Next) {
    case Phase::Idle: m_timer.start(IdleTimeout); break;
    case Phase::Head: m_timer.start(HeadTimeout); break;
    case Phase::Body: m_timer.start(BodyTimeout); break;
    case Phase::Rejected: m_timer.start(Linger); break;
    case Phase::Stream: m_timer.stop(); break;
    }
}
