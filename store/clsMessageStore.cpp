#include "clsMessageStore.h"
#include "MessageMime.h"
#include "MimeMail.h"
#include "StoreFiles.h"
#include "clsEventLog.h"
#include "clsMessage.h"
#include "clsRowSet.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "foundation/Startup.h"
#include "foundation/TextHelpers.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "model/clsUserOrganization.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QSysInfo>
#include <QLocale>

#include <atomic>

namespace {

const QString StoreFile = QStringLiteral("MessageStore.db3");
const QString QueueFile = QStringLiteral("EdgeQueue.db3");

QString NewConnectionName(const QString &Role)
{
    static std::atomic<int> instances{0};
    return QStringLiteral("Postvane%1.%2").arg(Role).arg(++instances);
}

QString Number(qint64 Value)
{
    return QString::number(Value);
}

QString YesNo(const QVariant &Value)
{
    return Value.toLongLong() != 0 ? QStringLiteral("Y") : QStringLiteral("N");
}

QString RowDate(const QVariant &Value)
{
    return SafeDate(Value).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

// Tabs and line ends close the fields and lines of row text; character 160
// is what mail clients put where a blank was meant.
QString CleanRowText(QString Text)
{
    Text.remove(u'\t').remove(u'\r').remove(u'\n').remove(QChar(160));
    return Text;
}

// How the store writes "no account", "no trigger" and "no folder".
QString StoredID(const QString &ID)
{
    return ID.isEmpty() ? QStringLiteral("-") : ID;
}

// MessageFlags of a new row, 0 unread or 2 read, as the account's
// MarkAsReadType has it; a message of no account is read.
int ReadFlags(const clsAccount *Account, bool IsRead)
{
    if (!Account)
        return 2;
    switch (Account->MarkAsReadType) {
    case 0:
        return 0;
    case 1:
        return 2;
    default:
        return IsRead ? 2 : 0;
    }
}

// The body of a MIME text: what follows its header block, or the whole text
// when it does not begin with one (a body whose headers were cut already).
QString MimeBody(const QString &Text)
{
    const qsizetype blankLine = Text.indexOf(QStringLiteral("\r\n\r\n"));
    if (blankLine < 0)
        return Text;
    static const QRegularExpression headerLine(QStringLiteral("^([!-9;-~]+:|[ \t])"));
    const QStringList lines = Text.left(blankLine).split(QStringLiteral("\r\n"));
    for (const QString &line : lines)
        if (!headerLine.match(line).hasMatch())
            return Text;
    return Text.mid(blankLine + 4);
}

// Message files of the built-in mail server's public folders.
void RemoveMessageFiles(const QString &Pattern)
{
    QDir folder(Global.DataPath + QStringLiteral("IMAP/Public/"));
    for (const QString &name : folder.entryList({Pattern}, QDir::Files))
        folder.remove(name);
}

} // namespace

clsMessageStore::clsMessageStore()
    : Dialect(Global.DatabaseKind)
    , m_store(NewConnectionName(QStringLiteral("Store")))
    , m_reader(NewConnectionName(QStringLiteral("StoreReader")))
    , m_queue(NewConnectionName(QStringLiteral("Queue")))
{
}

clsMessageStore::~clsMessageStore()
{
    CloseMessageStore();
}

// Opening and closing ----------------------------------------------------

bool clsMessageStore::OpenMessageStore()
{
    for (int attempt = 1; attempt <= OpenAttempts; ++attempt) {
        if (OpenOnce())
            return true;
        LogError(QStringLiteral("OpenMessageStore"),
                 QStringLiteral("Could not open message store will retry ") + Number(attempt));
        if (attempt < OpenAttempts)
            Wait(8);
    }
    return false;
}

bool clsMessageStore::OpenOnce()
{
    CloseMessageStore();
    if (Dialect == 99 ? OpenSQLiteFiles() : OpenServer())
        return true;
    CloseMessageStore();
    return false;
}

bool clsMessageStore::OpenSQLiteFiles()
{
    const QString store = Global.DataPath + StoreFile;
    const QString queue = Global.DataPath + QueueFile;
    // The writer opens first, so that the WAL files are there for the
    // read-only reader.
    return EnsureDatabaseFile(store, StoreFile, &LastError) && EnsureDatabaseFile(queue, QueueFile, &LastError)
        && OpenSQLite(m_store, store, false, &LastError) && OpenSQLite(m_reader, store, true, &LastError)
        && OpenQueue() && EnsureQueueColumns();
}

bool clsMessageStore::OpenQueue()
{
    if (!OpenSQLite(m_queue, Global.DataPath + QueueFile, false, &LastError))
        return false;
    return DurableQueueWrites
        || Run(m_queue, QStringLiteral("PRAGMA synchronous=NORMAL"), QStringLiteral("OpenMessageStore")) >= 0;
}

bool clsMessageStore::OpenServer()
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QODBC"), m_store);
    db.setDatabaseName(Global.DBConnection);
    if (db.open())
        return true;
    LastError = db.lastError().text();
    return false;
}

void clsMessageStore::CloseMessageStore()
{
    CloseConnection(m_store);
    CloseConnection(m_reader);
    CloseConnection(m_queue);
}

bool clsMessageStore::REOpenDatabase()
{
    CloseMessageStore();
    return OpenMessageStore();
}

bool clsMessageStore::UpdateDatabaseSchema()
{
    if (Global.DBVersion >= GlobalBlock::CurrentDBVersion)
        return true;
    const QStringList statements = Dialect == 99
        ? QStringList{QStringLiteral("ALTER TABLE MessageStore ADD [Guid] VARCHAR (32);"),
                      QStringLiteral("ALTER TABLE MessageStore ADD [MessageSize] INTEGER;"),
                      QStringLiteral("ALTER TABLE MessageStore ADD [MessageDigest] VARCHAR(1000);"),
                      QStringLiteral("ALTER TABLE MessageStore Add [AttachmentNames] VARCHAR(1000);"),
                      QStringLiteral("CREATE INDEX [MessageStore_key6] ON [MessageStore]([Guid]);")}
        : QStringList{QStringLiteral("ALTER TABLE MessageStore ADD [Guid] CHAR (32),[MessageSize] INTEGER DEFAULT 0,"
                                     "[MessageDigest] VARCHAR(1000),[AttachmentNames] VarChar(1000)"),
                      QStringLiteral("CREATE INDEX MessageStore_key6 ON MessageStore([Guid])")};
    for (const QString &sql : statements) {
        QSqlQuery query(QSqlDatabase::database(m_store, false));
        if (query.exec(sql))
            continue;
        LastError = query.lastError().text();
        if (!LastError.contains(QStringLiteral("table must be unique"))
            && !LastError.contains(QStringLiteral("duplicate column name"))) {
            LogError(QStringLiteral("UpdateDatabaseSchema"), LastError);
            return false;
        }
        break; // the columns are there: an earlier upgrade got this far
    }
    clsRowSet::ForgetConnection(m_store);
    Global.DBVersion = GlobalBlock::CurrentDBVersion;
    SaveMachineSetting(QStringLiteral("Settings"), QStringLiteral("DBVersion"), Global.DBVersion);
    return true;
}

// Statements -------------------------------------------------------------

qint64 clsMessageStore::Run(const QString &Connection, const QString &SQL, const QString &Routine)
{
    QSqlQuery query(QSqlDatabase::database(Connection, false));
    if (!query.exec(SQL)) {
        LastError = query.lastError().text();
        LogError(Routine, LastError);
        return -1;
    }
    return qMax(0, query.numRowsAffected());
}

std::optional<QSqlQuery> clsMessageStore::Select(const QString &Connection, const QString &SQL, const QString &Routine)
{
    QSqlQuery query(QSqlDatabase::database(Connection, false));
    query.setForwardOnly(true);
    if (query.exec(SQL))
        return query;
    LastError = query.lastError().text();
    LogError(Routine, LastError);
    return std::nullopt;
}

std::optional<QVariant> clsMessageStore::Scalar(const QString &Connection, const QString &SQL, const QString &Routine)
{
    auto query = Select(Connection, SQL, Routine);
    if (!query)
        return std::nullopt;
    return query->next() ? query->value(0) : QVariant();
}

bool clsMessageStore::RunAll(const QString &Connection, const QStringList &Statements, const QString &Routine)
{
    bool ok = true;
    for (const QString &sql : Statements)
        ok = Run(Connection, sql, Routine) >= 0 && ok;
    return ok;
}

qint64 clsMessageStore::AddRow(const QString &Table, const QVariantMap &Values, const QString &Routine)
{
    clsRowSet row(m_store);
    bool ok = row.Open(Table, QStringLiteral("1=0"));
    if (ok) {
        row.AddNew();
        for (auto it = Values.cbegin(); ok && it != Values.cend(); ++it)
            ok = row.setField(it.key(), it.value());
        ok = ok && row.Update();
    }
    if (ok)
        return row.Field(QStringLiteral("RecordNo")).toLongLong();
    LastError = row.LastError;
    LogError(Routine, LastError);
    return -1;
}

qint64 clsMessageStore::Execute(const QString &SQL)
{
    return Run(m_store, SQL, QStringLiteral("Execute"));
}

qint64 clsMessageStore::ExecuteEQ(const QString &SQL)
{
    return Run(QueueConnection(), SQL, QStringLiteral("ExecuteEQ"));
}

bool clsMessageStore::BeginTransaction()
{
    if (Dialect != 99)
        return true;
    m_inTransaction
        = Run(m_store, QStringLiteral("BEGIN IMMEDIATE TRANSACTION"), QStringLiteral("BeginTransaction")) >= 0;
    return m_inTransaction;
}

bool clsMessageStore::EndTransaction()
{
    if (Dialect != 99)
        return true;
    m_inTransaction = false;
    return Run(m_store, QStringLiteral("COMMIT TRANSACTION"), QStringLiteral("EndTransaction")) >= 0;
}

