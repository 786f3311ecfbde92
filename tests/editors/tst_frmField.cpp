#include "EditorSession.h"
#include "TestRegistry.h"
#include "editors/frmField.h"
#include "model/clsAccountTrigger.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTest>

namespace {

const QString SampleBody = QStringLiteral("Order Number: 4711\r\n"
                                          "Customer: Jane Roe; VIP\r\n"
                                          "Items:\r\n"
                                          "<item>Apple</item>\r\n"
                                          "<item>Pear</item>\r\n"
                                          "Total: 129.50 EUR\r\n"
                                          "Thanks\r\n");
const QString SampleSubject = QStringLiteral("Order 4711 from Shop");

// A trigger with the sample and one field, "Customer".
std::unique_ptr<clsAccountTrigger> SampleTrigger()
{
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->HelperMessage = SampleBody;
    trigger->HelperSubject = SampleSubject;
    auto field = std::make_unique<clsTriggerField>();
    field->Name = QStringLiteral("Customer");
    field->LookFor = QStringLiteral("Customer:");
    trigger->FieldsToProcess().Add(std::move(field));
    return trigger;
}

enum Until { EndOfLine, EndOfBody, AnyChars, ThisMany, TheseWords, Mask, EndTag };

} // namespace

// The field editor: the preview of every extraction rule on the sample, the
// defaults its name drives, and what it refuses.
class tst_frmField : public QObject
{
    Q_OBJECT

private slots:
    void previewShowsWhatEachRuleExtracts_data()
    {
        QTest::addColumn<QString>("lookFor");
        QTest::addColumn<QString>("thenLookFor");
        QTest::addColumn<int>("until");
        QTest::addColumn<QString>("untilText");
        QTest::addColumn<int>("untilNumber");
        QTest::addColumn<bool>("subject");
        QTest::addColumn<int>("removeFirst");
        QTest::addColumn<int>("removeLast");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("selected");

        QTest::newRow("end of line") << "Customer:" << "" << int(EndOfLine) << "" << 0 << false << 0 << 0
                                     << "Value: Jane Roe; VIP" << "Jane Roe; VIP";
        QTest::newRow("end of message") << "Total:" << "" << int(EndOfBody) << "" << 0 << false << 0 << 0
                                        << "Value: 129.50 EUR Thanks" << "";
        QTest::newRow("any of these characters") << "Customer: " << "" << int(AnyChars) << ";," << 0 << false << 0 << 0
                                                 << "Value: Jane Roe" << "Jane Roe";
        QTest::newRow("this many characters") << "Number: " << "" << int(ThisMany) << "" << 2 << false << 0 << 0
                                              << "Value: 47" << "47";
        QTest::newRow("until these words") << "Customer: " << "" << int(TheseWords) << "; VIP" << 0 << false << 0 << 0
                                           << "Value: Jane Roe" << "Jane Roe";
        QTest::newRow("find mask") << "\\d+\\.\\d\\d" << "" << int(Mask) << "" << 0 << false << 0 << 0
                                   << "Value: 129.50" << "129.50";
        QTest::newRow("end tag") << "<item>" << "" << int(EndTag) << "" << 0 << false << 0 << 0 << "Value: Apple"
                                 << "Apple";
        QTest::newRow("then look for") << "Items:" << "<item>" << int(AnyChars) << "<" << 0 << false << 0 << 0
                                       << "Value: Apple" << "Apple";
        QTest::newRow("subject only") << "Order " << "" << int(ThisMany) << "" << 4 << true << 0 << 0
                                      << "Value: 4711" << "4711";
        QTest::newRow("remove first and last") << "Customer: " << "" << int(EndOfLine) << "" << 0 << false << 5 << 5
                                               << "Value: Roe" << "";
        QTest::newRow("remove all") << "Number: " << "" << int(EndOfLine) << "" << 0 << false << 4 << 0
                                    << "Value: " << "";
        QTest::newRow("not found") << "Invoice:" << "" << int(EndOfLine) << "" << 0 << false << 0 << 0
                                   << "Not found" << "";
    }

