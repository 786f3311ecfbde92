#pragma once
#include "SourceReader.h"

class HttpFetch;

// Looks up an address (HTTPUrl) and makes a message when what it returns
// has changed since the last lookup, or, when the account says so
// (HTTPFail), when the lookup fails. The body is the content, or its text
// without HTML (HTTPClean). A message's identity is the number of messages
// the lookups have made before it and a hash of its content, so that a read
// that ended before its state was kept makes the same message again, which
// the queue then knows.
class HttpLookupReader : public SourceReader
{
public:
    QString Source() const override { return QStringLiteral("HTTP"); }
    SourceReadResult Read(SourceAccount &Account, MessageSink &Sink) override;

    // The fetch the account's settings ask for.
    static HttpFetch Fetch(const SourceAccount &Account);

private:
    // Queues the one message (unless the queue has it) and counts it; false
    // with the result's failure set.
    bool Queue(SourceAccount &Account, MessageSink &Sink, const QString &Hash, const QByteArray &Mime,
               SourceReadResult &Result);
};
