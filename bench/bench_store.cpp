// Measures the message store on SQLite:
// 1. AddToMailStore of 5 KB messages, each committed on its own, beside the
//    same rows inserted the same way (one prepared INSERT, autocommit) through
//    the sqlite3 library directly, into a copy of the same blank database;
// 2. with a large store (1,000,000 rows by default), CountMessageSet and
//    GetMessageSet of 200 rows for the first page, page 100 and the last page,
//    with no filter but the organization and with account, folder and search
//    filters;
// 3. the peak memory of the process.
//
// Usage: bench_store [--adds N] [--rows N] [--keep DIR]
#include "BenchSetup.h"
#include "store/StoreFiles.h"
#include "store/clsMessage.h"
#include "store/clsMessageStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <sqlite3.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int Accounts = 50;
constexpr int Folders = 20;
const QString Organization = QStringLiteral("ORG0000001");

QString AccountOf(int n)
{
    return QStringLiteral("ACC%1").arg(n % Accounts, 7, 10, QLatin1Char('0'));
}

QString FolderOf(int n)
{
    return QStringLiteral("FLD%1").arg(n % Folders, 7, 10, QLatin1Char('0'));
}

QString SubjectOf(int n)
{
    static const QStringList words = {QStringLiteral("Invoice"), QStringLiteral("Order"), QStringLiteral("Delivery"),
                                      QStringLiteral("Question"), QStringLiteral("Newsletter"), QStringLiteral("Report")};
    return words.at(n % words.size()) + QStringLiteral(" no. ") + QString::number(n * 7919 % 100000);
}

// A body of about Size characters of ordinary text.
QString BodyOf(int n, int size)
{
    QString body;
    body.reserve(size + 80);
    while (body.size() < size)
        body += QStringLiteral("Line %1 of message %2: the goods were shipped as agreed.\r\n").arg(body.size()).arg(n);
    body.truncate(size);
    return body;
}

double Milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

long PeakMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

void FillMessage(clsMessage &message, int n, int bodySize)
{
    message.Source = QStringLiteral("IMAP");
    message.MessageID = QStringLiteral("UID%1").arg(n);
    message.From = QStringLiteral("customer%1@example.com").arg(n % 997);
    message.ToAddress = QStringLiteral("orders@shop.example.com");
    message.Subject = SubjectOf(n);
    message.Body = BodyOf(n, bodySize);
    message.MessageText = message.Body;
    message.setMessageHeader(QStringLiteral("From: %1\r\nTo: %2\r\nSubject: %3\r\n")
                                 .arg(message.From, message.ToAddress, message.Subject));
    message.FolderID = FolderOf(n);
    message.Importance = QStringLiteral("Normal");
}

// Seconds taken by AddToMailStore for messages First to First + Count - 1.
double AddSeconds(clsMessageStore &store, int first, int count)
{
    QElapsedTimer timer;
    timer.start();
    for (int n = first; n < first + count; ++n) {
        clsMessage message;
        FillMessage(message, n, 5 * 1024);
        if (store.AddToMailStore(message) <= 0) {
            std::fprintf(stderr, "AddToMailStore failed: %s\n", qPrintable(store.LastError));
            return -1;
        }
    }
    return Milliseconds(timer) / 1000.0;
}

const char *InsertSQL =
    "INSERT INTO MessageStore (AccountID,OrganizationID,Source,UID,Subject,FromAddress,ToAddress,MessageDate,"
    "Importance,Sensitivity,TriggerID,TriggerMatch,TriggerSuccess,TriggerError,Body,Headers,Attachments,"
    "HasFullBody,ProcessedDate,MessageFlags,FolderID,Keywords,Guid,MessageSize,MessageDigest,AttachmentNames) "
    "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";

void BindText(sqlite3_stmt *statement, int column, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    sqlite3_bind_text(statement, column, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT);
}

