#include "ErrorCapture.h"
#include "LoopbackServer.h"
#include "ServerProcess.h"
#include "TestRegistry.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QSignalSpy>
#include <QTest>

namespace {

QString AccountFragment(const QString &id, const QString &name)
{
    auto account = std::make_unique<clsAccount>();
    account->AccountID = id;
    account->Name = name;
    return account->XML();
}

QString PopupBody(const QString &Message, bool Sticky = false)
{
    return QStringLiteral("<Settings>255|1|0|%1</Settings><Message>%2</Message>").arg(Sticky ? 1 : 0).arg(Message);
}

void UseServer(const QString &URL)
{
    Global.ServerURL = URL;
    Global.AuthQuery = Requests::AuthQuery(QStringLiteral("Admin"), QString());
}

} // namespace

class tst_frmRemote : public QObject
{
    Q_OBJECT
private:
    ErrorCapture errors;

private slots:
    void init()
    {
        errors.clear();
        Global.Connected = true;
        Global.IsLocal = false;
    }
    void cleanup() { ResetGlobalCollections(); }

    void serverFailureIsTriedThreeTimesAndRefusalOnce()
    {
        int status = 500;
        LoopbackServer server([&](const QString &) { return QList<QByteArray>{LoopbackServer::Response(status, "no")}; });
        UseServer(server.URL());
        frmRemote remote;
        QSignalSpy bar(&remote, &frmRemote::MessageBar);
        QSignalSpy toolbar(&remote, &frmRemote::ToolBarConnected);

        QVERIFY(!remote.HTTPGet(Requests::GetAccounts()));
        QCOMPARE(server.Requests.size(), 3);
        QCOMPARE(remote.LastCode, 500);
        QVERIFY(bar.last().at(0).toString().startsWith(QStringLiteral("Connection Error With Postvane Server: ")));
        QVERIFY(bar.last().at(0).toString().endsWith(QStringLiteral("(500)")));
        QCOMPARE(toolbar.size(), 1);
        QVERIFY(!Global.Connected);

        server.Requests.clear();
        status = 401;
        QVERIFY(!remote.HTTPGet(Requests::GetAccounts()));
        QCOMPARE(server.Requests.size(), 1);
        QCOMPARE(bar.last().at(0).toString(), QStringLiteral("Access Denied"));
        QCOMPARE(toolbar.size(), 1); // a refusal does not grey the console

        server.Requests.clear();
        QVERIFY(remote.HTTPGet(Requests::GetSession(), 10, true)); // the caller reads the status itself
        QCOMPARE(remote.StatusCode, 401);
        QCOMPARE(server.Requests.size(), 1);

        server.Requests.clear();
        status = 404;
        QVERIFY(!remote.HTTPGet(Requests::GetAccounts()));
        QCOMPARE(server.Requests.size(), 1);
    }

    void requestCarriesCredentialsAndIsRoutedByWhatTheReplySays()
    {
        LoopbackServer server([](const QString &) {
            // Asked for users, the server answers with organizations.
            return QList<QByteArray>{LoopbackServer::Response(
                200, "<Organizations><Organization><ID>O1</ID><Name>North</Name></Organization></Organizations>",
                "/getorganizations.xml")};
        });
        UseServer(server.URL());
        frmRemote remote;
        QVERIFY(remote.HTTPGet(Requests::GetUsers()));
        QCOMPARE(server.Requests, QStringList{QStringLiteral("GET /getusers.xml?username=Admin&password=")});
        QCOMPARE(Organizations().Count(), 1);
        QCOMPARE(Users().Count(), 0);

        QVERIFY(remote.HTTPGet(Requests::GetAccounts(), 0, true));
        QCOMPARE(Organizations().Count(), 1); // silent: the caller takes the reply
        QVERIFY(remote.ReplyText.contains(QStringLiteral("North")));
    }

    void postSendsTheFragmentAndShowsServerErrors()
    {
        QByteArray answer = "OK";
        LoopbackServer server([&](const QString &) { return QList<QByteArray>{LoopbackServer::Response(200, answer)}; });
        UseServer(server.URL());
        frmRemote remote;
        QSignalSpy bar(&remote, &frmRemote::MessageBar);
        clsAccount account;
        account.AccountID = QStringLiteral("A1");
        QVERIFY(remote.HTTPPut(Requests::PostAccount(account.AccountID), account.XML()));
        QVERIFY(server.Requests.last().startsWith(QStringLiteral("POST /postaccount.htm?accountid=A1&username=Admin")));
        answer = "Error: account is locked";
        QVERIFY(!remote.HTTPPut(Requests::PostAccount(account.AccountID), account.XML()));
        QCOMPARE(bar.last().at(0).toString(), QStringLiteral("Error Response From Server: Error: account is locked"));
    }

