#include "TestRegistry.h"
#include "foundation/Crypt.h"
#include "model/GlobalCollections.h"

#include <QTest>

namespace {

clsUser *AddUser(colUsers &users, const QString &id, const QString &name, const QString &password,
                 const QString &email = QString(), const QString &orgID = QString())
{
    auto user = std::make_unique<clsUser>();
    user->ID = id;
    user->Username = name;
    user->Password = password;
    user->Email = email;
    user->OrganizationID = orgID;
    return users.Add(std::move(user));
}

clsUserOrganization *AddOrganization(const QString &id, const QString &domain = QString())
{
    auto organization = std::make_unique<clsUserOrganization>();
    organization->ID = id;
    organization->Domain = domain;
    return Organizations().Add(std::move(organization));
}

QStringList IDs(const colUsers &users)
{
    QStringList ids;
    for (const clsUser *user : users)
        ids << user->ID;
    return ids;
}

// The IDs of the users in a collection fragment.
QStringList IDsIn(const QString &xml)
{
    colUsers users;
    users.setXML(xml);
    return IDs(users);
}

} // namespace

class tst_colUsers : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { ResetGlobalCollections(); }

    void collectionRoundTripsAndReplacesItsItems()
    {
        colUsers users;
        AddUser(users, QStringLiteral("U1"), QStringLiteral("alice"), QStringLiteral("a&b"), QStringLiteral("a@x.com"));
        clsUser *bob = AddUser(users, QStringLiteral("U2"), QStringLiteral("bob"), QString());
        bob->Admin = true;
        bob->Folders = QStringLiteral("F1");
        const QString first = users.XML();
        QVERIFY(first.startsWith(QStringLiteral("<Users>\n\t<User>\n\t\t<ID>U1</ID>\n")));

        colUsers copy;
        AddUser(copy, QStringLiteral("OLD"), QStringLiteral("old"), QString());
        copy.setXML(first);
        QCOMPARE(IDs(copy), QStringList({QStringLiteral("U1"), QStringLiteral("U2")}));
        QCOMPARE(copy.XML(), first);
        QCOMPARE(copy.Item(QStringLiteral("u2"))->Folders, QStringLiteral("F1"));
    }

    void badCollectionFragments()
    {
        QCOMPARE(IDsIn(QString()), QStringList());
        QCOMPARE(IDsIn(QStringLiteral("<Users></Users>")), QStringList());
        QCOMPARE(IDsIn(QStringLiteral("<Users><User><ID>U1</ID>")), QStringList());
        // No ID, a repeated ID, an ID with blanks.
        QCOMPARE(IDsIn(QStringLiteral("<Users><User><UserName>x</UserName></User>"
                                      "<User><ID>U1</ID><UserName>first</UserName></User>"
                                      "<User><ID>u1</ID><UserName>second</UserName></User>"
                                      "<User><ID> a b </ID></User></Users>")),
                 QStringList({QStringLiteral("U1"), QStringLiteral(" a b ")}));
        colUsers users;
        QCOMPARE(users.AddXML(QStringLiteral("<User><ID>U1</ID><UserName>first</UserName></User>"))->Username,
                 QStringLiteral("first"));
        QCOMPARE(users.AddXML(QStringLiteral("<User><ID>U1</ID></User>")), nullptr);
        QCOMPARE(users.AddXML(QStringLiteral("garbage")), nullptr);
        QCOMPARE(users.Count(), 1);
        QCOMPARE(users.Item(2), nullptr);
        QCOMPARE(users.UserNoFromID(QStringLiteral("nobody")), 0);
    }

    void lookupsByIdAndName()
    {
        colUsers users;
        AddUser(users, QStringLiteral("U1"), QStringLiteral("alice"), QString(), QString(), QStringLiteral("O1"));
        AddUser(users, QStringLiteral("U2"), QStringLiteral("Bob"), QString(), QString(), QStringLiteral("O2"));
        AddUser(users, QStringLiteral("U3"), QStringLiteral("carol"), QString(), QString(), QStringLiteral("O2"));
        QCOMPARE(users.UserNoFromID(QStringLiteral("U3")), 3);
        QCOMPARE(users.UserNoFromName(QStringLiteral("bob")), 2);
        QCOMPARE(users.UserNoFromName(QStringLiteral("dave")), 0);
        QCOMPARE(users.FirstUserForOrganization(QStringLiteral("O2"))->ID, QStringLiteral("U2"));
        QCOMPARE(users.FirstUserForOrganization(QStringLiteral("O9")), nullptr);
        QVERIFY(users.Delete(QStringLiteral("U2")));
        QCOMPARE(users.UserNoFromID(QStringLiteral("U3")), 2);
        QVERIFY(!users.Delete(7));
    }

    void organizationOfUserFallsBackToFirstOrganization()
    {
        colUsers users;
        AddUser(users, QStringLiteral("U1"), QStringLiteral("a"), QString(), QString(), QStringLiteral("O2"));
        AddUser(users, QStringLiteral("U2"), QStringLiteral("b"), QString());
        QCOMPARE(users.OrganizationIDForUserID(QStringLiteral("U2")), QString());
        AddOrganization(QStringLiteral("O1"));
        AddOrganization(QStringLiteral("O2"));
        QCOMPARE(users.OrganizationIDForUserID(QStringLiteral("U1")), QStringLiteral("O2"));
        QCOMPARE(users.OrganizationIDForUserID(QStringLiteral("U2")), QStringLiteral("O1"));
        QCOMPARE(users.OrganizationIDForUserID(QStringLiteral("nobody")), QStringLiteral("O1"));
    }

    void credentialsAcceptPlainOrHashedStoredPasswords()
    {
        colUsers users;
        AddUser(users, QStringLiteral("U1"), QStringLiteral("alice"), QStringLiteral("wrong"));
        AddUser(users, QStringLiteral("U2"), QStringLiteral("alice"), QStringLiteral("plain pw"));
        AddUser(users, QStringLiteral("U3"), QStringLiteral("bob"), MD5Hash(QStringLiteral("hashed pw")));
        AddUser(users, QStringLiteral("U4"), QStringLiteral("nopass"), QString());

        QCOMPARE(users.UserNoFromCredentials(QStringLiteral("alice"), QStringLiteral("plain pw")), 2);
        QCOMPARE(users.UserFromCredentials(QStringLiteral("bob"), QStringLiteral("hashed pw"))->ID, QStringLiteral("U3"));
        QCOMPARE(users.UserFromCredentials(QStringLiteral("Bob"), QStringLiteral("hashed pw")), nullptr);
        QCOMPARE(users.UserNoFromCredentials(QStringLiteral("bob"), QStringLiteral("Hashed pw")), 0);
        QCOMPARE(users.UserNoFromCredentials(QStringLiteral("alice"), QStringLiteral("plain pw ")), 0);
        QCOMPARE(users.UserNoFromCredentials(QStringLiteral("nopass"), QString()), 0);
        QCOMPARE(users.UserNoFromCredentials(QString(), QString()), 0);
    }

    void findUserFromEmailRoutesAddresses()
    {
        AddOrganization(QStringLiteral("O1"), QStringLiteral("acme.com"));
        colUsers users;
        AddUser(users, QStringLiteral("U0"), QStringLiteral("none"), QString(), QString(), QStringLiteral("O1"));
        AddUser(users, QStringLiteral("U1"), QStringLiteral("jane"), QString(), QStringLiteral("jane@other.org"),
                QStringLiteral("O1"));
        AddUser(users, QStringLiteral("U2"), QStringLiteral("sales"), QString(), QStringLiteral("sales, x@y.com"));
        AddUser(users, QStringLiteral("U3"), QStringLiteral("shop"), QString(), QStringLiteral("*@Shop.Example.com"));
        AddUser(users, QStringLiteral("U4"), QStringLiteral("also"), QString(), QStringLiteral("sales"));
        const QString domain = QStringLiteral("example.com");
        const auto found = [&](const QString &address, const QString &notID = QString()) {
            const clsUser *user = users.FindUserFromEmail(address, notID, domain);
            return user ? user->ID : QString();
        };

        QCOMPARE(found(QStringLiteral("  JANE@acme.com ")), QStringLiteral("U1")); // default address
        QCOMPARE(found(QStringLiteral("jane@other.org")), QStringLiteral("U1"));
        QCOMPARE(found(QStringLiteral("Sales@Example.com")), QStringLiteral("U2")); // local part
        QCOMPARE(found(QStringLiteral("sales@acme.com")), QString());
        QCOMPARE(found(QStringLiteral("anyone@shop.example.com")), QStringLiteral("U3"));
        QCOMPARE(found(QStringLiteral("sales@example.com"), QStringLiteral("U2")), QStringLiteral("U4"));
        QCOMPARE(found(QStringLiteral("nobody@nowhere")), QString());
        QCOMPARE(found(QString()), QString());
    }

    void acceptedDomainIsExactAfterTheAt()
    {
        colUsers users;
        AddUser(users, QStringLiteral("U1"), QStringLiteral("a"), QString(), QStringLiteral("local, a@Mail.Example.com"));
        QVERIFY(users.AcceptedDomain(QStringLiteral("mail.example.COM")));
        QVERIFY(!users.AcceptedDomain(QStringLiteral("example.com")));
        QVERIFY(!users.AcceptedDomain(QString()));
    }

    void xmlForOrganizationShowsWhatTheUserMaySee()
    {
        colUsers users;
        clsUser *admin = AddUser(users, QStringLiteral("S"), QStringLiteral("s"), QString(), QString(), QStringLiteral("O1"));
        admin->Admin = true;
        clsUser *orgAdmin = AddUser(users, QStringLiteral("A"), QStringLiteral("a"), QString(), QString(), QStringLiteral("O1"));
        orgAdmin->OrganizationAdmin = true;
        clsUser *plain = AddUser(users, QStringLiteral("P"), QStringLiteral("p"), QString(), QString(), QStringLiteral("O1"));
        AddUser(users, QStringLiteral("Q"), QStringLiteral("q"), QString(), QString(), QStringLiteral("O2"));

        QCOMPARE(IDsIn(users.XMLForOrganization(admin)), IDs(users));
        QCOMPARE(IDsIn(users.XMLForOrganization(orgAdmin)), QStringList({QStringLiteral("A"), QStringLiteral("P")}));
        QCOMPARE(IDsIn(users.XMLForOrganization(plain)), QStringList({QStringLiteral("P")}));
        QCOMPARE(users.XMLForOrganization(nullptr), QStringLiteral("<Users>\n</Users>\n"));
    }
};

POSTVANE_TEST(tst_colUsers)
#include "tst_colUsers.moc"
