#include "frmClient.h"
#include "RibbonBar.h"
#include "ServerCommand.h"
#include "TaskDialog.h"
#include "VisualStyle.h"
#include "WindowDictionary.h"
#include "frmExplorerBar.h"
#include "frmList.h"
#include "frmLogin.h"
#include "frmOptions.h"
#include "frmPopup.h"
#include "frmService.h"
#include "frmStartServices.h"
#include "foundation/Formatting.h"
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
#include <QDesktopServices>
#include <QDockWidget>
#include <QFileInfo>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QStatusBar>
#include <QTextDocument>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

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
    AccountsViewType = qint16(UserKey("AccountsViewType", QStringLiteral("2")).toInt());

    setCentralWidget(CreateCentre());
    CreateCommandBar();
    CreateStatusBar();
    GetDDict(this);
    ConnectRemote();
    CreateLogPanes();
    CreateNavigator();
    ConnectCommands();
    GetRibbonBar(objectName(), CommandBar);
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
    return centre;
}

QAction *frmClient::Command(int ID) const
{
    return CommandBar->Command(ID);
}

void frmClient::CreateCommandBar()
{
    CommandBar = new RibbonBar(this);
    setMenuWidget(CommandBar);
    CreateAccountsTab();
    CreateUsersTab();
    CreateServiceTab();
    CreateHelpTab();
    CreateContextualTabs();
    CreateSystemMenu();
    CommandBar->setCurrentIndex(0);
    connect(CommandBar, &QTabWidget::currentChanged, this, [this](int tab) {
        // The Users tab shows the users; the accounts tab what it showed before.
        if (tab == 1 && ExplorerBar->Showing != frmExplorerBar::PageUsers)
            ExplorerBar->ExplorerBarUser();
        else if (tab == 0 && ExplorerBar->Showing == frmExplorerBar::PageUsers)
            ExplorerBar->ExplorerBarTop();
    });
}

void frmClient::CreateAccountsTab()
{
    RibbonBar &ribbon = *CommandBar;
    QWidget *tab = ribbon.AddTab(QStringLiteral("Accounts && Triggers"), QStringLiteral("Accounts & Triggers"));
    QGroupBox *view = ribbon.AddGroup(tab, QStringLiteral("View"));
    SelectionCommands << ribbon.AddCommand(view, ID_UPLEVEL, QStringLiteral("Up Level"), QString(), QStyle::SP_FileDialogToParent);
    QGroupBox *action = ribbon.AddGroup(tab, QStringLiteral("Action"));
    SelectionCommands << ribbon.AddCommand(action, ID_ADDACCOUNT, QStringLiteral("Add Account"),
                                        QStringLiteral("Add Message Retrieval Account"), QStyle::SP_FileDialogNewFolder);
    SelectionCommands << ribbon.AddCommand(action, ID_ADDTRIGGER, QStringLiteral("Add Trigger"), QString(),
                                           QStyle::SP_FileIcon);
    SelectionCommands << ribbon.AddCommand(action, ID_PROPERTIES, QStringLiteral("Properties"), QString(),
                                           QStyle::SP_FileDialogDetailedView);
    SelectionCommands << ribbon.AddCommand(action, ID_DELETE, QStringLiteral("Delete"), QString(), QStyle::SP_TrashIcon);
    SelectionCommands << ribbon.AddCommand(action, ID_ENABLE, QStringLiteral("Enable"), QString(),
                                           QStyle::SP_DialogApplyButton, false);
    SelectionCommands << ribbon.AddCommand(action, ID_DISABLE, QStringLiteral("Disable"), QString(),
                                           QStyle::SP_DialogCancelButton, false);
    SelectionCommands << ribbon.AddCommand(action, ID_RUNWITH, QStringLiteral("Run With"), QString(),
                                           QStyle::SP_MediaPlay, false);
    SelectionCommands << ribbon.AddCommand(action, ID_COPYTRIGGER, QStringLiteral("Copy Trigger"), QString(),
                                           QStyle::SP_FileLinkIcon, false);
    SelectionCommands << ribbon.AddCommand(action, ID_PASTETRIGGER, QStringLiteral("Paste Trigger"), QString(),
                                           QStyle::SP_DialogSaveButton, false);
    QGroupBox *store = ribbon.AddGroup(tab, QStringLiteral("Message Store"));
    ribbon.AddCommand(store, ID_VIEWPROCESSED, QStringLiteral("View Processed Messages"), QString(), QStyle::SP_DirOpenIcon);
    ribbon.AddCommand(store, ID_VIEWSCHEDULED, QStringLiteral("View Scheduled Messages"), QString(),
                      QStyle::SP_FileDialogContentsView, false);
    ribbon.AddCommand(store, ID_VIEWMYMESSAGES, QStringLiteral("View My Messages"), QString(), QStyle::SP_DirHomeIcon, false);
    ribbon.AddCommand(store, ID_VIEWDASHBOARD, QStringLiteral("View Dashboard"), QString(), QStyle::SP_ComputerIcon, false);
    auto *deploy = new QAction(QStringLiteral("Deploy To"), this);
    deploy->setData(ID_DEPLOYTO);
    ribbon.AddMenuCommand(deploy);
    SelectionCommands << deploy;
    Command(ID_DELETE)->setShortcut(QKeySequence::Delete);
    Command(ID_DELETE)->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    Command(ID_COPYTRIGGER)->setShortcut(QKeySequence::Copy);
    Command(ID_COPYTRIGGER)->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    Command(ID_PASTETRIGGER)->setShortcut(QKeySequence::Paste);
    Command(ID_PASTETRIGGER)->setShortcutContext(Qt::WidgetWithChildrenShortcut);
}

