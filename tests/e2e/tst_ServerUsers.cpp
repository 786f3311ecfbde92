#include "ServerFixture.h"
#include "TestRegistry.h"
#include "model/GlobalCollections.h"

#include <QTest>

namespace {

QByteArray UserFragment(const QString &ID, const QString &Name, const QString &Password,
                        const QString &OrganizationID, bool OrganizationAdmin = false, const QString &Email = QString())
{
    clsUser user;
    user.ID = ID;
    user.Username = Name;
    user.Password = Password;
    user.OrganizationID = OrganizationID;
    user.OrganizationAdmin = OrganizationAdmin;
    user.Email = Email;
    return user.XML().toUtf8();
}

QByteArray OrganizationFragment(const QString &ID, const QString &Name)
{
    clsUserOrganization organization;
    organization.ID = ID;
    organization.Name = Name;
    return organization.XML().toUtf8();
}

} // namespace

// Users, organizations and folders through the web service, and who may
// touch which of them.
class tst_ServerUsers : public QObject
{
    Q_OBJECT
    ServerFixture server;

    QString Ok(const HttpReply &Reply) { return Reply.Status == 200 ? Reply.Text() : QString::number(Reply.Status) + u' ' + Reply.Text(); }

    colUsers ReadUsers(const QString &As = QStringLiteral("Admin"), const QString &Password = QString())
    {
        colUsers users;
        users.setXML(server.Get(QStringLiteral("getusers.xml"), As, Password).Text());
        return users;
    }
    colUserFolders ReadFolders(const QString &As = QStringLiteral("Admin"), const QString &Password = QString())
    {
        colUserFolders folders;
        folders.setXML(server.Get(QStringLiteral("getfolders.xml"), As, Password).Text());
        return folders;
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QCOMPARE(Ok(server.Post(QStringLiteral("postorganization.htm?organizationid=OrgA"),
                                OrganizationFragment(QStringLiteral("OrgA"), QStringLiteral("Acme")))),
                 QStringLiteral("OK"));
        QCOMPARE(Ok(server.Post(QStringLiteral("postorganization.htm?organizationid=OrgB"),
                                OrganizationFragment(QStringLiteral("OrgB"), QStringLiteral("Bolt")))),
                 QStringLiteral("OK"));
        QCOMPARE(Ok(server.Post(QStringLiteral("postuser.htm?userid=AliceA"),
                                UserFragment(QStringLiteral("AliceA"), QStringLiteral("alice"), QStringLiteral("pw-alice"),
                                             QStringLiteral("OrgA"), true, QStringLiteral("alice@acme.example")))),
                 QStringLiteral("OK"));
        QCOMPARE(Ok(server.Post(QStringLiteral("postuser.htm?userid=BobB"),
                                UserFragment(QStringLiteral("BobB"), QStringLiteral("bob"), QStringLiteral("pw-bob"),
                                             QStringLiteral("OrgB"), true))),
                 QStringLiteral("OK"));
        QCOMPARE(Ok(server.Get(QStringLiteral("addfolder.xml?folderid=FolderB&folder=Bolt%20Inbox"), QStringLiteral("bob"),
                               QStringLiteral("pw-bob"))),
                 QStringLiteral("OK"));
    }

    void usersReadBackWithoutPasswords()
    {
        const colUsers users = ReadUsers();
        QCOMPARE(users.Count(), 3);
        const clsUser *alice = users.Item(QStringLiteral("AliceA"));
        QVERIFY(alice);
        QCOMPARE(alice->Username, QStringLiteral("alice"));
        QCOMPARE(alice->OrganizationID, QStringLiteral("OrgA"));
        QCOMPARE(alice->Email, QStringLiteral("alice@acme.example"));
        QVERIFY(alice->OrganizationAdmin);
        for (const QString &request : {QStringLiteral("getusers.xml"), QStringLiteral("getuser.xml?userid=AliceA")}) {
            const HttpReply reply = server.Get(request);
            QCOMPARE(reply.Status, 200);
            QVERIFY2(!reply.Body.contains("<Password>"), reply.Body.constData());
        }
    }

    void passwordsPassAsDigestOrPlainText()
    {
        QCOMPARE(server.Get(QStringLiteral("getsession.xml"), QStringLiteral("alice"), QStringLiteral("pw-alice")).Status, 200);
        const HttpReply plain = ServerFixture::Finish(server.Send(QUrl(
            QStringLiteral("https://127.0.0.1:%1/getsession.xml?username=alice&password=pw-alice").arg(server.Port))));
        QCOMPARE(plain.Status, 200);
        QCOMPARE(server.Get(QStringLiteral("getsession.xml"), QStringLiteral("alice"), QStringLiteral("pw-bob")).Status, 401);
    }

