#include "clsActionJabber.h"
#include "ActionFragment.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

namespace {

// The tags of the fragment, in their written order.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag ServerTag = QStringLiteral("Server");
const MarkupTag MessageTypeTag = QStringLiteral("MessageType");
const MarkupTag MessageTextTag = QStringLiteral("MessageText");
const MarkupTag MessageSubjectTag = QStringLiteral("MessageSubject");
const MarkupTag ToJabberIDTag = QStringLiteral("ToJabberID");
const MarkupTag UsernameTag = QStringLiteral("Username");
const MarkupTag PasswordTag = QStringLiteral("Password");

} // namespace

clsActionJabber::clsActionJabber(const QString &ActionID) : ID(ActionID) {}

QStringList clsActionJabber::MessageTypeNames()
{
    return {QStringLiteral("Normal"), QStringLiteral("Chat"), QStringLiteral("Group Chat"), QStringLiteral("Headline")};
}

QString clsActionJabber::ActionDescription() const
{
    return ActionDescriptionHead(ClassDesc(), Condition) + QStringLiteral(" To ")
        + MarkupRun(ToJabberID, MarkupColors.ColorPrimary) + QStringLiteral("</TextBlock>");
}

QString clsActionJabber::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(Server, ServerTag.Name());
        writer.Append(MessageType, MessageTypeTag.Name());
        writer.Append(MessageText, MessageTextTag.Name());
        writer.Append(MessageSubject, MessageSubjectTag.Name());
        writer.Append(ToJabberID, ToJabberIDTag.Name());
        writer.Append(Username, UsernameTag.Name());
        writer.AppendPassword(Password, PasswordTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionJabber.XML.Get"), error);
        return QString();
    }
}

void clsActionJabber::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionJabber::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(Server, ServerTag);
        Reader.Extract(MessageType, MessageTypeTag);
        Reader.Extract(MessageText, MessageTextTag);
        Reader.Extract(MessageSubject, MessageSubjectTag);
        Reader.Extract(ToJabberID, ToJabberIDTag);
        Reader.Extract(Username, UsernameTag);
        Reader.Extract(Password, PasswordTag, false, true);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionJabber.XML.Let"), error);
    }
}
