#include "clsActionSMS.h"
#include "ActionFragment.h"
#include "clsActionMSG.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

namespace {

// The tags of the fragment, in their written order.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag BodyTag = QStringLiteral("Body");
const MarkupTag FromTag = QStringLiteral("From");
const MarkupTag SchedulePeriodTag = QStringLiteral("SchedulePeriod");
const MarkupTag ScheduleIntervalTag = QStringLiteral("ScheduleInterval");
const MarkupTag ScheduleDeDupTag = QStringLiteral("ScheduleDeDup");
const MarkupTag ScheduleOnTag = QStringLiteral("ScheduleOn");
const MarkupTag ScheduleSendTag = QStringLiteral("ScheduleSend");
const MarkupTag SendToTag = QStringLiteral("SendTo");
const MarkupTag SubjectTag = QStringLiteral("Subject");
const MarkupTag SendViaSNPPTag = QStringLiteral("SendViaSNPP");
const MarkupTag SNPPServerTag = QStringLiteral("SNPPServer");
const MarkupTag SNPPLoginIDTag = QStringLiteral("SNPPLoginID");
const MarkupTag SNPPAssignReplyToTag = QStringLiteral("SNPPAssignReplyTo");

} // namespace

clsActionSMS::clsActionSMS(const QString &ActionID) : ID(ActionID) {}

QString clsActionSMS::ActionDescription() const
{
    return ActionDescriptionHead(ClassDesc(), Condition) + QStringLiteral(" To ")
        + MarkupRun(SendTo, MarkupColors.ColorPrimary)
        + clsActionMSG::ScheduleDescription(ScheduleSend, ScheduleOn, SchedulePeriod, ScheduleInterval)
        + QStringLiteral("</TextBlock>");
}

QString clsActionSMS::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(Body, BodyTag.Name());
        writer.Append(From, FromTag.Name());
        writer.Append(SchedulePeriod, SchedulePeriodTag.Name());
        writer.Append(ScheduleInterval, ScheduleIntervalTag.Name());
        writer.Append(ScheduleDeDup, ScheduleDeDupTag.Name());
        writer.Append(ScheduleOn, ScheduleOnTag.Name());
        writer.Append(ScheduleSend, ScheduleSendTag.Name());
        writer.Append(SendTo, SendToTag.Name());
        writer.Append(Subject, SubjectTag.Name());
        writer.Append(SendViaSNPP, SendViaSNPPTag.Name());
        writer.Append(SNPPServer, SNPPServerTag.Name());
        writer.Append(SNPPLoginID, SNPPLoginIDTag.Name());
        writer.Append(SNPPAssignReplyTo, SNPPAssignReplyToTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionSMS.XML.Get"), error);
        return QString();
    }
}

void clsActionSMS::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionSMS::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(Body, BodyTag);
        Reader.Extract(From, FromTag);
        Reader.Extract(SchedulePeriod, SchedulePeriodTag);
        Reader.Extract(ScheduleInterval, ScheduleIntervalTag);
        Reader.Extract(ScheduleDeDup, ScheduleDeDupTag);
        Reader.Extract(ScheduleOn, ScheduleOnTag);
        Reader.Extract(ScheduleSend, ScheduleSendTag);
        Reader.Extract(SendTo, SendToTag);
        Reader.Extract(Subject, SubjectTag);
        Reader.Extract(SendViaSNPP, SendViaSNPPTag);
        Reader.Extract(SNPPServer, SNPPServerTag);
        Reader.Extract(SNPPLoginID, SNPPLoginIDTag);
        Reader.Extract(SNPPAssignReplyTo, SNPPAssignReplyToTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionSMS.XML.Let"), error);
    }
}
