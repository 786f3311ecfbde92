#include "EditorSession.h"
#include "TestRegistry.h"
#include "actions/ActionItem.h"
#include "actions/clsActionFax.h"
#include "actions/clsActionJabber.h"
#include "actions/clsActionMSG.h"
#include "actions/clsActionPopup.h"
#include "actions/clsActionSMS.h"
#include "actions/clsActionVCal.h"
#include "actions/clsActionValidation.h"
#include "actions/panels/ActionEditors.h"
#include "actions/panels/MessageActionEditors.h"
#include "actions/panels/SchedulePanel.h"
#include "actions/panels/ctlActionFax.h"
#include "actions/panels/ctlActionJabber.h"
#include "actions/panels/ctlActionMSG.h"
#include "actions/panels/ctlActionPopup.h"
#include "actions/panels/ctlActionSMS.h"
#include "actions/panels/ctlActionVCal.h"
#include "actions/panels/ctlActionValidation.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"

#include <QAction>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Save on the control; the texts of the warning boxes it showed.
QStringList Refusals(ActionEditor &Control, bool *Saved)
{
    ModalHandler modal;
    *Saved = Control.Save();
    return modal.Texts;
}

template <class Control, class Record> struct Panel
{
    explicit Panel(Record Action, clsAccountTrigger *Trigger = nullptr) : Item(ActionItem::Make(std::move(Action)))
    {
        View.ThisTrigger = Trigger;
        View.ThisAction = Item.get();
        View.Load();
    }
    Record &Action() { return *Item->As<Record>(); }
    std::unique_ptr<ActionItem> Item;
    Control View;
};

} // namespace

// The editor controls of the message kinds: what they show of an action,
// what they write back, and the input they refuse.
class tst_MessageActionPanels : public QObject
{
    Q_OBJECT

private slots:
    void everyMessageKindHasItsControl()
    {
        RegisterMessageActionEditors();
        QWidget parent;
        for (const QString &kind : {u"Message"_s, u"Forward"_s, u"SMS"_s, u"VCal"_s, u"Fax"_s, u"Popup"_s, u"Jabber"_s,
                                    u"Validation"_s}) {
            ActionEditor *control = CreateActionEditor(kind, &parent);
            QVERIFY2(control, qPrintable(kind));
            QCOMPARE(control->objectName(), kind);
        }
    }

