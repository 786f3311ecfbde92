#include "clsActionPopup.h"
#include "ActionFragment.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

namespace {

// The tags of the fragment, in their written order.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag PopupMessageTag = QStringLiteral("PopupMessage");
const MarkupTag PopupStyleTag = QStringLiteral("PopupStyle");

} // namespace

clsActionPopup::clsActionPopup(const QString &ActionID) : ID(ActionID) {}

QStringList clsActionPopup::StyleNames()
{
    return {QStringLiteral("MSN Messenger"), QStringLiteral("Outlook")};
}

QStringList clsActionPopup::FadeNames()
{
    return {QStringLiteral("Scroll"), QStringLiteral("Fade")};
}

QString clsActionPopup::ActionDescription() const
{
    return ActionDescriptionHead(ClassDesc(), Condition) + MarkupRun(PopupMessage, MarkupColors.ColorPrimary)
        + QStringLiteral("</TextBlock>");
}

QString clsActionPopup::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(PopupMessage, PopupMessageTag.Name());
        writer.Append(PopupStyle, PopupStyleTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionPopup.XML.Get"), error);
        return QString();
    }
}

void clsActionPopup::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionPopup::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(PopupMessage, PopupMessageTag);
        Reader.Extract(PopupStyle, PopupStyleTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionPopup.XML.Let"), error);
    }
}
