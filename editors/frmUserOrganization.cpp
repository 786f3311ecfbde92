#include "frmUserOrganization.h"
#include "EditorBoxes.h"
#include "foundation/Formatting.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "session/frmRemote.h"
#include "workbench/TaskDialog.h"
#include "workbench/WindowDictionary.h"

#include <QFormLayout>
#include <QHeaderView>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

constexpr int SpareRows = 5;

} // namespace

frmUserOrganization::frmUserOrganization(const clsUserOrganization *Organization, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmUserOrganization"));
    setWindowTitle(QStringLiteral("Organization"));
    if (Organization) {
        Edited.setXML(Organization->XML());
    } else {
        Edited.ID = NewUniqueID();
    }

    txtName = new QLineEdit(Edited.Name, this);
    txtName->setObjectName(QStringLiteral("txtName"));
    txtEmail = new QLineEdit(Edited.EmailAddress, this);
    txtEmail->setObjectName(QStringLiteral("txtEmail"));
    txtDomain = new QLineEdit(Edited.Domain, this);
    txtDomain->setObjectName(QStringLiteral("txtDomain"));
    txtMessagesDay = new QLineEdit(QString::number(Edited.MaxMessagesDay), this);
    txtMessagesDay->setObjectName(QStringLiteral("txtMessagesDay"));
    txtMessagesDay->setValidator(new QIntValidator(0, 2147483647, txtMessagesDay));
    txtMessagesMonth = new QLineEdit(QString::number(Edited.MaxMessagesMonth), this);
    txtMessagesMonth->setObjectName(QStringLiteral("txtMessagesMonth"));
    txtMessagesMonth->setValidator(new QIntValidator(0, 2147483647, txtMessagesMonth));
    lblCreatedOn = new QLabel(QLocale().toString(Edited.CreatedOn.date(), QLocale::LongFormat), this);
    lblCreatedOn->setObjectName(QStringLiteral("lblCreatedOn"));

    GridConstants = new QTableWidget(0, 2, this);
    GridConstants->setObjectName(QStringLiteral("GridConstants"));
    GridConstants->setHorizontalHeaderLabels({QStringLiteral("Constant Name"), QStringLiteral("Value")});
    GridConstants->horizontalHeader()->setStretchLastSection(true);
    GridConstants->horizontalHeader()->resizeSection(0, 180);
    GridConstants->verticalHeader()->hide();
    Edited.SplitConstants();
    GridConstants->setRowCount(Edited.NumConstants() + SpareRows);
    for (int i = 1; i <= Edited.NumConstants(); ++i) {
        GridConstants->setItem(i - 1, 0, new QTableWidgetItem(Edited.ConstantName(i)));
        GridConstants->setItem(i - 1, 1, new QTableWidgetItem(Edited.ConstantValue(i)));
    }

    btnOK = NamedButton(QStringLiteral("OK"), "btnOK", this);
    btnOK->setDefault(true);
    btnCancel = NamedButton(QStringLiteral("Cancel"), "btnCancel", this);

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Name"), txtName);
    form->addRow(QStringLiteral("Email Address"), txtEmail);
    form->addRow(QStringLiteral("Default Domain"), txtDomain);
    form->addRow(QStringLiteral("Maximum Messages Per Day"), txtMessagesDay);
    form->addRow(QStringLiteral("Maximum Messages Per Month"), txtMessagesMonth);
    form->addRow(QStringLiteral("Created On"), lblCreatedOn);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(new QLabel(QStringLiteral("Constants"), this));
    layout->addWidget(GridConstants, 1);
    layout->addLayout(ClosingButtons(btnOK, btnCancel));
    resize(520, 480);
    GetDDict(this);

    connect(btnOK, &QPushButton::clicked, this, [this] {
        if (Save())
            accept();
    });
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
}

QString frmUserOrganization::GridConstantsText() const
{
    QString text;
    for (int row = 0; row < GridConstants->rowCount(); ++row) {
        const QString name = GridConstants->item(row, 0) ? GridConstants->item(row, 0)->text().trimmed() : QString();
        if (name.isEmpty())
            continue;
        const QString value = GridConstants->item(row, 1) ? GridConstants->item(row, 1)->text() : QString();
        text += name + u'=' + value + u'\t';
    }
    return text;
}

bool frmUserOrganization::Save()
{
    if (txtName->text().trimmed().isEmpty()) {
        ShowTaskDialog(this, DictText("ENTERNAME", "Please enter a Name"), QString());
        return false;
    }
    Edited.Name = txtName->text().trimmed();
    Edited.EmailAddress = txtEmail->text().trimmed();
    Edited.Domain = txtDomain->text().trimmed();
    Edited.MaxMessagesDay = txtMessagesDay->text().toInt();
    Edited.MaxMessagesMonth = txtMessagesMonth->text().toInt();
    Edited.setConstants(GridConstantsText());
    if (!Remote().SendOrganization(Edited))
        return false;
    Remote().HTTPGet(Requests::GetOrganizations());
    return true;
}
