#include "GlobalCollections.h"
#include "actions/clsActionPassTo.h"
#include "clsAccountTrigger.h"

#include <atomic>
#include <memory>

namespace {

std::unique_ptr<colOrganization> TheOrganizations;
std::unique_ptr<colUsers> TheUsers;
std::unique_ptr<colUserFolders> TheUserFolders;
std::unique_ptr<colAccounts> TheAccounts;

thread_local const CollectionSet *ThreadSet = nullptr;
std::atomic<quint64> Generation{0};

template <typename T> T &MadeOnFirstUse(std::unique_ptr<T> &Collection)
{
    if (!Collection)
        Collection = std::make_unique<T>();
    return *Collection;
}

} // namespace

colOrganization &Organizations()
{
    if (ThreadSet)
        return *ThreadSet->Organizations;
    return MadeOnFirstUse(TheOrganizations);
}

colUsers &Users()
{
    if (ThreadSet)
        return *ThreadSet->Users;
    return MadeOnFirstUse(TheUsers);
}

colUserFolders &UserFolders()
{
    if (ThreadSet)
        return *ThreadSet->UserFolders;
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
    if (ThreadSet)
        return *ThreadSet->Accounts;
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

void UseThreadCollections(const CollectionSet *Set)
{
    ThreadSet = Set;
}

quint64 ConfigurationGeneration()
{
    return Generation.load();
}

void CountConfigurationChange()
{
    ++Generation;
}
