// Requests on users and organizations.
#include "ConfigStore.h"
#include "PushChannel.h"
#include "RequestChecks.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "UserPasswords.h"
#include "model/GlobalCollections.h"
#include "model/ItemFragments.h"
#include "store/clsMessageStore.h"

#include <optional>

namespace {

// Deletes the folders that Belongs picks and then their owner, in one
// transaction of the configuration store.
bool DeleteWithFolders(ConfigStore &Store, const std::function<bool(const clsUserFolder &)> &Belongs,
                       const std::function<bool()> &DeleteOwner)
{
    QStringList folders;
    for (const clsUserFolder *folder : UserFolders())
        if (Belongs(*folder))
            folders << folder->ID;
    return Store.Write([&] {
        for (const QString &folder : folders)
            if (!Store.DeleteFolder(folder))
                return false;
        return DeleteOwner();
    });
}

void UsersChanged(RequestContext &Context)
{
    if (Context.Services.UsersChanged)
        Context.Services.UsersChanged();
}

// In memory a user never holds a password: UserPasswords keeps the verifiers.
ServerReply GetUsers(RequestContext &Context)
{
    return ServerReply::Ok(Users().XMLForOrganization(&Context.User));
}

ServerReply GetUser(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("userid")))
        return *bad;
    const clsUser *user = Users().Item(Context.Client.UserID);
    if (!user)
        return ServerReply::Refusal(QStringLiteral("There is no user with this ID."));
    if (!MayManageUser(Context.User, *user))
        return ServerReply::Refusal(QStringLiteral("This user is not yours to see."));
    return ServerReply::Ok(user->XML());
}

// Why Actor may not save Posted over Stored (nullptr for a new user); empty
// when it may. Fills an empty organization with the actor's.
QString RefusalToSave(const clsUser &Actor, clsUser &Posted, const clsUser *Stored)
{
    if (Stored ? !MayManageUser(Actor, *Stored) : !IsAdministrator(Actor))
        return QStringLiteral("This user is not yours to change.");
    if (Posted.OrganizationID.isEmpty())
        Posted.OrganizationID = Actor.OrganizationID;
    if (Actor.Admin)
        return QString();
    if (Posted.Admin)
        return QStringLiteral("Only a system administrator can make system administrators.");
    if (Posted.OrganizationID != Actor.OrganizationID)
        return QStringLiteral("Users can only belong to your own organization.");
    if (!Actor.OrganizationAdmin
        && (Posted.OrganizationAdmin != Stored->OrganizationAdmin || Posted.Folders != Stored->Folders))
        return QStringLiteral("Only an administrator can change rights or folders of a user.");
    return QString();
}

ServerReply PostUser(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("userid")))
        return *bad;
    if (auto bad = CheckFragment(Context.Client.Body, clsUser::ClassName))
        return *bad;
    const QString id = Context.Client.UserID;
    clsUser posted;
    posted.setXML(Context.Client.Body);
    if (auto bad = CheckPostedID(posted.ID, id, QStringLiteral("user"), QStringLiteral("userid")))
        return *bad;

    clsUser *stored = Users().Item(id);
    const QString refusal = RefusalToSave(Context.User, posted, stored);
    if (!refusal.isEmpty())
        return ServerReply::Refusal(refusal);
    posted.Username = posted.Username.trimmed();
    if (posted.Username.isEmpty())
        return ServerReply::Refusal(QStringLiteral("A user needs a user name."));
    const clsUser *namesake = Users().Item(Users().UserNoFromName(posted.Username));
    if (namesake && namesake->ID != id)
        return ServerReply::Refusal(QStringLiteral("A user already exists with this username."));
    if (!Organizations().Item(posted.OrganizationID))
        return ServerReply::Refusal(QStringLiteral("The user's organization does not exist."));
    if (stored && stored->Admin && !posted.Admin && AdministratorCount() == 1)
        return ServerReply::Refusal(QStringLiteral("At least one system administrator must remain."));

    // An empty password keeps the stored one; a new user without one has the
    // empty password.
    const bool newPassword = !stored || !posted.Password.isEmpty();
    UserPasswords &passwords = Context.Services.Passwords;
    const QString verifier = newPassword ? UserPasswords::MakeVerifier(posted.Password) : passwords.Verifier(id);
    posted.Password.clear();

    ConfigStore &store = Context.Services.Store;
    if (!store.Write([&] { return store.SaveUser(posted, verifier); }))
        return StoreFailure(Context);
    if (stored)
        *stored = posted;
    else
        Users().Add(std::make_unique<clsUser>(posted));
    passwords.Set(id, verifier);
    if (stored && newPassword)
        Context.Services.Push.DisconnectUser(id);
    Context.Services.Log.Add(QStringLiteral("User ") + posted.Username + QStringLiteral(" saved by ")
                             + Context.User.Username);
    UsersChanged(Context);
    return ServerReply::Ok();
}

ServerReply DeleteUser(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("userid")))
        return *bad;
    const QString id = Context.Client.UserID;
    const clsUser *user = Users().Item(id);
    if (!user)
        return ServerReply::Refusal(QStringLiteral("There is no user with this ID."));
    if (!IsAdministrator(Context.User) || !MayManageUser(Context.User, *user))
        return ServerReply::Refusal(QStringLiteral("This user is not yours to delete."));
    if (id == Context.User.ID)
        return ServerReply::Refusal(QStringLiteral("You cannot delete your own user."));
    if (user->Admin && AdministratorCount() == 1)
        return ServerReply::Refusal(QStringLiteral("At least one system administrator must remain."));

    ConfigStore &store = Context.Services.Store;
    const bool saved = DeleteWithFolders(
        store, [&](const clsUserFolder &folder) { return folder.UserID == id; }, [&] { return store.DeleteUser(id) && Context.Services.MessageStore.DeleteUser(id); });
    if (!saved)
        return StoreFailure(Context);
    const QString name = user->Username;
    UserFolders().DeleteForUser(id);
    Users().Delete(id);
    Context.Services.Passwords.Remove(id);
    Context.Services.Push.DisconnectUser(id);
    Context.Services.Log.Add(QStringLiteral("User ") + name + QStringLiteral(" deleted by ") + Context.User.Username);
    UsersChanged(Context);
    return ServerReply::Ok();
}

