#include "ImapReader.h"

#include "SourceMime.h"

#include <QHash>
#include <QTimeZone>

#include <algorithm>

namespace
{
// The items of "* n FETCH (NAME value ...)": names upper-cased, values as
// written (lists with their parentheses, quoted strings unquoted).
QList<std::pair<QByteArray, QByteArray>> FetchItems(const QByteArray &Text)
{
    QList<std::pair<QByteArray, QByteArray>> items;
    qsizetype at = Text.indexOf("FETCH (");
    if (at < 0)
        return items;
    at += 7;
    const qsizetype size = Text.size();
    while (at < size && Text.at(at) != ')') {
        while (at < size && Text.at(at) == ' ')
            ++at;
        qsizetype start = at;
        int brackets = 0;
        while (at < size && (brackets > 0 || (Text.at(at) != ' ' && Text.at(at) != ')'))) {
            if (Text.at(at) == '[')
                ++brackets;
            else if (Text.at(at) == ']')
                --brackets;
            ++at;
        }
        const QByteArray name = Text.mid(start, at - start).toUpper();
        while (at < size && Text.at(at) == ' ')
            ++at;
        QByteArray value;
        if (at < size && Text.at(at) == '(') {
            start = at;
            int depth = 0;
            bool quoted = false;
            for (; at < size; ++at) {
                const char c = Text.at(at);
                if (quoted) {
                    if (c == '\\')
                        ++at;
                    else if (c == '"')
                        quoted = false;
                } else if (c == '"') {
                    quoted = true;
                } else if (c == '(') {
                    ++depth;
                } else if (c == ')' && --depth == 0) {
                    ++at;
                    break;
                }
            }
            value = Text.mid(start, at - start);
        } else if (at < size && Text.at(at) == '"') {
            for (++at; at < size && Text.at(at) != '"'; ++at) {
                if (Text.at(at) == '\\' && at + 1 < size)
                    ++at;
                value += Text.at(at);
            }
            ++at;
        } else {
            start = at;
            while (at < size && Text.at(at) != ' ' && Text.at(at) != ')')
                ++at;
            value = Text.mid(start, at - start);
        }
        if (name.isEmpty())
            break;
        items.append({name, value});
    }
    return items;
}

// The literal a value "{#n}" stands for.
QByteArray Literal(const QByteArray &Value, const QByteArrayList &Literals)
{
    if (!Value.startsWith("{#") || !Value.endsWith('}'))
        return Value == "NIL" ? QByteArray() : Value;
    const int index = Value.mid(2, Value.size() - 3).toInt();
    return index >= 0 && index < Literals.size() ? Literals.at(index) : QByteArray();
}

QByteArray Quoted(const QString &Text)
{
    QByteArray quoted = Text.toUtf8();
    quoted.replace('\\', "\\\\").replace('"', "\\\"");
    return '"' + quoted + '"';
}

// The number after "[NAME " in a response code.
quint32 ResponseCode(const QByteArray &Text, const QByteArray &Name)
{
    const qsizetype at = Text.indexOf('[' + Name + ' ');
    if (at < 0)
        return 0;
    const qsizetype start = at + Name.size() + 2;
    const qsizetype end = Text.indexOf(']', start);
    return Text.mid(start, end - start).toUInt();
}
}

QByteArray ImapReader::UidSet(QList<quint32> Uids)
{
    std::sort(Uids.begin(), Uids.end());
    QByteArray set;
    for (qsizetype i = 0; i < Uids.size();) {
        qsizetype j = i;
        while (j + 1 < Uids.size() && Uids.at(j + 1) <= Uids.at(j) + 1)
            ++j;
        if (!set.isEmpty())
            set += ',';
        set += QByteArray::number(Uids.at(i));
        if (Uids.at(j) != Uids.at(i))
            set += ':' + QByteArray::number(Uids.at(j));
        i = j + 1;
    }
    return set;
}

