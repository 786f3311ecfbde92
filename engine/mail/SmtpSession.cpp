#include "SmtpSession.h"
#include "SmtpListener.h"

#include <QPointer>
#include <QSslSocket>

namespace {

// The address of "FROM:<address> PARAM=..." or "TO:<address>": what stands
// between the angle brackets (the brackets may be missing); Rest is what
// follows. False when the keyword is not there.
bool ParsePath(const QString &Argument, const QString &Keyword, QString &Address, QString &Rest)
{
    if (!Argument.startsWith(Keyword, Qt::CaseInsensitive))
        return false;
    QString path = Argument.mid(Keyword.size()).trimmed();
    if (path.startsWith(u'<')) {
        const qsizetype close = path.indexOf(u'>');
        if (close < 0)
            return false;
        Address = path.mid(1, close - 1).trimmed();
        Rest = path.mid(close + 1).trimmed();
    } else {
        const qsizetype blank = path.indexOf(u' ');
        Address = path.left(blank < 0 ? path.size() : blank);
        Rest = blank < 0 ? QString() : path.mid(blank + 1).trimmed();
    }
    // A source route ("@a,@b:user@c") names the mailbox after its colon.
    if (Address.startsWith(u'@') && Address.contains(u':'))
        Address = Address.mid(Address.indexOf(u':') + 1);
    return true;
}

bool ValidMailbox(const QString &Address)
{
    const qsizetype at = Address.lastIndexOf(u'@');
    return at > 0 && at < Address.size() - 1 && !Address.contains(u' ') && Address.size() <= 254;
}

QString Base64Text(const QByteArray &Line)
{
    return QString::fromUtf8(QByteArray::fromBase64(Line.trimmed()));
}

} // namespace

SmtpSession::SmtpSession(SmtpListener &Listener, QSslSocket *Socket, bool ImplicitTls)
    : m_listener(Listener)
    , m_socket(Socket)
{
    m_socket->setParent(this);
    // An IPv4 client of a dual-stack socket is named by its IPv4 address.
    bool mapped = false;
    const quint32 v4 = m_socket->peerAddress().toIPv4Address(&mapped);
    m_mail.Peer = mapped ? QHostAddress(v4) : m_socket->peerAddress();
    m_idle.setSingleShot(true);
    m_idle.setInterval(m_listener.Options.IdleMilliseconds);
    connect(&m_idle, &QTimer::timeout, this, [this] { Close("421 4.4.2 " + m_listener.Options.HostName.toUtf8() + " Timeout, closing connection"); });
    connect(m_socket, &QSslSocket::readyRead, this, &SmtpSession::OnReadable);
    connect(m_socket, &QSslSocket::disconnected, this, &QObject::deleteLater);
    connect(m_socket, &QSslSocket::errorOccurred, this, [this](QAbstractSocket::SocketError Error) {
        if (Error != QAbstractSocket::RemoteHostClosedError)
            m_socket->abort();
        if (m_socket->state() == QAbstractSocket::UnconnectedState)
            deleteLater();
    });
    connect(m_socket, &QSslSocket::sslErrors, this, [this] { m_socket->abort(); });
    m_idle.start();
    if (ImplicitTls) {
        connect(m_socket, &QSslSocket::encrypted, this, &SmtpSession::Greet);
        m_socket->setSslConfiguration(m_listener.Options.Tls);
        m_socket->startServerEncryption();
    } else {
        Greet();
    }
}

SmtpSession::~SmtpSession()
{
    m_listener.SessionEnded();
}

void SmtpSession::Greet()
{
    if (m_listener.Sessions() > m_listener.Options.MaxConnections) {
        Close("421 4.7.0 " + m_listener.Options.HostName.toUtf8() + " Too many connections, try again later");
        return;
    }
    Reply("220 " + m_listener.Options.HostName.toUtf8() + " ESMTP Postvane ready");
}

bool SmtpSession::Encrypted() const
{
    return m_socket->isEncrypted();
}

// PLAIN and LOGIN send the password as it is: they are offered over TLS, or
// to a client on this machine.
bool SmtpSession::AuthOffered() const
{
    return !m_listener.Options.AuthMechanisms.isEmpty() && m_listener.Authenticate
        && (Encrypted() || m_mail.Peer.isLoopback());
}

void SmtpSession::Reply(const QByteArray &Text)
{
    if (m_socket->state() == QAbstractSocket::ConnectedState)
        m_socket->write(Text + "\r\n");
}

