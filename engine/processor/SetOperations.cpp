#include "SetOperations.h"
#include "foundation/Crypt.h"
#include "foundation/Formatting.h"
#include "foundation/TextHelpers.h"
#include "store/HtmlToText.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QStringList>
#include <QXmlStreamWriter>
#include <optional>

namespace {

std::optional<double> Number(const QString &Text, bool EmptyIsZero)
{
    const QString text = Text.trimmed();
    if (text.isEmpty() && EmptyIsZero)
        return 0.0;
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok ? std::optional<double>(value) : std::nullopt;
}

QString NumberText(double Value)
{
    return QString::number(Value, 'g', 15);
}

SetOperations::Result Arithmetic(const QString &Current, const QString &Operand, double Sign, bool OperandGiven)
{
    const auto current = Number(Current, true);
    const auto operand = OperandGiven ? Number(Operand, false) : std::optional<double>(1.0);
    if (!current)
        return {Current, QStringLiteral("\"") + Current + QStringLiteral("\" is no number")};
    if (!operand)
        return {Current, QStringLiteral("\"") + Operand + QStringLiteral("\" is no number")};
    return {NumberText(*current + Sign * *operand), QString()};
}

std::optional<QDateTime> ReadDate(const QString &Text, bool *WithTime)
{
    const QString text = Text.trimmed();
    *WithTime = true;
    if (text.isEmpty())
        return QDateTime::currentDateTime();
    for (const QString &format : {QStringLiteral("yyyy-MM-dd HH:mm:ss"), QStringLiteral("yyyy-MM-ddTHH:mm:ss"),
                                  QStringLiteral("yyyy-MM-dd HH:mm")}) {
        const QDateTime value = QDateTime::fromString(text, format);
        if (value.isValid())
            return value;
    }
    *WithTime = false;
    for (const QString &format : {QStringLiteral("yyyy-MM-dd"), QStringLiteral("dd/MM/yyyy")}) {
        const QDate value = QDate::fromString(text, format);
        if (value.isValid())
            return QDateTime(value, QTime(0, 0));
    }
    return std::nullopt;
}

SetOperations::Result AddDays(const QString &Current, const QString &Days, int Sign)
{
    bool withTime = false;
    const auto date = ReadDate(Current, &withTime);
    const auto days = Number(Days, false);
    if (!date)
        return {Current, QStringLiteral("\"") + Current + QStringLiteral("\" is no date")};
    if (!days)
        return {Current, QStringLiteral("\"") + Days + QStringLiteral("\" is no number of days")};
    const QDateTime moved = date->addSecs(qint64(Sign * *days * 86400.0));
    return {moved.toString(withTime ? QStringLiteral("yyyy-MM-dd HH:mm:ss") : QStringLiteral("yyyy-MM-dd")), QString()};
}

QStringList AllMatches(const QRegularExpression &Pattern, const QString &Text)
{
    QStringList found;
    for (auto it = Pattern.globalMatch(Text); it.hasNext();)
        found << it.next().captured(0);
    return found;
}

const QRegularExpression &EmailPattern()
{
    static const QRegularExpression pattern(QStringLiteral("[A-Za-z0-9._%+'\\-]+@[A-Za-z0-9.\\-]+\\.[A-Za-z]{2,}"));
    return pattern;
}

const QRegularExpression &UrlPattern()
{
    static const QRegularExpression pattern(QStringLiteral("(?:https?://|www\\.)[^\\s\"'<>]+"),
                                            QRegularExpression::CaseInsensitiveOption);
    return pattern;
}

} // namespace

