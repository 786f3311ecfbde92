// The message browser over a large store: starts the postvane-server beside
// this program on a free loopback port, writes --messages rows (1,000,000)
// into its Message Store for one account and folder, spread over two years,
// then measures as a user meets it in a browser window:
//  1. choosing the folder: the first page shown, and the page with its count
//     and page tabs;
//  2. a page change by its tab (near the start, the middle and the end);
//  3. choosing a period (Last 30 Days, This Year);
//  4. scrolling the grid of a page from top to bottom, a screen at a time.
// Runs without a display (offscreen) unless one is given.
#include "SampleConfiguration.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "session/frmRemote.h"
#include "workbench/frmViewChecked.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTreeWidget>
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

    QString DataPath() const { return Root.path() + QStringLiteral("/data/"); }

    bool Start(const QString &Program)
    {
        const QString output = Root.path() + QStringLiteral("/server.out");
        Process.setProcessChannelMode(QProcess::MergedChannels);
        Process.setStandardOutputFile(output);
        Process.start(Program, {QStringLiteral("--data"), DataPath(), QStringLiteral("--port"), QStringLiteral("0"),
                                QStringLiteral("--bind"), QStringLiteral("127.0.0.1")});
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

// Rows as the processor stores them, newest every 60 seconds back from now.
bool WriteRows(const QString &DataPath, const QString &AccountID, int Count)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bench"));
    db.setDatabaseName(DataPath + QStringLiteral("MessageStore.db3"));
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    if (!db.open())
        return false;
    QSqlQuery query(db);
    query.exec(QStringLiteral("PRAGMA synchronous=OFF"));
    db.transaction();
    query.prepare(QStringLiteral(
        "INSERT INTO MessageStore (AccountID, OrganizationID, Source, UID, Subject, FromAddress, ToAddress, MessageDate, "
        "Importance, TriggerID, TriggerMatch, TriggerSuccess, TriggerError, Body, Headers, Attachments, HasFullBody, "
        "ProcessedDate, MessageFlags, FolderID) VALUES (?, '', 'POP3', ?, ?, ?, 'in@alpha.test', ?, 'N', 'T1', ?, ?, ?, "
        "'Body', 'Subject: x', ?, 1, ?, ?, 'Bench')"));
    const QDateTime now = QDateTime::currentDateTime();
    const QString stamp = QStringLiteral("yyyy-MM-dd HH:mm:ss");
    for (int n = 0; n < Count; ++n) {
        const QString date = now.addSecs(-60LL * n).toString(stamp);
        query.addBindValue(AccountID);
        query.addBindValue(QStringLiteral("uid-%1").arg(n));
        query.addBindValue(QStringLiteral("Order %1 from the shop").arg(n));
        query.addBindValue(QStringLiteral("buyer%1@orders.example").arg(n % 977));
        query.addBindValue(date);
        query.addBindValue(n % 3 != 0);
        query.addBindValue(n % 50 != 0);
        query.addBindValue(n % 50 != 0 ? QString() : QStringLiteral("the action failed"));
        query.addBindValue(n % 7 == 0);
        query.addBindValue(date);
        query.addBindValue(n % 4 == 0 ? 0 : 2);
        if (!query.exec()) {
            std::printf("insert failed: %s\n", qPrintable(query.lastError().text()));
            return false;
        }
    }
    return db.commit();
}

// Runs Step and turns the event loop until the browser has its rows (and,
// with WaitForCount, the count); the milliseconds, -1 on a time-out.
double Measure(frmViewChecked &View, const std::function<void()> &Step, bool WaitForCount)
{
    QSignalSpy loaded(&View, &frmViewChecked::Loaded);
    QElapsedTimer timer;
    timer.start();
    Step();
    const QDeadlineTimer deadline(60000);
    while (!deadline.hasExpired()) {
        if (WaitForCount ? !loaded.isEmpty() : !View.Rows().isEmpty())
            break;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
    }
    View.Grid->viewport()->repaint();
    const double ms = Ms(timer);
    loaded.wait(60000);
    return deadline.hasExpired() ? -1 : ms;
}

