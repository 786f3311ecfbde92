#pragma once
#include "engine/ConfigurationCopy.h"
#include "engine/ServerRole.h"

class clsMessageStore;
class SmtpSender;
struct OutboxMessage;

// The outgoing role: sends the Outbox. Each thread takes the next due row
// (GetOutBox: a status jump of 100 keeps two senders off one row), sends
// it through the smart host, or to the mail exchangers of each recipient's
// domain when none is set, and then deletes the row. A failed attempt puts
// the row back with its count of attempts, due again RetryMinutes later; a
// refusal for good (a 5xx reply), or the MaxAttempts-th failure, gives the
// row up: it is deleted with an error line in SMTPCLIENT.LOG. Rows a sender
// took and never finished (its process ended) are due again once the date
// set at the take has passed.
class OutgoingRole
{
public:
    OutgoingRole(ConfigurationCopy::Loader Load, int Threads = 2);
    ~OutgoingRole();

    ServerRole Role;
    static constexpr int MaxAttempts = 8;
    static constexpr int RetryMinutes = 10;

private:
    void Run();
    void Deliver(clsMessageStore &Store, SmtpSender &Sender, const OutboxMessage &Message);
    // Sends to the smart host or the recipients' exchangers; false with the
    // reason in the sender.
    bool Send(SmtpSender &Sender, const OutboxMessage &Message, const QStringList &Recipients);

    ConfigurationCopy::Loader m_load;
};
