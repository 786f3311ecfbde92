#include "clsConcat.h"

#include <QDateTime>
#include <algorithm>

QString clsConcat::Text() const
{
    return m_buffer.left(m_length);
}

void clsConcat::setText(const QString &value)
{
    m_buffer = value;
    m_length = value.size();
}

void clsConcat::Append(QStringView Value)
{
    const qsizetype added = Value.size();
    if (m_length + added >= m_buffer.size()) {
        const qsizetype size = m_buffer.size() + std::max<qsizetype>(added, 25000);
        // The logical size grows by the rule above; the allocation doubles so
        // that a long run of appends costs linear time.
        if (m_buffer.capacity() < size)
            m_buffer.reserve(std::max(size, m_buffer.capacity() * 2));
        m_buffer.resize(size, u' ');
    }
    std::copy(Value.begin(), Value.end(), m_buffer.begin() + m_length);
    m_length += added;
}

void clsConcat::AppendLine(QStringView Value)
{
    Append(Value);
    Append(m_delimiterLine);
}

void clsConcat::AppendField(QStringView Value)
{
    Append(Value);
    Append(m_delimiterField);
}

void clsConcat::AppendJSONField(const QString &Name, const QVariant &Value)
{
    const int type = Value.typeId();
    const bool isDate = type == QMetaType::QDateTime || type == QMetaType::QDate;
    QString text = isDate ? Value.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : Value.toString();
    if (!JSON) {
        AppendField(text);
        return;
    }
    if (isDate || type == QMetaType::QString)
        text = u'"' + text + u'"';
    Append(Indent() + u'"' + Name + QStringLiteral("\": ") + text);
    Append(m_delimiterField);
}

void clsConcat::JSONObjectStart()
{
    Append(Indent() + u'{');
    Append(m_delimiterField);
    ++m_indent;
}

void clsConcat::JSONObjectEnd()
{
    if (m_indent > 0)
        --m_indent;
    Append(Indent() + u'}');
    Append(m_delimiterLine);
}
