#include "clsXML.h"
#include "Crypt.h"
#include "GlobalBlock.h"
#include "Startup.h"
#include "TextHelpers.h"
#include "WideText.h"

#include <QFile>
#include <QSaveFile>
#include <QTextStream>
#include <QSet>
#include <QVarLengthArray>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Lower-cases character by character so that positions in the copy are the
// positions in the original.
QChar LowerChar(QChar c)
{
    const char16_t u = c.unicode();
    if (u < 128)
        return QChar(u >= 'A' && u <= 'Z' ? char16_t(u + 32) : u);
    return c.toLower();
}

QString LowerSameLength(QStringView text)
{
    QString lower(text.size(), Qt::Uninitialized);
    std::transform(text.begin(), text.end(), lower.data(), LowerChar);
    return lower;
}

// First position at or after from where the lower-case needle, which starts
// with "<", stands in the text when the text is lower-cased character by
// character; -1 when absent. Looking for "<" first keeps the cost that of a
// plain character search, with no lower-case copy of the text.
qsizetype FindTag(QStringView text, QStringView needle, qsizetype from)
{
    const qsizetype last = text.size() - needle.size();
    for (qsizetype p = text.indexOf(u'<', from); p >= 0 && p <= last; p = text.indexOf(u'<', p + 1)) {
        qsizetype i = 1;
        while (i < needle.size() && LowerChar(text[p + i]) == needle[i])
            ++i;
        if (i == needle.size())
            return p;
    }
    return -1;
}

// The lower-case names of the tags that open at positions from..last
// (0-based) of the text.
QSet<QString> TagNames(QStringView text, qsizetype from, qsizetype last)
{
    QSet<QString> names;
    QString name;
    for (qsizetype p = text.indexOf(u'<', from); p >= 0 && p <= last; p = text.indexOf(u'<', p + 1)) {
        const qsizetype end = text.indexOf(u'>', p + 1);
        if (end < 0)
            break;
        name.resize(end - p - 1);
        std::transform(text.begin() + p + 1, text.begin() + end, name.begin(), LowerChar);
        names.insert(name);
    }
    return names;
}

bool IsTabOrLineFeed(QChar c)
{
    return c == u'\t' || c == u'\n';
}

// The text without TAB and LF, trimmed of blanks at both ends, in one pass.
// A nested fragment read raw is clean already and is shared, not copied.
QString CleanText(const QString &value)
{
    if (value.front() != u' ' && value.back() != u' ' && std::none_of(value.begin(), value.end(), IsTabOrLineFeed))
        return value;
    QString cleaned(value.size(), Qt::Uninitialized);
    QChar *end = std::remove_copy_if(value.begin(), value.end(), cleaned.data(), IsTabOrLineFeed);
    return TrimBlanks(QStringView(cleaned.constData(), end - cleaned.constData())).toString();
}

QString DecodeEntities(QString value)
{
    value.replace(QStringLiteral("&apos;"), QStringLiteral("'"));
    value.replace(QStringLiteral("&quot;"), QStringLiteral("\""));
    value.replace(QStringLiteral("&lt;"), QStringLiteral("<"));
    value.replace(QStringLiteral("&gt;"), QStringLiteral(">"));
    value.replace(QStringLiteral("&amp;"), QStringLiteral("&"));
    return value;
}

QString DecodeControlCodes(QString value, bool withSubstitute)
{
    value.replace(QStringLiteral("#xD;"), QStringLiteral("\r"));
    value.replace(QStringLiteral("#xA;"), QStringLiteral("\n"));
    value.replace(QStringLiteral("#x9;"), QStringLiteral("\t"));
    if (withSubstitute)
        value.replace(QStringLiteral("#1A;"), QString(QChar(26)));
    return value;
}

QString DecodeString(const QString &raw)
{
    QString value = UnpackWideText(raw);
    if (value.contains(u'&'))
        value = DecodeEntities(value);
    if (value.contains(u'#'))
        value = DecodeControlCodes(value, true);
    return value;
}

bool NeedsEscape(QChar c)
{
    switch (c.unicode()) {
    case '&': case '\'': case '"': case '<': case '>': case '\t': case '\r': case '\n': case 26:
        return true;
    default:
        return false;
    }
}

