#pragma once
#include <QList>
#include <QString>
#include <QVariant>

class QuaZip;

// The rows of a one-sheet .xlsx workbook: read with QuaZip and
// QXmlStreamReader, written with libxlsxwriter. A cell is a number (double),
// a text (QString) or empty (an invalid QVariant). Only values are kept:
// formulas leave their last result, formats are not carried over.
class ExcelWorkbook
{
public:
    using Row = QList<QVariant>;

    // Reads the sheet of the workbook at Path. False with LastError set when
    // the file is no workbook, or holds more than one sheet, whose others a
    // rewrite would lose.
    bool Read(const QString &Path);
    // Writes Rows as a new workbook in place of Path: written beside it
    // first, then moved over it, so that a failed write leaves the old one.
    bool Write(const QString &Path) const;

    QString SheetName = QStringLiteral("Sheet1");
    QList<Row> Rows;
    mutable QString LastError;

    // "A" 0, "Z" 25, "AA" 26: the column of a cell reference such as "AB12".
    static int ColumnOf(const QString &Reference);

private:
    bool ReadSheetNames(QuaZip &Zip, QString *Sheet);
    bool ReadSharedStrings(QuaZip &Zip, QStringList *Strings);
    bool ReadSheet(QuaZip &Zip, const QString &Entry, const QStringList &Strings);
};
