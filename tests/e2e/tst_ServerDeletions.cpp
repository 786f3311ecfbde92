#include "ServerFixture.h"
#include "TestRegistry.h"
#include "model/GlobalCollections.h"

#include <QDate>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTest>

namespace {

const QString Admin = QStringLiteral("Admin");

// Rows that tie a record to the store, one statement each, with %1 the
// record (account, user or organization) and %2 its folder.
const char *const AccountRows[] = {
    "INSERT INTO MessageStore (AccountID, OrganizationID, FolderID, Source, UID, Subject) VALUES ('%1', 'OrgKeep', '%2', 'POP3', '%1-m', 'x')",
    "INSERT INTO Pending (AccountID, OrganizationID, UID) VALUES ('%1', 'OrgKeep', '%1-p')",
    "INSERT INTO Outbox (AccountID, Scheduled, Subject) VALUES ('%1', 1, 'later')",
    "INSERT INTO Outbox (AccountID, Scheduled, Subject) VALUES ('%1', 0, 'now')",
    "INSERT INTO FolderFlags (UserID, FolderID, Flags) VALUES ('KeepU', '%2', 1)",
    "INSERT INTO MessageFlags (UserID, FolderID, RecordNo, Flags) VALUES ('KeepU', '%2', 1, 1)",
    "INSERT INTO DaySummary (OrganizationID, AccountID, Dated, MessagesIn) VALUES ('OrgKeep', '%1', '2026-01-02 00:00:00', 3)",
    "INSERT INTO DaySummaryToken (OrganizationID, AccountID, TokenType, Token, Dated, Count) VALUES ('OrgKeep', '%1', 1, 'x.example', '2026-01-02 00:00:00', 3)",
};
const char *const UserRows[] = {
    "INSERT INTO MessageStore (AccountID, OrganizationID, FolderID, Source, UID, Subject) VALUES ('%1', 'OrgGone', '%2', 'SMTP', '%1-m', 'x')",
    "INSERT INTO Pending (AccountID, OrganizationID, UID) VALUES ('%1', 'OrgGone', '%1-p')",
    "INSERT INTO FolderFlags (UserID, FolderID, Flags) VALUES ('%1', 'FKeepAcc', 1)",
    "INSERT INTO FolderFlags (UserID, FolderID, Flags) VALUES ('KeepU', '%2', 1)",
    "INSERT INTO MessageFlags (UserID, FolderID, RecordNo, Flags) VALUES ('%1', 'FKeepAcc', 1, 1)",
    "INSERT INTO MessageFlags (UserID, FolderID, RecordNo, Flags) VALUES ('KeepU', '%2', 1, 1)",
    "INSERT INTO DaySummary (OrganizationID, AccountID, Dated, MessagesIn) VALUES ('OrgGone', '%1', '2026-01-02 00:00:00', 3)",
    "INSERT INTO DaySummaryToken (OrganizationID, AccountID, TokenType, Token, Dated, Count) VALUES ('OrgGone', '%1', 2, 'NO', '2026-01-02 00:00:00', 3)",
};
const char *const OrganizationRows[] = {
    "INSERT INTO MessageStore (AccountID, OrganizationID, FolderID, Source, UID, Subject) VALUES ('-', '%1', '-', 'SMTP', '%1-m', 'x')",
    "INSERT INTO Pending (AccountID, OrganizationID, UID) VALUES ('-', '%1', '%1-p')",
    "INSERT INTO DaySummary (OrganizationID, AccountID, Dated, MessagesIn) VALUES ('%1', 'Stat%1', '2026-01-02 00:00:00', 3)",
    "INSERT INTO DaySummaryToken (OrganizationID, AccountID, TokenType, Token, Dated, Count) VALUES ('%1', 'Stat%1', 100, 'y', '2026-01-02 00:00:00', 1)",
};

} // namespace

// Deleting an account, a user or an organization leaves none of its rows in
// any table of the store or the queue, and no row of any other record goes.
//
// OrgKeep has the accounts AccGone and AccKeep with their folders FGoneAcc
// and FKeepAcc and the user KeepU; OrgGone has the user GoneU with its
// folder FGoneUser.
class tst_ServerDeletions : public QObject
{
    Q_OBJECT
    ServerFixture server;

