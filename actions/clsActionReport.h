#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

class clsXML;

// A report of the message's fields, printed or exported. The layout is
// kept as an opaque value (Data, base64): this server has no designer.
class clsActionReport
{
public:
    // Under a new ID unless one is given.
    explicit clsActionReport(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString PrinterToUse; // empty: the default printer
    QString Name;
    QString Data; // the layout's bytes as base64
    bool Export = false;
    qint16 ExportFormat = 0; // see ExportFormats
    QString ExportFileName;
    bool ExportDontPrint = true;
    bool ExportCreateTempFile = false;
    QString ExportAssignFilenameTo;

    QString ClassName() const { return QStringLiteral("Report"); }
    QString ClassDesc() const { return QStringLiteral("Run A Report"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);

    // The export formats in list order, and the extensions of their
    // temporary files.
    static QStringList ExportFormats();
    static QStringList ExportExtensions();
    // A new name in the data folder's Temp/ with the extension of ExportFormat.
    QString ExportTempFile() const;
};
