#pragma once
#include "SheetTable.h"

#include <QByteArray>
#include <QChar>

// A CSV text read as RFC 4180 says: values in double quotes may hold the
// delimiter, line breaks and doubled quotes; records end at CR LF, LF or CR.
// The delimiter is the one of ",", ";", tab and "|" that the first line
// holds most often outside quotes. The text is UTF-8 (a byte order mark is
// skipped) or, when it is not valid UTF-8, Latin-1. Binary data or a quoted
// value never closed make it not CSV: the table's Problem says so.
class CSVText
{
public:
    static SheetTable Read(const QByteArray &Data);
    static QChar Delimiter(const QString &Text);
};
