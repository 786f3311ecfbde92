#pragma once
#include <QDateTime>
#include <QString>

class clsAccount;

// Where and how to reach a mail server: host, port, user, password and the
// connection's security. Secure is the account's SSL switch: TLS from the
// first byte on the well-known ports 993 and 995 or when the host is written
// "imaps://host" or "pop3s://host", otherwise STARTTLS, which is then
// required. The server's certificate is verified against the system's
// authorities and CAFile unless AcceptAnyCertificate.
struct SourceEndpoint
{
    QString Host;
    int Port = 0;
    QString User;
    QString Password;
    bool Secure = false;
    bool AcceptAnyCertificate = false;
    QString CAFile;
    int TimeoutSeconds = 30;

    // "host:port" as the log shows it.
    QString Where() const;
};

// What a reader needs of an account, copied on the thread that owns the
// account so that the read runs on a worker thread of its own, and the
// state the read moves on (newest message dates, the POP3 position), copied
// back when it ends.
struct SourceAccount
{
    QString AccountID;
    QString Name;
    int MaxMessagesPerRun = 0; // 0: no limit

    SourceEndpoint Pop3;
    bool Pop3LeaveMessageOn = false;
    bool Pop3DeleteAll = false;
    QDateTime Pop3LastEmail;
    int Pop3LastMessageNoChecked = 0;

    SourceEndpoint Imap;
    QString ImapFolder;
    bool ImapMove = false;
    QString ImapMoveToFolder;
    bool ImapLeaveMessageOn = true;
    bool ImapDeleteAll = false;
    bool ImapMarkAsRead = true;
    bool ImapServerIDs = false;
    QDateTime ImapLastEmail;
    quint32 ImapUidValidity = 0; // of the folder at the last read; 0 when never read

    bool AutoRun = false;
    QByteArray AutoRunMessageMime;

    QString FilePickupFolder;
    QString FilePickUpMask;
    bool FilePickupDontDelete = false;

    QString CSVPickupFolder;
    QString CSVPickupMask;
    bool CSVPickupDelete = false;
    QString CSVPickupWorkSheet;
    int CSVPickupHeaderRow = 0; // 0: the first row that is not blank
    QString CSVPickupLastStatus;

    QString DBConnection;
    QString DBSQL;
    QString DBUIDField;
    bool DBMSGBody = false;
    QString DBMSGField;
    bool DBDelete = false;
    QString DBUpdateField;
    QString DBUpdateValue;

    QString HTTPUrl;
    bool HTTPFollow = true;
    QString HTTPUser;
    QString HTTPPass;
    int HTTPLogin = 0; // 0 none, 1 Basic, 2 Digest
    bool HTTPClean = true;
    bool HTTPFail = false;
    QDateTime HTTPLastMessage;
    // What the last lookup returned (a hash of it), and how many messages the
    // lookups have made so far: the next one's identity.
    QString HTTPLastContentHash;
    int HTTPMessages = 0;

    QString RSSUrl;
    QDateTime RSSLastMessage;

    // The longest wait for a database, a web server or a feed.
    int TimeoutSeconds = 30;

    // The settings and state of the account. The certificate of a mail
    // server is accepted unchecked when the account's persisted variable
    // "AcceptAnyCertificate" is "Y"; CAFile is the data folder's
    // "SourceCertificates.pem" when there is one.
    static SourceAccount From(clsAccount &Account);
    // The state a read has moved on, back into the account.
    void ApplyTo(clsAccount &Account) const;
};
