#include "clsAccountTrigger.h"
#include "Condition.h"
#include "ItemFragments.h"
#include "Selection.h"
#include "actions/ActionItem.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "foundation/TaggedMember.h"
#include "foundation/clsXML.h"

#include <QLocale>
#include <exception>

namespace {

using T = clsAccountTrigger;

struct HeadingTag
{
    TaggedMember<T> Member;
    bool InSubset; // also part of XMLSubset
};

// The heading tags of the fragment in written order. The condition follows
// them in its own section.
const HeadingTag FragmentTags[] = {
    {{QStringLiteral("TriggerID"), &T::TriggerID}, true},
    {{QStringLiteral("CCAddressLike"), &T::CCAddressLike}, false},
    {{QStringLiteral("CheckALLWords"), &T::CheckALLWords}, true},
    {{QStringLiteral("CheckBodyAlso"), &T::CheckBodyAlso}, true},
    {{QStringLiteral("TriggerDetails"), &T::Details}, true},
    {{QStringLiteral("TriggerEnabled"), &T::Enabled}, true},
    {{QStringLiteral("FlaggedForAction"), &T::FlaggedForAction}, false},
    {{QStringLiteral("FromAddressLIKE"), &T::FromAddressLIKE}, true},
    {{QStringLiteral("HelperMessage"), &T::HelperMessage}, false},
    {{QStringLiteral("HelperSubject"), &T::HelperSubject}, false},
    {{QStringLiteral("HelperTo"), &T::HelperTo}, false},
    {{QStringLiteral("MarkedAsImportant"), &T::MarkedAsImportant}, true},
    {{QStringLiteral("MarkedAsSenstive"), &T::MarkedAsSenstive}, true},
    {{QStringLiteral("TriggerName"), &T::Name}, true},
    {{QStringLiteral("ReceivedAfter"), &T::ReceivedAfter}, true},
    {{QStringLiteral("ReceivedAfterReset"), &T::ReceivedAfterReset}, false},
    {{QStringLiteral("SBScriptTrigger"), &T::SBScriptTrigger}, false},
    {{QStringLiteral("SBScriptTriggerEnabled"), &T::SBScriptTriggerEnabled}, true},
    {{QStringLiteral("Schedule"), &T::SCHEDULE}, true},
    {{QStringLiteral("StopProcessingFollowingActions"), &T::StopProcessingFollowingActions}, false},
    {{QStringLiteral("SubjectLineLIKE"), &T::SubjectLineLIKE}, true},
    {{QStringLiteral("ThenProcessID"), &T::ThenProcessID}, true},
    {{QStringLiteral("SaveToFolderID"), &T::SaveToFolderID}, false},
};

const MarkupTag ConditionSection = QStringLiteral("TriggerCondition");
const MarkupTag FieldsSection = QStringLiteral("Trigger.Fields");
const MarkupTag FieldTag = QStringLiteral("Trigger.Field");
const MarkupTag ActionsSection = QStringLiteral("Trigger.Actions");
const MarkupTag ActionTag = QStringLiteral("Trigger.Action");
const MarkupTag FieldsListTag = QStringLiteral("FieldsList");
const QString SubsetSection = QStringLiteral("TriggerSubset");
const QString DatabaseUpdateClass = QStringLiteral("DatabaseUpdate");

void WriteHeading(const T &trigger, clsXML &writer, bool subsetOnly)
{
    for (const HeadingTag &entry : FragmentTags)
        if (entry.InSubset || !subsetOnly)
            WriteTaggedMember(writer, trigger, entry.Member);
    writer.AppendXML(trigger.Condition, ConditionSection.Name());
}

void ReadHeading(T &trigger, clsXML &reader, bool subsetOnly)
{
    for (const HeadingTag &entry : FragmentTags)
        if (entry.InSubset || !subsetOnly)
            ReadTaggedMember(reader, trigger, entry.Member);
    reader.Extract(trigger.Condition, ConditionSection, true);
}

} // namespace

clsAccountTrigger::clsAccountTrigger()
    : TriggerID(NewUniqueID()), ReceivedAfter(LocalDateTime(LocalWallClock().date().addDays(-30), QTime(0, 0)))
{
    ReplaceCollections();
}

clsAccountTrigger::~clsAccountTrigger()
{
    if (SelectedTrigger == this)
        SelectedTrigger = nullptr;
}

void clsAccountTrigger::ReplaceCollections()
{
    m_ActionList = std::make_unique<colActions>();
    m_ActionList->setParent(this);
    m_FieldsToProcess = std::make_unique<colFields>();
    m_FieldsToProcess->setParent(this);
    m_DatabaseUpdateID.clear();
}

clsTriggerField *clsAccountTrigger::Field(int Number) const
{
    return m_FieldsToProcess->Item(Number);
}

QString clsAccountTrigger::FieldsList() const
{
    if (!m_FieldsList.isEmpty())
        return m_FieldsList;
    QStringList names;
    for (const clsTriggerField *field : *m_FieldsToProcess)
        names << field->Name;
    return names.join(u',');
}

