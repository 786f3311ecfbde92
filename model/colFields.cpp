#include "colFields.h"
#include "foundation/clsXML.h"
#include "foundation/Startup.h"

#include <QStringList>
#include <exception>

void colFields::setParent(clsAccountTrigger *Value)
{
    m_parent = Value;
    for (clsTriggerField *field : m_fields)
        field->Parent = Value;
}

clsTriggerField *colFields::AddXML(const QString &XML)
{
    clsXML reader(XML);
    return AddXML(reader);
}

clsTriggerField *colFields::AddXML(clsXML &Reader)
{
    try {
        auto field = std::make_unique<clsTriggerField>(QString());
        field->ReadXML(Reader);
        return Add(std::move(field));
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colFields.AddXML"), error);
        return nullptr;
    }
}

clsTriggerField *colFields::Add(std::unique_ptr<clsTriggerField> NewField)
{
    if (!NewField)
        return nullptr;
    NewField->Parent = m_parent;
    const QString key = NewField->ID;
    return m_fields.Add(std::move(NewField), key);
}

QString colFields::FieldsList() const
{
    QStringList names;
    for (const clsTriggerField *field : m_fields)
        names << field->Name;
    return names.join(QStringLiteral("\r\n"));
}

QString colFields::FieldsGridComboList() const
{
    QStringList tokens;
    for (const clsTriggerField *field : m_fields)
        tokens << u'%' + field->Name + u'%';
    return tokens.join(u'|');
}

int colFields::FieldNoFromID(const QString &ID) const
{
    const QString id = ID.trimmed();
    const int index = m_fields.IndexOf(id);
    return index > 0 && m_fields.Item(index)->ID == id ? index : 0;
}

// Names are no keys, so this one walks the list.
int colFields::FieldNoFromName(const QString &Name) const
{
    const QString name = Name.trimmed().toLower();
    int index = 0;
    for (const clsTriggerField *field : m_fields) {
        ++index;
        if (field->Name.toLower() == name)
            return index;
    }
    return 0;
}

int colFields::FieldPosition(const clsTriggerField *ForField) const
{
    if (!ForField)
        return 0;
    const int index = m_fields.IndexOf(ForField->ID);
    return index > 0 && m_fields.Item(index) == ForField ? index : 0;
}
