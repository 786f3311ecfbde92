#pragma once
#include <QString>
#include <QStringView>

#include <cstdint>
#include <vector>

// The tags of one markup text, found in a single pass, so that readers of the
// text and of every fragment nested in it look tags up in this table instead
// of scanning the characters again.
//
// A tag is a "<" followed by a name and a ">" with no "<" between them; those
// are exactly the places where a literal search for "<name>" can succeed. Names
// are compared lower-cased character by character, through a hash kept per
// tag; a close tag's name keeps its "/".
class MarkupIndex
{
public:
    struct Tag
    {
        qsizetype Pos;       // 0-based position of the "<"
        std::uint32_t Hash;  // of the lower-cased name
        std::int32_t Length; // of the name
    };

    explicit MarkupIndex(QString text);
    // The index of the text without TAB and LF, trimmed of blanks at both
    // ends, made in the same pass as that text.
    static MarkupIndex OfCleanedText(QStringView Raw);

    const QString &Text() const { return m_text; }
    const std::vector<Tag> &Tags() const { return m_tags; }

    // The first tag from From up to To that has the lower-cased name Name
    // with hash Hash; To when there is none.
    std::size_t Find(std::size_t From, std::size_t To, QStringView Name, std::uint32_t Hash) const
    {
        for (std::size_t i = From; i < To; ++i) {
            const Tag &tag = m_tags[i];
            if (tag.Hash == Hash && tag.Length == Name.size() && SameName(tag, Name))
                return i;
        }
        return To;
    }
    // The view of the text between the end of tag Open and the start of Close.
    QStringView Between(std::size_t Open, std::size_t Close) const;

    static std::uint32_t HashStart() { return 2166136261u; }
    static std::uint32_t HashStep(std::uint32_t hash, QChar lower) { return (hash ^ lower.unicode()) * 16777619u; }
    static QChar LowerChar(QChar c)
    {
        const char16_t u = c.unicode();
        if (u < 128)
            return QChar(u >= 'A' && u <= 'Z' ? char16_t(u + 32) : u);
        return c.toLower();
    }

private:
    MarkupIndex() = default;
    void ReserveTags(qsizetype textSize);
    template <typename Next> void IndexTags(Next next);
    bool SameName(const Tag &tag, QStringView Name) const;

    QString m_text;
    std::vector<Tag> m_tags;
};
