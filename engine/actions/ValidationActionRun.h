#pragma once
#include <QString>

#include <functional>

class MessageActionRun;
class clsActionValidation;
class clsMessage;

// Runs a Validation action on the current message. A message that comes
// back confirmed (its ValidateActionID is this action's) goes on with the
// actions behind it. Any other is parked: it is marked ValidationRequired
// with the action, the expiry and the confirmation text, which the
// processor writes to its queue row instead of storing the message, and the
// link to the validation page is mailed when the action says so.
class ValidationActionRun
{
public:
    using LogFunction = std::function<void(const QString &Text)>;

    ValidationActionRun(clsMessage &Message, MessageActionRun &Mailer, LogFunction Log);

    // True when the actions behind it may run now.
    bool Run(const clsActionValidation &Action);

private:
    bool SendRequest(const clsActionValidation &Action);
    // The survey's answers of the page into the fields or variables named.
    void AssignAnswers();

    clsMessage &m_message;
    MessageActionRun &m_mailer;
    LogFunction m_log;
};
