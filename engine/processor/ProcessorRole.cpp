#include "ProcessorRole.h"
#include "MessageProcessor.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/clsEventLog.h"
#include "store/clsMessage.h"
#include "store/clsMessageStore.h"

#include <QDeadlineTimer>

// What one processor thread works with, and the batch it has in hand.
struct ProcessorRole::Worker
{
    explicit Worker(ConfigurationCopy::Loader Load) : Configuration(std::move(Load)), Processor(Store) {}

    ConfigurationCopy Configuration;
    clsMessageStore Store;
    clsEventLog Events;
    MessageProcessor Processor;
    // Messages taken and processed, not stored yet; with the lines of their
    // process logs.
    std::vector<std::unique_ptr<clsMessage>> Messages;
    QList<QStringList> Lines;
    QList<qint64> Rows;
    QDeadlineTimer ValidationDue{0};
    QDeadlineTimer ArchiveDue{0};
};

ProcessorRole::ProcessorRole(ConfigurationCopy::Loader Load, int Threads)
    : Role(QStringLiteral("Message Processor"), Global.ProductName + QStringLiteral("MessageServerLog.LOG"),
           QStringLiteral("Message Server"), Threads)
    , m_load(std::move(Load))
{
    Role.Body = [this](int ThreadNumber) { Run(ThreadNumber); };
}

ProcessorRole::~ProcessorRole()
{
    Role.Stop();
}

void ProcessorRole::Run(int ThreadNumber)
{
    Worker thread(m_load);
    thread.Store.DurableQueueWrites = false;
    if (!thread.Store.OpenMessageStore()) {
        Role.LogKeptErrors();
        Role.Log.Add(QStringLiteral("* The message processor cannot open the message store: ") + thread.Store.LastError);
        return;
    }
    thread.Events.setFileName(Global.ProductName + QStringLiteral("MessageServerLog.db3"));
    thread.Processor.PauseAccount = PauseAccount;
    if (ThreadNumber == 1) {
        const qint64 returned = thread.Store.ReturnTakenEdgeQueue();
        if (returned > 0)
            Role.Log.Add(QStringLiteral("%1 messages taken before the last stop wait in the queue again").arg(returned));
    }
    while (!Role.Stopping()) {
        if (!thread.Configuration.Refresh()) {
            Role.LogKeptErrors();
            Role.Log.Add(QStringLiteral("* The message processor cannot read the configuration"));
            Role.Idle(5000);
            continue;
        }
        if (ThreadNumber == 1)
            Housekeeping(thread);
        const int taken = ProcessBatch(thread);
        Role.LogKeptErrors();
        if (taken == 0 && !thread.Configuration.Changed())
            Role.Idle(IdleMilliseconds);
    }
    ReplaceCurrentMessage(nullptr);
}

int ProcessorRole::ProcessBatch(Worker &Thread)
{
    const QDeadlineTimer until(BatchMilliseconds);
    while (int(Thread.Rows.size()) < BatchSize && !until.hasExpired() && !Role.Stopping()) {
        ReplaceCurrentMessage(nullptr);
        clsMessage &message = CurrentMessage();
        if (!Thread.Store.GetEdgeQueue(message))
            break;
        if (Thread.Configuration.Changed()) {
            // The message may have been queued for what was just saved (a
            // test run of a changed trigger): it waits for the next batch,
            // which reads the configuration anew. The batch in hand keeps
            // the copy its messages point into.
            Thread.Store.ReturnEdgeQueueRecords({message.EdgeQueueRecordNo});
            ReplaceCurrentMessage(nullptr);
            break;
        }
        Thread.Rows << message.EdgeQueueRecordNo;
        if (message.NewMessage)
            Thread.Processor.Process(message);
        else
            Thread.Processor.Lines = {QStringLiteral("Message ") + message.MessageID
                                      + QStringLiteral(" is in the message store already: not processed again")};
        Thread.Lines << Thread.Processor.Lines;
        Thread.Messages.push_back(ReplaceCurrentMessage(nullptr));
    }
    const int taken = int(Thread.Rows.size());
    if (taken == 0)
        return 0;
    if (StoreBatch(Thread)) {
        Thread.Store.DeleteEdgeQueueRecords(Thread.Rows);
    } else {
        Role.Log.Add(QStringLiteral("* %1 processed messages could not be stored: they wait in the queue again")
                         .arg(taken));
        Thread.Store.ReturnEdgeQueueRecords(Thread.Rows);
    }
    Thread.Messages.clear();
    Thread.Lines.clear();
    Thread.Rows.clear();
    return taken;
}

