#pragma once
#include "SheetTable.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>


// An Excel workbook (.xlsx, the zipped XML of Office Open XML) read for the
// CSV and Excel pickup: the worksheet of the given name, or the first when
// the name is empty, as rows of text. Shared and inline strings are
// resolved; numbers, booleans and formula results are their stored text.
// A Problem says what is wrong of the file ("is not an Excel workbook ...").
class XlsxWorkbook
{
public:
    static SheetTable Read(const QString &Path, const QString &WorkSheet);

private:
    static bool Entry(void *Zip, const QString &Name, QByteArray &Data);
    // The sheet's part in the package ("xl/worksheets/sheet1.xml"); empty,
    // with Problem set, when there is no such sheet.
    static QString SheetPart(void *Zip, const QString &WorkSheet, QString &Problem);
    static QStringList SharedStrings(const QByteArray &Xml);
    static SheetTable Rows(const QByteArray &Xml, const QStringList &Shared);
    // "C7" -> 2 (from 0); -1 when the reference has no column letters.
    static int Column(const QString &Reference);
};
