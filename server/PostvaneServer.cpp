#include "PostvaneServer.h"
#include "FirstStartSample.h"
#include "ServerCertificate.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "WebService.h"
#include "engine/EdgeRole.h"
#include "EdgeNodes.h"
#include "engine/ServerRoles.h"
#include "engine/actions/PopupPush.h"
#include "engine/sources/SourceScheduler.h"
#include "engine/mail/MailServerRole.h"
#include "engine/processor/ProcessorRole.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "foundation/Startup.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "services/ServiceControl.h"
#include "store/clsMessageStore.h"

#include <QDir>
#include <QSslConfiguration>
#include <cstdio>

namespace {

QString ListenAddress(const QHostAddress &Address, quint16 Port)
{
    QString host = QStringLiteral("*");
    if (Address != QHostAddress::Any)
        host = Address.protocol() == QAbstractSocket::IPv6Protocol ? u'[' + Address.toString() + u']'
                                                                    : Address.toString();
    return QStringLiteral("https://") + host + u':' + QString::number(Port) + u'/';
}

// The users' passwords as an engine thread's configuration reading left
// them, for the mail server's check of credentials on that thread.
UserPasswords &ThreadPasswords()
{
    thread_local UserPasswords passwords;
    return passwords;
}

} // namespace

PostvaneServer::PostvaneServer() = default;

PostvaneServer::~PostvaneServer()
{
    Stop();
}

bool PostvaneServer::Fail(const QString &Reason)
{
    if (m_log)
        m_log->Add(QStringLiteral("* ") + Reason);
    std::fprintf(stderr, "postvane-server: %s\n", qPrintable(Reason));
    return false;
}

bool PostvaneServer::Start(const ServerOptions &Options)
{
    const QStringList roles = Options.Roles.isEmpty() ? ServerRoles::AllRoles() : Options.Roles;
    m_webRole = roles.contains(QStringLiteral("web"));
    m_sample = Options.Sample;
    if (!OpenDataFolder(Options.DataFolder))
        return false;
    m_log = std::make_unique<ServerLog>();
    SetErrorSink([this](const QString &, const QString &text) {
        m_log->Add(QStringLiteral("* ") + QString(text).replace(QStringLiteral("\r\n"), QStringLiteral(" ")).trimmed());
    });
    m_log->Add(Global.ProductName + QStringLiteral(" Server ") + Global.VersionText + QStringLiteral(" starting in ")
               + QDir::toNativeSeparators(Global.DataPath));

    LoadGlobalSettings();
    if (!OpenMessageStore() || !OpenConfiguration())
        return false;
    if (Options.CreateOnly)
        return CloseCreatedStore();
    const QString configuration = ConfigurationFile();
    m_roles = std::make_unique<ServerRoles>(roles, [configuration] {
        // Each engine thread reads the configuration on a connection of its own.
        auto store = std::make_shared<ConfigStore>();
        return [configuration, store, open = false]() mutable {
            open = open || store->Open(configuration);
            UserPasswords passwords;
            const bool loaded = open && store->Load(passwords);
            ThreadPasswords() = passwords;
            return loaded;
        };
    });
    if (m_webRole && !StartWebService(Options))
        return false;
    if (m_webRole)
        ServiceControl::WriteServerState(Global.DataPath, QStringLiteral("Running"));
    m_log->OnLine = [this](const QDateTime &stamp, const QString &text) { m_push.SendLog(stamp, text); };
    StartRoles();
    m_running = true;
    return true;
}

// Lines of the roles reach the push channel on this thread; a trigger error
// of an account with AutoPause disables the account here, where the
// configuration is kept.
void PostvaneServer::StartRoles()
{
    m_roles->setOnLine([this](const QString &source, const QDateTime &stamp, const QString &text) {
        QMetaObject::invokeMethod(&m_push, [this, source, stamp, text] { m_push.SendLog(stamp, text, source); },
                                  Qt::QueuedConnection);
    });
    PopupPush::setReceiver([this](const QString &body) {
        QMetaObject::invokeMethod(&m_push, [this, body] { m_push.SendPopup(body); }, Qt::QueuedConnection);
    });
    if (ProcessorRole *processor = m_roles->Processor())
        processor->PauseAccount = [this](const QString &accountID, const QString &reason) {
            QMetaObject::invokeMethod(&m_push, [this, accountID, reason] { PauseAccount(accountID, reason); },
                                      Qt::QueuedConnection);
        };
    if (EdgeRole *edge = m_roles->Edge()) {
        SourceScheduler::AddTo(*edge, Global.DataPath);
        edge->AddJob(QStringLiteral("Node announcement"), EdgeNodes::AnnounceSeconds * 1000,
                     [](EdgeRole &) { EdgeNodes::Announce(); });
    }
    if (MailServerRole *mailServer = m_roles->MailServer()) {
        mailServer->Tls = m_tls;
        mailServer->Authenticate = [](const QString &user, const QString &password) {
            return ThreadPasswords().Authenticate(user, password) != nullptr;
        };
    }
    m_roles->Start();
}

