#pragma once
#include <QDate>
#include <QList>
#include <QPair>
#include <QString>

// The parsed form of a request address: the server reads each incoming
// request with it, the console each reply's Content-Location.
//
// Setting URL splits it: the text behind the first "/" is the address, a "?"
// divides the address from QueryString, the query is split at "&" into key
// and value at "=", each value URL-decoded. The address is lower-cased; its
// part before the first "." is Document, the rest Extension. Every common
// key has a field of its own; keys are compared in lower case.
class clsUserClient
{
public:
    QString URL() const;
    void setURL(const QString &Value);

    QString Document;  // lower case, without extension: "getusers"
    QString Extension; // lower case, without the dot: "xml"
    QString QueryString;
    QString Body;

    // Every key and decoded value of the query, in order, keys lower case.
    QList<QPair<QString, QString>> Parameters;
    // The first key that the query holds more than once; empty when none does.
    QString DuplicateKey;

    QString AccountID;
    QString TriggerID;
    QString FolderID;
    QString ParentID;
    QString MoveToFolderID;
    QString UserID;
    QString OrganizationID;
    QString Username;
    QString Password;
    QString Folder;
    QString Email;
    qint32 RecordNo = 0;
    QString MessageUID;
    QDate FromDate;
    QDate ToDate;
    bool ErrorsOnly = false;
    bool MatchesOnly = false;
    QString SearchText; // "searchtext" and "text" are the same key
    qint32 FromRow = 0;
    qint32 ToRow = 0;
    QString NodeName;
    QString NodeType;
    qint16 ClientID = 0;
    QString XML;

    // The request's name with its extension: "getusers.xml".
    QString Name() const;
    // The decoded value of a key, empty when the query lacks it.
    QString Value(const QString &Key) const;
    bool Has(const QString &Key) const;

    // The common keys that are set, in the order of the request catalogue,
    // joined by "&"; free text values URL-encoded, identifiers and numbers as
    // they are. Credentials are not part of it.
    QString ComposeQuery() const;

private:
    void Clear();
    void SetKey(const QString &Key, const QString &Value);
};
