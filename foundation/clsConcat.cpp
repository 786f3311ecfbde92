#include "clsConcat.h"

#include <QDateTime>
#include <algorithm>

QString clsConcat::Text() const
{
    return m_buffer;
}

void clsConcat::setText(const QString &value)
{
    m_buffer = value;
    m_bufferSize = value.size();
}

void clsConcat::Append(QStringView Value)
{
    const qsizetype added = Value.size();
    if (m_buffer.size() + added >= m_bufferSize)
        m_bufferSize += std::max<qsizetype>(added, 25000);
    m_buffer.append(Value);
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
