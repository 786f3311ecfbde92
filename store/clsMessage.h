#pragma once
#include "colMSGAttachments.h"
#include "colMSGFields.h"
#include "foundation/clsConcat.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <memory>

class clsAccount;
class clsAccountTrigger;

// One message while it is processed or shown: its addressing, text, headers,
// extracted fields, attachments, the state of the trigger run and the log of
// that run. A message holds no MIME parser: it is filled as plain properties
// plus its raw text (MessageText) and header block (MessageHeader).
class clsMessage
{
public:
    // An empty new message: dated now, NewMessage set, a fresh MessageID
    // that LinkGUID takes as well.
    clsMessage();
    ~clsMessage();
    clsMessage(const clsMessage &) = delete;
    clsMessage &operator=(const clsMessage &) = delete;

    // Owner
    clsAccount *Account = nullptr;
    qint32 EdgeQueueRecordNo = 0;
    QString ValidateActionID;
    bool ValidationRequired = false;
    // Of a message that waits for validation: when the wait ends, what then
    // (the Validation action's TimeOutAction), and the page's question.
    QDateTime ValidateExpires;
    qint16 ValidateExpiresType = 0;
    QString ValidateConfirmationMessage;
    QString ValidationInputFieldsXML;
    QString Source; // the kind of origin; part of the message's identity in the store

    // Text
    QString MessageText; // raw MIME or plain text
    QString ContentType;
    QString CharSet;
    QString Body; // plain text
    QString HTML;

    // Dates
    QDateTime Dated;
    QDateTime OrigDate;

    // Addressing
    QString From;
    QString FromName;
    QString FromIP;
    QString Sender;
    QString ReplyTo;
    QString InReplyTo;
    QString References;
    QString ReturnPath;
    QString ToAddress;
    QString CC;
    QString BCC;
    QString Subject;
    QString Comments;

    // Flags
    qint32 Size = 0;
    bool NewMessage = true;
    bool ReadReceipt = false;
    bool IsRead = false;
    QString Importance;
    QString Sensitivity;

    // Extraction: scan positions in body and subject
    qint32 ExtractPoint = 0;
    qint32 ExtractPointSubject = 0;

    // SQL of the run
    bool SQLBuiltIN = false;
    qint16 SQLDialect = 0;
    QString SQLStatement;
    QString SQLUpdate;
    QString SQLSelect;
    QString SQLConnection;
    bool SQLSuccess = false;
    QString SQLError;
    bool SQLCustom = false;
    qint16 SQLTimeout = 0;

    // Trigger run
    bool TriggerConditionPassed = false;
    bool TriggerAddToLocalStore = false;
    bool TriggerInSchedule = false;
    bool Executed = false;

    // Filing
    QString FolderID;
    QString UserID;
    bool Outbox = false;

    // Geography
    QString GEOCountry;
    QString GEOCity;
    QString GEOOrganization;

    // Run kind
    bool REProcess = false;
    bool TestMessage = false;

    // Collections. NoHeaders is the count of header slots; SetHeaderValue
    // raises the count of the current message, not this one's.
    qint16 NoHeaders = 0;
    colMSGAttachments Attachments;
    colMSGAttachments RelatedItems;
    // Binding a trigger replaces the collection: references taken before
    // then no longer hold.
    colMSGFields &ExtractedFields() const { return *m_ExtractedFields; }

    // Other
    QString TempFiles; // paths of temporary files, one a line
    QString Keywords;
    qint32 LastErrorNumber = 0;
    QString LastError;
    qint16 ErrorCount = 0;

    QString MessageID;

