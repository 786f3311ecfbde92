#include "WordIndex.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "foundation/TextHelpers.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QStringList>
#include <array>
#include <exception>
#include <optional>

namespace {

// "hot" and "word" belong to the list on purpose. Entries under three
// letters never act, as shorter words are dropped first.
const QSet<QString> &StopWords()
{
    static const QSet<QString> words = [] {
        const QStringList list = QStringLiteral(
            "the of to and a in is it you me that he was your has him her his for on are with as i they be at "
            "one have this not off from or had by hot word but what some we can com let get thank thanks any "
            "please would like our hi dear hello use used only now").split(u' ');
        return QSet<QString>(list.begin(), list.end());
    }();
    return words;
}

// A link goes on over "-" to "9" and letters; anything else ends it.
bool IsLinkCharacter(QChar c)
{
    const char16_t code = c.unicode();
    return (code >= 45 && code <= 57) || (code >= 65 && code <= 90) || (code >= 97 && code <= 122);
}

// Punctuation that separates words. "!", "$", "-", "@" and "`" stay part of
// a word, as do all characters above 126.
bool IsSeparator(QChar c)
{
    const char16_t code = c.unicode();
    if (code >= 1 && code <= 47)
        return code != 32 && code != 33 && code != 36 && code != 45;
    return (code >= 58 && code <= 63) || (code >= 91 && code <= 95) || (code >= 123 && code <= 126);
}

// The first link of the text: "http://", else "https://", else "www.",
// found without case. The scan for its end starts 8 (4 for "www.")
// characters in.
std::optional<QString> FirstLink(const QString &Text)
{
    static const std::array<std::pair<QLatin1StringView, qsizetype>, 3> starts{{
        {QLatin1StringView("http://"), 8},
        {QLatin1StringView("https://"), 8},
        {QLatin1StringView("www."), 4},
    }};
    for (const auto &[start, skip] : starts) {
        const qsizetype at = Text.indexOf(start, 0, Qt::CaseInsensitive);
        if (at < 0)
            continue;
        qsizetype end = at + skip;
        while (end < Text.size() && IsLinkCharacter(Text.at(end)))
            ++end;
        return Text.mid(at, end - at);
    }
    return std::nullopt;
}

// "http://www.Mail.Example.com/path/?q" gives "example.com": scheme, "www."
// and path go, and a first label too when it leaves at least a dot and six
// characters behind it.
QString LinkDomain(QString Link)
{
    const qsizetype query = Link.lastIndexOf(u'?');
    if (query >= 0)
        Link.truncate(query);
    if (Link.endsWith(u'/'))
        Link.chop(1);
    Link = Link.toLower();
    qsizetype at = Link.indexOf(QLatin1StringView("//"));
    if (at >= 0)
        Link.remove(0, at + 2);
    at = Link.indexOf(QLatin1StringView("www."));
    if (at >= 0)
        Link.remove(0, at + 4);
    at = Link.indexOf(u'/');
    if (at >= 0)
        Link.truncate(at);
    const qsizetype first = Link.indexOf(u'.');
    if (first > 0 && first != Link.lastIndexOf(u'.') && first < Link.size() - 6)
        Link.remove(0, first + 1);
    return Link;
}

// The text without its links, each link's domain once in Domains.
QString CutLinks(QString Text, QStringList &Domains)
{
    while (const std::optional<QString> link = FirstLink(Text)) {
        Text.replace(*link, QStringLiteral(" "), Qt::CaseInsensitive);
        const QString domain = LinkDomain(*link);
        if (!domain.isEmpty() && !Domains.contains(domain))
            Domains << domain;
    }
    return Text;
}

// The piece as an index word, or empty when it is none.
QString IndexWord(const QString &Piece)
{
    QString word = Piece.toLower().trimmed();
    if (IsNumeric(word) || IsDate(word))
        return QString();
    while (word.size() > 1 && word.endsWith(u'.'))
        word.chop(1);
    if (word.contains(QLatin1StringView("---")) || word.contains(QLatin1StringView("===")))
        return QString();
    if (word.size() < 3 || word.size() >= 25 || StopWords().contains(word))
        return QString();
    return word;
}

} // namespace

QString WordIndex(const QString &Text, WordIndexForm Form)
{
    try {
        QStringList domains;
        QString text = CutLinks(Text, domains);
        for (QChar &c : text)
            if (IsSeparator(c))
                c = u' ';
        for (const QString &domain : std::as_const(domains))
            text += u' ' + domain;

        // Runs of blanks give empty pieces, which are skipped.
        QStringList words;
        QList<int> counts;
        QHash<QString, qsizetype> positions;
        for (const QString &piece : text.split(u' ', Qt::SkipEmptyParts)) {
            const QString word = IndexWord(piece);
            if (word.isEmpty())
                continue;
            const qsizetype at = positions.value(word, -1);
            if (at >= 0) {
                ++counts[at];
            } else {
                positions.insert(word, words.size());
                words << word;
                counts << 1;
            }
        }
        if (words.isEmpty())
            return QString();

        const auto withCounts = [&] {
            for (qsizetype i = 0; i < words.size(); ++i)
                words[i] = QString::number(counts.at(i)) + u' ' + words.at(i);
        };
        if (Form == WordIndexForm::Sorted) {
            withCounts();
            ShellSort(words, true, Qt::CaseInsensitive);
        } else {
            ShellSort(words, false, Qt::CaseInsensitive);
            if (Form == WordIndexForm::WithCount)
                withCounts();
        }
        return words.join(u' ');
    } catch (const std::exception &error) {
        LogError(QStringLiteral("WordIndex"), error);
        return QString();
    }
}
