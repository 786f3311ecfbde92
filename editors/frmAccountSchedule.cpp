#include "frmAccountSchedule.h"
#include "EditorBoxes.h"
#include "frmRunWith.h"
#include "model/clsAccount.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTimeEdit>
#include <QVBoxLayout>

namespace {

const QString TimeFormat = QStringLiteral("hh:mm");

QTime ReadTime(const QString &Text)
{
    const QString text = Text.trimmed();
    QTime time = QTime::fromString(text, QStringLiteral("h:mm"));
    if (!time.isValid())
        time = QTime::fromString(text, QStringLiteral("h:mm:ss"));
    return time;
}

} // namespace

frmAccountSchedule::frmAccountSchedule(clsAccount &Account, bool Twitter, QWidget *parent)
    : QDialog(parent), Account(Account), Twitter(Twitter)
{
    setObjectName(QStringLiteral("frmAccountSchedule"));
    setWindowTitle(EditorText("ACCOUNTSCHEDULETITLE", "Account Schedule"));
    optAt[0] = new QRadioButton(EditorText("SCHEDULEEVERY", "Check Every"), this);
    optAt[1] = new QRadioButton(EditorText("SCHEDULEDAILY", "Check Daily At"), this);
    optAt[2] = new QRadioButton(EditorText("SCHEDULETIMES", "Check At These Times"), this);
    txtEvery = new QLineEdit(this);
    txtEvery->setMaximumWidth(70);
    txtDailyAt = new QTimeEdit(this);
    txtDailyAt->setDisplayFormat(TimeFormat);
    GridTimes = new QTableWidget(TimeRows, 1, this);
    const QStringList head = EditorText("GRIDTIMES", ">No | Time").split(u'|');
    GridTimes->setHorizontalHeaderLabels({head.value(1).trimmed()});
    GridTimes->horizontalHeader()->setStretchLastSection(true);
    GridTimes->setMinimumHeight(160);
    const QLocale english(QLocale::English);
    for (int day = 0; day < 7; ++day)
        chkDay[day] = new QCheckBox(english.dayName(day == 0 ? 7 : day, QLocale::ShortFormat), this);
    chkAutoRun = new QCheckBox(EditorText("AUTORUN", "Auto Run With A Stored Message"), this);
    btnAutoRun = new QPushButton(EditorText("AUTORUNMESSAGE", "Message..."), this);
    btnOK = new QPushButton(EditorText("OK", "OK"), this);
    btnOK->setDefault(true);
    btnCancel = new QPushButton(EditorText("CANCEL", "Cancel"), this);
    for (QRadioButton *option : optAt)
        connect(option, &QRadioButton::toggled, this, &frmAccountSchedule::ShowMode);
    connect(chkAutoRun, &QCheckBox::toggled, btnAutoRun, &QWidget::setEnabled);
    connect(btnAutoRun, &QPushButton::clicked, this, [this] {
        frmRunWith runWith(this);
        runWith.ShowForm(&this->Account);
    });
    connect(btnOK, &QPushButton::clicked, this, &frmAccountSchedule::ButtonOK);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);

    auto *modes = new QGridLayout;
    modes->addWidget(optAt[0], 0, 0);
    auto *every = new QHBoxLayout;
    every->addWidget(txtEvery);
    every->addWidget(new QLabel(EditorText("MINUTES", "Minutes"), this));
    every->addStretch();
    modes->addLayout(every, 0, 1);
    modes->addWidget(optAt[1], 1, 0);
    modes->addWidget(txtDailyAt, 1, 1, Qt::AlignLeft);
    modes->addWidget(optAt[2], 2, 0, Qt::AlignTop);
    modes->addWidget(GridTimes, 2, 1);
    auto *days = new QHBoxLayout;
    for (QCheckBox *day : chkDay)
        days->addWidget(day);
    days->addStretch();
    auto *autoRun = new QHBoxLayout;
    autoRun->addWidget(chkAutoRun);
    autoRun->addWidget(btnAutoRun);
    autoRun->addStretch();
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(modes);
    layout->addWidget(new QLabel(EditorText("SCHEDULEDAYS", "On These Days:"), this));
    layout->addLayout(days);
    layout->addLayout(autoRun);
    layout->addLayout(buttons);
    UnCrunch();
}

void frmAccountSchedule::UnCrunch()
{
    QString schedule = Account.SCHEDULE;
    if (schedule.isEmpty())
        schedule = u'0' + QString::number(Account.CheckEveryMins) + QStringLiteral("|YYYYYYY");
    const qsizetype bar = schedule.indexOf(u'|');
    const int type = schedule.at(0) == u'|' ? 0 : qBound(0, schedule.left(1).toInt(), 2);
    const QString value = schedule.mid(1, bar < 0 ? -1 : bar - 1);
    const QString flags = bar < 0 ? QString() : schedule.mid(bar + 1);
    optAt[type]->setChecked(true);
    txtEvery->setText(type == 0 ? QString::number(value.toInt()) : QString::number(Account.CheckEveryMins));
    if (type == 1)
        txtDailyAt->setTime(ReadTime(value));
    if (type == 2) {
        const QStringList times = value.split(u',', Qt::SkipEmptyParts);
        for (int row = 0; row < times.size() && row < TimeRows; ++row)
            GridTimes->setItem(row, 0, new QTableWidgetItem(times[row].trimmed()));
    }
    for (int day = 0; day < 7; ++day)
        chkDay[day]->setChecked(flags.mid(day, 1) != QStringLiteral("N"));
    chkAutoRun->setChecked(Account.AutoRun);
    btnAutoRun->setEnabled(Account.AutoRun);
    ShowMode();
}

void frmAccountSchedule::ShowMode()
{
    txtEvery->setEnabled(optAt[0]->isChecked());
    txtDailyAt->setEnabled(optAt[1]->isChecked());
    GridTimes->setEnabled(optAt[2]->isChecked());
}

QString frmAccountSchedule::ScheduleText()
{
    QString text;
    if (optAt[0]->isChecked()) {
        int minutes = txtEvery->text().trimmed().toInt();
        if (minutes <= 0)
            minutes = 1;
        if (Twitter && minutes < 10) {
            WarningBox(this, EditorText("TWITTERMIN10", "The minimum schedule for Twitter Feeds is every 10 minutes."));
            minutes = 10;
        }
        txtEvery->setText(QString::number(minutes));
        text = u'0' + QString::number(minutes);
    } else if (optAt[1]->isChecked()) {
        text = u'1' + txtDailyAt->time().toString(TimeFormat);
    } else {
        QStringList times;
        for (int row = 0; row < GridTimes->rowCount(); ++row) {
            const QTableWidgetItem *cell = GridTimes->item(row, 0);
            const QTime time = cell ? ReadTime(cell->text()) : QTime();
            if (time.isValid() && !times.contains(time.toString(TimeFormat)))
                times << time.toString(TimeFormat);
        }
        text = u'2' + times.join(u',');
    }
    text += u'|';
    for (const QCheckBox *day : chkDay)
        text += day->isChecked() ? u'Y' : u'N';
    return text;
}

void frmAccountSchedule::ButtonOK()
{
    Account.SCHEDULE = ScheduleText();
    if (optAt[0]->isChecked())
        Account.CheckEveryMins = qint16(txtEvery->text().toInt());
    Account.AutoRun = chkAutoRun->isChecked();
    accept();
}
