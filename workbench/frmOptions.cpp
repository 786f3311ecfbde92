#include "frmOptions.h"
#include "ServerCommand.h"
#include "TaskDialog.h"
#include "WindowDictionary.h"
#include "foundation/GlobalBlock.h"
#include "foundation/GlobalSettings.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIntValidator>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <iterator>
#include <memory>

namespace {

QLineEdit *NumberBox(qint16 Value, QWidget *Parent)
{
    auto *box = new QLineEdit(QString::number(Value), Parent);
    box->setValidator(new QIntValidator(0, 32767, box));
    return box;
}

QLineEdit *SecretBox(const QString &Value, QWidget *Parent)
{
    auto *box = new QLineEdit(Value, Parent);
    box->setEchoMode(QLineEdit::Password);
    return box;
}

QPushButton *Button(const QString &Caption, QWidget *Parent)
{
    return new QPushButton(Caption, Parent);
}

} // namespace

frmOptions::frmOptions(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmOptions"));
    setWindowTitle(Global.ProductName + QStringLiteral(" Options"));
    auto *tabs = new QTabWidget(this);
    tabs->addTab(MakeGeneralTab(), QStringLiteral("General"));
    tabs->addTab(MakeLoggingTab(), QStringLiteral("Logging"));
    tabs->addTab(MakeStoreTab(), QStringLiteral("Message Store"));
    tabs->addTab(MakeFirewallTab(), QStringLiteral("Firewall"));
    tabs->addTab(MakeServicesTab(), QStringLiteral("SMS && Fax"));
    tabs->addTab(MakeOrganizationsTab(), QStringLiteral("Organizations"));
    btnOK = Button(QStringLiteral("OK"), this);
    btnOK->setDefault(true);
    btnCancel = Button(QStringLiteral("Cancel"), this);
    btnHelp = Button(QStringLiteral("Help"), this);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(btnHelp);
    buttons->addStretch(1);
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(tabs, 1);
    layout->addLayout(buttons);
    resize(620, 480);

    Load();
    GetDDict(this);

    connect(btnOK, &QPushButton::clicked, this, [this] {
        if (ButtonOK())
            accept();
    });
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(btnHelp, &QPushButton::clicked, this, [] {
        QDesktopServices::openUrl(QUrl(QStringLiteral("https://www.") + Global.AppDomain + QStringLiteral("/help/Program_Options.htm")));
    });
    for (QCheckBox *box : {chkLog, chkDeleteLog, chkDeleteAfter, chkMessageStoreAzure})
        connect(box, &QCheckBox::toggled, this, &frmOptions::EnableControls);
    connect(cmboFWtype, &QComboBox::currentIndexChanged, this, &frmOptions::EnableControls);
    connect(btnSendTest, &QPushButton::clicked, this, &frmOptions::SendTest);
    connect(btnWebServicesTest, &QPushButton::clicked, this,
            [this] { QDesktopServices::openUrl(QUrl(WebServicesTestURL())); });
    connect(btnMessageStoreConnect, &QPushButton::clicked, this, [this] {
        // No Azure client is part of this console: say so rather than pretend.
        ShowTaskDialog(this, DictText("AZURENOTAVAILABLE", "The Azure connection test is not available in this console."),
                       QString());
    });
    connect(btnFaxFind, &QPushButton::clicked, this, [this] {
        ShowTaskDialog(this, DictText("ERRORNOFAXMODEM", "No Fax Modem Was Found"),
                       DictText("FAXNOTFOUND", "No fax modem was found."));
    });
    connect(btnSMSAccount, &QPushButton::clicked, this, [this] {
        const QString program = QCoreApplication::applicationDirPath() + QStringLiteral("/HVSSMSAccountSetup.exe");
        if (!QFileInfo(program).isExecutable() || !QProcess::startDetached(program))
            ShowTaskDialog(this, DictText("SMSSETUPMISSING", "The SMS account set-up program was not found."),
                           QDir::toNativeSeparators(program));
    });
    connect(btnOrgAdd, &QPushButton::clicked, this, [this] { EditOrganization(true); });
    connect(btnOrgEdit, &QPushButton::clicked, this, [this] { EditOrganization(false); });
    connect(GridOrgs, &QTableWidget::cellDoubleClicked, this, [this] { EditOrganization(false); });
    connect(btnOrgDelete, &QPushButton::clicked, this, &frmOptions::DeleteOrganization);
}

