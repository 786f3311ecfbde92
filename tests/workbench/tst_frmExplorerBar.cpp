#include "ModalCloser.h"
#include "ShellFixture.h"
#include "TestRegistry.h"
#include "workbench/MarkupDelegate.h"
#include "workbench/RibbonBar.h"
#include "workbench/frmClient.h"
#include "workbench/frmExplorerBar.h"
#include "workbench/frmList.h"
#include "workbench/frmService.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QDockWidget>
#include <QFileInfo>
#include <QPrinter>
#include <QTemporaryDir>
#include <QTest>
#include <QTextDocument>
#include <QTreeView>

using namespace ShellFixture;

// The navigator and the item list over a real server's configuration, and
// the commands that change it, each read back from the server.
class tst_frmExplorerBar : public QObject
{
    Q_OBJECT
    ServerFixture server;
    std::unique_ptr<frmClient> client;

    frmList &List() { return *client->List; }
    frmExplorerBar &Navigator() { return *client->ExplorerBar; }

    int RowOf(const QString &Key)
    {
        for (int row = 0; row < List().Model.rowCount(); ++row)
            if (List().Model.index(row, 0).data(frmList::KeyRole).toString() == Key)
                return row;
        return -1;
    }
    void Select(const QString &Key) { QVERIFY2(List().SelectKey(Key), qPrintable(Key)); }
    void Trigger(int ID) { client->Command(ID)->trigger(); }
    void Picture(const QString &Name) { ShellFixture::Picture(client.get(), Name); }

private slots:
    void initTestCase()
    {
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QVERIFY(Fill(server));
        QVERIFY(LogOn(server));
        client = std::make_unique<frmClient>();
        client->ConnectTimer.stop();
        client->resize(1200, 760);
        client->show();
        client->ToolBarConnected(true);
        client->FirstConnect();
    }

    void cleanupTestCase()
    {
        client.reset();
        Remote().Close();
    }

    void firstConnectOpensTheFirstAccount()
    {
        QCOMPARE(List().Level, frmList::LevelTriggers);
        QCOMPARE(List().CurrentAccountID, QStringLiteral("A01"));
        QCOMPARE(List().lblTitle->text(), QStringLiteral("Triggers For Account: <Tom & 'Jerry' \"Co\">"));
        QCOMPARE(List().Model.rowCount(), 2);
        QCOMPARE(List().CellText(0, 0), QStringLiteral("Orders <new> & 'old'"));
        QCOMPARE(List().CellText(1, 0), QStringLiteral("Paused (disabled)"));
        // One line: sender, date, words and condition, with the field list.
        const QString markup = List().Model.index(0, 1).data(MarkupDelegate::MarkupRole).toString();
        const QString shown = MarkupDelegate::PlainText(markup);
        QVERIFY2(shown.startsWith(QStringLiteral("If Sender Is *@orders.example And Received After ")), qPrintable(shown));
        QVERIFY2(shown.contains(QStringLiteral("Subject Contains Any Of These order,invoice")), qPrintable(shown));
        QVERIFY2(shown.contains(QStringLiteral(" And If %msg_subject% = a < b ")), qPrintable(shown));
        QCOMPARE(shown, List().CellText(0, 1));
        QVERIFY2(shown.endsWith(QStringLiteral("OrderNo Fields")), qPrintable(shown));
        QVERIFY(!shown.contains(u'\n'));
        QCOMPARE(List().lblFooter->text(), QStringLiteral("2 Items"));
        QVERIFY(Navigator().Captions().contains(QStringLiteral("Delete This Account")));
        QVERIFY(Navigator().Captions().contains(QStringLiteral("<Tom & 'Jerry' \"Co\">")));
        Picture(QStringLiteral("triggers"));
    }

