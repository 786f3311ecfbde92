#include "colUsers.h"
#include "GlobalCollections.h"
#include "ItemFragments.h"
#include "MailAddresses.h"
#include "foundation/Crypt.h"
#include "foundation/Startup.h"

namespace {
const QString SectionTag = QStringLiteral("Users");
}

QString colUsers::XML() const
{
    try {
        return SectionOfItems(m_items, SectionTag, [](const clsUser &) { return true; });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colUsers.XML.Get"), error);
        return QString();
    }
}

void colUsers::setXML(const QString &Value)
{
    try {
        m_items.Clear();
        ForEachItemFragment(Value, clsUser::ClassName, [this](const QString &fragment) { AddXML(fragment); });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colUsers.XML.Let"), error);
    }
}

QString colUsers::XMLForOrganization(const clsUser *ForUser) const
{
    try {
        const auto visible = [ForUser](const clsUser &user) {
            if (!ForUser)
                return false;
            if (ForUser->Admin)
                return true;
            if (ForUser->OrganizationAdmin)
                return user.OrganizationID == ForUser->OrganizationID && !user.Admin;
            return user.ID == ForUser->ID;
        };
        return SectionOfItems(m_items, SectionTag, visible);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colUsers.XMLForOrganization"), error);
        return QString();
    }
}

clsUser *colUsers::AddXML(const QString &XML)
{
    auto user = std::make_unique<clsUser>();
    user->setXML(XML);
    return Add(std::move(user));
}

clsUser *colUsers::Add(std::unique_ptr<clsUser> NewUser, int Before)
{
    if (!NewUser || NewUser->ID.isEmpty())
        return nullptr;
    const QString key = NewUser->ID;
    return m_items.Add(std::move(NewUser), key, Before);
}

int colUsers::UserNoFromName(const QString &Username) const
{
    for (int i = 1; i <= Count(); ++i)
        if (Item(i)->Username.compare(Username, Qt::CaseInsensitive) == 0)
            return i;
    return 0;
}

QString colUsers::OrganizationIDForUserID(const QString &UserID) const
{
    const clsUser *user = Item(UserID);
    if (user && !user->OrganizationID.isEmpty())
        return user->OrganizationID;
    const clsUserOrganization *first = Organizations().Item(1);
    return first ? first->ID : QString();
}

int colUsers::UserNoFromCredentials(const QString &Username, const QString &Password) const
{
    if (Username.isEmpty() || Password.isEmpty())
        return 0;
    const QString hash = MD5Hash(Password);
    for (int i = 1; i <= Count(); ++i) {
        const clsUser *user = Item(i);
        if (user->Username == Username && (user->Password == Password || user->Password == hash))
            return i;
    }
    return 0;
}

clsUser *colUsers::UserFromCredentials(const QString &Username, const QString &Password) const
{
    return Item(UserNoFromCredentials(Username, Password));
}

clsUser *colUsers::FindUserFromEmail(const QString &ToAddress, const QString &NotID, const QString &DefaultDomain) const
{
    const QString address = ToAddress.trimmed().toLower();
    for (clsUser *user : m_items) {
        if (user->Email.isEmpty() || user->ID == NotID)
            continue;
        if (address == user->EmailAddressDefault(DefaultDomain).toLower()
            || LikeAnyAddress(address, QualifiedAddresses(user->EmailAddresses(), DefaultDomain)))
            return user;
    }
    return nullptr;
}

clsUser *colUsers::FirstUserForOrganization(const QString &OrganizationID) const
{
    for (clsUser *user : m_items)
        if (user->OrganizationID == OrganizationID)
            return user;
    return nullptr;
}

bool colUsers::AcceptedDomain(const QString &Domain) const
{
    for (const clsUser *user : m_items)
        if (AnyAddressInDomain(user->EmailAddresses(), Domain))
            return true;
    return false;
}
