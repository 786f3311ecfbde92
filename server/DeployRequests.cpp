// Requests by which another console deploys an account, with the folders
// its triggers store into, to this server. They are the ordinary folder and
// account posts with two differences: a record that exists already is
// updated rather than refused, and what names records of the sending
// server only (a parent folder, an organization) falls back to the
// deploying administrator's own.
#include "RequestChecks.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"

namespace {

// The ordinary handler of a request, from the table of every family.
ServerReply Forward(const QString &Request, const clsUserClient &Client, RequestContext &Context)
{
    static const RequestTable table = BuildRequestTable();
    RequestContext forwarded{Client, Context.User, Context.Peer, Context.Socket, Context.Services};
    return table.Find(Request)->Handler(forwarded);
}

ServerReply DeployFolder(RequestContext &Context)
{
    if (!IsAdministrator(Context.User))
        return ServerReply::Refusal(QStringLiteral("Only an administrator may deploy folders."));
    clsUserClient client = Context.Client;
    if (!client.ParentID.isEmpty() && !UserFolders().Item(client.ParentID))
        client.ParentID.clear();
    if (const clsUserFolder *stored = UserFolders().Item(client.FolderID)) {
        client.Email = stored->Email;
        return Forward(QStringLiteral("updatefolder.xml"), client, Context);
    }
    return Forward(QStringLiteral("addfolder.xml"), client, Context);
}

ServerReply DeployAccount(RequestContext &Context)
{
    if (!IsAdministrator(Context.User))
        return ServerReply::Refusal(QStringLiteral("Only an administrator may deploy accounts."));
    if (auto bad = CheckFragment(Context.Client.Body, clsAccount::ClassName))
        return *bad;
    clsUserClient client = Context.Client;
    // Reading the fragment must not take the outbox role from the account that has it.
    clsAccount *outbox = OutboxAccount;
    clsAccount account;
    account.setXML(client.Body);
    OutboxAccount = outbox;
    if (!account.OrganizationID.isEmpty() && !Organizations().Item(account.OrganizationID)) {
        account.OrganizationID = Context.User.OrganizationID;
        account.XMLIncludeTriggers = true;
        client.Body = account.XML();
    }
    return Forward(QStringLiteral("postaccount.htm"), client, Context);
}

} // namespace

void AddDeployRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("deployfolder.xml"), RequestVerb::Get, DeployFolder);
    Table.Add(QStringLiteral("deployaccount.htm"), RequestVerb::Post, DeployAccount);
}
