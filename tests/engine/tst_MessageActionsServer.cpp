#include "MailFixture.h"
#include "SmartHost.h"
#include "e2e/PushSubscription.h"
#include "TestRegistry.h"
#include "actions/ActionItem.h"
#include "actions/clsActionMSG.h"
#include "actions/clsActionPopup.h"
#include "actions/clsActionValidation.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// A server whose mail goes out through the test's smart host, and whose
// account "A1" takes the mail of orders.test.
struct Setup
{
    SmartHost Host;
    MailFixture Mail;

    bool Start()
    {
        if (!Host.Start())
            return false;
        Mail.Settings.insert(u"MailServerUseSmartHost"_s, u"-1"_s);
        Mail.Settings.insert(u"MailServerSmartHostIP"_s, u"127.0.0.1"_s);
        Mail.Settings.insert(u"MailServerSmartHostPort"_s, QString::number(Host.Port));
        Mail.Settings.insert(u"DefaultFromAddress"_s, u"robot@orders.test"_s);
        return Mail.Start();
    }

    // Posts the account with the trigger, which takes every message; "OK" or the reply.
    QString PostAccount(std::unique_ptr<clsAccountTrigger> Trigger)
    {
        clsAccount account;
        account.AccountID = u"A1"_s;
        account.OrganizationID = Mail.OrganizationID;
        account.Name = u"Orders"_s;
        account.Enabled = true;
        account.MailServer = true;
        account.MailServerDomain = u"orders.test"_s;
        account.MailServerAliases = u"*"_s;
        account.XMLIncludeTriggers = true;
        Trigger->TriggerID = u"T1"_s;
        Trigger->Name = u"Every Order"_s;
        account.Triggers.Add(std::move(Trigger));
        const HttpReply reply = Mail.Server.Post(u"postaccount.htm?accountid=A1"_s, account.XML().toUtf8());
        QTest::qWait(600);
        return reply.Status == 200 ? reply.Text().trimmed() : QString::number(reply.Status);
    }

    qint64 Count(const QString &File, const QString &SQL) { return Mail.Scalar(File, SQL).toLongLong(); }

    // A page of the server opened as a browser opens it: no credentials.
    HttpReply Open(const QString &PathAndQuery)
    {
        const QUrl url(u"https://127.0.0.1:%1/"_s.arg(Mail.Server.Port) + PathAndQuery);
        return ServerFixture::Finish(Mail.Server.Send(url));
    }
};

} // namespace

