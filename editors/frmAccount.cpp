#include "frmAccount.h"
#include "DatabaseTest.h"
#include "EditorBoxes.h"
#include "MailboxProbe.h"
#include "SourceTabWidget.h"
#include "WebLookup.h"
#include "frmAccountEdgeServer.h"
#include "frmAccountSchedule.h"
#include "frmInputEditor.h"
#include "frmREOrderTriggers.h"
#include "foundation/GlobalBlock.h"
#include "foundation/TextHelpers.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "session/Requests.h"
#include "session/frmRemote.h"
#include "workbench/RibbonBar.h"
#include "workbench/TaskDialog.h"
#include "workbench/frmClient.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QStorageInfo>
#include <QTabWidget>
#include <QThread>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

namespace {

constexpr int PathRole = Qt::UserRole;

QPushButton *Button(const QString &Text, QWidget *Parent, const std::function<void()> &Run)
{
    auto *button = new QPushButton(Text, Parent);
    QObject::connect(button, &QPushButton::clicked, Parent, Run);
    return button;
}

QLineEdit *Password(QWidget *Parent)
{
    auto *edit = new QLineEdit(Parent);
    edit->setEchoMode(QLineEdit::Password);
    return edit;
}

QLineEdit *PortEdit(QWidget *Parent)
{
    auto *edit = new QLineEdit(Parent);
    edit->setValidator(new QIntValidator(0, 65535, edit));
    edit->setMaximumWidth(80);
    return edit;
}

QHBoxLayout *Row(std::initializer_list<QWidget *> Widgets, bool Stretch = true)
{
    auto *row = new QHBoxLayout;
    for (QWidget *widget : Widgets)
        row->addWidget(widget);
    if (Stretch)
        row->addStretch();
    return row;
}

frmClient *MainWindow()
{
    for (QWidget *window : QApplication::topLevelWidgets())
        if (auto *client = qobject_cast<frmClient *>(window))
            return client;
    return nullptr;
}

// A file system that lives on another machine.
bool OnNetworkDrive(const QString &Path)
{
    static const QStringList remote = {QStringLiteral("nfs"), QStringLiteral("nfs4"), QStringLiteral("cifs"),
                                       QStringLiteral("smb3"), QStringLiteral("smbfs"), QStringLiteral("fuse.sshfs"),
                                       QStringLiteral("9p")};
    return remote.contains(QString::fromLatin1(QStorageInfo(Path).fileSystemType()));
}

bool ValidDomains(const QString &Domains)
{
    static const QRegularExpression domain(QStringLiteral("^[A-Za-z0-9*?]([A-Za-z0-9*?-]*[A-Za-z0-9*?])?"
                                                          "(\\.[A-Za-z0-9*?]([A-Za-z0-9*?-]*[A-Za-z0-9*?])?)+$"));
    const QStringList parts = Domains.split(u';', Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return false;
    for (const QString &part : parts)
        if (!domain.match(part.trimmed()).hasMatch())
            return false;
    return true;
}

} // namespace

frmAccount::frmAccount(clsAccount *Account, QWidget *parent) : QWidget(parent), Edited(std::make_unique<clsAccount>())
{
    setObjectName(QStringLiteral("frmAccount"));
    setWindowTitle(EditorText("ACCOUNTTITLE", "Message Retrieval Account"));
    IsNew = Account == nullptr;
    if (Account) {
        // The copy must not take the outbox role from the account it copies.
        clsAccount *outbox = OutboxAccount;
        Edited->setXML(Account->XML());
        OutboxAccount = outbox;
    } else if (Global.Hosted) {
        Edited->SCHEDULE = QStringLiteral("05|YYYYYYY");
    }

    Tabs = new SourceTabWidget(this);
    Tabs->addTab(MakeGeneralPage(), QString());
    Tabs->addTab(MakeEmailPage(), QString());
    Tabs->addTab(MakeDirectPage(), QString());
    Tabs->addTab(MakeFilePickupPage(), QString());
    Tabs->addTab(MakeDatabasePullPage(), QString());
    Tabs->addTab(MakeHTTPPage(), QString());
    Tabs->addTab(MakeRSSPage(), QString());
    Tabs->addTab(MakeClientsPage(), QString());
    Tabs->addTab(MakeTwitterPage(), QString());
    Tabs->addTab(MakeCSVPickupPage(), QString());

    btnOK = Button(EditorText("SAVECHANGES", "Save Changes"), this, [this] {
        if (ButtonOK())
            close();
    });
    btnOK->setDefault(true);
    btnCancel = Button(EditorText("CANCEL", "Cancel"), this, [this] { close(); });
    btnHelp = Button(EditorText("HELP", "Help"), this, [this] {
        static const QStringList topics = {
            QStringLiteral("Creating_An_Email_Account"), QStringLiteral("Reading_Email_Messages1"),
            QStringLiteral("Direct_Send_Mail_Server"), QStringLiteral("From_File_Pickup"),
            QStringLiteral("DatabasePull"), QStringLiteral("Web_Page_Lookup"), QStringLiteral("RSSFeed"),
            QStringLiteral("Network_Users"), QStringLiteral("Creating_An_Email_Account"),
            QStringLiteral("From_File_Pickup")};
        const QString topic = chkOutBox->isChecked() ? QStringLiteral("Outbox") : topics.value(Tabs->currentIndex());
        QDesktopServices::openUrl(
            QUrl(QStringLiteral("https://") + Global.AppDomain + QStringLiteral("/help/") + topic + QStringLiteral(".htm")));
    });
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(btnHelp);
    buttons->addStretch();
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(Tabs);
    layout->addLayout(buttons);
    resize(1000, 640);

    UnCrunch();
    WatchChanges();
}

frmAccount::~frmAccount() = default;

QGroupBox *frmAccount::SwitchFrame(const QString &Caption, QWidget *Page)
{
    auto *frame = new QGroupBox(Caption, Page);
    frame->setCheckable(true);
    frame->setChecked(false);
    connect(frame, &QGroupBox::toggled, this, [this] {
        ShowCaptions();
        if (isActiveWindow())
            SyncSourceCommands();
    });
    return frame;
}

QWidget *frmAccount::MakeGeneralPage()
{
    auto *page = new QWidget(this);
    txtName = new QLineEdit(page);
    txtDetails = new QLineEdit(page);
    chkEnabled = new QCheckBox(EditorText("ACCOUNTENABLED", "Enabled"), page);
    chkOutBox = new QCheckBox(EditorText("ACCOUNTOUTBOX", "Outbox"), page);
    chkSample = new QCheckBox(EditorText("ACCOUNTSAMPLE", "Sample (Hidden)"), page);
    chkStoreFull = new QCheckBox(EditorText("ACCOUNTSTOREFULL", "Store Full Copy Of Each &Message In The Message Store"), page);
    chkUnzip = new QCheckBox(EditorText("ACCOUNTUNZIP", "&Unzip Zipped Attachments Before Parsing"), page);
    chkAppendText = new QCheckBox(
        EditorText("ACCOUNTAPPENDTEXT", "Append Text, Rich Text, Word && PDF Attachments To Body For Parsing"), page);
    chkStopOnError = new QCheckBox(
        EditorText("ACCOUNTAUTOPAUSE", "Disa&ble Processing Of Further Messages If Trigger Error Occurs"), page);
    chkDeleteAfter = new QCheckBox(EditorText("ACCOUNTARCHIVE", "Delete Stored Messages After"), page);
    txtDeleteAfterDays = new QSpinBox(page);
    txtDeleteAfterDays->setRange(0, 32767);
    txtDeleteAfterDays->setSuffix(EditorText("ACCOUNTDAYS", " Days"));
    chkMarkAsRead = new QCheckBox(EditorText("ACCOUNTMARKASREAD", "Mark New Messages As Read:"), page);
    cmboMarkAsReadType = new QComboBox(page);
    cmboMarkAsReadType->addItems({EditorText("MARKREADALWAYS", "Always"),
                                  EditorText("MARKREADSOURCE", "Only If Marked As Read At Source")});
    connect(chkDeleteAfter, &QCheckBox::toggled, txtDeleteAfterDays, &QWidget::setEnabled);
    connect(chkMarkAsRead, &QCheckBox::toggled, cmboMarkAsReadType, &QWidget::setEnabled);
    connect(chkOutBox, &QCheckBox::toggled, this, &frmAccount::OutboxChanged);

    lblSchedule = new QLabel(page);
    btnSchedule = Button(EditorText("DEFINESCHEDULE", "&Define Schedule"), page, [this] { DefineSchedule(); });
    lblEdgeServer = new QLabel(page);
    btnEdgeServer = Button(EditorText("EDGESERVERBTN", "Read Messa&ges Via Edge Server"), page,
                           [this] { ChooseEdgeServer(); });
    btnReorderTriggers = Button(EditorText("REORDERTRIGGERS", "&Order Triggers"), page, [this] { ReorderTriggers(); });

    auto *form = new QFormLayout;
    form->addRow(EditorText("ACCOUNTNAME", "Name:"), txtName);
    form->addRow(EditorText("ACCOUNTDETAILS", "Description:"), txtDetails);
    auto *flags = new QVBoxLayout;
    flags->addLayout(Row({chkEnabled, chkOutBox, chkSample}));
    for (QWidget *check : {static_cast<QWidget *>(chkStoreFull), static_cast<QWidget *>(chkUnzip),
                           static_cast<QWidget *>(chkAppendText), static_cast<QWidget *>(chkStopOnError)})
        flags->addWidget(check);
    flags->addLayout(Row({chkDeleteAfter, txtDeleteAfterDays}));
    flags->addLayout(Row({chkMarkAsRead, cmboMarkAsReadType}));
    auto *schedule = new QGroupBox(EditorText("ACCOUNTSCHEDULE", "Schedule"), page);
    auto *scheduleLayout = new QVBoxLayout(schedule);
    scheduleLayout->addLayout(Row({btnSchedule, lblSchedule}));
    scheduleLayout->addLayout(Row({btnEdgeServer, lblEdgeServer}));
    scheduleLayout->addLayout(Row({btnReorderTriggers}));
    auto *layout = new QVBoxLayout(page);
    layout->addLayout(form);
    layout->addLayout(flags);
    layout->addWidget(schedule);
    layout->addStretch();
    return page;
}

QWidget *frmAccount::MakeEmailPage()
{
    auto *page = new QWidget(this);
    TabsRead = new SourceTabWidget(page);
    TabsRead->addTab(MakeIMAPPage(), QString());
    TabsRead->addTab(MakePOP3Page(), QString());
    TabsRead->addTab(MakeExchangePage(), QString());
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(TabsRead);
    return page;
}

QWidget *frmAccount::MakeIMAPPage()
{
    auto *page = new QWidget(this);
    FrameIMAP = SwitchFrame(EditorText("FRAMEIMAP", "Read Emails From An IMAP Server"), page);
    txtIMAPServer = new QLineEdit(FrameIMAP);
    txtIMAPPort = PortEdit(FrameIMAP);
    chkIMAPSSL = new QCheckBox(EditorText("SERVERSSL", "Server Requires Encr&ypted Connection (SSL)"), FrameIMAP);
    txtIMAPAccount = new QLineEdit(FrameIMAP);
    txtIMAPPassword = Password(FrameIMAP);
    btnIMAPConnect = Button(EditorText("CONNECT", "Connect"), FrameIMAP, [this] { ConnectIMAP(); });
    TreeIMAP = new QTreeWidget(FrameIMAP);
    TreeIMAPMove = new QTreeWidget(FrameIMAP);
    for (QTreeWidget *tree : {TreeIMAP, TreeIMAPMove})
        tree->setHeaderHidden(true);
    chkIMAPMove = new QCheckBox(EditorText("IMAPMOVE", "Move Processed Messages To Folder:"), FrameIMAP);
    chkIMAPDelete = new QCheckBox(EditorText("DELETEPROCESSED", "Delete Processed Messages"), FrameIMAP);
    chkIMAPDeleteAll = new QCheckBox(EditorText("DELETEALLCHECKED", "Delete All Checked Messages"), FrameIMAP);
    chkIMAPMarkAsRead = new QCheckBox(EditorText("IMAPMARKASSEEN", "Mark As Seen"), FrameIMAP);
    chkIMAPServerIDs = new QCheckBox(EditorText("IMAPSERVERIDS", "Use Server Generated Message ID's"), FrameIMAP);
    connect(chkIMAPSSL, &QCheckBox::toggled, this, [this](bool On) {
        if (!m_filling)
            txtIMAPPort->setText(On ? QStringLiteral("993") : QStringLiteral("143"));
    });
    connect(chkIMAPDelete, &QCheckBox::toggled, this, &frmAccount::IMAPDeleteChanged);
    connect(chkIMAPMove, &QCheckBox::toggled, TreeIMAPMove, &QWidget::setEnabled);
    connect(txtIMAPServer, &QLineEdit::editingFinished, this, &frmAccount::IMAPServerEdited);

    auto *form = new QFormLayout;
    form->addRow(EditorText("IMAPSERVER", "IMAP Server:"), Row({txtIMAPServer}, false));
    form->addRow(EditorText("PORT", "Port:"), Row({txtIMAPPort, chkIMAPSSL}));
    form->addRow(EditorText("ACCOUNTUSER", "Account:"), txtIMAPAccount);
    form->addRow(EditorText("ACCOUNTPASSWORD", "Password:"), Row({txtIMAPPassword, btnIMAPConnect}, false));
    auto *trees = new QHBoxLayout;
    auto *readTree = new QVBoxLayout;
    readTree->addWidget(new QLabel(EditorText("IMAPFOLDER", "Check Folder:"), FrameIMAP));
    readTree->addWidget(TreeIMAP);
    auto *moveTree = new QVBoxLayout;
    moveTree->addWidget(chkIMAPMove);
    moveTree->addWidget(TreeIMAPMove);
    trees->addLayout(readTree);
    trees->addLayout(moveTree);
    auto *frame = new QVBoxLayout(FrameIMAP);
    frame->addLayout(form);
    frame->addLayout(trees);
    frame->addLayout(Row({chkIMAPDelete, chkIMAPDeleteAll}));
    frame->addLayout(Row({chkIMAPMarkAsRead, chkIMAPServerIDs}));
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FrameIMAP);
    return page;
}