QDateTime ImapReader::InternalDate(const QByteArray &Text)
{
    static const char *const months[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                         "jul", "aug", "sep", "oct", "nov", "dec"};
    const QList<QByteArray> parts = Text.trimmed().split(' ');
    if (parts.size() != 3)
        return {};
    const QList<QByteArray> day = parts.at(0).split('-');
    const QList<QByteArray> time = parts.at(1).split(':');
    const QByteArray zone = parts.at(2);
    if (day.size() != 3 || time.size() != 3 || zone.size() != 5)
        return {};
    int month = 0;
    for (int i = 0; i < 12; ++i) {
        if (day.at(1).toLower() == months[i])
            month = i + 1;
    }
    const QDate date(day.at(2).toInt(), month, day.at(0).toInt());
    const QTime clock(time.at(0).toInt(), time.at(1).toInt(), time.at(2).toInt());
    const int offset = (zone.mid(1, 2).toInt() * 60 + zone.mid(3, 2).toInt()) * 60 * (zone.at(0) == '-' ? -1 : 1);
    if (!date.isValid() || !clock.isValid())
        return {};
    return QDateTime(date, clock, QTimeZone(offset)).toLocalTime();
}

bool ImapReader::ReadAnswer(Untagged &Answer, bool &Tagged, QByteArray &Status)
{
    Answer = {};
    QByteArray line;
    if (!m_connection.ReadLine(line))
        return false;
    const QByteArray tag = 'p' + QByteArray::number(m_tag) + ' ';
    Tagged = line.startsWith(tag);
    if (Tagged) {
        Status = line.mid(tag.size());
        Answer.Text = line;
        return true;
    }
    // A line that ends in "{n}" goes on after n bytes of literal.
    for (;;) {
        qsizetype open = -1;
        if (line.endsWith('}'))
            open = line.lastIndexOf('{');
        bool number = open >= 0;
        const qint64 count = number ? line.mid(open + 1, line.size() - open - 2).toLongLong(&number) : 0;
        if (!number) {
            Answer.Text += line;
            return true;
        }
        QByteArray literal;
        if (!m_connection.ReadBytes(count, literal))
            return false;
        Answer.Text += line.left(open) + "{#" + QByteArray::number(Answer.Literals.size()) + '}';
        Answer.Literals.append(literal);
        if (!m_connection.ReadLine(line))
            return false;
    }
}

bool ImapReader::Command(const QByteArray &Text, QList<Untagged> *Answers, bool *Refused)
{
    ++m_tag;
    if (!m_connection.Send('p' + QByteArray::number(m_tag) + ' ' + Text + "\r\n"))
        return false;
    for (;;) {
        Untagged answer;
        bool tagged = false;
        QByteArray status;
        if (!ReadAnswer(answer, tagged, status))
            return false;
        if (!tagged) {
            if (Answers)
                Answers->append(std::move(answer));
            continue;
        }
        if (status.startsWith("OK"))
            return true;
        m_connection.LastServerLine = status;
        if (Refused) {
            *Refused = true;
            return false;
        }
        return m_connection.Fail(QStringLiteral("the server refused ") + QString::fromUtf8(Text.left(Text.indexOf(' '))));
    }
}

bool ImapReader::Select(const QString &Folder, quint32 &UidValidity, quint32 &Exists)
{
    QList<Untagged> answers;
    if (!Command("SELECT " + Quoted(Folder), &answers))
        return false;
    UidValidity = 0;
    Exists = 0;
    for (const Untagged &answer : answers) {
        if (answer.Text.contains("[UIDVALIDITY "))
            UidValidity = ResponseCode(answer.Text, "UIDVALIDITY");
        else if (answer.Text.endsWith(" EXISTS"))
            Exists = answer.Text.split(' ').value(1).toUInt();
    }
    return true;
}