    void routedRepliesReplaceTheRecordTheyName()
    {
        frmRemote remote;
        remote.RouteReply(QStringLiteral("/getaccounts.xml"), QStringLiteral("<Accounts>") + AccountFragment(QStringLiteral("A1"), QStringLiteral("One"))
                                                                 + AccountFragment(QStringLiteral("A2"), QStringLiteral("Two")) + QStringLiteral("</Accounts>"));
        QCOMPARE(Accounts().Count(), 2);

        remote.RouteReply(QStringLiteral("/getaccount.xml?accountid=A2"), AccountFragment(QStringLiteral("A2"), QStringLiteral("Renamed")));
        QCOMPARE(Accounts().Count(), 2);
        QCOMPARE(Accounts().Item(QStringLiteral("A2"))->Name, QStringLiteral("Renamed"));
        remote.RouteReply(QStringLiteral("/getaccount.xml?accountid=A3"), AccountFragment(QStringLiteral("A3"), QStringLiteral("New")));
        QCOMPARE(Accounts().Count(), 3);

        clsAccountTrigger trigger;
        trigger.TriggerID = QStringLiteral("T1");
        trigger.Name = QStringLiteral("First");
        remote.RouteReply(QStringLiteral("/gettrigger.xml?accountid=A1&triggerid=T1"), trigger.XML());
        trigger.Name = QStringLiteral("Changed");
        remote.RouteReply(QStringLiteral("/gettrigger.xml?accountid=A1&triggerid=T1"), trigger.XML());
        QCOMPARE(Accounts().Item(QStringLiteral("A1"))->Triggers.Count(), 1);
        QCOMPARE(Accounts().Item(QStringLiteral("A1"))->Triggers.Item(1)->Name, QStringLiteral("Changed"));
        // A trigger of an account that is gone is dropped.
        remote.RouteReply(QStringLiteral("/gettrigger.xml?accountid=GONE&triggerid=T1"), trigger.XML());
        QCOMPARE(Accounts().Count(), 3);

        remote.RouteReply(QStringLiteral("/gettriggerlist.txt?accountid=A1"), QStringLiteral("First\r\nSecond"));
        QVERIFY(Accounts().Item(QStringLiteral("A1"))->GotList);
        QCOMPARE(Accounts().Item(QStringLiteral("A1"))->TriggerNameList, QStringLiteral("First\r\nSecond"));
    }

    void userRepliesAndTheEmptyList()
    {
        frmRemote remote;
        const QString users = QStringLiteral("<Users><User><ID>U1</ID><Username>alice</Username></User></Users>");
        remote.RouteReply(QStringLiteral("/getusers.xml"), users);
        QCOMPARE(Users().Count(), 1);
        remote.RouteReply(QStringLiteral("/getusers.xml"), QStringLiteral("OK")); // no change
        QCOMPARE(Users().Count(), 1);
        remote.RouteReply(QStringLiteral("/getuser.xml?userid=U1"), QStringLiteral("<User><ID>U1</ID><Username>alicia</Username></User>"));
        QCOMPARE(Users().Count(), 1);
        QCOMPARE(Users().Item(1)->Username, QStringLiteral("alicia"));
        remote.RouteReply(QStringLiteral("/getusers.xml"), QStringLiteral("0")); // "0" is an empty list
        QCOMPARE(Users().Count(), 0);
    }

    void logsMessagesAndErrorsGoToTheirReceivers()
    {
        frmRemote remote;
        QSignalSpy first(&remote, &frmRemote::FirstLog);
        QSignalSpy bar(&remote, &frmRemote::MessageBar);
        QSignalSpy scheduled(&remote, &frmRemote::ScheduledMessagesReceived);
        remote.RouteReply(QStringLiteral("/getedgelog.xml"), QStringLiteral("2024-01-01:10:00:00 up"));
        remote.RouteReply(QStringLiteral("/getscheduledmessages.xml?accountid=A1"), QStringLiteral("1\tx\n"));
        remote.RouteReply(QStringLiteral("/error.xml"), QStringLiteral("disk full"));
        remote.RouteReply(QStringLiteral("/nosuchthing.xml"), QStringLiteral("x"));
        QCOMPARE(first.size(), 1);
        QCOMPARE(first[0].at(0).value<frmRemote::LogPane>(), frmRemote::PaneEdge);
        QCOMPARE(scheduled.size(), 1);
        QCOMPARE(remote.ScheduledMessages, QStringLiteral("1\tx\n"));
        QCOMPARE(bar.size(), 1);
        QCOMPARE(bar[0].at(0).toString(), QStringLiteral("Error Returned From Postvane Server: disk full"));
    }

