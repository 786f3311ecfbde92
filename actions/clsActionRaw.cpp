#include "clsActionRaw.h"
#include "ActionFragment.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

namespace {

// Position behind the element Tag that begins at From after white space, or
// From when the text goes on with anything else.
qsizetype SkipElement(const QString &Text, qsizetype From, const QString &Tag)
{
    qsizetype start = From;
    while (start < Text.size() && Text.at(start).isSpace())
        ++start;
    const QString open = u'<' + Tag + u'>';
    if (!QStringView(Text).mid(start).startsWith(open, Qt::CaseInsensitive))
        return From;
    const QString close = QStringLiteral("</") + Tag + u'>';
    const qsizetype end = Text.indexOf(close, start + open.size(), Qt::CaseInsensitive);
    return end < 0 ? From : end + close.size();
}

// Start of the element Condition that closes the fragment, or -1.
qsizetype TrailingCondition(const QString &Text, qsizetype From)
{
    const QString close = QStringLiteral("</Condition>");
    qsizetype end = Text.size();
    while (end > From && Text.at(end - 1).isSpace())
        --end;
    if (!QStringView(Text).first(end).endsWith(close, Qt::CaseInsensitive))
        return -1;
    const qsizetype start = Text.lastIndexOf(QStringLiteral("<Condition>"), end - close.size(), Qt::CaseInsensitive);
    return start >= From ? start : -1;
}

} // namespace

clsActionRaw::clsActionRaw(const QString &ClassName, const QString &ClassDesc)
    : ID(NewUniqueID()), m_className(ClassName), m_classDesc(ClassDesc)
{
}

bool clsActionRaw::IsCRM() const
{
    return m_className.startsWith(QStringLiteral("CRM"), Qt::CaseInsensitive);
}

bool clsActionRaw::StoresCondition() const
{
    return !IsCRM();
}

QString clsActionRaw::ActionDescription() const
{
    return ActionDescriptionHead(m_classDesc, Condition) + QStringLiteral("</TextBlock>");
}

QString clsActionRaw::XML() const
{
    if (!m_fragment.isEmpty() && ID == m_readID && Enabled == m_readEnabled && Condition == m_readCondition)
        return m_fragment;
    try {
        clsXML writer;
        AppendActionHead(writer, m_className, ID, Enabled);
        writer.AppendXML(m_ownTags);
        if (StoresCondition())
            AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionRaw.XML.Get"), error);
        return QString();
    }
}

void clsActionRaw::setXML(const QString &Fragment)
{
    ReadFragment(Fragment);
}

void clsActionRaw::ReadXML(clsXML &Reader)
{
    ReadFragment(Reader.XML());
}

void clsActionRaw::ReadFragment(const QString &Fragment)
{
    try {
        qsizetype headEnd = SkipElement(Fragment, 0, QStringLiteral("Class"));
        headEnd = SkipElement(Fragment, headEnd, QStringLiteral("ID"));
        headEnd = SkipElement(Fragment, headEnd, QStringLiteral("Enabled"));
        const qsizetype conditionStart = StoresCondition() ? TrailingCondition(Fragment, headEnd) : -1;
        const qsizetype ownEnd = conditionStart < 0 ? Fragment.size() : conditionStart;

        clsXML head(Fragment.left(headEnd));
        head.Extract(ID, QStringLiteral("ID"));
        head.Extract(Enabled, QStringLiteral("Enabled"));
        m_ownTags = Fragment.mid(headEnd, ownEnd - headEnd);
        Condition.clear();
        if (conditionStart >= 0)
            clsXML(Fragment.mid(conditionStart)).Extract(Condition, QStringLiteral("Condition"), true);
        if (IsCRM())
            CRMType = TagValue(QStringLiteral("CRMType"));

        m_fragment = Fragment;
        m_readID = ID;
        m_readEnabled = Enabled;
        m_readCondition = Condition;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionRaw.XML.Let"), error);
    }
}

QString clsActionRaw::TagValue(const QString &Tag) const
{
    clsXML reader(m_ownTags);
    QString value;
    reader.Extract(value, Tag);
    return value;
}
