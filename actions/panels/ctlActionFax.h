#pragma once
#include "ActionEditor.h"

class QCheckBox;
class QLineEdit;
class QTableWidget;

// A Fax action: number, files or the original message, the report, and the
// cover page with its values.
class ctlActionFax : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionFax(QWidget *parent = nullptr);

    QLineEdit *txtFaxTo = nullptr;
    QLineEdit *txtFaxFiles = nullptr;
    QCheckBox *chkFaxOriginal = nullptr;
    QCheckBox *chkFaxReport = nullptr;
    QCheckBox *chkFaxReportDontPrint = nullptr;
    QLineEdit *txtFaxCoverPage = nullptr;
    QTableWidget *GridFaxCover = nullptr; // a row per value of the cover page

    void Load() override;
    bool Save() override;
};
