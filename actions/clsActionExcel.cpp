#include "clsActionExcel.h"
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
const MarkupTag FileNameTag = QStringLiteral("FileName");
const MarkupTag SendTag = QStringLiteral("Send");
const MarkupTag SendClearTag = QStringLiteral("SendClear");
const MarkupTag SendFreqTag = QStringLiteral("SendFreq");
const MarkupTag SendToTag = QStringLiteral("SendTo");

} // namespace

clsActionExcel::clsActionExcel(const QString &ActionID) : ID(ActionID) {}

QString clsActionExcel::ActionDescription() const
{
    QString text = ActionDescriptionHead(ClassDesc(), Condition) + MarkupRun(FileName, MarkupColors.ColorPrimary);
    if (Send)
        text += MarkupRun(QStringLiteral(" Send To"), MarkupColors.ColorSecondary) + MarkupRun(SendTo, MarkupColors.ColorSecondary);
    return text + QStringLiteral("</TextBlock>");
}

QString clsActionExcel::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(FileName, FileNameTag.Name());
        writer.Append(Send, SendTag.Name());
        writer.Append(SendClear, SendClearTag.Name());
        writer.Append(SendFreq, SendFreqTag.Name());
        writer.Append(SendTo, SendToTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionExcel.XML.Get"), error);
        return QString();
    }
}

void clsActionExcel::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionExcel::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(FileName, FileNameTag);
        Reader.Extract(Send, SendTag);
        Reader.Extract(SendClear, SendClearTag);
        Reader.Extract(SendFreq, SendFreqTag);
        Reader.Extract(SendTo, SendToTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionExcel.XML.Let"), error);
    }
}
