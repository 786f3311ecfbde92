#include "frmAccountSendTo.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "session/frmRemote.h"
#include "workbench/TaskDialog.h"
#include "workbench/WindowDictionary.h"

#include <QComboBox>
#include <QEventLoop>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkReply>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int TimeOutMs = 30000;

QString UserKey(const char *Key)
{
    return GetUserSetting(Global.ProductName, QString::fromLatin1(Key));
}

} // namespace

frmAccountSendTo::frmAccountSendTo(const QString &AccountID, QWidget *parent) : QDialog(parent), AccountID(AccountID)
{
    setObjectName(QStringLiteral("frmAccountSendTo"));
    setWindowTitle(QStringLiteral("Deploy Account"));
    const clsAccount *account = Accounts().Item(AccountID);
    lblAccount = new QLabel(account ? account->Name : QString(), this);
    lblAccount->setObjectName(QStringLiteral("lblAccount"));
    lblAccount->setTextFormat(Qt::PlainText);
    QFont bold = lblAccount->font();
    bold.setBold(true);
    lblAccount->setFont(bold);
    cmboServer = new QComboBox(this);
    cmboServer->setObjectName(QStringLiteral("cmboServer"));
    cmboServer->setEditable(true);
    const QString last = UserKey("LastServerDeploy");
    if (!last.isEmpty())
        cmboServer->addItem(last);
    for (const QString &server : UserKey("RemoteServers").split(u';', Qt::SkipEmptyParts))
        if (server != last)
            cmboServer->addItem(server);
    txtUserName = new QLineEdit(Global.UserName, this);
    txtUserName->setObjectName(QStringLiteral("txtUserName"));
    txtPassword = new QLineEdit(this);
    txtPassword->setObjectName(QStringLiteral("txtPassword"));
    txtPassword->setEchoMode(QLineEdit::Password);
    btnDeploy = new QPushButton(QStringLiteral("Deploy"), this);
    btnDeploy->setObjectName(QStringLiteral("btnDeploy"));
    btnDeploy->setDefault(true);
    btnCancel = new QPushButton(QStringLiteral("Cancel"), this);
    btnCancel->setObjectName(QStringLiteral("btnCancel"));
    btnHelp = new QPushButton(QStringLiteral("Help"), this);
    btnHelp->setObjectName(QStringLiteral("btnHelp"));

    auto *header = new QLabel(QStringLiteral("Deploy the Account to another %APPNAME% Server"), this);
    header->setObjectName(QStringLiteral("lblHeader"));
    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Account"), lblAccount);
    form->addRow(QStringLiteral("Server"), cmboServer);
    form->addRow(QStringLiteral("User Name"), txtUserName);
    form->addRow(QStringLiteral("Password"), txtPassword);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(btnHelp);
    buttons->addStretch(1);
    buttons->addWidget(btnDeploy);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(header);
    layout->addLayout(form);
    layout->addLayout(buttons);
    resize(440, 220);
    GetDDict(this);

    connect(btnDeploy, &QPushButton::clicked, this, [this] {
        if (Deploy())
            accept();
    });
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    btnHelp->setEnabled(false);
}

QString frmAccountSendTo::NormalHost(const QString &Host)
{
    const QString host = Host.trimmed().toLower();
    if (host == QStringLiteral("localhost") || host == QStringLiteral("(local)") || host == QStringLiteral("local"))
        return QStringLiteral("127.0.0.1");
    return host;
}

QString frmAccountSendTo::TargetAddress(const QString &Request) const
{
    return m_base + Request + (Request.contains(u'?') ? u'&' : u'?') + m_auth;
}

frmAccountSendTo::Reply frmAccountSendTo::Send(const QString &Address, const QByteArray *Body)
{
    QNetworkRequest request{QUrl(Address)};
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("UserAgent=") + Global.ProductName);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/xml"));
    QNetworkReply *reply = Body ? HTTPS.post(request, *Body) : HTTPS.get(request);
    connect(reply, &QNetworkReply::sslErrors, reply, [reply] { reply->ignoreSslErrors(); });
    QEventLoop loop;
    connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(TimeOutMs, reply, &QNetworkReply::abort);
    if (!reply->isFinished())
        loop.exec();
    Reply result;
    result.Status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    result.Text = QString::fromUtf8(reply->readAll());
    result.Error = reply->errorString();
    reply->deleteLater();
    return result;
}