    void previewShowsWhatEachRuleExtracts()
    {
        QFETCH(QString, lookFor);
        QFETCH(QString, thenLookFor);
        QFETCH(int, until);
        QFETCH(QString, untilText);
        QFETCH(int, untilNumber);
        QFETCH(bool, subject);
        QFETCH(int, removeFirst);
        QFETCH(int, removeLast);
        QFETCH(QString, shown);
        QFETCH(QString, selected);

        const auto trigger = SampleTrigger();
        clsTriggerField field;
        field.StartFromLastExtractPoint = 0;
        frmField editor(*trigger, field, true);
        editor.txtName->setText(QStringLiteral("Probe"));
        editor.optUntil.at(until)->setChecked(true);
        editor.txtUntilChars->setText(untilText);
        editor.txtUntilWords->setText(untilText);
        editor.txtUntilNumber->setValue(untilNumber);
        editor.chkSubject->setChecked(subject);
        editor.txtRemoveFirstXChars->setValue(removeFirst);
        editor.txtRemoveLastXChars->setValue(removeLast);
        editor.txtThenLookFor->setText(thenLookFor);
        // The look-for text last: every change runs the preview again.
        editor.txtLookFor->setText(lookFor);
        QCOMPARE(editor.lblPreview->text(), shown);
        if (!selected.isEmpty()) {
            const QString selection =
                subject ? editor.txtSubject->selectedText() : editor.txtHelper->textCursor().selectedText();
            QCOMPARE(selection, selected);
        }
    }

    void aRepeatingBlockShowsEveryValueAndSelectsTheFirst()
    {
        const auto trigger = SampleTrigger();
        clsTriggerField field;
        frmField editor(*trigger, field, true);
        editor.optUntil.at(EndTag)->setChecked(true);
        editor.chkBlock->setChecked(true);
        editor.txtLookFor->setText(QStringLiteral("<item>"));
        QCOMPARE(editor.Found.size(), 2);
        QCOMPARE(editor.lblPreview->text(), QStringLiteral("Values (2): Apple | Pear"));
        QCOMPARE(editor.txtHelper->textCursor().selectedText(), QStringLiteral("Apple"));
    }

    void earlierFieldsSetTheExtractPoint()
    {
        const auto trigger = SampleTrigger();
        auto first = std::make_unique<clsTriggerField>();
        first->Name = QStringLiteral("FirstItem");
        first->LookFor = QStringLiteral("<item>");
        first->Until_EndOfLine = false;
        first->Until_EndTag = true;
        trigger->FieldsToProcess().Add(std::move(first));
        clsTriggerField field;
        frmField editor(*trigger, field, true);
        editor.optUntil.at(EndTag)->setChecked(true);
        editor.txtLookFor->setText(QStringLiteral("<item>"));
        QCOMPARE(editor.lblPreview->text(), QStringLiteral("Value: Pear"));
        editor.chkStartFromLast->setChecked(false);
        QCOMPARE(editor.lblPreview->text(), QStringLiteral("Value: Apple"));

        // An existing field replays only the fields before it.
        clsTriggerField *customer = trigger->FieldsToProcess().Item(1);
        frmField own(*trigger, *customer, false);
        QCOMPARE(own.lblPreview->text(), QStringLiteral("Value: Jane Roe; VIP"));
    }

    void aBrokenExpressionShowsItsErrorInThePreview()
    {
        const auto trigger = SampleTrigger();
        clsTriggerField field;
        frmField editor(*trigger, field, true);
        editor.txtLookFor->setText(QStringLiteral("Total: (\\d+"));
        QVERIFY2(editor.lblPreview->text().startsWith(QStringLiteral("Error in expression \"Total: (\\d+\": ")),
                 qPrintable(editor.lblPreview->text()));
        QVERIFY(editor.Found.isEmpty());
        editor.optUntil.at(TheseWords)->setChecked(true);
        editor.txtLookFor->setText(QStringLiteral("Total: "));
        editor.txtUntilWords->setText(QStringLiteral("[EUR"));
        QVERIFY(editor.lblPreview->text().startsWith(QStringLiteral("Error in expression \"[EUR\"")));
    }

