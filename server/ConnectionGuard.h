#pragma once
#include <QByteArray>
#include <QObject>
#include <QTimer>

class QTcpSocket;

// Watches one connection of the web service ahead of the HTTP parser: it sees
// every byte first and enforces what the parser does not.
//
// - A request head (request line and headers) is at most HeadLimit bytes and
//   must be complete within HeadTimeout of its first byte: otherwise 414 or
//   431, or 408.
// - The request line has the form "METHOD target HTTP/1.x"; each header line
//   holds a ":": otherwise 400.
// - A body is announced by one Content-Length of at most BodyLimit bytes
//   (413), never chunked (411), and must arrive within BodyTimeout (408).
// - A connection that sends no request for IdleTimeout is closed.
//
// A rejected request is answered with the status and an "Error: ..." text,
// the parser stops reading, whatever else arrives is dropped for a moment so
// that the client can read the answer, and the connection is closed.
class ConnectionGuard : public QObject
{
    Q_OBJECT
public:
    static constexpr qsizetype HeadLimit = 64 * 1024;
    static constexpr qint64 BodyLimit = 16 * 1024 * 1024;
    static constexpr int HeadTimeout = 10000;
    static constexpr int BodyTimeout = 120000;
    static constexpr int IdleTimeout = 30000;
    static constexpr int Linger = 1500;

    // Parser is the object whose readyRead handling stops on a rejection.
    ConnectionGuard(QTcpSocket *Socket, QObject *Parser);

    // The guard of a connection; nullptr when it has none.
    static ConnectionGuard *Of(QTcpSocket *Socket);

    // The connection carries the push stream from now on: no time limits, and
    // what the client sends is dropped.
    void TakeOverForStream();

    // Answers with the status and "Error: " + Message, and ends the connection.
    void Reject(int Status, const QByteArray &Reason, const QString &Message);

private:
    enum class Phase { Idle, Head, Body, Stream, Rejected };

    void Inspect();
    void Consume(QByteArray Data);
    // Checks a complete head; false when it was rejected.
    bool AcceptHead(const QByteArray &Head);
    void TimedOut();
    void Enter(Phase Next);

    QTcpSocket *m_socket;
    QObject *m_parser;
    Phase m_phase = Phase::Idle;
    QByteArray m_head;
    qint64 m_bodyLeft = 0;
    QByteArray m_requestName;
    QTimer m_timer;
};
