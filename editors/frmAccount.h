#pragma once
#include <QWidget>

#include <functional>
#include <memory>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;
class QTreeWidget;
class QTreeWidgetItem;
class clsAccount;
struct MailboxProbe;
class SourceTabWidget;

// "Message Retrieval Account": the window in which one account is edited, a
// page for each kind of source. It edits a copy of the account; saving posts
// the copy and fetches the account back, so that what the window shows
// afterwards is what the server stored.
class frmAccount : public QWidget
{
    Q_OBJECT
public:
    // Pages of Tabs, in their order, and of TabsRead inside "Email".
    enum Page { PageGeneral, PageEmail, PageDirect, PageFilePickup, PageDatabasePull, PageHTTP, PageRSS,
                PageClients, PageTwitter, PageCSVPickup };
    enum ReadPage { ReadIMAP, ReadPOP3, ReadExchange };
    static inline const QString EWSPrompt = QStringLiteral("https://{exchangeserver}/ews/exchange.asmx");
    static inline const QString RootKey = QStringLiteral("ROOT");

    // Account null: a new account.
    explicit frmAccount(clsAccount *Account, QWidget *parent = nullptr);
    ~frmAccount() override;

    // The account as the window edits it.
    std::unique_ptr<clsAccount> Edited;
    bool IsNew = false;
    bool Dirty = false;
    // Seconds a connection test waits for a server before it gives up.
    int TestTimeoutSeconds = 20;
    // Text of the last connection test's result box.
    QString LastTestResult;

    SourceTabWidget *Tabs = nullptr;
    SourceTabWidget *TabsRead = nullptr;
    // General
    QLineEdit *txtName = nullptr;
    QLineEdit *txtDetails = nullptr;
    QCheckBox *chkEnabled = nullptr;
    QCheckBox *chkOutBox = nullptr;
    QCheckBox *chkSample = nullptr;
    QCheckBox *chkStoreFull = nullptr;
    QCheckBox *chkUnzip = nullptr;
    QCheckBox *chkAppendText = nullptr;
    QCheckBox *chkStopOnError = nullptr;
    QCheckBox *chkDeleteAfter = nullptr;
    QSpinBox *txtDeleteAfterDays = nullptr;
    QCheckBox *chkMarkAsRead = nullptr;
    QComboBox *cmboMarkAsReadType = nullptr;
    QLabel *lblSchedule = nullptr;
    QPushButton *btnSchedule = nullptr;
    QLabel *lblEdgeServer = nullptr;
    QPushButton *btnEdgeServer = nullptr;
    QPushButton *btnReorderTriggers = nullptr;
    // IMAP
    QGroupBox *FrameIMAP = nullptr;
    QLineEdit *txtIMAPServer = nullptr;
    QLineEdit *txtIMAPPort = nullptr;
    QCheckBox *chkIMAPSSL = nullptr;
    QLineEdit *txtIMAPAccount = nullptr;
    QLineEdit *txtIMAPPassword = nullptr;
    QPushButton *btnIMAPConnect = nullptr;
    QTreeWidget *TreeIMAP = nullptr;
    QCheckBox *chkIMAPMove = nullptr;
    QTreeWidget *TreeIMAPMove = nullptr;
    QCheckBox *chkIMAPDelete = nullptr;
    QCheckBox *chkIMAPDeleteAll = nullptr;
    QCheckBox *chkIMAPMarkAsRead = nullptr;
    QCheckBox *chkIMAPServerIDs = nullptr;
    // POP3
    QGroupBox *FrameSMTP = nullptr;
    QLineEdit *txtServer = nullptr;
    QLineEdit *txtPort = nullptr;
    QCheckBox *chkPOP3SSL = nullptr;
    QLineEdit *txtAccount = nullptr;
    QLineEdit *txtPassword = nullptr;
    QCheckBox *chkDelete = nullptr;
    QCheckBox *chkDeleteAll = nullptr;
    QPushButton *btnTest = nullptr;
    // Exchange
    QGroupBox *FrameExchange = nullptr;
    QLineEdit *txtEWSUrl = nullptr;
    QLineEdit *txtEWSUsername = nullptr;
    QLineEdit *txtEWSPassword = nullptr;
    QLineEdit *txtEWSOtherMailbox = nullptr;
    QPushButton *btnExchangeSelect = nullptr;
    QPushButton *btnExchangeClearSync = nullptr;
    QTreeWidget *TreeExchange = nullptr;
    QCheckBox *chkEWSMove = nullptr;
    QLineEdit *txtEWSMoveToFolder = nullptr;
    QCheckBox *chkEWSDeleteProcessed = nullptr;
    QCheckBox *chkEWSDeleteAll = nullptr;
    // Direct SMTP
    QGroupBox *FrameDirect = nullptr;
    QLineEdit *txtSMTPDomain = nullptr;
    QLineEdit *txtSMTPAliases = nullptr;
    // File pickup
    QGroupBox *FrameFilePickup = nullptr;
    QLineEdit *txtFilePickupFolder = nullptr;
    QLineEdit *txtFilePickupMask = nullptr;
    QPushButton *btnFilePickupBrowse = nullptr;
    // CSV and Excel pickup
    QGroupBox *FrameCSVPickup = nullptr;
    QLineEdit *txtCSVPickupFolder = nullptr;
    QLineEdit *txtCSVPickupMask = nullptr;
    QPushButton *btnCSVPickupBrowse = nullptr;
    QCheckBox *chkCSVPickupDelete = nullptr;
    QLineEdit *txtCSVPickupWorkSheet = nullptr;
    QSpinBox *txtCSVPickupHeaderRow = nullptr;
    QLabel *lblCSVPickupLastStatus = nullptr;
    // Database pull
    QGroupBox *FrameDatabasePull = nullptr;
    QLineEdit *txtDBConnection = nullptr;
    QPlainTextEdit *txtDBSQL = nullptr;
    QPushButton *btnEditSQL = nullptr;
    QPushButton *btnLUTest = nullptr;
    QLineEdit *txtDBUIDField = nullptr;
    QCheckBox *chkDBMSGBody = nullptr;
    QLineEdit *txtDBMessageField = nullptr;
    QCheckBox *chkDBDelete = nullptr;
    QLineEdit *txtDBUpdateField = nullptr;
    QLineEdit *txtDBUpdateValue = nullptr;
    // HTTP lookup
    QGroupBox *FrameHTTP = nullptr;
    QLineEdit *txtHTTPUrl = nullptr;
    QCheckBox *chkHTTPFollow = nullptr;
    QComboBox *cmboHTTPLogin = nullptr;
    QLineEdit *txtHTTPUser = nullptr;
    QLineEdit *txtHTTPPass = nullptr;
    QCheckBox *chkHTTPClean = nullptr;
    QCheckBox *chkHTTPFail = nullptr;
    QPushButton *btnHTTPCheck = nullptr;
    // RSS
    QGroupBox *FrameRSS = nullptr;
    QLineEdit *txtRSSUrl = nullptr;
    QCheckBox *chkRSSAtom = nullptr;
    QPushButton *btnRSSCheck = nullptr;
    // Clients
    QGroupBox *FrameDropbox = nullptr;
    QLineEdit *txtDropBoxToAddress = nullptr;
    QLineEdit *txtDropBoxSubject = nullptr;
    // Twitter
    QGroupBox *FrameTwitter = nullptr;
    QLabel *lblTwitterScreenName = nullptr;
    QPushButton *btnTwitterGetPin = nullptr;
    QComboBox *cmboTwitterFeedType = nullptr;
    QLineEdit *txtTwitterQuery = nullptr;
    QLineEdit *txtTwitterForUser = nullptr;
    QCheckBox *chkTwitterRetweets = nullptr;

