#include "ActionFragmentTags.h"
#include "TestRegistry.h"
#include "actions/clsActionFax.h"
#include "actions/clsActionForward.h"
#include "actions/clsActionJabber.h"
#include "actions/clsActionMSG.h"
#include "actions/clsActionPopup.h"
#include "actions/clsActionSMS.h"
#include "actions/clsActionVCal.h"
#include "actions/clsActionValidation.h"

#include <QDate>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString StoredCondition = u"<Lines><Line>|%a%|=|1</Line></Lines>"_s;
const QStringList Head{u"Class"_s, u"ID"_s, u"Enabled"_s};

} // namespace

// The records of the message kinds: their fragments, defaults, list lines
// and the values packed in their texts.
class tst_MessageActionRecords : public QObject
{
    Q_OBJECT

private slots:
    void fragmentsHaveTheirTagsInOrderAndReadBack_data()
    {
        QTest::addColumn<QString>("fragment");
        QTest::addColumn<QStringList>("tags");

        clsActionMSG mail(u"M1"_s);
        for (QString *text : {&mail.Attachments, &mail.BCC, &mail.Body, &mail.CC, &mail.From, &mail.HTMLFile,
                              &mail.HTMLText, &mail.SendTo, &mail.Subject, &mail.SendVia, &mail.NDRSendTo,
                              &mail.NDRPassToID, &mail.CustomHeaders})
            *text = u"v"_s;
        mail.AttachmentsIncoming = mail.AttachmentsIncomingInline = mail.DeliveryReceipt = mail.HTML = true;
        mail.ReadReceipt = mail.ScheduleDeDup = mail.ScheduleSend = mail.HTMLEmbed = mail.NDRPassTo = true;
        mail.Importance = 2;
        mail.Sensitivity = 1;
        mail.SchedulePeriod = 1;
        mail.ScheduleInterval = 30;
        mail.ScheduleOn = QDateTime(QDate(2026, 5, 1), QTime(9, 30));
        mail.NDRSend = 2;
        mail.Condition = StoredCondition;
        QTest::newRow("Message") << mail.XML()
                                 << Head + QStringList{u"Attachments"_s, u"AttachmentsIncoming"_s,
                                                       u"AttachmentsIncomingInline"_s, u"BCC"_s, u"Body"_s, u"CC"_s,
                                                       u"DeliveryReceipt"_s, u"From"_s, u"HTML"_s, u"HTMLFile"_s,
                                                       u"HTMLText"_s, u"Importance"_s, u"ReadReceipt"_s,
                                                       u"SchedulePeriod"_s, u"ScheduleInterval"_s, u"ScheduleDeDup"_s,
                                                       u"ScheduleOn"_s, u"ScheduleSend"_s, u"SendTo"_s, u"Sensitivity"_s,
                                                       u"Subject"_s, u"HTMLEmbed"_s, u"SendVia"_s, u"NDRSend"_s,
                                                       u"NDRSendTo"_s, u"NDRPassTo"_s, u"NDRPassToID"_s,
                                                       u"CustomHeaders"_s, u"Condition"_s};
        clsActionForward forward(u"F1"_s);
        forward.EmailForwardTo = u"a@b.test"_s;
        forward.EmailForwardSubject = u"s"_s;
        forward.EmailForwardPlusAttach = true;
        QTest::newRow("Forward") << forward.XML()
                                 << Head + QStringList{u"EmailForwardPlusAttach"_s, u"EmailForwardSubject"_s,
                                                       u"EmailForwardTo"_s};
        clsActionSMS sms(u"S1"_s);
        for (QString *text : {&sms.Body, &sms.From, &sms.SendTo, &sms.Subject, &sms.SNPPServer, &sms.SNPPLoginID,
                              &sms.SNPPAssignReplyTo})
            *text = u"v"_s;
        sms.SchedulePeriod = 1;
        sms.ScheduleInterval = 5;
        sms.ScheduleDeDup = sms.ScheduleSend = sms.SendViaSNPP = true;
        sms.ScheduleOn = QDateTime(QDate(2026, 5, 1), QTime(9, 30));
        QTest::newRow("SMS") << sms.XML()
                             << Head + QStringList{u"Body"_s, u"From"_s, u"SchedulePeriod"_s, u"ScheduleInterval"_s,
                                                   u"ScheduleDeDup"_s, u"ScheduleOn"_s, u"ScheduleSend"_s, u"SendTo"_s,
                                                   u"Subject"_s, u"SendViaSNPP"_s, u"SNPPServer"_s, u"SNPPLoginID"_s,
                                                   u"SNPPAssignReplyTo"_s};
        clsActionVCal vcal(u"C1"_s);
        for (QString *text : {&vcal.Attendees, &vcal.Categories, &vcal.Classification, &vcal.Completed,
                              &vcal.Description, &vcal.DisplayName, &vcal.EndTime, &vcal.EventType, &vcal.Location,
                              &vcal.Organizer, &vcal.Recurrence, &vcal.StartTime, &vcal.Status, &vcal.Summary,
                              &vcal.PostTo, &vcal.Username, &vcal.TimeZone})
            *text = u"v"_s;
        vcal.Password = u"secret"_s;
        vcal.AllDayEvent = true;
        vcal.Sensitivity = 2;
        vcal.Authentication = 1;
        QTest::newRow("VCal") << vcal.XML()
                              << Head + QStringList{u"PostToURL"_s, u"PostTo"_s, u"UserName"_s, u"Password"_s,
                                                    u"Authentication"_s, u"Attendees"_s, u"Categories"_s,
                                                    u"Classification"_s, u"Completed"_s, u"Description"_s,
                                                    u"DisplayName"_s, u"EndDate"_s, u"EndTime"_s, u"EventType"_s,
                                                    u"Location"_s, u"Organizer"_s, u"Priority"_s, u"Recurrence"_s,
                                                    u"StartDate"_s, u"StartTime"_s, u"Status"_s, u"Summary"_s,
                                                    u"TimeZone"_s, u"AllDayEvent"_s, u"Sensitivity"_s};
        clsActionFax fax(u"X1"_s);
        for (QString *text : {&fax.FaxComments, &fax.FaxCompany, &fax.FaxCoverPage, &fax.FaxFiles, &fax.FaxFromCompany,
                              &fax.FaxFromName, &fax.FaxFromNumber, &fax.FaxName, &fax.FaxNumber, &fax.FaxSubject})
            *text = u"v"_s;
        fax.FaxIncoming = fax.FaxReport = fax.FaxReportDontPrint = true;
        QTest::newRow("Fax") << fax.XML()
                             << Head + QStringList{u"FaxComments"_s, u"FaxCompany"_s, u"FaxCoverPage"_s, u"FaxFiles"_s,
                                                   u"FaxFromCompany"_s, u"FaxFromName"_s, u"FaxFromNumber"_s,
                                                   u"FaxIncoming"_s, u"FaxName"_s, u"FaxNumber"_s, u"FaxReport"_s,
                                                   u"FaxReportDontPrint"_s, u"FaxSubject"_s};
        clsActionPopup popup(u"P1"_s);
        popup.PopupMessage = u"New order"_s;
        QTest::newRow("Popup") << popup.XML() << Head + QStringList{u"PopupMessage"_s, u"PopupStyle"_s};
        clsActionJabber jabber(u"J1"_s);
        jabber.MessageType = 1;
        jabber.MessageText = jabber.MessageSubject = jabber.ToJabberID = jabber.Username = u"v"_s;
        jabber.Password = u"secret"_s;
        QTest::newRow("Jabber") << jabber.XML()
                                << Head + QStringList{u"Server"_s, u"MessageType"_s, u"MessageText"_s,
                                                      u"MessageSubject"_s, u"ToJabberID"_s, u"Username"_s,
                                                      u"Password"_s};
        clsActionValidation validation(u"V1"_s);
        validation.SendEmail = true;
        validation.MessageText = validation.FromAddress = validation.SendTo = validation.Subject = u"v"_s;
        validation.TimeOutAction = 2;
        validation.ConfirmationHTML = u"<b>Sure?</b>"_s;
        validation.SurveyFieldsXML = clsActionValidation::WriteSurveyFields({{u"Qty"_s, u"Text"_s, u"%qty%"_s, u"How many?"_s}});
        QTest::newRow("Validation") << validation.XML()
                                    << Head + QStringList{u"SendEmail"_s, u"MessageText"_s, u"FromAddress"_s,
                                                          u"SendTo"_s, u"Subject"_s, u"MaxWaitFor"_s,
                                                          u"TimeOutAction"_s, u"ShowYesNoButtons"_s,
                                                          u"ConfirmationHTML"_s, u"SurveyFieldsXML"_s};
    }
    void fragmentsHaveTheirTagsInOrderAndReadBack()
    {
        QFETCH(QString, fragment);
        QFETCH(QStringList, tags);
        QStringList found = TopTags(fragment);
        found.removeAll(u"Condition"_s);
        tags.removeAll(u"Condition"_s);
        QCOMPARE(found, tags);
        QVERIFY2(!fragment.contains(u"secret"_s), qPrintable(fragment)); // passwords travel enciphered
        colActions list;
        ActionItem *read = nullptr;
        QCOMPARE(Reread(fragment, &read, list), fragment);
        QVERIFY(!read->ActionDescription().isEmpty());
    }