QWidget *frmOptions::MakeGeneralTab()
{
    auto *page = new QWidget;
    txtSendTo = new QLineEdit(page);
    txtFromAddress = new QLineEdit(page);
    chkEmailErrors = new QCheckBox(QStringLiteral("Email Errors To The Administrator"), page);
    btnSendTest = Button(QStringLiteral("Send Test Message"), page);
    txtWebServicesURL = new QLineEdit(page);
    btnWebServicesTest = Button(QStringLiteral("Test"), page);
    auto *form = new QFormLayout(page);
    form->addRow(QStringLiteral("Administrator Email Address"), txtSendTo);
    form->addRow(QStringLiteral("Default From Address"), txtFromAddress);
    form->addRow(QString(), chkEmailErrors);
    form->addRow(QString(), btnSendTest);
    auto *services = new QHBoxLayout;
    services->addWidget(txtWebServicesURL, 1);
    services->addWidget(btnWebServicesTest);
    form->addRow(QStringLiteral("Web Services URL"), services);
    return page;
}

QWidget *frmOptions::MakeLoggingTab()
{
    auto *page = new QWidget;
    chkLog = new QCheckBox(QStringLiteral("Keep A Log"), page);
    optLogging = new QButtonGroup(page);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(chkLog);
    int choice = 0;
    for (const char *caption : {"Errors Only", "Normal", "Detailed", "Debug"})
        optLogging->addButton(new QRadioButton(QString::fromLatin1(caption), page), choice++);
    for (QAbstractButton *button : optLogging->buttons())
        layout->addWidget(button);
    chkDeleteLog = new QCheckBox(QStringLiteral("Delete Log Entries Older Than (Days)"), page);
    txtDeleteLogDays = NumberBox(0, page);
    auto *days = new QHBoxLayout;
    days->addWidget(chkDeleteLog);
    days->addWidget(txtDeleteLogDays);
    layout->addLayout(days);
    layout->addStretch(1);
    return page;
}

QWidget *frmOptions::MakeStoreTab()
{
    auto *page = new QWidget;
    chkDeleteAfter = new QCheckBox(QStringLiteral("Delete Messages Older Than (Days)"), page);
    txtDeleteAfterDays = NumberBox(0, page);
    chkMessageStoreAzure = new QCheckBox(QStringLiteral("Store Attachments In Azure"), page);
    txtAzureAccount = new QLineEdit(page);
    txtAzureAccessKey = SecretBox(QString(), page);
    btnMessageStoreConnect = Button(QStringLiteral("Connect"), page);
    auto *form = new QFormLayout(page);
    form->addRow(chkDeleteAfter, txtDeleteAfterDays);
    form->addRow(QString(), chkMessageStoreAzure);
    form->addRow(QStringLiteral("Azure Account"), txtAzureAccount);
    form->addRow(QStringLiteral("Azure Access Key"), txtAzureAccessKey);
    form->addRow(QString(), btnMessageStoreConnect);
    return page;
}

QWidget *frmOptions::MakeFirewallTab()
{
    auto *page = new QWidget;
    cmboFWtype = new QComboBox(page);
    cmboFWtype->addItems({QStringLiteral("None"), QStringLiteral("Tunnelling"), QStringLiteral("SOCKS4"), QStringLiteral("SOCKS5")});
    txtFWIP = new QLineEdit(page);
    txtFWPort = NumberBox(0, page);
    txtFWUser = new QLineEdit(page);
    txtFWPassword = SecretBox(QString(), page);
    auto *form = new QFormLayout(page);
    form->addRow(QStringLiteral("Firewall Type"), cmboFWtype);
    form->addRow(QStringLiteral("Host"), txtFWIP);
    form->addRow(QStringLiteral("Port"), txtFWPort);
    form->addRow(QStringLiteral("User"), txtFWUser);
    form->addRow(QStringLiteral("Password"), txtFWPassword);
    return page;
}

QWidget *frmOptions::MakeServicesTab()
{
    auto *page = new QWidget;
    txtSMSUser = new QLineEdit(page);
    txtSMSPassword = SecretBox(QString(), page);
    txtSMSFrom = new QLineEdit(page);
    btnSMSAccount = Button(QStringLiteral("SMS Account..."), page);
    cmboFaxPort = new QComboBox(page);
    for (int port = 1; port <= 8; ++port)
        cmboFaxPort->addItem(QString::number(port));
    btnFaxFind = Button(QStringLiteral("Find"), page);
    auto *form = new QFormLayout(page);
    form->addRow(QStringLiteral("SMS User"), txtSMSUser);
    form->addRow(QStringLiteral("SMS Password"), txtSMSPassword);
    form->addRow(QStringLiteral("SMS From"), txtSMSFrom);
    form->addRow(QString(), btnSMSAccount);
    auto *fax = new QHBoxLayout;
    fax->addWidget(cmboFaxPort, 1);
    fax->addWidget(btnFaxFind);
    form->addRow(QStringLiteral("Fax Port"), fax);
    return page;
}

