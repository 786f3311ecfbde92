#include "SmtpListener.h"
#include "SmtpSession.h"
#include "foundation/GlobalBlock.h"
#include "foundation/LikeMatcher.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"

#include <QHostInfo>
#include <QSslSocket>
#include <QTcpServer>

namespace {

// A server socket that hands each connection's descriptor on, so that the
// session can wrap it in a QSslSocket.
class SmtpTcpServer : public QTcpServer
{
public:
    explicit SmtpTcpServer(std::function<void(qintptr)> OnConnection)
        : m_onConnection(std::move(OnConnection))
    {
    }

protected:
    void incomingConnection(qintptr Descriptor) override { m_onConnection(Descriptor); }

private:
    std::function<void(qintptr)> m_onConnection;
};

} // namespace

SmtpOptions SmtpOptions::FromSettings()
{
    const auto &settings = Global.Settings;
    SmtpOptions options;
    options.HostName = settings.MailServerHostName.trimmed();
    if (options.HostName.isEmpty())
        options.HostName = QHostInfo::localHostName();
    if (settings.MailServerMaxMessageSize > 0)
        options.MaxMessageSize = settings.MailServerMaxMessageSize;
    const int types = settings.MailServerAuthenticationTypes;
    if (!(types & 8)) {
        if (types & 1 || !(types & 3))
            options.AuthMechanisms << QStringLiteral("PLAIN");
        if (types & 2 || !(types & 3))
            options.AuthMechanisms << QStringLiteral("LOGIN");
    }
    options.RequireAuthentication = settings.MailServerRequireAuthentication && !options.AuthMechanisms.isEmpty();
    options.RelayIP = settings.MailServerRelayIP;
    return options;
}

SmtpListener::SmtpListener(const SmtpOptions &Options)
    : Options(Options)
{
}

SmtpListener::~SmtpListener()
{
    // The sessions are children: they go before the servers' sockets.
    const auto sessions = findChildren<SmtpSession *>(Qt::FindDirectChildrenOnly);
    qDeleteAll(sessions);
}

quint16 SmtpListener::Listen(const QHostAddress &Address, quint16 Port, bool ImplicitTls)
{
    if (ImplicitTls && !Options.HasTls()) {
        LastError = QStringLiteral("No certificate for the TLS port ") + QString::number(Port) + u'.';
        return 0;
    }
    auto server = std::make_unique<SmtpTcpServer>([this, ImplicitTls](qintptr descriptor) { Accept(descriptor, ImplicitTls); });
    server->setListenBacklogSize(256);
    if (!server->listen(Address, Port)) {
        LastError = server->errorString();
        return 0;
    }
    const quint16 port = server->serverPort();
    m_servers.push_back(std::move(server));
    return port;
}

void SmtpListener::Accept(qintptr Descriptor, bool ImplicitTls)
{
    auto *socket = new QSslSocket;
    if (!socket->setSocketDescriptor(Descriptor)) {
        delete socket;
        return;
    }
    ++m_sessions;
    auto *session = new SmtpSession(*this, socket, ImplicitTls);
    session->setParent(this);
}

bool SmtpListener::MayRelay(const QHostAddress &Peer) const
{
    const QString text = Peer.toString();
    for (const QString &pattern : Options.RelayIP.split(u';', Qt::SkipEmptyParts))
        if (Like(text, pattern.trimmed()))
            return true;
    return false;
}

RecipientRoute SmtpListener::Route(const QString &Address, const QHostAddress &Peer, bool Authenticated) const
{
    RecipientRoute route;
    const QString domain = Address.section(u'@', -1).toLower();
    if (Accounts().AcceptedDomain(domain)) {
        if (const clsAccount *account = Accounts().FindAccountForEmail(Address)) {
            route.AccountID = account->AccountID;
            return route;
        }
        route.Code = 550;
        route.Reply = QStringLiteral("5.1.1 <") + Address + QStringLiteral(">: Recipient address rejected: User unknown");
        return route;
    }
    if (Authenticated || MayRelay(Peer))
        return route;
    route.Code = 550;
    route.Reply = QStringLiteral("5.7.1 <") + Address + QStringLiteral(">: Relay access denied");
    return route;
}