void frmClient::CreateUsersTab()
{
    RibbonBar &ribbon = *CommandBar;
    QWidget *tab = ribbon.AddTab(QStringLiteral("Users"));
    QGroupBox *users = ribbon.AddGroup(tab, QStringLiteral("Users"));
    SelectionCommands << ribbon.AddCommand(users, ID_ADDUSER, QStringLiteral("Add User"), QString(), QStyle::SP_FileDialogNewFolder);
    SelectionCommands << ribbon.AddCommand(users, ID_EDITUSER, QStringLiteral("Edit User"), QString(),
                                           QStyle::SP_FileDialogDetailedView);
    SelectionCommands << ribbon.AddCommand(users, ID_DELETEUSER, QStringLiteral("Delete User"), QString(), QStyle::SP_TrashIcon);
    ribbon.AddCommand(users, ID_VIEWUSERMESSAGES, QStringLiteral("View User's Messages"), QString(), QStyle::SP_DirOpenIcon);
}

void frmClient::CreateServiceTab()
{
    RibbonBar &ribbon = *CommandBar;
    QWidget *tab = ribbon.AddTab(QStringLiteral("Service Status"));
    QGroupBox *mail = ribbon.AddGroup(tab, QStringLiteral("Mail Server View"));
    ribbon.AddCommand(mail, ID_PENDINGMESSAGES, QStringLiteral("Pending Messages"), QString(), QStyle::SP_FileDialogInfoView, false);
    ribbon.AddCommand(mail, ID_RECENTLYSENT, QStringLiteral("Recently Sent Messages"), QString(), QStyle::SP_ArrowForward, false);
    ribbon.AddCommand(mail, ID_RECENTLYFAILED, QStringLiteral("Recently Failed Messages"), QString(),
                      QStyle::SP_MessageBoxWarning, false);
    ribbon.AddCommand(mail, ID_MAILSERVERLOG, QStringLiteral("Mail Server Log"), QString(), QStyle::SP_FileDialogListView, false);
    ribbon.AddCommand(mail, ID_POP3USERS, QStringLiteral("POP3 Users"), QString(), QStyle::SP_DirLinkIcon, false);
    ribbon.AddCommand(mail, ID_IMAPUSERS, QStringLiteral("IMAP Users"), QString(), QStyle::SP_DirLinkIcon, false);
    QGroupBox *statistics = ribbon.AddGroup(tab, QStringLiteral("Statistics"));
    m_statAccounts = ribbon.AddLine(statistics, QString());
    m_statTriggers = ribbon.AddLine(statistics, QString());
    m_statEdgeQueue = ribbon.AddLine(statistics, QString());
    QGroupBox *server = ribbon.AddGroup(tab, QStringLiteral("Server"));
    ServerCommands << ribbon.AddCommand(server, ID_CHECKNOW, QStringLiteral("Check Now"),
                                        QStringLiteral("Check For New Messages Now"), QStyle::SP_BrowserReload);
    ServerCommands << ribbon.AddCommand(server, ID_CLEARSTORE, QStringLiteral("Clear Message Store"), QString(),
                                        QStyle::SP_DialogResetButton);
    QGroupBox *options = ribbon.AddGroup(tab, QStringLiteral("Options"));
    ServerCommands << ribbon.AddCommand(options, ID_OPTIONS, QStringLiteral("%APPNAME% Options"), QString(),
                                        QStyle::SP_FileDialogDetailedView);
    ribbon.AddCommand(options, ID_PRINT, QStringLiteral("Print"), QString(), QStyle::SP_DriveFDIcon);
    QGroupBox *look = ribbon.AddGroup(tab, QStringLiteral("View"));
    for (const auto &[id, caption, icon] : {std::tuple{ID_VIEWICONS, "Icons", QStyle::SP_FileDialogContentsView},
                                            std::tuple{ID_VIEWLIST, "List", QStyle::SP_FileDialogListView},
                                            std::tuple{ID_VIEWREPORT, "Report", QStyle::SP_FileDialogDetailedView}}) {
        QAction *kind = ribbon.AddCommand(look, id, QString::fromLatin1(caption), QString(), icon, false);
        kind->setCheckable(true);
    }
    QGroupBox *refresh = ribbon.AddGroup(tab, QStringLiteral("Refresh"));
    QAction *reload = ribbon.AddCommand(refresh, ID_REFRESH, QStringLiteral("Refresh"), QString(), QStyle::SP_BrowserReload);
    reload->setShortcut(Qt::Key_F5);
    ServerCommands << reload;
}

