#pragma once
#include "clsPushStream.h"
#include "clsUserClient.h"

#include <QList>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QString>
#include <QTimer>

class QNetworkReply;
class clsAccount;
class clsAccountTrigger;
class clsUser;
class clsUserOrganization;

// The console's connection to the server: one HTTPS client for requests and
// replies, a second one for the long-lived push channel, and the routing of
// what comes back into the global collections. It is never shown; what the
// windows must do about a reply (message bar, greyed commands, log lines,
// popups) it says through its signals, so that it holds no window itself.
//
// Every wait turns the event loop. A request first waits for the one before
// it to end (WaitIdle), so requests never overlap.
class frmRemote : public QObject
{
    Q_OBJECT
public:
    // The five log panes, in the order the main window creates them.
    enum LogPane { PaneServer, PaneEdge, PaneMessage, PaneMailServer, PaneOutgoing };
    Q_ENUM(LogPane)

    // What one desktop popup shows; the window itself belongs to the console.
    struct Popup
    {
        QString Title;
        QString Message;
        QString Link;        // the first web address of the message, if any
        qint64 Colour = 0;   // background: negative a system colour, else RGB as 0xBBGGRR
        int Style = 0;
        int Effect = 0;      // text alignment or effect
        bool Sticky = false; // stays until closed; otherwise closes after CloseAfter ms
        int CloseAfter = 3500;
    };

    // Result codes of a request besides the HTTP status: 0 is success (status
    // 200). Local failures have codes of their own: an interrupted request,
    // a time-out, and LocalErrorBase plus the network error for the rest.
    static constexpr int ErrorInterrupted = 25062;
    static constexpr int ErrorTimeout = 301;
    static constexpr int LocalErrorBase = 10000;
    static constexpr int WaitIdleSeconds = 5;
    static constexpr int PushTimeOutSeconds = 5;
    static constexpr int SubscribeInterval = 60000;
    static constexpr int NonStickyPopupLimit = 8;
    static constexpr int StickyPopupLimit = 20;

    explicit frmRemote(QObject *parent = nullptr);
    ~frmRemote() override;

    QNetworkAccessManager HTTPS;
    QNetworkAccessManager HTTPSPush;
    QTimer SubscribeTimer;

    // The last request's outcome.
    int LastCode = 0;
    int StatusCode = 0;       // HTTP status, 0 when none arrived
    QString StatusLine;       // "HTTP/1.1 200 OK"
    QString ReplyText;
    QString ErrorText;
    QList<QPair<QByteArray, QByteArray>> ReplyHeaders;
    int Attempts = 0;         // tries of the last GET

    // The reply being routed.
    clsUserClient Client;
    // Session facts of the session reply that the global block has no field for.
    QString Build;
    QString WebServicesURL;
    // The list of "getscheduledmessages.xml", kept for its view.
    QString ScheduledMessages;

    // Popups on screen, and whether the flood notice stands in for the rest.
    int PopupCount = 0;
    bool PopupFlood = false;

    // Set while the console closes: failures are no longer shown.
    bool Closing = false;

    // GET of an address relative to ServerURL, credentials added. TimeOut in
    // seconds, 0 for 30. A non-silent success is routed (RouteReply).
    bool HTTPGet(const QString &URL, int TimeOut = 0, bool Silent = false);
    // POST of a fragment as "text/xml"; never retried.
    bool HTTPPut(const QString &URL, const QString &Body);
    // Each posts the record's whole fragment: true when the server stored
    // it. A user or an organization then has the folders fetched anew.
    bool SendAccount(const clsAccount &Account);
    bool SendTrigger(const clsAccountTrigger &Trigger);
    bool SendUser(const clsUser &User);
    bool SendOrganization(const clsUserOrganization &Organization);

    // Logs on with the session fields of the global block and runs the
    // bootstrap: 0 done, 1 wrong credentials, 2 failed.
    int Login();
    // The bootstrap after the session reply; false when the server refused
    // the session ("No Organization").
    bool StartSession(const QString &Reply);
    // Dispatches the last reply by its Content-Location.
    void RouteReply();
    void RouteReply(const QString &Location, const QString &Body);

    // Opens the push channel and keeps it open through SubscribeTimer.
    void Subscribe();
    bool PushConnected() const;
    // One block of the push channel, by its location.
    void ReceivePushBlock(const QString &Location, const QString &Body);
    // A "log.xml" block: pairs of Source and Log.
    void ReceiveLog(const QString &Body);
    // A "popup.xml" block, with the on-screen limits.
    void ShowPopup(const QString &Body);
    // Told by the popup window as it closes.
    void PopupClosed();

    bool Busy() const;
    // Turns the event loop until the running request ends, at most
    // WaitIdleSeconds; then interrupts it.
    void WaitIdle();
    // Interrupts the running request.
    void Interrupt();
    // Interrupts and closes both connections and stops re-subscribing.
    void Close();

signals:
    void MessageBar(const QString &Text);
    // The push channel, re-opened by SubscribeTimer, reached the server
    // again while the session was lost: the console may log on anew.
    void ChannelRestored();
    void StatusText(const QString &Text);
    // Server commands enabled or greyed; Global.Connected is already set.
    void ToolBarConnected(bool Connected);
    void BusyPointer(bool Busy);
    // A login could not reach the server; the text says why.
    void ConnectError(const QString &Text);
    // The login dialog's progress bar rises by one.
    void LoginProgress();
    // The server has no organization for the user: the console closes.
    void SessionRefused();
    // The server logged this console out: ask for a new login.
    void LoggedOut();
    // The log panes follow their files (local) or wait for lines (remote).
    void LogPanesLocal(bool IsAdmin);
    void LogPanesRemote();
    void FirstLog(frmRemote::LogPane Pane, const QString &Text);
    void RemoteLog(frmRemote::LogPane Pane, const QString &Fragment);
    void AccountsRefreshed();
    void PopupShown(const frmRemote::Popup &Popup);
    void MessageReceived(const QString &Body);
    void ScheduledMessagesReceived();
    void ScheduledMessageReceived(const QString &Body);

private:
    // A request found no server: the message bar says why, and with
    // GreyCommands the server commands grey.
    void ConnectionLost(int Code, bool GreyCommands);
    QNetworkRequest Request(const QString &Address) const;
    // One exchange on HTTPS; the result code.
    int Send(const QString &Address, const QByteArray *PostBody, int TimeOutSeconds);
    void TakeReply(QNetworkReply *Reply, bool TimedOut);
    void CloseConnection();
    void ShowConnectError(const QString &Text);
    void ShowServerError(const QString &Text);
    void ReceivePush();
    void FlushPush();
    clsAccount *AccountOfReply() const;

    QPointer<QNetworkReply> m_reply;
    QPointer<QNetworkReply> m_pushReply;
    clsPushStream m_push;
    QTimer m_pushQuiet; // ends a block without a length when the stream falls quiet
};

Q_DECLARE_METATYPE(frmRemote::Popup)

// The process-wide connection, made on first use and owned by the application.
frmRemote &Remote();
