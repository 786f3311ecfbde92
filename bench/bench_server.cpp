// Starts the postvane-server beside this program on a free loopback port,
// with a data folder of its own, and prints what clients see of it:
//  1. authenticated getsession.xml over keep-alive HTTPS connections, one
//     request in flight on each: requests per second, p50/p99 latency and
//     the number of errors;
//  2. the delay for one server log line to reach the subscribers of
//     subscribe.xml, from sending the request that logs it to each
//     subscriber's receipt;
//  3. the server's resident memory at rest and under the load of 1;
//  4. when the server answers postaccount.htm: storing accounts of 20
//     triggers each, then the time of getaccounts.xml and
//     gettriggerconditions.xml for one account.
//
// Usage: bench_server [--seconds N] [--connections N] [--subscribers N] [--accounts N]
#include "SampleConfiguration.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "session/clsPushStream.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <unistd.h>
#include <vector>

namespace {

constexpr int PushRounds = 3;
constexpr int TimingRepeats = 5;

struct Options
{
    int Seconds = 30;
    int Connections = 50;
    int Subscribers = 100;
    int Accounts = 1000;
};

// Nanoseconds on one monotonic clock shared by every measurement.
qint64 NowNs()
{
    static const QElapsedTimer clock = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    return clock.nsecsElapsed();
}

double Milliseconds(qint64 Nanoseconds)
{
    return double(Nanoseconds) / 1e6;
}

// Runs the event loop until Done holds or TimeoutMs pass; what Done says then.
bool WaitUntil(const std::function<bool()> &Done, int TimeoutMs)
{
    QTimer tick; // wakes the loop up to look at Done and the deadline
    tick.start(20);
    const QDeadlineTimer deadline(TimeoutMs);
    while (!Done() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return Done();
}

// ---- The server process and what /proc tells of it ----

// VmRSS of the process in MiB; -1 when it cannot be read.
double ResidentMiB(qint64 Pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(Pid));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024.0;
    return -1;
}

// User and system CPU seconds the process has used.
double CpuSeconds(qint64 Pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(Pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = stat.readAll();
    // The fields after the command's closing parenthesis start with the state
    // (field 3); utime and stime are fields 14 and 15.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13)
        return 0;
    return (fields.at(11).toDouble() + fields.at(12).toDouble()) / double(sysconf(_SC_CLK_TCK));
}

// A postvane-server with a data folder and configuration folders of its own,
// its output in a file of that folder (a pipe nobody reads would stall it).
class ServerProcess
{
public:
    ~ServerProcess();
    // Starts Program and waits until it listens; false with Problem set.
    bool Start(const QString &Program);
    qint64 Pid() const { return m_process.processId(); }

    quint16 Port = 0;
    QString Problem;

private:
    QString OutputFile() const { return m_root.path() + QStringLiteral("/server.out"); }

    QTemporaryDir m_root;
    QProcess m_process;
};

ServerProcess::~ServerProcess()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(15000))
        m_process.kill();
    m_process.waitForFinished(5000);
}

bool ServerProcess::Start(const QString &Program)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        environment.insert(QString::fromLatin1(name), m_root.path() + u'/' + QString::fromLatin1(name));
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setStandardOutputFile(OutputFile());
    m_process.start(Program, {QStringLiteral("--data"), m_root.path() + QStringLiteral("/data/"), QStringLiteral("--port"),
                              QStringLiteral("0"), QStringLiteral("--bind"), QStringLiteral("127.0.0.1")});
    static const QRegularExpression listening(QStringLiteral("Listening on https://127\\.0\\.0\\.1:(\\d+)/"));
    const QDeadlineTimer deadline(30000);
    QString output;
    while (!deadline.hasExpired()) {
        QFile file(OutputFile());
        if (file.open(QIODevice::ReadOnly))
            output = QString::fromUtf8(file.readAll());
        const QRegularExpressionMatch match = listening.match(output);
        if (match.hasMatch()) {
            Port = quint16(match.captured(1).toUInt());
            return true;
        }
        if (m_process.state() == QProcess::NotRunning)
            break;
        m_process.waitForFinished(50);
    }
    Problem = QStringLiteral("the server did not start: ") + output;
    return false;
}

