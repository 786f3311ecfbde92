#pragma once
#include "clsAccountTrigger.h"
#include "foundation/KeyedCollection.h"

#include <QDate>
#include <QString>
#include <memory>

class clsAccount;

// The triggers of an account, keyed by TriggerID, in the order in which the
// server tests them.
class colTriggers
{
public:
    // The owning account, handed to every trigger in the collection.
    clsAccount *Parent() const { return m_parent; }
    void setParent(clsAccount *Value);

    // Section "Triggers" with the full fragment of each trigger. Reading
    // replaces the collection.
    QString XML() const;
    void setXML(const QString &Value);

    // True when any trigger's ReceivedAfterReset is; setting sets all.
    bool ReceivedAfterReset() const;
    void setReceivedAfterReset(bool Value);

    // Section "Triggers" with the short form of each trigger; read as XML.
    QString XMLConditionsOnly() const;
    void setXMLConditionsOnly(const QString &Value) { setXML(Value); }

    // Section "TriggerNames" with each trigger's XMLSubset. Reading updates
    // the triggers it names, keeping their fields and actions, and adds the
    // ones it doesn't know.
    QString XMLNames() const;
    void setXMLNames(const QString &Value);

    // A new trigger read from the fragment and added; nullptr when its
    // TriggerID is already present.
    clsAccountTrigger *AddXML(const QString &XML);
    clsAccountTrigger *AddXML(clsXML &Reader);
    // Replaces the collection by the triggers of a reader of its fragment.
    void ReadXML(clsXML &Reader);
    // Adds under TriggerID and sets Parent; nullptr when the TriggerID is
    // already present.
    clsAccountTrigger *Add(std::unique_ptr<clsAccountTrigger> NewTrigger);
    int Count() const { return m_triggers.Count(); }
    bool Delete(int Index) { return m_triggers.Delete(Index); }
    bool Delete(const QString &Key) { return m_triggers.Delete(Key); }
    // Removes SelectedTrigger when it is one of these; the selection moves to
    // the last trigger, or to nothing when none is left.
    void DeleteCurrent();
    // By 1-based position or TriggerID; nullptr when there is none.
    clsAccountTrigger *Item(int Index) const { return m_triggers.Item(Index); }
    clsAccountTrigger *Item(const QString &Key) const { return m_triggers.Item(Key); }
    auto begin() const { return m_triggers.begin(); }
    auto end() const { return m_triggers.end(); }
    // Exchanges two triggers; nothing when equal or either is out of range.
    void Swap(int x, int y) { m_triggers.Swap(x, y); }
    // 1-based position of the trigger with this ID (trimmed), 0 if none.
    int TriggerNoFromID(const QString &ID) const;
    // The earliest ReceivedAfter date of all triggers, today at the latest.
    QDate OldestReceivedAfter(const QDate &Today = QDate::currentDate()) const;

private:
    KeyedCollection<clsAccountTrigger> m_triggers;
    clsAccount *m_parent = nullptr;
};
