#include "MailFixture.h"
#include "SmartHost.h"
#include "TestRegistry.h"
#include "ErrorCapture.h"
#include "store/StoreFixture.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

OutboxMessage Mail(const QString &To, const QString &Subject)
{
    OutboxMessage message;
    message.AccountID = QStringLiteral("A1");
    message.TriggerID = QStringLiteral("T1");
    message.MailFrom = QStringLiteral("alerts@orders.test");
    message.MailTo = To;
    message.Subject = Subject;
    message.Mime = QStringLiteral("From: alerts@orders.test\r\nTo: ") + To + QStringLiteral("\r\nSubject: ") + Subject
        + QStringLiteral("\r\n\r\nBody\r\n");
    return message;
}

} // namespace

// The Outbox: the store's operations on scheduled and due mail, and the
// outgoing role of a real server sending through a real smart host, keeping
// and retrying rows while the host is down and giving them up at last.
class tst_Outbox : public QObject
{
    Q_OBJECT
    ErrorCapture m_errors;

private slots:
    void init() { m_errors.clear(); }

    void scheduledMailIsListedSentNowOrDeleted()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        OutboxMessage later = Mail(QStringLiteral("ann@example.com"), QStringLiteral("Reminder\tone"));
        later.ScheduledDate = QDateTime(QDate(2031, 5, 6), QTime(7, 8, 9));
        later.Importance = 1;
        const qint64 first = f.Store.AddScheduledEmail(later);
        later.Subject = QStringLiteral("Other");
        later.TriggerID = QStringLiteral("T2");
        later.ScheduledDate = later.ScheduledDate.addDays(-1);
        const qint64 second = f.Store.AddScheduledEmail(later);
        QVERIFY(first > 0 && second > 0);
        QVERIFY(f.Store.AddToOutBox(Mail(QStringLiteral("bob@example.com"), QStringLiteral("Now"))) > 0);

        // Scheduled rows only, by date; fields closed by tabs; a tab inside becomes a blank.
        QCOMPARE(f.Store.GetScheduledMessages(QStringLiteral("A1")),
                 QString::number(second) + QStringLiteral("\t1\tN\tT2\talerts@orders.test\tann@example.com\t2031-05-05 07:08:09\tOther\t\n")
                     + QString::number(first)
                     + QStringLiteral("\t1\tN\tT1\talerts@orders.test\tann@example.com\t2031-05-06 07:08:09\tReminder one\t\n"));
        QVERIFY(f.Store.GetScheduledMessages(QStringLiteral("A1"), QStringLiteral("T1")).startsWith(QString::number(first) + u'\t'));
        QVERIFY(f.Store.GetScheduledMessages(QStringLiteral("A1"), QString(), QStringLiteral("Oth")).startsWith(QString::number(second) + u'\t'));
        QVERIFY(f.Store.GetScheduledMessages(QStringLiteral("A2")).isEmpty());
        QVERIFY(f.Store.ScheduledDuplicate(QStringLiteral("T1"), QStringLiteral("ann@example.com"), QStringLiteral("Reminder\tone"),
                                           QStringLiteral("alerts@orders.test")));
        QVERIFY2(!f.Store.ScheduledDuplicate(QStringLiteral("T3"), QStringLiteral("ann@example.com"), QStringLiteral("Reminder\tone"),
                                             QStringLiteral("alerts@orders.test")),
                 "the same mail of another trigger is no duplicate");

