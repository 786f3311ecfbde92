#pragma once
#include "engine/sources/SourceMessage.h"

#include <QHash>
#include <QSet>
#include <functional>

// A sink that keeps what readers hand it, so that a reader's tests see each
// message it queued and can make the queue refuse a commit (Refuse) or do
// something at the moment of a commit (OnQueue, before it answers).
class RecordingSink : public MessageSink
{
public:
    Identity Lookup(const QString &AccountID, const QString &Source, const QString &UID) override
    {
        if (Unreadable)
            return Identity::Unknown;
        return m_identities.contains(Key(AccountID, Source, UID)) ? Identity::Known : Identity::New;
    }

    bool Queue(QList<SourceMessage> &Messages) override
    {
        ++Commits;
        if (Refuse)
            return false;
        for (SourceMessage &message : Messages) {
            const QString key = Key(message.AccountID, message.Source, message.UID);
            if (m_identities.contains(key))
                ++Duplicates;
            m_identities.insert(key);
            message.RecordNo = ++m_lastRecord;
            Queued.append(message);
        }
        if (OnQueue)
            OnQueue(Messages);
        return true;
    }

    QList<SourceMessage> Queued;
    int Commits = 0;
    int Duplicates = 0;
    bool Refuse = false;
    bool Unreadable = false; // Lookup cannot tell
    std::function<void(const QList<SourceMessage> &)> OnQueue;

private:
    static QString Key(const QString &AccountID, const QString &Source, const QString &UID)
    {
        return AccountID + u'\t' + Source + u'\t' + UID;
    }

    QSet<QString> m_identities;
    qint64 m_lastRecord = 0;
};
