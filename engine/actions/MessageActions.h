#pragma once
#include <QString>

#include <functional>

class ActionItem;
class clsActionJabber;
class clsAccountTrigger;
class clsMessage;
class clsMessageStore;

// The run-time of the message action kinds, for the action runner: e-mail,
// forward, SMS and appointments through the Outbox, popups to the
// connected consoles, instant messages to an XMPP server, and validation,
// which parks the message. Fax has no device on this server: it writes an
// error line that says so.
class MessageActions
{
public:
    using LogFunction = std::function<void(const QString &Text)>;

    enum class Outcome {
        NotMine, // another family's kind: left to the caller
        Done, // ran (and logged); the following actions run
        Stop, // the following actions must not run: the message waits for validation, or could not be parked
    };

    static Outcome Run(const ActionItem &Action, clsAccountTrigger &Trigger, clsMessage &Message, clsMessageStore *Store,
                       const LogFunction &Log);

private:
    static void RunJabber(const clsActionJabber &Action, const LogFunction &Log);
};
