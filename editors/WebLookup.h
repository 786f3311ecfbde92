#pragma once
#include <QByteArray>
#include <QString>

// One GET of a web address for the account editor's RSS, Atom and HTTP
// lookup tests: the product's user agent, redirects followed on request,
// Basic or Digest log-in, and a time-out after which it gives up. The wait
// turns the event loop, so the window stays usable.
class WebLookup
{
public:
    struct FeedItem
    {
        QString Title;
        QString Date;
        QString Text;
    };

    int TimeoutSeconds = 20;
    // 0 none, 1 Basic, 2 Digest: the index of the account's log-in combo.
    int Login = 0;
    QString User;
    QString Password;

    QByteArray Body;
    QString Error;

    // False, with Error saying why, when nothing usable came back.
    bool Fetch(const QString &Url, bool FollowRedirects);
    // The body as text, by the charset the reply named (UTF-8 otherwise).
    QString Text() const;
    // The first item of an RSS feed, or the first entry of an Atom feed.
    bool FirstItem(bool Atom, FeedItem &Item);

private:
    QString m_charset;
};
