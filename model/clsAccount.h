#pragma once
#include "colTriggers.h"
#include "foundation/ValueTypes.h"

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>

class clsAccountTrigger;
class clsUser;
class clsXML;

// One message source of the server: every setting of each kind of source,
// its schedule, its run-time counters and its triggers. An account may read
// from several kinds of source at once; each kind has its own switch.
class clsAccount
{
public:
    static inline const QString ClassName = QStringLiteral("Account");

    // A new account: a new AccountID, the first organization as owner, the
    // archive defaults of the global settings and the defaults below.
    clsAccount();
    ~clsAccount();
    clsAccount(const clsAccount &) = delete;
    clsAccount &operator=(const clsAccount &) = delete;

    // Identity and display
    QString AccountID;
    QString OrganizationID; // empty: shared by all organizations
    QString AccountAddress;
    QString Name;
    QString Details;
    QDateTime CreatedDate;
    QString GroupName;
    qint16 ViewType = 0;
    bool Sample = false;
    bool Enabled = true;
    bool AutoPause = false;
    bool Outbox = false; // tag OutBox

    // Storage and processing
    bool StoreFull = true;
    bool Archive = false;
    qint16 ArchiveDays = 0;
    bool UnzipAttachments = false;
    bool AppendText = false;
    qint16 MarkAsReadType = 2; // 0 not marked, 1 always, 2 only if read at source
    QString EdgeServer;
    qint32 MaxMessagesPerRun = 0;

    // Schedule: see CheckNow for the text
    qint16 CheckEveryMins = 3;
    QString SCHEDULE = QStringLiteral("03|YYYYYYY"); // tag Schedule
    QDateTime LastChecked;
    bool MustCheckNow = false;
    bool AutoRun = false;
    QString AutoRunMessageMime;

    // POP3; the switch's name is historical
    bool SMTPServer = false;
    QString ServerIP;
    qint16 ServerPort = 0;
    QString ServerAccount;
    QString ServerPassword;
    QDateTime ServerLastEmail;
    bool ServerLeaveMessageOn = false;
    bool ServerDeleteAll = false;
    bool ServerSSL = false;
    qint32 ServerLastMessageNoChecked = 0;

    // IMAP
    bool IMAP = false;
    QString IMAPServer;
    qint16 IMAPPort = 0;
    QString IMAPAccount;
    QString IMAPPassword;
    QString IMAPFolder = QStringLiteral("inbox");
    bool IMAPMove = false;
    QString IMAPMoveToFolder;
    QDateTime IMAPLastEmail;
    bool IMAPLeaveMessageOn = true;
    bool IMAPDeleteAll = false;
    bool IMAPMarkAsRead = true;
    bool IMAPSSL = false;
    qint16 IMAPVersion = 0;
    bool IMAPServerIDs = false;

    // Exchange Web Services
    bool EWS = false;
    QString EWSUrl;
    QString EWSUsername;
    QString EWSPassword;
    QString EWSOtherMailbox;
    QString EWSFolders; // a fragment of Folder elements, not escaped text
    bool EWSMove = false;
    QString EWSMoveToFolder;
    bool EWSDeleteProcessed = false;
    bool EWSDeleteAll = false;
    QDateTime EWSLastEmail;

    // File pickup
    bool FilePickUp = false;
    QString FilePickupFolder; // tag FilePickUpFolder
    QString FilePickUpMask;
    bool FilePickupDontDelete = false;

    // CSV and Excel pickup
    bool CSVPickUp = false; // tag CSVPickup
    QString CSVPickupFolder;
    QString CSVPickupMask;
    bool CSVPickupDelete = false;
    QString CSVPickupWorkSheet;
    qint32 CSVPickupHeaderRow = 0;
    QString CSVPickupLastStatus;

    // Direct mail server
    bool MailServer = false;
    QString MailServerDomain;  // domains separated by ";"
    QString MailServerAliases; // local parts separated by ";", wildcards allowed
    QString MailServerUserName;
    QString MailServerPassword;
    bool MailServerPOP3 = true;

    // Database pull
    bool DBPull = false;
    QString DBConnection;
    QString DBSQL;
    QString DBUIDField;
    bool DBMSGBody = false;
    QString DBMSGField;
    bool DBDelete = false;
    QString DBUpdateField;
    QString DBUpdateValue;