        // Due once its second has passed: the row sent now; nothing scheduled.
        QTest::qWait(1100);
        OutboxMessage due;
        QVERIFY(f.Store.GetOutBox(due));
        QCOMPARE(due.Subject, QStringLiteral("Now"));
        QCOMPARE(due.Status, 1);
        QVERIFY(f.Store.DeleteOutBox(due.RecordNo));
        QVERIFY(!f.Store.GetOutBox(due));
        bool found = true;
        QVERIFY(f.Store.SendScheduledEmail(999999, &found));
        QVERIFY(!found);
        QVERIFY(f.Store.SendScheduledEmail(first, &found));
        QVERIFY(found);
        QTest::qWait(1100);
        QVERIFY(f.Store.GetOutBox(due));
        QCOMPARE(due.RecordNo, first);
        QCOMPARE(f.Value(QStringLiteral("SELECT Status FROM Outbox WHERE RecordNo=") + QString::number(first)).toInt(), 101);
        OutboxMessage none;
        QVERIFY2(!f.Store.GetOutBox(none), "a taken row is not taken twice");
        QVERIFY(f.Store.ReturnOutBox(first, due.Status, QDateTime::currentDateTime().addSecs(-5)));
        QVERIFY(f.Store.GetOutBox(due));
        QCOMPARE(due.Status, 2);

