#include "clsActionValidation.h"
#include "ActionFragment.h"
#include "foundation/Startup.h"
#include "foundation/cDDict.h"
#include "model/Condition.h"

#include <exception>

namespace {

// The tags of the fragment, in their written order.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag SendEmailTag = QStringLiteral("SendEmail");
const MarkupTag MessageTextTag = QStringLiteral("MessageText");
const MarkupTag FromAddressTag = QStringLiteral("FromAddress");
const MarkupTag SendToTag = QStringLiteral("SendTo");
const MarkupTag SubjectTag = QStringLiteral("Subject");
const MarkupTag MaxWaitForTag = QStringLiteral("MaxWaitFor");
const MarkupTag TimeOutActionTag = QStringLiteral("TimeOutAction");
const MarkupTag ShowYesNoButtonsTag = QStringLiteral("ShowYesNoButtons");
const MarkupTag ConfirmationHTMLTag = QStringLiteral("ConfirmationHTML");
const MarkupTag SurveyFieldsXMLTag = QStringLiteral("SurveyFieldsXML");
const MarkupTag FieldTag = QStringLiteral("field");
const MarkupTag NameTag = QStringLiteral("name");
const MarkupTag TypeTag = QStringLiteral("type");
const MarkupTag AssignToTag = QStringLiteral("assignto");
const MarkupTag PromptTag = QStringLiteral("prompt");

} // namespace

clsActionValidation::clsActionValidation(const QString &ActionID) : ID(ActionID) {}

QStringList clsActionValidation::TimeOutNames()
{
    return {DDict().GetString(QStringLiteral("VALIDATIONTIMEOUT1"),
                            QStringLiteral("Don't Execute Remaining Actions & Save Message In Message Store")),
            DDict().GetString(QStringLiteral("VALIDATIONTIMEOUT2"),
                            QStringLiteral("Execute Remaining Actions & Save Message In Message Store")),
            DDict().GetString(QStringLiteral("VALIDATIONTIMEOUT3"),
                            QStringLiteral("Don't Execute Remaining Actions & Remove Message From Message Store"))};
}

QString clsActionValidation::DefaultMessageText()
{
    return DDict().GetString(QStringLiteral("VALIDATIONMESSAGE"), QStringLiteral("Please click the link below to validate:"))
        + QStringLiteral("\r\n%msg_from%\r\n%msg_subject%\r\n%msg_validationurl%");
}

QString clsActionValidation::DefaultConfirmationHTML()
{
    return DDict().GetString(QStringLiteral("VALIDATIONCONFIRMATION"),
                           QStringLiteral("Do you want %APPNAME% to continue processing the message:<br />%msg_subject%"));
}

QString clsActionValidation::DefaultSubject()
{
    return DDict().GetString(QStringLiteral("VALIDATIONSUBJECT"), QStringLiteral("Please Validate: %msg_subject%"));
}

QString clsActionValidation::ActionDescription() const
{
    QString text = ActionDescriptionHead(ClassDesc(), Condition);
    if (SendEmail)
        text += QStringLiteral(" Validation Request Email To ") + MarkupRun(SendTo, MarkupColors.ColorPrimary)
            + QStringLiteral(" ")
            + MarkupRun(QStringLiteral("(Wait %1 Minutes, Then %2)").arg(MaxWaitFor).arg(TimeOutNames().value(TimeOutAction)),
                        MarkupColors.ColorOption);
    return text + QStringLiteral("</TextBlock>");
}

QList<clsActionValidation::SurveyField> clsActionValidation::ReadSurveyFields(const QString &SurveyFieldsXML)
{
    QList<SurveyField> fields;
    clsXML reader(SurveyFieldsXML);
    clsXML item;
    while (reader.Extract(item, FieldTag)) {
        SurveyField field;
        item.Extract(field.Name, NameTag);
        item.Extract(field.Type, TypeTag);
        item.Extract(field.AssignTo, AssignToTag);
        item.Extract(field.Prompt, PromptTag);
        fields << field;
    }
    return fields;
}

QString clsActionValidation::WriteSurveyFields(const QList<SurveyField> &Fields)
{
    clsXML writer;
    for (const SurveyField &field : Fields) {
        writer.XMLSectionStart(FieldTag.Name());
        writer.Append(field.Name, NameTag.Name());
        writer.Append(field.Type, TypeTag.Name());
        writer.Append(field.AssignTo, AssignToTag.Name());
        writer.Append(field.Prompt, PromptTag.Name());
        writer.XMLSectionEnd(FieldTag.Name());
    }
    return writer.GetXML();
}

QString clsActionValidation::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(SendEmail, SendEmailTag.Name());
        writer.Append(MessageText, MessageTextTag.Name());
        writer.Append(FromAddress, FromAddressTag.Name());
        writer.Append(SendTo, SendToTag.Name());
        writer.Append(Subject, SubjectTag.Name());
        writer.Append(MaxWaitFor, MaxWaitForTag.Name());
        writer.Append(TimeOutAction, TimeOutActionTag.Name());
        writer.Append(ShowYesNoButtons, ShowYesNoButtonsTag.Name());
        writer.Append(ConfirmationHTML, ConfirmationHTMLTag.Name());
        writer.AppendXML(SurveyFieldsXML, SurveyFieldsXMLTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionValidation.XML.Get"), error);
        return QString();
    }
}

void clsActionValidation::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionValidation::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(SendEmail, SendEmailTag);
        Reader.Extract(MessageText, MessageTextTag);
        Reader.Extract(FromAddress, FromAddressTag);
        Reader.Extract(SendTo, SendToTag);
        Reader.Extract(Subject, SubjectTag);
        Reader.Extract(MaxWaitFor, MaxWaitForTag);
        Reader.Extract(TimeOutAction, TimeOutActionTag);
        Reader.Extract(ShowYesNoButtons, ShowYesNoButtonsTag);
        Reader.Extract(ConfirmationHTML, ConfirmationHTMLTag);
        Reader.Extract(SurveyFieldsXML, SurveyFieldsXMLTag, true);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionValidation.XML.Let"), error);
    }
}