QWidget *frmAccount::MakePOP3Page()
{
    auto *page = new QWidget(this);
    FrameSMTP = SwitchFrame(EditorText("FRAMEPOP3", "Read Emails From A POP3 Server"), page);
    txtServer = new QLineEdit(FrameSMTP);
    txtPort = PortEdit(FrameSMTP);
    chkPOP3SSL = new QCheckBox(EditorText("SERVERSSL", "Server Requires Encr&ypted Connection (SSL)"), FrameSMTP);
    txtAccount = new QLineEdit(FrameSMTP);
    txtPassword = Password(FrameSMTP);
    chkDelete = new QCheckBox(EditorText("DELETEPROCESSED", "Delete Processed Messages"), FrameSMTP);
    chkDeleteAll = new QCheckBox(EditorText("DELETEALLCHECKED", "Delete All Checked Messages"), FrameSMTP);
    btnTest = Button(EditorText("TESTCONNECTION", "&Test Connection"), FrameSMTP, [this] { TestPOP3(); });
    connect(chkPOP3SSL, &QCheckBox::toggled, this, [this](bool On) {
        if (m_filling)
            return;
        const int port = txtPort->text().toInt();
        if (On && port < 900)
            txtPort->setText(QStringLiteral("995"));
        else if (!On && port > 900)
            txtPort->setText(QStringLiteral("110"));
    });
    auto *form = new QFormLayout(FrameSMTP);
    form->addRow(EditorText("POP3SERVER", "POP3 Server:"), txtServer);
    form->addRow(EditorText("PORT", "Port:"), Row({txtPort, chkPOP3SSL}));
    form->addRow(EditorText("ACCOUNTUSER", "Account:"), txtAccount);
    form->addRow(EditorText("ACCOUNTPASSWORD", "Password:"), txtPassword);
    form->addRow(Row({chkDelete, chkDeleteAll}));
    form->addRow(Row({btnTest}));
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FrameSMTP);
    layout->addStretch();
    return page;
}

QWidget *frmAccount::MakeExchangePage()
{
    auto *page = new QWidget(this);
    FrameExchange = SwitchFrame(EditorText("FRAMEEWS", "Read Emails Using Exchange 2007/2010 Web Services"), page);
    txtEWSUrl = new QLineEdit(FrameExchange);
    txtEWSUrl->setPlaceholderText(EWSPrompt);
    txtEWSUsername = new QLineEdit(FrameExchange);
    txtEWSPassword = Password(FrameExchange);
    txtEWSOtherMailbox = new QLineEdit(FrameExchange);
    btnExchangeSelect = Button(EditorText("EWSSELECT", "Select Folders"), FrameExchange, [this] {
        if (txtEWSUrl->text().trimmed().isEmpty() || txtEWSUrl->text() == EWSPrompt ||
            txtEWSUsername->text().trimmed().isEmpty() || txtEWSPassword->text().isEmpty()) {
            WarningBox(this, EditorText("EXCHANGEEWSNOUSER",
                                        "You must enter the Exchange Web Services URL, Username & Password"));
            return;
        }
        NotAvailable();
    });
    btnExchangeClearSync = Button(EditorText("EWSCLEARSYNC", "Reset Sync State"), FrameExchange,
                                  [this] { ClearExchangeSync(); });
    TreeExchange = new QTreeWidget(FrameExchange);
    TreeExchange->setHeaderHidden(true);
    chkEWSMove = new QCheckBox(EditorText("EWSMOVE", "Move Processed Messages To Folder:"), FrameExchange);
    txtEWSMoveToFolder = new QLineEdit(FrameExchange);
    chkEWSDeleteProcessed = new QCheckBox(EditorText("DELETEPROCESSED", "Delete Processed Messages"), FrameExchange);
    chkEWSDeleteAll = new QCheckBox(EditorText("DELETEALLCHECKED", "Delete All Checked Messages"), FrameExchange);
    auto *form = new QFormLayout(FrameExchange);
    form->addRow(EditorText("EWSURL", "EWS Url:"), txtEWSUrl);
    form->addRow(EditorText("ACCOUNTUSER", "Account:"), txtEWSUsername);
    form->addRow(EditorText("ACCOUNTPASSWORD", "Password:"), txtEWSPassword);
    form->addRow(EditorText("EWSOTHERMAILBOX", "Open Other Mailbox:"), txtEWSOtherMailbox);
    form->addRow(Row({btnExchangeSelect, btnExchangeClearSync}));
    form->addRow(TreeExchange);
    form->addRow(Row({chkEWSMove, txtEWSMoveToFolder}, false));
    form->addRow(Row({chkEWSDeleteProcessed, chkEWSDeleteAll}));
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FrameExchange);
    return page;
}

