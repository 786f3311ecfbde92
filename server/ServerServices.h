#pragma once
#include <functional>

class ConfigStore;
class clsMessageStore;
class PushChannel;
class ServerLog;
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
};