SetOperations::Result SetOperations::Apply(int Operation, const QString &Current, const QString &Value)
{
    switch (Operation) {
    case 0:
        return {Value, QString()};
    case 1:
        return Arithmetic(Current, QString(), 1, false);
    case 2:
        return Arithmetic(Current, QString(), -1, false);
    case 3:
        return Arithmetic(Current, Value, 1, true);
    case 4:
        return Arithmetic(Current, Value, -1, true);
    case 5:
        return AddDays(Current, Value, 1);
    case 6:
        return AddDays(Current, Value, -1);
    case 7:
        return {Value.toUpper(), QString()};
    case 8:
        return {Value.toLower(), QString()};
    case 9:
        return {Value.trimmed(), QString()};
    case 10:
        return {QString(Value).remove(QRegularExpression(QStringLiteral("\\s"))), QString()};
    case 11:
        return {Value.size() <= 2 ? QString() : Value.mid(1, Value.size() - 2), QString()};
    case 12:
        return {Value + u' ', QString()};
    case 13:
        return {WordCapitalize(Value), QString()};
    case 14:
        return {HtmlToText(Value), QString()};
    case 15:
        return {HtmlToXml(Value), QString()};
    case 16:
        return {Value.section(QRegularExpression(QStringLiteral("\r\n|\n|\r")), 0, 0), QString()};
    case 17: {
        const QStringList found = AllMatches(EmailPattern(), Value);
        return {found.isEmpty() ? QString() : found.first(), QString()};
    }
    case 18:
        return {AllMatches(EmailPattern(), Value).join(u','), QString()};
    case 19: {
        const QStringList found = AllMatches(UrlPattern(), Value);
        return {found.isEmpty() ? QString() : found.first(), QString()};
    }
    case 20:
        return {AllMatches(UrlPattern(), Value).join(u','), QString()};
    case 21:
        return {EncryptText(Value), QString()};
    case 22:
        return {DecryptText(Value), QString()};
    case 23:
        return {URLEncode(Value), QString()};
    case 24:
        return {URLDecode(Value), QString()};
    case 25:
        return {QString::fromLatin1(Value.toUtf8().toBase64()), QString()};
    case 26: {
        const auto decoded = QByteArray::fromBase64Encoding(Value.trimmed().toLatin1(),
                                                          QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            return {Current, QStringLiteral("the value is no Base 64 text")};
        return {QString::fromUtf8(*decoded), QString()};
    }
    case 27:
        return {QuotedPrintableEncode(Value), QString()};
    case 28:
        return {QuotedPrintableDecode(Value), QString()};
    case 29:
        return {URLEncode(MD5Hash(Value)), QString()};
    case 30:
        return {GUIDDigits(), QString()};
    default:
        return {Current, QStringLiteral("unknown operation %1").arg(Operation)};
    }
}

QString SetOperations::WordCapitalize(const QString &Text)
{
    QString result = Text.toLower();
    bool start = true;
    for (QChar &c : result) {
        if (c.isLetterOrNumber()) {
            if (start)
                c = c.toUpper();
            start = false;
        } else {
            start = true;
        }
    }
    return result;
}

QString SetOperations::QuotedPrintableEncode(const QString &Text)
{
    const QByteArray bytes = Text.toUtf8();
    QByteArray out;
    int lineLength = 0;
    const auto put = [&](const QByteArray &piece) {
        if (lineLength + piece.size() > 75) {
            out += "=\r\n";
            lineLength = 0;
        }
        out += piece;
        lineLength += int(piece.size());
    };
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto c = uchar(bytes.at(i));
        if (c == '\r' && i + 1 < bytes.size() && bytes.at(i + 1) == '\n') {
            out += "\r\n";
            lineLength = 0;
            ++i;
        } else if ((c >= 33 && c <= 126 && c != '=') || ((c == ' ' || c == '\t') && i + 1 < bytes.size()
                                                          && bytes.at(i + 1) != '\r')) {
            put(QByteArray(1, char(c)));
        } else {
            put('=' + QByteArray::number(c, 16).toUpper().rightJustified(2, '0'));
        }
    }
    return QString::fromLatin1(out);
}

QString SetOperations::QuotedPrintableDecode(const QString &Text)
{
    const QByteArray bytes = Text.toLatin1();
    QByteArray out;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (bytes.at(i) != '=') {
            out += bytes.at(i);
            continue;
        }
        if (i + 2 < bytes.size() && bytes.at(i + 1) == '\r' && bytes.at(i + 2) == '\n') {
            i += 2; // a soft line break
            continue;
        }
        if (i + 1 < bytes.size() && bytes.at(i + 1) == '\n') {
            i += 1;
            continue;
        }
        bool ok = false;
        const int code = i + 2 < bytes.size() ? bytes.mid(i + 1, 2).toInt(&ok, 16) : 0;
        if (ok) {
            out += char(code);
            i += 2;
        } else {
            out += '=';
        }
    }
    return QString::fromUtf8(out);
}

// A tolerant reading of HTML written as well-formed XML: names in lower
// case, attribute values quoted, empty elements closed in place, elements
// left open closed where their parent ends, stray end tags dropped,
// comments and declarations left out.
QString SetOperations::HtmlToXml(const QString &Html)
{
    static const QStringList empty{QStringLiteral("area"), QStringLiteral("base"), QStringLiteral("br"),
                                   QStringLiteral("col"), QStringLiteral("embed"), QStringLiteral("hr"),
                                   QStringLiteral("img"), QStringLiteral("input"), QStringLiteral("link"),
                                   QStringLiteral("meta"), QStringLiteral("param"), QStringLiteral("source"),
                                   QStringLiteral("track"), QStringLiteral("wbr")};
    static const QRegularExpression tag(QStringLiteral("<(/?)([A-Za-z][A-Za-z0-9:_-]*)([^>]*)>|<!--.*?-->|<![^>]*>|<\\?[^>]*>"),
                                        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression attribute(
        QStringLiteral("([A-Za-z_:][A-Za-z0-9_:.-]*)(?:\\s*=\\s*(?:\"([^\"]*)\"|'([^']*)'|([^\\s\"'>]+)))?"));
    QString out;
    QXmlStreamWriter writer(&out);
    QStringList open;
    qsizetype at = 0;
    const auto text = [&](qsizetype From, qsizetype To) {
        if (To > From)
            writer.writeCharacters(EntityDecode(Html.mid(From, To - From)));
    };
    for (auto it = tag.globalMatch(Html); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        text(at, match.capturedStart());
        at = match.capturedEnd();
        const QString name = match.captured(2).toLower();
        if (name.isEmpty())
            continue; // a comment or declaration
        if (!match.captured(1).isEmpty()) {
            const qsizetype level = open.lastIndexOf(name);
            while (level >= 0 && open.size() > level) {
                writer.writeEndElement();
                open.removeLast();
            }
            continue;
        }
        writer.writeStartElement(name);
        QString attributes = match.captured(3);
        const bool closed = attributes.trimmed().endsWith(u'/');
        if (closed)
            attributes = attributes.trimmed().chopped(1);
        for (auto a = attribute.globalMatch(attributes); a.hasNext();) {
            const QRegularExpressionMatch pair = a.next();
            const QString value = pair.captured(2) + pair.captured(3) + pair.captured(4);
            writer.writeAttribute(pair.captured(1).toLower(), EntityDecode(value));
        }
        if (closed || empty.contains(name))
            writer.writeEndElement();
        else
            open << name;
    }
    text(at, Html.size());
    while (!open.isEmpty()) {
        writer.writeEndElement();
        open.removeLast();
    }
    return out;
}