QWidget *frmAccount::MakeDirectPage()
{
    auto *page = new QWidget(this);
    FrameDirect = SwitchFrame(
        EditorText("FRAMEDIRECT", "Process Emails Received Via T&he %APPNAME% Mail Server").replace(
            QStringLiteral("%APPNAME%"), Global.ProductName),
        page);
    txtSMTPDomain = new QLineEdit(FrameDirect);
    txtSMTPAliases = new QLineEdit(FrameDirect);
    auto *form = new QFormLayout(FrameDirect);
    form->setRowWrapPolicy(QFormLayout::WrapAllRows);
    form->addRow(EditorText("SMTPDOMAIN", "Process Emai&l For Domain(s):"), txtSMTPDomain);
    form->addRow(EditorText("SMTPALIASES", "Aliases: (&Wildcards allowed. Separate multiple addresses with ;)"),
                 txtSMTPAliases);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FrameDirect);
    layout->addStretch();
    return page;
}

QWidget *frmAccount::MakeFilePickupPage()
{
    auto *page = new QWidget(this);
    FrameFilePickup = SwitchFrame(EditorText("FRAMEFILEPICKUP", "Pick Up Message Files From A Folder"), page);
    txtFilePickupFolder = new QLineEdit(FrameFilePickup);
    txtFilePickupMask = new QLineEdit(FrameFilePickup);
    txtFilePickupMask->setPlaceholderText(QStringLiteral("*.eml"));
    btnFilePickupBrowse = Button(QStringLiteral("..."), FrameFilePickup, [this] {
        const QString folder = QFileDialog::getExistingDirectory(this, QString(), txtFilePickupFolder->text());
        if (!folder.isEmpty())
            txtFilePickupFolder->setText(folder);
    });
    auto *form = new QFormLayout(FrameFilePickup);
    form->addRow(EditorText("PICKUPFOLDER", "Folder:"), Row({txtFilePickupFolder, btnFilePickupBrowse}, false));
    form->addRow(EditorText("PICKUPMASK", "File Mask:"), txtFilePickupMask);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FrameFilePickup);
    layout->addStretch();
    return page;
}

QWidget *frmAccount::MakeCSVPickupPage()
{
    auto *page = new QWidget(this);
    FrameCSVPickup = SwitchFrame(EditorText("FRAMECSVPICKUP", "Pick Up CSV Or Excel Files From A Folder"), page);
    txtCSVPickupFolder = new QLineEdit(FrameCSVPickup);
    txtCSVPickupMask = new QLineEdit(FrameCSVPickup);
    txtCSVPickupMask->setPlaceholderText(QStringLiteral("*.xlsx"));
    btnCSVPickupBrowse = Button(QStringLiteral("..."), FrameCSVPickup, [this] {
        const QString folder = QFileDialog::getExistingDirectory(this, QString(), txtCSVPickupFolder->text());
        if (!folder.isEmpty())
            txtCSVPickupFolder->setText(folder);
    });
    chkCSVPickupDelete = new QCheckBox(EditorText("CSVDELETE", "Delete File After Pickup"), FrameCSVPickup);
    txtCSVPickupWorkSheet = new QLineEdit(FrameCSVPickup);
    txtCSVPickupHeaderRow = new QSpinBox(FrameCSVPickup);
    txtCSVPickupHeaderRow->setRange(0, 1048576);
    lblCSVPickupLastStatus = new QLabel(FrameCSVPickup);
    lblCSVPickupLastStatus->setWordWrap(true);
    auto *form = new QFormLayout(FrameCSVPickup);
    form->addRow(EditorText("PICKUPFOLDER", "Folder:"), Row({txtCSVPickupFolder, btnCSVPickupBrowse}, false));
    form->addRow(EditorText("PICKUPMASK", "File Mask:"), txtCSVPickupMask);
    form->addRow(chkCSVPickupDelete);
    form->addRow(EditorText("CSVWORKSHEET", "Use WorkSheet (Leave Blank For First):"), txtCSVPickupWorkSheet);
    form->addRow(EditorText("CSVHEADERROW", "Header Row (Zero For First Non Blank Row):"), txtCSVPickupHeaderRow);
    form->addRow(EditorText("CSVLASTSTATUS", "Last Status:"), lblCSVPickupLastStatus);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FrameCSVPickup);
    layout->addStretch();
    return page;
}

QWidget *frmAccount::MakeDatabasePullPage()
{
    auto *page = new QWidget(this);
    FrameDatabasePull = SwitchFrame(EditorText("FRAMEDBPULL", "Create Messages From Database Records"), page);
    txtDBConnection = new QLineEdit(FrameDatabasePull);
    txtDBSQL = new QPlainTextEdit(FrameDatabasePull);
    btnEditSQL = Button(EditorText("EDITSQL", "Edit..."), FrameDatabasePull, [this] {
        frmInputEditor editor(this);
        editor.setWindowTitle(EditorText("SQLEDITOR", "SQL Editor") + QStringLiteral(" - ") +
                              EditorText("SQLSELECT", "SQL Select Statement"));
        editor.setText(txtDBSQL->toPlainText());
        if (editor.exec() == QDialog::Accepted)
            txtDBSQL->setPlainText(editor.text());
    });
    btnLUTest = Button(EditorText("TESTCONNECTION", "&Test Connection"), FrameDatabasePull, [this] { TestDatabase(); });
    txtDBUIDField = new QLineEdit(FrameDatabasePull);
    chkDBMSGBody = new QCheckBox(EditorText("DBMSGBODY", "Assign All Query Fields To Message Body"), FrameDatabasePull);
    txtDBMessageField = new QLineEdit(FrameDatabasePull);
    chkDBDelete = new QCheckBox(EditorText("DBDELETE", "Delete Processed Records From Source Database"),
                                FrameDatabasePull);
    txtDBUpdateField = new QLineEdit(FrameDatabasePull);
    txtDBUpdateValue = new QLineEdit(FrameDatabasePull);
    connect(chkDBMSGBody, &QCheckBox::toggled, txtDBMessageField, &QWidget::setDisabled);
    auto *update = new QGroupBox(EditorText("DBUPDATE", "Update Processed Records"), FrameDatabasePull);
    auto *updateForm = new QFormLayout(update);
    updateForm->addRow(EditorText("DBUPDATEFIELD", "Set Field:"), txtDBUpdateField);
    updateForm->addRow(EditorText("DBUPDATEVALUE", "To Value:"), txtDBUpdateValue);
    auto *form = new QFormLayout(FrameDatabasePull);
    form->addRow(EditorText("DBCONNECTION", "Connection String:"), txtDBConnection);
    form->addRow(EditorText("SQLSELECT", "SQL Select Statement"), txtDBSQL);
    form->addRow(Row({btnEditSQL, btnLUTest}));
    form->addRow(EditorText("DBUIDFIELD", "Unique ID Field:"), txtDBUIDField);
    form->addRow(chkDBMSGBody);
    form->addRow(EditorText("DBMSGFIELD", "Use Message Text Field:"), txtDBMessageField);
    form->addRow(chkDBDelete);
    form->addRow(update);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FrameDatabasePull);
    return page;
}

QWidget *frmAccount::MakeHTTPPage()
{
    auto *page = new QWidget(this);
    FrameHTTP = SwitchFrame(EditorText("FRAMEHTTP", "Enable HTTP Lookup"), page);
    txtHTTPUrl = new QLineEdit(FrameHTTP);
    chkHTTPFollow = new QCheckBox(EditorText("HTTPFOLLOW", "&Follow Redirects"), FrameHTTP);
    cmboHTTPLogin = new QComboBox(FrameHTTP);
    cmboHTTPLogin->addItems({EditorText("HTTPLOGINNONE", "None"), EditorText("HTTPLOGINBASIC", "Basic"),
                             EditorText("HTTPLOGINDIGEST", "Digest")});
    txtHTTPUser = new QLineEdit(FrameHTTP);
    txtHTTPPass = Password(FrameHTTP);
    chkHTTPClean = new QCheckBox(
        EditorText("HTTPCLEAN", "Assign Cleaned Text To Message Body (Remo&ve All HTML Tags)"), FrameHTTP);
    chkHTTPFail = new QCheckBox(EditorText("HTTPFAIL", "If HTTP Lookup Fails Set Message To Failure Result"),
                                FrameHTTP);
    btnHTTPCheck = Button(EditorText("HTTPCHECK", "&Check URL"), FrameHTTP, [this] { CheckHTTP(); });
    connect(cmboHTTPLogin, &QComboBox::currentIndexChanged, this, [this](int Index) {
        txtHTTPUser->setEnabled(Index > 0);
        txtHTTPPass->setEnabled(Index > 0);
    });
    auto *form = new QFormLayout(FrameHTTP);
    form->addRow(EditorText("HTTPURL", "Loo&kup URL:"), txtHTTPUrl);
    form->addRow(chkHTTPFollow);
    form->addRow(EditorText("HTTPLOGIN", "Log-In:"), cmboHTTPLogin);
    form->addRow(EditorText("ACCOUNTUSER", "Account:"), txtHTTPUser);
    form->addRow(EditorText("ACCOUNTPASSWORD", "Password:"), txtHTTPPass);
    form->addRow(chkHTTPClean);
    form->addRow(chkHTTPFail);
    form->addRow(Row({btnHTTPCheck}));
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FrameHTTP);
    layout->addStretch();
    return page;
}

