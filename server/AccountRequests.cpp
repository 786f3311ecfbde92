// Requests on accounts and their triggers.
//
// Who may do what: every user sees the accounts that clsAccount::UserAccess
// grants it (its organization's and the shared ones without organization, a
// system administrator all). A system administrator changes every account,
// an organization administrator those of its own organization; nobody else
// changes any.
#include "ConfigStore.h"
#include "RequestChecks.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"
#include "model/ItemFragments.h"
#include "store/clsMessageStore.h"

#include <functional>
#include <memory>
#include <optional>

namespace {

const QString TriggerTag = QStringLiteral("Trigger");

bool MayChangeAccount(const clsUser &Actor, const clsAccount &Account)
{
    if (Actor.Admin)
        return true;
    return Actor.OrganizationAdmin && !Account.OrganizationID.trimmed().isEmpty()
           && Account.OrganizationID == Actor.OrganizationID;
}

enum class Access
{
    See,
    Change
};

struct FoundAccount
{
    clsAccount *Account = nullptr;
    std::optional<ServerReply> Refusal;
};

// The account of the query's accountid, or the reply that refuses it.
FoundAccount FindAccount(const RequestContext &Context, Access Wanted)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("accountid")))
        return {nullptr, bad};
    clsAccount *account = Accounts().Item(Context.Client.AccountID);
    if (!account)
        return {nullptr, ServerReply::Refusal(QStringLiteral("There is no account with the ID \"%1\".").arg(Context.Client.AccountID))};
    if (!account->UserAccess(&Context.User))
        return {nullptr, ServerReply::Refusal(QStringLiteral("Your user may not see the account %1.").arg(account->AccountID))};
    if (Wanted == Access::Change && !MayChangeAccount(Context.User, *account))
        return {nullptr, ServerReply::Refusal(QStringLiteral("Your user may not change the account \"%1\": that takes an administrator of its organization.").arg(account->Name))};
    return {account, std::nullopt};
}

struct FoundTrigger
{
    clsAccount *Account = nullptr;
    clsAccountTrigger *Trigger = nullptr;
    std::optional<ServerReply> Refusal;
};

// The trigger of the query's accountid and triggerid, or the reply that
// refuses it.
FoundTrigger FindTrigger(const RequestContext &Context, Access Wanted)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("triggerid")))
        return {nullptr, nullptr, bad};
    const FoundAccount found = FindAccount(Context, Wanted);
    if (found.Refusal)
        return {nullptr, nullptr, found.Refusal};
    clsAccountTrigger *trigger = found.Account->TriggerFromID(Context.Client.TriggerID);
    if (!trigger)
        return {nullptr, nullptr, ServerReply::Refusal(QStringLiteral("The account \"%1\" has no trigger with the ID \"%2\".").arg(found.Account->Name, Context.Client.TriggerID))};
    return {found.Account, trigger, std::nullopt};
}

// The fragment that Write gives of the account of the query.
ServerReply AnswerAccount(RequestContext &Context, const std::function<QString(const clsAccount &)> &Write)
{
    const FoundAccount found = FindAccount(Context, Access::See);
    return found.Refusal ? *found.Refusal : ServerReply::Ok(Write(*found.Account));
}

ServerReply GetAccounts(RequestContext &Context)
{
    const clsUser &actor = Context.User;
    return ServerReply::Ok(SectionOfItems(Accounts(), QStringLiteral("Accounts"),
                                          [&actor](const clsAccount &account) { return account.UserAccess(&actor); }));
}

ServerReply GetTrigger(RequestContext &Context)
{
    const FoundTrigger found = FindTrigger(Context, Access::See);
    return found.Refusal ? *found.Refusal : ServerReply::Ok(found.Trigger->XML());
}

ServerReply GetTriggerList(RequestContext &Context)
{
    ServerReply reply = AnswerAccount(Context, [](const clsAccount &account) { return account.TriggerNames(); });
    reply.ContentType = "text/plain; charset=utf-8";
    return reply;
}

