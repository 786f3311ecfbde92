#pragma once
#include "colAccounts.h"
#include "colOrganization.h"
#include "colUserFolders.h"
#include "colUsers.h"

// The process-wide collections of the configuration model, each made on
// first use. They live on the one thread that owns the configuration; a
// worker thread of the server's engine works on a copy of its own (below).
colOrganization &Organizations();
colUsers &Users();
colUserFolders &UserFolders();
colAccounts &Accounts();

// Drops every collection, so that the next use starts empty. References
// taken before are no longer valid.
void ResetGlobalCollections();

// The four collections of a copy of the configuration.
struct CollectionSet
{
    colOrganization *Organizations = nullptr;
    colUsers *Users = nullptr;
    colUserFolders *UserFolders = nullptr;
    colAccounts *Accounts = nullptr;
};
// While a set is given, the four functions above answer its collections on
// the calling thread; nullptr returns the thread to the process-wide ones.
void UseThreadCollections(const CollectionSet *Set);

// A count that every stored change of the configuration raises, so that a
// thread holding a copy knows when to fetch a fresh one. Any thread may read it.
quint64 ConfigurationGeneration();
void CountConfigurationChange();
