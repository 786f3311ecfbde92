#pragma once
#include "model/GlobalCollections.h"

#include <QDeadlineTimer>
#include <functional>
#include <memory>

// A worker thread's own copy of the configuration (organizations, users,
// folders, accounts with their triggers). While it lives, the global
// collection functions answer the copy on the thread that made it, so that
// the store, the tokens and the processor read it as they would read the
// process-wide collections, without meeting the web service's changes half
// made.
class ConfigurationCopy
{
public:
    // Reads the configuration into the calling thread's collections.
    using Reader = std::function<bool()>;
    // Makes the Reader of the calling thread. What the Reader holds (the
    // server's connection to its configuration database) ends with the copy,
    // on that thread.
    using Loader = std::function<Reader()>;

    explicit ConfigurationCopy(Loader Load);
    ~ConfigurationCopy();
    ConfigurationCopy(const ConfigurationCopy &) = delete;
    ConfigurationCopy &operator=(const ConfigurationCopy &) = delete;

    // Reads the configuration anew when a change was stored in this process
    // since the last reading, or when RereadAfter has passed (another process
    // may have changed it). False when it could not be read; the copy then
    // stays as it was.
    bool Refresh();
    // Reads it anew at the next Refresh.
    void Forget() { m_generation = NoGeneration; }
    // True when a change was stored in this process since the copy was read.
    bool Changed() const { return ConfigurationGeneration() != m_generation; }

    // Milliseconds after which a copy is read again even without a change
    // in this process.
    static constexpr int RereadAfter = 10000;

private:
    static constexpr quint64 NoGeneration = ~quint64(0);

    Reader m_read;
    std::unique_ptr<colOrganization> m_organizations;
    std::unique_ptr<colUsers> m_users;
    std::unique_ptr<colUserFolders> m_folders;
    std::unique_ptr<colAccounts> m_accounts;
    CollectionSet m_set;
    quint64 m_generation = NoGeneration;
    QDeadlineTimer m_reread;
};
