#include "TextHelpers.h"
#include "Startup.h"

#include <QFile>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStringDecoder>
#include <array>
#include <utility>

namespace {

// The words of ExpandControlCodes; CR LF comes first so that it wins over
// its parts in both directions.
const std::array<std::pair<QLatin1String, QLatin1String>, 5> ControlWords = {{
    {QLatin1String("<CRLF>"), QLatin1String("\r\n")},
    {QLatin1String("<CR>"), QLatin1String("\r")},
    {QLatin1String("<LF>"), QLatin1String("\n")},
    {QLatin1String("<TAB>"), QLatin1String("\t")},
    {QLatin1String("<ESC>"), QLatin1String("\x1b")},
}};

bool IsCodePoint(uint code)
{
    return code > 0 && code <= 0x10FFFF && !QChar::isSurrogate(code);
}

QString FromCodePoint(char32_t code)
{
    return QStringView(QChar::fromUcs4(code)).toString();
}

bool ReadWholeFile(const QString &Routine, const QString &Path, QByteArray &data)
{
    QFile file(Path);
    if (!file.exists())
        return false;
    if (!file.open(QIODevice::ReadOnly)) {
        LogError(Routine, Path + QStringLiteral(": ") + file.errorString());
        return false;
    }
    data = file.readAll();
    return true;
}

} // namespace

QString GetTag(const QString &Tag, const QString &Text)
{
    if (Tag.isEmpty())
        return QString();
    const QString open = u'<' + Tag;
    for (qsizetype at = Text.indexOf(open, 0, Qt::CaseInsensitive); at >= 0;
         at = Text.indexOf(open, at + 1, Qt::CaseInsensitive)) {
        const qsizetype after = at + open.size();
        if (after >= Text.size())
            return QString();
        const QChar next = Text.at(after);
        if (next != u'>' && !next.isSpace())
            continue;
        const qsizetype contentStart = Text.indexOf(u'>', after);
        if (contentStart < 0)
            return QString();
        const qsizetype close = Text.indexOf(QStringLiteral("</") + Tag + u'>', contentStart, Qt::CaseInsensitive);
        return close < 0 ? QString() : Text.mid(contentStart + 1, close - contentStart - 1);
    }
    return QString();
}

QString StripTags(const QString &Text)
{
    static const QRegularExpression tag(QStringLiteral("<[^>]*>"));
    return QString(Text).remove(tag);
}

QString SafeFileName(const QString &Text)
{
    static const QRegularExpression unsafe(QStringLiteral(R"([<>:/\\|?*])"));
    static const QRegularExpression dots(QStringLiteral(R"(\.{2,})"));
    return RemoveWhiteSpace(QString(Text).replace(unsafe, QStringLiteral("_")).replace(dots, QStringLiteral(".")));
}

QString QuoteName(const QString &Name)
{
    return u'\'' + Name + u'\'';
}

QString StripBrackets(const QString &Text, bool EachEnd)
{
    static const QString opening = QStringLiteral("<[({");
    static const QString closing = QStringLiteral(">])}");
    QString text = Text.trimmed();
    if (EachEnd) {
        if (!text.isEmpty() && opening.contains(text.front()))
            text.remove(0, 1);
        if (!text.isEmpty() && closing.contains(text.back()))
            text.chop(1);
        return text;
    }
    if (text.size() < 2)
        return text;
    const qsizetype kind = opening.indexOf(text.front());
    if (kind < 0 || text.back() != closing.at(kind))
        return text;
    return text.mid(1, text.size() - 2);
}

QString RemoveWhiteSpace(const QString &Text)
{
    static const QRegularExpression blanks(QStringLiteral(" {2,}"));
    return QString(Text).replace(blanks, QStringLiteral(" "));
}

QString RemoveRepeatedBlankLines(const QString &Text)
{
    static const QRegularExpression lineEnds(QStringLiteral("(\r\n){3,}"));
    return QString(Text).replace(lineEnds, QStringLiteral("\r\n\r\n"));
}

QString ExpandControlCodes(const QString &Text, bool Back)
{
    QString text = Text;
    for (const auto &[word, characters] : ControlWords) {
        if (Back)
            text.replace(characters, word);
        else
            text.replace(word, characters, Qt::CaseInsensitive);
    }
    return text;
}

QString EnsureTrailing(const QString &Text, const QString &Suffix)
{
    return Text.endsWith(Suffix) ? Text : Text + Suffix;
}

QString ExtractEmailAddress(const QString &Text)
{
    static const QString startMarks = QStringLiteral(" \t\r\n\"'<:;,(");
    static const QString endMarks = QStringLiteral(" \t\r\n\"'>;,)");
    const qsizetype at = Text.indexOf(u'@');
    if (at < 0)
        return QString();
    qsizetype start = at;
    while (start > 0 && !startMarks.contains(Text.at(start - 1)))
        --start;
    qsizetype end = at + 1;
    while (end < Text.size() && !endMarks.contains(Text.at(end)))
        ++end;
    return Text.mid(start, end - start);
}

