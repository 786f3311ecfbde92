#include "clsActionReport.h"
#include "ActionFragment.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <QUuid>
#include <exception>

namespace {

// The tags of the fragment, in their written order; reading follows the same
// order because the reader only moves forward.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag PrinterToUseTag = QStringLiteral("PrinterToUse");
const MarkupTag ExportTag = QStringLiteral("Export");
const MarkupTag ExportDontPrintTag = QStringLiteral("ExportDontPrint");
const MarkupTag ExportFileNameTag = QStringLiteral("ExportFileName");
const MarkupTag ExportFormatTag = QStringLiteral("ExportFormat");
const MarkupTag ExportCreateTempFileTag = QStringLiteral("ExportCreateTempFile");
const MarkupTag ExportAssignFilenameToTag = QStringLiteral("ExportAssignFilenameTo");
const MarkupTag DataTag = QStringLiteral("Data");
const MarkupTag NameTag = QStringLiteral("Name");

} // namespace

clsActionReport::clsActionReport(const QString &ActionID) : ID(ActionID) {}

QString clsActionReport::ActionDescription() const
{
    QString text = ActionDescriptionHead(ClassDesc(), Condition) + QStringLiteral(" ") + MarkupRun(Name, MarkupColors.ColorPrimary);
    if (Export)
        text += MarkupRun(QStringLiteral(" Export To ")
                              + (ExportCreateTempFile ? QStringLiteral("Temporary File") : ExportFileName),
                          MarkupColors.ColorSecondary);
    if (!ExportAssignFilenameTo.isEmpty())
        text += MarkupRun(QStringLiteral(" (Assign Filename To ") + ExportAssignFilenameTo + u')', MarkupColors.ColorAssign);
    if (ExportDontPrint)
        text += MarkupRun(QStringLiteral(" (Dont Print)"), MarkupColors.ColorOption);
    return text + QStringLiteral("</TextBlock>");
}

QString clsActionReport::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(PrinterToUse, PrinterToUseTag.Name());
        writer.Append(Export, ExportTag.Name());
        writer.Append(ExportDontPrint, ExportDontPrintTag.Name());
        writer.Append(ExportFileName, ExportFileNameTag.Name());
        writer.Append(ExportFormat, ExportFormatTag.Name());
        writer.Append(ExportCreateTempFile, ExportCreateTempFileTag.Name());
        writer.Append(ExportAssignFilenameTo, ExportAssignFilenameToTag.Name());
        writer.Append(Data, DataTag.Name());
        writer.Append(Name, NameTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionReport.XML.Get"), error);
        return QString();
    }
}

void clsActionReport::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionReport::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(PrinterToUse, PrinterToUseTag);
        Reader.Extract(Export, ExportTag);
        Reader.Extract(ExportDontPrint, ExportDontPrintTag);
        Reader.Extract(ExportFileName, ExportFileNameTag);
        Reader.Extract(ExportFormat, ExportFormatTag);
        Reader.Extract(ExportCreateTempFile, ExportCreateTempFileTag);
        Reader.Extract(ExportAssignFilenameTo, ExportAssignFilenameToTag);
        Reader.Extract(Data, DataTag);
        Reader.Extract(Name, NameTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionReport.XML.Let"), error);
    }
}

QStringList clsActionReport::ExportFormats()
{
    return {QStringLiteral("PDF"),  QStringLiteral("Rich Text"), QStringLiteral("HTML"),
            QStringLiteral("Text"), QStringLiteral("Tiff"),      QStringLiteral("Excel")};
}

QStringList clsActionReport::ExportExtensions()
{
    return {QStringLiteral("pdf"), QStringLiteral("rtf"),  QStringLiteral("htm"),
            QStringLiteral("txt"), QStringLiteral("tiff"), QStringLiteral("xls")};
}

QString clsActionReport::ExportTempFile() const
{
    return Global.DataPath + QStringLiteral("Temp/") + QUuid::createUuid().toString(QUuid::WithoutBraces) + u'.'
           + ExportExtensions().value(ExportFormat, ExportExtensions().constFirst());
}