void frmClient::CreateHelpTab()
{
    RibbonBar &ribbon = *CommandBar;
    QWidget *tab = ribbon.AddTab(QStringLiteral("Help"));
    QGroupBox *help = ribbon.AddGroup(tab, QStringLiteral("Help"));
    ribbon.AddCommand(help, ID_HELPTOPICS, QStringLiteral("Help Topics"), QString(), QStyle::SP_DialogHelpButton);
    ribbon.AddCommand(help, ID_SUPPORTFORUM, QStringLiteral("Support Forum"), QString(), QStyle::SP_MessageBoxQuestion);
    ribbon.AddCommand(help, ID_LIVECHAT, QStringLiteral("Live Chat"), QString(), QStyle::SP_MessageBoxInformation);
    ribbon.AddCommand(help, ID_SUPPORTTICKET, QStringLiteral("Submit Support Ticket"), QString(), QStyle::SP_FileIcon);
    ribbon.AddCommand(help, ID_TRAINING, QStringLiteral("Training && Professional Services"), QString(),
                      QStyle::SP_DesktopIcon);
}

void frmClient::CreateContextualTabs()
{
    RibbonBar &ribbon = *CommandBar;
    AccountSettingsTab = ribbon.AddTab(QStringLiteral("Account Settings"));
    QGroupBox *source = ribbon.AddGroup(AccountSettingsTab, QStringLiteral("Message Source"));
    int id = ID_GETVIAEMAIL;
    for (const char *caption : {"Get Via Email", "Receive Via SMTP", "File Pickup", "CSV or Excel File Pickup",
                                "Database Pull", "Web Page Lookup", "RSS Lookup", "Twitter Feed", "Network Users"})
        ribbon.AddCommand(source, id++, QString::fromLatin1(caption), QString(), QStyle::SP_DirIcon, false)->setCheckable(true);
    QGroupBox *account = ribbon.AddGroup(AccountSettingsTab, QStringLiteral("Account"));
    ribbon.AddCommand(account, ID_ACCOUNTSAVE, QStringLiteral("Save"), QString(), QStyle::SP_DialogSaveButton);
    ribbon.AddCommand(account, ID_ACCOUNTCANCEL, QStringLiteral("Cancel"), QString(), QStyle::SP_DialogCancelButton);

    TriggerSettingsTab = ribbon.AddTab(QStringLiteral("Trigger Settings"));
    QGroupBox *pages = ribbon.AddGroup(TriggerSettingsTab, QStringLiteral("Trigger"));
    id = ID_TRIGGERCONDITIONS;
    for (const char *caption : {"Trigger Conditions", "Extracted Fields", "Trigger Actions", "Schedule", "Save To", "Notes"})
        ribbon.AddCommand(pages, id++, QString::fromLatin1(caption), QString(), QStyle::SP_FileDialogDetailedView, false)
            ->setCheckable(true);
    QGroupBox *fields = ribbon.AddGroup(TriggerSettingsTab, QStringLiteral("Extracted Fields"));
    for (const char *caption : {"Add Field", "Edit Field", "Add Lookup Field", "Delete Field", "Move Up", "Move Down"})
        ribbon.AddCommand(fields, id++, QString::fromLatin1(caption), QString(), QStyle::SP_FileIcon, false);
    QGroupBox *actions = ribbon.AddGroup(TriggerSettingsTab, QStringLiteral("Trigger Actions"));
    for (const char *caption : {"Edit Action", "Delete Action", "Move Up", "Move Down"})
        ribbon.AddCommand(actions, id++, QString::fromLatin1(caption), QString(), QStyle::SP_FileIcon, false);
    QGroupBox *trigger = ribbon.AddGroup(TriggerSettingsTab, QStringLiteral("Save"));
    ribbon.AddCommand(trigger, ID_TRIGGERSAVE, QStringLiteral("Save"), QString(), QStyle::SP_DialogSaveButton);
    ribbon.AddCommand(trigger, ID_TRIGGERCANCEL, QStringLiteral("Cancel"), QString(), QStyle::SP_DialogCancelButton);
    ShowContextualTab(nullptr);
}

void frmClient::ShowContextualTab(QWidget *Tab)
{
    CommandBar->SetTabShown(AccountSettingsTab, Tab == AccountSettingsTab);
    CommandBar->SetTabShown(TriggerSettingsTab, Tab == TriggerSettingsTab);
}

