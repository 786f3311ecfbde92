// The console over a large configuration: starts the postvane-server beside
// this program on a free loopback port, stores --accounts accounts of 20
// triggers through the console's own session, then measures as a user
// meets it:
//  1. log-on to a usable navigator: the session's bootstrap (session,
//     organizations, users, globals, folders, accounts, logs), then the
//     navigator rebuilt with the first account's trigger list filled;
//  2. opening an account's trigger list from the account list: the
//     navigator's account page, the request of the triggers' conditions and
//     the list filled and painted, for accounts not opened before.
// Runs without a display (offscreen) unless one is given.
#include "SampleConfiguration.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "session/frmRemote.h"
#include "workbench/frmClient.h"
#include "workbench/frmExplorerBar.h"
#include "workbench/frmList.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTreeView>
#include <algorithm>
#include <cstdio>

namespace {

struct Server
{
    QTemporaryDir Root;
    QProcess Process;
    quint16 Port = 0;

    ~Server()
    {
        Process.terminate();
        if (!Process.waitForFinished(15000))
            Process.kill();
    }

    bool Start(const QString &Program)
    {
        const QString output = Root.path() + QStringLiteral("/server.out");
        Process.setProcessChannelMode(QProcess::MergedChannels);
        Process.setStandardOutputFile(output);
        Process.start(Program, {QStringLiteral("--data"), Root.path() + QStringLiteral("/data/"), QStringLiteral("--port"),
                                QStringLiteral("0"), QStringLiteral("--bind"), QStringLiteral("127.0.0.1")});
        static const QRegularExpression listening(QStringLiteral("Listening on https://127\\.0\\.0\\.1:(\\d+)/"));
        const QDeadlineTimer deadline(30000);
        while (!deadline.hasExpired() && Process.state() != QProcess::NotRunning) {
            QFile file(output);
            if (file.open(QIODevice::ReadOnly)) {
                const QRegularExpressionMatch match = listening.match(QString::fromUtf8(file.readAll()));
                if (match.hasMatch()) {
                    Port = quint16(match.captured(1).toUInt());
                    return true;
                }
            }
            Process.waitForFinished(50);
        }
        return false;
    }
};

double Ms(const QElapsedTimer &Timer)
{
    return double(Timer.nsecsElapsed()) / 1e6;
}

bool LogOn(quint16 Port)
{
    Global.ServerName = QStringLiteral("127.0.0.1");
    Global.ServerPort = Port;
    Global.ServerURL = QStringLiteral("https://127.0.0.1:%1/").arg(Port);
    Global.UserName = QStringLiteral("Admin");
    Global.PasswordHash = MD5Hash(QString());
    Global.IsLocal = false;
    return Remote().Login() == 0;
}

int StoreAccounts(int Count)
{
    QElapsedTimer timer;
    timer.start();
    int stored = 0;
    for (int n = 1; n <= Count; ++n) {
        std::unique_ptr<clsAccount> account = SampleConfiguration::Account(n);
        account->XMLIncludeTriggers = true;
        stored += Remote().HTTPPut(Requests::PostAccount(account->AccountID), account->XML()) ? 1 : 0;
    }
    std::printf("stored %d of %d accounts of %d triggers in %.1f s\n", stored, Count,
                SampleConfiguration::TriggersPerAccount, Ms(timer) / 1000);
    return stored;
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true); // the bench's window keeps no settings of the user's
    QCommandLineParser parser;
    const QCommandLineOption accounts(QStringLiteral("accounts"), QStringLiteral("Accounts stored (1000)."),
                                      QStringLiteral("n"), QStringLiteral("1000"));
    const QCommandLineOption opens(QStringLiteral("opens"), QStringLiteral("Trigger lists opened (20)."),
                                   QStringLiteral("n"), QStringLiteral("20"));
    parser.addOptions({accounts, opens});
    parser.addHelpOption();
    parser.process(app);

    Server server;
    if (!server.Start(QCoreApplication::applicationDirPath() + QStringLiteral("/postvane-server"))) {
        std::printf("the server did not start\n");
        return 1;
    }
    Global.DevMode = true;
    if (!LogOn(server.Port)) {
        std::printf("no log-on to the server\n");
        return 1;
    }
    const int count = parser.value(accounts).toInt();
    if (StoreAccounts(count) != count)
        return 1;
    Remote().Close();
    ResetGlobalCollections();

    frmClient window;
    window.ConnectTimer.stop();
    window.resize(1280, 800);
    window.show();
    QApplication::processEvents();

    QElapsedTimer timer;
    timer.start();
    if (!LogOn(server.Port)) {
        std::printf("no log-on to the server\n");
        return 1;
    }
    const double login = Ms(timer);
    window.ToolBarConnected(true);
    window.FirstConnect();
    window.List->ReportView->viewport()->repaint();
    const double usable = Ms(timer);
    std::printf("log-on to a usable navigator with %d accounts: %.0f ms (bootstrap requests %.0f ms, navigator and "
                "first trigger list %.0f ms)\n",
                Accounts().Count(), usable, login, usable - login);

    // Where the bootstrap's time goes: each request again, with its routing.
    for (const QString &request : {Requests::GetSession(), Requests::GetOrganizations(), Requests::GetUsers(),
                                   Requests::GetGlobals(), Requests::GetFolders(), Requests::GetAccounts(), Requests::GetLog(),
                                   Requests::GetEdgeLog(), Requests::GetMsgpLog()}) {
        if (request == Requests::GetSession())
            continue; // it would run the bootstrap again
        timer.restart();
        Remote().HTTPGet(request);
        std::printf("   %-24s %6.0f ms, %7.1f KB\n", qPrintable(request), Ms(timer), Remote().ReplyText.size() / 1024.0);
        if (request == Requests::GetAccounts()) {
            timer.restart();
            Accounts().setXML(Remote().ReplyText);
            std::printf("   %-24s %6.0f ms\n", "reading the accounts", Ms(timer));
        }
    }
    window.FirstConnect();

    QList<double> times;
    const int step = std::max(1, count / std::max(1, parser.value(opens).toInt()));
    for (int n = 2; n <= count && times.size() < parser.value(opens).toInt(); n += step) {
        window.ExplorerBar->ExplorerBarTop();
        const QString accountID = Accounts().Item(n)->AccountID;
        timer.restart();
        window.List->CurrentAccountID = accountID;
        window.ExplorerBar->ExplorerBarAccount();
        window.List->ReportView->viewport()->repaint();
        times << Ms(timer);
        if (window.List->Model.rowCount() != SampleConfiguration::TriggersPerAccount) {
            std::printf("account %s shows %d triggers\n", qPrintable(accountID), window.List->Model.rowCount());
            return 1;
        }
    }
    std::sort(times.begin(), times.end());
    std::printf("opening an account's trigger list (%lld accounts not opened before): median %.0f ms, slowest %.0f ms\n",
                qlonglong(times.size()), times[times.size() / 2], times.last());
    timer.restart();
    window.ExplorerBar->ExplorerBarTop();
    window.List->ReportView->viewport()->repaint();
    std::printf("back to the account list: %.0f ms\n", Ms(timer));
    Remote().Close();
    return 0;
}
