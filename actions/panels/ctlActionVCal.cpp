#include "ctlActionVCal.h"
#include "actions/ActionItem.h"
#include "actions/clsActionVCal.h"
#include "editors/EditorBoxes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>

namespace {

const QString StoredDate = QStringLiteral("yyyy-MM-dd");

QComboBox *TimeList(QWidget *Parent)
{
    auto *list = new QComboBox(Parent);
    list->setEditable(true);
    list->addItems(ctlActionVCal::HalfHours());
    return list;
}

QDateEdit *DatePicker(QWidget *Parent)
{
    auto *picker = new QDateEdit(Parent);
    picker->setCalendarPopup(true);
    picker->setDisplayFormat(QStringLiteral("dd MMM yyyy"));
    return picker;
}

void ShowDate(QDateEdit *Picker, const QString &Stored)
{
    const QDate date = QDate::fromString(Stored, StoredDate);
    Picker->setDate(date.isValid() ? date : QDate::currentDate());
}

} // namespace

QStringList ctlActionVCal::HalfHours()
{
    QStringList times;
    for (int hour = 0; hour < 24; ++hour)
        times << QStringLiteral("%1:00").arg(hour, 2, 10, QLatin1Char('0'))
              << QStringLiteral("%1:30").arg(hour, 2, 10, QLatin1Char('0'));
    return times;
}

ctlActionVCal::ctlActionVCal(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("VCal"));
    cmboSendType = new QComboBox(this);
    cmboSendType->addItems(
        {EditorText("VCALSENDTYPE1", "Send Directly To An iCalendar Calendar Server (Specify The URL)"),
         EditorText("VCALSENDTYPE2", "Send To Email Recipient As iCalendar Attachment (Specify The Email Address)")});
    txtPostTo = new QLineEdit(this);
    txtUsername = new QLineEdit(this);
    txtPassword = new QLineEdit(this);
    txtPassword->setEchoMode(QLineEdit::Password);
    cmboAuthentication = new QComboBox(this);
    cmboAuthentication->addItems(clsActionVCal::AuthenticationNames());
    txtSummary = new QLineEdit(this);
    txtLocation = new QLineEdit(this);
    txtDescription = new QPlainTextEdit(this);
    txtDescription->setMaximumHeight(80);
    txtAttendees = new QLineEdit(this);
    txtOrganizer = new QLineEdit(this);
    txtStartDate = DatePicker(this);
    cmboStartTime = TimeList(this);
    txtEndDate = DatePicker(this);
    cmboEndTime = TimeList(this);
    chkAllDayEvent = new QCheckBox(EditorText("VCALALLDAY", "All Day Event"), this);
    cmboPriority = new QComboBox(this);
    cmboPriority->addItems(clsActionVCal::PriorityNames());
    cmboClassification = new QComboBox(this);
    cmboClassification->addItems(clsActionVCal::ClassificationNames());
    cmboFreeBusy = new QComboBox(this);
    cmboFreeBusy->addItems(clsActionVCal::FreeBusyNames());
    txtCategories = new QLineEdit(this);
    txtRecurrence = new QLineEdit(this);
    connect(cmboSendType, &QComboBox::currentIndexChanged, this, [this](int Type) {
        for (QWidget *credential : {static_cast<QWidget *>(txtUsername), static_cast<QWidget *>(txtPassword),
                                    static_cast<QWidget *>(cmboAuthentication)})
            credential->setEnabled(Type == 0);
    });
    connect(chkAllDayEvent, &QCheckBox::toggled, this, [this](bool AllDay) {
        cmboStartTime->setEnabled(!AllDay);
        cmboEndTime->setEnabled(!AllDay);
    });
    for (QDateEdit *picker : {txtStartDate, txtEndDate})
        connect(picker, &QDateEdit::dateChanged, this, [this] { Dirty = true; });

    const auto pair = [this](QWidget *Left, QWidget *Right) {
        auto *row = new QHBoxLayout;
        row->addWidget(Left);
        row->addWidget(Right);
        row->addStretch();
        return row;
    };
    auto *form = new QFormLayout(this);
    form->addRow(EditorText("VCALSENDTYPE", "Send:"), cmboSendType);
    form->addRow(EditorText("VCALPOSTTO", "URL Or Email Address:"), txtPostTo);
    form->addRow(EditorText("VCALUSER", "User Name:"), txtUsername);
    form->addRow(EditorText("VCALPASSWORD", "Password:"), txtPassword);
    form->addRow(EditorText("VCALAUTH", "Authentication:"), cmboAuthentication);
    form->addRow(EditorText("VCALSUMMARY", "Summary:"), txtSummary);
    form->addRow(EditorText("VCALLOCATION", "Location:"), txtLocation);
    form->addRow(EditorText("VCALDESCRIPTION", "Description:"), txtDescription);
    form->addRow(EditorText("VCALATTENDEES", "Attendees:"), txtAttendees);
    form->addRow(EditorText("VCALORGANIZER", "Organizer:"), txtOrganizer);
    form->addRow(EditorText("VCALSTART", "Start:"), pair(txtStartDate, cmboStartTime));
    form->addRow(EditorText("VCALEND", "End:"), pair(txtEndDate, cmboEndTime));
    form->addRow(chkAllDayEvent);
    form->addRow(EditorText("VCALPRIORITY", "Priority:"), cmboPriority);
    form->addRow(EditorText("VCALCLASS", "Classification:"), cmboClassification);
    form->addRow(EditorText("VCALFREEBUSY", "Show Time As:"), cmboFreeBusy);
    form->addRow(EditorText("VCALCATEGORIES", "Categories:"), txtCategories);
    form->addRow(EditorText("VCALRECURRENCE", "Recurrence:"), txtRecurrence);
    WatchEdits();
}

