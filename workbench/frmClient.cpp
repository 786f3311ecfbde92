#include "frmClient.h"
#include "TaskDialog.h"
#include "WindowDictionary.h"
#include "frmLogin.h"
#include "frmPopup.h"
#include "frmService.h"
#include "frmStartServices.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "foundation/Startup.h"
#include "foundation/cDDict.h"
#include "model/GlobalCollections.h"
#include "services/ServiceControl.h"
#include "session/Requests.h"
#include "store/GlobalObjects.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QString UserKey(const char *Key, const QString &Default = QString())
{
    return GetUserSetting(Global.ProductName, QString::fromLatin1(Key), Default);
}

void SaveUserKey(const char *Key, const QVariant &Value)
{
    SaveUserSetting(Global.ProductName, QString::fromLatin1(Key), Value);
}

// Editors that the shutdown closes before the main window.
bool IsEditor(const QWidget *Window)
{
    const QString name = Window->objectName();
    return name == QStringLiteral("frmAccount") || name == QStringLiteral("frmTrigger") || name == QStringLiteral("frmUser");
}

} // namespace

frmClient::frmClient(const QString &CommandLineServer, QWidget *parent)
    : QMainWindow(parent), m_commandLineServer(CommandLineServer)
{
    setObjectName(QStringLiteral("frmClient"));
    setWindowTitle(QStringLiteral("%APPNAME% Administrator"));
    setDockOptions(QMainWindow::AnimatedDocks | QMainWindow::AllowTabbedDocks);
    RestorePosition();
    AccountsViewType = qint16(UserKey("AccountsViewType", QStringLiteral("0")).toInt());

    setCentralWidget(CreateCentre());
    CreateCommandBar();
    CreateStatusBar();
    GetDDict(this);
    ConnectRemote();
    CreateLogPanes();
    GetCommandBar(objectName(), CommandBar);
    GetPanes(objectName(), Panes);
    restoreState(QByteArray::fromBase64(UserKey("DockingLayout").toLatin1()));

    Global.TextAll = DictText("ALL", "All");
    Global.TextAny = DictText("ANY", "Any");
    Global.TextServiceRunning = DictText("SVCRUNNING", "Service (Running)");
    Global.TextServiceNotRunning = DictText("SVCNOTRUNNING", "Service (Not Running)");
    Global.TempPath = Global.WorkPath + QStringLiteral("Temp/");
    MakePath(Global.TempPath);
    ToolBarConnected(false);
    StatusText(DictText("NOTCONNECTEDSTATUS", "Not Connected"));

    // The first connection is made after the window has been painted.
    ConnectTimer.setSingleShot(true);
    ConnectTimer.setInterval(ConnectInterval);
    connect(&ConnectTimer, &QTimer::timeout, this, &frmClient::ConnectTick);
    ConnectTimer.start();
    ShutdownTimer.setSingleShot(true);
    ShutdownTimer.setInterval(ShutdownInterval);
    connect(&ShutdownTimer, &QTimer::timeout, this, &frmClient::ShutdownTick);
}

void frmClient::RestorePosition()
{
    // Pixels; the defaults stand where the design's first window stood.
    const int top = UserKey("FormTop", QStringLiteral("33")).toInt();
    const int left = UserKey("FormLeft", QStringLiteral("20")).toInt();
    const int width = UserKey("FormWidth", QStringLiteral("1100")).toInt();
    const int height = UserKey("FormHeight", QStringLiteral("720")).toInt();
    setGeometry(left, top, width, height);
    if (UserKey("WindowState").toInt() == 2)
        setWindowState(Qt::WindowMaximized);
}

void frmClient::SavePosition()
{
    SaveUserKey("WindowState", isMaximized() ? 2 : 0);
    if (isMaximized())
        return;
    SaveUserKey("FormTop", geometry().top());
    SaveUserKey("FormLeft", geometry().left());
    SaveUserKey("FormWidth", geometry().width());
    SaveUserKey("FormHeight", geometry().height());
}

