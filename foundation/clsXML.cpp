#include "clsXML.h"
#include "Crypt.h"
#include "GlobalBlock.h"
#include "Startup.h"
#include "TextHelpers.h"
#include "WideText.h"

#include <QFile>
#include <QSaveFile>
#include <QTextStream>
#include <QVarLengthArray>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {

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
template <typename Int> bool ParseWhole(QStringView text, Int &out)
{
    const QStringView t = text.trimmed();
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

bool ParseBool(QStringView text)
{
    const QStringView t = text.trimmed();
    if (t.compare(u"true", Qt::CaseInsensitive) == 0)
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

QString clsXML::XML() const
{
    if (!m_doc)
        return QString();
    return TrimBlanks(QStringView(m_doc->Text()).mid(m_textBegin, m_textEnd - m_textBegin)).toString();
}

bool clsXML::IsEmpty() const
{
    if (!m_doc)
        return true;
    const QStringView text = QStringView(m_doc->Text()).mid(m_textBegin, m_textEnd - m_textBegin);
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c == u' '; });
}

void clsXML::setXML(const QString &value)
{
    m_doc.reset();
    try {
        if (!value.isEmpty())
            m_doc = std::make_shared<const MarkupIndex>(CleanText(value));
    } catch (const std::exception &error) {
        LogError(QStringLiteral("XML.Let"), error);
    }
    m_textBegin = 0;
    m_textEnd = m_doc ? m_doc->Text().size() : 0;
    ResetCursor(0, m_doc ? m_doc->Tags().size() : 0);
    m_depth = 0;
}

void clsXML::ResetCursor(std::size_t first, std::size_t end)
{
    m_first = first;
    m_end = end;
    m_next = first;
    m_stop.reset();
    m_namesAhead.reset();
}

void clsXML::setExtractUntil(const QString &Tag)
{
    m_until.clear();
    if (!Tag.isEmpty()) {
        m_until.reserve(Tag.size() + 2);
        m_until += u'<';
        for (QChar c : Tag)
            m_until += MarkupIndex::LowerChar(c);
        m_until += u'>';
    }
    m_stop.reset();
    m_namesAhead.reset();
}

namespace {

// The lower-cased name of a tag and its hash, with "/" before it for the
// close tag.
struct TagName
{
    QVarLengthArray<QChar, 64> Chars;
    std::uint32_t OpenHash = 0;
    std::uint32_t CloseHash = 0;

    explicit TagName(QStringView tag)
    {
        Chars.append(u'/');
        std::uint32_t hash = MarkupIndex::HashStart();
        std::uint32_t closeHash = MarkupIndex::HashStep(hash, u'/');
        for (QChar c : tag) {
            const QChar lower = MarkupIndex::LowerChar(c);
            Chars.append(lower);
            hash = MarkupIndex::HashStep(hash, lower);
            closeHash = MarkupIndex::HashStep(closeHash, lower);
        }
        OpenHash = hash;
        CloseHash = closeHash;
    }
    QStringView Open() const { return QStringView(Chars.constData() + 1, Chars.size() - 1); }
    QStringView Close() const { return QStringView(Chars.constData(), Chars.size()); }
};

constexpr std::size_t BloomBits = 4096;

} // namespace

// One past the last tag an open tag may be found at: with a bound, the
// bound's own tag is the last.
std::size_t clsXML::SearchLimit()
{
    if (m_until.isEmpty())
        return m_end;
    if (!m_stop) {
        const TagName bound(QStringView(m_until).mid(1, m_until.size() - 2));
        std::size_t i = m_first;
        while (i < m_end && !m_doc->Matches(i, bound.Open(), bound.OpenHash))
            ++i;
        if (i == m_end) {
            m_until.clear();
            return m_end;
        }
        m_stop = i;
    }
    return *m_stop + 1;
}

bool clsXML::Locate(const QString &Tag, std::size_t &Open, std::size_t &Close)
{
    try {
        if (!m_doc || m_next >= m_end)
            return false;
        const std::size_t limit = SearchLimit();
        const TagName name(Tag);
        if (m_namesAhead && !m_namesAhead->test(name.OpenHash % BloomBits))
            return false;
        std::size_t open = m_next;
        while (open < limit && !m_doc->Matches(open, name.Open(), name.OpenHash))
            ++open;
        if (open >= limit) {
            if (!m_namesAhead) {
                m_namesAhead.emplace();
                for (std::size_t i = m_next; i < limit; ++i)
                    m_namesAhead->set(m_doc->Tags()[i].Hash % BloomBits);
            }
            return false;
        }
        std::size_t close = open + 1;
        while (close < m_end && !m_doc->Matches(close, name.Close(), name.CloseHash))
            ++close;
        if (close >= m_end)
            return false;
        Open = open;
        Close = close;
        m_next = close + 1;
        return true;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("XML.Extract"), error);
        return false;
    }
}

bool clsXML::Locate(const QString &Tag, QStringView &value)
{
    std::size_t open = 0;
    std::size_t close = 0;
    if (!Locate(Tag, open, close))
        return false;
    value = m_doc->Between(open, close);
    return true;
}

bool clsXML::Extract(clsXML &Child, const QString &Tag)
{
    std::size_t open = 0;
    std::size_t close = 0;
    if (&Child == this || !Locate(Tag, open, close)) {
        if (&Child != this)
            Child.setXML(QString());
        return false;
    }
    const QStringView inner = m_doc->Between(open, close);
    Child.m_doc = m_doc;
    Child.m_textBegin = inner.data() - m_doc->Text().constData();
    Child.m_textEnd = Child.m_textBegin + inner.size();
    Child.ResetCursor(open + 1, close);
    Child.m_until.clear();
    Child.m_depth = 0;
    return true;
}

bool clsXML::Extract(QString &Target, const QString &Tag, bool Raw, bool Encrypted)
{
    QStringView value;
    if (!Locate(Tag, value)) {
        Target.clear();
        return false;
    }
    if (Encrypted && value.startsWith(u"enc:"))
        Target = DecryptText(value.mid(4).toString());
    else if (Raw)
        Target = value.toString();
    else
        Target = DecodeString(value.toString());
    return true;
}

bool clsXML::Extract(bool &Target, const QString &Tag)
{
    QStringView value;
    const bool found = Locate(Tag, value);
    Target = found && ParseBool(value);
    return found;
}

template <typename Int> bool clsXML::ExtractWhole(Int &Target, const QString &Tag)
{
    QStringView value;
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
    QStringView value;
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
    QStringView value;
    Target = Currency{};
    if (!Locate(Tag, value))
        return false;
    if (!Currency::FromText(value.toString(), Target))
        Target = Currency{};
    return true;
}

bool clsXML::Extract(QDateTime &Target, const QString &Tag)
{
    QStringView value;
    if (!Locate(Tag, value)) {
        Target = ZeroDate();
        return false;
    }
    Target = ParseDateTime(value.toString());
    return true;
}

bool clsXML::Extract(QVariant &Target, const QString &Tag)
{
    QStringView value;
    if (!Locate(Tag, value)) {
        Target = QVariant();
        return false;
    }
    Target = DecodeControlCodes(DecodeEntities(value.toString()), false);
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
        return !XML().isEmpty();
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
