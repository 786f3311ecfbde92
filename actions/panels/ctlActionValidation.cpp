#include "ctlActionValidation.h"
#include "actions/ActionItem.h"
#include "actions/clsActionValidation.h"
#include "editors/EditorBoxes.h"
#include "foundation/GlobalBlock.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTableWidget>
#include <QUrl>
#include <QVBoxLayout>

namespace {

QString PageAddress()
{
    QString base = Global.Settings.WebServicesURL.trimmed();
    if (!base.endsWith(u'/'))
        base += u'/';
    return base + QStringLiteral("validate.aspx");
}

QString OrDefault(const QString &Value, const QString &Default)
{
    return Value.isEmpty() ? Default : Value;
}

QString Cell(const QTableWidget *Grid, int Row, int Column)
{
    const QTableWidgetItem *item = Grid->item(Row, Column);
    return item ? item->text().trimmed() : QString();
}

} // namespace

QString ctlActionValidation::LinkMarkup()
{
    return QStringLiteral("<TextBlock><Hyperlink Click='Hyperlink_Click'>") + PageAddress()
        + QStringLiteral("?id=%id%</Hyperlink></TextBlock>");
}

ctlActionValidation::ctlActionValidation(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("Validation"));
    txtFrom = new QLineEdit(this);
    txtTo = new QLineEdit(this);
    txtTo->setMinimumWidth(320);
    txtSubject = new QLineEdit(this);
    txtBody = new QPlainTextEdit(this);
    txtBody->setMaximumHeight(100);
    chkEmail = new QGroupBox(EditorText("VALIDATIONEMAIL", "Send A Validation Request Email"), this);
    chkEmail->setCheckable(true);
    connect(chkEmail, &QGroupBox::clicked, this, [this] { Dirty = true; });
    auto *mail = new QFormLayout(chkEmail);
    mail->addRow(EditorText("MSGFROM", "From:"), txtFrom);
    mail->addRow(EditorText("MSGTO", "To:"), txtTo);
    mail->addRow(EditorText("MSGSUBJECT", "Subject:"), txtSubject);
    mail->addRow(EditorText("MSGBODYTEXT", "Text"), txtBody);

    txtMaxWait = new QSpinBox(this);
    txtMaxWait->setRange(0, 5256000);
    txtMaxWait->setSuffix(EditorText("VALIDATIONMINUTES", " Minutes"));
    connect(txtMaxWait, &QSpinBox::valueChanged, this, [this] { Dirty = true; });
    cmboTimeOut = new QComboBox(this);
    cmboTimeOut->addItems(clsActionValidation::TimeOutNames());
    txtConfirmation = new QPlainTextEdit(this);
    txtConfirmation->setMaximumHeight(80);
    chkYesNo = new QCheckBox(EditorText("VALIDATIONYESNO", "Show Yes And No Buttons"), this);
    GridFields = new QTableWidget(1, SurveyColumns, this);
    GridFields->setHorizontalHeaderLabels({EditorText("SURVEYNAME", "Name"), EditorText("SURVEYTYPE", "Type"),
                                           EditorText("SURVEYASSIGN", "Assign To"),
                                           EditorText("SURVEYPROMPT", "Prompt")});
    GridFields->horizontalHeader()->setStretchLastSection(true);
    GridFields->setMaximumHeight(120);
    connect(GridFields, &QTableWidget::cellChanged, this, [this](int Row) {
        Dirty = true;
        if (Row == GridFields->rowCount() - 1)
            GridFields->insertRow(GridFields->rowCount());
    });
    lblLink = new QLabel(this);
    lblLink->setTextFormat(Qt::RichText);
    lblLink->setText(QStringLiteral("<a href=\"preview\">") + (PageAddress() + QStringLiteral("?id=%id%")).toHtmlEscaped()
                     + QStringLiteral("</a>"));
    connect(lblLink, &QLabel::linkActivated, this,
            [] { QDesktopServices::openUrl(QUrl(PageAddress() + QStringLiteral("?id=test"))); });

    auto *page = new QFormLayout;
    page->addRow(EditorText("VALIDATIONWAIT", "Wait For:"), txtMaxWait);
    page->addRow(EditorText("VALIDATIONTHEN", "Then:"), cmboTimeOut);
    page->addRow(EditorText("VALIDATIONQUESTION", "Question (HTML):"), txtConfirmation);
    page->addRow(chkYesNo);
    page->addRow(EditorText("VALIDATIONSURVEY", "Survey:"), GridFields);
    page->addRow(EditorText("VALIDATIONLINK", "Validation Page:"), lblLink);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(chkEmail);
    layout->addLayout(page);
    WatchEdits();
}

