// Requests on the folders of the message store.
#include "ConfigStore.h"
#include "RequestChecks.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "UserPasswords.h"
#include "foundation/Formatting.h"
#include "model/GlobalCollections.h"

namespace {

ServerReply GetFolders(RequestContext &Context)
{
    return ServerReply::Ok(UserFolders().UserFoldersXML(&Context.User));
}

// The 400 reply for malformed keys of addfolder and updatefolder.
std::optional<ServerReply> CheckFolderQuery(const RequestContext &Context, bool NewFolder)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("folderid"), NewFolder))
        return bad;
    if (auto bad = CheckIdentifier(Context, QStringLiteral("parentid"), true))
        return bad;
    if (auto bad = CheckIdentifier(Context, QStringLiteral("accountid"), true))
        return bad;
    if (Context.Client.Folder.trimmed().isEmpty())
        return ServerReply::Refusal(QStringLiteral("A folder needs a name (folder)."));
    return std::nullopt;
}

// The refusal when the folder may not hang below the parent.
std::optional<ServerReply> CheckParent(const clsUser &Actor, const clsUserFolder &Folder)
{
    if (Folder.Parent.isEmpty())
        return std::nullopt;
    const clsUserFolder *parent = UserFolders().Item(Folder.Parent);
    if (!parent)
        return ServerReply::Refusal(QStringLiteral("The parent folder does not exist."));
    if (!MayManageFolder(Actor, *parent))
        return ServerReply::Refusal(QStringLiteral("The parent folder is not yours to change."));
    if (parent->OrganizationID != Folder.OrganizationID)
        return ServerReply::Refusal(QStringLiteral("The parent folder belongs to another organization."));
    // Bounded by the number of folders, so that a loop in stored data ends too.
    int steps = UserFolders().Count();
    for (const clsUserFolder *above = parent; above && steps-- > 0; above = UserFolders().Item(above->Parent))
        if (above->ID == Folder.ID)
            return ServerReply::Refusal(QStringLiteral("A folder cannot hang below itself."));
    return std::nullopt;
}

ServerReply AddFolder(RequestContext &Context)
{
    if (auto bad = CheckFolderQuery(Context, true))
        return *bad;
    const clsUserFolder *parent = UserFolders().Item(Context.Client.ParentID);
    clsUser &actor = Context.User;
    clsUserFolder folder;
    folder.ID = Context.Client.FolderID.isEmpty() ? NewUniqueID() : Context.Client.FolderID;
    if (UserFolders().Item(folder.ID))
        return ServerReply::Refusal(QStringLiteral("A folder with this ID already exists."));
    folder.Name = Context.Client.Folder.trimmed();
    folder.Parent = Context.Client.ParentID;
    folder.AccountID = Context.Client.AccountID;
    folder.Email = Context.Client.Email;
    folder.OrganizationID = parent ? parent->OrganizationID : actor.OrganizationID;
    // A folder below a user's folder is the user's; a plain user's root folder is its own.
    folder.UserID = parent ? parent->UserID : (IsAdministrator(actor) ? QString() : actor.ID);
    if (auto refused = CheckParent(actor, folder))
        return *refused;

    // A user who sees only listed folders gets the new one listed.
    clsUser lister = actor;
    const bool listed = !actor.Admin && !actor.Folders.isEmpty();
    if (listed)
        lister.AddFolder(&folder);
    ConfigStore &store = Context.Services.Store;
    const bool saved = store.Write([&] {
        return store.SaveFolder(folder)
               && (!listed || store.SaveUser(lister, Context.Services.Passwords.Verifier(actor.ID)));
    });
    if (!saved)
        return StoreFailure(Context);
    if (listed)
        actor.Folders = lister.Folders;
    UserFolders().Add(std::make_unique<clsUserFolder>(folder));
    Context.Services.Log.Add(QStringLiteral("Folder ") + folder.Name + QStringLiteral(" added by ") + actor.Username);
    return ServerReply::Ok();
}

ServerReply UpdateFolder(RequestContext &Context)
{
    if (auto bad = CheckFolderQuery(Context, false))
        return *bad;
    clsUserFolder *stored = UserFolders().Item(Context.Client.FolderID);
    if (!stored)
        return ServerReply::Refusal(QStringLiteral("There is no folder with this ID."));
    if (!MayManageFolder(Context.User, *stored))
        return ServerReply::Refusal(QStringLiteral("This folder is not yours to change."));
    clsUserFolder folder = *stored;
    folder.Name = Context.Client.Folder.trimmed();
    folder.Parent = Context.Client.ParentID;
    folder.AccountID = Context.Client.AccountID;
    folder.Email = Context.Client.Email;
    if (auto refused = CheckParent(Context.User, folder))
        return *refused;

    ConfigStore &store = Context.Services.Store;
    if (!store.Write([&] { return store.SaveFolder(folder); }))
        return StoreFailure(Context);
    *stored = folder;
    Context.Services.Log.Add(QStringLiteral("Folder ") + folder.Name + QStringLiteral(" changed by ")
                             + Context.User.Username);
    return ServerReply::Ok();
}

// The folder and every folder below it, parents first.
QStringList FolderAndBelow(const QString &ID)
{
    QStringList ids{ID};
    for (qsizetype i = 0; i < ids.size(); ++i)
        for (const clsUserFolder *folder : UserFolders())
            if (folder->Parent == ids.at(i) && !ids.contains(folder->ID))
                ids << folder->ID;
    return ids;
}

// Answers "OK," and the IDs of the folders deleted.
ServerReply DeleteFolder(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("folderid")))
        return *bad;
    const clsUserFolder *folder = UserFolders().Item(Context.Client.FolderID);
    if (!folder)
        return ServerReply::Refusal(QStringLiteral("There is no folder with this ID."));
    const QStringList ids = FolderAndBelow(folder->ID);
    for (const QString &id : ids)
        if (!MayManageFolder(Context.User, *UserFolders().Item(id)))
            return ServerReply::Refusal(QStringLiteral("This folder is not yours to delete."));

    // Users who list a deleted folder no longer do.
    QList<clsUser> listers;
    for (const clsUser *user : Users()) {
        clsUser changed = *user;
        for (const QString &id : ids)
            changed.RemoveFolder(UserFolders().Item(id));
        if (changed.Folders != user->Folders)
            listers << changed;
    }
    ConfigStore &store = Context.Services.Store;
    const bool saved = store.Write([&] {
        for (const QString &id : ids)
            if (!store.DeleteFolder(id))
                return false;
        for (const clsUser &user : listers)
            if (!store.SaveUser(user, Context.Services.Passwords.Verifier(user.ID)))
                return false;
        return true;
    });
    if (!saved)
        return StoreFailure(Context);
    const QString name = folder->Name;
    for (const clsUser &user : listers)
        *Users().Item(user.ID) = user;
    for (const QString &id : ids)
        UserFolders().Delete(id);
    Context.Services.Log.Add(QStringLiteral("Folder ") + name + QStringLiteral(" deleted by ")
                             + Context.User.Username);
    return ServerReply::Ok(QStringLiteral("OK,") + ids.join(u','));
}

} // namespace

void AddFolderRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("getfolders.xml"), RequestVerb::Get, GetFolders);
    Table.Add(QStringLiteral("addfolder.xml"), RequestVerb::Get, AddFolder);
    Table.Add(QStringLiteral("updatefolder.xml"), RequestVerb::Get, UpdateFolder);
    Table.Add(QStringLiteral("deletefolder.xml"), RequestVerb::Get, DeleteFolder);
}
