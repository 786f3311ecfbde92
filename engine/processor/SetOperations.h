#pragma once
#include <QString>

// The operations of the Set action, by the number stored in its fragment
// (clsActionSetVariable::OperationDesc). Operations 1 to 6 work on the
// variable's current value with the action's value as the operand
// (Increment and Decrement need none); the others transform the action's
// value. A value that does not suit the operation (a text to add to, a date
// that does not read) leaves the variable as it was and names the problem.
class SetOperations
{
public:
    struct Result
    {
        QString Value;
        QString Problem; // empty when the operation succeeded
    };

    static Result Apply(int Operation, const QString &Current, const QString &Value);

    // The parts of Apply that stand on their own.
    static QString WordCapitalize(const QString &Text);
    static QString HtmlToXml(const QString &Html);
    static QString QuotedPrintableEncode(const QString &Text);
    static QString QuotedPrintableDecode(const QString &Text);
};
