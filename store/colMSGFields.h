#pragma once
#include "clsMessageField.h"
#include "foundation/KeyedCollection.h"

#include <QString>
#include <memory>

// The extracted fields of a message in the order of its trigger's fields.
class colMSGFields
{
public:
    // Appends the field and returns it.
    clsMessageField *Add(std::unique_ptr<clsMessageField> NewField = std::make_unique<clsMessageField>());
    int Count() const { return m_items.Count(); }
    bool Delete(int Index) { return m_items.Delete(Index); }
    // 1-based; nullptr when there is none.
    clsMessageField *Item(int Index) const { return m_items.Item(Index); }
    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

    // 1-based position of the field with this name, both sides trimmed and
    // compared in lower case; 0 when there is none.
    int FieldNoFromName(const QString &Name) const;

private:
    KeyedCollection<clsMessageField> m_items;
};
