#pragma once
#include <QList>
#include <QString>
#include <QStringList>

// The rows of a CSV file or of an Excel worksheet as the CSV and Excel pickup
// takes them: each row with its number in the file (from 1) and its cells
// as text, blank rows left out. Problem says why a file could not be read.
struct SheetTable
{
    struct Row
    {
        int Number = 0;
        QStringList Cells;
    };

    QList<Row> Rows;
    QString Problem;

    // The position in Rows of the header row: the row numbered HeaderRow, or
    // the first row when HeaderRow is 0; -1 when there is no such row.
    qsizetype HeaderIndex(int HeaderRow) const;
    // True when every cell of the cells is blank.
    static bool Blank(const QStringList &Cells);
};