void clsMessageStore::RollbackTransaction()
{
    m_inTransaction = false;
    Run(m_store, QStringLiteral("ROLLBACK TRANSACTION"), QStringLiteral("RollbackTransaction"));
}

bool clsMessageStore::ResetEdgeQueue()
{
    if (Dialect != 99)
        return true;
    const QString routine = QStringLiteral("ResetEdgeQueue");
    if (Run(m_queue, QStringLiteral("DELETE FROM EdgeQueue WHERE Processed=1"), routine) < 0)
        return false;
    const auto processed = Scalar(m_queue, QStringLiteral("SELECT COUNT(*) FROM EdgeQueue WHERE Processed=1"), routine);
    const auto all = Scalar(m_queue, QStringLiteral("SELECT COUNT(*) FROM EdgeQueue"), routine);
    if (!processed || !all)
        return false;
    if (processed->toLongLong() != all->toLongLong())
        return true;
    // The file shrinks in place. Deleting it and copying the blank back
    // would lose what other processes write meanwhile: they go on writing
    // into the deleted file.
    return Run(m_queue, QStringLiteral("VACUUM"), routine) >= 0
        && Run(m_queue, QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"), routine) >= 0;
}

// Statement text ---------------------------------------------------------

QString clsMessageStore::Quote(const QString &Text) const
{
    constexpr int Plain = 0;
    constexpr int SQLServer = 1;
    return SQLQuote(Text, Dialect == 99 ? Plain : SQLServer);
}

QString clsMessageStore::DateLiteral(const QDate &Date) const
{
    const QString day = Date.toString(QStringLiteral("yyyy-MM-dd"));
    return Dialect == 99 ? u'\'' + day + QStringLiteral(" 00:00:00'")
                         : QStringLiteral("{ d '") + day + QStringLiteral("'}");
}

QString clsMessageStore::DateLiteral(const QDate &Date, const QString &Time) const
{
    const QString stamp = Date.toString(QStringLiteral("yyyy-MM-dd")) + u' ' + Time;
    return Dialect == 99 ? u'\'' + stamp + u'\'' : QStringLiteral("{ ts '") + stamp + QStringLiteral("'}");
}

QString clsMessageStore::DateTimeLiteral(const QDateTime &Value) const
{
    return DateLiteral(Value.date(), Value.time().toString(QStringLiteral("HH:mm:ss")));
}

QString clsMessageStore::SelectFirst(const QString &Columns, const QString &Rest) const
{
    return Dialect == 99
        ? QStringLiteral("SELECT ") + Columns + QStringLiteral(" FROM ") + Rest + QStringLiteral(" LIMIT 1")
        : QStringLiteral("SELECT TOP 1 ") + Columns + QStringLiteral(" FROM ") + Rest;
}

QString clsMessageStore::SearchCondition(const QString &Columns, const QString &SearchText) const
{
    QString pattern = SearchText;
    if (!pattern.startsWith(u'%'))
        pattern.prepend(u'%');
    if (!pattern.endsWith(u'%'))
        pattern.append(u'%');
    QStringList tests;
    for (const QString &column : Columns.split(u','))
        tests << column + QStringLiteral(" LIKE ") + Quote(pattern);
    return u'(' + tests.join(QStringLiteral(" OR ")) + u')';
}

// Deleting ---------------------------------------------------------------

qint64 clsMessageStore::DeleteOldMessages(const QString &AccountID, const QDateTime &Before)
{
    return Run(m_store,
               QStringLiteral("DELETE FROM MessageStore WHERE AccountID=") + Quote(AccountID)
                   + QStringLiteral(" AND MessageDate < ") + DateTimeLiteral(Before),
               QStringLiteral("DeleteOldMessages"));
}

bool clsMessageStore::DeleteMessages(const QString &AccountID, const QString &TriggerID)
{
    const QString routine = QStringLiteral("DeleteMessages");
    const QString account = QStringLiteral(" WHERE AccountID=") + Quote(AccountID);
    const QString trigger = TriggerID.isEmpty() ? QString() : QStringLiteral(" AND TriggerID=") + Quote(TriggerID);
    bool ok = RunAll(m_store,
                     {QStringLiteral("DELETE FROM MessageStore") + account + trigger,
                      QStringLiteral("DELETE FROM Folders") + account, QStringLiteral("DELETE FROM Pending") + account},
                     routine);
    ok = Run(QueueConnection(), QStringLiteral("DELETE FROM EdgeQueue") + account, routine) >= 0 && ok;
    ok = DeleteScheduledEmails(AccountID) >= 0 && ok;
    RemoveMessageFiles(QStringLiteral("msg_") + AccountID + QStringLiteral("*.eml"));
    return ok;
}

bool clsMessageStore::DeleteAccount(const QString &AccountID)
{
    const QString account = QStringLiteral(" WHERE AccountID=") + Quote(AccountID);
    QStringList statements = FlagsOfFolders(QStringLiteral("AccountID=") + Quote(AccountID));
    for (const char *table : {"DaySummary", "DaySummaryToken", "Outbox"})
        statements << QStringLiteral("DELETE FROM ") + QLatin1String(table) + account;
    const bool ok = RunAll(m_store, statements, QStringLiteral("DeleteAccount"));
    return DeleteMessages(AccountID) && ok;
}

QStringList clsMessageStore::FlagsOfFolders(const QString &FolderCondition) const
{
    const QString folders = QStringLiteral(" WHERE FolderID IN (SELECT FolderID FROM Folders WHERE ") + FolderCondition
        + u')';
    return {QStringLiteral("DELETE FROM FolderFlags") + folders, QStringLiteral("DELETE FROM MessageFlags") + folders};
}

qint64 clsMessageStore::DeleteScheduledEmails(const QString &AccountID, const QString &TriggerID,
                                              const QString &SearchText)
{
    QString sql = QStringLiteral("DELETE FROM Outbox WHERE (Scheduled<>0) AND (AccountID=") + Quote(AccountID)
        + QStringLiteral(") ");
    if (!TriggerID.isEmpty())
        sql += QStringLiteral("AND (TriggerID=") + Quote(TriggerID) + u')';
    if (!SearchText.isEmpty())
        sql += QStringLiteral(" AND ") + SearchCondition(QStringLiteral("Subject,MailFrom,MailTo"), SearchText);
    return Run(m_store, sql.trimmed(), QStringLiteral("DeleteScheduledEmails"));
}

bool clsMessageStore::ClearAllMailStore(const QString &OrganizationID)
{
    const QString narrow
        = OrganizationID.isEmpty() ? QString() : QStringLiteral(" WHERE OrganizationID=") + Quote(OrganizationID);
    QStringList statements;
    for (const char *table : {"MessageStore", "Pending", "DaySummary", "DaySummaryToken", "DaySummaryTokenTypes"})
        statements << QStringLiteral("DELETE FROM ") + QLatin1String(table) + narrow;
    const bool ok = RunAll(m_store, statements, QStringLiteral("ClearAllMailStore"));
    if (OrganizationID.isEmpty()) {
        RemoveMessageFiles(QStringLiteral("msg_*.eml"));
    } else {
        for (const clsAccount *account : Accounts())
            if (account->OrganizationID == OrganizationID)
                RemoveMessageFiles(QStringLiteral("msg_") + account->AccountID + QStringLiteral("*.eml"));
    }
    return ok;
}

bool clsMessageStore::DeleteUser(const QString &UserID)
{
    const QString routine = QStringLiteral("DeleteUser");
    const QString user = QStringLiteral(" WHERE UserID=") + Quote(UserID);
    const QString mailbox = QStringLiteral(" WHERE AccountID=") + Quote(UserID);
    QStringList statements = FlagsOfFolders(QStringLiteral("UserID=") + Quote(UserID));
    statements << QStringLiteral("DELETE FROM Users") + user << QStringLiteral("DELETE FROM Folders") + user
               << QStringLiteral("DELETE FROM FolderFlags") + user << QStringLiteral("DELETE FROM MessageFlags") + user;
    for (const char *table : {"MessageStore", "Pending", "DaySummary", "DaySummaryToken"})
        statements << QStringLiteral("DELETE FROM ") + QLatin1String(table) + mailbox;
    const bool ok = RunAll(m_store, statements, routine);
    return Run(QueueConnection(), QStringLiteral("DELETE FROM EdgeQueue") + mailbox, routine) >= 0 && ok;
}

bool clsMessageStore::DeleteOrganization(const QString &ID)
{
    const QString routine = QStringLiteral("DeleteOrganization");
    const QString organization = QStringLiteral(" WHERE OrganizationID=") + Quote(ID);
    QStringList statements = FlagsOfFolders(QStringLiteral("OrganizationID=") + Quote(ID));
    for (const char *table :
         {"Users", "Folders", "Pending", "MessageStore", "DaySummary", "DaySummaryToken", "DaySummaryTokenTypes"})
        statements << QStringLiteral("DELETE FROM ") + QLatin1String(table) + organization;
    bool ok = RunAll(m_store, statements, routine);
    for (const clsAccount *account : Accounts()) {
        if (account->OrganizationID != ID)
            continue;
        const QString ofAccount = QStringLiteral(" WHERE AccountID=") + Quote(account->AccountID);
        ok = Run(QueueConnection(), QStringLiteral("DELETE FROM EdgeQueue") + ofAccount, routine) >= 0 && ok;
        ok = Run(m_store, QStringLiteral("DELETE FROM Outbox") + ofAccount, routine) >= 0 && ok;
    }
    return ok;
}

// Message sets -----------------------------------------------------------

QString clsMessageStore::MessageSetWhere(const MessageSetFilter &Filter) const
{
    const bool isUser = !Filter.AccountID.isEmpty() && Users().UserNoFromID(Filter.AccountID) > 0;
    bool publicFolder = false;
    if (!Filter.FolderID.isEmpty()) {
        const int folderNo = UserFolders().FolderNoFromID(Filter.FolderID);
        publicFolder = folderNo > 0 && UserFolders().Item(folderNo)->UserID.isEmpty();
    }

    QString clause;
    if (!Filter.TriggerID.isEmpty()) {
        clause = QStringLiteral("(TriggerID=") + Quote(Filter.TriggerID) + u')';
    } else if (!Filter.AccountID.isEmpty()) {
        // Messages of no account stay visible in an account's view; a user
        // sees a public folder whole.
        if (!isUser)
            clause = QStringLiteral("(AccountID IN (") + Quote(Filter.AccountID) + QStringLiteral(",'','-'))");
        else if (!publicFolder)
            clause = QStringLiteral("(AccountID=") + Quote(Filter.AccountID) + u')';
    }
    if (Filter.ErrorsOnly)
        clause += QStringLiteral(" AND (TriggerSuccess=0)");
    if (Filter.MatchesOnly)
        clause += QStringLiteral(" AND (TriggerMatch<>0)");
    if (!Filter.SearchText.isEmpty())
        clause += QStringLiteral(" AND ")
            + SearchCondition(QStringLiteral("Subject,FromAddress,ToAddress"), Filter.SearchText);
    if (Filter.FromDate > QDate(2000, 1, 1) || Filter.ToDate < QDate::currentDate())
        clause += QStringLiteral(" AND (MessageDate BETWEEN ")
            + DateLiteral(Filter.FromDate, QStringLiteral("00:00:00")) + QStringLiteral(" AND ")
            + DateLiteral(Filter.ToDate, QStringLiteral("23:59:59")) + u')';
    if (Filter.FolderID.size() > 1)
        clause += QStringLiteral(" AND (FolderID=") + Quote(Filter.FolderID) + u')';
    if (!Filter.OrganizationID.isEmpty())
        clause += QStringLiteral(" AND (OrganizationID=") + Quote(Filter.OrganizationID) + u')';

    clause = clause.trimmed();
    if (clause.startsWith(QStringLiteral("AND ")))
        clause.remove(0, 4);
    return clause;
}

QString clsMessageStore::MessageSetSQL(const MessageSetFilter &Filter, qint64 FirstRow, qint64 LastRow) const
{
    const qint64 first = FirstRow == 0 ? 1 : FirstRow;
    const qint64 last = LastRow == 0 ? 200 : LastRow;
    const QString columns
        = QStringLiteral("RecordNo,AccountID,FolderID,Subject,FromAddress,ToAddress,Importance,Sensitivity,"
                         "MessageDate,MessageFlags,ProcessedDate,TriggerID,TriggerMatch,TriggerSuccess,"
                         "TriggerError,Attachments");
    const QString where = MessageSetWhere(Filter);
    const QString pageSize = Number(last - first + 1);

    if (Dialect == 99)
        return QStringLiteral("SELECT ") + columns + QStringLiteral(" FROM MessageStore WHERE ") + where
            + QStringLiteral(" ORDER BY MessageDate DESC LIMIT ") + pageSize + QStringLiteral(" OFFSET ")
            + Number(first - 1);

    if (!Global.DBConnection.toLower().contains(QStringLiteral("sqloledb")))
        return QStringList{
            QStringLiteral("WITH PagedPostvane "), QStringLiteral("AS ("),
            QStringLiteral("SELECT ") + columns
                + QStringLiteral(",ROW_NUMBER() OVER(ORDER BY MessageDate DESC) AS Row FROM MessageStore "),
            QStringLiteral("WHERE ") + where + u')',
            QStringLiteral("SELECT * FROM PagedPostvane WHERE Row BETWEEN ") + Number(first) + QStringLiteral(" AND ")
                + Number(last)}
            .join(QStringLiteral("\r\n"));

    // The old provider has no ROW_NUMBER: skip the rows before the page by RecordNo.
    QString clause = where;
    if (first > 1)
        clause = QStringLiteral("RecordNo > (SELECT TOP 1 RecordNo FROM (SELECT TOP ") + Number(first - 1)
            + QStringLiteral(" RecordNo FROM MessageStore WHERE ") + where
            + QStringLiteral(" ORDER BY RecordNo ASC) AS A ORDER BY A.MessageDate DESC) AND ") + where;
    return QStringLiteral("SELECT TOP ") + pageSize + QStringLiteral(" * FROM MessageStore WHERE ") + clause
        + QStringLiteral(" ORDER BY MessageDate DESC");
}

qint64 clsMessageStore::CountMessageSet(const MessageSetFilter &Filter)
{
    const auto count = Scalar(
        ReaderConnection(), QStringLiteral("SELECT COUNT(RecordNo) FROM MessageStore WHERE ") + MessageSetWhere(Filter),
        QStringLiteral("CountMessageSet"));
    return count ? count->toLongLong() : -1;
}

QString clsMessageStore::GetMessageSet(const MessageSetFilter &Filter, qint64 FirstRow, qint64 LastRow)
{
    auto query = Select(ReaderConnection(), MessageSetSQL(Filter, FirstRow, LastRow), QStringLiteral("GetMessageSet"));
    if (!query)
        return QString();
    QString text;
    while (query->next()) {
        const QSqlRecord row = query->record();
        const QStringList fields{row.value(QStringLiteral("RecordNo")).toString(),
                                 row.value(QStringLiteral("Importance")).toString(),
                                 YesNo(row.value(QStringLiteral("Attachments"))),
                                 row.value(QStringLiteral("FolderID")).toString(),
                                 CleanRowText(row.value(QStringLiteral("FromAddress")).toString()),
                                 CleanRowText(row.value(QStringLiteral("Subject")).toString()),
                                 RowDate(row.value(QStringLiteral("MessageDate"))),
                                 RowDate(row.value(QStringLiteral("ProcessedDate"))),
                                 Number(row.value(QStringLiteral("MessageFlags")).toLongLong()),
                                 YesNo(row.value(QStringLiteral("TriggerMatch"))),
                                 YesNo(row.value(QStringLiteral("TriggerSuccess"))),
                                 row.value(QStringLiteral("TriggerError")).toString()};
        for (const QString &field : fields)
            text += field + u'\t';
        text += u'\n';
    }
    return text;
}

qint64 clsMessageStore::DeleteMessageSet(const MessageSetFilter &Filter)
{
    return Run(m_store, QStringLiteral("DELETE FROM MessageStore WHERE ") + MessageSetWhere(Filter),
               QStringLiteral("DeleteMessageSet"));
}

qint64 clsMessageStore::MarkAllAsRead(const MessageSetFilter &Filter)
{
    return Run(m_store,
               QStringLiteral("UPDATE MessageStore Set MessageFlags=2 WHERE ") + MessageSetWhere(Filter)
                   + QStringLiteral(" AND (MessageFlags<>2)"),
               QStringLiteral("MarkAllAsRead"));
}

bool clsMessageStore::MarkAsRead(qint64 RecordNo)
{
    return Run(m_store, QStringLiteral("UPDATE MessageStore SET MessageFlags = 2 WHERE RecordNo=") + Number(RecordNo),
               QStringLiteral("MarkAsRead"))
        >= 0;
}

bool clsMessageStore::MarkAsUnRead(qint64 RecordNo)
{
    return Run(m_store, QStringLiteral("UPDATE MessageStore SET MessageFlags = 0 WHERE RecordNo=") + Number(RecordNo),
               QStringLiteral("MarkAsUnRead"))
        >= 0;
}

bool clsMessageStore::DeleteMessage(qint64 RecordNo)
{
    return Run(m_store, QStringLiteral("DELETE FROM MessageStore WHERE (RecordNo=") + Number(RecordNo) + u')',
               QStringLiteral("DeleteMessage"))
        >= 0;
}

bool clsMessageStore::MoveMessage(qint64 RecordNo, const QString &FolderID, const QString &ToFolderID,
                                  const QString &AccountID)
{
    return Run(m_store,
               QStringLiteral("UPDATE MessageStore Set FolderID = ") + Quote(ToFolderID)
                   + QStringLiteral(", AccountID = ") + Quote(StoredID(AccountID)) + QStringLiteral(" WHERE (FolderID=")
                   + Quote(FolderID) + QStringLiteral(") AND (RecordNo=") + Number(RecordNo) + u')',
               QStringLiteral("MoveMessage"))
        >= 0;
}

QDateTime clsMessageStore::GetLastMSGDate(const QString &AccountID, const QString &Source)
{
    const QString routine = QStringLiteral("GetLastMSGDate");
    QString condition = QStringLiteral(" WHERE (AccountID=") + Quote(AccountID) + u')';
    if (!Source.isEmpty())
        condition += QStringLiteral(" AND (Source=") + Quote(Source) + u')';
    condition += QStringLiteral(" ORDER BY MessageDate DESC");
    QDateTime newest = NoDate();
    const std::pair<QString, QString> tables[]
        = {{ReaderConnection(), QStringLiteral("MessageStore")}, {QueueConnection(), QStringLiteral("EdgeQueue")}};
    for (const auto &[connection, table] : tables) {
        const auto date = Scalar(connection, SelectFirst(QStringLiteral("MessageDate"), table + condition), routine);
        if (date && !date->isNull())
            newest = qMax(newest, SafeDate(*date));
    }
    return newest;
}

qint64 clsMessageStore::GetMessageStoreCount(const QDate &Day, const QString &OrganizationID)
{
    QString sql = QStringLiteral("SELECT Count(*) FROM MessageStore WHERE ProcessedDate BETWEEN ")
        + DateLiteral(Day, QStringLiteral("00:00:00")) + QStringLiteral(" AND ")
        + DateLiteral(Day, QStringLiteral("23:59:59"));
    if (!OrganizationID.isEmpty())
        sql += QStringLiteral(" AND OrganizationID=") + Quote(OrganizationID);
    const auto count = Scalar(ReaderConnection(), sql, QStringLiteral("GetMessageStoreCount"));
    return count ? count->toLongLong() : -1;
}

qint64 clsMessageStore::GetMessageStoreTotalCount(const QString &OrganizationID)
{
    QString sql = QStringLiteral("SELECT Count(*) FROM MessageStore");
    if (!OrganizationID.isEmpty())
        sql += QStringLiteral(" WHERE OrganizationID=") + Quote(OrganizationID);
    const auto count = Scalar(ReaderConnection(), sql, QStringLiteral("GetMessageStoreTotalCount"));
    return count ? count->toLongLong() : -1;
}

// Stored messages --------------------------------------------------------

// The row and its day counts are one transaction: one commit to disk per
// message, and never a message counted but not stored.
qint64 clsMessageStore::AddToMailStore(const clsMessage &Message)
{
    const bool ownTransaction = Dialect == 99 && !m_inTransaction;
    if (ownTransaction && !BeginTransaction())
        return 0;
    const qint64 recordNo = AddMessageRow(Message);
    if (ownTransaction) {
        if (recordNo > 0 && EndTransaction())
            return recordNo;
        RollbackTransaction();
        return 0;
    }
    return recordNo;
}

qint64 clsMessageStore::AddMessageRow(const clsMessage &Message)
{
    const QString routine = QStringLiteral("AddToMailStore");
    const clsAccount *account = Message.Account;
    const QString accountID = StoredID(account ? account->AccountID : QString());
    QString folderID = Message.FolderID;
    if (folderID.isEmpty() && account)
        folderID = UserFolders().AccountRootFolderID(account->AccountID);
    const bool storeFull = !account || account->StoreFull;
    const QString organization = Message.OrganizationID();

    const qint64 recordNo
        = AddRow(QStringLiteral("MessageStore"),
                 {{QStringLiteral("AccountID"), accountID},
                  {QStringLiteral("OrganizationID"), organization},
                  {QStringLiteral("Source"), Message.Source},
                  {QStringLiteral("UID"), Message.MessageID},
                  {QStringLiteral("Subject"), Message.Subject.left(1000)},
                  {QStringLiteral("FromAddress"), Message.From.left(250)},
                  {QStringLiteral("ToAddress"), Message.ToAddress.left(250)},
                  {QStringLiteral("MessageDate"), Message.Dated},
                  {QStringLiteral("Importance"), Message.Importance.left(1)},
                  {QStringLiteral("Sensitivity"), Message.Sensitivity.left(1)},
                  {QStringLiteral("TriggerID"), StoredID(Message.Trigger() ? Message.Trigger()->TriggerID : QString())},
                  {QStringLiteral("TriggerMatch"), Message.TriggerConditionPassed},
                  {QStringLiteral("TriggerSuccess"), Message.ErrorCount == 0},
                  {QStringLiteral("TriggerError"), Message.LastError.left(250)},
                  {QStringLiteral("Body"), storeFull ? MimeBody(Message.MessageText) : Message.Body},
                  {QStringLiteral("Headers"), Message.MessageHeader()},
                  {QStringLiteral("Attachments"), Message.Attachments.Count() > 0},
                  {QStringLiteral("HasFullBody"), storeFull},
                  {QStringLiteral("ProcessedDate"), QDateTime::currentDateTime()},
                  {QStringLiteral("MessageFlags"), ReadFlags(account, Message.IsRead)},
                  {QStringLiteral("FolderID"), StoredID(folderID)},
                  {QStringLiteral("Keywords"), Message.Keywords},
                  {QStringLiteral("Guid"), Message.LinkGUID()},
                  {QStringLiteral("MessageSize"), Message.Size},
                  {QStringLiteral("MessageDigest"), Message.Digest()},
                  {QStringLiteral("AttachmentNames"), Message.Attachments.List().left(1000)}},
                 routine);
    if (recordNo <= 0)
        return 0;
    UpdateDaySummary(organization, accountID, true, Message.Size);
    UpdateDaySummaryTokens(Message);
    return recordNo;
}

QString clsMessageStore::GetMessage(qint64 RecordNo, bool UIDOnly)
{
    const QString routine = QStringLiteral("GetMessage");
    if (UIDOnly) {
        const auto uid
            = Scalar(ReaderConnection(),
                     QStringLiteral("SELECT UID FROM MessageStore WHERE RecordNo=") + Number(RecordNo), routine);
        return uid ? uid->toString() : QString();
    }
    QSqlRecord row;
    {
        auto query = Select(ReaderConnection(),
                            QStringLiteral("SELECT * FROM MessageStore WHERE RecordNo=") + Number(RecordNo), routine);
        if (!query || !query->next())
            return QString();
        row = query->record();
    }
    QString headers = row.value(QStringLiteral("Headers")).toString();
    while (headers.endsWith(u'\n') || headers.endsWith(u'\r'))
        headers.chop(1);
    MimeMail mail;
    mail.LoadMime(headers + QStringLiteral("\r\n\r\n") + row.value(QStringLiteral("Body")).toString());
    mail.SetHeader(QStringLiteral("Postvane-ProcessedDate"), RowDate(row.value(QStringLiteral("ProcessedDate"))));
    mail.SetHeader(QStringLiteral("Postvane-TriggerMatch"), YesNo(row.value(QStringLiteral("TriggerMatch"))));
    mail.SetHeader(QStringLiteral("Postvane-TriggerSuccess"), YesNo(row.value(QStringLiteral("TriggerSuccess"))));
    const QString error = row.value(QStringLiteral("TriggerError")).toString();
    if (!error.isEmpty())
        mail.SetHeader(QStringLiteral("Postvane-TriggerError"), error);
    const QString guid = row.value(QStringLiteral("Guid")).toString().trimmed();
    if (!guid.isEmpty())
        mail.SetHeader(QStringLiteral("Postvane-URL"),
                       EnsureTrailing(Global.Settings.WebServicesURL, QStringLiteral("/"))
                           + QStringLiteral("viewmessage.aspx?id=")
                           + row.value(QStringLiteral("OrganizationID")).toString() + guid);
    mail.AddTextAttachment(QStringLiteral("ProcessLog.log"),
                           GetMessageLogs(row.value(QStringLiteral("UID")).toString()));
    mail.RemoveHeader(QStringLiteral("X-Mailer"));
    mail.RemoveHeader(QStringLiteral("X-MimeOLE"));
    const QString mime = mail.GetMimeText();
    Run(m_store, QStringLiteral("UPDATE MessageStore SET MessageFlags=2 WHERE RecordNo=") + Number(RecordNo), routine);
    return mime;
}

QString clsMessageStore::GetMessageLogs(const QString &UID)
{
    QStringList logs;
    for (const QString &name : {QStringLiteral("EdgeServerLog.db3"), QStringLiteral("MessageServerLog.db3")}) {
        // Reading must not make a log that the services never wrote.
        if (!QFileInfo::exists(Global.DataPath + Global.ProductName + name))
            continue;
        clsEventLog log;
        log.setFileName(Global.ProductName + name);
        const QString lines = log.GetLogsForUID(UID);
        if (!lines.isEmpty())
            logs << lines;
    }
    return logs.join(u'\n');
}

// Day summary ------------------------------------------------------------

bool clsMessageStore::UpdateDaySummary(const QString &OrganizationID, const QString &AccountID, bool Incoming,
                                       qint64 Bytes)
{
    const QString routine = QStringLiteral("UpdateDaySummary");
    const QDateTime now = QDateTime::currentDateTime();
    const QString condition = QStringLiteral(" WHERE AccountID=") + Quote(AccountID) + QStringLiteral(" AND Dated=")
        + DateLiteral(now.date());
    // Counting up inside the statement keeps the count right when two
    // processes count at once.
    const QString sql = Incoming ? QStringLiteral("UPDATE DaySummary SET MessagesIn=MessagesIn+1,BytesIn=BytesIn+")
            + Number(Bytes) + QStringLiteral(",LastTime=") + DateTimeLiteral(now) + condition
                                 : QStringLiteral("UPDATE DaySummary SET MessagesOut=MessagesOut+1,BytesIn=BytesIn+")
            + Number(Bytes) + condition;
    const qint64 updated = Run(m_store, sql, routine);
    if (updated != 0)
        return updated > 0;
    return 0 <= AddRow(QStringLiteral("DaySummary"),
                       {{QStringLiteral("OrganizationID"), OrganizationID},
                        {QStringLiteral("AccountID"), AccountID},
                        {QStringLiteral("Dated"), now.date()},
                        {QStringLiteral("LastTime"), now},
                        {QStringLiteral("MessagesIn"), Incoming ? 1 : 0},
                        {QStringLiteral("MessagesOut"), Incoming ? 0 : 1},
                        {QStringLiteral("BytesIn"), Bytes}},
                       routine);
}

bool clsMessageStore::UpdateDaySummaryToken(const QString &OrganizationID, const QString &AccountID, int TokenType,
                                            const QString &Token, qint64 Count)
{
    if (Token.isEmpty())
        return true;
    const QString routine = QStringLiteral("UpdateDaySummaryToken");
    const QDate today = QDate::currentDate();
    const QString token = Token.left(250);
    const qint64 updated = Run(
        m_store,
        QStringLiteral("UPDATE DaySummaryToken SET Count=Count+") + Number(Count) + QStringLiteral(" WHERE AccountID=")
            + Quote(AccountID) + QStringLiteral(" AND TokenType=") + Number(TokenType) + QStringLiteral(" AND Token=")
            + Quote(token) + QStringLiteral(" AND Dated=") + DateLiteral(today),
        routine);
    if (updated != 0)
        return updated > 0;
    return 0 <= AddRow(QStringLiteral("DaySummaryToken"),
                       {{QStringLiteral("OrganizationID"), OrganizationID},
                        {QStringLiteral("AccountID"), AccountID},
                        {QStringLiteral("TokenType"), TokenType},
                        {QStringLiteral("Token"), token},
                        {QStringLiteral("Dated"), today},
                        {QStringLiteral("Count"), Count}},
                       routine);
}

bool clsMessageStore::UpdateDaySummaryTokenCustom(const QString &OrganizationID, const QString &AccountID,
                                                  const QString &TokenTypeDesc, const QString &Token, qint64 Count)
{
    const QString routine = QStringLiteral("UpdateDaySummaryTokenCustom");
    const QString organization = QStringLiteral("DaySummaryTokenTypes WHERE OrganizationID=") + Quote(OrganizationID);
    const auto known = Scalar(m_store,
                              QStringLiteral("SELECT TokenType FROM ") + organization
                                  + QStringLiteral(" AND TokenTypeDesc=") + Quote(TokenTypeDesc),
                              routine);
    if (!known)
        return false;
    int type = known->toInt();
    if (!known->isValid()) {
        const auto highest
            = Scalar(m_store,
                     SelectFirst(QStringLiteral("TokenType"),
                                 organization + QStringLiteral(" AND TokenType>99 ORDER BY TokenType DESC")),
                     routine);
        if (!highest)
            return false;
        type = highest->isValid() ? highest->toInt() + 1 : 100;
        if (AddRow(QStringLiteral("DaySummaryTokenTypes"),
                   {{QStringLiteral("OrganizationID"), OrganizationID},
                    {QStringLiteral("TokenType"), type},
                    {QStringLiteral("TokenTypeDesc"), TokenTypeDesc}},
                   routine)
            < 0)
            return false;
    }
    return UpdateDaySummaryToken(OrganizationID, AccountID, type, Token, Count);
}

bool clsMessageStore::UpdateDaySummaryTokens(const clsMessage &Message)
{
    const QString organization = Message.OrganizationID();
    const QString account = StoredID(Message.Account ? Message.Account->AccountID : QString());
    const QString sender = ExtractEmailAddress(Message.From);
    const QString domain = sender.contains(u'@') ? sender.section(u'@', -1).toLower() : QString();
    bool ok = UpdateDaySummaryToken(organization, account, 1, domain);
    ok = UpdateDaySummaryToken(organization, account, 2, Message.GEOCountry) && ok;
    for (const clsMessageAttachment *attachment : Message.Attachments)
        ok = UpdateDaySummaryToken(organization, account, 3, attachment->FileExtension().toLower()) && ok;
    return ok;
}

bool clsMessageStore::AddDaySummaryTokenTypes(const QString &OrganizationID)
{
    const QString routine = QStringLiteral("AddDaySummaryTokenTypes");
    const auto present = Scalar(m_store,
                                QStringLiteral("SELECT COUNT(*) FROM DaySummaryTokenTypes WHERE OrganizationID=")
                                    + Quote(OrganizationID) + QStringLiteral(" AND TokenType<100"),
                                routine);
    if (!present)
        return false;
    if (present->toInt() > 0)
        return true;
    QStringList statements;
    const QStringList names{QStringLiteral("Sender Domain"), QStringLiteral("Sender Country"),
                            QStringLiteral("Attachment File Type")};
    for (int type = 1; type <= names.size(); ++type)
        statements << QStringLiteral(
                          "INSERT INTO DaySummaryTokenTypes (OrganizationID,TokenType,TokenTypeDesc) VALUES (")
                + Quote(OrganizationID) + u',' + Number(type) + u',' + Quote(names.at(type - 1)) + u')';
    return RunAll(m_store, statements, routine);
}

bool clsMessageStore::AddMissingDaySummaryTokenTypes()
{
    bool ok = true;
    for (const clsUserOrganization *organization : Organizations())
        ok = AddDaySummaryTokenTypes(organization->ID) && ok;
    return ok;
}

QString clsMessageStore::GetDaySummary(const QString &AccountID, const QDate &FromDate, const QDate &ToDate,
                                       int TokenOrType)
{
    const bool tokens = TokenOrType < 1000;
    const QString column = TokenOrType == 1000 ? QStringLiteral("MessagesIn")
        : TokenOrType == 1001                  ? QStringLiteral("MessagesOut")
        : TokenOrType == 1002                  ? QStringLiteral("BytesIn")
                                               : QString();
    if (!tokens && column.isEmpty())
        return QStringLiteral("<Lines></Lines>");
    const QString sql = tokens
        ? QStringLiteral("SELECT Token,Dated,Count FROM DaySummaryToken WHERE AccountID=") + Quote(AccountID)
            + QStringLiteral(" AND TokenType=") + Number(TokenOrType) + QStringLiteral(" AND Dated BETWEEN ")
            + DateLiteral(FromDate) + QStringLiteral(" AND ") + DateLiteral(ToDate) + QStringLiteral(" ORDER BY Dated")
        : QStringLiteral("SELECT * FROM DaySummary WHERE AccountID=") + Quote(AccountID)
            + QStringLiteral(" AND Dated BETWEEN ") + DateLiteral(FromDate) + QStringLiteral(" AND ")
            + DateLiteral(ToDate, QStringLiteral("23:59:59")) + QStringLiteral(" ORDER BY Dated");

    auto query = Select(ReaderConnection(), sql, QStringLiteral("GetDaySummary"));
    if (!query)
        return QString();
    QString lines = QStringLiteral("<Lines>");
    while (query->next()) {
        const QString day = SafeDate(query->value(QStringLiteral("Dated"))).toString(QStringLiteral("yyyy-MM-dd"));
        if (tokens)
            lines += QStringLiteral("<Line><Dated>") + day + QStringLiteral("</Date><Token>")
                + query->value(QStringLiteral("Token")).toString() + QStringLiteral("</Token><Value>")
                + Number(query->value(QStringLiteral("Count")).toLongLong()) + QStringLiteral("</Value></Line>");
        else
            lines += QStringLiteral("<Line><Date>") + day + QStringLiteral("</Date><Value>")
                + Number(query->value(column).toLongLong()) + QStringLiteral("</Value></Line>");
    }
    return lines + QStringLiteral("</Lines>");
}

// Edge queue -------------------------------------------------------------

namespace {

// Field 22 of /proc/<pid>/stat, the start time of the process in clock
// ticks since boot: with the process id it names one process for good.
QString ProcessStart(qint64 Pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(Pid));
    if (!stat.open(QIODevice::ReadOnly))
        return QString();
    const QByteArray text = stat.readAll();
    // The command name in brackets may hold blanks: count from its end.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return fields.size() > 19 ? QString::fromLatin1(fields.at(19)) : QString();
}

// True unless the taker is a process of this machine that no longer runs.
bool TakerRuns(const QString &Taker)
{
    const QStringList parts = Taker.split(u':');
    if (parts.size() != 3 || parts.at(0) != QSysInfo::machineHostName())
        return parts.size() == 3; // another machine's process: left to it
    return ProcessStart(parts.at(1).toLongLong()) == parts.at(2);
}

QString Identity(const clsMessageStore &Store, const QString &AccountID, const QString &Source, const QString &UID)
{
    return QStringLiteral("(AccountID = ") + Store.Quote(AccountID) + QStringLiteral(") AND (Source = ")
        + Store.Quote(Source) + QStringLiteral(") AND (UID = ") + Store.Quote(UID) + u')';
}

QString RecordList(const QList<qint64> &RecordNos)
{
    QStringList numbers;
    for (qint64 recordNo : RecordNos)
        numbers << Number(recordNo);
    return numbers.join(u',');
}

} // namespace

