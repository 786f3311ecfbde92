#pragma once
#include "engine/sources/SourceAccount.h"

#include <QString>
#include <QStringList>

// One look at a mailbox for the account editor's connection tests, through
// the same libcurl connection that the server's readers use: POP3 counts
// the messages waiting, IMAP lists the folders. Run blocks, on any thread.
//
// A certificate that the system does not trust fails the log-on before any
// credentials are sent; the probe then reads the certificate on a
// connection without log-on, so that the user can be asked, and a second
// Run with AcceptAnyCertificate goes on.
struct MailboxProbe
{
    enum Protocol { POP3, IMAP };

    Protocol Kind = POP3;
    SourceEndpoint Endpoint;

    bool Connected = false;
    QString Error;
    bool CertificateRejected = false;
    QString CertificateIssuer;
    QString CertificateSubject;
    int MessagesWaiting = 0;
    // IMAP: every folder's full name, and the hierarchy separator ("." for NIL).
    QStringList Folders;
    QString Separator = QStringLiteral(".");

    void Run();

    // The folder name and separator of one "* LIST" answer line; false for
    // another line.
    static bool ParseList(const QByteArray &Line, QString &Folder, QString &Separator);
};
