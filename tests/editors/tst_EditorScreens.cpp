#include "EditorSession.h"
#include "TestRegistry.h"
#include "actions/clsActionComment.h"
#include "actions/clsActionLogical.h"
#include "actions/clsActionMSG.h"
#include "actions/clsActionSetVariable.h"
#include "actions/clsActionValidation.h"
#include "actions/panels/MessageActionEditors.h"
#include "actions/panels/ctlActionMSG.h"
#include "editors/SourceTabWidget.h"
#include "editors/frmAccount.h"
#include "editors/frmAccountSchedule.h"
#include "editors/frmREOrderTriggers.h"
#include "editors/frmCondition.h"
#include "editors/frmField.h"
#include "editors/frmTrigger.h"
#include "editors/frmTriggerAction.h"
#include "model/clsAccountTrigger.h"

#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QTabWidget>
#include <QTest>

// Pictures of the editors as an administrator sees them, written to
// "screens" in the home folder for a look by eye.
class tst_EditorScreens : public QObject
{
    Q_OBJECT
    clsAccount account;
    clsAccountTrigger *trigger = nullptr;
    QDir screens;

    void Save(QWidget &Window, const QString &Name)
    {
        Window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&Window));
        const QPixmap picture = Window.grab();
        QVERIFY(!picture.isNull() && picture.width() > 200);
        QVERIFY(picture.save(screens.filePath(Name + QStringLiteral(".png"))));
    }

