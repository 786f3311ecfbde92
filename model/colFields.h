#pragma once
#include "clsTriggerField.h"
#include "foundation/KeyedCollection.h"

#include <QString>
#include <memory>

class clsAccountTrigger;

// The fields of a trigger in extraction order, keyed by ID.
class colFields
{
public:
    // The owning trigger, handed to every field in the collection.
    clsAccountTrigger *Parent() const { return m_parent; }
    void setParent(clsAccountTrigger *Value);

    // A new field read from the fragment and added; nullptr when its ID is
    // already present.
    clsTriggerField *AddXML(const QString &XML);
    clsTriggerField *AddXML(clsXML &Reader);
    // Adds under the field's ID and sets its Parent; nullptr when the ID is
    // already present.
    clsTriggerField *Add(std::unique_ptr<clsTriggerField> NewField);
    int Count() const { return m_fields.Count(); }
    bool Delete(int Index) { return m_fields.Delete(Index); }
    bool Delete(const QString &Key) { return m_fields.Delete(Key); }
    // By 1-based position or by ID; nullptr when there is none.
    clsTriggerField *Item(int Index) const { return m_fields.Item(Index); }
    clsTriggerField *Item(const QString &Key) const { return m_fields.Item(Key); }
    // Exchanges two fields; nothing when equal or either is out of range.
    void Swap(int x, int y) { m_fields.Swap(x, y); }
    auto begin() const { return m_fields.begin(); }
    auto end() const { return m_fields.end(); }

    // Names, each but the last followed by CR LF.
    QString FieldsList() const;
    // "%name%" of each field, separated by "|": the combo list of grids.
    QString FieldsGridComboList() const;
    // 1-based position of the field with this ID (trimmed, exact), 0 if none.
    int FieldNoFromID(const QString &ID) const;
    // 1-based position of the field with this name (trimmed, any case), 0 if none.
    int FieldNoFromName(const QString &Name) const;
    // 1-based position of this very object, 0 when it is not in the collection.
    int FieldPosition(const clsTriggerField *ForField) const;

private:
    KeyedCollection<clsTriggerField> m_fields;
    clsAccountTrigger *m_parent = nullptr;
};
