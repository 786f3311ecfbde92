#include "CalendarActionRun.h"
#include "MessageActionRun.h"
#include "actions/clsActionVCal.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "store/MimeMail.h"
#include "store/Tokens.h"

#include <QRegularExpression>
#include <QTimeZone>
#include <curl/curl.h>

namespace {

// A text value of iCalendar: backslash, semicolon, comma and line ends escaped.
QString Escaped(const QString &Text)
{
    QString value = Text;
    value.replace(u'\\', QStringLiteral("\\\\")).replace(u';', QStringLiteral("\\;")).replace(u',', QStringLiteral("\\,"));
    value.replace(QStringLiteral("\r\n"), QStringLiteral("\\n")).replace(u'\n', QStringLiteral("\\n")).remove(u'\r');
    return value;
}

// "DTSTART:20261124T093000", or with the date alone for an all-day event.
QString DateLine(const QString &Name, const QString &Date, const QString &Time, bool AllDay, bool End)
{
    QDate date = SafeDate(ExpandTokens(Date).trimmed()).date();
    if (!date.isValid())
        date = QDate::currentDate();
    if (AllDay)
        return Name + QStringLiteral(";VALUE=DATE:") + (End ? date.addDays(1) : date).toString(QStringLiteral("yyyyMMdd"));
    const QTime time = SafeTime(ExpandTokens(Time).trimmed());
    return Name + u':' + QDateTime(date, time).toString(QStringLiteral("yyyyMMdd'T'HHmmss"));
}

QStringList Addresses(const QString &List)
{
    static const QRegularExpression separators(QStringLiteral("[,;]"));
    QStringList addresses;
    for (const QString &one : ExpandTokens(List).split(separators, Qt::SkipEmptyParts))
        if (!one.trimmed().isEmpty())
            addresses << one.trimmed();
    return addresses;
}

size_t Discard(char *, size_t Size, size_t Count, void *)
{
    return Size * Count;
}

long CurlAuthentication(int Position)
{
    switch (Position) {
    case 0:
        return long(CURLAUTH_BASIC);
    case 1:
        return long(CURLAUTH_DIGEST);
    case 4:
        return long(CURLAUTH_NTLM);
    case 5:
        return long(CURLAUTH_NEGOTIATE);
    case 3:
        return long(CURLAUTH_NONE);
    default:
        return long(CURLAUTH_ANY);
    }
}

} // namespace

CalendarActionRun::CalendarActionRun(MessageActionRun &Mailer, LogFunction Log) : m_mailer(Mailer), m_log(std::move(Log))
{
}

QString CalendarActionRun::Calendar(const clsActionVCal &Action, const QDateTime &Stamp, const QString &Uid)
{
    static const int priorities[] = {9, 5, 1};
    QStringList lines{QStringLiteral("BEGIN:VCALENDAR"), QStringLiteral("VERSION:2.0"),
                      QStringLiteral("PRODID:-//") + Global.ProductName + QStringLiteral("//Appointment//EN"),
                      QStringLiteral("METHOD:REQUEST"), QStringLiteral("BEGIN:VEVENT"), QStringLiteral("UID:") + Uid,
                      QStringLiteral("DTSTAMP:") + Stamp.toUTC().toString(QStringLiteral("yyyyMMdd'T'HHmmss'Z'")),
                      DateLine(QStringLiteral("DTSTART"), Action.StartDate, Action.StartTime, Action.AllDayEvent, false),
                      DateLine(QStringLiteral("DTEND"), Action.EndDate, Action.EndTime, Action.AllDayEvent, true),
                      QStringLiteral("SUMMARY:") + Escaped(ExpandTokens(Action.Summary)),
                      QStringLiteral("PRIORITY:%1").arg(priorities[qBound(0, int(Action.Priority), 2)])};
    const auto add = [&lines](const QString &Name, const QString &Value) {
        const QString value = ExpandTokens(Value).trimmed();
        if (!value.isEmpty())
            lines << Name + u':' + Escaped(value);
    };
    add(QStringLiteral("DESCRIPTION"), Action.Description);
    add(QStringLiteral("LOCATION"), Action.Location);
    add(QStringLiteral("CATEGORIES"), Action.Categories);
    add(QStringLiteral("CLASS"), Action.Classification);
    add(QStringLiteral("STATUS"), Action.Status);
    const QString recurrence = ExpandTokens(Action.Recurrence).trimmed();
    if (!recurrence.isEmpty())
        lines << QStringLiteral("RRULE:") + recurrence.section(u':', -1);
    if (Action.EventType.compare(QStringLiteral("Free"), Qt::CaseInsensitive) == 0)
        lines << QStringLiteral("TRANSP:TRANSPARENT");
    const QString organizer = ExpandTokens(Action.Organizer).trimmed();
    if (!organizer.isEmpty())
        lines << QStringLiteral("ORGANIZER:mailto:") + organizer;
    for (const QString &attendee : Addresses(Action.Attendees))
        lines << QStringLiteral("ATTENDEE;ROLE=REQ-PARTICIPANT;RSVP=TRUE:mailto:") + attendee;
    lines << QStringLiteral("END:VEVENT") << QStringLiteral("END:VCALENDAR");
    return lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n");
}