// Reading a fragment into a scratch account must not take the outbox role
// from the account that has it. An AccountID missing from the fragment is
// AccountID.
std::unique_ptr<clsAccount> ScratchAccount(const QString &AccountID, const QString &Fragment)
{
    clsAccount *outbox = OutboxAccount;
    auto account = std::make_unique<clsAccount>();
    account->AccountID = AccountID;
    account->setXML(Fragment);
    OutboxAccount = outbox;
    return account;
}

// Why the trigger may not be stored in the account; nothing when it may.
std::optional<ServerReply> CheckTrigger(const clsUser &Actor, const QString &AccountID,
                                        const clsAccountTrigger &Trigger)
{
    if (!IsIdentifier(Trigger.TriggerID))
        return ServerReply::Refusal(QStringLiteral("A trigger's ID is no identifier."));
    // Trigger IDs name one trigger across all accounts: messages are routed by them.
    const clsAccount *holder = Accounts().Item(Accounts().AccountNoForTriggerID(Trigger.TriggerID));
    if (holder && holder->AccountID.compare(AccountID, Qt::CaseInsensitive) != 0)
        return ServerReply::Refusal(QStringLiteral("The trigger ID ") + Trigger.TriggerID
                                           + QStringLiteral(" belongs to another account."));
    const clsUserFolder *folder = UserFolders().Item(Trigger.SaveToFolderID);
    if (folder && !MayManageFolder(Actor, *folder))
        return ServerReply::Refusal(QStringLiteral("The trigger's folder is not yours to use."));
    return std::nullopt;
}

// Why Actor may not store Posted over Stored (nullptr for a new account);
// nothing when it may. An organization administrator's account without
// organization becomes one of its organization.
std::optional<ServerReply> CheckAccount(const clsUser &Actor, clsAccount &Posted, const clsAccount *Stored)
{
    if (Stored ? !MayChangeAccount(Actor, *Stored) : !IsAdministrator(Actor))
        return ServerReply::Refusal(QStringLiteral("This account is not yours to change."));
    if (!Actor.Admin && Posted.OrganizationID.trimmed().isEmpty())
        Posted.OrganizationID = Actor.OrganizationID;
    if (!MayChangeAccount(Actor, Posted))
        return ServerReply::Refusal(QStringLiteral("Accounts can only belong to your own organization."));
    if (!Posted.OrganizationID.trimmed().isEmpty() && !Organizations().Item(Posted.OrganizationID))
        return ServerReply::Refusal(QStringLiteral("The account's organization does not exist."));
    const QString outbox = Accounts().FindOutboxID();
    if (Posted.Outbox && !outbox.isEmpty() && outbox.compare(Posted.AccountID, Qt::CaseInsensitive) != 0)
        return ServerReply::Refusal(QStringLiteral("Another account is the outbox already."));
    return std::nullopt;
}

// The number of Trigger elements in the fragment's Triggers section; -1
// when there is none or it is empty, which leaves the account's triggers as
// they are.
int PostedTriggerCount(const QString &Fragment)
{
    clsXML reader(Fragment);
    clsXML section;
    if (!reader.Extract(section, QStringLiteral("Triggers")) || section.IsEmpty())
        return -1;
    int count = 0;
    ForEachItemReader(section, TriggerTag, [&count](clsXML &) { ++count; });
    return count;
}