    void aSampleWithABrokenCharacterStillPreviews()
    {
        auto trigger = SampleTrigger();
        // A lone surrogate, as a cut-off text may bring, before the value.
        trigger->HelperMessage = QStringLiteral("Note: ") + QChar(0xD800) + QStringLiteral("\r\nTotal: 12 EUR\r\n");
        clsTriggerField field;
        frmField editor(*trigger, field, true);
        editor.optUntil.at(AnyChars)->setChecked(true);
        editor.txtUntilChars->setText(QStringLiteral(" "));
        editor.txtLookFor->setText(QStringLiteral("Total: "));
        QCOMPARE(editor.lblPreview->text(), QStringLiteral("Value: 12"));
        QCOMPARE(clsFieldExtractor::Search(trigger->HelperMessage, QStringLiteral("EUR"), 1, false, true), 20);
    }

    void anEmptySampleShowsNothing()
    {
        clsAccountTrigger trigger;
        clsTriggerField field;
        frmField editor(trigger, field, true);
        editor.txtLookFor->setText(QStringLiteral("Total:"));
        QCOMPARE(editor.lblPreview->text(), QString());
    }

    void theNameFillsTheEmptyNames()
    {
        const auto trigger = SampleTrigger();
        clsTriggerField field;
        frmField editor(*trigger, field, true);
        QTest::keyClicks(editor.txtName, QStringLiteral("Order No"));
        QCOMPARE(editor.txtInsertFieldname->text(), QStringLiteral("Order_No"));
        QCOMPARE(editor.txtEnvironmentVar->text(), QStringLiteral("PVN_Order_No"));
        QCOMPARE(editor.txtLookFor->text(), QStringLiteral("Order No"));
        editor.txtInsertFieldname->setText(QStringLiteral("order_number"));
        QTest::keyClicks(editor.txtName, QStringLiteral("s"));
        QCOMPARE(editor.txtInsertFieldname->text(), QStringLiteral("order_number"));
        QCOMPARE(editor.txtLookFor->text(), QStringLiteral("Order Nos"));
    }

    void validationsRefuseWithTheirMessage_data()
    {
        QTest::addColumn<bool>("isNew");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("lookFor");
        QTest::addColumn<bool>("builtIn");
        QTest::addColumn<bool>("script");
        QTest::addColumn<QString>("message");

        QTest::newRow("name taken, other case") << true << "customer" << "x" << false << false
                                                << "A field already exists with the same name. Field names must be "
                                                   "unique.";
        QTest::newRow("own name in other case") << false << "CUSTOMER" << "x" << false << false << "";
        QTest::newRow("no name") << true << "  " << "x" << false << false << "You must enter a Name";
        QTest::newRow("nothing to look for") << true << "Total" << "  " << false << false
                                             << "You must enter a LookFor value";
        QTest::newRow("built-in needs no look-for") << true << "Received" << "" << true << false << "";
        QTest::newRow("script needs no look-for") << true << "Scripted" << "" << false << true << "";
    }

    void validationsRefuseWithTheirMessage()
    {
        QFETCH(bool, isNew);
        QFETCH(QString, name);
        QFETCH(QString, lookFor);
        QFETCH(bool, builtIn);
        QFETCH(bool, script);
        QFETCH(QString, message);
        const auto trigger = SampleTrigger();
        clsTriggerField fresh;
        clsTriggerField &field = isNew ? fresh : *trigger->FieldsToProcess().Item(1);
        const QString original = field.Name;
        frmField editor(*trigger, field, isNew);
        editor.txtName->setText(name);
        editor.txtLookFor->setText(lookFor);
        (builtIn ? editor.optBuiltIn : editor.optFindField)->setChecked(true);
        editor.chkExtractScript->setChecked(script);
        ModalHandler modal;
        editor.btnOK->click();
        QCOMPARE(modal.Texts, message.isEmpty() ? QStringList() : QStringList{message});
        QCOMPARE(editor.result(), int(message.isEmpty() ? QDialog::Accepted : QDialog::Rejected));
        QCOMPARE(field.Name, message.isEmpty() ? name.trimmed() : original);
    }

