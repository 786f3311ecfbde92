// Requests of the session: who is logged on, the global settings, the push
// stream.
#include "PushChannel.h"
#include "RequestChecks.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "WebService.h"
#include "foundation/GlobalBlock.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"

#include <QSaveFile>

namespace {

const QString SettingsFile = QStringLiteral("SETTINGS.XML");

// The fragment the console's StartSession reads, in its order.
ServerReply GetSession(RequestContext &Context)
{
    const clsUser &user = Context.User;
    const clsUserOrganization *organization = Organizations().Item(user.OrganizationID);
    if (!organization) {
        ServerReply reply = ServerReply::Ok(QStringLiteral("No Organization"));
        reply.ContentType = "text/plain; charset=utf-8";
        return reply;
    }
    clsXML session;
    session.XMLSectionStart(QStringLiteral("Session"));
    session.Append(Global.AppTitle, QStringLiteral("Title"));
    session.Append(Global.BuildNo, QStringLiteral("Build"));
    session.Append(Global.HostedEdition, QStringLiteral("Hosted"));
    session.Append(Global.Settings.WebServicesURL, QStringLiteral("WebServicesURL"));
    session.Append(user.ID, QStringLiteral("UserID"));
    session.Append(organization->ID, QStringLiteral("UserOrganizationID"));
    session.Append(organization->Name, QStringLiteral("UserOrganization"));
    session.Append(user.Email, QStringLiteral("UserEmail"));
    session.Append(user.Fullname, QStringLiteral("UserFullName"));
    session.Append(user.Admin, QStringLiteral("Admin"));
    session.Append(user.OrganizationAdmin, QStringLiteral("OrganizationAdmin"));
    session.XMLSectionEnd(QStringLiteral("Session"));
    Context.Services.Log.Add(user.Username + QStringLiteral(" logged on from ") + Context.Peer.toString());
    return ServerReply::Ok(session.GetXML());
}

// The settings are the server's own: only system administrators read them.
ServerReply GetGlobals(RequestContext &Context)
{
    return ServerReply::Ok(Context.User.Admin ? SaveGlobalData(true) : QString());
}

bool WriteSettingsFile(const QString &Fragment)
{
    QSaveFile file(Global.DataPath + SettingsFile);
    return file.open(QIODevice::WriteOnly) && file.write((Fragment + QStringLiteral("\r\n")).toUtf8()) >= 0
           && file.commit();
}

ServerReply PostGlobals(RequestContext &Context)
{
    if (!Context.User.Admin)
        return ServerReply::Refusal(QStringLiteral("Only a system administrator can change the settings."));
    if (auto bad = CheckFragment(Context.Client.Body, QStringLiteral("GlobalSettings")))
        return *bad;
    const GlobalSettings before = Global.Settings;
    LoadGlobalSettings(true, Context.Client.Body);
    if (!WriteSettingsFile(SaveGlobalData(true))) {
        Global.Settings = before;
        Context.Services.Log.Add(QStringLiteral("* ") + SettingsFile + QStringLiteral(" could not be written."));
        return ServerReply::Refusal(QStringLiteral("The settings could not be saved."));
    }
    Context.Services.Log.Add(QStringLiteral("Settings saved by ") + Context.User.Username);
    return ServerReply::Ok();
}

ServerReply Subscribe(RequestContext &Context)
{
    Context.Services.Push.Subscribe(Context.Socket, Context.User, ContentLocation(Context.Client));
    Context.Services.Log.Add(Context.User.Username + QStringLiteral(" follows the server from ")
                             + Context.Peer.toString()
                             + (Context.Client.NodeName.isEmpty() ? QString()
                                                                  : QStringLiteral(" (") + Context.Client.NodeName.left(100) + u')'));
    ServerReply reply;
    reply.ConnectionTaken = true;
    return reply;
}

} // namespace

void AddSessionRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("getsession.xml"), RequestVerb::Get, GetSession);
    Table.Add(QStringLiteral("getglobals.xml"), RequestVerb::Get, GetGlobals);
    Table.Add(QStringLiteral("postglobals.htm"), RequestVerb::Post, PostGlobals);
    Table.Add(QStringLiteral("subscribe.xml"), RequestVerb::Get, Subscribe);
}
