#include "FeedReader.h"

#include "HttpFetch.h"
#include "SourceMime.h"
#include "store/HtmlToText.h"

#include <QCryptographicHash>
#include <QXmlStreamReader>

#include <algorithm>

namespace
{
QDateTime FeedDate(const QString &Text)
{
    const QString value = Text.trimmed();
    QDateTime date = QDateTime::fromString(value, Qt::RFC2822Date);
    if (!date.isValid())
        date = QDateTime::fromString(value, Qt::ISODateWithMs);
    if (!date.isValid())
        date = QDateTime::fromString(value, Qt::ISODate);
    return date;
}

// The item or entry that begins at the reader's position, read to its end.
FeedReader::Item ReadItem(QXmlStreamReader &Reader, bool Atom)
{
    FeedReader::Item item;
    QDateTime published;
    const QString end = Reader.name().toString();
    while (!Reader.atEnd()) {
        Reader.readNext();
        if (Reader.isEndElement() && Reader.name() == end)
            break;
        if (!Reader.isStartElement())
            continue;
        const QStringView name = Reader.name();
        if (name == u"title") {
            item.Title = HtmlToText(Reader.readElementText(QXmlStreamReader::IncludeChildElements)).simplified();
        } else if (name == u"link" && Atom) {
            const QString rel = Reader.attributes().value(QStringLiteral("rel")).toString();
            if ((rel.isEmpty() || rel == u"alternate") && item.Link.isEmpty())
                item.Link = Reader.attributes().value(QStringLiteral("href")).toString();
            Reader.skipCurrentElement();
        } else if (name == u"link") {
            item.Link = Reader.readElementText().trimmed();
        } else if (name == u"guid" || name == u"id") {
            item.Id = Reader.readElementText().trimmed();
        } else if (name == u"description" || name == u"summary" || name == u"content") {
            const QString text = HtmlToText(Reader.readElementText(QXmlStreamReader::IncludeChildElements)).trimmed();
            if (item.Text.isEmpty() || name == u"content")
                item.Text = text;
        } else if (name == u"pubDate" || name == u"updated" || name == u"date") {
            item.Date = FeedDate(Reader.readElementText());
        } else if (name == u"published") {
            published = FeedDate(Reader.readElementText());
        } else {
            Reader.skipCurrentElement();
        }
    }
    if (!item.Date.isValid())
        item.Date = published;
    if (item.Id.isEmpty())
        item.Id = item.Link;
    if (item.Id.isEmpty())
        item.Id = QString::fromLatin1(QCryptographicHash::hash((item.Title + item.Text).toUtf8(), QCryptographicHash::Sha1).toHex());
    return item;
}
}

QList<FeedReader::Item> FeedReader::Items(const QByteArray &Xml, QString &Problem)
{
    QList<Item> items;
    QXmlStreamReader reader(Xml);
    if (!reader.readNextStartElement() || (reader.name() != u"rss" && reader.name() != u"feed")) {
        Problem = QStringLiteral("it is neither an RSS 2.0 nor an Atom 1.0 feed");
        return items;
    }
    const bool atom = reader.name() == u"feed";
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == (atom ? QStringView(u"entry") : QStringView(u"item")))
            items.append(ReadItem(reader, atom));
    }
    if (reader.hasError()) {
        Problem = QStringLiteral("the feed is not well-formed XML: %1 (line %2)").arg(reader.errorString()).arg(reader.lineNumber());
        return {};
    }
    // Undated items first, in the feed's order, then the dated ones by date.
    std::stable_sort(items.begin(), items.end(), [](const Item &a, const Item &b) {
        if (a.Date.isValid() != b.Date.isValid())
            return !a.Date.isValid();
        return a.Date.isValid() && a.Date < b.Date;
    });
    return items;
}

SourceReadResult FeedReader::Read(SourceAccount &Account, MessageSink &Sink)
{
    SourceReadResult result;
    HttpFetch fetch;
    fetch.Url = Account.RSSUrl;
    fetch.TimeoutSeconds = Account.TimeoutSeconds;
    if (!fetch.Get()) {
        result.Failed = true;
        result.Failure = fetch.Error;
        return result;
    }
    QString problem;
    const QList<Item> items = Items(fetch.Content, problem);
    if (!problem.isEmpty()) {
        result.Failed = true;
        result.Failure = fetch.Where() + QStringLiteral(": ") + problem;
        return result;
    }
    QList<SourceMessage> batch;
    QDateTime newest = Account.RSSLastMessage;
    QDateTime batchNewest = newest;
    auto commit = [&]() {
        if (batch.isEmpty())
            return true;
        if (!Sink.Queue(batch)) {
            result.Failed = true;
            result.Failure = QStringLiteral("the edge queue did not take the items of ") + fetch.Where();
            return false;
        }
        result.NewMessages += int(batch.size());
        newest = batchNewest;
        batch.clear();
        return true;
    };
    for (const Item &item : items) {
        if (Account.MaxMessagesPerRun > 0 && result.NewMessages + batch.size() >= Account.MaxMessagesPerRun)
            break;
        if (item.Date.isValid() && Account.RSSLastMessage.isValid() && item.Date < Account.RSSLastMessage)
            continue;
        const QString identity = item.Id.left(500);
        const MessageSink::Identity known = Sink.Lookup(Account.AccountID, Source(), identity);
        if (known == MessageSink::Identity::Unknown) {
            result.Failed = true;
            result.Failure = QStringLiteral("the edge queue cannot be read");
            break;
        }
        if (known == MessageSink::Identity::Known)
            continue;
        SourceMessage message;
        message.AccountID = Account.AccountID;
        message.Source = Source();
        message.UID = identity;
        message.MessageDate = item.Date.isValid() ? item.Date : QDateTime::currentDateTime();
        QString body = item.Link;
        if (!item.Text.isEmpty())
            body += QStringLiteral("\r\n\r\n") + item.Text;
        message.Mime = SourceMime::WithProcessHeaders(SourceMime::Compose(item.Title, body, message.MessageDate),
                                                      Account.AccountID, Source(), identity, false);
        if (item.Date.isValid() && (!batchNewest.isValid() || item.Date > batchNewest))
            batchNewest = item.Date;
        batch.append(std::move(message));
        if (batch.size() >= BatchMessages && !commit())
            break;
    }
    if (!result.Failed)
        commit();
    Account.RSSLastMessage = newest;
    return result;
}
