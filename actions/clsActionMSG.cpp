#include "clsActionMSG.h"
#include "ActionFragment.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <QLocale>
#include <exception>

namespace {

// The tags of the fragment, in their written order; reading follows the same
// order because the reader only moves forward.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag AttachmentsTag = QStringLiteral("Attachments");
const MarkupTag AttachmentsIncomingTag = QStringLiteral("AttachmentsIncoming");
const MarkupTag AttachmentsIncomingInlineTag = QStringLiteral("AttachmentsIncomingInline");
const MarkupTag BCCTag = QStringLiteral("BCC");
const MarkupTag BodyTag = QStringLiteral("Body");
const MarkupTag CCTag = QStringLiteral("CC");
const MarkupTag DeliveryReceiptTag = QStringLiteral("DeliveryReceipt");
const MarkupTag FromTag = QStringLiteral("From");
const MarkupTag HTMLTag = QStringLiteral("HTML");
const MarkupTag HTMLFileTag = QStringLiteral("HTMLFile");
const MarkupTag HTMLTextTag = QStringLiteral("HTMLText");
const MarkupTag ImportanceTag = QStringLiteral("Importance");
const MarkupTag ReadReceiptTag = QStringLiteral("ReadReceipt");
const MarkupTag SchedulePeriodTag = QStringLiteral("SchedulePeriod");
const MarkupTag ScheduleIntervalTag = QStringLiteral("ScheduleInterval");
const MarkupTag ScheduleDeDupTag = QStringLiteral("ScheduleDeDup");
const MarkupTag ScheduleOnTag = QStringLiteral("ScheduleOn");
const MarkupTag ScheduleSendTag = QStringLiteral("ScheduleSend");
const MarkupTag SendToTag = QStringLiteral("SendTo");
const MarkupTag SensitivityTag = QStringLiteral("Sensitivity");
const MarkupTag SubjectTag = QStringLiteral("Subject");
const MarkupTag HTMLEmbedTag = QStringLiteral("HTMLEmbed");
const MarkupTag SendViaTag = QStringLiteral("SendVia");
const MarkupTag NDRSendTag = QStringLiteral("NDRSend");
const MarkupTag NDRSendToTag = QStringLiteral("NDRSendTo");
const MarkupTag NDRPassToTag = QStringLiteral("NDRPassTo");
const MarkupTag NDRPassToIDTag = QStringLiteral("NDRPassToID");
const MarkupTag CustomHeadersTag = QStringLiteral("CustomHeaders");

} // namespace

clsActionMSG::clsActionMSG(const QString &ActionID) : ID(ActionID) {}

QString clsActionMSG::ScheduleDescription(bool ScheduleSend, const QDateTime &ScheduleOn, qint16 SchedulePeriod,
                                          qint32 ScheduleInterval)
{
    if (!ScheduleSend)
        return QString();
    if (ScheduleInterval < 1)
        return MarkupRun(QStringLiteral("(Scheduled For ") + QLocale().toString(ScheduleOn.date(), QLocale::ShortFormat)
                             + u')',
                         MarkupColors.ColorOption);
    return MarkupRun(QStringLiteral("(Scheduled For ") + QString::number(ScheduleInterval)
                         + (SchedulePeriod == 0 ? QStringLiteral(" Days") : QStringLiteral(" Minutes"))
                         + QStringLiteral(" Time)"),
                     MarkupColors.ColorOption);
}

QDateTime clsActionMSG::ScheduleDue(const QDateTime &ScheduleOn, qint16 SchedulePeriod, qint32 ScheduleInterval,
                                    const QDateTime &Now)
{
    if (ScheduleInterval < 1)
        return ScheduleOn;
    if (SchedulePeriod == 0)
        return Now.addDays(ScheduleInterval);
    return Now.addSecs(qint64(ScheduleInterval) * 60);
}

QStringList clsActionMSG::SecurityNames()
{
    return {QStringLiteral("No Encryption"), QStringLiteral("STARTTLS"), QStringLiteral("SSL Implicit")};
}

clsActionMSG::Relay clsActionMSG::SplitSendVia(const QString &SendVia)
{
    const QStringList parts = SendVia.split(u'|');
    Relay via;
    via.Use = parts.value(0).trimmed().startsWith(u'Y', Qt::CaseInsensitive);
    via.Server = parts.value(1).trimmed();
    bool number = false;
    const int port = parts.value(2).trimmed().toInt(&number);
    if (number && port > 0)
        via.Port = port;
    via.Security = qBound(0, parts.value(3).trimmed().toInt(), 2);
    via.User = parts.value(4);
    // A password may hold "|" itself: it is the rest of the text.
    via.Password = parts.size() > 5 ? parts.mid(5).join(u'|') : QString();
    return via;
}

QString clsActionMSG::JoinSendVia(const Relay &Via)
{
    return QStringList{Via.Use ? QStringLiteral("Y") : QStringLiteral("N"), Via.Server, QString::number(Via.Port),
                       QString::number(Via.Security), Via.User, Via.Password}
        .join(u'|');
}

