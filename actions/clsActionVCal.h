#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

class clsXML;

// Sends an appointment: an iCalendar event posted to a calendar server's
// URL, or mailed to an address as an attachment.
class clsActionVCal
{
public:
    // Under a new ID unless one is given: dated today, normal priority, in
    // the server's time zone, posted to a URL.
    explicit clsActionVCal(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString Attendees; // addresses separated by "," or ";"
    QString Categories;
    QString Classification; // "PUBLIC", "PRIVATE" or "CONFIDENTIAL"
    QString Completed;
    QString Description;
    QString DisplayName;
    QString EndDate; // "yyyy-mm-dd"
    QString EndTime; // "hh:mm"
    QString EventType; // free-busy: see FreeBusyNames
    QString Location;
    QString Organizer;
    qint16 Priority = 1; // position in PriorityNames
    QString Recurrence;
    QString StartDate;
    QString StartTime;
    QString Status;
    QString Summary;
    QString TimeZone;
    bool AllDayEvent = false;
    qint16 Sensitivity = 0;
    bool PostToURL = true; // false: mailed to PostTo as an attachment
    QString PostTo; // a URL or an e-mail address
    QString Username;
    QString Password;
    qint16 Authentication = 0; // position in AuthenticationNames

    QString ClassName() const { return QStringLiteral("VCal"); }
    QString ClassDesc() const { return QStringLiteral("Send An Appointment"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);

    static QStringList PriorityNames();
    static QStringList AuthenticationNames();
    static QStringList ClassificationNames();
    static QStringList FreeBusyNames();
};