// Message actions run by a real server: mail sent to an account's domain is
// processed, its trigger's actions compose mail that reaches a real smart
// host, and a message that waits for validation is confirmed or rejected
// through the link of the validation mail.
class tst_MessageActionsServer : public QObject
{
    Q_OBJECT

private slots:
    void aMessageActionDeliversExpandedMailWithTheIncomingAttachment()
    {
        Setup setup;
        QVERIFY2(setup.Start(), qPrintable(setup.Mail.Problem));
        auto trigger = std::make_unique<clsAccountTrigger>();
        auto customer = std::make_unique<clsTriggerField>();
        customer->Name = u"Customer"_s;
        customer->LookFor = u"Customer:"_s;
        trigger->FieldsToProcess().Add(std::move(customer));
        clsActionMSG mail;
        mail.SendTo = u"boss@faraway.test"_s;
        mail.CC = u"desk@faraway.test"_s;
        mail.Subject = u"Order of %customer%: %msg_subject%"_s;
        mail.Body = u"From %msg_from% for %customer%."_s;
        mail.AttachmentsIncoming = true;
        mail.Importance = clsActionMSG::HighImportance;
        mail.CustomHeaders = u"X-Order-Customer|%customer%"_s;
        trigger->ActionList().Add(ActionItem::Make(mail));
        // A second mail through another server than the default one.
        SmartHost other;
        QVERIFY(other.Start());
        clsActionMSG via;
        via.SendTo = u"night@elsewhere.test"_s;
        via.Subject = u"Via"_s;
        via.Body = u"x"_s;
        clsActionMSG::Relay relay;
        relay.Use = true;
        relay.Server = u"127.0.0.1"_s;
        relay.Port = other.Port;
        relay.Password = u"secret"_s;
        via.SendVia = clsActionMSG::JoinSendVia(relay);
        trigger->ActionList().Add(ActionItem::Make(via));
        clsActionPopup popup;
        popup.PopupMessage = u"Order from %customer%"_s;
        trigger->ActionList().Add(ActionItem::Make(popup));
        QCOMPARE(setup.PostAccount(std::move(trigger)), u"OK"_s);
        PushSubscription console(setup.Mail.Server, u"Admin"_s, QString());
        QTRY_VERIFY(console.Open());

        QTemporaryDir folder;
        QFile attachment(folder.filePath(u"invoice.csv"_s));
        QVERIFY(attachment.open(QIODevice::WriteOnly));
        attachment.write("item,qty\r\nbolts,40\r\n");
        attachment.close();
        QString output;
        QCOMPARE(setup.Mail.Swaks({u"--to"_s, u"orders@orders.test"_s, u"--from"_s, u"ann@example.com"_s, u"--header"_s,
                                   u"Subject: Bolts"_s, u"--body"_s, u"Customer: Pat Lee"_s, u"--attach"_s,
                                   attachment.fileName()},
                                  &output),
                 0);

        const QStringList received = setup.Host.WaitFor(1);
        QCOMPARE(received.size(), 1);
        const QString sent = received.at(0);
        QVERIFY2(sent.contains(u"Subject: Order of Pat Lee: Bolts"_s), qPrintable(sent));
        QVERIFY(sent.contains(u"X-RcptTo: boss@faraway.test, desk@faraway.test"_s) || sent.contains(u"X-RcptTo: boss@faraway.test,desk@faraway.test"_s));
        QVERIFY(sent.contains(u"X-MailFrom: robot@orders.test"_s));
        QVERIFY(sent.contains(u"From ann@example.com for Pat Lee."_s));
        QVERIFY(sent.contains(u"X-Order-Customer: Pat Lee"_s));
        QVERIFY(sent.contains(u"X-Priority: 1"_s));
        QVERIFY(sent.contains(u"invoice.csv"_s));
        QVERIFY(sent.contains(u"aXRlbSxxdHkNCmJvbHRzLDQwDQo="_s) || sent.contains(u"bolts,40"_s));
        QCOMPARE(setup.Mail.WaitForCount(u"MessageStore.db3"_s,
                                         u"SELECT COUNT(*) FROM MessageStore WHERE TriggerID='T1' AND TriggerSuccess<>0"_s, 1),
                 1);

        const QStringList elsewhere = other.WaitFor(1);
        QCOMPARE(elsewhere.size(), 1);
        QVERIFY(elsewhere.at(0).contains(u"X-RcptTo: night@elsewhere.test"_s));
        QVERIFY2(!elsewhere.at(0).contains(u"PostvaneSendVia"_s), qPrintable(elsewhere.at(0)));
        QCOMPARE(setup.Host.Received().size(), 1);

        QTRY_VERIFY(console.Received(u"popup.xml"_s));
        QString shown;
        for (const clsPushStream::Block &block : console.Blocks)
            if (block.Location == u"popup.xml"_s)
                clsXML(block.Body).Extract(shown, QStringLiteral("Message"));
        QCOMPARE(shown, u"Order from Pat Lee"_s);
    }

