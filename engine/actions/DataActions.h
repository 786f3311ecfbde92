#pragma once
#include <QString>

#include <functional>

class ActionItem;
class clsAccountTrigger;
class clsActionDBToken;
class clsMessage;
class clsMessageStore;

// The run-time of the data action kinds, for the action runner: database
// updates (direct, custom, Azure), CSV, Excel and text files, the store's
// token counters. A Report, which needs a designer this server does not
// have, writes an error line that says so.
class DataActions
{
public:
    using LogFunction = std::function<void(const QString &Text)>;

    // True when the action is of a data kind, which then ran and logged;
    // false for any other kind, which is left to the caller.
    static bool Run(const ActionItem &Action, clsAccountTrigger &Trigger, clsMessage &Message, clsMessageStore *Store,
                    const LogFunction &Log);

private:
    static void RunUpdateToken(const clsActionDBToken &Action, clsMessage &Message, clsMessageStore *Store,
                               const LogFunction &Log);
};
