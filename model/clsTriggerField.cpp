#include "clsTriggerField.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"

#include <exception>
#include <variant>

namespace {

using F = clsTriggerField;
using Member = std::variant<QString F::*, bool F::*, qint16 F::*, Currency F::*>;

struct TaggedMember
{
    const char *Tag;
    Member Ref;
};

// The tags of the fragment in their written order; reading follows the same
// order because the reader only moves forward.
const TaggedMember FragmentTags[] = {
    {"ID", &F::ID},
    {"Enabled", &F::Enabled},
    {"CaseSensitive", &F::CaseSensitive},
    {"CheckSubjectLine", &F::CheckSubjectLine},
    {"EnvironmentVarName", &F::EnvironmentVarName},
    {"EnvironmentVarSet", &F::EnvironmentVarSet},
    {"ExtractBuiltIn", &F::ExtractBuiltIn},
    {"ExtractBuiltInField", &F::ExtractBuiltInField},
    {"FieldType", &F::FieldType},
    {"InsertFieldName", &F::InsertFieldName},
    {"InsertInto", &F::InsertInto},
    {"KeyExists", &F::KeyExists},
    {"LookFor", &F::LookFor},
    {"MapToOutlookContact", &F::MapToOutLookContact},
    {"MaxLength", &F::MaxLength},
    {"Name", &F::Name},
    {"RemoveFirstXChars", &F::RemoveFirstXChars},
    {"RemoveLastXChars", &F::RemoveLastXChars},
    {"SBScriptExtract", &F::SBScriptExtract},
    {"SBScriptExtractEnabled", &F::SBScriptExtractEnabled},
    {"StartAfterLookFor", &F::StartAfterLookFor},
    {"StartFromLastExtractPoint", &F::StartFromLastExtractPoint},
    {"ThenLookFor", &F::ThenLookFor},
    {"TrimBlanks", &F::TrimBlanks},
    {"Until_AnyChars", &F::Until_AnyChars},
    {"Until_EndOfBody", &F::Until_EndOfBody},
    {"Until_EndOfLine", &F::Until_EndOfLine},
    {"Until_NextBlankLine", &F::Until_NextBlankLine},
    {"Until_TheseWords", &F::Until_TheseWords},
    {"Until_ThisMany", &F::Until_ThisMany},
    {"UntilAnyOfTheseChars", &F::UntilAnyOfTheseChars},
    {"UntilTheseWords", &F::UntilTheseWords},
    {"UntilThisManyChars", &F::UntilThisManyChars},
    {"Until_EndTag", &F::Until_EndTag},
    {"ExtractMask", &F::ExtractMask},
    {"Lookup", &F::Lookup},
    {"LookupConnectioN", &F::LookupConnection},
    {"LookupSQL", &F::LookupSQL},
    {"LookupField", &F::LookupField},
    {"LookupCancelOnFail", &F::LookupCancelOnFail},
    {"Case", &F::ChangeCase},
    {"DefaultValue", &F::DefaultValue},
    {"Validate", &F::Validate},
    {"ValidateAction", &F::ValidateAction},
    {"ValidateHigh", &F::ValidateHigh},
    {"ValidateList", &F::ValidateList},
    {"ValidateLow", &F::ValidateLow},
    {"ValidateOption", &F::ValidateOption},
    {"Block", &F::Block},
    {"PassToTrigger", &F::PassToTrigger},
    {"PassToBody", &F::PassToBody},
    {"PassToSubject", &F::PassToSubject},
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

clsTriggerField::clsTriggerField() : ID(NewUniqueID()) {}

QString clsTriggerField::XML() const
{
    try {
        clsXML writer;
        writer.XMLSectionStart(ClassName);
        for (const TaggedMember &entry : FragmentTags) {
            const QString tag = QString::fromLatin1(entry.Tag);
            std::visit([&](auto member) { writer.Append(this->*member, tag); }, entry.Ref);
        }
        writer.XMLSectionEnd(ClassName);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsTriggerField.XML.Get"), error);
        return QString();
    }
}

void clsTriggerField::setXML(const QString &Value)
{
    try {
        clsXML reader(Value);
        for (const TaggedMember &entry : FragmentTags) {
            const QString tag = QString::fromLatin1(entry.Tag);
            std::visit([&](auto member) { reader.Extract(this->*member, tag); }, entry.Ref);
        }
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsTriggerField.XML.Let"), error);
    }
}
