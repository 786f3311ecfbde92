#include "clsUserOrganization.h"
#include "GlobalCollections.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"

#include <QTime>

namespace {

// Items of a collection that belong to the organization.
template <typename Items> int CountOfOrganization(const Items &items, const QString &OrganizationID)
{
    int count = 0;
    for (const auto *item : items)
        if (item->OrganizationID == OrganizationID)
            ++count;
    return count;
}

} // namespace

clsUserOrganization::clsUserOrganization() : ID(NewUniqueID())
{
    const QDateTime now = QDateTime::currentDateTime();
    CreatedOn = QDateTime(now.date(), QTime(now.time().hour(), now.time().minute(), now.time().second()));
}

QString clsUserOrganization::XML() const
{
    try {
        clsXML writer;
        writer.XMLSectionStart(ClassName);
        writer.Append(ID, QStringLiteral("ID"));
        writer.Append(Name, QStringLiteral("Name"));
        writer.Append(EmailAddress, QStringLiteral("EmailAddress"));
        writer.Append(CreatedOn, QStringLiteral("CreatedOn"));
        writer.Append(MaxMessagesDay, QStringLiteral("MaxMessagesDay"));
        writer.Append(MaxMessagesMonth, QStringLiteral("MaxMessagesMonth"));
        writer.Append(Enabled, QStringLiteral("Enabled"));
        writer.Append(Domain, QStringLiteral("Domain"));
        writer.Append(AzureContainer, QStringLiteral("AzureContainer"));
        writer.Append(m_constants, QStringLiteral("Constants"));
        writer.XMLSectionEnd(ClassName);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsUserOrganization.XML.Get"), error);
        return QString();
    }
}

void clsUserOrganization::setXML(const QString &Value)
{
    try {
        clsXML reader(Value);
        reader.Extract(ID, QStringLiteral("ID"));
        reader.Extract(Name, QStringLiteral("Name"));
        reader.Extract(EmailAddress, QStringLiteral("EmailAddress"));
        reader.Extract(CreatedOn, QStringLiteral("CreatedOn"));
        reader.Extract(MaxMessagesDay, QStringLiteral("MaxMessagesDay"));
        reader.Extract(MaxMessagesMonth, QStringLiteral("MaxMessagesMonth"));
        reader.Extract(Enabled, QStringLiteral("Enabled"));
        reader.Extract(Domain, QStringLiteral("Domain"));
        reader.Extract(AzureContainer, QStringLiteral("AzureContainer"));
        QString constants;
        reader.Extract(constants, QStringLiteral("Constants"));
        setConstants(constants);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsUserOrganization.XML.Let"), error);
    }
}

void clsUserOrganization::setConstants(const QString &Value)
{
    m_constants = Value;
    SplitConstants();
}

void clsUserOrganization::SplitConstants()
{
    m_constantNames.clear();
    m_constantValues.clear();
    for (const QString &entry : m_constants.split(u'\t')) {
        const QString name = entry.section(u'=', 0, 0).trimmed();
        if (name.isEmpty())
            continue;
        m_constantNames << name;
        m_constantValues << entry.section(u'=', 1).trimmed();
    }
}

QString clsUserOrganization::ConstantName(int Number) const
{
    return m_constantNames.value(Number - 1);
}

QString clsUserOrganization::ConstantValue(const QVariant &NameOrNumber) const
{
    bool isNumber = false;
    const int number = NameOrNumber.toString().trimmed().toInt(&isNumber);
    if (isNumber)
        return m_constantValues.value(number - 1);
    const QString name = NameOrNumber.toString().trimmed();
    for (int i = 0; i < m_constantNames.size(); ++i)
        if (m_constantNames[i].compare(name, Qt::CaseInsensitive) == 0)
            return m_constantValues[i];
    return QString();
}

QString clsUserOrganization::GetAzureContainer()
{
    if (AzureContainer.isEmpty()) {
        for (QChar c : Name.toLower())
            AzureContainer += (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') ? c : u'-';
    }
    return AzureContainer;
}

int clsUserOrganization::NumAccounts() const
{
    return CountOfOrganization(Accounts(), ID);
}

int clsUserOrganization::NumUsers() const
{
    return CountOfOrganization(Users(), ID);
}

clsUser *clsUserOrganization::GetAdminUser() const
{
    for (clsUser *user : Users())
        if (user->OrganizationID == ID && user->OrganizationAdmin)
            return user;
    return nullptr;
}
