#pragma once
#include "ServerFixture.h"
#include "foundation/clsXML.h"
#include "session/clsPushStream.h"

#include <QNetworkReply>

// One subscription of the push channel, read as the console reads it.
class PushSubscription
{
public:
    PushSubscription(ServerFixture &Server, const QString &User, const QString &Password)
        : m_stream(QStringLiteral("Postvane"))
    {
        m_reply = Server.Send(Server.Url(QStringLiteral("subscribe.xml?nodename=testbox&text=3.0"), User, Password));
        QObject::connect(m_reply, &QNetworkReply::readyRead, [this] { Blocks += m_stream.Append(m_reply->readAll()); });
    }
    ~PushSubscription() { delete m_reply; }

    bool Open() const { return m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() == 200; }
    bool Ended() const { return m_reply->isFinished(); }
    QByteArray Location() const { return m_reply->rawHeader("Content-Location"); }
    // The bodies of log.xml blocks: their Msg values.
    QStringList LogLines() const
    {
        QStringList lines;
        for (const clsPushStream::Block &block : Blocks) {
            if (block.Location != QStringLiteral("log.xml"))
                continue;
            clsXML body(block.Body);
            QString source, log, message;
            body.Extract(source, QStringLiteral("Source"));
            body.Extract(log, QStringLiteral("Log"), true);
            clsXML(log).Extract(message, QStringLiteral("Msg"));
            if (source == QStringLiteral("Server"))
                lines << message;
        }
        return lines;
    }
    bool Received(const QString &Location) const
    {
        for (const clsPushStream::Block &block : Blocks)
            if (block.Location == Location)
                return true;
        return false;
    }

    QList<clsPushStream::Block> Blocks;

private:
    clsPushStream m_stream;
    QNetworkReply *m_reply;
};
