#pragma once
#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

// One message read from a source, on its way to the edge queue: its identity
// (AccountID, Source, UID), its date and its whole MIME text, the process
// headers included. RecordNo is the queue row, set once that row is committed.
struct SourceMessage
{
    QString AccountID;
    QString Source; // "IMAP", "POP3", "FILE", ...
    QString UID;
    QDateTime MessageDate;
    QByteArray Mime;
    qint64 RecordNo = 0;
};

// Where a reader hands its new messages: the edge queue, or in a test
// anything that keeps them. A reader removes or moves a message at its
// source only after Queue has answered with the message's committed row.
class MessageSink
{
public:
    virtual ~MessageSink() = default;
    // New: neither queued nor stored. Known: queued or stored, so that the
    // reader may remove it at its source. Unknown: the queue could not be
    // asked; the reader stops and removes nothing.
    enum class Identity { New, Known, Unknown };
    virtual Identity Lookup(const QString &AccountID, const QString &Source, const QString &UID) = 0;
    // Writes the messages as queue rows in one commit and sets their RecordNo;
    // false, with no RecordNo set, when the commit failed.
    virtual bool Queue(QList<SourceMessage> &Messages) = 0;
};
