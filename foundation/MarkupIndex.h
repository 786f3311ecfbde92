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

    const QString &Text() const { return m_text; }
    const std::vector<Tag> &Tags() const { return m_tags; }

    // Whether the tag at Index has the lower-cased name Name with hash Hash.
    bool Matches(std::size_t Index, QStringView Name, std::uint32_t Hash) const;
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
    QString m_text;
    std::vector<Tag> m_tags;
};
