#pragma once
#include <QString>
#include <QVariant>

// A growing text buffer. The buffer is extended by max(L, 25000) blanks
// whenever an append of L characters would reach its end, and never shrunk;
// appends copy in place. The blanks are counted, not stored: the text itself
// grows by doubling, so that the many small writers of nested fragments
// don't each fill 25000 blanks.
class clsConcat
{
public:
    QString Text() const;
    void setText(const QString &value);
    int Length() const { return int(m_buffer.size()); }
    // Characters the buffer holds, used ones and spare blanks.
    qsizetype BufferSize() const { return m_bufferSize; }

    QString DelimiterField() const { return m_delimiterField; }
    void setDelimiterField(const QString &value) { m_delimiterField = value; }
    QString DelimiterLine() const { return m_delimiterLine; }
    void setDelimiterLine(const QString &value) { m_delimiterLine = value; }

    bool JSON = false;

    void Append(QStringView Value);
    void AppendLine(QStringView Value);
    void AppendField(QStringView Value);
    // In JSON mode: indent, quoted name, ": ", the value (dates and strings
    // quoted, nothing escaped), DelimiterField. Otherwise AppendField.
    void AppendJSONField(const QString &Name, const QVariant &Value);
    void JSONObjectStart();
    void JSONObjectEnd();

private:
    QString Indent() const { return QString(m_indent, u' '); }

    QString m_buffer;
    qsizetype m_bufferSize = 0;
    QString m_delimiterField = QStringLiteral("\t");
    QString m_delimiterLine = QStringLiteral("\r\n");
    qint16 m_indent = 0;
};
