#include "clsActionPassTo.h"
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
const MarkupTag TriggerIDTag = QStringLiteral("TriggerID");
const MarkupTag ValueTag = QStringLiteral("Value");

} // namespace

clsActionPassTo::clsActionPassTo(const QString &ActionID) : ID(ActionID) {}

QString clsActionPassTo::ActionDescription() const
{
    QString value = Value;
    value.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    value.replace(u'\r', u' ');
    value.replace(u'\n', u' ');
    const QString target = TriggerName ? TriggerName(TriggerID) : QString();
    return ActionDescriptionHead(ClassDesc(), Condition) + QStringLiteral(" To ")
           + MarkupRun(target, MarkupColors.ColorPrimary) + QStringLiteral(" ")
           + MarkupRun(value, MarkupColors.ColorSecondary) + QStringLiteral("</TextBlock>");
}

QString clsActionPassTo::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(TriggerID, TriggerIDTag.Name());
        writer.Append(Value, ValueTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionPassTo.XML.Get"), error);
        return QString();
    }
}

void clsActionPassTo::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionPassTo::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(TriggerID, TriggerIDTag);
        Reader.Extract(Value, ValueTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionPassTo.XML.Let"), error);
    }
}
