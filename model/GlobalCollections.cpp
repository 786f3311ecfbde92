#include "GlobalCollections.h"
#include "actions/clsActionPassTo.h"
#include "clsAccountTrigger.h"

#include <memory>

namespace {

std::unique_ptr<colOrganization> TheOrganizations;
std::unique_ptr<colUsers> TheUsers;
std::unique_ptr<colUserFolders> TheUserFolders;
std::unique_ptr<colAccounts> TheAccounts;

template <typename T> T &MadeOnFirstUse(std::unique_ptr<T> &Collection)
{
    if (!Collection)
        Collection = std::make_unique<T>();
    return *Collection;
}

} // namespace

colOrganization &Organizations()
{
    return MadeOnFirstUse(TheOrganizations);
}

colUsers &Users()
{
    return MadeOnFirstUse(TheUsers);
}

colUserFolders &UserFolders()
{
    return MadeOnFirstUse(TheUserFolders);
}

// The name of a trigger of any account, as a PassTo action shows it.
static QString TriggerNameFromID(const QString &TriggerID)
{
    const clsAccount *account = Accounts().Item(Accounts().AccountNoForTriggerID(TriggerID));
    const clsAccountTrigger *trigger = account ? account->TriggerFromID(TriggerID) : nullptr;
    return trigger ? trigger->Name : QString();
}

colAccounts &Accounts()
{
    if (!TheAccounts)
        clsActionPassTo::TriggerName = TriggerNameFromID;
    return MadeOnFirstUse(TheAccounts);
}

void ResetGlobalCollections()
{
    TheAccounts.reset();
    TheUserFolders.reset();
    TheUsers.reset();
    TheOrganizations.reset();
}
