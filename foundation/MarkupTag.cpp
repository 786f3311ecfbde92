#include "MarkupTag.h"
#include "MarkupIndex.h"

MarkupTag::MarkupTag(const QString &Name) : m_name(Name)
{
    m_close.reserve(Name.size() + 1);
    m_close.append(u'/');
    std::uint32_t hash = MarkupIndex::HashStart();
    std::uint32_t closeHash = MarkupIndex::HashStep(hash, u'/');
    for (QChar c : Name) {
        const QChar lower = MarkupIndex::LowerChar(c);
        m_close.append(lower);
        hash = MarkupIndex::HashStep(hash, lower);
        closeHash = MarkupIndex::HashStep(closeHash, lower);
    }
    m_openHash = hash;
    m_closeHash = closeHash;
}
