#pragma once
#include "SourceReader.h"

// Takes message files (RFC 5322 text) from a folder: the files that match
// the mask ("*.eml"; several patterns separated by ";"), oldest first. A
// file's identity is its name, size and time of change. A file changed
// within the last QuietMilliseconds, or that changes while it is read, is
// still being written and waits for the next read. A file is deleted after
// its queue row is committed, unless the account keeps files.
class FilePickupReader : public SourceReader
{
public:
    QString Source() const override { return QStringLiteral("FILE"); }
    SourceReadResult Read(SourceAccount &Account, MessageSink &Sink) override;

    int QuietMilliseconds = 2000;
    static constexpr int BatchMessages = 100;
};
