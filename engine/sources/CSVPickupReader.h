#pragma once
#include "SheetTable.h"
#include "SourceReader.h"

#include <QFileInfo>

// Takes the rows of CSV files and Excel workbooks (.xlsx, .xlsm) from a
// folder: the files that match the mask ("*.csv;*.xlsx" when empty), oldest
// first. The header row (CSVPickupHeaderRow, or the first row that is not
// blank) names the columns; every later row is one message whose body holds
// each column as "Name: value". A row's identity is the file's name, the
// row's number and a hash of its cells, so that rows added to a file that
// stays are taken when they come, once. A file is deleted only after all its
// rows are queued, and only when the account says so (CSVPickupDelete). A
// file that is not CSV or not a workbook stays, and the read says which and
// why. CSVPickupLastStatus tells what the last read came to.
class CSVPickupReader : public SourceReader
{
public:
    QString Source() const override { return QStringLiteral("CSV"); }
    SourceReadResult Read(SourceAccount &Account, MessageSink &Sink) override;

    int QuietMilliseconds = 2000;
    static constexpr int BatchMessages = 100;

private:
    static SheetTable Table(const QFileInfo &File, const SourceAccount &Account);
    static QString Identity(const QFileInfo &File, const SheetTable::Row &Row);
};
