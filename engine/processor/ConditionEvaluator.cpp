#include "ConditionEvaluator.h"
#include "model/Condition.h"
#include "store/Tokens.h"

#include <optional>

namespace {

std::optional<double> AsNumber(const QString &Text)
{
    bool ok = false;
    const double value = Text.trimmed().toDouble(&ok);
    return ok ? std::optional<double>(value) : std::nullopt;
}

// Negative, zero or positive as Left stands before, with or after Right.
int Order(const QString &Left, const QString &Right)
{
    const auto left = AsNumber(Left);
    const auto right = AsNumber(Right);
    if (left && right)
        return *left < *right ? -1 : (*left > *right ? 1 : 0);
    return QString::compare(Left, Right, Qt::CaseInsensitive);
}

bool LengthIs(const QString &Left, const QString &Right, int Sign)
{
    const auto wanted = AsNumber(Right);
    if (!wanted)
        return false;
    const double length = Left.size();
    return Sign == 0 ? length == *wanted : (Sign < 0 ? length < *wanted : length > *wanted);
}

} // namespace

bool ConditionEvaluator::Compare(const QString &Left, const QString &Operator, const QString &Right, bool *Known)
{
    if (Known)
        *Known = true;
    const QString op = Operator.trimmed().toLower();
    if (op == u"=")
        return Order(Left, Right) == 0;
    if (op == u"<>")
        return Order(Left, Right) != 0;
    if (op == u"<")
        return Order(Left, Right) < 0;
    if (op == u">")
        return Order(Left, Right) > 0;
    if (op == u"<=")
        return Order(Left, Right) <= 0;
    if (op == u">=")
        return Order(Left, Right) >= 0;
    if (op == u"!")
        return Left.trimmed().isEmpty();
    if (op == u"^")
        return !Left.trimmed().isEmpty();
    if (op == u"?")
        return Left.contains(Right, Qt::CaseInsensitive);
    if (op == u"!?")
        return !Left.contains(Right, Qt::CaseInsensitive);
    if (op == u"s?")
        return Left.startsWith(Right, Qt::CaseInsensitive);
    if (op == u"len=")
        return LengthIs(Left, Right, 0);
    if (op == u"len<")
        return LengthIs(Left, Right, -1);
    if (op == u"len>")
        return LengthIs(Left, Right, 1);
    if (Known)
        *Known = false;
    return false;
}

ConditionEvaluator::Result ConditionEvaluator::Evaluate(const QString &Fragment)
{
    Result result;
    if (Fragment.trimmed().isEmpty())
        return result;
    const ConditionFragment condition = ReadCondition(Fragment);
    bool first = true;
    for (const ConditionLine &line : condition.Lines) {
        bool known = true;
        const bool holds = Compare(ExpandTokens(line.LeftSide), line.Operator, ExpandTokens(line.RightSide.trimmed()), &known);
        if (!known) {
            result.Holds = false;
            result.Problem = QStringLiteral("Unknown condition operator \"") + line.Operator + u'"';
            return result;
        }
        if (first)
            result.Holds = holds;
        else if (line.Joiner.trimmed().compare(QStringLiteral("Or"), Qt::CaseInsensitive) == 0)
            result.Holds = result.Holds || holds;
        else
            result.Holds = result.Holds && holds;
        first = false;
    }
    if (condition.ScriptEnabled && !condition.Script.trimmed().isEmpty()) {
        result.Holds = false;
        result.Problem = QStringLiteral("A condition script cannot run: the script engine is not available");
    }
    return result;
}
