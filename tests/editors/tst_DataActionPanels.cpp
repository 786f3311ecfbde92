#include "EditorSession.h"
#include "TestRegistry.h"
#include "actions/ActionItem.h"
#include "actions/colActions.h"
#include "actions/clsActionAZ.h"
#include "actions/clsActionCSV.h"
#include "actions/clsActionDB.h"
#include "actions/clsActionDBCustom.h"
#include "actions/clsActionDBToken.h"
#include "actions/clsActionExcel.h"
#include "actions/clsActionReport.h"
#include "actions/clsActionText.h"
#include "actions/panels/DataActionEditors.h"
#include "actions/panels/ctlActionAZ.h"
#include "actions/panels/ctlActionCSV.h"
#include "actions/panels/ctlActionDB.h"
#include "actions/panels/ctlActionDBCustom.h"
#include "actions/panels/ctlActionDBToken.h"
#include "actions/panels/ctlActionReport.h"
#include "actions/panels/ctlActionText.h"
#include "editors/frmTriggerAction.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// The editor controls of the data kinds in the action dialog: what they
// show, what they refuse and what they store.
class tst_DataActionPanels : public QObject
{
    Q_OBJECT
    clsAccount account;
    clsAccountTrigger *trigger = nullptr;
    std::unique_ptr<frmTriggerAction> dialog;

    // The dialog opened on a new action of the kind; its control.
    template <class Control, class Record> Control *Open(const Record &Action)
    {
        dialog = std::make_unique<frmTriggerAction>();
        dialog->Trigger = trigger;
        dialog->Action = trigger->ActionList().Add(ActionItem::Make(Action));
        dialog->Prepare();
        return qobject_cast<Control *>(dialog->ActiveView);
    }
    template <class Record> const Record *Stored() const { return dialog->Action->As<Record>(); }

    // The texts of the boxes that Save shows; Save's answer in Saved.
    static QStringList Refusals(ActionEditor *Control, bool *Saved = nullptr)
    {
        ModalHandler modal;
        const bool saved = Control->Save();
        if (Saved)
            *Saved = saved;
        return modal.Texts;
    }

private slots:
    void initTestCase()
    {
        RegisterDataActionEditors();
        auto owned = std::make_unique<clsAccountTrigger>();
        owned->Name = u"Orders"_s;
        trigger = account.Triggers.Add(std::move(owned));
        trigger->Parent = &account;
        const QStringList names{u"OrderNo"_s, u"Total"_s};
        const QStringList columns{u"OrderNo"_s, u"Order Total"_s};
        for (int n = 0; n < names.size(); ++n) {
            auto field = std::make_unique<clsTriggerField>();
            field->Name = names.at(n);
            field->InsertInto = u"Order Lines"_s;
            field->InsertFieldName = columns.at(n);
            field->KeyExists = n == 0;
            trigger->FieldsToProcess().Add(std::move(field));
        }
    }

    void theDatabaseUpdateShowsTheStatementsOfItsChoice()
    {
        clsActionDB action;
        action.Dialect = 2;
        auto *control = Open<ctlActionDB>(action);
        QVERIFY(control);
        QVERIFY(control->optDBExt->isChecked());
        QCOMPARE(control->lblConnection->text(), u"External Database Connection String:"_s);
        QCOMPARE(control->txtInsert->toPlainText().trimmed(),
                 u"INSERT INTO `Order Lines` (OrderNo, `Order Total`) VALUES (@OrderNo, @Order_Total) ;"_s);
        QVERIFY(control->txtUpdate->toPlainText().contains(u"WHERE OrderNo = @OrderNo"_s));
        control->cmboDialect->setCurrentIndex(1);
        QVERIFY(control->txtInsert->toPlainText().startsWith(u"INSERT INTO [Order Lines] (OrderNo, [Order Total])"_s));
        QCOMPARE(Refusals(control),
                 QStringList{u"You must specify a connection string if you want to update a SQL database."_s});

        control->optDBInt->click();
        QCOMPARE(control->lblConnection->text(), u"Internal Database Will Be Created Automatically"_s);
        QVERIFY(!control->txtConnectionString->isEnabled() && !control->cmboDialect->isEnabled());
        QVERIFY(control->txtInsert->toPlainText().startsWith(u"INSERT INTO \"Order Lines\""_s));
        QVERIFY(control->Dirty);
        bool saved = false;
        QCOMPARE(Refusals(control, &saved), QStringList());
        QVERIFY(saved && Stored<clsActionDB>()->UseInternal);
        QCOMPARE(Stored<clsActionDB>()->Dialect, 1);

        control->DisableInternal();
        QVERIFY(control->optDBExt->isChecked() && !control->optDBInt->isEnabled());
        control->txtConnectionString->setText(u"Driver=PostgreSQL;Database=shop"_s);
        QVERIFY(control->Save());
        QVERIFY(!Stored<clsActionDB>()->UseInternal);
        QCOMPARE(Stored<clsActionDB>()->ConnectionString, u"Driver=PostgreSQL;Database=shop"_s);
    }

