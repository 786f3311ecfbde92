#include "DataActionEditors.h"
#include "ActionEditors.h"
#include "ctlActionAZ.h"
#include "ctlActionCSV.h"
#include "ctlActionDB.h"
#include "ctlActionDBCustom.h"
#include "ctlActionDBToken.h"
#include "ctlActionReport.h"
#include "ctlActionText.h"

void RegisterDataActionEditors()
{
    RegisterActionEditor(QStringLiteral("DatabaseUpdate"), ControlMaker<ctlActionDB>());
    RegisterActionEditor(QStringLiteral("DatabaseUpdateCustom"), ControlMaker<ctlActionDBCustom>());
    RegisterActionEditor(QStringLiteral("Azure"), ControlMaker<ctlActionAZ>());
    RegisterActionEditor(QStringLiteral("CSV"), [](QWidget *Parent) -> ActionEditor * { return new ctlActionCSV(false, Parent); });
    RegisterActionEditor(QStringLiteral("Excel"), [](QWidget *Parent) -> ActionEditor * { return new ctlActionCSV(true, Parent); });
    RegisterActionEditor(QStringLiteral("TextFile"), ControlMaker<ctlActionText>());
    RegisterActionEditor(QStringLiteral("UpdateToken"), ControlMaker<ctlActionDBToken>());
    RegisterActionEditor(QStringLiteral("Report"), ControlMaker<ctlActionReport>());
}
