#pragma once
#include "SourceReader.h"

// An account on auto run reads no source: each scheduled run queues the
// account's stored message (AutoRunMessageMime) once more, as a new message.
class AutoRunReader : public SourceReader
{
public:
    QString Source() const override { return QStringLiteral("AUTORUN"); }
    SourceReadResult Read(SourceAccount &Account, MessageSink &Sink) override;
};
