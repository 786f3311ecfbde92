#include "ModalCloser.h"
#include "ShellFixture.h"
#include "TestRegistry.h"
#include "actions/ActionItem.h"
#include "actions/clsActionSetVariable.h"
#include "actions/colActions.h"
#include "editors/Editors.h"
#include "editors/frmRunWith.h"
#include "editors/frmTrigger.h"
#include "model/clsTriggerField.h"
#include "workbench/RibbonBar.h"
#include "workbench/frmClient.h"
#include "workbench/frmList.h"

#include <QAction>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

using namespace ShellFixture;

namespace {

// The account "Shop" with the trigger "Orders": it reads Customer and Qty
// from the body and writes Customer in capitals.
QString ShopAccount()
{
    clsAccount account;
    account.AccountID = QStringLiteral("S1");
    account.Name = QStringLiteral("Shop");
    account.Enabled = true;
    account.IMAP = true;
    account.IMAPServer = QStringLiteral("imap.shop.test");
    account.XMLIncludeTriggers = true;
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->TriggerID = QStringLiteral("T1");
    trigger->Name = QStringLiteral("Orders");
    trigger->SubjectLineLIKE = QStringLiteral("order\t");
    trigger->ReceivedAfter = QDateTime(QDate(2020, 1, 1), QTime(0, 0));
    trigger->HelperSubject = QStringLiteral("order 1");
    trigger->HelperMessage = QStringLiteral("Name: Ann\r\nQty: 1\r\n");
    trigger->HelperTo = QStringLiteral("orders@shop.test, copy@shop.test");
    for (const auto &[name, look] : {std::pair{"Customer", "Name:"}, std::pair{"Qty", "Qty:"}}) {
        auto field = std::make_unique<clsTriggerField>();
        field->Name = QString::fromLatin1(name);
        field->LookFor = QString::fromLatin1(look);
        trigger->FieldsToProcess().Add(std::move(field));
    }
    clsActionSetVariable upper;
    upper.Name = QStringLiteral("Customer");
    upper.Value = QStringLiteral("%customer%");
    upper.Operation = 7;
    trigger->ActionList().Add(ActionItem::Make(upper));
    account.Triggers.Add(std::move(trigger));
    return account.XML();
}

frmTrigger *OpenTriggerEditor()
{
    for (QWidget *window : QApplication::topLevelWidgets())
        if (auto *editor = qobject_cast<frmTrigger *>(window); editor && editor->isVisible())
            return editor;
    return nullptr;
}

} // namespace

// The shell's trigger commands on a real server: the test run from the
// ribbon that ends as a stored message, and the "Trigger Settings" tab
// working on the trigger editor that has the focus.
class tst_TriggerCommands : public QObject
{
    Q_OBJECT
    ServerFixture server;
    std::unique_ptr<frmClient> client;

    void Trigger(int ID) { client->Command(ID)->trigger(); }

private slots:
    void initTestCase()
    {
        RegisterEditors();
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QVERIFY(Posted(server, QStringLiteral("postaccount.htm?accountid=S1"), ShopAccount()));
        QVERIFY(LogOn(server));
        client = std::make_unique<frmClient>();
        client->ConnectTimer.stop();
        client->resize(1200, 760);
        client->show();
        client->ToolBarConnected(true);
        client->FirstConnect();
        QCOMPARE(client->List->CurrentAccountID, QStringLiteral("S1"));
    }

    void cleanupTestCase()
    {
        client.reset();
        Remote().Close();
    }

