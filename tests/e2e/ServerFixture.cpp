#include "ServerFixture.h"
#include "foundation/Crypt.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QRegularExpression>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTimer>
#include <QUrlQuery>
#include <csignal>

namespace {

QSslConfiguration AnyCertificate()
{
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);
    return tls;
}

} // namespace

ServerFixture::ServerFixture()
{
    QDir(m_root.path()).mkpath(QStringLiteral("data"));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_root.path() + QStringLiteral("/config"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), m_root.path() + QStringLiteral("/share"));
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), m_root.path() + QStringLiteral("/cache"));
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

ServerFixture::~ServerFixture()
{
    if (Running())
        Kill();
}

bool ServerFixture::Start()
{
    m_process.start(QStringLiteral(POSTVANE_SERVER_PROGRAM),
                    QStringList{QStringLiteral("--data"), DataPath(), QStringLiteral("--port"), QStringLiteral("0"),
                                QStringLiteral("--bind"), BindTo}
                        + Arguments);
    static const QRegularExpression listening(QStringLiteral("Listening on https://\\S+?:(\\d+)/"));
    QByteArray output;
    QDeadlineTimer deadline(30000);
    while (!deadline.hasExpired() && m_process.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime())))) {
        output += m_process.readAllStandardOutput();
        const QRegularExpressionMatch match = listening.match(QString::fromUtf8(output));
        if (match.hasMatch()) {
            Port = quint16(match.captured(1).toUInt());
            return true;
        }
    }
    Problem = QStringLiteral("the server did not start: ") + QString::fromUtf8(output);
    Kill();
    return false;
}

int ServerFixture::Stop()
{
    // A process that has ended has no id: kill(0) would hit the test's own group.
    if (m_process.processId() <= 0)
        return m_process.exitCode();
    ::kill(pid_t(m_process.processId()), SIGTERM);
    if (m_process.waitForFinished(15000))
        return m_process.exitCode();
    Kill();
    return -1;
}

void ServerFixture::Kill()
{
    m_process.kill();
    m_process.waitForFinished(5000);
}

QString ServerFixture::AuthQuery(const QString &User, const QString &Password)
{
    return QStringLiteral("username=") + URLEncode(User) + QStringLiteral("&password=") + URLEncode(MD5Hash(Password));
}

QUrl ServerFixture::Url(const QString &Request, const QString &User, const QString &Password) const
{
    const QString separator = Request.contains(u'?') ? QStringLiteral("&") : QStringLiteral("?");
    return QUrl(QStringLiteral("https://127.0.0.1:%1/").arg(Port) + Request + separator + AuthQuery(User, Password));
}

HttpReply ServerFixture::Get(const QString &Request, const QString &User, const QString &Password)
{
    return Finish(Send(Url(Request, User, Password)));
}

HttpReply ServerFixture::Post(const QString &Request, const QByteArray &Body, const QString &User,
                              const QString &Password)
{
    return Finish(Send(Url(Request, User, Password), Body, true));
}

QNetworkReply *ServerFixture::Send(const QUrl &Url, const QByteArray &Body, bool Post)
{
    QNetworkRequest request(Url);
    request.setSslConfiguration(AnyCertificate());
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/xml"));
    return Post ? Network.post(request, Body) : Network.get(request);
}

HttpReply ServerFixture::Finish(QNetworkReply *Reply, int TimeoutMs)
{
    if (!Reply->isFinished()) {
        QEventLoop loop;
        QObject::connect(Reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        QTimer::singleShot(TimeoutMs, &loop, &QEventLoop::quit);
        loop.exec();
    }
    HttpReply result;
    result.Status = Reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    result.Body = Reply->readAll();
    result.ContentLocation = Reply->rawHeader("Content-Location");
    result.PoweredBy = Reply->rawHeader("X-Powered-By");
    Reply->abort();
    Reply->deleteLater();
    return result;
}

QByteArray ServerFixture::RawExchange(const QByteArray &Data, int TimeoutMs, const QString &From)
{
    QSslSocket socket;
    socket.setSslConfiguration(AnyCertificate());
    if (!From.isEmpty() && !socket.bind(QHostAddress(From)))
        return QByteArray();
    socket.connectToHostEncrypted(QStringLiteral("127.0.0.1"), Port);
    if (!socket.waitForEncrypted(TimeoutMs))
        return QByteArray();
    socket.write(Data);
    QByteArray received;
    QDeadlineTimer deadline(TimeoutMs);
    while (!deadline.hasExpired() && socket.state() == QAbstractSocket::ConnectedState) {
        if (socket.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime()))))
            received += socket.readAll();
    }
    return received + socket.readAll();
}
