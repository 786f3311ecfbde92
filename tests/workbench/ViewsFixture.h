#pragma once
#include "ShellFixture.h"
#include "foundation/GlobalBlock.h"
#include "store/MimeMail.h"
#include "store/clsEventLog.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

// The shell's server with a message store the views can be tried on: the
// public folders FolderA, FolderB and Spam, and rows written straight into
// the server's store, as the message processor leaves them.
namespace ViewsFixture {

struct Row
{
    QString AccountID = QStringLiteral("A01");
    QString TriggerID = QStringLiteral("T1");
    QString FolderID = QStringLiteral("FolderA");
    QString Subject;
    QString From = QStringLiteral("ann@orders.example");
    QDateTime Date = QDateTime::currentDateTime();
    bool Matched = true;
    bool Succeeded = true;
    QString Error;
    int Flags = 0;
    QString Mime; // empty: a plain message is built
    QString Guid;
    QString UID;
};

inline QSqlDatabase Database(ServerFixture &Server, const QString &Name)
{
    const QString connection = QStringLiteral("views-") + Name;
    if (QSqlDatabase::contains(connection))
        return QSqlDatabase::database(connection);
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
    db.setDatabaseName(Server.DataPath() + Name + QStringLiteral(".db3"));
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    db.open();
    return db;
}

// A message built as mail is: text, and HTML when given.
inline QString PlainMime(const QString &Subject, const QString &From, const QDateTime &Date, const QString &Text,
                         const QString &Html = QString())
{
    MimeMail mail;
    mail.Compose(From, QStringLiteral("In Box <in@alpha.test>, sales@alpha.test"), Subject, Date, Text, Html);
    return QString::fromUtf8(mail.GetMime());
}

// Writes the row; its record number, 0 on failure.
inline qint64 Insert(ServerFixture &Server, Row Stored)
{
    if (Stored.Mime.isEmpty())
        Stored.Mime = PlainMime(Stored.Subject, Stored.From, Stored.Date, QStringLiteral("Body of ") + Stored.Subject);
    const qsizetype split = Stored.Mime.indexOf(QStringLiteral("\r\n\r\n"));
    QSqlQuery query(Database(Server, QStringLiteral("MessageStore")));
    query.prepare(QStringLiteral(
        "INSERT INTO MessageStore (AccountID, OrganizationID, Source, UID, Subject, FromAddress, ToAddress, MessageDate, "
        "Importance, TriggerID, TriggerMatch, TriggerSuccess, TriggerError, Body, Headers, Attachments, HasFullBody, "
        "ProcessedDate, MessageFlags, FolderID, Guid) VALUES (?, ?, 'POP3', ?, ?, ?, 'in@alpha.test', ?, 'N', ?, ?, ?, "
        "?, ?, ?, ?, 1, ?, ?, ?, ?)"));
    const QString stamp = QStringLiteral("yyyy-MM-dd HH:mm:ss");
    // A message lies in its folder's organization.
    const clsUserFolder *folder = UserFolders().Item(Stored.FolderID);
    query.addBindValue(Stored.AccountID);
    query.addBindValue(folder ? folder->OrganizationID : QString());
    query.addBindValue(Stored.UID.isEmpty() ? Stored.Subject : Stored.UID);
    query.addBindValue(Stored.Subject);
    query.addBindValue(Stored.From);
    query.addBindValue(Stored.Date.toString(stamp));
    query.addBindValue(Stored.TriggerID);
    query.addBindValue(Stored.Matched ? 1 : 0);
    query.addBindValue(Stored.Succeeded ? 1 : 0);
    query.addBindValue(Stored.Error);
    query.addBindValue(split < 0 ? Stored.Mime : Stored.Mime.mid(split + 4));
    query.addBindValue(split < 0 ? QString() : Stored.Mime.left(split + 2));
    query.addBindValue(Stored.Mime.contains(QStringLiteral("filename=")) ? 1 : 0);
    query.addBindValue(Stored.Date.addSecs(5).toString(stamp));
    query.addBindValue(Stored.Flags);
    query.addBindValue(Stored.FolderID);
    query.addBindValue(Stored.Guid);
    if (!query.exec()) {
        qWarning() << query.lastError().text();
        return 0;
    }
    return query.lastInsertId().toLongLong();
}

// One value of the store, by a statement of the test.
inline QVariant Value(ServerFixture &Server, const QString &Statement, const QString &Database = QStringLiteral("MessageStore"))
{
    QSqlQuery query(ViewsFixture::Database(Server, Database));
    return query.exec(Statement) && query.next() ? query.value(0) : QVariant();
}

// The edge server's log gets a line for the message of that UID.
inline void LogLine(ServerFixture &Server, const QString &UID, const QString &Text)
{
    const QString saved = Global.DataPath;
    Global.DataPath = Server.DataPath();
    clsEventLog log;
    log.setFileName(Server.DataPath() + Global.ProductName + QStringLiteral("EdgeServerLog.db3"));
    log.AddRemoteEvent(Text, QDateTime::currentDateTime(), QStringLiteral("-"), QString(), UID);
    Global.DataPath = saved;
}

// Starts the server, fills it as the shell's tests do, adds the folders and
// logs the console on; false with the reason in Problem.
inline bool Start(ServerFixture &Server, QString &Problem)
{
    if (!Server.Start()) {
        Problem = Server.Problem;
        return false;
    }
    if (!ShellFixture::Fill(Server)) {
        Problem = QStringLiteral("the server refused the records");
        return false;
    }
    for (const QString &folder : {QStringLiteral("FolderA"), QStringLiteral("FolderB"), QStringLiteral("Spam")}) {
        const HttpReply reply = Server.Get(QStringLiteral("addfolder.xml?folderid=%1&folder=%1").arg(folder));
        if (reply.Text() != u"OK") {
            Problem = QStringLiteral("addfolder: ") + reply.Text();
            return false;
        }
    }
    if (!ShellFixture::LogOn(Server)) {
        Problem = QStringLiteral("the console could not log on");
        return false;
    }
    return true;
}

} // namespace ViewsFixture