    void okWritesTheControlsIntoTheField()
    {
        const auto trigger = SampleTrigger();
        clsTriggerField field;
        frmField editor(*trigger, field, true);
        editor.txtName->setText(QStringLiteral("Received"));
        editor.optBuiltIn->setChecked(true);
        editor.cmboBuiltIn->setCurrentText(QStringLiteral("%msg_date%"));
        editor.cmboFieldType->setCurrentIndex(6);
        editor.FrameValidate->setChecked(true);
        editor.optValidate.at(1)->setChecked(true);
        editor.txtValidateLow->setText(QStringLiteral("1.5"));
        editor.txtValidateHigh->setText(QStringLiteral("99"));
        editor.cmboInvalidAction->setCurrentIndex(1);
        editor.optCase.at(2)->setChecked(true);
        editor.txtInsertInto->setText(QStringLiteral(" Orders "));
        editor.chkKeyField->setChecked(true);
        editor.cmboPassTo->setCurrentIndex(0);
        editor.txtSubject->setText(QStringLiteral("changed subject"));
        QVERIFY(editor.Accept());
        QVERIFY(field.ExtractBuiltIn);
        QCOMPARE(field.ExtractBuiltInField, QStringLiteral("%msg_date%"));
        QCOMPARE(field.FieldType, 4); // a message date is always a date and time
        QVERIFY(field.Validate);
        QCOMPARE(field.ValidateOption, 1);
        QCOMPARE(field.ValidateLow.ToText(), QStringLiteral("1.5"));
        QCOMPARE(field.ValidateHigh.ToText(), QStringLiteral("99"));
        QCOMPARE(field.ValidateAction, 1);
        QCOMPARE(field.ChangeCase, 2);
        QCOMPARE(field.InsertInto, QStringLiteral("Orders"));
        QVERIFY(field.KeyExists);
        // "(none)" clears what is passed on.
        QCOMPARE(field.PassToSubject, QString());
        QCOMPARE(field.PassToBody, QString());
        QCOMPARE(trigger->HelperSubject, QStringLiteral("changed subject"));
        QCOMPARE(trigger->FieldsToProcess().Count(), 1); // the caller adds a new field
    }

    void onlyTheTextTypeHasALength()
    {
        const auto trigger = SampleTrigger();
        clsTriggerField field;
        frmField editor(*trigger, field, true);
        QVERIFY(editor.txtMaxLength->isEnabled());
        editor.cmboFieldType->setCurrentIndex(1);
        QVERIFY(!editor.txtMaxLength->isEnabled());
    }

    void htmlPastedIntoTheSampleCanBecomePlainText()
    {
        const auto trigger = SampleTrigger();
        clsTriggerField field;
        frmField editor(*trigger, field, true);
        ModalHandler modal(QMessageBox::Yes);
        editor.txtHelper->setPlainText(QStringLiteral("<html><body><p>Total: 5 EUR</p></body></html>"));
        QCOMPARE(modal.Texts, QStringList{QStringLiteral("Text is HTML. Do you want to convert to plain text?")});
        QVERIFY(!editor.txtHelper->toPlainText().contains(u'<'));
        QVERIFY(editor.txtHelper->toPlainText().contains(QStringLiteral("Total: 5 EUR")));
    }

    void aLookupFieldEditsItsStatement()
    {
        const auto trigger = SampleTrigger();
        clsTriggerField field;
        field.Lookup = true;
        frmField editor(*trigger, field, true);
        QCOMPARE(editor.windowTitle(), QStringLiteral("Lookup Field"));
        QVERIFY(editor.GroupLookup);
        QVERIFY(!editor.txtLookFor->isVisibleTo(&editor));
        {
            ModalHandler modal;
            editor.btnLUTest->click();
            QCOMPARE(modal.Texts,
                     QStringList{QStringLiteral("You need to specify the Connection String and SQL Statement")});
        }
        editor.txtName->setText(QStringLiteral("Region"));
        editor.txtLUConnection->setText(QStringLiteral("Driver=SQLite3;Database=/tmp/regions.db"));
        editor.txtLUSQL->setPlainText(QStringLiteral("SELECT Region FROM Customers WHERE Name = '%Customer%'"));
        editor.txtLUField->setText(QStringLiteral("Region"));
        editor.chkLookupCancelOnFail->setChecked(true);
        QVERIFY(editor.Accept());
        QVERIFY(field.Lookup && field.LookupCancelOnFail && !field.ExtractBuiltIn);
        QCOMPARE(field.LookupSQL, QStringLiteral("SELECT Region FROM Customers WHERE Name = '%Customer%'"));
        QCOMPARE(field.LookupField, QStringLiteral("Region"));
    }
};

POSTVANE_TEST(tst_frmField)
#include "tst_frmField.moc"
