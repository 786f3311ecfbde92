#pragma once
#include <QString>
#include <QStringList>
#include <QtGlobal>

// A place in the message store: a user's folder, a public folder of an
// organization, or the folder made for an account's messages.
class clsUserFolder
{
public:
    static inline const QString ClassName = QStringLiteral("Folder");

    clsUserFolder();

    QString ID;
    QString UserID; // empty for a folder of the organization or of an account
    QString Name;
    QString Parent; // ID of the parent folder; empty for a root
    qint32 RecordNo = 0;
    QString Email; // addresses that go to this folder
    QString AccountID;
    QString OrganizationID;

    QString XML() const;
    void setXML(const QString &Value);

    // The addresses of Email, split at "," or ";".
    QStringList EmailAddresses() const;
};
