#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QtGlobal>

class clsXML;

// Appends a row of the fields to an .xlsx workbook, and may mail it.
class clsActionExcel
{
public:
    // Under a new ID unless one is given.
    explicit clsActionExcel(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString FileName;
    bool Send = false;
    QString SendTo;
    qint16 SendFreq = 0; // a position of FileActionRecord::SendFrequencyLabels
    bool SendClear = false;

    QString ClassName() const { return QStringLiteral("Excel"); }
    QString ClassDesc() const { return QStringLiteral("Update Excel File"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
