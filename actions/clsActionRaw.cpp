#include "clsActionRaw.h"
#include "ActionFragment.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

namespace {

struct Element
{
    QStringView Open;
    QStringView Close;
};

constexpr Element ClassElement{u"<Class>", u"</Class>"};
constexpr Element IDElement{u"<ID>", u"</ID>"};
constexpr Element EnabledElement{u"<Enabled>", u"</Enabled>"};
constexpr Element ConditionElement{u"<Condition>", u"</Condition>"};

// The element Which when it begins at From after white space: Value is the
// text inside it and the result the position behind it. From, with Value
// untouched, when the text goes on with anything else.
qsizetype SkipElement(QStringView Text, qsizetype From, const Element &Which, QStringView &Value)
{
    qsizetype start = From;
    while (start < Text.size() && Text[start].isSpace())
        ++start;
    if (!Text.mid(start).startsWith(Which.Open, Qt::CaseInsensitive))
        return From;
    const qsizetype inner = start + Which.Open.size();
    const qsizetype end = Text.indexOf(Which.Close, inner, Qt::CaseInsensitive);
    if (end < 0)
        return From;
    Value = Text.mid(inner, end - inner);
    return end + Which.Close.size();
}

// Start of the element Condition that closes the fragment, or -1.
qsizetype TrailingCondition(QStringView Text, qsizetype From)
{
    qsizetype end = Text.size();
    while (end > From && Text[end - 1].isSpace())
        --end;
    if (!Text.first(end).endsWith(ConditionElement.Close, Qt::CaseInsensitive))
        return -1;
    const qsizetype start =
        Text.lastIndexOf(ConditionElement.Open, end - ConditionElement.Close.size(), Qt::CaseInsensitive);
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
        writer.AppendXML(OwnTags().toString());
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
        QStringView skipped;
        QStringView id;
        QStringView enabled;
        qsizetype headEnd = SkipElement(Fragment, 0, ClassElement, skipped);
        headEnd = SkipElement(Fragment, headEnd, IDElement, id);
        headEnd = SkipElement(Fragment, headEnd, EnabledElement, enabled);
        const qsizetype conditionStart = StoresCondition() ? TrailingCondition(Fragment, headEnd) : -1;

        ID = clsXML::TextValue(id);
        Enabled = clsXML::BoolValue(enabled);
        m_ownBegin = headEnd;
        m_ownEnd = conditionStart < 0 ? Fragment.size() : conditionStart;
        QStringView condition;
        Condition.clear();
        if (conditionStart >= 0 && SkipElement(Fragment, conditionStart, ConditionElement, condition) > conditionStart)
            Condition = clsXML::RawValue(condition);

        m_fragment = Fragment;
        if (IsCRM())
            CRMType = TagValue(QStringLiteral("CRMType"));
        m_readID = ID;
        m_readEnabled = Enabled;
        m_readCondition = Condition;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionRaw.XML.Let"), error);
    }
}

QStringView clsActionRaw::OwnTags() const
{
    return QStringView(m_fragment).mid(m_ownBegin, m_ownEnd - m_ownBegin);
}

QString clsActionRaw::TagValue(const QString &Tag) const
{
    clsXML reader(OwnTags().toString());
    QString value;
    reader.Extract(value, Tag);
    return value;
}
