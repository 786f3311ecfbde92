// Requests on the reading of the message sources: "checknow.xml" has every
// account the user may see read at once, whatever its schedule.
#include "RequestTable.h"
#include "ServerServices.h"
#include "ServerLog.h"
#include "engine/EdgeRole.h"
#include "engine/ServerRoles.h"
#include "engine/sources/SourceScheduler.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsUser.h"

namespace {

ServerReply CheckNow(RequestContext &Context)
{
    QStringList accounts;
    for (clsAccount *account : Accounts()) {
        if (account && account->Enabled && account->UserAccess(&Context.User))
            accounts << account->AccountID;
    }
    SourceScheduler::CheckNow(accounts);
    if (Context.Services.Roles && Context.Services.Roles->Edge())
        Context.Services.Roles->Edge()->Role.Wake();
    Context.Services.Log.Add(QStringLiteral("Check for new messages now, asked by ") + Context.User.Username
                             + QStringLiteral(": ") + QString::number(accounts.size()) + QStringLiteral(" accounts"));
    return ServerReply::Ok();
}

} // namespace

void AddSourceRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("checknow.xml"), RequestVerb::Get, CheckNow);
}
