#pragma once

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
    // The engine's roles that run in this process.
    ServerRoles *Roles = nullptr;
};
