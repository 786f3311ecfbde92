#pragma once
#include "MarkupIndex.h"
#include "MarkupTag.h"
#include "ValueTypes.h"
#include "clsConcat.h"

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <bitset>
#include <memory>
#include <optional>

// Reader and writer of the markup fragments that carry all configuration.
//
// The reader is a forward-only scanner: it searches the text, lower-cased
// character by character, for the literal open tag "<tag>" from its cursor and
// then for the next "</tag>". Tags must be read in the order they were written; a tag that is
// absent resets the target to its empty value and leaves the cursor where it
// was. There is no tree, no attribute and no depth tracking.
//
// The text is indexed once, at the first read (MarkupIndex); a nested element
// can be read by a child reader that shares the parent's text and index, so
// that reading a deeply nested configuration touches its characters a fixed
// number of times. The text is neither copied nor cleaned: the index and the
// values read leave out the TABs and LFs as they go.
//
// The writer emits one line per element, indented by one TAB per section
// level, and leaves out the empty values (0, false, empty text) so that an
// absent tag reads back as them.
class clsXML
{
public:
    clsXML() = default;
    explicit clsXML(const QString &xml) { setXML(xml); }

    // The text being read. Setting it deletes every TAB and LF, trims blanks
    // at both ends and resets the reader.
    QString XML() const;
    void setXML(const QString &value);
    // True when the text read holds nothing but blanks.
    bool IsEmpty() const { return m_textBegin >= m_textEnd; }
    // The text between the first "<Tag>" and the first "</Tag>" behind it,
    // found as a plain search of the text read finds them: with case, and
    // with no regard to the cursor or to nesting; empty when either is
    // missing.
    QString PlainSearch(const MarkupTag &Tag);
    // The writer's text.
    QString GetXML() const { return m_writer.Text(); }

    // Bounds the reads to the text before the first "<tag>"; empty clears it.
    QString ExtractUntil() const;
    void setExtractUntil(const MarkupTag &Tag);

    // Reads the next element named Tag into Target, converted by Target's
    // type. True when the element was found; otherwise Target is reset.
    // Raw gives the text between the tags unconverted (nested fragments);
    // Encrypted deciphers a value that starts with "enc:".
    bool Extract(QString &Target, const MarkupTag &Tag, bool Raw = false, bool Encrypted = false);
    // Reads the next element named Tag as a nested fragment: Child becomes a
    // reader of the text between the tags, as if set to the raw text, sharing
    // this reader's text. Without the element Child reads an empty text.
    bool Extract(clsXML &Child, const MarkupTag &Tag);
    // The same, for the items of a long list: while this reader has made no
    // other read, the element is found by scanning on from the last item, and
    // each item's reader indexes only its own text, when it is first read, on
    // whichever thread reads it.
    bool ExtractItem(clsXML &Child, const MarkupTag &Tag);
    bool Extract(bool &Target, const MarkupTag &Tag);
    bool Extract(qint16 &Target, const MarkupTag &Tag);
    bool Extract(qint32 &Target, const MarkupTag &Tag);
    bool Extract(qint64 &Target, const MarkupTag &Tag);
    bool Extract(float &Target, const MarkupTag &Tag);
    bool Extract(double &Target, const MarkupTag &Tag);
    bool Extract(Currency &Target, const MarkupTag &Tag);
    bool Extract(QDateTime &Target, const MarkupTag &Tag);
    // Any other type: the text with entities and "#x" codes decoded.
    bool Extract(QVariant &Target, const MarkupTag &Tag);

    // The text inside an element found by other means, converted as Extract
    // converts it into text, into a flag, or raw.
    static QString TextValue(QStringView Raw);
    static bool BoolValue(QStringView Raw);
    static QString RawValue(QStringView Raw);

