#pragma once
#include <QDate>
#include <QDateTime>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QString>
#include <QStringList>
#include <QList>
#include <QVariant>

#include <optional>

class clsAccount;
class clsMessage;

// A row of the Outbox: a composed mail (or SMS) waiting to be sent.
struct OutboxMessage
{
    qint64 RecordNo = 0;
    QString AccountID;
    QString TriggerID;
    QString ReferenceID;
    QString MailFrom;
    QString MailTo; // comma-separated addresses; a number for an SMS
    QString Subject;
    QString Mime;
    int Importance = 0; // the X-Priority of the mail
    bool Attachments = false;
    bool SMS = false;
    bool Scheduled = false;
    QDateTime ScheduledDate;
    int Status = 0; // attempts
};

// The filter of a message set. Counting, reading, deleting and marking a set
// all build their condition from it, so that a set means the same rows for each.
struct MessageSetFilter
{
    QString AccountID; // an account or a user; empty for any
    QString TriggerID;
    // A period from 2000-01-01 or earlier up to today or later is no period.
    QDate FromDate = QDate(2000, 1, 1);
    QDate ToDate = QDate::currentDate();
    bool ErrorsOnly = false;
    bool MatchesOnly = false;
    QString SearchText; // in the subject and both addresses; "%" is the wildcard
    QString FolderID; // a folder of one character ("-") is no filter
    QString OrganizationID;
};

// Data access to the message store: the tables of MessageStore.db3 and the
// inbound queue EdgeQueue.db3 in the data folder (dialect 99, SQLite), or one
// SQL Server database reached through ODBC with the connection text of
// DBConnection (dialect 0). Statements are composed as text; the literals of
// both dialects come from Quote and the date literal helpers.
//
// On SQLite the store has three connections of its own: the writer, a
// read-only reader that pages through message sets without holding writers
// up, and the queue. Other processes use the same files; the busy time-out of
// 5000 ms on every connection is what orders them. Connection names are
// unique per object, so several stores can be open in one process.
//
// Failing methods report through LogError under their own name and answer
// false, empty, or -1 for a count of rows.
class clsMessageStore
{
public:
    static constexpr int OpenAttempts = 6;

    clsMessageStore();
    ~clsMessageStore();
    clsMessageStore(const clsMessageStore &) = delete;
    clsMessageStore &operator=(const clsMessageStore &) = delete;

    // 0 SQL Server, 99 SQLite: Global.DatabaseKind at construction, which
    // SettleDatabaseKind derives from the DBType setting.
    int Dialect;
    // The reason of the last failed statement or open.
    QString LastError;

    // Opening and closing ------------------------------------------------

    // Opens the back end in up to six attempts, two seconds apart with the
    // event loop turning; each failure is logged with its attempt number. On
    // SQLite the blank MessageStore.db3 and EdgeQueue.db3 of the installation
    // are copied to the data folder first when missing there.
    bool OpenMessageStore();
    void CloseMessageStore();
    bool REOpenDatabase();
    // Brings a store below Global.CurrentDBVersion up to it and records the
    // version in the machine settings. Columns that exist already count as
    // done: the remaining statements are not run.
    bool UpdateDatabaseSchema();

    // The connections the store's statements and row sets (clsRowSet) run
    // on; on SQL Server all three are the one connection.
    QString StoreConnection() const { return m_store; }
    QString ReaderConnection() const { return Dialect == 99 ? m_reader : m_store; }
    QString QueueConnection() const { return Dialect == 99 ? m_queue : m_store; }

    // A statement on the store or on the queue: the rows affected, -1 when it failed.
    qint64 Execute(const QString &SQL);
    qint64 ExecuteEQ(const QString &SQL);
    // A write transaction on the SQLite store connection, taken at once so
    // that reads inside it cannot meet another writer; nothing on SQL Server.
    bool BeginTransaction();
    bool EndTransaction();
    void RollbackTransaction();
    // Removes the processed queue rows and, when nothing else is left, shrinks
    // the queue file (SQLite only).
    bool ResetEdgeQueue();

