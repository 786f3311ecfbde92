#include "clsUser.h"
#include "GlobalCollections.h"
#include "MailAddresses.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"

namespace {

// Folders without double commas and without a trailing one.
QString CleanFolderList(QString Folders)
{
    while (Folders.contains(QStringLiteral(",,")))
        Folders.replace(QStringLiteral(",,"), QStringLiteral(","));
    if (Folders.endsWith(u','))
        Folders.chop(1);
    return Folders;
}

} // namespace

clsUser::clsUser() : ID(NewUniqueID()) {}

QString clsUser::XML() const
{
    try {
        clsXML writer;
        writer.XMLSectionStart(ClassName);
        writer.Append(ID, QStringLiteral("ID"));
        writer.Append(Username, QStringLiteral("UserName"));
        writer.Append(Password, QStringLiteral("Password"));
        writer.Append(Fullname, QStringLiteral("Fullname"));
        writer.Append(Email, QStringLiteral("Email"));
        writer.Append(OrganizationID, QStringLiteral("OrganizationID"));
        writer.Append(OrganizationAdmin, QStringLiteral("OrganizationAdmin"));
        writer.Append(Admin, QStringLiteral("Admin"));
        writer.Append(AllowPOP3Imap, QStringLiteral("AllowPop3Imap"));
        writer.Append(Folders, QStringLiteral("Folders"));
        writer.Append(Forward, QStringLiteral("Forward"));
        writer.Append(ForwardTo, QStringLiteral("ForwardTo"));
        writer.Append(ForwardOnly, QStringLiteral("ForwardOnly"));
        writer.XMLSectionEnd(ClassName);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsUser.XML.Get"), error);
        return QString();
    }
}

void clsUser::setXML(const QString &Value)
{
    try {
        clsXML reader(Value);
        reader.Extract(ID, QStringLiteral("ID"));
        reader.Extract(Username, QStringLiteral("UserName"));
        reader.Extract(Password, QStringLiteral("Password"));
        reader.Extract(Fullname, QStringLiteral("Fullname"));
        reader.Extract(Email, QStringLiteral("Email"));
        reader.Extract(OrganizationID, QStringLiteral("OrganizationID"));
        reader.Extract(OrganizationAdmin, QStringLiteral("OrganizationAdmin"));
        reader.Extract(Admin, QStringLiteral("Admin"));
        reader.Extract(AllowPOP3Imap, QStringLiteral("AllowPop3Imap"));
        reader.Extract(Folders, QStringLiteral("Folders"));
        reader.Extract(Forward, QStringLiteral("Forward"));
        reader.Extract(ForwardTo, QStringLiteral("ForwardTo"));
        reader.Extract(ForwardOnly, QStringLiteral("ForwardOnly"));
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsUser.XML.Let"), error);
    }
}

QString clsUser::Organization() const
{
    const clsUserOrganization *organization = Organizations().Item(OrganizationID);
    return organization ? organization->Name : QString();
}

QString clsUser::EmailAddressDefault(const QString &DefaultDomain) const
{
    const QStringList addresses = EmailAddresses();
    if (addresses.isEmpty())
        return QString();
    const QString localPart = addresses.first().section(u'@', 0, 0);
    const clsUserOrganization *organization = Organizations().Item(OrganizationID);
    const QString domain = organization && !organization->Domain.isEmpty() ? organization->Domain : DefaultDomain;
    return localPart + u'@' + domain;
}

clsUserFolder *clsUser::INBox() const
{
    return UserFolders().UsersInBox(this);
}

QString clsUser::INBoxID() const
{
    const clsUserFolder *inbox = INBox();
    return inbox ? inbox->ID : QString();
}

clsUserFolder *clsUser::ProcessedMessagesRootFolder() const
{
    return UserFolders().RootFolder(OrganizationID);
}

QStringList clsUser::EmailAddresses() const
{
    return SplitAddresses(Email);
}

int clsUser::EmailCount() const
{
    return int(EmailAddresses().size());
}

QString clsUser::EmailAddress(int Index) const
{
    return EmailAddresses().value(Index - 1);
}

QString clsUser::EmailList() const
{
    return EmailAddresses().join(QStringLiteral("\r\n"));
}

bool clsUser::HasAccess(const QString &SuppliedUsername, const QString &SuppliedPassword) const
{
    return Admin || (SuppliedUsername == Username && SuppliedPassword == Password);
}

bool clsUser::HasAccessToFolder(const QString &FolderID) const
{
    if (FolderID.isEmpty())
        return false;
    return Folders.isEmpty() || Admin || FolderIDs().contains(FolderID);
}

void clsUser::AddFolder(const clsUserFolder *ThisFolder)
{
    if (!ThisFolder || ThisFolder->ID.isEmpty() || ThisFolder->OrganizationID != OrganizationID)
        return;
    if (Folders.isEmpty()) {
        Folders = ThisFolder->ID;
    } else if (!FolderIDs().contains(ThisFolder->ID)) {
        if (!Folders.endsWith(u','))
            Folders += u',';
        Folders += ThisFolder->ID;
    } else {
        return;
    }
    Folders = CleanFolderList(Folders);
}

void clsUser::RemoveFolder(const clsUserFolder *ThisFolder)
{
    if (!ThisFolder)
        return;
    QStringList ids = FolderIDs();
    ids.removeAll(ThisFolder->ID);
    Folders = ids.join(u',');
}

QStringList clsUser::FolderIDs() const
{
    return Folders.split(u',', Qt::SkipEmptyParts);
}
