#include "Condition.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"

#include <QStringList>
#include <exception>
#include <utility>

MarkupColorTable MarkupColors;

namespace {

const QString LinesTag = QStringLiteral("Lines");
const QString LineTag = QStringLiteral("Line");
const QString ScriptEnabledTag = QStringLiteral("ScriptEnabled");
const QString ScriptTag = QStringLiteral("Script");

// The four "|" parts of a stored row.
ConditionLine SplitLine(const QString &Text)
{
    QStringList parts = Text.split(u'|');
    while (parts.size() < 4)
        parts << QString();
    return ConditionLine{parts[0], parts[1], parts[2], parts[3]};
}

// Operator keys as words, in this order so that "!?" is taken before "!" and
// "*?" before "?". The stored key "s?" has no entry of its own and so shows
// as "s" and "Contains".
QString OperatorWords(QString Operator, Qt::CaseSensitivity Case)
{
    static const std::pair<QString, QString> words[] = {
        {QStringLiteral("!?"), QStringLiteral("Does Not Contain")},
        {QStringLiteral("!"), QStringLiteral("Is Blank")},
        {QStringLiteral("^"), QStringLiteral("Not Blank")},
        {QStringLiteral("*?"), QStringLiteral("Starts With")},
        {QStringLiteral("?"), QStringLiteral("Contains")},
    };
    for (const auto &[key, word] : words)
        Operator.replace(key, word, Case);
    return Operator;
}

// The length operators move into the left side, which then reads
// "Len(left) =", and leave the operator empty.
void LengthForm(ConditionLine &Line)
{
    static const std::pair<QString, QString> forms[] = {
        {QStringLiteral("len="), QStringLiteral(") =")},
        {QStringLiteral("len>"), QStringLiteral(") &#62;")},
        {QStringLiteral("len<"), QStringLiteral(") &#60;")},
    };
    for (const auto &[key, closing] : forms) {
        if (Line.Operator.compare(key, Qt::CaseInsensitive) == 0) {
            Line.LeftSide = QStringLiteral("Len(") + Line.LeftSide + closing;
            Line.Operator.clear();
        }
    }
}

QString EscapeAngles(QString Text)
{
    Text.replace(u'<', QStringLiteral("&#60;"));
    Text.replace(u'>', QStringLiteral("&#62;"));
    return Text;
}

QString Keyword(const QString &Word)
{
    return QStringLiteral("<Bold><Run Foreground='") + MarkupColors.ColorKeyword + QStringLiteral("' Text='") + Word
           + QStringLiteral("'/></Bold>");
}

QString RunOpening(const QString &Colour)
{
    return QStringLiteral("<Run Foreground='") + Colour + QStringLiteral("' Text='");
}

} // namespace

QString ConditionOperators()
{
    return QStringLiteral("#=;Equal To|#<>;Not Equal To|#<;Less Than|#>;Greater Than|#<=;Less Than Or Equal|"
                          "#>=;Greater Than Or Equal|#!;Is Blank|#^;Not Blank|#?;Contains|#!?;Does Not Contain|"
                          "#s?;Starts With|#len=;Length Equal|#len<;Length Less Than|#len>;Length Greater Than");
}

QString ConditionXML(const ConditionFragment &Condition)
{
    try {
        clsXML writer;
        writer.XMLSectionStart(LinesTag);
        for (const ConditionLine &line : Condition.Lines) {
            if (line.LeftSide.isEmpty())
                continue;
            const QStringList parts{line.Joiner, line.LeftSide, line.Operator, line.RightSide.trimmed()};
            writer.Append(parts.join(u'|'), LineTag);
        }
        writer.XMLSectionEnd(LinesTag);
        if (Condition.ScriptEnabled) {
            writer.Append(true, ScriptEnabledTag);
            writer.Append(Condition.Script, ScriptTag);
        }
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("ConditionXML"), error);
        return QString();
    }
}

ConditionFragment ReadCondition(const QString &Condition)
{
    ConditionFragment fragment;
    try {
        clsXML reader(Condition);
        QString lines;
        reader.Extract(lines, LinesTag, true);
        clsXML lineReader(lines);
        QString line;
        while (lineReader.Extract(line, LineTag))
            if (!line.isEmpty())
                fragment.Lines << SplitLine(line);
        reader.Extract(fragment.ScriptEnabled, ScriptEnabledTag);
        if (fragment.ScriptEnabled)
            reader.Extract(fragment.Script, ScriptTag);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("ReadCondition"), error);
        return ConditionFragment();
    }
    return fragment;
}

