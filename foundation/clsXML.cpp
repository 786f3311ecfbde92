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
#include <span>

namespace {

bool IsCleanedAway(QChar c)
{
    return c == u' ' || MarkupIndex::IsTabOrLineFeed(c);
}

// Raw without TAB and LF: the view itself when it holds none, else Copy.
QStringView WithoutTabsAndLineFeeds(QStringView Raw, QString &Copy)
{
    const auto first = std::find_if(Raw.begin(), Raw.end(), MarkupIndex::IsTabOrLineFeed);
    if (first == Raw.end())
        return Raw;
    Copy.resize(Raw.size());
    QChar *out = std::copy(Raw.begin(), first, Copy.data());
    out = std::remove_copy_if(first, Raw.end(), out, MarkupIndex::IsTabOrLineFeed);
    Copy.truncate(out - Copy.constData());
    return Copy;
}

// A view WithoutTabsAndLineFeeds gave, as a string: Copy itself when the view
// is of it.
QString Owned(QStringView Cleaned, QString &Copy)
{
    return Cleaned.data() == Copy.constData() ? std::move(Copy) : Cleaned.toString();
}

QString CleanedText(QStringView Raw)
{
    QString copy;
    return Owned(WithoutTabsAndLineFeeds(Raw, copy), copy);
}

struct Escape
{
    QStringView Text;
    char16_t Char;
};

constexpr Escape Entities[] = {
    {u"&apos;", u'\''}, {u"&quot;", u'"'}, {u"&lt;", u'<'}, {u"&gt;", u'>'}, {u"&amp;", u'&'},
};
constexpr Escape ControlCodes[] = {{u"#xD;", u'\r'}, {u"#xA;", u'\n'}, {u"#x9;", u'\t'}, {u"#1A;", 26}};

// The escape of the list that the text starts with, or nullptr; the character
// 26 only WithSubstitute.
const Escape *EscapeAt(QStringView text, bool withSubstitute)
{
    const auto starts = [&](const Escape &escape) {
        return (withSubstitute || escape.Char != 26) && text.size() >= escape.Text.size()
               && std::equal(escape.Text.begin(), escape.Text.end(), text.begin());
    };
    const std::span<const Escape> list =
        text.front() == u'&' ? std::span<const Escape>(Entities) : std::span<const Escape>(ControlCodes);
    const auto found = std::find_if(list.begin(), list.end(), starts);
    return found == list.end() ? nullptr : &*found;
}

bool MayHoldEscape(QStringView text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c == u'&' || c == u'#'; });
}

// The entities, then the "#" codes decoded, in one pass, written from Out on;
// returns the end of what was written, never more than the value's length.
// No replacement gives a character of any pattern, so this is what replacing
// each pattern in turn through the whole text gives.
QChar *DecodeEscapes(QStringView value, bool withSubstitute, QChar *out)
{
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value[i];
        const Escape *escape = c == u'&' || c == u'#' ? EscapeAt(value.mid(i), withSubstitute) : nullptr;
        if (escape) {
            *out++ = QChar(escape->Char);
            i += escape->Text.size() - 1;
        } else {
            *out++ = c;
        }
    }
    return out;
}

// Target set to Text decoded. A value equal to what Target holds, often its
// default, leaves it as it is, sharing its storage.
void SetDecoded(QString &Target, QStringView Text)
{
    if (!MayHoldEscape(Text)) {
        if (Target != Text)
            Target = Text.toString();
        return;
    }
    QVarLengthArray<QChar, 256> decoded(Text.size());
    const QStringView value(decoded.data(), DecodeEscapes(Text, true, decoded.data()) - decoded.data());
    if (Target != value)
        Target = value.toString();
}