QString clsMessageStore::EdgeQueueTaker()
{
    static const QString taker = QSysInfo::machineHostName() + u':' + Number(QCoreApplication::applicationPid()) + u':'
        + ProcessStart(QCoreApplication::applicationPid());
    return taker;
}

bool clsMessageStore::EnsureQueueColumns()
{
    const auto known = Scalar(m_queue, QStringLiteral("SELECT COUNT(*) FROM pragma_table_info('EdgeQueue') WHERE name='TakenBy'"),
                              QStringLiteral("OpenMessageStore"));
    if (!known)
        return false;
    return known->toInt() > 0
        || Run(m_queue, QStringLiteral("ALTER TABLE EdgeQueue ADD TakenBy VARCHAR(100)"), QStringLiteral("OpenMessageStore"))
        >= 0;
}

bool clsMessageStore::IsNewMessage(const QString &AccountID, const QString &Source, const QString &UID)
{
    const QString routine = QStringLiteral("IsNewMessage");
    const QString where = QStringLiteral(" WHERE ") + Identity(*this, AccountID, Source, UID);
    const auto stored = Scalar(m_store, QStringLiteral("SELECT RecordNo FROM MessageStore") + where, routine);
    if (!stored || stored->isValid())
        return false;
    const auto queued = Scalar(QueueConnection(), QStringLiteral("SELECT RecordNo,Processed FROM EdgeQueue") + where, routine);
    return queued && !queued->isValid();
}

