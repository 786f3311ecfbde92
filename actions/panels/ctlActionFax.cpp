#include "ctlActionFax.h"
#include "actions/ActionItem.h"
#include "actions/clsActionFax.h"
#include "editors/EditorBoxes.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QTableWidget>

namespace {

// The cover page's values in grid order.
QList<QString *> CoverValues(clsActionFax &Action)
{
    return {&Action.FaxCompany,     &Action.FaxName,     &Action.FaxSubject,   &Action.FaxComments,
            &Action.FaxFromCompany, &Action.FaxFromName, &Action.FaxFromNumber};
}

} // namespace

ctlActionFax::ctlActionFax(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("Fax"));
    txtFaxTo = new QLineEdit(this);
    txtFaxTo->setMinimumWidth(320);
    txtFaxFiles = new QLineEdit(this);
    chkFaxOriginal = new QCheckBox(EditorText("FAXORIGINAL", "Fax The Original Message"), this);
    chkFaxReport = new QCheckBox(EditorText("FAXREPORT", "Print A Transmission Report"), this);
    chkFaxReportDontPrint = new QCheckBox(EditorText("FAXREPORTDONTPRINT", "Don't Print The Report"), this);
    txtFaxCoverPage = new QLineEdit(this);
    const QStringList rows{EditorText("GRIDFAX1", "To Company"),   EditorText("GRIDFAX2", "To Name"),
                           EditorText("GRIDFAX3", "Subject"),      EditorText("GRIDFAX4", "Comments"),
                           EditorText("GRIDFAX5", "From Company"), EditorText("GRIDFAX6", "From Name"),
                           EditorText("GRIDFAX7", "From Number")};
    GridFaxCover = new QTableWidget(int(rows.size()), 1, this);
    GridFaxCover->setVerticalHeaderLabels(rows);
    GridFaxCover->horizontalHeader()->hide();
    GridFaxCover->horizontalHeader()->setStretchLastSection(true);
    connect(GridFaxCover, &QTableWidget::cellChanged, this, [this] { Dirty = true; });
    auto *form = new QFormLayout(this);
    form->addRow(EditorText("FAXTO", "Fax Number:"), txtFaxTo);
    form->addRow(EditorText("FAXFILES", "Files To Fax:"), txtFaxFiles);
    form->addRow(chkFaxOriginal);
    form->addRow(chkFaxReport);
    form->addRow(chkFaxReportDontPrint);
    form->addRow(EditorText("FAXCOVERPAGE", "Cover Page:"), txtFaxCoverPage);
    form->addRow(GridFaxCover);
    WatchEdits();
}

void ctlActionFax::Load()
{
    auto *action = ThisAction->As<clsActionFax>();
    txtFaxTo->setText(action->FaxNumber);
    txtFaxFiles->setText(action->FaxFiles);
    chkFaxOriginal->setChecked(action->FaxIncoming);
    chkFaxReport->setChecked(action->FaxReport);
    chkFaxReportDontPrint->setChecked(action->FaxReportDontPrint);
    txtFaxCoverPage->setText(action->FaxCoverPage);
    const QSignalBlocker quiet(GridFaxCover);
    const QList<QString *> values = CoverValues(*action);
    for (int row = 0; row < values.size(); ++row)
        GridFaxCover->setItem(row, 0, new QTableWidgetItem(*values.at(row)));
    Dirty = false;
}

bool ctlActionFax::Save()
{
    auto *action = ThisAction->As<clsActionFax>();
    action->FaxNumber = txtFaxTo->text();
    action->FaxFiles = txtFaxFiles->text();
    action->FaxIncoming = chkFaxOriginal->isChecked();
    action->FaxReport = chkFaxReport->isChecked();
    action->FaxReportDontPrint = chkFaxReportDontPrint->isChecked();
    action->FaxCoverPage = txtFaxCoverPage->text();
    const QList<QString *> values = CoverValues(*action);
    for (int row = 0; row < values.size(); ++row) {
        const QTableWidgetItem *item = GridFaxCover->item(row, 0);
        *values.at(row) = item ? item->text() : QString();
    }
    return true;
}
