#include "ctlActionCSV.h"
#include "actions/ActionItem.h"
#include "actions/FileActionRecord.h"
#include "actions/clsActionCSV.h"
#include "actions/clsActionExcel.h"
#include "editors/EditorBoxes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

ctlActionCSV::ctlActionCSV(bool Excel, QWidget *parent) : ActionEditor(parent), Excel(Excel)
{
    setObjectName(Excel ? QStringLiteral("Excel") : QStringLiteral("CSV"));
    txtFileName = new QLineEdit(this);
    txtFileName->setMinimumWidth(320);
    btnFileName = new QPushButton(QStringLiteral("..."), this);
    btnFileName->setMaximumWidth(32);
    cmboFormat = new QComboBox(this);
    cmboFormat->addItems({QStringLiteral("ASCII"), QStringLiteral("Unicode"), QStringLiteral("UTF-8")});
    cmboTerminator = new QComboBox(this);
    cmboTerminator->setEditable(true);
    cmboTerminator->addItems({QStringLiteral("CRLF"), QStringLiteral("LF"), QStringLiteral("CR"), QStringLiteral("TAB"),
                              QStringLiteral("ESC")});
    FrameCSVSend = new QGroupBox(EditorText("CSVSEND", "Send The File"), this);
    FrameCSVSend->setCheckable(true);
    txtSendTo = new QLineEdit(FrameCSVSend);
    cmboSendFreq = new QComboBox(FrameCSVSend);
    chkSendClear = new QCheckBox(EditorText("CSVCLEAR", "Clear The File After Sending"), FrameCSVSend);
    connect(btnFileName, &QPushButton::clicked, this, [this] { PickFile(); });

    auto *file = new QHBoxLayout;
    file->addWidget(txtFileName, 1);
    file->addWidget(btnFileName);
    auto *send = new QFormLayout(FrameCSVSend);
    send->addRow(EditorText("CSVSENDTO", "Send To:"), txtSendTo);
    send->addRow(EditorText("CSVSENDFREQ", "Send:"), cmboSendFreq);
    send->addRow(chkSendClear);
    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(Excel ? EditorText("EXCELFILE", "Excel File:") : EditorText("CSVFILE", "CSV File:"), file);
    if (Excel) {
        cmboFormat->hide();
        cmboTerminator->hide();
    } else {
        form->addRow(EditorText("FILEFORMAT", "Format:"), cmboFormat);
        form->addRow(EditorText("LINETERMINATOR", "Line Terminator:"), cmboTerminator);
    }
    form->addRow(FrameCSVSend);
    connect(FrameCSVSend, &QGroupBox::clicked, this, [this] { Dirty = true; });
    WatchEdits();
}

void ctlActionCSV::PickFile()
{
    const QString filter = Excel ? EditorText("EXCELFILES", "Excel Files (*.xlsx)") : EditorText("CSVFILES", "CSV Files (*.csv)");
    QString chosen = QFileDialog::getSaveFileName(this, QString(), txtFileName->text(), filter, nullptr,
                                                  QFileDialog::DontConfirmOverwrite);
    if (chosen.isEmpty())
        return;
    if (!QFileInfo(chosen).fileName().contains(u'.'))
        chosen += Excel ? QStringLiteral(".xlsx") : QStringLiteral(".csv");
    txtFileName->setText(chosen);
    Dirty = true;
}

template <class Record> void ctlActionCSV::LoadFrom(const Record &Action)
{
    txtFileName->setText(Action.FileName);
    FrameCSVSend->setChecked(Action.Send);
    txtSendTo->setText(Action.SendTo);
    cmboSendFreq->clear();
    cmboSendFreq->addItems(FileActionRecord::SendFrequencyLabels());
    cmboSendFreq->setCurrentIndex(qBound(0, int(Action.SendFreq), int(cmboSendFreq->count()) - 1));
    chkSendClear->setChecked(Action.SendClear);
}

template <class Record> void ctlActionCSV::SaveTo(Record &Action) const
{
    Action.FileName = txtFileName->text().trimmed();
    Action.Send = FrameCSVSend->isChecked();
    Action.SendTo = txtSendTo->text().trimmed();
    Action.SendFreq = qint16(cmboSendFreq->currentIndex());
    Action.SendClear = chkSendClear->isChecked();
}

void ctlActionCSV::Load()
{
    if (Excel) {
        LoadFrom(*ThisAction->As<clsActionExcel>());
    } else {
        const auto *csv = ThisAction->As<clsActionCSV>();
        LoadFrom(*csv);
        cmboFormat->setCurrentIndex(qBound(0, int(csv->FileFormat), 2));
        cmboTerminator->setEditText(csv->LineTerminator);
    }
    Dirty = false;
}

bool ctlActionCSV::Save()
{
    if (txtFileName->text().trimmed().isEmpty())
        return Refuse(Excel ? EditorText("ERRORNOCSVFILE", "You must specify an Excel file name.")
                            : EditorText("ERRORNOCSVFILE", "You must specify a CSV file name."));
    if (Excel) {
        SaveTo(*ThisAction->As<clsActionExcel>());
        return true;
    }
    auto *csv = ThisAction->As<clsActionCSV>();
    SaveTo(*csv);
    csv->FileFormat = qint16(cmboFormat->currentIndex());
    csv->LineTerminator = cmboTerminator->currentText();
    return true;
}
