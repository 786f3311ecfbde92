#pragma once
#include <QString>
#include <QStringView>

#include <cstdint>
#include <cstring>
#include <mutex>
#include <vector>

// The tags of a range of a markup text, found in a single pass, so that
// readers of the range and of every fragment nested in it look tags up in
// this table instead of scanning the characters again.
//
// A tag is a "<" followed by a name and a ">" with no "<" between them; those
// are exactly the places where a literal search for "<name>" can succeed. The
// text is read as if every TAB and LF were deleted from it, without copying
// it: a name is compared with those left out, lower-cased character by
// character, through a hash kept per tag. A close tag's name keeps its "/".
class MarkupIndex
{
public:
    struct Tag
    {
        qsizetype Pos;       // position of the "<" in the text
        std::uint32_t Hash;  // NameHash of the name without TAB and LF
        std::int32_t Length; // of the name as written, with the flags below
    };
    // The name holds a TAB or LF.
    static constexpr std::int32_t SpreadName = 0x40000000;
    // The text between the tag before and this one holds a TAB or LF.
    static constexpr std::int32_t BlankBefore = 0x20000000;
    // Longer names are never looked for, so they are left out of the index.
    static constexpr qsizetype MaxNameLength = BlankBefore - 1;

    // The index of the tags from Begin to End of Text, which is shared, not
    // copied. The tags are found when first asked for, once for all readers
    // of the text, on whichever thread asks.
    MarkupIndex(const QString &Text, qsizetype Begin, qsizetype End);
    ~MarkupIndex();
    MarkupIndex(const MarkupIndex &) = delete;
    MarkupIndex &operator=(const MarkupIndex &) = delete;

    const QString &Text() const { return m_text; }
    const std::vector<Tag> &Tags() const
    {
        std::call_once(m_indexed, [this] { IndexTags(); });
        return m_tags;
    }

    // The look-ups below serve readers that have asked for Tags().

    // A name as a search wants it: lower-cased, as the writer writes it,
    // which most tags found have and which compares fastest, and its hash.
    struct Wanted
    {
        QStringView Lower;
        QStringView Written;
        std::uint32_t Hash;
    };

    // The first tag from From up to To that has the name Name; To when there
    // is none.
    std::size_t Find(std::size_t From, std::size_t To, const Wanted &Name) const
    {
        const QChar *text = m_text.constData();
        for (std::size_t i = From; i < To; ++i)
            if (m_tags[i].Hash == Name.Hash && NameIs(text, m_tags[i], Name))
                return i;
        return To;
    }
    // The first tag from From up to To whose name is Name, case and all, as a
    // plain search of the text for "<Name>" finds it; To when there is none.
    std::size_t FindExact(std::size_t From, std::size_t To, QStringView Name) const;
    // The first tag at or behind position Pos of the text.
    std::size_t FirstTagFrom(qsizetype Pos) const;
    // The raw text between the end of tag Open and the start of Close.
    QStringView Between(std::size_t Open, std::size_t Close) const;
    // False when that text holds no TAB or LF for certain.
    bool BlankBetween(std::size_t Open, std::size_t Close) const
    {
        return Close != Open + 1 || (m_tags[Close].Length & BlankBefore) != 0;
    }

    // Without an index: the position of the "<" of the first tag from Begin
    // to End of Text with the lower-cased name Name, and in After the
    // position behind its ">"; -1 when there is none.
    static qsizetype Scan(QStringView Text, qsizetype Begin, qsizetype End, QStringView Name, qsizetype &After);

    // The hash of a name, as written or lower-cased: of its length and of its
    // first, second and last characters lower-cased, which tell the names
    // of a record apart and take no pass over the name.
    static std::uint32_t NameHash(QStringView Name)
    {
        if (Name.isEmpty())
            return 0;
        const std::uint64_t second = Name.size() > 1 ? HashFold(Name[1]) : 0;
        const std::uint64_t key = std::uint64_t(Name.size()) << 48 | std::uint64_t(HashFold(Name[0])) << 32
                                  | second << 16 | HashFold(Name.back());
        return std::uint32_t((key * 0x9E3779B97F4A7C15ull) >> 32);
    }
    static QChar LowerChar(QChar c)
    {
        const char16_t u = c.unicode();
        if (u < 128)
            return QChar(u >= 'A' && u <= 'Z' ? char16_t(u + 32) : u);
        return c.toLower();
    }
    static bool IsTabOrLineFeed(QChar c) { return c == u'\t' || c == u'\n'; }
    // A character as the hash sees it: the same for a character and its
    // lower case, and cheap for ASCII, where case is one bit.
    static char16_t HashFold(QChar c)
    {
        const char16_t u = c.unicode();
        return u < 128 ? char16_t(u | 0x20) : LowerChar(c).unicode();
    }

private:
    void IndexTags() const;
    bool AddTag(qsizetype Open, qsizetype Close, bool Spread, bool Blank) const;
    static bool NameIs(const QChar *Text, const Tag &Tag, const Wanted &Name)
    {
        const QChar *written = Text + Tag.Pos + 1;
        const std::int32_t length = Tag.Length & ~BlankBefore;
        if (length == Name.Lower.size())
            return std::memcmp(written, Name.Written.data(), std::size_t(Name.Written.size()) * sizeof(QChar)) == 0
                   || SameName(written, Name.Lower);
        return (length & SpreadName) && SameSpreadName(written, NameLength(Tag), Name.Lower, true);
    }
    static qsizetype NameLength(const Tag &Tag) { return Tag.Length & MaxNameLength; }
    static qsizetype NameEnd(const Tag &Tag) { return Tag.Pos + 1 + NameLength(Tag); }
    // Names are mostly written in lower case already, so a character is
    // lowered only when it differs.
    static bool SameName(const QChar *Written, QStringView Name)
    {
        const QChar *wanted = Name.data();
        for (qsizetype i = 0; i < Name.size(); ++i)
            if (Written[i] != wanted[i] && LowerChar(Written[i]) != wanted[i])
                return false;
        return true;
    }
    static bool SameSpreadName(const QChar *Written, qsizetype Length, QStringView Name, bool IgnoreCase);
    // NameHash of a name without its TABs and LFs.
    static std::uint32_t SpreadNameHash(QStringView Name);

    QString m_text;
    qsizetype m_begin;
    qsizetype m_end;
    mutable std::once_flag m_indexed;
    mutable std::vector<Tag> m_tags;
};