void ctlActionVCal::Load()
{
    const auto *action = ThisAction->As<clsActionVCal>();
    cmboSendType->setCurrentIndex(action->PostToURL ? 0 : 1);
    txtPostTo->setText(action->PostTo);
    txtUsername->setText(action->Username);
    txtPassword->setText(action->Password);
    cmboAuthentication->setCurrentIndex(qBound(0, int(action->Authentication), cmboAuthentication->count() - 1));
    txtSummary->setText(action->Summary);
    txtLocation->setText(action->Location);
    txtDescription->setPlainText(action->Description);
    txtAttendees->setText(action->Attendees);
    txtOrganizer->setText(action->Organizer);
    ShowDate(txtStartDate, action->StartDate);
    ShowDate(txtEndDate, action->EndDate);
    cmboStartTime->setEditText(action->StartTime);
    cmboEndTime->setEditText(action->EndTime);
    chkAllDayEvent->setChecked(action->AllDayEvent);
    cmboPriority->setCurrentIndex(qBound(0, int(action->Priority), 2));
    cmboClassification->setCurrentIndex(qMax(0, cmboClassification->findText(action->Classification)));
    cmboFreeBusy->setCurrentIndex(qMax(0, cmboFreeBusy->findText(action->EventType)));
    txtCategories->setText(action->Categories);
    txtRecurrence->setText(action->Recurrence);
    Dirty = false;
}

bool ctlActionVCal::Save()
{
    if (txtAttendees->text().trimmed().isEmpty())
        return Refuse(EditorText("VCALERROR2", "You must specify at least 1 attendee"));
    if (txtPostTo->text().trimmed().isEmpty())
        return Refuse(EditorText("VCALERROR1", "You must specify a post to value (URL or Email Address)"));
    auto *action = ThisAction->As<clsActionVCal>();
    action->PostToURL = cmboSendType->currentIndex() == 0;
    action->PostTo = txtPostTo->text().trimmed();
    action->Username = txtUsername->text();
    action->Password = txtPassword->text();
    action->Authentication = qint16(cmboAuthentication->currentIndex());
    action->Summary = txtSummary->text();
    action->Location = txtLocation->text();
    action->Description = txtDescription->toPlainText();
    action->Attendees = txtAttendees->text();
    action->Organizer = txtOrganizer->text();
    action->StartDate = txtStartDate->date().toString(StoredDate);
    action->EndDate = txtEndDate->date().toString(StoredDate);
    action->StartTime = cmboStartTime->currentText();
    action->EndTime = cmboEndTime->currentText();
    action->AllDayEvent = chkAllDayEvent->isChecked();
    action->Priority = qint16(cmboPriority->currentIndex());
    action->Classification = cmboClassification->currentText();
    action->EventType = cmboFreeBusy->currentText();
    action->Categories = txtCategories->text();
    action->Recurrence = txtRecurrence->text();
    return true;
}
