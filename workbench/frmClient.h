#pragma once
#include "session/frmRemote.h"

#include <QList>
#include <QMainWindow>
#include <QPointer>
#include <QTimer>
#include <functional>

class QAction;
class QDialog;
class QDockWidget;
class QFrame;
class QLabel;
class QMenu;
class QPrinter;
class RibbonBar;
class clsAccount;
class clsAccountTrigger;
class clsUser;
class frmExplorerBar;
class frmList;
class frmService;

// The main window: the ribbon, the item list in the middle, docking host
// with the navigator and the log panes, status bar and message bar. It owns
// no data; it routes commands and shows what frmRemote reports.
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

    // The commands of the ribbon, by their number.
    enum Command {
        ID_UPLEVEL = 100, ID_ADDACCOUNT, ID_ADDTRIGGER, ID_PROPERTIES, ID_DELETE, ID_ENABLE, ID_DISABLE,
        ID_COPYTRIGGER, ID_PASTETRIGGER, ID_RUNWITH, ID_VIEWPROCESSED, ID_VIEWSCHEDULED, ID_VIEWMYMESSAGES,
        ID_VIEWDASHBOARD,
        ID_ADDUSER = 200, ID_EDITUSER, ID_DELETEUSER, ID_VIEWUSERMESSAGES,
        ID_PENDINGMESSAGES = 300, ID_RECENTLYSENT, ID_RECENTLYFAILED, ID_MAILSERVERLOG, ID_POP3USERS, ID_IMAPUSERS,
        ID_OPTIONS, ID_PRINT, ID_VIEWICONS, ID_VIEWLIST, ID_VIEWREPORT, ID_REFRESH, ID_CHECKNOW, ID_CLEARSTORE,
        ID_HELPTOPICS = 400, ID_SUPPORTFORUM, ID_LIVECHAT, ID_SUPPORTTICKET, ID_TRAINING,
        // The contextual tabs: the account and trigger editors act on these.
        ID_GETVIAEMAIL = 600, ID_RECEIVEVIASMTP, ID_FILEPICKUP, ID_CSVPICKUP, ID_DATABASEPULL, ID_WEBPAGELOOKUP,
        ID_RSSLOOKUP, ID_TWITTERFEED, ID_NETWORKUSERS, ID_ACCOUNTSAVE, ID_ACCOUNTCANCEL,
        ID_TRIGGERCONDITIONS = 620, ID_EXTRACTEDFIELDS, ID_TRIGGERACTIONS, ID_SCHEDULE, ID_SAVETO, ID_NOTES,
        ID_ADDFIELD, ID_EDITFIELD, ID_ADDLOOKUPFIELD, ID_DELETEFIELD, ID_FIELDUP, ID_FIELDDOWN, ID_EDITACTION,
        ID_DELETEACTION, ID_ACTIONUP, ID_ACTIONDOWN, ID_TRIGGERSAVE, ID_TRIGGERCANCEL,
        ID_MINIMIZERIBBON = 500, ID_EXPANDRIBBON, ID_RIGHTTOLEFT, ID_HELP, ID_DEPLOYTO,
        ID_THEME = 510,     // + the position in VisualStyle::ThemeNames()
        ID_FONTSIZE = 520,  // + the position in VisualStyle::FontSizeNames()
    };

    // How the editors of accounts, triggers and users are made; a window
    // family registers its maker when it exists. The window is named
    // "frmAccount", "frmTrigger" or "frmUser" and carries the record's ID in
    // its property "RecordID".
    static inline std::function<QWidget *(clsAccount *Account)> MakeAccountEditor;
    static inline std::function<QWidget *(clsAccount *Account, clsAccountTrigger *Trigger)> MakeTriggerEditor;
    static inline std::function<QWidget *(clsUser *User)> MakeUserEditor;
    // The deployment dialog of an account, run modal by "Deploy To".
    static inline std::function<QDialog *(const QString &AccountID, QWidget *Parent)> MakeDeployDialog;
    // The test run dialog of a trigger, run modal by "Run With".
    static inline std::function<QDialog *(clsAccountTrigger *Trigger, QWidget *Parent)> MakeRunWithDialog;
    // Runs a command of a contextual tab on the editor window that showed
    // the tab last.
    static inline std::function<void(QWidget *Editor, int ID)> RunEditorCommand;

    // CommandLineServer goes to the login dialog.
    explicit frmClient(const QString &CommandLineServer = QString(), QWidget *parent = nullptr);

    frmService *LogPaneServer = nullptr;
    frmService *LogPaneEdge = nullptr;
    frmService *LogPaneMessage = nullptr;
    frmService *LogPaneMailServer = nullptr;
    frmService *LogPaneOutgoing = nullptr;
    QList<QDockWidget *> Panes;
    RibbonBar *CommandBar = nullptr;
    // Contextual tabs, shown while the account or trigger editor has the focus.
    QWidget *AccountSettingsTab = nullptr;
    QWidget *TriggerSettingsTab = nullptr;
    frmList *List = nullptr;
    frmExplorerBar *ExplorerBar = nullptr;
    // Commands that need the server: greyed while not connected.
    QList<QAction *> ServerCommands;
    // Commands that need the server and more: a fitting selection in the
    // list, the level it shows, or an editor to open.
    QList<QAction *> SelectionCommands;
    // The statistics line's count of the edge queue, as the queue monitor
    // last read it.
    QString PendingEdgeQueue;
    // The markup of the trigger that Copy Trigger took.
    QString CopiedTrigger;
    QTimer ConnectTimer;
    QTimer ShutdownTimer;
    qint16 AccountsViewType = 0;

    QAction *Command(int ID) const;
    void StatusText(const QString &Text);
    void ToolBarConnected(bool Connected);
    // Shows the contextual tab of an editor (nullptr hides both).
    void ShowContextualTab(QWidget *Tab);
    // The editor window whose contextual tab shows; nullptr when none.
    QWidget *ContextEditor() const { return m_contextEditor; }
    // Enables the selection commands by what the list has selected.
    void UpdateCommands();
    // Raises an open editor of the record, or fetches it and opens one.
    void ShowAccount(clsAccount *Account);
    void ShowTrigger(clsAccount *Account, clsAccountTrigger *Trigger);
    void ShowUser(clsUser *User);
    // The list's row opened: its editor by the key's letter.
    void OpenKey(const QString &Key);
    void AddTrigger();
    void EnableSelected(bool Enable);
    // The test run of the selected trigger.
    void RunWith();
    void CopyTrigger();
    void PasteTrigger();
    void CheckNow();
    // Prints the item list as it shows, after the print dialog.
    void PrintList();
    void PrintList(QPrinter &Printer);
    void ClearMessageStore();
    void DeleteSelected();
    // After the log-on: the navigator rebuilt and the first account opened.
    void FirstConnect();
    // The server is back after the session was lost: the session is checked
    // with the same credentials, the commands come back and, with no editor
    // open, the navigator is rebuilt from fresh collections.
    void Reconnect();
    void RefreshStatistics();
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
    void CreateAccountsTab();
    void CreateUsersTab();
    void CreateServiceTab();
    void CreateHelpTab();
    void CreateContextualTabs();
    void CreateSystemMenu();
    void ConnectCommands();
    void CreateNavigator();
    void ShowListMenu(const QPoint &Position);
    // An editor window that takes the focus shows its contextual tab.
    void FollowFocus(QWidget *Now);
    void RunContextCommand(int ID);
    // A theme or font size is stored and shows after a restart.
    void ChooseTheme(int Position);
    void ChooseFontSize(int Position);
    void ChooseRightToLeft(bool RightToLeft);
    void CreateStatusBar();
    QWidget *CreateCentre();
    void ConnectRemote();
    void StartLocalServer();
    void ShowPopup(const frmRemote::Popup &Popup);
    void ShowConnectError(const QString &Text);
    // A window of this name open on the record, raised; false when none is.
    bool RaiseEditor(const char *Name, const QString &RecordID);
    void OpenEditor(QWidget *Editor, const QString &Title, const QString &RecordID);
    void ScheduleRefresh();
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
    QLabel *m_statAccounts = nullptr;
    QLabel *m_statTriggers = nullptr;
    QLabel *m_statEdgeQueue = nullptr;
    bool m_refreshPending = false;
    QPointer<QWidget> m_contextEditor;
};
