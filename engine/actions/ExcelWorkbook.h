#pragma once
#include <QList>
#include <QString>
#include <QVariant>

// The rows of a one-sheet .xlsx workbook: read with minizip, the zip library
// libxlsxwriter itself uses, and QXmlStreamReader; written with libxlsxwriter.
// (QuaZip must stay out of the process: its copy of minizip exports the same
// function names with other arguments, and libxlsxwriter's calls land in it.) A cell is a number (double),
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
    // Zip is minizip's unzFile.
    bool ReadSheetNames(void *Zip, QString *Sheet);
    bool ReadSharedStrings(void *Zip, QStringList *Strings);
    bool ReadSheet(void *Zip, const char *Entry, const QStringList &Strings);
};