QWidget *frmOptions::MakeOrganizationsTab()
{
    auto *page = new QWidget;
    GridOrgs = new QTableWidget(0, 5, page);
    GridOrgs->setObjectName(QStringLiteral("GridOrgs"));
    GridOrgs->setHorizontalHeaderLabels(DictText("GRIDORGS", "Name|Domain|Users|Accounts|Default Email").split(u'|'));
    GridOrgs->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    GridOrgs->verticalHeader()->hide();
    GridOrgs->setSelectionBehavior(QAbstractItemView::SelectRows);
    GridOrgs->setSelectionMode(QAbstractItemView::SingleSelection);
    GridOrgs->setEditTriggers(QAbstractItemView::NoEditTriggers);
    btnOrgAdd = Button(QStringLiteral("Add"), page);
    btnOrgEdit = Button(QStringLiteral("Edit"), page);
    btnOrgDelete = Button(QStringLiteral("Delete"), page);
    auto *buttons = new QVBoxLayout;
    buttons->addWidget(btnOrgAdd);
    buttons->addWidget(btnOrgEdit);
    buttons->addWidget(btnOrgDelete);
    buttons->addStretch(1);
    auto *layout = new QHBoxLayout(page);
    layout->addWidget(GridOrgs, 1);
    layout->addLayout(buttons);
    return page;
}

void frmOptions::Load()
{
    const GlobalSettings &settings = Global.Settings;
    txtSendTo->setText(settings.AdminEmail);
    txtFromAddress->setText(settings.DefaultFromAddress);
    chkEmailErrors->setChecked(settings.SendErrorsToAdmin);
    chkLog->setChecked(settings.LogLevel > 0);
    const int level = int(std::find(std::begin(LogLevels), std::end(LogLevels), settings.LogLevel) - std::begin(LogLevels));
    optLogging->button(level < int(std::size(LogLevels)) ? level : 1)->setChecked(true);
    chkDeleteLog->setChecked(settings.DeleteLog);
    txtDeleteLogDays->setText(QString::number(settings.DeleteLogDays));
    chkDeleteAfter->setChecked(settings.Archive);
    txtDeleteAfterDays->setText(QString::number(settings.ArchiveDays));
    chkMessageStoreAzure->setChecked(settings.MessageStoreAzure);
    txtAzureAccount->setText(settings.MessageStoreAzureAccount);
    txtAzureAccessKey->setText(settings.MessageStoreAzureKey);
    cmboFWtype->setCurrentIndex(qBound(0, int(settings.FirewallType), cmboFWtype->count() - 1));
    txtFWIP->setText(settings.FirewallIP);
    txtFWPort->setText(QString::number(settings.FirewallPort));
    txtFWUser->setText(settings.FirewallUser);
    txtFWPassword->setText(settings.FirewallPassword);
    txtSMSUser->setText(settings.SMSAccount);
    txtSMSPassword->setText(settings.SMSPassword);
    txtSMSFrom->setText(settings.SMSFrom);
    txtWebServicesURL->setText(settings.WebServicesURL);
    cmboFaxPort->setCurrentIndex(qBound(0, settings.FaxPort - 1, cmboFaxPort->count() - 1));
    FillOrganizations();
    EnableControls();
}

void frmOptions::EnableControls()
{
    for (QAbstractButton *button : optLogging->buttons())
        button->setEnabled(chkLog->isChecked());
    txtDeleteLogDays->setEnabled(chkDeleteLog->isChecked());
    txtDeleteAfterDays->setEnabled(chkDeleteAfter->isChecked());
    for (QWidget *box : {static_cast<QWidget *>(txtAzureAccount), static_cast<QWidget *>(txtAzureAccessKey),
                         static_cast<QWidget *>(btnMessageStoreConnect)})
        box->setEnabled(chkMessageStoreAzure->isChecked());
    const bool firewall = cmboFWtype->currentIndex() > 0;
    for (QLineEdit *box : {txtFWIP, txtFWPort, txtFWUser, txtFWPassword})
        box->setEnabled(firewall);
}

void frmOptions::FillOrganizations()
{
    GridOrgs->setRowCount(0);
    for (const clsUserOrganization *organization : Organizations()) {
        int users = 0;
        for (const clsUser *user : Users())
            users += user->OrganizationID == organization->ID;
        int accounts = 0;
        for (const clsAccount *account : Accounts())
            accounts += account->OrganizationID == organization->ID;
        const int row = GridOrgs->rowCount();
        GridOrgs->insertRow(row);
        const QStringList cells{organization->Name, organization->Domain, QString::number(users),
                                QString::number(accounts), organization->EmailAddress};
        for (int column = 0; column < cells.size(); ++column) {
            auto *cell = new QTableWidgetItem(cells[column]);
            cell->setData(Qt::UserRole, organization->ID);
            if (column == 2 || column == 3)
                cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            GridOrgs->setItem(row, column, cell);
        }
    }
}

