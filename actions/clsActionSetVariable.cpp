#include "clsActionSetVariable.h"
#include "ActionFragment.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <QStringList>
#include <exception>

namespace {

// The tags of the fragment, in their written order; reading follows the same
// order because the reader only moves forward.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag NameTag = QStringLiteral("Name");
const MarkupTag ValueTag = QStringLiteral("Value");
const MarkupTag PersistTag = QStringLiteral("Persist");
const MarkupTag OperationTag = QStringLiteral("Operation");
const MarkupTag AppendTag = QStringLiteral("Append");
const MarkupTag DBLookupTag = QStringLiteral("DBLookup");
const MarkupTag DBConnectionStringTag = QStringLiteral("DBConnectionString");
const MarkupTag DBSQLTag = QStringLiteral("DBSQL");
const MarkupTag DBReturnFieldTag = QStringLiteral("DBReturnField");

} // namespace

clsActionSetVariable::clsActionSetVariable(const QString &ActionID) : ID(ActionID) {}

QString clsActionSetVariable::OperationDesc(int OperationNumber)
{
    static const QStringList names{
        QStringLiteral("Nothing"),
        QStringLiteral("Increment"),
        QStringLiteral("Decrement"),
        QStringLiteral("Add To"),
        QStringLiteral("Subtract From"),
        QStringLiteral("Add Days To"),
        QStringLiteral("Subtract Days From"),
        QStringLiteral("Convert To Upper Case"),
        QStringLiteral("Convert To Lower Case"),
        QStringLiteral("Trim Blanks"),
        QStringLiteral("Remove All Whitespace"),
        QStringLiteral("Remove First And Last Characters"),
        QStringLiteral("Add Space Character To End"),
        QStringLiteral("Word Capitalize"),
        QStringLiteral("Convert HTML To Plain Text"),
        QStringLiteral("Convert HTML To XML"),
        QStringLiteral("Extract First Line"),
        QStringLiteral("Extract First Email Address Only"),
        QStringLiteral("Extract All Email Addresses"),
        QStringLiteral("Extract First URL"),
        QStringLiteral("Extract All URL's"),
        QStringLiteral("Encrypt"),
        QStringLiteral("Decrypt"),
        QStringLiteral("URL Encode"),
        QStringLiteral("URL Decode"),
        QStringLiteral("Base 64 Encode"),
        QStringLiteral("Base 64 Decode"),
        QStringLiteral("Quoted Printable Encode"),
        QStringLiteral("Quoted Printable Decode"),
        QStringLiteral("Create MD5 Hash (URL Encoded)"),
        QStringLiteral("Create Global Unique Identifier"),
    };
    return names.value(OperationNumber);
}

QString clsActionSetVariable::ActionDescription() const
{
    QString text = ActionDescriptionHead(ClassDesc(), Condition);
    text += MarkupRun(Name, MarkupColors.ColorPrimary);
    text += QStringLiteral(" = ");
    text += MarkupRun(DBLookup ? QStringLiteral("Lookup From ") + DBConnectionString : Value,
                      MarkupColors.ColorSecondary);
    if (Operation > 0)
        text += MarkupRun(QStringLiteral(" (") + OperationDesc(Operation) + QStringLiteral(") "),
                          QStringLiteral("Magenta"));
    if (Append)
        text += MarkupRun(QStringLiteral(" (Append)"), MarkupColors.ColorOption);
    if (Persist)
        text += MarkupRun(QStringLiteral(" (Persist)"), MarkupColors.ColorOption);
    return text + QStringLiteral("</TextBlock>");
}

QString clsActionSetVariable::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(Name, NameTag.Name());
        writer.Append(Value, ValueTag.Name());
        writer.Append(Persist, PersistTag.Name());
        writer.Append(Operation, OperationTag.Name());
        writer.Append(Append, AppendTag.Name());
        writer.Append(DBLookup, DBLookupTag.Name());
        writer.AppendPassword(DBConnectionString, DBConnectionStringTag.Name());
        writer.Append(DBSQL, DBSQLTag.Name());
        writer.Append(DBReturnField, DBReturnFieldTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionSetVariable.XML.Get"), error);
        return QString();
    }
}

void clsActionSetVariable::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionSetVariable::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(Name, NameTag);
        Reader.Extract(Value, ValueTag);
        Reader.Extract(Persist, PersistTag);
        Reader.Extract(Operation, OperationTag);
        Reader.Extract(Append, AppendTag);
        Reader.Extract(DBLookup, DBLookupTag);
        Reader.Extract(DBConnectionString, DBConnectionStringTag, false, true);
        Reader.Extract(DBSQL, DBSQLTag);
        Reader.Extract(DBReturnField, DBReturnFieldTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionSetVariable.XML.Let"), error);
    }
}