        QVERIFY(f.Store.DeleteScheduledEmail(second));
        QVERIFY(!f.Store.GetOutBoxRecord(second));
        QCOMPARE(f.Store.GetScheduledBody(first), later.Mime);
        QVERIFY(m_errors.isEmpty());
    }

    void aStoredMessageIsForwardedToEachAddress()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        const qint64 stored = f.Add(QStringLiteral("MessageStore"),
                                    {{QStringLiteral("AccountID"), QStringLiteral("A1")},
                                     {QStringLiteral("FolderID"), QStringLiteral("F1")},
                                     {QStringLiteral("UID"), QStringLiteral("u-1")},
                                     {QStringLiteral("Subject"), QStringLiteral("Order 7")},
                                     {QStringLiteral("Headers"), QStringLiteral("Subject: Order 7\r\nX-Priority: 1\r\n")},
                                     {QStringLiteral("Body"), QStringLiteral("Seven\r\n")}});
        QVERIFY(stored > 0);
        QCOMPARE(f.Store.ForwardMessage(stored, QStringLiteral("F2"), QStringLiteral("a@x.test")), -1); // another folder
        QCOMPARE(f.Store.ForwardMessage(stored, QStringLiteral("F1"), QStringLiteral("a@x.test, b@x.test,")), 2);
        QCOMPARE(f.Count(QStringLiteral("Outbox"), QStringLiteral("ReferenceID='u-1' AND Importance=1 AND Scheduled=0")), 2);
        QCOMPARE(f.Value(QStringLiteral("SELECT Mime FROM Outbox WHERE MailTo='b@x.test'")).toString(),
                 QStringLiteral("Subject: Order 7\r\nX-Priority: 1\r\n\r\nSeven\r\n"));
    }

    void relayedMailGoesThroughTheSmartHostWhichMayBeDown()
    {
        SmartHost host;
        QVERIFY(host.Start());
        MailFixture mail;
        mail.Settings.insert(QStringLiteral("MailServerRelayIP"), QStringLiteral("127.0.0.1"));
        mail.Settings.insert(QStringLiteral("MailServerUseSmartHost"), QStringLiteral("-1"));
        mail.Settings.insert(QStringLiteral("MailServerSmartHostIP"), QStringLiteral("127.0.0.1"));
        mail.Settings.insert(QStringLiteral("MailServerSmartHostPort"), QString::number(host.Port));
        QVERIFY2(mail.Start(), qPrintable(mail.Problem));
        const auto outbox = [&](const QString &Condition) {
            return mail.Scalar(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT COUNT(*) FROM Outbox WHERE ") + Condition).toLongLong();
        };
        const auto relay = [&](const QString &Subject) {
            return mail.Swaks({QStringLiteral("--to"), QStringLiteral("carl@faraway.test"), QStringLiteral("--from"),
                               QStringLiteral("ann@example.com"), QStringLiteral("--header"), QStringLiteral("Subject: ") + Subject});
        };

        QCOMPARE(relay(QStringLiteral("First")), 0);
        QStringList received = host.WaitFor(1);
        QCOMPARE(received.size(), 1);
        QVERIFY2(received.at(0).contains(QStringLiteral("X-RcptTo: carl@faraway.test")), qPrintable(received.at(0)));
        QVERIFY(received.at(0).contains(QStringLiteral("X-MailFrom: ann@example.com")));
        QVERIFY(received.at(0).contains(QStringLiteral("Subject: First")));
        QVERIFY(received.at(0).contains(QStringLiteral("by mx.postvane.test with ESMTP")));
        QCOMPARE(outbox(QStringLiteral("1=1")), 0);
        QVERIFY(mail.Log(QStringLiteral("SMTPCLIENT.LOG")).contains(QStringLiteral("Message to carl@faraway.test subject First sent")));

        // Down: the row stays, counted, due again later.
        host.Stop();
        QCOMPARE(relay(QStringLiteral("Second")), 0);
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT COUNT(*) FROM Outbox WHERE Status=1"), 1), 1);
        QVERIFY(mail.Log(QStringLiteral("SMTPCLIENT.LOG")).contains(QStringLiteral("* Message to carl@faraway.test subject Second not sent (attempt 1)")));
        QCOMPARE(outbox(QStringLiteral("ScheduledDate > datetime('now','localtime','+9 minutes')")), 1);

        // Up again, and the retry is due: sent.
        QVERIFY(host.Start());
        mail.Scalar(QStringLiteral("MessageStore.db3"), QStringLiteral("UPDATE Outbox SET ScheduledDate='2000-01-01 00:00:00'"));
        received = host.WaitFor(2);
        QCOMPARE(received.size(), 2);
        QVERIFY(received.at(1).contains(QStringLiteral("Subject: Second")));
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT 1-COUNT(*) FROM Outbox"), 1), 1);

        // Down at the last attempt: given up.
        host.Stop();
        QCOMPARE(relay(QStringLiteral("Third")), 0);
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT COUNT(*) FROM Outbox WHERE Status=1"), 1), 1);
        mail.Scalar(QStringLiteral("MessageStore.db3"), QStringLiteral("UPDATE Outbox SET Status=7, ScheduledDate='2000-01-01 00:00:00'"));
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT 1-COUNT(*) FROM Outbox"), 1), 1);
        QVERIFY(mail.Log(QStringLiteral("SMTPCLIENT.LOG")).contains(QStringLiteral("* Message to carl@faraway.test subject Third given up after 8 attempts")));
    }

    void requestsSendTestMailForwardAndHandleScheduledMail()
    {
        SmartHost host;
        QVERIFY(host.Start());
        MailFixture mail;
        mail.Settings.insert(QStringLiteral("AdminEmail"), QStringLiteral("admin@orders.test"));
        mail.Settings.insert(QStringLiteral("MailServerUseSmartHost"), QStringLiteral("-1"));
        mail.Settings.insert(QStringLiteral("MailServerSmartHostIP"), QStringLiteral("127.0.0.1"));
        mail.Settings.insert(QStringLiteral("MailServerSmartHostPort"), QString::number(host.Port));
        QVERIFY2(mail.Start(), qPrintable(mail.Problem));
        QCOMPARE(mail.PostAccount(QStringLiteral("A1"), QStringLiteral("orders.test"), QStringLiteral("*")), QStringLiteral("OK"));
        QCOMPARE(mail.PostAccount(QStringLiteral("A2"), QStringLiteral("shop.test"), QStringLiteral("*")), QStringLiteral("OK"));
        ServerFixture &server = mail.Server;

        QCOMPARE(server.Post(QStringLiteral("sendtestemail.xml?subject=Hello%20there"), "Line one\nLine two").Text(), QStringLiteral("OK"));
        QStringList received = host.WaitFor(1);
        QCOMPARE(received.size(), 1);
        QVERIFY(received.at(0).contains(QStringLiteral("X-RcptTo: admin@orders.test")));
        QVERIFY(received.at(0).contains(QStringLiteral("Subject: Hello there")));
        QVERIFY(received.at(0).contains(QStringLiteral("Line one\nLine two")) || received.at(0).contains(QStringLiteral("Line one\r\nLine two")));

        // A stored message forwarded.
        QCOMPARE(mail.Swaks({QStringLiteral("--to"), QStringLiteral("orders@orders.test"), QStringLiteral("--header"),
                             QStringLiteral("Subject: To forward")}),
                 0);
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT COUNT(*) FROM MessageStore"), 1), 1);
        const QString stored = mail.Scalar(QStringLiteral("MessageStore.db3"), QStringLiteral("SELECT RecordNo FROM MessageStore")).toString();
        QVERIFY(server.Get(QStringLiteral("forwardmessage.xml?recordno=") + stored + QStringLiteral("&email=")).Refused());
        QCOMPARE(server.Get(QStringLiteral("forwardmessage.xml?recordno=") + stored + QStringLiteral("&email=dan%40faraway.test")).Text(),
                 QStringLiteral("OK"));
        received = host.WaitFor(2);
        QCOMPARE(received.size(), 2);
        QVERIFY(received.at(1).contains(QStringLiteral("X-RcptTo: dan@faraway.test")));
        QVERIFY(received.at(1).contains(QStringLiteral("Subject: To forward")));

        // Scheduled mail of A1.
        for (const char *subject : {"Reminder 1", "Reminder 2", "Other"})
            mail.Scalar(QStringLiteral("MessageStore.db3"),
                        QStringLiteral("INSERT INTO Outbox (AccountID,TriggerID,ScheduledDate,Scheduled,Subject,MailTo,MailFrom,Mime,Status) "
                                       "VALUES ('A1','T1','2040-01-01 10:00:00',1,'%1','eve@faraway.test','a@orders.test',"
                                       "'Subject: %1\r\n\r\nText\r\n',0)")
                            .arg(QLatin1String(subject)));
        const QStringList rows = server.Get(QStringLiteral("getscheduledmessages.xml?accountid=A1")).Text().split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(rows.size(), 3);
        const QString first = rows.at(0).section(u'\t', 0, 0);
        QCOMPARE(rows.at(0).section(u'\t', 7, 7), QStringLiteral("Reminder 1"));
        QVERIFY(server.Get(QStringLiteral("getscheduledmessages.xml?accountid=A2")).Text().isEmpty());
        QCOMPARE(server.Get(QStringLiteral("getscheduledmessage.xml?accountid=A1&recordno=") + first).Text(),
                 QStringLiteral("Subject: Reminder 1\r\n\r\nText\r\n"));
        QVERIFY2(server.Get(QStringLiteral("getscheduledmessage.xml?accountid=A2&recordno=") + first).Refused(),
                 "a row of another account is not reached through this one");
        QVERIFY(server.Get(QStringLiteral("deletescheduledmessage.xml?accountid=A2&recordno=") + first).Refused());

        QCOMPARE(server.Get(QStringLiteral("sendscheduledmessage.xml?accountid=A1&recordno=") + first).Text(), QStringLiteral("OK"));
        received = host.WaitFor(3);
        QCOMPARE(received.size(), 3);
        QVERIFY(received.at(2).contains(QStringLiteral("Subject: Reminder 1")));
        QCOMPARE(mail.WaitForCount(QStringLiteral("MessageStore.db3"),
                                   QStringLiteral("SELECT 1-COUNT(*) FROM Outbox WHERE Subject='Reminder 1'"), 1),
                 1); // a sent row is gone
        const QString second = server.Get(QStringLiteral("getscheduledmessages.xml?accountid=A1")).Text().section(u'\t', 0, 0);
        QCOMPARE(server.Get(QStringLiteral("deletescheduledmessage.xml?accountid=A1&recordno=") + second).Text(), QStringLiteral("OK"));
        QCOMPARE(server.Get(QStringLiteral("getscheduledmessages.xml?accountid=A1")).Text().count(u'\n'), 1);
        QCOMPARE(server.Get(QStringLiteral("deletescheduledmessages.xml?accountid=A1&searchtext=Oth")).Text(), QStringLiteral("OK"));
        QVERIFY(server.Get(QStringLiteral("getscheduledmessages.xml?accountid=A1")).Text().isEmpty());
    }
};

POSTVANE_TEST(tst_Outbox)
#include "tst_Outbox.moc"
