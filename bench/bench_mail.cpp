// Mail in and out of a real postvane-server started beside this program,
// with a data folder of its own:
//  1. Postfix's smtp-source sends N messages of 5 KB over 20 sessions to the
//     mail server's listener (roles web and mailserver: every message is
//     committed to the edge queue before its "250"): messages per second,
//     and the rows found in the queue afterwards;
//  2. the same load against Postfix's smtp-sink, which keeps nothing: the
//     ceiling of this machine, and the ratio of 1 to it;
//  3. N due rows in the Outbox sent by the outgoing role through a smart
//     host (smtp-sink): messages per second.
//
// Usage: bench_mail [--messages N] [--sessions N]
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>
#include <cstdio>
#include <csignal>

namespace {

const QString AdminQuery = QStringLiteral("username=Admin&password=1B2M2Y8AsgTpgAmY7PhCfg%3D%3D");

quint16 FreePort()
{
    for (;;) {
        const quint16 port = quint16(20000 + QRandomGenerator::global()->bounded(12000));
        QTcpServer probe;
        if (probe.listen(QHostAddress::LocalHost, port))
            return port;
    }
}

void Fail(const QString &Text)
{
    std::fprintf(stderr, "bench_mail: %s\n", qPrintable(Text));
    std::exit(1);
}

class Server
{
public:
    Server(const QString &Data, const QString &Roles)
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QCoreApplication::applicationDirPath() + QStringLiteral("/postvane-server"),
                        {QStringLiteral("--data"), Data, QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--bind"),
                         QStringLiteral("127.0.0.1"), QStringLiteral("--roles"), Roles});
        static const QRegularExpression listening(QStringLiteral("Listening on https://\\S+?:(\\d+)/"));
        QByteArray output;
        QDeadlineTimer deadline(30000);
        while (!deadline.hasExpired() && m_process.waitForReadyRead(1000)) {
            output += m_process.readAll();
            const auto match = listening.match(QString::fromUtf8(output));
            if (match.hasMatch()) {
                Port = quint16(match.captured(1).toUInt());
                return;
            }
        }
        Fail(QStringLiteral("the server did not start: ") + QString::fromUtf8(output));
    }
    ~Server()
    {
        ::kill(pid_t(m_process.processId()), SIGTERM);
        if (!m_process.waitForFinished(20000))
            m_process.kill();
    }
    QString Post(const QString &Request, const QByteArray &Body)
    {
        QNetworkAccessManager network;
        QNetworkRequest request(QUrl(QStringLiteral("https://127.0.0.1:%1/").arg(Port) + Request + u'&' + AdminQuery));
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setPeerVerifyMode(QSslSocket::VerifyNone);
        request.setSslConfiguration(tls);
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/xml"));
        QNetworkReply *reply = Body.isNull() ? network.get(request) : network.post(request, Body);
        QEventLoop loop;
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        const QString text = QString::fromUtf8(reply->readAll());
        reply->deleteLater();
        return text;
    }
    quint16 Port = 0;

private:
    QProcess m_process;
};

class Sink
{
public:
    explicit Sink(quint16 Port)
    {
        m_process.start(QStringLiteral("smtp-sink"), {QStringLiteral("-u"), QStringLiteral("nobody"),
                                                      QStringLiteral("127.0.0.1:") + QString::number(Port),
                                                      QStringLiteral("256")});
        if (!m_process.waitForStarted(5000))
            Fail(QStringLiteral("smtp-sink does not start; install postfix"));
        QThread::msleep(300);
    }
    ~Sink()
    {
        m_process.kill();
        m_process.waitForFinished(5000);
    }

private:
    QProcess m_process;
};

// Seconds smtp-source takes for the load.
double SmtpSource(quint16 Port, int Messages, int Sessions)
{
    QProcess source;
    source.setProcessChannelMode(QProcess::MergedChannels);
    QElapsedTimer timer;
    timer.start();
    source.start(QStringLiteral("smtp-source"),
                 {QStringLiteral("-s"), QString::number(Sessions), QStringLiteral("-m"), QString::number(Messages),
                  QStringLiteral("-l"), QStringLiteral("5120"), QStringLiteral("-f"), QStringLiteral("bench@example.com"),
                  QStringLiteral("-t"), QStringLiteral("orders@orders.test"), QStringLiteral("127.0.0.1:") + QString::number(Port)});
    if (!source.waitForFinished(600000) || source.exitCode() != 0)
        Fail(QStringLiteral("smtp-source failed: ") + QString::fromUtf8(source.readAll()));
    return timer.nsecsElapsed() / 1e9;
}

qint64 Count(const QString &File, const QString &SQL)
{
    qint64 count = -1;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("count"));
        db.setDatabaseName(File);
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        if (db.open()) {
            QSqlQuery query(db);
            if (query.exec(SQL) && query.next())
                count = query.value(0).toLongLong();
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("count"));
    return count;
}

