#include "DovecotServer.h"
#include "RecordingSink.h"
#include "SourceTestMessages.h"
#include "TestRegistry.h"

#include "engine/sources/Pop3Reader.h"
#include "engine/sources/SourceMime.h"

#include <QRegularExpression>
#include <QSet>
#include <QtTest>

// The POP3 reader against a real Dovecot on loopback.
class tst_Pop3Source : public QObject
{
    Q_OBJECT

    DovecotServer m_dovecot;
    int m_next = 0;

    SourceAccount Account()
    {
        SourceAccount account;
        account.AccountID = QStringLiteral("POP") + QString::number(++m_next);
        account.Pop3.Host = QStringLiteral("127.0.0.1");
        account.Pop3.Port = m_dovecot.Pop3Port;
        account.Pop3.User = QStringLiteral("postvane");
        account.Pop3.Password = QStringLiteral("secret");
        account.Pop3.TimeoutSeconds = 10;
        account.Pop3LeaveMessageOn = true;
        return account;
    }

    QSet<int> Numbers(const RecordingSink &Sink)
    {
        QSet<int> numbers;
        for (const SourceMessage &message : Sink.Queued)
            numbers.insert(TestMessageNumber(message.Mime));
        return numbers;
    }

    // Sessions that ended with QUIT, as the log has them so far.
    int Ended() { return int(m_dovecot.ReadLog(0).count(QStringLiteral("Logged out top="))); }

    // The sessions ended once the log has stopped growing.
    int SettledEnded()
    {
        int ended = -1;
        for (int wait = 0; wait < 50 && ended != Ended(); ++wait) {
            ended = Ended();
            QTest::qWait(200);
        }
        return ended;
    }

    // Waits until the log has the end of that many sessions.
    void AwaitEnded(int Sessions)
    {
        for (int wait = 0; wait < 100 && Ended() < Sessions; ++wait)
            QTest::qWait(50);
    }

    // Messages the server sent with RETR over all sessions so far.
    int Retrieved()
    {
        int total = 0;
        const QRegularExpression retr(QStringLiteral("retr=(\\d+)/"));
        for (const QString &line : m_dovecot.ReadLog(0).split(u'\n')) {
            const QRegularExpressionMatch match = retr.match(line);
            if (match.hasMatch())
                total += match.captured(1).toInt();
        }
        return total;
    }

private slots:
    void initTestCase() { QVERIFY2(m_dovecot.Start(), qPrintable(m_dovecot.Problem)); }

    void init()
    {
        SourceAccount account = Account();
        account.Pop3LeaveMessageOn = false;
        RecordingSink sink;
        Pop3Reader().Read(account, sink);
        QCOMPARE(m_dovecot.Count(), 0);
    }

    void readsEachNewMessageOnceAndLeavesItOnTheServer()
    {
        for (int i = 1; i <= 250; ++i)
            m_dovecot.Deliver(TestMessage(i));
        SourceAccount account = Account();
        RecordingSink sink;
        const SourceReadResult first = Pop3Reader().Read(account, sink);
        QVERIFY2(!first.Failed, qPrintable(first.Failure));
        QCOMPARE(first.NewMessages, 250);
        QCOMPARE(sink.Commits, 3);
        QCOMPARE(Numbers(sink).size(), 250);
        QCOMPARE(account.Pop3LastMessageNoChecked, 250);
        const SourceMessage &one = sink.Queued.first();
        QCOMPARE(SourceMime::HeaderValue(one.Mime, "Postvane-Source"), QByteArray("POP3"));
        QCOMPARE(SourceMime::HeaderValue(one.Mime, "Postvane-UID"), one.UID.toUtf8());
        QVERIFY(one.Mime.endsWith(TestMessage(1).mid(TestMessage(1).indexOf("\r\n\r\n"))));

        m_dovecot.Deliver(TestMessage(251));
        const SourceReadResult second = Pop3Reader().Read(account, sink);
        QVERIFY2(!second.Failed, qPrintable(second.Failure));
        QCOMPARE(second.NewMessages, 1);
        QCOMPARE(sink.Duplicates, 0);
        QCOMPARE(m_dovecot.Count(), 251);
    }

