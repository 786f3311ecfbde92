#include "HttpPeer.h"
#include "RecordingSink.h"
#include "TestRegistry.h"

#include "engine/sources/FeedReader.h"
#include "engine/sources/HttpLookupReader.h"
#include "engine/sources/SourceMime.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QtTest>

using namespace Qt::StringLiterals;

// The HTTP lookup and the RSS and Atom feeds against a real HTTP server on
// loopback.
class tst_WebSources : public QObject
{
    Q_OBJECT

    HttpPeer m_web;

    SourceAccount Lookup(const QString &Path)
    {
        SourceAccount account;
        account.AccountID = u"WEB"_s;
        account.Name = u"Web"_s;
        account.HTTPUrl = m_web.Url(Path);
        account.TimeoutSeconds = 5;
        return account;
    }

    SourceAccount Feed(const QString &Path)
    {
        SourceAccount account;
        account.AccountID = u"FEED"_s;
        account.RSSUrl = m_web.Url(Path);
        account.RSSLastMessage = QDateTime(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC);
        account.TimeoutSeconds = 5;
        return account;
    }

    static QString Body(const SourceMessage &Message)
    {
        return QString::fromUtf8(Message.Mime.mid(Message.Mime.indexOf("\r\n\r\n") + 4));
    }

    static QByteArray Subject(const SourceMessage &Message) { return SourceMime::HeaderValue(Message.Mime, "Subject"); }

    static QByteArray Page(const QByteArray &Price)
    {
        return "<html><head><title>Prices</title><style>p{color:red}</style></head><body><p>Apples "
            + Price + "</p><script>track()</script></body></html>";
    }

private slots:
    void initTestCase() { QVERIFY2(m_web.Start(), qPrintable(m_web.Problem)); }

    void aLookupMakesAMessageWhenTheContentChangesOnce()
    {
        m_web.Put(u"page.html"_s, Page("3"));
        SourceAccount account = Lookup(u"moved/page.html"_s);
        RecordingSink sink;
        HttpLookupReader reader;
        SourceReadResult result = reader.Read(account, sink);
        QVERIFY2(!result.Failed, qPrintable(result.Failure));
        QCOMPARE(result.NewMessages, 1);
        QCOMPARE(Subject(sink.Queued.at(0)), QByteArray("Prices"));
        const QString body = Body(sink.Queued.at(0));
        QVERIFY2(body.contains(u"Apples 3"_s) && !body.contains(u"<p>"_s) && !body.contains(u"track()"_s), qPrintable(body));
        QVERIFY(sink.Queued.at(0).Mime.contains("Postvane-Source: HTTP\r\n"));

        QCOMPARE(reader.Read(account, sink).NewMessages, 0);
        m_web.Put(u"page.html"_s, Page("4"));
        // A read whose state was lost (the process ended before keeping it)
        // makes the same message, which the queue already has.
        const SourceAccount lost = account;
        QCOMPARE(reader.Read(account, sink).NewMessages, 1);
        SourceAccount again = lost;
        QCOMPARE(reader.Read(again, sink).NewMessages, 0);
        QCOMPARE(again.HTTPLastContentHash, account.HTTPLastContentHash);
        QCOMPARE(sink.Duplicates, 0);
        QCOMPARE(sink.Queued.size(), 2);

        // Raw content when it is not to be cleaned; a redirect not followed fails.
        SourceAccount raw = Lookup(u"page.html"_s);
        raw.HTTPClean = false;
        RecordingSink rawSink;
        QCOMPARE(reader.Read(raw, rawSink).NewMessages, 1);
        QVERIFY(Body(rawSink.Queued.at(0)).contains(u"<p>Apples 4</p>"_s));
        QCOMPARE(SourceMime::HeaderValue(rawSink.Queued.at(0).Mime, "Content-Type"), QByteArray("text/html; charset=utf-8"));
        SourceAccount stay = Lookup(u"moved/page.html"_s);
        stay.HTTPFollow = false;
        result = reader.Read(stay, rawSink);
        QVERIFY(result.Failed);
        QVERIFY2(result.Failure.endsWith(u"the server answered HTTP 302"_s), qPrintable(result.Failure));
    }