    QString Ok(const QString &Request, const QByteArray &Body = QByteArray(), const QString &As = Admin)
    {
        const QString password = As == Admin ? QString() : QStringLiteral("pw");
        return (Body.isNull() ? server.Get(Request, As, password) : server.Post(Request, Body, As, password)).Text();
    }
    void PostUser(const QString &ID, const QString &Organization)
    {
        clsUser user;
        user.ID = ID;
        user.Username = ID.toLower();
        user.Password = QStringLiteral("pw");
        user.OrganizationID = Organization;
        QCOMPARE(Ok(QStringLiteral("postuser.htm?userid=") + ID, user.XML().toUtf8()), QStringLiteral("OK"));
    }
    void PostAccount(const QString &ID)
    {
        clsAccount account;
        account.AccountID = ID;
        account.Name = ID;
        account.OrganizationID = QStringLiteral("OrgKeep");
        QCOMPARE(Ok(QStringLiteral("postaccount.htm?accountid=") + ID, account.XML().toUtf8()), QStringLiteral("OK"));
    }
    // Runs the statements on the server's databases from a connection of the
    // test; a record that receives messages gets a queued one too.
    void Seed(const char *const *Rows, int Count, const QString &Record, const QString &Folder, bool Queued = true)
    {
        QSqlDatabase store = Database(QStringLiteral("MessageStore"));
        QSqlDatabase queue = Database(QStringLiteral("EdgeQueue"));
        for (int i = 0; i < Count; ++i) {
            QSqlQuery query(store);
            QVERIFY2(query.exec(QString::fromLatin1(Rows[i]).replace(QStringLiteral("%1"), Record).replace(QStringLiteral("%2"), Folder)),
                     Rows[i]);
        }
        if (!Queued)
            return;
        QSqlQuery query(queue);
        QVERIFY(query.exec(QStringLiteral("INSERT INTO EdgeQueue (AccountID, Source, UID, Processed) VALUES ('%1', 'POP3', '%1-q', 0)")
                               .arg(Record)));
    }
    QSqlDatabase Database(const QString &Name)
    {
        if (QSqlDatabase::contains(Name))
            return QSqlDatabase::database(Name);
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), Name);
        db.setDatabaseName(server.DataPath() + Name + QStringLiteral(".db3"));
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        db.open();
        return db;
    }
    // Every value of every row of both databases that equals one of Values,
    // as "table: value".
    QStringList Mentions(const QStringList &Values)
    {
        QStringList found;
        for (const QString &name : {QStringLiteral("MessageStore"), QStringLiteral("EdgeQueue")}) {
            QSqlDatabase db = Database(name);
            for (const QString &table : db.tables()) {
                QSqlQuery rows(db);
                rows.exec(QStringLiteral("SELECT * FROM ") + table);
                while (rows.next())
                    for (int column = 0; column < rows.record().count(); ++column)
                        if (Values.contains(rows.value(column).toString()))
                            found << table + QStringLiteral(": ") + rows.value(column).toString();
            }
        }
        found.sort();
        return found;
    }

