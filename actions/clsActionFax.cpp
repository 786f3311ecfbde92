#include "clsActionFax.h"
#include "ActionFragment.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

namespace {

// The tags of the fragment, in their written order.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag FaxCommentsTag = QStringLiteral("FaxComments");
const MarkupTag FaxCompanyTag = QStringLiteral("FaxCompany");
const MarkupTag FaxCoverPageTag = QStringLiteral("FaxCoverPage");
const MarkupTag FaxFilesTag = QStringLiteral("FaxFiles");
const MarkupTag FaxFromCompanyTag = QStringLiteral("FaxFromCompany");
const MarkupTag FaxFromNameTag = QStringLiteral("FaxFromName");
const MarkupTag FaxFromNumberTag = QStringLiteral("FaxFromNumber");
const MarkupTag FaxIncomingTag = QStringLiteral("FaxIncoming");
const MarkupTag FaxNameTag = QStringLiteral("FaxName");
const MarkupTag FaxNumberTag = QStringLiteral("FaxNumber");
const MarkupTag FaxReportTag = QStringLiteral("FaxReport");
const MarkupTag FaxReportDontPrintTag = QStringLiteral("FaxReportDontPrint");
const MarkupTag FaxSubjectTag = QStringLiteral("FaxSubject");

} // namespace

clsActionFax::clsActionFax(const QString &ActionID) : ID(ActionID) {}

QString clsActionFax::ActionDescription() const
{
    return ActionDescriptionHead(ClassDesc(), Condition) + QStringLiteral(" To ")
        + MarkupRun(FaxNumber, MarkupColors.ColorPrimary) + QStringLiteral("</TextBlock>");
}

QString clsActionFax::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(FaxComments, FaxCommentsTag.Name());
        writer.Append(FaxCompany, FaxCompanyTag.Name());
        writer.Append(FaxCoverPage, FaxCoverPageTag.Name());
        writer.Append(FaxFiles, FaxFilesTag.Name());
        writer.Append(FaxFromCompany, FaxFromCompanyTag.Name());
        writer.Append(FaxFromName, FaxFromNameTag.Name());
        writer.Append(FaxFromNumber, FaxFromNumberTag.Name());
        writer.Append(FaxIncoming, FaxIncomingTag.Name());
        writer.Append(FaxName, FaxNameTag.Name());
        writer.Append(FaxNumber, FaxNumberTag.Name());
        writer.Append(FaxReport, FaxReportTag.Name());
        writer.Append(FaxReportDontPrint, FaxReportDontPrintTag.Name());
        writer.Append(FaxSubject, FaxSubjectTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionFax.XML.Get"), error);
        return QString();
    }
}

void clsActionFax::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionFax::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(FaxComments, FaxCommentsTag);
        Reader.Extract(FaxCompany, FaxCompanyTag);
        Reader.Extract(FaxCoverPage, FaxCoverPageTag);
        Reader.Extract(FaxFiles, FaxFilesTag);
        Reader.Extract(FaxFromCompany, FaxFromCompanyTag);
        Reader.Extract(FaxFromName, FaxFromNameTag);
        Reader.Extract(FaxFromNumber, FaxFromNumberTag);
        Reader.Extract(FaxIncoming, FaxIncomingTag);
        Reader.Extract(FaxName, FaxNameTag);
        Reader.Extract(FaxNumber, FaxNumberTag);
        Reader.Extract(FaxReport, FaxReportTag);
        Reader.Extract(FaxReportDontPrint, FaxReportDontPrintTag);
        Reader.Extract(FaxSubject, FaxSubjectTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionFax.XML.Let"), error);
    }
}
