#include "frmLogin.h"
#include "TaskDialog.h"
#include "WindowDictionary.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "foundation/cDDict.h"
#include "session/frmRemote.h"

#include <QComboBox>
#include <QDesktopServices>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace {

const QString Local = QStringLiteral("(local)");

QString UserKey(const char *Key, const QString &Default = QString())
{
    return GetUserSetting(Global.ProductName, QString::fromLatin1(Key), Default);
}

} // namespace

frmLogin::frmLogin(frmRemote &Remote, const QString &CommandLineServer, QWidget *parent)
    : QDialog(parent), m_remote(Remote)
{
    setObjectName(QStringLiteral("frmLogin"));
    setWindowTitle(QStringLiteral("Login To %APPNAME%"));
    setModal(true);

    cboServer = new QComboBox(this);
    cboServer->setObjectName(QStringLiteral("cboServer"));
    cboServer->setEditable(true);
    cboServer->setInsertPolicy(QComboBox::NoInsert);
    txtUserName = new QLineEdit(this);
    txtUserName->setObjectName(QStringLiteral("txtUserName"));
    txtPassword = new QLineEdit(this);
    txtPassword->setObjectName(QStringLiteral("txtPassword"));
    txtPassword->setEchoMode(QLineEdit::Password);
    btnConnect = new QPushButton(QStringLiteral("Connect"), this);
    btnConnect->setObjectName(QStringLiteral("btnConnect"));
    btnConnect->setDefault(true);
    btnCancel = new QPushButton(QStringLiteral("Cancel"), this);
    btnCancel->setObjectName(QStringLiteral("btnCancel"));
    btnHelp = new QPushButton(QStringLiteral("Help"), this);
    btnHelp->setObjectName(QStringLiteral("btnHelp"));
    lblStatus = new QLabel(QStringLiteral("Connecting To %APPNAME%..."), this);
    lblStatus->setObjectName(QStringLiteral("lblStatus"));
    prgLogin = new QProgressBar(this);
    prgLogin->setObjectName(QStringLiteral("prgLogin"));
    prgLogin->setRange(1, 9);
    prgLogin->setTextVisible(false);

    auto *form = new QFormLayout;
    auto addRow = [&](const char *name, const char *caption, QWidget *field) {
        auto *label = new QLabel(QString::fromLatin1(caption), this);
        label->setObjectName(QString::fromLatin1(name));
        label->setBuddy(field);
        form->addRow(label, field);
    };
    addRow("lblServer", "&Server:", cboServer);
    addRow("lblUserName", "&Username:", txtUserName);
    addRow("lblPassword", "&Password:", txtPassword);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(btnHelp);
    buttons->addStretch();
    buttons->addWidget(btnConnect);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(lblStatus);
    layout->addWidget(prgLogin);
    layout->addLayout(buttons);
    setMinimumWidth(380);

    GetDDict(this);
    Fill(CommandLineServer);
    ShowWorking(false);

    connect(txtUserName, &QLineEdit::textChanged, this,
            [this](const QString &text) { btnConnect->setEnabled(!text.trimmed().isEmpty()); });
    btnConnect->setEnabled(!txtUserName->text().trimmed().isEmpty());
    connect(btnConnect, &QPushButton::clicked, this, &frmLogin::Connect);
    connect(btnCancel, &QPushButton::clicked, this, &frmLogin::reject);
    connect(btnHelp, &QPushButton::clicked, this, [] {
        QDesktopServices::openUrl(QUrl(QStringLiteral("https://") + Global.AppDomain + QStringLiteral("/help/Starting")
                                       + Global.ProductName + QStringLiteral(".htm")));
    });
    connect(&m_remote, &frmRemote::LoginProgress, this,
            [this] { prgLogin->setValue(qMin(prgLogin->maximum(), prgLogin->value() + 1)); });
}

void frmLogin::Fill(const QString &CommandLineServer)
{
    txtUserName->setText(UserKey("LastUser", QStringLiteral("Admin")));
    const QString lastServer = UserKey("LastServer");
    if (!Global.RemoteAdmin)
        cboServer->addItem(Local);
    int selection = -1;
    for (const QString &server : UserKey("RemoteServers").split(u';', Qt::SkipEmptyParts)) {
        if (cboServer->findText(server, Qt::MatchFixedString) < 0)
            cboServer->addItem(server);
        if (server == lastServer)
            selection = cboServer->findText(server, Qt::MatchFixedString);
    }
    if (selection < 0 && cboServer->count() > 0)
        selection = 0;
    cboServer->setCurrentIndex(selection);
    const QString serverText = CommandLineServer.isEmpty() ? lastServer : CommandLineServer;
    if (!serverText.isEmpty() || selection < 0)
        cboServer->setEditText(serverText);

    if (cboServer->currentText().isEmpty())
        cboServer->setFocus();
    else if (!txtUserName->text().isEmpty())
        txtPassword->setFocus();
}

void frmLogin::SaveServerList()
{
    QStringList servers;
    for (int i = 0; i < cboServer->count(); ++i)
        servers << cboServer->itemText(i);
    servers << cboServer->currentText().trimmed();
    servers.removeAll(QString());
    servers.removeDuplicates();
    SaveUserSetting(Global.ProductName, QStringLiteral("RemoteServers"), servers.join(u';'));
}

void frmLogin::SetServer(const QString &Text)
{
    QString host = Text.trimmed().toLower();
    int port = Global.Settings.WebAccessPort;
    const qsizetype colon = host.indexOf(u':');
    if (colon >= 0) {
        port = host.mid(colon + 1).toInt();
        host.truncate(colon);
    }
    Global.IsLocal = host.isEmpty() || host == QStringLiteral("local") || host == QStringLiteral("127.0.0.1")
                     || host == QStringLiteral("localhost") || host == Local;
    if (Global.IsLocal)
        host = QStringLiteral("127.0.0.1");
    Global.ServerName = host;
    Global.ServerPort = port;
    Global.ServerURL = QStringLiteral("https://") + host + u':' + QString::number(port) + u'/';
}

void frmLogin::Connect()
{
    SaveServerList();
    SetServer(cboServer->currentText());
    Global.UserName = txtUserName->text().trimmed();
    Global.Password = txtPassword->text().trimmed();
    Global.PasswordHash = MD5Hash(Global.Password);
    Global.Connected = false;
    SaveUserSetting(Global.ProductName, QStringLiteral("LastUser"), Global.UserName);
    SaveUserSetting(Global.ProductName, QStringLiteral("LastServer"), cboServer->currentText().trimmed());
    ShowWorking(true);

    Result = m_remote.Login();
    if (Result == 1) {
        ShowWorking(false);
        ShowTaskDialog(this, DDict().GetString(QStringLiteral("NOTCONNECTED"), QStringLiteral("Not Connected To %APPNAME%.")),
                       DDict().GetString(QStringLiteral("CHECKUSERNAME"), QStringLiteral("Please check your Username & Password.")));
        txtPassword->clear();
        txtPassword->setFocus();
        return;
    }
    hide();
    Global.DialogCancelled = false;
    if (Result == 0 || Global.IsLocal)
        emit ToolBarConnected(Global.Connected);
    else
        emit ShutdownRequested();
    accept();
}

void frmLogin::reject()
{
    Global.DialogCancelled = true;
    m_remote.Interrupt();
    QDialog::reject();
}

void frmLogin::ShowWorking(bool Working)
{
    btnConnect->setEnabled(!Working && !txtUserName->text().trimmed().isEmpty());
    lblStatus->setVisible(Working);
    prgLogin->setVisible(Working);
    prgLogin->setValue(prgLogin->minimum());
}