    // Empty statements start as the generated ones; a written one is kept
    // until another dialect is chosen, which generates all three anew.
    void customStatementsStartGeneratedAndFollowTheDialect()
    {
        clsActionDBCustom action;
        action.SQLStatement = u"INSERT INTO audit (n) VALUES (@OrderNo)"_s;
        action.Timeout = 30;
        auto *control = Open<ctlActionDBCustom>(action);
        QVERIFY(control);
        QCOMPARE(control->txtSQL->toPlainText(), action.SQLStatement);
        QVERIFY(control->txtSQLSelect->toPlainText().startsWith(u"SELECT "_s));
        QVERIFY(control->txtSQLUpdate->toPlainText().contains(u"[Order Lines]"_s));
        QVERIFY(!control->Dirty);
        control->cmboDialect->setCurrentIndex(2);
        emit control->cmboDialect->activated(2);
        QVERIFY(control->txtSQL->toPlainText().startsWith(u"INSERT INTO `Order Lines`"_s));
        QVERIFY(control->Dirty);
        QCOMPARE(Refusals(control).size(), 1);
        control->txtConnectionString->setText(u"DSN=shop"_s);
        QVERIFY(control->Save());
        QCOMPARE(Stored<clsActionDBCustom>()->SQLDialect, 2);
        QCOMPARE(Stored<clsActionDBCustom>()->Timeout, 30);
        QVERIFY(Stored<clsActionDBCustom>()->SQLSelectStatement.contains(u"`Order Lines`"_s));
    }

    void theAzureControlShowsItsConnectionAndAsksBeforeOwnStatements()
    {
        auto *control = Open<ctlActionAZ>(clsActionAZ());
        QVERIFY(control);
        QCOMPARE(Refusals(control), QStringList{u"You must specify a Server and Database."_s});
        control->txtServer->setText(u"pv1"_s);
        control->txtDatabase->setText(u"orders"_s);
        control->txtUser->setText(u"app"_s);
        control->txtPassword->setText(u"secret7"_s);
        const QString details = control->txtDetails->toPlainText();
        QVERIFY2(details.contains(u"Server=tcp:pv1.database.windows.net,1433"_s) && details.contains(u"Uid=app@pv1"_s),
                 qPrintable(details));
        QVERIFY(!details.contains(u"secret7"_s));
        QVERIFY(control->txtSQL->isReadOnly());
        QVERIFY(control->txtSQL->toPlainText().contains(u"[Order Lines]"_s));
        {
            ModalHandler refuse(QMessageBox::No);
            control->FrameSQLModified->click();
            QCOMPARE(refuse.Texts, QStringList{u"Use A Modified SQL Statement To Update Your Database?"_s});
        }
        QVERIFY(!control->FrameSQLModified->isChecked() && control->txtSQL->isReadOnly());
        {
            ModalHandler accept(QMessageBox::Yes);
            control->FrameSQLModified->click();
        }
        QVERIFY(control->FrameSQLModified->isChecked() && !control->txtSQL->isReadOnly());
        control->txtSQL->setPlainText(u"INSERT INTO t (a) VALUES (@OrderNo)"_s);
        QVERIFY(control->Save());
        QVERIFY(Stored<clsActionAZ>()->SQLModified);
        QCOMPARE(Stored<clsActionAZ>()->SQLStatement, u"INSERT INTO t (a) VALUES (@OrderNo)"_s);
        QCOMPARE(Stored<clsActionAZ>()->Password, u"secret7"_s);
    }

