// Measures the message processor on SQLite: 10,000 queued messages of 5 KB
// run through one trigger of 10 fields and 10 flow and value actions and
// stored, every message durable (its store row committed before its queue
// row is released), with 1 and 2 processor threads: messages per second and
// the user-space instructions per message (when the machine lets a process
// count them) and the process's CPU time per message. Beside them the rate of raw single-row commits of 5 KB rows
// through the sqlite3 library into a copy of the same blank store, and the
// ratio of the two.
//
// Usage: bench_processor [--messages N]
#include "actions/ActionItem.h"
#include "actions/clsActionComment.h"
#include "actions/clsActionLogical.h"
#include "actions/clsActionSetVariable.h"
#include "actions/colActions.h"
#include "engine/processor/ProcessorRole.h"
#include "BenchSetup.h"
#include "model/Condition.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"
#include "store/StoreFiles.h"
#include "store/clsMessageStore.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>

#include <linux/perf_event.h>
#include <sqlite3.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>

namespace {

constexpr int FieldCount = 10;

ConditionFragment Line(const QString &Left, const QString &Operator, const QString &Right)
{
    ConditionFragment condition;
    condition.Lines = {{QString(), Left, Operator, Right}};
    return condition;
}

// The account with its trigger: fields Field1 to Field10 read from the body,
// and ten actions: If/Set/Else/Set/End If, two more Sets, a Label, a GoTo
// whose condition does not hold and a Comment.
QString AccountFragment()
{
    clsAccount account;
    account.AccountID = QStringLiteral("BENCH");
    account.Name = QStringLiteral("Bench");
    account.Enabled = true;
    account.XMLIncludeTriggers = true;
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->TriggerID = QStringLiteral("T1");
    trigger->Name = QStringLiteral("Orders");
    trigger->SubjectLineLIKE = QStringLiteral("order\t");
    trigger->ReceivedAfter = QDateTime(QDate(2020, 1, 1), QTime(0, 0));
    for (int n = 1; n <= FieldCount; ++n) {
        auto field = std::make_unique<clsTriggerField>();
        field->Name = QStringLiteral("Field%1").arg(n);
        field->LookFor = QStringLiteral("Field%1:").arg(n);
        trigger->FieldsToProcess().Add(std::move(field));
    }
    colActions &actions = trigger->ActionList();
    const auto set = [&](const QString &Name, const QString &Value, int Operation) {
        clsActionSetVariable action;
        action.Name = Name;
        action.Value = Value;
        action.Operation = qint16(Operation);
        actions.Add(ActionItem::Make(action));
    };
    const auto logical = [&](int Type, const QString &Condition, const QString &Label) {
        clsActionLogical action;
        action.LogicalType = qint16(Type);
        action.Condition = Condition;
        action.LabelName = Label;
        actions.Add(ActionItem::Make(action));
    };
    logical(1, ConditionXML(Line(QStringLiteral("%field1%"), QStringLiteral(">"), QStringLiteral("50"))), QString());
    set(QStringLiteral("Field2"), QStringLiteral("%field2%"), 7);
    logical(2, QString(), QString());
    set(QStringLiteral("Field2"), QStringLiteral("%field2%"), 8);
    logical(3, QString(), QString());
    set(QStringLiteral("Field3"), QStringLiteral("%field3%"), 9);
    set(QStringLiteral("Field1"), QStringLiteral("5"), 3);
    logical(5, QString(), QStringLiteral("done"));
    logical(6, ConditionXML(Line(QStringLiteral("%field4%"), QStringLiteral("="), QStringLiteral("never"))),
            QStringLiteral("done"));
    clsActionComment comment;
    comment.Comment = QStringLiteral("the end");
    actions.Add(ActionItem::Make(comment));
    account.Triggers.Add(std::move(trigger));
    return QStringLiteral("<Accounts>") + account.XML() + QStringLiteral("</Accounts>");
}

// A message of about 5 KB: the ten fields, then ordinary lines.
QString MessageOf(int n)
{
    QString body;
    for (int f = 1; f <= FieldCount; ++f)
        body += QStringLiteral("Field%1: value %2 of message %3\r\n").arg(f).arg(f * 10 + n % 90).arg(n);
    while (body.size() < 5 * 1024)
        body += QStringLiteral("Line %1: the goods were shipped as agreed and the invoice follows.\r\n").arg(body.size());
    body.truncate(5 * 1024);
    return QStringLiteral("Postvane-AccountID: BENCH\r\nPostvane-Source: POP3\r\nPostvane-UID: m%1\r\n"
                          "From: Buyer <buyer@example.com>\r\nTo: orders@example.com\r\nSubject: Order %1\r\n"
                          "Date: Mon, 2 Mar 2026 10:00:00 +0000\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n")
               .arg(n)
        + body;
}

bool Queue(clsMessageStore &Store, int Count)
{
    if (Store.ExecuteEQ(QStringLiteral("BEGIN IMMEDIATE")) < 0)
        return false;
    for (int n = 0; n < Count; ++n)
        if (Store.AddEMLToEdgeQueue(QStringLiteral("BENCH"), QStringLiteral("POP3"), QStringLiteral("m%1").arg(n),
                                    QDateTime::currentDateTime(), MessageOf(n))
            <= 0)
            return false;
    return Store.ExecuteEQ(QStringLiteral("COMMIT")) >= 0;
}

qint64 Count(const QString &Connection, const QString &SQL)
{
    QSqlQuery query(QSqlDatabase::database(Connection, false));
    return query.exec(SQL) && query.next() ? query.value(0).toLongLong() : -1;
}

// User-space instructions of this process and the threads it starts after
// Start; -1 when the machine does not let a process count them.
class InstructionCounter
{
public:
    InstructionCounter()
    {
        perf_event_attr attr{};
        attr.type = PERF_TYPE_HARDWARE;
        attr.size = sizeof(attr);
        attr.config = PERF_COUNT_HW_INSTRUCTIONS;
        attr.disabled = 1;
        attr.inherit = 1;
        attr.exclude_kernel = 1;
        attr.exclude_hv = 1;
        m_fd = int(syscall(SYS_perf_event_open, &attr, 0, -1, -1, 0));
    }
    ~InstructionCounter()
    {
        if (m_fd >= 0)
            close(m_fd);
    }
    void Start()
    {
        if (m_fd >= 0) {
            ioctl(m_fd, PERF_EVENT_IOC_RESET, 0);
            ioctl(m_fd, PERF_EVENT_IOC_ENABLE, 0);
        }
    }
    qint64 Stop()
    {
        if (m_fd < 0)
            return -1;
        ioctl(m_fd, PERF_EVENT_IOC_DISABLE, 0);
        qint64 value = 0;
        return read(m_fd, &value, sizeof(value)) == sizeof(value) ? value : -1;
    }

private:
    int m_fd = -1;
};

struct Figures
{
    double PerSecond = 0;
    qint64 Instructions = -1;
    double CpuMicroseconds = 0; // of the whole process, per message
    qint64 Stored = 0;
};

double ProcessCpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

Figures RunProcessor(int Messages, int Threads)
{
    QTemporaryDir folder;
    UseStoreIn(folder.path());
    Figures figures;
    clsMessageStore store;
    if (!store.OpenMessageStore() || !Queue(store, Messages)) {
        std::fprintf(stderr, "the queue cannot be filled: %s\n", qPrintable(store.LastError));
        return figures;
    }
    const QString fragment = AccountFragment();
    InstructionCounter counter;
    ProcessorRole processor(
        [fragment] {
            return [fragment] {
                Accounts().setXML(fragment);
                return Accounts().Count() == 1;
            };
        },
        Threads);
    QElapsedTimer timer;
    counter.Start();
    const double cpuBefore = ProcessCpuSeconds();
    timer.start();
    processor.Role.Start();
    while (Count(store.QueueConnection(), QStringLiteral("SELECT COUNT(*) FROM EdgeQueue")) > 0)
        QThread::msleep(5);
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    processor.Role.Stop();
    const qint64 instructions = counter.Stop();
    figures.CpuMicroseconds = (ProcessCpuSeconds() - cpuBefore) * 1e6 / Messages;
    figures.Stored = Count(store.StoreConnection(), QStringLiteral("SELECT COUNT(*) FROM MessageStore WHERE TriggerID='T1'"));
    figures.PerSecond = Messages / seconds;
    figures.Instructions = instructions < 0 ? -1 : instructions / Messages;
    return figures;
}

// Rows per second of 5 KB rows into a blank store through sqlite3, each
// row committed on its own.
double RawSingleCommits(int Rows)
{
    QTemporaryDir folder;
    const QString path = folder.path() + QStringLiteral("/Raw.db3");
    if (!EnsureDatabaseFile(path, QStringLiteral("MessageStore.db3")))
        return 0;
    sqlite3 *db = nullptr;
    if (sqlite3_open(path.toUtf8().constData(), &db) != SQLITE_OK)
        return 0;
    sqlite3_stmt *statement = nullptr;
    sqlite3_prepare_v2(db,
                       "INSERT INTO MessageStore (AccountID,Source,UID,Subject,Body,MessageDate,TriggerID) "
                       "VALUES (?,?,?,?,?,?,?)",
                       -1, &statement, nullptr);
    const QByteArray body = MessageOf(0).toUtf8();
    QElapsedTimer timer;
    timer.start();
    for (int n = 0; n < Rows; ++n) {
        const QByteArray uid = QByteArray("r") + QByteArray::number(n);
        sqlite3_bind_text(statement, 1, "BENCH", -1, SQLITE_STATIC);
        sqlite3_bind_text(statement, 2, "POP3", -1, SQLITE_STATIC);
        sqlite3_bind_text(statement, 3, uid.constData(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(statement, 4, "Order", -1, SQLITE_STATIC);
        sqlite3_bind_text(statement, 5, body.constData(), int(body.size()), SQLITE_STATIC);
        sqlite3_bind_text(statement, 6, "2026-03-02 10:00:00", -1, SQLITE_STATIC);
        sqlite3_bind_text(statement, 7, "T1", -1, SQLITE_STATIC);
        sqlite3_step(statement);
        sqlite3_reset(statement);
    }
    const double rate = Rows / (double(timer.nsecsElapsed()) / 1e9);
    sqlite3_finalize(statement);
    sqlite3_close(db);
    return rate;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int messages = qMax(1, IntArgument(app.arguments(), QStringLiteral("--messages"), 10000));

    const double raw = RawSingleCommits(2000);
    std::printf("Raw single-row commits of 5 KB rows through sqlite3: %.0f rows/s\n", raw);
    std::printf("%d queued messages of 5 KB, one trigger of %d fields and 10 flow and value actions, stored durably:\n",
                messages, FieldCount);
    for (int threads : {1, 2}) {
        const Figures figures = RunProcessor(messages, threads);
        std::printf("  %d processor thread%s: %.0f messages/s (%.2f x the raw commit rate), ", threads,
                    threads > 1 ? "s" : "", figures.PerSecond, raw > 0 ? figures.PerSecond / raw : 0.0);
        if (figures.Instructions >= 0)
            std::printf("%lld instructions/message, ", static_cast<long long>(figures.Instructions));
        else
            std::printf("instructions not countable here, ");
        std::printf("%.0f us of CPU/message", figures.CpuMicroseconds);
        std::printf(", %lld stored\n", static_cast<long long>(figures.Stored));
    }
    return 0;
}