    void theMessageEditorWritesWhatItShowsAndChecksItsInput()
    {
        clsAccount account;
        auto other = std::make_unique<clsAccountTrigger>();
        other->TriggerID = u"T2"_s;
        other->Name = u"Bounces"_s;
        account.Triggers.Add(std::move(other));
        clsAccountTrigger *bounces = account.Triggers.Item(1);
        bounces->Parent = &account;

        clsActionMSG mail;
        mail.SendTo = u"ann@example.com"_s;
        mail.Subject = u"Order %msg_subject%"_s;
        mail.Body = u"Hello"_s;
        mail.Attachments = u"/tmp/a.pdf"_s;
        mail.Importance = clsActionMSG::HighImportance;
        mail.ScheduleSend = true;
        mail.ScheduleOn = QDateTime(QDate(2026, 6, 1), QTime(8, 30));
        mail.SendVia = u"Y|smtp.example.com|587|1|ann|pw"_s;
        mail.CustomHeaders = u"X-A|1\r\nX-B|two"_s;
        mail.NDRSend = 2;
        mail.NDRPassTo = true;
        mail.NDRPassToID = u"T2"_s;
        Panel<ctlActionMSG, clsActionMSG> panel(mail, bounces);
        ctlActionMSG &view = panel.View;
        QVERIFY(view.cmdImportant->isChecked());
        QVERIFY(view.cmdSchedule->isChecked());
        QVERIFY(view.cmdSendVia->isChecked());
        QCOMPARE(view.txtSMTPServer->text(), u"smtp.example.com"_s);
        QCOMPARE(view.cmboPassTo->currentText(), u"Bounces"_s);
        QCOMPARE(view.optNDR->checkedId(), 2);
        QCOMPARE(view.HTMLEdit->toPlainText(), ctlActionMSG::EmptyDocument());
        QCOMPARE(view.cmdSendTest->toolTip(), u"Send A Test Message"_s);
        QCOMPARE(view.cmdBounce->toolTip(), u"Setup How None Delivery Reports Are Processed"_s);

        // Security proposes its port.
        view.cmboSMTPSecurity->setCurrentIndex(2);
        emit view.cmboSMTPSecurity->activated(2);
        QCOMPARE(view.txtSMTPPort->text(), u"465"_s);

        view.txtAttach->setText(u"/tmp/a.pdf;/tmp/b.pdf;"_s);
        view.cmdImportant->setChecked(false);
        bool saved = false;
        QVERIFY(Refusals(view, &saved).isEmpty());
        QVERIFY(saved);
        const clsActionMSG &written = panel.Action();
        QCOMPARE(written.Attachments, u"/tmp/a.pdf;/tmp/b.pdf"_s);
        QCOMPARE(written.Importance, qint16(0));
        QVERIFY(!written.HTML); // the empty document is no HTML body
        QVERIFY(written.HTMLText.isEmpty());
        QCOMPARE(written.SendVia, u"Y|smtp.example.com|465|2|ann|pw"_s);
        QCOMPARE(written.CustomHeaders, u"X-A|1\r\nX-B|two"_s);
        QCOMPARE(written.NDRPassToID, u"T2"_s);
        QCOMPARE(written.ScheduleOn, QDateTime(QDate(2026, 6, 1), QTime(8, 30)));

        // The checks, in order: a To address, then an HTML file that exists
        // unless its name holds a token.
        view.txtTo->clear();
        view.txtHTMLFile->setText(u"/no/such/file.html"_s);
        QCOMPARE(Refusals(view, &saved), QStringList{u"You must specify a To address"_s});
        QVERIFY(!saved);
        view.txtTo->setText(u"ann@example.com"_s);
        QCOMPARE(Refusals(view, &saved), QStringList{u"HTML File does not exist"_s});
        view.txtHTMLFile->setText(u"/letters/%customer%.html"_s);
        QVERIFY(Refusals(view, &saved).isEmpty());
        QVERIFY(saved);
        QVERIFY(panel.Action().HTML);
    }

    void theOtherKindsCheckWhatTheyNeed()
    {
        bool saved = false;
        Panel<ctlActionSMS, clsActionSMS> sms{clsActionSMS()};
        QCOMPARE(Refusals(sms.View, &saved), QStringList{u"You must specify a To address"_s});
        sms.View.txtTo->setText(u"+15550100"_s);
        sms.View.ScheduleBox->setChecked(true);
        sms.View.Schedule->txtSendInterval->setValue(15);
        sms.View.Schedule->cmboSendPeriod->setCurrentIndex(1);
        QVERIFY(Refusals(sms.View, &saved).isEmpty());
        QVERIFY(sms.Action().ScheduleSend);
        QCOMPARE(sms.Action().ScheduleInterval, 15);
        QCOMPARE(sms.Action().SchedulePeriod, qint16(1));

        // The attendee is asked for first, then where to post.
        Panel<ctlActionVCal, clsActionVCal> vcal{clsActionVCal()};
        QCOMPARE(Refusals(vcal.View, &saved), QStringList{u"You must specify at least 1 attendee"_s});
        vcal.View.txtAttendees->setText(u"ann@example.com"_s);
        QCOMPARE(Refusals(vcal.View, &saved), QStringList{u"You must specify a post to value (URL or Email Address)"_s});
        vcal.View.txtPostTo->setText(u"ann@example.com"_s);
        vcal.View.cmboSendType->setCurrentIndex(1);
        vcal.View.txtStartDate->setDate(QDate(2026, 7, 4));
        vcal.View.cmboStartTime->setCurrentText(u"09:30"_s);
        QVERIFY(Refusals(vcal.View, &saved).isEmpty());
        QVERIFY(!vcal.Action().PostToURL);
        QCOMPARE(vcal.Action().StartDate, u"2026-07-04"_s);
        QCOMPARE(vcal.Action().StartTime, u"09:30"_s);
        QCOMPARE(ctlActionVCal::HalfHours().size(), 48);

        Panel<ctlActionJabber, clsActionJabber> jabber{clsActionJabber()};
        QCOMPARE(Refusals(jabber.View, &saved), QStringList{u"You must enter a server and recipient."_s});
        jabber.View.txtJabberID->setText(u"ann@chat.example.com"_s);
        QVERIFY(Refusals(jabber.View, &saved).isEmpty());
        QCOMPARE(jabber.Action().ToJabberID, u"ann@chat.example.com"_s);

        clsActionFax faxRecord;
        faxRecord.FaxName = u"Ann"_s;
        Panel<ctlActionFax, clsActionFax> fax{faxRecord};
        QCOMPARE(fax.View.GridFaxCover->verticalHeaderItem(1)->text(), u"To Name"_s);
        QCOMPARE(fax.View.GridFaxCover->item(1, 0)->text(), u"Ann"_s);
        fax.View.GridFaxCover->item(6, 0)->setText(u"+15550199"_s);
        QVERIFY(Refusals(fax.View, &saved).isEmpty());
        QCOMPARE(fax.Action().FaxFromNumber, u"+15550199"_s);
        QCOMPARE(fax.Action().FaxName, u"Ann"_s);

        Panel<ctlActionPopup, clsActionPopup> popup{clsActionPopup()};
        popup.View.chkSticky->setChecked(true);
        popup.View.cmboFade->setCurrentIndex(1);
        QVERIFY(Refusals(popup.View, &saved).isEmpty());
        QCOMPARE(popup.Action().PopupStyle, u"-2147483635|1|1|-1"_s);
    }