void frmClient::CreateSystemMenu()
{
    RibbonBar &ribbon = *CommandBar;
    QMenu *menu = ribbon.SystemMenu;
    auto add = [this, menu](QMenu *into, int id, const QString &caption) {
        QAction *action = into->addAction(caption);
        action->setData(id);
        CommandBar->AddMenuCommand(action);
        return action;
    };
    QAction *minimize = add(menu, ID_MINIMIZERIBBON, QStringLiteral("Minimize the Ribbon"));
    minimize->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_F1));
    add(menu, ID_EXPANDRIBBON, QStringLiteral("Expand the Ribbon"));
    menu->addSeparator();
    const VisualStyle look = VisualStyle::Stored();
    QMenu *styles = menu->addMenu(QStringLiteral("Visual Styles"));
    const QStringList themes = VisualStyle::ThemeNames();
    for (int i = 0; i < themes.size(); ++i) {
        QAction *choice = add(styles, ID_THEME + i, themes[i]);
        choice->setCheckable(true);
        choice->setChecked(VisualStyle::ThemeBlue + i == look.Theme);
    }
    QMenu *fonts = menu->addMenu(QStringLiteral("Font"));
    const QStringList sizes = VisualStyle::FontSizeNames();
    for (int i = 0; i < sizes.size(); ++i) {
        QAction *choice = add(fonts, ID_FONTSIZE + i, sizes[i]);
        choice->setCheckable(true);
        choice->setChecked(VisualStyle::FontSystemDefault + i == look.FontSize);
    }
    QAction *rightToLeft = add(menu, ID_RIGHTTOLEFT, QStringLiteral("Right To Left"));
    rightToLeft->setCheckable(true);
    rightToLeft->setChecked(look.RightToLeft);
    menu->addSeparator();
    add(menu, ID_HELP, QStringLiteral("Help"));

    ribbon.QuickButton->setDefaultAction(minimize);
    ribbon.QuickButton->setArrowType(Qt::UpArrow);
    connect(&ribbon, &RibbonBar::MinimizedChanged, this, [this](bool minimized) {
        CommandBar->QuickButton->setDefaultAction(Command(minimized ? ID_EXPANDRIBBON : ID_MINIMIZERIBBON));
        CommandBar->QuickButton->setArrowType(minimized ? Qt::DownArrow : Qt::UpArrow);
    });
}

void frmClient::ChooseTheme(int Position)
{
    for (int other = 0; other < VisualStyle::ThemeNames().size(); ++other)
        Command(ID_THEME + other)->setChecked(other == Position);
    VisualStyle look = VisualStyle::Stored();
    look.Theme = VisualStyle::ThemeBlue + Position;
    look.Store();
    QMessageBox::information(this, Global.AppTitle, DictText("RESTART", "Please restart the %APPNAME% Administrator"));
}

void frmClient::ChooseFontSize(int Position)
{
    for (int other = 0; other < VisualStyle::FontSizeNames().size(); ++other)
        Command(ID_FONTSIZE + other)->setChecked(other == Position);
    VisualStyle look = VisualStyle::Stored();
    look.FontSize = VisualStyle::FontSystemDefault + Position;
    look.Store();
    QMessageBox::information(this, Global.AppTitle, DictText("RESTART", "Please restart the %APPNAME% Administrator"));
}

// The direction needs no restart: every window follows the application's.
void frmClient::ChooseRightToLeft(bool RightToLeft)
{
    VisualStyle look = VisualStyle::Stored();
    look.RightToLeft = RightToLeft;
    look.Store();
    QApplication::setLayoutDirection(RightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
}

void frmClient::ConnectCommands()
{
    const QHash<int, std::function<void()>> handlers = {
        {ID_UPLEVEL, [this] { ExplorerBar->ExplorerBarTop(); }},
        {ID_ADDACCOUNT, [this] { ShowAccount(nullptr); }},
        {ID_ADDTRIGGER, [this] { AddTrigger(); }},
        {ID_PROPERTIES, [this] { OpenKey(List->SelectedKey()); }},
        {ID_DELETE, [this] { DeleteSelected(); }},
        {ID_ENABLE, [this] { EnableSelected(true); }},
        {ID_DISABLE, [this] { EnableSelected(false); }},
        {ID_RUNWITH, [this] { RunWith(); }},
        {ID_COPYTRIGGER, [this] { CopyTrigger(); }},
        {ID_PASTETRIGGER, [this] { PasteTrigger(); }},
        {ID_ADDUSER, [this] { ShowUser(nullptr); }},
        {ID_DEPLOYTO, [this] {
             if (QDialog *dialog = MakeDeployDialog(List->CurrentAccountID, this)) {
                 dialog->exec();
                 delete dialog;
             }
         }},
        {ID_EDITUSER, [this] { ShowUser(Users().Item(List->CurrentUserID)); }},
        {ID_DELETEUSER, [this] { ExplorerBar->DeleteUser(); }},
        {ID_VIEWICONS, [this] { List->SetView(frmList::ViewIcons); }},
        {ID_VIEWLIST, [this] { List->SetView(frmList::ViewList); }},
        {ID_VIEWREPORT, [this] { List->SetView(frmList::ViewReport); }},
        {ID_REFRESH, [] {
             Remote().HTTPGet(Requests::GetUsers());
             Remote().HTTPGet(Requests::GetAccounts());
         }},
        {ID_CHECKNOW, [this] { CheckNow(); }},
        {ID_PRINT, [this] { PrintList(); }},
        {ID_OPTIONS, [this] {
             frmOptions options(this);
             options.exec();
         }},
        {ID_MAILSERVERLOG, [this] {
             QDockWidget *pane = qobject_cast<QDockWidget *>(LogPaneMailServer->parentWidget());
             pane->show();
             pane->raise();
         }},
        {ID_CLEARSTORE, [this] { ClearMessageStore(); }},
        {ID_MINIMIZERIBBON, [this] { CommandBar->SetMinimized(true); }},
        {ID_EXPANDRIBBON, [this] { CommandBar->SetMinimized(false); }},
        {ID_RIGHTTOLEFT, [this] { ChooseRightToLeft(Command(ID_RIGHTTOLEFT)->isChecked()); }},
    };
    for (auto handler = handlers.begin(); handler != handlers.end(); ++handler)
        connect(Command(handler.key()), &QAction::triggered, this, handler.value());
    const QString site = QStringLiteral("https://www.") + Global.AppDomain + u'/';
    for (const auto &[id, page] : {std::pair{ID_HELPTOPICS, "help/"}, std::pair{ID_HELP, "help/"},
                                   std::pair{ID_SUPPORTFORUM, "forum/"}, std::pair{ID_LIVECHAT, "chat/"},
                                   std::pair{ID_SUPPORTTICKET, "support/"}, std::pair{ID_TRAINING, "training/"}}) {
        connect(Command(id), &QAction::triggered, this,
                [url = site + QString::fromLatin1(page)] { QDesktopServices::openUrl(QUrl(url)); });
    }
    for (int i = 0; i < VisualStyle::ThemeNames().size(); ++i)
        connect(Command(ID_THEME + i), &QAction::triggered, this, [this, i] { ChooseTheme(i); });
    for (int i = 0; i < VisualStyle::FontSizeNames().size(); ++i)
        connect(Command(ID_FONTSIZE + i), &QAction::triggered, this, [this, i] { ChooseFontSize(i); });
    for (int id = ID_GETVIAEMAIL; id <= ID_ACCOUNTCANCEL; ++id)
        connect(Command(id), &QAction::triggered, this, [this, id] { RunContextCommand(id); });
    for (int id = ID_TRIGGERCONDITIONS; id <= ID_TRIGGERCANCEL; ++id)
        connect(Command(id), &QAction::triggered, this, [this, id] { RunContextCommand(id); });
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { FollowFocus(now); });
    // The windows of these commands come with the message views, the
    // dashboard and the mail server's queue monitor; until then they stay
    // greyed.
    for (int id : {ID_VIEWPROCESSED, ID_VIEWSCHEDULED, ID_VIEWMYMESSAGES, ID_VIEWDASHBOARD,
                   ID_VIEWUSERMESSAGES, ID_PENDINGMESSAGES, ID_RECENTLYSENT, ID_RECENTLYFAILED,
                   ID_POP3USERS, ID_IMAPUSERS})
        Command(id)->setEnabled(false);
}

