#include "ModalCloser.h"
#include "ShellFixture.h"
#include "TestRegistry.h"
#include "editors/Editors.h"
#include "editors/frmTrigger.h"
#include "workbench/RibbonBar.h"
#include "workbench/frmClient.h"
#include "workbench/frmList.h"

#include <QAction>
#include <QLineEdit>
#include <QTest>

using namespace ShellFixture;

// The server goes away under a logged-on console, while it is idle and
// while an editor saves: the console says why, greys its server commands,
// keeps what it shows and comes back by itself when the server does.
class tst_ServerLoss : public QObject
{
    Q_OBJECT
    ServerFixture server;
    std::unique_ptr<frmClient> client;

    bool AllServerCommands(bool Enabled)
    {
        for (QAction *command : client->ServerCommands)
            if (command->isEnabled() != Enabled)
                return false;
        return true;
    }

    // A restart on the port the console knows.
    bool Restart()
    {
        server.Arguments = {QStringLiteral("--port"), QString::number(server.Port)};
        return server.Start();
    }

    void KillAndExpectTheLossShown()
    {
        server.Kill();
        // The next request finds no server.
        client->Command(frmClient::ID_REFRESH)->trigger();
        QVERIFY(client->MessageBarVisible());
        QVERIFY2(client->MessageBarText().startsWith(QStringLiteral("Connection Error With Postvane Server: ")),
                 qPrintable(client->MessageBarText()));
        QVERIFY(!Global.Connected);
        QVERIFY(AllServerCommands(false));
        QVERIFY(!client->Command(frmClient::ID_ADDTRIGGER)->isEnabled());
    }

private slots:
    void initTestCase()
    {
        RegisterEditors();
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QVERIFY(Fill(server));
        QVERIFY(LogOn(server));
        Remote().SubscribeTimer.setInterval(200);
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
        Remote().SubscribeTimer.setInterval(frmRemote::SubscribeInterval);
        Remote().Close();
    }

    void anIdleConsoleShowsTheLossStaysUsableAndReconnects()
    {
        client->List->SelectKey(QStringLiteral("TT1"));
        const int rows = client->List->Model.rowCount();
        const QString first = client->List->CellText(0, 0);
        KillAndExpectTheLossShown();
        // What it showed stays, whole, and the window still answers.
        QCOMPARE(client->List->Model.rowCount(), rows);
        QCOMPARE(client->List->CellText(0, 0), first);
        client->Command(frmClient::ID_MINIMIZERIBBON)->trigger();
        QVERIFY(client->CommandBar->Minimized());
        client->Command(frmClient::ID_EXPANDRIBBON)->trigger();
        client->Command(frmClient::ID_VIEWLIST)->trigger();
        QCOMPARE(client->List->View(), int(frmList::ViewList));
        client->Command(frmClient::ID_VIEWREPORT)->trigger();
        ShellFixture::Picture(client.get(), QStringLiteral("server-lost"));

        QVERIFY2(Restart(), qPrintable(server.Problem));
        QTRY_VERIFY_WITH_TIMEOUT(Global.Connected, 20000);
        QVERIFY(AllServerCommands(true));
        QVERIFY(!client->MessageBarVisible());
        QCOMPARE(client->List->CurrentAccountID, QStringLiteral("A01"));
        QCOMPARE(client->List->CellText(0, 0), first);
    }

    void aSaveIntoALostServerKeepsTheEditorOpenUntilItIsBack()
    {
        clsAccount *account = Accounts().Item(QStringLiteral("A01"));
        QVERIFY(account);
        client->ShowTrigger(account, account->Triggers.Item(QStringLiteral("T1")));
        frmTrigger *editor = nullptr;
        for (QWidget *window : QApplication::topLevelWidgets())
            if (auto *found = qobject_cast<frmTrigger *>(window); found && found->isVisible())
                editor = found;
        QVERIFY(editor);
        editor->txtName->selectAll();
        QTest::keyClicks(editor->txtName, QStringLiteral("Orders & more"));
        QVERIFY(editor->Dirty);

        server.Kill();
        QVERIFY(!editor->ButtonOK());
        QVERIFY(editor->isVisible());
        QVERIFY(editor->Dirty);
        QVERIFY2(client->MessageBarText().startsWith(QStringLiteral("Connection Error With Postvane Server: ")),
                 qPrintable(client->MessageBarText()));
        QVERIFY(!Global.Connected);
        QVERIFY(AllServerCommands(false));

        QVERIFY2(Restart(), qPrintable(server.Problem));
        QTRY_VERIFY_WITH_TIMEOUT(Global.Connected, 20000);
        // The open editor's records were kept: its save now goes through.
        QVERIFY(editor->ButtonOK());
        QVERIFY(!editor->Dirty);
        QCOMPARE(ServerTrigger(server, QStringLiteral("A01"), QStringLiteral("T1"))->Name, QStringLiteral("Orders & more"));
        editor->close();
    }
};

POSTVANE_TEST(tst_ServerLoss)
#include "tst_ServerLoss.moc"