    void basicAndDigestLogOnWithoutShowingThePassword()
    {
        m_web.Put(u"secret.txt"_s, "members only\n");
        for (const int login : {1, 2}) {
            const QString path = (login == 1 ? u"basic/"_s : u"digest/"_s) + u"secret.txt"_s;
            SourceAccount account = Lookup(path);
            account.HTTPLogin = login;
            account.HTTPUser = u"watcher"_s;
            account.HTTPPass = m_web.Password;
            RecordingSink sink;
            SourceReadResult result = HttpLookupReader().Read(account, sink);
            QVERIFY2(!result.Failed, qPrintable(result.Failure));
            QCOMPARE(Body(sink.Queued.at(0)), u"members only\r\n"_s);

            SourceAccount wrong = Lookup(path);
            wrong.HTTPLogin = login;
            wrong.HTTPUser = u"watcher"_s;
            wrong.HTTPPass = u"guess123"_s;
            result = HttpLookupReader().Read(wrong, sink);
            QVERIFY2(result.Failed && result.Failure.endsWith(u"HTTP 401"_s), qPrintable(result.Failure));
            QVERIFY(!result.Failure.contains(u"guess123"_s));
            QCOMPARE(sink.Queued.size(), 1);
        }
    }

    void aFailedLookupMakesAMessageOnlyWhenAskedAndIsBounded()
    {
        SourceAccount account = Lookup(u"status/503"_s);
        RecordingSink sink;
        SourceReadResult result = HttpLookupReader().Read(account, sink);
        QVERIFY(result.Failed);
        QCOMPARE(result.NewMessages, 0);

        account.HTTPFail = true;
        result = HttpLookupReader().Read(account, sink);
        QVERIFY(result.Failed);
        QCOMPARE(result.NewMessages, 1);
        QCOMPARE(Subject(sink.Queued.at(0)), (u"HTTP lookup failed: "_s + m_web.Url(u"status/503"_s)).toUtf8());
        QVERIFY(Body(sink.Queued.at(0)).contains(u"HTTP 503"_s));

        // A server that takes the connection and never answers.
        QTcpServer silent;
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        SourceAccount stuck;
        stuck.AccountID = u"STUCK"_s;
        stuck.HTTPUrl = u"http://127.0.0.1:%1/"_s.arg(silent.serverPort());
        stuck.TimeoutSeconds = 1;
        QElapsedTimer clock;
        clock.start();
        result = HttpLookupReader().Read(stuck, sink);
        QVERIFY(result.Failed);
        QVERIFY(clock.elapsed() < 10000);
    }

