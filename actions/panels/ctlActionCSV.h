#pragma once
#include "ActionEditor.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QPushButton;

// A CSV or an Excel action: the file, for CSV its encoding and line
// terminator, and the frame FrameCSVSend that mails the file at a frequency
// and clears it afterwards. One control serves both kinds; Excel has no
// encoding or terminator.
class ctlActionCSV : public ActionEditor
{
    Q_OBJECT
public:
    ctlActionCSV(bool Excel, QWidget *parent = nullptr);

    const bool Excel;
    QLineEdit *txtFileName = nullptr;
    QPushButton *btnFileName = nullptr;
    QComboBox *cmboFormat = nullptr;
    QComboBox *cmboTerminator = nullptr;
    QGroupBox *FrameCSVSend = nullptr;
    QLineEdit *txtSendTo = nullptr;
    QComboBox *cmboSendFreq = nullptr;
    QCheckBox *chkSendClear = nullptr;

    void Load() override;
    bool Save() override;

private:
    template <class Record> void LoadFrom(const Record &Action);
    template <class Record> void SaveTo(Record &Action) const;
    void PickFile();
};
