#include "clsFieldExtractor.h"
#include "clsTriggerField.h"
#include "colFields.h"
#include "foundation/Startup.h"
#include "foundation/TextHelpers.h"

#include <QHash>
#include <QRegularExpression>
#include <algorithm>
#include <exception>

namespace {

// A match: 1-based start (0 when none) and length.
struct Hit
{
    qint32 Start = 0;
    qint32 Length = 0;
};

qint32 FirstVisibleChar(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i)
        if (text.at(i).unicode() > 32)
            return qint32(i + 1);
    return 0;
}

// Compiling an expression costs more than most searches with it, and the
// server searches with the same few expressions message after message: each
// thread keeps what it compiled, up to a bound.
const QRegularExpression &Compiled(const QString &expression, bool ignoreCase)
{
    constexpr qsizetype Kept = 1000;
    thread_local QHash<QString, QRegularExpression> compiled[2];
    QHash<QString, QRegularExpression> &kept = compiled[ignoreCase ? 1 : 0];
    const auto found = kept.constFind(expression);
    if (found != kept.constEnd())
        return *found;
    if (kept.size() >= Kept)
        kept.clear();
    return *kept.insert(expression, QRegularExpression(expression, ignoreCase ? QRegularExpression::CaseInsensitiveOption
                                                                              : QRegularExpression::NoPatternOption));
}

// Searches the text from Start on, as if the text began there: "^" anchors at
// the start and the result is moved back to a position in the whole text.
Hit Locate(QStringView text, const QString &expression, qint32 start, bool ignoreCase)
{
    const qint32 skipped = start > 1 ? start - 1 : 0;
    const QStringView searched = skipped < text.size() ? text.mid(skipped) : QStringView();
    Hit hit;
    if (expression == u"*") {
        hit.Start = FirstVisibleChar(searched);
    } else {
        const QRegularExpression &re = Compiled(expression, ignoreCase);
        if (!re.isValid())
            return Hit{};
        const QRegularExpressionMatch match = re.match(searched);
        if (!match.hasMatch())
            return Hit{};
        hit.Start = qint32(match.capturedStart() + 1);
        hit.Length = qint32(match.capturedLength());
    }
    if (hit.Start > 0)
        hit.Start += skipped;
    return hit;
}

qint32 Reached(const Hit &hit, const QString &expression, bool wantMatchStart)
{
    if (hit.Start == 0)
        return 0;
    return wantMatchStart || expression == u"." ? hit.Start : hit.Start + hit.Length;
}

qint32 SearchIn(QStringView text, const QString &expression, qint32 start, bool ignoreCase, bool wantMatchStart)
{
    return Reached(Locate(text, expression, start, ignoreCase), expression, wantMatchStart);
}

// The stop characters as one character class. Only these characters are
// escaped, as stored settings rely on the others keeping their meaning.
QString StopCharsExpression(const QString &chars)
{
    QString expression = QStringLiteral("[");
    for (QChar c : chars) {
        switch (c.unicode()) {
        case '\r': expression += QStringLiteral("\\r"); break;
        case '\n': expression += QStringLiteral("\\n"); break;
        case '\t': expression += QStringLiteral("\\t"); break;
        case '^': case '$': case '.': case '?': case '*': case '+': case '[': case ']':
            expression += u'\\';
            expression += c;
            break;
        default: expression += c;
        }
    }
    return expression + u']';
}

// Where the value ends in the rest of the text.
struct Cut
{
    qint32 Length = 0;
    bool Stopped = false; // ended by a stop that the last extract point steps over
};

Cut UntilMatch(QStringView rest, const QString &expression, bool ignoreCase)
{
    const qint32 stop = SearchIn(rest, expression, 1, ignoreCase, true);
    return stop > 0 ? Cut{stop - 1, true} : Cut{qint32(rest.size()), false};
}

Cut UntilOption(QStringView rest, const clsTriggerField &field)
{
    const bool ignoreCase = !field.CaseSensitive;
    const Cut everything{qint32(rest.size()), false};
    if (field.Until_EndOfBody)
        return everything;
    if (field.Until_EndOfLine) {
        const auto lineEnd = std::find_if(rest.begin(), rest.end(), [](QChar c) { return c == u'\r' || c == u'\n'; });
        return lineEnd == rest.end() ? everything : Cut{qint32(lineEnd - rest.begin()), true};
    }
    if (field.Until_NextBlankLine)
        return UntilMatch(rest, QStringLiteral("\\r?\\n[ \\t]*\\r?\\n"), false);
    if (field.Until_TheseWords)
        return field.UntilTheseWords.isEmpty() ? everything : UntilMatch(rest, field.UntilTheseWords, ignoreCase);
    if (field.Until_AnyChars)
        return UntilMatch(rest, StopCharsExpression(field.UntilAnyOfTheseChars), ignoreCase);
    if (field.Until_ThisMany)
        return Cut{qint32(std::clamp<qsizetype>(field.UntilThisManyChars, 0, rest.size())), false};
    if (field.Until_EndTag && field.LookFor.startsWith(u'<'))
        return UntilMatch(rest, QStringLiteral("</") + field.LookFor.mid(1), true);
    return everything;
}

