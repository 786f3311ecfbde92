#include "colUserFolders.h"
#include "ItemFragments.h"
#include "MailAddresses.h"
#include "clsUser.h"
#include "foundation/Startup.h"

namespace {

const QString SectionTag = QStringLiteral("Folders");

// A folder of no user with this name, compared in lower case.
auto PublicFolderNamed(const QString &LowerName)
{
    return [LowerName](const clsUserFolder &folder) {
        return folder.UserID.isEmpty() && folder.Name.toLower() == LowerName;
    };
}

} // namespace

template <typename Match> clsUserFolder *colUserFolders::FirstFolder(Match match) const
{
    for (clsUserFolder *folder : m_items)
        if (match(*folder))
            return folder;
    return nullptr;
}

void colUserFolders::DeleteWhere(QString clsUserFolder::*Field, const QString &Value)
{
    if (Value.isEmpty())
        return;
    for (int i = Count(); i >= 1; --i)
        if (Item(i)->*Field == Value)
            m_items.Delete(i);
}

QString colUserFolders::XML() const
{
    try {
        return SectionOfItems(m_items, SectionTag, [](const clsUserFolder &) { return true; });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colUserFolders.XML.Get"), error);
        return QString();
    }
}

void colUserFolders::setXML(const QString &Value)
{
    try {
        m_items.Clear();
        ForEachItemFragment(Value, clsUserFolder::ClassName, [this](const QString &fragment) { AddXML(fragment); });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colUserFolders.XML.Let"), error);
    }
}

QString colUserFolders::UserFoldersXML(const clsUser *ForUser) const
{
    try {
        const auto visible = [ForUser](const clsUserFolder &folder) {
            if (!ForUser)
                return false;
            if (ForUser->Admin)
                return true;
            if (folder.OrganizationID != ForUser->OrganizationID)
                return false;
            if (ForUser->OrganizationAdmin)
                return true;
            return (folder.UserID.isEmpty() || folder.UserID == ForUser->ID) && ForUser->HasAccessToFolder(folder.ID);
        };
        return SectionOfItems(m_items, SectionTag, visible);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colUserFolders.UserFoldersXML"), error);
        return QString();
    }
}

clsUserFolder *colUserFolders::AddXML(const QString &XML)
{
    auto folder = std::make_unique<clsUserFolder>();
    folder->setXML(XML);
    return Add(std::move(folder));
}

clsUserFolder *colUserFolders::Add(std::unique_ptr<clsUserFolder> NewFolder, int Before)
{
    if (!NewFolder || NewFolder->ID.isEmpty())
        return nullptr;
    const QString key = NewFolder->ID;
    return m_items.Add(std::move(NewFolder), key, Before);
}

void colUserFolders::DeleteForAccount(const QString &AccountID)
{
    DeleteWhere(&clsUserFolder::AccountID, AccountID);
}

void colUserFolders::DeleteForUser(const QString &UserID)
{
    DeleteWhere(&clsUserFolder::UserID, UserID);
}

void colUserFolders::DeleteForOrganization(const QString &OrganizationID)
{
    DeleteWhere(&clsUserFolder::OrganizationID, OrganizationID);
}

clsUserFolder *colUserFolders::RootFolder(const QString &OrganizationID) const
{
    return FirstFolder([&OrganizationID](const clsUserFolder &folder) {
        return folder.OrganizationID == OrganizationID && folder.Parent.isEmpty();
    });
}

QString colUserFolders::AccountRootFolderID(const QString &AccountID) const
{
    if (AccountID.isEmpty())
        return QString();
    const clsUserFolder *folder =
        FirstFolder([&AccountID](const clsUserFolder &folder) { return folder.AccountID == AccountID; });
    return folder ? folder->ID : QString();
}

clsUserFolder *colUserFolders::SpamFolder() const
{
    return FirstFolder(PublicFolderNamed(QStringLiteral("spam")));
}

clsUserFolder *colUserFolders::SentItemsFolder() const
{
    return FirstFolder(PublicFolderNamed(QStringLiteral("sent items")));
}

bool colUserFolders::ForSpamFolder(const QString &ToAddress) const
{
    const clsUserFolder *spam = SpamFolder();
    return spam && LikeAnyAddress(ToAddress, spam->EmailAddresses());
}

clsUserFolder *colUserFolders::UsersInBox(const clsUser *ThisUser) const
{
    if (!ThisUser || ThisUser->ID.isEmpty())
        return nullptr;
    return FirstFolder([ThisUser](const clsUserFolder &folder) {
        return folder.UserID == ThisUser->ID && folder.Name.toLower() == QStringLiteral("inbox");
    });
}

clsUserFolder *colUserFolders::FindFolderForEmail(const QString &ToAddress, const QString &NotID,
                                                  const QString &DefaultDomain) const
{
    return FirstFolder([&](const clsUserFolder &folder) {
        return !folder.Email.isEmpty() && folder.ID != NotID
               && LikeAnyAddress(ToAddress, QualifiedAddresses(folder.EmailAddresses(), DefaultDomain));
    });
}

bool colUserFolders::AcceptedDomain(const QString &Domain) const
{
    return FirstFolder([&Domain](const clsUserFolder &folder) {
               return AnyAddressInDomain(folder.EmailAddresses(), Domain);
           })
           != nullptr;
}

QString colUserFolders::OrganizationIDForFolderID(const QString &FolderID) const
{
    const clsUserFolder *folder = Item(FolderID);
    return folder ? folder->OrganizationID : QString();
}
