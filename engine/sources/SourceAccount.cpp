#include "SourceAccount.h"

#include "foundation/GlobalBlock.h"
#include "model/clsAccount.h"

#include <QDir>
#include <QFileInfo>

QString SourceEndpoint::Where() const
{
    return Host + u':' + QString::number(Port);
}

namespace
{
SourceEndpoint Endpoint(const QString &Host, int Port, const QString &User, const QString &Password, bool Secure,
                        bool AcceptAny)
{
    SourceEndpoint endpoint;
    endpoint.Host = Host.trimmed();
    // The settings keep ports in 16 signed bits: those above 32767 read back negative.
    endpoint.Port = quint16(Port);
    endpoint.User = User;
    endpoint.Password = Password;
    endpoint.Secure = Secure;
    endpoint.AcceptAnyCertificate = AcceptAny;
    const QString bundle = QDir(Global.DataPath).filePath(QStringLiteral("SourceCertificates.pem"));
    if (!Global.DataPath.isEmpty() && QFileInfo::exists(bundle))
        endpoint.CAFile = bundle;
    return endpoint;
}
}

SourceAccount SourceAccount::From(clsAccount &Account)
{
    SourceAccount source;
    source.AccountID = Account.AccountID;
    source.Name = Account.Name;
    source.MaxMessagesPerRun = Account.MaxMessagesPerRun;
    const QString acceptAny = Account.GlobalVar(QStringLiteral("AcceptAnyCertificate"), true).toString().trimmed();
    const bool accept = acceptAny.compare(QStringLiteral("Y"), Qt::CaseInsensitive) == 0;

    source.Pop3 = Endpoint(Account.ServerIP, Account.ServerPort, Account.ServerAccount, Account.ServerPassword,
                           Account.ServerSSL, accept);
    source.Pop3LeaveMessageOn = Account.ServerLeaveMessageOn;
    source.Pop3DeleteAll = Account.ServerDeleteAll;
    source.Pop3LastEmail = Account.ServerLastEmail;
    source.Pop3LastMessageNoChecked = Account.ServerLastMessageNoChecked;

    source.Imap = Endpoint(Account.IMAPServer, Account.IMAPPort, Account.IMAPAccount, Account.IMAPPassword,
                           Account.IMAPSSL, accept);
    source.ImapFolder = Account.IMAPFolder.trimmed().isEmpty() ? QStringLiteral("INBOX") : Account.IMAPFolder.trimmed();
    source.ImapMove = Account.IMAPMove;
    source.ImapMoveToFolder = Account.IMAPMoveToFolder.trimmed();
    source.ImapLeaveMessageOn = Account.IMAPLeaveMessageOn;
    source.ImapDeleteAll = Account.IMAPDeleteAll;
    source.ImapMarkAsRead = Account.IMAPMarkAsRead;
    source.ImapServerIDs = Account.IMAPServerIDs;
    source.ImapLastEmail = Account.IMAPLastEmail;

    source.AutoRun = Account.AutoRun;
    source.AutoRunMessageMime = Account.AutoRunMessageMime.toUtf8();

    source.FilePickupFolder = Account.FilePickupFolder.trimmed();
    source.FilePickUpMask = Account.FilePickUpMask.trimmed();
    source.FilePickupDontDelete = Account.FilePickupDontDelete;

    source.CSVPickupFolder = Account.CSVPickupFolder.trimmed();
    source.CSVPickupMask = Account.CSVPickupMask.trimmed();
    source.CSVPickupDelete = Account.CSVPickupDelete;
    source.CSVPickupWorkSheet = Account.CSVPickupWorkSheet.trimmed();
    source.CSVPickupHeaderRow = Account.CSVPickupHeaderRow;
    source.CSVPickupLastStatus = Account.CSVPickupLastStatus;

    source.DBConnection = Account.DBConnection;
    source.DBSQL = Account.DBSQL;
    source.DBUIDField = Account.DBUIDField.trimmed();
    source.DBMSGBody = Account.DBMSGBody;
    source.DBMSGField = Account.DBMSGField.trimmed();
    source.DBDelete = Account.DBDelete;
    source.DBUpdateField = Account.DBUpdateField.trimmed();
    source.DBUpdateValue = Account.DBUpdateValue;

    source.HTTPUrl = Account.HTTPUrl.trimmed();
    source.HTTPFollow = Account.HTTPFollow;
    source.HTTPUser = Account.HTTPUser;
    source.HTTPPass = Account.HTTPPass;
    source.HTTPLogin = Account.HTTPLogin;
    source.HTTPClean = Account.HTTPClean;
    source.HTTPFail = Account.HTTPFail;
    source.HTTPLastMessage = Account.HTTPLastMessage;

    source.RSSUrl = Account.RSSUrl.trimmed();
    source.RSSLastMessage = Account.RSSLastMessage;
    return source;
}

void SourceAccount::ApplyTo(clsAccount &Account) const
{
    Account.ServerLastEmail = Pop3LastEmail;
    Account.ServerLastMessageNoChecked = Pop3LastMessageNoChecked;
    Account.IMAPLastEmail = ImapLastEmail;
    Account.CSVPickupLastStatus = CSVPickupLastStatus;
    Account.HTTPLastMessage = HTTPLastMessage;
    Account.RSSLastMessage = RSSLastMessage;
}