QString EntityDecode(const QString &Text)
{
    static const QRegularExpression reference(QStringLiteral("&#(?:[xX]([0-9a-fA-F]{1,8})|([0-9]{1,10}));"));
    if (!Text.contains(QStringLiteral("&#")))
        return Text;
    QString decoded;
    qsizetype copied = 0;
    for (const QRegularExpressionMatch &match : reference.globalMatch(Text)) {
        bool ok = false;
        const uint code = match.hasCaptured(1) ? match.captured(1).toUInt(&ok, 16) : match.captured(2).toUInt(&ok);
        if (!ok || !IsCodePoint(code))
            continue;
        decoded += QStringView(Text).mid(copied, match.capturedStart() - copied);
        decoded += FromCodePoint(code);
        copied = match.capturedEnd();
    }
    decoded += QStringView(Text).mid(copied);
    return decoded;
}

QString EntityEncode(const QString &Text, const QString &CodePage)
{
    const bool latin1 = CodePage.trimmed().compare(QLatin1String("iso-8859-1"), Qt::CaseInsensitive) == 0;
    return NumericReferencesAbove(Text, latin1 ? 255 : 127);
}

QString NumericReferencesAbove(const QString &Text, uint Limit)
{
    QString encoded;
    encoded.reserve(Text.size());
    for (const uint code : Text.toUcs4()) {
        if (code > Limit)
            encoded += QStringLiteral("&#") + QString::number(code) + u';';
        else
            encoded += FromCodePoint(code);
    }
    return encoded;
}

QString ReadTextFile(const QString &Path)
{
    QByteArray data;
    if (!ReadWholeFile(QStringLiteral("ReadTextFile"), Path, data))
        return QString();
    const auto marked = QStringConverter::encodingForData(data);
    QStringDecoder decoder(marked.value_or(QStringConverter::Utf8), QStringConverter::Flag::Stateless);
    const QString text = decoder.decode(data);
    return decoder.hasError() && !marked ? QString::fromLatin1(data) : text;
}

bool WriteTextFile(const QString &Path, const QString &Text)
{
    QSaveFile file(Path);
    if (!file.open(QIODevice::WriteOnly) || file.write(Text.toUtf8()) < 0 || !file.commit()) {
        LogError(QStringLiteral("WriteTextFile"), Path + QStringLiteral(": ") + file.errorString());
        return false;
    }
    return true;
}

QString UnicodeRead(const QString &Path)
{
    QByteArray data;
    if (!ReadWholeFile(QStringLiteral("UnicodeRead"), Path, data))
        return QString();
    const auto marked = QStringConverter::encodingForData(data);
    const bool wide = marked == QStringConverter::Utf16LE || marked == QStringConverter::Utf16BE;
    QStringDecoder decoder(wide ? *marked : QStringConverter::Utf16LE);
    return decoder.decode(data);
}

void ShellSort(QStringList &Array, bool Descending, Qt::CaseSensitivity Case)
{
    const qsizetype count = Array.size();
    const int order = Descending ? -1 : 1;
    qsizetype gap = 1;
    while (gap * 3 + 1 < count)
        gap = gap * 3 + 1;
    for (; gap >= 1; gap /= 3) {
        for (qsizetype i = gap; i < count; ++i) {
            QString value = std::move(Array[i]);
            qsizetype j = i;
            while (j >= gap && QString::compare(Array.at(j - gap), value, Case) * order > 0) {
                Array[j] = std::move(Array[j - gap]);
                j -= gap;
            }
            Array[j] = std::move(value);
        }
    }
}

QString SQLQuote(const QString &Text, int Dialect, bool Raw)
{
    QString body = Raw ? Text : QString(Text).replace(u'\'', QStringLiteral("''"));
    if (Dialect <= 0 || Dialect == 2)
        return u'\'' + body + u'\'';

    bool split = false;
    for (const char16_t code : {u'\r', u'\n', u'\t'}) {
        if (!body.contains(QChar(code)))
            continue;
        body.replace(QChar(code), QStringLiteral("' + ") + SQLChar(code, Dialect) + QStringLiteral(" + '"));
        split = true;
    }
    QString quoted = u'\'' + body + u'\'';
    if (split && quoted.startsWith(QStringLiteral("'' + ")))
        quoted.remove(0, 5);
    if (split && quoted.endsWith(QStringLiteral(" + ''")))
        quoted.chop(5);
    return quoted;
}

QString SQLChar(int Code, int Dialect)
{
    switch (Dialect) {
    case 1:
    case 2:
        return QStringLiteral("CHAR(%1)").arg(Code);
    case 3:
        return QStringLiteral("CHR$(%1)").arg(Code);
    default:
        return QStringLiteral(" ");
    }
}

QStringView TrimBlanks(QStringView Text)
{
    qsizetype first = 0;
    qsizetype last = Text.size();
    while (first < last && Text[first] == u' ')
        ++first;
    while (last > first && Text[last - 1] == u' ')
        --last;
    return Text.mid(first, last - first);
}
