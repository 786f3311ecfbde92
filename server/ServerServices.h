#pragma once
#include <functional>

class ConfigStore;
class clsMessageStore;
class PushChannel;
class ServerLog;
class ServerRoles;
class UserPasswords;

// The server's long-lived parts that request handlers work with.
struct ServerServices
{
    ConfigStore &Store;
    UserPasswords &Passwords;
    ServerLog &Log;
    PushChannel &Push;
    clsMessageStore &MessageStore;
    // Called after a user was saved or deleted.
    std::function<void()> UsersChanged;
    // The engine's roles that run in this process.
    ServerRoles *Roles = nullptr;
};
