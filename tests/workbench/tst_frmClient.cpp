#include "ModalCloser.h"
#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "session/frmRemote.h"
#include "workbench/frmClient.h"
#include "workbench/frmService.h"

#include <QAction>
#include <QDockWidget>
#include <QLabel>
#include <QTableWidget>
#include <QStatusBar>
#include <QTest>

class tst_frmClient : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        Global.SkipCloseHandling = false;
        Global.NoExitPrompt = false;
        Global.IsLocal = false;
        Global.ServiceState.clear();
        Global.DevMode = true; // no local server is started
        Global.Settings.AskExit = true;
        Remote().Closing = false;
    }

    void serverClosingGreysCommandsAndShowsTheMessageBar()
    {
        frmClient client;
        client.ConnectTimer.stop();
        QLabel *status = client.statusBar()->findChild<QLabel *>(QStringLiteral("lblStatus"));
        QCOMPARE(client.Panes.size(), 6); // five log panes and the navigator
        QCOMPARE(client.Panes[2]->windowTitle(), QStringLiteral("Message Processor"));

        Global.ServerName = QStringLiteral("mail.example.com");
        Global.UserName = QStringLiteral("Admin");
        client.ToolBarConnected(true);
        QVERIFY(!client.ServerCommands.isEmpty());
        for (QAction *command : client.ServerCommands)
            QVERIFY(command->isEnabled());
        QCOMPARE(status->text(), QStringLiteral("Connected To Postvane On mail.example.com (Admin)"));

        Remote().ReceivePushBlock(QStringLiteral("serverclosing.xml"), QString());
        for (QAction *command : client.ServerCommands + client.SelectionCommands)
            QVERIFY2(!command->isEnabled(), qPrintable(command->text()));
        QVERIFY(client.MessageBarVisible());
        QCOMPARE(client.MessageBarText(), QStringLiteral("The Postvane Server Has Closed."));
        QCOMPARE(status->text(), QStringLiteral("Not Connected To Postvane"));
        client.StatusText(QStringLiteral("Working"));
        QCOMPARE(status->text(), QStringLiteral("Working"));

        Remote().RouteReply(QStringLiteral("/error.xml"), QStringLiteral("second"));
        QCOMPARE(client.MessageBarText(), QStringLiteral("Error Returned From Postvane Server: second"));
        client.DismissMessageBar();
        QVERIFY(!client.MessageBarVisible());
    }

    void pushedLinesReachTheirPanes()
    {
        frmClient client;
        client.ConnectTimer.stop();
        Remote().LogPanesRemote();
        Remote().ReceiveLog(QStringLiteral("<Source>Edge Server</Source><Log><TimeStamp>2024-03-01:10:00:00</TimeStamp>"
                                           "<Msg>edge line</Msg></Log>"));
        QCOMPARE(client.LogPaneEdge->GridSVC->rowCount(), 2);
        QCOMPARE(client.LogPaneServer->GridSVC->rowCount(), 0);
    }

    void closeAsksAndEndsOnlyAtTheShutdownTick()
    {
        frmClient client;
        client.ConnectTimer.stop();
        client.show();
        {
            // A No with the box ticked changes nothing: the question comes again.
            ModalCloser closer(QMessageBox::No);
            closer.TickVerification = true;
            client.close();
            QCOMPARE(closer.Texts.size(), 1);
            QVERIFY(closer.Texts[0].startsWith(QStringLiteral("Close Postvane?\nThe Postvane Service will continue running on the remote PC")));
        }
        QVERIFY(Global.Settings.AskExit);
        QVERIFY(GetUserSetting(Global.ProductName, QStringLiteral("AskExit")) != QStringLiteral("false"));
        QVERIFY(client.isVisible());
        QVERIFY(!client.ShutdownTimer.isActive());

        {
            ModalCloser closer(QMessageBox::Yes);
            closer.TickVerification = true;
            client.close();
        }
        QVERIFY(!Global.Settings.AskExit);
        QCOMPARE(GetUserSetting(Global.ProductName, QStringLiteral("AskExit")), QStringLiteral("false"));
        // The window stays until the tick, so that no request handler is on the stack.
        QVERIFY(client.isVisible());
        QVERIFY(client.ShutdownTimer.isActive());
        QVERIFY(Remote().Closing);
        QTRY_VERIFY(!client.isVisible());
        QVERIFY(!GetUserSetting(Global.ProductName, QStringLiteral("DockingLayout")).isEmpty());
        SaveUserSetting(Global.ProductName, QStringLiteral("AskExit"), true);
    }

    void cancelledLoginClosesWithoutAsking()
    {
        frmClient client;
        client.ConnectTimer.stop();
        client.show();
        ModalCloser closer;
        QTimer::singleShot(100, [] {
            if (QWidget *login = QApplication::activeModalWidget())
                QMetaObject::invokeMethod(login, "reject");
        });
        client.ConnectTick();
        QVERIFY(Global.DialogCancelled);
        QVERIFY(Global.NoExitPrompt);
        QTRY_VERIFY(!client.isVisible());
        QVERIFY(closer.Texts.isEmpty());
    }
};

POSTVANE_TEST(tst_frmClient)
#include "tst_frmClient.moc"
