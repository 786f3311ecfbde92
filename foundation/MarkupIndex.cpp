#include "MarkupIndex.h"

#include <QVarLengthArray>

#include <algorithm>
#include <bit>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

// The two searches below run over every character of a configuration, so
// they look at eight characters at a time where the processor can.

// The position of the next "<" from From, End when there is none; Blank is
// set when a TAB or LF comes before it.
qsizetype NextOpen(const QChar *Text, qsizetype From, qsizetype End, bool &Blank)
{
    qsizetype pos = From;
#if defined(__SSE2__)
    const __m128i open = _mm_set1_epi16(short(u'<'));
    const __m128i tab = _mm_set1_epi16(short(u'\t'));
    const __m128i lineFeed = _mm_set1_epi16(short(u'\n'));
    for (; pos + 8 <= End; pos += 8) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i *>(Text + pos));
        const unsigned opens = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi16(chunk, open)));
        const unsigned blanks =
            unsigned(_mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi16(chunk, tab), _mm_cmpeq_epi16(chunk, lineFeed))));
        if (opens != 0) {
            const int at = std::countr_zero(opens);
            Blank = Blank || (blanks & ((1u << at) - 1)) != 0;
            return pos + at / 2;
        }
        Blank = Blank || blanks != 0;
    }
#endif
    for (; pos < End && Text[pos] != u'<'; ++pos)
        Blank = Blank || MarkupIndex::IsTabOrLineFeed(Text[pos]);
    return pos;
}

// The position from From of the next "<", ">", TAB or LF: what ends a name
// or is left out of it. End when there is none.
qsizetype NextNameStop(const QChar *Text, qsizetype From, qsizetype End)
{
    qsizetype pos = From;
#if defined(__SSE2__)
    const __m128i open = _mm_set1_epi16(short(u'<'));
    const __m128i close = _mm_set1_epi16(short(u'>'));
    const __m128i tab = _mm_set1_epi16(short(u'\t'));
    const __m128i lineFeed = _mm_set1_epi16(short(u'\n'));
    for (; pos + 8 <= End; pos += 8) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i *>(Text + pos));
        const __m128i ends = _mm_or_si128(_mm_cmpeq_epi16(chunk, open), _mm_cmpeq_epi16(chunk, close));
        const __m128i blanks = _mm_or_si128(_mm_cmpeq_epi16(chunk, tab), _mm_cmpeq_epi16(chunk, lineFeed));
        if (const int found = _mm_movemask_epi8(_mm_or_si128(ends, blanks)))
            return pos + std::countr_zero(unsigned(found)) / 2;
    }
#endif
    while (pos < End && Text[pos] != u'<' && Text[pos] != u'>' && !MarkupIndex::IsTabOrLineFeed(Text[pos]))
        ++pos;
    return pos;
}

} // namespace

// Each "<" opens a tag anew, a ">" after an open one ends it, and a TAB or LF
// between them spreads its name.
void MarkupIndex::IndexTags() const
{
    // Generously: the pages of the reserve that are never written cost nothing.
    m_tags.reserve(std::size_t(std::max<qsizetype>(m_end - m_begin, 0) / 8));
    const QChar *text = m_text.constData();
    bool blank = false;
    qsizetype pos = NextOpen(text, m_begin, m_end, blank);
    while (pos < m_end) {
        bool spread = false;
        qsizetype at = NextNameStop(text, pos + 1, m_end);
        for (; at < m_end && text[at] != u'>' && text[at] != u'<'; at = NextNameStop(text, at + 1, m_end))
            spread = true;
        const bool closed = at < m_end && text[at] == u'>';
        blank = !(closed && AddTag(pos, at, spread, blank)) && (blank || spread);
        pos = NextOpen(text, closed ? at + 1 : at, m_end, blank);
    }
}

bool MarkupIndex::AddTag(qsizetype Open, qsizetype Close, bool Spread, bool Blank) const
{
    const QStringView name(m_text.constData() + Open + 1, Close - Open - 1);
    if (name.size() > MaxNameLength)
        return false;
    m_tags.push_back({Open, Spread ? SpreadNameHash(name) : NameHash(name),
                      std::int32_t(name.size()) | (Spread ? SpreadName : 0) | (Blank ? BlankBefore : 0)});
    return true;
}

qsizetype MarkupIndex::Scan(QStringView Text, qsizetype Begin, qsizetype End, QStringView Name, qsizetype &After)
{
    const QChar *text = Text.data();
    bool blank = false;
    for (qsizetype pos = NextOpen(text, Begin, End, blank); pos < End; pos = NextOpen(text, pos + 1, End, blank)) {
        qsizetype at = pos + 1;
        qsizetype matched = 0;
        for (; at < End; ++at) {
            const QChar c = text[at];
            if (IsTabOrLineFeed(c))
                continue;
            if (c == u'<' || c == u'>' || matched == Name.size() || LowerChar(c) != Name[matched])
                break;
            ++matched;
        }
        if (at < End && matched == Name.size() && text[at] == u'>') {
            After = at + 1;
            return pos;
        }
    }
    return -1;
}

MarkupIndex::MarkupIndex(const QString &Text, qsizetype Begin, qsizetype End)
    : m_text(Text), m_begin(Begin), m_end(End)
{
}

std::size_t MarkupIndex::FindExact(std::size_t From, std::size_t To, QStringView Name) const
{
    const QChar *text = m_text.constData();
    for (std::size_t i = From; i < To; ++i) {
        const Tag &tag = m_tags[i];
        const QChar *written = text + tag.Pos + 1;
        const std::int32_t length = tag.Length & ~BlankBefore;
        if (length == Name.size() ? QStringView(written, Name.size()) == Name
                                  : (length & SpreadName) && SameSpreadName(written, NameLength(tag), Name, false))
            return i;
    }
    return To;
}

std::size_t MarkupIndex::FirstTagFrom(qsizetype Pos) const
{
    return std::partition_point(m_tags.begin(), m_tags.end(), [Pos](const Tag &tag) { return tag.Pos < Pos; })
           - m_tags.begin();
}

QStringView MarkupIndex::Between(std::size_t Open, std::size_t Close) const
{
    const qsizetype start = NameEnd(m_tags[Open]) + 1;
    return QStringView(m_text).mid(start, m_tags[Close].Pos - start);
}

std::uint32_t MarkupIndex::SpreadNameHash(QStringView Name)
{
    QVarLengthArray<QChar, 64> cleaned;
    for (QChar c : Name)
        if (!IsTabOrLineFeed(c))
            cleaned.append(c);
    return NameHash(QStringView(cleaned.constData(), cleaned.size()));
}

bool MarkupIndex::SameSpreadName(const QChar *Written, qsizetype Length, QStringView Name, bool IgnoreCase)
{
    qsizetype matched = 0;
    for (qsizetype i = 0; i < Length; ++i) {
        if (IsTabOrLineFeed(Written[i]))
            continue;
        const QChar c = IgnoreCase ? LowerChar(Written[i]) : Written[i];
        if (matched == Name.size() || c != Name[matched])
            return false;
        ++matched;
    }
    return matched == Name.size();
}
