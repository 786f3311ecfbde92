#pragma once
#include "ActionEditor.h"

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLineEdit;
class QPlainTextEdit;

// A VCal action: where the appointment goes (a calendar server's URL with
// its credentials, or an e-mail address), and the event itself.
class ctlActionVCal : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionVCal(QWidget *parent = nullptr);

    QComboBox *cmboSendType = nullptr; // 0: to a URL (PostToURL), 1: mailed
    QLineEdit *txtPostTo = nullptr;
    QLineEdit *txtUsername = nullptr;
    QLineEdit *txtPassword = nullptr;
    QComboBox *cmboAuthentication = nullptr;
    QLineEdit *txtSummary = nullptr;
    QLineEdit *txtLocation = nullptr;
    QPlainTextEdit *txtDescription = nullptr;
    QLineEdit *txtAttendees = nullptr;
    QLineEdit *txtOrganizer = nullptr;
    QDateEdit *txtStartDate = nullptr;
    QComboBox *cmboStartTime = nullptr;
    QDateEdit *txtEndDate = nullptr;
    QComboBox *cmboEndTime = nullptr;
    QCheckBox *chkAllDayEvent = nullptr;
    QComboBox *cmboPriority = nullptr;
    QComboBox *cmboClassification = nullptr;
    QComboBox *cmboFreeBusy = nullptr;
    QLineEdit *txtCategories = nullptr;
    QLineEdit *txtRecurrence = nullptr;

    void Load() override;
    bool Save() override;

    // The times of the lists: "00:00", "00:30" ... "23:30".
    static QStringList HalfHours();
};
