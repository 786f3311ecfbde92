#pragma once
#include "engine/ConfigurationCopy.h"
#include "engine/ServerRole.h"

#include <QList>
#include <functional>
#include <memory>
#include <vector>

// The message processor role: its threads take queued messages, run the
// account's triggers on them and store them in the Message Store with their
// process logs (see MessageProcessor).
//
// Crash safety: a message is taken by an atomic update of its queue row;
// its store row is committed before the queue row is released (deleted);
// several messages share one commit (BatchSize), and none is released before
// that commit. At the start, rows taken by a process that died are returned
// to the queue, or released when their message is already stored.
class ProcessorRole
{
public:
    ProcessorRole(ConfigurationCopy::Loader Load, int Threads);
    ~ProcessorRole();

    ServerRole Role;
    // Called on a processor thread when a trigger of an account with
    // AutoPause failed: the owner of the configuration disables the account.
    std::function<void(const QString &AccountID, const QString &Reason)> PauseAccount;
    // Messages that share one commit at most, and the longest a stored
    // message waits for its commit when no other follows.
    int BatchSize = 64;
    int BatchMilliseconds = 200;

    // How often the first thread settles expired validations, and archives.
    int ValidationMilliseconds = 30000;
    int ArchiveMilliseconds = 24 * 3600 * 1000;
    // How long an idle thread rests before it looks at the queue again,
    // unless Role.Wake() ends the rest.
    int IdleMilliseconds = 250;

private:
    struct Worker;
    void Run(int ThreadNumber);
    // Takes and processes up to BatchSize messages, stores them in one
    // commit and releases their queue rows; the number taken.
    int ProcessBatch(Worker &Thread);
    // Stores the processed messages; false when the commit failed.
    bool StoreBatch(Worker &Thread);
    // Parks the rows of the batch's messages that wait for validation; the
    // rows of the others, to be released.
    QList<qint64> ParkWaitingForValidation(Worker &Thread);
    // Expired validations and the archive, when they are due.
    void Housekeeping(Worker &Thread);
    void Archive(Worker &Thread);

    ConfigurationCopy::Loader m_load;
};