void SmtpSession::Refuse(const QByteArray &Text)
{
    Reply(Text);
    if (++m_errors >= MaxErrors)
        Close("421 4.7.0 " + m_listener.Options.HostName.toUtf8() + " Too many errors, closing connection");
}

void SmtpSession::Close(const QByteArray &Text)
{
    if (m_closing)
        return;
    m_closing = true;
    Reply(Text);
    m_in.clear();
    m_socket->disconnectFromHost();
}

void SmtpSession::OnReadable()
{
    m_idle.start();
    m_in += m_socket->readAll();
    ProcessInput();
}

void SmtpSession::ProcessInput()
{
    QPointer<SmtpSession> alive(this);
    QByteArray line;
    bool bareLF = false;
    while (alive && !m_waiting && !m_closing && TakeLine(line, bareLF)) {
        switch (m_phase) {
        case Phase::Command:
            Command(line, bareLF);
            break;
        case Phase::Data:
            DataLine(line, bareLF);
            break;
        default:
            AuthLine(line);
            break;
        }
    }
}

// The next whole line of the input, with its line end; the rest of a line
// over the limit of the phase is dropped as it comes, and the line is then
// answered (commands) or marks the message (data).
bool SmtpSession::TakeLine(QByteArray &Line, bool &BareLF)
{
    const int limit = m_phase == Phase::Data ? MaxTextLine : MaxCommandLine;
    const qsizetype end = m_in.indexOf('\n');
    if (end < 0) {
        if (m_in.size() > limit) {
            // Keep a final CR: it may belong to the line end still to come.
            const bool cr = m_in.endsWith('\r');
            m_in = cr ? QByteArray("\r") : QByteArray();
            m_discarding = true;
        }
        return false;
    }
    Line = m_in.left(end + 1);
    m_in.remove(0, end + 1);
    BareLF = end == 0 || Line.at(end - 1) != '\r';
    if (m_discarding || Line.size() > limit) {
        m_discarding = false;
        if (m_phase == Phase::Data) {
            // Not kept; the message is refused at its end.
            m_longLine = true;
            Line.clear();
            BareLF = false;
            return true;
        }
        Refuse("500 5.5.2 Line too long");
        return TakeLine(Line, BareLF);
    }
    return true;
}

void SmtpSession::Command(const QByteArray &Line, bool BareLF)
{
    if (BareLF) {
        Refuse("500 5.5.2 Command lines end in CR LF; bare LF is not allowed");
        return;
    }
    const QString text = QString::fromUtf8(Line).trimmed();
    const qsizetype blank = text.indexOf(u' ');
    const QString verb = text.left(blank < 0 ? text.size() : blank).toUpper();
    const QString argument = blank < 0 ? QString() : text.mid(blank + 1).trimmed();
    if (verb == u"EHLO" || verb == u"HELO")
        Ehlo(argument, verb == u"EHLO");
    else if (verb == u"MAIL")
        MailFrom(argument);
    else if (verb == u"RCPT")
        RcptTo(argument);
    else if (verb == u"DATA")
        Data();
    else if (verb == u"STARTTLS")
        StartTls();
    else if (verb == u"AUTH")
        Auth(argument);
    else if (verb == u"RSET") {
        ResetTransaction();
        Reply("250 2.0.0 Ok");
    } else if (verb == u"NOOP")
        Reply("250 2.0.0 Ok");
    else if (verb == u"VRFY")
        Reply("252 2.5.2 Cannot verify the user, but will accept the message and attempt delivery");
    else if (verb == u"HELP")
        Reply("214 2.0.0 Commands: EHLO HELO MAIL RCPT DATA RSET NOOP QUIT VRFY STARTTLS AUTH");
    else if (verb == u"QUIT")
        Close("221 2.0.0 Bye");
    else
        Refuse("500 5.5.1 Command unrecognized");
}

void SmtpSession::Ehlo(const QString &Argument, bool Extended)
{
    if (Argument.isEmpty()) {
        Refuse("501 5.5.4 Syntax: " + QByteArray(Extended ? "EHLO" : "HELO") + " hostname");
        return;
    }
    ResetTransaction();
    m_helo = Argument.section(u' ', 0, 0);
    const QByteArray host = m_listener.Options.HostName.toUtf8();
    if (!Extended) {
        Reply("250 " + host);
        return;
    }
    QList<QByteArray> lines{host, "PIPELINING", "SIZE " + QByteArray::number(m_listener.Options.MaxMessageSize),
                            "8BITMIME", "ENHANCEDSTATUSCODES"};
    if (m_listener.Options.HasTls() && !Encrypted())
        lines << "STARTTLS";
    if (AuthOffered() && m_user.isEmpty())
        lines << "AUTH " + m_listener.Options.AuthMechanisms.join(u' ').toUtf8();
    for (int n = 0; n < lines.size(); ++n)
        Reply("250" + QByteArray(n + 1 < lines.size() ? "-" : " ") + lines.at(n));
}