    void pushedLogLinesFindTheirPanes()
    {
        frmRemote remote;
        QSignalSpy lines(&remote, &frmRemote::RemoteLog);
        remote.ReceiveLog(QStringLiteral("<Source>Edge Server</Source><Log><Msg>e</Msg></Log>"
                                         "<Source>Message Server</Source><Log><Msg>m</Msg></Log>"
                                         "<Source>anything</Source><Log><Msg>s</Msg></Log>"));
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines[0].at(0).value<frmRemote::LogPane>(), frmRemote::PaneEdge);
        QCOMPARE(lines[1].at(0).value<frmRemote::LogPane>(), frmRemote::PaneMessage);
        QCOMPARE(lines[2].at(0).value<frmRemote::LogPane>(), frmRemote::PaneServer);
        QCOMPARE(lines[2].at(1).toString(), QStringLiteral("<Msg>s</Msg>"));
    }

    void serverClosingGreysTheConsole()
    {
        frmRemote remote;
        QSignalSpy toolbar(&remote, &frmRemote::ToolBarConnected);
        QSignalSpy loggedOut(&remote, &frmRemote::LoggedOut);
        remote.ReceivePushBlock(QStringLiteral("ServerClosing.xml"), QString());
        QVERIFY(!Global.Connected);
        QCOMPARE(toolbar.size(), 1);
        QCOMPARE(toolbar[0].at(0).toBool(), false);
        QCOMPARE(loggedOut.size(), 0);
        remote.ReceivePushBlock(QStringLiteral("disconnected.xml"), QString());
        QCOMPARE(loggedOut.size(), 1);
    }

    void popupFloodShowsOneNoticeUntilAllAreClosed()
    {
        frmRemote remote;
        QSignalSpy shown(&remote, &frmRemote::PopupShown);
        for (int i = 0; i < 12; ++i)
            remote.ShowPopup(PopupBody(QStringLiteral("Message %1").arg(i)));
        QCOMPARE(shown.size(), 9);
        QCOMPARE(shown[7].at(0).value<frmRemote::Popup>().Message, QStringLiteral("Message 7"));
        QCOMPARE(shown[8].at(0).value<frmRemote::Popup>().Message, QStringLiteral("Multiple Messages Are Being Processed"));
        QVERIFY(remote.PopupFlood);

        for (int i = 0; i < 8; ++i)
            remote.PopupClosed();
        remote.ShowPopup(PopupBody(QStringLiteral("still flooded")));
        QCOMPARE(shown.size(), 9);
        remote.PopupClosed();
        remote.PopupClosed(); // never below zero
        QCOMPARE(remote.PopupCount, 0);
        QVERIFY(!remote.PopupFlood);
        remote.ShowPopup(PopupBody(QStringLiteral("after")));
        QCOMPARE(shown.size(), 10);
        QCOMPARE(shown.last().at(0).value<frmRemote::Popup>().CloseAfter, 3500);
    }

    void stickyPopupsHaveTheHigherLimitAndLinks()
    {
        frmRemote remote;
        QSignalSpy shown(&remote, &frmRemote::PopupShown);
        for (int i = 0; i < 20; ++i)
            remote.ShowPopup(PopupBody(QStringLiteral("see https://example.test/a?b=1 now"), true));
        QCOMPARE(shown.size(), 20);
        QVERIFY(!remote.PopupFlood);
        const auto popup = shown[0].at(0).value<frmRemote::Popup>();
        QVERIFY(popup.Sticky);
        QCOMPARE(popup.Link, QStringLiteral("https://example.test/a?b=1"));
        QCOMPARE(popup.Colour, 255);
        QCOMPARE(popup.Title, QStringLiteral("Postvane"));
        remote.ShowPopup(PopupBody(QStringLiteral("21st"), true));
        QVERIFY(remote.PopupFlood);

        frmRemote plain;
        QSignalSpy defaults(&plain, &frmRemote::PopupShown);
        plain.ShowPopup(QString());
        QCOMPARE(defaults[0].at(0).value<frmRemote::Popup>().Message, QStringLiteral("New Message"));
        QCOMPARE(defaults[0].at(0).value<frmRemote::Popup>().Colour, -2147483635);

        plain.ShowPopup(PopupBody(QStringLiteral("Caf&#233; &#x263A;")));
        QCOMPARE(defaults[1].at(0).value<frmRemote::Popup>().Message, QStringLiteral("Caf\u00e9 \u263a"));
    }

    void pushBlockCutInTwoArrivesWhole()
    {
        const QByteArray body = "<Source>Edge Server</Source><Log><Msg>split</Msg></Log>";
        const QByteArray block = "HTTP/1.1 200 OK\r\nX-Powered-By: Postvane\r\nContent-Location: log.xml\r\n"
                                 "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
        LoopbackServer server([&](const QString &target) -> QList<QByteArray> {
            if (!target.startsWith(QStringLiteral("subscribe.xml")))
                return {LoopbackServer::Response(404, "")};
            return {"HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n\r\n" + block.left(70), block.mid(70)};
        });
        server.WriteGap = 300;
        UseServer(server.URL());
        frmRemote remote;
        QSignalSpy lines(&remote, &frmRemote::RemoteLog);
        remote.Subscribe();
        QVERIFY(remote.SubscribeTimer.isActive());
        QTRY_COMPARE(lines.size(), 1);
        QCOMPARE(lines[0].at(1).toString(), QStringLiteral("<Msg>split</Msg>"));
        QVERIFY(server.Requests.at(0).contains(QStringLiteral("&nodename=")));
        QTest::qWait(400);
        QCOMPARE(lines.size(), 1);
    }

    void unreachableServerFailsTheLogin()
    {
        QTcpServer closed;
        closed.listen(QHostAddress::LocalHost);
        UseServer(QStringLiteral("https://127.0.0.1:%1/").arg(closed.serverPort()));
        closed.close();
        frmRemote remote;
        QSignalSpy connectError(&remote, &frmRemote::ConnectError);
        QCOMPARE(remote.Login(), 2);
        QCOMPARE(connectError.size(), 1);
        QVERIFY(!Global.Connected);
    }

    void loginAndBootstrapAgainstTheServer()
    {
        ServerProcess server;
        if (!server.Start(QStringLiteral(POSTVANE_SERVER_PROGRAM)))
            QSKIP(qPrintable(server.Problem));
        Global.ServerURL = QStringLiteral("https://") + server.ServerText() + u'/';
        Global.IsLocal = false;
        Global.UserName = QStringLiteral("Admin");
        Global.PasswordHash = MD5Hash(QStringLiteral("wrong"));
        frmRemote remote;
        QCOMPARE(remote.Login(), 1);
        QVERIFY(!Global.Connected);

        Global.PasswordHash = MD5Hash(QString());
        Global.Settings.WebAccessPort = 1;
        QSignalSpy pushed(&remote, &frmRemote::RemoteLog);
        QSignalSpy progress(&remote, &frmRemote::LoginProgress);
        QSignalSpy remoteMode(&remote, &frmRemote::LogPanesRemote);
        QCOMPARE(remote.Login(), 0);
        QVERIFY(Global.Connected);
        QVERIFY(Global.IsAdmin);
        QVERIFY(!Global.UserID.isEmpty());
        QCOMPARE(progress.size(), 10);
        QCOMPARE(remoteMode.size(), 1);
        QVERIFY(Organizations().Count() >= 1);
        QVERIFY(Users().UserNoFromName(QStringLiteral("Admin")) > 0);
        QVERIFY(Global.Settings.WebAccessPort > 1); // the server's settings replaced the local ones
        QTRY_VERIFY(remote.PushConnected());

        // Once the server has taken the subscription (it logs that it has),
        // what it logs next, here a second session's logon, reaches this
        // session's server pane.
        const auto pushedLine = [&](const QString &text) {
            for (const QList<QVariant> &line : pushed)
                if (line.at(0).value<frmRemote::LogPane>() == frmRemote::PaneServer
                    && line.at(1).toString().contains(text))
                    return true;
            return false;
        };
        QTRY_VERIFY(pushedLine(QStringLiteral("follows the server")));
        QVERIFY(!pushedLine(QStringLiteral("logged on")));
        {
            frmRemote second;
            QCOMPARE(second.Login(), 0);
            second.Close();
        }
        QTRY_VERIFY(pushedLine(QStringLiteral("logged on")));

        // An account stored on the server comes back with the next bootstrap.
        clsAccount account;
        account.Name = QStringLiteral("Stored Remotely");
        if (!remote.HTTPPut(Requests::PostAccount(account.AccountID), account.XML()))
            QSKIP("the server does not store accounts yet");
        remote.Close();
        ResetGlobalCollections();
        QCOMPARE(remote.Login(), 0);
        QVERIFY(Accounts().Item(account.AccountID));
        QCOMPARE(Accounts().Item(account.AccountID)->Name, QStringLiteral("Stored Remotely"));
        QTRY_VERIFY(remote.PushConnected());
    }
};

POSTVANE_TEST(tst_frmRemote)
#include "tst_frmRemote.moc"