// Target set to a text's value: unpacked when packed, and decoded.
void DecodeInto(QString &Target, QStringView raw)
{
    if (raw.startsWith(QChar(2)))
        SetDecoded(Target, UnpackWideText(raw.toString()));
    else
        SetDecoded(Target, raw);
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

// An optional "-" and up to 18 digits, the form the writer gives whole
// numbers, read without the general number parser; false for any other text.
bool ParsePlainWhole(QStringView text, qlonglong &out)
{
    const bool negative = text.startsWith(u'-');
    const QStringView digits = text.mid(negative ? 1 : 0);
    if (digits.isEmpty() || digits.size() > 18)
        return false;
    qlonglong value = 0;
    for (QChar c : digits) {
        if (c < u'0' || c > u'9')
            return false;
        value = value * 10 + (c.unicode() - u'0');
    }
    out = negative ? -value : value;
    return true;
}

// Text to a whole number of the given range: integers as they are, decimals
// rounded half to even; anything else, or out of range, fails.
template <typename Int> bool ParseWhole(QStringView text, Int &out)
{
    const QStringView t = text.trimmed();
    qlonglong whole = 0;
    bool ok = ParsePlainWhole(t, whole);
    if (!ok)
        whole = t.toLongLong(&ok);
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

// "yyyy-MM-dd HH:mm:ss", the form the writer gives dates, read without the
// general date parser; false for any other text and for an invalid date.
bool ParseWrittenDateTime(QStringView text, QDateTime &out)
{
    static constexpr char16_t Form[] = u"####-##-## ##:##:##";
    if (text.size() != qsizetype(std::size(Form)) - 1)
        return false;
    int fields[6] = {};
    int field = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (Form[i] != u'#') {
            if (c != Form[i])
                return false;
            ++field;
        } else if (c >= u'0' && c <= u'9') {
            fields[field] = fields[field] * 10 + (c - u'0');
        } else {
            return false;
        }
    }
    if (!QDate::isValid(fields[0], fields[1], fields[2]) || !QTime::isValid(fields[3], fields[4], fields[5]))
        return false;
    out = LocalDateTime(QDate(fields[0], fields[1], fields[2]), QTime(fields[3], fields[4], fields[5]));
    return true;
}

// A date, or a date and a time separated by the first blank; the zero date
// for anything unreadable.
QDateTime ParseDateTime(QStringView value)
{
    QDateTime written;
    if (ParseWrittenDateTime(value.trimmed(), written))
        return written;
    const QString text = value.trimmed().toString();
    const qsizetype blank = text.indexOf(u' ');
    QDate date;
    if (!ParseDate(blank < 0 ? text : text.left(blank), date))
        return ZeroDate();
    QTime time(0, 0);
    if (blank >= 0 && !ParseTime(text.mid(blank + 1).trimmed(), time))
        return ZeroDate();
    return QDateTime(date, time);
}

// "-1" and "0", the forms the writer and older records give, are read without
// the general number parser.
bool ParseBool(QStringView text)
{
    const QStringView t = text.trimmed();
    qlonglong whole = 0;
    if (ParsePlainWhole(t, whole))
        return whole != 0;
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
    return CleanedText(QStringView(Text()).mid(m_textBegin, m_textEnd - m_textBegin));
}

void clsXML::setXML(const QString &value)
{
    ReadPart(value.isEmpty() ? nullptr : std::make_shared<const MarkupIndex>(value, 0, value.size()), 0,
             value.size());
}

// The range is taken less the blanks, TABs and LFs at both ends.
void clsXML::ReadPart(std::shared_ptr<const MarkupIndex> Doc, qsizetype Begin, qsizetype End)
{
    m_doc = std::move(Doc);
    const QChar *text = Text().constData();
    while (Begin < End && IsCleanedAway(text[Begin]))
        ++Begin;
    while (End > Begin && IsCleanedAway(text[End - 1]))
        --End;
    m_textBegin = Begin;
    m_textEnd = End;
    m_scanFrom = Begin;
    ResetCursor(0, 0);
    m_indexed = false;
    m_depth = 0;
}

const QString &clsXML::Text() const
{
    static const QString none;
    return m_doc ? m_doc->Text() : none;
}

void clsXML::Index()
{
    if (m_indexed || !m_doc)
        return;
    ResetCursor(0, m_doc->Tags().size());
    m_next = m_doc->FirstTagFrom(m_scanFrom);
    m_indexed = true;
}

void clsXML::ResetCursor(std::size_t first, std::size_t end)
{
    m_first = first;
    m_end = end;
    m_next = first;
    m_stop.reset();
    m_namesAhead.reset();
}

QString clsXML::PlainSearch(const MarkupTag &Tag)
{
    try {
        Index();
        if (!m_indexed)
            return QString();
        const std::size_t open = m_doc->FindExact(m_first, m_end, Tag.Name());
        const std::size_t close = open < m_end ? m_doc->FindExact(open + 1, m_end, Tag.CloseName().Written) : m_end;
        return close < m_end ? CleanedText(m_doc->Between(open, close)) : QString();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("XML.Extract"), error);
        return QString();
    }
}