void SmtpSession::MailFrom(const QString &Argument)
{
    if (m_helo.isEmpty())
        return Refuse("503 5.5.1 Send EHLO or HELO first");
    if (m_hasSender)
        return Refuse("503 5.5.1 Sender already given");
    if (m_listener.Options.RequireAuthentication && m_user.isEmpty())
        return Refuse("530 5.7.0 Authentication required");
    QString address, rest;
    if (!ParsePath(Argument, QStringLiteral("FROM:"), address, rest) || (!address.isEmpty() && !ValidMailbox(address)))
        return Refuse("501 5.1.7 Syntax: MAIL FROM:<address>");
    m_declaredSize = 0;
    for (const QString &parameter : rest.split(u' ', Qt::SkipEmptyParts)) {
        const QString key = parameter.section(u'=', 0, 0).toUpper();
        const QString value = parameter.section(u'=', 1);
        if (key == u"SIZE") {
            bool number = false;
            m_declaredSize = value.toLongLong(&number);
            if (!number)
                return Refuse("501 5.5.4 Bad SIZE parameter");
            if (m_declaredSize > m_listener.Options.MaxMessageSize)
                return Refuse("552 5.3.4 Message size exceeds fixed maximum message size");
        } else if (key == u"BODY") {
            if (value.toUpper() != u"7BIT" && value.toUpper() != u"8BITMIME")
                return Refuse("501 5.5.4 Unknown BODY type");
        } else if (key != u"AUTH") {
            return Refuse("555 5.5.4 Unsupported parameter " + key.toUtf8());
        }
    }
    m_hasSender = true;
    m_mail.MailFrom = address;
    Reply("250 2.1.0 Ok");
}

void SmtpSession::RcptTo(const QString &Argument)
{
    if (!m_hasSender)
        return Refuse("503 5.5.1 Need MAIL command first");
    QString address, rest;
    if (!ParsePath(Argument, QStringLiteral("TO:"), address, rest) || !ValidMailbox(address))
        return Refuse("501 5.1.3 Syntax: RCPT TO:<address>");
    if (m_mail.Recipients.size() >= m_listener.Options.MaxRecipients)
        return Reply("452 4.5.3 Too many recipients");
    const RecipientRoute route = m_listener.Route(address, m_mail.Peer, !m_user.isEmpty());
    if (route.Code != 250) {
        if (m_listener.Log)
            m_listener.Log(QStringLiteral("Refused ") + address + QStringLiteral(" from ") + m_mail.Peer.toString()
                           + QStringLiteral(": ") + route.Reply);
        return Refuse(QByteArray::number(route.Code) + ' ' + route.Reply.toUtf8());
    }
    m_mail.Recipients.append({address, route.AccountID});
    Reply("250 2.1.5 Ok");
}

void SmtpSession::Data()
{
    if (!m_hasSender)
        return Refuse("503 5.5.1 Need MAIL command first");
    if (m_mail.Recipients.isEmpty())
        return Refuse("554 5.5.1 No valid recipients");
    m_phase = Phase::Data;
    m_mail.Data.clear();
    m_overSize = m_bareLF = m_longLine = false;
    Reply("354 End data with <CR><LF>.<CR><LF>");
}

void SmtpSession::DataLine(const QByteArray &Line, bool BareLF)
{
    const bool dotOnly = Line == ".\r\n" || Line == ".\n";
    if (BareLF)
        m_bareLF = true;
    if (dotOnly) {
        EndOfData();
        return;
    }
    if (m_overSize)
        return;
    // The line as it was sent, without the dot a client puts before a leading dot.
    const qsizetype skip = Line.startsWith('.') ? 1 : 0;
    if (m_mail.Data.size() + Line.size() - skip > m_listener.Options.MaxMessageSize) {
        m_overSize = true;
        m_mail.Data.clear();
        return;
    }
    m_mail.Data.append(Line.constData() + skip, Line.size() - skip);
}

