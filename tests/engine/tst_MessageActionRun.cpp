#include "TestRegistry.h"
#include "actions/ActionItem.h"
#include "actions/clsActionMSG.h"
#include "actions/clsActionSMS.h"
#include "actions/clsActionVCal.h"
#include "actions/clsActionValidation.h"
#include "engine/actions/CalendarActionRun.h"
#include "engine/actions/MessageActions.h"
#include "model/clsAccountTrigger.h"
#include "store/MimeMail.h"
#include "store/StoreFixture.h"
#include "store/clsMessage.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The incoming message: a text part, an inline image of an HTML part and a
// regular attachment.
const QString Incoming =
    u"From: ann@example.com\r\nTo: orders@orders.test\r\nSubject: Bolts\r\nMIME-Version: 1.0\r\n"
    "Content-Type: multipart/mixed; boundary=\"M\"\r\n\r\n--M\r\nContent-Type: multipart/related; boundary=\"R\"\r\n\r\n"
    "--R\r\nContent-Type: text/html; charset=utf-8\r\n\r\n<p>Hi<img src=\"cid:logo\"></p>\r\n--R\r\n"
    "Content-Type: image/png\r\nContent-ID: <logo>\r\nContent-Disposition: inline; filename=\"logo.png\"\r\n"
    "Content-Transfer-Encoding: base64\r\n\r\niVBORw0KGgo=\r\n--R--\r\n--M\r\nContent-Type: text/csv; name=\"list.csv\"\r\n"
    "Content-Disposition: attachment; filename=\"list.csv\"\r\n\r\na,b\r\n--M--\r\n"_s;

} // namespace

// The run-time of the message kinds on a real store: what goes to the
// Outbox and when, what is attached, and what a Validation does with a
// message it cannot park.
class tst_MessageActionRun : public QObject
{
    Q_OBJECT

    struct Run
    {
        StoreFixture Store;
        clsAccountTrigger Trigger;
        QStringList Lines;
        Run()
        {
            Trigger.TriggerID = u"T1"_s;
            Store.Store.OpenMessageStore();
            ReplaceCurrentMessage(nullptr);
            CurrentMessage().MessageText = Incoming;
            CurrentMessage().Subject = u"Bolts"_s;
            CurrentMessage().From = u"ann@example.com"_s;
        }
        ~Run() { ReplaceCurrentMessage(nullptr); }
        template <class Record> MessageActions::Outcome Of(const Record &Action)
        {
            const auto item = ActionItem::Make(Action);
            return MessageActions::Run(*item, Trigger, CurrentMessage(), &Store.Store,
                                       [this](const QString &Text) { Lines << Text; });
        }
        QString Mime(const QString &Condition = u"1=1"_s)
        {
            return Store.Value(u"SELECT Mime FROM Outbox WHERE "_s + Condition + u" ORDER BY RecordNo DESC"_s).toString();
        }
    };

private slots:
    void incomingAttachmentsGoWithTheMailInlineOnesOnlyWhenAsked()
    {
        Run run;
        clsActionMSG mail;
        mail.SendTo = u"boss@example.com"_s;
        mail.Subject = u"%msg_subject%"_s;
        mail.Body = u"See"_s;
        mail.AttachmentsIncoming = true;
        QCOMPARE(run.Of(mail), MessageActions::Outcome::Done);
        MimeMail sent;
        QVERIFY(sent.LoadMime(run.Mime()));
        QStringList names;
        for (const MimeAttachment &part : sent.Attachments())
            names << part.Name;
        QCOMPARE(names, QStringList{u"list.csv"_s});
        QCOMPARE(sent.Header(u"Subject"_s), u"Bolts"_s);

        mail.AttachmentsIncomingInline = true;
        run.Of(mail);
        QVERIFY(sent.LoadMime(run.Mime()));
        names.clear();
        for (const MimeAttachment &part : sent.Attachments())
            names << part.Name;
        QCOMPARE(names, (QStringList{u"logo.png"_s, u"list.csv"_s}));

        // A file that cannot be read sends nothing and says so.
        mail.Attachments = u"/no/such/file.pdf"_s;
        const qint64 before = run.Store.Count(u"Outbox"_s);
        run.Of(mail);
        QCOMPARE(run.Store.Count(u"Outbox"_s), before);
        QVERIFY(run.Lines.last().startsWith(u"* Send An Email: the attachment /no/such/file.pdf cannot be read"_s));
    }

