#include "clsActionVCal.h"
#include "ActionFragment.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <QDate>
#include <QLocale>
#include <exception>

namespace {

// The tags of the fragment, in their written order.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag PostToURLTag = QStringLiteral("PostToURL");
const MarkupTag PostToTag = QStringLiteral("PostTo");
const MarkupTag UserNameTag = QStringLiteral("UserName");
const MarkupTag PasswordTag = QStringLiteral("Password");
const MarkupTag AuthenticationTag = QStringLiteral("Authentication");
const MarkupTag AttendeesTag = QStringLiteral("Attendees");
const MarkupTag CategoriesTag = QStringLiteral("Categories");
const MarkupTag ClassificationTag = QStringLiteral("Classification");
const MarkupTag CompletedTag = QStringLiteral("Completed");
const MarkupTag DescriptionTag = QStringLiteral("Description");
const MarkupTag DisplayNameTag = QStringLiteral("DisplayName");
const MarkupTag EndDateTag = QStringLiteral("EndDate");
const MarkupTag EndTimeTag = QStringLiteral("EndTime");
const MarkupTag EventTypeTag = QStringLiteral("EventType");
const MarkupTag LocationTag = QStringLiteral("Location");
const MarkupTag OrganizerTag = QStringLiteral("Organizer");
const MarkupTag PriorityTag = QStringLiteral("Priority");
const MarkupTag RecurrenceTag = QStringLiteral("Recurrence");
const MarkupTag StartDateTag = QStringLiteral("StartDate");
const MarkupTag StartTimeTag = QStringLiteral("StartTime");
const MarkupTag StatusTag = QStringLiteral("Status");
const MarkupTag SummaryTag = QStringLiteral("Summary");
const MarkupTag TimeZoneTag = QStringLiteral("TimeZone");
const MarkupTag AllDayEventTag = QStringLiteral("AllDayEvent");
const MarkupTag SensitivityTag = QStringLiteral("Sensitivity");

// A stored "yyyy-mm-dd" in the short form, and its time behind it.
QString ShortDateTime(const QString &Date, const QString &Time)
{
    const QDate date = QDate::fromString(Date.trimmed(), QStringLiteral("yyyy-MM-dd"));
    const QString shown = date.isValid() ? QLocale().toString(date, QLocale::ShortFormat) : Date.trimmed();
    return (shown + u' ' + Time.trimmed()).trimmed();
}

} // namespace

clsActionVCal::clsActionVCal(const QString &ActionID)
    : ID(ActionID)
    , EndDate(QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd")))
    , StartDate(EndDate)
    , TimeZone(Global.Settings.TimeZoneOffset)
{
}

QStringList clsActionVCal::PriorityNames()
{
    return {QStringLiteral("Low"), QStringLiteral("Normal"), QStringLiteral("High")};
}

QStringList clsActionVCal::AuthenticationNames()
{
    return {QStringLiteral("Basic"), QStringLiteral("Digest"), QStringLiteral("Proprietary"),
            QStringLiteral("None"),  QStringLiteral("NTLM"),   QStringLiteral("Negotiate")};
}

QStringList clsActionVCal::ClassificationNames()
{
    return {QStringLiteral("PUBLIC"), QStringLiteral("PRIVATE"), QStringLiteral("CONFIDENTIAL")};
}

QStringList clsActionVCal::FreeBusyNames()
{
    return {QStringLiteral("Free"), QStringLiteral("Tentative"), QStringLiteral("Busy"), QStringLiteral("Out Of Office")};
}

QString clsActionVCal::ActionDescription() const
{
    return ActionDescriptionHead(ClassDesc(), Condition) + MarkupRun(Summary, MarkupColors.ColorPrimary)
        + QStringLiteral(" ") + ShortDateTime(StartDate, StartTime).toHtmlEscaped() + QStringLiteral(" - ")
        + ShortDateTime(EndDate, EndTime).toHtmlEscaped() + QStringLiteral("</TextBlock>");
}

QString clsActionVCal::XML() const
{
    try {
        clsXML writer;
        AppendActionHead(writer, ClassName(), ID, Enabled);
        writer.Append(PostToURL, PostToURLTag.Name());
        writer.Append(PostTo, PostToTag.Name());
        writer.Append(Username, UserNameTag.Name());
        writer.AppendPassword(Password, PasswordTag.Name());
        writer.Append(Authentication, AuthenticationTag.Name());
        writer.Append(Attendees, AttendeesTag.Name());
        writer.Append(Categories, CategoriesTag.Name());
        writer.Append(Classification, ClassificationTag.Name());
        writer.Append(Completed, CompletedTag.Name());
        writer.Append(Description, DescriptionTag.Name());
        writer.Append(DisplayName, DisplayNameTag.Name());
        writer.Append(EndDate, EndDateTag.Name());
        writer.Append(EndTime, EndTimeTag.Name());
        writer.Append(EventType, EventTypeTag.Name());
        writer.Append(Location, LocationTag.Name());
        writer.Append(Organizer, OrganizerTag.Name());
        writer.Append(Priority, PriorityTag.Name());
        writer.Append(Recurrence, RecurrenceTag.Name());
        writer.Append(StartDate, StartDateTag.Name());
        writer.Append(StartTime, StartTimeTag.Name());
        writer.Append(Status, StatusTag.Name());
        writer.Append(Summary, SummaryTag.Name());
        writer.Append(TimeZone, TimeZoneTag.Name());
        writer.Append(AllDayEvent, AllDayEventTag.Name());
        writer.Append(Sensitivity, SensitivityTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionVCal.XML.Get"), error);
        return QString();
    }
}

void clsActionVCal::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionVCal::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(Enabled, EnabledTag);
        Reader.Extract(PostToURL, PostToURLTag);
        Reader.Extract(PostTo, PostToTag);
        Reader.Extract(Username, UserNameTag);
        Reader.Extract(Password, PasswordTag, false, true);
        Reader.Extract(Authentication, AuthenticationTag);
        Reader.Extract(Attendees, AttendeesTag);
        Reader.Extract(Categories, CategoriesTag);
        Reader.Extract(Classification, ClassificationTag);
        Reader.Extract(Completed, CompletedTag);
        Reader.Extract(Description, DescriptionTag);
        Reader.Extract(DisplayName, DisplayNameTag);
        Reader.Extract(EndDate, EndDateTag);
        Reader.Extract(EndTime, EndTimeTag);
        Reader.Extract(EventType, EventTypeTag);
        Reader.Extract(Location, LocationTag);
        Reader.Extract(Organizer, OrganizerTag);
        Reader.Extract(Priority, PriorityTag);
        Reader.Extract(Recurrence, RecurrenceTag);
        Reader.Extract(StartDate, StartDateTag);
        Reader.Extract(StartTime, StartTimeTag);
        Reader.Extract(Status, StatusTag);
        Reader.Extract(Summary, SummaryTag);
        Reader.Extract(TimeZone, TimeZoneTag);
        Reader.Extract(AllDayEvent, AllDayEventTag);
        Reader.Extract(Sensitivity, SensitivityTag);
        ExtractActionCondition(Reader, Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionVCal.XML.Let"), error);
    }
}
