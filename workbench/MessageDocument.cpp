#include "MessageDocument.h"
#include "foundation/Formatting.h"
#include "foundation/TextHelpers.h"
#include "store/HtmlToText.h"

#include <QLocale>
#include <QRegularExpression>

namespace {

const QString PaneParagraph =
    QStringLiteral("<p style='font-family:Arial, Helvetica, sans-serif;font-size:9pt;font-weight;bold;'>");

QString ProcessHeader(const MimeMail &Mail, const char *Name)
{
    return Mail.Header(MessageDocument::ProcessPrefix + QLatin1String(Name)).trimmed();
}

// Splits an address list at the commas that stand outside quotes and angle
// brackets.
QStringList SplitAddresses(const QString &Header)
{
    QStringList parts;
    QString current;
    bool quoted = false;
    int angle = 0;
    for (QChar c : Header) {
        if (c == u'"')
            quoted = !quoted;
        else if (c == u'<' && !quoted)
            ++angle;
        else if (c == u'>' && !quoted && angle > 0)
            --angle;
        if ((c == u',' || c == u';') && !quoted && angle == 0) {
            parts << current;
            current.clear();
        } else {
            current += c;
        }
    }
    parts << current;
    return parts;
}

} // namespace

bool MessageDocument::Load(const QString &Text)
{
    *this = MessageDocument();
    if (Text.trimmed().isEmpty() || Text.startsWith(QStringLiteral("Error:")))
        return false;
    Mime = Text;
    MimeMail mail;
    mail.LoadMime(Text);

    Subject = mail.Header(QStringLiteral("Subject"));
    From = mail.Header(QStringLiteral("From"));
    To = RecipientNames(mail.Header(QStringLiteral("To")));
    CC = RecipientNames(mail.Header(QStringLiteral("Cc")));
    const QDateTime sent = mail.Date();
    Sent = sent.isValid() ? QLocale().toString(sent.toLocalTime(), QLocale::ShortFormat) : QString();
    Processed = ProcessHeader(mail, "ProcessedDate");
    Matched = ProcessHeader(mail, "TriggerMatch") == u"Y";
    Succeeded = ProcessHeader(mail, "TriggerSuccess") == u"Y";
    Error = ProcessHeader(mail, "TriggerError");
    URL = ProcessHeader(mail, "URL");
    AccountID = ProcessHeader(mail, "AccountID");
    TriggerID = ProcessHeader(mail, "TriggerID");
    Status = Succeeded ? QStringLiteral("Success") : !Matched ? QStringLiteral("Did not match trigger conditions") : Error;

    for (const MimeHeader &header : mail.Headers()) {
        if (!header.Name.startsWith(ProcessPrefix, Qt::CaseInsensitive))
            HeadersText += header.Name + QStringLiteral(": ") + header.Value + QStringLiteral("\r\n");
    }

    this->Text = mail.TextBody();
    for (const MimeAttachment &part : mail.Attachments()) {
        if (part.Name == ProcessLogName && part.ContentType.startsWith(QStringLiteral("text/plain"))) {
            ProcessLog = QString::fromUtf8(part.Data).split(QRegularExpression(QStringLiteral("\r?\n")), Qt::SkipEmptyParts);
        } else if (part.IsRelatedItem || (!part.ContentID.isEmpty() && part.ContentType.startsWith(QStringLiteral("image/")))) {
            RelatedItems << part;
        } else {
            Attachments << part;
        }
    }
    const QString html = mail.HtmlBody();
    if (TooHeavy(html))
        Html = QStringLiteral("<pre>") + HtmlToText(html.left(MaxHtmlChars)).toHtmlEscaped() + QStringLiteral("</pre>");
    else if (!html.isEmpty())
        Html = PrepareHtml(html);
    return true;
}

