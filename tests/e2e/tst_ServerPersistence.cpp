#include "ServerFixture.h"
#include "TestRegistry.h"
#include "model/GlobalCollections.h"

#include <QFile>
#include <QSet>
#include <QTest>

// What the server acknowledged survives a stop, and a kill at any moment.
class tst_ServerPersistence : public QObject
{
    Q_OBJECT
    ServerFixture server;

    static QByteArray ReadFile(const QString &Path)
    {
        QFile file(Path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private slots:
    void initTestCase() { QVERIFY2(server.Start(), qPrintable(server.Problem)); }

    void restartKeepsEverything()
    {
        clsUserOrganization organization;
        organization.ID = QStringLiteral("Keep1");
        organization.Name = QStringLiteral("Kept Ltd");
        organization.Domain = QStringLiteral("kept.example");
        QCOMPARE(server.Post(QStringLiteral("postorganization.htm?organizationid=Keep1"), organization.XML().toUtf8()).Text(),
                 QStringLiteral("OK"));
        clsUser user;
        user.ID = QStringLiteral("KeepU");
        user.Username = QStringLiteral("keeper");
        user.Password = QStringLiteral("s3cret");
        user.OrganizationID = QStringLiteral("Keep1");
        user.Email = QStringLiteral("keeper@kept.example");
        QCOMPARE(server.Post(QStringLiteral("postuser.htm?userid=KeepU"), user.XML().toUtf8()).Text(), QStringLiteral("OK"));
        QCOMPARE(server.Get(QStringLiteral("addfolder.xml?folderid=KeepF&folder=Archive"), QStringLiteral("keeper"),
                            QStringLiteral("s3cret"))
                     .Text(),
                 QStringLiteral("OK"));
        const QByteArray users = server.Get(QStringLiteral("getusers.xml")).Body;
        const QByteArray organizations = server.Get(QStringLiteral("getorganizations.xml")).Body;
        const QByteArray folders = server.Get(QStringLiteral("getfolders.xml")).Body;
        const QByteArray certificate = ReadFile(server.DataPath() + QStringLiteral("ServerCertificate.pem"));
        for (const QString &file : {QStringLiteral("MessageStore.db3"), QStringLiteral("MessageStore.db3-wal")})
            QVERIFY(!ReadFile(server.DataPath() + file).contains("s3cret"));

        QCOMPARE(server.Stop(), 0);
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QCOMPARE(server.Get(QStringLiteral("getusers.xml")).Body, users);
        QCOMPARE(server.Get(QStringLiteral("getorganizations.xml")).Body, organizations);
        QCOMPARE(server.Get(QStringLiteral("getfolders.xml")).Body, folders);
        QCOMPARE(server.Get(QStringLiteral("getsession.xml"), QStringLiteral("keeper"), QStringLiteral("s3cret")).Status, 200);
        QCOMPARE(ReadFile(server.DataPath() + QStringLiteral("ServerCertificate.pem")), certificate);
    }

    // Posts fly on several connections at once; the process is killed while
    // they do. Every folder whose "OK" arrived is there after the restart,
    // and every folder there is whole.
    void killDuringBurstLosesNothingAcknowledged()
    {
        constexpr int Posts = 150;
        QList<QNetworkReply *> pending;
        for (int i = 0; i < Posts; ++i)
            pending << server.Send(server.Url(QStringLiteral("addfolder.xml?folderid=Burst%1&folder=Burst%20%1").arg(i)));
        QSet<QString> acknowledged;
        int finished = 0;
        for (QNetworkReply *reply : pending)
            QObject::connect(reply, &QNetworkReply::finished, [&, reply] {
                ++finished;
                if (reply->readAll() != "OK")
                    return;
                acknowledged << reply->url().query().section(u'&', 0, 0).section(u'=', 1);
                if (acknowledged.size() == Posts / 4)
                    server.Kill();
            });
        QTRY_COMPARE_WITH_TIMEOUT(finished, Posts, 60000);
        qDeleteAll(pending);
        QVERIFY(!server.Running());
        QVERIFY(acknowledged.size() < Posts);

        QVERIFY2(server.Start(), qPrintable(server.Problem));
        colUserFolders folders;
        folders.setXML(server.Get(QStringLiteral("getfolders.xml")).Text());
        for (const QString &id : acknowledged)
            QVERIFY2(folders.Item(id), qPrintable(id + QStringLiteral(" was acknowledged but is lost")));
        for (const clsUserFolder *folder : folders)
            if (folder->ID.startsWith(u"Burst")) {
                QCOMPARE(folder->Name, QStringLiteral("Burst ") + folder->ID.mid(5));
                QVERIFY(folder->RecordNo > 0);
            }
        QCOMPARE(server.Get(QStringLiteral("getsession.xml"), QStringLiteral("keeper"), QStringLiteral("s3cret")).Status, 200);
    }

    void cleanupTestCase() { server.Stop(); }
};

POSTVANE_TEST(tst_ServerPersistence)
#include "tst_ServerPersistence.moc"