    // Statement text ------------------------------------------------------

    // A string literal: quotes doubled; on SQL Server line ends and tabs
    // stand outside the literal as CHAR(n) pieces, SQLite keeps them inside.
    QString Quote(const QString &Text) const;
    // "{ d 'yyyy-mm-dd'}" on SQL Server, "'yyyy-mm-dd 00:00:00'" on SQLite.
    QString DateLiteral(const QDate &Date) const;
    // The date at a fixed time ("hh:mm:ss"): "{ ts '...'}" or "'...'".
    QString DateLiteral(const QDate &Date, const QString &Time) const;
    QString DateTimeLiteral(const QDateTime &Value) const;
    // The first row only: "SELECT TOP 1 Columns FROM Rest" on SQL Server,
    // "SELECT Columns FROM Rest LIMIT 1" on SQLite.
    QString SelectFirst(const QString &Columns, const QString &Rest) const;

    // Deleting ------------------------------------------------------------

    qint64 DeleteOldMessages(const QString &AccountID, const QDateTime &Before);
    // The account's stored messages (only the trigger's when one is given),
    // its folders, pending and queued messages, its scheduled mail and its
    // files in IMAP/Public/.
    bool DeleteMessages(const QString &AccountID, const QString &TriggerID = QString());
    // Everything of a deleted account: DeleteMessages, and the flags of its
    // folders, its day summaries and its outgoing mail.
    bool DeleteAccount(const QString &AccountID);
    // Scheduled rows of the Outbox of the account, narrowed to the trigger and
    // to a search in subject and addresses when given.
    qint64 DeleteScheduledEmails(const QString &AccountID, const QString &TriggerID = QString(),
                                 const QString &SearchText = QString());
    // Messages, pending messages and statistics of the organization, or of
    // all when none is given, and their files in IMAP/Public/.
    bool ClearAllMailStore(const QString &OrganizationID = QString());
    // The user's rows, its folders with every user's flags on them, and the
    // messages, pending and queued rows and day summaries of its mailbox
    // (the user's ID stands as the account).
    bool DeleteUser(const QString &UserID);
    // The organization's users, folders with their flags, messages, pending
    // rows and statistics, and the queued and outgoing mail of its accounts.
    bool DeleteOrganization(const QString &ID);

    // Message sets --------------------------------------------------------

    // The condition of a message set, without "WHERE"; empty for an empty filter.
    QString MessageSetWhere(const MessageSetFilter &Filter) const;
    // The statement of one page; rows FirstRow to LastRow counted from 1 in
    // the order of MessageDate descending, 0 meaning 1 and 200. SQL Server
    // pages with ROW_NUMBER unless DBConnection names the sqloledb provider.
    QString MessageSetSQL(const MessageSetFilter &Filter, qint64 FirstRow, qint64 LastRow) const;
    qint64 CountMessageSet(const MessageSetFilter &Filter);
    // A page as row text: a line per message closed by a line feed, fields
    // closed by a tab: RecordNo, Importance, Attachments (Y/N), FolderID,
    // FromAddress, Subject, MessageDate, ProcessedDate, MessageFlags,
    // TriggerMatch (Y/N), TriggerSuccess (Y/N), TriggerError.
    QString GetMessageSet(const MessageSetFilter &Filter, qint64 FirstRow = 0, qint64 LastRow = 0);
    qint64 DeleteMessageSet(const MessageSetFilter &Filter);
    qint64 MarkAllAsRead(const MessageSetFilter &Filter);