    QPushButton *btnOK = nullptr;
    QPushButton *btnCancel = nullptr;
    QPushButton *btnHelp = nullptr;

    // Account to controls.
    void UnCrunch();
    // The first failed check says why in a warning box; true when all pass.
    bool ValidateControls();
    // Controls to the edited account.
    void ReadControls();
    // Validates, posts, makes the account's folder when new, fetches the
    // account back. False, the window left open, when a check failed or the
    // server refused.
    bool ButtonOK();
    // With the dirty flag set asks "Save Changes?": Yes saves, No drops;
    // false for Cancel or a save that failed.
    bool SaveChanges();

    // The connection tests; each ends in a box with what it found.
    void TestPOP3();
    void ConnectIMAP();
    void CheckRSS();
    void CheckHTTP();
    void TestDatabase();
    void NotAvailable();

    void DefineSchedule();
    void ChooseEdgeServer();
    void ReorderTriggers();

    // The tab captions: bold for the kinds switched on.
    void ShowCaptions();
    // The command of the "Account Settings" tab of the main window, by its
    // position in the "Message Source" group: the page of that source.
    void ShowSourcePage(int Source);

signals:
    // The account was posted: the navigator and list refresh.
    void AccountSaved(const QString &AccountID);

protected:
    void closeEvent(QCloseEvent *event) override;
    // Activation gives the main window's source commands this account's switches.
    bool event(QEvent *Event) override;

private:
    QWidget *MakeGeneralPage();
    QWidget *MakeEmailPage();
    QWidget *MakeIMAPPage();
    QWidget *MakePOP3Page();
    QWidget *MakeExchangePage();
    QWidget *MakeDirectPage();
    QWidget *MakeFilePickupPage();
    QWidget *MakeCSVPickupPage();
    QWidget *MakeDatabasePullPage();
    QWidget *MakeHTTPPage();
    QWidget *MakeRSSPage();
    QWidget *MakeClientsPage();
    QWidget *MakeTwitterPage();
    QGroupBox *SwitchFrame(const QString &Caption, QWidget *Page);
    void WatchChanges();
    void MarkDirty();
    void ShowSchedule();
    void ShowEdgeServer();
    void OutboxChanged();
    void IMAPDeleteChanged();
    void TwitterSwitched(bool On);
    void IMAPServerEdited();
    void SyncSourceCommands();

    // The IMAP trees: root, one folder shown when the list was not read,
    // the list of the server, the folder of the selected node.
    void ResetFolderTree(QTreeWidget *Tree, const QString &Folder);
    void FillFolderTree(QTreeWidget *Tree, const QStringList &Folders, const QString &Separator,
                        const QString &Selected);
    static QString FolderOfNode(const QTreeWidgetItem *Node);
    bool RootOnly(const QTreeWidget *Tree) const;

    // Runs a mailbox probe off the user interface thread while the window's
    // events go on; asks about a certificate the system doesn't trust.
    bool RunProbe(MailboxProbe &Probe, const QString &Kind);
    void ShowResult(const QString &Text, bool Failed);
    bool CheckFolder(const QString &Path, const char *ErrorKey, const char *ErrorDefault, const char *CaptionKey,
                     const char *CaptionDefault);

    void FillExchangeFolders();
    QString ExchangeFoldersXML() const;
    void ClearExchangeSync();

    QString TwitterSetting(const QString &Tag) const;
    void WriteTwitterSettings();

    bool m_filling = false;
    bool m_imapConnected = false;
    QString m_imapSeparator = QStringLiteral(".");
};

// Opens the editor of the account, or of a new one for nullptr, as a window
// that deletes itself when closed; not shown yet.
frmAccount *NewAccountEditor(clsAccount *Account, QWidget *Parent = nullptr);
