#include "MarkupIndex.h"

MarkupIndex::MarkupIndex(QString text) : m_text(std::move(text))
{
    const QChar *data = m_text.constData();
    const qsizetype size = m_text.size();
    qsizetype open = m_text.indexOf(u'<');
    while (open >= 0) {
        std::uint32_t hash = HashStart();
        qsizetype k = open + 1;
        while (k < size && data[k] != u'>' && data[k] != u'<')
            hash = HashStep(hash, LowerChar(data[k++]));
        if (k >= size)
            break;
        if (data[k] == u'<') {
            open = k;
            continue;
        }
        m_tags.push_back({open, hash, std::int32_t(k - open - 1)});
        open = m_text.indexOf(u'<', k + 1);
    }
}

bool MarkupIndex::Matches(std::size_t Index, QStringView Name, std::uint32_t Hash) const
{
    const Tag &tag = m_tags[Index];
    if (tag.Hash != Hash || tag.Length != Name.size())
        return false;
    const QChar *name = m_text.constData() + tag.Pos + 1;
    for (qsizetype i = 0; i < Name.size(); ++i)
        if (LowerChar(name[i]) != Name[i])
            return false;
    return true;
}

QStringView MarkupIndex::Between(std::size_t Open, std::size_t Close) const
{
    const qsizetype start = m_tags[Open].Pos + m_tags[Open].Length + 2;
    return QStringView(m_text).mid(start, m_tags[Close].Pos - start);
}
