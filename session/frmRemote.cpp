#include "frmRemote.h"
#include "Requests.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Startup.h"
#include "foundation/TextHelpers.h"
#include "foundation/cDDict.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QNetworkReply>
#include <QSysInfo>
#include <QUrl>

namespace {

const char *InterruptedProperty = "postvaneInterrupted";
const QByteArray LocationHeader("Content-Location");
const int PushQuietMs = 250;

void AcceptAnyCertificate(QNetworkReply *Reply)
{
    QObject::connect(Reply, &QNetworkReply::sslErrors, Reply, [Reply] { Reply->ignoreSslErrors(); });
}

} // namespace

frmRemote::frmRemote(QObject *parent) : QObject(parent), m_push(Global.ProductName)
{
    HTTPS.setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
    HTTPSPush.setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
    SubscribeTimer.setInterval(SubscribeInterval);
    connect(&SubscribeTimer, &QTimer::timeout, this, [this] {
        if (!PushConnected())
            Subscribe();
    });
    m_pushQuiet.setSingleShot(true);
    m_pushQuiet.setInterval(PushQuietMs);
    connect(&m_pushQuiet, &QTimer::timeout, this, &frmRemote::FlushPush);
}

frmRemote::~frmRemote()
{
    Close();
}

QNetworkRequest frmRemote::Request(const QString &Address) const
{
    QNetworkRequest request(QUrl(Global.ServerURL + Address));
    request.setHeader(QNetworkRequest::UserAgentHeader, Global.ProductName);
    request.setRawHeader("Connection", "Keep-Alive");
    return request;
}

bool frmRemote::Busy() const
{
    return m_reply && m_reply->isRunning();
}