ActionItem *clsAccountTrigger::DatabaseUpdate() const
{
    if (ActionItem *cached = m_ActionList->Item(m_DatabaseUpdateID);
        cached && cached->ClassName() == DatabaseUpdateClass)
        return cached;
    for (ActionItem *action : *m_ActionList) {
        if (action->ClassName() == DatabaseUpdateClass) {
            m_DatabaseUpdateID = action->ID();
            return action;
        }
    }
    return nullptr;
}

bool clsAccountTrigger::DatabaseUpdateEnabled() const
{
    const ActionItem *action = DatabaseUpdate();
    return action && action->Enabled();
}

bool clsAccountTrigger::INSchedule(const QDateTime &Now) const
{
    if (SCHEDULE.isEmpty())
        return true;
    const int hour = Now.time().hour() == 0 ? 24 : Now.time().hour();
    const int weekday = Now.date().dayOfWeek() % 7 + 1; // Sunday is 1
    const int position = (weekday - 1) * 24 + hour;
    return SCHEDULE.mid(position - 1, 1) != u"N";
}

QString clsAccountTrigger::ConditionAsText() const
{
    try {
        QString text = QStringLiteral("If Sender Is ");
        text += FromAddressLIKE == u"*" ? QStringLiteral("Any") : FromAddressLIKE;
        text += QStringLiteral(" And Received After ") + QLocale().toString(ReceivedAfter.date(), QLocale::ShortFormat);
        if (MarkedAsImportant > 0)
            text += QStringLiteral(" And Important");
        if (!SubjectLineLIKE.isEmpty()) {
            text += CheckBodyAlso ? QStringLiteral(" And Message Text Contains") : QStringLiteral(" And Subject Contains");
            text += CheckALLWords ? QStringLiteral(" All These ") : QStringLiteral(" Any Of These ");
            QString words = SubjectLineLIKE;
            words.replace(u'\t', u',');
            if (words.endsWith(u','))
                words.chop(1);
            text += words;
        }
        if (!Condition.isEmpty())
            text += QStringLiteral(" And ") + ConditionText(Condition, false);
        return text;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccountTrigger.ConditionAsText"), error);
        return QString();
    }
}

QString clsAccountTrigger::ConditionText(const QString &Condition, bool MarkUp) const
{
    return ::ConditionText(Condition, MarkUp);
}

QString clsAccountTrigger::XML() const
{
    try {
        clsXML writer;
        writer.XMLSectionStart(ClassName);
        WriteHeading(*this, writer, false);
        if (JustHeaderInXML) {
            m_FieldsList.clear();
            writer.Append(FieldsList(), FieldsListTag.Name());
        } else {
            writer.XMLSectionStart(FieldsSection.Name());
            for (const clsTriggerField *field : *m_FieldsToProcess)
                writer.AppendXML(field->XML());
            writer.XMLSectionEnd(FieldsSection.Name());
            writer.XMLSectionStart(ActionsSection.Name());
            for (const ActionItem *action : *m_ActionList)
                writer.AppendXML(action->XML(), ActionTag.Name());
            writer.XMLSectionEnd(ActionsSection.Name());
        }
        writer.XMLSectionEnd(ClassName);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccountTrigger.XML.Get"), error);
        return QString();
    }
}

// The fields are bounded by the actions section, and the heading by the
// fields section, so that a child's tags are never taken for the trigger's.
void clsAccountTrigger::setXML(const QString &Value)
{
    clsXML reader(Value);
    ReadXML(reader);
}

void clsAccountTrigger::ReadXML(clsXML &Reader)
{
    try {
        ReplaceCollections();
        Reader.setExtractUntil(FieldsSection);
        ReadHeading(*this, Reader, false);
        Reader.Extract(m_FieldsList, FieldsListTag);
        Reader.setExtractUntil(ActionsSection);
        clsXML section;
        Reader.Extract(section, FieldsSection);
        ForEachItemReader(section, FieldTag, [this](clsXML &field) { m_FieldsToProcess->AddXML(field); });
        Reader.setExtractUntil(QString());
        Reader.Extract(section, ActionsSection);
        ForEachItemReader(section, ActionTag, [this](clsXML &action) { m_ActionList->AddXML(action); });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccountTrigger.XML.Let"), error);
    }
}

QString clsAccountTrigger::XMLSubset() const
{
    try {
        clsXML writer;
        writer.XMLSectionStart(SubsetSection);
        WriteHeading(*this, writer, true);
        writer.XMLSectionEnd(SubsetSection);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccountTrigger.XMLSubset.Get"), error);
        return QString();
    }
}

void clsAccountTrigger::setXMLSubset(const QString &Value)
{
    try {
        clsXML reader(Value);
        ReadHeading(*this, reader, true);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccountTrigger.XMLSubset.Let"), error);
    }
}
