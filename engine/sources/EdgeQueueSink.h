#pragma once
#include "SourceMessage.h"

class clsMessageStore;

// The sink of the server: the edge queue of an open message store, used by
// the thread that opened it. A batch is one transaction; the MIME text is
// kept as UTF-8, or byte for byte as Latin-1 when it is not valid UTF-8.
class EdgeQueueSink : public MessageSink
{
public:
    explicit EdgeQueueSink(clsMessageStore &Store) : m_store(Store) {}

    Identity Lookup(const QString &AccountID, const QString &Source, const QString &UID) override;
    bool Queue(QList<SourceMessage> &Messages) override;

    static QString MimeText(const QByteArray &Mime);

private:
    clsMessageStore &m_store;
};
