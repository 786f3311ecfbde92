#pragma once
#include <QString>
#include <QStringList>

class clsUserFolder;

// A person who logs on to the server, owns mail addresses and may see some
// or all folders of its organization.
class clsUser
{
public:
    static inline const QString ClassName = QStringLiteral("User");

    clsUser();

    QString ID;
    QString Username; // tag UserName
    QString Password; // as given: plain or its MD5 hash, never enciphered
    QString Fullname;
    QString Email; // addresses separated by ","; wildcards allowed; no "@" is a local part
    QString OrganizationID;
    bool OrganizationAdmin = false;
    bool Admin = false;
    bool AllowPOP3Imap = false; // tag AllowPop3Imap
    QString Folders; // folder IDs separated by ","; empty means every folder of the organization
    bool Forward = false;
    QString ForwardTo;
    bool ForwardOnly = false;

    QString XML() const;
    void setXML(const QString &Value);

    // Name of the user's organization.
    QString Organization() const;
    // The first address's local part at the organization's Domain, or at
    // DefaultDomain when the organization has none.
    QString EmailAddressDefault(const QString &DefaultDomain) const;
    // The user's first folder named "inbox" in any case.
    clsUserFolder *INBox() const;
    QString INBoxID() const;
    // The root folder of the user's organization, under which the folders of
    // processed messages hang.
    clsUserFolder *ProcessedMessagesRootFolder() const;

    // The addresses of Email; EmailAddress is 1-based and empty out of range.
    QStringList EmailAddresses() const;
    int EmailCount() const;
    QString EmailAddress(int Index) const;
    QString EmailList() const;

    // A system administrator passes whatever is supplied.
    bool HasAccess(const QString &SuppliedUsername, const QString &SuppliedPassword) const;
    bool HasAccessToFolder(const QString &FolderID) const;
    // Adds or removes a folder in Folders; a folder of another organization
    // is not added.
    void AddFolder(const clsUserFolder *ThisFolder);
    void RemoveFolder(const clsUserFolder *ThisFolder);

private:
    QStringList FolderIDs() const;
};