void frmClient::FollowFocus(QWidget *Now)
{
    QWidget *window = Now ? Now->window() : nullptr;
    if (!window)
        return;
    QWidget *tab = window->objectName() == QStringLiteral("frmTrigger")   ? TriggerSettingsTab
                   : window->objectName() == QStringLiteral("frmAccount") ? AccountSettingsTab
                                                                          : nullptr;
    if (!tab)
        return;
    if (m_contextEditor != window) {
        m_contextEditor = window;
        connect(window, &QObject::destroyed, this, [this] {
            // The pointer is cleared once the window has gone.
            QTimer::singleShot(0, this, [this] {
                if (!m_contextEditor)
                    ShowContextualTab(nullptr);
            });
        });
    }
    ShowContextualTab(tab);
}

void frmClient::RunContextCommand(int ID)
{
    if (!m_contextEditor || !RunEditorCommand)
        return;
    if (ID >= ID_TRIGGERCONDITIONS && ID <= ID_NOTES) {
        for (int page = ID_TRIGGERCONDITIONS; page <= ID_NOTES; ++page)
            Command(page)->setChecked(page == ID);
    }
    RunEditorCommand(m_contextEditor, ID);
}

void frmClient::CreateNavigator()
{
    List = new frmList(centralWidget());
    centralWidget()->layout()->addWidget(List);
    static_cast<QVBoxLayout *>(centralWidget()->layout())->setStretchFactor(List, 1);
    List->SetView(AccountsViewType);
    for (int id : {ID_DELETE, ID_COPYTRIGGER, ID_PASTETRIGGER})
        List->addAction(Command(id));

    frmExplorerBar::Tasks tasks;
    tasks.AddAccount = Command(ID_ADDACCOUNT);
    tasks.AddTrigger = Command(ID_ADDTRIGGER);
    tasks.Properties = Command(ID_PROPERTIES);
    tasks.Delete = Command(ID_DELETE);
    tasks.RunWith = Command(ID_RUNWITH);
    tasks.AddUser = Command(ID_ADDUSER);
    tasks.DeleteUser = Command(ID_DELETEUSER);
    tasks.UpLevel = Command(ID_UPLEVEL);
    auto *dock = new QDockWidget(QStringLiteral("Navigator"), this);
    dock->setObjectName(QStringLiteral("PaneNavigator"));
    dock->setProperty(PaneIDProperty, 6);
    dock->setFeatures(QDockWidget::DockWidgetMovable);
    ExplorerBar = new frmExplorerBar(List, tasks, dock);
    dock->setWidget(ExplorerBar);
    addDockWidget(Qt::LeftDockWidgetArea, dock);
    Panes.append(dock);

    connect(List, &frmList::Opened, this, [this](const QString &key) {
        if (key.startsWith(u'A')) {
            // An account opens into its triggers, as in a folder view.
            List->CurrentAccountID = key.mid(1);
            List->CurrentTriggerID.clear();
            ExplorerBar->ExplorerBarAccount();
        } else {
            OpenKey(key);
        }
    });
    connect(List, &frmList::SelectionChanged, this, [this](const QString &key) {
        if (key.startsWith(u'U'))
            ExplorerBar->ExplorerBarUser();
        else if (key.startsWith(u'T'))
            ExplorerBar->ExplorerBarAccount();
        UpdateCommands();
    });
    connect(List, &frmList::ContextMenuRequested, this, &frmClient::ShowListMenu);
    connect(ExplorerBar, &frmExplorerBar::PageChanged, this, &frmClient::UpdateCommands);
    for (QAction *kind : {Command(ID_VIEWICONS), Command(ID_VIEWLIST), Command(ID_VIEWREPORT)})
        connect(kind, &QAction::triggered, this, [this] {
            AccountsViewType = qint16(List->View());
            for (int view = 0; view < 3; ++view)
                Command(ID_VIEWICONS + view)->setChecked(view == AccountsViewType);
        });
    Command(ID_VIEWICONS + List->View())->setChecked(true);
}