QString EncodeString(const QString &value)
{
    if (std::none_of(value.begin(), value.end(), NeedsEscape))
        return PackWideText(value);
    QString text;
    text.reserve(value.size() + 16);
    for (QChar c : value) {
        switch (c.unicode()) {
        case '&': text += QStringLiteral("&amp;"); break;
        case '\'': text += QStringLiteral("&apos;"); break;
        case '"': text += QStringLiteral("&quot;"); break;
        case '<': text += QStringLiteral("&lt;"); break;
        case '>': text += QStringLiteral("&gt;"); break;
        case '\t': text += QStringLiteral("#x9;"); break;
        case '\r': text += QStringLiteral("#xD;"); break;
        case '\n': text += QStringLiteral("#xA;"); break;
        case 26: text += QStringLiteral("#1A;"); break;
        default: text += c;
        }
    }
    return PackWideText(text);
}

// Text to a whole number of the given range: integers as they are, decimals
// rounded half to even; anything else, or out of range, fails.
template <typename Int> bool ParseWhole(const QString &text, Int &out)
{
    const QString t = text.trimmed();
    bool ok = false;
    qlonglong whole = t.toLongLong(&ok);
    if (!ok) {
        const double value = std::nearbyint(t.toDouble(&ok));
        if (!ok || !(std::fabs(value) < 9.2e18))
            return false;
        whole = qlonglong(value);
    }
    if (whole < std::numeric_limits<Int>::min() || whole > std::numeric_limits<Int>::max())
        return false;
    out = Int(whole);
    return true;
}

bool ParseDate(const QString &text, QDate &date)
{
    for (const char *format : {"yyyy-M-d", "yyyy/M/d", "yyyy-MM-ddTHH:mm:ss"}) {
        date = QDate::fromString(text, QString::fromLatin1(format));
        if (date.isValid())
            return true;
    }
    return false;
}

bool ParseTime(const QString &text, QTime &time)
{
    for (const char *format : {"H:m:s", "H:m", "h:m:s AP", "h:m AP", "H:m:s.z"}) {
        time = QTime::fromString(text, QString::fromLatin1(format));
        if (time.isValid())
            return true;
    }
    return false;
}

// A date, or a date and a time separated by the first blank; the zero date
// for anything unreadable.
QDateTime ParseDateTime(const QString &value)
{
    const QString text = value.trimmed();
    const qsizetype blank = text.indexOf(u' ');
    QDate date;
    if (!ParseDate(blank < 0 ? text : text.left(blank), date))
        return ZeroDate();
    QTime time(0, 0);
    if (blank >= 0 && !ParseTime(text.mid(blank + 1).trimmed(), time))
        return ZeroDate();
    return QDateTime(date, time);
}

bool ParseBool(const QString &text)
{
    const QString t = text.trimmed();
    if (t.compare(QStringLiteral("true"), Qt::CaseInsensitive) == 0)
        return true;
    bool ok = false;
    const double number = t.toDouble(&ok);
    return ok && number != 0;
}

template <typename Number> QString NumberText(Number value)
{
    return QString::number(value, 'g', std::numeric_limits<Number>::max_digits10);
}

} // namespace

void clsXML::setXML(const QString &value)
{
    try {
        m_xml = value.isEmpty() ? QString() : CleanText(value);
    } catch (const std::exception &error) {
        m_xml.clear();
        LogError(QStringLiteral("XML.Let"), error);
    }
    m_cursor = 1;
    m_stop = 0;
    m_namesAhead.reset();
    m_depth = 0;
}

void clsXML::setExtractUntil(const QString &Tag)
{
    m_until = Tag.isEmpty() ? QString() : u'<' + LowerSameLength(Tag) + u'>';
    m_stop = 0;
    m_namesAhead.reset();
}