QString MessageDocument::RecipientNames(const QString &Header)
{
    QStringList names;
    for (const QString &part : SplitAddresses(Header)) {
        const QString entry = part.trimmed();
        if (entry.isEmpty())
            continue;
        const qsizetype open = entry.indexOf(u'<');
        QString name = open > 0 ? entry.left(open).trimmed() : QString();
        if (name.size() >= 2 && name.startsWith(u'"') && name.endsWith(u'"'))
            name = name.mid(1, name.size() - 2);
        const QString address = ExtractEmailAddress(entry);
        names << (!name.isEmpty() ? name : address.isEmpty() ? entry : address);
    }
    return names.join(QStringLiteral(", "));
}

QString MessageDocument::PrepareHtml(const QString &Html)
{
    static const QRegularExpression anchor(QStringLiteral("<a\\s[^>]*>"), QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression cid(QStringLiteral("cid:(?:<|&lt;)([^\"'>\\s&]+)(?:>|&gt;)"),
                                        QRegularExpression::CaseInsensitiveOption);
    QString html = Html;
    html.replace(cid, QStringLiteral("cid:\\1"));
    QString out;
    out.reserve(html.size());
    qsizetype from = 0;
    for (auto match = anchor.globalMatch(html); match.hasNext();) {
        const QRegularExpressionMatch tag = match.next();
        out += QStringView(html).mid(from, tag.capturedStart() - from);
        QString text = tag.captured();
        if (!text.contains(QStringLiteral("target="), Qt::CaseInsensitive))
            text.insert(text.size() - 1, QStringLiteral(" target='_blank'"));
        out += text;
        from = tag.capturedEnd();
    }
    out += QStringView(html).mid(from);
    return out;
}

bool MessageDocument::TooHeavy(const QString &Html)
{
    if (Html.size() > MaxHtmlChars)
        return true;
    int depth = 0;
    for (qsizetype at = Html.indexOf(u'<'); at >= 0 && at + 6 < Html.size(); at = Html.indexOf(u'<', at + 1)) {
        const QStringView tag = QStringView(Html).mid(at + 1, 6);
        if (tag.startsWith(u"table", Qt::CaseInsensitive)) {
            if (++depth > MaxTableDepth)
                return true;
        } else if (tag.startsWith(u"/table", Qt::CaseInsensitive)) {
            depth = qMax(0, depth - 1);
        }
    }
    return false;
}

QString MessageDocument::AttachmentCaption(const MimeAttachment &Attachment)
{
    return FileName(Attachment) + QStringLiteral(" (") + FormatBytes(Attachment.Size()) + u')';
}

QString MessageDocument::FileName(const MimeAttachment &Attachment)
{
    QString name = SafeFileName(Attachment.Name);
    if (name.isEmpty())
        name = QStringLiteral("attachment");
    if (Attachment.IsAttachedMessage && !name.endsWith(QStringLiteral(".eml"), Qt::CaseInsensitive))
        name += QStringLiteral(".eml");
    return name;
}

QString MessageDocument::TextAsHtml(const QString &Text)
{
    QString html = QStringLiteral("<html><body>");
    const QString normal = QString(Text).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (const QString &paragraph : normal.split(QStringLiteral("\n\n"), Qt::SkipEmptyParts))
        html += PaneParagraph + paragraph.toHtmlEscaped().replace(u'\n', QStringLiteral("<br>")) + QStringLiteral("</p>");
    return html + QStringLiteral("</body></html>");
}

QString MessageDocument::MimeWithoutLog() const
{
    MimeMail mail;
    mail.LoadMime(Mime);
    // The log is a part of its own: the text is cut from the boundary line
    // before its headers to the next boundary line.
    const QString text = mail.GetMimeText();
    static const QRegularExpression named(QStringLiteral("name=\"?") + QRegularExpression::escape(ProcessLogName),
                                          QRegularExpression::CaseInsensitiveOption);
    const qsizetype log = text.indexOf(named);
    if (log < 0)
        return text;
    const qsizetype boundary = text.lastIndexOf(QStringLiteral("\r\n--"), log);
    const qsizetype end = text.indexOf(QStringLiteral("\r\n--"), log);
    if (boundary < 0 || end < 0)
        return text;
    return text.left(boundary) + text.mid(end);
}