// ---- HTTP/1.1 over TLS ----

QSslConfiguration AnyCertificate()
{
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);
    return tls;
}

void ConnectEncrypted(QSslSocket &Socket, quint16 Port)
{
    Socket.setSslConfiguration(AnyCertificate());
    Socket.connectToHostEncrypted(QStringLiteral("127.0.0.1"), Port);
}

// A request of user Admin with the empty password, as the console sends it:
// the credentials behind the request's own query.
QByteArray Request(const QByteArray &Verb, const QString &Name, const QByteArray &Body = QByteArray())
{
    const QString credentials = QStringLiteral("username=Admin&password=") + URLEncode(MD5Hash(QString()));
    const QString address = QStringLiteral("/") + Name + (Name.contains(u'?') ? QStringLiteral("&") : QStringLiteral("?"))
                            + credentials;
    QByteArray request = Verb + ' ' + address.toUtf8() + " HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    if (Verb == "POST")
        request += "Content-Type: text/xml\r\nContent-Length: " + QByteArray::number(Body.size()) + "\r\n";
    return request + "\r\n" + Body;
}

struct Response
{
    int Status = 0; // 0 when none came
    QByteArray Body;
};

// The value of a header in a lower-cased head; empty when absent.
QByteArray HeaderValue(const QByteArray &Head, const QByteArray &Name)
{
    const QByteArray key = "\r\n" + Name + ':';
    const qsizetype at = Head.indexOf(key);
    if (at < 0)
        return QByteArray();
    const qsizetype begin = at + key.size();
    const qsizetype end = Head.indexOf("\r\n", begin);
    return Head.mid(begin, end < 0 ? -1 : end - begin).trimmed();
}

// Takes the first response off the front of Buffer into Out; false while it
// is not complete. Replies of this server always carry Content-Length.
bool TakeResponse(QByteArray &Buffer, Response &Out)
{
    const qsizetype headEnd = Buffer.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return false;
    const QByteArray head = Buffer.left(headEnd).toLower();
    const qsizetype length = HeaderValue(head, "content-length").toLongLong();
    const qsizetype end = headEnd + 4 + length;
    if (Buffer.size() < end)
        return false;
    Out.Status = head.mid(9, 3).toInt();
    Out.Body = Buffer.mid(headEnd + 4, length);
    Buffer.remove(0, end);
    return true;
}

// A keep-alive connection that sends one request at a time and waits for
// its reply.
class Exchange
{
public:
    bool Open(quint16 Port);
    void Write(const QByteArray &Request);
    Response Receive(int TimeoutMs = 120000);
    Response Send(const QByteArray &Request)
    {
        Write(Request);
        return Receive();
    }

private:
    QSslSocket m_socket;
    QByteArray m_buffer;
};

bool Exchange::Open(quint16 Port)
{
    ConnectEncrypted(m_socket, Port);
    return m_socket.waitForEncrypted(10000);
}

// Sends at once rather than on the next turn of the event loop.
void Exchange::Write(const QByteArray &Request)
{
    m_socket.write(Request);
    m_socket.flush();
}

Response Exchange::Receive(int TimeoutMs)
{
    Response response;
    const QDeadlineTimer deadline(TimeoutMs);
    for (;;) {
        m_buffer += m_socket.readAll();
        if (TakeResponse(m_buffer, response) || deadline.hasExpired()
            || m_socket.state() != QAbstractSocket::ConnectedState)
            return response;
        m_socket.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime())));
    }
}

// ---- 1. The load of getsession.xml ----

struct LoadRun
{
    bool Running = false;
    int Open = 0;     // connections encrypted
    int InFlight = 0; // requests sent and not answered
    int Errors = 0;   // failed replies and lost connections
    std::vector<qint64> LatenciesNs;
};

