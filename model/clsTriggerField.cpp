#include "clsTriggerField.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "foundation/TaggedMember.h"
#include "foundation/clsXML.h"

#include <exception>

namespace {

using F = clsTriggerField;

// The tags of the fragment in their written order; reading follows the same
// order because the reader only moves forward.
const TaggedMember<F> FragmentTags[] = {
    {QStringLiteral("ID"), &F::ID},
    {QStringLiteral("Enabled"), &F::Enabled},
    {QStringLiteral("CaseSensitive"), &F::CaseSensitive},
    {QStringLiteral("CheckSubjectLine"), &F::CheckSubjectLine},
    {QStringLiteral("EnvironmentVarName"), &F::EnvironmentVarName},
    {QStringLiteral("EnvironmentVarSet"), &F::EnvironmentVarSet},
    {QStringLiteral("ExtractBuiltIn"), &F::ExtractBuiltIn},
    {QStringLiteral("ExtractBuiltInField"), &F::ExtractBuiltInField},
    {QStringLiteral("FieldType"), &F::FieldType},
    {QStringLiteral("InsertFieldName"), &F::InsertFieldName},
    {QStringLiteral("InsertInto"), &F::InsertInto},
    {QStringLiteral("KeyExists"), &F::KeyExists},
    {QStringLiteral("LookFor"), &F::LookFor},
    {QStringLiteral("MapToOutlookContact"), &F::MapToOutLookContact},
    {QStringLiteral("MaxLength"), &F::MaxLength},
    {QStringLiteral("Name"), &F::Name},
    {QStringLiteral("RemoveFirstXChars"), &F::RemoveFirstXChars},
    {QStringLiteral("RemoveLastXChars"), &F::RemoveLastXChars},
    {QStringLiteral("SBScriptExtract"), &F::SBScriptExtract},
    {QStringLiteral("SBScriptExtractEnabled"), &F::SBScriptExtractEnabled},
    {QStringLiteral("StartAfterLookFor"), &F::StartAfterLookFor},
    {QStringLiteral("StartFromLastExtractPoint"), &F::StartFromLastExtractPoint},
    {QStringLiteral("ThenLookFor"), &F::ThenLookFor},
    {QStringLiteral("TrimBlanks"), &F::TrimBlanks},
    {QStringLiteral("Until_AnyChars"), &F::Until_AnyChars},
    {QStringLiteral("Until_EndOfBody"), &F::Until_EndOfBody},
    {QStringLiteral("Until_EndOfLine"), &F::Until_EndOfLine},
    {QStringLiteral("Until_NextBlankLine"), &F::Until_NextBlankLine},
    {QStringLiteral("Until_TheseWords"), &F::Until_TheseWords},
    {QStringLiteral("Until_ThisMany"), &F::Until_ThisMany},
    {QStringLiteral("UntilAnyOfTheseChars"), &F::UntilAnyOfTheseChars},
    {QStringLiteral("UntilTheseWords"), &F::UntilTheseWords},
    {QStringLiteral("UntilThisManyChars"), &F::UntilThisManyChars},
    {QStringLiteral("Until_EndTag"), &F::Until_EndTag},
    {QStringLiteral("ExtractMask"), &F::ExtractMask},
    {QStringLiteral("Lookup"), &F::Lookup},
    {QStringLiteral("LookupConnectioN"), &F::LookupConnection},
    {QStringLiteral("LookupSQL"), &F::LookupSQL},
    {QStringLiteral("LookupField"), &F::LookupField},
    {QStringLiteral("LookupCancelOnFail"), &F::LookupCancelOnFail},
    {QStringLiteral("Case"), &F::ChangeCase},
    {QStringLiteral("DefaultValue"), &F::DefaultValue},
    {QStringLiteral("Validate"), &F::Validate},
    {QStringLiteral("ValidateAction"), &F::ValidateAction},
    {QStringLiteral("ValidateHigh"), &F::ValidateHigh},
    {QStringLiteral("ValidateList"), &F::ValidateList},
    {QStringLiteral("ValidateLow"), &F::ValidateLow},
    {QStringLiteral("ValidateOption"), &F::ValidateOption},
    {QStringLiteral("Block"), &F::Block},
    {QStringLiteral("PassToTrigger"), &F::PassToTrigger},
    {QStringLiteral("PassToBody"), &F::PassToBody},
    {QStringLiteral("PassToSubject"), &F::PassToSubject},
};

} // namespace

const QStringList clsTriggerField::FieldTypeLabels = {
    QStringLiteral("String"), QStringLiteral("Number"),  QStringLiteral("Date"),
    QStringLiteral("Time"),   QStringLiteral("Date & Time"), QStringLiteral("Text"),
    QStringLiteral("Integer"), QStringLiteral("Decimal"), QStringLiteral("Boolean")};

const QStringList clsTriggerField::FieldTypeColumns = {
    QStringLiteral("nvarchar"), QStringLiteral("numeric (12,4)"), QStringLiteral("date"),
    QStringLiteral("time"),     QStringLiteral("datetime"),       QStringLiteral("ntext"),
    QStringLiteral("int"),      QStringLiteral("decimal (12,2)"), QStringLiteral("bit")};

const QStringList clsTriggerField::ChangeCaseLabels = {
    QStringLiteral("No Change"), QStringLiteral("Change To UPPERCASE"), QStringLiteral("Word Capitalize")};

const QStringList clsTriggerField::ValidateOptionLabels = {
    QStringLiteral("Cannot Be Blank Or Zero"), QStringLiteral("Must be In Numeric Range"),
    QStringLiteral("Must be In List")};

const QStringList clsTriggerField::ValidateActionLabels = {
    QStringLiteral("Set Field To Default Value"), QStringLiteral("Cancel Trigger Execution")};

clsTriggerField::clsTriggerField() : clsTriggerField(NewUniqueID()) {}

clsTriggerField::clsTriggerField(QString ID) : ID(std::move(ID)) {}

QString clsTriggerField::XML() const
{
    try {
        clsXML writer;
        writer.XMLSectionStart(ClassName);
        for (const TaggedMember<F> &entry : FragmentTags)
            WriteTaggedMember(writer, *this, entry);
        writer.XMLSectionEnd(ClassName);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsTriggerField.XML.Get"), error);
        return QString();
    }
}

void clsTriggerField::setXML(const QString &Value)
{
    clsXML reader(Value);
    ReadXML(reader);
}

void clsTriggerField::ReadXML(clsXML &Reader)
{
    try {
        for (const TaggedMember<F> &entry : FragmentTags)
            ReadTaggedMember(Reader, *this, entry);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsTriggerField.XML.Let"), error);
    }
}
