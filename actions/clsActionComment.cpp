#include "clsActionComment.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"
#include "model/Condition.h"

#include <exception>

namespace {

// The tags of the fragment, in their written order; reading follows the same
// order because the reader only moves forward.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag CommentTag = QStringLiteral("Comment");

} // namespace

clsActionComment::clsActionComment(const QString &ActionID) : ID(ActionID) {}

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
        writer.Append(ID, IDTag.Name());
        writer.Append(Comment, CommentTag.Name());
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
        Reader.Extract(ID, IDTag);
        Reader.Extract(Comment, CommentTag);
        Enabled = true;
        Condition.clear();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionComment.XML.Let"), error);
    }
}
