#include "TestRegistry.h"
#include "model/GlobalCollections.h"

#include <QTest>

namespace {

clsUserFolder *AddFolder(colUserFolders &folders, const QString &id, const QString &name,
                         const QString &userID = QString(), const QString &orgID = QString(),
                         const QString &email = QString())
{
    auto folder = std::make_unique<clsUserFolder>();
    folder->ID = id;
    folder->Name = name;
    folder->UserID = userID;
    folder->OrganizationID = orgID;
    folder->Email = email;
    return folders.Add(std::move(folder));
}

QString IDs(const colUserFolders &folders)
{
    QStringList ids;
    for (const clsUserFolder *folder : folders)
        ids << folder->ID;
    return ids.join(u',');
}

QString IDsIn(const QString &xml)
{
    colUserFolders folders;
    folders.setXML(xml);
    return IDs(folders);
}

QString IDOf(const clsUserFolder *folder)
{
    return folder ? folder->ID : QStringLiteral("none");
}

} // namespace

class tst_UserFolders : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { ResetGlobalCollections(); }

    void fullFolderAndCollectionRoundTrip()
    {
        clsUserFolder folder;
        folder.ID = QStringLiteral("F1");
        folder.UserID = QStringLiteral("U1");
        folder.Name = QStringLiteral("Orders & <Invoices>");
        folder.Parent = QStringLiteral("F0");
        folder.RecordNo = 42;
        folder.Email = QStringLiteral("orders@x.com;bills");
        folder.AccountID = QStringLiteral("A1");
        folder.OrganizationID = QStringLiteral("O1");
        const QString first = folder.XML();
        clsUserFolder copy;
        copy.setXML(first);
        QCOMPARE(copy.XML(), first);
        QCOMPARE(copy.Name + copy.Email + copy.AccountID, folder.Name + folder.Email + folder.AccountID);
        QCOMPARE(copy.RecordNo, 42);

        colUserFolders folders;
        folders.Add(std::make_unique<clsUserFolder>(copy));
        AddFolder(folders, QStringLiteral("F2"), QStringLiteral("Second"));
        colUserFolders again;
        again.setXML(folders.XML());
        QCOMPARE(again.XML(), folders.XML());
    }

    void badFragments()
    {
        clsUserFolder folder;
        folder.setXML(QStringLiteral("<Folder><RecordNo>abc</RecordNo><ID>late</ID><Name>x</Name></Folder>"));
        QCOMPARE(folder.RecordNo, 0);
        QCOMPARE(folder.ID, QStringLiteral("late"));
        QCOMPARE(folder.Name, QStringLiteral("x"));
        QCOMPARE(folder.AccountID, QString());

        QCOMPARE(IDsIn(QStringLiteral("<Folders><Folder><ID>F1</ID></Folder><Folder></Folder>"
                                      "<Folder><ID>f1</ID></Folder><Folder><ID>F2</ID>")),
                 QStringLiteral("F1"));
        QCOMPARE(IDsIn(QStringLiteral("<Folders></Folders>")), QString());
        // The Folders tag of a user fragment is no folder.
        QCOMPARE(IDsIn(QStringLiteral("<User><ID>U</ID><Folders>F1</Folders></User>")), QString());
    }

    void specialFoldersAreThePublicOnes()
    {
        colUserFolders folders;
        QCOMPARE(folders.SpamFolder(), nullptr);
        QVERIFY(!folders.ForSpamFolder(QStringLiteral("spam@x.com")));
        AddFolder(folders, QStringLiteral("US"), QStringLiteral("spam"), QStringLiteral("U1"), QString(),
                  QStringLiteral("*@x.com"));
        AddFolder(folders, QStringLiteral("UT"), QStringLiteral("Sent Items"), QStringLiteral("U1"));
        QCOMPARE(folders.SpamFolder(), nullptr);
        QCOMPARE(folders.SentItemsFolder(), nullptr);
        QVERIFY(!folders.ForSpamFolder(QStringLiteral("spam@x.com")));

        AddFolder(folders, QStringLiteral("S"), QStringLiteral("SPAM"), QString(), QString(),
                  QStringLiteral("junk*@x.com, spam@x.com"));
        AddFolder(folders, QStringLiteral("T"), QStringLiteral("sent items"));
        QCOMPARE(IDOf(folders.SpamFolder()), QStringLiteral("S"));
        QCOMPARE(IDOf(folders.SentItemsFolder()), QStringLiteral("T"));
        QVERIFY(folders.ForSpamFolder(QStringLiteral(" Junkmail@X.com")));
        QVERIFY(folders.ForSpamFolder(QStringLiteral("spam@x.com")));
        QVERIFY(!folders.ForSpamFolder(QStringLiteral("ham@x.com")));
    }

    void rootsInboxesAndOwners()
    {
        colUserFolders folders;
        clsUserFolder *child = AddFolder(folders, QStringLiteral("C"), QStringLiteral("child"), QString(), QStringLiteral("O1"));
        child->Parent = QStringLiteral("R");
        child->AccountID = QStringLiteral("A1");
        AddFolder(folders, QStringLiteral("R"), QStringLiteral("root"), QString(), QStringLiteral("O1"));
        AddFolder(folders, QStringLiteral("I"), QStringLiteral("Inbox"), QStringLiteral("U1"), QStringLiteral("O1"));
        clsUserFolder *second = AddFolder(folders, QStringLiteral("A"), QStringLiteral("acct"));
        second->AccountID = QStringLiteral("A1");

        QCOMPARE(IDOf(folders.RootFolder(QStringLiteral("O1"))), QStringLiteral("R"));
        QCOMPARE(folders.RootFolder(QStringLiteral("O9")), nullptr);
        QCOMPARE(folders.AccountRootFolderID(QStringLiteral("A1")), QStringLiteral("C"));
        QCOMPARE(folders.AccountRootFolderID(QString()), QString());
        QCOMPARE(folders.FolderNoFromID(QStringLiteral("i")), 3);
        QCOMPARE(folders.OrganizationIDForFolderID(QStringLiteral("C")), QStringLiteral("O1"));
        QCOMPARE(folders.OrganizationIDForFolderID(QStringLiteral("none")), QString());

        clsUser user;
        user.ID = QStringLiteral("U1");
        QCOMPARE(IDOf(folders.UsersInBox(&user)), QStringLiteral("I"));
        user.ID = QStringLiteral("U2");
        QCOMPARE(folders.UsersInBox(&user), nullptr);
        user.ID.clear();
        QCOMPARE(folders.UsersInBox(&user), nullptr);
        QCOMPARE(folders.UsersInBox(nullptr), nullptr);
    }

    void deleteForOwnerRemovesOnlyTheirFolders()
    {
        colUserFolders folders;
        AddFolder(folders, QStringLiteral("P"), QStringLiteral("public"), QString(), QStringLiteral("O1"));
        AddFolder(folders, QStringLiteral("U1a"), QStringLiteral("a"), QStringLiteral("U1"), QStringLiteral("O1"));
        AddFolder(folders, QStringLiteral("U2a"), QStringLiteral("b"), QStringLiteral("U2"), QStringLiteral("O2"));
        AddFolder(folders, QStringLiteral("U1b"), QStringLiteral("c"), QStringLiteral("U1"), QStringLiteral("O1"));
        folders.Item(QStringLiteral("U2a"))->AccountID = QStringLiteral("A1");

        folders.DeleteForUser(QString());
        folders.DeleteForAccount(QString());
        folders.DeleteForOrganization(QString());
        QCOMPARE(IDs(folders), QStringLiteral("P,U1a,U2a,U1b"));
        folders.DeleteForUser(QStringLiteral("U1"));
        QCOMPARE(IDs(folders), QStringLiteral("P,U2a"));
        folders.DeleteForAccount(QStringLiteral("A1"));
        QCOMPARE(IDs(folders), QStringLiteral("P"));
        folders.DeleteForOrganization(QStringLiteral("O1"));
        QCOMPARE(folders.Count(), 0);
        QCOMPARE(folders.Item(QStringLiteral("P")), nullptr);
    }

    void findFolderForEmailRoutesAddresses()
    {
        colUserFolders folders;
        AddFolder(folders, QStringLiteral("N"), QStringLiteral("no mail"));
        AddFolder(folders, QStringLiteral("F1"), QStringLiteral("orders"), QString(), QString(),
                  QStringLiteral("orders@shop.com;bills"));
        AddFolder(folders, QStringLiteral("F2"), QStringLiteral("catch"), QString(), QString(),
                  QStringLiteral("*@Shop.com"));
        const QString domain = QStringLiteral("example.com");
        const auto found = [&](const QString &address, const QString &notID = QString()) {
            return IDOf(folders.FindFolderForEmail(address, notID, domain));
        };
        QCOMPARE(found(QStringLiteral("Bills@example.com")), QStringLiteral("F1"));
        QCOMPARE(found(QStringLiteral("bills@shop.com")), QStringLiteral("F2"));
        QCOMPARE(found(QStringLiteral("orders@shop.com")), QStringLiteral("F1"));
        QCOMPARE(found(QStringLiteral("orders@shop.com"), QStringLiteral("F1")), QStringLiteral("F2"));
        QCOMPARE(found(QStringLiteral("bills@elsewhere.com")), QStringLiteral("none"));

        QVERIFY(folders.AcceptedDomain(QStringLiteral("SHOP.com")));
        QVERIFY(!folders.AcceptedDomain(QStringLiteral("example.com")));
    }

    void userFoldersXMLShowsWhatTheUserMaySee()
    {
        colUserFolders folders;
        AddFolder(folders, QStringLiteral("P1"), QStringLiteral("public"), QString(), QStringLiteral("O1"));
        AddFolder(folders, QStringLiteral("P2"), QStringLiteral("public 2"), QString(), QStringLiteral("O1"));
        AddFolder(folders, QStringLiteral("M"), QStringLiteral("mine"), QStringLiteral("U1"), QStringLiteral("O1"));
        AddFolder(folders, QStringLiteral("T"), QStringLiteral("theirs"), QStringLiteral("U2"), QStringLiteral("O1"));
        AddFolder(folders, QStringLiteral("X"), QStringLiteral("other org"), QString(), QStringLiteral("O2"));

        clsUser user;
        user.ID = QStringLiteral("U1");
        user.OrganizationID = QStringLiteral("O1");
        QCOMPARE(IDsIn(folders.UserFoldersXML(&user)), QStringLiteral("P1,P2,M"));
        user.Folders = QStringLiteral("P2,T,X");
        QCOMPARE(IDsIn(folders.UserFoldersXML(&user)), QStringLiteral("P2"));
        user.OrganizationAdmin = true;
        QCOMPARE(IDsIn(folders.UserFoldersXML(&user)), QStringLiteral("P1,P2,M,T"));
        user.Admin = true;
        QCOMPARE(IDsIn(folders.UserFoldersXML(&user)), QStringLiteral("P1,P2,M,T,X"));
        QCOMPARE(folders.UserFoldersXML(nullptr), QStringLiteral("<Folders>\n</Folders>\n"));
    }
};

POSTVANE_TEST(tst_UserFolders)
#include "tst_UserFolders.moc"
