#include "SheetTable.h"

qsizetype SheetTable::HeaderIndex(int HeaderRow) const
{
    if (HeaderRow <= 0)
        return Rows.isEmpty() ? -1 : 0;
    for (qsizetype i = 0; i < Rows.size(); ++i) {
        if (Rows.at(i).Number == HeaderRow)
            return i;
    }
    return -1;
}

bool SheetTable::Blank(const QStringList &Cells)
{
    for (const QString &cell : Cells) {
        if (!cell.trimmed().isEmpty())
            return false;
    }
    return true;
}