bool clsXML::Locate(const QString &Tag, QString &value)
{
    try {
        const QStringView text(m_xml);
        if (!m_until.isEmpty() && m_stop == 0) {
            m_stop = FindTag(text, m_until, 0) + 1;
            if (m_stop == 0)
                m_until.clear();
        }
        if (m_cursor >= text.size())
            return false;
        // "</tag>" in one buffer; "<tag>" is pieced from it without a copy.
        QVarLengthArray<QChar, 64> close;
        close.append(u'<');
        close.append(u'/');
        for (QChar c : Tag)
            close.append(LowerChar(c));
        close.append(u'>');
        const qsizetype tagLength = Tag.size();
        const QStringView closeTag(close.constData(), close.size());
        QVarLengthArray<QChar, 64> open;
        open.append(u'<');
        open.append(close.constData() + 2, tagLength + 1);
        const QStringView openTag(open.constData(), open.size());

        // Once a read has missed, the names of the tags still ahead are known,
        // and an absent tag is answered without scanning the text again.
        if (m_namesAhead && !m_namesAhead->contains(QString::fromRawData(close.constData() + 2, tagLength)))
            return false;
        // With a bound, an absent tag is looked for up to the bound only.
        const QStringView searched =
            m_stop >= 1 ? text.first(std::min(text.size(), m_stop - 1 + openTag.size())) : text;
        const qsizetype p = FindTag(searched, openTag, m_cursor - 1) + 1;
        if (p == 0 || (m_stop >= 1 && p > m_stop)) {
            if (!m_namesAhead)
                m_namesAhead = TagNames(text, m_cursor - 1, m_stop >= 1 ? m_stop - 1 : text.size() - 1);
            return false;
        }
        const qsizetype q = FindTag(text, closeTag, p) + 1;
        if (q == 0)
            return false;
        const qsizetype start = p + tagLength + 2;
        value = m_xml.mid(start - 1, q - start);
        m_cursor = q + tagLength + 3;
        return true;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("XML.Extract"), error);
        return false;
    }
}

bool clsXML::Extract(QString &Target, const QString &Tag, bool Raw, bool Encrypted)
{
    QString value;
    if (!Locate(Tag, value)) {
        Target.clear();
        return false;
    }
    if (Encrypted && value.startsWith(QStringLiteral("enc:")))
        Target = DecryptText(value.mid(4));
    else if (Raw)
        Target = value;
    else
        Target = DecodeString(value);
    return true;
}

bool clsXML::Extract(bool &Target, const QString &Tag)
{
    QString value;
    const bool found = Locate(Tag, value);
    Target = found && ParseBool(value);
    return found;
}

template <typename Int> bool clsXML::ExtractWhole(Int &Target, const QString &Tag)
{
    QString value;
    Target = 0;
    if (!Locate(Tag, value))
        return false;
    if (!ParseWhole(value, Target))
        Target = 0;
    return true;
}

bool clsXML::Extract(qint16 &Target, const QString &Tag)
{
    return ExtractWhole(Target, Tag);
}

bool clsXML::Extract(qint32 &Target, const QString &Tag)
{
    return ExtractWhole(Target, Tag);
}

bool clsXML::Extract(qint64 &Target, const QString &Tag)
{
    return ExtractWhole(Target, Tag);
}

bool clsXML::Extract(float &Target, const QString &Tag)
{
    double value = 0;
    const bool found = Extract(value, Tag);
    Target = std::fabs(value) <= std::numeric_limits<float>::max() ? float(value) : 0.0f;
    return found;
}

bool clsXML::Extract(double &Target, const QString &Tag)
{
    QString value;
    Target = 0;
    if (!Locate(Tag, value))
        return false;
    bool ok = false;
    const double number = value.trimmed().toDouble(&ok);
    Target = ok && std::isfinite(number) ? number : 0;
    return true;
}

bool clsXML::Extract(Currency &Target, const QString &Tag)
{
    QString value;
    Target = Currency{};
    if (!Locate(Tag, value))
        return false;
    if (!Currency::FromText(value, Target))
        Target = Currency{};
    return true;
}

bool clsXML::Extract(QDateTime &Target, const QString &Tag)
{
    QString value;
    if (!Locate(Tag, value)) {
        Target = ZeroDate();
        return false;
    }
    Target = ParseDateTime(value);
    return true;
}

bool clsXML::Extract(QVariant &Target, const QString &Tag)
{
    QString value;
    if (!Locate(Tag, value)) {
        Target = QVariant();
        return false;
    }
    Target = DecodeControlCodes(DecodeEntities(value), false);
    return true;
}

void clsXML::WriteElement(const QString &Tag, const QString &value)
{
    for (qint16 level = 0; level < m_depth; ++level)
        m_writer.Append(u"\t");
    m_writer.Append(u"<");
    m_writer.Append(Tag);
    m_writer.Append(u">");
    m_writer.Append(value);
    m_writer.Append(u"</");
    m_writer.Append(Tag);
    m_writer.Append(u">\n");
}