    void theValidationEditorFillsDefaultsAndNeedsTheMarker()
    {
        Panel<ctlActionValidation, clsActionValidation> panel{clsActionValidation()};
        ctlActionValidation &view = panel.View;
        QVERIFY(view.txtBody->toPlainText().startsWith(u"Please click the link below to validate:"_s));
        QVERIFY(view.txtBody->toPlainText().contains(u"%msg_validationurl%"_s));
        QCOMPARE(view.txtSubject->text(), u"Please Validate: %msg_subject%"_s);
        QCOMPARE(view.txtMaxWait->value(), 2880);
        QVERIFY(view.chkYesNo->isChecked());
        QVERIFY(ctlActionValidation::LinkMarkup().contains(u"validate.aspx?id=%id%</Hyperlink>"_s));

        view.txtBody->setPlainText(u"Please look"_s);
        bool saved = false;
        QVERIFY(Refusals(view, &saved).isEmpty()); // no mail: no marker needed
        QVERIFY(saved);
        view.chkEmail->setChecked(true);
        QCOMPARE(Refusals(view, &saved), QStringList{u"You must specify a To address"_s});
        view.txtTo->setText(u"boss@example.com"_s);
        QCOMPARE(Refusals(view, &saved), QStringList{u"The body text must contain the %msg_validationurl% marker"_s});
        view.txtBody->setPlainText(u"Look: %msg_validationurl%"_s);
        view.GridFields->setItem(0, ctlActionValidation::ColumnName, new QTableWidgetItem(u"Qty"_s));
        view.GridFields->setItem(0, ctlActionValidation::ColumnAssignTo, new QTableWidgetItem(u"%qty%"_s));
        view.cmboTimeOut->setCurrentIndex(2);
        QVERIFY(Refusals(view, &saved).isEmpty());
        QVERIFY(saved);
        const clsActionValidation &written = panel.Action();
        QVERIFY(written.SendEmail);
        QCOMPARE(written.TimeOutAction, qint16(2));
        const auto fields = clsActionValidation::ReadSurveyFields(written.SurveyFieldsXML);
        QCOMPARE(fields.size(), 1);
        QCOMPARE(fields.at(0).AssignTo, u"%qty%"_s);
    }
};

POSTVANE_TEST(tst_MessageActionPanels)
#include "tst_MessageActionPanels.moc"