bool clsMessageStore::IsStoredMessage(const QString &AccountID, const QString &Source, const QString &UID)
{
    const auto stored = Scalar(m_store,
                               SelectFirst(QStringLiteral("RecordNo"), QStringLiteral("MessageStore WHERE ")
                                               + Identity(*this, AccountID, Source, UID)),
                               QStringLiteral("IsStoredMessage"));
    return stored && stored->isValid();
}

qint64 clsMessageStore::AddQueueRow(const QVariantMap &Values, const QString &Routine)
{
    clsRowSet row(QueueConnection());
    bool ok = row.Open(QStringLiteral("EdgeQueue"), QStringLiteral("1=0"));
    if (ok) {
        row.AddNew();
        for (auto it = Values.cbegin(); ok && it != Values.cend(); ++it)
            ok = row.setField(it.key(), it.value());
        ok = ok && row.Update();
    }
    if (ok)
        return row.Field(QStringLiteral("RecordNo")).toLongLong();
    LastError = row.LastError;
    LogError(Routine, LastError);
    return 0;
}

qint64 clsMessageStore::AddToEdgeQueue(const clsMessage &Message, const QString &AccountID, const QString &Source,
                                       const QString &UID, const QDateTime &MessageDate)
{
    return AddQueueRow({{QStringLiteral("AccountID"), AccountID},
                        {QStringLiteral("Source"), Source},
                        {QStringLiteral("UID"), UID},
                        {QStringLiteral("ValidateActionID"), Message.ValidateActionID},
                        {QStringLiteral("ValidateInputFieldsXML"), Message.ValidationInputFieldsXML},
                        {QStringLiteral("DateAdded"), QDateTime::currentDateTime()},
                        {QStringLiteral("MessageDate"), MessageDate},
                        {QStringLiteral("Mime"), Message.MessageText},
                        {QStringLiteral("Processed"), 0}},
                       QStringLiteral("AddToEdgeQueue"));
}