QList<QPair<QString, QString>> clsActionMSG::SplitHeaders(const QString &CustomHeaders)
{
    QList<QPair<QString, QString>> headers;
    for (const QString &line : QString(CustomHeaders).replace(QStringLiteral("\r\n"), QStringLiteral("\n")).split(u'\n')) {
        const QString name = line.section(u'|', 0, 0).trimmed();
        if (!name.isEmpty())
            headers.append({name, line.section(u'|', 1)});
    }
    return headers;
}

QString clsActionMSG::ActionDescription() const
{
    QString text = ActionDescriptionHead(ClassDesc(), Condition) + QStringLiteral(" To ")
        + MarkupRun(SendTo, MarkupColors.ColorPrimary) + QStringLiteral(" ")
        + MarkupRun(Subject, MarkupColors.ColorSecondary)
        + ScheduleDescription(ScheduleSend, ScheduleOn, SchedulePeriod, ScheduleInterval);
    const Relay via = SplitSendVia(SendVia);
    if (via.Use)
        text += MarkupRun(QStringLiteral("(Via ") + via.Server + u')', MarkupColors.ColorOption);
    return text + QStringLiteral("</TextBlock>");
}

QString clsActionMSG::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(Attachments, AttachmentsTag.Name());
        writer.Append(AttachmentsIncoming, AttachmentsIncomingTag.Name());
        writer.Append(AttachmentsIncomingInline, AttachmentsIncomingInlineTag.Name());
        writer.Append(BCC, BCCTag.Name());
        writer.Append(Body, BodyTag.Name());
        writer.Append(CC, CCTag.Name());
        writer.Append(DeliveryReceipt, DeliveryReceiptTag.Name());
        writer.Append(From, FromTag.Name());
        writer.Append(HTML, HTMLTag.Name());
        writer.Append(HTMLFile, HTMLFileTag.Name());
        writer.Append(HTMLText, HTMLTextTag.Name());
        writer.Append(Importance, ImportanceTag.Name());
        writer.Append(ReadReceipt, ReadReceiptTag.Name());
        writer.Append(SchedulePeriod, SchedulePeriodTag.Name());
        writer.Append(ScheduleInterval, ScheduleIntervalTag.Name());
        writer.Append(ScheduleDeDup, ScheduleDeDupTag.Name());
        writer.Append(ScheduleOn, ScheduleOnTag.Name());
        writer.Append(ScheduleSend, ScheduleSendTag.Name());
        writer.Append(SendTo, SendToTag.Name());
        writer.Append(Sensitivity, SensitivityTag.Name());
        writer.Append(Subject, SubjectTag.Name());
        writer.Append(HTMLEmbed, HTMLEmbedTag.Name());
        writer.Append(SendVia, SendViaTag.Name());
        writer.Append(NDRSend, NDRSendTag.Name());
        writer.Append(NDRSendTo, NDRSendToTag.Name());
        writer.Append(NDRPassTo, NDRPassToTag.Name());
        writer.Append(NDRPassToID, NDRPassToIDTag.Name());
        writer.Append(CustomHeaders, CustomHeadersTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionMSG.XML.Get"), error);
        return QString();
    }
}

void clsActionMSG::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionMSG::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(Attachments, AttachmentsTag);
        Reader.Extract(AttachmentsIncoming, AttachmentsIncomingTag);
        Reader.Extract(AttachmentsIncomingInline, AttachmentsIncomingInlineTag);
        Reader.Extract(BCC, BCCTag);
        Reader.Extract(Body, BodyTag);
        Reader.Extract(CC, CCTag);
        Reader.Extract(DeliveryReceipt, DeliveryReceiptTag);
        Reader.Extract(From, FromTag);
        Reader.Extract(HTML, HTMLTag);
        Reader.Extract(HTMLFile, HTMLFileTag);
        Reader.Extract(HTMLText, HTMLTextTag);
        Reader.Extract(Importance, ImportanceTag);
        Reader.Extract(ReadReceipt, ReadReceiptTag);
        Reader.Extract(SchedulePeriod, SchedulePeriodTag);
        Reader.Extract(ScheduleInterval, ScheduleIntervalTag);
        Reader.Extract(ScheduleDeDup, ScheduleDeDupTag);
        Reader.Extract(ScheduleOn, ScheduleOnTag);
        Reader.Extract(ScheduleSend, ScheduleSendTag);
        Reader.Extract(SendTo, SendToTag);
        Reader.Extract(Sensitivity, SensitivityTag);
        Reader.Extract(Subject, SubjectTag);
        Reader.Extract(HTMLEmbed, HTMLEmbedTag);
        Reader.Extract(SendVia, SendViaTag);
        Reader.Extract(NDRSend, NDRSendTag);
        Reader.Extract(NDRSendTo, NDRSendToTag);
        Reader.Extract(NDRPassTo, NDRPassToTag);
        Reader.Extract(NDRPassToID, NDRPassToIDTag);
        Reader.Extract(CustomHeaders, CustomHeadersTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionMSG.XML.Let"), error);
    }
}
