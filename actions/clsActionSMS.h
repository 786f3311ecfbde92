#pragma once
#include "foundation/Formatting.h"

#include <QDateTime>
#include <QString>
#include <QtGlobal>

class clsXML;

// Sends a short text to a number, now or scheduled, through the Outbox or
// a paging (SNPP) server.
class clsActionSMS
{
public:
    // Under a new ID unless one is given.
    explicit clsActionSMS(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString From;
    QString SendTo;
    QString Subject;
    QString Body;
    bool ScheduleSend = false;
    QDateTime ScheduleOn;
    qint16 SchedulePeriod = 0; // 0 days, otherwise minutes
    qint32 ScheduleInterval = 0;
    bool ScheduleDeDup = false;
    bool SendViaSNPP = false;
    QString SNPPServer; // host, or host:port
    QString SNPPLoginID;
    QString SNPPAssignReplyTo;

    QString ClassName() const { return QStringLiteral("SMS"); }
    QString ClassDesc() const { return QStringLiteral("Send SMS Message"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