// One keep-alive connection of the load with one request in flight while
// the run lasts. A reply that is no 200 with a session fragment, and a
// connection that fails or closes, count as errors.
class LoadConnection
{
public:
    LoadConnection(quint16 Port, const QByteArray &Request, LoadRun &Run);
    ~LoadConnection() { m_socket.disconnect(); }
    void Fire();

private:
    void Read();
    void Fail();

    QSslSocket m_socket;
    const QByteArray m_request;
    LoadRun &m_run;
    QByteArray m_buffer;
    qint64 m_sentAt = 0;
    bool m_waiting = false;
    bool m_failed = false;
};

LoadConnection::LoadConnection(quint16 Port, const QByteArray &Request, LoadRun &Run) : m_request(Request), m_run(Run)
{
    QObject::connect(&m_socket, &QSslSocket::encrypted, [this] { ++m_run.Open; });
    QObject::connect(&m_socket, &QSslSocket::readyRead, [this] { Read(); });
    QObject::connect(&m_socket, &QSslSocket::errorOccurred, [this] { Fail(); });
    QObject::connect(&m_socket, &QSslSocket::disconnected, [this] { Fail(); });
    ConnectEncrypted(m_socket, Port);
}

void LoadConnection::Fire()
{
    if (m_failed || !m_socket.isEncrypted())
        return;
    m_waiting = true;
    ++m_run.InFlight;
    m_sentAt = NowNs();
    m_socket.write(m_request);
    m_socket.flush();
}

void LoadConnection::Read()
{
    m_buffer += m_socket.readAll();
    Response response;
    while (m_waiting && TakeResponse(m_buffer, response)) {
        m_run.LatenciesNs.push_back(NowNs() - m_sentAt);
        if (response.Status != 200 || !response.Body.contains("<Session>"))
            ++m_run.Errors;
        m_waiting = false;
        --m_run.InFlight;
        if (m_run.Running)
            Fire();
    }
}

void LoadConnection::Fail()
{
    if (m_failed)
        return;
    m_failed = true;
    ++m_run.Errors;
    if (m_waiting) {
        m_waiting = false;
        --m_run.InFlight;
    }
}

struct LoadFigures
{
    double Seconds = 0;
    double PeakResidentMiB = 0;
    double ServerCpu = 0; // CPU seconds over the run
    double ClientCpu = 0;
};

qint64 Percentile(const std::vector<qint64> &Sorted, double Fraction)
{
    if (Sorted.empty())
        return 0;
    return Sorted.at(std::min(Sorted.size() - 1, size_t(double(Sorted.size()) * Fraction)));
}

void PrintLoad(const Options &Settings, LoadRun &Run, const LoadFigures &Figures)
{
    std::sort(Run.LatenciesNs.begin(), Run.LatenciesNs.end());
    const size_t requests = Run.LatenciesNs.size();
    std::printf("1. getsession.xml, %d keep-alive HTTPS connections (%d opened), %.1f s\n", Settings.Connections, Run.Open,
                Figures.Seconds);
    std::printf("   %zu requests, %.0f requests/s, latency p50 %.2f ms, p99 %.2f ms, max %.2f ms\n", requests,
                double(requests) / Figures.Seconds, Milliseconds(Percentile(Run.LatenciesNs, 0.50)),
                Milliseconds(Percentile(Run.LatenciesNs, 0.99)),
                Milliseconds(requests ? Run.LatenciesNs.back() : 0));
    std::printf("   errors: %d\n", Run.Errors);
    std::printf("   CPU: server %.0f%% of a core, this client %.0f%%\n", 100 * Figures.ServerCpu / Figures.Seconds,
                100 * Figures.ClientCpu / Figures.Seconds);
}

