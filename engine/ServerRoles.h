#pragma once
#include "ConfigurationCopy.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

class EdgeRole;
class MailServerRole;
class OutgoingRole;
class RoleLog;
class ProcessorRole;
class ServerRole;

// The roles one server process plays: "web" (the web service, run by the
// server itself), "edge", "processor", "mailserver" and "outgoing"; all five
// by default. Roles may also run as separate processes on one data folder.
class ServerRoles
{
public:
    static QStringList AllRoles();
    // The roles of a "--roles" text: names separated by commas, any case;
    // empty is all. False, with the reason in Error, for an unknown name.
    static bool ParseRoles(const QString &Text, QStringList &Roles, QString &Error);

    // Makes the engine's roles of the list (every name but "web").
    ServerRoles(const QStringList &Roles, ConfigurationCopy::Loader Load, int ProcessorThreads = 2);
    ~ServerRoles();

    // Every line of every role's log, on the thread that logs it.
    void setOnLine(const std::function<void(const QString &Source, const QDateTime &Stamp, const QString &Text)> &OnLine);
    void Start();
    // Each role finishes what it has in hand, then stops.
    void Stop();

    // The roles that run; nullptr for one that does not.
    EdgeRole *Edge() const { return m_edge.get(); }
    ProcessorRole *Processor() const { return m_processor.get(); }
    MailServerRole *MailServer() const { return m_mailServer.get(); }
    // The message processor's log, also where the processor does not run
    // in this process: requests about processing write there.
    RoleLog &MessageLog();

private:
    QList<ServerRole *> Running() const;

    std::unique_ptr<EdgeRole> m_edge;
    std::unique_ptr<ProcessorRole> m_processor;
    std::unique_ptr<MailServerRole> m_mailServer;
    std::unique_ptr<OutgoingRole> m_outgoing;
    std::unique_ptr<RoleLog> m_messageLog;
};