    bool MarkAsRead(qint64 RecordNo);
    bool MarkAsUnRead(qint64 RecordNo);
    bool DeleteMessage(qint64 RecordNo);
    // Moves a message of FolderID; an empty account is stored as "-".
    bool MoveMessage(qint64 RecordNo, const QString &FolderID, const QString &ToFolderID, const QString &AccountID);
    // The newest MessageDate of the account and source in the store and the
    // queue; NoDate() when there is none.
    QDateTime GetLastMSGDate(const QString &AccountID, const QString &Source);
    // Messages processed on the day, and all messages; of one organization when given.
    qint64 GetMessageStoreCount(const QDate &Day, const QString &OrganizationID = QString());
    qint64 GetMessageStoreTotalCount(const QString &OrganizationID = QString());

    // Stored messages -----------------------------------------------------

    // Stores the message as a new row (the processor passes the current
    // message) and counts it in the day summary. The account decides whether
    // the whole MIME body is kept (StoreFull) and whether the message is
    // stored read (MarkAsReadType); a message of no account is kept whole and
    // read, under the account "-". The number of the new row; 0 when it could
    // not be stored.
    qint64 AddToMailStore(const clsMessage &Message);
    // The stored message as MIME text with its process state in "Postvane-"
    // headers and its process log attached as "ProcessLog.log"; reading it
    // marks it read. With UIDOnly just its UID. Empty for an unknown number.
    QString GetMessage(qint64 RecordNo, bool UIDOnly = false);
    // The process log lines of a message from the edge server's log, then
    // the message server's, joined by line feeds.
    QString GetMessageLogs(const QString &UID);

    // Day summary ---------------------------------------------------------

    // Counts a message of today for the account: in (with LastTime now) or
    // out, and its bytes.
    bool UpdateDaySummary(const QString &OrganizationID, const QString &AccountID, bool Incoming, qint64 Bytes);
    // Counts a token of today under its type: 1 sender domain, 2 sender
    // country, 3 attachment file type, 100 and up custom. Empty tokens are
    // not counted.
    bool UpdateDaySummaryToken(const QString &OrganizationID, const QString &AccountID, int TokenType,
                               const QString &Token, qint64 Count = 1);
    // The same under a custom type named by its description; a new name
    // gets the organization's next custom type, the first being 100.
    bool UpdateDaySummaryTokenCustom(const QString &OrganizationID, const QString &AccountID,
                                     const QString &TokenTypeDesc, const QString &Token, qint64 Count = 1);
    // The message's tokens: the domain of its sender, its country and the
    // file type of each attachment.
    bool UpdateDaySummaryTokens(const clsMessage &Message);
    // The built-in token types 1 to 3 of an organization that has none yet.
    bool AddDaySummaryTokenTypes(const QString &OrganizationID);
    // The same for every organization of the configuration.
    bool AddMissingDaySummaryTokenTypes();
    // The report of "getdaysummary.xml": "<Lines>", a "<Line>" per row,
    // "</Lines>". Types below 1000 list the tokens of that type by day
    // (the "<Dated>...</Date>" pair is what the reader expects); 1000, 1001
    // and 1002 the day counts MessagesIn, MessagesOut and BytesIn.
    QString GetDaySummary(const QString &AccountID, const QDate &FromDate, const QDate &ToDate, int TokenOrType);

    // Edge queue -----------------------------------------------------------
    //
    // Inbound messages wait in EdgeQueue, each whole as MIME text with its
    // process headers ("Postvane-AccountID", "Postvane-TriggerID",
    // "Postvane-Source", "Postvane-UID", ...). Processed: 0 waiting, 1 taken
    // by a processor, 2 parked for validation, 99 received with no trigger
    // assigned.
    //
    // Like the store's other connections, the queue connection belongs to the
    // thread that opened the store: each worker thread of the engine opens a
    // clsMessageStore of its own and uses it alone.

    // Whether a write to the queue is on disk before it returns (SQLite's
    // full synchronous mode), as a reader of a source needs before it deletes
    // the message at the source. The processor's writes to the queue (taking
    // and releasing rows) need not be: a take lost to a power failure leaves
    // the row waiting, a release lost leaves a taken row whose message is
    // stored, which the next start releases. Set before opening.
    bool DurableQueueWrites = true;