qint64 clsMessageStore::AddEMLToEdgeQueue(const QString &AccountID, const QString &Source, const QString &UID,
                                          const QDateTime &MessageDate, const QString &Mime, int Processed)
{
    return AddQueueRow({{QStringLiteral("AccountID"), AccountID},
                        {QStringLiteral("Source"), Source},
                        {QStringLiteral("UID"), UID},
                        {QStringLiteral("DateAdded"), QDateTime::currentDateTime()},
                        {QStringLiteral("MessageDate"), MessageDate},
                        {QStringLiteral("Mime"), Mime},
                        {QStringLiteral("Processed"), Processed}},
                       QStringLiteral("AddEMLToEdgeQueue"));
}

QString clsMessageStore::TestMessageMime(const clsAccount *Account, const QString &AccountID,
                                         const QString &TriggerID, const QString &Text)
{
    QString domain = Global.AppDomain;
    if (Account) {
        const clsUserOrganization *organization = Organizations().Item(Account->OrganizationID);
        if (organization && !organization->Domain.isEmpty())
            domain = organization->Domain;
    }
    const QString address = Account ? Account->AccountAddress.trimmed() : QString();
    const bool madeUp = address.isEmpty() || address.startsWith(u'*');
    const QString from = madeUp ? QStringLiteral("test@") + domain : address;
    const QString to = madeUp ? QStringLiteral("to@") + domain : address;
    const QString uid = GUIDDigits();
    const QStringList lines{
        QStringLiteral("Postvane-AccountID: ") + AccountID,
        QStringLiteral("Postvane-TriggerID: ") + TriggerID,
        QStringLiteral("Postvane-UID: ") + uid,
        QStringLiteral("Postvane-Source: TEST"),
        QStringLiteral("Postvane-TestMessage: 1"),
        QStringLiteral("MIME-Version: 1.0"),
        QStringLiteral("Content-Type: text/plain"),
        QStringLiteral("Date: ") + QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("ddd, dd MMM yyyy HH:mm:ss")),
        QStringLiteral("From: ") + from,
        QStringLiteral("To: ") + to,
        QStringLiteral("Message-ID: <") + uid + u'@' + domain + u'>',
        QStringLiteral("Subject: TEST"),
        QString(),
        Text};
    return lines.join(QStringLiteral("\r\n"));
}