QWidget *frmAccount::MakeRSSPage()
{
    auto *page = new QWidget(this);
    FrameRSS = SwitchFrame(EditorText("FRAMERSS", "Read An RSS Or Atom Feed"), page);
    txtRSSUrl = new QLineEdit(FrameRSS);
    chkRSSAtom = new QCheckBox(EditorText("RSSATOM", "At&om Feed Instead Of RSS"), FrameRSS);
    btnRSSCheck = Button(EditorText("RSSCHECK", "&Check Feed"), FrameRSS, [this] { CheckRSS(); });
    auto *form = new QFormLayout(FrameRSS);
    form->addRow(EditorText("RSSURL", "Feed URL:"), txtRSSUrl);
    form->addRow(chkRSSAtom);
    form->addRow(Row({btnRSSCheck}));
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FrameRSS);
    layout->addStretch();
    return page;
}

QWidget *frmAccount::MakeClientsPage()
{
    auto *page = new QWidget(this);
    FrameDropbox = SwitchFrame(
        EditorText("FRAMEDROPBOX",
                   "Accept Messages From Remote %APPNAME% Clients && %APPNAME% Web Services")
            .replace(QStringLiteral("%APPNAME%"), Global.ProductName),
        page);
    txtDropBoxToAddress = new QLineEdit(FrameDropbox);
    txtDropBoxSubject = new QLineEdit(FrameDropbox);
    auto *form = new QFormLayout(FrameDropbox);
    form->setRowWrapPolicy(QFormLayout::WrapAllRows);
    form->addRow(EditorText("DROPBOXTO", "Default To Address (for messages with no headers):"), txtDropBoxToAddress);
    form->addRow(EditorText("DROPBOXSUBJECT", "Default Subject:"), txtDropBoxSubject);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FrameDropbox);
    layout->addStretch();
    return page;
}

QWidget *frmAccount::MakeTwitterPage()
{
    auto *page = new QWidget(this);
    FrameTwitter = SwitchFrame(EditorText("FRAMETWITTER", "Read A Twitter Feed"), page);
    lblTwitterScreenName = new QLabel(FrameTwitter);
    btnTwitterGetPin = Button(EditorText("TWITTERGETPIN", "Get Pin"), FrameTwitter, [this] { NotAvailable(); });
    cmboTwitterFeedType = new QComboBox(FrameTwitter);
    cmboTwitterFeedType->addItems({EditorText("TWITTERFEED0", "My Timeline"), EditorText("TWITTERFEED1", "Mentions"),
                                   EditorText("TWITTERFEED2", "Timeline For User"),
                                   EditorText("TWITTERFEED3", "Tweets Containing"),
                                   EditorText("TWITTERFEED4", "Search")});
    txtTwitterQuery = new QLineEdit(FrameTwitter);
    txtTwitterForUser = new QLineEdit(FrameTwitter);
    chkTwitterRetweets = new QCheckBox(EditorText("TWITTERRETWEETS", "Include Retweets"), FrameTwitter);
    connect(FrameTwitter, &QGroupBox::toggled, this, &frmAccount::TwitterSwitched);
    auto *form = new QFormLayout(FrameTwitter);
    form->addRow(EditorText("TWITTERSCREENNAME", "Authenticated As:"), Row({lblTwitterScreenName, btnTwitterGetPin}));
    form->addRow(EditorText("TWITTERFEEDTYPE", "Feed:"), cmboTwitterFeedType);
    form->addRow(EditorText("TWITTERQUERY", "Search Query:"), txtTwitterQuery);
    form->addRow(EditorText("TWITTERFORUSER", "For User:"), txtTwitterForUser);
    form->addRow(chkTwitterRetweets);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(FrameTwitter);
    layout->addStretch();
    return page;
}

void frmAccount::WatchChanges()
{
    for (QLineEdit *edit : findChildren<QLineEdit *>())
        connect(edit, &QLineEdit::textEdited, this, &frmAccount::MarkDirty);
    for (QCheckBox *check : findChildren<QCheckBox *>())
        connect(check, &QCheckBox::toggled, this, &frmAccount::MarkDirty);
    for (QGroupBox *frame : findChildren<QGroupBox *>())
        connect(frame, &QGroupBox::toggled, this, &frmAccount::MarkDirty);
    for (QComboBox *combo : findChildren<QComboBox *>())
        connect(combo, &QComboBox::currentIndexChanged, this, &frmAccount::MarkDirty);
    for (QSpinBox *spin : findChildren<QSpinBox *>())
        connect(spin, &QSpinBox::valueChanged, this, &frmAccount::MarkDirty);
    connect(txtDBSQL, &QPlainTextEdit::textChanged, this, &frmAccount::MarkDirty);
    for (QTreeWidget *tree : {TreeIMAP, TreeIMAPMove})
        connect(tree, &QTreeWidget::currentItemChanged, this, &frmAccount::MarkDirty);
    connect(TreeExchange, &QTreeWidget::itemChanged, this, &frmAccount::MarkDirty);
}

void frmAccount::MarkDirty()
{
    if (!m_filling)
        Dirty = true;
}

void frmAccount::UnCrunch()
{
    const clsAccount &a = *Edited;
    m_filling = true;
    txtName->setText(a.Name);
    txtDetails->setText(a.Details);
    chkEnabled->setChecked(a.Enabled);
    chkOutBox->setChecked(a.Outbox);
    chkSample->setChecked(a.Sample);
    chkStoreFull->setChecked(a.StoreFull);
    chkUnzip->setChecked(a.UnzipAttachments);
    chkAppendText->setChecked(a.AppendText);
    chkStopOnError->setChecked(a.AutoPause);
    chkDeleteAfter->setChecked(a.Archive);
    txtDeleteAfterDays->setValue(a.ArchiveDays);
    txtDeleteAfterDays->setEnabled(a.Archive);
    chkMarkAsRead->setChecked(a.MarkAsReadType > 0);
    cmboMarkAsReadType->setCurrentIndex(qMax(0, a.MarkAsReadType - 1));
    cmboMarkAsReadType->setEnabled(a.MarkAsReadType > 0);

    FrameIMAP->setChecked(a.IMAP);
    txtIMAPServer->setText(a.IMAPServer);
    txtIMAPPort->setText(a.IMAPPort ? QString::number(a.IMAPPort) : QString());
    chkIMAPSSL->setChecked(a.IMAPSSL);
    txtIMAPAccount->setText(a.IMAPAccount);
    txtIMAPPassword->setText(a.IMAPPassword);
    ResetFolderTree(TreeIMAP, a.IMAPFolder);
    ResetFolderTree(TreeIMAPMove, a.IMAPMoveToFolder);
    chkIMAPMove->setChecked(a.IMAPMove);
    chkIMAPDelete->setChecked(!a.IMAPLeaveMessageOn);
    chkIMAPDeleteAll->setChecked(a.IMAPDeleteAll);
    chkIMAPMarkAsRead->setChecked(a.IMAPMarkAsRead);
    chkIMAPServerIDs->setChecked(a.IMAPServerIDs);
    IMAPDeleteChanged();

    FrameSMTP->setChecked(a.SMTPServer);
    txtServer->setText(a.ServerIP);
    txtPort->setText(a.ServerPort ? QString::number(a.ServerPort) : QString());
    chkPOP3SSL->setChecked(a.ServerSSL);
    txtAccount->setText(a.ServerAccount);
    txtPassword->setText(a.ServerPassword);
    chkDelete->setChecked(!a.ServerLeaveMessageOn);
    chkDeleteAll->setChecked(a.ServerDeleteAll);

    FrameExchange->setChecked(a.EWS);
    txtEWSUrl->setText(a.EWSUrl);
    txtEWSUsername->setText(a.EWSUsername);
    txtEWSPassword->setText(a.EWSPassword);
    txtEWSOtherMailbox->setText(a.EWSOtherMailbox);
    FillExchangeFolders();
    chkEWSMove->setChecked(a.EWSMove);
    txtEWSMoveToFolder->setText(a.EWSMoveToFolder);
    chkEWSDeleteProcessed->setChecked(a.EWSDeleteProcessed);
    chkEWSDeleteAll->setChecked(a.EWSDeleteAll);

    FrameDirect->setChecked(a.MailServer);
    txtSMTPDomain->setText(a.MailServerDomain);
    txtSMTPAliases->setText(a.MailServerAliases);

    FrameFilePickup->setChecked(a.FilePickUp);
    txtFilePickupFolder->setText(a.FilePickupFolder);
    txtFilePickupMask->setText(a.FilePickUpMask);

    FrameCSVPickup->setChecked(a.CSVPickUp);
    txtCSVPickupFolder->setText(a.CSVPickupFolder);
    txtCSVPickupMask->setText(a.CSVPickupMask);
    chkCSVPickupDelete->setChecked(a.CSVPickupDelete);
    txtCSVPickupWorkSheet->setText(a.CSVPickupWorkSheet);
    txtCSVPickupHeaderRow->setValue(a.CSVPickupHeaderRow);
    lblCSVPickupLastStatus->setText(a.CSVPickupLastStatus);

    FrameDatabasePull->setChecked(a.DBPull);
    txtDBConnection->setText(a.DBConnection);
    txtDBSQL->setPlainText(a.DBSQL);
    txtDBUIDField->setText(a.DBUIDField);
    chkDBMSGBody->setChecked(a.DBMSGBody);
    txtDBMessageField->setText(a.DBMSGField);
    txtDBMessageField->setDisabled(a.DBMSGBody);
    chkDBDelete->setChecked(a.DBDelete);
    txtDBUpdateField->setText(a.DBUpdateField);
    txtDBUpdateValue->setText(a.DBUpdateValue);

    FrameHTTP->setChecked(a.HTTP);
    txtHTTPUrl->setText(a.HTTPUrl);
    chkHTTPFollow->setChecked(a.HTTPFollow);
    cmboHTTPLogin->setCurrentIndex(qBound(0, int(a.HTTPLogin), 2));
    txtHTTPUser->setText(a.HTTPUser);
    txtHTTPPass->setText(a.HTTPPass);
    txtHTTPUser->setEnabled(a.HTTPLogin > 0);
    txtHTTPPass->setEnabled(a.HTTPLogin > 0);
    chkHTTPClean->setChecked(a.HTTPClean);
    chkHTTPFail->setChecked(a.HTTPFail);

    FrameRSS->setChecked(a.RSS);
    txtRSSUrl->setText(a.RSSUrl);
    chkRSSAtom->setChecked(a.RSSAtom);

    FrameDropbox->setChecked(a.Dropbox);
    txtDropBoxToAddress->setText(a.DropBoxToAddress);
    txtDropBoxSubject->setText(a.DropBoxSubject);

    FrameTwitter->setChecked(a.TwitterFeed);
    lblTwitterScreenName->setText(TwitterSetting(QStringLiteral("ScreenName")));
    cmboTwitterFeedType->setCurrentIndex(qBound(0, TwitterSetting(QStringLiteral("FeedType")).toInt(), 4));
    txtTwitterQuery->setText(TwitterSetting(QStringLiteral("FeedQuery")));
    txtTwitterForUser->setText(TwitterSetting(QStringLiteral("FeedForUser")));
    chkTwitterRetweets->setChecked(TwitterSetting(QStringLiteral("FeedIncludeReTweets")) == QStringLiteral("-1"));

    ShowSchedule();
    ShowEdgeServer();
    btnReorderTriggers->setEnabled(!IsNew);
    OutboxChanged();
    ShowCaptions();
    m_filling = false;
}

