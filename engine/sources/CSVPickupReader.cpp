#include "CSVPickupReader.h"

#include "CSVText.h"
#include "SourceMime.h"
#include "XlsxWorkbook.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

namespace
{
bool IsWorkbook(const QFileInfo &File)
{
    const QString suffix = File.suffix().toLower();
    return suffix == u"xlsx" || suffix == u"xlsm";
}

QFileInfoList Candidates(const SourceAccount &Account)
{
    QStringList patterns = Account.CSVPickupMask.split(u';', Qt::SkipEmptyParts);
    for (QString &pattern : patterns)
        pattern = pattern.trimmed();
    if (patterns.isEmpty())
        patterns << QStringLiteral("*.csv") << QStringLiteral("*.xlsx");
    return QDir(Account.CSVPickupFolder).entryInfoList(patterns, QDir::Files | QDir::Readable, QDir::Time | QDir::Reversed);
}

bool Unchanged(const QFileInfo &Before)
{
    const QFileInfo after(Before.filePath());
    return after.exists() && after.size() == Before.size() && after.lastModified() == Before.lastModified();
}
}

SheetTable CSVPickupReader::Table(const QFileInfo &File, const SourceAccount &Account)
{
    if (IsWorkbook(File))
        return XlsxWorkbook::Read(File.filePath(), Account.CSVPickupWorkSheet);
    QFile file(File.filePath());
    if (!file.open(QIODevice::ReadOnly)) {
        SheetTable table;
        table.Problem = QStringLiteral("cannot be opened: ") + file.errorString();
        return table;
    }
    SheetTable table = CSVText::Read(file.readAll());
    if (!table.Problem.isEmpty())
        table.Problem = QStringLiteral("is not a CSV file: ") + table.Problem;
    return table;
}

QString CSVPickupReader::Identity(const QFileInfo &File, const SheetTable::Row &Row)
{
    const QByteArray hash = QCryptographicHash::hash(Row.Cells.join(QChar(0x1F)).toUtf8(), QCryptographicHash::Sha1).toHex();
    return File.fileName().left(200) + u'|' + QString::number(Row.Number) + u'|' + QString::fromLatin1(hash.left(16));
}

SourceReadResult CSVPickupReader::Read(SourceAccount &Account, MessageSink &Sink)
{
    SourceReadResult result;
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    if (Account.CSVPickupFolder.isEmpty() || !QDir(Account.CSVPickupFolder).exists()) {
        result.Failed = true;
        result.Failure = QStringLiteral("the pickup folder \"") + Account.CSVPickupFolder + QStringLiteral("\" does not exist");
        Account.CSVPickupLastStatus = stamp + QStringLiteral(" ") + result.Failure;
        return result;
    }
    const QDateTime settled = QDateTime::currentDateTime().addMSecs(-QuietMilliseconds);
    QStringList problems;
    QList<SourceMessage> batch;
    QStringList done; // files whose every row is queued once the batch is
    auto commit = [&]() {
        if (!batch.isEmpty()) {
            if (!Sink.Queue(batch)) {
                result.Failed = true;
                result.Failure = QStringLiteral("the edge queue did not take the rows of ") + Account.CSVPickupFolder;
                return false;
            }
            result.NewMessages += int(batch.size());
            batch.clear();
        }
        if (Account.CSVPickupDelete) {
            for (const QString &path : done)
                QFile::remove(path);
        }
        done.clear();
        return true;
    };
    auto full = [&]() {
        return Account.MaxMessagesPerRun > 0 && result.NewMessages + batch.size() >= Account.MaxMessagesPerRun;
    };
    int files = 0;
    for (const QFileInfo &file : Candidates(Account)) {
        if (full())
            break;
        if (file.lastModified() > settled)
            continue;
        const SheetTable table = Table(file, Account);
        if (!Unchanged(file))
            continue;
        if (!table.Problem.isEmpty()) {
            problems << QStringLiteral("\"") + file.fileName() + QStringLiteral("\" ") + table.Problem;
            continue;
        }
        ++files;
        const qsizetype header = table.HeaderIndex(Account.CSVPickupHeaderRow);
        if (header < 0 && Account.CSVPickupHeaderRow > 0) {
            problems << QStringLiteral("\"%1\" has no row %2 to take the column names from").arg(file.fileName()).arg(Account.CSVPickupHeaderRow);
            continue;
        }
        const QStringList names = header < 0 ? QStringList() : table.Rows.at(header).Cells;
        bool whole = true;
        for (qsizetype r = header + 1; r < table.Rows.size(); ++r) {
            if (full()) {
                whole = false;
                break;
            }
            const SheetTable::Row &row = table.Rows.at(r);
            const QString identity = Identity(file, row);
            const MessageSink::Identity known = Sink.Lookup(Account.AccountID, Source(), identity);
            if (known == MessageSink::Identity::Unknown) {
                result.Failed = true;
                result.Failure = QStringLiteral("the edge queue cannot be read");
                return result;
            }
            if (known == MessageSink::Identity::Known)
                continue;
            SourceMessage message;
            message.AccountID = Account.AccountID;
            message.Source = Source();
            message.UID = identity;
            message.MessageDate = file.lastModified();
            const QString subject = file.fileName() + QStringLiteral(" row ") + QString::number(row.Number);
            message.Mime = SourceMime::WithProcessHeaders(
                SourceMime::Compose(subject, SourceMime::NamedValues(names, row.Cells), file.lastModified()),
                Account.AccountID, Source(), identity, false);
            batch.append(std::move(message));
            if (batch.size() >= BatchMessages && !commit())
                break;
        }
        if (result.Failed)
            break;
        if (whole)
            done << file.filePath();
    }
    if (!result.Failed)
        commit();
    if (!problems.isEmpty() && !result.Failed) {
        result.Failed = true;
        result.Failure = problems.join(QStringLiteral("; "));
    }
    Account.CSVPickupLastStatus = stamp + QStringLiteral(" ")
        + (result.Failed ? result.Failure
                         : QStringLiteral("%1 new rows from %2 files").arg(result.NewMessages).arg(files));
    return result;
}
