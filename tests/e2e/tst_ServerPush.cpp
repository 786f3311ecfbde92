#include "ServerFixture.h"
#include "TestRegistry.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"
#include "session/clsPushStream.h"

#include <QTest>

namespace {

// One subscription of the push channel, read as the console reads it.
class Subscription
{
public:
    Subscription(ServerFixture &Server, const QString &User, const QString &Password)
        : m_stream(QStringLiteral("Postvane"))
    {
        m_reply = Server.Send(Server.Url(QStringLiteral("subscribe.xml?nodename=testbox&text=3.0"), User, Password));
        QObject::connect(m_reply, &QNetworkReply::readyRead, [this] { Blocks += m_stream.Append(m_reply->readAll()); });
    }
    ~Subscription() { delete m_reply; }

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

} // namespace

// The push channel: log lines, being logged out, the server closing.
class tst_ServerPush : public QObject
{
    Q_OBJECT
    ServerFixture server;

    void AddUser(const QString &ID, const QString &Name, const QString &Password)
    {
        clsUser user;
        user.ID = ID;
        user.Username = Name;
        user.Password = Password;
        QCOMPARE(server.Post(QStringLiteral("postuser.htm?userid=") + ID, user.XML().toUtf8()).Text(), QStringLiteral("OK"));
    }

private slots:
    void initTestCase() { QVERIFY2(server.Start(), qPrintable(server.Problem)); }

    void logLinesReachAdministratorsOnly()
    {
        AddUser(QStringLiteral("Watcher1"), QStringLiteral("watcher"), QStringLiteral("pw"));
        Subscription admin(server, QStringLiteral("Admin"), QString());
        Subscription plain(server, QStringLiteral("watcher"), QStringLiteral("pw"));
        QTRY_VERIFY(admin.Open() && plain.Open());
        QVERIFY(admin.Location().startsWith("/subscribe.xml?"));

        clsUserOrganization organization;
        organization.ID = QStringLiteral("Pushed1");
        organization.Name = QStringLiteral("Pushed & Co");
        QCOMPARE(server.Post(QStringLiteral("postorganization.htm?organizationid=Pushed1"), organization.XML().toUtf8()).Text(),
                 QStringLiteral("OK"));
        QTRY_VERIFY(admin.LogLines().contains(QStringLiteral("Organization Pushed & Co saved by Admin")));
        QVERIFY(plain.LogLines().isEmpty());
    }

    void changedPasswordOrDeletionLogsTheUserOut()
    {
        AddUser(QStringLiteral("Moved1"), QStringLiteral("moved"), QStringLiteral("old"));
        AddUser(QStringLiteral("Gone1"), QStringLiteral("gone"), QStringLiteral("pw"));
        Subscription moved(server, QStringLiteral("moved"), QStringLiteral("old"));
        Subscription gone(server, QStringLiteral("gone"), QStringLiteral("pw"));
        Subscription bystander(server, QStringLiteral("watcher"), QStringLiteral("pw"));
        QTRY_VERIFY(moved.Open() && gone.Open() && bystander.Open());

        AddUser(QStringLiteral("Moved1"), QStringLiteral("moved"), QStringLiteral("new"));
        QCOMPARE(server.Get(QStringLiteral("deleteuser.xml?userid=Gone1")).Text(), QStringLiteral("OK"));
        QTRY_VERIFY(moved.Received(QStringLiteral("disconnected.xml")) && moved.Ended());
        QTRY_VERIFY(gone.Received(QStringLiteral("disconnected.xml")) && gone.Ended());
        QVERIFY(!bystander.Received(QStringLiteral("disconnected.xml")));
        QVERIFY(!bystander.Ended());
    }

    void stoppingTellsEverySubscriber()
    {
        Subscription admin(server, QStringLiteral("Admin"), QString());
        Subscription plain(server, QStringLiteral("watcher"), QStringLiteral("pw"));
        QTRY_VERIFY(admin.Open() && plain.Open());
        QCOMPARE(server.Stop(), 0);
        QTRY_VERIFY(admin.Received(QStringLiteral("serverclosing.xml")) && admin.Ended());
        QTRY_VERIFY(plain.Received(QStringLiteral("serverclosing.xml")) && plain.Ended());
        QVERIFY(admin.LogLines().contains(QStringLiteral("Postvane Server stopping")));
    }
};

POSTVANE_TEST(tst_ServerPush)
#include "tst_ServerPush.moc"