qint64 clsMessageStore::AddTestToEdgeQueue(const QString &AccountID, const QString &TriggerID, const QString &Text)
{
    const QString mime = TestMessageMime(Accounts().Item(AccountID), AccountID, TriggerID, Text);
    return AddEMLToEdgeQueue(AccountID, QStringLiteral("TEST"), MimeHeaderValue(mime, QStringLiteral("Postvane-UID")),
                             QDateTime::currentDateTime(), mime);
}

qint64 clsMessageStore::TakeEdgeQueueRow()
{
    const QString routine = QStringLiteral("GetEdgeQueue");
    // Another processor may take the row between the look and the update;
    // the update then changes nothing and the next row is looked at.
    for (;;) {
        const auto next = Scalar(QueueConnection(),
                                 SelectFirst(QStringLiteral("RecordNo"),
                                             QStringLiteral("EdgeQueue WHERE Processed=0 ORDER BY RecordNo")),
                                 routine);
        if (!next)
            return -1;
        if (!next->isValid())
            return 0;
        const qint64 recordNo = next->toLongLong();
        const qint64 taken = Run(QueueConnection(),
                                 QStringLiteral("UPDATE EdgeQueue SET Processed=1,TakenBy=") + Quote(EdgeQueueTaker())
                                     + QStringLiteral(" WHERE RecordNo=") + Number(recordNo)
                                     + QStringLiteral(" AND Processed=0"),
                                 routine);
        if (taken < 0)
            return -1;
        if (taken == 1)
            return recordNo;
    }
}

std::optional<QSqlRecord> clsMessageStore::TakeEdgeQueueRecord()
{
    const QString routine = QStringLiteral("GetEdgeQueue");
    const QString columns = QStringLiteral("RecordNo,AccountID,Source,UID,ValidateActionID,ValidateInputFieldsXML,Mime");
    if (Dialect == 99) {
        // One statement takes the oldest waiting row and returns it.
        auto taken = Select(m_queue,
                            QStringLiteral("UPDATE EdgeQueue SET Processed=1,TakenBy=") + Quote(EdgeQueueTaker())
                                + QStringLiteral(" WHERE RecordNo=(SELECT RecordNo FROM EdgeQueue WHERE Processed=0 "
                                                 "ORDER BY RecordNo LIMIT 1) AND Processed=0 RETURNING ")
                                + columns,
                            routine);
        if (!taken)
            return std::nullopt;
        return taken->next() ? taken->record() : QSqlRecord();
    }
    const qint64 recordNo = TakeEdgeQueueRow();
    if (recordNo < 0)
        return std::nullopt;
    if (recordNo == 0)
        return QSqlRecord();
    auto row = Select(QueueConnection(),
                      QStringLiteral("SELECT ") + columns + QStringLiteral(" FROM EdgeQueue WHERE RecordNo=")
                          + Number(recordNo),
                      routine);
    if (!row)
        return std::nullopt;
    return row->next() ? row->record() : QSqlRecord();
}

bool clsMessageStore::GetEdgeQueue(clsMessage &Message)
{
    const QString routine = QStringLiteral("GetEdgeQueue");
    if (Dialect == 99 && ++m_queueCalls >= 11) {
        m_queueCalls = 0;
        clsRowSet::ForgetConnection(m_queue);
        CloseConnection(m_queue);
        if (!OpenQueue()) {
            LogError(routine, LastError);
            return false;
        }
    }
    const std::optional<QSqlRecord> row = TakeEdgeQueueRecord();
    if (!row || row->isEmpty())
        return false;
    Message.EdgeQueueRecordNo = qint32(row->value(0).toLongLong());
    Message.ValidateActionID = row->value(4).toString();
    Message.ValidationInputFieldsXML = row->value(5).toString();
    LoadMessageMime(Message, row->value(6).toString());

    const auto header = [&Message](const char *Name) {
        return Message.HeaderValue(QLatin1String(Name)).trimmed();
    };
    QString accountID = header("Postvane-AccountID");
    if (accountID.isEmpty()) {
        // The row's account is the message's, also for whoever reads its headers.
        accountID = row->value(1).toString().trimmed();
        if (!accountID.isEmpty())
            Message.AddHeader(QStringLiteral("Postvane-AccountID"), accountID);
    }
    Message.Account = Accounts().Item(accountID);
    const QString triggerID = header("Postvane-TriggerID");
    if (Message.Account && !triggerID.isEmpty())
        Message.setTrigger(Message.Account->TriggerFromID(triggerID));
    Message.UserID = header("Postvane-UserID");
    Message.Source = header("Postvane-Source");
    if (Message.Source.isEmpty())
        Message.Source = row->value(2).toString();
    Message.MessageID = header("Postvane-UID");
    if (Message.MessageID.isEmpty())
        Message.MessageID = row->value(3).toString();
    if (Message.MessageID.isEmpty())
        Message.MessageID = header("Message-Id");
    Message.REProcess = header("Postvane-Reprocess") == u"1";
    Message.IsRead = header("Postvane-IsRead") != u"0";
    Message.TestMessage = header("Postvane-TestMessage") == u"1";
    Message.NewMessage
        = Message.REProcess || !IsStoredMessage(StoredID(accountID), Message.Source, Message.MessageID);
    return true;
}

qint64 clsMessageStore::GetEdgeQueueCount()
{
    const auto count = Scalar(QueueConnection(), QStringLiteral("SELECT Count(RecordNo) FROM EdgeQueue WHERE Processed=0"),
                              QStringLiteral("GetEdgeQueueCount"));
    return count ? count->toLongLong() : -1;
}

QString clsMessageStore::GetEdgeQueueUID(qint64 RecordNo)
{
    auto row = Select(QueueConnection(),
                      QStringLiteral("SELECT AccountID,ValidateActionID,UID FROM EdgeQueue WHERE RecordNo=")
                          + Number(RecordNo),
                      QStringLiteral("GetEdgeQueueUID"));
    if (!row || !row->next())
        return QString();
    return row->value(0).toString() + u'\t' + row->value(1).toString() + u'\t' + row->value(2).toString();
}

bool clsMessageStore::DeleteEdgeQueueRecord(qint64 RecordNo)
{
    return Run(QueueConnection(), QStringLiteral("DELETE FROM EdgeQueue WHERE RecordNo=") + Number(RecordNo),
               QStringLiteral("DeleteEdgeQueueRecord"))
        >= 0;
}

bool clsMessageStore::DeleteEdgeQueueRecords(const QList<qint64> &RecordNos)
{
    if (RecordNos.isEmpty())
        return true;
    return Run(QueueConnection(),
               QStringLiteral("DELETE FROM EdgeQueue WHERE RecordNo IN (") + RecordList(RecordNos) + u')',
               QStringLiteral("DeleteEdgeQueueRecord"))
        >= 0;
}

