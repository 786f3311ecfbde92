#pragma once
#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// The reply of one request: status 0 when none came.
struct HttpReply
{
    int Status = 0;
    QByteArray Body;
    QByteArray ContentLocation;
    QByteArray PoweredBy;
    QString Text() const { return QString::fromUtf8(Body); }
    // The server refused a well-formed request: status 200, "Error: " and a
    // reason, with the location the console shows in its message bar.
    bool Refused() const { return Status == 200 && Body.startsWith("Error: ") && Body.size() > 8 && ContentLocation == "/error"; }
};

// A real postvane-server started from the build's bin folder, listening on a
// free loopback port, with a data folder and configuration folders of its
// own that outlive restarts of the process.
class ServerFixture
{
public:
    ServerFixture();
    ~ServerFixture();

    // Starts the process and waits until it listens; false with Problem set.
    bool Start();
    // SIGTERM, and the exit code (-1 when it had to be killed).
    int Stop();
    // SIGKILL.
    void Kill();
    bool Running() const { return m_process.state() != QProcess::NotRunning; }

    QString DataPath() const { return m_root.path() + QStringLiteral("/data/"); }
    // The address Start has the server listen on.
    QString BindTo = QStringLiteral("127.0.0.1");
    // More arguments for Start ("--roles", "web").
    QStringList Arguments;
    quint16 Port = 0;
    QString Problem;

    // "username=...&password=..." as the console composes it: the Base64 MD5
    // digest of the password, URL-encoded.
    static QString AuthQuery(const QString &User, const QString &Password);
    // The address of a request, with the credentials behind the query.
    QUrl Url(const QString &Request, const QString &User = QStringLiteral("Admin"),
             const QString &Password = QString()) const;

    HttpReply Get(const QString &Request, const QString &User = QStringLiteral("Admin"),
                  const QString &Password = QString());
    HttpReply Post(const QString &Request, const QByteArray &Body, const QString &User = QStringLiteral("Admin"),
                   const QString &Password = QString());
    // Starts a request without waiting; the reply belongs to the caller.
    QNetworkReply *Send(const QUrl &Url, const QByteArray &Body = QByteArray(), bool Post = false);
    static HttpReply Finish(QNetworkReply *Reply, int TimeoutMs = 20000);

    // Writes Data on a new TLS connection and returns what arrives until the
    // server closes it or TimeoutMs pass. From names the client's own
    // address (another one of the loopback range).
    QByteArray RawExchange(const QByteArray &Data, int TimeoutMs = 10000, const QString &From = QString());

    QNetworkAccessManager Network;

private:
    QTemporaryDir m_root;
    QProcess m_process;
};
