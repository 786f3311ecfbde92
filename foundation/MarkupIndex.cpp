#include "MarkupIndex.h"

#include <QVarLengthArray>

#include <algorithm>
#include <bit>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

// The searches below run over every character of a configuration, so they
// look at 64 characters at a time where the processor can.

// Bit i is set where the character at Base + i is one of Wanted, for the 64
// characters from Base; characters from End on are none.
template <char16_t... Wanted> std::uint64_t Where(const QChar *Text, qsizetype Base, qsizetype End)
{
    std::uint64_t found = 0;
#if defined(__SSE2__)
    if (Base + 64 <= End) {
        const auto match = [&](int at) {
            const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i *>(Text + Base + at));
            __m128i hits = _mm_setzero_si128();
            ((hits = _mm_or_si128(hits, _mm_cmpeq_epi16(chunk, _mm_set1_epi16(short(Wanted))))), ...);
            return hits;
        };
        for (int at = 0; at < 64; at += 16)
            found |= std::uint64_t(unsigned(_mm_movemask_epi8(_mm_packs_epi16(match(at), match(at + 8))))) << at;
        return found;
    }
#endif
    for (qsizetype i = 0; i < 64 && Base + i < End; ++i)
        if (((Text[Base + i] == QChar(Wanted)) || ...))
            found |= std::uint64_t(1) << i;
    return found;
}

// Where the "<", the ">" and the TABs and LFs are among 64 characters.
struct Marks
{
    std::uint64_t Opens;
    std::uint64_t Closes;
    std::uint64_t Blanks;
};

Marks MarksOf(const QChar *Text, qsizetype Base, qsizetype End)
{
    return {Where<u'<'>(Text, Base, End), Where<u'>'>(Text, Base, End), Where<u'\t', u'\n'>(Text, Base, End)};
}

// A table of tags that an index of this thread no longer needs. An index
// takes it over, so that reading one account after another reuses one table
// instead of asking the heap for a large block each time.
std::vector<MarkupIndex::Tag> &SpareTags()
{
    thread_local std::vector<MarkupIndex::Tag> spare;
    return spare;
}

// Larger tables, of whole configurations read at once, are given back.
constexpr std::size_t MaxSpareTags = 1 << 18;

} // namespace

bool MarkupIndex::AddTag(qsizetype Open, qsizetype Close, bool Spread, bool Blank) const
{
    const QStringView name(m_text.constData() + Open + 1, Close - Open - 1);
    if (name.size() > MaxNameLength)
        return false;
    m_tags.push_back({Open, Spread ? SpreadNameHash(name) : NameHash(name),
                      std::int32_t(name.size()) | (Spread ? SpreadName : 0) | (Blank ? BlankBefore : 0)});
    return true;
}

// Each "<" opens a tag anew and a ">" after an open one ends it. A TAB or LF
// between them spreads its name; one between the last tag added and the "<"
// marks the new tag BlankBefore. The text is taken 64 characters at a time,
// and only its "<" and ">" are visited one by one.
void MarkupIndex::IndexTags() const
{
    m_tags.swap(SpareTags());
    m_tags.clear();
    // Generously: the pages of the reserve that are never written cost nothing.
    m_tags.reserve(std::size_t(std::max<qsizetype>(m_end - m_begin, 0) / 8));
    const QChar *text = m_text.constData();
    qsizetype gapBegin = m_begin; // behind the last tag added
    qsizetype lastBlank = m_begin - 1;
    qsizetype open = -1;
    bool blankBefore = false;
    for (qsizetype base = m_begin; base < m_end; base += 64) {
        const Marks marks = MarksOf(text, base, m_end);
        for (std::uint64_t events = marks.Opens | marks.Closes; events != 0; events &= events - 1) {
            const int bit = std::countr_zero(events);
            const std::uint64_t blanks = marks.Blanks & ((std::uint64_t(1) << bit) - 1);
            const qsizetype blankAt = blanks ? base + 63 - std::countl_zero(blanks) : lastBlank;
            if (marks.Opens >> bit & 1) {
                open = base + bit;
                blankBefore = blankAt >= gapBegin;
            } else if (open >= 0) {
                if (AddTag(open, base + bit, blankAt > open, blankBefore))
                    gapBegin = base + bit + 1;
                open = -1;
            }
        }
        if (marks.Blanks)
            lastBlank = base + 63 - std::countl_zero(marks.Blanks);
    }
}

qsizetype MarkupIndex::Scan(QStringView Text, qsizetype Begin, qsizetype End, QStringView Name, qsizetype &After)
{
    const QChar *text = Text.data();
    for (qsizetype base = Begin; base < End; base += 64) {
        for (std::uint64_t opens = Where<u'<'>(text, base, End); opens != 0; opens &= opens - 1) {
            const qsizetype pos = base + std::countr_zero(opens);
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
    }
    return -1;
}

MarkupIndex::MarkupIndex(const QString &Text, qsizetype Begin, qsizetype End)
    : m_text(Text), m_begin(Begin), m_end(End)
{
}

MarkupIndex::~MarkupIndex()
{
    std::vector<Tag> &spare = SpareTags();
    if (m_tags.capacity() > spare.capacity() && m_tags.capacity() <= MaxSpareTags)
        spare.swap(m_tags);
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
