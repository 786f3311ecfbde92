#include "EditorSession.h"
#include "TestRegistry.h"
#include "actions/clsActionComment.h"
#include "actions/clsActionLogical.h"
#include "actions/clsActionPassTo.h"
#include "actions/clsActionScript.h"
#include "actions/clsActionSetVariable.h"
#include "actions/panels/ctlActionGoTo.h"
#include "actions/panels/ctlActionPassTo.h"
#include "actions/panels/ctlActionScript.h"
#include "actions/panels/ctlActionSetVariable.h"
#include "editors/frmCondition.h"
#include "editors/frmField.h"
#include "editors/frmTrigger.h"
#include "editors/frmTriggerAction.h"
#include "model/clsAccountTrigger.h"

#include <QComboBox>
#include <QCheckBox>
#include <QDateEdit>
#include <QInputDialog>
#include <QLabel>
#include <QRadioButton>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTreeWidget>

namespace {

// Kinds without an own record in the console: what the server reads from
// them must come back from an open and a save character for character.
const QString KeptHTTPPost = QStringLiteral(
    "<Class>HTTPPost</Class><ID>KEEP1</ID><Enabled>-1</Enabled><URL>https://example.org/in?a=1&amp;b=2</URL>"
    "<Form>name=%Total%</Form><Condition><Lines><Line>|%Total%|&gt;|5</Line></Lines></Condition>");
const QString KeptDNS = QStringLiteral(
    "<Class>DNS</Class><ID>KEEP2</ID><HostName>&lt;%Domain%&gt;</HostName>"
    "<Condition></Condition>");

std::unique_ptr<clsAccountTrigger> MakeTrigger(const QString &ID, const QString &Name)
{
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->TriggerID = ID;
    trigger->Name = Name;
    trigger->FromAddressLIKE = QStringLiteral("*@shop.example");
    trigger->SubjectLineLIKE = QStringLiteral("Order\tInvoice\t");
    trigger->ReceivedAfter = QDateTime(QDate(2024, 3, 1), QTime(0, 0));
    trigger->HelperSubject = QStringLiteral("Order 4711");
    trigger->HelperMessage = QStringLiteral("Customer: Jane Roe\r\nTotal: 129.50 EUR\r\n");
    auto field = std::make_unique<clsTriggerField>();
    field->ID = ID + QStringLiteral("F1");
    field->Name = QStringLiteral("Customer");
    field->LookFor = QStringLiteral("Customer:");
    trigger->FieldsToProcess().Add(std::move(field));
    trigger->ActionList().AddXML(KeptHTTPPost);
    trigger->ActionList().AddXML(KeptDNS);
    return trigger;
}

// An account with triggers T1 and T2, posted and read back by the console.
clsAccount *PostAccount(EditorSession &Session, const QString &AccountID)
{
    clsAccount account;
    account.AccountID = AccountID;
    account.Name = QStringLiteral("Shop ") + AccountID;
    account.Triggers.Add(MakeTrigger(AccountID + QStringLiteral("T1"), QStringLiteral("Orders")));
    account.Triggers.Add(MakeTrigger(AccountID + QStringLiteral("T2"), QStringLiteral("Refunds")));
    return Session.Post(account);
}

// Closes an action dialog after Fill has set its editor control.
template <class Control> std::function<void(QWidget *)> InAction(std::function<void(Control *)> Fill)
{
    return [Fill](QWidget *Window) {
        auto *dialog = qobject_cast<frmTriggerAction *>(Window);
        QVERIFY(dialog);
        auto *control = qobject_cast<Control *>(dialog->ActiveView);
        QVERIFY(control);
        Fill(control);
        dialog->btnOK->click();
    };
}

std::function<void(QWidget *)> InCondition(const ConditionLine &Line)
{
    return [Line](QWidget *Window) {
        auto *dialog = qobject_cast<frmCondition *>(Window);
        QVERIFY(dialog);
        dialog->SetRow(0, Line);
        dialog->btnOK->click();
    };
}

std::function<void(QWidget *)> InInput(const QString &Text)
{
    return [Text](QWidget *Window) {
        auto *dialog = qobject_cast<QInputDialog *>(Window);
        QVERIFY(dialog);
        dialog->setTextValue(Text);
        dialog->accept();
    };
}

QStringList Kinds(const colActions &List)
{
    QStringList kinds;
    for (const ActionItem *action : List)
        kinds << action->ClassName();
    return kinds;
}

} // namespace

// The trigger editor against a real server: what it shows, what it stores,
// what it refuses, and what the server keeps.
class tst_frmTrigger : public QObject
{
    Q_OBJECT
    EditorSession session;
    clsAccount *account = nullptr;

