#include "MessageMime.h"
#include "HtmlToText.h"
#include "MimeMail.h"
#include "clsMessage.h"
#include "clsMessageAttachment.h"
#include "foundation/TextHelpers.h"

#include <limits>

namespace {

QString ImportanceOf(const MimeMail &Mail)
{
    const QString importance = Mail.Header(QStringLiteral("Importance")).trimmed().toUpper();
    if (importance == u"HIGH" || importance == u"LOW" || importance == u"NORMAL")
        return importance;
    const QString priority = Mail.Header(QStringLiteral("X-Priority")).trimmed();
    if (priority.startsWith(u'1') || priority.startsWith(u'2'))
        return QStringLiteral("HIGH");
    if (priority.startsWith(u'4') || priority.startsWith(u'5'))
        return QStringLiteral("LOW");
    return QStringLiteral("NORMAL");
}

QString SensitivityOf(const MimeMail &Mail)
{
    const QString sensitivity = Mail.Header(QStringLiteral("Sensitivity")).trimmed().toUpper();
    if (sensitivity == u"PERSONAL" || sensitivity == u"PRIVATE")
        return sensitivity;
    if (sensitivity.startsWith(QStringLiteral("COMPANY")))
        return QStringLiteral("CONFIDENTIAL");
    return QStringLiteral("NORMAL");
}

// The display name of "Name <box@host>", without quotes; empty without one.
QString DisplayName(const QString &Address)
{
    const qsizetype angle = Address.indexOf(u'<');
    if (angle <= 0)
        return QString();
    QString name = Address.left(angle).trimmed();
    if (name.size() >= 2 && name.startsWith(u'"') && name.endsWith(u'"'))
        name = name.mid(1, name.size() - 2);
    return name;
}

QString HeaderBlock(const MimeMail &Mail)
{
    QString block;
    for (const MimeHeader &header : Mail.Headers())
        block += header.Name + QStringLiteral(": ") + header.Value + QStringLiteral("\r\n");
    return block;
}

} // namespace

bool LoadMessageMime(clsMessage &Message, const QString &Mime)
{
    MimeMail mail;
    const bool loaded = mail.LoadMime(Mime);
    Message.MessageText = Mime;
    Message.Size = qint32(qMin<qsizetype>(Mime.toUtf8().size(), std::numeric_limits<qint32>::max()));
    if (!loaded)
        return false;
    Message.setMessageHeader(HeaderBlock(mail));

    const QString from = mail.Header(QStringLiteral("From"));
    Message.From = ExtractEmailAddress(from);
    Message.FromName = DisplayName(from);
    Message.Sender = ExtractEmailAddress(mail.Header(QStringLiteral("Sender")));
    Message.ReplyTo = mail.Header(QStringLiteral("Reply-To"));
    Message.InReplyTo = mail.Header(QStringLiteral("In-Reply-To"));
    Message.References = mail.Header(QStringLiteral("References"));
    Message.ReturnPath = ExtractEmailAddress(mail.Header(QStringLiteral("Return-Path")));
    Message.ToAddress = mail.Header(QStringLiteral("To"));
    Message.CC = mail.Header(QStringLiteral("Cc"));
    Message.BCC = mail.Header(QStringLiteral("Bcc"));
    Message.Subject = mail.Header(QStringLiteral("Subject"));
    Message.Comments = mail.Header(QStringLiteral("Comments"));
    Message.Importance = ImportanceOf(mail);
    Message.Sensitivity = SensitivityOf(mail);
    Message.ReadReceipt = !mail.Header(QStringLiteral("Disposition-Notification-To")).isEmpty();
    Message.ContentType = mail.Header(QStringLiteral("Content-Type")).section(u';', 0, 0).trimmed();
    const QDateTime date = mail.Date();
    if (date.isValid()) {
        Message.Dated = date.toLocalTime();
        Message.OrigDate = Message.Dated;
    }

    Message.HTML = mail.HtmlBody();
    Message.Body = mail.TextBody();
    Message.CharSet = mail.TextCharset();
    if (Message.Body.isEmpty() && !Message.HTML.isEmpty()) {
        Message.Body = HtmlToText(Message.HTML);
        Message.CharSet = mail.HtmlCharset();
    }
    for (const MimeAttachment &part : mail.Attachments()) {
        auto attachment = std::make_unique<clsMessageAttachment>();
        attachment->Name = part.Name;
        attachment->ContentType = part.ContentType;
        attachment->Size = qint32(qMin<qint64>(part.Size(), std::numeric_limits<qint32>::max()));
        attachment->IsAttachedMessage = part.IsAttachedMessage;
        attachment->IsRelatedItem = part.IsRelatedItem;
        attachment->RelatedContentID = part.ContentID;
        (part.IsRelatedItem ? Message.RelatedItems : Message.Attachments).Add(std::move(attachment));
    }
    return true;
}

QString MimeHeaderValue(const QString &Mime, const QString &Name)
{
    qsizetype end = Mime.indexOf(QStringLiteral("\r\n\r\n"));
    if (end < 0)
        end = Mime.indexOf(QStringLiteral("\n\n"));
    const QStringView block = end < 0 ? QStringView(Mime) : QStringView(Mime).left(end);
    const QString prefix = Name + u':';
    qsizetype start = 0;
    while (start < block.size()) {
        qsizetype lineEnd = block.indexOf(u'\n', start);
        if (lineEnd < 0)
            lineEnd = block.size();
        const QStringView line = block.mid(start, lineEnd - start);
        if (line.startsWith(prefix, Qt::CaseInsensitive)) {
            QString value = line.mid(prefix.size()).toString();
            // folded continuation lines
            qsizetype next = lineEnd + 1;
            while (next < block.size() && (block.at(next) == u' ' || block.at(next) == u'\t')) {
                qsizetype nextEnd = block.indexOf(u'\n', next);
                if (nextEnd < 0)
                    nextEnd = block.size();
                value += u' ' + block.mid(next, nextEnd - next).trimmed().toString();
                next = nextEnd + 1;
            }
            return value.trimmed();
        }
        start = lineEnd + 1;
    }
    return QString();
}