ServerReply PostAccount(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("accountid")))
        return *bad;
    const QString &body = Context.Client.Body;
    if (auto bad = CheckFragment(body, clsAccount::ClassName))
        return *bad;
    clsAccount *stored = Accounts().Item(Context.Client.AccountID);
    const QString id = stored ? stored->AccountID : Context.Client.AccountID;
    std::unique_ptr<clsAccount> posted = ScratchAccount(id, body);
    if (auto bad = CheckPostedID(posted->AccountID, id, QStringLiteral("account"), QStringLiteral("accountid"),
                                 Qt::CaseInsensitive))
        return *bad;
    posted->AccountID = id;
    if (auto refused = CheckAccount(Context.User, *posted, stored))
        return *refused;
    const int triggerCount = PostedTriggerCount(body);
    if (triggerCount >= 0 && triggerCount != posted->Triggers.Count())
        return ServerReply::Refusal(QStringLiteral("The account's triggers need distinct IDs."));
    for (const clsAccountTrigger *trigger : posted->Triggers)
        if (auto refused = CheckTrigger(Context.User, id, *trigger))
            return *refused;

    ConfigStore &store = Context.Services.Store;
    const bool saved = store.Write([&] {
        return store.SaveAccount(*posted) && (triggerCount < 0 || store.ReplaceTriggers(id, posted->Triggers));
    });
    if (!saved)
        return StoreFailure(Context);
    // The account in memory reads what was stored, keeping its counters, and
    // its triggers when none were posted.
    posted->XMLIncludeTriggers = triggerCount >= 0;
    const QString fragment = posted->XML();
    if (stored)
        stored->setXML(fragment);
    else
        Accounts().AddXML(fragment);
    Context.Services.Log.Add(QStringLiteral("Account ") + posted->Name + QStringLiteral(" saved by ")
                             + Context.User.Username);
    return ServerReply::Ok();
}

ServerReply DeleteAccount(RequestContext &Context)
{
    const FoundAccount found = FindAccount(Context, Access::Change);
    if (found.Refusal)
        return *found.Refusal;
    const QString id = found.Account->AccountID;
    ConfigStore &store = Context.Services.Store;
    clsMessageStore &messages = Context.Services.MessageStore;
    if (!store.Write([&] { return messages.DeleteAccount(id) && store.DeleteAccount(id); }))
        return StoreFailure(Context);
    const QString name = found.Account->Name;
    UserFolders().DeleteForAccount(id);
    Accounts().Delete(id);
    Context.Services.Log.Add(QStringLiteral("Account ") + name + QStringLiteral(" deleted by ")
                             + Context.User.Username);
    return ServerReply::Ok();
}

// Runs Change on a copy of the account and stores what it changed there: the
// account's row, and the rows of the triggers whose fragments differ. Only
// then does Change run on the account itself, so a refused write changes
// nothing; Change has to come to the same result both times.
ServerReply ChangeAccount(RequestContext &Context, clsAccount &Account, const std::function<void(clsAccount &)> &Change,
                          const QString &Done)
{
    std::unique_ptr<clsAccount> copy = ScratchAccount(Account.AccountID, Account.XML());
    copy->Triggers.setXML(Account.Triggers.XML());
    Change(*copy);
    const bool accountChanged = copy->XML() != Account.XML();
    QList<const clsAccountTrigger *> changedTriggers;
    for (int i = 1; i <= copy->Triggers.Count(); ++i)
        if (copy->Triggers.Item(i)->XML() != Account.Triggers.Item(i)->XML())
            changedTriggers << copy->Triggers.Item(i);

    ConfigStore &store = Context.Services.Store;
    const bool saved = store.Write([&] {
        if (accountChanged && !store.SaveAccount(*copy))
            return false;
        for (const clsAccountTrigger *trigger : changedTriggers)
            if (!store.SaveTrigger(Account.AccountID, *trigger))
                return false;
        return true;
    });
    if (!saved)
        return StoreFailure(Context);
    Change(Account);
    Context.Services.Log.Add(Done + QStringLiteral(" by ") + Context.User.Username);
    return ServerReply::Ok();
}

ServerReply SetAccountEnabled(RequestContext &Context, bool Enabled)
{
    const FoundAccount found = FindAccount(Context, Access::Change);
    if (found.Refusal)
        return *found.Refusal;
    return ChangeAccount(
        Context, *found.Account, [Enabled](clsAccount &account) { account.Enabled = Enabled; },
        QStringLiteral("Account ") + found.Account->Name
            + (Enabled ? QStringLiteral(" enabled") : QStringLiteral(" disabled")));
}

