#pragma once
#include "clsUserFolder.h"
#include "foundation/KeyedCollection.h"

#include <QString>
#include <memory>

class clsUser;

// All folders, in order, keyed by ID.
class colUserFolders
{
public:
    // Section "Folders" with every folder's fragment; setting it replaces the
    // whole collection.
    QString XML() const;
    void setXML(const QString &Value);
    // Section "Folders" with the folders ForUser may see: every folder for a
    // system administrator, every folder of its organization for an
    // organization administrator; else the folders of its organization that
    // are public or its own and that HasAccessToFolder allows.
    QString UserFoldersXML(const clsUser *ForUser) const;

    // Adds a folder read from its fragment, or the folder given; nullptr when
    // its ID is empty or already present.
    clsUserFolder *AddXML(const QString &XML);
    clsUserFolder *Add(std::unique_ptr<clsUserFolder> NewFolder, int Before = 0);
    int Count() const { return m_items.Count(); }
    void Clear() { m_items.Clear(); }
    bool Delete(int Index) { return m_items.Delete(Index); }
    bool Delete(const QString &ID) { return m_items.Delete(ID); }
    // Remove the folders of the account, user or organization.
    void DeleteForAccount(const QString &AccountID);
    void DeleteForUser(const QString &UserID);
    void DeleteForOrganization(const QString &OrganizationID);
    // 1-based position or ID; nullptr when there is none.
    clsUserFolder *Item(int Index) const { return m_items.Item(Index); }
    clsUserFolder *Item(const QString &ID) const { return m_items.Item(ID); }
    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

    // 1-based position, 0 when there is none.
    int FolderNoFromID(const QString &ID) const { return m_items.IndexOf(ID); }
    // The first folder of the organization without a parent.
    clsUserFolder *RootFolder(const QString &OrganizationID) const;
    // ID of the first folder made for the account; empty when there is none.
    QString AccountRootFolderID(const QString &AccountID) const;
    // The first folder of no user named "spam", or "sent items", in any case.
    clsUserFolder *SpamFolder() const;
    clsUserFolder *SentItemsFolder() const;
    // True when the address like-matches one of the spam folder's addresses.
    bool ForSpamFolder(const QString &ToAddress) const;
    // The user's first folder named "inbox" in any case.
    clsUserFolder *UsersInBox(const clsUser *ThisUser) const;
    // The first folder other than NotID that takes mail for the address at one
    // of its addresses as a pattern, a part without "@" standing at
    // DefaultDomain.
    clsUserFolder *FindFolderForEmail(const QString &ToAddress, const QString &NotID, const QString &DefaultDomain) const;
    // True when some folder's address is at exactly this domain.
    bool AcceptedDomain(const QString &Domain) const;
    // The folder's OrganizationID; empty for an unknown folder.
    QString OrganizationIDForFolderID(const QString &FolderID) const;

private:
    template <typename Match> clsUserFolder *FirstFolder(Match match) const;
    // Removes the folders whose Field holds Value; nothing for an empty Value,
    // which would take the public folders too.
    void DeleteWhere(QString clsUserFolder::*Field, const QString &Value);

    KeyedCollection<clsUserFolder> m_items;
};
