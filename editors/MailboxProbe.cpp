#include "MailboxProbe.h"
#include "engine/sources/CurlConnection.h"

namespace {

QString ProtocolName(MailboxProbe::Protocol Kind)
{
    return Kind == MailboxProbe::POP3 ? QStringLiteral("pop3") : QStringLiteral("imap");
}

// One IMAP string at Pos: quoted (with its escapes), NIL, or an atom; Pos
// moves past it.
QString ImapString(const QByteArray &Line, qsizetype &Pos, bool *Nil = nullptr)
{
    while (Pos < Line.size() && Line[Pos] == ' ')
        ++Pos;
    QByteArray value;
    if (Pos < Line.size() && Line[Pos] == '"') {
        for (++Pos; Pos < Line.size() && Line[Pos] != '"'; ++Pos) {
            if (Line[Pos] == '\\' && Pos + 1 < Line.size())
                ++Pos;
            value += Line[Pos];
        }
        ++Pos;
        return QString::fromUtf8(value);
    }
    while (Pos < Line.size() && Line[Pos] != ' ')
        value += Line[Pos++];
    if (Nil)
        *Nil = value.compare("NIL", Qt::CaseInsensitive) == 0;
    return QString::fromUtf8(value);
}

bool ReadPop3Count(CurlConnection &Connection, int &Count)
{
    QByteArray line;
    if (!Connection.Send("STAT\r\n") || !Connection.ReadLine(line))
        return false;
    if (!line.startsWith("+OK"))
        return Connection.Fail(QString::fromUtf8(line));
    Count = line.split(' ').value(1).toInt();
    Connection.Send("QUIT\r\n");
    return true;
}

} // namespace

bool MailboxProbe::ParseList(const QByteArray &Line, QString &Folder, QString &Separator)
{
    if (!Line.startsWith("* LIST ") && !Line.startsWith("* LSUB "))
        return false;
    qsizetype pos = Line.indexOf(')');
    if (pos < 0)
        return false;
    ++pos;
    bool nil = false;
    const QString separator = ImapString(Line, pos, &nil);
    Separator = nil || separator.isEmpty() ? QStringLiteral(".") : separator;
    Folder = ImapString(Line, pos);
    return !Folder.isEmpty();
}

void MailboxProbe::Run()
{
    Connected = false;
    Error.clear();
    Folders.clear();
    MessagesWaiting = 0;
    CurlConnection connection;
    if (!connection.Open(ProtocolName(Kind), Endpoint)) {
        Error = connection.Error;
        CertificateRejected = connection.CertificateRejected;
        if (CertificateRejected) {
            SourceEndpoint look = Endpoint;
            look.AcceptAnyCertificate = true;
            look.User.clear();
            look.Password.clear();
            CurlConnection peek;
            peek.Open(ProtocolName(Kind), look);
            CertificateIssuer = peek.CertificateIssuer;
            CertificateSubject = peek.CertificateSubject;
        }
        return;
    }
    CertificateIssuer = connection.CertificateIssuer;
    CertificateSubject = connection.CertificateSubject;
    if (Kind == POP3) {
        Connected = ReadPop3Count(connection, MessagesWaiting);
    } else {
        Connected = connection.Send("L1 LIST \"\" \"*\"\r\n");
        QByteArray line;
        while (Connected && (Connected = connection.ReadLine(line))) {
            QString folder;
            if (ParseList(line, folder, Separator))
                Folders << folder;
            else if (line.startsWith("L1 ")) {
                Connected = line.startsWith("L1 OK") || connection.Fail(QString::fromUtf8(line));
                break;
            }
        }
        if (Connected)
            connection.Send("L2 LOGOUT\r\n");
    }
    if (!Connected)
        Error = connection.Error;
}
