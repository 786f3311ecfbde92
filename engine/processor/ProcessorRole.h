#pragma once
#include "engine/ConfigurationCopy.h"
#include "engine/ServerRole.h"

#include <functional>

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

private:
    void Run(int ThreadNumber);

    ConfigurationCopy::Loader m_load;
};
