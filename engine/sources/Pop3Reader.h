#pragma once
#include "CurlConnection.h"
#include "SourceReader.h"

#include <QList>

// Reads a POP3 mailbox. A message's identity is its UIDL. Messages are
// retrieved many at a time (the commands sent together, the answers read as
// they stream in), queued a batch at a time and deleted afterwards unless the
// account leaves them on the server; the server removes them when the
// session ends with QUIT, so a dropped session deletes nothing.
//
// Pop3LastMessageNoChecked is the position in the server's list up to which
// every message has been looked at: a message there that is not queued was
// older than the newest date seen (Pop3LastEmail) and is not fetched again.
// A list shorter than that position starts the count afresh.
class Pop3Reader : public SourceReader
{
public:
    QString Source() const override { return QStringLiteral("POP3"); }
    SourceReadResult Read(SourceAccount &Account, MessageSink &Sink) override;

    static constexpr int BatchMessages = 100;
    static constexpr qint64 BatchBytes = 16 * 1024 * 1024;

private:
    struct Listed
    {
        int Number = 0;
        QString Uidl;
        qint64 Size = 0;
    };

    bool Status(const QByteArray &What);
    bool ReadMultiLine(QByteArray &Text);
    bool List(QList<Listed> &Messages);
    bool Retrieve(const QList<Listed> &Batch, QList<QByteArray> &Texts);
    bool Delete(const QList<int> &Numbers);

    CurlConnection m_connection;
};
