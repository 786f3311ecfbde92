#include "ConfigStore.h"
#include "UserPasswords.h"
#include "model/GlobalCollections.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

namespace {

// Organizations, Users and Folders have the message store's columns.
const char *const Schema[] = {
    "CREATE TABLE IF NOT EXISTS Organizations (ID VARCHAR(20) NOT NULL PRIMARY KEY, Name TEXT, XML TEXT)",
    "CREATE TABLE IF NOT EXISTS Users (UserID VARCHAR(20) NOT NULL PRIMARY KEY, UserName VARCHAR(250),"
    " Password VARCHAR(250), FullName VARCHAR(250), OrganizationID VARCHAR(20), Organization TEXT, Email TEXT,"
    " XML TEXT)",
    "CREATE TABLE IF NOT EXISTS Folders (RecordNo INTEGER PRIMARY KEY AUTOINCREMENT, FolderID VARCHAR(20),"
    " AccountID VARCHAR(20), OrganizationID VARCHAR(20), Parent VARCHAR(20), UserID VARCHAR(20), FolderName TEXT,"
    " Email TEXT, OrderBy INTEGER DEFAULT 0)",
    "CREATE UNIQUE INDEX IF NOT EXISTS Folders_id ON Folders(FolderID)",
    "CREATE TABLE IF NOT EXISTS Accounts (AccountID VARCHAR(20) NOT NULL PRIMARY KEY, OrganizationID VARCHAR(20),"
    " OrderBy INTEGER DEFAULT 0, XML TEXT)",
    "CREATE TABLE IF NOT EXISTS Triggers (AccountID VARCHAR(20) NOT NULL, TriggerID VARCHAR(20) NOT NULL,"
    " OrderBy INTEGER DEFAULT 0, XML TEXT, PRIMARY KEY (AccountID, TriggerID))",
};

// The user's fragment as stored: without its password.
QString StoredFragment(const clsUser &User)
{
    clsUser copy = User;
    copy.Password.clear();
    return copy.XML();
}

} // namespace

ConfigStore::ConfigStore() : m_connection(QStringLiteral("ConfigStore-") + QUuid::createUuid().toString(QUuid::Id128)) {}

ConfigStore::~ConfigStore()
{
    Close();
}

bool ConfigStore::Open(const QString &FilePath)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    db.setDatabaseName(FilePath);
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    if (!db.open()) {
        LastError = db.lastError().text();
        return false;
    }
    return Prepare();
}

bool ConfigStore::OpenShared(const QString &Connection)
{
    Close();
    m_connection = Connection;
    m_shared = true;
    return Prepare();
}

bool ConfigStore::Prepare()
{
    // A commit is on disk before the reply that acknowledges it.
    if (Exec(QStringLiteral("PRAGMA journal_mode=WAL")) < 0 || Exec(QStringLiteral("PRAGMA synchronous=FULL")) < 0)
        return false;
    return Write([this] {
        for (const char *statement : Schema)
            if (Exec(QString::fromLatin1(statement)) < 0)
                return false;
        return true;
    });
}

void ConfigStore::Close()
{
    if (m_shared || !QSqlDatabase::contains(m_connection))
        return;
    QSqlDatabase::database(m_connection, false).close();
    QSqlDatabase::removeDatabase(m_connection);
}

bool ConfigStore::IsEmpty()
{
    QSqlQuery query(QSqlDatabase::database(m_connection));
    return query.exec(QStringLiteral("SELECT (SELECT COUNT(*) FROM Organizations) + (SELECT COUNT(*) FROM Users)"))
           && query.next() && query.value(0).toInt() == 0;
}