void Report(const char *What, QList<double> Times)
{
    std::sort(Times.begin(), Times.end());
    std::printf("%-52s median %6.0f ms, slowest %6.0f ms (%lld runs)\n", What, Times[Times.size() / 2], Times.last(),
                qlonglong(Times.size()));
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QCommandLineParser parser;
    const QCommandLineOption messages(QStringLiteral("messages"), QStringLiteral("Messages stored (1000000)."),
                                      QStringLiteral("n"), QStringLiteral("1000000"));
    const QCommandLineOption runs(QStringLiteral("runs"), QStringLiteral("Runs of each step (5)."), QStringLiteral("n"),
                                  QStringLiteral("5"));
    parser.addOptions({messages, runs});
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
    std::unique_ptr<clsAccount> account = SampleConfiguration::Account(1);
    if (!Remote().HTTPPut(Requests::PostAccount(account->AccountID), account->XML())
        || !Remote().HTTPGet(QStringLiteral("addfolder.xml?folderid=Bench&folder=Bench"))
        || !Remote().HTTPGet(QStringLiteral("addfolder.xml?folderid=Other&folder=Other"))
        || !Remote().HTTPGet(Requests::GetFolders()) || !Remote().HTTPGet(Requests::GetAccounts())) {
        std::printf("the account or the folders were refused\n");
        return 1;
    }
    const int count = parser.value(messages).toInt();
    QElapsedTimer timer;
    timer.start();
    if (!WriteRows(server.DataPath(), account->AccountID, count)) {
        std::printf("the rows could not be written\n");
        return 1;
    }
    std::printf("wrote %d messages into the store in %.1f s\n", count, Ms(timer) / 1000);

    frmViewChecked view;
    view.ShowReadingPane(false);
    view.resize(1280, 800);
    view.show();
    view.ShowMessages(account->AccountID);
    QSignalSpy settled(&view, &frmViewChecked::Loaded);
    settled.wait(60000);

    QList<double> firstPage, withCount, pageChange, period;
    for (int run = 0; run < parser.value(runs).toInt(); ++run) {
        view.SelectFolder(QStringLiteral("POther"));
        settled.wait(60000);
        firstPage << Measure(view, [&] { view.SelectFolder(QStringLiteral("PBench")); }, false);
        view.SelectFolder(QStringLiteral("POther"));
        settled.wait(60000);
        withCount << Measure(view, [&] { view.SelectFolder(QStringLiteral("PBench")); }, true);
        for (int tab : {1, view.PageTabs->count() / 2, view.PageTabs->count() - 1})
            pageChange << Measure(view, [&] { emit view.PageTabs->tabBarClicked(tab); }, false);
        for (int index : {7, 1})
            period << Measure(view, [&] { view.SetPeriod(index); view.LoadView(); }, false);
        view.SetPeriod(0);
    }
    std::printf("store of %d messages, %lld page tabs of %d rows\n", count, qlonglong(view.PageTabs->count()),
                frmViewChecked::PageSize);
    Report("choosing the folder: first page shown", firstPage);
    Report("choosing the folder: page, count and page tabs", withCount);
    Report("page change by its tab (start, middle, end)", pageChange);
    Report("choosing a period (Last 30 Days, This Year)", period);

    view.LoadView();
    settled.wait(60000);
    QScrollBar *bar = view.Grid->verticalScrollBar();
    QList<double> frames;
    for (int value = 0; value <= bar->maximum(); value += bar->pageStep()) {
        timer.restart();
        bar->setValue(value);
        view.Grid->viewport()->repaint();
        frames << Ms(timer);
    }
    Report("scrolling a page of 500 rows, one screen a frame", frames);
    Remote().Close();
    return 0;
}
