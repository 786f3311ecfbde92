#pragma once
#include "foundation/Formatting.h"

#include <QDateTime>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QtGlobal>

class clsXML;

// Sends an e-mail: addresses, subject, a text and an HTML body, files and
// the incoming message's attachments, custom headers and receipts, now or
// scheduled, through the default mail server or another one (SendVia).
class clsActionMSG
{
public:
    // Under a new ID unless one is given.
    explicit clsActionMSG(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString From;
    QString SendTo;
    QString CC;
    QString BCC;
    qint16 Importance = 0; // HighImportance and above: flagged as important
    qint16 Sensitivity = 0; // 0 normal, 1 personal, 2 private, 3 confidential
    QString Subject;
    bool ReadReceipt = false;
    bool DeliveryReceipt = false;
    QString Body;
    bool HTML = false;
    QString HTMLText;
    QString HTMLFile;
    bool HTMLEmbed = false;
    QString Attachments; // file names separated by ";"
    bool AttachmentsIncoming = false;
    bool AttachmentsIncomingInline = false;
    bool ScheduleSend = false;
    QDateTime ScheduleOn;
    qint16 SchedulePeriod = 0; // 0 days, otherwise minutes
    qint32 ScheduleInterval = 0; // below 1: ScheduleOn is the date
    bool ScheduleDeDup = false;
    QString SendVia; // "Y"|server|port|security|user|password
    qint16 NDRSend = 0;
    QString NDRSendTo;
    bool NDRPassTo = false;
    QString NDRPassToID;
    QString CustomHeaders; // "name|value" lines separated by CR LF

    static constexpr qint16 HighImportance = 2;

    QString ClassName() const { return QStringLiteral("Message"); }
    QString ClassDesc() const { return QStringLiteral("Send An Email"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);

    // The clause of a scheduled send in a list line; empty when not scheduled.
    static QString ScheduleDescription(bool ScheduleSend, const QDateTime &ScheduleOn, qint16 SchedulePeriod,
                                       qint32 ScheduleInterval);
    // When a scheduled send is due, from Now: ScheduleOn when the interval
    // is below 1, else that many days (at the time of day of Now) or minutes on.
    static QDateTime ScheduleDue(const QDateTime &ScheduleOn, qint16 SchedulePeriod, qint32 ScheduleInterval,
                                 const QDateTime &Now);
    // The security choices of SendVia, in stored order.
    static QStringList SecurityNames();

    // The fields of SendVia; the server of a "Y" text is used instead of the default.
    struct Relay
    {
        bool Use = false;
        QString Server;
        int Port = 25;
        int Security = 0;
        QString User;
        QString Password;
    };
    static Relay SplitSendVia(const QString &SendVia);
    static QString JoinSendVia(const Relay &Via);
    // CustomHeaders as name and value pairs; lines without a name are left out.
    static QList<QPair<QString, QString>> SplitHeaders(const QString &CustomHeaders);
};