    // The organization of the message: the account's, or that of the
    // message's folder (its own, else its user's) when FolderID names one;
    // the first organization when neither gives one.
    QString OrganizationID() const;
    clsAccountTrigger *Trigger() const { return m_Trigger; }
    // Binds the message to the trigger: ExtractedFields becomes one field for
    // each of the trigger's fields, in order. Nothing just unbinds, keeping
    // the fields.
    void setTrigger(clsAccountTrigger *Value);
    // "Name <address>", or the address alone without a name.
    QString FromFull() const;
    // The header text: a "Name: value" line for each slot, CR LF after each.
    QString MessageHeader() const { return m_StrHeader.Text(); }
    // Stores the text, gives it a closing blank line and reads its headers
    // into the slots; see SetHeaderValue for what that does to the text.
    void setMessageHeader(const QString &Value);
    // The organization's temporary folder, or the data folder's "Temp/"
    // without an account.
    QString TempPath() const;
    // The store's public link id of the message.
    QString LinkGUID() const { return m_LinkGUID; }
    // The process log of the trigger run.
    QString ErrorLog() const { return m_Log.Text(); }
    QString WordIndex() const;
    QString WordIndexWithCount() const;
    QString WordIndexWithCountSorted() const;
    // Address of the validation page of an edge-queued message.
    QString ValidateURL() const;
    // Address of the page that shows the stored message.
    QString ViewURL() const;
    // The body cleaned to one line of at most DigestLength characters (0 is
    // 250), ending in "..." when cut.
    QString Digest(int DigestLength = 0) const;

    // Headers. An index is 1-based. Unknown names never fail.
    // A new name gets a slot with the value as given; a known one (any case)
    // has the trimmed value added behind a blank.
    void AddHeader(const QString &Header, const QString &Value, bool DontRefresh = false);
    void RemoveHeader(const QString &Header);
    void RefreshStrHeader();
    // Empty outside 1..NoHeaders.
    QString HeaderName(int Index) const;
    QString HeaderValue(int Index) const;
    // A numeric text ("7") is a position, anything else a name.
    QString HeaderValue(const QString &Index) const;
    // First slot of the name in any case; 0 when there is none.
    int HeaderNumber(const QString &Name) const;
    // Makes the header text end in one blank line.
    void HeaderCRLF();
    // Cuts MessageText up to and including its first blank line.
    void RemoveHeaderFromMime();
    // Sets the trimmed value of the header, making a slot for a new name.
    // A new slot takes its number from the count of the current message
    // (CurrentMessage()), which it raises, and this object's slots are sized
    // to that count: the server works on one message at a time, and a second
    // object's slots follow the current message's count. Its own NoHeaders
    // stays, so on any other object the new header is outside its count.
    void SetHeaderValue(const QString &Header, const QString &Value);
    // Strips one opening and one closing bracket from From and ToAddress.
    void RemoveBracketsFromAddress();

    // MD5 of header text and MessageText, base64; the first one is kept.
    QString HashMessage();
    // True when never hashed, or when the message differs from its first hash.
    bool HashChanged();

    // Adds a line to the process log: cut to 500 characters, line ends as
    // blanks, characters above 128 as "&#n;". A line starting with "*" is an
    // error: it becomes LastError and counts on the message, its account and
    // its trigger. Callers give a detail level; every line is kept whatever
    // its level.
    void AddToLog(const QString &MSG, int DetailLevel = 0);

    // Deletes the saved files of attachments and related items, then the
    // files of TempFiles; a file that won't go is passed over.
    void DeleteTempAttachments();

private:
    void ParseHeaders();
    // Subject (without an upper-case "FW:") and Body: the text of the index.
    QString IndexText() const;
    // The slots that hold a header: NoHeaders, but never more than this
    // object's arrays hold.
    int SlotCount() const;

    QStringList m_HeaderNames{QString()}; // slot 0 unused
    QStringList m_HeaderValues{QString()};
    clsConcat m_StrHeader;
    clsConcat m_Log;
    QString m_FirstHash;
    QString m_LinkGUID;
    clsAccountTrigger *m_Trigger = nullptr;
    std::unique_ptr<colMSGFields> m_ExtractedFields;
};

// The current message of this thread: the one token expansion, the store and
// the scripts read. An empty message is made on first use.
clsMessage &CurrentMessage();
// Makes Message (an empty one for nullptr) the current message of this
// thread and hands back the one it replaces.
std::unique_ptr<clsMessage> ReplaceCurrentMessage(std::unique_ptr<clsMessage> Message);
