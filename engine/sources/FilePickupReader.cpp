#include "FilePickupReader.h"

#include "SourceMime.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace
{
QString Identity(const QFileInfo &File)
{
    return File.fileName().left(200) + u'|' + QString::number(File.size()) + u'|'
        + File.lastModified().toString(QStringLiteral("yyyyMMddHHmmsszzz"));
}

// The files of the folder that match the mask, oldest first.
QFileInfoList Candidates(const SourceAccount &Account)
{
    QStringList patterns = Account.FilePickUpMask.split(u';', Qt::SkipEmptyParts);
    for (QString &pattern : patterns)
        pattern = pattern.trimmed();
    if (patterns.isEmpty())
        patterns << QStringLiteral("*.eml");
    return QDir(Account.FilePickupFolder).entryInfoList(patterns, QDir::Files | QDir::Readable, QDir::Time | QDir::Reversed);
}
}

SourceReadResult FilePickupReader::Read(SourceAccount &Account, MessageSink &Sink)
{
    SourceReadResult result;
    if (Account.FilePickupFolder.isEmpty() || !QDir(Account.FilePickupFolder).exists()) {
        result.Failed = true;
        result.Failure = QStringLiteral("the pickup folder \"") + Account.FilePickupFolder + QStringLiteral("\" does not exist");
        return result;
    }
    const QDateTime settled = QDateTime::currentDateTime().addMSecs(-QuietMilliseconds);
    QList<SourceMessage> batch;
    QStringList paths;
    auto commit = [&]() {
        if (batch.isEmpty())
            return true;
        if (!Sink.Queue(batch)) {
            result.Failed = true;
            result.Failure = QStringLiteral("the edge queue did not take the files of ") + Account.FilePickupFolder;
            return false;
        }
        result.NewMessages += int(batch.size());
        if (!Account.FilePickupDontDelete) {
            for (const QString &path : paths)
                QFile::remove(path);
        }
        batch.clear();
        paths.clear();
        return true;
    };
    for (const QFileInfo &file : Candidates(Account)) {
        if (Account.MaxMessagesPerRun > 0 && result.NewMessages + batch.size() >= Account.MaxMessagesPerRun)
            break;
        if (file.lastModified() > settled)
            continue;
        const QString identity = Identity(file);
        const MessageSink::Identity known = Sink.Lookup(Account.AccountID, Source(), identity);
        if (known == MessageSink::Identity::Unknown) {
            result.Failed = true;
            result.Failure = QStringLiteral("the edge queue cannot be read");
            return result;
        }
        if (known == MessageSink::Identity::Known) {
            // Queued by a read that ended before it could delete the file.
            if (!Account.FilePickupDontDelete)
                QFile::remove(file.filePath());
            continue;
        }
        QFile reader(file.filePath());
        if (!reader.open(QIODevice::ReadOnly))
            continue;
        const QByteArray raw = reader.readAll();
        reader.close();
        const QFileInfo after(file.filePath());
        if (after.size() != file.size() || after.lastModified() != file.lastModified() || raw.size() != file.size())
            continue;
        SourceMessage message;
        message.AccountID = Account.AccountID;
        message.Source = Source();
        message.UID = identity;
        message.MessageDate = SourceMime::DateHeader(raw);
        if (!message.MessageDate.isValid())
            message.MessageDate = file.lastModified();
        message.Mime = SourceMime::WithProcessHeaders(raw, Account.AccountID, Source(), identity, false);
        batch.append(std::move(message));
        paths << file.filePath();
        if (batch.size() >= BatchMessages && !commit())
            return result;
    }
    commit();
    return result;
}