    clsAccountTrigger &Trigger(const QString &ID) { return *account->Triggers.Item(account->Triggers.TriggerNoFromID(ID)); }

private slots:
    void initTestCase()
    {
        if (!session.Start())
            QFAIL(qPrintable(session.Problem));
        account = PostAccount(session, QStringLiteral("A1"));
        QVERIFY(account);
        QCOMPARE(account->Triggers.Count(), 2);
    }

    void unCrunchShowsTheTrigger()
    {
        frmTrigger editor(*account, Trigger(QStringLiteral("A1T1")), false);
        QCOMPARE(editor.windowTitle(), QStringLiteral("Account Trigger: Orders"));
        QCOMPARE(editor.txtFrom->text(), QStringLiteral("*@shop.example"));
        QCOMPARE(editor.WordsGrid->rowCount(), 3); // two words and the row for new input
        QCOMPARE(editor.WordsGrid->item(1, 0)->text(), QStringLiteral("Invoice"));
        QCOMPARE(editor.btnCheckBodyAlso->text(), QStringLiteral("Subject Line"));
        QCOMPARE(editor.txtReceivedDate->date(), QDate(2024, 3, 1));
        QCOMPARE(editor.FieldsGrid->rowCount(), 1);
        QCOMPARE(editor.FieldsGrid->item(0, 5)->text(), QStringLiteral("Customer:"));
        QCOMPARE(editor.ReportActions->topLevelItemCount(), 2);
        QVERIFY(editor.ScheduleActive(1, 0) && editor.ScheduleActive(7, 23));
        QCOMPARE(editor.cmboThenProcessTrigger->count(), 2);
        QVERIFY(!editor.cmboThenProcessTrigger->isEnabled());
        QVERIFY(!editor.Dirty);
    }

