#include "MessagePage.h"
#include "store/HtmlToText.h"
#include "store/MimeMail.h"

namespace {

const QString Style = QStringLiteral(
    "body{font-family:Arial, Helvetica, sans-serif;font-size:10pt;margin:8px}"
    "th{text-align:left;padding-right:12px;vertical-align:top}"
    "pre{font-family:Arial, Helvetica, sans-serif;white-space:pre-wrap}");

QString Row(const QString &Name, const QString &Value)
{
    return QStringLiteral("<tr><th>") + Name + QStringLiteral("</th><td>") + Value.toHtmlEscaped()
        + QStringLiteral("</td></tr>");
}

} // namespace

QString MessagePage(const QString &Mime, bool Preview)
{
    MimeMail mail;
    mail.LoadMime(Mime);
    const QString subject = mail.Header(QStringLiteral("Subject"));
    QString body = mail.TextBody();
    if (body.trimmed().isEmpty())
        body = HtmlToText(mail.HtmlBody());

    QString page = QStringLiteral("<!DOCTYPE html><html><head><meta charset=\"utf-8\">"
                                  "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                                  "style-src 'unsafe-inline'\"><title>")
        + subject.toHtmlEscaped() + QStringLiteral("</title><style>") + Style + QStringLiteral("</style></head><body>");
    if (!Preview) {
        page += QStringLiteral("<h3>") + subject.toHtmlEscaped() + QStringLiteral("</h3><table>")
            + Row(QStringLiteral("From"), mail.Header(QStringLiteral("From")))
            + Row(QStringLiteral("To"), mail.Header(QStringLiteral("To")));
        const QString cc = mail.Header(QStringLiteral("Cc"));
        if (!cc.isEmpty())
            page += Row(QStringLiteral("CC"), cc);
        page += Row(QStringLiteral("Date"), mail.Header(QStringLiteral("Date")))
            + Row(QStringLiteral("Processed"), mail.Header(QStringLiteral("Postvane-ProcessedDate")))
            + QStringLiteral("</table><hr>");
    }
    page += QStringLiteral("<pre>") + body.toHtmlEscaped() + QStringLiteral("</pre>");
    if (!Preview) {
        QString list;
        for (const MimeAttachment &part : mail.Attachments()) {
            if (part.Name != QStringLiteral("ProcessLog.log"))
                list += QStringLiteral("<li>") + part.Name.toHtmlEscaped() + QStringLiteral("</li>");
        }
        if (!list.isEmpty())
            page += QStringLiteral("<hr><b>Attachments</b><ul>") + list + QStringLiteral("</ul>");
    }
    return page + QStringLiteral("</body></html>");
}