void frmAccount::ShowSchedule()
{
    lblSchedule->setText(Edited->CheckedEvery() +
                         (Edited->AutoRun ? EditorText("PLUSAUTORUN", " (Plus Auto Run)") : QString()));
}

void frmAccount::ShowEdgeServer()
{
    lblEdgeServer->setText(Edited->EdgeServer.isEmpty() ? EditorText("EDGELOCAL", "Local Processing")
                                                        : Edited->EdgeServer);
}

void frmAccount::ShowCaptions()
{
    struct Caption
    {
        SourceTabWidget *Tabs;
        int Index;
        const char *Key;
        const char *Default;
        QList<QGroupBox *> Frames;
    };
    const QList<Caption> captions = {
        {Tabs, PageGeneral, "TABGENERAL", "General", {}},
        {Tabs, PageEmail, "TABEMAIL", "Email", {FrameIMAP, FrameSMTP, FrameExchange}},
        {Tabs, PageDirect, "TABDIRECT", "Direct SMTP", {FrameDirect}},
        {Tabs, PageFilePickup, "TABFILEPICKUP", "File Pickup", {FrameFilePickup}},
        {Tabs, PageDatabasePull, "TABDBPULL", "Database Pull", {FrameDatabasePull}},
        {Tabs, PageHTTP, "TABHTTP", "HTTP Lookup", {FrameHTTP}},
        {Tabs, PageRSS, "TABRSS", "RSS Feed", {FrameRSS}},
        {Tabs, PageClients, "TABCLIENTS", "Clients", {FrameDropbox}},
        {Tabs, PageTwitter, "TABTWITTER", "Twitter", {FrameTwitter}},
        {Tabs, PageCSVPickup, "TABCSVPICKUP", "CSV/Excel Pickup", {FrameCSVPickup}},
        {TabsRead, ReadIMAP, "TABIMAP", "IMAP", {FrameIMAP}},
        {TabsRead, ReadPOP3, "TABPOP3", "POP3", {FrameSMTP}},
        {TabsRead, ReadExchange, "TABEXCHANGE", "Exchange", {FrameExchange}},
    };
    for (const Caption &caption : captions) {
        bool on = false;
        for (const QGroupBox *frame : caption.Frames)
            on = on || frame->isChecked();
        caption.Tabs->setTabText(caption.Index, EditorText(caption.Key, caption.Default));
        caption.Tabs->setTabBold(caption.Index, on);
    }
}

void frmAccount::OutboxChanged()
{
    const bool sources = !chkOutBox->isChecked();
    for (int page = PageEmail; page < Tabs->count(); ++page)
        Tabs->widget(page)->setEnabled(sources);
}

void frmAccount::IMAPDeleteChanged()
{
    const bool deleting = chkIMAPDelete->isChecked();
    chkIMAPDeleteAll->setEnabled(deleting);
    chkIMAPMove->setEnabled(!deleting);
    TreeIMAPMove->setEnabled(!deleting && chkIMAPMove->isChecked());
}

void frmAccount::IMAPServerEdited()
{
    static const QRegularExpression hosted(QStringLiteral("(^|\\.)(outlook\\.office365\\.com|office365\\.com|"
                                                          "outlook\\.com|hotmail\\.com|live\\.com)$"),
                                           QRegularExpression::CaseInsensitiveOption);
    if (!hosted.match(txtIMAPServer->text().trimmed()).hasMatch())
        return;
    chkIMAPSSL->setChecked(true);
    txtIMAPPort->setText(QStringLiteral("993"));
}

void frmAccount::TwitterSwitched(bool On)
{
    if (!On || !IsNew || m_filling || !Edited->TwitterSettings.isEmpty())
        return;
    Edited->TwitterSettings = QStringLiteral("<Class>Twitter</Class><Enabled>-1</Enabled><FeedMaxCount>100</FeedMaxCount>"
                                             "<FeedAddUserInfoToMessage>-1</FeedAddUserInfoToMessage>"
                                             "<FeedCreateHTML>-1</FeedCreateHTML>");
    Edited->SCHEDULE = QStringLiteral("010|YYYYYYY");
    Edited->CheckEveryMins = 10;
    ShowSchedule();
}

// --- IMAP folder trees -------------------------------------------------

void frmAccount::ResetFolderTree(QTreeWidget *Tree, const QString &Folder)
{
    FillFolderTree(Tree, Folder.isEmpty() ? QStringList() : QStringList{Folder}, m_imapSeparator, Folder);
}

void frmAccount::FillFolderTree(QTreeWidget *Tree, const QStringList &Folders, const QString &Separator,
                                const QString &Selected)
{
    const QSignalBlocker block(Tree);
    Tree->clear();
    auto *root = new QTreeWidgetItem(Tree, {EditorText("IMAPFOLDERS", "IMAP Folders")});
    root->setData(0, PathRole, RootKey);
    QTreeWidgetItem *current = root;
    for (const QString &folder : Folders) {
        QTreeWidgetItem *parent = root;
        QString path;
        for (const QString &part : folder.split(Separator)) {
            path += (path.isEmpty() ? QString() : Separator) + part;
            QTreeWidgetItem *node = nullptr;
            for (int i = 0; i < parent->childCount() && !node; ++i)
                if (parent->child(i)->data(0, PathRole).toString() == RootKey + Separator + path)
                    node = parent->child(i);
            if (!node) {
                node = new QTreeWidgetItem(parent, {part});
                node->setData(0, PathRole, RootKey + Separator + path);
            }
            parent = node;
        }
        if (folder.compare(Selected, Qt::CaseInsensitive) == 0)
            current = parent;
    }
    Tree->expandAll();
    Tree->setCurrentItem(current);
}

QString frmAccount::FolderOfNode(const QTreeWidgetItem *Node)
{
    if (!Node)
        return QString();
    const QString path = Node->data(0, PathRole).toString();
    if (path.compare(RootKey, Qt::CaseInsensitive) == 0)
        return QStringLiteral("inbox");
    const QString upper = path.toUpper();
    if (upper.startsWith(QStringLiteral("ROOT/")) || upper.startsWith(QStringLiteral("ROOT.")))
        return path.mid(5);
    return path.mid(RootKey.size() + 1);
}

bool frmAccount::RootOnly(const QTreeWidget *Tree) const
{
    const QTreeWidgetItem *node = Tree->currentItem();
    return !node || (node->data(0, PathRole).toString() == RootKey && node->childCount() == 0);
}

// --- Validation and saving ----------------------------------------------

bool frmAccount::CheckFolder(const QString &Path, const char *ErrorKey, const char *ErrorDefault,
                             const char *CaptionKey, const char *CaptionDefault)
{
    const QString folder = QDir::fromNativeSeparators(Path.trimmed());
    if (folder.isEmpty() || !QDir(folder).exists()) {
        WarningBox(this, EditorText(ErrorKey, ErrorDefault));
        return false;
    }
    if (OnNetworkDrive(folder))
        ShowTaskDialog(this, EditorText("NETWORKSEL1", "Network Drive Selected"),
                       EditorText("NETWORKSEL3", "The folder lies on a network drive.") + QStringLiteral("\r\n\r\n") +
                           EditorText("NETWORKSEL4", "Make sure that the user the %APPNAME% Server service runs as "
                                                     "can read and write it.")
                               .replace(QStringLiteral("%APPNAME%"), Global.ProductName),
                       EditorText(CaptionKey, CaptionDefault));
    return true;
}

