#include "clsActionScript.h"
#include "ActionFragment.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

clsActionScript::clsActionScript() : ID(NewUniqueID()) {}

QString clsActionScript::ClassDesc() const
{
    return QStringLiteral("Run An ") + Global.ProductName + QStringLiteral(" Script");
}

QString clsActionScript::ActionDescription() const
{
    return ActionDescriptionHead(ClassDesc(), Condition) + QStringLiteral("</TextBlock>");
}

QString clsActionScript::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(SBScriptToRun, QStringLiteral("SBScriptToRun"));
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionScript.XML.Get"), error);
        return QString();
    }
}

void clsActionScript::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionScript::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, QStringLiteral("ID"));
        Reader.Extract(Enabled, QStringLiteral("Enabled"));
        Reader.Extract(SBScriptToRun, QStringLiteral("SBScriptToRun"));
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionScript.XML.Let"), error);
    }
}