QWidget *frmClient::CreateCentre()
{
    auto *centre = new QWidget(this);
    centre->setObjectName(QStringLiteral("Workspace"));
    auto *layout = new QVBoxLayout(centre);
    layout->setContentsMargins(0, 0, 0, 0);

    m_messageBar = new QFrame(centre);
    m_messageBar->setObjectName(QStringLiteral("MessageBar"));
    m_messageBar->setFrameShape(QFrame::StyledPanel);
    m_messageBar->setAutoFillBackground(true);
    QPalette colours = m_messageBar->palette();
    colours.setColor(QPalette::Window, QColor(0xFF, 0xF4, 0xC2));
    colours.setColor(QPalette::WindowText, Qt::black);
    m_messageBar->setPalette(colours);
    auto *bar = new QHBoxLayout(m_messageBar);
    m_messageTitle = new QLabel(DictText("MSGBARHEADER", "Message From Administrator"), m_messageBar);
    QFont bold = m_messageTitle->font();
    bold.setBold(true);
    m_messageTitle->setFont(bold);
    m_messageText = new QLabel(m_messageBar);
    m_messageText->setWordWrap(true);
    m_messageText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *close = new QToolButton(m_messageBar);
    close->setText(QStringLiteral("\u2715"));
    close->setToolTip(DictText("MSGBARCLOSE", "Close Message Bar"));
    close->setAutoRaise(true);
    connect(close, &QToolButton::clicked, this, &frmClient::DismissMessageBar);
    bar->addWidget(m_messageTitle);
    bar->addWidget(m_messageText, 1);
    bar->addWidget(close);
    m_messageBar->hide();
    layout->addWidget(m_messageBar);
    // The navigator's item list takes this place.
    layout->addStretch(1);
    return centre;
}

void frmClient::CreateCommandBar()
{
    CommandBar = addToolBar(QStringLiteral("Commands"));
    CommandBar->setObjectName(QStringLiteral("CommandBar"));
    CommandBar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    auto add = [this](int id, const QString &caption, const QString &toolTip) {
        QAction *action = CommandBar->addAction(caption);
        action->setData(id);
        action->setToolTip(toolTip);
        ServerCommands.append(action);
        return action;
    };
    QAction *refresh = add(1, QStringLiteral("Refresh"), QStringLiteral("Refresh"));
    refresh->setShortcut(Qt::Key_F5);
    connect(refresh, &QAction::triggered, this, [] {
        Remote().HTTPGet(Requests::GetUsers());
        Remote().HTTPGet(Requests::GetAccounts());
    });
    connect(add(2, QStringLiteral("Check For New Messages Now"), QStringLiteral("Check For New Messages Now")),
            &QAction::triggered, this, [this] {
                if (ShowTaskDialog(this, DictText("CHECKNOW1", "Check For New Messages Now?"),
                                   DictText("CHECKNOW2", "All enabled Accounts will be checked for new messages now."),
                                   QString(), QMessageBox::Yes | QMessageBox::No)
                    == QMessageBox::Yes)
                    Remote().HTTPGet(Requests::CheckNow());
            });
    connect(add(3, QStringLiteral("Clear Message Store"), QStringLiteral("Clear Message Store")), &QAction::triggered, this,
            [this] {
                if (ShowTaskDialog(this, DictText("CLEARMSGSTORE1", "Clear Message Store?"), QString(), QString(),
                                   QMessageBox::Yes | QMessageBox::No)
                    == QMessageBox::Yes
                    && Remote().HTTPGet(Requests::DeleteMailStore()))
                    Remote().HTTPGet(Requests::DeleteLog());
            });
}

void frmClient::CreateStatusBar()
{
    m_status = new QLabel(statusBar());
    m_status->setObjectName(QStringLiteral("lblStatus"));
    m_accounts = new QLabel(statusBar());
    m_triggers = new QLabel(statusBar());
    m_service = new QLabel(statusBar());
    m_service->setObjectName(QStringLiteral("lblService"));
    statusBar()->addWidget(m_status, 1);
    statusBar()->addPermanentWidget(m_accounts);
    statusBar()->addPermanentWidget(m_triggers);
    statusBar()->addPermanentWidget(m_service);
    RefreshStatistics();
}

void frmClient::CreateLogPanes()
{
    struct PaneName
    {
        frmService **Pane;
        int ID;
        const char *Name;
        QString Title;
        QString Log;
    };
    const QString product = Global.ProductName;
    const PaneName names[] = {
        {&LogPaneServer, 1, "LogPaneServer", QStringLiteral("Server"), product + QStringLiteral("ServerLog.LOG")},
        {&LogPaneEdge, 2, "LogPaneEdge", QStringLiteral("Edge"), product + QStringLiteral("EdgeServerLog.LOG")},
        {&LogPaneMessage, 3, "LogPaneMessage", QStringLiteral("Message Processor"), product + QStringLiteral("MessageServerLog.LOG")},
        {&LogPaneMailServer, 4, "LogPaneMailServer", QStringLiteral("Mail Server"), QStringLiteral("SMTP.LOG")},
        {&LogPaneOutgoing, 5, "LogPaneOutgoing", QStringLiteral("Outgoing Email"), QStringLiteral("SMTPCLIENT.LOG")},
    };
    QDockWidget *first = nullptr;
    for (const PaneName &name : names) {
        auto *dock = new QDockWidget(name.Title, this);
        dock->setObjectName(QString::fromLatin1(name.Name));
        dock->setProperty(PaneIDProperty, name.ID);
        *name.Pane = new frmService(name.Title, name.Log, dock);
        dock->setWidget(*name.Pane);
        addDockWidget(Qt::BottomDockWidgetArea, dock);
        if (first)
            tabifyDockWidget(first, dock);
        else
            first = dock;
        Panes.append(dock);
    }
    first->raise();
}