bool frmAccount::ValidateControls()
{
    if (txtEWSUrl->text().trimmed() == EWSPrompt)
        txtEWSUrl->clear();
    auto fail = [this](const char *Key, const char *Default) {
        WarningBox(this, EditorText(Key, Default));
        return false;
    };
    if (txtName->text().trimmed().isEmpty())
        return fail("ERRORNONAME", "You must enter a name.");
    const bool sources = !chkOutBox->isChecked();
    if (sources && FrameSMTP->isChecked()) {
        if (txtServer->text().trimmed().isEmpty())
            return fail("ERRORNOMAILSERVER", "You must specify a mail server.");
        if (txtAccount->text().trimmed().isEmpty())
            return fail("ERRORNOACCOUNT", "You must specify an Account to use.");
    }
    if (sources && FrameIMAP->isChecked()) {
        if (txtIMAPServer->text().trimmed().isEmpty())
            return fail("ERRORNOIMAPSERVER", "You must specific an IMAP server.");
        if (txtIMAPAccount->text().trimmed().isEmpty())
            return fail("ERRORNOIMAPACC", "You must specify an IMAP Account to use.");
        if (RootOnly(TreeIMAP))
            return fail("ERRORNOIMAPFOLDER", "You must select an IMAP folder.");
        if (chkIMAPMove->isChecked() && !chkIMAPDelete->isChecked()) {
            const QTreeWidgetItem *target = TreeIMAPMove->currentItem();
            const QString path = target ? target->data(0, PathRole).toString() : QString();
            if (!target || path.isEmpty() || path == RootKey ||
                FolderOfNode(target).compare(FolderOfNode(TreeIMAP->currentItem()), Qt::CaseInsensitive) == 0)
                return fail("ERRORIMAPFOLDERDIFF", "You must select a different IMAP folder to move the messages to.");
        }
    }
    if (sources && FrameFilePickup->isChecked() &&
        !CheckFolder(txtFilePickupFolder->text(), "ERRORNOFILEPICKUP", "File pickup folder does not exist.",
                     "FILEPICKUPFOLDER", "File Pickup Folder"))
        return false;
    if (sources && FrameCSVPickup->isChecked() &&
        !CheckFolder(txtCSVPickupFolder->text(), "ERRORNOCSVPICKUP", "CSV pickup folder does not exist.",
                     "CSVPICKUPFOLDER", "CSV Pickup Folder"))
        return false;
    if (sources && FrameDirect->isChecked() && !ValidDomains(txtSMTPDomain->text()))
        return fail("ERRORNOSMTPDOMAIN", "You must specify a domain name to receive direct emails for.");
    if (sources && FrameDatabasePull->isChecked()) {
        if (txtDBConnection->text().trimmed().isEmpty() || txtDBSQL->toPlainText().trimmed().isEmpty())
            return fail("ERRORNODBCON", "You must specify the connection string and SQL statement for database pull.");
        if (txtDBMessageField->text().trimmed().isEmpty() && !chkDBMSGBody->isChecked())
            return fail("ERRORNODBFIELDMSG", "You must specify the database field to use for the Message text.");
    }
    if (sources && FrameRSS->isChecked() && txtRSSUrl->text().trimmed().isEmpty())
        return fail("ERRORNORSSURL", "You must specify the RSS Url");
    if (sources && FrameHTTP->isChecked() && txtHTTPUrl->text().trimmed().isEmpty())
        return fail("ERRORNOHTTPURL", "You must specify the HTTP Lookup Url");
    if (chkOutBox->isChecked()) {
        const QString outbox = Accounts().FindOutboxID();
        if (!outbox.isEmpty() && outbox != Edited->AccountID)
            return fail("ERROROUTBOXUSED", "A Outbox Account already exists. Only 1 Account can be used for the "
                                           "Outbox processing.");
    }
    if (sources && FrameExchange->isChecked()) {
        const QUrl url(txtEWSUrl->text().trimmed(), QUrl::StrictMode);
        if (!url.isValid() || url.host().isEmpty())
            return fail("ERRORNOEXCHANGEURL", "You must enter a valid Exchange EWS Url");
    }
    if (sources && FrameTwitter->isChecked()) {
        if (lblTwitterScreenName->text().isEmpty())
            return fail("ERRORNOTWITTERACCOUNT", "You must authenticate with your Twitter Account to read Twitter Feeds");
        const bool interval = Edited->SCHEDULE.startsWith(u'0') || Edited->SCHEDULE.startsWith(u'|');
        const int minutes = Edited->SCHEDULE.mid(1, Edited->SCHEDULE.indexOf(u'|') - 1).toInt();
        const QString days = Edited->SCHEDULE.mid(Edited->SCHEDULE.indexOf(u'|'));
        if (interval && cmboTwitterFeedType->currentIndex() == 4 && minutes < 10) {
            WarningBox(this, EditorText("TWITTERMIN10", "The minimum schedule for Twitter Feeds (Search) is every 10 minutes."));
            Edited->SCHEDULE = QStringLiteral("010") + days;
            Edited->CheckEveryMins = 10;
        } else if (interval && minutes < 3) {
            WarningBox(this, EditorText("TWITTERMIN3", "The minimum schedule for Twitter Feeds is every 3 minutes."));
            Edited->SCHEDULE = QStringLiteral("003") + days;
            Edited->CheckEveryMins = 3;
        }
        ShowSchedule();
    }
    return true;
}

void frmAccount::ReadControls()
{
    clsAccount &a = *Edited;
    a.Name = txtName->text().trimmed();
    a.Details = txtDetails->text();
    a.Enabled = chkEnabled->isChecked();
    a.Outbox = chkOutBox->isChecked();
    a.Sample = chkSample->isChecked();
    a.StoreFull = chkStoreFull->isChecked();
    a.UnzipAttachments = chkUnzip->isChecked();
    a.AppendText = chkAppendText->isChecked();
    a.AutoPause = chkStopOnError->isChecked();
    a.Archive = chkDeleteAfter->isChecked();
    a.ArchiveDays = qint16(txtDeleteAfterDays->value());
    a.MarkAsReadType = chkMarkAsRead->isChecked() ? qint16(cmboMarkAsReadType->currentIndex() + 1) : qint16(0);

    a.IMAP = FrameIMAP->isChecked();
    a.IMAPServer = txtIMAPServer->text().trimmed();
    a.IMAPPort = qint16(txtIMAPPort->text().toInt());
    a.IMAPSSL = chkIMAPSSL->isChecked();
    a.IMAPAccount = txtIMAPAccount->text().trimmed();
    a.IMAPPassword = txtIMAPPassword->text();
    a.IMAPFolder = FolderOfNode(TreeIMAP->currentItem());
    if (a.IMAPFolder.isEmpty())
        a.IMAPFolder = QStringLiteral("inbox");
    a.IMAPMove = chkIMAPMove->isChecked();
    a.IMAPMoveToFolder = a.IMAPMove ? FolderOfNode(TreeIMAPMove->currentItem()) : a.IMAPMoveToFolder;
    a.IMAPLeaveMessageOn = !chkIMAPDelete->isChecked();
    a.IMAPDeleteAll = chkIMAPDeleteAll->isChecked();
    a.IMAPMarkAsRead = chkIMAPMarkAsRead->isChecked();
    a.IMAPServerIDs = chkIMAPServerIDs->isChecked();

    a.SMTPServer = FrameSMTP->isChecked();
    a.ServerIP = txtServer->text().trimmed();
    a.ServerPort = qint16(txtPort->text().toInt());
    a.ServerSSL = chkPOP3SSL->isChecked();
    a.ServerAccount = txtAccount->text().trimmed();
    a.ServerPassword = txtPassword->text();
    a.ServerLeaveMessageOn = !chkDelete->isChecked();
    a.ServerDeleteAll = chkDeleteAll->isChecked();

    a.EWS = FrameExchange->isChecked();
    a.EWSUrl = txtEWSUrl->text().trimmed() == EWSPrompt ? QString() : txtEWSUrl->text().trimmed();
    a.EWSUsername = txtEWSUsername->text().trimmed();
    a.EWSPassword = txtEWSPassword->text();
    a.EWSOtherMailbox = txtEWSOtherMailbox->text().trimmed();
    a.EWSFolders = ExchangeFoldersXML();
    a.EWSMove = chkEWSMove->isChecked();
    a.EWSMoveToFolder = txtEWSMoveToFolder->text().trimmed();
    a.EWSDeleteProcessed = chkEWSDeleteProcessed->isChecked();
    a.EWSDeleteAll = chkEWSDeleteAll->isChecked();

    a.MailServer = FrameDirect->isChecked();
    a.MailServerDomain = txtSMTPDomain->text().trimmed();
    a.MailServerAliases = txtSMTPAliases->text().trimmed();

    a.FilePickUp = FrameFilePickup->isChecked();
    a.FilePickupFolder = txtFilePickupFolder->text().trimmed();
    a.FilePickUpMask = txtFilePickupMask->text().trimmed();

    a.CSVPickUp = FrameCSVPickup->isChecked();
    a.CSVPickupFolder = txtCSVPickupFolder->text().trimmed();
    a.CSVPickupMask = txtCSVPickupMask->text().trimmed();
    a.CSVPickupDelete = chkCSVPickupDelete->isChecked();
    a.CSVPickupWorkSheet = txtCSVPickupWorkSheet->text().trimmed();
    a.CSVPickupHeaderRow = txtCSVPickupHeaderRow->value();

    a.DBPull = FrameDatabasePull->isChecked();
    a.DBConnection = txtDBConnection->text().trimmed();
    a.DBSQL = txtDBSQL->toPlainText();
    a.DBUIDField = txtDBUIDField->text().trimmed();
    a.DBMSGBody = chkDBMSGBody->isChecked();
    a.DBMSGField = txtDBMessageField->text().trimmed();
    a.DBDelete = chkDBDelete->isChecked();
    a.DBUpdateField = txtDBUpdateField->text().trimmed();
    a.DBUpdateValue = txtDBUpdateValue->text();

    a.HTTP = FrameHTTP->isChecked();
    a.HTTPUrl = txtHTTPUrl->text().trimmed();
    a.HTTPFollow = chkHTTPFollow->isChecked();
    a.HTTPLogin = qint16(cmboHTTPLogin->currentIndex());
    a.HTTPUser = txtHTTPUser->text().trimmed();
    a.HTTPPass = txtHTTPPass->text();
    a.HTTPClean = chkHTTPClean->isChecked();
    a.HTTPFail = chkHTTPFail->isChecked();

    a.RSS = FrameRSS->isChecked();
    a.RSSUrl = txtRSSUrl->text().trimmed();
    a.RSSAtom = chkRSSAtom->isChecked();

    a.Dropbox = FrameDropbox->isChecked();
    a.DropBoxToAddress = txtDropBoxToAddress->text().trimmed();
    a.DropBoxSubject = txtDropBoxSubject->text();
    if (a.DropBoxSubject.isEmpty())
        a.DropBoxSubject = QStringLiteral("Message From ") + Global.ProductName + QStringLiteral(" Client");
    if (a.DropBoxToAddress.isEmpty())
        a.DropBoxToAddress = QString(a.Name).replace(u' ', u'_') + u'@' + a.OrganizationName().replace(u' ', u'_');

    a.TwitterFeed = FrameTwitter->isChecked();
    WriteTwitterSettings();
    if (a.Outbox) {
        a.SMTPServer = a.IMAP = a.EWS = a.MailServer = a.FilePickUp = a.CSVPickUp = false;
        a.DBPull = a.HTTP = a.RSS = a.TwitterFeed = false;
    }
}

