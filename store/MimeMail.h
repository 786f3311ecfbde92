#pragma once
#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

// The GMime type stays opaque here: glib's headers clash with Qt's keywords.
typedef struct _GMimeMessage GMimeMessage;
typedef struct _GMimePart GMimePart;

// One header of a message: the name as written, the value unfolded and with
// its encoded words decoded.
struct MimeHeader
{
    QString Name;
    QString Value;
};

// One attachment of a message, its bytes decoded from the transfer encoding.
struct MimeAttachment
{
    QString Name;          // the file name; a made-up one when the part has none
    QString ContentType;   // "application/pdf"
    QString ContentID;     // without the angle brackets
    QByteArray Data;       // for an attached message its whole MIME text
    bool IsRelatedItem = false;     // part of a multipart/related beside its HTML root
    bool IsAttachedMessage = false; // a message/rfc822 part

    qint64 Size() const { return Data.size(); }
    // Writes Data to the file, replacing it; false when it cannot be written.
    bool SaveTo(const QString &Path) const;
};

// The e-mail object: one MIME message held as a GMime tree. Writing gives
// CRLF line ends throughout; headers and parts that were not changed keep
// their wording and transfer encoding.
//
// Headers named "Content-..." belong to the top part of the message, all
// others to the message itself; the header operations route them so and
// compare names ignoring case.
class MimeMail
{
public:
    // An empty message: no headers, no body.
    MimeMail();
    ~MimeMail();
    MimeMail(MimeMail &&other) noexcept;
    MimeMail &operator=(MimeMail &&other) noexcept;
    MimeMail(const MimeMail &) = delete;
    MimeMail &operator=(const MimeMail &) = delete;

    // Replaces the message by the one in Mime. A text without a header block
    // becomes the body of a message with no headers. Empty text leaves an
    // empty message and answers false; a cut-off text keeps what arrived.
    bool LoadMime(const QByteArray &Mime);
    // The text as UTF-8 bytes, the form in which the store keeps it.
    bool LoadMime(const QString &Mime);

    QByteArray GetMime() const;
    // The UTF-8 reading of GetMime. Body parts still in 8-bit are first put in
    // quoted-printable or base64, so that no byte of them is lost in the text.
    QString GetMimeText();

    // All headers of the top level in the order they are written.
    QList<MimeHeader> Headers() const;
    // The first header of that name, decoded; empty when there is none.
    QString Header(const QString &Name) const;
    // Adds a header behind the others, even when one of the name exists.
    void AddHeader(const QString &Name, const QString &Value);
    // Replaces the first header of the name and removes the rest; adds it
    // when there is none.
    void SetHeader(const QString &Name, const QString &Value);
    // Removes every header of the name.
    void RemoveHeader(const QString &Name);

    // The "Date" header with its offset from UTC; invalid when missing.
    QDateTime Date() const;

    // The first text/plain and the first text/html part that is no
    // attachment, found through nested multiparts but not inside attached
    // messages, decoded to text; with the charset that the part declares.
    QString TextBody() const;
    QString TextCharset() const;
    QString HtmlBody() const;
    QString HtmlCharset() const;

    // Every part that is not one of the two bodies nor a multipart, in order.
    QList<MimeAttachment> Attachments() const;
    // Adds an attached file, base64-encoded so that it arrives byte for byte;
    // a message that is not multipart/mixed yet is put in one first, as its
    // first part.
    void AddAttachment(const QString &Name, const QByteArray &Data, const QString &ContentType);
    // A text/plain attachment in UTF-8, such as a "ProcessLog.log", kept
    // readable in the message's text: its lines are CRLF lines as mail's are.
    void AddTextAttachment(const QString &Name, const QString &Text);

    // Replaces the message by a new one for sending. From and To take
    // addresses as in the headers ("Name <box@host>", comma separated);
    // with both bodies given the message is multipart/alternative. It gets a
    // new Message-Id in the sender's domain.
    void Compose(const QString &From, const QString &To, const QString &Subject, const QDateTime &Date,
                 const QString &Text, const QString &Html = QString());

private:
    void Replace(GMimeMessage *message);
    void Attach(GMimePart *Part, const QString &Name);

    GMimeMessage *m_message = nullptr;
};