QString clsXML::ExtractUntil() const
{
    return m_until ? u'<' + m_until->Open().toString() + u'>' : QString();
}

void clsXML::setExtractUntil(const MarkupTag &Tag)
{
    m_until.reset();
    if (!Tag.IsEmpty())
        m_until = Tag;
    m_stop.reset();
    m_namesAhead.reset();
}

// With a bound: one past the last tag an open tag may be found at, which is
// the bound's own tag.
std::size_t clsXML::SearchLimit()
{
    if (!m_stop) {
        const std::size_t i = m_doc->Find(m_first, m_end, m_until->OpenName());
        if (i == m_end) {
            m_until.reset();
            return m_end;
        }
        m_stop = i;
    }
    return *m_stop + 1;
}

void clsXML::NoteNamesAhead(std::size_t Limit)
{
    const std::vector<MarkupIndex::Tag> &tags = m_doc->Tags();
    m_namesAhead.emplace();
    for (std::size_t i = m_next; i < Limit; ++i)
        m_namesAhead->set(tags[i].Hash % BloomBits);
}

bool clsXML::LocateAhead(const MarkupTag &Tag, std::size_t &Open, std::size_t &Close)
{
    try {
        if (!m_indexed)
            Index();
        if (!m_indexed || m_next >= m_end)
            return false;
        const std::size_t limit = m_until ? SearchLimit() : m_end;
        const std::size_t open = m_doc->Find(m_next, limit, Tag.OpenName());
        if (open >= limit) {
            if (!m_namesAhead)
                NoteNamesAhead(limit);
            return false;
        }
        const std::size_t close = m_doc->Find(open + 1, m_end, Tag.CloseName());
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

bool clsXML::LocateValue(const MarkupTag &Tag, QStringView &value, QString &Copy)
{
    std::size_t open = 0;
    std::size_t close = 0;
    if (!LocateAhead(Tag, open, close))
        return false;
    value = m_doc->Between(open, close);
    if (m_doc->BlankBetween(open, close))
        value = WithoutTabsAndLineFeeds(value, Copy);
    return true;
}

bool clsXML::Extract(clsXML &Child, const MarkupTag &Tag)
{
    std::size_t open = 0;
    std::size_t close = 0;
    if (&Child == this || !Locate(Tag, open, close)) {
        if (&Child != this)
            Child.setXML(QString());
        return false;
    }
    const QStringView inner = m_doc->Between(open, close);
    const qsizetype begin = inner.data() - m_doc->Text().constData();
    Child.ReadPart(m_doc, begin, begin + inner.size());
    Child.ResetCursor(open + 1, close);
    Child.m_indexed = true;
    Child.m_until.reset();
    return true;
}

bool clsXML::ExtractItem(clsXML &Child, const MarkupTag &Tag)
{
    if (m_indexed || m_until || !m_doc || &Child == this)
        return Extract(Child, Tag);
    try {
        const QString &text = m_doc->Text();
        qsizetype innerBegin = 0;
        qsizetype after = 0;
        const qsizetype open = MarkupIndex::Scan(text, m_scanFrom, m_textEnd, Tag.Open(), innerBegin);
        const qsizetype innerEnd = open < 0 ? -1 : MarkupIndex::Scan(text, innerBegin, m_textEnd, Tag.Close(), after);
        if (innerEnd < 0) {
            Child.setXML(QString());
            return false;
        }
        Child.ReadPart(std::make_shared<const MarkupIndex>(text, innerBegin, innerEnd), innerBegin, innerEnd);
        Child.m_until.reset();
        m_scanFrom = after;
        return true;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("XML.Extract"), error);
        return false;
    }
}

QString clsXML::TextValue(QStringView Raw)
{
    QString copy;
    QString value;
    DecodeInto(value, WithoutTabsAndLineFeeds(Raw, copy));
    return value;
}

bool clsXML::BoolValue(QStringView Raw)
{
    QString copy;
    return ParseBool(WithoutTabsAndLineFeeds(Raw, copy));
}

QString clsXML::RawValue(QStringView Raw)
{
    return CleanedText(Raw);
}

bool clsXML::Extract(QString &Target, const MarkupTag &Tag, bool Raw, bool Encrypted)
{
    QStringView value;
    QString copy;
    if (!Locate(Tag, value, copy)) {
        Target.clear();
        return false;
    }
    if (Encrypted && value.startsWith(u"enc:"))
        Target = DecryptText(value.mid(4).toString());
    else if (Raw)
        Target = Owned(value, copy);
    else
        DecodeInto(Target, value);
    return true;
}

bool clsXML::Extract(bool &Target, const MarkupTag &Tag)
{
    QStringView value;
    QString copy;
    const bool found = Locate(Tag, value, copy);
    Target = found && ParseBool(value);
    return found;
}

template <typename Int> bool clsXML::ExtractWhole(Int &Target, const MarkupTag &Tag)
{
    QStringView value;
    QString copy;
    Target = 0;
    if (!Locate(Tag, value, copy))
        return false;
    if (!ParseWhole(value, Target))
        Target = 0;
    return true;
}

bool clsXML::Extract(qint16 &Target, const MarkupTag &Tag)
{
    return ExtractWhole(Target, Tag);
}

bool clsXML::Extract(qint32 &Target, const MarkupTag &Tag)
{
    return ExtractWhole(Target, Tag);
}

bool clsXML::Extract(qint64 &Target, const MarkupTag &Tag)
{
    return ExtractWhole(Target, Tag);
}

bool clsXML::Extract(float &Target, const MarkupTag &Tag)
{
    double value = 0;
    const bool found = Extract(value, Tag);
    Target = std::fabs(value) <= std::numeric_limits<float>::max() ? float(value) : 0.0f;
    return found;
}

bool clsXML::Extract(double &Target, const MarkupTag &Tag)
{
    QStringView value;
    QString copy;
    Target = 0;
    if (!Locate(Tag, value, copy))
        return false;
    bool ok = false;
    const double number = value.trimmed().toDouble(&ok);
    Target = ok && std::isfinite(number) ? number : 0;
    return true;
}

bool clsXML::Extract(Currency &Target, const MarkupTag &Tag)
{
    QStringView value;
    QString copy;
    Target = Currency{};
    if (!Locate(Tag, value, copy))
        return false;
    if (!Currency::FromText(value.toString(), Target))
        Target = Currency{};
    return true;
}

bool clsXML::Extract(QDateTime &Target, const MarkupTag &Tag)
{
    QStringView value;
    QString copy;
    if (!Locate(Tag, value, copy)) {
        Target = ZeroDate();
        return false;
    }
    Target = ParseDateTime(value);
    return true;
}

bool clsXML::Extract(QVariant &Target, const MarkupTag &Tag)
{
    QStringView value;
    QString copy;
    if (!Locate(Tag, value, copy)) {
        Target = QVariant();
        return false;
    }
    QString decoded(value.size(), Qt::Uninitialized);
    decoded.truncate(DecodeEscapes(value, false, decoded.data()) - decoded.constData());
    Target = decoded;
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
