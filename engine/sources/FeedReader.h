#pragma once
#include "SourceReader.h"

#include <QDateTime>
#include <QList>

// Reads an RSS 2.0 or Atom 1.0 feed (RSSUrl; the document says which it
// is): one message per new item, its title as the subject, its link and
// text in the body, its guid or id (else its link) as identity. Items dated
// before RSSLastMessage are not new; the newest date queued moves it on.
class FeedReader : public SourceReader
{
public:
    QString Source() const override { return QStringLiteral("RSS"); }
    SourceReadResult Read(SourceAccount &Account, MessageSink &Sink) override;

    struct Item
    {
        QString Id;
        QString Title;
        QString Link;
        QString Text;
        QDateTime Date;
    };
    // The feed's items, oldest first; Problem set when it is neither RSS nor Atom.
    static QList<Item> Items(const QByteArray &Xml, QString &Problem);

    static constexpr int BatchMessages = 100;
};