    // Writes one element, or nothing for an empty value of the type.
    void Append(const QString &Value, const QString &Tag);
    void Append(const char *Value, const QString &Tag) { Append(QString::fromUtf8(Value), Tag); }
    void Append(bool Value, const QString &Tag);
    void Append(qint16 Value, const QString &Tag);
    void Append(qint32 Value, const QString &Tag);
    void Append(qint64 Value, const QString &Tag);
    void Append(float Value, const QString &Tag);
    void Append(double Value, const QString &Tag);
    void Append(Currency Value, const QString &Tag);
    void Append(const QDateTime &Value, const QString &Tag);
    void Append(const QVariant &Value, const QString &Tag);
    // Writes "enc:" and the enciphered value; nothing for an empty value.
    void AppendPassword(const QString &Value, const QString &Tag);
    // Adds a ready fragment, re-indented line by line, inside Section when one
    // is named; nothing at all for an empty fragment.
    void AppendXML(const QString &Fragment, const QString &Section = QString());

    void XMLAddHeader();
    void XMLSectionStart(const QString &Tag);
    void XMLSectionEnd(const QString &Tag);

    // Read into XML, or write the writer's text to, a file in DataPath.
    bool XMLReadFile(const QString &FileName);
    bool XMLWriteFile(const QString &FileName);

private:
    const QString &Text() const;
    // Reads the text from Begin to End of Doc's text, from its start.
    void ReadPart(std::shared_ptr<const MarkupIndex> Doc, qsizetype Begin, qsizetype End);
    // Takes the tags of the text read and sets the cursor among them, once.
    void Index();
    // Finds the next element and moves the cursor past it: the indexes of its
    // open and close tags.
    bool Locate(const MarkupTag &Tag, std::size_t &Open, std::size_t &Close)
    {
        return !SurelyAbsent(Tag) && LocateAhead(Tag, Open, Close);
    }
    // The same, giving the text between the tags without TAB and LF: a view
    // of the text, or of Copy when the text had any there.
    bool Locate(const MarkupTag &Tag, QStringView &value, QString &Copy)
    {
        return !SurelyAbsent(Tag) && LocateValue(Tag, value, Copy);
    }
    // Most members of a record are absent; once a read has missed, this tells
    // so for the others without a search, and without a call.
    bool SurelyAbsent(const MarkupTag &Tag) const
    {
        return m_namesAhead && !m_namesAhead->test(Tag.OpenHash() % BloomBits);
    }
    bool LocateAhead(const MarkupTag &Tag, std::size_t &Open, std::size_t &Close);
    bool LocateValue(const MarkupTag &Tag, QStringView &value, QString &Copy);
    std::size_t SearchLimit();
    // Remembers the names from the cursor to Limit after a read missed.
    void NoteNamesAhead(std::size_t Limit);
    void ResetCursor(std::size_t first, std::size_t end);
    template <typename Int> bool ExtractWhole(Int &Target, const MarkupTag &Tag);
    void WriteElement(const QString &Tag, const QString &value);
    QString Indent() const { return QString(m_depth, u'\t'); }

    std::shared_ptr<const MarkupIndex> m_doc; // the text and its index
    qsizetype m_textBegin = 0; // the text read: a range of the text, trimmed
    qsizetype m_textEnd = 0;
    qsizetype m_scanFrom = 0;  // cursor of the items found before the index
    bool m_indexed = false;    // whether this reader has asked for the tags
    std::size_t m_first = 0;   // the tags of that range, once indexed
    std::size_t m_end = 0;
    std::size_t m_next = 0;    // cursor: the next tag a search may start at
    std::optional<MarkupTag> m_until;  // the bound's tag
    std::optional<std::size_t> m_stop; // index of m_until once looked for
    // Hashes of the tags between the cursor of the first missed read and the
    // bound; the cursor only moves on, so a name not in it is absent.
    static constexpr std::size_t BloomBits = 4096;
    std::optional<std::bitset<BloomBits>> m_namesAhead;
    clsConcat m_writer;
    qint16 m_depth = 0;
};
