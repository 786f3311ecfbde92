#include "MarkupIndex.h"

#include <QVarLengthArray>

#include <algorithm>
#include <bit>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Calls Found with each tag from Begin to End of Text, in order, until it
// returns false.
template <typename Found>
void MarkupIndex::ForEachTag(QStringView Text, qsizetype Begin, qsizetype End, Found found)
{
    const QChar *text = Text.data();
    qsizetype pos = Begin;
    while (pos < End) {
        pos = NextOpen(text, pos, End);
        bool spread = false;
        qsizetype at = NextNameStop(text, pos + 1, End);
        for (; at < End; at = NextNameStop(text, at + 1, End)) {
            const QChar c = text[at];
            if (c == u'>' || c == u'<')
                break;
            spread = spread || IsTabOrLineFeed(c);
        }
        if (at >= End)
            return;
        if (text[at] == u'>') {
            const QStringView name(text + pos + 1, at - pos - 1);
            if (name.size() <= MaxNameLength
                && !found(Tag{pos, spread ? SpreadNameHash(name) : NameHash(name),
                              std::int32_t(name.size()) | (spread ? SpreadName : 0)}))
                return;
            ++at;
        }
        pos = at;
    }
}

qsizetype MarkupIndex::NextOpen(const QChar *Text, qsizetype From, qsizetype End)
{
    qsizetype pos = From;
#if defined(__SSE2__)
    const __m128i open = _mm_set1_epi16(short(u'<'));
    for (; pos + 8 <= End; pos += 8) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i *>(Text + pos));
        if (const int found = _mm_movemask_epi8(_mm_cmpeq_epi16(chunk, open)))
            return pos + std::countr_zero(unsigned(found)) / 2;
    }
#endif
    while (pos < End && Text[pos] != u'<')
        ++pos;
    return pos;
}

qsizetype MarkupIndex::NextNameStop(const QChar *Text, qsizetype From, qsizetype End)
{
    qsizetype pos = From;
#if defined(__SSE2__)
    // Compared as signed numbers, characters from U+8000 on stop here too.
    const __m128i bound = _mm_set1_epi16(short(u'>' + 1));
    for (; pos + 8 <= End; pos += 8) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i *>(Text + pos));
        if (const int found = _mm_movemask_epi8(_mm_cmplt_epi16(chunk, bound)))
            return pos + std::countr_zero(unsigned(found)) / 2;
    }
#endif
    while (pos < End && Text[pos] > u'>')
        ++pos;
    return pos;
}

qsizetype MarkupIndex::Scan(QStringView Text, qsizetype Begin, qsizetype End, QStringView Name, qsizetype &After)
{
    const QChar *text = Text.data();
    for (qsizetype pos = NextOpen(text, Begin, End); pos < End; pos = NextOpen(text, pos + 1, End)) {
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

MarkupIndex::MarkupIndex(const QString &Text, qsizetype Begin, qsizetype End) : m_text(Text)
{
    // Generously: the pages of the reserve that are never written cost nothing.
    m_tags.reserve(std::size_t(std::max<qsizetype>(End - Begin, 0) / 8));
    ForEachTag(m_text, Begin, End, [this](const Tag &tag) {
        m_tags.push_back(tag);
        return true;
    });
}

std::size_t MarkupIndex::FindExact(std::size_t From, std::size_t To, QStringView Name) const
{
    const QChar *text = m_text.constData();
    for (std::size_t i = From; i < To; ++i) {
        const Tag &tag = m_tags[i];
        const QChar *written = text + tag.Pos + 1;
        if (tag.Length == Name.size() ? QStringView(written, Name.size()) == Name
                                      : (tag.Length & SpreadName)
                                            && SameSpreadName(written, tag.Length & ~SpreadName, Name, false))
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