void frmClient::ShowListMenu(const QPoint &Position)
{
    QMenu menu(this);
    if (List->Level == frmList::LevelUsers) {
        for (int id : {ID_ADDUSER, ID_EDITUSER, ID_DELETEUSER, ID_VIEWUSERMESSAGES})
            menu.addAction(Command(id));
    } else {
        QAction *open = menu.addAction(QStringLiteral("Open"));
        open->setEnabled(!List->SelectedKey().isEmpty() && Global.Connected);
        connect(open, &QAction::triggered, this, [this] { emit List->Opened(List->SelectedKey()); });
        for (int id : {ID_PROPERTIES, ID_ADDACCOUNT, ID_ADDTRIGGER, ID_VIEWPROCESSED, ID_VIEWSCHEDULED, ID_COPYTRIGGER,
                       ID_PASTETRIGGER, ID_DELETE, ID_ENABLE, ID_DISABLE, ID_RUNWITH, ID_DEPLOYTO})
            menu.addAction(Command(id));
    }
    menu.exec(Position);
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
    connect(&remote, &frmRemote::AccountsRefreshed, this, &frmClient::ScheduleRefresh);
    connect(&remote, &frmRemote::ChannelRestored, this, [this] {
        // Not inside the push handler: the log-on turns its own event loops.
        QTimer::singleShot(0, this, &frmClient::Reconnect);
    });
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
    const QString accounts = DictText("STATACCOUNTS", "Accounts:") + u' ' + QString::number(Accounts().Count());
    const QString triggers = DictText("STATTRIGGERS", "Triggers:") + u' ' + QString::number(Accounts().TotalTriggers());
    m_accounts->setText(accounts);
    m_triggers->setText(triggers);
    if (m_statAccounts) {
        m_statAccounts->setText(accounts);
        m_statTriggers->setText(triggers);
        m_statEdgeQueue->setText(DictText("STATEDGEQUEUE", "Pending Edge Queue:") + u' '
                                 + PendingEdgeQueue);
    }
}

// A reply that replaced the accounts refreshes the navigator once the
// request that brought it has ended, never inside its wait.
void frmClient::ScheduleRefresh()
{
    if (m_refreshPending)
        return;
    m_refreshPending = true;
    QTimer::singleShot(0, this, [this] {
        m_refreshPending = false;
        RefreshStatistics();
        // The accounts may be new objects: an open trigger list is refilled too.
        List->ListedAccountID.clear();
        if (Global.Connected)
            ExplorerBar->ExplorerBarRefresh();
    });
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
    UpdateCommands();
    RefreshServiceState();
    StatusText(QString());
}

void frmClient::UpdateCommands()
{
    const bool connected = Global.Connected;
    const QString key = List ? List->SelectedKey() : QString();
    const QChar kind = key.isEmpty() ? QChar() : key.at(0);
    const bool accountOpen = List && !List->CurrentAccountID.isEmpty() && List->Level != frmList::LevelUsers;
    const bool record = kind == u'A' || kind == u'T';
    Command(ID_ADDTRIGGER)->setEnabled(connected && accountOpen && MakeTriggerEditor);
    Command(ID_ADDACCOUNT)->setEnabled(connected && MakeAccountEditor);
    Command(ID_PROPERTIES)->setEnabled(connected && record && (kind == u'A' ? bool(MakeAccountEditor) : bool(MakeTriggerEditor)));
    Command(ID_DELETE)->setEnabled(connected && (record || kind == u'U'));
    Command(ID_ENABLE)->setEnabled(connected && record);
    Command(ID_DISABLE)->setEnabled(connected && record);
    Command(ID_COPYTRIGGER)->setEnabled(connected && kind == u'T');
    Command(ID_RUNWITH)->setEnabled(connected && kind == u'T' && MakeRunWithDialog);
    Command(ID_PASTETRIGGER)->setEnabled(connected && accountOpen && !CopiedTrigger.isEmpty());
    Command(ID_ADDUSER)->setEnabled(connected && MakeUserEditor);
    Command(ID_EDITUSER)->setEnabled(connected && kind == u'U' && MakeUserEditor);
    Command(ID_DELETEUSER)->setEnabled(connected && kind == u'U');
    Command(ID_DEPLOYTO)->setEnabled(connected && kind == u'A' && MakeDeployDialog);
    Command(ID_UPLEVEL)->setEnabled(connected && List && List->Level != frmList::LevelAccounts);
}