    void accountListShowsEverySourceKind()
    {
        Trigger(frmClient::ID_UPLEVEL);
        QCOMPARE(List().Level, frmList::LevelAccounts);
        QCOMPARE(List().lblTitle->text(), QStringLiteral("Accounts"));
        const QList<AccountCase> cases = AccountCases();
        QCOMPARE(List().Model.rowCount(), cases.size());
        QCOMPARE(List().lblFooter->text(), QString::number(cases.size()) + QStringLiteral(" Items"));
        for (const AccountCase &entry : cases) {
            const int row = RowOf(QStringLiteral("A") + entry.ID);
            QVERIFY2(row >= 0, qPrintable(entry.ID));
            QCOMPARE(List().CellText(row, 0), entry.Name);
            QCOMPARE(List().CellText(row, 1), entry.Source);
            QCOMPARE(List().CellText(row, 2), entry.Account);
        }
        QCOMPARE(List().CellText(RowOf(QStringLiteral("AA11")), 3), QStringLiteral("Beta & Co"));
        // A disabled account has its own icon, whatever its source.
        const QIcon stopped = List().Model.index(RowOf(QStringLiteral("AA11")), 0).data(Qt::DecorationRole).value<QIcon>();
        const QIcon reading = List().Model.index(RowOf(QStringLiteral("AA01")), 0).data(Qt::DecorationRole).value<QIcon>();
        QVERIFY(stopped.pixmap(16).toImage() != reading.pixmap(16).toImage());
        Picture(QStringLiteral("accounts"));
    }

    void selectingAnAccountListsItsTriggersInTheToolTip()
    {
        Trigger(frmClient::ID_UPLEVEL);
        Accounts().Item(QStringLiteral("A01"))->RemoteTriggersLoaded = false;
        Accounts().Item(QStringLiteral("A01"))->GotList = false;
        Select(QStringLiteral("AA02"));
        Select(QStringLiteral("AA01"));
        const QString tip = List().Model.index(RowOf(QStringLiteral("AA01")), 1).data(Qt::ToolTipRole).toString();
        QVERIFY2(tip.contains(QStringLiteral("2 Triggers")), qPrintable(tip));
        QVERIFY2(tip.contains(QStringLiteral("Orders <new> & 'old'")), qPrintable(tip));
        Select(QStringLiteral("AA03"));
        QVERIFY(List().Model.index(RowOf(QStringLiteral("AA03")), 0).data(Qt::ToolTipRole).toString().contains(
            QStringLiteral("0 Triggers")));
    }

    void usersPageFiltersByOrganization()
    {
        client->CommandBar->setCurrentIndex(1);
        QCOMPARE(Navigator().Showing, frmExplorerBar::PageUsers);
        QCOMPARE(List().Level, frmList::LevelUsers);
        QComboBox *organizations = Navigator().cmboOrganizations;
        QCOMPARE(organizations->itemText(0), QStringLiteral("All"));
        QCOMPARE(organizations->count(), 1 + Organizations().Count());
        QCOMPARE(List().Model.rowCount(), Users().Count());
        const int bob = RowOf(QStringLiteral("UUBob"));
        QCOMPARE(List().CellText(bob, 0), QStringLiteral("bob (Admin)"));
        QCOMPARE(List().CellText(RowOf(QStringLiteral("UUPat")), 0), QStringLiteral("pat <p&p>"));
        Select(QStringLiteral("UUBob"));
        QVERIFY(List().Model.index(bob, 0).data(Qt::ToolTipRole).toString().contains(QStringLiteral("2 Addresses")));
        Picture(QStringLiteral("users"));

        organizations->setCurrentIndex(organizations->findText(QStringLiteral("Alpha Ltd")));
        emit organizations->activated(organizations->currentIndex());
        QStringList keys;
        for (int row = 0; row < List().Model.rowCount(); ++row)
            keys << List().Model.index(row, 0).data(frmList::KeyRole).toString();
        keys.sort();
        QCOMPARE(keys, (QStringList{QStringLiteral("UUAlice"), QStringLiteral("UUPat")}));
        organizations->setCurrentIndex(0);
        emit organizations->activated(0);
        QCOMPARE(List().Model.rowCount(), Users().Count());
        client->CommandBar->setCurrentIndex(0);
        QCOMPARE(List().Level, frmList::LevelAccounts);
    }