ServerReply SetTriggerEnabled(RequestContext &Context, bool Enabled)
{
    const FoundTrigger found = FindTrigger(Context, Access::Change);
    if (found.Refusal)
        return *found.Refusal;
    const QString id = found.Trigger->TriggerID;
    return ChangeAccount(
        Context, *found.Account, [&id, Enabled](clsAccount &account) { account.TriggerFromID(id)->Enabled = Enabled; },
        QStringLiteral("Trigger ") + found.Trigger->Name
            + (Enabled ? QStringLiteral(" enabled") : QStringLiteral(" disabled")));
}

// Puts the account's last-seen dates back to what its enabled triggers
// accept, so that the sources are read again from there. A trigger, when
// given, has to be the account's; the rewind is the account's all the same,
// since its triggers share the sources.
ServerReply ReceivedAfterReset(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("triggerid"), true))
        return *bad;
    const FoundAccount found = FindAccount(Context, Access::Change);
    if (found.Refusal)
        return *found.Refusal;
    if (!Context.Client.TriggerID.isEmpty() && !found.Account->TriggerFromID(Context.Client.TriggerID))
        return ServerReply::Refusal(QStringLiteral("The account \"%1\" has no trigger with the ID \"%2\".").arg(found.Account->Name, Context.Client.TriggerID));
    const QDate today = QDate::currentDate();
    return ChangeAccount(
        Context, *found.Account, [today](clsAccount &account) { account.ReceivedAfterReset(today); },
        QStringLiteral("Sources of account ") + found.Account->Name + QStringLiteral(" rewound"));
}

ServerReply PostTrigger(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("triggerid")))
        return *bad;
    const QString &body = Context.Client.Body;
    if (auto bad = CheckFragment(body, TriggerTag))
        return *bad;
    const FoundAccount found = FindAccount(Context, Access::Change);
    if (found.Refusal)
        return *found.Refusal;
    clsAccount &account = *found.Account;
    clsAccountTrigger *stored = account.TriggerFromID(Context.Client.TriggerID);
    const QString id = stored ? stored->TriggerID : Context.Client.TriggerID;
    clsAccountTrigger posted;
    posted.setXML(body);
    if (auto bad = CheckPostedID(posted.TriggerID, id, QStringLiteral("trigger"), QStringLiteral("triggerid"),
                                 Qt::CaseInsensitive))
        return *bad;
    posted.TriggerID = id;
    if (auto refused = CheckTrigger(Context.User, account.AccountID, posted))
        return *refused;

    ConfigStore &store = Context.Services.Store;
    if (!store.Write([&] { return store.SaveTrigger(account.AccountID, posted); }))
        return StoreFailure(Context);
    // Read anew, an existing trigger keeps its counters.
    const QString fragment = posted.XML();
    if (stored)
        stored->setXML(fragment);
    else
        account.Triggers.AddXML(fragment);
    Context.Services.Log.Add(QStringLiteral("Trigger ") + posted.Name + QStringLiteral(" of account ") + account.Name
                             + QStringLiteral(" saved by ") + Context.User.Username);
    return ServerReply::Ok();
}

ServerReply DeleteTrigger(RequestContext &Context)
{
    const FoundTrigger found = FindTrigger(Context, Access::Change);
    if (found.Refusal)
        return *found.Refusal;
    const QString accountID = found.Account->AccountID;
    const QString id = found.Trigger->TriggerID;
    ConfigStore &store = Context.Services.Store;
    if (!store.Write([&] { return store.DeleteTrigger(accountID, id); }))
        return StoreFailure(Context);
    const QString name = found.Trigger->Name;
    found.Account->Triggers.Delete(id);
    Context.Services.Log.Add(QStringLiteral("Trigger ") + name + QStringLiteral(" deleted by ")
                             + Context.User.Username);
    return ServerReply::Ok();
}

