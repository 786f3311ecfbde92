#include "FileActionRecord.h"
#include "foundation/cDDict.h"

namespace FileActionRecord {

const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag EnabledTag = QStringLiteral("Enabled");
const MarkupTag FileNameTag = QStringLiteral("FileName");
const MarkupTag SendTag = QStringLiteral("Send");
const MarkupTag SendClearTag = QStringLiteral("SendClear");
const MarkupTag SendFreqTag = QStringLiteral("SendFreq");
const MarkupTag SendToTag = QStringLiteral("SendTo");

QStringList SendFrequencyLabels()
{
    return {DDict().GetString(QStringLiteral("CSVSAVE1"), QStringLiteral("Every Record")), QStringLiteral("Every Hour"),
            QStringLiteral("Every Day"), QStringLiteral("Every Week")};
}

qint64 SendIntervalSeconds(int SendFreq)
{
    static const qint64 seconds[] = {0, 3600, 86400, 7 * 86400};
    return seconds[qBound(0, SendFreq, int(std::size(seconds)) - 1)];
}

} // namespace FileActionRecord