bool CalendarActionRun::Run(const clsActionVCal &Action)
{
    const QString target = ExpandTokens(Action.PostTo).trimmed();
    if (target.isEmpty()) {
        m_log(QStringLiteral("* Send An Appointment: the action has no URL or address to send to"));
        return false;
    }
    const QString summary = MessageActionRun::HeaderText(Action.Summary);
    const QString calendar = Calendar(Action, QDateTime::currentDateTime(), GUIDDigits() + u'@' + Global.ProductName);
    if (Action.PostToURL) {
        if (!Put(Action, target, calendar.toUtf8()))
            return false;
        m_log(QStringLiteral("Appointment ") + summary + QStringLiteral(" sent to ") + target);
        return true;
    }
    const QString from = MessageActionRun::SenderAddress(ExpandTokens(Action.Organizer));
    MimeMail mail;
    mail.Compose(from, target, summary, QDateTime::currentDateTime(), ExpandTokens(Action.Description));
    mail.AddAttachment(QStringLiteral("invite.ics"), calendar.toUtf8(),
                       QStringLiteral("text/calendar; method=REQUEST; charset=utf-8"));
    if (m_mailer.Queue(mail, from, target, summary) == 0)
        return false;
    m_log(QStringLiteral("Appointment ") + summary + QStringLiteral(" for ") + target + QStringLiteral(" Added To Outbox"));
    return true;
}

bool CalendarActionRun::Put(const clsActionVCal &Action, const QString &Url, const QByteArray &Body)
{
    CURL *curl = curl_easy_init();
    if (!curl) {
        m_log(QStringLiteral("* Send An Appointment: no HTTP connection could be made"));
        return false;
    }
    const QByteArray url = Url.toUtf8();
    const QByteArray user = ExpandTokens(Action.Username).toUtf8();
    const QByteArray password = Action.Password.toUtf8();
    char error[CURL_ERROR_SIZE] = {};
    curl_slist *headers = curl_slist_append(nullptr, "Content-Type: text/calendar; charset=utf-8");
    curl_easy_setopt(curl, CURLOPT_URL, url.constData());
    curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, "PUT");
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, Body.constData());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE, long(Body.size()));
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, Discard);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, error);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, 60L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    if (!user.isEmpty()) {
        curl_easy_setopt(curl, CURLOPT_HTTPAUTH, CurlAuthentication(Action.Authentication));
        curl_easy_setopt(curl, CURLOPT_USERNAME, user.constData());
        curl_easy_setopt(curl, CURLOPT_PASSWORD, password.constData());
    }
    const CURLcode result = curl_easy_perform(curl);
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    curl_slist_free_all(headers);
    curl_easy_cleanup(curl);
    if (result != CURLE_OK) {
        m_log(QStringLiteral("* Send An Appointment to ") + Url + QStringLiteral(": ")
              + (error[0] ? QString::fromUtf8(error) : QString::fromUtf8(curl_easy_strerror(result))));
        return false;
    }
    if (status < 200 || status > 299) {
        m_log(QStringLiteral("* Send An Appointment to ") + Url + QStringLiteral(": the server answered %1").arg(status));
        return false;
    }
    return true;
}
