#include "PushSubscription.h"
#include "ServerFixture.h"
#include "TestRegistry.h"
#include "model/GlobalCollections.h"

#include <QTest>

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
        PushSubscription admin(server, QStringLiteral("Admin"), QString());
        PushSubscription plain(server, QStringLiteral("watcher"), QStringLiteral("pw"));
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
        PushSubscription moved(server, QStringLiteral("moved"), QStringLiteral("old"));
        PushSubscription gone(server, QStringLiteral("gone"), QStringLiteral("pw"));
        PushSubscription bystander(server, QStringLiteral("watcher"), QStringLiteral("pw"));
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
        PushSubscription admin(server, QStringLiteral("Admin"), QString());
        PushSubscription plain(server, QStringLiteral("watcher"), QStringLiteral("pw"));
        QTRY_VERIFY(admin.Open() && plain.Open());
        QCOMPARE(server.Stop(), 0);
        QTRY_VERIFY(admin.Received(QStringLiteral("serverclosing.xml")) && admin.Ended());
        QTRY_VERIFY(plain.Received(QStringLiteral("serverclosing.xml")) && plain.Ended());
        QVERIFY(admin.LogLines().contains(QStringLiteral("Postvane Server stopping")));
    }
};

POSTVANE_TEST(tst_ServerPush)
#include "tst_ServerPush.moc"
