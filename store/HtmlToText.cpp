#include "HtmlToText.h"
#include "foundation/Startup.h"
#include "foundation/TextHelpers.h"
#include "foundation/WideText.h"

#include <QHash>
#include <QRegularExpression>
#include <QStringList>
#include <exception>

namespace {

constexpr auto CaseInsensitive = QRegularExpression::CaseInsensitiveOption;
const QString CRLF = QStringLiteral("\r\n");

// Named entities: those of the single-byte range, from 160 on in code
// order, and the common ones beyond it.
const QHash<QString, char32_t> &NamedEntities()
{
    static const QHash<QString, char32_t> entities = [] {
        QHash<QString, char32_t> table{
            {QStringLiteral("quot"), 34},     {QStringLiteral("amp"), 38},      {QStringLiteral("apos"), 39},
            {QStringLiteral("lt"), 60},       {QStringLiteral("gt"), 62},       {QStringLiteral("OElig"), 338},
            {QStringLiteral("oelig"), 339},   {QStringLiteral("Scaron"), 352},  {QStringLiteral("scaron"), 353},
            {QStringLiteral("Yuml"), 376},    {QStringLiteral("fnof"), 402},    {QStringLiteral("circ"), 710},
            {QStringLiteral("tilde"), 732},   {QStringLiteral("ensp"), 8194},   {QStringLiteral("emsp"), 8195},
            {QStringLiteral("thinsp"), 8201}, {QStringLiteral("ndash"), 8211},  {QStringLiteral("mdash"), 8212},
            {QStringLiteral("lsquo"), 8216},  {QStringLiteral("rsquo"), 8217},  {QStringLiteral("sbquo"), 8218},
            {QStringLiteral("ldquo"), 8220},  {QStringLiteral("rdquo"), 8221},  {QStringLiteral("bdquo"), 8222},
            {QStringLiteral("dagger"), 8224}, {QStringLiteral("Dagger"), 8225}, {QStringLiteral("bull"), 8226},
            {QStringLiteral("hellip"), 8230}, {QStringLiteral("permil"), 8240}, {QStringLiteral("lsaquo"), 8249},
            {QStringLiteral("rsaquo"), 8250}, {QStringLiteral("euro"), 8364},   {QStringLiteral("trade"), 8482},
        };
        const QStringList latin1 = QStringLiteral(
            "nbsp iexcl cent pound curren yen brvbar sect uml copy ordf laquo not shy reg macr deg plusmn sup2 "
            "sup3 acute micro para middot cedil sup1 ordm raquo frac14 frac12 frac34 iquest Agrave Aacute Acirc "
            "Atilde Auml Aring AElig Ccedil Egrave Eacute Ecirc Euml Igrave Iacute Icirc Iuml ETH Ntilde Ograve "
            "Oacute Ocirc Otilde Ouml times Oslash Ugrave Uacute Ucirc Uuml Yacute THORN szlig agrave aacute "
            "acirc atilde auml aring aelig ccedil egrave eacute ecirc euml igrave iacute icirc iuml eth ntilde "
            "ograve oacute ocirc otilde ouml divide oslash ugrave uacute ucirc uuml yacute thorn yuml").split(u' ');
        for (qsizetype i = 0; i < latin1.size(); ++i)
            table.insert(latin1.at(i), char32_t(160 + i));
        return table;
    }();
    return entities;
}

// Named and numeric entities to their characters, in one pass, so that a
// decoded "&" never starts another entity. Unknown names stay as written.
QString DecodeEntities(const QString &Text)
{
    static const QRegularExpression entity(QStringLiteral("&(#[0-9]+|#[xX][0-9a-fA-F]+|[A-Za-z][A-Za-z0-9]*);"));
    QString decoded;
    qsizetype copied = 0;
    for (const QRegularExpressionMatch &match : entity.globalMatch(Text)) {
        const QString name = match.captured(1);
        QString character;
        if (name.startsWith(u'#'))
            character = EntityDecode(match.captured(0));
        else if (const auto found = NamedEntities().constFind(name); found != NamedEntities().cend())
            character = QStringView(QChar::fromUcs4(*found)).toString();
        else
            continue;
        decoded += QStringView(Text).mid(copied, match.capturedStart() - copied);
        decoded += character;
        copied = match.capturedEnd();
    }
    decoded += QStringView(Text).mid(copied);
    return decoded;
}

// Each line trimmed, runs of blanks collapsed: the cleaning of both ways.
QString CleanLines(const QString &Text)
{
    QStringList lines = Text.split(CRLF);
    for (QString &line : lines)
        line = line.trimmed();
    return RemoveWhiteSpace(lines.join(CRLF));
}

// Drops each element of that name with everything it holds; an element
// that is not closed stays.
void RemoveElements(QString &Text, const QString &Name)
{
    const QRegularExpression element(u'<' + Name + QStringLiteral("[^>]*>.*?</") + Name + QStringLiteral("[^>]*>"),
                                     CaseInsensitive | QRegularExpression::DotMatchesEverythingOption);
    Text.remove(element);
}

// The fixed chain for texts of single-byte characters.
QString NarrowHtmlToText(QString Text)
{
    static const QStringList lineBreaks = QStringLiteral(
        "<br>|</tr>|</table>|</p>|</h1>|</h2>|</h3>|</h4>|</dl>|</dt>|</ol>|</ul>|</li>|<p>|</ br>").split(u'|');
    static const QRegularExpression breakTags(QStringLiteral("<(br|p) [^>]*>"), CaseInsensitive);
    static const QRegularExpression anyTag(QStringLiteral("<[^>]*>"));

    Text.replace(CRLF, QStringLiteral(" "));
    Text.replace(u'\n', u' ');
    Text.replace(u'\r', u' ');
    Text.replace(QStringLiteral("</td>"), QStringLiteral(" "), Qt::CaseInsensitive);
    for (const QString &tag : lineBreaks)
        Text.replace(tag, CRLF, Qt::CaseInsensitive);
    Text.replace(QStringLiteral("<li>"), QStringLiteral("-"), Qt::CaseInsensitive);
    Text.replace(breakTags, CRLF);
    Text.replace(QStringLiteral("&nbsp;"), QStringLiteral(" "), Qt::CaseInsensitive);
    Text.replace(u'\t', u' ');

    RemoveElements(Text, QStringLiteral("script"));
    RemoveElements(Text, QStringLiteral("style"));
    // Comments go with the tags: "<!--" always finds the ">" of its "-->".
    Text.replace(anyTag, QStringLiteral(" "));

    Text = CleanLines(Text);
    if (Text.contains(u'&'))
        Text = DecodeEntities(Text);
    return Text.trimmed();
}

// The browser-like rendering for texts with wider characters.
QString WideHtmlToText(QString Text)
{
    static const QRegularExpression comment(QStringLiteral("<!--.*?-->"), QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression whiteSpace(QStringLiteral("[ \t\r\n\f]+"));
    static const QRegularExpression blockTag(
        QStringLiteral("<(br|/?(p|div|h[1-6]|tr|table|ul|ol|dl|dt|dd|blockquote|pre|hr|address|section|article|"
                       "header|footer|nav|aside|form|fieldset|figure|main))(\\s[^>]*)?/?>"),
        CaseInsensitive);
    static const QRegularExpression listItem(QStringLiteral("<li(\\s[^>]*)?>"), CaseInsensitive);
    static const QRegularExpression cell(QStringLiteral("</?(td|th)(\\s[^>]*)?>"), CaseInsensitive);
    static const QRegularExpression anyTag(QStringLiteral("<[^>]*>"));

    Text.remove(comment);
    for (const char *name : {"head", "script", "style"})
        RemoveElements(Text, QString::fromLatin1(name));
    Text.replace(whiteSpace, QStringLiteral(" "));
    Text.replace(blockTag, CRLF);
    Text.replace(listItem, CRLF + QStringLiteral("- "));
    Text.replace(cell, QStringLiteral(" "));
    Text.remove(anyTag);
    Text.replace(QStringLiteral("&nbsp;"), QStringLiteral(" "), Qt::CaseInsensitive);
    Text = DecodeEntities(Text);
    return RemoveRepeatedBlankLines(CleanLines(Text)).trimmed();
}

} // namespace

QString HtmlToText(const QString &Html)
{
    try {
        return HasWideChars(Html) ? WideHtmlToText(Html) : NarrowHtmlToText(Html);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("HtmlToText"), error);
        return QString();
    }
}