void ctlActionValidation::Load()
{
    const auto *action = ThisAction->As<clsActionValidation>();
    chkEmail->setChecked(action->SendEmail);
    txtFrom->setText(action->FromAddress);
    txtTo->setText(action->SendTo);
    txtSubject->setText(OrDefault(action->Subject, clsActionValidation::DefaultSubject()));
    txtBody->setPlainText(OrDefault(action->MessageText, clsActionValidation::DefaultMessageText()));
    txtConfirmation->setPlainText(OrDefault(action->ConfirmationHTML, clsActionValidation::DefaultConfirmationHTML()));
    txtMaxWait->setValue(action->MaxWaitFor);
    cmboTimeOut->setCurrentIndex(qBound(0, int(action->TimeOutAction), cmboTimeOut->count() - 1));
    chkYesNo->setChecked(action->ShowYesNoButtons);
    const auto fields = clsActionValidation::ReadSurveyFields(action->SurveyFieldsXML);
    const QSignalBlocker quiet(GridFields);
    GridFields->setRowCount(int(fields.size()) + 1);
    for (int row = 0; row < fields.size(); ++row) {
        const auto &field = fields.at(row);
        const QString values[SurveyColumns] = {field.Name, field.Type, field.AssignTo, field.Prompt};
        for (int column = 0; column < SurveyColumns; ++column)
            GridFields->setItem(row, column, new QTableWidgetItem(values[column]));
    }
    Dirty = false;
}

bool ctlActionValidation::Save()
{
    if (chkEmail->isChecked()) {
        if (txtTo->text().trimmed().isEmpty())
            return Refuse(EditorText("ERRORNOTOADDRESS", "You must specify a To address"));
        if (!txtBody->toPlainText().contains(clsActionValidation::URLMarker(), Qt::CaseInsensitive))
            return Refuse(EditorText("VALIDATIONNOMARKER", "The body text must contain the %msg_validationurl% marker"));
    }
    QList<clsActionValidation::SurveyField> fields;
    for (int row = 0; row < GridFields->rowCount(); ++row) {
        const clsActionValidation::SurveyField field{Cell(GridFields, row, ColumnName), Cell(GridFields, row, ColumnType),
                                                     Cell(GridFields, row, ColumnAssignTo),
                                                     Cell(GridFields, row, ColumnPrompt)};
        if (!field.Name.isEmpty() || !field.Prompt.isEmpty())
            fields << field;
    }
    auto *action = ThisAction->As<clsActionValidation>();
    action->SendEmail = chkEmail->isChecked();
    action->FromAddress = txtFrom->text();
    action->SendTo = txtTo->text();
    action->Subject = txtSubject->text();
    action->MessageText = txtBody->toPlainText();
    action->MaxWaitFor = txtMaxWait->value();
    action->TimeOutAction = qint16(cmboTimeOut->currentIndex());
    action->ConfirmationHTML = txtConfirmation->toPlainText();
    action->ShowYesNoButtons = chkYesNo->isChecked();
    action->SurveyFieldsXML = clsActionValidation::WriteSurveyFields(fields);
    return true;
}
