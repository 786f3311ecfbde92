#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QtGlobal>

class clsXML;

// Appends a row of the fields to a CSV file, and may mail the file.
class clsActionCSV
{
public:
    // Under a new ID unless one is given.
    explicit clsActionCSV(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString FileName;
    qint16 FileFormat = 0; // 0 ASCII, 1 Unicode, 2 UTF-8
    QString LineTerminator = QStringLiteral("CRLF"); // "CRLF", "LF", "CR", "TAB", "ESC" or a typed text
    bool Send = false;
    QString SendTo;
    qint16 SendFreq = 0; // a position of FileActionRecord::SendFrequencyLabels
    bool SendClear = false;

    QString ClassName() const { return QStringLiteral("CSV"); }
    QString ClassDesc() const { return QStringLiteral("Update CSV File"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