bool ConfigStore::Load(UserPasswords &Passwords)
{
    QSqlQuery query(QSqlDatabase::database(m_connection));
    Organizations().Clear();
    if (!query.exec(QStringLiteral("SELECT XML FROM Organizations ORDER BY rowid")))
        return Failed(query);
    while (query.next()) {
        auto organization = std::make_unique<clsUserOrganization>();
        organization->setXML(query.value(0).toString());
        Organizations().Add(std::move(organization));
    }

    Users().Clear();
    if (!query.exec(QStringLiteral("SELECT UserID, XML, Password FROM Users ORDER BY rowid")))
        return Failed(query);
    while (query.next()) {
        if (clsUser *user = Users().AddXML(query.value(1).toString()))
            Passwords.Set(user->ID, query.value(2).toString());
    }

    UserFolders().Clear();
    if (!query.exec(QStringLiteral("SELECT RecordNo, FolderID, AccountID, OrganizationID, Parent, UserID, FolderName,"
                                   " Email FROM Folders ORDER BY UserID, OrderBy")))
        return Failed(query);
    while (query.next()) {
        auto folder = std::make_unique<clsUserFolder>();
        folder->RecordNo = query.value(0).toInt();
        folder->ID = query.value(1).toString();
        folder->AccountID = query.value(2).toString();
        folder->OrganizationID = query.value(3).toString();
        folder->Parent = query.value(4).toString();
        folder->UserID = query.value(5).toString();
        folder->Name = query.value(6).toString();
        folder->Email = query.value(7).toString();
        UserFolders().Add(std::move(folder));
    }
    return LoadAccounts();
}

bool ConfigStore::LoadAccounts()
{
    QSqlQuery query(QSqlDatabase::database(m_connection));
    query.setForwardOnly(true);
    QHash<QString, QStringList> triggers;
    if (!query.exec(QStringLiteral("SELECT AccountID, XML FROM Triggers ORDER BY OrderBy, rowid")))
        return Failed(query);
    while (query.next())
        triggers[query.value(0).toString()] << query.value(1).toString();

    Accounts().setXML(QString()); // empties the collection
    if (!query.exec(QStringLiteral("SELECT AccountID, XML FROM Accounts ORDER BY OrderBy, rowid")))
        return Failed(query);
    while (query.next()) {
        // The triggers come first, so that the account's fragment treats them
        // as it treats the triggers of any fragment (the outbox's folder).
        auto account = std::make_unique<clsAccount>();
        for (const QString &trigger : triggers.value(query.value(0).toString()))
            account->Triggers.AddXML(trigger);
        account->setXML(query.value(1).toString());
        Accounts().Add(std::move(account));
    }
    if (Accounts().Count() > 0)
        Accounts().SetLastChecked();
    return true;
}

bool ConfigStore::Write(const std::function<bool()> &Work)
{
    LastError.clear();
    QSqlDatabase db = QSqlDatabase::database(m_connection);
    if (!db.transaction()) {
        LastError = db.lastError().text();
        return false;
    }
    if (Work() && db.commit()) {
        // The engine's threads read their copies of the configuration anew.
        CountConfigurationChange();
        return true;
    }
    if (LastError.isEmpty())
        LastError = db.lastError().text();
    db.rollback();
    return false;
}

bool ConfigStore::SaveOrganization(const clsUserOrganization &Organization)
{
    return Upsert(QStringLiteral("UPDATE Organizations SET Name = :Name, XML = :XML WHERE ID = :ID"),
                  QStringLiteral("INSERT INTO Organizations (ID, Name, XML) VALUES (:ID, :Name, :XML)"),
                  {{QStringLiteral(":ID"), Organization.ID},
                   {QStringLiteral(":Name"), Organization.Name},
                   {QStringLiteral(":XML"), Organization.XML()}});
}

bool ConfigStore::DeleteOrganization(const QString &ID)
{
    return Exec(QStringLiteral("DELETE FROM Organizations WHERE ID = :ID"), {{QStringLiteral(":ID"), ID}}) >= 0;
}

