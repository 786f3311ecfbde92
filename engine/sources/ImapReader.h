#pragma once
#include "CurlConnection.h"
#include "SourceReader.h"

#include <QByteArrayList>
#include <QList>

// Reads an IMAP folder. A message's identity is the folder's UIDVALIDITY and
// its UID ("UIDVALIDITY.UID"), or its Message-ID when the account does not
// use the server's IDs and the message has one. Messages older than the day
// of the newest message seen (IMAPLastEmail) are left alone. New messages
// are fetched many to a command, without setting \Seen, queued a batch at a
// time, and then, as the account says, marked as seen, moved, deleted or
// left. Messages queued by an earlier read that did not get that far (a
// dropped connection, a killed process) are finished on the next read.
//
// A folder whose UIDVALIDITY changed has given its messages new UIDs: with
// the server's IDs as identity, the messages that arrived up to the newest
// one read before are taken as read already, and only later ones are new.
class ImapReader : public SourceReader
{
public:
    QString Source() const override { return QStringLiteral("IMAP"); }
    SourceReadResult Read(SourceAccount &Account, MessageSink &Sink) override;

    // Messages fetched by one command, and the bytes they may add up to.
    static constexpr int BatchMessages = 250;
    static constexpr qint64 BatchBytes = 16 * 1024 * 1024;

    // One message as the folder lists it.
    struct Listed
    {
        quint32 Uid = 0;
        qint64 Size = 0;
        bool Seen = false;
        QDateTime InternalDate;
        QString Identity;
    };

    // "1:3,7,9:10" for the sorted UIDs.
    static QByteArray UidSet(QList<quint32> Uids);
    // "23-Nov-2026 10:00:00 +0100"; invalid when it doesn't read.
    static QDateTime InternalDate(const QByteArray &Text);

private:
    // One untagged answer: its text with every literal replaced by "{#n}",
    // and the literals.
    struct Untagged
    {
        QByteArray Text;
        QByteArrayList Literals;
    };

    // Sends one command and reads its answers up to the tagged one. A refusal
    // (NO, BAD) fails the connection, unless Refused is given to be set.
    bool Command(const QByteArray &Text, QList<Untagged> *Answers = nullptr, bool *Refused = nullptr);
    bool ReadAnswer(Untagged &Answer, bool &Tagged, QByteArray &Status);
    bool Select(const QString &Folder, quint32 &UidValidity, quint32 &Exists);
    bool List(const SourceAccount &Account, quint32 UidValidity, QList<Listed> &Messages);
    bool FetchBatch(const SourceAccount &Account, const QList<Listed> &Batch, QList<SourceMessage> &Fetched);
    bool Dispose(const SourceAccount &Account, const QList<quint32> &Uids);
    bool Expunge();

    CurlConnection m_connection;
    int m_tag = 0;
    bool m_deleted = false; // messages were flagged \Deleted and wait for EXPUNGE
};