bool frmAccountSendTo::LogOnToTarget()
{
    const Reply session = Send(TargetAddress(Requests::GetSession()));
    if (session.Status == 401 || (session.Status == 200 && session.Text.contains(QStringLiteral("Error:")))) {
        ShowTaskDialog(this, DictText("NOTCONNECTED", "Not Connected To %APPNAME%."),
                       QStringLiteral("Authorization Required"),
                       DictText("CHECKUSERNAME", "Please check your Username & Password."));
        return false;
    }
    if (session.Status != 200) {
        ShowTaskDialog(this, DictText("NOTCONNECTED", "Not Connected To %APPNAME%."),
                       DictText("ERRORCONNECTING", "Error Connecting: ") + session.Error,
                       DictText("NOTCONNECTED2", "Please check that the %APPNAME% Server is running on the specified host."));
        return false;
    }
    return true;
}

bool frmAccountSendTo::Deploy()
{
    FolderRequests.clear();
    const QString server = cmboServer->currentText().trimmed();
    const QString host = NormalHost(server.section(u':', 0, 0));
    const QString portText = server.section(u':', 1, 1).trimmed();
    const int port = portText.isEmpty() ? Global.ServerPort : portText.toInt();
    // Two servers may share a host on different ports: the port counts too.
    if (host == NormalHost(Global.ServerName) && port == Global.ServerPort) {
        ShowTaskDialog(this, DictText("DEPLOY_NOTSAME",
                                      "You cannot deploy to the same %APPNAME% Server you are currently connected to."),
                       QString());
        return false;
    }
    if (ShowTaskDialog(this, DictText("DEPLOY1", "Deploy To") + u' ' + host,
                       DictText("DEPLOY2", "Are you sure you want to deploy the selected Account to this server?. The "
                                           "Account will be added to the selected server for the given user. Existing "
                                           "Accounts will be updated. If the Account is enabled then message processing "
                                           "will start based on the Account Schedule."),
                       QStringLiteral("You must supply a username & password that has access to the selected %APPNAME% Server."),
                       QMessageBox::Yes | QMessageBox::No)
        != QMessageBox::Yes)
        return false;
    m_base = QStringLiteral("https://") + host + u':' + QString::number(port) + u'/';
    m_auth = Requests::AuthQuery(txtUserName->text().trimmed(), MD5Hash(txtPassword->text()));
    if (!LogOnToTarget())
        return false;

    if (!Remote().HTTPGet(Requests::GetTriggers(AccountID)) || Remote().ReplyText.startsWith(QStringLiteral("Error:")))
        return false;
    clsAccount *account = Accounts().Item(AccountID);
    if (!account)
        return false;
    account->XMLIncludeTriggers = true;
    const QByteArray fragment = account->XML().toUtf8();
    account->XMLIncludeTriggers = false;

    for (const clsAccountTrigger *trigger : account->Triggers) {
        const clsUserFolder *folder = UserFolders().Item(trigger->SaveToFolderID);
        if (trigger->SaveToFolderID.isEmpty() || !folder)
            continue;
        const QString request = Requests::DeployFolder(folder->ID, folder->Parent, folder->Name, AccountID);
        FolderRequests << request;
        const Reply reply = Send(TargetAddress(request));
        if (reply.Status != 200 || reply.Text.contains(QStringLiteral("Error:"))) {
            ShowTaskDialog(this, DictText("DEPLOYFAILED", "The Account could not be deployed."), reply.Text + reply.Error);
            return false;
        }
    }
    const Reply posted = Send(TargetAddress(Requests::DeployAccount(AccountID)), &fragment);
    if (posted.Status != 200 || posted.Text.contains(QStringLiteral("Error:"))) {
        ShowTaskDialog(this, DictText("DEPLOYFAILED", "The Account could not be deployed."), posted.Text + posted.Error);
        return false;
    }
    ShowTaskDialog(this, DictText("DEPLOYDONE", "Account Deployed Successfully"), QString());
    Remember(server);
    return true;
}

void frmAccountSendTo::Remember(const QString &Server)
{
    SaveUserSetting(Global.ProductName, QStringLiteral("LastServerDeploy"), Server);
    QStringList servers = UserKey("RemoteServers").split(u';', Qt::SkipEmptyParts);
    if (!servers.contains(Server))
        servers << Server;
    SaveUserSetting(Global.ProductName, QStringLiteral("RemoteServers"), servers.join(u';'));
}