void frmRemote::WaitIdle()
{
    QDeadlineTimer deadline(WaitIdleSeconds * 1000);
    while (Busy() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
    if (Busy()) {
        Interrupt();
        CloseConnection();
    }
}

void frmRemote::Interrupt()
{
    if (!Busy())
        return;
    m_reply->setProperty(InterruptedProperty, true);
    m_reply->abort();
}

void frmRemote::CloseConnection()
{
    HTTPS.clearConnectionCache();
}

void frmRemote::Close()
{
    SubscribeTimer.stop();
    m_pushQuiet.stop();
    Interrupt();
    if (m_pushReply) {
        m_pushReply->disconnect(this);
        m_pushReply->abort();
        m_pushReply->deleteLater();
    }
    m_push.Clear();
    HTTPS.clearConnectionCache();
    HTTPSPush.clearConnectionCache();
}

int frmRemote::Send(const QString &Address, const QByteArray *PostBody, int TimeOutSeconds)
{
    QNetworkRequest request = Request(Address);
    QNetworkReply *reply = nullptr;
    if (PostBody) {
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/xml"));
        reply = HTTPS.post(request, *PostBody);
    } else {
        reply = HTTPS.get(request);
    }
    m_reply = reply;
    AcceptAnyCertificate(reply);

    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    bool timedOut = false;
    connect(&timer, &QTimer::timeout, &loop, [&] {
        timedOut = true;
        reply->abort();
    });
    connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    timer.start(TimeOutSeconds * 1000);
    if (!reply->isFinished())
        loop.exec();
    TakeReply(reply, timedOut);
    if (m_reply == reply)
        m_reply = nullptr;
    reply->deleteLater();
    return LastCode;
}

void frmRemote::TakeReply(QNetworkReply *Reply, bool TimedOut)
{
    const QVariant status = Reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    StatusCode = status.isValid() ? status.toInt() : 0;
    StatusLine = StatusCode ? QStringLiteral("HTTP/1.1 %1 %2")
                                  .arg(StatusCode)
                                  .arg(Reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString())
                            : QString();
    ReplyText = QString::fromUtf8(Reply->readAll());
    ReplyHeaders = Reply->rawHeaderPairs();
    // The status's own words; the client's text would repeat the address,
    // credentials included.
    ErrorText = StatusCode ? Reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString()
                           : Reply->errorString();
    if (Reply->property(InterruptedProperty).toBool())
        LastCode = ErrorInterrupted;
    else if (TimedOut) {
        LastCode = ErrorTimeout;
        ErrorText = QStringLiteral("Timeout");
    } else if (StatusCode)
        LastCode = StatusCode == 200 ? 0 : StatusCode;
    else
        LastCode = Reply->error() == QNetworkReply::NoError ? 0 : LocalErrorBase + int(Reply->error());
}

bool frmRemote::HTTPGet(const QString &URL, int TimeOut, bool Silent)
{
    const QString address = Requests::WithAuth(URL, Global.AuthQuery);
    WaitIdle();
    emit BusyPointer(true);
    const int seconds = TimeOut > 0 ? TimeOut : 30;
    int code = 0;
    Attempts = 0;
    do {
        ++Attempts;
        code = Send(address, nullptr, seconds);
        if (!(code < 1 || code == 401 || code == ErrorInterrupted))
            CloseConnection();
    } while (code >= 500 && code != ErrorInterrupted && Attempts != 3);

    if (!Silent && code == 0)
        RouteReply();
    emit BusyPointer(false);
    if (!Silent)
        emit StatusText(QString());

    if (code <= 0 || (Silent && code == 401))
        return true;
    if (Closing)
        return false;
    if (code == 401) {
        emit MessageBar(DDict().GetString(QStringLiteral("ACCESSDENIED"), QStringLiteral("Access Denied")));
        return false;
    }
    ConnectionLost(code, !Silent);
    return false;
}

void frmRemote::ConnectionLost(int Code, bool GreyCommands)
{
    emit MessageBar(DDict().GetString(QStringLiteral("CONNECTERROR"), QStringLiteral("Connection Error With %APPNAME% Server: "))
                    + ErrorText + QStringLiteral(" (") + QString::number(Code) + u')');
    if (GreyCommands) {
        Global.Connected = false;
        emit ToolBarConnected(false);
    }
}

bool frmRemote::HTTPPut(const QString &URL, const QString &Body)
{
    const QString address = Requests::WithAuth(URL, Global.AuthQuery);
    WaitIdle();
    emit BusyPointer(true);
    const QByteArray body = Body.toUtf8();
    const int code = Send(address, &body, 30);
    emit BusyPointer(false);
    if (code != 0) {
        if (Closing || code == ErrorInterrupted)
            return false;
        // A server that answers, but not with 200, is as broken as one that is gone.
        if (code == 401)
            emit MessageBar(DDict().GetString(QStringLiteral("ACCESSDENIED"), QStringLiteral("Access Denied")));
        else
            ConnectionLost(code, true);
        return false;
    }
    if (ReplyText.contains(QStringLiteral("Error:"))) {
        ShowServerError(ReplyText);
        return false;
    }
    return true;
}

void frmRemote::ShowServerError(const QString &Text)
{
    if (!Closing)
        emit MessageBar(DDict().GetString(QStringLiteral("SERVERERROR"), QStringLiteral("Error Response From Server: "))
                        + Text);
}

bool frmRemote::SendAccount(const clsAccount &Account)
{
    return HTTPPut(Requests::PostAccount(Account.AccountID), Account.XML());
}

bool frmRemote::SendTrigger(const clsAccountTrigger &Trigger)
{
    const QString accountID = Trigger.Parent ? Trigger.Parent->AccountID : QString();
    return HTTPPut(Requests::PostTrigger(accountID, Trigger.TriggerID), Trigger.XML());
}

bool frmRemote::SendUser(const clsUser &User)
{
    const bool stored = HTTPPut(Requests::PostUser(User.ID), User.XML());
    HTTPGet(Requests::GetFolders());
    return stored;
}

bool frmRemote::SendOrganization(const clsUserOrganization &Organization)
{
    const bool stored = HTTPPut(Requests::PostOrganization(Organization.ID), Organization.XML());
    HTTPGet(Requests::GetFolders());
    return stored;
}

void frmRemote::ShowConnectError(const QString &Text)
{
    if (Closing)
        return;
    emit StatusText(DDict().GetString(QStringLiteral("ERRORCONNECTING"), QStringLiteral("Error Connecting: ")) + Text);
    emit ConnectError(Text);
}

int frmRemote::Login()
{
    Global.AuthQuery = Requests::AuthQuery(Global.UserName, Global.PasswordHash);
    Global.Connected = false;
    if (!HTTPGet(Requests::GetSession(), 10, true)) {
        ShowConnectError(ReplyText.isEmpty() ? ErrorText : ReplyText);
        return 2;
    }
    if (StatusCode == 200) {
        if (ReplyText.startsWith(QStringLiteral("Error:"))) {
            ShowConnectError(ReplyText.mid(6).trimmed());
            return 2;
        }
        if (!StartSession(ReplyText))
            return 2;
        Subscribe();
        return 0;
    }
    return StatusCode == 401 ? 1 : 2;
}

bool frmRemote::StartSession(const QString &Reply)
{
    if (Reply.trimmed() == QStringLiteral("No Organization")) {
        emit SessionRefused();
        return false;
    }
    clsXML xml(Reply);
    QString title;
    xml.Extract(title, QStringLiteral("Title"));
    if (!title.isEmpty())
        Global.AppTitle = title;
    xml.Extract(Build, QStringLiteral("Build"));
    xml.Extract(Global.Hosted, QStringLiteral("Hosted"));
    xml.Extract(WebServicesURL, QStringLiteral("WebServicesURL"));
    xml.Extract(Global.UserID, QStringLiteral("UserID"));
    xml.Extract(Global.UserOrganizationID, QStringLiteral("UserOrganizationID"));
    xml.Extract(Global.UserOrganization, QStringLiteral("UserOrganization"));
    xml.Extract(Global.UserEmail, QStringLiteral("UserEmail"));
    xml.Extract(Global.UserFullName, QStringLiteral("UserFullName"));
    xml.Extract(Global.IsAdmin, QStringLiteral("Admin"));
    xml.Extract(Global.IsOrganizationAdmin, QStringLiteral("OrganizationAdmin"));
    if (Global.Hosted)
        Global.AppTitle = Global.ProductName + QStringLiteral(" Hosted Edition");

    Global.TempPath = Global.WorkPath + QStringLiteral("Temp/");
    MakePath(Global.TempPath);
    // Folders and accounts refer to users and organizations, and what shows
    // the accounts needs the settings: the order is fixed.
    for (const QString &request : {Requests::GetOrganizations(), Requests::GetUsers(), Requests::GetGlobals(),
                                   Requests::GetFolders(), Requests::GetAccounts()}) {
        emit LoginProgress();
        HTTPGet(request);
        emit LoginProgress();
    }
    if (Global.IsLocal) {
        emit LogPanesLocal(Global.IsAdmin);
    } else {
        emit LogPanesRemote();
        for (const QString &request : {Requests::GetLog(), Requests::GetEdgeLog(), Requests::GetMsgpLog()})
            HTTPGet(request);
    }
    Global.Connected = true;
    emit StatusText(QString());
    return true;
}

void frmRemote::RouteReply()
{
    for (const auto &[name, value] : ReplyHeaders) {
        if (name == LocationHeader) {
            RouteReply(QString::fromUtf8(value), ReplyText);
            return;
        }
    }
}

clsAccount *frmRemote::AccountOfReply() const
{
    return Accounts().Item(Accounts().AccountNoFromID(Client.AccountID));
}

void frmRemote::RouteReply(const QString &Location, const QString &Body)
{
    Client.setURL(Location);
    Client.Body = Body == QStringLiteral("0") ? QString() : Body;
    const QString &document = Client.Document;
    const QString &body = Client.Body;

    if (document == QStringLiteral("getsession")) {
        StartSession(body);
    } else if (document == QStringLiteral("getusers")) {
        if (body != QStringLiteral("OK"))
            Users().setXML(body);
    } else if (document == QStringLiteral("getorganizations")) {
        Organizations().setXML(body);
    } else if (document == QStringLiteral("getuser")) {
        if (clsUser *user = Users().Item(Users().UserNoFromID(Client.UserID)))
            user->setXML(body);
        else
            Users().AddXML(body);
    } else if (document == QStringLiteral("getfolders")) {
        UserFolders().setXML(body);
    } else if (document == QStringLiteral("getglobals")) {
        if (!body.isEmpty())
            LoadGlobalSettings(true, body);
    } else if (document == QStringLiteral("getaccounts")) {
        Accounts().setXML(body);
        emit AccountsRefreshed();
    } else if (document == QStringLiteral("getaccount")) {
        if (clsAccount *account = AccountOfReply())
            account->setXML(body);
        else
            Accounts().AddXML(body);
        emit AccountsRefreshed();
    } else if (document == QStringLiteral("gettriggers")) {
        if (clsAccount *account = AccountOfReply())
            account->Triggers.setXML(body);
    } else if (document == QStringLiteral("gettriggerconditions")) {
        if (clsAccount *account = AccountOfReply())
            account->Triggers.setXMLConditionsOnly(body);
    } else if (document == QStringLiteral("gettriggernames")) {
        if (clsAccount *account = AccountOfReply())
            account->Triggers.setXMLNames(body);
    } else if (document == QStringLiteral("gettriggerlist")) {
        if (clsAccount *account = AccountOfReply()) {
            account->TriggerNameList = body;
            account->GotList = true;
        }
    } else if (document == QStringLiteral("gettrigger")) {
        if (clsAccount *account = AccountOfReply()) {
            if (clsAccountTrigger *trigger = account->Triggers.Item(account->Triggers.TriggerNoFromID(Client.TriggerID)))
                trigger->setXML(body);
            else
                account->Triggers.AddXML(body);
        }
    } else if (document == QStringLiteral("getlog")) {
        emit FirstLog(PaneServer, body);
    } else if (document == QStringLiteral("getedgelog")) {
        emit FirstLog(PaneEdge, body);
    } else if (document == QStringLiteral("getmsgplog")) {
        emit FirstLog(PaneMessage, body);
    } else if (document == QStringLiteral("getmessage")) {
        emit MessageReceived(body);
    } else if (document == QStringLiteral("getscheduledmessages")) {
        ScheduledMessages = body;
        emit ScheduledMessagesReceived();
    } else if (document == QStringLiteral("getscheduledmessage")) {
        emit ScheduledMessageReceived(body);
    } else if (document == QStringLiteral("error")) {
        emit MessageBar(DDict().GetString(QStringLiteral("ERRORRETURNED"), QStringLiteral("Error Returned From %APPNAME% Server: "))
                        + body);
    }
}

void frmRemote::Subscribe()
{
    if (m_pushReply) {
        m_pushReply->disconnect(this);
        m_pushReply->abort();
        m_pushReply->deleteLater();
    }
    m_push.Clear();
    HTTPSPush.clearConnectionCache();
    QNetworkReply *reply = HTTPSPush.get(Request(
        Requests::Subscribe(Global.AuthQuery, QSysInfo::machineHostName(), Global.VersionText)));
    m_pushReply = reply;
    AcceptAnyCertificate(reply);
    connect(reply, &QNetworkReply::readyRead, this, &frmRemote::ReceivePush);
    connect(reply, &QNetworkReply::metaDataChanged, this, [this, reply] {
        // The channel opened again on a server that the session had lost.
        if (m_pushReply == reply && !Global.Connected && !Closing
            && reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() == 200)
            emit ChannelRestored();
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        if (m_pushReply == reply) {
            FlushPush();
            m_push.Clear(); // what is left of a block will never be completed
        }
        reply->deleteLater();
    });
    // A channel that does not answer within its time-out is given up; the
    // timer tries again.
    QTimer::singleShot(PushTimeOutSeconds * 1000, reply, [reply] {
        if (!reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid())
            reply->abort();
    });
    if (!SubscribeTimer.isActive())
        SubscribeTimer.start();
}

bool frmRemote::PushConnected() const
{
    return m_pushReply && m_pushReply->isRunning();
}

void frmRemote::ReceivePush()
{
    if (!m_pushReply)
        return;
    for (const clsPushStream::Block &block : m_push.Append(m_pushReply->readAll()))
        ReceivePushBlock(block.Location, block.Body);
    if (m_push.Pending())
        m_pushQuiet.start();
}

void frmRemote::FlushPush()
{
    if (m_pushReply && m_pushReply->bytesAvailable())
        ReceivePush();
    for (const clsPushStream::Block &block : m_push.Flush())
        ReceivePushBlock(block.Location, block.Body);
}

void frmRemote::ReceivePushBlock(const QString &Location, const QString &Body)
{
    const QString location = Location.toLower();
    if (location == QStringLiteral("popup.xml")) {
        ShowPopup(Body);
    } else if (location == QStringLiteral("log.xml")) {
        ReceiveLog(Body);
    } else if (location == QStringLiteral("serverclosing.xml")) {
        Global.Connected = false;
        emit MessageBar(DDict().GetString(QStringLiteral("SERVERCLOSED"), QStringLiteral("The %APPNAME% Server Has Closed.")));
        emit ToolBarConnected(false);
    } else if (location == QStringLiteral("disconnected.xml")) {
        Global.Connected = false;
        emit MessageBar(DDict().GetString(QStringLiteral("SERVERLOGGEDOUT"),
                                          QStringLiteral("The %APPNAME% Server Has Logged You Out.")));
        emit ToolBarConnected(false);
        emit LoggedOut();
    }
}

void frmRemote::ReceiveLog(const QString &Body)
{
    clsXML xml(Body);
    for (;;) {
        QString source;
        QString log;
        xml.Extract(source, QStringLiteral("Source"));
        xml.Extract(log, QStringLiteral("Log"), true);
        if (log.isEmpty())
            return;
        source = source.toLower();
        const LogPane pane = source == QStringLiteral("edge server")      ? PaneEdge
                             : source == QStringLiteral("message server") ? PaneMessage
                                                                          : PaneServer;
        emit RemoteLog(pane, log);
    }
}

void frmRemote::ShowPopup(const QString &Body)
{
    if (PopupFlood)
        return;
    clsXML xml(Body);
    QString settings;
    Popup popup;
    xml.Extract(settings, QStringLiteral("Settings"));
    xml.Extract(popup.Message, QStringLiteral("Message"));
    xml.Extract(popup.Title, QStringLiteral("Title"));
    if (settings.isEmpty())
        settings = QStringLiteral("-2147483635|1|0|0");
    popup.Message = EntityDecode(popup.Message);
    if (popup.Message.isEmpty())
        popup.Message = QStringLiteral("New Message");
    if (popup.Title.isEmpty())
        popup.Title = Global.ProductName;

    const QStringList fields = settings.split(u'|');
    popup.Colour = fields.value(0).toLongLong();
    popup.Style = fields.value(1).toInt();
    popup.Effect = fields.value(2).toInt();
    const QString sticky = fields.value(3).trimmed();
    popup.Sticky = sticky == QStringLiteral("-1") || sticky == QStringLiteral("1")
                   || sticky.compare(QStringLiteral("true"), Qt::CaseInsensitive) == 0;
    popup.CloseAfter = popup.Sticky ? 0 : 3500;

    if (PopupCount >= (popup.Sticky ? StickyPopupLimit : NonStickyPopupLimit)) {
        PopupFlood = true;
        popup.Message = DDict().GetString(QStringLiteral("MULTIPLEMSGS"), QStringLiteral("Multiple Messages Are Being Processed"));
    }
    const qsizetype web = popup.Message.indexOf(QStringLiteral("http"));
    if (popup.Message.contains(QStringLiteral("http:")) || popup.Message.contains(QStringLiteral("https:"))) {
        const qsizetype blank = popup.Message.indexOf(u' ', web);
        popup.Link = popup.Message.mid(web, blank < 0 ? -1 : blank - web);
    }
    ++PopupCount;
    emit PopupShown(popup);
    QCoreApplication::processEvents();
}

void frmRemote::PopupClosed()
{
    PopupCount = qMax(0, PopupCount - 1);
    if (PopupCount == 0)
        PopupFlood = false;
}

frmRemote &Remote()
{
    static QPointer<frmRemote> remote;
    if (!remote)
        remote = new frmRemote(QCoreApplication::instance());
    return *remote;
}
