#include "SchedulePanel.h"
#include "editors/EditorBoxes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QSpinBox>
#include <QTimeEdit>

SchedulePanel::SchedulePanel(QWidget *parent) : QWidget(parent)
{
    txtSendDate = new QDateEdit(this);
    txtSendDate->setCalendarPopup(true);
    txtSendDate->setDisplayFormat(QStringLiteral("dd MMM yyyy"));
    txtSendTime = new QTimeEdit(this);
    txtSendTime->setDisplayFormat(QStringLiteral("HH:mm"));
    txtSendInterval = new QSpinBox(this);
    txtSendInterval->setRange(0, 999999);
    cmboSendPeriod = new QComboBox(this);
    cmboSendPeriod->addItems({EditorText("SCHEDULEDAYS", "Days"), EditorText("SCHEDULEMINUTES", "Minutes")});
    chkDuplicateCheck = new QCheckBox(
        EditorText("SCHEDULEDEDUP", "Don't Schedule If The Same Message Is Already Waiting To Be Sent"), this);
    connect(txtSendDate, &QDateEdit::userDateChanged, this, &SchedulePanel::Edited);
    connect(txtSendTime, &QTimeEdit::userTimeChanged, this, &SchedulePanel::Edited);
    connect(txtSendInterval, &QSpinBox::valueChanged, this, &SchedulePanel::Edited);
    connect(cmboSendPeriod, &QComboBox::activated, this, &SchedulePanel::Edited);
    connect(chkDuplicateCheck, &QCheckBox::clicked, this, &SchedulePanel::Edited);
    auto *on = new QHBoxLayout;
    on->addWidget(txtSendDate);
    on->addWidget(txtSendTime);
    on->addStretch();
    auto *after = new QHBoxLayout;
    after->addWidget(txtSendInterval);
    after->addWidget(cmboSendPeriod);
    after->addStretch();
    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(EditorText("SCHEDULEON", "Send On:"), on);
    form->addRow(EditorText("SCHEDULEAFTER", "Or Send After (0 = Use Date):"), after);
    form->addRow(chkDuplicateCheck);
}

void SchedulePanel::Load(const QDateTime &ScheduleOn, qint16 SchedulePeriod, qint32 ScheduleInterval, bool ScheduleDeDup)
{
    const QDateTime on = ScheduleOn.isValid() ? ScheduleOn : QDateTime::currentDateTime();
    txtSendDate->setDate(on.date());
    txtSendTime->setTime(on.time());
    txtSendInterval->setValue(ScheduleInterval);
    cmboSendPeriod->setCurrentIndex(SchedulePeriod == 0 ? 0 : 1);
    chkDuplicateCheck->setChecked(ScheduleDeDup);
}

QDateTime SchedulePanel::ScheduleOn() const
{
    return QDateTime(txtSendDate->date(), txtSendTime->time());
}

qint16 SchedulePanel::SchedulePeriod() const
{
    return qint16(cmboSendPeriod->currentIndex());
}

qint32 SchedulePanel::ScheduleInterval() const
{
    return txtSendInterval->value();
}

bool SchedulePanel::ScheduleDeDup() const
{
    return chkDuplicateCheck->isChecked();
}
