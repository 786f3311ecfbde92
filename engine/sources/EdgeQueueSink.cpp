#include "EdgeQueueSink.h"

#include "store/clsMessageStore.h"

#include <QStringDecoder>

MessageSink::Identity EdgeQueueSink::Lookup(const QString &AccountID, const QString &Source, const QString &UID)
{
    m_store.LastError.clear();
    if (m_store.IsNewMessage(AccountID, Source, UID))
        return Identity::New;
    return m_store.LastError.isEmpty() ? Identity::Known : Identity::Unknown;
}

QString EdgeQueueSink::MimeText(const QByteArray &Mime)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(Mime);
    return utf8.hasError() ? QString::fromLatin1(Mime) : text;
}

bool EdgeQueueSink::Queue(QList<SourceMessage> &Messages)
{
    if (Messages.isEmpty())
        return true;
    // A batch holds the messages of one account and one source.
    QStringList uids;
    QList<QDateTime> dates;
    QStringList mimes;
    for (const SourceMessage &message : Messages) {
        uids << message.UID;
        dates << message.MessageDate;
        mimes << MimeText(message.Mime);
    }
    const QList<qint64> records
        = m_store.AddEMLsToEdgeQueue(Messages.first().AccountID, Messages.first().Source, uids, dates, mimes);
    if (records.size() != Messages.size())
        return false;
    for (qsizetype i = 0; i < Messages.size(); ++i)
        Messages[i].RecordNo = records.at(i);
    return true;
}