bool ImapReader::List(const SourceAccount &Account, quint32 UidValidity, QList<Listed> &Messages)
{
    QByteArray items = "UID FLAGS INTERNALDATE RFC822.SIZE";
    if (!Account.ImapServerIDs)
        items += " BODY.PEEK[HEADER.FIELDS (MESSAGE-ID)]";
    QList<Untagged> answers;
    if (!Command("UID FETCH 1:* (" + items + ')', &answers))
        return false;
    const QString validity = QString::number(UidValidity) + u'.';
    for (const Untagged &answer : answers) {
        if (!answer.Text.contains(" FETCH ("))
            continue;
        Listed listed;
        QByteArray messageId;
        for (const auto &[name, value] : FetchItems(answer.Text)) {
            if (name == "UID")
                listed.Uid = value.toUInt();
            else if (name == "FLAGS")
                listed.Seen = value.toLower().contains("\\seen");
            else if (name == "INTERNALDATE")
                listed.InternalDate = InternalDate(value);
            else if (name == "RFC822.SIZE")
                listed.Size = value.toLongLong();
            else if (name.startsWith("BODY["))
                messageId = SourceMime::HeaderValue(Literal(value, answer.Literals), "Message-ID");
        }
        if (listed.Uid == 0)
            continue;
        listed.Identity = messageId.isEmpty() ? validity + QString::number(listed.Uid)
                                              : QString::fromUtf8(messageId).left(250);
        Messages.append(listed);
    }
    std::sort(Messages.begin(), Messages.end(), [](const Listed &a, const Listed &b) { return a.Uid < b.Uid; });
    return true;
}

bool ImapReader::FetchBatch(const SourceAccount &Account, const QList<Listed> &Batch, QList<SourceMessage> &Fetched)
{
    QList<quint32> uids;
    QHash<quint32, const Listed *> byUid;
    for (const Listed &listed : Batch) {
        uids.append(listed.Uid);
        byUid.insert(listed.Uid, &listed);
    }
    QList<Untagged> answers;
    if (!Command("UID FETCH " + UidSet(uids) + " (UID BODY.PEEK[])", &answers))
        return false;
    QHash<quint32, QByteArray> bodies;
    for (const Untagged &answer : answers) {
        quint32 uid = 0;
        QByteArray body;
        for (const auto &[name, value] : FetchItems(answer.Text)) {
            if (name == "UID")
                uid = value.toUInt();
            else if (name == "BODY[]")
                body = Literal(value, answer.Literals);
        }
        if (byUid.contains(uid))
            bodies.insert(uid, body);
    }
    // A message expunged meanwhile by another client is simply not there.
    for (const Listed &listed : Batch) {
        const auto body = bodies.constFind(listed.Uid);
        if (body == bodies.constEnd())
            continue;
        SourceMessage message;
        message.AccountID = Account.AccountID;
        message.Source = Source();
        message.UID = listed.Identity;
        message.MessageDate = SourceMime::DateHeader(*body);
        if (!message.MessageDate.isValid())
            message.MessageDate = listed.InternalDate.isValid() ? listed.InternalDate : QDateTime::currentDateTime();
        message.Mime = SourceMime::WithProcessHeaders(*body, Account.AccountID, Source(), listed.Identity, listed.Seen);
        Fetched.append(std::move(message));
    }
    return true;
}

bool ImapReader::Dispose(const SourceAccount &Account, const QList<quint32> &Uids)
{
    if (Uids.isEmpty())
        return true;
    const QByteArray set = UidSet(Uids);
    if (Account.ImapMarkAsRead && !Command("UID STORE " + set + " +FLAGS.SILENT (\\Seen)"))
        return false;
    const bool deleting = !Account.ImapLeaveMessageOn || Account.ImapDeleteAll;
    if (!deleting && Account.ImapMove && !Account.ImapMoveToFolder.isEmpty()) {
        bool refused = false;
        if (Command("UID MOVE " + set + ' ' + Quoted(Account.ImapMoveToFolder), nullptr, &refused))
            return true;
        if (!refused || !Command("UID COPY " + set + ' ' + Quoted(Account.ImapMoveToFolder)))
            return false;
    } else if (!deleting) {
        return true;
    }
    m_deleted = true;
    return Command("UID STORE " + set + " +FLAGS.SILENT (\\Deleted)");
}