// Leading TAB, blank, CR and LF move the offset; inside, TAB and CR LF become
// one blank and lone CR and LF go; then blanks are trimmed at both ends.
void CleanBlanks(clsFieldExtractor::FoundValue &found)
{
    QString &value = found.Value;
    const auto leading = std::find_if(value.cbegin(), value.cend(), [](QChar c) {
        return c != u'\t' && c != u' ' && c != u'\r' && c != u'\n';
    });
    found.Position += qint32(leading - value.cbegin());
    value.replace(u'\t', u' ');
    value.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    value.remove(u'\r');
    value.remove(u'\n');
    value = TrimBlanks(value).toString();
}

void RemoveEnds(clsFieldExtractor::FoundValue &found, qint16 first, qint16 last)
{
    QString &value = found.Value;
    if (first > 0) {
        if (value.size() > first) {
            value.remove(0, first);
            found.Position += first;
        } else {
            value.clear();
        }
    }
    if (last > 0) {
        if (value.size() > last)
            value.chop(last);
        else
            value.clear();
    }
}

} // namespace

qint32 clsFieldExtractor::Search(const QString &Text, const QString &Expression, qint32 Start, bool IgnoreCase,
                                 bool WantMatchStart)
{
    try {
        return SearchIn(Text, Expression, Start, IgnoreCase, WantMatchStart);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsFieldExtractor.Search"), error);
        return 0;
    }
}

bool clsFieldExtractor::Searches(const clsTriggerField &Field)
{
    return Field.Enabled && !Field.ExtractBuiltIn && !Field.Lookup;
}

void clsFieldExtractor::Reset()
{
    LastSubjectExtractPoint = 1;
    LastBodyExtractPoint = 1;
}

bool clsFieldExtractor::ExtractOnce(QStringView Text, const clsTriggerField &Field, qint32 Start, Pass &Result)
{
    const bool ignoreCase = !Field.CaseSensitive;
    const Hit lookFor = Locate(Text, Field.LookFor, Start, ignoreCase);
    qint32 reached = Reached(lookFor, Field.LookFor, false);
    if (reached > 0 && !Field.ThenLookFor.isEmpty())
        reached = SearchIn(Text, Field.ThenLookFor, reached, ignoreCase, false);
    if (reached == 0)
        return false;

    FoundValue &found = Result.Found;
    bool stopped = false;
    if (Field.ExtractMask) {
        found.Position = lookFor.Start;
        found.Value = Text.mid(lookFor.Start - 1, lookFor.Length).toString();
    } else {
        const QStringView rest = reached <= Text.size() ? Text.mid(reached - 1) : QStringView();
        const Cut cut = UntilOption(rest, Field);
        found.Position = reached;
        found.Value = rest.left(cut.Length).toString();
        stopped = cut.Stopped;
    }
    if (Field.TrimBlanks)
        CleanBlanks(found);
    RemoveEnds(found, Field.RemoveFirstXChars, Field.RemoveLastXChars);
    found.Length = qint32(found.Value.size());
    Result.Point = found.Position + found.Length + (stopped ? 1 : 0);
    // A block resumes behind both the match and the value taken.
    Result.Resume = std::max(reached, Result.Point);
    return true;
}

QList<clsFieldExtractor::FoundValue> clsFieldExtractor::Extract(const clsTriggerField &Field)
{
    QList<FoundValue> values;
    try {
        const QString &text = Field.CheckSubjectLine ? Subject : Body;
        qint32 &lastPoint = Field.CheckSubjectLine ? LastSubjectExtractPoint : LastBodyExtractPoint;
        qint32 start = Field.StartFromLastExtractPoint == 1 ? lastPoint : 1;
        const int passes = Field.Block ? MaxBlockPasses : 1;
        for (int i = 0; i < passes; ++i) {
            Pass pass;
            if (!ExtractOnce(text, Field, start, pass))
                break;
            // A pass that does not advance found an empty value at its start
            // and would find it again forever; only a first pass keeps it.
            const bool advances = pass.Resume > start;
            if (advances || i == 0) {
                values << pass.Found;
                lastPoint = pass.Point;
            }
            if (!advances)
                break;
            start = pass.Resume;
        }
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsFieldExtractor.Extract"), error);
        values.clear();
    }
    return values;
}

QList<clsFieldExtractor::FoundValue> clsFieldExtractor::Preview(const colFields &Fields, const clsTriggerField &Current)
{
    try {
        Reset();
        const int position = Fields.FieldPosition(&Current);
        const int replayed = position > 0 ? position - 1 : Fields.Count();
        for (int i = 1; i <= replayed; ++i) {
            const clsTriggerField *field = Fields.Item(i);
            if (Searches(*field))
                Extract(*field);
        }
        return Extract(Current);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsFieldExtractor.Preview"), error);
        return {};
    }
}
