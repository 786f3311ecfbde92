#pragma once
#include "actions/colActions.h"
#include "colFields.h"

#include <QDateTime>
#include <QString>
#include <memory>

class clsAccount;

// One rule of an account: the conditions a message must meet, the fields
// extracted from it, the actions run on it, the folder it is stored in and
// the trigger that takes it on afterwards.
class clsAccountTrigger
{
public:
    clsAccountTrigger();
    ~clsAccountTrigger();
    clsAccountTrigger(const clsAccountTrigger &) = delete;
    clsAccountTrigger &operator=(const clsAccountTrigger &) = delete;

    QString Name;
    QString Details;
    bool Enabled = true;
    QString TriggerID;
    // Empty stops processing; a TriggerID passes the message on to it.
    QString ThenProcessID;
    // ID of the folder for the message; empty is no specific folder.
    QString SaveToFolderID;
    // The words looked for, each followed by one TAB.
    QString SubjectLineLIKE;
    bool CheckBodyAlso = false;
    bool CheckALLWords = false;
    QString FromAddressLIKE = QStringLiteral("*");
    QString CCAddressLike;
    // Combo indexes. Importance: 0 Any, 1 Low, 2 Normal, 3 High.
    qint16 MarkedAsImportant = 0;
    qint16 MarkedAsSenstive = 0;
    qint16 FlaggedForAction = 0;
    bool SBScriptTriggerEnabled = false;
    QString SBScriptTrigger;
    // Today minus 30 days, at midnight, for a new trigger.
    QDateTime ReceivedAfter;
    // The date was moved back: the account's sources must be rewound.
    bool ReceivedAfterReset = false;
    // Condition fragment of the condition language.
    QString Condition;
    QString HelperMessage;
    QString HelperSubject;
    QString HelperTo;
    // Empty, or 170 flags "Y"/"N": see INSchedule.
    QString SCHEDULE;
    bool StopProcessingFollowingActions = false;
    qint32 MessageCount = 0;
    qint32 ErrorCount = 0;
    QString LastError;
    QString ClassName = QStringLiteral("Trigger");
    // The XML getter writes the short form: no fields and actions, but
    // their names as FieldsList.
    bool JustHeaderInXML = false;
    clsAccount *Parent = nullptr;

    // The extracted fields in extraction order, and the actions. Reading a
    // fragment replaces both collections: references taken before then no
    // longer hold.
    colFields &FieldsToProcess() const { return *m_FieldsToProcess; }
    colActions &ActionList() const { return *m_ActionList; }

    // The field at a 1-based position; nullptr when there is none.
    clsTriggerField *Field(int Number) const;
    // Field names separated by ",". A short fragment's own FieldsList is
    // returned as it came; otherwise the names of FieldsToProcess.
    QString FieldsList() const;

    // The first action of class "DatabaseUpdate", or nullptr: the list
    // allows one of them.
    ActionItem *DatabaseUpdate() const;
    // False without such an action, else its Enabled.
    bool DatabaseUpdateEnabled() const;

    // True when the schedule is empty or has no "N" in the cell of the
    // moment's weekday and hour; hour 0 reads column 24.
    bool INSchedule(const QDateTime &Now = QDateTime::currentDateTime()) const;

    // The rule as the trigger list shows it: sender, date, importance, words
    // and condition in one sentence.
    QString ConditionAsText() const;
    // The older readable form of a condition given as LF-separated lines.
    QString ConditionText(const QString &Condition, bool MarkUp) const;

    // The statements of the direct database action (TriggerSQL.cpp): one per
    // table that the enabled fields name, in order of the table's first
    // field, each followed by two CR LF. Values are parameters named "@" and
    // the column with "_" for each blank. Dialect is a SQLDialect; Generic is
    // turned into SQL Server in place.
    // Without any table the insert text is a comment, unless FromServer.
    QString SQLInsertStatement(int &Dialect, bool FromServer = false) const;
    // Sets the columns of the fields that aren't KeyExists where the key
    // fields match; a table without keys gets a comment instead.
    QString SQLUpdateStatement(int &Dialect) const;
    // Selects by the key fields, or with NOWhere by the message's
    // pvane_msg_uid (parameter "@UID").
    QString SQLSelectStatement(int &Dialect, bool NOWhere = false) const;

    // Statements that make or extend a table of the internal database for
    // the fields, enabled or not, that name this table (any case) and a
    // column. Dialect is DialectSQLite for the embedded database; any other
    // value gives the SQL Server text. The SQLite text ends each statement
    // with ";".
    QString BuildINTCreate(const QString &Table, int Dialect) const;
    // Adds the columns missing from ExistingColumns (names each followed by
    // ",", compared exactly) and their indexes; empty when none is missing.
    QString BuildINTAlter(const QString &Table, const QString &ExistingColumns, int Dialect) const;

    // The internal database of the trigger (TriggerInternalDB.cpp): an SQLite
    // file of its own in the data folder, whose tables the fields name.
    QString InternalDatabaseFile() const;
    // Makes the file when it is missing; false with InternalDatabaseProblem.
    bool CreateInternalDB() const;
    // Makes the tables of the fields that name a table and a column, enabled
    // or not, and adds the columns that a table lacks; with DropFirst the
    // tables are made anew. False when the trigger has no DatabaseUpdate
    // action with UseInternal, or the database refused.
    bool CreateTablesForTrigger(bool DropFirst = false) const;
    // CreateTablesForTrigger when the DatabaseUpdate action uses the
    // internal database; false otherwise.
    bool CreateInternalTables() const;
    // The rows this message left in the internal tables: each select
    // statement, ":", and its rows' columns as "name: value" lines. Empty
    // without an internal database.
    QString INTDBString(const QString &UID) const;
    // Why the last of the calls above failed.
    mutable QString InternalDatabaseProblem;

    // The fragment, full or short (JustHeaderInXML). Reading replaces the
    // whole trigger, fields and actions included.
    QString XML() const;
    void setXML(const QString &Value);
    void ReadXML(clsXML &Reader);
    // The trigger's heading tags and condition alone; reading it leaves
    // fields, actions and the other properties as they are.
    QString XMLSubset() const;
    void setXMLSubset(const QString &Value);

private:
    void ReplaceCollections();

    std::unique_ptr<colFields> m_FieldsToProcess;
    std::unique_ptr<colActions> m_ActionList;
    // The FieldsList that a short fragment brought; emptied when the short
    // form is written.
    mutable QString m_FieldsList;
    // ID of the direct database action once found.
    mutable QString m_DatabaseUpdateID;
};
