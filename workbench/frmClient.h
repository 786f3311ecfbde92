#pragma once
#include "session/frmRemote.h"

#include <QList>
#include <QMainWindow>
#include <QTimer>

class QAction;
class QDockWidget;
class QFrame;
class QLabel;
class QToolBar;
class frmService;

// The main window: command bar, docking host with the log panes (the
// navigator and the item list join them), status bar and message bar. It
// owns no data; it routes commands and shows what frmRemote reports.
//
// Closing runs in two stages: the close is refused, the user is asked
// (setting AskExit), and ShutdownTimer ends the window at a moment when no
// request is on the stack.
class frmClient : public QMainWindow
{
    Q_OBJECT
public:
    static constexpr int ConnectInterval = 500;
    static constexpr int ShutdownInterval = 500;

    // CommandLineServer goes to the login dialog.
    explicit frmClient(const QString &CommandLineServer = QString(), QWidget *parent = nullptr);

    frmService *LogPaneServer = nullptr;
    frmService *LogPaneEdge = nullptr;
    frmService *LogPaneMessage = nullptr;
    frmService *LogPaneMailServer = nullptr;
    frmService *LogPaneOutgoing = nullptr;
    QList<QDockWidget *> Panes;
    QToolBar *CommandBar = nullptr;
    // Commands that need the server: greyed while not connected.
    QList<QAction *> ServerCommands;
    QTimer ConnectTimer;
    QTimer ShutdownTimer;
    qint16 AccountsViewType = 0;

    void StatusText(const QString &Text);
    void ToolBarConnected(bool Connected);
    // The status panel's service text from Global.ServiceState.
    void RefreshServiceState();
    QString ConnectionText() const;
    void CreateMessageBar(const QString &Text);
    void DismissMessageBar();
    bool MessageBarVisible() const;
    QString MessageBarText() const;
    frmService *LogPane(frmRemote::LogPane Pane) const;
    // Shows the login dialog; false when it was cancelled.
    bool ShowLogin();
    // Starts a stopped local server, then shows the login.
    void ConnectTick();
    void ShutdownTick();
    // Starts the shutdown without asking.
    void BeginShutdown();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void RestorePosition();
    void SavePosition();
    void CreateLogPanes();
    void CreateCommandBar();
    void CreateStatusBar();
    QWidget *CreateCentre();
    void ConnectRemote();
    void StartLocalServer();
    void ShowPopup(const frmRemote::Popup &Popup);
    void ShowConnectError(const QString &Text);
    void RefreshStatistics();
    // True when the close may go ahead: asked, or no question due.
    bool ConfirmClose();

    QString m_commandLineServer;
    QFrame *m_messageBar = nullptr;
    QLabel *m_messageTitle = nullptr;
    QLabel *m_messageText = nullptr;
    QLabel *m_status = nullptr;
    QLabel *m_service = nullptr;
    QLabel *m_accounts = nullptr;
    QLabel *m_triggers = nullptr;
};
