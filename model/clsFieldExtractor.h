#pragma once
#include <QList>
#include <QString>
#include <QStringView>

class clsTriggerField;
class colFields;

// The extraction rules of a field: how its settings find a value in the
// subject or body of a message. The field editor's preview and the server's
// extraction both run through this class. Positions are 1-based; 0 means
// nothing was found.
//
// The subject and the body each keep their own last extract point, where a
// field that continues from the previous one starts searching.
class clsFieldExtractor
{
public:
    // One value found: the text, and where it stood in the text searched.
    struct FoundValue
    {
        QString Value;
        qint32 Position = 0;
        qint32 Length = 0;
    };

    // A repeating block ends after this many passes at the latest.
    static constexpr int MaxBlockPasses = 10000;

    QString Subject;
    QString Body;
    qint32 LastSubjectExtractPoint = 1;
    qint32 LastBodyExtractPoint = 1;

    // Looks for Expression in Text from Start. "*" finds the first character
    // above the blank; anything else is a regular expression, first match
    // only. The result is the match's start with WantMatchStart (and always
    // for the expression "."), otherwise the position just behind the match;
    // 0 when nothing matches or the expression does not compile.
    static qint32 Search(const QString &Text, const QString &Expression, qint32 Start, bool IgnoreCase,
                         bool WantMatchStart);

    // Both extract points back to the start, as for a new message.
    void Reset();
    // The values of one field from its text's extract point, which it moves:
    // at most one value, or one per pass of a repeating block.
    QList<FoundValue> Extract(const clsTriggerField &Field);
    // The preview of the field editor: from the start of the texts, replays
    // the searching fields before Current (all of them when Current is not in
    // the collection yet) to set the extract points, then extracts Current.
    QList<FoundValue> Preview(const colFields &Fields, const clsTriggerField &Current);

    // True for a field that finds its value in the text: enabled, neither a
    // built-in value nor a lookup.
    static bool Searches(const clsTriggerField &Field);

private:
    struct Pass
    {
        FoundValue Found;
        qint32 Point = 0;  // the last extract point after this value
        qint32 Resume = 0; // where the next pass of a block starts
    };

    static bool ExtractOnce(QStringView Text, const clsTriggerField &Field, qint32 Start, Pass &Result);
};
