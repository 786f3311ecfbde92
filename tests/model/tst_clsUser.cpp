#include "TestRegistry.h"
#include "model/GlobalCollections.h"

#include <QTest>

namespace {

// A user with every property set, text chosen to need escaping.
clsUser FullUser()
{
    clsUser user;
    user.ID = QStringLiteral("U1");
    user.Username = QStringLiteral("jdoe");
    user.Password = QStringLiteral("p<&>'\"w\td");
    user.Fullname = QStringLiteral("Jane \u00d6sterberg \u5f20");
    user.Email = QStringLiteral("jane@other.org,sales");
    user.OrganizationID = QStringLiteral("O1");
    user.OrganizationAdmin = true;
    user.Admin = true;
    user.AllowPOP3Imap = true;
    user.Folders = QStringLiteral("F1,F2");
    user.Forward = true;
    user.ForwardTo = QStringLiteral("boss@example.com");
    user.ForwardOnly = true;
    return user;
}

clsUserFolder *AddFolder(const QString &id, const QString &name, const QString &userID, const QString &orgID)
{
    auto folder = std::make_unique<clsUserFolder>();
    folder->ID = id;
    folder->Name = name;
    folder->UserID = userID;
    folder->OrganizationID = orgID;
    return UserFolders().Add(std::move(folder));
}

clsUserFolder Folder(const QString &id, const QString &orgID)
{
    clsUserFolder folder;
    folder.ID = id;
    folder.OrganizationID = orgID;
    return folder;
}

} // namespace