    void newActionsHaveTheirDefaultsAndReadingKeepsEveryValue()
    {
        const clsActionVCal vcal;
        QCOMPARE(vcal.StartDate, QDate::currentDate().toString(u"yyyy-MM-dd"_s));
        QCOMPARE(vcal.EndDate, vcal.StartDate);
        QCOMPARE(vcal.Priority, qint16(1));
        QVERIFY(vcal.PostToURL);
        QCOMPARE(clsActionPopup().PopupStyle, u"-2147483635|1|0|0"_s);
        QVERIFY(!clsActionJabber().Server.isEmpty());
        const clsActionValidation validation;
        QCOMPARE(validation.MaxWaitFor, 2880);
        QVERIFY(validation.ShowYesNoButtons);

        // An absent tag resets to empty: the defaults hold only for new actions.
        clsActionVCal empty;
        empty.setXML(u"<Class>VCal</Class><ID>C2</ID>"_s);
        QVERIFY(!empty.PostToURL);
        QCOMPARE(empty.Priority, qint16(0));
        clsActionValidation bare;
        bare.setXML(u"<Class>Validation</Class><ID>V2</ID>"_s);
        QCOMPARE(bare.MaxWaitFor, 0);
        QVERIFY(!bare.ShowYesNoButtons);

        clsActionMSG mail;
        mail.Body = u"Line 1\r\nLine <2> & 'three'"_s;
        mail.ScheduleOn = QDateTime(QDate(2026, 5, 1), QTime(9, 30));
        mail.CustomHeaders = u"X-A|1\r\nX-B|two|parts"_s;
        mail.Condition = StoredCondition;
        clsActionMSG mailRead;
        mailRead.setXML(mail.XML());
        QCOMPARE(mailRead.Body, mail.Body);
        QCOMPARE(mailRead.ScheduleOn, mail.ScheduleOn);
        QCOMPARE(mailRead.Condition, StoredCondition);
        QCOMPARE(mailRead.ID, mail.ID);
        const auto headers = clsActionMSG::SplitHeaders(mailRead.CustomHeaders);
        QCOMPARE(headers.size(), 2);
        QCOMPARE(headers.at(1).first, u"X-B"_s);
        QCOMPARE(headers.at(1).second, u"two|parts"_s);

        clsActionVCal secret;
        secret.Password = u"pa|ss"_s;
        clsActionVCal secretRead;
        secretRead.setXML(secret.XML());
        QCOMPARE(secretRead.Password, u"pa|ss"_s);

        clsActionValidation survey;
        survey.SurveyFieldsXML = clsActionValidation::WriteSurveyFields(
            {{u"Qty"_s, u"Text"_s, u"%qty%"_s, u"How many?"_s}, {u"Note"_s, u"Text"_s, QString(), u"Why <not>?"_s}});
        clsActionValidation surveyRead;
        surveyRead.setXML(survey.XML());
        const auto fields = clsActionValidation::ReadSurveyFields(surveyRead.SurveyFieldsXML);
        QCOMPARE(fields.size(), 2);
        QCOMPARE(fields.at(0).AssignTo, u"%qty%"_s);
        QCOMPARE(fields.at(1).Prompt, u"Why <not>?"_s);
        QVERIFY(fields.at(1).AssignTo.isEmpty());
    }