void clsXML::Append(const QString &Value, const QString &Tag)
{
    if (!Value.isEmpty())
        WriteElement(Tag, EncodeString(Value));
}

void clsXML::Append(bool Value, const QString &Tag)
{
    if (Value)
        WriteElement(Tag, QStringLiteral("-1"));
}

void clsXML::Append(qint16 Value, const QString &Tag)
{
    Append(qint64(Value), Tag);
}

void clsXML::Append(qint32 Value, const QString &Tag)
{
    Append(qint64(Value), Tag);
}

void clsXML::Append(qint64 Value, const QString &Tag)
{
    if (Value != 0)
        WriteElement(Tag, QString::number(Value));
}

void clsXML::Append(float Value, const QString &Tag)
{
    WriteElement(Tag, NumberText(Value));
}

void clsXML::Append(double Value, const QString &Tag)
{
    WriteElement(Tag, NumberText(Value));
}

void clsXML::Append(Currency Value, const QString &Tag)
{
    if (!Value.IsZero())
        WriteElement(Tag, Value.ToText());
}

void clsXML::Append(const QDateTime &Value, const QString &Tag)
{
    const QDateTime date = Value.isValid() ? Value : ZeroDate();
    WriteElement(Tag, date.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
}

void clsXML::Append(const QVariant &Value, const QString &Tag)
{
    switch (Value.typeId()) {
    case QMetaType::QString: Append(Value.toString(), Tag); break;
    case QMetaType::Bool: Append(Value.toBool(), Tag); break;
    case QMetaType::Short: Append(qint16(Value.toInt()), Tag); break;
    case QMetaType::Int: Append(qint32(Value.toInt()), Tag); break;
    case QMetaType::LongLong: Append(qint64(Value.toLongLong()), Tag); break;
    case QMetaType::Float: Append(Value.toFloat(), Tag); break;
    case QMetaType::Double: Append(Value.toDouble(), Tag); break;
    case QMetaType::QDateTime: Append(Value.toDateTime(), Tag); break;
    default: WriteElement(Tag, Value.toString());
    }
}

void clsXML::AppendPassword(const QString &Value, const QString &Tag)
{
    if (!Value.isEmpty())
        WriteElement(Tag, QStringLiteral("enc:") + EncryptText(Value));
}

void clsXML::AppendXML(const QString &Fragment, const QString &Section)
{
    if (Fragment.isEmpty())
        return;
    if (!Section.isEmpty())
        XMLSectionStart(Section);
    const QString indent = Indent();
    for (QStringView untrimmed : QStringView(Fragment).split(u'\n')) {
        const QStringView line = TrimBlanks(untrimmed);
        if (line.isEmpty())
            continue;
        m_writer.Append(indent);
        m_writer.Append(line);
        m_writer.Append(u"\n");
    }
    if (!Section.isEmpty())
        XMLSectionEnd(Section);
}

void clsXML::XMLAddHeader()
{
    m_writer.Append(u"<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n");
}

void clsXML::XMLSectionStart(const QString &Tag)
{
    m_writer.Append(Indent() + u'<' + Tag + QStringLiteral(">\n"));
    ++m_depth;
}

void clsXML::XMLSectionEnd(const QString &Tag)
{
    if (m_depth > 0)
        --m_depth;
    m_writer.Append(Indent() + QStringLiteral("</") + Tag + QStringLiteral(">\n"));
}

bool clsXML::XMLReadFile(const QString &FileName)
{
    try {
        QFile file(Global.DataPath + FileName);
        if (!file.exists() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
            return false;
        QTextStream stream(&file);
        clsConcat text;
        QString line;
        while (stream.readLineInto(&line))
            text.Append(line);
        setXML(text.Text());
        return !m_xml.isEmpty();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("XMLReadFile"), error);
        return false;
    }
}

// The file is replaced as a whole through a temporary file, so that a crash
// while writing leaves the old file in place.
bool clsXML::XMLWriteFile(const QString &FileName)
{
    try {
        QSaveFile file(Global.DataPath + FileName);
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.write(GetXML().toUtf8());
        file.write("\r\n");
        return file.commit();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("XMLWriteFile"), error);
        return false;
    }
}
