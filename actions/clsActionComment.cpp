#include "clsActionComment.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"
#include "model/Condition.h"

#include <exception>

clsActionComment::clsActionComment() : ID(NewUniqueID()) {}

QString clsActionComment::ActionDescription() const
{
    return QStringLiteral("<TextBlock VerticalAlignment='Center'>")
           + MarkupRun(QStringLiteral("// ") + Comment, MarkupColors.ColorComment) + QStringLiteral("</TextBlock>");
}

QString clsActionComment::XML() const
{
    try {
        clsXML writer;
        writer.Append(ClassName(), QStringLiteral("Class"));
        writer.Append(ID, QStringLiteral("ID"));
        writer.Append(Comment, QStringLiteral("Comment"));
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionComment.XML.Get"), error);
        return QString();
    }
}

void clsActionComment::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionComment::ReadXML(clsXML &Reader)
{
    try {
        Reader.Extract(ID, QStringLiteral("ID"));
        Reader.Extract(Comment, QStringLiteral("Comment"));
        Enabled = true;
        Condition.clear();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionComment.XML.Let"), error);
    }
}
