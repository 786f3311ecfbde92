#include "clsActionSetVariable.h"
#include "ActionFragment.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <QStringList>
#include <exception>

clsActionSetVariable::clsActionSetVariable() : ID(NewUniqueID()) {}

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
        writer.Append(Name, QStringLiteral("Name"));
        writer.Append(Value, QStringLiteral("Value"));
        writer.Append(Persist, QStringLiteral("Persist"));
        writer.Append(Operation, QStringLiteral("Operation"));
        writer.Append(Append, QStringLiteral("Append"));
        writer.Append(DBLookup, QStringLiteral("DBLookup"));
        writer.AppendPassword(DBConnectionString, QStringLiteral("DBConnectionString"));
        writer.Append(DBSQL, QStringLiteral("DBSQL"));
        writer.Append(DBReturnField, QStringLiteral("DBReturnField"));
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
        Reader.Extract(ID, QStringLiteral("ID"));
        Reader.Extract(Enabled, QStringLiteral("Enabled"));
        Reader.Extract(Name, QStringLiteral("Name"));
        Reader.Extract(Value, QStringLiteral("Value"));
        Reader.Extract(Persist, QStringLiteral("Persist"));
        Reader.Extract(Operation, QStringLiteral("Operation"));
        Reader.Extract(Append, QStringLiteral("Append"));
        Reader.Extract(DBLookup, QStringLiteral("DBLookup"));
        Reader.Extract(DBConnectionString, QStringLiteral("DBConnectionString"), false, true);
        Reader.Extract(DBSQL, QStringLiteral("DBSQL"));
        Reader.Extract(DBReturnField, QStringLiteral("DBReturnField"));
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionSetVariable.XML.Let"), error);
    }
}