    void emptyPasswordKeepsTheStoredOne()
    {
        QByteArray renamed = UserFragment(QStringLiteral("AliceA"), QStringLiteral("alice"), QString(),
                                          QStringLiteral("OrgA"), true, QStringLiteral("alice@acme.example"));
        renamed.replace("<ID>AliceA</ID>", "<ID>AliceA</ID>\n<Fullname>Alice A.</Fullname>");
        QCOMPARE(Ok(server.Post(QStringLiteral("postuser.htm?userid=AliceA"), renamed)), QStringLiteral("OK"));
        QCOMPARE(server.Get(QStringLiteral("getsession.xml"), QStringLiteral("alice"), QStringLiteral("pw-alice")).Status, 200);

        QCOMPARE(Ok(server.Post(QStringLiteral("postuser.htm?userid=AliceA"),
                                UserFragment(QStringLiteral("AliceA"), QStringLiteral("alice"), QStringLiteral("pw-new"),
                                             QStringLiteral("OrgA"), true))),
                 QStringLiteral("OK"));
        QCOMPARE(server.Get(QStringLiteral("getsession.xml"), QStringLiteral("alice"), QStringLiteral("pw-alice")).Status, 401);
        QCOMPARE(server.Get(QStringLiteral("getsession.xml"), QStringLiteral("alice"), QStringLiteral("pw-new")).Status, 200);
    }

    void organizationsAndFoldersRoundTrip()
    {
        const HttpReply organizations = server.Get(QStringLiteral("getorganizations.xml"));
        colOrganization read;
        read.setXML(organizations.Text());
        QCOMPARE(read.Count(), 3);
        QCOMPARE(read.Item(QStringLiteral("OrgA"))->Name, QStringLiteral("Acme"));

        const QString as = QStringLiteral("alice"), password = QStringLiteral("pw-new");
        QCOMPARE(Ok(server.Get(QStringLiteral("addfolder.xml?folderid=TopA&folder=Acme%20%26%20Co"), as, password)),
                 QStringLiteral("OK"));
        QCOMPARE(Ok(server.Get(QStringLiteral("addfolder.xml?folderid=SubA&parentid=TopA&folder=Orders"), as, password)),
                 QStringLiteral("OK"));
        QCOMPARE(Ok(server.Get(QStringLiteral("updatefolder.xml?folderid=SubA&parentid=TopA&folder=Invoices"
                                              "&email=bills%40acme.example"),
                               as, password)),
                 QStringLiteral("OK"));
        colUserFolders folders = ReadFolders(as, password);
        QCOMPARE(folders.Count(), 2);
        const clsUserFolder *top = folders.Item(QStringLiteral("TopA"));
        const clsUserFolder *sub = folders.Item(QStringLiteral("SubA"));
        QVERIFY(top && sub);
        QCOMPARE(top->Name, QStringLiteral("Acme & Co"));
        QCOMPARE(top->OrganizationID, QStringLiteral("OrgA"));
        QVERIFY(top->RecordNo > 0);
        QCOMPARE(sub->Name, QStringLiteral("Invoices"));
        QCOMPARE(sub->Parent, QStringLiteral("TopA"));
        QCOMPARE(sub->Email, QStringLiteral("bills@acme.example"));

        QCOMPARE(server.Get(QStringLiteral("updatefolder.xml?folderid=TopA&parentid=SubA&folder=Loop"), as, password).Text(),
                 QStringLiteral("Error: A folder cannot hang below itself."));
        QCOMPARE(ReadFolders(as, password).Item(QStringLiteral("TopA"))->Parent, QString());
        QCOMPARE(Ok(server.Get(QStringLiteral("deletefolder.xml?folderid=TopA"), as, password)),
                 QStringLiteral("OK,TopA,SubA"));
        QCOMPARE(ReadFolders(as, password).Count(), 0);
    }