bool frmAccount::ButtonOK()
{
    if (!ValidateControls())
        return false;
    if (FrameDirect->isChecked() && !chkOutBox->isChecked() && !Global.Settings.MailServerListenIncoming)
        WarningBox(this, EditorText("MAILSERVERNEEDED", "The Mail Server needs to be enabled if you want to receive "
                                                        "emails directly."));
    ReadControls();
    Edited->XMLIncludeTriggers = false;
    if (!Remote().SendAccount(*Edited)) {
        WarningBox(this, EditorText("ACCOUNTNOTSAVED", "The account was not saved:") + u' ' +
                             (Remote().ReplyText.isEmpty() ? Remote().ErrorText : Remote().ReplyText));
        return false;
    }
    const QString accountID = Edited->AccountID;
    Remote().HTTPGet(Requests::GetAccount(accountID));
    if (IsNew) {
        IsNew = false;
        if (const clsUserFolder *root = UserFolders().RootFolder(Edited->OrganizationID)) {
            auto folder = std::make_unique<clsUserFolder>();
            folder->AccountID = accountID;
            folder->Name = Edited->Name;
            folder->Parent = root->ID;
            folder->OrganizationID = Edited->OrganizationID;
            const QString request = Requests::AddFolder(folder->ID, folder->Parent, folder->Name, accountID);
            UserFolders().Add(std::move(folder));
            Remote().HTTPGet(request);
        }
    }
    Dirty = false;
    setProperty("RecordID", accountID);
    setWindowTitle(QStringLiteral("Account: ") + Edited->Name);
    btnReorderTriggers->setEnabled(true);
    emit AccountSaved(accountID);
    return true;
}

