#pragma once
#include "ValueTypes.h"
#include "clsConcat.h"

#include <QDateTime>
#include <QString>
#include <QSet>
#include <QVariant>

#include <optional>

// Reader and writer of the markup fragments that carry all configuration.
//
// The reader is a forward-only scanner: it searches the text, lower-cased
// character by character, for the literal open tag "<tag>" from its cursor and
// then for the next "</tag>". Tags must be read in the order they were written; a tag that is
// absent resets the target to its empty value and leaves the cursor where it
// was. There is no tree, no attribute and no depth tracking.
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
    QString XML() const { return m_xml; }
    void setXML(const QString &value);
    // The writer's text.
    QString GetXML() const { return m_writer.Text(); }

    // Bounds the reads to the text before the first "<tag>"; empty clears it.
    QString ExtractUntil() const { return m_until; }
    void setExtractUntil(const QString &Tag);

    // Reads the next element named Tag into Target, converted by Target's
    // type. True when the element was found; otherwise Target is reset.
    // Raw gives the text between the tags unconverted (nested fragments);
    // Encrypted deciphers a value that starts with "enc:".
    bool Extract(QString &Target, const QString &Tag, bool Raw = false, bool Encrypted = false);
    bool Extract(bool &Target, const QString &Tag);
    bool Extract(qint16 &Target, const QString &Tag);
    bool Extract(qint32 &Target, const QString &Tag);
    bool Extract(qint64 &Target, const QString &Tag);
    bool Extract(float &Target, const QString &Tag);
    bool Extract(double &Target, const QString &Tag);
    bool Extract(Currency &Target, const QString &Tag);
    bool Extract(QDateTime &Target, const QString &Tag);
    // Any other type: the text with entities and "#x" codes decoded.
    bool Extract(QVariant &Target, const QString &Tag);

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
    // Finds the next element and moves the cursor past it: steps 1 to 6 of
    // the reader.
    bool Locate(const QString &Tag, QString &value);
    template <typename Int> bool ExtractWhole(Int &Target, const QString &Tag);
    void WriteElement(const QString &Tag, const QString &value);
    QString Indent() const { return QString(m_depth, u'\t'); }

    QString m_xml;
    qsizetype m_cursor = 1; // 1-based
    QString m_until;        // stored as the open tag "<tag>"
    qsizetype m_stop = 0;   // 1-based position of m_until, 0 while not located
    // Names of the tags between the cursor of the first missed read and the
    // bound; the cursor only moves on, so a name not in it is absent.
    std::optional<QSet<QString>> m_namesAhead;
    clsConcat m_writer;
    qint16 m_depth = 0;
};
