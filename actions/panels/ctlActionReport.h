#pragma once
#include "ActionEditor.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QPushButton;

// A Report: its name, the printer, and the export under chkExport. There is
// no report designer on this platform: the layout the action carries in
// Data is kept as it is, and btnEditReport says so.
class ctlActionReport : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionReport(QWidget *parent = nullptr);

    QLineEdit *txtName = nullptr;
    QComboBox *cmboAcPrinter = nullptr;
    QPushButton *btnEditReport = nullptr;
    QGroupBox *chkExport = nullptr;
    QComboBox *cmboExportFormat = nullptr;
    QCheckBox *chkDontPrint = nullptr;
    QLineEdit *txtExportFile = nullptr;
    QPushButton *btnExportFile = nullptr;
    QCheckBox *chkExportTempFile = nullptr;
    QComboBox *cmboAssignTo = nullptr;

    void Load() override;
    bool Save() override;

private:
    void PickExportFile();
};
