#include "TestRegistry.h"
#include "foundation/ValueTypes.h"
#include "model/GlobalCollections.h"

#include <QTest>

namespace {

clsUserOrganization *AddOrganization(const QString &id, const QString &name, const QString &domain = QString())
{
    auto organization = std::make_unique<clsUserOrganization>();
    organization->ID = id;
    organization->Name = name;
    organization->Domain = domain;
    return Organizations().Add(std::move(organization));
}

clsUser *AddUser(const QString &id, const QString &orgID, bool orgAdmin = false)
{
    auto user = std::make_unique<clsUser>();
    user->ID = id;
    user->OrganizationID = orgID;
    user->OrganizationAdmin = orgAdmin;
    return Users().Add(std::move(user));
}

} // namespace

class tst_Organizations : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { ResetGlobalCollections(); }

    void fullOrganizationRoundTrips()
    {
        clsUserOrganization organization;
        organization.ID = QStringLiteral("O1");
        organization.Name = QStringLiteral("Acme \"Widgets\"");
        organization.EmailAddress = QStringLiteral("info@acme.com");
        organization.CreatedOn = QDateTime(QDate(2021, 3, 4), QTime(5, 6, 7));
        organization.MaxMessagesDay = 100;
        organization.MaxMessagesMonth = 2000;
        organization.Domain = QStringLiteral("acme.com");
        organization.AzureContainer = QStringLiteral("acme");
        organization.setConstants(QStringLiteral("VAT=0.2\tBoss=Jane\t"));
        const QString first = organization.XML();
        QVERIFY(first.contains(QStringLiteral("\t<CreatedOn>2021-03-04 05:06:07</CreatedOn>\n")));
        QVERIFY(first.contains(QStringLiteral("\t<Constants>VAT=0.2#x9;Boss=Jane#x9;</Constants>\n")));
        clsUserOrganization copy;
        copy.setXML(first);
        QCOMPARE(copy.XML(), first);
        QCOMPARE(copy.ConstantValue(QStringLiteral("boss")), QStringLiteral("Jane"));

        AddOrganization(QStringLiteral("O2"), QStringLiteral("Second"));
        Organizations().Add(std::make_unique<clsUserOrganization>(copy));
        colOrganization again;
        again.setXML(Organizations().XML());
        QCOMPARE(again.XML(), Organizations().XML());
        QCOMPARE(again.Count(), 2);
    }

    void absentTagsResetNewDefaults()
    {
        clsUserOrganization organization;
        organization.setConstants(QStringLiteral("A=1"));
        organization.setXML(QStringLiteral("<Organization><ID>O1</ID><CreatedOn>not a date</CreatedOn>"
                                           "<MaxMessagesDay>x</MaxMessagesDay></Organization>"));
        QCOMPARE(organization.ID, QStringLiteral("O1"));
        QCOMPARE(organization.Name, QString());
        QVERIFY(!organization.Enabled);
        QCOMPARE(organization.CreatedOn, ZeroDate());
        QCOMPARE(organization.MaxMessagesDay, 0);
        QCOMPARE(organization.NumConstants(), 0);

        colOrganization organizations;
        organizations.setXML(QStringLiteral("<Organizations><Organization><Name>no id</Name></Organization>"
                                            "<Organization><ID>O1</ID></Organization><Organization><ID>O1</ID>"
                                            "</Organization><Organization><OrganizationID>O3</OrganizationID>"));
        QCOMPARE(organizations.Count(), 1);
    }

    void constantsSplitAtFirstEqualsSign()
    {
        clsUserOrganization organization;
        organization.setConstants(QStringLiteral(" Rate = 1.5 \tURL=a=b\t=orphan\tEmpty\t\t"));
        QCOMPARE(organization.NumConstants(), 3);
        QCOMPARE(organization.ConstantName(1), QStringLiteral("Rate"));
        QCOMPARE(organization.ConstantName(3), QStringLiteral("Empty"));
        QCOMPARE(organization.ConstantName(4), QString());
        QCOMPARE(organization.ConstantValue(QStringLiteral("url")), QStringLiteral("a=b"));
        QCOMPARE(organization.ConstantValue(1), QStringLiteral("1.5"));
        QCOMPARE(organization.ConstantValue(QStringLiteral("2")), QStringLiteral("a=b"));
        QCOMPARE(organization.ConstantValue(0), QString());
        QCOMPARE(organization.ConstantValue(QStringLiteral("orphan")), QString());
        QCOMPARE(organization.ConstantValue(QStringLiteral("Empty")), QString());
        QCOMPARE(organization.Constants(), QStringLiteral(" Rate = 1.5 \tURL=a=b\t=orphan\tEmpty\t\t"));
    }

    void azureContainerIsMadeOnceFromName()
    {
        clsUserOrganization organization;
        organization.Name = QStringLiteral("Acme & Sons Ltd. 2\u00e9");
        QCOMPARE(organization.GetAzureContainer(), QStringLiteral("acme---sons-ltd--2-"));
        organization.Name = QStringLiteral("Renamed");
        QCOMPARE(organization.GetAzureContainer(), QStringLiteral("acme---sons-ltd--2-"));
        QCOMPARE(organization.AzureContainer, QStringLiteral("acme---sons-ltd--2-"));
    }

    void lookupsInTheCollection()
    {
        AddOrganization(QStringLiteral("O1"), QStringLiteral("Acme"), QStringLiteral("acme.com"));
        AddOrganization(QStringLiteral("O2"), QStringLiteral("Beta"), QStringLiteral("beta.org"));
        QCOMPARE(Organizations().OrganizationNoFromID(QStringLiteral("o2")), 2);
        QCOMPARE(Organizations().OrganizationNoFromName(QStringLiteral("acme")), 1);
        QCOMPARE(Organizations().OrganizationNoFromDomain(QStringLiteral("BETA.org")), 2);
        QCOMPARE(Organizations().OrganizationNoFromDomain(QString()), 0);
        QCOMPARE(Organizations().OrganizationNoFromName(QStringLiteral("Gamma")), 0);
        QCOMPARE(AddOrganization(QStringLiteral("O1"), QStringLiteral("Again")), nullptr);
        QVERIFY(Organizations().Delete(1));
        QCOMPARE(Organizations().OrganizationNoFromID(QStringLiteral("O2")), 1);
    }

    void accountsAndUsersOfTheOrganization()
    {
        clsUserOrganization *acme = AddOrganization(QStringLiteral("O1"), QStringLiteral("Acme"));
        QCOMPARE(acme->NumAccounts(), 0);
        QCOMPARE(acme->NumUsers(), 0);
        QCOMPARE(acme->GetAdminUser(), nullptr);
        AddUser(QStringLiteral("U1"), QStringLiteral("O1"));
        AddUser(QStringLiteral("U2"), QStringLiteral("O2"), true);
        AddUser(QStringLiteral("U3"), QStringLiteral("O1"), true);
        AddUser(QStringLiteral("U4"), QStringLiteral("O1"), true);
        QCOMPARE(acme->NumUsers(), 3);
        QCOMPARE(acme->GetAdminUser()->ID, QStringLiteral("U3"));

        for (const QString &orgID : {QStringLiteral("O1"), QString(), QStringLiteral("O1")}) {
            auto account = std::make_unique<clsAccount>();
            account->OrganizationID = orgID;
            Accounts().Add(std::move(account));
        }
        QCOMPARE(acme->NumAccounts(), 2);
    }

    void resetGivesEmptyCollections()
    {
        AddOrganization(QStringLiteral("O1"), QStringLiteral("Acme"));
        AddUser(QStringLiteral("U1"), QStringLiteral("O1"));
        UserFolders().AddXML(QStringLiteral("<Folder><ID>F1</ID></Folder>"));
        ResetGlobalCollections();
        QCOMPARE(Organizations().Count(), 0);
        QCOMPARE(Users().Count(), 0);
        QCOMPARE(UserFolders().Count(), 0);
    }
};

POSTVANE_TEST(tst_Organizations)
#include "tst_Organizations.moc"
