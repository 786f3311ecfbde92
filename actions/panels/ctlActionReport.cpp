#include "ctlActionReport.h"
#include "actions/ActionItem.h"
#include "actions/clsActionReport.h"
#include "editors/EditorBoxes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPrinterInfo>
#include <QPushButton>

namespace {

QString DefaultPrinter()
{
    return EditorText("DEFAULTPRINTER", "Default Printer");
}

} // namespace

ctlActionReport::ctlActionReport(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("Report"));
    txtName = new QLineEdit(this);
    txtName->setMinimumWidth(260);
    cmboAcPrinter = new QComboBox(this);
    cmboAcPrinter->setEditable(true);
    btnEditReport = new QPushButton(EditorText("EDITREPORT", "Edit Report..."), this);
    btnEditReport->setEnabled(false);
    btnEditReport->setToolTip(EditorText("NOREPORTDESIGNER",
                                         "This console has no report designer; the report's layout is kept as it is."));
    chkExport = new QGroupBox(EditorText("REPORTEXPORT", "Export The Report"), this);
    chkExport->setCheckable(true);
    cmboExportFormat = new QComboBox(chkExport);
    cmboExportFormat->addItems(clsActionReport::ExportFormats());
    chkDontPrint = new QCheckBox(EditorText("REPORTDONTPRINT", "Don't Print"), chkExport);
    txtExportFile = new QLineEdit(chkExport);
    btnExportFile = new QPushButton(QStringLiteral("..."), chkExport);
    btnExportFile->setMaximumWidth(32);
    chkExportTempFile = new QCheckBox(EditorText("REPORTTEMPFILE", "Export To A Temporary File"), chkExport);
    cmboAssignTo = new QComboBox(chkExport);
    auto *note = new QLabel(EditorText("REPORTPRINTERNOTE", "A network printer can only be reached when the %APPNAME% "
                                                            "service runs under a user who can reach it."),
                            this);
    note->setWordWrap(true);
    connect(chkExportTempFile, &QCheckBox::toggled, this, [this](bool On) {
        txtExportFile->setEnabled(!On);
        btnExportFile->setEnabled(!On);
    });
    connect(btnExportFile, &QPushButton::clicked, this, [this] { PickExportFile(); });
    connect(chkExport, &QGroupBox::clicked, this, [this] { Dirty = true; });

    auto *file = new QHBoxLayout;
    file->addWidget(txtExportFile, 1);
    file->addWidget(btnExportFile);
    auto *export_ = new QFormLayout(chkExport);
    export_->addRow(EditorText("REPORTFORMAT", "Format:"), cmboExportFormat);
    export_->addRow(chkDontPrint);
    export_->addRow(EditorText("REPORTFILE", "Export File:"), file);
    export_->addRow(chkExportTempFile);
    export_->addRow(EditorText("ASSIGNFILENAMETO", "Assign Filename To:"), cmboAssignTo);
    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(EditorText("REPORTNAME", "Report Name:"), txtName);
    form->addRow(EditorText("REPORTPRINTER", "Printer:"), cmboAcPrinter);
    form->addRow(QString(), btnEditReport);
    form->addRow(chkExport);
    form->addRow(note);
    WatchEdits();
}

void ctlActionReport::PickExportFile()
{
    const QString format = cmboExportFormat->currentText();
    const QString extension = clsActionReport::ExportExtensions().value(cmboExportFormat->currentIndex());
    const QString start = txtExportFile->text().isEmpty() ? EditorText("REPORTEXPORTNAME", "Report Export File")
                                                          : txtExportFile->text();
    const QString chosen = QFileDialog::getSaveFileName(this, QStringLiteral("Save ") + format + QStringLiteral(" As"),
                                                        start, format + QStringLiteral(" (*.") + extension + u')');
    if (chosen.isEmpty())
        return;
    txtExportFile->setText(chosen);
    Dirty = true;
}

void ctlActionReport::Load()
{
    const auto *action = ThisAction->As<clsActionReport>();
    txtName->setText(action->Name);
    cmboAcPrinter->clear();
    cmboAcPrinter->addItem(DefaultPrinter());
    cmboAcPrinter->addItems(QPrinterInfo::availablePrinterNames());
    cmboAcPrinter->setEditText(action->PrinterToUse.isEmpty() ? DefaultPrinter() : action->PrinterToUse);
    chkExport->setChecked(action->Export);
    cmboExportFormat->setCurrentIndex(qBound(0, int(action->ExportFormat), int(cmboExportFormat->count()) - 1));
    chkDontPrint->setChecked(action->ExportDontPrint);
    txtExportFile->setText(action->ExportFileName);
    chkExportTempFile->setChecked(action->ExportCreateTempFile);
    ListVariables(cmboAssignTo, action->ExportAssignFilenameTo);
    Dirty = false;
}

bool ctlActionReport::Save()
{
    if (chkExport->isChecked() && txtExportFile->text().trimmed().isEmpty() && !chkExportTempFile->isChecked())
        return Refuse(EditorText("ERRORNOEXPORTFILE", "You need to specify a report export file."));
    auto *action = ThisAction->As<clsActionReport>();
    action->Name = txtName->text().trimmed();
    const QString printer = cmboAcPrinter->currentText().trimmed();
    action->PrinterToUse = printer == DefaultPrinter() ? QString() : printer;
    action->Export = chkExport->isChecked();
    action->ExportFormat = qint16(cmboExportFormat->currentIndex());
    action->ExportDontPrint = chkDontPrint->isChecked();
    action->ExportFileName = txtExportFile->text().trimmed();
    action->ExportCreateTempFile = chkExportTempFile->isChecked();
    action->ExportAssignFilenameTo = cmboAssignTo->currentText().trimmed();
    return true;
}