void BindRow(sqlite3_stmt *statement, int n, int bodySize, const QDateTime &date)
{
    const QString when = date.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    const QString body = BodyOf(n, bodySize);
    BindText(statement, 1, AccountOf(n));
    BindText(statement, 2, Organization);
    BindText(statement, 3, QStringLiteral("IMAP"));
    BindText(statement, 4, QStringLiteral("UID%1").arg(n));
    BindText(statement, 5, SubjectOf(n));
    BindText(statement, 6, QStringLiteral("customer%1@example.com").arg(n % 997));
    BindText(statement, 7, QStringLiteral("orders@shop.example.com"));
    BindText(statement, 8, when);
    BindText(statement, 9, QStringLiteral("N"));
    BindText(statement, 10, QString());
    BindText(statement, 11, QStringLiteral("-"));
    sqlite3_bind_int(statement, 12, n % 3 == 0);
    sqlite3_bind_int(statement, 13, n % 17 != 0);
    BindText(statement, 14, QString());
    BindText(statement, 15, body);
    BindText(statement, 16, QStringLiteral("From: x\r\nTo: y\r\n"));
    sqlite3_bind_int(statement, 17, 0);
    sqlite3_bind_int(statement, 18, 1);
    BindText(statement, 19, when);
    sqlite3_bind_int(statement, 20, n % 2 ? 2 : 0);
    BindText(statement, 21, FolderOf(n));
    BindText(statement, 22, QString());
    BindText(statement, 23, QStringLiteral("%1").arg(n, 32, 16, QLatin1Char('0')));
    sqlite3_bind_int(statement, 24, bodySize);
    BindText(statement, 25, body.left(250));
    BindText(statement, 26, QString());
}

// Inserts Count rows through the sqlite3 library into the file; each row is
// its own transaction unless OneTransaction. Rows per second, 0 on failure.
double RawInsert(const QString &path, int first, int count, int bodySize, bool oneTransaction)
{
    sqlite3 *db = nullptr;
    if (sqlite3_open(path.toUtf8().constData(), &db) != SQLITE_OK)
        return 0;
    sqlite3_busy_timeout(db, 5000);
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v2(db, InsertSQL, -1, &statement, nullptr) != SQLITE_OK) {
        std::fprintf(stderr, "prepare: %s\n", sqlite3_errmsg(db));
        sqlite3_close(db);
        return 0;
    }
    const QDateTime start(QDate(2020, 1, 1), QTime(0, 0));
    QElapsedTimer timer;
    timer.start();
    if (oneTransaction)
        sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
    bool ok = true;
    for (int n = first; ok && n < first + count; ++n) {
        BindRow(statement, n, bodySize, start.addSecs(qint64(n) * 60));
        ok = sqlite3_step(statement) == SQLITE_DONE;
        sqlite3_reset(statement);
    }
    if (oneTransaction)
        sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    const double rate = count / (Milliseconds(timer) / 1000.0);
    if (!ok)
        std::fprintf(stderr, "insert: %s\n", sqlite3_errmsg(db));
    sqlite3_finalize(statement);
    sqlite3_close(db);
    return ok ? rate : 0;
}

struct Timing
{
    double Count;
    double First;
    double Page100;
    double Last;
};

// The best of three runs, in milliseconds.
template <typename Run> double Best(Run run)
{
    double best = 1e12;
    for (int i = 0; i < 3; ++i) {
        QElapsedTimer timer;
        timer.start();
        run();
        best = std::min(best, Milliseconds(timer));
    }
    return best;
}

