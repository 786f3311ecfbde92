#include "clsActionScript.h"
#include "ActionFragment.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

namespace {

// The tags of the fragment, in their written order; reading follows the same
// order because the reader only moves forward.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag SBScriptToRunTag = QStringLiteral("SBScriptToRun");

} // namespace

clsActionScript::clsActionScript(const QString &ActionID) : ID(ActionID) {}

QString clsActionScript::ClassDesc() const
{
    return QStringLiteral("Run An ") + Global.ProductName + QStringLiteral(" Script");
}

QString clsActionScript::ActionDescription() const
{
    return ActionDescriptionHead(ClassDesc(), Condition) + QStringLiteral("</TextBlock>");
}

QString clsActionScript::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(SBScriptToRun, SBScriptToRunTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionScript.XML.Get"), error);
        return QString();
    }
}

void clsActionScript::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionScript::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(SBScriptToRun, SBScriptToRunTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionScript.XML.Let"), error);
    }
}