    void enableAndDisableReachTheServer()
    {
        List().CurrentAccountID = QStringLiteral("A01");
        Navigator().ExplorerBarAccount();
        Select(QStringLiteral("TT1"));
        Trigger(frmClient::ID_DISABLE);
        QVERIFY(!ServerTrigger(server, QStringLiteral("A01"), QStringLiteral("T1"))->Enabled);
        QCOMPARE(List().CellText(RowOf(QStringLiteral("TT1")), 0), QStringLiteral("Orders <new> & 'old' (disabled)"));
        Trigger(frmClient::ID_ENABLE);
        QVERIFY(ServerTrigger(server, QStringLiteral("A01"), QStringLiteral("T1"))->Enabled);
        QCOMPARE(List().CellText(RowOf(QStringLiteral("TT1")), 0), QStringLiteral("Orders <new> & 'old'"));

        Trigger(frmClient::ID_UPLEVEL);
        Select(QStringLiteral("AA03"));
        Trigger(frmClient::ID_DISABLE);
        QVERIFY(!ServerAccount(server, QStringLiteral("A03"))->Enabled);
        QVERIFY(!Accounts().Item(QStringLiteral("A03"))->Enabled);
        Select(QStringLiteral("AA03"));
        Trigger(frmClient::ID_ENABLE);
        QVERIFY(ServerAccount(server, QStringLiteral("A03"))->Enabled);
    }

    void pastedTriggerIsACopyOnTheServer()
    {
        List().CurrentAccountID = QStringLiteral("A01");
        Navigator().ExplorerBarAccount();
        QVERIFY(!client->Command(frmClient::ID_PASTETRIGGER)->isEnabled());
        Select(QStringLiteral("TT1"));
        Trigger(frmClient::ID_COPYTRIGGER);
        QVERIFY(client->Command(frmClient::ID_PASTETRIGGER)->isEnabled());
        Trigger(frmClient::ID_PASTETRIGGER);
        const auto account = ServerAccount(server, QStringLiteral("A01"));
        QCOMPARE(account->Triggers.Count(), 3);
        const clsAccountTrigger *copy = account->Triggers.Item(3);
        QCOMPARE(copy->Name, QStringLiteral("Copy of Orders <new> & 'old'"));
        QVERIFY(copy->TriggerID != QStringLiteral("T1"));
        QCOMPARE(copy->Condition, account->Triggers.Item(QStringLiteral("T1"))->Condition);
        QCOMPARE(List().Model.rowCount(), 3);
        QCOMPARE(List().SelectedKey(), QStringLiteral("T") + copy->TriggerID);

        // Into another account, which had none.
        List().CurrentAccountID = QStringLiteral("A02");
        Navigator().ExplorerBarAccount();
        Trigger(frmClient::ID_PASTETRIGGER);
        QCOMPARE(ServerAccount(server, QStringLiteral("A02"))->Triggers.Count(), 1);
        QCOMPARE(List().lblFooter->text(), QStringLiteral("1 Items"));
    }

    void deletionsAskAndReachTheServer()
    {
        List().CurrentAccountID = QStringLiteral("A01");
        Navigator().ExplorerBarAccount();
        Select(QStringLiteral("TT2"));
        {
            ModalCloser closer(QMessageBox::No);
            Trigger(frmClient::ID_DELETE);
            QCOMPARE(closer.Texts.size(), 1);
            QVERIFY2(closer.Texts[0].startsWith(QStringLiteral("Delete Trigger: Paused\r\n\r\nFrom Account: <Tom & 'Jerry' \"Co\">")),
                     qPrintable(closer.Texts[0]));
        }
        QVERIFY(ServerTrigger(server, QStringLiteral("A01"), QStringLiteral("T2")));
        {
            ModalCloser closer(QMessageBox::Yes);
            Trigger(frmClient::ID_DELETE);
        }
        QVERIFY(!ServerTrigger(server, QStringLiteral("A01"), QStringLiteral("T2")));
        QCOMPARE(RowOf(QStringLiteral("TT2")), -1);

        Trigger(frmClient::ID_UPLEVEL);
        Select(QStringLiteral("AA09"));
        {
            ModalCloser closer(QMessageBox::Yes);
            Trigger(frmClient::ID_DELETE);
            QCOMPARE(closer.Texts.value(0).section(u'\n', 0, 0), QStringLiteral("Delete Account: Sheets"));
        }
        QVERIFY(!ServerAccount(server, QStringLiteral("A09")));
        QCOMPARE(RowOf(QStringLiteral("AA09")), -1);
        QVERIFY(!Accounts().Item(QStringLiteral("A09")));
    }

