#include "clsActionPassTo.h"
#include "ActionFragment.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

clsActionPassTo::clsActionPassTo() : ID(NewUniqueID()) {}

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
        writer.Append(TriggerID, QStringLiteral("TriggerID"));
        writer.Append(Value, QStringLiteral("Value"));
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
        Reader.Extract(ID, QStringLiteral("ID"));
        Reader.Extract(Enabled, QStringLiteral("Enabled"));
        Reader.Extract(TriggerID, QStringLiteral("TriggerID"));
        Reader.Extract(Value, QStringLiteral("Value"));
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionPassTo.XML.Let"), error);
    }
}
