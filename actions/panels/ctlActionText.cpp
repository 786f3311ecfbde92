#include "ctlActionText.h"
#include "DatabasePanel.h"
#include "actions/ActionItem.h"
#include "actions/clsActionText.h"
#include "editors/EditorBoxes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

ctlActionText::ctlActionText(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("TextFile"));
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
    chkAppend = new QCheckBox(EditorText("TEXTAPPEND", "Append To The File"), this);
    chkBackup = new QCheckBox(EditorText("TEXTBACKUP", "Make A Backup First"), this);
    txtText = DatabasePanel::StatementPane(this, false);
    cmboAssign = new QComboBox(this);
    cmboAssign->setEditable(true);
    connect(btnFileName, &QPushButton::clicked, this, [this] {
        const QString chosen = QFileDialog::getSaveFileName(this, QString(), txtFileName->text(),
                                                            EditorText("TEXTFILES", "Text Files (*.txt)"), nullptr,
                                                            QFileDialog::DontConfirmOverwrite);
        if (chosen.isEmpty())
            return;
        txtFileName->setText(QFileInfo(chosen).fileName().contains(u'.') ? chosen : chosen + QStringLiteral(".txt"));
        Dirty = true;
    });

    auto *file = new QHBoxLayout;
    file->addWidget(txtFileName, 1);
    file->addWidget(btnFileName);
    auto *writePage = new QWidget(this);
    auto *write = new QFormLayout(writePage);
    write->addRow(EditorText("TEXTFILE", "Text File:"), file);
    write->addRow(EditorText("FILEFORMAT", "Format:"), cmboFormat);
    write->addRow(EditorText("LINETERMINATOR", "Line Terminator:"), cmboTerminator);
    write->addRow(chkAppend);
    write->addRow(chkBackup);
    write->addRow(EditorText("TEXTWRITE", "Text To Write:"), txtText);
    auto *readPage = new QWidget(this);
    auto *read = new QFormLayout(readPage);
    read->addRow(EditorText("TEXTREADINTO", "Read File Into &Variable:"), cmboAssign);
    Tabs = new QTabWidget(this);
    Tabs->addTab(writePage, EditorText("TEXTTABWRITE", "Write"));
    Tabs->addTab(readPage, EditorText("TEXTTABREAD", "Read"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(Tabs);
    WatchEdits();
}

void ctlActionText::Load()
{
    const auto *action = ThisAction->As<clsActionText>();
    txtFileName->setText(action->FileName);
    cmboFormat->setCurrentIndex(qBound(0, int(action->Format), 2));
    cmboTerminator->setEditText(action->LineTerminator);
    chkAppend->setChecked(action->Append);
    chkBackup->setChecked(action->Backup);
    txtText->setPlainText(action->Text);
    ListVariables(cmboAssign, action->AssignTo);
    Tabs->setCurrentIndex(action->Text.isEmpty() && !action->AssignTo.isEmpty() ? TabRead : TabWrite);
    Dirty = false;
}

bool ctlActionText::Save()
{
    const QString file = txtFileName->text().trimmed();
    if (!file.contains(u'.'))
        return Refuse(EditorText("NOTEXTFILE", "You must specify a text file."));
    auto *action = ThisAction->As<clsActionText>();
    action->FileName = file;
    action->Format = qint16(cmboFormat->currentIndex());
    action->LineTerminator = cmboTerminator->currentText();
    action->Append = chkAppend->isChecked();
    action->Backup = chkBackup->isChecked();
    action->Text = txtText->toPlainText();
    action->AssignTo = cmboAssign->currentText().trimmed();
    return true;
}
