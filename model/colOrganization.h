#pragma once
#include "clsUserOrganization.h"
#include "foundation/KeyedCollection.h"

#include <QString>
#include <memory>

// All organizations, in order, keyed by ID.
class colOrganization
{
public:
    // Section "Organizations" with every organization's fragment; setting it
    // replaces the whole collection.
    QString XML() const;
    void setXML(const QString &Value);

    // Adds the organization; nullptr when its ID is empty or already present.
    clsUserOrganization *Add(std::unique_ptr<clsUserOrganization> NewOrganization, int Before = 0);
    int Count() const { return m_items.Count(); }
    void Clear() { m_items.Clear(); }
    bool Delete(int Index) { return m_items.Delete(Index); }
    bool Delete(const QString &ID) { return m_items.Delete(ID); }
    // 1-based position or ID; nullptr when there is none.
    clsUserOrganization *Item(int Index) const { return m_items.Item(Index); }
    clsUserOrganization *Item(const QString &ID) const { return m_items.Item(ID); }
    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

    // 1-based positions, 0 when there is none; names and domains compare
    // without case.
    int OrganizationNoFromID(const QString &ID) const { return m_items.IndexOf(ID); }
    int OrganizationNoFromName(const QString &Name) const;
    int OrganizationNoFromDomain(const QString &Domain) const;

private:
    int FirstNo(QString clsUserOrganization::*Field, const QString &Value) const;

    KeyedCollection<clsUserOrganization> m_items;
};