    void organizationAdministratorStaysInsideItsOrganization()
    {
        const QString as = QStringLiteral("alice"), password = QStringLiteral("pw-new");
        const colUsers visible = ReadUsers(as, password);
        QVERIFY(visible.Item(QStringLiteral("AliceA")));
        QVERIFY(!visible.Item(QStringLiteral("BobB")));
        QVERIFY(server.Get(QStringLiteral("getuser.xml?userid=BobB"), as, password).Refused());
        QVERIFY(!ReadFolders(as, password).Item(QStringLiteral("FolderB")));
        QVERIFY(!server.Get(QStringLiteral("getorganizations.xml"), as, password).Body.contains("Bolt"));

        const QByteArray bobChanged = UserFragment(QStringLiteral("BobB"), QStringLiteral("bob"), QStringLiteral("taken"),
                                                   QStringLiteral("OrgB"));
        QVERIFY(server.Post(QStringLiteral("postuser.htm?userid=BobB"), bobChanged, as, password).Refused());
        QVERIFY(server.Post(QStringLiteral("postuser.htm?userid=NewInB"),
                             UserFragment(QStringLiteral("NewInB"), QStringLiteral("mole"), QString(), QStringLiteral("OrgB")),
                             as, password)
                     .Refused());
        QByteArray selfPromotion = UserFragment(QStringLiteral("AliceA"), QStringLiteral("alice"), QString(),
                                                QStringLiteral("OrgA"), true);
        selfPromotion.replace("</OrganizationAdmin>", "</OrganizationAdmin>\n<Admin>-1</Admin>");
        QVERIFY(server.Post(QStringLiteral("postuser.htm?userid=AliceA"), selfPromotion, as, password).Refused());
        QVERIFY(server.Get(QStringLiteral("deleteuser.xml?userid=BobB"), as, password).Refused());
        QVERIFY(server.Get(QStringLiteral("updatefolder.xml?folderid=FolderB&folder=Mine"), as, password).Refused());
        QVERIFY(server.Get(QStringLiteral("deletefolder.xml?folderid=FolderB"), as, password).Refused());
        QVERIFY(server.Post(QStringLiteral("postorganization.htm?organizationid=OrgB"),
                             OrganizationFragment(QStringLiteral("OrgB"), QStringLiteral("Taken")), as, password)
                     .Refused());

        // Nothing of the other organization changed.
        QCOMPARE(server.Get(QStringLiteral("getsession.xml"), QStringLiteral("bob"), QStringLiteral("pw-bob")).Status, 200);
        const colUsers all = ReadUsers();
        QVERIFY(!all.Item(QStringLiteral("NewInB")));
        QVERIFY(!all.Item(QStringLiteral("AliceA"))->Admin);
        QCOMPARE(ReadFolders().Item(QStringLiteral("FolderB"))->Name, QStringLiteral("Bolt Inbox"));
        QVERIFY(server.Get(QStringLiteral("getorganizations.xml")).Body.contains("Bolt"));

        // Inside its own organization it does administer.
        QCOMPARE(Ok(server.Post(QStringLiteral("postuser.htm?userid=CarolA"),
                                UserFragment(QStringLiteral("CarolA"), QStringLiteral("carol"), QString(), QString()), as,
                                password)),
                 QStringLiteral("OK"));
        QCOMPARE(ReadUsers().Item(QStringLiteral("CarolA"))->OrganizationID, QStringLiteral("OrgA"));
        QCOMPARE(Ok(server.Get(QStringLiteral("deleteuser.xml?userid=CarolA"), as, password)), QStringLiteral("OK"));
    }

    void rulesOfTheRecords()
    {
        const colUsers users = ReadUsers();
        const QString adminID = users.Item(users.UserNoFromName(QStringLiteral("Admin")))->ID;
        QCOMPARE(server.Post(QStringLiteral("postuser.htm?userid=Twin1"),
                             UserFragment(QStringLiteral("Twin1"), QStringLiteral("ALICE"), QString(), QStringLiteral("OrgA")))
                     .Text(),
                 QStringLiteral("Error: A user already exists with this username."));
        QVERIFY(server.Get(QStringLiteral("deleteuser.xml?userid=") + adminID).Text().startsWith(u"Error:"));
        QVERIFY(server.Get(QStringLiteral("deleteorganization.xml?organizationid=OrgB")).Text().startsWith(u"Error:"));
        QCOMPARE(ReadUsers().Count(), users.Count());

        QCOMPARE(Ok(server.Get(QStringLiteral("deleteuser.xml?userid=BobB"))), QStringLiteral("OK"));
        // Bob's folder is his organization's and stays with it.
        QVERIFY(ReadFolders().Item(QStringLiteral("FolderB")));
        QCOMPARE(server.Get(QStringLiteral("getsession.xml"), QStringLiteral("bob"), QStringLiteral("pw-bob")).Status, 401);
        QCOMPARE(Ok(server.Get(QStringLiteral("deleteorganization.xml?organizationid=OrgB"))), QStringLiteral("OK"));
        QVERIFY(!ReadFolders().Item(QStringLiteral("FolderB")));
    }

    void cleanupTestCase() { server.Stop(); }
};

POSTVANE_TEST(tst_ServerUsers)
#include "tst_ServerUsers.moc"