// Returns the peak resident size seen under the load.
double RunLoad(const Options &Settings, const ServerProcess &Server)
{
    LoadRun run;
    const QByteArray request = Request("GET", QStringLiteral("getsession.xml"));
    std::vector<std::unique_ptr<LoadConnection>> connections;
    for (int i = 0; i < Settings.Connections; ++i)
        connections.push_back(std::make_unique<LoadConnection>(Server.Port, request, run));
    WaitUntil([&] { return run.Open + run.Errors >= Settings.Connections; }, 30000);

    LoadFigures figures;
    const qint64 self = QCoreApplication::applicationPid();
    QTimer sampler;
    QObject::connect(&sampler, &QTimer::timeout,
                     [&] { figures.PeakResidentMiB = std::max(figures.PeakResidentMiB, ResidentMiB(Server.Pid())); });
    sampler.start(500);
    const double serverCpu = CpuSeconds(Server.Pid());
    const double clientCpu = CpuSeconds(self);
    const qint64 start = NowNs();
    run.Running = true;
    for (const auto &connection : connections)
        connection->Fire();
    QTimer::singleShot(Settings.Seconds * 1000, [&run] { run.Running = false; });
    WaitUntil([&] { return !run.Running && run.InFlight == 0; }, (Settings.Seconds + 30) * 1000);
    figures.Seconds = double(NowNs() - start) / 1e9;
    figures.ServerCpu = CpuSeconds(Server.Pid()) - serverCpu;
    figures.ClientCpu = CpuSeconds(self) - clientCpu;
    PrintLoad(Settings, run, figures);
    return figures.PeakResidentMiB;
}

// ---- 2. A log line on the push channel ----

// What every subscriber looks for, and when the last byte came to any.
struct PushBoard
{
    QString Awaited; // text of the log line of the round; empty between rounds
    qint64 LastByteAt = 0;
};

// A subscription of subscribe.xml that notes when the log line awaited
// arrives.
class Subscriber
{
public:
    Subscriber(quint16 Port, PushBoard &Board);
    ~Subscriber() { m_socket.disconnect(); }
    bool Open() const { return m_open; }

    qint64 ArrivedAt = -1;

private:
    void Read();
    void Look(const QList<clsPushStream::Block> &Blocks);

    QSslSocket m_socket;
    PushBoard &m_board;
    clsPushStream m_stream{Global.ProductName};
    QByteArray m_head;
    bool m_open = false;
};

Subscriber::Subscriber(quint16 Port, PushBoard &Board) : m_board(Board)
{
    QObject::connect(&m_socket, &QSslSocket::encrypted, [this] {
        m_socket.write(Request("GET", QStringLiteral("subscribe.xml?nodename=bench&nodetype=console")));
    });
    QObject::connect(&m_socket, &QSslSocket::readyRead, [this] { Read(); });
    ConnectEncrypted(m_socket, Port);
}

// The reply's head first (a 200 opens the stream), then the stream's blocks.
void Subscriber::Read()
{
    m_board.LastByteAt = NowNs();
    const QByteArray data = m_socket.readAll();
    if (m_open) {
        Look(m_stream.Append(data));
        return;
    }
    m_head += data;
    const qsizetype headEnd = m_head.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return;
    m_open = m_head.startsWith("HTTP/1.1 200");
    Look(m_stream.Append(m_head.mid(headEnd + 4)));
}

void Subscriber::Look(const QList<clsPushStream::Block> &Blocks)
{
    for (const clsPushStream::Block &block : Blocks)
        if (ArrivedAt < 0 && !m_board.Awaited.isEmpty() && block.Location == QStringLiteral("log.xml")
            && block.Body.contains(m_board.Awaited))
            ArrivedAt = NowNs();
}

// Waits until no subscriber got anything for QuietMs.
void WaitQuiet(const PushBoard &Board, int QuietMs)
{
    WaitUntil([&] { return NowNs() - Board.LastByteAt > qint64(QuietMs) * 1000000; }, 30000);
}

void PrintDelays(int Round, std::vector<qint64> Delays, int Subscribers)
{
    std::sort(Delays.begin(), Delays.end());
    if (Delays.empty()) {
        std::printf("   round %d: the line reached none of %d subscribers\n", Round, Subscribers);
        return;
    }
    std::printf("   round %d: min %.2f ms, median %.2f ms, max %.2f ms (%zu of %d subscribers)\n", Round,
                Milliseconds(Delays.front()), Milliseconds(Delays.at(Delays.size() / 2)), Milliseconds(Delays.back()),
                Delays.size(), Subscribers);
}

