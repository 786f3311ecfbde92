#include "clsActionText.h"
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
const MarkupTag AppendTag = QStringLiteral("Append");
const MarkupTag AssignToTag = QStringLiteral("AssignTo");
const MarkupTag BackupTag = QStringLiteral("Backup");
const MarkupTag TextTag = QStringLiteral("Text");
const MarkupTag FormatTag = QStringLiteral("Format");
const MarkupTag LineTerminatorTag = QStringLiteral("LineTerminator");

} // namespace

clsActionText::clsActionText(const QString &ActionID) : ID(ActionID) {}

QString clsActionText::ActionDescription() const
{
    QString text = ActionDescriptionHead(ClassDesc(), Condition);
    const bool writes = !Text.isEmpty();
    text += MarkupRun(FileName + (writes ? QStringLiteral(" Write") : QString()), MarkupColors.ColorPrimary);
    if (writes && Append)
        text += MarkupRun(QStringLiteral(" (Append)"), MarkupColors.ColorSecondary);
    if (writes && Backup)
        text += MarkupRun(QStringLiteral(" (Make Backup)"), MarkupColors.ColorSecondary);
    if (!AssignTo.isEmpty())
        text += MarkupRun(QStringLiteral(" (Read Text File Assign To ") + AssignTo + u')', MarkupColors.ColorAssign);
    return text + QStringLiteral("</TextBlock>");
}

QString clsActionText::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(FileName, FileNameTag.Name());
        writer.Append(Append, AppendTag.Name());
        writer.Append(AssignTo, AssignToTag.Name());
        writer.Append(Backup, BackupTag.Name());
        writer.Append(Text, TextTag.Name());
        writer.Append(Format, FormatTag.Name());
        writer.Append(LineTerminator, LineTerminatorTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionText.XML.Get"), error);
        return QString();
    }
}

void clsActionText::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionText::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(FileName, FileNameTag);
        Reader.Extract(Append, AppendTag);
        Reader.Extract(AssignTo, AssignToTag);
        Reader.Extract(Backup, BackupTag);
        Reader.Extract(Text, TextTag);
        Reader.Extract(Format, FormatTag);
        Reader.Extract(LineTerminator, LineTerminatorTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionText.XML.Let"), error);
    }
}
