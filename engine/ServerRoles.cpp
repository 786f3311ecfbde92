#include "ServerRoles.h"
#include "EdgeRole.h"
#include "ServerRole.h"
#include "foundation/GlobalBlock.h"
#include "mail/MailServerRole.h"
#include "mail/OutgoingRole.h"
#include "processor/ProcessorRole.h"

QStringList ServerRoles::AllRoles()
{
    return {QStringLiteral("web"), QStringLiteral("edge"), QStringLiteral("processor"), QStringLiteral("mailserver"),
            QStringLiteral("outgoing")};
}

bool ServerRoles::ParseRoles(const QString &Text, QStringList &Roles, QString &Error)
{
    Roles.clear();
    for (const QString &name : Text.split(u',', Qt::SkipEmptyParts)) {
        const QString role = name.trimmed().toLower();
        if (!AllRoles().contains(role)) {
            Error = QStringLiteral("Unknown role \"") + name.trimmed() + QStringLiteral("\"; the roles are ")
                + AllRoles().join(QStringLiteral(", ")) + u'.';
            return false;
        }
        if (!Roles.contains(role))
            Roles << role;
    }
    if (Roles.isEmpty())
        Roles = AllRoles();
    return true;
}

ServerRoles::ServerRoles(const QStringList &Roles, ConfigurationCopy::Loader Load, int ProcessorThreads)
{
    if (Roles.contains(QStringLiteral("edge")))
        m_edge = std::make_unique<EdgeRole>(Load);
    if (Roles.contains(QStringLiteral("processor")))
        m_processor = std::make_unique<ProcessorRole>(Load, ProcessorThreads);
    else
        m_messageLog = std::make_unique<RoleLog>(Global.ProductName + QStringLiteral("MessageServerLog.LOG"),
                                                 QStringLiteral("Message Server"));
    if (Roles.contains(QStringLiteral("mailserver"))) {
        m_mailServer = std::make_unique<MailServerRole>(Load);
        // Mail taken in is processed at once, not at the processor's next look.
        m_mailServer->Queued = [this] {
            if (m_processor)
                m_processor->Role.Wake();
        };
    }
    if (Roles.contains(QStringLiteral("outgoing")))
        m_outgoing = std::make_unique<OutgoingRole>(Load);
}

ServerRoles::~ServerRoles()
{
    Stop();
}

QList<ServerRole *> ServerRoles::Running() const
{
    QList<ServerRole *> roles;
    if (m_edge)
        roles << &m_edge->Role;
    if (m_processor)
        roles << &m_processor->Role;
    if (m_mailServer)
        roles << &m_mailServer->Role;
    if (m_outgoing)
        roles << &m_outgoing->Role;
    return roles;
}

void ServerRoles::setOnLine(
    const std::function<void(const QString &Source, const QDateTime &Stamp, const QString &Text)> &OnLine)
{
    for (ServerRole *role : Running())
        role->Log.OnLine = OnLine;
    if (m_messageLog)
        m_messageLog->OnLine = OnLine;
}

RoleLog &ServerRoles::MessageLog()
{
    return m_processor ? m_processor->Role.Log : *m_messageLog;
}

void ServerRoles::Start()
{
    for (ServerRole *role : Running())
        role->Start();
}

void ServerRoles::Stop()
{
    // All are asked first, so that they finish their work side by side.
    const QList<ServerRole *> roles = Running();
    for (ServerRole *role : roles)
        role->RequestStop();
    for (ServerRole *role : roles)
        role->Stop();
}