    // One key, a wording for each kind; the send frame stores its settings.
    void csvAndExcelNeedAFileInTheirOwnWords()
    {
        auto *csv = Open<ctlActionCSV>(clsActionCSV());
        QVERIFY(csv && !csv->Excel && csv->cmboTerminator->isVisibleTo(csv));
        QCOMPARE(Refusals(csv), QStringList{u"You must specify a CSV file name."_s});
        QCOMPARE(csv->cmboSendFreq->itemText(0), u"Every Record"_s);
        csv->txtFileName->setText(u"/srv/out/orders.csv"_s);
        csv->cmboTerminator->setEditText(u";;"_s);
        csv->FrameCSVSend->setChecked(true);
        csv->txtSendTo->setText(u"accounts@example.com"_s);
        csv->cmboSendFreq->setCurrentIndex(2);
        csv->chkSendClear->setChecked(true);
        QVERIFY(csv->Save());
        const auto *stored = Stored<clsActionCSV>();
        QVERIFY(stored->Send && stored->SendClear);
        QCOMPARE(stored->SendFreq, 2);
        QCOMPARE(stored->LineTerminator, u";;"_s);

        auto *excel = Open<ctlActionCSV>(clsActionExcel());
        QVERIFY(excel && excel->Excel && !excel->cmboTerminator->isVisibleTo(excel));
        QCOMPARE(Refusals(excel), QStringList{u"You must specify an Excel file name."_s});
        excel->txtFileName->setText(u"/srv/out/orders.xlsx"_s);
        QVERIFY(excel->Save());
        QCOMPARE(Stored<clsActionExcel>()->FileName, u"/srv/out/orders.xlsx"_s);
        QVERIFY(!Stored<clsActionExcel>()->Send);
    }

    void textTokenAndReportControlsRefuseWhatCannotRun()
    {
        auto *text = Open<ctlActionText>(clsActionText());
        QVERIFY(text);
        text->txtFileName->setText(u"/srv/out/noextension"_s);
        QCOMPARE(Refusals(text), QStringList{u"You must specify a text file."_s});
        text->txtFileName->setText(u"/srv/out/note.txt"_s);
        text->cmboAssign->setEditText(u"Contents"_s);
        QVERIFY(text->Save());
        QCOMPARE(Stored<clsActionText>()->AssignTo, u"Contents"_s);

        auto *token = Open<ctlActionDBToken>(clsActionDBToken());
        QVERIFY(token);
        QCOMPARE(Refusals(token), QStringList{u"You must enter a token value."_s});
        token->txtValue->setText(u"%Total%"_s);
        QCOMPARE(Refusals(token), QStringList{u"You must enter a Token Name"_s});
        token->txtTokenName->setText(u"Sales"_s);
        QVERIFY(token->Save());

        auto *report = Open<ctlActionReport>(clsActionReport());
        QVERIFY(report && !report->btnEditReport->isEnabled());
        QCOMPARE(report->cmboAcPrinter->currentText(), u"Default Printer"_s);
        report->chkExport->setChecked(true);
        QCOMPARE(Refusals(report), QStringList{u"You need to specify a report export file."_s});
        report->chkExportTempFile->setChecked(true);
        QVERIFY(!report->txtExportFile->isEnabled());
        QVERIFY(report->Save());
        QVERIFY(Stored<clsActionReport>()->Export && Stored<clsActionReport>()->ExportCreateTempFile);
        QCOMPARE(Stored<clsActionReport>()->PrinterToUse, QString());
    }

    // The server opens the database, not the console.
    void theConnectionTestAsksTheServer()
    {
        EditorSession session;
        QVERIFY2(session.Start(), qPrintable(session.Problem));
        QTemporaryDir folder;
        const QString file = folder.filePath(u"there.db"_s);
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"made"_s);
            db.setDatabaseName(file);
            QVERIFY(db.open() && QSqlQuery(db).exec(u"CREATE TABLE t (a)"_s));
        }
        QSqlDatabase::removeDatabase(u"made"_s);
        auto *control = Open<ctlActionDBCustom>(clsActionDBCustom());
        control->txtConnectionString->setText(u"Driver=SQLite3;Database="_s + file);
        {
            ModalHandler modal;
            control->btnConnectionTest->click();
            QCOMPARE(modal.Texts, QStringList{u"Database Opened Successfully"_s});
        }
        control->txtConnectionString->setText(u"Driver=PostgreSQL;Server=127.0.0.1;Port=1;Database=x;Pwd=hidden9"_s);
        ModalHandler modal;
        control->btnConnectionTest->click();
        QCOMPARE(modal.Texts.size(), 1);
        QVERIFY2(modal.Texts.first().startsWith(u"Failed To Open Database Using The Specified Connection String\n"
                                                "The "_s + Global.AppTitle + u" Server could not open the database."_s),
                 qPrintable(modal.Texts.first()));
    }
};

POSTVANE_TEST(tst_DataActionPanels)
#include "tst_DataActionPanels.moc"
