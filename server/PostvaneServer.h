#pragma once
#include "ConfigStore.h"
#include "PushChannel.h"
#include "UserPasswords.h"

#include <QHostAddress>
#include <QLockFile>
#include <QSslConfiguration>
#include <QString>
#include <QStringList>
#include <memory>

class ServerLog;
class ServerRoles;
class clsMessageStore;
class WebService;
struct ServerServices;

struct ServerOptions
{
    QString DataFolder; // empty: the default data folder
    int Port = -1;      // -1: WebAccessPort; 0: any free port
    QString BindTo;     // empty: WebAccessBindTo, or every address
    bool CreateOnly = false; // make the data folder and its databases, then end
    QStringList Roles;       // what the process plays (ServerRoles); empty: every role
    bool Sample = false;     // a fresh data folder gets the sample account (FirstStartSample)
};

// The server process: its data folder, configuration, log, push channel and
// web service, from the start to the stop.
//
// The first start in an empty data folder makes SETTINGS.XML, the
// configuration database with the organization "Default" and the user
// "Admin" (a system administrator with the empty password), and the
// self-signed certificate, and with the Sample option the sample account
// (FirstStartSample). While a system administrator has the empty password,
// the server listens on loopback only.
//
// Beside the web service it runs the engine's roles (ServerRoles); without
// the web role it serves nothing and leaves the data folder's lock to the
// process that does.
class PostvaneServer
{
public:
    PostvaneServer();
    ~PostvaneServer();

    // False, with the reason on standard error, when the server cannot run.
    // With CreateOnly it returns once the databases exist, without serving.
    bool Start(const ServerOptions &Options);
    // Tells the push subscribers, stops listening, closes the databases.
    void Stop();

private:
    bool Fail(const QString &Reason);
    bool OpenDataFolder(const QString &Folder);
    bool OpenConfiguration();
    bool OpenMessageStore();
    bool CreateFirstRunRecords();
    bool CreateSample(const QString &OrganizationID);
    bool CloseCreatedStore();
    bool StartWebService(const ServerOptions &Options);
    void StartRoles();
    QString ConfigurationFile() const;
    void PauseAccount(const QString &AccountID, const QString &Reason);
    QString AdministratorWithoutPassword();
    // Listens on the configured address, or on loopback while a system
    // administrator has the empty password; called again when users change.
    bool UpdateListening();

    std::unique_ptr<QLockFile> m_lock;
    std::unique_ptr<ServerLog> m_log;
    ConfigStore m_store;
    UserPasswords m_passwords;
    PushChannel m_push;
    std::unique_ptr<clsMessageStore> m_messages;
    std::unique_ptr<ServerServices> m_services;
    std::unique_ptr<WebService> m_web;
    std::unique_ptr<ServerRoles> m_roles;
    bool m_webRole = true;
    bool m_sample = false;
    QSslConfiguration m_tls;
    QHostAddress m_configured;
    QHostAddress m_address;
    quint16 m_port = 0;
    bool m_listening = false;
    bool m_running = false;
};