    void runWithSendsASampleThatIsStoredWithItsFields()
    {
        client->Command(frmClient::ID_UPLEVEL)->trigger();
        QVERIFY(client->List->SelectKey(QStringLiteral("AS1")));
        QVERIFY(!client->Command(frmClient::ID_RUNWITH)->isEnabled()); // an account runs nothing
        emit client->List->Opened(QStringLiteral("AS1"));
        QVERIFY(client->List->SelectKey(QStringLiteral("TT1")));
        QVERIFY(client->Command(frmClient::ID_RUNWITH)->isEnabled());

        ModalCloser answers(QMessageBox::Yes);
        QString title, to;
        QTimer fill;
        connect(&fill, &QTimer::timeout, this, [&] {
            auto *dialog = qobject_cast<frmRunWith *>(QApplication::activeModalWidget());
            if (!dialog || dialog->property("filled").toBool())
                return;
            dialog->setProperty("filled", true);
            title = dialog->windowTitle();
            to = dialog->txtTo->text();
            dialog->txtFrom->setText(QStringLiteral("ann@buyer.test"));
            dialog->txtSubject->setText(QStringLiteral("order 77"));
            dialog->txtBody->setPlainText(QStringLiteral("Name: Bob Smith\nQty: 3"));
            ShellFixture::Picture(dialog, QStringLiteral("runwith"));
            dialog->btnOK->click();
        });
        fill.start(30);
        Trigger(frmClient::ID_RUNWITH);
        fill.stop();
        QCOMPARE(title, QStringLiteral("Shop - Orders"));
        QCOMPARE(to, QStringLiteral("orders@shop.test"));
        QCOMPARE(answers.Texts.value(0).section(u'\n', 0, 0), QStringLiteral("Send Message?"));
        QVERIFY2(!client->MessageBarVisible(), qPrintable(client->MessageBarText()));

        QString rows;
        QTRY_VERIFY_WITH_TIMEOUT((rows = server.Get(QStringLiteral("getmessages.xml?accountid=S1")).Text()).count(u'\n') == 1,
                                 30000);
        const QString recordNo = rows.section(u'\t', 0, 0);
        const QString mime =
            server.Get(QStringLiteral("getmessage.xml?accountid=S1&recordno=") + recordNo).Text();
        QVERIFY2(mime.contains(QStringLiteral("Subject: order 77")), qPrintable(mime));
        QVERIFY(mime.contains(QStringLiteral("Postvane-TriggerMatch: Y")));
        QVERIFY(mime.contains(QStringLiteral("Field Customer = Bob Smith")));
        QVERIFY(mime.contains(QStringLiteral("Field Qty = 3")));
        QVERIFY(mime.contains(QStringLiteral("Set Customer = BOB SMITH")));

        // The changed sample is kept on the server's trigger for the next run.
        const auto stored = ServerTrigger(server, QStringLiteral("S1"), QStringLiteral("T1"));
        QVERIFY(stored);
        QCOMPARE(stored->HelperSubject, QStringLiteral("order 77"));
        QCOMPARE(stored->HelperMessage, QStringLiteral("Name: Bob Smith\r\nQty: 3"));
        QCOMPARE(stored->Name, QStringLiteral("Orders"));
        QCOMPARE(stored->FieldsToProcess().Count(), 2);
    }

    void triggerSettingsTabWorksOnTheFocusedEditor()
    {
        RibbonBar &ribbon = *client->CommandBar;
        const int tab = ribbon.indexOf(client->TriggerSettingsTab);
        QVERIFY(!ribbon.isTabVisible(tab));
        QVERIFY(client->List->SelectKey(QStringLiteral("TT1")));
        Trigger(frmClient::ID_PROPERTIES);
        frmTrigger *editor = OpenTriggerEditor();
        QVERIFY(editor);
        QApplication::setActiveWindow(editor);
        editor->txtName->setFocus();
        QTRY_COMPARE(client->ContextEditor(), static_cast<QWidget *>(editor));
        QVERIFY(ribbon.isTabVisible(tab));
        QCOMPARE(ribbon.currentIndex(), tab);

        Trigger(frmClient::ID_EXTRACTEDFIELDS);
        QCOMPARE(editor->SelectedTab(), int(frmTrigger::TabFields));
        QVERIFY(client->Command(frmClient::ID_EXTRACTEDFIELDS)->isChecked());
        editor->FieldsGrid->selectRow(0);
        Trigger(frmClient::ID_FIELDDOWN);
        Trigger(frmClient::ID_NOTES);
        QCOMPARE(editor->SelectedTab(), int(frmTrigger::TabNotes));
        QVERIFY(!client->Command(frmClient::ID_EXTRACTEDFIELDS)->isChecked());
        editor->txtDetails->setPlainText(QStringLiteral("Changed from the ribbon"));
        ShellFixture::Picture(client.get(), QStringLiteral("trigger-settings-tab"));

        const QPointer<frmTrigger> watched(editor);
        Trigger(frmClient::ID_TRIGGERSAVE);
        QTRY_VERIFY(watched.isNull()); // saved and closed
        QTRY_VERIFY(!ribbon.isTabVisible(tab));
        const auto stored = ServerTrigger(server, QStringLiteral("S1"), QStringLiteral("T1"));
        QVERIFY(stored);
        QCOMPARE(stored->Details, QStringLiteral("Changed from the ribbon"));
        QCOMPARE(stored->FieldsToProcess().Item(1)->Name, QStringLiteral("Qty"));
        QCOMPARE(stored->FieldsToProcess().Item(2)->Name, QStringLiteral("Customer"));
    }
};

POSTVANE_TEST(tst_TriggerCommands)
#include "tst_TriggerCommands.moc"
