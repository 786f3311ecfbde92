#pragma once
#include <QDateTime>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QSpinBox;
class QTimeEdit;

// When a scheduled mail or SMS is sent: on a date and time, or an interval
// of days or minutes after the message; with or without the duplicate check.
class SchedulePanel : public QWidget
{
    Q_OBJECT
public:
    explicit SchedulePanel(QWidget *parent = nullptr);

    QDateEdit *txtSendDate = nullptr;
    QTimeEdit *txtSendTime = nullptr;
    QSpinBox *txtSendInterval = nullptr;
    QComboBox *cmboSendPeriod = nullptr; // "Days", "Minutes"
    QCheckBox *chkDuplicateCheck = nullptr;

    void Load(const QDateTime &ScheduleOn, qint16 SchedulePeriod, qint32 ScheduleInterval, bool ScheduleDeDup);
    QDateTime ScheduleOn() const;
    qint16 SchedulePeriod() const;
    qint32 ScheduleInterval() const;
    bool ScheduleDeDup() const;

signals:
    // Any edit by the user.
    void Edited();
};
