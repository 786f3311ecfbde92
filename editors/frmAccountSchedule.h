#pragma once
#include <QDialog>

class QCheckBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTableWidget;
class QTimeEdit;
class clsAccount;

// When an account's source is read: every so many minutes, daily at one
// time, or daily at a list of times; on chosen weekdays. OK writes the
// account's schedule text, CheckEveryMins and AutoRun.
class frmAccountSchedule : public QDialog
{
    Q_OBJECT
public:
    static constexpr int TimeRows = 100;

    // Twitter: the account reads a Twitter feed, which is read at most every
    // ten minutes.
    frmAccountSchedule(clsAccount &Account, bool Twitter, QWidget *parent = nullptr);

    clsAccount &Account;
    bool Twitter = false;

    QRadioButton *optAt[3] = {};
    QLineEdit *txtEvery = nullptr;
    QTimeEdit *txtDailyAt = nullptr;
    QTableWidget *GridTimes = nullptr;
    QCheckBox *chkDay[7] = {};
    QCheckBox *chkAutoRun = nullptr;
    QPushButton *btnAutoRun = nullptr;
    QPushButton *btnOK = nullptr;
    QPushButton *btnCancel = nullptr;

    // The schedule text of the controls: "0" and minutes, "1" and a time, or
    // "2" and times; "|" and the day flags from Sunday.
    QString ScheduleText();
    // Stores the controls in the account and closes.
    void ButtonOK();

private:
    void UnCrunch();
    void ShowMode();
};