    // The road of one change: fields and actions of every flow and value
    // kind added through their own dialogs, saved, and read back from the
    // server as the same text.
    void openChangeSaveReadsBackTextForText()
    {
        clsAccountTrigger &trigger = Trigger(QStringLiteral("A1T1"));
        frmTrigger editor(*account, trigger, false);
        editor.txtName->setText(QStringLiteral("Orders (changed)"));
        editor.WordsGrid->item(0, 0)->setText(QStringLiteral("  Purchase\t"));
        editor.cmboImportant->setCurrentIndex(3);
        editor.btnCheckBodyAlso->click();
        editor.btnContains->click();
        QTest::mouseClick(editor.GridSchedule->viewport(), Qt::LeftButton, {},
                          editor.GridSchedule->visualRect(editor.GridSchedule->model()->index(0, 3)).center());
        editor.txtDetails->setPlainText(QStringLiteral("Orders from the shop"));
        editor.cmboThenProcess->setCurrentIndex(1);
        editor.cmboThenProcessTrigger->setCurrentIndex(1);
        QVERIFY(editor.Dirty);

        {
            ModalHandler modal;
            modal.Handlers << [](QWidget *Window) {
                auto *field = qobject_cast<frmField *>(Window);
                QVERIFY(field);
                QTest::keyClicks(field->txtName, QStringLiteral("Total"));
                field->txtLookFor->setText(QStringLiteral("Total: "));
                field->optUntil.at(2)->setChecked(true);
                field->txtUntilChars->setText(QStringLiteral(" "));
                QCOMPARE(field->lblPreview->text(), QStringLiteral("Value: 129.50"));
                field->btnOK->click();
            };
            editor.ShowFieldForm(true);
            QVERIFY(modal.Handlers.isEmpty());
        }
        QCOMPARE(trigger.FieldsToProcess().Count(), 2);
        QCOMPARE(trigger.FieldsToProcess().Item(2)->InsertFieldName, QStringLiteral("Total"));

        ModalHandler modal;
        modal.Handlers << InAction<ctlActionSetVariable>([](ctlActionSetVariable *Set) {
            Set->cmboName->setEditText(QStringLiteral("Sum"));
            Set->txtValue->setPlainText(QStringLiteral("%Total%"));
            Set->cmboOperation->setCurrentIndex(3);
            Set->chkPersist->setChecked(true);
        });
        const QString set = editor.CreateAction(QStringLiteral("Set"));
        modal.Handlers << InCondition({QString(), QStringLiteral("%Total%"), QStringLiteral(">"), QStringLiteral("100")});
        const QString ifID = editor.CreateAction(QStringLiteral("If"), set);
        const QString comment = trigger.ActionList().Item(trigger.ActionList().ActionNoFromID(ifID) + 1)->ID();
        modal.Handlers << InInput(QStringLiteral("Big order"));
        editor.CreateAction(QStringLiteral("Comment"), comment);
        modal.Handlers << InInput(QStringLiteral("Again"));
        const QString label = editor.CreateAction(QStringLiteral("Label"), comment);
        editor.CreateAction(QStringLiteral("Else"), label);
        modal.Handlers << InAction<ctlActionGoTo>([](ctlActionGoTo *GoTo) {
            QCOMPARE(GoTo->cmboLabel->itemText(0), QStringLiteral("#Start"));
            QVERIFY(GoTo->cmboLabel->findText(QStringLiteral("Again")) > 1);
            GoTo->cmboLabel->setCurrentText(QStringLiteral("Again"));
        });
        const QString goTo = editor.CreateAction(QStringLiteral("GoTo"), label);
        modal.Handlers << InAction<ctlActionPassTo>([](ctlActionPassTo *PassTo) {
            PassTo->cmboPassTo->setCurrentIndex(PassTo->cmboPassTo->findData(QStringLiteral("A1T2")));
            PassTo->txtPassToBody->setPlainText(QStringLiteral("%Total%\r\nfrom the shop"));
        });
        editor.CreateAction(QStringLiteral("PassTo"), goTo);
        modal.Handlers << InAction<ctlActionScript>(
            [](ctlActionScript *Script) { Script->ScriptEdit->setPlainText(QStringLiteral("Sub Main\r\nEnd Sub")); });
        editor.CreateAction(QStringLiteral("Script"));
        modal.Handlers << InCondition({QString(), QStringLiteral("%Sum%"), QStringLiteral("!"), QString()});
        editor.CreateAction(QStringLiteral("End"), QStringLiteral("top"));
        QVERIFY(modal.Handlers.isEmpty());
        QVERIFY2(modal.Texts.isEmpty(), qPrintable(modal.Texts.join(u'\n')));

        QCOMPARE(Kinds(trigger.ActionList()),
                 QStringList({"End", "HTTPPost", "DNS", "Set", "If", "Comment", "Label", "GoTo", "PassTo", "Else",
                              "Comment", "EndIf", "Script"}));
        QVERIFY(editor.ButtonOK());
        QVERIFY(!editor.Dirty);

        const QString stored = session.Trigger(QStringLiteral("A1"), QStringLiteral("A1T1"));
        QCOMPARE(stored, trigger.XML());
        QVERIFY2(stored.contains(KeptHTTPPost) && stored.contains(KeptDNS), qPrintable(stored));

        clsAccountTrigger read;
        read.setXML(stored);
        QCOMPARE(read.Name, QStringLiteral("Orders (changed)"));
        QCOMPARE(read.SubjectLineLIKE, QStringLiteral("Purchase\tInvoice\t"));
        QVERIFY(read.CheckBodyAlso && read.CheckALLWords);
        QCOMPARE(read.MarkedAsImportant, 3);
        QCOMPARE(read.SCHEDULE.size(), 170);
        QCOMPARE(read.SCHEDULE.count(u'N'), 1);
        QCOMPARE(read.SCHEDULE.at(3), u'N');
        QCOMPARE(read.ThenProcessID, QStringLiteral("A1T2"));
        QCOMPARE(read.Details, QStringLiteral("Orders from the shop"));
        const auto *sum = read.ActionList().Item(set)->As<clsActionSetVariable>();
        QCOMPARE(sum->Operation, 3);
        QVERIFY(sum->Persist);
        QCOMPARE(read.ActionList().Item(goTo)->As<clsActionLogical>()->LabelName, QStringLiteral("Again"));
        QCOMPARE(read.ActionList().Item(ifID)->Condition(),
                 QStringLiteral("<Lines><Line>|%Total%|&gt;|100</Line></Lines>"));
    }

    void validationsStopTheSaveWithTheirMessage_data()
    {
        QTest::addColumn<QString>("broken");
        QTest::addColumn<QString>("message");
        QTest::newRow("no sender") << "from"
                                   << "You must specify a From address. If you want to check emails from everyone, "
                                      "specify *";
        QTest::newRow("no name") << "name"
                                 << "You must enter a Name";
        QTest::newRow("If without End If")
            << "if"
            << "An If/End If Action does not have a matching End If/If. Please correct before saving.";
        QTest::newRow("Else outside its block") << "else"
                                                << "Misplaced Else";
    }