qint64 clsMessageStore::DeleteEdgeQueueProcessed()
{
    return Run(QueueConnection(), QStringLiteral("DELETE FROM EdgeQueue WHERE Processed=1"),
               QStringLiteral("DeleteEdgeQueueProcessed"));
}

qint64 clsMessageStore::ReturnTakenEdgeQueue()
{
    const QString routine = QStringLiteral("ReturnTakenEdgeQueue");
    struct Taken
    {
        qint64 RecordNo;
        QString AccountID, Source, UID;
    };
    QList<Taken> orphans;
    {
        auto rows = Select(QueueConnection(),
                           QStringLiteral("SELECT RecordNo,AccountID,Source,UID,TakenBy FROM EdgeQueue WHERE Processed=1"),
                           routine);
        if (!rows)
            return -1;
        while (rows->next())
            if (!TakerRuns(rows->value(4).toString()))
                orphans << Taken{rows->value(0).toLongLong(), rows->value(1).toString(), rows->value(2).toString(),
                                 rows->value(3).toString()};
    }
    QList<qint64> stored;
    QList<qint64> waiting;
    for (const Taken &row : orphans)
        (IsStoredMessage(StoredID(row.AccountID), row.Source, row.UID) ? stored : waiting) << row.RecordNo;
    if (!DeleteEdgeQueueRecords(stored))
        return -1;
    if (waiting.isEmpty())
        return 0;
    // A row another starting processor returned meanwhile is left as it is.
    return Run(QueueConnection(),
               QStringLiteral("UPDATE EdgeQueue SET Processed=0,TakenBy=NULL WHERE Processed=1 AND RecordNo IN (")
                   + RecordList(waiting) + u')',
               routine);
}

bool clsMessageStore::ValidateEdgeQueueMessage(qint64 RecordNo)
{
    return Run(QueueConnection(), QStringLiteral("UPDATE EdgeQueue SET Processed=0 WHERE RecordNo=") + Number(RecordNo),
               QStringLiteral("ValidateEdgeQueueMessage"))
        >= 0;
}

std::optional<QSqlRecord> clsMessageStore::GetValidationRequest(qint64 RecordNo)
{
    auto row = Select(QueueConnection(),
                      QStringLiteral("SELECT UID,Mime,ValidateConfirmationMessage,ValidateActionID,AccountID FROM "
                                     "EdgeQueue WHERE Processed=2 AND RecordNo=")
                          + Number(RecordNo),
                      QStringLiteral("GetValidationRequest"));
    if (!row)
        return std::nullopt;
    return row->next() ? row->record() : QSqlRecord();
}

bool clsMessageStore::AnswerValidation(qint64 RecordNo, bool Confirmed, const QString &InputFieldsXML)
{
    const QString where = QStringLiteral(" WHERE Processed=2 AND RecordNo=") + Number(RecordNo);
    // A rejection runs nothing more: "run the rest" becomes "store as it is".
    const QString set = Confirmed ? QStringLiteral("UPDATE EdgeQueue SET Processed=0,ValidateInputFieldsXML=")
                                        + Quote(InputFieldsXML)
                                  : QStringLiteral("UPDATE EdgeQueue SET ValidateExpires=")
                                        + DateTimeLiteral(QDateTime::currentDateTime().addSecs(-1))
                                        + QStringLiteral(",ValidateExpiresType=CASE WHEN ValidateExpiresType=1 THEN 0 "
                                                         "ELSE ValidateExpiresType END");
    return Run(QueueConnection(), set + where, QStringLiteral("AnswerValidation")) > 0;
}

bool clsMessageStore::ValidateRequired(qint64 RecordNo, const QString &ActionID, const QDateTime &Expires,
                                       const QString &ConfirmationMessage, int ExpiresType)
{
    return Run(QueueConnection(),
               QStringLiteral("UPDATE EdgeQueue SET Processed=2,ValidateActionID=") + Quote(ActionID)
                   + QStringLiteral(",ValidateExpires=") + DateTimeLiteral(Expires)
                   + (ExpiresType < 0 ? QString() : QStringLiteral(",ValidateExpiresType=") + Number(ExpiresType))
                   + QStringLiteral(",ValidateConfirmationMessage=") + Quote(ConfirmationMessage)
                   + QStringLiteral(" WHERE RecordNo=") + Number(RecordNo),
               QStringLiteral("ValidateRequired"))
        >= 0;
}

QList<qint64> clsMessageStore::AddEMLsToEdgeQueue(const QString &AccountID, const QString &Source,
                                                  const QStringList &UIDs, const QList<QDateTime> &MessageDates,
                                                  const QStringList &Mimes)
{
    const QString routine = QStringLiteral("AddEMLsToEdgeQueue");
    QSqlDatabase queue = QSqlDatabase::database(QueueConnection(), false);
    const bool sqlite = queue.driverName() == QStringLiteral("QSQLITE");
    auto date = [sqlite](const QDateTime &Value) -> QVariant {
        return sqlite ? QVariant(Value.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))) : QVariant(Value);
    };
    QList<qint64> records;
    if (!queue.transaction()) {
        LastError = queue.lastError().text();
        LogError(routine, LastError);
        return records;
    }
    QSqlQuery insert(queue);
    insert.prepare(QStringLiteral("INSERT INTO EdgeQueue (AccountID,Source,UID,DateAdded,MessageDate,Mime,Processed) "
                                  "VALUES (?,?,?,?,?,?,0)"));
    const QVariant added = date(QDateTime::currentDateTime());
    for (qsizetype i = 0; i < UIDs.size(); ++i) {
        insert.addBindValue(AccountID);
        insert.addBindValue(Source);
        insert.addBindValue(UIDs.at(i));
        insert.addBindValue(added);
        insert.addBindValue(date(MessageDates.value(i)));
        insert.addBindValue(Mimes.value(i));
        if (!insert.exec()) {
            LastError = insert.lastError().text();
            break;
        }
        records << insert.lastInsertId().toLongLong();
    }
    if (records.size() == UIDs.size() && queue.commit())
        return records;
    if (LastError.isEmpty())
        LastError = queue.lastError().text();
    queue.rollback();
    LogError(routine, LastError);
    return {};
}

bool clsMessageStore::ReturnEdgeQueueRecords(const QList<qint64> &RecordNos)
{
    if (RecordNos.isEmpty())
        return true;
    return Run(QueueConnection(),
               QStringLiteral("UPDATE EdgeQueue SET Processed=0,TakenBy=NULL WHERE RecordNo IN (") + RecordList(RecordNos)
                   + u')',
               QStringLiteral("ReturnEdgeQueueRecords"))
        >= 0;
}

bool clsMessageStore::UpdateMessageStoreTrigger(const clsMessage &Message, bool *Updated)
{
    const clsAccount *account = Message.Account;
    const QString accountID = StoredID(account ? account->AccountID : QString());
    QString folderID = Message.FolderID;
    if (folderID.isEmpty() && account)
        folderID = UserFolders().AccountRootFolderID(account->AccountID);
    const qint64 changed
        = Run(m_store,
              QStringLiteral("UPDATE MessageStore SET TriggerID=")
                  + Quote(StoredID(Message.Trigger() ? Message.Trigger()->TriggerID : QString()))
                  + QStringLiteral(",FolderID=") + Quote(StoredID(folderID)) + QStringLiteral(",TriggerError=")
                  + Quote(Message.LastError.left(250)) + QStringLiteral(",TriggerSuccess=")
                  + Number(Message.ErrorCount == 0 ? 1 : 0) + QStringLiteral(" WHERE AccountID=") + Quote(accountID)
                  + QStringLiteral(" AND Source=") + Quote(Message.Source) + QStringLiteral(" AND UID=")
                  + Quote(Message.MessageID),
              QStringLiteral("UpdateMessageStoreTrigger"));
    if (Updated)
        *Updated = changed > 0;
    return changed >= 0;
}

qint64 clsMessageStore::SaveMessageToReprocess(const QString &FolderID, qint64 RecordNo, bool Spam)
{
    const QString routine = QStringLiteral("SaveMessageToReprocess");
    QString sql = QStringLiteral("SELECT AccountID,Source,UID,MessageDate,Headers,Body FROM MessageStore WHERE ");
    if (!FolderID.isEmpty())
        sql += QStringLiteral("FolderID = ") + Quote(FolderID) + QStringLiteral(" AND ");
    sql += QStringLiteral("RecordNo = ") + Number(RecordNo);
    QSqlRecord row;
    {
        auto query = Select(m_store, sql, routine);
        if (!query || !query->next())
            return 0;
        row = query->record();
    }
    const QString accountID = row.value(QStringLiteral("AccountID")).toString();
    const QString source = row.value(QStringLiteral("Source")).toString();
    const QString uid = row.value(QStringLiteral("UID")).toString();
    QString headers = row.value(QStringLiteral("Headers")).toString();
    while (headers.endsWith(u'\n') || headers.endsWith(u'\r'))
        headers.chop(1);
    MimeMail mail;
    mail.LoadMime(headers + QStringLiteral("\r\n\r\n") + row.value(QStringLiteral("Body")).toString());
    if (Spam)
        mail.SetHeader(QStringLiteral("Postvane-Spam"), QStringLiteral("Yes"));
    mail.RemoveHeader(QStringLiteral("Postvane-TriggerID"));
    mail.SetHeader(QStringLiteral("Postvane-Reprocess"), QStringLiteral("1"));
    mail.SetHeader(QStringLiteral("Postvane-AccountID"), accountID);
    mail.SetHeader(QStringLiteral("Postvane-Source"), source);
    mail.SetHeader(QStringLiteral("Postvane-UID"), uid);
    if (Run(QueueConnection(),
            QStringLiteral("DELETE FROM EdgeQueue WHERE AccountID=") + Quote(accountID) + QStringLiteral(" AND Source=")
                + Quote(source) + QStringLiteral(" AND UID=") + Quote(uid),
            routine)
        < 0)
        return 0;
    return AddEMLToEdgeQueue(accountID, source, uid, SafeDate(row.value(QStringLiteral("MessageDate"))),
                             mail.GetMimeText());
}

