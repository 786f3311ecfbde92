#include "clsActionDBCustom.h"
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
const MarkupTag SQLSelectStatementTag = QStringLiteral("SQLSelectStatement");
const MarkupTag SQLStatementTag = QStringLiteral("SQLStatement");
const MarkupTag SQLUpdateStatementTag = QStringLiteral("SQLUpdateStatement");
const MarkupTag SQLDialectTag = QStringLiteral("SQLDialect");
const MarkupTag TimeOutTag = QStringLiteral("TimeOut");

} // namespace

clsActionDBCustom::clsActionDBCustom(const QString &ActionID) : ID(ActionID) {}

QString clsActionDBCustom::ActionDescription() const
{
    return ActionDescriptionHead(ClassDesc(), Condition) + MarkupRun(ConnectionString, MarkupColors.ColorPrimary)
           + QStringLiteral("</TextBlock>");
}

QString clsActionDBCustom::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.AppendPassword(ConnectionString, ConnectionStringTag.Name());
        writer.Append(SQLSelectStatement, SQLSelectStatementTag.Name());
        writer.Append(SQLStatement, SQLStatementTag.Name());
        writer.Append(SQLUpdateStatement, SQLUpdateStatementTag.Name());
        writer.Append(SQLDialect, SQLDialectTag.Name());
        writer.Append(Timeout, TimeOutTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionDBCustom.XML.Get"), error);
        return QString();
    }
}

void clsActionDBCustom::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionDBCustom::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(ConnectionString, ConnectionStringTag, false, true);
        Reader.Extract(SQLSelectStatement, SQLSelectStatementTag);
        Reader.Extract(SQLStatement, SQLStatementTag);
        Reader.Extract(SQLUpdateStatement, SQLUpdateStatementTag);
        Reader.Extract(SQLDialect, SQLDialectTag);
        Reader.Extract(Timeout, TimeOutTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionDBCustom.XML.Let"), error);
    }
}