// Sends getsession.xml, which logs "<user> logged on from <address>", and
// gives each subscriber's delay from sending to receipt of that line.
std::vector<qint64> PushRound(Exchange &Trigger, PushBoard &Board,
                              const std::vector<std::unique_ptr<Subscriber>> &Subscribers)
{
    for (const auto &subscriber : Subscribers)
        subscriber->ArrivedAt = -1;
    Board.Awaited = QStringLiteral("Admin logged on from");
    const qint64 sentAt = NowNs();
    Trigger.Write(Request("GET", QStringLiteral("getsession.xml")));
    const auto arrived = [&] {
        return std::all_of(Subscribers.begin(), Subscribers.end(), [](const auto &s) { return s->ArrivedAt >= 0; });
    };
    WaitUntil(arrived, 10000);
    Board.Awaited.clear();
    Trigger.Receive();
    std::vector<qint64> delays;
    for (const auto &subscriber : Subscribers)
        if (subscriber->ArrivedAt >= 0)
            delays.push_back(subscriber->ArrivedAt - sentAt);
    return delays;
}

void RunPush(const Options &Settings, const ServerProcess &Server)
{
    PushBoard board;
    std::vector<std::unique_ptr<Subscriber>> subscribers;
    for (int i = 0; i < Settings.Subscribers; ++i)
        subscribers.push_back(std::make_unique<Subscriber>(Server.Port, board));
    const auto open = [&] {
        return std::all_of(subscribers.begin(), subscribers.end(), [](const auto &s) { return s->Open(); });
    };
    Exchange trigger;
    std::printf("2. One log line to %d subscribers of subscribe.xml, from sending getsession.xml to receipt\n",
                Settings.Subscribers);
    if (!WaitUntil(open, 30000) || !trigger.Open(Server.Port)) {
        std::printf("   the subscriptions did not all open\n");
        return;
    }
    for (int round = 1; round <= PushRounds; ++round) {
        WaitQuiet(board, 500);
        PrintDelays(round, PushRound(trigger, board, subscribers), Settings.Subscribers);
    }
}

// ---- 4. Accounts and triggers ----

QString AccountID(int Number)
{
    return QStringLiteral("ACC%1").arg(Number, 6, 10, QLatin1Char('0'));
}

// The fragment of account Number with its triggers, as postaccount.htm takes it.
QByteArray AccountFragment(int Number)
{
    return SampleConfiguration::Account(Number)->XML().toUtf8();
}

// False when the server does not know the request at all.
bool Answers(Exchange &Client, const QString &Name)
{
    const Response reply = Client.Send(Request("POST", Name));
    return reply.Status != 0 && !(reply.Status == 404 && reply.Body.contains("Unknown request"));
}

// Posts the accounts one after the other; the number stored.
int StoreAccounts(Exchange &Client, int Accounts)
{
    int stored = 0;
    qsizetype bytes = 0;
    const qint64 start = NowNs();
    for (int n = 1; n <= Accounts; ++n) {
        const QByteArray fragment = AccountFragment(n);
        bytes += fragment.size();
        const Response reply = Client.Send(Request("POST", QStringLiteral("postaccount.htm?accountid=") + AccountID(n), fragment));
        if (reply.Status == 200 && reply.Body == "OK")
            ++stored;
        else if (stored + 1 == n)
            std::printf("   account %d refused: %d %s\n", n, reply.Status, reply.Body.left(200).constData());
    }
    const double seconds = double(NowNs() - start) / 1e9;
    std::printf("   stored %d of %d accounts (%.1f MB posted) in %.1f s: %.1f ms per account\n", stored, Accounts,
                double(bytes) / 1e6, seconds, 1000 * seconds / Accounts);
    return stored;
}

