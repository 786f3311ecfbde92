#pragma once
#include <QString>
#include <QVariantMap>
#include <functional>

class QSqlQuery;
class clsAccount;
class clsAccountTrigger;
class colTriggers;
class clsUser;
class clsUserFolder;
class clsUserOrganization;
class UserPasswords;

// The server's configuration records in a SQLite database of the data folder
// (the store's MessageStore.db3, or Configuration.db3 beside a store on SQL
// Server): organizations, users and folders in the store's tables
// Organizations, Users and Folders; accounts and triggers in tables of their
// own, one row each, so that a post writes one record and not the whole
// configuration.
//
// Every change runs in a transaction: a process killed at any moment leaves
// each record as it was or as it was posted. A user's row holds its fragment
// without the password; the column Password holds the password's verifier.
class ConfigStore
{
public:
    ConfigStore();
    ~ConfigStore();
    ConfigStore(const ConfigStore &) = delete;
    ConfigStore &operator=(const ConfigStore &) = delete;

    // Opens (and on first use creates) the database file.
    bool Open(const QString &FilePath);
    // Works on a connection that is open already and stays its owner's: the
    // message store's writer, so that a record and the store rows that belong
    // to it are written or deleted in one transaction.
    bool OpenShared(const QString &Connection);
    void Close();
    bool IsEmpty();
    // The text of the last failure.
    QString LastError;

    // Fills the global collections of organizations, users, folders and
    // accounts with their triggers, and the passwords, from the tables.
    bool Load(UserPasswords &Passwords);

    // Runs Work in one transaction: all its writes stand, or none when it
    // answers false or a write fails.
    bool Write(const std::function<bool()> &Work);

    bool SaveOrganization(const clsUserOrganization &Organization);
    bool DeleteOrganization(const QString &ID);
    bool SaveUser(const clsUser &User, const QString &Verifier);
    bool DeleteUser(const QString &ID);
    // A folder stored for the first time gets its RecordNo.
    bool SaveFolder(clsUserFolder &Folder);
    bool DeleteFolder(const QString &ID);
    // The account's own fragment, without its triggers; a new account goes last.
    bool SaveAccount(const clsAccount &Account);
    // The account and its triggers.
    bool DeleteAccount(const QString &ID);
    // One trigger of the account; a new trigger goes last.
    bool SaveTrigger(const QString &AccountID, const clsAccountTrigger &Trigger);
    // The account's triggers become these, in their order.
    bool ReplaceTriggers(const QString &AccountID, const colTriggers &Triggers);
    bool DeleteTrigger(const QString &AccountID, const QString &TriggerID);
    // The two triggers exchange their positions.
    bool SwapTriggers(const QString &AccountID, const QString &First, const QString &Second);

private:
    // Sets the connection up and makes the tables that are missing.
    bool Prepare();
    bool Failed(const QSqlQuery &Query);
    bool LoadAccounts();
    // Runs a statement with its named values; the number of rows it changed,
    // -1 on failure.
    int Exec(const QString &Statement, const QVariantMap &Values = {});
    // UPDATE, then INSERT when no row was there; both with the same values.
    bool Upsert(const QString &Update, const QString &Insert, const QVariantMap &Values);

    QString m_connection;
    bool m_shared = false;
};
