#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QtGlobal>

class clsXML;

// Writes or appends a text to a file, with a backup if asked, and reads
// a file into a variable.
class clsActionText
{
public:
    // Under a new ID unless one is given.
    explicit clsActionText(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString FileName;
    bool Append = false;
    bool Backup = false;
    QString Text;
    qint16 Format = 0; // 0 ASCII, 1 Unicode, 2 UTF-8
    QString LineTerminator = QStringLiteral("CRLF");
    QString AssignTo;

    QString ClassName() const { return QStringLiteral("TextFile"); }
    QString ClassDesc() const { return QStringLiteral("Read/Write Text File"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