bool frmClient::RaiseEditor(const char *Name, const QString &RecordID)
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QLatin1String(Name) && window->property("RecordID").toString() == RecordID
            && window->isVisible()) {
            window->raise();
            window->activateWindow();
            return true;
        }
    }
    return false;
}

void frmClient::OpenEditor(QWidget *Editor, const QString &Title, const QString &RecordID)
{
    if (!Editor)
        return;
    Editor->setProperty("RecordID", RecordID);
    Editor->setWindowTitle(Title);
    // What the editor saved shows in the list once it has closed.
    connect(Editor, &QObject::destroyed, this, [this] {
        if (Global.Connected)
            ExplorerBar->ExplorerBarRefresh();
    });
    Editor->show();
}

void frmClient::ShowAccount(clsAccount *Account)
{
    if (!MakeAccountEditor)
        return;
    if (!Account) {
        OpenEditor(MakeAccountEditor(nullptr), DictText("NEWACCOUNT", "New Account"), QString());
        return;
    }
    const QString accountID = Account->AccountID;
    if (RaiseEditor("frmAccount", accountID))
        return;
    if (!ServerCommand(Requests::GetAccount(accountID)) || !ServerCommand(Requests::GetTriggerConditions(accountID)))
        return;
    if ((Account = Accounts().Item(accountID)))
        OpenEditor(MakeAccountEditor(Account), QStringLiteral("Account: ") + Account->Name, accountID);
}

void frmClient::ShowTrigger(clsAccount *Account, clsAccountTrigger *Trigger)
{
    if (!MakeTriggerEditor || !Account)
        return;
    const QString accountID = Account->AccountID;
    if (!Trigger) {
        OpenEditor(MakeTriggerEditor(Account, nullptr), QStringLiteral("New Trigger For ") + Account->Name, QString());
        return;
    }
    const QString triggerID = Trigger->TriggerID;
    if (RaiseEditor("frmTrigger", triggerID) || !ServerCommand(Requests::GetTrigger(accountID, triggerID)))
        return;
    Account = Accounts().Item(accountID);
    Trigger = Account ? Account->Triggers.Item(triggerID) : nullptr;
    if (Trigger)
        OpenEditor(MakeTriggerEditor(Account, Trigger),
                   QStringLiteral("Trigger: ") + Trigger->Name + QStringLiteral(" For ") + Account->Name, triggerID);
}

void frmClient::ShowUser(clsUser *User)
{
    if (!MakeUserEditor)
        return;
    if (!User) {
        OpenEditor(MakeUserEditor(nullptr), DictText("NEWUSER", "New User"), QString());
        return;
    }
    const QString userID = User->ID;
    if (RaiseEditor("frmUser", userID) || !ServerCommand(Requests::GetUser(userID)))
        return;
    if ((User = Users().Item(userID)))
        OpenEditor(MakeUserEditor(User), QStringLiteral("User: ") + User->Username, userID);
}

void frmClient::OpenKey(const QString &Key)
{
    if (Key.size() < 2 || !Global.Connected)
        return;
    const QString id = Key.mid(1);
    switch (Key.at(0).unicode()) {
    case u'A':
        ShowAccount(Accounts().Item(id));
        break;
    case u'T':
        if (clsAccount *account = Accounts().Item(List->CurrentAccountID))
            ShowTrigger(account, account->Triggers.Item(id));
        break;
    case u'U':
        ShowUser(Users().Item(id));
        break;
    }
}

void frmClient::AddTrigger()
{
    clsAccount *account = Accounts().Item(List->CurrentAccountID);
    if (!account)
        return;
    if (Accounts().HasSamples() && account->Sample) {
        const auto answer = ShowTaskDialog(
            this, DictText("SAMPLETRIGGER1", "Please Note: This is the Samples account."),
            DictText("SAMPLETRIGGER2", "Triggers created in the Samples account are for demonstration."),
            DictText("NEWTRIGGER", "Do you want to create a new Trigger for this account?"), QMessageBox::Yes | QMessageBox::No);
        if (answer != QMessageBox::Yes)
            return;
    }
    ShowTrigger(account, nullptr);
}

void frmClient::DeleteSelected()
{
    const QString key = List->SelectedKey();
    if (key.startsWith(u'A'))
        ExplorerBar->DeleteAccount();
    else if (key.startsWith(u'T'))
        ExplorerBar->DeleteTrigger();
    else if (key.startsWith(u'U'))
        ExplorerBar->DeleteUser();
}