    void aValidationMailsItsLinkWhichConfirmsOrRejectsTheParkedMessage()
    {
        Setup setup;
        QVERIFY2(setup.Start(), qPrintable(setup.Mail.Problem));
        auto trigger = std::make_unique<clsAccountTrigger>();
        clsActionValidation validation(u"V1"_s);
        validation.SendEmail = true;
        validation.SendTo = u"approver@faraway.test"_s;
        validation.MessageText = clsActionValidation::DefaultMessageText();
        validation.TimeOutAction = 1; // a rejection must not run the rest all the same
        trigger->ActionList().Add(ActionItem::Make(validation));
        clsActionMSG done;
        done.SendTo = u"done@faraway.test"_s;
        done.Subject = u"Approved: %msg_subject%"_s;
        done.Body = u"ok"_s;
        trigger->ActionList().Add(ActionItem::Make(done));
        QCOMPARE(setup.PostAccount(std::move(trigger)), u"OK"_s);

        const auto send = [&](const QString &Subject) {
            return setup.Mail.Swaks({u"--to"_s, u"orders@orders.test"_s, u"--from"_s, u"ann@example.com"_s,
                                     u"--header"_s, u"Subject: "_s + Subject});
        };
        static const QRegularExpression link(u"(validate\\.aspx\\?id=[^\\s]+)"_s);

        QCOMPARE(send(u"Big order"_s), 0);
        QStringList received = setup.Host.WaitFor(1);
        QCOMPARE(received.size(), 1);
        QVERIFY2(received.at(0).contains(u"Subject: Please Validate: Big order"_s), qPrintable(received.at(0)));
        QVERIFY(received.at(0).contains(u"X-RcptTo: approver@faraway.test"_s));
        const QString confirmLink = link.match(received.at(0)).captured(1);
        QVERIFY2(!confirmLink.isEmpty(), qPrintable(received.at(0)));
        QCOMPARE(setup.Mail.WaitForCount(u"EdgeQueue.db3"_s,
                                         u"SELECT COUNT(*) FROM EdgeQueue WHERE Processed=2 AND ValidateActionID='V1'"_s, 1),
                 1);
        QCOMPARE(setup.Count(u"MessageStore.db3"_s, u"SELECT COUNT(*) FROM MessageStore"_s), 0);

        // The page asks, without any log-on; a forged id is refused.
        HttpReply page = setup.Open(confirmLink);
        QCOMPARE(page.Status, 200);
        QVERIFY2(page.Text().contains(u"continue processing the message:<br />Big order"_s), qPrintable(page.Text()));
        QVERIFY(page.Text().contains(u"value=\"yes\""_s));
        QVERIFY(setup.Open(confirmLink.section(u'-', 0, 0) + u"-AAAA&answer=yes"_s).Text().contains(u"not valid"_s));
        QCOMPARE(setup.Count(u"EdgeQueue.db3"_s, u"SELECT COUNT(*) FROM EdgeQueue WHERE Processed=2"_s), 1);

        page = setup.Open(confirmLink + u"&answer=yes"_s);
        QVERIFY2(page.Text().contains(u"will now be processed"_s), qPrintable(page.Text()));
        received = setup.Host.WaitFor(2);
        QCOMPARE(received.size(), 2);
        QVERIFY2(received.at(1).contains(u"Subject: Approved: Big order"_s), qPrintable(received.at(1)));
        QCOMPARE(setup.Mail.WaitForCount(u"MessageStore.db3"_s,
                                         u"SELECT COUNT(*) FROM MessageStore WHERE Subject='Big order'"_s, 1),
                 1);
        QCOMPARE(setup.Mail.WaitForCount(u"EdgeQueue.db3"_s, u"SELECT 1-COUNT(*) FROM EdgeQueue"_s, 1), 1);
        // Answered once: the link is spent.
        QVERIFY(setup.Open(confirmLink + u"&answer=no"_s).Text().contains(u"not valid"_s));

        // Rejected: stored at once, and what follows the validation never runs.
        QCOMPARE(send(u"Odd order"_s), 0);
        received = setup.Host.WaitFor(3);
        QCOMPARE(received.size(), 3);
        const QString rejectLink = link.match(received.at(2)).captured(1);
        QVERIFY(setup.Open(rejectLink + u"&answer=no"_s).Text().contains(u"has been rejected"_s));
        QCOMPARE(setup.Count(u"MessageStore.db3"_s, u"SELECT COUNT(*) FROM MessageStore WHERE Subject='Odd order'"_s), 1);
        QCOMPARE(setup.Count(u"EdgeQueue.db3"_s, u"SELECT COUNT(*) FROM EdgeQueue"_s), 0);
        QTest::qWait(2000);
        QCOMPARE(setup.Host.Received().size(), 3);
    }
};

POSTVANE_TEST(tst_MessageActionsServer)
#include "tst_MessageActionsServer.moc"
