#include "ProsodyServer.h"
#include "TestRegistry.h"
#include "actions/ActionItem.h"
#include "actions/clsActionJabber.h"
#include "engine/actions/MessageActions.h"
#include "model/clsAccountTrigger.h"
#include "store/clsMessage.h"

#include <QTest>

using namespace Qt::StringLiterals;

// The Jabber action against a real XMPP server: the message, tokens
// expanded, reaches the recipient; a wrong password or a server that is not
// there is an error line, not a crash.
class tst_JabberAction : public QObject
{
    Q_OBJECT

    QStringList Run(const clsActionJabber &Action)
    {
        QStringList lines;
        clsAccountTrigger trigger;
        const auto item = ActionItem::Make(Action);
        MessageActions::Run(*item, trigger, CurrentMessage(), nullptr, [&lines](const QString &Text) { lines << Text; });
        return lines;
    }

private slots:
    void theMessageReachesTheRecipient()
    {
        ProsodyServer xmpp;
        QVERIFY2(xmpp.Start(), qPrintable(xmpp.Problem));
        QVERIFY(xmpp.Register(u"robot"_s, u"robotpw"_s));
        QVERIFY(xmpp.Register(u"bob"_s, u"bobpw"_s));
        ReplaceCurrentMessage(nullptr);
        CurrentMessage().Subject = u"Order <42> & more"_s;

        clsActionJabber action;
        action.Server = u"127.0.0.1:%1"_s.arg(xmpp.Port);
        action.Username = u"robot@chat.test"_s;
        action.Password = u"robotpw"_s;
        action.ToJabberID = u"bob@chat.test"_s;
        action.MessageType = 1;
        action.MessageText = u"New: %msg_subject%"_s;
        QStringList lines = Run(action);
        QCOMPARE(lines, QStringList{u"Jabber message sent to bob@chat.test"_s});
        const QString kept = xmpp.Offline(u"bob"_s);
        QVERIFY2(kept.contains(u"New: Order &lt;42&gt; &amp; more"_s) || kept.contains(u"New: Order <42> & more"_s),
                 qPrintable(kept));
        QVERIFY(kept.contains(u"chat"_s));

        action.Password = u"wrong"_s;
        lines = Run(action);
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.at(0).startsWith(u"* Post To A Jabber Server: the message to bob@chat.test was not sent: "_s),
                 qPrintable(lines.at(0)));
        QVERIFY(lines.at(0).contains(u"log-on"_s));

        action.Server = u"127.0.0.1:%1"_s.arg(MailFixture::FreePort());
        lines = Run(action);
        QVERIFY2(lines.at(0).contains(u"cannot connect"_s), qPrintable(lines.join(u'\n')));
        ReplaceCurrentMessage(nullptr);
    }
};

POSTVANE_TEST(tst_JabberAction)
#include "tst_JabberAction.moc"
