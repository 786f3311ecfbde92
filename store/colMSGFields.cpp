#include "colMSGFields.h"

clsMessageField *colMSGFields::Add(std::unique_ptr<clsMessageField> NewField)
{
    return NewField ? m_items.Add(std::move(NewField)) : nullptr;
}

int colMSGFields::FieldNoFromName(const QString &Name) const
{
    const QString name = Name.trimmed().toLower();
    return m_items.FirstIndex([&](const clsMessageField &field) { return field.Name.trimmed().toLower() == name; });
}