bool ImapReader::Expunge()
{
    if (!m_deleted)
        return true;
    m_deleted = false;
    return Command("EXPUNGE");
}

SourceReadResult ImapReader::Read(SourceAccount &Account, MessageSink &Sink)
{
    SourceReadResult result;
    m_tag = 0;
    m_deleted = false;
    auto failed = [&](const QString &Reason) {
        result.Failed = true;
        result.Failure = Reason.isEmpty() ? m_connection.Error : Reason;
        m_connection.Close();
        return result;
    };
    if (!m_connection.Open(QStringLiteral("imap"), Account.Imap))
        return failed({});
    quint32 uidValidity = 0;
    quint32 exists = 0;
    if (!Select(Account.ImapFolder, uidValidity, exists))
        return failed({});
    QList<Listed> listed;
    if (exists > 0 && !List(Account, uidValidity, listed))
        return failed({});

    const bool removing = Account.ImapMove || !Account.ImapLeaveMessageOn || Account.ImapDeleteAll;
    // Arrivals up to this moment were read under the folder's old UIDs.
    QDateTime readBefore;
    if (Account.ImapServerIDs && Account.ImapUidValidity != 0 && Account.ImapUidValidity != uidValidity) {
        readBefore = Account.ImapLastEmail;
        result.Note = QStringLiteral("the folder's UIDVALIDITY changed from %1 to %2").arg(Account.ImapUidValidity).arg(uidValidity);
    }
    Account.ImapUidValidity = uidValidity;
    const QDateTime bound = Account.ImapLastEmail.isValid() ? QDateTime(Account.ImapLastEmail.date(), QTime(0, 0))
                                                            : QDateTime();
    QList<Listed> fresh;
    QList<quint32> known;
    for (const Listed &message : listed) {
        if (bound.isValid() && message.InternalDate.isValid() && message.InternalDate < bound)
            continue;
        if (readBefore.isValid() && message.InternalDate.isValid() && message.InternalDate <= readBefore)
            continue;
        const MessageSink::Identity identity = Sink.Lookup(Account.AccountID, Source(), message.Identity);
        if (identity == MessageSink::Identity::Unknown)
            return failed(QStringLiteral("the edge queue cannot be read"));
        if (identity == MessageSink::Identity::New)
            fresh.append(message);
        else if (removing || (Account.ImapMarkAsRead && !message.Seen))
            known.append(message.Uid);
    }
    if (Account.MaxMessagesPerRun > 0 && fresh.size() > Account.MaxMessagesPerRun)
        fresh.resize(Account.MaxMessagesPerRun);

    // Messages queued by an earlier read are finished first.
    if (!Dispose(Account, known))
        return failed({});
    for (qsizetype at = 0; at < fresh.size();) {
        QList<Listed> batch;
        qint64 bytes = 0;
        while (at < fresh.size() && batch.size() < BatchMessages && (batch.isEmpty() || bytes + fresh.at(at).Size <= BatchBytes)) {
            bytes += fresh.at(at).Size;
            batch.append(fresh.at(at++));
        }
        QList<SourceMessage> fetched;
        if (!FetchBatch(Account, batch, fetched))
            return failed({});
        if (!Sink.Queue(fetched))
            return failed(QStringLiteral("the edge queue did not take the messages of ") + Account.Imap.Where());
        result.NewMessages += int(fetched.size());
        QList<quint32> uids;
        for (const Listed &message : batch) {
            uids.append(message.Uid);
            if (message.InternalDate.isValid() && (!Account.ImapLastEmail.isValid() || message.InternalDate > Account.ImapLastEmail))
                Account.ImapLastEmail = message.InternalDate;
        }
        if (!Dispose(Account, uids))
            return failed({});
    }
    if (!Expunge())
        return failed({});
    Command("LOGOUT");
    m_connection.Close();
    return result;
}