// Exchanges the places of triggerid and the trigger named by movetofolderid
// in the account's running order.
ServerReply SwapTrigger(RequestContext &Context)
{
    if (auto bad = CheckIdentifier(Context, QStringLiteral("movetofolderid")))
        return *bad;
    const FoundTrigger found = FindTrigger(Context, Access::Change);
    if (found.Refusal)
        return *found.Refusal;
    colTriggers &triggers = found.Account->Triggers;
    const clsAccountTrigger *other = found.Account->TriggerFromID(Context.Client.MoveToFolderID);
    if (!other)
        return ServerReply::Refusal(QStringLiteral("The account \"%1\" has no trigger with the ID \"%2\" to swap with.").arg(found.Account->Name, Context.Client.MoveToFolderID));
    if (other == found.Trigger)
        return ServerReply::Ok();
    const QString first = found.Trigger->TriggerID;
    const QString second = other->TriggerID;
    ConfigStore &store = Context.Services.Store;
    if (!store.Write([&] { return store.SwapTriggers(found.Account->AccountID, first, second); }))
        return StoreFailure(Context);
    triggers.Swap(triggers.TriggerNoFromID(first), triggers.TriggerNoFromID(second));
    Context.Services.Log.Add(QStringLiteral("Triggers ") + found.Trigger->Name + QStringLiteral(" and ") + other->Name
                             + QStringLiteral(" swapped by ") + Context.User.Username);
    return ServerReply::Ok();
}

} // namespace

void AddAccountRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("getaccounts.xml"), RequestVerb::Get, GetAccounts);
    Table.Add(QStringLiteral("getaccount.xml"), RequestVerb::Get, [](RequestContext &Context) {
        return AnswerAccount(Context, [](const clsAccount &a) { return a.XML(); });
    });
    Table.Add(QStringLiteral("postaccount.htm"), RequestVerb::Post, PostAccount);
    Table.Add(QStringLiteral("deleteaccount.xml"), RequestVerb::Get, DeleteAccount);
    Table.Add(QStringLiteral("enableaccount.xml"), RequestVerb::Get,
              [](RequestContext &Context) { return SetAccountEnabled(Context, true); });
    Table.Add(QStringLiteral("disableaccount.xml"), RequestVerb::Get,
              [](RequestContext &Context) { return SetAccountEnabled(Context, false); });
    Table.Add(QStringLiteral("receivedafterreset.xml"), RequestVerb::Get, ReceivedAfterReset);

    Table.Add(QStringLiteral("gettriggers.xml"), RequestVerb::Get, [](RequestContext &Context) {
        return AnswerAccount(Context, [](const clsAccount &a) { return a.Triggers.XML(); });
    });
    Table.Add(QStringLiteral("gettriggerconditions.xml"), RequestVerb::Get, [](RequestContext &Context) {
        return AnswerAccount(Context, [](const clsAccount &a) { return a.Triggers.XMLConditionsOnly(); });
    });
    // The console routes this reply into colTriggers.XMLNames.
    Table.Add(QStringLiteral("gettriggernames.xml"), RequestVerb::Get, [](RequestContext &Context) {
        return AnswerAccount(Context, [](const clsAccount &a) { return a.Triggers.XMLNames(); });
    });
    Table.Add(QStringLiteral("gettriggerlist.txt"), RequestVerb::Get, GetTriggerList);
    Table.Add(QStringLiteral("gettrigger.xml"), RequestVerb::Get, GetTrigger);
    Table.Add(QStringLiteral("posttrigger.htm"), RequestVerb::Post, PostTrigger);
    Table.Add(QStringLiteral("deletetrigger.xml"), RequestVerb::Get, DeleteTrigger);
    Table.Add(QStringLiteral("enabletrigger.xml"), RequestVerb::Get,
              [](RequestContext &Context) { return SetTriggerEnabled(Context, true); });
    Table.Add(QStringLiteral("disabletrigger.xml"), RequestVerb::Get,
              [](RequestContext &Context) { return SetTriggerEnabled(Context, false); });
    Table.Add(QStringLiteral("swaptrigger.xml"), RequestVerb::Get, SwapTrigger);
}
