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

char16_t LowerASCII(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c;
}

// Whether the tag Tag, plain ASCII, stands at At of Text, without regard to
// case as Qt compares. Only text outside ASCII needs Qt's case folding.
bool IsTagAt(QStringView Text, qsizetype At, QStringView Tag)
{
    if (At < 0 || Text.size() - At < Tag.size())
        return false;
    const QChar *text = Text.data() + At;
    for (qsizetype i = 0; i < Tag.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c >= 128)
            return Text.mid(At).startsWith(Tag, Qt::CaseInsensitive);
        if (LowerASCII(c) != LowerASCII(Tag[i].unicode()))
            return false;
    }
    return true;
}

// Text.indexOf(Tag, From, Qt::CaseInsensitive) for a tag: no character but
// "<" itself matches its "<", so only those are compared.
qsizetype FindTag(QStringView Text, qsizetype From, QStringView Tag)
{
    for (qsizetype at = Text.indexOf(u'<', From); at >= 0; at = Text.indexOf(u'<', at + 1))
        if (IsTagAt(Text, at, Tag))
            return at;
    return -1;
}

// Text.lastIndexOf(Tag, From, Qt::CaseInsensitive) for a tag that fits in
// Text behind From, in the same way.
qsizetype FindLastTag(QStringView Text, qsizetype From, QStringView Tag)
{
    for (qsizetype at = Text.first(From + 1).lastIndexOf(u'<'); at >= 0; at = Text.first(at).lastIndexOf(u'<'))
        if (IsTagAt(Text, at, Tag))
            return at;
    return -1;
}

// The element Which when it begins at From after white space: Value is the
// text inside it and the result the position behind it. From, with Value
// untouched, when the text goes on with anything else.
qsizetype SkipElement(QStringView Text, qsizetype From, const Element &Which, QStringView &Value)
{
    qsizetype start = From;
    while (start < Text.size() && Text[start].isSpace())
        ++start;
    if (!IsTagAt(Text, start, Which.Open))
        return From;
    const qsizetype inner = start + Which.Open.size();
    const qsizetype end = FindTag(Text, inner, Which.Close);
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
    const qsizetype close = end - ConditionElement.Close.size();
    if (!IsTagAt(Text, close, ConditionElement.Close))
        return -1;
    const qsizetype start = FindLastTag(Text, close, ConditionElement.Open);
    return start >= From ? start : -1;
}

} // namespace

clsActionRaw::clsActionRaw(const QString &ClassName, const QString &ClassDesc, const QString &ActionID)
    : ID(ActionID), m_className(ClassName), m_classDesc(ClassDesc)
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
