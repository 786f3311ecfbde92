#include "colOrganization.h"
#include "ItemFragments.h"
#include "foundation/Startup.h"

namespace {
const QString SectionTag = QStringLiteral("Organizations");
}

QString colOrganization::XML() const
{
    try {
        return SectionOfItems(m_items, SectionTag, [](const clsUserOrganization &) { return true; });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colOrganization.XML.Get"), error);
        return QString();
    }
}

void colOrganization::setXML(const QString &Value)
{
    try {
        m_items.Clear();
        ForEachItemFragment(Value, clsUserOrganization::ClassName, [this](const QString &fragment) {
            auto organization = std::make_unique<clsUserOrganization>();
            organization->setXML(fragment);
            Add(std::move(organization));
        });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colOrganization.XML.Let"), error);
    }
}

clsUserOrganization *colOrganization::Add(std::unique_ptr<clsUserOrganization> NewOrganization, int Before)
{
    if (!NewOrganization || NewOrganization->ID.isEmpty())
        return nullptr;
    const QString key = NewOrganization->ID;
    return m_items.Add(std::move(NewOrganization), key, Before);
}

int colOrganization::OrganizationNoFromName(const QString &Name) const
{
    return FirstNo(&clsUserOrganization::Name, Name);
}

int colOrganization::OrganizationNoFromDomain(const QString &Domain) const
{
    return FirstNo(&clsUserOrganization::Domain, Domain);
}

int colOrganization::FirstNo(QString clsUserOrganization::*Field, const QString &Value) const
{
    const QString value = Value.trimmed();
    if (value.isEmpty())
        return 0;
    for (int i = 1; i <= Count(); ++i)
        if ((Item(i)->*Field).trimmed().compare(value, Qt::CaseInsensitive) == 0)
            return i;
    return 0;
}
