#include "MarkupText.h"
#include "foundation/TextHelpers.h"

#include <QRegularExpression>

namespace {

// The value of an attribute in a tag's text, quoted with ' or ".
QString Attribute(const QString &Tag, const QString &Name)
{
    const QRegularExpression pattern(QStringLiteral("\\b%1\\s*=\\s*(['\"])(.*?)\\1").arg(Name),
                                     QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = pattern.match(Tag);
    return match.hasMatch() ? EntityDecode(match.captured(2)) : QString();
}

// Walks the markup: Text receives each piece of text with its colour and
// weight, in order.
template <typename Visit> void Walk(const QString &Markup, Visit Text)
{
    int bold = 0;
    qsizetype at = 0;
    while (at < Markup.size()) {
        const qsizetype open = Markup.indexOf(u'<', at);
        const qsizetype plainEnd = open < 0 ? Markup.size() : open;
        if (plainEnd > at)
            Text(EntityDecode(Markup.mid(at, plainEnd - at)), QString(), bold > 0);
        if (open < 0)
            break;
        const qsizetype close = Markup.indexOf(u'>', open);
        if (close < 0)
            break;
        const QString tag = Markup.mid(open + 1, close - open - 1).trimmed();
        if (tag.startsWith(QStringLiteral("Bold"), Qt::CaseInsensitive))
            ++bold;
        else if (tag.startsWith(QStringLiteral("/Bold"), Qt::CaseInsensitive))
            bold = qMax(0, bold - 1);
        else if (tag.startsWith(QStringLiteral("Run"), Qt::CaseInsensitive))
            Text(Attribute(tag, QStringLiteral("Text")), Attribute(tag, QStringLiteral("Foreground")), bold > 0);
        at = close + 1;
    }
}

} // namespace

QString MarkupToHtml(const QString &Markup)
{
    QString html;
    Walk(Markup, [&html](const QString &Text, const QString &Colour, bool Bold) {
        if (Text.trimmed().isEmpty() && Colour.isEmpty() && Text.contains(u'\n'))
            return;
        QString piece = Text.toHtmlEscaped();
        if (!Colour.isEmpty())
            piece = QStringLiteral("<span style=\"color:%1\">%2</span>").arg(Colour.toLower(), piece);
        if (Bold)
            piece = QStringLiteral("<b>") + piece + QStringLiteral("</b>");
        html += piece;
    });
    return html;
}

QString MarkupPlainText(const QString &Markup)
{
    QString text;
    Walk(Markup, [&text](const QString &Piece, const QString &, bool) { text += Piece; });
    return text.simplified();
}