void PostvaneServer::PauseAccount(const QString &AccountID, const QString &Reason)
{
    clsAccount *account = Accounts().Item(AccountID);
    if (!account || !account->Enabled)
        return;
    account->Enabled = false;
    if (!m_store.Write([&] { return m_store.SaveAccount(*account); })) {
        account->Enabled = true;
        m_log->Add(QStringLiteral("* Account ") + account->Name + QStringLiteral(" could not be paused: ")
                   + m_store.LastError);
        return;
    }
    m_log->Add(QStringLiteral("Account ") + account->Name + QStringLiteral(" paused after a trigger error: ") + Reason);
}

QString PostvaneServer::ConfigurationFile() const
{
    return Global.DataPath
        + (m_messages->Dialect == 99 ? QStringLiteral("MessageStore.db3") : QStringLiteral("Configuration.db3"));
}

bool PostvaneServer::OpenDataFolder(const QString &Folder)
{
    if (!Folder.isEmpty())
        Global.DataPath = QDir(Folder).absolutePath() + u'/';
    if (!MakePath(Global.DataPath))
        return Fail(QStringLiteral("The data folder ") + Global.DataPath + QStringLiteral(" cannot be made."));
    if (!m_webRole)
        return true; // the lock belongs to the process of the web service
    m_lock = std::make_unique<QLockFile>(Global.DataPath + QStringLiteral("postvane-server.lock"));
    if (!m_lock->tryLock(0))
        return Fail(QStringLiteral("Another server uses the data folder ") + Global.DataPath + u'.');
    return true;
}

// On SQLite the configuration lives in the store's own database, beside the
// messages, and is written on the store's writer connection, so that deleting
// a record and its messages is one transaction; a store on SQL Server leaves
// the configuration in a SQLite file of its own.
bool PostvaneServer::OpenConfiguration()
{
    const bool shared = m_messages->Dialect == 99;
    const QString file = ConfigurationFile();
    if (!(shared ? m_store.OpenShared(m_messages->StoreConnection()) : m_store.Open(file)))
        return Fail(QStringLiteral("The configuration database ") + file + QStringLiteral(" cannot be opened: ")
                    + m_store.LastError);
    if (m_store.IsEmpty() && !CreateFirstRunRecords())
        return Fail(QStringLiteral("The first organization and user cannot be saved: ") + m_store.LastError);
    if (!m_store.Load(m_passwords))
        return Fail(QStringLiteral("The configuration cannot be read: ") + m_store.LastError);
    if (!m_messages->AddMissingDaySummaryTokenTypes())
        return Fail(QStringLiteral("The statistics' token types cannot be saved: ") + m_messages->LastError);
    m_log->Add(QStringLiteral("Configuration read: %1 organizations, %2 users, %3 folders")
                   .arg(Organizations().Count())
                   .arg(Users().Count())
                   .arg(UserFolders().Count()));
    return true;
}

// On SQLite the first start makes MessageStore.db3 and EdgeQueue.db3 in the
// data folder from the installed blanks.
bool PostvaneServer::OpenMessageStore()
{
    SettleDatabaseKind(); // the data folder may have changed since start-up
    m_messages = std::make_unique<clsMessageStore>();
    if (!m_messages->OpenMessageStore() || !m_messages->UpdateDatabaseSchema())
        return Fail(QStringLiteral("The message store cannot be opened: ") + m_messages->LastError);
    m_log->Add(m_messages->Dialect == 99 ? QStringLiteral("Message store: ") + Global.DataPath + QStringLiteral("MessageStore.db3")
                                         : QStringLiteral("Message store: the SQL Server database of DBConnection"));
    return true;
}

// The databases exist now: the console's next start finds the store.
bool PostvaneServer::CloseCreatedStore()
{
    m_store.Close();
    m_messages->CloseMessageStore();
    SaveMachineSetting(QStringLiteral("Settings"), QStringLiteral("DBCreated"), true);
    m_log->Add(QStringLiteral("Store made in ") + QDir::toNativeSeparators(Global.DataPath));
    SetErrorSink(nullptr);
    return true;
}

bool PostvaneServer::CreateFirstRunRecords()
{
    clsUserOrganization organization;
    clsUser admin;
    admin.Username = QStringLiteral("Admin");
    admin.Fullname = QStringLiteral("Administrator");
    admin.OrganizationID = organization.ID;
    admin.Admin = true;
    admin.OrganizationAdmin = true;
    const QString verifier = UserPasswords::MakeVerifier(QString());
    if (!m_store.Write([&] { return m_store.SaveOrganization(organization) && m_store.SaveUser(admin, verifier); }))
        return false;
    m_log->Add(QStringLiteral("First start: made the organization \"") + organization.Name
               + QStringLiteral("\" and the user \"Admin\" with no password."));
    return !m_sample || CreateSample(organization.ID);
}

