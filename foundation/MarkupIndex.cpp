#include "MarkupIndex.h"

#include <algorithm>

namespace {

bool IsTabOrLineFeed(QChar c)
{
    return c == u'\t' || c == u'\n';
}

bool IsCleanedAway(QChar c)
{
    return c == u' ' || IsTabOrLineFeed(c);
}

} // namespace

MarkupIndex::MarkupIndex(QString text) : m_text(std::move(text))
{
    ReserveTags(m_text.size());
    const QChar *data = m_text.constData();
    qsizetype pos = 0;
    IndexTags([&](QChar &c, qsizetype &at) {
        if (pos == m_text.size())
            return false;
        at = pos;
        c = data[pos++];
        return true;
    });
}

MarkupIndex MarkupIndex::OfCleanedText(QStringView Raw)
{
    const auto first = std::find_if_not(Raw.begin(), Raw.end(), IsCleanedAway);
    const auto last = std::find_if_not(Raw.rbegin(), std::make_reverse_iterator(first), IsCleanedAway).base();
    MarkupIndex index;
    index.ReserveTags(last - first);
    index.m_text.resize(last - first);
    QChar *out = index.m_text.data();
    qsizetype written = 0;
    auto in = first;
    index.IndexTags([&](QChar &c, qsizetype &at) {
        while (in != last && IsTabOrLineFeed(*in))
            ++in;
        if (in == last)
            return false;
        c = *in++;
        at = written;
        out[written++] = c;
        return true;
    });
    index.m_text.truncate(written);
    return index;
}

// Next gives each character of the text and its position in turn, false at
// the end. A "<" starts a tag, a later "<" starts it anew, and a ">" ends it.
// The state stays in locals: this runs for every character.
template <typename Next> void MarkupIndex::IndexTags(Next next)
{
    qsizetype open = -1;
    std::uint32_t hash = 0;
    QChar c;
    qsizetype pos = 0;
    while (next(c, pos)) {
        if (c == u'<') {
            open = pos;
            hash = HashStart();
        } else if (open >= 0) {
            if (c == u'>') {
                m_tags.push_back({open, hash, std::int32_t(pos - open - 1)});
                open = -1;
            } else {
                hash = HashStep(hash, LowerChar(c));
            }
        }
    }
}

// Generously: the pages of the reserve that are never written cost nothing.
void MarkupIndex::ReserveTags(qsizetype textSize)
{
    m_tags.reserve(std::size_t(textSize / 8));
}

// Names are mostly written in lower case already, so a character is lowered
// only when it differs.
bool MarkupIndex::SameName(const Tag &tag, QStringView Name) const
{
    const QChar *name = m_text.constData() + tag.Pos + 1;
    const QChar *wanted = Name.data();
    for (qsizetype i = 0; i < Name.size(); ++i)
        if (name[i] != wanted[i] && LowerChar(name[i]) != wanted[i])
            return false;
    return true;
}

QStringView MarkupIndex::Between(std::size_t Open, std::size_t Close) const
{
    const qsizetype start = m_tags[Open].Pos + m_tags[Open].Length + 2;
    return QStringView(m_text).mid(start, m_tags[Close].Pos - start);
}