void frmClient::ConnectRemote()
{
    frmRemote &remote = Remote();
    connect(&remote, &frmRemote::MessageBar, this, &frmClient::CreateMessageBar);
    connect(&remote, &frmRemote::StatusText, this, &frmClient::StatusText);
    connect(&remote, &frmRemote::ToolBarConnected, this, &frmClient::ToolBarConnected);
    connect(&remote, &frmRemote::BusyPointer, this, [](bool busy) {
        if (busy)
            QApplication::setOverrideCursor(Qt::WaitCursor);
        else
            QApplication::restoreOverrideCursor();
    });
    connect(&remote, &frmRemote::ConnectError, this, &frmClient::ShowConnectError);
    connect(&remote, &frmRemote::SessionRefused, this, [this] {
        QMessageBox::critical(this, Global.AppTitle,
                              DictText("NOORGANIZATION", "Error - No Organization Exists For Your User"));
        BeginShutdown();
    });
    connect(&remote, &frmRemote::LoggedOut, this, [this] {
        // Not inside the push handler: the login turns its own event loops.
        QTimer::singleShot(0, this, [this] {
            QMessageBox::information(this, Global.AppTitle,
                                     DictText("LOGGEDOUT", "The %APPNAME% Server has logged you out. Please log back in."));
            ShowLogin();
        });
    });
    connect(&remote, &frmRemote::LogPanesLocal, this, [this](bool isAdmin) {
        LogPaneServer->ShowLog(LogPaneServer->LogName);
        LogPaneEdge->ShowLog(LogPaneEdge->LogName);
        LogPaneMessage->ShowLog(LogPaneMessage->LogName);
        if (isAdmin) {
            LogPaneMailServer->ShowLog(LogPaneMailServer->LogName);
            LogPaneOutgoing->ShowLog(LogPaneOutgoing->LogName);
        }
    });
    connect(&remote, &frmRemote::LogPanesRemote, this, [this] {
        for (frmService *pane : {LogPaneServer, LogPaneEdge, LogPaneMessage, LogPaneMailServer, LogPaneOutgoing})
            pane->SetRemote();
    });
    connect(&remote, &frmRemote::FirstLog, this,
            [this](frmRemote::LogPane pane, const QString &text) { LogPane(pane)->AddFirstLog(text); });
    connect(&remote, &frmRemote::RemoteLog, this,
            [this](frmRemote::LogPane pane, const QString &fragment) { LogPane(pane)->AddRemoteLog(fragment); });
    connect(&remote, &frmRemote::AccountsRefreshed, this, &frmClient::RefreshStatistics);
    connect(&remote, &frmRemote::PopupShown, this, &frmClient::ShowPopup);
}

frmService *frmClient::LogPane(frmRemote::LogPane Pane) const
{
    switch (Pane) {
    case frmRemote::PaneEdge:
        return LogPaneEdge;
    case frmRemote::PaneMessage:
        return LogPaneMessage;
    case frmRemote::PaneMailServer:
        return LogPaneMailServer;
    case frmRemote::PaneOutgoing:
        return LogPaneOutgoing;
    case frmRemote::PaneServer:
        break;
    }
    return LogPaneServer;
}

void frmClient::ShowPopup(const frmRemote::Popup &Popup)
{
    auto *popup = new frmPopup(Popup, Remote().PopupCount - 1);
    connect(popup, &frmPopup::Closed, &Remote(), &frmRemote::PopupClosed);
    popup->show();
}

void frmClient::ShowConnectError(const QString &Text)
{
    QApplication::restoreOverrideCursor();
    ShowTaskDialog(this, DictText("NOTCONNECTED", "Not Connected To %APPNAME%."),
                   DictText("NOTCONNECTED2", "Please check that the %APPNAME% Server is running on the specified host.")
                       + QStringLiteral("\r\n") + Text,
                   DictText("CHECKUSERNAME", "Please check your Username & Password."));
}

void frmClient::RefreshStatistics()
{
    m_accounts->setText(DictText("STATACCOUNTS", "Accounts:") + u' ' + QString::number(Accounts().Count()));
    m_triggers->setText(DictText("STATTRIGGERS", "Triggers:") + u' ' + QString::number(Accounts().TotalTriggers()));
}

