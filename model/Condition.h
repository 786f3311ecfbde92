#pragma once
#include <QList>
#include <QString>

// The condition language of triggers and actions: the condition fragment, its
// readable text and the small markup (TextBlock, Run, Bold) that the rich list
// cells of the console render.

// The named colours of the markup, by role. The main window sets them when it
// opens; the members hold the colours it sets.
struct MarkupColorTable
{
    QString ColorKeyword = QStringLiteral("DarkRed");      // If, Then, Else, End If, logical actions
    QString ColorLeftSide = QStringLiteral("DarkBlue");    // left side of a comparison
    QString ColorOperator = QStringLiteral("Magenta");     // operator of a comparison
    QString ColorScript = QStringLiteral("FireBrick");     // "Script Returns True"
    QString ColorLabel = QStringLiteral("DarkMagenta");    // label names
    QString ColorPrimary = QStringLiteral("MediumBlue");   // the main value of an action
    QString ColorSecondary = QStringLiteral("DodgerBlue"); // a second value
    QString ColorOption = QStringLiteral("MediumPurple");  // switched options
    QString ColorComment = QStringLiteral("DarkGreen");    // comment text
    QString ColorAssign = QStringLiteral("DimGray");       // notes on assignment
};
extern MarkupColorTable MarkupColors;

// One row of a condition: Joiner is "And", "Or" or empty on the first row.
struct ConditionLine
{
    QString Joiner;
    QString LeftSide;
    QString Operator; // a key of ConditionOperators()
    QString RightSide;
};

// The parts of a condition fragment.
struct ConditionFragment
{
    QList<ConditionLine> Lines;
    bool ScriptEnabled = false;
    QString Script;
};

// The operator combo of the condition grid: "#key;label" pairs joined by "|",
// in the stored order.
QString ConditionOperators();

// The fragment: section Lines (written even when empty) with one Line
// "joiner|left|operator|right" for each row whose left side isn't empty, the
// right side trimmed; ScriptEnabled when on; Script when on and not empty.
QString ConditionXML(const ConditionFragment &Condition);
// The parts of a fragment. Empty Line tags are skipped; a Line with fewer than
// four "|" parts has the missing ones empty, parts behind the fourth are
// ignored.
ConditionFragment ReadCondition(const QString &Condition);

// The readable text of a condition fragment with its script, plain or as
// markup; "No Condition" for an empty fragment, empty text when the fragment
// holds neither a comparison nor a script.
QString ConditionDisplay(const QString &Condition, bool MarkUp, bool WithThen);

// The older form of a trigger's condition: comparisons as plain lines
// separated by LF, without "len" forms and script.
QString ConditionText(const QString &Condition, bool MarkUp);

// One blank and a coloured run of the escaped text, cut to 100 characters
// and "..." when longer; empty for an empty text.
QString MarkupRun(const QString &Text, const QString &Colour, bool Bold = false);

// Head of an action's list line: the TextBlock opening, the condition's markup
// without "Then" when there is a condition, and Text in bold. The caller adds
// its runs and "</TextBlock>".
QString ActionDescriptionHead(const QString &Text, const QString &Condition);
