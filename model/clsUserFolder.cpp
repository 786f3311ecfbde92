#include "clsUserFolder.h"
#include "MailAddresses.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"

clsUserFolder::clsUserFolder() : ID(NewUniqueID()) {}

QString clsUserFolder::XML() const
{
    try {
        clsXML writer;
        writer.XMLSectionStart(ClassName);
        writer.Append(ID, QStringLiteral("ID"));
        writer.Append(UserID, QStringLiteral("UserID"));
        writer.Append(Name, QStringLiteral("Name"));
        writer.Append(Parent, QStringLiteral("Parent"));
        writer.Append(Email, QStringLiteral("Email"));
        writer.Append(OrganizationID, QStringLiteral("OrganizationID"));
        writer.Append(RecordNo, QStringLiteral("RecordNo"));
        writer.Append(AccountID, QStringLiteral("AccountID"));
        writer.XMLSectionEnd(ClassName);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsUserFolder.XML.Get"), error);
        return QString();
    }
}

void clsUserFolder::setXML(const QString &Value)
{
    try {
        clsXML reader(Value);
        reader.Extract(ID, QStringLiteral("ID"));
        reader.Extract(UserID, QStringLiteral("UserID"));
        reader.Extract(Name, QStringLiteral("Name"));
        reader.Extract(Parent, QStringLiteral("Parent"));
        reader.Extract(Email, QStringLiteral("Email"));
        reader.Extract(OrganizationID, QStringLiteral("OrganizationID"));
        reader.Extract(RecordNo, QStringLiteral("RecordNo"));
        reader.Extract(AccountID, QStringLiteral("AccountID"));
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsUserFolder.XML.Let"), error);
    }
}

QStringList clsUserFolder::EmailAddresses() const
{
    return SplitAddresses(Email, QStringLiteral(",;"));
}