    void validationsStopTheSaveWithTheirMessage()
    {
        QFETCH(QString, broken);
        QFETCH(QString, message);
        clsAccountTrigger &trigger = Trigger(QStringLiteral("A1T2"));
        const QString before = session.Trigger(QStringLiteral("A1"), QStringLiteral("A1T2"));
        const int actions = trigger.ActionList().Count();
        frmTrigger editor(*account, trigger, false);
        if (broken == QStringLiteral("from"))
            editor.txtFrom->setText(QStringLiteral("   "));
        else if (broken == QStringLiteral("name"))
            editor.txtName->clear();
        else if (broken == QStringLiteral("if")) {
            // The If's own End If goes; its comment stays.
            editor.CreateAction(QStringLiteral("If"), QString(), clsActionLogical().XML());
            trigger.ActionList().Delete(trigger.ActionList().Count());
        } else {
            // If, its comment and End If, then two Else behind the block.
            for (const int type : {1, 2, 2}) {
                clsActionLogical logical;
                logical.LogicalType = qint16(type);
                editor.CreateAction(logical.ClassName(), QString(), logical.XML());
            }
        }
        ModalHandler modal;
        QVERIFY(!editor.ButtonOK());
        QCOMPARE(modal.Texts, QStringList{message});
        QCOMPARE(session.Trigger(QStringLiteral("A1"), QStringLiteral("A1T2")), before);
        while (trigger.ActionList().Count() > actions)
            trigger.ActionList().Delete(trigger.ActionList().Count());
    }

    void readBackRules()
    {
        clsAccountTrigger &trigger = Trigger(QStringLiteral("A1T2"));
        frmTrigger editor(*account, trigger, false);
        // Passing to itself stores no following trigger.
        editor.cmboThenProcess->setCurrentIndex(1);
        editor.cmboThenProcessTrigger->setCurrentIndex(1);
        // Every word cleared drops the word test.
        for (int row = 0; row < editor.WordsGrid->rowCount(); ++row)
            if (editor.WordsGrid->item(row, 0))
                editor.WordsGrid->item(row, 0)->setText(QStringLiteral(" "));
        editor.txtReceivedDate->setDate(QDate(2024, 4, 1));
        editor.ReadControls();
        QCOMPARE(trigger.ThenProcessID, QString());
        QCOMPARE(trigger.SubjectLineLIKE, QString());
        QVERIFY(!trigger.ConditionAsText().contains(QStringLiteral("Invoice")));
        QVERIFY(!trigger.ReceivedAfterReset);
        QCOMPARE(trigger.SCHEDULE, QString());
        editor.txtReceivedDate->setDate(QDate(2024, 2, 1));
        editor.ReadControls();
        QVERIFY(trigger.ReceivedAfterReset);
        QCOMPARE(trigger.ReceivedAfter, QDateTime(QDate(2024, 2, 1), QTime(0, 0)));
        for (int hour = 0; hour < 24; ++hour)
            editor.setScheduleActive(7, hour, false);
        editor.ReadControls();
        QCOMPARE(trigger.SCHEDULE, QString(144, u'Y') + QString(24, u'N') + QStringLiteral("YY"));
    }

