#include "XmppClient.h"
#include "foundation/Formatting.h"

#include <QDeadlineTimer>

namespace {

QByteArray Escaped(const QString &Text)
{
    return Text.toHtmlEscaped().toUtf8();
}

} // namespace

QString XmppClient::TypeName(int MessageType)
{
    static const char *types[] = {"normal", "chat", "groupchat", "headline"};
    return QString::fromLatin1(types[qBound(0, MessageType, 3)]);
}

bool XmppClient::Fail(const QString &Reason)
{
    Error = Reason;
    m_socket.abort();
    return false;
}

bool XmppClient::Write(const QByteArray &Data)
{
    m_socket.write(Data);
    return m_socket.waitForBytesWritten(TimeoutMs) || m_socket.bytesToWrite() == 0;
}

bool XmppClient::ReadUntil(const QByteArray &Marker)
{
    const QDeadlineTimer deadline(TimeoutMs);
    while (!m_buffer.contains(Marker)) {
        if (m_buffer.contains("<failure") || m_buffer.contains("<stream:error") || m_buffer.contains("type='error'")
            || m_buffer.contains("type=\"error\""))
            return false;
        if (deadline.hasExpired())
            return false;
        const bool more = m_socket.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime())));
        m_buffer += m_socket.readAll();
        if (!more)
            return m_buffer.contains(Marker);
    }
    return true;
}

bool XmppClient::OpenStream(const QString &Domain)
{
    m_buffer.clear();
    return Write("<?xml version='1.0'?><stream:stream to='" + Escaped(Domain)
                 + "' version='1.0' xmlns='jabber:client' xmlns:stream='http://etherx.jabber.org/streams'>")
        && ReadUntil("</stream:features>");
}

bool XmppClient::Send(const QString &Host, const QString &User, const QString &Password, const Message &Stanza)
{
    Error.clear();
    const QString host = Host.section(u':', 0, 0).trimmed();
    const int port = Host.contains(u':') ? Host.section(u':', 1).trimmed().toInt() : 5222;
    const QString local = User.contains(u'@') ? User.section(u'@', 0, 0) : User;
    const QString domain = User.contains(u'@') ? User.section(u'@', 1).section(u'/', 0, 0) : host;
    if (host.isEmpty() || port <= 0)
        return Fail(QStringLiteral("no server is given"));
    m_socket.connectToHost(host, quint16(port));
    if (!m_socket.waitForConnected(TimeoutMs))
        return Fail(QStringLiteral("cannot connect to ") + Host + QStringLiteral(": ") + m_socket.errorString());
    if (!OpenStream(domain))
        return Fail(QStringLiteral("the server did not open the stream"));
    if (m_buffer.contains("<starttls")) {
        if (!Write("<starttls xmlns='urn:ietf:params:xml:ns:xmpp-tls'/>") || !ReadUntil("<proceed"))
            return Fail(QStringLiteral("the server refused STARTTLS"));
        m_socket.setPeerVerifyName(domain);
        m_socket.startClientEncryption();
        if (!m_socket.waitForEncrypted(TimeoutMs))
            return Fail(QStringLiteral("no secure connection: ") + m_socket.errorString());
        if (!OpenStream(domain))
            return Fail(QStringLiteral("the server did not open the secure stream"));
    }
    if (!m_buffer.contains(">PLAIN<"))
        return Fail(QStringLiteral("the server offers no log-on this client knows (PLAIN)"));
    const QByteArray credentials = QByteArray(1, '\0') + local.toUtf8() + '\0' + Password.toUtf8();
    if (!Write("<auth xmlns='urn:ietf:params:xml:ns:xmpp-sasl' mechanism='PLAIN'>" + credentials.toBase64() + "</auth>")
        || !ReadUntil("<success"))
        return Fail(QStringLiteral("the log-on of ") + local + u'@' + domain + QStringLiteral(" failed"));
    if (!OpenStream(domain))
        return Fail(QStringLiteral("the server did not open the stream after the log-on"));
    m_buffer.clear();
    if (!Write("<iq type='set' id='bind1'><bind xmlns='urn:ietf:params:xml:ns:xmpp-bind'><resource>"
               + Escaped(GUIDDigits().left(8)) + "</resource></bind></iq>")
        || !ReadUntil("</iq>"))
        return Fail(QStringLiteral("the server did not bind a resource"));
    QByteArray message = "<message to='" + Escaped(Stanza.To) + "' type='" + Escaped(Stanza.Type) + "' id='"
        + GUIDDigits().toLatin1() + "'>";
    if (!Stanza.Subject.isEmpty())
        message += "<subject>" + Escaped(Stanza.Subject) + "</subject>";
    message += "<body>" + Escaped(Stanza.Body) + "</body></message>";
    m_buffer.clear();
    // The server answers the closing of the stream after the stanzas before it.
    if (!Write(message + "</stream:stream>") || !ReadUntil("</stream:stream>"))
        return Fail(m_buffer.contains("error") ? QStringLiteral("the server refused the message: ")
                                                     + QString::fromUtf8(m_buffer.left(300))
                                               : QStringLiteral("the server did not confirm the end of the stream"));
    m_socket.disconnectFromHost();
    return true;
}
