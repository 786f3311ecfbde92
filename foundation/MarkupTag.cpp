#include "MarkupTag.h"

MarkupTag::MarkupTag(const QString &Name) : m_name(Name)
{
    m_close.reserve(Name.size() + 1);
    m_close.append(u'/');
    m_writtenClose.append(u'/');
    m_writtenClose.append(Name.constData(), Name.size());
    for (QChar c : Name)
        m_close.append(MarkupIndex::LowerChar(c));
    m_openHash = MarkupIndex::NameHash(Open());
    m_closeHash = MarkupIndex::NameHash(Close());
}
