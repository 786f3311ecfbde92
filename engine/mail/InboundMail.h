#pragma once
#include <QByteArray>
#include <QDateTime>
#include <QHostAddress>
#include <QString>
#include <QStringList>

// One recipient the mail server took in RCPT: for an account of this server
// (AccountID set) or, relayed, for somewhere else (AccountID empty).
struct InboundRecipient
{
    QString Address;
    QString AccountID;
};

// A message the SMTP listener took in, whole, waiting to be committed: the
// envelope, who sent it from where, and the text as it came (dot-unstuffed,
// CR LF line ends, without the final ".").
struct InboundMail
{
    QHostAddress Peer;
    QString Helo;
    QString AuthenticatedUser;
    bool Encrypted = false;
    QString MailFrom;
    QList<InboundRecipient> Recipients;
    QByteArray Data;
    QDateTime Received = QDateTime::currentDateTime();

    // The identity of the message for the queue: its Message-ID without the
    // angle brackets, so that a message a client sends again after a lost
    // reply is taken once; a new identifier when it has none.
    QString UID() const;
    // The message with a "Received:" line of this server first.
    QByteArray WithReceivedLine(const QString &HostName, const QString &ID) const;
    // The accounts of the local recipients, each once, in order.
    QStringList Accounts() const;
    // The addresses of the relayed recipients.
    QStringList RelayedAddresses() const;
};