QString frmOptions::SelectedOrganizationID() const
{
    const QTableWidgetItem *cell = GridOrgs->item(GridOrgs->currentRow(), 0);
    return cell ? cell->data(Qt::UserRole).toString() : QString();
}

void frmOptions::EditOrganization(bool New)
{
    if (!MakeOrganizationEditor || (!New && SelectedOrganizationID().isEmpty()))
        return;
    std::unique_ptr<QDialog> editor(MakeOrganizationEditor(New ? QString() : SelectedOrganizationID(), this));
    if (editor && editor->exec() == QDialog::Accepted)
        FillOrganizations();
}

bool frmOptions::DeleteOrganization()
{
    const QString id = SelectedOrganizationID();
    const clsUserOrganization *organization = Organizations().Item(id);
    if (!organization)
        return false;
    if (id == Global.UserOrganizationID) {
        ShowTaskDialog(this, DictText("DELETEORGOWN", "You cannot delete the Organization that you are currently logged on to."),
                       QString());
        return false;
    }
    if (Organizations().Count() < 2) {
        ShowTaskDialog(this, DictText("DELETEORGLAST", "You cannot delete the last Organization"), QString());
        return false;
    }
    if (ShowTaskDialog(this, DictText("DELETEORG", "Delete Organization:") + u' ' + organization->Name, QString(), QString(),
                       QMessageBox::Yes | QMessageBox::No)
            != QMessageBox::Yes
        || !ServerCommand(Requests::DeleteOrganization(id)))
        return false;
    Remote().HTTPGet(Requests::GetOrganizations());
    FillOrganizations();
    return true;
}

QString frmOptions::WebServicesTestURL() const
{
    QString address = txtWebServicesURL->text().trimmed();
    if (!address.endsWith(u'/'))
        address += u'/';
    return address + QStringLiteral("WS.asmx");
}

bool frmOptions::SendTest()
{
    if (txtSendTo->text().trimmed().isEmpty() || txtFromAddress->text().trimmed().isEmpty()) {
        ShowTaskDialog(this, DictText("TESTNOSENDTO", "Please enter an Administrator Email Address and the default From Address"),
                       QString());
        return false;
    }
    const QString subject = DictText("TESTEMAILSUBJECT", "Test Message From %APPNAME%");
    if (!Remote().HTTPPut(Requests::SendTestEmail(subject), DictText("TESTEMAILBODY", "This is a test message from %APPNAME%%CRLF%%CRLF%")))
        return false;
    ShowTaskDialog(this, DictText("TESTSENT", "Test Message Added To %APPNAME% Send Queue"), QString());
    return true;
}

bool frmOptions::ButtonOK()
{
    GlobalSettings &settings = Global.Settings;
    settings.AdminEmail = txtSendTo->text().trimmed();
    settings.DefaultFromAddress = txtFromAddress->text().trimmed();
    settings.SendErrorsToAdmin = chkEmailErrors->isChecked();
    settings.LogLevel = qint16(chkLog->isChecked() ? LogLevels[qMax(0, optLogging->checkedId())] : 0);
    settings.DebugLogging = settings.LogLevel == 4;
    settings.DeleteLog = chkDeleteLog->isChecked();
    settings.DeleteLogDays = qint16(txtDeleteLogDays->text().toInt());
    settings.Archive = chkDeleteAfter->isChecked();
    settings.ArchiveDays = qint16(txtDeleteAfterDays->text().toInt());
    settings.MessageStoreAzure = chkMessageStoreAzure->isChecked();
    settings.MessageStoreAzureAccount = txtAzureAccount->text().trimmed();
    settings.MessageStoreAzureKey = txtAzureAccessKey->text();
    settings.FirewallType = qint16(cmboFWtype->currentIndex());
    settings.FirewallIP = txtFWIP->text().trimmed();
    settings.FirewallPort = qint16(txtFWPort->text().toInt());
    settings.FirewallUser = txtFWUser->text().trimmed();
    settings.FirewallPassword = txtFWPassword->text();
    settings.SMSAccount = txtSMSUser->text().trimmed();
    settings.SMSPassword = txtSMSPassword->text();
    settings.SMSFrom = txtSMSFrom->text().trimmed();
    settings.WebServicesURL = txtWebServicesURL->text().trimmed();
    settings.FaxPort = qint16(cmboFaxPort->currentIndex() + 1);
    return Remote().HTTPPut(Requests::PostGlobals(), SaveGlobalData(true));
}