void frmClient::EnableSelected(bool Enable)
{
    const QString key = List->SelectedKey();
    const QString accountID = List->CurrentAccountID;
    if (key.startsWith(u'A')) {
        const QString request = Enable ? Requests::EnableAccount(accountID) : Requests::DisableAccount(accountID);
        if (ServerCommand(request))
            Remote().HTTPGet(Requests::GetAccount(accountID));
    } else if (key.startsWith(u'T')) {
        const QString triggerID = key.mid(1);
        const QString request = Enable ? Requests::EnableTrigger(accountID, triggerID)
                                       : Requests::DisableTrigger(accountID, triggerID);
        if (ServerCommand(request) && Remote().HTTPGet(Requests::GetTrigger(accountID, triggerID)))
            Remote().HTTPGet(Requests::GetTriggerConditions(accountID));
    } else {
        return;
    }
    List->RefillList();
}

void frmClient::RunWith()
{
    const QString key = List->SelectedKey();
    const QString accountID = List->CurrentAccountID;
    // The sample message is kept on the trigger: the server's copy is the one to start from.
    if (!MakeRunWithDialog || !key.startsWith(u'T') || !ServerCommand(Requests::GetTrigger(accountID, key.mid(1))))
        return;
    clsAccount *account = Accounts().Item(accountID);
    clsAccountTrigger *trigger = account ? account->Triggers.Item(key.mid(1)) : nullptr;
    if (!trigger)
        return;
    std::unique_ptr<QDialog> dialog(MakeRunWithDialog(trigger, this));
    if (dialog)
        dialog->exec();
}

void frmClient::CopyTrigger()
{
    const QString key = List->SelectedKey();
    const QString accountID = List->CurrentAccountID;
    if (!key.startsWith(u'T') || !ServerCommand(Requests::GetTrigger(accountID, key.mid(1))))
        return;
    const clsAccount *account = Accounts().Item(accountID);
    const clsAccountTrigger *trigger = account ? account->Triggers.Item(key.mid(1)) : nullptr;
    if (!trigger)
        return;
    CopiedTrigger = trigger->XML();
    UpdateCommands();
}

void frmClient::PasteTrigger()
{
    clsAccount *account = Accounts().Item(List->CurrentAccountID);
    if (!account || CopiedTrigger.isEmpty())
        return;
    auto pasted = std::make_unique<clsAccountTrigger>();
    pasted->setXML(CopiedTrigger);
    pasted->TriggerID = NewUniqueID();
    pasted->Name = QStringLiteral("Copy of ") + pasted->Name;
    const QString accountID = account->AccountID;
    const QString triggerID = pasted->TriggerID;
    clsAccountTrigger *trigger = account->Triggers.Add(std::move(pasted));
    if (!trigger)
        return;
    const bool stored = Remote().SendTrigger(*trigger);
    account = Accounts().Item(accountID);
    if (!stored && account)
        account->Triggers.Delete(triggerID);
    List->CurrentTriggerID = stored ? triggerID : List->CurrentTriggerID;
    List->FillTriggerList();
}

void frmClient::PrintList()
{
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() == QDialog::Accepted)
        PrintList(printer);
}

void frmClient::PrintList(QPrinter &Printer)
{
    QTextDocument document;
    document.setHtml(List->PrintDocument());
    document.print(&Printer);
}

void frmClient::CheckNow()
{
    if (ShowTaskDialog(this, DictText("CHECKNOW1", "Check For New Messages Now?"),
                       DictText("CHECKNOW2", "All enabled Accounts will be checked for new messages now."), QString(),
                       QMessageBox::Yes | QMessageBox::No)
        == QMessageBox::Yes)
        ServerCommand(Requests::CheckNow());
}

void frmClient::ClearMessageStore()
{
    if (ShowTaskDialog(this, DictText("CLEARMSGSTORE1", "Clear Message Store?"), QString(), QString(),
                       QMessageBox::Yes | QMessageBox::No)
            == QMessageBox::Yes
        && ServerCommand(Requests::DeleteMailStore()))
        ServerCommand(Requests::DeleteLog());
}

void frmClient::FirstConnect()
{
    RefreshStatistics();
    List->CurrentAccountID.clear();
    List->CurrentTriggerID.clear();
    ExplorerBar->ExplorerBarTop();
    if (const clsAccount *first = Accounts().Item(1)) {
        List->CurrentAccountID = first->AccountID;
        ExplorerBar->ExplorerBarAccount();
    }
    UpdateCommands();
}

void frmClient::Reconnect()
{
    frmRemote &remote = Remote();
    if (Global.Connected || remote.Closing)
        return;
    // Every request carries the credentials: a session reply is all it takes.
    if (!remote.HTTPGet(Requests::GetSession(), 10, true) || remote.StatusCode != 200
        || remote.ReplyText.startsWith(QStringLiteral("Error:")))
        return;
    DismissMessageBar();
    ToolBarConnected(true);
    // An open editor holds the records it edits: the collections are only
    // replaced when none is open.
    const QWidgetList windows = QApplication::topLevelWidgets();
    if (std::any_of(windows.begin(), windows.end(), [](const QWidget *window) { return IsEditor(window); }))
        return;
    if (remote.HTTPGet(Requests::GetUsers()) && remote.HTTPGet(Requests::GetAccounts()))
        FirstConnect();
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
    if (Global.Connected)
        FirstConnect();
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
