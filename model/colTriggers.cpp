#include "colTriggers.h"
#include "ItemFragments.h"
#include "Selection.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"

#include <exception>

namespace {

const QString TriggersSection = QStringLiteral("Triggers");
const QString TriggerTag = QStringLiteral("Trigger");
const QString NamesSection = QStringLiteral("TriggerNames");
const QString SubsetTag = QStringLiteral("TriggerSubset");

// A section holding, in order, the fragment that FragmentOf gives of each
// trigger.
template <typename FragmentOf>
QString SectionOf(const KeyedCollection<clsAccountTrigger> &triggers, const QString &Section, FragmentOf fragmentOf)
{
    clsXML writer;
    writer.XMLSectionStart(Section);
    for (clsAccountTrigger *trigger : triggers)
        writer.AppendXML(fragmentOf(*trigger));
    writer.XMLSectionEnd(Section);
    return writer.GetXML();
}

} // namespace

void colTriggers::setParent(clsAccount *Value)
{
    m_parent = Value;
    for (clsAccountTrigger *trigger : m_triggers)
        trigger->Parent = Value;
}

QString colTriggers::XML() const
{
    try {
        return SectionOf(m_triggers, TriggersSection, [](const clsAccountTrigger &trigger) { return trigger.XML(); });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colTriggers.XML.Get"), error);
        return QString();
    }
}

void colTriggers::setXML(const QString &Value)
{
    clsXML reader(Value);
    ReadXML(reader);
}

void colTriggers::ReadXML(clsXML &Reader)
{
    try {
        m_triggers.Clear();
        ForEachItemReader(Reader, TriggerTag, [this](clsXML &trigger) { AddXML(trigger); });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colTriggers.XML.Let"), error);
    }
}

bool colTriggers::ReceivedAfterReset() const
{
    for (const clsAccountTrigger *trigger : m_triggers)
        if (trigger->ReceivedAfterReset)
            return true;
    return false;
}

void colTriggers::setReceivedAfterReset(bool Value)
{
    for (clsAccountTrigger *trigger : m_triggers)
        trigger->ReceivedAfterReset = Value;
}

QString colTriggers::XMLConditionsOnly() const
{
    try {
        return SectionOf(m_triggers, TriggersSection, [](clsAccountTrigger &trigger) {
            trigger.JustHeaderInXML = true;
            const QString fragment = trigger.XML();
            trigger.JustHeaderInXML = false;
            return fragment;
        });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colTriggers.XMLConditionsOnly.Get"), error);
        return QString();
    }
}

QString colTriggers::XMLNames() const
{
    try {
        return SectionOf(m_triggers, NamesSection, [](const clsAccountTrigger &trigger) { return trigger.XMLSubset(); });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colTriggers.XMLNames.Get"), error);
        return QString();
    }
}

void colTriggers::setXMLNames(const QString &Value)
{
    try {
        ForEachItemFragment(Value, SubsetTag, [this](const QString &fragment) {
            clsXML reader(fragment);
            QString id;
            reader.Extract(id, QStringLiteral("TriggerID"));
            clsAccountTrigger *trigger = Item(id);
            if (!trigger) {
                auto created = std::make_unique<clsAccountTrigger>();
                created->TriggerID = id;
                trigger = Add(std::move(created));
            }
            if (trigger)
                trigger->setXMLSubset(fragment);
        });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colTriggers.XMLNames.Let"), error);
    }
}

clsAccountTrigger *colTriggers::AddXML(const QString &XML)
{
    clsXML reader(XML);
    return AddXML(reader);
}

clsAccountTrigger *colTriggers::AddXML(clsXML &Reader)
{
    try {
        auto trigger = std::make_unique<clsAccountTrigger>();
        trigger->ReadXML(Reader);
        return Add(std::move(trigger));
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colTriggers.AddXML"), error);
        return nullptr;
    }
}

clsAccountTrigger *colTriggers::Add(std::unique_ptr<clsAccountTrigger> NewTrigger)
{
    if (!NewTrigger)
        return nullptr;
    NewTrigger->Parent = m_parent;
    const QString key = NewTrigger->TriggerID;
    return m_triggers.Add(std::move(NewTrigger), key);
}

void colTriggers::DeleteCurrent()
{
    if (!SelectedTrigger)
        return;
    const int index = m_triggers.IndexOf(SelectedTrigger->TriggerID);
    if (m_triggers.Item(index) != SelectedTrigger)
        return;
    m_triggers.Delete(index);
    SelectedTrigger = m_triggers.Item(Count());
}

int colTriggers::TriggerNoFromID(const QString &ID) const
{
    const QString id = ID.trimmed();
    const int index = m_triggers.IndexOf(id);
    return index > 0 && m_triggers.Item(index)->TriggerID == id ? index : 0;
}

QDate colTriggers::OldestReceivedAfter(const QDate &Today) const
{
    QDate oldest = Today;
    for (const clsAccountTrigger *trigger : m_triggers)
        if (trigger->ReceivedAfter.isValid() && trigger->ReceivedAfter.date() < oldest)
            oldest = trigger->ReceivedAfter.date();
    return oldest;
}