void SmtpSession::EndOfData()
{
    m_phase = Phase::Command;
    if (m_overSize || m_bareLF || m_longLine) {
        const QByteArray reply = m_overSize ? "552 5.3.4 Message size exceeds fixed maximum message size"
            : m_bareLF                      ? "550 5.6.11 Message lines end in CR LF; bare LF is not allowed"
                                            : "550 5.6.0 Message has a line longer than 998 characters";
        if (m_listener.Log)
            m_listener.Log(QStringLiteral("Refused a message from ") + m_mail.MailFrom + QStringLiteral(" at ")
                           + m_mail.Peer.toString() + QStringLiteral(": ") + QString::fromUtf8(reply.mid(10)));
        ResetTransaction();
        Refuse(reply);
        return;
    }
    m_mail.Helo = m_helo;
    m_mail.AuthenticatedUser = m_user;
    m_mail.Encrypted = Encrypted();
    m_mail.Received = QDateTime::currentDateTime();
    m_waiting = true;
    QPointer<SmtpSession> session(this);
    m_listener.Deliver(std::move(m_mail), [session](bool Accepted, const QString &Text) {
        if (!session)
            return;
        session->m_waiting = false;
        session->ResetTransaction();
        session->Reply(Text.toUtf8());
        if (!Accepted)
            ++session->m_errors;
        session->ProcessInput();
    });
}

void SmtpSession::StartTls()
{
    if (Encrypted())
        return Refuse("503 5.5.1 TLS already active");
    if (!m_listener.Options.HasTls())
        return Refuse("454 4.7.0 TLS not available");
    // Whatever the client sent behind STARTTLS was sent in the clear: it is
    // dropped, not read as if it came over TLS.
    m_in.clear();
    Reply("220 2.0.0 Ready to start TLS");
    m_socket->setSslConfiguration(m_listener.Options.Tls);
    m_socket->startServerEncryption();
    // The client starts again with EHLO.
    m_helo.clear();
    ResetTransaction();
}

void SmtpSession::Auth(const QString &Argument)
{
    if (m_helo.isEmpty())
        return Refuse("503 5.5.1 Send EHLO first");
    if (!m_user.isEmpty())
        return Refuse("503 5.5.1 Already authenticated");
    if (m_hasSender)
        return Refuse("503 5.5.1 AUTH not allowed during a mail transaction");
    if (!AuthOffered())
        return Refuse("503 5.5.1 Authentication not enabled");
    const QString mechanism = Argument.section(u' ', 0, 0).toUpper();
    const QString initial = Argument.section(u' ', 1, 1);
    if (!m_listener.Options.AuthMechanisms.contains(mechanism))
        return Refuse("504 5.5.4 Unrecognized authentication type");
    if (mechanism == u"PLAIN") {
        if (initial.isEmpty()) {
            m_phase = Phase::AuthPlain;
            return Reply("334 ");
        }
        m_phase = Phase::AuthPlain;
        return AuthLine(initial.toUtf8());
    }
    m_phase = Phase::AuthLoginUser;
    if (!initial.isEmpty())
        return AuthLine(initial.toUtf8());
    Reply("334 VXNlcm5hbWU6");
}

// A line of an AUTH exchange; with PLAIN outside the exchange too, when the
// credentials came with the command.
void SmtpSession::AuthLine(const QByteArray &Line)
{
    const Phase phase = m_phase == Phase::Command ? Phase::AuthPlain : m_phase;
    m_phase = Phase::Command;
    if (Line.trimmed() == "*")
        return Refuse("501 5.7.0 Authentication cancelled");
    if (phase == Phase::AuthLoginUser) {
        m_loginUser = Base64Text(Line);
        m_phase = Phase::AuthLoginPassword;
        return Reply("334 UGFzc3dvcmQ6");
    }
    if (phase == Phase::AuthLoginPassword)
        return Authenticated(m_loginUser, Base64Text(Line));
    // PLAIN: authorization identity, NUL, user, NUL, password.
    const QList<QByteArray> parts = QByteArray::fromBase64(Line.trimmed()).split('\0');
    if (parts.size() != 3)
        return Refuse("501 5.5.2 Cannot decode the credentials");
    Authenticated(QString::fromUtf8(parts.at(1)), QString::fromUtf8(parts.at(2)));
}

void SmtpSession::Authenticated(const QString &User, const QString &Password)
{
    if (!m_listener.Authenticate(User, Password)) {
        if (m_listener.Log)
            m_listener.Log(QStringLiteral("Authentication failed for ") + User + QStringLiteral(" from ")
                           + m_mail.Peer.toString());
        return Refuse("535 5.7.8 Authentication credentials invalid");
    }
    m_user = User;
    Reply("235 2.7.0 Authentication successful");
}

void SmtpSession::ResetTransaction()
{
    const QHostAddress peer = m_mail.Peer;
    m_mail = InboundMail();
    m_mail.Peer = peer;
    m_hasSender = false;
    m_declaredSize = 0;
}
