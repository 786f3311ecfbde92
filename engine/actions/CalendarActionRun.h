#pragma once
#include <QDateTime>
#include <QString>

#include <functional>

class MessageActionRun;
class clsActionVCal;

// Runs a VCal action: the appointment as an iCalendar event, put to a
// calendar server's URL (with the action's credentials) or mailed to an
// address as "invite.ics".
class CalendarActionRun
{
public:
    using LogFunction = std::function<void(const QString &Text)>;

    CalendarActionRun(MessageActionRun &Mailer, LogFunction Log);

    bool Run(const clsActionVCal &Action);

    // The event as iCalendar text, tokens expanded; Stamp is its DTSTAMP and
    // Uid its UID.
    static QString Calendar(const clsActionVCal &Action, const QDateTime &Stamp, const QString &Uid);

private:
    bool Put(const clsActionVCal &Action, const QString &Url, const QByteArray &Body);

    MessageActionRun &m_mailer;
    LogFunction m_log;
};