bool ProcessorRole::StoreBatch(Worker &Thread)
{
    clsMessageStore &store = Thread.Store;
    if (!store.BeginTransaction())
        return false;
    QList<qint64> stored(Thread.Messages.size(), 0);
    for (std::size_t n = 0; n < Thread.Messages.size(); ++n) {
        const clsMessage &message = *Thread.Messages[n];
        if (!message.NewMessage)
            continue;
        const QString accountID = message.Account ? message.Account->AccountID : QStringLiteral("-");
        bool updated = false;
        if (message.REProcess && !store.UpdateMessageStoreTrigger(message, &updated)) {
            store.RollbackTransaction();
            return false;
        }
        if (updated || store.IsStoredMessage(accountID, message.Source, message.MessageID))
            continue; // the message's one row is there
        stored[qsizetype(n)] = store.AddToMailStore(message);
        if (stored[qsizetype(n)] <= 0) {
            store.RollbackTransaction();
            return false;
        }
    }
    // The process logs are there before the rows are seen: a reader of a
    // stored message finds its log.
    Thread.Events.BeginTransaction();
    QStringList roleLines;
    for (std::size_t n = 0; n < Thread.Messages.size(); ++n) {
        const clsMessage &message = *Thread.Messages[n];
        QStringList lines = Thread.Lines.at(qsizetype(n));
        if (stored.at(qsizetype(n)) > 0)
            lines << QStringLiteral("Stored in the message store as number %1").arg(stored.at(qsizetype(n)));
        const QString accountID = message.Account ? message.Account->AccountID : QString();
        const QString triggerID = message.Trigger() ? message.Trigger()->TriggerID : QString();
        // One entry holds the message's lines, joined as the reader of a
        // message's log joins entries.
        Thread.Events.AddRemoteEvent(lines.join(u'\n'), QDateTime::currentDateTime(), accountID, triggerID,
                                     message.MessageID);
        roleLines << lines;
    }
    Thread.Events.CommitTransaction();
    if (!store.EndTransaction())
        return false;
    Role.Log.AddLines(roleLines);
    return true;
}

void ProcessorRole::Housekeeping(Worker &Thread)
{
    if (Thread.ValidationDue.hasExpired()) {
        Thread.ValidationDue.setRemainingTime(ValidationMilliseconds);
        Role.Log.AddLines(Thread.Store.GetExpiredValidationMessage());
    }
    if (Thread.ArchiveDue.hasExpired()) {
        Thread.ArchiveDue.setRemainingTime(ArchiveMilliseconds);
        Archive(Thread);
    }
}

void ProcessorRole::Archive(Worker &Thread)
{
    for (const clsAccount *account : Accounts()) {
        if (!account->Archive || account->ArchiveDays <= 0)
            continue;
        const qint64 deleted = Thread.Store.DeleteOldMessages(
            account->AccountID, QDateTime(QDate::currentDate().addDays(-account->ArchiveDays), QTime(0, 0)));
        if (deleted > 0)
            Role.Log.Add(QStringLiteral("Archive: %1 messages of account %2 older than %3 days deleted")
                             .arg(deleted)
                             .arg(account->Name)
                             .arg(account->ArchiveDays));
    }
}
