#include "MailFixture.h"
#include "TestRegistry.h"

#include <QTest>
#include <memory>
#include <vector>

namespace {

QByteArray Message(const QByteArray &MessageID, const QByteArray &Subject, const QByteArray &Body = "Hello\r\n")
{
    return "From: ann@example.com\r\nTo: orders@orders.test\r\nSubject: " + Subject + "\r\nMessage-ID: <" + MessageID
        + ">\r\n\r\n" + Body;
}

} // namespace

// The mail server's SMTP listener in a real server: mail for an account's
// domain goes through the edge queue into the message store; recipients,
// relaying, credentials, TLS and every kind of bad input are answered as an
// SMTP server should, and nothing refused or cut off is kept.
//
// Accounts: A1 takes all of orders.test; A2 takes sales and info* of
// shop.test. Only 127.0.0.1 may relay without credentials; the user
// "mailer" may relay with them.
class tst_SmtpListener : public QObject
{
    Q_OBJECT
    MailFixture mail;

    qint64 Stored(const QString &Condition)
    {
        return mail.Scalar(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT COUNT(*) FROM MessageStore WHERE ") + Condition)
            .toLongLong();
    }
    qint64 Queued(const QString &Condition)
    {
        return mail.Scalar(QStringLiteral("EdgeQueue.db3"), QStringLiteral("SELECT COUNT(*) FROM EdgeQueue WHERE ") + Condition)
            .toLongLong();
    }
    // A client that has said EHLO.
    std::unique_ptr<SmtpClient> Client(const QString &From = QStringLiteral("127.0.0.1"))
    {
        auto client = std::make_unique<SmtpClient>();
        if (!client->Connect(mail.SmtpPort, From) || SmtpClient::Code(client->Command("EHLO client.test")) != 250)
            return nullptr;
        return client;
    }

private slots:
    void initTestCase()
    {
        mail.Settings.insert(QStringLiteral("MailServerRelayIP"), QStringLiteral("127.0.0.1"));
        mail.Settings.insert(QStringLiteral("MailServerMaxMessageSize"), QStringLiteral("200000"));
        QVERIFY2(mail.Start(), qPrintable(mail.Problem));
        QCOMPARE(mail.PostAccount(QStringLiteral("A1"), QStringLiteral("orders.test"), QStringLiteral("*")), QStringLiteral("OK"));
        QCOMPARE(mail.PostAccount(QStringLiteral("A2"), QStringLiteral("shop.test"), QStringLiteral("sales;info*")),
                 QStringLiteral("OK"));
        QCOMPARE(mail.PostUser(QStringLiteral("U1"), QStringLiteral("mailer"), QStringLiteral("pw-mailer")), QStringLiteral("OK"));
    }

    void mailToAnAccountIsProcessedAndStored()
    {
        QString output;
        QCOMPARE(mail.Swaks({QStringLiteral("--to"), QStringLiteral("orders@orders.test"), QStringLiteral("--from"),
                             QStringLiteral("ann@example.com"), QStringLiteral("--header"), QStringLiteral("Subject: Order 42"),
                             QStringLiteral("--header"), QStringLiteral("Message-Id: <order42@example.com>")},
                            &output),
                 0);
        QVERIFY2(output.contains(QStringLiteral("250 2.0.0 Ok: queued as")), qPrintable(output));
        const QString mine = QStringLiteral("UID='order42@example.com' AND Source='SMTP' AND AccountID='A1'");
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT COUNT(*) FROM MessageStore WHERE ") + mine, 1), 1);
        QCOMPARE(mail.Scalar(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT Subject FROM MessageStore WHERE ") + mine).toString(),
                 QStringLiteral("Order 42"));
        QCOMPARE(mail.Scalar(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT TriggerID FROM MessageStore WHERE ") + mine).toString(),
                 QStringLiteral("-"));
        const QString headers = mail.Scalar(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT Headers FROM MessageStore WHERE ") + mine).toString();
        QVERIFY2(headers.contains(QStringLiteral("by mx.postvane.test with ESMTP id")), qPrintable(headers));
        QVERIFY(mail.Log(QStringLiteral("SMTP.LOG")).contains(QStringLiteral("from <ann@example.com> at 127.0.0.1 for orders@orders.test accepted")));

        // Over TLS with credentials, to an alias of the other account.
        QCOMPARE(mail.Swaks({QStringLiteral("--to"), QStringLiteral("info-desk@shop.test"), QStringLiteral("-tls"),
                             QStringLiteral("-a"), QStringLiteral("LOGIN"), QStringLiteral("-au"), QStringLiteral("mailer"),
                             QStringLiteral("-ap"), QStringLiteral("pw-mailer"), QStringLiteral("--header"),
                             QStringLiteral("Message-Id: <tls1@example.com>")},
                            &output),
                 0);
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"),
                                   QStringLiteral("SELECT COUNT(*) FROM MessageStore WHERE UID='tls1@example.com' AND AccountID='A2'"), 1),
                 1);
        QVERIFY(mail.Scalar(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT Headers FROM MessageStore WHERE UID='tls1@example.com'"))
                    .toString()
                    .contains(QStringLiteral("with ESMTPSA")));
    }

    void recipientsAreRoutedRelayedOrRefused()
    {
        auto local = Client();
        QVERIFY(local);
        QCOMPARE(SmtpClient::Code(local->Command("MAIL FROM:<ann@example.com>")), 250);
        QCOMPARE(SmtpClient::Code(local->Command("RCPT TO:<Sales@Shop.Test>")), 250);
        const QByteArray unknown = local->Command("RCPT TO:<bob@shop.test>");
        QVERIFY2(unknown.startsWith("550 5.1.1"), unknown);
        QCOMPARE(SmtpClient::Code(local->Command("RCPT TO:<someone@elsewhere.test>")), 250); // 127.0.0.1 relays
        QCOMPARE(SmtpClient::Code(local->Command("DATA")), 354);
        local->Send(Message("relay1@example.com", "Relayed") + ".\r\n");
        QVERIFY(local->Reply().startsWith("250 2.0.0"));
        QCOMPARE(mail.Scalar(QStringLiteral("MessageStore.db3"),
                             QStringLiteral("SELECT MailTo FROM Outbox WHERE ReferenceID='relay1@example.com'"))
                     .toString(),
                 QStringLiteral("someone@elsewhere.test"));
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"),
                                   QStringLiteral("SELECT COUNT(*) FROM MessageStore WHERE UID='relay1@example.com' AND AccountID='A2'"), 1),
                 1);

        auto outside = Client(QStringLiteral("127.0.0.5"));
        QVERIFY(outside);
        QCOMPARE(SmtpClient::Code(outside->Command("MAIL FROM:<eve@example.com>")), 250);
        const QByteArray denied = outside->Command("RCPT TO:<someone@elsewhere.test>");
        QVERIFY2(denied.startsWith("550 5.7.1"), denied);
        QCOMPARE(SmtpClient::Code(outside->Command("RSET")), 250);
        QCOMPARE(SmtpClient::Code(outside->Command("AUTH PLAIN " + QByteArray("\0mailer\0wrong", 13).toBase64())), 535);
        QCOMPARE(SmtpClient::Code(outside->Command("AUTH PLAIN " + QByteArray("\0mailer\0pw-mailer", 17).toBase64())), 235);
        QCOMPARE(SmtpClient::Code(outside->Command("MAIL FROM:<eve@example.com>")), 250);
        QCOMPARE(SmtpClient::Code(outside->Command("RCPT TO:<someone@elsewhere.test>")), 250);
        QVERIFY(mail.Log(QStringLiteral("SMTP.LOG")).contains(QStringLiteral("Refused someone@elsewhere.test from 127.0.0.5")));
        QVERIFY(mail.Log(QStringLiteral("SMTP.LOG")).contains(QStringLiteral("Authentication failed for mailer from 127.0.0.5")));
    }

    void commandsOutOfOrderAreRefusedAndTheSessionGoesOn()
    {
        SmtpClient client;
        QVERIFY(client.Connect(mail.SmtpPort));
        QVERIFY(client.Greeting.startsWith("220 mx.postvane.test ESMTP"));
        QCOMPARE(SmtpClient::Code(client.Command("MAIL FROM:<ann@example.com>")), 503);
        QCOMPARE(SmtpClient::Code(client.Command("EHLO")), 501);
        const QByteArray ehlo = client.Command("EHLO client.test");
        for (const char *extension : {"PIPELINING", "SIZE 200000", "8BITMIME", "STARTTLS", "AUTH PLAIN LOGIN"})
            QVERIFY2(ehlo.contains(QByteArray("250-") + extension) || ehlo.contains(QByteArray("250 ") + extension), ehlo);
        QCOMPARE(SmtpClient::Code(client.Command("RCPT TO:<orders@orders.test>")), 503);
        QCOMPARE(SmtpClient::Code(client.Command("DATA")), 503);
        QCOMPARE(SmtpClient::Code(client.Command("FROB")), 500);
        QCOMPARE(SmtpClient::Code(client.Command("MAIL FROM:<ann@example.com>")), 250);
        QCOMPARE(SmtpClient::Code(client.Command("MAIL FROM:<ann@example.com>")), 503);
        QCOMPARE(SmtpClient::Code(client.Command("DATA")), 554);
        QCOMPARE(SmtpClient::Code(client.Command("RCPT TO:<orders@orders.test>")), 250);
        QCOMPARE(SmtpClient::Code(client.Command("AUTH PLAIN")), 503); // not inside a transaction
        // Pipelined: the replies come in the order of the commands.
        client.Send("RSET\r\nMAIL FROM:<ann@example.com>\r\nRCPT TO:<orders@orders.test>\r\nDATA\r\n" + Message("pipe1@example.com", "Piped")
                    + ".\r\nNOOP\r\n");
        for (int expected : {250, 250, 250, 354, 250, 250})
            QCOMPARE(SmtpClient::Code(client.Reply()), expected);
        QCOMPARE(client.Command("QUIT").left(3), QByteArray("221"));
        QVERIFY(client.Closed());
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"),
                                   QStringLiteral("SELECT COUNT(*) FROM MessageStore WHERE UID='pipe1@example.com'"), 1),
                 1);
    }

    void tlsStartsOnceAndFromTheFirstByteOnTheTlsPort()
    {
        auto client = Client();
        QVERIFY(client);
        client->Send("STARTTLS\r\nNOOP\r\n"); // what follows STARTTLS in the clear is not read
        QCOMPARE(SmtpClient::Code(client->Reply()), 220);
        client->Socket.startClientEncryption();
        QVERIFY(client->Socket.waitForEncrypted(10000));
        const QByteArray ehlo = client->Command("EHLO client.test");
        QCOMPARE(SmtpClient::Code(ehlo), 250);
        QVERIFY(!ehlo.contains("STARTTLS"));
        QCOMPARE(SmtpClient::Code(client->Command("STARTTLS")), 503);
        QCOMPARE(SmtpClient::Code(client->Command("NOOP")), 250);

        SmtpClient implicit;
        QVERIFY(implicit.Connect(mail.SmtpsPort, QStringLiteral("127.0.0.1"), true));
        QVERIFY(implicit.Socket.isEncrypted());
        QVERIFY(!implicit.Command("EHLO client.test").contains("STARTTLS"));
        QCOMPARE(SmtpClient::Code(implicit.Command("STARTTLS")), 503);
    }

    void badMessagesAreRefusedWholeAndNothingOfThemIsKept()
    {
        auto client = Client();
        QVERIFY(client);
        QCOMPARE(client->Command("MAIL FROM:<ann@example.com> SIZE=300000").left(9), QByteArray("552 5.3.4"));
        QCOMPARE(SmtpClient::Code(client->Command("MAIL FROM:<ann@example.com> SIZE=1000")), 250);
        QCOMPARE(SmtpClient::Code(client->Command("RCPT TO:<orders@orders.test>")), 250);
        QCOMPARE(SmtpClient::Code(client->Command("DATA")), 354);
        const QByteArray line(500, 'x');
        QByteArray big;
        while (big.size() < 250000)
            big += line + "\r\n";
        client->Send(Message("big1@example.com", "Too big", big) + ".\r\n");
        QCOMPARE(client->Reply().left(9), QByteArray("552 5.3.4"));

        struct Bad
        {
            QByteArray ID, Body, Reply;
        };
        const Bad bad[] = {
            {"barelf1@example.com", "one\ntwo\r\n", "550 5.6.11"},
            {"barelf2@example.com", "smuggled\n.\r\nMAIL FROM:<x@y.test>\r\n", "550 5.6.11"},
            {"long1@example.com", QByteArray(1024 * 1024, 'y') + "\r\n", "550 5.6.0"},
        };
        for (const Bad &message : bad) {
            QCOMPARE(SmtpClient::Code(client->Command("MAIL FROM:<ann@example.com>")), 250);
            QCOMPARE(SmtpClient::Code(client->Command("RCPT TO:<orders@orders.test>")), 250);
            QCOMPARE(SmtpClient::Code(client->Command("DATA")), 354);
            client->Send(Message(message.ID, "Bad", message.Body) + ".\r\n");
            const QByteArray reply = client->Reply();
            QVERIFY2(reply.startsWith(message.Reply), message.ID + ": " + reply);
            if (message.ID == "barelf2@example.com") { // the lines behind the end are commands of their own
                QCOMPARE(SmtpClient::Code(client->Reply()), 250);
                QCOMPARE(SmtpClient::Code(client->Reply()), 500);
            }
            QCOMPARE(SmtpClient::Code(client->Command("RSET")), 250);
        }
        QCOMPARE(client->Command(QByteArray(1024 * 1024, 'z')).left(9), QByteArray("500 5.5.2"));
        client->Send("NOOP\n");
        QCOMPARE(client->Reply().left(3), QByteArray("500"));
        QCOMPARE(SmtpClient::Code(client->Command("NOOP")), 250);

        // A client that goes away in the middle of its message.
        auto leaving = Client();
        QVERIFY(leaving);
        QCOMPARE(SmtpClient::Code(leaving->Command("MAIL FROM:<ann@example.com>")), 250);
        QCOMPARE(SmtpClient::Code(leaving->Command("RCPT TO:<orders@orders.test>")), 250);
        QCOMPARE(SmtpClient::Code(leaving->Command("DATA")), 354);
        leaving->Send(Message("half1@example.com", "Half").left(60));
        leaving->Socket.abort();

        // A later message of the first client is stored: everything before it was seen.
        QCOMPARE(SmtpClient::Code(client->Command("MAIL FROM:<ann@example.com>")), 250);
        QCOMPARE(SmtpClient::Code(client->Command("RCPT TO:<orders@orders.test>")), 250);
        QCOMPARE(SmtpClient::Code(client->Command("DATA")), 354);
        client->Send(Message("after1@example.com", "After") + ".\r\n");
        QCOMPARE(SmtpClient::Code(client->Reply()), 250);
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"),
                                   QStringLiteral("SELECT COUNT(*) FROM MessageStore WHERE UID='after1@example.com'"), 1),
                 1);
        const QString refused = QStringLiteral("UID IN ('big1@example.com','barelf1@example.com','barelf2@example.com',"
                                               "'long1@example.com','half1@example.com')");
        QCOMPARE(Stored(refused), 0);
        QCOMPARE(Queued(refused), 0);
        QVERIFY(mail.Log(QStringLiteral("SMTP.LOG")).contains(QStringLiteral("bare LF is not allowed")));
    }

    void twoHundredClientsAtOnceAreAllServed()
    {
        constexpr int Clients = 200;
        std::vector<std::unique_ptr<QTcpSocket>> sockets;
        for (int n = 0; n < Clients; ++n) {
            sockets.push_back(std::make_unique<QTcpSocket>());
            sockets.back()->connectToHost(QStringLiteral("127.0.0.1"), mail.SmtpPort);
        }
        for (int n = 0; n < Clients; ++n) {
            QVERIFY(sockets[n]->waitForConnected(10000));
            sockets[n]->write("EHLO crowd.test\r\nMAIL FROM:<crowd@example.com>\r\nRCPT TO:<orders@orders.test>\r\nDATA\r\n"
                              + Message("crowd-" + QByteArray::number(n) + "@example.com", "Crowd") + ".\r\nQUIT\r\n");
        }
        int answered = 0;
        for (int n = 0; n < Clients; ++n) {
            QByteArray conversation;
            while (!conversation.contains("221 2.0.0") && sockets[n]->waitForReadyRead(20000))
                conversation += sockets[n]->readAll();
            answered += conversation.contains("250 2.0.0 Ok: queued as") ? 1 : 0;
        }
        QVERIFY2(answered == Clients, qPrintable(QString::number(answered) + u' ' + mail.Log(QStringLiteral("SMTP.LOG")).right(2000)));
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"),
                                   QStringLiteral("SELECT COUNT(*) FROM MessageStore WHERE UID LIKE 'crowd-%'"), Clients, 30000),
                 Clients);
    }

    // Last: it restarts the server.
    void aMessageSentAgainAfterTheServerWasKilledIsStoredOnce()
    {
        for (int round = 1; round <= 3; ++round) {
            const QByteArray id = "kill" + QByteArray::number(round) + "@example.com";
            auto client = Client();
            QVERIFY(client);
            client->Send("MAIL FROM:<ann@example.com>\r\nRCPT TO:<orders@orders.test>\r\nDATA\r\n" + Message(id, "Killed") + ".\r\n");
            // Killed at once, whether or not the commit was reached.
            mail.Server.Kill();
            QVERIFY2(mail.Server.Start(), qPrintable(mail.Server.Problem));
            QTest::qWait(300);
            // The client did not see "250" and sends the message again.
            QString output;
            QCOMPARE(mail.Swaks({QStringLiteral("--to"), QStringLiteral("orders@orders.test"), QStringLiteral("--data"),
                                 QString::fromUtf8(Message(id, "Killed")).replace(QStringLiteral("\r\n"), QStringLiteral("\n"))},
                                &output),
                     0);
            const QString mine = QStringLiteral("UID='") + QString::fromUtf8(id) + u'\'';
            QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT COUNT(*) FROM MessageStore WHERE ") + mine, 1), 1);
            // Once more, after it was stored.
            QCOMPARE(mail.Swaks({QStringLiteral("--to"), QStringLiteral("orders@orders.test"), QStringLiteral("--data"),
                                 QString::fromUtf8(Message(id, "Killed")).replace(QStringLiteral("\r\n"), QStringLiteral("\n"))}),
                     0);
            QTest::qWait(500);
            QCOMPARE(Stored(mine), 1);
            QCOMPARE(Queued(mine + QStringLiteral(" AND Processed=0")), 0);
        }
    }
};

POSTVANE_TEST(tst_SmtpListener)
#include "tst_SmtpListener.moc"