    void scheduledSendsWaitAndADuplicateIsNotQueuedTwice()
    {
        Run run;
        clsActionMSG mail;
        mail.SendTo = u"boss@example.com"_s;
        mail.Subject = u"Reminder"_s;
        mail.ScheduleSend = true;
        mail.ScheduleInterval = 2;
        mail.ScheduleDeDup = true;
        run.Of(mail);
        run.Of(mail);
        QCOMPARE(run.Store.Count(u"Outbox"_s, u"Scheduled<>0"_s), 1);
        QVERIFY(run.Lines.last().endsWith(u"was not added to the queue because a duplicate pending email exists."_s));
        const QDateTime due = run.Store.Value(u"SELECT ScheduledDate FROM Outbox"_s).toDateTime();
        QVERIFY(qAbs(due.secsTo(QDateTime::currentDateTime().addDays(2))) < 60);

        clsActionSMS sms;
        sms.SendTo = u"+15550100"_s;
        sms.Body = u"Order %msg_subject%"_s;
        run.Of(sms);
        QCOMPARE(run.Store.Count(u"Outbox"_s, u"SMS<>0 AND Scheduled=0 AND MailTo='+15550100'"_s), 1);
        QCOMPARE(run.Mime(u"SMS<>0"_s), u"Order Bolts"_s);
    }

    void aValidationOutsideTheQueueStopsTheActionsWithAnError()
    {
        Run run;
        clsActionValidation validation;
        QCOMPARE(run.Of(validation), MessageActions::Outcome::Stop);
        QVERIFY(run.Lines.last().startsWith(u"* Wait For Validation: the message is not in the queue"_s));
        QVERIFY(!CurrentMessage().ValidationRequired);

        CurrentMessage().EdgeQueueRecordNo = 7;
        CurrentMessage().MessageID = u"UID7"_s;
        validation.MaxWaitFor = 60;
        validation.TimeOutAction = 2;
        QCOMPARE(run.Of(validation), MessageActions::Outcome::Stop);
        QVERIFY(CurrentMessage().ValidationRequired);
        QCOMPARE(CurrentMessage().ValidateActionID, validation.ID);
        QCOMPARE(CurrentMessage().ValidateExpiresType, qint16(2));
        QVERIFY(CurrentMessage().ValidateConfirmationMessage.endsWith(u"<br />Bolts"_s));
        QCOMPARE(run.Store.Count(u"Outbox"_s), 0); // no mail without SendEmail

        // Back confirmed: the actions behind it run.
        CurrentMessage().ValidationRequired = false;
        QCOMPARE(run.Of(validation), MessageActions::Outcome::Done);
    }

    void anAppointmentIsAnICalendarEvent()
    {
        ReplaceCurrentMessage(nullptr);
        CurrentMessage().Subject = u"Review; now, please"_s;
        clsActionVCal vcal;
        vcal.Summary = u"%msg_subject%"_s;
        vcal.StartDate = u"2026-07-04"_s;
        vcal.StartTime = u"09:30"_s;
        vcal.EndDate = u"2026-07-04"_s;
        vcal.EndTime = u"10:00"_s;
        vcal.Attendees = u"ann@example.com; bob@example.com"_s;
        vcal.Priority = 2;
        const QString calendar = CalendarActionRun::Calendar(vcal, QDateTime(QDate(2026, 7, 1), QTime(8, 0), Qt::UTC), u"U1"_s);
        QVERIFY2(calendar.contains(u"\r\nSUMMARY:Review\\; now\\, please\r\n"_s), qPrintable(calendar));
        QVERIFY(calendar.contains(u"\r\nDTSTART:20260704T093000\r\nDTEND:20260704T100000\r\n"_s));
        QVERIFY(calendar.contains(u"\r\nPRIORITY:1\r\n"_s));
        QVERIFY(calendar.contains(u"ATTENDEE;ROLE=REQ-PARTICIPANT;RSVP=TRUE:mailto:bob@example.com\r\n"_s));
        QVERIFY(calendar.contains(u"DTSTAMP:20260701T080000Z"_s));
        vcal.AllDayEvent = true;
        QVERIFY(CalendarActionRun::Calendar(vcal, QDateTime::currentDateTime(), u"U2"_s)
                    .contains(u"DTSTART;VALUE=DATE:20260704\r\nDTEND;VALUE=DATE:20260705\r\n"_s));
        ReplaceCurrentMessage(nullptr);
    }
};

POSTVANE_TEST(tst_MessageActionRun)
#include "tst_MessageActionRun.moc"