bool frmAccount::SaveChanges()
{
    if (!Dirty)
        return true;
    const QMessageBox::StandardButton answer =
        ShowTaskDialog(this, EditorText("SAVEACCOUNT1", "Save Changes?"),
                       EditorText("SAVEACCOUNT2", "Do you want to save the changes made to this Account?"), QString(),
                       QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    if (answer == QMessageBox::Cancel)
        return false;
    if (answer == QMessageBox::Yes)
        return ButtonOK();
    Dirty = false;
    return true;
}

void frmAccount::closeEvent(QCloseEvent *event)
{
    if (!SaveChanges()) {
        event->ignore();
        return;
    }
    event->accept();
}

// --- Connection tests -----------------------------------------------------

void frmAccount::ShowResult(const QString &Text, bool Failed)
{
    LastTestResult = Text;
    if (Failed)
        WarningBox(this, Text);
    else
        QMessageBox::information(this, Global.AppTitle, Text);
}

bool frmAccount::RunProbe(MailboxProbe &Probe, const QString &Kind)
{
    Probe.Endpoint.TimeoutSeconds = TestTimeoutSeconds;
    auto run = [&Probe] {
        QEventLoop loop;
        QThread *worker = QThread::create([&Probe] { Probe.Run(); });
        QObject::connect(worker, &QThread::finished, &loop, &QEventLoop::quit);
        worker->start();
        loop.exec();
        worker->wait();
        delete worker;
    };
    setCursor(Qt::BusyCursor);
    run();
    if (Probe.CertificateRejected) {
        unsetCursor();
        const QString text =
            Kind + EditorText("CERTSERVER", " Server provided the following certificate:") + QStringLiteral("\r\n") +
            QStringLiteral("    Issuer: ") + Probe.CertificateIssuer + QStringLiteral("\r\n") +
            QStringLiteral("    Subject: ") + Probe.CertificateSubject + QStringLiteral("\r\n\r\n") +
            QStringLiteral("The following problems have been determined for this certificate: ") +
            QStringLiteral("\r\n    ") + Probe.Error + QStringLiteral("\r\n\r\n") +
            QStringLiteral("Would you like to continue or cancel the connection?");
        if (QuestionBox(this, EditorText("CERTFAIL", "Server Certificate Verification Failure"), text) !=
            QMessageBox::Yes)
            return false;
        Probe.Endpoint.AcceptAnyCertificate = true;
        Probe.CertificateRejected = false;
        setCursor(Qt::BusyCursor);
        run();
    }
    unsetCursor();
    return true;
}

void frmAccount::TestPOP3()
{
    if (txtServer->text().trimmed().isEmpty())
        return ShowResult(EditorText("ERRORNOPOP3", "No POP3 server specified."), true);
    if (txtPort->text().toInt() <= 0)
        return ShowResult(EditorText("ERRORNOPOP3PORT", "No POP3 Port specified."), true);
    MailboxProbe probe;
    probe.Kind = MailboxProbe::POP3;
    probe.Endpoint.Host = txtServer->text().trimmed();
    probe.Endpoint.Port = txtPort->text().toInt();
    probe.Endpoint.Secure = chkPOP3SSL->isChecked();
    probe.Endpoint.User = txtAccount->text().trimmed();
    probe.Endpoint.Password = txtPassword->text();
    btnTest->setEnabled(false);
    const bool asked = RunProbe(probe, QStringLiteral("POP3"));
    btnTest->setEnabled(true);
    if (!asked)
        return;
    if (probe.Connected)
        ShowResult(EditorText("POP3TESTOK", "Connected Successfully. Messages Waiting:") + u' ' +
                       QString::number(probe.MessagesWaiting),
                   false);
    else
        ShowResult(probe.Error, true);
}

void frmAccount::ConnectIMAP()
{
    if (m_imapConnected) {
        m_imapConnected = false;
        btnIMAPConnect->setText(EditorText("CONNECT", "Connect"));
        return;
    }
    if (txtIMAPServer->text().trimmed().isEmpty())
        return ShowResult(EditorText("ERRORNOIMAPSERVER", "You must specific an IMAP server."), true);
    MailboxProbe probe;
    probe.Kind = MailboxProbe::IMAP;
    probe.Endpoint.Host = txtIMAPServer->text().trimmed();
    probe.Endpoint.Port = txtIMAPPort->text().toInt();
    probe.Endpoint.Secure = chkIMAPSSL->isChecked();
    probe.Endpoint.User = txtIMAPAccount->text().trimmed();
    probe.Endpoint.Password = txtIMAPPassword->text();
    btnIMAPConnect->setEnabled(false);
    const bool asked = RunProbe(probe, QStringLiteral("IMAP"));
    btnIMAPConnect->setEnabled(true);
    if (!asked)
        return;
    if (!probe.Connected)
        return ShowResult(probe.Error, true);
    m_imapConnected = true;
    m_imapSeparator = probe.Separator;
    btnIMAPConnect->setText(EditorText("DISCONNECT", "Disconnect"));
    const QString read = FolderOfNode(TreeIMAP->currentItem());
    const QString move = FolderOfNode(TreeIMAPMove->currentItem());
    FillFolderTree(TreeIMAP, probe.Folders, probe.Separator, read);
    FillFolderTree(TreeIMAPMove, probe.Folders, probe.Separator, move);
    LastTestResult = probe.Folders.join(u'\n');
}

void frmAccount::CheckRSS()
{
    WebLookup lookup;
    lookup.TimeoutSeconds = TestTimeoutSeconds;
    btnRSSCheck->setEnabled(false);
    const bool read = lookup.Fetch(txtRSSUrl->text().trimmed(), true);
    btnRSSCheck->setEnabled(true);
    if (!read)
        return ShowResult(lookup.Error, true);
    WebLookup::FeedItem item;
    if (!lookup.FirstItem(chkRSSAtom->isChecked(), item))
        return ShowResult(lookup.Error, true);
    const QString title = chkRSSAtom->isChecked() ? EditorText("ATOMFIRST", "Atom Feed (First Item)")
                                                  : EditorText("RSSFIRST", "RSS Feed (First Item)");
    LastTestResult = title + QStringLiteral("\r\n") + item.Title + QStringLiteral("\r\nPub Date: ") + item.Date +
                     QStringLiteral("\r\n\r\n") + item.Text;
    QMessageBox::information(this, title, LastTestResult.mid(title.size() + 2));
}

void frmAccount::CheckHTTP()
{
    WebLookup lookup;
    lookup.TimeoutSeconds = TestTimeoutSeconds;
    lookup.Login = cmboHTTPLogin->currentIndex();
    lookup.User = txtHTTPUser->text().trimmed();
    lookup.Password = txtHTTPPass->text();
    btnHTTPCheck->setEnabled(false);
    const bool read = lookup.Fetch(txtHTTPUrl->text().trimmed(), chkHTTPFollow->isChecked());
    btnHTTPCheck->setEnabled(true);
    if (!read)
        return ShowResult(lookup.Error, true);
    constexpr int Shown = 400;
    QString text = chkHTTPClean->isChecked() ? StripTags(lookup.Text()).simplified() : lookup.Text();
    if (text.size() > Shown)
        text = text.left(Shown) + QStringLiteral("...");
    ShowResult(EditorText("HTTPRECEIVED", "Received") + u' ' + QString::number(lookup.Body.size()) +
                   EditorText("HTTPBYTES", " Bytes") + QStringLiteral("\r\n\r\n") + text,
               false);
}

void frmAccount::TestDatabase()
{
    const QString connection = txtDBConnection->text().trimmed();
    const QString sql = txtDBSQL->toPlainText().trimmed();
    if (connection.isEmpty() || sql.isEmpty())
        return ShowResult(EditorText("SQLTEST1", "You need to specify the Connection String and SQL Statement"), true);
    if (!ServerOpensDatabase(this, connection)) {
        LastTestResult = EditorText("DBTESTFAIL1", "Failed To Open Database Using The Specified Connection String");
        return;
    }
    const DatabaseRun run = RunQuery(connection, sql, TestTimeoutSeconds);
    if (!run.Error.isEmpty())
        return ShowResult(run.Error, true);
    ShowResult(run.Rows == 0 ? EditorText("SQLNODATA", "No Data")
                             : EditorText("SQLTEST2", "SQL Query Executed Successfully. Returned: ") +
                                   QString::number(run.Rows) + EditorText("SQLROWS", " Rows"),
               false);
}

void frmAccount::NotAvailable()
{
    ShowResult(EditorText("KINDNOTAVAILABLE", "This source kind is not available on this server."), true);
}

// --- Exchange folders -------------------------------------------------------

void frmAccount::FillExchangeFolders()
{
    const QSignalBlocker block(TreeExchange);
    TreeExchange->clear();
    clsXML list(Edited->EWSFolders);
    clsXML item;
    while (list.ExtractItem(item, QStringLiteral("Folder"))) {
        QString id, name, state;
        item.Extract(id, QStringLiteral("Id"));
        item.Extract(name, QStringLiteral("Name"));
        item.Extract(state, QStringLiteral("State"));
        auto *node = new QTreeWidgetItem(TreeExchange, {name});
        node->setData(0, PathRole, id);
        node->setData(0, PathRole + 1, state);
        node->setCheckState(0, Qt::Checked);
    }
}

QString frmAccount::ExchangeFoldersXML() const
{
    QString folders;
    for (int i = 0; i < TreeExchange->topLevelItemCount(); ++i) {
        const QTreeWidgetItem *node = TreeExchange->topLevelItem(i);
        if (node->checkState(0) != Qt::Checked)
            continue;
        folders += QStringLiteral("<Folder><Id>") + node->data(0, PathRole).toString().toHtmlEscaped() +
                   QStringLiteral("</Id><Name>") + node->text(0).toHtmlEscaped() + QStringLiteral("</Name><State>") +
                   node->data(0, PathRole + 1).toString().toHtmlEscaped() + QStringLiteral("</State></Folder>");
    }
    return folders;
}

void frmAccount::ClearExchangeSync()
{
    if (QuestionBox(this, Global.AppTitle,
                    EditorText("EXCHANGERESYNC", "Are you sure you want to reset the sync state for this Exchange "
                                                 "Server connection? All selected folders will be re-synced again.")) !=
        QMessageBox::Yes)
        return;
    for (int i = 0; i < TreeExchange->topLevelItemCount(); ++i)
        TreeExchange->topLevelItem(i)->setData(0, PathRole + 1, QString());
    MarkDirty();
}

// --- Twitter settings --------------------------------------------------------

QString frmAccount::TwitterSetting(const QString &Tag) const
{
    return GetTag(Tag, Edited->TwitterSettings);
}

void frmAccount::WriteTwitterSettings()
{
    if (!Edited->TwitterFeed)
        return;
    QString &settings = Edited->TwitterSettings;
    auto set = [&settings](const QString &Tag, const QString &Value, const QString &After) {
        const QString open = u'<' + Tag + u'>';
        const QString close = QStringLiteral("</") + Tag + u'>';
        const QString element = Value.isEmpty() ? QString() : open + Value.toHtmlEscaped() + close;
        const qsizetype start = settings.indexOf(open);
        if (start >= 0) {
            settings.replace(start, settings.indexOf(close, start) + close.size() - start, element);
            return;
        }
        const QString afterClose = QStringLiteral("</") + After + u'>';
        const qsizetype at = settings.indexOf(afterClose);
        settings.insert(at < 0 ? settings.size() : at + afterClose.size(), element);
    };
    set(QStringLiteral("FeedType"), cmboTwitterFeedType->currentIndex() ? QString::number(cmboTwitterFeedType->currentIndex()) : QString(), QStringLiteral("TweetReturnedAssignTo"));
    set(QStringLiteral("FeedIncludeReTweets"), chkTwitterRetweets->isChecked() ? QStringLiteral("-1") : QString(), QStringLiteral("FeedType"));
    set(QStringLiteral("FeedQuery"), txtTwitterQuery->text().trimmed(), QStringLiteral("FeedIncludeReTweets"));
    set(QStringLiteral("FeedForUser"), txtTwitterForUser->text().trimmed(), QStringLiteral("FeedQuery"));
}

// --- Companion dialogs and the ribbon -----------------------------------------

void frmAccount::DefineSchedule()
{
    frmAccountSchedule dialog(*Edited, FrameTwitter->isChecked(), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    ShowSchedule();
    MarkDirty();
}

void frmAccount::ChooseEdgeServer()
{
    frmAccountEdgeServer dialog(Edited->EdgeServer, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    Edited->EdgeServer = dialog.SelectedHost;
    ShowEdgeServer();
    MarkDirty();
}

void frmAccount::ReorderTriggers()
{
    clsAccount *live = Accounts().Item(Edited->AccountID);
    if (!live)
        return;
    if (!Remote().HTTPGet(Requests::GetTriggerConditions(live->AccountID)))
        return;
    frmREOrderTriggers dialog(*live, this);
    dialog.exec();
}

void frmAccount::SyncSourceCommands()
{
    frmClient *client = MainWindow();
    if (!client)
        return;
    const QList<bool> on = {FrameIMAP->isChecked() || FrameSMTP->isChecked() || FrameExchange->isChecked(),
                            FrameDirect->isChecked(),      FrameFilePickup->isChecked(), FrameCSVPickup->isChecked(),
                            FrameDatabasePull->isChecked(), FrameHTTP->isChecked(),      FrameRSS->isChecked(),
                            FrameTwitter->isChecked(),      FrameDropbox->isChecked()};
    for (int i = 0; i < on.size(); ++i)
        if (QAction *command = client->Command(frmClient::ID_GETVIAEMAIL + i))
            command->setChecked(on[i]);
}

void frmAccount::ShowSourcePage(int Source)
{
    static const QList<int> pages = {PageEmail, PageDirect, PageFilePickup, PageCSVPickup, PageDatabasePull,
                                     PageHTTP, PageRSS, PageTwitter, PageClients};
    if (Source < 0 || Source >= pages.size())
        return;
    Tabs->setCurrentIndex(pages[Source]);
    SyncSourceCommands();
}


bool frmAccount::event(QEvent *Event)
{
    if (Event->type() == QEvent::WindowActivate)
        SyncSourceCommands();
    return QWidget::event(Event);
}


frmAccount *NewAccountEditor(clsAccount *Account, QWidget *Parent)
{
    auto *editor = new frmAccount(Account, Parent);
    editor->setWindowFlag(Qt::Window);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    return editor;
}