    // True when neither the store nor the queue (at any Processed) holds the
    // identity.
    bool IsNewMessage(const QString &AccountID, const QString &Source, const QString &UID);
    // True when the store holds the identity. Asked on the writer inside a
    // transaction, the answer holds until its commit, also against other
    // processes.
    bool IsStoredMessage(const QString &AccountID, const QString &Source, const QString &UID);
    // The message's MessageText and validation fields as a new row, Processed
    // 0. The RecordNo of the row; 0 when it could not be written.
    qint64 AddToEdgeQueue(const clsMessage &Message, const QString &AccountID, const QString &Source,
                          const QString &UID, const QDateTime &MessageDate);
    // The same from a MIME text, with the Processed given.
    qint64 AddEMLToEdgeQueue(const QString &AccountID, const QString &Source, const QString &UID,
                             const QDateTime &MessageDate, const QString &Mime, int Processed = 0);
    // A plain-text test message for the account and trigger, Source "TEST"
    // and a new UID, queued; its RecordNo, 0 when it failed.
    qint64 AddTestToEdgeQueue(const QString &AccountID, const QString &TriggerID, const QString &Text);
    // The MIME text AddTestToEdgeQueue queues.
    static QString TestMessageMime(const clsAccount *Account, const QString &AccountID, const QString &TriggerID,
                                   const QString &Text);
    // Takes the oldest waiting row and loads it into Message (the thread's
    // current message): RecordNo, validation fields, the MIME text and what
    // its process headers say: account, forced trigger, user, Source, UID
    // (MessageID), REProcess, IsRead, TestMessage. NewMessage is false when
    // the identity is stored already. Taking is one UPDATE of the row with
    // Processed 0 that changes it to 1 under this process's name, so two
    // processors never take one row. False when nothing waits. Every eleventh
    // call reopens the queue connection, so that it never holds the file
    // for long.
    bool GetEdgeQueue(clsMessage &Message);
    qint64 GetEdgeQueueCount();
    // "AccountID<tab>ValidateActionID<tab>UID" of the row; empty when there is none.
    QString GetEdgeQueueUID(qint64 RecordNo);
    bool DeleteEdgeQueueRecord(qint64 RecordNo);
    // Releases the rows of messages whose store rows are committed.
    bool DeleteEdgeQueueRecords(const QList<qint64> &RecordNos);
    qint64 DeleteEdgeQueueProcessed();
    // For a processor that starts: rows taken by processes of this machine
    // that no longer run are deleted when their identity is stored and
    // otherwise wait again (Processed 0). The number of rows that wait again;
    // -1 when it failed.
    qint64 ReturnTakenEdgeQueue();
    // The name under which this process takes rows.
    static QString EdgeQueueTaker();
    // Rows taken by this process that it could not store wait again.
    bool ReturnEdgeQueueRecords(const QList<qint64> &RecordNos);
    // After a run on a stored message (a reprocess): its trigger, folder,
    // error and success in the store row of its identity. No trigger is
    // stored as "-". False when it failed; Updated tells whether a row of the
    // identity was there.
    bool UpdateMessageStoreTrigger(const clsMessage &Message, bool *Updated = nullptr);
    // Writes a stored message back to the queue to be run again: its
    // headers and body as MIME text, marked "Postvane-Reprocess: 1" (and
    // "Postvane-Spam: Yes" when Spam), without its former trigger; any queue
    // row of its identity is replaced. The new RecordNo; 0 when the message
    // is not there (in the folder, when one is given) or the queue refused.
    qint64 SaveMessageToReprocess(const QString &FolderID, qint64 RecordNo, bool Spam = false);
    // Settles the parked rows whose validation has expired, by their
    // ValidateExpiresType: 0 stores the message as it is and deletes the row,
    // 1 lets it be processed now, any other deletes it; a row of an account
    // that no longer exists is deleted. The log line of each, ending in the
    // row's number.
    QStringList GetExpiredValidationMessage();
    // The oldest row received with no trigger assigned (Processed 99) into
    // Message: its RecordNo and MIME text, and the account, Source and UID
    // of its process headers. False when there is none.
    bool GetEdgeQueueNoTriggerAssigned(clsMessage &Message);
    // The trigger chosen for such a row goes into its MIME text as
    // "Postvane-TriggerID", and the row waits to be processed.
    bool AssignEdgeQueueTrigger(qint64 RecordNo, const QString &TriggerID);
    // A copy of the stored message in another folder: every column but
    // RecordNo. The copy's RecordNo; 0 when there is no such message.
    qint64 CopyMessage(qint64 RecordNo, const QString &ToFolderID);
    // The stored message's headers, CR LF and body, as a file.
    bool WriteMessageToFile(qint64 RecordNo, const QString &Path);
    // Pending messages: kept whole until their turn. The row's RecordNo; 0
    // when it failed.
    qint64 AddToPendingStore(const clsMessage &Message);
    qint64 AddEMLToPendingStore(const QString &AccountID, const QString &TriggerID, const QString &Source,
                                const QString &UID, const QString &Mime);
    // The oldest pending message into Message (its importance "NORMAL" when
    // it names none), its row removed. False when there is none.
    bool GetPendingMessage(clsMessage &Message);
    // "<LastDates>" with an "<Account>" per account: its AccountID and the
    // newest message date in the store and the queue of its IMAP, POP3 and
    // RSS sources, in the tags the accounts read them from.
    QString GetLastMessageDates();
    // A confirmed message waits again: Processed 0.
    bool ValidateEdgeQueueMessage(qint64 RecordNo);
    // Parks the row for validation: Processed 2 with the action, the expiry
    // and the confirmation text.
    // ExpiresType is what the expiry does (see GetExpiredValidationMessage);
    // a negative one leaves the row's as it is.
    bool ValidateRequired(qint64 RecordNo, const QString &ActionID, const QDateTime &Expires,
                          const QString &ConfirmationMessage, int ExpiresType = -1);
    // The answer of the validation page: a confirmed message waits to be
    // processed again, with the survey's answers; a rejected one expires
    // now, and is stored without running the actions behind its Validation
    // action (or removed, when its action says so). False when the row
    // does not wait for validation.
    // The row that waits for validation: UID, Mime,
    // ValidateConfirmationMessage, ValidateActionID, AccountID; an empty
    // record when no such row waits, nullopt on failure.
    std::optional<QSqlRecord> GetValidationRequest(qint64 RecordNo);
    bool AnswerValidation(qint64 RecordNo, bool Confirmed, const QString &InputFieldsXML = QString());

