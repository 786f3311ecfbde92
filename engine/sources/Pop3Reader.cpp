#include "Pop3Reader.h"

#include "SourceMime.h"

#include <QHash>

// Reads "+OK ..."; "-ERR ..." fails the connection with the server's words.
bool Pop3Reader::Status(const QByteArray &What)
{
    QByteArray line;
    if (!m_connection.ReadLine(line))
        return false;
    if (line.startsWith("+OK"))
        return true;
    m_connection.LastServerLine = line;
    return m_connection.Fail(QStringLiteral("the server refused ") + QString::fromLatin1(What));
}

// The lines up to the closing ".", dot-stuffing undone, each closed by CR LF.
bool Pop3Reader::ReadMultiLine(QByteArray &Text)
{
    Text.clear();
    QByteArray line;
    for (;;) {
        if (!m_connection.ReadLine(line))
            return false;
        if (line == ".")
            return true;
        if (line.startsWith('.'))
            Text += QByteArrayView(line).sliced(1);
        else
            Text += line;
        Text += "\r\n";
    }
}

bool Pop3Reader::List(QList<Listed> &Messages)
{
    if (!m_connection.Send("UIDL\r\nLIST\r\n"))
        return false;
    QByteArray uidls;
    QByteArray sizes;
    if (!Status("UIDL") || !ReadMultiLine(uidls) || !Status("LIST") || !ReadMultiLine(sizes))
        return false;
    QHash<int, qint64> sizeOf;
    for (const QByteArray &line : sizes.split('\n')) {
        const QList<QByteArray> parts = line.trimmed().split(' ');
        if (parts.size() >= 2)
            sizeOf.insert(parts.at(0).toInt(), parts.at(1).toLongLong());
    }
    for (const QByteArray &line : uidls.split('\n')) {
        const QList<QByteArray> parts = line.trimmed().split(' ');
        if (parts.size() < 2 || parts.at(0).toInt() <= 0)
            continue;
        Listed listed;
        listed.Number = parts.at(0).toInt();
        listed.Uidl = QString::fromLatin1(parts.at(1)).left(250);
        listed.Size = sizeOf.value(listed.Number);
        Messages.append(listed);
    }
    return true;
}

bool Pop3Reader::Retrieve(const QList<Listed> &Batch, QList<QByteArray> &Texts)
{
    QByteArray commands;
    for (const Listed &listed : Batch)
        commands += "RETR " + QByteArray::number(listed.Number) + "\r\n";
    if (!m_connection.Send(commands))
        return false;
    for (qsizetype i = 0; i < Batch.size(); ++i) {
        QByteArray line;
        if (!m_connection.ReadLine(line))
            return false;
        QByteArray text;
        // A message another client removed meanwhile answers -ERR: none.
        if (line.startsWith("+OK") && !ReadMultiLine(text))
            return false;
        Texts.append(text);
    }
    return true;
}

bool Pop3Reader::Delete(const QList<int> &Numbers)
{
    if (Numbers.isEmpty())
        return true;
    QByteArray commands;
    for (int number : Numbers)
        commands += "DELE " + QByteArray::number(number) + "\r\n";
    if (!m_connection.Send(commands))
        return false;
    for (qsizetype i = 0; i < Numbers.size(); ++i) {
        if (!Status("DELE"))
            return false;
    }
    return true;
}

SourceReadResult Pop3Reader::Read(SourceAccount &Account, MessageSink &Sink)
{
    SourceReadResult result;
    auto failed = [&](const QString &Reason) {
        result.Failed = true;
        result.Failure = Reason.isEmpty() ? m_connection.Error : Reason;
        m_connection.Close();
        return result;
    };
    if (!m_connection.Open(QStringLiteral("pop3"), Account.Pop3))
        return failed({});
    QList<Listed> listed;
    if (!List(listed))
        return failed({});
    if (Account.Pop3LastMessageNoChecked > listed.size())
        Account.Pop3LastMessageNoChecked = 0;

    const bool deleting = !Account.Pop3LeaveMessageOn || Account.Pop3DeleteAll;
    const QDateTime bound = Account.Pop3LastEmail.isValid() ? QDateTime(Account.Pop3LastEmail.date(), QTime(0, 0))
                                                            : QDateTime();
    QList<Listed> fresh;
    QList<int> known;
    for (const Listed &message : listed) {
        const MessageSink::Identity identity = Sink.Lookup(Account.AccountID, Source(), message.Uidl);
        if (identity == MessageSink::Identity::Unknown)
            return failed(QStringLiteral("the edge queue cannot be read"));
        const bool isNew = identity == MessageSink::Identity::New;
        if (!isNew && deleting)
            known.append(message.Number);
        else if (isNew && message.Number > Account.Pop3LastMessageNoChecked)
            fresh.append(message);
    }
    // Messages queued by an earlier session that did not end are deleted now.
    if (!Delete(known))
        return failed({});

    for (qsizetype at = 0; at < fresh.size();) {
        if (Account.MaxMessagesPerRun > 0 && result.NewMessages >= Account.MaxMessagesPerRun)
            break;
        QList<Listed> batch;
        qint64 bytes = 0;
        int room = Account.MaxMessagesPerRun > 0 ? Account.MaxMessagesPerRun - result.NewMessages : BatchMessages;
        while (at < fresh.size() && batch.size() < std::min(BatchMessages, room)
               && (batch.isEmpty() || bytes + fresh.at(at).Size <= BatchBytes)) {
            bytes += fresh.at(at).Size;
            batch.append(fresh.at(at++));
        }
        QList<QByteArray> texts;
        if (!Retrieve(batch, texts))
            return failed({});
        QList<SourceMessage> messages;
        QList<int> numbers;
        for (qsizetype i = 0; i < batch.size(); ++i) {
            const QByteArray &text = texts.at(i);
            if (text.isEmpty())
                continue;
            const QDateTime date = SourceMime::DateHeader(text);
            if (bound.isValid() && date.isValid() && date < bound)
                continue;
            SourceMessage message;
            message.AccountID = Account.AccountID;
            message.Source = Source();
            message.UID = batch.at(i).Uidl;
            message.MessageDate = date.isValid() ? date : QDateTime::currentDateTime();
            message.Mime = SourceMime::WithProcessHeaders(text, Account.AccountID, Source(), message.UID, false);
            messages.append(std::move(message));
            numbers.append(batch.at(i).Number);
            if (date.isValid() && (!Account.Pop3LastEmail.isValid() || date > Account.Pop3LastEmail))
                Account.Pop3LastEmail = date;
        }
        if (!messages.isEmpty() && !Sink.Queue(messages))
            return failed(QStringLiteral("the edge queue did not take the messages of ") + Account.Pop3.Where());
        result.NewMessages += int(messages.size());
        if (deleting && !Delete(numbers))
            return failed({});
        if (!deleting)
            Account.Pop3LastMessageNoChecked = batch.last().Number;
    }
    if (!m_connection.Send("QUIT\r\n") || !Status("QUIT"))
        return failed({});
    // The deletions have closed the gaps: the list starts again at 1.
    if (deleting)
        Account.Pop3LastMessageNoChecked = 0;
    m_connection.Close();
    return result;
}