class tst_clsUser : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { ResetGlobalCollections(); }

    void fullUserRoundTrips()
    {
        const clsUser original = FullUser();
        const QString first = original.XML();
        QVERIFY(first.contains(QStringLiteral("\t<Password>p&lt;&amp;&gt;&apos;&quot;w#x9;d</Password>\n"))); // plain
        clsUser copy;
        copy.setXML(first);
        QCOMPARE(copy.XML(), first);
        QCOMPARE(copy.Password, original.Password);
        QCOMPARE(copy.Fullname, original.Fullname);
        QVERIFY(copy.ForwardOnly);
    }

    void absentAndMisorderedTagsGiveEmptyValues()
    {
        clsUser user = FullUser();
        user.setXML(QStringLiteral("<User><ID>U9</ID></User>"));
        QCOMPARE(user.XML(), QStringLiteral("<User>\n\t<ID>U9</ID>\n</User>\n"));

        // Misordered: what stands before a tag already read is not found.
        user.setXML(QStringLiteral("<Email>a@b.c</Email><UserName>x</UserName>"));
        QCOMPARE(user.Username, QStringLiteral("x"));
        QCOMPARE(user.Email, QString());
    }

    void emailListHelpers()
    {
        clsUser user;
        user.Email = QStringLiteral(" a@x.com , b ,,c@y.org,");
        QCOMPARE(user.EmailCount(), 3);
        QCOMPARE(user.EmailAddress(1), QStringLiteral("a@x.com"));
        QCOMPARE(user.EmailAddress(2), QStringLiteral("b"));
        QCOMPARE(user.EmailAddress(0), QString());
        QCOMPARE(user.EmailAddress(4), QString());
        QCOMPARE(user.EmailList(), QStringLiteral("a@x.com\r\nb\r\nc@y.org"));
        user.Email.clear();
        QCOMPARE(user.EmailCount(), 0);
    }

    void defaultAddressTakesOrganizationDomainElseDefaultDomain()
    {
        auto organization = std::make_unique<clsUserOrganization>();
        organization->ID = QStringLiteral("O1");
        organization->Name = QStringLiteral("Acme");
        organization->Domain = QStringLiteral("acme.com");
        Organizations().Add(std::move(organization));

        clsUser user;
        user.Email = QStringLiteral("jane@other.org,sales");
        user.OrganizationID = QStringLiteral("O1");
        QCOMPARE(user.Organization(), QStringLiteral("Acme"));
        QCOMPARE(user.EmailAddressDefault(QStringLiteral("fallback.net")), QStringLiteral("jane@acme.com"));

        Organizations().Item(1)->Domain.clear();
        QCOMPARE(user.EmailAddressDefault(QStringLiteral("fallback.net")), QStringLiteral("jane@fallback.net"));
        user.OrganizationID = QStringLiteral("unknown");
        QCOMPARE(user.Organization(), QString());
        QCOMPARE(user.EmailAddressDefault(QStringLiteral("fallback.net")), QStringLiteral("jane@fallback.net"));
        user.Email.clear();
        QCOMPARE(user.EmailAddressDefault(QStringLiteral("fallback.net")), QString());
    }

    void hasAccessChecksCredentialsUnlessAdmin()
    {
        clsUser user;
        user.Username = QStringLiteral("jdoe");
        user.Password = QStringLiteral("pw");
        QVERIFY(user.HasAccess(QStringLiteral("jdoe"), QStringLiteral("pw")));
        QVERIFY(!user.HasAccess(QStringLiteral("JDoe"), QStringLiteral("pw")));
        QVERIFY(!user.HasAccess(QStringLiteral("jdoe"), QStringLiteral("wrong")));
        user.Admin = true;
        QVERIFY(user.HasAccess(QStringLiteral("someone"), QStringLiteral("wrong")));
        QVERIFY(user.HasAccess(QString(), QString()));
    }

    void folderAccess()
    {
        clsUser user;
        QVERIFY(!user.HasAccessToFolder(QString()));
        QVERIFY(user.HasAccessToFolder(QStringLiteral("F7"))); // empty Folders: every folder
        user.Folders = QStringLiteral("F1,F22");
        QVERIFY(user.HasAccessToFolder(QStringLiteral("F22")));
        QVERIFY(!user.HasAccessToFolder(QStringLiteral("F2")));
        QVERIFY(!user.HasAccessToFolder(QStringLiteral("F1,F22")));
        user.Admin = true;
        QVERIFY(user.HasAccessToFolder(QStringLiteral("F2")));
        QVERIFY(!user.HasAccessToFolder(QString()));
    }

    void addFolderKeepsListClean()
    {
        clsUser user;
        user.OrganizationID = QStringLiteral("O1");
        const clsUserFolder f1 = Folder(QStringLiteral("F1"), QStringLiteral("O1"));
        const clsUserFolder f2 = Folder(QStringLiteral("F2"), QStringLiteral("O1"));
        const clsUserFolder f3 = Folder(QStringLiteral("F3"), QStringLiteral("O1"));
        const clsUserFolder foreign = Folder(QStringLiteral("FX"), QStringLiteral("O2"));

        user.AddFolder(&foreign);
        QCOMPARE(user.Folders, QString());
        user.AddFolder(&f1);
        QCOMPARE(user.Folders, QStringLiteral("F1"));
        user.AddFolder(&f2);
        user.AddFolder(&f2);
        QCOMPARE(user.Folders, QStringLiteral("F1,F2"));
        user.Folders = QStringLiteral("F1,,F2,");
        user.AddFolder(&f3);
        QCOMPARE(user.Folders, QStringLiteral("F1,F2,F3"));
        user.AddFolder(nullptr);

        user.RemoveFolder(&f2);
        QCOMPARE(user.Folders, QStringLiteral("F1,F3"));
        user.RemoveFolder(&f1);
        QCOMPARE(user.Folders, QStringLiteral("F3"));
        user.RemoveFolder(&foreign);
        QCOMPARE(user.Folders, QStringLiteral("F3"));
    }

    void inboxAndProcessedRootComeFromGlobalFolders()
    {
        clsUser user;
        user.ID = QStringLiteral("U1");
        user.OrganizationID = QStringLiteral("O1");
        QCOMPARE(user.INBox(), nullptr);
        QCOMPARE(user.INBoxID(), QString());

        AddFolder(QStringLiteral("R0"), QStringLiteral("Inbox"), QString(), QStringLiteral("O2"));
        clsUserFolder *root = AddFolder(QStringLiteral("R1"), QStringLiteral("Root"), QString(), QStringLiteral("O1"));
        AddFolder(QStringLiteral("X"), QStringLiteral("Inbox"), QStringLiteral("U2"), QStringLiteral("O1"));
        AddFolder(QStringLiteral("I1"), QStringLiteral("INBOX"), QStringLiteral("U1"), QStringLiteral("O1"));
        AddFolder(QStringLiteral("I2"), QStringLiteral("inbox"), QStringLiteral("U1"), QStringLiteral("O1"));
        QCOMPARE(user.INBoxID(), QStringLiteral("I1"));
        QCOMPARE(user.ProcessedMessagesRootFolder(), root);
    }
};

POSTVANE_TEST(tst_clsUser)
#include "tst_clsUser.moc"