    // Several MIME texts of one account and source as new waiting rows, in
    // one transaction of the queue connection: all are written or none. The
    // RecordNo of each, in order; empty when the commit failed.
    QList<qint64> AddEMLsToEdgeQueue(const QString &AccountID, const QString &Source, const QStringList &UIDs,
                                     const QList<QDateTime> &MessageDates, const QStringList &Mimes);

    // Outbox ---------------------------------------------------------------
    //
    // Every mail and SMS the server sends waits in Outbox as composed MIME
    // text with its addresses, a due date (ScheduledDate) and a status: the
    // attempts so far (0-99), or attempts + 100 while a sender has it.
    // Scheduled rows are those of ScheduledMessages: mail due later.

    // A row due at Schedule (now when null); its RecordNo, -1 when it failed.
    qint64 AddToOutBox(const OutboxMessage &Message, const QDateTime &Schedule = QDateTime());
    // A scheduled row (Scheduled set) due at Message.ScheduledDate.
    qint64 AddScheduledEmail(const OutboxMessage &Message);
    // An SMS: MailTo is the number.
    qint64 AddScheduledSMS(const OutboxMessage &Message);
    // True when a scheduled row of the trigger for that recipient has the
    // same subject and sender.
    bool ScheduledDuplicate(const QString &TriggerID, const QString &MailTo, const QString &Subject,
                            const QString &MailFrom);
    // Takes the next due row with a status below 100: its status becomes
    // attempts + 1 + 100 and its date ten minutes on, so that a sender that
    // dies leaves it due again then. Message holds the row (Status the
    // attempts including this one). False when nothing is due (or it failed).
    bool GetOutBox(OutboxMessage &Message);
    // A row whose attempt failed waits again with its count of attempts,
    // due at NextTry.
    bool ReturnOutBox(qint64 RecordNo, int Attempts, const QDateTime &NextTry);
    // Rows a sender took and did not finish by the date set at the take (its
    // process ended): status back below 100, due at once.
    qint64 ReturnTakenOutBox();
    bool DeleteOutBox(qint64 RecordNo);
    bool GetOutBoxRecord(qint64 RecordNo);
    QString GetScheduledBody(qint64 RecordNo);
    // The scheduled rows of the account (narrowed to the trigger and a
    // search in subject and addresses when given), a line each closed by a
    // line feed, fields closed by tabs: RecordNo, Importance, Attachments
    // ("Y"/"N"), TriggerID, MailFrom, MailTo, ScheduledDate
    // ("yyyy-mm-dd hh:mm:ss"), Subject.
    QString GetScheduledMessages(const QString &AccountID, const QString &TriggerID = QString(),
                                 const QString &SearchText = QString());
    bool DeleteScheduledEmail(qint64 RecordNo);
    // The row becomes due now; false when it failed. Rows tells whether it was there.
    bool SendScheduledEmail(qint64 RecordNo, bool *Found = nullptr);
    // Queues the stored message (its headers and body) for each address of
    // the comma-separated list; the number of rows added, -1 when the
    // message is not there (in the folder, when one is given) or a row failed.
    int ForwardMessage(qint64 RecordNo, const QString &FolderID, const QString &Addresses);
    qint64 GetOutBoxCount();

private:
    bool OpenOnce();
    bool OpenSQLiteFiles();
    bool OpenServer();
    // Runs a statement on a connection; failures are reported under Routine.
    qint64 Run(const QString &Connection, const QString &SQL, const QString &Routine);
    // A forward-only query of the statement; nullopt when it failed
    // (reported under Routine).
    std::optional<QSqlQuery> Select(const QString &Connection, const QString &SQL, const QString &Routine);
    // The first value of the first row: nullopt when the statement failed
    // (reported under Routine), an invalid QVariant when there is no row.
    std::optional<QVariant> Scalar(const QString &Connection, const QString &SQL, const QString &Routine);
    bool RunAll(const QString &Connection, const QStringList &Statements, const QString &Routine);
    QString SearchCondition(const QString &Columns, const QString &SearchText) const;
    // The deletes of FolderFlags and MessageFlags on the folders that the
    // condition on Folders picks; they run before the folders go.
    QStringList FlagsOfFolders(const QString &FolderCondition) const;
    // Adds a row through a row set: its RecordNo (0 for a table without
    // one), -1 when it failed (reported under Routine).
    qint64 AddRow(const QString &Table, const QVariantMap &Values, const QString &Routine);
    qint64 AddQueueRow(const QVariantMap &Values, const QString &Routine);
    bool EnsureQueueColumns();
    bool OpenQueue();
    // The oldest waiting row, taken by this process; 0 when none waits, -1 on failure.
    qint64 TakeEdgeQueueRow();
    // The columns the processor reads of the row it takes; an empty record
    // when none waits, nullopt on failure.
    std::optional<QSqlRecord> TakeEdgeQueueRecord();
    qint64 AddMessageRow(const clsMessage &Message);

    const QString m_store;
    const QString m_reader;
    const QString m_queue;
    bool m_inTransaction = false;
    int m_queueCalls = 0;
};
