#include "ConfigurationCopy.h"

ConfigurationCopy::ConfigurationCopy(Loader Load)
    : m_read(Load ? Load() : Reader())
    , m_organizations(std::make_unique<colOrganization>())
    , m_users(std::make_unique<colUsers>())
    , m_folders(std::make_unique<colUserFolders>())
    , m_accounts(std::make_unique<colAccounts>())
    , m_set{m_organizations.get(), m_users.get(), m_folders.get(), m_accounts.get()}
{
    UseThreadCollections(&m_set);
}

ConfigurationCopy::~ConfigurationCopy()
{
    UseThreadCollections(nullptr);
}

bool ConfigurationCopy::Refresh()
{
    const quint64 generation = ConfigurationGeneration();
    if (generation == m_generation && !m_reread.hasExpired())
        return true;
    if (!m_read || !m_read())
        return false;
    m_generation = generation;
    m_reread.setRemainingTime(RereadAfter);
    return true;
}