    void oldMessagesAreLookedAtOnceAndNotTaken()
    {
        QByteArray old = TestMessage(1);
        const QByteArray date = QDateTime::currentDateTime().addDays(-3).toString(Qt::RFC2822Date).toLatin1();
        old.replace(old.indexOf("Date: ") + 6, old.indexOf("\r\n", old.indexOf("Date: ")) - old.indexOf("Date: ") - 6, date);
        m_dovecot.Deliver(old);
        m_dovecot.Deliver(TestMessage(2));
        SourceAccount account = Account();
        account.Pop3LastEmail = QDateTime::currentDateTime().addSecs(-60);
        RecordingSink sink;
        const int sessions = SettledEnded();
        QCOMPARE(Pop3Reader().Read(account, sink).NewMessages, 1);
        QCOMPARE(TestMessageNumber(sink.Queued.first().Mime), 2);
        AwaitEnded(sessions + 1);
        const int retrieved = Retrieved();
        QCOMPARE(Pop3Reader().Read(account, sink).NewMessages, 0);
        AwaitEnded(sessions + 2);
        QCOMPARE(Retrieved(), retrieved);
        QCOMPARE(m_dovecot.Count(), 2);
    }

    void deletesOnlyWhatTheQueueCommittedAndAtMostMaxPerRun()
    {
        for (int i = 1; i <= 25; ++i)
            m_dovecot.Deliver(TestMessage(i));
        SourceAccount account = Account();
        account.Pop3LeaveMessageOn = false;
        RecordingSink sink;
        sink.Refuse = true;
        QVERIFY(Pop3Reader().Read(account, sink).Failed);
        QCOMPARE(m_dovecot.Count(), 25);
        sink.Refuse = false;
        account.MaxMessagesPerRun = 10;
        QCOMPARE(Pop3Reader().Read(account, sink).NewMessages, 10);
        QCOMPARE(m_dovecot.Count(), 15);
        account.MaxMessagesPerRun = 0;
        QCOMPARE(Pop3Reader().Read(account, sink).NewMessages, 15);
        QCOMPARE(m_dovecot.Count(), 0);
        QCOMPARE(Numbers(sink).size(), 25);
    }

    void aServerKilledMidBatchLosesNothingAndDuplicatesNothing()
    {
        for (int i = 1; i <= 230; ++i)
            m_dovecot.Deliver(TestMessage(i));
        SourceAccount account = Account();
        account.Pop3LeaveMessageOn = false;
        RecordingSink sink;
        sink.OnQueue = [this](const QList<SourceMessage> &) { m_dovecot.Kill(); };
        const SourceReadResult broken = Pop3Reader().Read(account, sink);
        QVERIFY(broken.Failed);
        QCOMPARE(broken.NewMessages, 100);
        QVERIFY2(m_dovecot.Start(), qPrintable(m_dovecot.Problem));
        QCOMPARE(m_dovecot.Count(), 230);
        sink.OnQueue = nullptr;
        const SourceReadResult resumed = Pop3Reader().Read(account, sink);
        QVERIFY2(!resumed.Failed, qPrintable(resumed.Failure + m_dovecot.ReadLog(0).right(1500)));
        QCOMPARE(resumed.NewMessages, 130);
        QCOMPARE(Numbers(sink).size(), 230);
        QCOMPARE(sink.Duplicates, 0);
        QCOMPARE(m_dovecot.Count(), 0);
    }

    void connectsByStartTlsAndByImplicitTlsAndReportsAWrongPassword()
    {
        m_dovecot.Deliver(TestMessage(1));
        SourceAccount account = Account();
        account.Pop3.Host = QStringLiteral("localhost");
        account.Pop3.Secure = true;
        account.Pop3.CAFile = m_dovecot.CertificateFile();
        RecordingSink sink;
        SourceReadResult result = Pop3Reader().Read(account, sink);
        QVERIFY2(!result.Failed, qPrintable(result.Failure));
        QCOMPARE(result.NewMessages, 1);

        SourceAccount implicit = Account();
        implicit.Pop3.Host = QStringLiteral("pop3s://localhost");
        implicit.Pop3.Port = m_dovecot.Pop3sPort;
        implicit.Pop3.Secure = true;
        implicit.Pop3.AcceptAnyCertificate = true;
        result = Pop3Reader().Read(implicit, sink);
        QVERIFY2(!result.Failed, qPrintable(result.Failure));
        QCOMPARE(result.NewMessages, 1);

        SourceAccount wrong = Account();
        wrong.Pop3.Password = QStringLiteral("N0tTheSecret");
        result = Pop3Reader().Read(wrong, sink);
        QVERIFY(result.Failed);
        QVERIFY2(result.Failure.contains(QStringLiteral("127.0.0.1:%1").arg(m_dovecot.Pop3Port)), qPrintable(result.Failure));
        QVERIFY(!result.Failure.contains(QStringLiteral("N0tTheSecret")));
    }
};

POSTVANE_TEST(tst_Pop3Source)
#include "tst_Pop3Source.moc"