    void actionCreationRules()
    {
        clsAccountTrigger &trigger = Trigger(QStringLiteral("A1T2"));
        const int before = trigger.ActionList().Count();
        frmTrigger editor(*account, trigger, false);
        ModalHandler modal;
        // One direct database action per trigger; custom ones as many as wanted.
        QVERIFY(!editor.CreateAction(QStringLiteral("DatabaseUpdate"), QString(), QStringLiteral("<Class>DatabaseUpdate</Class>")).isEmpty());
        QVERIFY(editor.CreateAction(QStringLiteral("DatabaseUpdate"), QString(), QStringLiteral("<Class>DatabaseUpdate</Class>")).isEmpty());
        QCOMPARE(modal.Texts.size(), 1);
        QVERIFY(modal.Texts.at(0).startsWith(QStringLiteral(
            "Direct Database Update Already Added\nThe Direct Database Update Action has already been added.")));
        QVERIFY(!editor.CreateAction(QStringLiteral("DatabaseUpdateCustom"), QString(), QStringLiteral("<Class>DatabaseUpdateCustom</Class>")).isEmpty());
        QVERIFY(!editor.CreateAction(QStringLiteral("DatabaseUpdateCustom"), QString(), QStringLiteral("<Class>DatabaseUpdateCustom</Class>")).isEmpty());
        QCOMPARE(trigger.ActionList().Count(), before + 3);

        // A new Else at the top level warns and goes away again.
        modal.Texts.clear();
        QVERIFY(!editor.CreateAction(QStringLiteral("Else")).isEmpty());
        QCOMPARE(modal.Texts, QStringList{QStringLiteral("Not currently in an If Block")});
        QCOMPARE(trigger.ActionList().Count(), before + 3);

        // A new If cancelled in its condition editor takes its block with it.
        modal.Handlers << [](QWidget *Window) { qobject_cast<QDialog *>(Window)->reject(); };
        editor.CreateAction(QStringLiteral("If"));
        QVERIFY(modal.Handlers.isEmpty());
        QCOMPARE(trigger.ActionList().Count(), before + 3);

        // Copy and paste: a new ID, no editor.
        const QString custom = trigger.ActionList().Item(trigger.ActionList().Count())->ID();
        editor.SelectedActionID = custom;
        editor.CopyAction();
        editor.PasteAction();
        QCOMPARE(trigger.ActionList().Count(), before + 4);
        const ActionItem *pasted = trigger.ActionList().Item(trigger.ActionList().Count());
        QCOMPARE(pasted->ClassName(), QStringLiteral("DatabaseUpdateCustom"));
        const QString pastedID = pasted->ID();
        QVERIFY(pastedID != custom);

        // Moving up and down, and deleting.
        editor.SelectedActionID = pastedID;
        editor.MoveActionUp();
        QCOMPARE(trigger.ActionList().ActionNoFromID(pastedID), before + 3);
        modal.Answer = QMessageBox::Yes;
        editor.DeleteAction();
        QCOMPARE(trigger.ActionList().ActionNoFromID(pastedID), 0);
        while (trigger.ActionList().Count() > before)
            trigger.ActionList().Delete(trigger.ActionList().Count());
    }

    void fieldListCommands()
    {
        clsAccountTrigger &trigger = Trigger(QStringLiteral("A1T2"));
        auto second = std::make_unique<clsTriggerField>();
        second->Name = QStringLiteral("Amount");
        const QString secondID = second->ID;
        trigger.FieldsToProcess().Add(std::move(second));
        frmTrigger editor(*account, trigger, false);
        editor.FieldsGrid->selectRow(1);
        editor.MoveUp();
        QCOMPARE(trigger.FieldsToProcess().FieldNoFromID(secondID), 1);
        editor.MoveUp();
        QCOMPARE(trigger.FieldsToProcess().FieldNoFromID(secondID), 1);
        editor.FieldsGrid->item(0, 1)->setCheckState(Qt::Unchecked);
        QVERIFY(!trigger.FieldsToProcess().Item(1)->Enabled);
        ModalHandler modal(QMessageBox::Yes);
        editor.FieldsGrid->selectRow(0);
        editor.DeleteField();
        QCOMPARE(modal.Texts, QStringList{QStringLiteral("Delete field?\r\nAmount")});
        QCOMPARE(trigger.FieldsToProcess().Count(), 1);
        QCOMPARE(editor.FieldsGrid->rowCount(), 1);
    }

    void newTriggerIsAddedAskedToEnableAndPosted()
    {
        frmTrigger *editor = ShowTriggerEditor(*account, nullptr);
        QVERIFY(editor->IsNew);
        editor->txtName->setText(QStringLiteral("Brand new"));
        const int before = account->Triggers.Count();
        {
            ModalHandler modal(QMessageBox::No);
            QVERIFY(editor->ButtonOK());
            QCOMPARE(modal.Texts, QStringList{QStringLiteral("Do you want to enable this new Trigger now?")});
        }
        QCOMPARE(account->Triggers.Count(), before + 1);
        clsAccountTrigger *added = account->Triggers.Item(before + 1);
        QVERIFY(!added->Enabled);
        QCOMPARE(session.Trigger(QStringLiteral("A1"), added->TriggerID), added->XML());
        editor->close();
    }

    void closingAsksToSaveChanges()
    {
        clsAccountTrigger &trigger = Trigger(QStringLiteral("A1T2"));
        frmTrigger editor(*account, trigger, false);
        editor.txtDetails->setPlainText(QStringLiteral("not kept"));
        ModalHandler modal(QMessageBox::Cancel);
        QVERIFY(!editor.ButtonCancel());
        QCOMPARE(modal.Texts,
                 QStringList{QStringLiteral("Save Changes?\nDo you want to save the changes made to this Trigger?")});
        modal.Answer = QMessageBox::No;
        QVERIFY(editor.ButtonCancel());
        QVERIFY(!editor.Dirty);
        QVERIFY(trigger.Details.isEmpty());
    }
};

POSTVANE_TEST(tst_frmTrigger)
#include "tst_frmTrigger.moc"