// The best of several sends of the request, and the size of its reply.
void TimeRequest(Exchange &Client, const QString &Name)
{
    qint64 best = -1;
    Response reply;
    for (int i = 0; i < TimingRepeats; ++i) {
        const qint64 start = NowNs();
        reply = Client.Send(Request("GET", Name));
        const qint64 took = NowNs() - start;
        best = best < 0 ? took : std::min(best, took);
    }
    std::printf("   %-45s best of %d: %8.2f ms, status %d, %.1f KB\n", qPrintable(Name), TimingRepeats,
                Milliseconds(best), reply.Status, double(reply.Body.size()) / 1024.0);
}

void RunAccounts(const Options &Settings, const ServerProcess &Server)
{
    std::printf("4. %d accounts of %d triggers (%d fields and 10 actions each) through postaccount.htm\n",
                Settings.Accounts, SampleConfiguration::TriggersPerAccount, SampleConfiguration::FieldsPerTrigger);
    Exchange client;
    if (!client.Open(Server.Port)) {
        std::printf("   no connection to the server\n");
        return;
    }
    if (!Answers(client, QStringLiteral("postaccount.htm?accountid=PROBE"))) {
        std::printf("   skipped: the server does not answer postaccount.htm yet\n");
        return;
    }
    if (StoreAccounts(client, Settings.Accounts) == 0)
        return;
    TimeRequest(client, QStringLiteral("getaccounts.xml"));
    TimeRequest(client, QStringLiteral("gettriggerconditions.xml?accountid=") + AccountID((Settings.Accounts + 1) / 2));
    std::printf("   server memory after storing them: VmRSS %.1f MiB\n", ResidentMiB(Server.Pid()));
}

Options ReadOptions(const QCoreApplication &App)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Measures a running postvane-server from the outside."));
    parser.addHelpOption();
    const QCommandLineOption seconds(QStringLiteral("seconds"), QStringLiteral("Length of the load (30)."), QStringLiteral("N"));
    const QCommandLineOption connections(QStringLiteral("connections"), QStringLiteral("Connections of the load (50)."),
                                         QStringLiteral("N"));
    const QCommandLineOption subscribers(QStringLiteral("subscribers"), QStringLiteral("Push subscribers (100)."),
                                         QStringLiteral("N"));
    const QCommandLineOption accounts(QStringLiteral("accounts"), QStringLiteral("Accounts stored (1000)."),
                                      QStringLiteral("N"));
    parser.addOptions({seconds, connections, subscribers, accounts});
    parser.process(App);
    Options options;
    const auto read = [&parser](const QCommandLineOption &option, int &value) {
        if (parser.isSet(option))
            value = std::max(1, parser.value(option).toInt());
    };
    read(seconds, options.Seconds);
    read(connections, options.Connections);
    read(subscribers, options.Subscribers);
    read(accounts, options.Accounts);
    return options;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const Options settings = ReadOptions(app);
    const QString program = QCoreApplication::applicationDirPath() + QStringLiteral("/postvane-server");
    if (!QFileInfo(program).isExecutable()) {
        std::fprintf(stderr, "bench_server: %s is missing; build the target postvane-server.\n", qPrintable(program));
        return 1;
    }
    ServerProcess server;
    if (!server.Start(program)) {
        std::fprintf(stderr, "bench_server: %s\n", qPrintable(server.Problem));
        return 1;
    }
    std::printf("postvane-server on port %d (pid %lld), %d cores\n", server.Port, server.Pid(), QThread::idealThreadCount());
    QThread::msleep(1000);
    const double atRest = ResidentMiB(server.Pid());
    std::fflush(stdout);
    const double underLoad = RunLoad(settings, server);
    std::fflush(stdout);
    RunPush(settings, server);
    std::printf("3. Server memory: VmRSS %.1f MiB at rest, %.1f MiB at most under the load of 1 (sampled every 0.5 s)\n",
                atRest, underLoad);
    std::fflush(stdout);
    RunAccounts(settings, server);
    return 0;
}
