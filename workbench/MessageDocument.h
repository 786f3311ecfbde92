#pragma once
#include "store/MimeMail.h"

#include <QList>
#include <QString>
#include <QStringList>

// A stored message as the readers show it, read from the MIME text that the
// server hands out: the labels, the headers without the process headers
// ("Postvane-..."), the bodies, the visible attachments and the parts an
// HTML body refers to by "cid:", and the process log that rides along as
// the attachment "ProcessLog.log".
class MessageDocument
{
public:
    static inline const QString ProcessLogName = QStringLiteral("ProcessLog.log");
    static inline const QString ProcessPrefix = QStringLiteral("Postvane-");
    // Bodies above these limits are shown as text: a page of that size or
    // depth takes the text view minutes to lay out.
    static constexpr qsizetype MaxHtmlChars = 1'000'000;
    static constexpr int MaxTableDepth = 24;

    // False for an empty text or the server's "Error:Access Denied".
    bool Load(const QString &Mime);

    QString Mime;
    QString Subject;
    QString From;
    QString To; // the recipients' names, joined by ", "
    QString CC;
    QString Sent;
    QString Processed;
    QString Status;
    bool Matched = false;
    bool Succeeded = false;
    QString Error;
    QString URL;
    QString AccountID;
    QString TriggerID;
    QString HeadersText; // "Name: value" lines, CR LF closed
    QString Text;
    QString Html;        // ready for HtmlView; empty when there is none
    QList<MimeAttachment> Attachments;
    QList<MimeAttachment> RelatedItems;
    QStringList ProcessLog;

    // The names of the addresses of a header ("Ann <a@x>, b@y" gives
    // "Ann, b@y").
    static QString RecipientNames(const QString &Header);
    // Every "<a " tag opens its link in a new browser window, and "cid:<id>"
    // loses its angle brackets.
    static QString PrepareHtml(const QString &Html);
    // True when the HTML is too large or too deeply nested to lay out.
    static bool TooHeavy(const QString &Html);
    // The entry of the attachment list: name, " (", size, ")".
    static QString AttachmentCaption(const MimeAttachment &Attachment);
    // The file name an attachment is saved under: cleaned, and ".eml" for
    // an attached message.
    static QString FileName(const MimeAttachment &Attachment);
    // The message as the plain-text pane shows it: one paragraph for each
    // run of text between two blank-line breaks.
    static QString TextAsHtml(const QString &Text);
    // The MIME text without the process log, as "Save As" writes it.
    QString MimeWithoutLog() const;
};