void AddOutboxRows(const QString &File, int Rows)
{
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("rows"));
        db.setDatabaseName(File);
        if (!db.open())
            Fail(QStringLiteral("cannot open the store"));
        db.transaction();
        QSqlQuery query(db);
        query.prepare(QStringLiteral("INSERT INTO Outbox (AccountID,DateAdded,ScheduledDate,Scheduled,Subject,MailTo,MailFrom,Mime,Status) "
                                     "VALUES ('A1','2000-01-01 00:00:00','2000-01-01 00:00:00',0,?,'carl@faraway.test','bench@example.com',?,0)"));
        const QString body = QString(5000, u'x');
        for (int n = 0; n < Rows; ++n) {
            const QString subject = QStringLiteral("Bench ") + QString::number(n);
            query.addBindValue(subject);
            query.addBindValue(QStringLiteral("From: bench@example.com\r\nTo: carl@faraway.test\r\nSubject: ") + subject
                               + QStringLiteral("\r\n\r\n") + body + QStringLiteral("\r\n"));
            if (!query.exec())
                Fail(QStringLiteral("cannot add outbox rows"));
        }
        db.commit();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("rows"));
}

void WriteSettings(const QString &Data, quint16 Smtp, quint16 SmartHost)
{
    QDir().mkpath(Data);
    QFile file(Data + QStringLiteral("/SETTINGS.XML"));
    if (!file.open(QIODevice::WriteOnly))
        Fail(QStringLiteral("cannot write the settings"));
    file.write(QStringLiteral("<GlobalSettings><MailServerListenIncoming>-1</MailServerListenIncoming>"
                              "<MailServerBindTo>127.0.0.1</MailServerBindTo><MailServerHostName>bench.test</MailServerHostName>"
                              "<MailServerPort>%1</MailServerPort><MailServerUseSmartHost>-1</MailServerUseSmartHost>"
                              "<MailServerSmartHostIP>127.0.0.1</MailServerSmartHostIP><MailServerSmartHostPort>%2</MailServerSmartHostPort>"
                              "</GlobalSettings>")
                   .arg(Smtp)
                   .arg(SmartHost)
                   .toUtf8());
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption messagesOption(QStringLiteral("messages"), QStringLiteral("Messages per run."), QStringLiteral("N"), QStringLiteral("10000"));
    const QCommandLineOption sessionsOption(QStringLiteral("sessions"), QStringLiteral("Parallel sessions."), QStringLiteral("N"), QStringLiteral("20"));
    parser.addOptions({messagesOption, sessionsOption});
    parser.process(app);
    const int messages = parser.value(messagesOption).toInt();
    const int sessions = parser.value(sessionsOption).toInt();

    QTemporaryDir root;
    const QString data = root.path() + QStringLiteral("/data/");
    const quint16 smtpPort = FreePort();
    const quint16 sinkPort = FreePort();
    WriteSettings(data, smtpPort, sinkPort);
    qputenv("XDG_CONFIG_HOME", (root.path() + QStringLiteral("/config")).toUtf8());

    double listenerSeconds = 0;
    {
        Server server(data, QStringLiteral("web,mailserver"));
        const QString organization = QRegularExpression(QStringLiteral("<ID>([^<]+)</ID>"))
                                         .match(server.Post(QStringLiteral("getorganizations.xml?x=1"), QByteArray()))
                                         .captured(1);
        const QString reply = server.Post(QStringLiteral("postaccount.htm?accountid=A1"),
                                          QStringLiteral("<Account><AccountID>A1</AccountID><OrganizationID>%1</OrganizationID>"
                                                         "<Enabled>-1</Enabled><Name>Orders</Name><MailServer>-1</MailServer>"
                                                         "<MailServerAliases>*</MailServerAliases><MailServerDomain>orders.test</MailServerDomain></Account>")
                                              .arg(organization)
                                              .toUtf8());
        if (reply.trimmed() != u"OK")
            Fail(QStringLiteral("the account was not stored: ") + reply);
        QThread::msleep(700);
        listenerSeconds = SmtpSource(smtpPort, messages, sessions);
    }
    const qint64 queued = Count(data + QStringLiteral("EdgeQueue.db3"), QStringLiteral("SELECT COUNT(*) FROM EdgeQueue"));
    std::printf("smtp-source to the listener:  %d messages of 5 KB over %d sessions in %.2f s: %.0f messages/s; %lld in the edge queue\n",
                messages, sessions, listenerSeconds, messages / listenerSeconds, queued);

    double sinkSeconds = 0;
    {
        Sink sink(sinkPort);
        sinkSeconds = SmtpSource(sinkPort, messages, sessions);
    }
    std::printf("smtp-source to smtp-sink:     %.2f s: %.0f messages/s (the machine's ceiling); listener/sink %.2f\n",
                sinkSeconds, messages / sinkSeconds, sinkSeconds / listenerSeconds);

    AddOutboxRows(data + QStringLiteral("MessageStore.db3"), messages);
    {
        Sink smartHost(sinkPort);
        QElapsedTimer timer;
        timer.start();
        Server server(data, QStringLiteral("web,outgoing"));
        qint64 left = messages;
        while (left > 0 && timer.elapsed() < 600000) {
            QThread::msleep(200);
            left = Count(data + QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT COUNT(*) FROM Outbox"));
        }
        const double seconds = timer.nsecsElapsed() / 1e9;
        std::printf("outbox to the smart host:     %lld of %d rows sent in %.2f s (server start included): %.0f messages/s\n",
                    messages - left, messages, seconds, (messages - left) / seconds);
    }
    return 0;
}
