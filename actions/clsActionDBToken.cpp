#include "clsActionDBToken.h"
#include "ActionFragment.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

namespace {

// The tags of the fragment, in their written order; reading follows the same
// order because the reader only moves forward.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag TokenNameTag = QStringLiteral("TokenName");
const MarkupTag ValueTag = QStringLiteral("Value");
const MarkupTag AssignResultToTag = QStringLiteral("AssignResultTo");

} // namespace

clsActionDBToken::clsActionDBToken(const QString &ActionID) : ID(ActionID) {}

QString clsActionDBToken::ActionDescription() const
{
    QString text = ActionDescriptionHead(ClassDesc(), Condition) + MarkupRun(TokenName, MarkupColors.ColorPrimary)
                   + QStringLiteral(" = ") + MarkupRun(Value, MarkupColors.ColorSecondary);
    if (!AssignResultTo.isEmpty())
        text += MarkupRun(QStringLiteral(" (Assign Result To ") + AssignResultTo + u')', MarkupColors.ColorAssign);
    return text + QStringLiteral("</TextBlock>");
}

QString clsActionDBToken::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(TokenName, TokenNameTag.Name());
        writer.Append(Value, ValueTag.Name());
        writer.Append(AssignResultTo, AssignResultToTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionDBToken.XML.Get"), error);
        return QString();
    }
}

void clsActionDBToken::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionDBToken::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(TokenName, TokenNameTag);
        Reader.Extract(Value, ValueTag);
        Reader.Extract(AssignResultTo, AssignResultToTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionDBToken.XML.Let"), error);
    }
}
