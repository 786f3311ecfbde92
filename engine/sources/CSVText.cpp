#include "CSVText.h"

#include <QStringDecoder>

namespace
{
QString Decoded(const QByteArray &Data)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8.decode(Data);
    if (utf8.hasError())
        return QString::fromLatin1(Data);
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    return text;
}
}

QChar CSVText::Delimiter(const QString &Text)
{
    const QString candidates = QStringLiteral(",;\t|");
    int counts[4] = {0, 0, 0, 0};
    bool quoted = false;
    for (const QChar c : Text) {
        if (c == u'"')
            quoted = !quoted;
        else if (!quoted && (c == u'\n' || c == u'\r'))
            break;
        else if (!quoted && candidates.contains(c))
            ++counts[candidates.indexOf(c)];
    }
    qsizetype best = 0;
    for (qsizetype i = 1; i < candidates.size(); ++i) {
        if (counts[i] > counts[best])
            best = i;
    }
    return candidates.at(best);
}

SheetTable CSVText::Read(const QByteArray &Data)
{
    SheetTable table;
    if (Data.contains('\0')) {
        table.Problem = QStringLiteral("it holds binary data, not text");
        return table;
    }
    const QString text = Decoded(Data);
    qsizetype first = 0;
    while (first < text.size() && (text.at(first) == u'\r' || text.at(first) == u'\n'))
        ++first;
    const QChar delimiter = Delimiter(text.mid(first));

    QStringList cells;
    QString cell;
    int record = 1;
    int line = 1;
    auto endRecord = [&]() {
        cells << cell;
        cell.clear();
        if (!SheetTable::Blank(cells))
            table.Rows.append({record, cells});
        cells.clear();
        ++record;
    };
    qsizetype i = 0;
    bool atFieldStart = true;
    while (i < text.size()) {
        const QChar c = text.at(i);
        if (atFieldStart && c == u'"') {
            const int opened = line;
            ++i;
            bool closed = false;
            while (i < text.size()) {
                const QChar q = text.at(i);
                if (q == u'"') {
                    if (i + 1 < text.size() && text.at(i + 1) == u'"') {
                        cell += u'"';
                        i += 2;
                        continue;
                    }
                    closed = true;
                    ++i;
                    break;
                }
                if (q == u'\n')
                    ++line;
                cell += q;
                ++i;
            }
            if (!closed) {
                table.Rows.clear();
                table.Problem = QStringLiteral("a quoted value that begins on line %1 is never closed").arg(opened);
                return table;
            }
            atFieldStart = false;
            continue;
        }
        if (c == delimiter) {
            cells << cell;
            cell.clear();
            atFieldStart = true;
        } else if (c == u'\r' || c == u'\n') {
            if (c == u'\r' && i + 1 < text.size() && text.at(i + 1) == u'\n')
                ++i;
            ++line;
            endRecord();
            atFieldStart = true;
        } else {
            cell += c;
            atFieldStart = false;
        }
        ++i;
    }
    if (!cell.isEmpty() || !cells.isEmpty())
        endRecord();
    return table;
}