    void sendViaKeepsItsFieldsAndThePasswordWhole()
    {
        clsActionMSG::Relay via;
        via.Use = true;
        via.Server = u"smtp.example.com"_s;
        via.Port = 587;
        via.Security = 1;
        via.User = u"ann"_s;
        via.Password = u"a|b"_s;
        const clsActionMSG::Relay read = clsActionMSG::SplitSendVia(clsActionMSG::JoinSendVia(via));
        QVERIFY(read.Use);
        QCOMPARE(read.Server, via.Server);
        QCOMPARE(read.Port, 587);
        QCOMPARE(read.Security, 1);
        QCOMPARE(read.Password, u"a|b"_s);
        QVERIFY(!clsActionMSG::SplitSendVia(u"N|smtp.example.com|25|0||"_s).Use);
        QCOMPARE(clsActionMSG::SplitSendVia(QString()).Port, 25);
    }

    void theListShowsScheduleRelayAndValidation()
    {
        clsActionMSG mail;
        mail.SendTo = u"ann@example.com"_s;
        mail.Subject = u"Hello"_s;
        QVERIFY(mail.ActionDescription().contains(u"ann@example.com"_s));
        QVERIFY(!mail.ActionDescription().contains(u"Scheduled"_s));
        mail.ScheduleSend = true;
        mail.ScheduleOn = QDateTime(QDate(2026, 5, 1), QTime(9, 30));
        QVERIFY2(mail.ActionDescription().contains(u"(Scheduled For "_s), qPrintable(mail.ActionDescription()));
        QVERIFY(!mail.ActionDescription().contains(u" Time)"_s));
        mail.ScheduleInterval = 5;
        QVERIFY(mail.ActionDescription().contains(u"(Scheduled For 5 Days Time)"_s));
        mail.SchedulePeriod = 3;
        QVERIFY(mail.ActionDescription().contains(u"(Scheduled For 5 Minutes Time)"_s));
        mail.SendVia = u"N|smtp.example.com|25|0||"_s;
        QVERIFY(!mail.ActionDescription().contains(u"Via"_s));
        mail.SendVia = u"Y|smtp.example.com|25|0||"_s;
        QVERIFY(mail.ActionDescription().contains(u"(Via smtp.example.com)"_s));

        clsActionSMS sms;
        sms.SendTo = u"+15550100"_s;
        sms.ScheduleSend = true;
        sms.ScheduleInterval = 2;
        QVERIFY(sms.ActionDescription().contains(u"(Scheduled For 2 Days Time)"_s));

        clsActionValidation validation;
        validation.SendTo = u"boss@example.com"_s;
        QVERIFY(!validation.ActionDescription().contains(u"boss@"_s));
        validation.SendEmail = true;
        QVERIFY(validation.ActionDescription().contains(u"Validation Request Email To"_s));
        QVERIFY(validation.ActionDescription().contains(u"boss@example.com"_s));

        clsActionPopup popup;
        popup.PopupMessage = u"It's here"_s;
        QVERIFY(popup.ActionDescription().contains(u"It&apos;s here"_s));
        clsActionVCal vcal;
        vcal.Summary = u"Review"_s;
        vcal.StartTime = u"09:00"_s;
        vcal.EndTime = u"09:30"_s;
        QVERIFY(vcal.ActionDescription().contains(u"Review"_s));
        QVERIFY(vcal.ActionDescription().contains(u"09:00 - "_s));
    }