    // HTTP lookup
    bool HTTP = false;
    QString HTTPUrl;
    bool HTTPFollow = true;
    QString HTTPUser;
    QString HTTPPass;
    qint16 HTTPLogin = 0; // 0 none, 1 basic, 2 digest
    bool HTTPClean = true;
    bool HTTPFail = false;
    QDateTime HTTPLastMessage;
    QString HTTPLastContent;

    // RSS and Atom
    bool RSS = false;
    QString RSSUrl;
    QDateTime RSSLastMessage;
    bool RSSAtom = false;

    // Drop box
    bool Dropbox = true; // tag DropBox
    QString DropBoxToAddress; // patterns separated by ";"
    QString DropBoxSubject;

    // Twitter feed. The settings object's fragment, kept as it came and
    // written back unchanged; it is read only while TwitterFeed is on.
    bool TwitterFeed = false;
    QString TwitterSettings;

    // Counters and plumbing, none of them in the fragment
    qint32 Errors = 0;
    qint32 MessageCount = 0;
    qint32 MessageCountOut = 0;
    Currency BytesReceived;
    bool GotList = false;
    QString TriggerNameList;
    bool RemoteTriggersLoaded = false;
    bool NeedsReLoading = false;
    bool XMLIncludeTriggers = false;
    colTriggers Triggers;

    // Rewinds the sources' last-seen dates to the oldest ReceivedAfter of the
    // enabled triggers, flagging the triggers concerned.
    void ReceivedAfterReset(const QDate &Today = QDate::currentDate());
    bool UserAccess(const clsUser *ThisUser) const;
    QString OrganizationName() const;
    // The organization's document folder, made on first use.
    QString DocumentRoot();
    QString InternalDatabaseName() const;
    QString InternalDatabaseConnectionString(const QString &CatalogName = QString()) const;
    bool AnyTriggersActive() const;
    // nullptr and 0 when the account has no such trigger; the ID is trimmed.
    clsAccountTrigger *TriggerFromID(const QString &TriggerID) const;
    int TriggerNoFromID(const QString &TriggerID) const;
    // Names separated by CR LF; the stored TriggerNameList while no trigger
    // is loaded.
    QString TriggerNames() const;
    void IncBytesReceived(qint64 MSGSize);
    // Whether the source is due at Now; see the schedule text above.
    bool CheckNow(const QDateTime &Now = QDateTime::currentDateTime());
    // "Every 5 Minutes", "Daily At 08:00 17:30 (Mon,Tue)".
    QString CheckedEvery() const;

    QString XML() const;
    void setXML(const QString &Value);
    void ReadXML(clsXML &Reader);

    // Account variables: names are trimmed and lower-cased. Reading an
    // unknown name adds it empty; Persisted reads a new name's value from,
    // and writes the value to, the per-machine store.
    QVariant GlobalVar(const QString &Name, bool Persisted = false);
    void setGlobalVar(const QString &Name, bool Persisted, const QVariant &Value);
    int GlobalVarCount() const { return int(m_varNames.size()); }
    // 1-based, 0 when absent.
    int GlobalVarNumber(const QString &Name) const;
    // The names that the triggers' Set actions give values to and that are
    // no fields of their trigger, separated by ","; cached until Reset.
    QString GlobalVarList(bool Reset = false);

    // Byte limits of a variable's text value and of its persisted copy.
    static constexpr qsizetype MaxVarBytes = 10485760;
    static constexpr qsizetype MaxPersistedVarBytes = 2097152;

private:
    friend class colAccounts;

    // ReadXML in two steps: the fragment into this account alone, true when
    // it was read without error; then the roles it gives the account among
    // all accounts.
    bool ReadOwnXML(clsXML &Reader);
    void SettleRoles();
    void WriteScalars(clsXML &Writer) const;
    void ReadScalars(clsXML &Reader);
    void TakeOutboxRole();
    int AddVariable(const QString &Key);

    QString m_documentRoot;
    QString m_documentRootOrganization; // the OrganizationID m_documentRoot was made for
    QStringList m_varNames;
    QVariantList m_varValues;
    QHash<QString, int> m_varIndex; // name to 0-based position
    QString m_varList;
};

// The account that a fragment marked as the enabled outbox, or nullptr.
inline clsAccount *OutboxAccount = nullptr;
