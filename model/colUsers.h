#pragma once
#include "clsUser.h"
#include "foundation/KeyedCollection.h"

#include <QString>
#include <memory>

// All users, in order, keyed by ID.
class colUsers
{
public:
    // Section "Users" with every user's fragment; setting it replaces the
    // whole collection.
    QString XML() const;
    void setXML(const QString &Value);
    // Section "Users" with what ForUser may see: every user for a system
    // administrator, the users of its organization that are no system
    // administrators for an organization administrator, else only itself.
    QString XMLForOrganization(const clsUser *ForUser) const;

    // Adds a user read from its fragment, or the user given; nullptr when its
    // ID is empty or already present.
    clsUser *AddXML(const QString &XML);
    clsUser *Add(std::unique_ptr<clsUser> NewUser, int Before = 0);
    int Count() const { return m_items.Count(); }
    bool Delete(int Index) { return m_items.Delete(Index); }
    bool Delete(const QString &ID) { return m_items.Delete(ID); }
    void Clear() { m_items.Clear(); }
    // 1-based position or ID; nullptr when there is none.
    clsUser *Item(int Index) const { return m_items.Item(Index); }
    clsUser *Item(const QString &ID) const { return m_items.Item(ID); }
    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

    // 1-based positions, 0 when there is none. Names compare without case.
    int UserNoFromID(const QString &ID) const { return m_items.IndexOf(ID); }
    int UserNoFromName(const QString &Username) const;
    // The user's OrganizationID; for an unknown user or an empty one, the ID
    // of the first organization.
    QString OrganizationIDForUserID(const QString &UserID) const;
    // The first user whose Username is exactly the one supplied and whose
    // stored Password is the supplied one, plain or as its MD5 hash. Empty
    // names or passwords never match.
    int UserNoFromCredentials(const QString &Username, const QString &Password) const;
    clsUser *UserFromCredentials(const QString &Username, const QString &Password) const;
    // The first user other than NotID that takes mail for the address: at
    // its default address, or at one of its addresses as a pattern, a part
    // without "@" standing at DefaultDomain.
    clsUser *FindUserFromEmail(const QString &ToAddress, const QString &NotID, const QString &DefaultDomain) const;
    clsUser *FirstUserForOrganization(const QString &OrganizationID) const;
    // True when some user's address is at exactly this domain.
    bool AcceptedDomain(const QString &Domain) const;

private:
    KeyedCollection<clsUser> m_items;
};