QString ConditionDisplay(const QString &Condition, bool MarkUp, bool WithThen)
{
    try {
        if (Condition.isEmpty())
            return QStringLiteral("No Condition");
        const ConditionFragment fragment = ReadCondition(Condition);
        QString text;
        for (ConditionLine line : fragment.Lines) {
            line.Operator = OperatorWords(line.Operator, Qt::CaseInsensitive);
            LengthForm(line);
            if (MarkUp) {
                line.Operator = EscapeAngles(line.Operator);
                line.RightSide = EscapeAngles(line.RightSide);
            }
            // In the plain form the joiner runs straight into the left side.
            text += line.Joiner;
            if (MarkUp)
                text += u' ' + RunOpening(MarkupColors.ColorLeftSide);
            text += line.LeftSide + u' ';
            if (MarkUp)
                text += QStringLiteral("'/>") + RunOpening(MarkupColors.ColorOperator);
            text += line.Operator + u' ';
            if (MarkUp)
                text += QStringLiteral("'/><Bold>");
            text += line.RightSide;
            if (MarkUp)
                text += QStringLiteral("</Bold>");
            text += u' ';
        }
        if (fragment.ScriptEnabled && !fragment.Script.isEmpty()) {
            if (!text.isEmpty())
                text += QStringLiteral(" And ");
            if (MarkUp)
                text += RunOpening(MarkupColors.ColorScript);
            text += QStringLiteral("Script Returns True");
            if (MarkUp)
                text += QStringLiteral("'/>");
        }
        text = text.trimmed();
        if (text.isEmpty())
            return QString();
        if (!MarkUp)
            return QStringLiteral("If ") + text;
        return Keyword(QStringLiteral("If ")) + text + (WithThen ? Keyword(QStringLiteral(" Then ")) : QString());
    } catch (const std::exception &error) {
        LogError(QStringLiteral("ConditionDisplay"), error);
        return QString();
    }
}

QString ConditionText(const QString &Condition, bool MarkUp)
{
    try {
        QString text;
        for (const QString &row : Condition.split(u'\n', Qt::SkipEmptyParts)) {
            ConditionLine line = SplitLine(row);
            line.Operator = OperatorWords(line.Operator, Qt::CaseSensitive);
            if (MarkUp) {
                line.Operator = EscapeAngles(line.Operator);
                line.RightSide = EscapeAngles(line.RightSide);
            }
            text += line.Joiner;
            if (MarkUp)
                text += QStringLiteral(" <Run Foreground='Blue' Text='");
            text += line.LeftSide;
            if (MarkUp)
                text += QStringLiteral("'/>");
            text += line.Operator + u' ';
            if (MarkUp)
                text += QStringLiteral("<Bold>");
            text += line.RightSide;
            if (MarkUp)
                text += QStringLiteral("</Bold>");
            text += u' ';
        }
        text = text.trimmed();
        return text.isEmpty() ? QStringLiteral("No Condition") : QStringLiteral("If ") + text;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("ConditionText"), error);
        return QString();
    }
}

QString MarkupRun(const QString &Text, const QString &Colour, bool Bold)
{
    if (Text.isEmpty())
        return QString();
    QString text = Text;
    text.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    text.replace(u'&', QStringLiteral("&amp;"));
    text.replace(u'\'', QStringLiteral("&apos;"));
    text.replace(u'"', QStringLiteral("&quot;"));
    text.replace(u'<', QStringLiteral("&lt;"));
    text.replace(u'>', QStringLiteral("&gt;"));
    if (text.size() > 100)
        text = text.left(100) + QStringLiteral("...");
    QString run = QStringLiteral(" ");
    if (Bold)
        run += QStringLiteral("<Bold>");
    run += RunOpening(Colour) + text + QStringLiteral("'/>");
    if (Bold)
        run += QStringLiteral("</Bold>");
    return run;
}

QString ActionDescriptionHead(const QString &Text, const QString &Condition)
{
    QString head = QStringLiteral("<TextBlock VerticalAlignment='Center'>");
    if (!Condition.isEmpty())
        head += ConditionDisplay(Condition, true, false);
    return head + QStringLiteral("<Bold>") + Text + QStringLiteral(" </Bold>");
}
