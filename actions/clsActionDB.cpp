#include "clsActionDB.h"
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
const MarkupTag ConnectionStringTag = QStringLiteral("ConnectionString");
const MarkupTag UseInternalTag = QStringLiteral("UseInternal");
const MarkupTag DialectTag = QStringLiteral("Dialect");

} // namespace

clsActionDB::clsActionDB(const QString &ActionID) : ID(ActionID) {}

QString clsActionDB::ActionDescription() const
{
    return ActionDescriptionHead(ClassDesc(), Condition) + MarkupRun(ConnectionString, MarkupColors.ColorPrimary)
           + QStringLiteral("</TextBlock>");
}

QString clsActionDB::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.AppendPassword(ConnectionString, ConnectionStringTag.Name());
        writer.Append(UseInternal, UseInternalTag.Name());
        writer.Append(Dialect, DialectTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionDB.XML.Get"), error);
        return QString();
    }
}

void clsActionDB::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionDB::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(ConnectionString, ConnectionStringTag, false, true);
        Reader.Extract(UseInternal, UseInternalTag);
        Reader.Extract(Dialect, DialectTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionDB.XML.Let"), error);
    }
}