    void ownUserIsNeverDeleted()
    {
        client->CommandBar->setCurrentIndex(1);
        Select(QStringLiteral("U") + Global.UserID);
        {
            ModalCloser closer(QMessageBox::Yes);
            Trigger(frmClient::ID_DELETEUSER);
            QCOMPARE(closer.Texts.size(), 1);
            QVERIFY(closer.Texts[0].startsWith(QStringLiteral("You cannot delete")));
        }
        QVERIFY(server.Get(Requests::GetUser(Global.UserID)).Text().contains(QStringLiteral("<UserName>Admin</UserName>")));

        Select(QStringLiteral("UUPat"));
        {
            ModalCloser closer(QMessageBox::Yes);
            Trigger(frmClient::ID_DELETEUSER);
            QCOMPARE(closer.Texts.value(0).section(u'\n', 0, 0), QStringLiteral("Delete User: pat <p&p>"));
        }
        QVERIFY(!server.Get(QStringLiteral("getusers.xml")).Text().contains(QStringLiteral("UPat")));
        QCOMPARE(RowOf(QStringLiteral("UUPat")), -1);
        client->CommandBar->setCurrentIndex(0);
    }

    void serverCommandsGreyWhenTheServerCloses()
    {
        Trigger(frmClient::ID_UPLEVEL);
        Select(QStringLiteral("AA02"));
        QVERIFY(client->Command(frmClient::ID_DELETE)->isEnabled());
        client->ToolBarConnected(false);
        for (int id : {frmClient::ID_DELETE, frmClient::ID_ENABLE, frmClient::ID_REFRESH, frmClient::ID_CHECKNOW})
            QVERIFY(!client->Command(id)->isEnabled());
        client->ToolBarConnected(true);
        QVERIFY(client->Command(frmClient::ID_DELETE)->isEnabled());
    }

    void printedListShowsNamesAsTyped()
    {
        Trigger(frmClient::ID_UPLEVEL);
        QTextDocument document;
        document.setHtml(List().PrintDocument());
        const QString printed = document.toPlainText();
        QVERIFY2(printed.startsWith(QStringLiteral("Accounts\n")), qPrintable(printed));
        QVERIFY(printed.contains(QStringLiteral("<Tom & 'Jerry' \"Co\">")));
        QVERIFY(printed.contains(QStringLiteral("DBPULL: Driver=SQLite3;Database=/tmp/x.db")));
        QVERIFY(printed.contains(QStringLiteral("Beta & Co")));
        QVERIFY(printed.trimmed().endsWith(List().lblFooter->text()));

        QTemporaryDir folder;
        QPrinter printer;
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(folder.filePath(QStringLiteral("list.pdf")));
        client->PrintList(printer);
        QVERIFY(QFileInfo(printer.outputFileName()).size() > 1000);
    }

    void mailServerLogShowsItsPane()
    {
        auto *pane = qobject_cast<QDockWidget *>(client->LogPaneMailServer->parentWidget());
        QVERIFY(client->Command(frmClient::ID_MAILSERVERLOG)->isEnabled());
        QVERIFY(pane->visibleRegion().isEmpty()); // behind the first pane's tab
        Trigger(frmClient::ID_MAILSERVERLOG);
        QTRY_VERIFY(!pane->visibleRegion().isEmpty());
    }
};

POSTVANE_TEST(tst_frmExplorerBar)
#include "tst_frmExplorerBar.moc"
