#pragma once
#include <QString>
#include <QStringList>
#include <functional>

class clsAccount;
class clsAccountTrigger;
class clsMessage;
class clsMessageStore;

// Runs an account's triggers on one message, the thread's current message,
// and writes each step to the message's process log.
//
// A message that names its trigger ("Postvane-TriggerID": a test run, a
// value passed on) runs that trigger without further tests. Otherwise the
// triggers are tried in their order. A trigger matches when it is enabled, in
// its hour schedule, the message is newer than its ReceivedAfter, its words
// are found, the sender is like its pattern, importance and sensitivity fit
// and its condition holds. The first match has its fields extracted into the
// message and its action list run (ActionRunner); then processing stops, or
// passes on to the trigger named by ThenProcessID, unless the actions ended
// it. A trigger met a second time for one message ends the chain with an
// error line. A message no trigger matches keeps no trigger ("-" in the
// store).
//
// A run with an error line counts as failed (the message's ErrorCount); a
// failed trigger of an account with AutoPause calls PauseAccount.
class MessageProcessor
{
public:
    explicit MessageProcessor(clsMessageStore &Store);

    std::function<void(const QString &AccountID, const QString &Reason)> PauseAccount;

    // Processes the message; afterwards Lines holds its process log lines.
    void Process(clsMessage &Message);
    QStringList Lines;

    // Adds a line to the message's process log and to Lines.
    void Log(clsMessage &Message, const QString &Text);
    // Queues a new message for a trigger of any account: Subject and Body as
    // given, the addresses of Message, Source "PassTo". False when the
    // trigger does not exist or the queue refused.
    bool PassToTrigger(clsMessage &Message, const QString &TriggerID, const QString &Subject, const QString &Body);

    // Why the trigger does not match the current message; empty when it
    // does. Problem is set when a condition could not be evaluated.
    static QString MismatchReason(const clsAccountTrigger &Trigger, const clsMessage &Message, QString *Problem);

private:
    // Runs the trigger (its fields and actions) and answers the trigger to
    // pass on to, or nullptr.
    clsAccountTrigger *RunTrigger(clsAccountTrigger &Trigger, clsMessage &Message);
    // False when a field's validation cancels the trigger.
    bool ExtractFields(clsAccountTrigger &Trigger, clsMessage &Message);
    clsAccountTrigger *FirstMatch(clsAccount &Account, clsMessage &Message);
    bool Matches(clsAccountTrigger &Trigger, clsMessage &Message);

    clsMessageStore &m_store;
};
