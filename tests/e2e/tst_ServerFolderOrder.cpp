#include "ServerFixture.h"
#include "TestRegistry.h"
#include "model/colUserFolders.h"
#include "model/colUsers.h"

#include <QTest>

// Folders come back from the store in the order of their users, and of
// their place among each user's folders, whatever order they were made in.
class tst_ServerFolderOrder : public QObject
{
    Q_OBJECT
    ServerFixture server;

    QString Ok(const QString &Request, const QByteArray &Body = QByteArray(), const QString &As = QStringLiteral("Admin"))
    {
        const QString password = As == QStringLiteral("Admin") ? QString() : QStringLiteral("pw");
        return (Body.isNull() ? server.Get(Request, As, password) : server.Post(Request, Body, As, password)).Text();
    }

private slots:
    void initTestCase() { QVERIFY2(server.Start(), qPrintable(server.Problem)); }

    void foldersAreReadInTheOrderOfTheirUsers()
    {
        colUsers users;
        users.setXML(server.Get(QStringLiteral("getusers.xml")).Text());
        for (const QString &id : {QStringLiteral("Zed1"), QStringLiteral("Amy1")}) {
            clsUser user;
            user.ID = id;
            user.Username = id.toLower();
            user.Password = QStringLiteral("pw");
            user.OrganizationID = users.Item(1)->OrganizationID;
            QCOMPARE(Ok(QStringLiteral("postuser.htm?userid=") + id, user.XML().toUtf8()), QStringLiteral("OK"));
        }
        QCOMPARE(Ok(QStringLiteral("addfolder.xml?folderid=ZedF&folder=Z"), QByteArray(), QStringLiteral("zed1")),
                 QStringLiteral("OK"));
        QCOMPARE(Ok(QStringLiteral("addfolder.xml?folderid=AmyF&folder=A"), QByteArray(), QStringLiteral("amy1")),
                 QStringLiteral("OK"));
        QCOMPARE(Ok(QStringLiteral("addfolder.xml?folderid=SharedF&folder=S")), QStringLiteral("OK"));

        QCOMPARE(server.Stop(), 0);
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        colUserFolders folders;
        folders.setXML(server.Get(QStringLiteral("getfolders.xml")).Text());
        QStringList order;
        for (const clsUserFolder *folder : folders)
            order << folder->ID;
        QCOMPARE(order, (QStringList{QStringLiteral("SharedF"), QStringLiteral("AmyF"), QStringLiteral("ZedF")}));
    }

    void cleanupTestCase() { server.Stop(); }
};

POSTVANE_TEST(tst_ServerFolderOrder)
#include "tst_ServerFolderOrder.moc"