bool ConfigStore::SaveUser(const clsUser &User, const QString &Verifier)
{
    return Upsert(QStringLiteral("UPDATE Users SET UserName = :UserName, Password = :Password, FullName = :FullName,"
                                 " OrganizationID = :OrganizationID, Organization = :Organization, Email = :Email,"
                                 " XML = :XML WHERE UserID = :UserID"),
                  QStringLiteral("INSERT INTO Users (UserID, UserName, Password, FullName, OrganizationID, Organization,"
                                 " Email, XML) VALUES (:UserID, :UserName, :Password, :FullName, :OrganizationID,"
                                 " :Organization, :Email, :XML)"),
                  {{QStringLiteral(":UserID"), User.ID},
                   {QStringLiteral(":UserName"), User.Username},
                   {QStringLiteral(":Password"), Verifier},
                   {QStringLiteral(":FullName"), User.Fullname},
                   {QStringLiteral(":OrganizationID"), User.OrganizationID},
                   {QStringLiteral(":Organization"), User.Organization()},
                   {QStringLiteral(":Email"), User.Email},
                   {QStringLiteral(":XML"), StoredFragment(User)}});
}

bool ConfigStore::DeleteUser(const QString &ID)
{
    return Exec(QStringLiteral("DELETE FROM Users WHERE UserID = :ID"), {{QStringLiteral(":ID"), ID}}) >= 0;
}

bool ConfigStore::SaveFolder(clsUserFolder &Folder)
{
    const QVariantMap values = {{QStringLiteral(":FolderID"), Folder.ID},
                                {QStringLiteral(":AccountID"), Folder.AccountID},
                                {QStringLiteral(":OrganizationID"), Folder.OrganizationID},
                                {QStringLiteral(":Parent"), Folder.Parent},
                                {QStringLiteral(":UserID"), Folder.UserID},
                                {QStringLiteral(":FolderName"), Folder.Name},
                                {QStringLiteral(":Email"), Folder.Email}};
    if (!Upsert(QStringLiteral("UPDATE Folders SET AccountID = :AccountID, OrganizationID = :OrganizationID,"
                               " Parent = :Parent, UserID = :UserID, FolderName = :FolderName, Email = :Email"
                               " WHERE FolderID = :FolderID"),
                QStringLiteral("INSERT INTO Folders (FolderID, AccountID, OrganizationID, Parent, UserID, FolderName,"
                               " Email) VALUES (:FolderID, :AccountID, :OrganizationID, :Parent, :UserID,"
                               " :FolderName, :Email)"),
                values))
        return false;
    QSqlQuery query(QSqlDatabase::database(m_connection));
    query.prepare(QStringLiteral("SELECT RecordNo FROM Folders WHERE FolderID = :FolderID"));
    query.bindValue(QStringLiteral(":FolderID"), Folder.ID);
    if (!query.exec() || !query.next())
        return Failed(query);
    Folder.RecordNo = query.value(0).toInt();
    return true;
}

bool ConfigStore::DeleteFolder(const QString &ID)
{
    return Exec(QStringLiteral("DELETE FROM Folders WHERE FolderID = :ID"), {{QStringLiteral(":ID"), ID}}) >= 0;
}

bool ConfigStore::SaveAccount(const clsAccount &Account)
{
    return Upsert(QStringLiteral("UPDATE Accounts SET OrganizationID = :OrganizationID, XML = :XML"
                                 " WHERE AccountID = :AccountID"),
                  QStringLiteral("INSERT INTO Accounts (AccountID, OrganizationID, OrderBy, XML) VALUES (:AccountID,"
                                 " :OrganizationID, (SELECT COALESCE(MAX(OrderBy), 0) + 1 FROM Accounts), :XML)"),
                  {{QStringLiteral(":AccountID"), Account.AccountID},
                   {QStringLiteral(":OrganizationID"), Account.OrganizationID},
                   {QStringLiteral(":XML"), Account.XML()}});
}

bool ConfigStore::DeleteAccount(const QString &ID)
{
    const QVariantMap id = {{QStringLiteral(":ID"), ID}};
    return Exec(QStringLiteral("DELETE FROM Triggers WHERE AccountID = :ID"), id) >= 0
           && Exec(QStringLiteral("DELETE FROM Accounts WHERE AccountID = :ID"), id) >= 0;
}

