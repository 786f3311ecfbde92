#pragma once
#include "MarkupIndex.h"

#include <QString>
#include <QStringView>
#include <QVarLengthArray>

#include <cstdint>

// The name of an element as the reader looks for it: lower-cased, with the
// hashes of its open and close forms, worked out once. Records keep their
// tags as constants of this type; a text given where a tag is expected
// becomes one on the spot.
class MarkupTag
{
public:
    MarkupTag(const QString &Name);

    // The name as written.
    const QString &Name() const { return m_name; }
    bool IsEmpty() const { return m_name.isEmpty(); }

    // The lower-cased name, and "/" before it for the close tag.
    QStringView Open() const { return Close().mid(1); }
    QStringView Close() const { return QStringView(m_close.constData(), m_close.size()); }
    std::uint32_t OpenHash() const { return m_openHash; }
    std::uint32_t CloseHash() const { return m_closeHash; }
    // The open and close tag's names as an index looks them up.
    MarkupIndex::Wanted OpenName() const { return {Open(), m_name, m_openHash}; }
    MarkupIndex::Wanted CloseName() const
    {
        return {Close(), QStringView(m_writtenClose.constData(), m_writtenClose.size()), m_closeHash};
    }

private:
    QString m_name;
    QVarLengthArray<QChar, 40> m_close;
    QVarLengthArray<QChar, 40> m_writtenClose;
    std::uint32_t m_openHash = 0;
    std::uint32_t m_closeHash = 0;
};