ServerReply GetOrganizations(RequestContext &Context)
{
    const clsUser &actor = Context.User;
    return ServerReply::Ok(SectionOfItems(Organizations(), QStringLiteral("Organizations"),
                                          [&actor](const clsUserOrganization &organization) {
                                              return actor.Admin || organization.ID == actor.OrganizationID;
                                          }));
}

ServerReply PostOrganization(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("organizationid")))
        return *bad;
    if (auto bad = CheckFragment(Context.Client.Body, clsUserOrganization::ClassName))
        return *bad;
    const QString id = Context.Client.OrganizationID;
    clsUserOrganization posted;
    posted.setXML(Context.Client.Body);
    if (auto bad = CheckPostedID(posted.ID, id, QStringLiteral("organization"), QStringLiteral("organizationid")))
        return *bad;

    const clsUser &actor = Context.User;
    clsUserOrganization *stored = Organizations().Item(id);
    if (!actor.Admin && !(stored && actor.OrganizationAdmin && actor.OrganizationID == id))
        return ServerReply::Refusal(QStringLiteral("This organization is not yours to change."));
    posted.Name = posted.Name.trimmed();
    if (posted.Name.isEmpty())
        return ServerReply::Refusal(QStringLiteral("An organization needs a name."));
    const clsUserOrganization *namesake = Organizations().Item(Organizations().OrganizationNoFromName(posted.Name));
    if (namesake && namesake->ID != id)
        return ServerReply::Refusal(QStringLiteral("An organization with this name already exists."));
    if (!posted.CreatedOn.isValid())
        posted.CreatedOn = stored ? stored->CreatedOn : clsUserOrganization().CreatedOn;
    // The limits are the server's to set.
    if (stored && !actor.Admin) {
        posted.Enabled = stored->Enabled;
        posted.MaxMessagesDay = stored->MaxMessagesDay;
        posted.MaxMessagesMonth = stored->MaxMessagesMonth;
    }

    // The users' rows name their organization, so the record in memory
    // changes first and is put back when the store refuses.
    const std::optional<clsUserOrganization> previous = stored ? std::optional(*stored) : std::nullopt;
    if (stored)
        *stored = posted;
    else
        Organizations().Add(std::make_unique<clsUserOrganization>(posted));
    ConfigStore &store = Context.Services.Store;
    UserPasswords &passwords = Context.Services.Passwords;
    const bool renamed = previous && previous->Name != posted.Name;
    const bool saved = store.Write([&] {
        if (!store.SaveOrganization(posted) || !Context.Services.MessageStore.AddDaySummaryTokenTypes(id))
            return false;
        if (renamed)
            for (const clsUser *user : Users())
                if (user->OrganizationID == id && !store.SaveUser(*user, passwords.Verifier(user->ID)))
                    return false;
        return true;
    });
    if (!saved) {
        if (previous)
            *stored = *previous;
        else
            Organizations().Delete(id);
        return StoreFailure(Context);
    }
    Context.Services.Log.Add(QStringLiteral("Organization ") + posted.Name + QStringLiteral(" saved by ")
                             + actor.Username);
    return ServerReply::Ok();
}

ServerReply DeleteOrganization(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("organizationid")))
        return *bad;
    if (!Context.User.Admin)
        return ServerReply::Refusal(QStringLiteral("Only a system administrator can delete organizations."));
    const QString id = Context.Client.OrganizationID;
    const clsUserOrganization *organization = Organizations().Item(id);
    if (!organization)
        return ServerReply::Refusal(QStringLiteral("There is no organization with this ID."));
    if (organization->NumUsers() > 0)
        return ServerReply::Refusal(QStringLiteral("The organization still has users."));
    if (organization->NumAccounts() > 0)
        return ServerReply::Refusal(QStringLiteral("The organization still has accounts."));

    ConfigStore &store = Context.Services.Store;
    const bool saved = DeleteWithFolders(
        store, [&](const clsUserFolder &folder) { return folder.OrganizationID == id; },
        [&] { return store.DeleteOrganization(id) && Context.Services.MessageStore.DeleteOrganization(id); });
    if (!saved)
        return StoreFailure(Context);
    const QString name = organization->Name;
    UserFolders().DeleteForOrganization(id);
    Organizations().Delete(id);
    Context.Services.Log.Add(QStringLiteral("Organization ") + name + QStringLiteral(" deleted by ")
                             + Context.User.Username);
    return ServerReply::Ok();
}

} // namespace

void AddUserRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("getusers.xml"), RequestVerb::Get, GetUsers);
    Table.Add(QStringLiteral("getuser.xml"), RequestVerb::Get, GetUser);
    Table.Add(QStringLiteral("postuser.htm"), RequestVerb::Post, PostUser);
    Table.Add(QStringLiteral("deleteuser.xml"), RequestVerb::Get, DeleteUser);
    Table.Add(QStringLiteral("getorganizations.xml"), RequestVerb::Get, GetOrganizations);
    Table.Add(QStringLiteral("postorganization.htm"), RequestVerb::Post, PostOrganization);
    Table.Add(QStringLiteral("deleteorganization.xml"), RequestVerb::Get, DeleteOrganization);
}