bool ConfigStore::SaveTrigger(const QString &AccountID, const clsAccountTrigger &Trigger)
{
    return Upsert(QStringLiteral("UPDATE Triggers SET XML = :XML"
                                 " WHERE AccountID = :AccountID AND TriggerID = :TriggerID"),
                  QStringLiteral("INSERT INTO Triggers (AccountID, TriggerID, OrderBy, XML) VALUES (:AccountID,"
                                 " :TriggerID, (SELECT COALESCE(MAX(OrderBy), 0) + 1 FROM Triggers"
                                 " WHERE AccountID = :AccountID), :XML)"),
                  {{QStringLiteral(":AccountID"), AccountID},
                   {QStringLiteral(":TriggerID"), Trigger.TriggerID},
                   {QStringLiteral(":XML"), Trigger.XML()}});
}

bool ConfigStore::ReplaceTriggers(const QString &AccountID, const colTriggers &Triggers)
{
    if (Exec(QStringLiteral("DELETE FROM Triggers WHERE AccountID = :AccountID"),
             {{QStringLiteral(":AccountID"), AccountID}}) < 0)
        return false;
    int position = 0;
    for (const clsAccountTrigger *trigger : Triggers)
        if (Exec(QStringLiteral("INSERT INTO Triggers (AccountID, TriggerID, OrderBy, XML)"
                                " VALUES (:AccountID, :TriggerID, :OrderBy, :XML)"),
                 {{QStringLiteral(":AccountID"), AccountID},
                  {QStringLiteral(":TriggerID"), trigger->TriggerID},
                  {QStringLiteral(":OrderBy"), ++position},
                  {QStringLiteral(":XML"), trigger->XML()}})
            < 0)
            return false;
    return true;
}

bool ConfigStore::DeleteTrigger(const QString &AccountID, const QString &TriggerID)
{
    return Exec(QStringLiteral("DELETE FROM Triggers WHERE AccountID = :AccountID AND TriggerID = :TriggerID"),
                {{QStringLiteral(":AccountID"), AccountID}, {QStringLiteral(":TriggerID"), TriggerID}})
           >= 0;
}

bool ConfigStore::SwapTriggers(const QString &AccountID, const QString &First, const QString &Second)
{
    QSqlQuery query(QSqlDatabase::database(m_connection));
    query.prepare(QStringLiteral("SELECT TriggerID, OrderBy FROM Triggers"
                                 " WHERE AccountID = :AccountID AND TriggerID IN (:First, :Second)"));
    query.bindValue(QStringLiteral(":AccountID"), AccountID);
    query.bindValue(QStringLiteral(":First"), First);
    query.bindValue(QStringLiteral(":Second"), Second);
    if (!query.exec())
        return Failed(query);
    QHash<QString, QVariant> positions;
    while (query.next())
        positions.insert(query.value(0).toString(), query.value(1));
    if (positions.size() != 2) {
        LastError = QStringLiteral("The triggers to swap are not both stored.");
        return false;
    }
    const QString move = QStringLiteral("UPDATE Triggers SET OrderBy = :OrderBy"
                                        " WHERE AccountID = :AccountID AND TriggerID = :TriggerID");
    return Exec(move, {{QStringLiteral(":AccountID"), AccountID},
                       {QStringLiteral(":TriggerID"), First},
                       {QStringLiteral(":OrderBy"), positions.value(Second)}})
               > 0
           && Exec(move, {{QStringLiteral(":AccountID"), AccountID},
                          {QStringLiteral(":TriggerID"), Second},
                          {QStringLiteral(":OrderBy"), positions.value(First)}})
                  > 0;
}

bool ConfigStore::Failed(const QSqlQuery &Query)
{
    LastError = Query.lastError().text();
    return false;
}

int ConfigStore::Exec(const QString &Statement, const QVariantMap &Values)
{
    QSqlQuery query(QSqlDatabase::database(m_connection));
    query.prepare(Statement);
    for (auto value = Values.cbegin(); value != Values.cend(); ++value)
        query.bindValue(value.key(), value.value());
    if (!query.exec()) {
        LastError = query.lastError().text();
        return -1;
    }
    return query.numRowsAffected();
}

bool ConfigStore::Upsert(const QString &Update, const QString &Insert, const QVariantMap &Values)
{
    const int changed = Exec(Update, Values);
    if (changed != 0)
        return changed > 0;
    return Exec(Insert, Values) > 0;
}