private slots:
    void initTestCase()
    {
        // The web service alone: no processor takes the queued rows the test puts there.
        server.Arguments = {QStringLiteral("--roles"), QStringLiteral("web")};
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        for (const QString &id : {QStringLiteral("OrgKeep"), QStringLiteral("OrgGone")}) {
            clsUserOrganization organization;
            organization.ID = organization.Name = id;
            QCOMPARE(Ok(QStringLiteral("postorganization.htm?organizationid=") + id, organization.XML().toUtf8()),
                     QStringLiteral("OK"));
        }
        PostUser(QStringLiteral("KeepU"), QStringLiteral("OrgKeep"));
        PostUser(QStringLiteral("GoneU"), QStringLiteral("OrgGone"));
        PostAccount(QStringLiteral("AccGone"));
        PostAccount(QStringLiteral("AccKeep"));
        QCOMPARE(Ok(QStringLiteral("addfolder.xml?folderid=FGoneAcc&folder=In&accountid=AccGone")), QStringLiteral("OK"));
        QCOMPARE(Ok(QStringLiteral("addfolder.xml?folderid=FKeepAcc&folder=In&accountid=AccKeep")), QStringLiteral("OK"));
        QCOMPARE(Ok(QStringLiteral("addfolder.xml?folderid=FGoneUser&folder=Mine"), QByteArray(), QStringLiteral("goneu")),
                 QStringLiteral("OK"));

        Seed(AccountRows, std::size(AccountRows), QStringLiteral("AccGone"), QStringLiteral("FGoneAcc"));
        Seed(AccountRows, std::size(AccountRows), QStringLiteral("AccKeep"), QStringLiteral("FKeepAcc"));
        Seed(UserRows, std::size(UserRows), QStringLiteral("GoneU"), QStringLiteral("FGoneUser"));
        Seed(OrganizationRows, std::size(OrganizationRows), QStringLiteral("OrgGone"), QString(), false);
    }

    void everyOrganizationHasTheBuiltInTokenTypes()
    {
        QSqlQuery query(Database(QStringLiteral("MessageStore")));
        QVERIFY(query.exec(QStringLiteral("SELECT OrganizationID, TokenType, TokenTypeDesc FROM DaySummaryTokenTypes"
                                          " WHERE TokenType < 100 ORDER BY OrganizationID, TokenType")));
        QStringList types;
        while (query.next())
            types << query.value(0).toString() + u' ' + query.value(2).toString();
        QCOMPARE(types.filter(QStringLiteral("OrgKeep ")),
                 (QStringList{QStringLiteral("OrgKeep Sender Domain"), QStringLiteral("OrgKeep Sender Country"),
                              QStringLiteral("OrgKeep Attachment File Type")}));
        QCOMPARE(types.size(), 9); // the first start's organization too
    }

    void deletingAnAccountLeavesNothingOfIt()
    {
        const QStringList kept = Mentions({QStringLiteral("AccKeep"), QStringLiteral("FKeepAcc")});
        QCOMPARE(Ok(QStringLiteral("deleteaccount.xml?accountid=AccGone")), QStringLiteral("OK"));
        QCOMPARE(Mentions({QStringLiteral("AccGone"), QStringLiteral("FGoneAcc")}), QStringList());
        QCOMPARE(Mentions({QStringLiteral("AccKeep"), QStringLiteral("FKeepAcc")}), kept);
        QVERIFY(!server.Get(QStringLiteral("getfolders.xml")).Body.contains("FGoneAcc"));
    }

    void deletingAUserLeavesNothingOfIt()
    {
        const QStringList kept = Mentions({QStringLiteral("KeepU"), QStringLiteral("FKeepAcc")});
        QCOMPARE(Ok(QStringLiteral("deleteuser.xml?userid=GoneU")), QStringLiteral("OK"));
        QCOMPARE(Mentions({QStringLiteral("GoneU"), QStringLiteral("FGoneUser")}), QStringList());
        // Only the flags that tied the two together went: KeepU's on FGoneUser, GoneU's on FKeepAcc.
        QCOMPARE(Mentions({QStringLiteral("KeepU"), QStringLiteral("FKeepAcc")}).size(), kept.size() - 4);
    }

    void deletingAnOrganizationLeavesNothingOfIt()
    {
        const QStringList kept = Mentions({QStringLiteral("OrgKeep")});
        QCOMPARE(Ok(QStringLiteral("deleteorganization.xml?organizationid=OrgGone")), QStringLiteral("OK"));
        QCOMPARE(Mentions({QStringLiteral("OrgGone"), QStringLiteral("StatOrgGone")}), QStringList());
        QCOMPARE(Mentions({QStringLiteral("OrgKeep")}), kept);
    }

    void theDeletionsLastAcrossARestart()
    {
        QCOMPARE(server.Stop(), 0);
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        const QByteArray users = server.Get(QStringLiteral("getusers.xml")).Body;
        QVERIFY(users.contains("KeepU") && !users.contains("GoneU"));
        QVERIFY(!server.Get(QStringLiteral("getaccounts.xml")).Body.contains("AccGone"));
        QVERIFY(!server.Get(QStringLiteral("getorganizations.xml")).Body.contains("OrgGone"));
    }

    void cleanupTestCase()
    {
        server.Stop();
        for (const QString &name : {QStringLiteral("MessageStore"), QStringLiteral("EdgeQueue")}) {
            QSqlDatabase::database(name, false).close();
            QSqlDatabase::removeDatabase(name);
        }
    }
};

POSTVANE_TEST(tst_ServerDeletions)
#include "tst_ServerDeletions.moc"
