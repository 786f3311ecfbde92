#pragma once
#include "foundation/Formatting.h"

#include <QString>

class clsXML;

// Faxes files or the original message to a number, with a cover page.
class clsActionFax
{
public:
    // Under a new ID unless one is given.
    explicit clsActionFax(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString FaxFiles;
    bool FaxIncoming = false;
    bool FaxReport = false;
    bool FaxReportDontPrint = false;
    QString FaxCoverPage;
    QString FaxNumber;
    QString FaxCompany;
    QString FaxName;
    QString FaxSubject;
    QString FaxComments;
    QString FaxFromCompany;
    QString FaxFromName;
    QString FaxFromNumber;

    QString ClassName() const { return QStringLiteral("Fax"); }
    QString ClassDesc() const { return QStringLiteral("Send A Fax"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
