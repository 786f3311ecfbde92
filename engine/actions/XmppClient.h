#pragma once
#include <QByteArray>
#include <QSslSocket>
#include <QString>

// A client of an XMPP server for one message at a time, on a blocking
// socket of the calling thread: it opens the stream, takes STARTTLS when the
// server offers it (the certificate verified), logs on with SASL PLAIN,
// binds a resource, sends the message stanza and closes the stream, so
// that the server has the message when Send returns true.
class XmppClient
{
public:
    int TimeoutMs = 20000;

    struct Message
    {
        QString To;
        QString Type = QStringLiteral("normal"); // "normal", "chat", "groupchat", "headline"
        QString Subject;
        QString Body;
    };

    // Host may carry ":port" (5222 without). User is a JID, or a local part
    // on the host's domain. False with the reason in Error.
    bool Send(const QString &Host, const QString &User, const QString &Password, const Message &Stanza);
    QString Error;

    // The stanza type of a MessageType position ("Normal", "Chat", "Group Chat", "Headline").
    static QString TypeName(int MessageType);

private:
    bool Fail(const QString &Reason);
    bool Write(const QByteArray &Data);
    // Reads until the buffer holds Marker (or one of the failure markers);
    // false on a time-out, a closed connection or a failure element.
    bool ReadUntil(const QByteArray &Marker);
    bool OpenStream(const QString &Domain);

    QSslSocket m_socket;
    QByteArray m_buffer;
};
