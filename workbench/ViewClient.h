#pragma once
#include <QNetworkAccessManager>
#include <QObject>
#include <QString>
#include <functional>

// The HTTPS client of one view. Its requests run beside the console's
// connection (frmRemote), so that a long list does not hold up the rest of
// the console. Each view has one; when the view moves on (another folder,
// period or page) it calls Drop, and the replies of what it asked before are
// thrown away instead of overwriting what it shows now.
class ViewClient : public QObject
{
    Q_OBJECT
public:
    static constexpr int TimeOutSeconds = 30;

    // One reply: the HTTP status (0 when none came) and the body.
    struct Reply
    {
        int Status = 0;
        QString Text;
        QString StatusLine;
        // Status 200 and no refusal of the server.
        bool Ok() const;
        // Why the request failed, as the message bar shows it; empty when Ok.
        QString Failure() const;
    };
    using Handler = std::function<void(const Reply &)>;

    explicit ViewClient(QObject *parent = nullptr);

    // Starts a GET of Address (relative to the server, without the
    // credentials). Done runs with the reply unless Drop is called first.
    void Get(const QString &Address, Handler Done);
    // The same, turning the event loop until the reply is in, which Drop
    // does not throw away; for commands whose outcome the view needs before
    // it goes on.
    Reply Wait(const QString &Address);
    // Replies of every request started so far are dropped.
    void Drop();
    // Requests started and not yet answered or dropped.
    int Pending() const { return m_pending; }

    // Shows a failed reply in the console's message bar; false then.
    static bool Report(const Reply &Result);

    QNetworkAccessManager Network;

private:
    void Start(const QString &Address, Handler Done, bool Droppable);

    quint64 m_generation = 0;
    int m_pending = 0;
};