QStringList clsMessageStore::GetExpiredValidationMessage()
{
    const QString routine = QStringLiteral("GetExpiredValidationMessage");
    struct Parked
    {
        qint64 RecordNo;
        int Type;
        QString AccountID, Source, UID, Mime;
    };
    QList<Parked> expired;
    {
        auto rows = Select(QueueConnection(),
                           QStringLiteral("SELECT RecordNo,ValidateExpiresType,AccountID,Source,UID,Mime FROM EdgeQueue "
                                          "WHERE Processed = 2 AND ValidateExpires < ")
                               + DateTimeLiteral(QDateTime::currentDateTime()) + QStringLiteral(" ORDER BY RecordNo"),
                           routine);
        if (!rows)
            return {};
        while (rows->next())
            expired << Parked{rows->value(0).toLongLong(), rows->value(1).toInt(), rows->value(2).toString(),
                              rows->value(3).toString(), rows->value(4).toString(), rows->value(5).toString()};
    }
    QStringList lines;
    for (const Parked &row : std::as_const(expired)) {
        const QString number = Number(row.RecordNo);
        clsAccount *account = Accounts().Item(row.AccountID);
        if (!account) {
            DeleteEdgeQueueRecord(row.RecordNo);
            lines << QStringLiteral("Expired pending validation message of an account that no longer exists deleted ")
                    + number;
        } else if (row.Type == 1) {
            ValidateEdgeQueueMessage(row.RecordNo);
            lines << QStringLiteral("Expired or rejected pending validation message will now be processed ") + number;
        } else if (row.Type == 0) {
            // Loaded as the thread's current message, which header reading
            // relies on; the message in hand comes back afterwards.
            std::unique_ptr<clsMessage> inHand = ReplaceCurrentMessage(nullptr);
            clsMessage &message = CurrentMessage();
            LoadMessageMime(message, row.Mime);
            message.Account = account;
            message.Source = row.Source;
            message.MessageID = row.UID;
            const bool stored = IsStoredMessage(account->AccountID, row.Source, row.UID) || AddToMailStore(message) > 0;
            ReplaceCurrentMessage(std::move(inHand));
            if (!stored)
                continue; // it stays parked and is tried again
            DeleteEdgeQueueRecord(row.RecordNo);
            lines << QStringLiteral("Expired or rejected pending validation message added to Message Store ") + number;
        } else {
            DeleteEdgeQueueRecord(row.RecordNo);
            lines << QStringLiteral("Expired or rejected pending validation message deleted ") + number;
        }
    }
    return lines;
}

bool clsMessageStore::GetEdgeQueueNoTriggerAssigned(clsMessage &Message)
{
    const QString routine = QStringLiteral("GetEdgeQueueNoTriggerAssigned");
    auto row = Select(QueueConnection(),
                      SelectFirst(QStringLiteral("RecordNo,Mime"),
                                  QStringLiteral("EdgeQueue WHERE Processed=99 ORDER BY RecordNo")),
                      routine);
    if (!row || !row->next())
        return false;
    Message.EdgeQueueRecordNo = qint32(row->value(0).toLongLong());
    LoadMessageMime(Message, row->value(1).toString());
    Message.Account = Accounts().Item(Message.HeaderValue(QStringLiteral("Postvane-AccountID")).trimmed());
    Message.Source = Message.HeaderValue(QStringLiteral("Postvane-Source")).trimmed();
    Message.MessageID = Message.HeaderValue(QStringLiteral("Postvane-UID")).trimmed();
    return true;
}

bool clsMessageStore::AssignEdgeQueueTrigger(qint64 RecordNo, const QString &TriggerID)
{
    const QString routine = QStringLiteral("GetEdgeQueueNoTriggerAssigned");
    const auto mime
        = Scalar(QueueConnection(), QStringLiteral("SELECT Mime FROM EdgeQueue WHERE RecordNo=") + Number(RecordNo), routine);
    if (!mime || !mime->isValid())
        return false;
    MimeMail mail;
    mail.LoadMime(mime->toString());
    mail.SetHeader(QStringLiteral("Postvane-TriggerID"), TriggerID);
    return Run(QueueConnection(),
               QStringLiteral("UPDATE EdgeQueue SET Mime=") + Quote(mail.GetMimeText())
                   + QStringLiteral(",Processed=0 WHERE RecordNo=") + Number(RecordNo),
               routine)
        > 0;
}

qint64 clsMessageStore::CopyMessage(qint64 RecordNo, const QString &ToFolderID)
{
    const QString routine = QStringLiteral("CopyMessage");
    QVariantMap values;
    {
        auto row = Select(m_store, QStringLiteral("SELECT * FROM MessageStore WHERE RecordNo=") + Number(RecordNo), routine);
        if (!row || !row->next())
            return 0;
        const QSqlRecord record = row->record();
        for (int n = 0; n < record.count(); ++n)
            if (record.fieldName(n).compare(QStringLiteral("RecordNo"), Qt::CaseInsensitive) != 0)
                values.insert(record.fieldName(n), record.value(n));
    }
    values.insert(QStringLiteral("FolderID"), StoredID(ToFolderID));
    return qMax<qint64>(0, AddRow(QStringLiteral("MessageStore"), values, routine));
}

bool clsMessageStore::WriteMessageToFile(qint64 RecordNo, const QString &Path)
{
    auto row = Select(m_store, QStringLiteral("SELECT Headers,Body FROM MessageStore WHERE RecordNo=") + Number(RecordNo),
                      QStringLiteral("WriteMessageToFile"));
    if (!row || !row->next())
        return false;
    QFile file(Path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        LastError = file.errorString();
        LogError(QStringLiteral("WriteMessageToFile"), LastError);
        return false;
    }
    const QByteArray text
        = (row->value(0).toString() + QStringLiteral("\r\n") + row->value(1).toString()).toUtf8();
    return file.write(text) == text.size();
}

qint64 clsMessageStore::AddToPendingStore(const clsMessage &Message)
{
    return qMax<qint64>(0, AddRow(QStringLiteral("Pending"),
                                  {{QStringLiteral("UID"), Message.MessageID},
                                   {QStringLiteral("OrganizationID"), Message.OrganizationID()},
                                   {QStringLiteral("AccountID"),
                                    StoredID(Message.Account ? Message.Account->AccountID : QString())},
                                   {QStringLiteral("TriggerID"),
                                    StoredID(Message.Trigger() ? Message.Trigger()->TriggerID : QString())},
                                   {QStringLiteral("Headers"), Message.MessageHeader()},
                                   {QStringLiteral("Message"), Message.MessageText},
                                   {QStringLiteral("DateAdded"), QDateTime::currentDateTime()},
                                   {QStringLiteral("Source"), Message.Source}},
                                  QStringLiteral("AddToPendingStore")));
}

qint64 clsMessageStore::AddEMLToPendingStore(const QString &AccountID, const QString &TriggerID, const QString &Source,
                                             const QString &UID, const QString &Mime)
{
    const clsAccount *account = Accounts().Item(AccountID);
    return qMax<qint64>(0, AddRow(QStringLiteral("Pending"),
                                  {{QStringLiteral("UID"), UID},
                                   {QStringLiteral("OrganizationID"), account ? account->OrganizationID : QString()},
                                   {QStringLiteral("AccountID"), AccountID},
                                   {QStringLiteral("TriggerID"), TriggerID},
                                   {QStringLiteral("Message"), Mime},
                                   {QStringLiteral("DateAdded"), QDateTime::currentDateTime()},
                                   {QStringLiteral("Source"), Source}},
                                  QStringLiteral("AddEMLToPendingStore")));
}

bool clsMessageStore::GetPendingMessage(clsMessage &Message)
{
    const QString routine = QStringLiteral("GetPendingMessage");
    QSqlRecord row;
    {
        auto query = Select(m_store,
                            SelectFirst(QStringLiteral("RecordNo,UID,AccountID,TriggerID,Source,Message"),
                                        QStringLiteral("Pending ORDER BY DateAdded,RecordNo")),
                            routine);
        if (!query || !query->next())
            return false;
        row = query->record();
    }
    LoadMessageMime(Message, row.value(QStringLiteral("Message")).toString());
    Message.MessageID = row.value(QStringLiteral("UID")).toString();
    Message.Source = row.value(QStringLiteral("Source")).toString();
    Message.Account = Accounts().Item(row.value(QStringLiteral("AccountID")).toString());
    if (Message.Account)
        Message.setTrigger(Message.Account->TriggerFromID(row.value(QStringLiteral("TriggerID")).toString()));
    if (Message.Importance.isEmpty())
        Message.Importance = QStringLiteral("NORMAL");
    return Run(m_store,
               QStringLiteral("DELETE FROM Pending WHERE RecordNo = ")
                   + Number(row.value(QStringLiteral("RecordNo")).toLongLong()),
               routine)
        >= 0;
}

QString clsMessageStore::GetLastMessageDates()
{
    clsXML writer;
    writer.XMLSectionStart(QStringLiteral("LastDates"));
    for (const clsAccount *account : Accounts()) {
        writer.XMLSectionStart(clsAccount::ClassName);
        writer.Append(account->AccountID, QStringLiteral("AccountID"));
        for (const char *source : {"IMAP", "POP3", "RSS"}) {
            const QDateTime newest = GetLastMSGDate(account->AccountID, QLatin1String(source));
            if (newest != NoDate())
                writer.Append(newest, QLatin1String(source));
        }
        writer.XMLSectionEnd(clsAccount::ClassName);
    }
    writer.XMLSectionEnd(QStringLiteral("LastDates"));
    return writer.GetXML();
}