Timing TimeSet(clsMessageStore &store, const MessageSetFilter &filter)
{
    Timing timing{};
    qint64 count = 0;
    timing.Count = Best([&] { count = store.CountMessageSet(filter); });
    timing.First = Best([&] { store.GetMessageSet(filter, 1, 200); });
    timing.Page100 = Best([&] { store.GetMessageSet(filter, 19801, 20000); });
    const qint64 lastFirst = std::max<qint64>(1, count - 199);
    QString last;
    timing.Last = Best([&] { last = store.GetMessageSet(filter, lastFirst, count); });
    std::printf("  %-28s %9lld rows | count %8.1f ms | page 1 %7.1f ms | page 100 %7.1f ms | last page %7.1f ms (%lld lines)\n",
                "", qlonglong(count), timing.Count, timing.First, timing.Page100, timing.Last,
                qlonglong(last.count(u'\n')));
    return timing;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const int adds = IntArgument(args, QStringLiteral("--adds"), 2000);
    const int rows = IntArgument(args, QStringLiteral("--rows"), 1000000);

    QTemporaryDir folder;
    UseStoreIn(folder.path());

    // 1. Single-row commits, the two writers taking turns in rounds so that
    // a change in the machine's load falls on both alike.
    {
        clsMessageStore store;
        if (!store.OpenMessageStore()) {
            std::fprintf(stderr, "cannot open the store: %s\n", qPrintable(store.LastError));
            return 1;
        }
        const QString raw = Global.DataPath + QStringLiteral("Raw.db3");
        EnsureDatabaseFile(raw, QStringLiteral("MessageStore.db3"));
        constexpr int Rounds = 5;
        const int perRound = std::max(1, adds / Rounds);
        double storeSeconds = 0;
        double rawSeconds = 0;
        for (int round = 0; round < Rounds; ++round) {
            const double stored = AddSeconds(store, round * perRound, perRound);
            const double rate = RawInsert(raw, round * perRound, perRound, 5 * 1024, false);
            if (stored < 0 || rate <= 0)
                return 1;
            storeSeconds += stored;
            rawSeconds += perRound / rate;
        }
        store.CloseMessageStore();
        const int total = perRound * Rounds;
        std::printf("Storing %d messages of 5 KB, each committed on its own:\n", total);
        std::printf("  AddToMailStore %8.0f messages/s | sqlite3 INSERT %8.0f rows/s | ratio %.2f\n",
                    total / storeSeconds, total / rawSeconds, rawSeconds / storeSeconds);
        RemoveDatabaseFile(raw);
        RemoveDatabaseFile(Global.DataPath + QStringLiteral("MessageStore.db3"));
    }

    // 2. Paging through a large store; short bodies keep the file small, the
    // pages never read them.
    EnsureDatabaseFile(Global.DataPath + QStringLiteral("MessageStore.db3"), QStringLiteral("MessageStore.db3"));
    QElapsedTimer fill;
    fill.start();
    if (RawInsert(Global.DataPath + QStringLiteral("MessageStore.db3"), 0, rows, 200, true) == 0)
        return 1;
    std::printf("Message sets of a store of %d messages (filled in %.1f s), best of three:\n", rows,
                Milliseconds(fill) / 1000.0);
    clsMessageStore store;
    if (!store.OpenMessageStore())
        return 1;
    MessageSetFilter filter;
    filter.FromDate = QDate(2000, 1, 1);
    filter.ToDate = QDate::currentDate();
    filter.OrganizationID = Organization;
    std::printf("  organization only\n");
    TimeSet(store, filter);
    MessageSetFilter byAccount = filter;
    byAccount.AccountID = AccountOf(7);
    std::printf("  account\n");
    TimeSet(store, byAccount);
    MessageSetFilter byFolder = filter;
    byFolder.FolderID = FolderOf(3);
    std::printf("  folder\n");
    TimeSet(store, byFolder);
    MessageSetFilter bySearch = filter;
    bySearch.SearchText = QStringLiteral("invoice");
    std::printf("  search \"invoice\"\n");
    TimeSet(store, bySearch);
    MessageSetFilter all = byFolder;
    all.AccountID = AccountOf(3);
    all.SearchText = QStringLiteral("order");
    std::printf("  account, folder and search\n");
    TimeSet(store, all);

    std::printf("Peak memory: %ld MB\n", PeakMegabytes());
    return 0;
}
