#include "HttpLookupReader.h"

#include "HttpFetch.h"
#include "SourceMime.h"
#include "store/HtmlToText.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QStringDecoder>

namespace
{
QString Decoded(const QByteArray &Content, const QString &ContentType)
{
    static const QRegularExpression charset(QStringLiteral(R"(charset\s*=\s*"?([\w.:-]+))"),
                                            QRegularExpression::CaseInsensitiveOption);
    const QString name = charset.match(ContentType).captured(1);
    QStringDecoder decoder(name.isEmpty() ? "UTF-8" : qPrintable(name));
    if (!decoder.isValid())
        return QString::fromUtf8(Content);
    return decoder.decode(Content);
}

bool IsHtml(const QString &ContentType, const QString &Text)
{
    return ContentType.contains(QStringLiteral("html"), Qt::CaseInsensitive)
        || Text.left(1000).contains(QStringLiteral("<html"), Qt::CaseInsensitive);
}
}

HttpFetch HttpLookupReader::Fetch(const SourceAccount &Account)
{
    HttpFetch fetch;
    fetch.Url = Account.HTTPUrl;
    fetch.Follow = Account.HTTPFollow;
    fetch.LogOn = Account.HTTPLogin;
    fetch.User = Account.HTTPUser;
    fetch.Password = Account.HTTPPass;
    fetch.TimeoutSeconds = Account.TimeoutSeconds;
    return fetch;
}

bool HttpLookupReader::Queue(SourceAccount &Account, MessageSink &Sink, const QString &Hash, const QByteArray &Mime,
                             SourceReadResult &Result)
{
    const QString identity = QString::number(Account.HTTPMessages + 1) + u'|' + Hash;
    const MessageSink::Identity known = Sink.Lookup(Account.AccountID, Source(), identity);
    if (known == MessageSink::Identity::Unknown) {
        Result.Failed = true;
        Result.Failure = QStringLiteral("the edge queue cannot be read");
        return false;
    }
    if (known == MessageSink::Identity::New) {
        QList<SourceMessage> batch(1);
        batch[0].AccountID = Account.AccountID;
        batch[0].Source = Source();
        batch[0].UID = identity;
        batch[0].MessageDate = QDateTime::currentDateTime();
        batch[0].Mime = SourceMime::WithProcessHeaders(Mime, Account.AccountID, Source(), identity, false);
        if (!Sink.Queue(batch)) {
            Result.Failed = true;
            Result.Failure = QStringLiteral("the edge queue did not take the lookup's message");
            return false;
        }
        Result.NewMessages = 1;
    }
    ++Account.HTTPMessages;
    Account.HTTPLastMessage = QDateTime::currentDateTime();
    return true;
}

SourceReadResult HttpLookupReader::Read(SourceAccount &Account, MessageSink &Sink)
{
    SourceReadResult result;
    HttpFetch fetch = Fetch(Account);
    const QDateTime now = QDateTime::currentDateTime();
    if (!fetch.Get()) {
        result.Failed = true;
        result.Failure = fetch.Error;
        if (Account.HTTPFail) {
            const QByteArray mime = SourceMime::Compose(QStringLiteral("HTTP lookup failed: ") + fetch.Where(),
                                                        QStringLiteral("The lookup of %1 failed at %2.\r\n%3\r\n")
                                                            .arg(fetch.Where(), now.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")), fetch.Error),
                                                        now);
            // The content that comes back next is compared with the last one that came.
            if (Queue(Account, Sink, QStringLiteral("failed"), mime, result))
                result.Note = QStringLiteral("a message for the failure");
        }
        return result;
    }
    const QString content = Decoded(fetch.Content, fetch.ContentType);
    const bool html = IsHtml(fetch.ContentType, content);
    const QString body = Account.HTTPClean && html ? HtmlToText(content) : content;
    const QString hash = QString::fromLatin1(QCryptographicHash::hash(body.toUtf8(), QCryptographicHash::Sha256).toHex().left(32));
    if (hash == Account.HTTPLastContentHash)
        return result;
    static const QRegularExpression titleTag(QStringLiteral(R"(<title[^>]*>([^<]*)</title>)"), QRegularExpression::CaseInsensitiveOption);
    QString title = html ? HtmlToText(titleTag.match(content).captured(1)).simplified() : QString();
    if (title.isEmpty())
        title = fetch.Where();
    if (Queue(Account, Sink, hash, SourceMime::Compose(title, body, now, html && !Account.HTTPClean), result))
        Account.HTTPLastContentHash = hash;
    return result;
}
