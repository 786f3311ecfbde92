#pragma once
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVariant>

class clsUser;

// A tenant of the server: it owns accounts, users, folders and named
// constants.
class clsUserOrganization
{
public:
    static inline const QString ClassName = QStringLiteral("Organization");

    // A new organization is enabled, created now and named "Default".
    clsUserOrganization();

    QString ID;
    QString Name = QStringLiteral("Default");
    QString EmailAddress;
    QDateTime CreatedOn;
    bool Enabled = true;
    qint32 MaxMessagesDay = 0; // 0 is no limit
    qint32 MaxMessagesMonth = 0;
    QString Domain; // the default mail domain
    QString AzureContainer;

    QString XML() const;
    void setXML(const QString &Value);

    // Entries separated by TAB, each a name, "=" and a value. Setting the
    // text splits it into the constants.
    QString Constants() const { return m_constants; }
    void setConstants(const QString &Value);

    // Fills the names and values from Constants: split at the first "=",
    // both sides trimmed, entries without a name left out.
    void SplitConstants();
    int NumConstants() const { return int(m_constantNames.size()); }
    // 1-based; empty out of range.
    QString ConstantName(int Number) const;
    // A number (or a text holding only one) is a 1-based position, anything
    // else a name compared without case; empty when there is none.
    QString ConstantValue(const QVariant &NameOrNumber) const;

    // AzureContainer, made from Name and kept when it is empty: lower case,
    // letters a-z and digits kept, every other character "-".
    QString GetAzureContainer();
    // Accounts and users of this organization in the global collections.
    int NumAccounts() const;
    int NumUsers() const;
    // The first user of this organization with OrganizationAdmin.
    clsUser *GetAdminUser() const;

private:
    QString m_constants;
    QStringList m_constantNames;
    QStringList m_constantValues;
};
