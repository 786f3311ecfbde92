#include "clsActionAZ.h"
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
const MarkupTag ServerTag = QStringLiteral("Server");
const MarkupTag DatabaseTag = QStringLiteral("Database");
const MarkupTag UsernameTag = QStringLiteral("Username");
const MarkupTag PasswordTag = QStringLiteral("Password");
const MarkupTag SQLSelectStatementTag = QStringLiteral("SQLSelectStatement");
const MarkupTag SQLStatementTag = QStringLiteral("SQLStatement");
const MarkupTag SQLUpdateStatementTag = QStringLiteral("SQLUpdateStatement");
const MarkupTag SQLModifiedTag = QStringLiteral("SQLModified");

} // namespace

clsActionAZ::clsActionAZ(const QString &ActionID) : ID(ActionID) {}

QString clsActionAZ::ActionDescription() const
{
    return ActionDescriptionHead(ClassDesc(), Condition) + MarkupRun(Server, MarkupColors.ColorPrimary)
           + MarkupRun(QStringLiteral(" "), MarkupColors.ColorSecondary)
           + MarkupRun(u'(' + Database + u')', MarkupColors.ColorSecondary) + QStringLiteral("</TextBlock>");
}

QString clsActionAZ::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(Server, ServerTag.Name());
        writer.Append(Database, DatabaseTag.Name());
        writer.Append(Username, UsernameTag.Name());
        writer.AppendPassword(Password, PasswordTag.Name());
        writer.Append(SQLSelectStatement, SQLSelectStatementTag.Name());
        writer.Append(SQLStatement, SQLStatementTag.Name());
        writer.Append(SQLUpdateStatement, SQLUpdateStatementTag.Name());
        writer.Append(SQLModified, SQLModifiedTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionAZ.XML.Get"), error);
        return QString();
    }
}

void clsActionAZ::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionAZ::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(Server, ServerTag);
        Reader.Extract(Database, DatabaseTag);
        Reader.Extract(Username, UsernameTag);
        Reader.Extract(Password, PasswordTag, false, true);
        Reader.Extract(SQLSelectStatement, SQLSelectStatementTag);
        Reader.Extract(SQLStatement, SQLStatementTag);
        Reader.Extract(SQLUpdateStatement, SQLUpdateStatementTag);
        Reader.Extract(SQLModified, SQLModifiedTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionAZ.XML.Let"), error);
    }
}

QString clsActionAZ::ConnectionString(const QString &ServerName, const QString &DatabaseName, const QString &UserName,
                                      const QString &UserPassword) const
{
    QString server = ServerName.isEmpty() ? Server : ServerName;
    const QString database = DatabaseName.isEmpty() ? Database : DatabaseName;
    QString user = UserName.isEmpty() ? Username : UserName;
    const QString password = UserPassword.isEmpty() ? Password : UserPassword;
    QString result = QStringLiteral("Driver={SQL Server Native Client 10.0}");
    if (!server.contains(HostSuffix(), Qt::CaseInsensitive))
        server += HostSuffix();
    if (!server.contains(u','))
        server += QStringLiteral(",1433");
    result += QStringLiteral(";Server=tcp:") + server + QStringLiteral(";Database=") + database;
    if (!user.contains(u'@'))
        user += u'@' + server.left(server.indexOf(u'.'));
    return result + QStringLiteral(";Uid=") + user + QStringLiteral(";Pwd=") + password + QStringLiteral(";Encrypt=yes;");
}