QString frmClient::ConnectionText() const
{
    if (Global.Connected)
        return DictText("CONNECTEDTO", "Connected To %APPNAME% On ") + Global.ServerName + QStringLiteral(" (")
               + Global.UserName + u')';
    return DictText("NOTCONNECTEDTO", "Not Connected To %APPNAME%");
}

void frmClient::StatusText(const QString &Text)
{
    m_status->setText(Text.isEmpty() ? ConnectionText() : Text);
}

void frmClient::ToolBarConnected(bool Connected)
{
    Global.Connected = Connected;
    for (QAction *command : ServerCommands)
        command->setEnabled(Connected);
    RefreshServiceState();
    StatusText(QString());
}

void frmClient::RefreshServiceState()
{
    m_service->setText(Global.ServiceState == QStringLiteral("Running") ? Global.TextServiceRunning
                                                                         : Global.TextServiceNotRunning);
}

void frmClient::CreateMessageBar(const QString &Text)
{
    m_messageText->setText(Text);
    m_messageBar->show();
}

void frmClient::DismissMessageBar()
{
    m_messageBar->hide();
}

bool frmClient::MessageBarVisible() const
{
    return !m_messageBar->isHidden();
}

QString frmClient::MessageBarText() const
{
    return m_messageText->text();
}

bool frmClient::ShowLogin()
{
    frmLogin login(Remote(), m_commandLineServer, this);
    connect(&login, &frmLogin::ToolBarConnected, this, &frmClient::ToolBarConnected);
    connect(&login, &frmLogin::ShutdownRequested, this, &frmClient::BeginShutdown);
    login.exec();
    return !Global.DialogCancelled;
}

// A local server that is stopped, or a first run, gets started before the
// login; devmode works without it.
void frmClient::StartLocalServer()
{
    if (!QFileInfo(ServiceControl::ServerProgramPath()).isExecutable())
        return;
    Global.ServiceState = ServiceControl::ServiceStatus(Global.ProductName);
    if ((Global.ServiceState == QStringLiteral("Stopped") || Global.FirstRun) && !Global.DevMode) {
        frmStartServices services(this);
        services.show();
        services.StartUp();
    }
    RefreshServiceState();
}

void frmClient::ConnectTick()
{
    ConnectTimer.stop();
    StartLocalServer();
    // A local console whose server did not come up shows no login.
    const bool skipLogin = Global.ServiceState != QStringLiteral("Running") && Global.IsLocal && !Global.DevMode;
    if (!skipLogin && !ShowLogin()) {
        Global.NoExitPrompt = true;
        close();
        return;
    }
    if (Global.IsLocal)
        ToolBarConnected(Global.Connected);
    if (!Global.IsLocal)
        setWindowTitle(Global.ProductName + QStringLiteral(" Administrator - ") + ConnectionText());
}

bool frmClient::ConfirmClose()
{
    if (!Global.Settings.AskExit || Global.NoExitPrompt)
        return true;
    const QString content = Global.ServiceState == QStringLiteral("Running")
                                ? DictText("CLOSE1", "The %APPNAME% Service will continue running processing your Accounts and "
                                                 "Triggers in the background.")
                            : Global.IsLocal
                                ? DictText("CLOSE2", "Start the %APPNAME% Service to begin processing your Accounts & Triggers.")
                                : DictText("CLOSE3", "The %APPNAME% Service will continue running on the remote PC, processing "
                                                 "your Accounts and Triggers in the background.");
    bool dontAsk = false;
    const auto answer = ShowTaskDialog(this, DictText("CLOSE", "Close %APPNAME%?"), content, QString(),
                                       QMessageBox::Yes | QMessageBox::No,
                                       DictText("ASKEXIT", "Don't show this dialog again."), &dontAsk);
    if (answer != QMessageBox::Yes)
        return false;
    if (dontAsk) {
        Global.Settings.AskExit = false;
        SaveUserKey("AskExit", false);
    }
    return true;
}

void frmClient::closeEvent(QCloseEvent *event)
{
    if (Global.SkipCloseHandling || qApp->isSavingSession()) {
        event->accept();
        return;
    }
    event->ignore();
    if (!ShutdownTimer.isActive() && ConfirmClose())
        BeginShutdown();
}

void frmClient::BeginShutdown()
{
    Remote().Closing = true;
    ShutdownTimer.start();
    Remote().Interrupt();
}

void frmClient::ShutdownTick()
{
    ShutdownTimer.stop();
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (IsEditor(window))
            window->close();
    }
    ConnectTimer.stop();
    Remote().Close();
    ReleaseEventLog();
    ReleaseDDict();
    SaveUserKey("AccountsViewType", AccountsViewType);
    SaveUserKey("DockingLayout", QString::fromLatin1(saveState().toBase64()));
    SavePosition();
    Global.SkipCloseHandling = true;
    close();
}