private slots:
    void initTestCase()
    {
        screens = QDir(QDir::homePath());
        screens.mkpath(QStringLiteral("screens"));
        QVERIFY(screens.cd(QStringLiteral("screens")));
        account.Name = QStringLiteral("Shop");
        auto owned = std::make_unique<clsAccountTrigger>();
        owned->Name = QStringLiteral("Orders");
        owned->SubjectLineLIKE = QStringLiteral("Order\tInvoice\t");
        owned->Condition = QStringLiteral("<Lines><Line>|%msg_from%|?|shop.example</Line></Lines>");
        owned->HelperSubject = QStringLiteral("Order 4711");
        owned->HelperMessage = QStringLiteral("Order Number: 4711\r\nCustomer: Jane Roe\r\nTotal: 129.50 EUR\r\n");
        owned->SCHEDULE = QString(170, u'Y');
        for (int hour = 0; hour < 7; ++hour)
            owned->SCHEDULE[hour] = u'N';
        trigger = account.Triggers.Add(std::move(owned));
        for (const char *name : {"Customer", "Total"}) {
            auto field = std::make_unique<clsTriggerField>();
            field->Name = QString::fromLatin1(name);
            field->LookFor = field->Name + u':';
            field->InsertInto = QStringLiteral("Orders");
            field->InsertFieldName = field->Name;
            trigger->FieldsToProcess().Add(std::move(field));
        }
        clsActionSetVariable set;
        set.Name = QStringLiteral("Sum");
        set.Value = QStringLiteral("%Total%");
        set.Operation = 3;
        trigger->ActionList().Add(ActionItem::Make(set));
        clsActionLogical ifBlock;
        ifBlock.Condition = QStringLiteral("<Lines><Line>|%Total%|&gt;|100</Line></Lines>");
        trigger->ActionList().Add(ActionItem::Make(ifBlock));
        clsActionComment comment;
        comment.Comment = QStringLiteral("Big order");
        trigger->ActionList().Add(ActionItem::Make(comment));
        clsActionLogical endIf;
        endIf.LogicalType = 3;
        trigger->ActionList().Add(ActionItem::Make(endIf));
    }

    void triggerEditorTabs()
    {
        frmTrigger editor(account, *trigger, false);
        const QStringList names{"general", "fields", "actions", "schedule", "saveto", "notes"};
        for (int tab = 0; tab < names.size(); ++tab) {
            editor.setSelectedTab(tab);
            Save(editor, QStringLiteral("trigger-") + names.at(tab));
        }
    }

    void fieldEditorWithItsPreview()
    {
        clsTriggerField field;
        frmField editor(*trigger, field, true);
        editor.txtName->setText(QStringLiteral("Amount"));
        editor.chkStartFromLast->setChecked(false);
        editor.optUntil.at(2)->setChecked(true);
        editor.txtUntilChars->setText(QStringLiteral(" "));
        editor.txtLookFor->setText(QStringLiteral("Total: "));
        QCOMPARE(editor.lblPreview->text(), QStringLiteral("Value: 129.50"));
        Save(editor, QStringLiteral("field-general"));
        editor.Tabs->setCurrentIndex(frmField::TabExtract);
        Save(editor, QStringLiteral("field-extract"));
        editor.Tabs->setCurrentIndex(frmField::TabAttributes);
        Save(editor, QStringLiteral("field-attributes"));
    }

    void conditionEditor()
    {
        frmCondition editor(*trigger, nullptr);
        editor.FillCondition();
        editor.AddRow();
        editor.SetRow(1, {QStringLiteral("And"), QStringLiteral("%Total%"), QStringLiteral(">="), QStringLiteral("100")});
        Save(editor, QStringLiteral("condition"));
    }

    void actionDialog()
    {
        frmTriggerAction dialog;
        dialog.Trigger = trigger;
        dialog.Action = trigger->ActionList().Item(1);
        dialog.Prepare();
        Save(dialog, QStringLiteral("action-set"));
    }

    void messageActionDialogs()
    {
        RegisterMessageActionEditors();
        clsActionMSG mail;
        mail.SendTo = QStringLiteral("sales@shop.example");
        mail.Subject = QStringLiteral("Order %Customer%: %msg_subject%");
        mail.Body = QStringLiteral("Customer: %Customer%\r\nTotal: %Total%");
        mail.AttachmentsIncoming = true;
        mail.ScheduleSend = true;
        mail.ScheduleInterval = 30;
        mail.SchedulePeriod = 1;
        ActionItem *message = trigger->ActionList().Add(ActionItem::Make(mail));
        frmTriggerAction mailDialog;
        mailDialog.Trigger = trigger;
        mailDialog.Action = message;
        mailDialog.Prepare();
        Save(mailDialog, QStringLiteral("action-message"));
        static_cast<ctlActionMSG *>(mailDialog.ActiveView)->cmdSendVia->setChecked(true);
        Save(mailDialog, QStringLiteral("action-message-sendvia"));

        clsActionValidation validation;
        validation.SendEmail = true;
        validation.SendTo = QStringLiteral("approver@shop.example");
        validation.SurveyFieldsXML = clsActionValidation::WriteSurveyFields(
            {{QStringLiteral("Qty"), QStringLiteral("Text"), QStringLiteral("%Total%"), QStringLiteral("How many?")}});
        frmTriggerAction validationDialog;
        validationDialog.Trigger = trigger;
        validationDialog.Action = trigger->ActionList().Add(ActionItem::Make(validation));
        validationDialog.Prepare();
        Save(validationDialog, QStringLiteral("action-validation"));
    }

    void accountEditorPages()
    {
        clsAccount shown;
        shown.Name = QStringLiteral("Orders Mailbox");
        shown.Details = QStringLiteral("Orders of the web shop");
        shown.IMAP = true;
        shown.IMAPServer = QStringLiteral("imap.shop.example");
        shown.IMAPPort = 993;
        shown.IMAPSSL = true;
        shown.IMAPAccount = QStringLiteral("orders");
        shown.RSS = true;
        shown.RSSUrl = QStringLiteral("https://shop.example/news.rss");
        shown.SCHEDULE = QStringLiteral("208:00,12:30,17:00|NYYYYYN");
        frmAccount editor(&shown);
        const QStringList pages{"general", "email", "direct", "filepickup", "databasepull", "http",
                                "rss", "clients", "twitter", "csvpickup"};
        for (int page = 0; page < pages.size(); ++page) {
            editor.Tabs->setCurrentIndex(page);
            Save(editor, QStringLiteral("account-") + pages.at(page));
        }
        editor.Tabs->setCurrentIndex(frmAccount::PageEmail);
        const QStringList reads{"imap", "pop3", "exchange"};
        for (int page = 0; page < reads.size(); ++page) {
            editor.TabsRead->setCurrentIndex(page);
            Save(editor, QStringLiteral("account-email-") + reads.at(page));
        }
    }

    void accountScheduleAndOrderDialogs()
    {
        clsAccount scheduled;
        scheduled.SCHEDULE = QStringLiteral("208:00,12:30,17:00|NYYYYYN");
        frmAccountSchedule schedule(scheduled, false);
        Save(schedule, QStringLiteral("account-schedule"));
        frmREOrderTriggers order(account);
        Save(order, QStringLiteral("account-ordertriggers"));
    }
};

POSTVANE_TEST(tst_EditorScreens)
#include "tst_EditorScreens.moc"
