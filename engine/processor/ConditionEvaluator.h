#pragma once
#include <QString>

// Evaluates the condition fragments of triggers and actions against the
// current message (CurrentMessage()).
//
// Each line compares its left and right side, both with their tokens
// expanded, by the line's operator; the lines join in the order written,
// each joiner ("And", "Or") taking the result so far and the line's own,
// without precedence. Both sides compare as numbers when both read as
// numbers, otherwise as text without regard to case. An empty fragment, or
// one without lines, holds.
class ConditionEvaluator
{
public:
    // The outcome, and when the condition cannot be evaluated the reason
    // (a condition script, which has no engine to run it; an unknown
    // operator). A condition that cannot be evaluated does not hold.
    struct Result
    {
        bool Holds = true;
        QString Problem;
    };

    static Result Evaluate(const QString &Fragment);
    // One comparison of already expanded sides; false with Known false for
    // an operator that is not one of the language's.
    static bool Compare(const QString &Left, const QString &Operator, const QString &Right, bool *Known = nullptr);
};
