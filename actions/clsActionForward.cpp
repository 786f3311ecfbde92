#include "clsActionForward.h"
#include "ActionFragment.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

namespace {

// The tags of the fragment, in their written order.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag EmailForwardPlusAttachTag = QStringLiteral("EmailForwardPlusAttach");
const MarkupTag EmailForwardSubjectTag = QStringLiteral("EmailForwardSubject");
const MarkupTag EmailForwardToTag = QStringLiteral("EmailForwardTo");

} // namespace

clsActionForward::clsActionForward(const QString &ActionID) : ID(ActionID) {}

QString clsActionForward::ActionDescription() const
{
    QString option = EmailForwardSubject;
    if (EmailForwardPlusAttach)
        option += QStringLiteral(" (With Attachments)");
    return ActionDescriptionHead(ClassDesc(), Condition) + QStringLiteral(" To ")
        + MarkupRun(EmailForwardTo, MarkupColors.ColorPrimary) + QStringLiteral(" ")
        + MarkupRun(option.trimmed(), MarkupColors.ColorSecondary) + QStringLiteral("</TextBlock>");
}

QString clsActionForward::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(EmailForwardPlusAttach, EmailForwardPlusAttachTag.Name());
        writer.Append(EmailForwardSubject, EmailForwardSubjectTag.Name());
        writer.Append(EmailForwardTo, EmailForwardToTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionForward.XML.Get"), error);
        return QString();
    }
}

void clsActionForward::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionForward::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(EmailForwardPlusAttach, EmailForwardPlusAttachTag);
        Reader.Extract(EmailForwardSubject, EmailForwardSubjectTag);
        Reader.Extract(EmailForwardTo, EmailForwardToTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionForward.XML.Let"), error);
    }
}
