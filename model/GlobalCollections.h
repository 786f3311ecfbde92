#pragma once
#include "colAccounts.h"
#include "colOrganization.h"
#include "colUserFolders.h"
#include "colUsers.h"

// The process-wide collections of the configuration model, each made on
// first use. They live on the one thread that owns the configuration.
colOrganization &Organizations();
colUsers &Users();
colUserFolders &UserFolders();
colAccounts &Accounts();

// Drops every collection, so that the next use starts empty. References
// taken before are no longer valid.
void ResetGlobalCollections();