    void scheduledSendsFallDueAsTheirPeriodSays()
    {
        const QDateTime now(QDate(2026, 3, 10), QTime(14, 5));
        const QDateTime on(QDate(2026, 1, 1), QTime(8, 0));
        QCOMPARE(clsActionMSG::ScheduleDue(on, 0, 0, now), on); // in the past: due at the next pick
        QCOMPARE(clsActionMSG::ScheduleDue(on, 0, 3, now), QDateTime(QDate(2026, 3, 13), QTime(14, 5)));
        QCOMPARE(clsActionMSG::ScheduleDue(on, 1, 90, now), QDateTime(QDate(2026, 3, 10), QTime(15, 35)));
    }

    void theValidationHTMLOfTheListComesFromTheRecord()
    {
        colActions list;
        clsActionValidation validation(u"V9"_s);
        validation.ConfirmationHTML = u"<p>Go on?</p>"_s;
        list.Add(ActionItem::Make(validation));
        list.Add(ActionItem::Make(clsActionPopup(u"P9"_s)));
        QCOMPARE(list.HTMLForValidationID(u"V9"_s), u"<p>Go on?</p>"_s);
        QCOMPARE(list.HTMLForValidationID(u"P9"_s), QString());
        QVERIFY(list.Item(u"P9"_s)->As<clsActionPopup>());
        QVERIFY(colActions::NewObject(u"message"_s)->As<clsActionMSG>());
    }
};

POSTVANE_TEST(tst_MessageActionRecords)
#include "tst_MessageActionRecords.moc"