    void rssItemsBecomeMessagesOnceFromTheLastDateOn()
    {
        const QByteArray head = "<?xml version=\"1.0\"?>\n<rss version=\"2.0\"><channel><title>News</title>"
                                "<item><title>Old news</title><link>http://example.com/0</link><guid>n-0</guid>"
                                "<pubDate>Mon, 04 Dec 2023 10:00:00 +0000</pubDate></item>"
                                "<item><title>Second &amp; last</title><link>http://example.com/2</link>"
                                "<description>&lt;p&gt;More &lt;b&gt;text&lt;/b&gt;&lt;/p&gt;</description>"
                                "<pubDate>Wed, 06 Mar 2024 09:30:00 +0100</pubDate></item>"
                                "<item><title>First</title><link>http://example.com/1</link><guid isPermaLink=\"false\">n-1</guid>"
                                "<description>Plain words</description><pubDate>Fri, 02 Feb 2024 08:00:00 GMT</pubDate></item>";
        m_web.Put(u"news.xml"_s, head + "</channel></rss>");
        SourceAccount account = Feed(u"news.xml"_s);
        RecordingSink sink;
        FeedReader reader;
        SourceReadResult result = reader.Read(account, sink);
        QVERIFY2(!result.Failed, qPrintable(result.Failure));
        QCOMPARE(result.NewMessages, 2);
        QCOMPARE(Subject(sink.Queued.at(0)), QByteArray("First"));
        QCOMPARE(sink.Queued.at(0).UID, u"n-1"_s);
        QCOMPARE(Body(sink.Queued.at(0)), u"http://example.com/1\r\n\r\nPlain words\r\n"_s);
        QCOMPARE(Subject(sink.Queued.at(1)), QByteArray("Second & last"));
        QCOMPARE(sink.Queued.at(1).UID, u"http://example.com/2"_s);
        QVERIFY(Body(sink.Queued.at(1)).contains(u"More text"_s));
        QCOMPARE(account.RSSLastMessage.toUTC(), QDateTime(QDate(2024, 3, 6), QTime(8, 30), Qt::UTC));

        QCOMPARE(reader.Read(account, sink).NewMessages, 0);
        m_web.Put(u"news.xml"_s, head + "<item><title>Third</title><guid>n-3</guid><pubDate>Thu, 07 Mar 2024 09:00:00 GMT</pubDate></item></channel></rss>");
        QCOMPARE(reader.Read(account, sink).NewMessages, 1);
        QCOMPARE(sink.Duplicates, 0);
    }

    void atomEntriesBecomeMessagesAndOtherDocumentsFail()
    {
        m_web.Put(u"feed.xml"_s,
                  "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<feed xmlns=\"http://www.w3.org/2005/Atom\"><title>Blog</title>"
                  "<entry><title type=\"html\">Caf&#233; opens</title><link rel=\"edit\" href=\"http://example.com/edit/1\"/>"
                  "<link href=\"http://example.com/posts/1\"/><id>urn:uuid:1</id><updated>2024-05-01T12:00:00Z</updated>"
                  "<summary type=\"html\">&lt;p&gt;Open daily&lt;/p&gt;</summary></entry>"
                  "<entry><title>Later</title><link rel=\"alternate\" href=\"http://example.com/posts/2\"/><id>urn:uuid:2</id>"
                  "<updated>2024-05-02T12:00:00+02:00</updated><content type=\"xhtml\"><div xmlns=\"http://www.w3.org/1999/xhtml\">"
                  "<p>Full text</p></div></content></entry></feed>");
        SourceAccount account = Feed(u"moved/feed.xml"_s);
        RecordingSink sink;
        const SourceReadResult result = FeedReader().Read(account, sink);
        QVERIFY2(!result.Failed, qPrintable(result.Failure));
        QCOMPARE(result.NewMessages, 2);
        QCOMPARE(sink.Queued.at(0).UID, u"urn:uuid:1"_s);
        QCOMPARE(Subject(sink.Queued.at(0)), "=?utf-8?B?" + u"Café opens"_s.toUtf8().toBase64() + "?=");
        QCOMPARE(Body(sink.Queued.at(0)), u"http://example.com/posts/1\r\n\r\nOpen daily\r\n"_s);
        QCOMPARE(Body(sink.Queued.at(1)), u"http://example.com/posts/2\r\n\r\nFull text\r\n"_s);
        QCOMPARE(account.RSSLastMessage.toUTC(), QDateTime(QDate(2024, 5, 2), QTime(10, 0), Qt::UTC));

        m_web.Put(u"page.html"_s, Page("5"));
        SourceAccount page = Feed(u"page.html"_s);
        const SourceReadResult notFeed = FeedReader().Read(page, sink);
        QVERIFY(notFeed.Failed);
        QVERIFY2(notFeed.Failure.endsWith(u"it is neither an RSS 2.0 nor an Atom 1.0 feed"_s), qPrintable(notFeed.Failure));
    }
};

POSTVANE_TEST(tst_WebSources)
#include "tst_WebSources.moc"
