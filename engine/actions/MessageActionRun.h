#pragma once
#include <QDateTime>
#include <QString>

#include <functional>

class MimeMail;
class clsAccountTrigger;
class clsActionForward;
class clsActionMSG;
class clsActionSMS;
class clsMessage;
class clsMessageStore;
struct OutboxMessage;

// Runs the kinds that send mail on the current message: an e-mail composed
// from the action (tokens expanded), the original forwarded, an SMS. What
// they send goes to the Outbox, now or scheduled, and the outgoing role
// delivers it.
class MessageActionRun
{
public:
    using LogFunction = std::function<void(const QString &Text)>;

    MessageActionRun(clsMessage &Message, const clsAccountTrigger &Trigger, clsMessageStore *Store, LogFunction Log);

    bool RunMessage(const clsActionMSG &Action);
    bool RunForward(const clsActionForward &Action);
    bool RunSMS(const clsActionSMS &Action);

    // Queues a composed mail: it gets the program's X-Mailer header, and goes
    // to Recipients (the envelope: To, CC and BCC) from From. Due is null for
    // now; Scheduled makes it a scheduled row. The RecordNo; 0 when the
    // Outbox refused, which is logged.
    qint64 Queue(MimeMail &Mail, const QString &From, const QString &Recipients, const QString &Subject,
                 const QDateTime &Due = QDateTime(), bool Scheduled = false);

    // The action's sender, else the server's default sender, else the
    // administrator's address.
    static QString SenderAddress(const QString &From);
    // The name of the header that carries another mail server for a mail
    // (the fields of SendVia, its password enciphered); the outgoing role
    // takes it out before sending.
    static QString SendViaHeader() { return QStringLiteral("PostvaneSendVia"); }
    // A header text (CR LF and TAB made blanks), tokens expanded.
    static QString HeaderText(const QString &Value);

private:
    // Adds the files of a ";" list; false (logged) when one cannot be read.
    bool AddFiles(MimeMail &Mail, const QString &Files);
    void AddIncoming(MimeMail &Mail, bool WithInline);
    QString HtmlBody(const clsActionMSG &Action);
    // A scheduled row of the action's kind, unless a duplicate waits.
    bool Schedule(MimeMail *Mail, OutboxMessage &Row, bool DeDup, const QDateTime &Due);

    clsMessage &m_message;
    const clsAccountTrigger &m_trigger;
    clsMessageStore *m_store;
    LogFunction m_log;
};
