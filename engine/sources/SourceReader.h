#pragma once
#include "SourceAccount.h"
#include "SourceMessage.h"

#include <QString>

// What one read of a source came to: how many new messages went into the
// queue, and when it failed, why (host, port, what the server said).
struct SourceReadResult
{
    int NewMessages = 0;
    bool Failed = false;
    QString Failure;
    // Something the log should say of a read that went well.
    QString Note;
};

// A reader of one kind of source. Read takes the account's new messages to
// the sink, at most MaxMessagesPerRun when that is above 0, and only then
// deletes, moves or marks them at the source as the account says. It moves
// the account's state (newest dates, positions) on as it goes; what it
// queued before a failure stays queued and counted.
class SourceReader
{
public:
    virtual ~SourceReader() = default;
    // The Source of the messages it queues.
    virtual QString Source() const = 0;
    virtual SourceReadResult Read(SourceAccount &Account, MessageSink &Sink) = 0;
};
