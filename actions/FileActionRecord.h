#pragma once
#include "ActionFragment.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <QString>
#include <QStringList>
#include <exception>

// What the CSV and Excel records share: a file that each message adds a row
// to, and the mailing of that file (Send, SendTo, SendFreq, SendClear). Each
// record keeps its members under the names of its fragment's tags; these
// functions write, read and describe the shared ones for either.
namespace FileActionRecord {

// The entries of SendFreq, by position; the first is the dictionary's
// CSVSAVE1.
QStringList SendFrequencyLabels();
// Seconds between two mailings of the file; 0 for every record.
qint64 SendIntervalSeconds(int SendFreq);

// The shared tags, in their written order; reading follows the same order
// because the reader only moves forward.
extern const MarkupTag IDTag, EnabledTag, FileNameTag, SendTag, SendClearTag, SendFreqTag, SendToTag;

template <class Record> QString Description(const Record &Action)
{
    QString text = ActionDescriptionHead(Action.ClassDesc(), Action.Condition)
                   + MarkupRun(Action.FileName, MarkupColors.ColorPrimary);
    if (Action.Send)
        text += MarkupRun(QStringLiteral(" Send To"), MarkupColors.ColorSecondary)
                + MarkupRun(Action.SendTo, MarkupColors.ColorSecondary);
    return text + QStringLiteral("</TextBlock>");
}

// The fragment: the head, FileName, the record's own tags (WriteOwn), the
// mailing and the condition.
template <class Record, class Own> QString XML(const Record &Action, Own WriteOwn)
{
    try {
        clsXML writer;
        AppendActionHead(writer, Action.ClassName(), Action.ID, Action.Enabled);
        writer.Append(Action.FileName, FileNameTag.Name());
        WriteOwn(writer);
        writer.Append(Action.Send, SendTag.Name());
        writer.Append(Action.SendClear, SendClearTag.Name());
        writer.Append(Action.SendFreq, SendFreqTag.Name());
        writer.Append(Action.SendTo, SendToTag.Name());
        AppendActionCondition(writer, Action.Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAction") + Action.ClassName() + QStringLiteral(".XML.Get"), error);
        return QString();
    }
}

// Reads in the order XML writes; ReadOwn reads the record's own tags.
template <class Record, class Own> void Read(clsXML &Reader, Record &Action, Own ReadOwn)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(Action.ID, IDTag);
        Reader.Extract(Action.Enabled, EnabledTag);
        Reader.Extract(Action.FileName, FileNameTag);
        ReadOwn(Reader);
        Reader.Extract(Action.Send, SendTag);
        Reader.Extract(Action.SendClear, SendClearTag);
        Reader.Extract(Action.SendFreq, SendFreqTag);
        Reader.Extract(Action.SendTo, SendToTag);
        ExtractActionCondition(Reader, Action.Condition);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAction") + Action.ClassName() + QStringLiteral(".XML.Let"), error);
    }
}

} // namespace FileActionRecord