bool PostvaneServer::CreateSample(const QString &OrganizationID)
{
    FirstStartSample sample;
    if (!sample.Create(m_store, OrganizationID)) {
        m_store.LastError = sample.LastError;
        return false;
    }
    m_log->Add(QStringLiteral("First start: the sample account reads the messages put in ")
               + QDir::toNativeSeparators(FirstStartSample::PickupFolder())
               + QStringLiteral(" and writes their fields to ")
               + QDir::toNativeSeparators(FirstStartSample::DatabaseFile()));
    return true;
}

bool PostvaneServer::StartWebService(const ServerOptions &Options)
{
    ServerCertificate certificate;
    if (!certificate.Load())
        return Fail(certificate.LastError);
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificate(certificate.Certificate);
    tls.setLocalCertificateChain(QList<QSslCertificate>{certificate.Certificate} + certificate.Chain);
    tls.setPrivateKey(certificate.Key);
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);

    const QString bindTo = Options.BindTo.isEmpty() ? Global.Settings.WebAccessBindTo.trimmed() : Options.BindTo;
    m_configured = QHostAddress(QHostAddress::Any);
    if (!bindTo.isEmpty() && !m_configured.setAddress(bindTo))
        return Fail(QStringLiteral("The address to listen on, \"") + bindTo + QStringLiteral("\", is no IP address."));
    m_port = Options.Port >= 0 ? quint16(Options.Port) : quint16(Global.Settings.WebAccessPort);

    m_services = std::make_unique<ServerServices>(
        ServerServices{m_store, m_passwords, *m_log, m_push, *m_messages, [this] { UpdateListening(); },
                       m_roles.get()});
    m_web = std::make_unique<WebService>(*m_services);
    m_tls = tls;
    m_log->Add(QStringLiteral("Certificate: ") + certificate.Origin);
    return UpdateListening();
}

// While a system administrator has the empty password, anyone who reaches
// the port could administer the server: it listens on loopback only until
// every one of them has a password.
QString PostvaneServer::AdministratorWithoutPassword()
{
    for (const clsUser *user : Users())
        if (user->Admin && m_passwords.HasEmptyPassword(user->ID))
            return user->Username;
    return QString();
}

bool PostvaneServer::UpdateListening()
{
    const QString unprotected = m_configured.isLoopback() ? QString() : AdministratorWithoutPassword();
    const QHostAddress loopback(m_configured.protocol() == QAbstractSocket::IPv6Protocol ? QHostAddress::LocalHostIPv6
                                                                                         : QHostAddress::LocalHost);
    const QHostAddress address = unprotected.isEmpty() ? m_configured : loopback;
    if (m_listening && address == m_address)
        return true;

    const QHostAddress previous = m_address;
    if (m_listening)
        m_web->Close();
    const quint16 listening = m_web->Listen(address, m_port, m_tls);
    if (listening == 0) {
        const QString reason = QStringLiteral("Cannot listen on ") + ListenAddress(address, m_port)
            + QStringLiteral(": the port is in use or not allowed.");
        if (m_listening && m_web->Listen(previous, m_port, m_tls) != 0) {
            m_log->Add(QStringLiteral("* ") + reason + QStringLiteral(" Still listening on ")
                       + ListenAddress(previous, m_port));
            return false;
        }
        m_listening = false;
        return Fail(reason);
    }
    m_listening = true;
    m_address = address;
    m_port = listening;
    m_log->Add(QStringLiteral("Listening on ") + ListenAddress(address, listening));
    if (!unprotected.isEmpty())
        m_log->Add(QStringLiteral("The system administrator \"") + unprotected
                   + QStringLiteral("\" has no password, so only this machine can connect. Set a password for it in the"
                                    " console's user editor; the server then listens on ")
                   + ListenAddress(m_configured, listening) + QStringLiteral(" at once."));
    return true;
}

void PostvaneServer::Stop()
{
    if (!m_running)
        return;
    m_running = false;
    if (m_webRole)
        ServiceControl::WriteServerState(Global.DataPath, QStringLiteral("Stop Pending"));
    m_log->Add(Global.ProductName + QStringLiteral(" Server stopping"));
    m_roles->Stop();
    PopupPush::setReceiver(nullptr);
    m_log->OnLine = nullptr;
    m_push.Close(3000);
    if (m_web)
        m_web->Close();
    m_store.Close();
    m_messages->CloseMessageStore();
    m_log->Add(Global.ProductName + QStringLiteral(" Server stopped"));
    if (m_webRole)
        ServiceControl::WriteServerState(Global.DataPath, QString());
    SetErrorSink(nullptr);
}
