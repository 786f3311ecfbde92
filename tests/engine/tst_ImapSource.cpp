#include "DovecotServer.h"
#include "RecordingSink.h"
#include "SourceTestMessages.h"
#include "TestRegistry.h"

#include "engine/sources/ImapReader.h"
#include "engine/sources/SourceMime.h"

#include <QElapsedTimer>
#include <QSet>
#include <QTcpServer>
#include <QtTest>

// The IMAP reader against a real Dovecot on loopback.
class tst_ImapSource : public QObject
{
    Q_OBJECT

    DovecotServer m_dovecot;
    int m_next = 0;

    SourceAccount Account()
    {
        SourceAccount account;
        account.AccountID = QStringLiteral("ACC") + QString::number(++m_next);
        account.Imap.Host = QStringLiteral("127.0.0.1");
        account.Imap.Port = m_dovecot.ImapPort;
        account.Imap.User = QStringLiteral("postvane");
        account.Imap.Password = QStringLiteral("secret");
        account.Imap.TimeoutSeconds = 10;
        account.ImapFolder = QStringLiteral("INBOX");
        account.ImapServerIDs = true;
        return account;
    }

    // Empties the inbox through the reader itself: every message deleted.
    void Clear()
    {
        SourceAccount account = Account();
        account.ImapLeaveMessageOn = false;
        RecordingSink sink;
        ImapReader().Read(account, sink);
        QCOMPARE(m_dovecot.Count(), 0);
    }

    QSet<int> Numbers(const RecordingSink &Sink)
    {
        QSet<int> numbers;
        for (const SourceMessage &message : Sink.Queued)
            numbers.insert(TestMessageNumber(message.Mime));
        return numbers;
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(m_dovecot.Start(), qPrintable(m_dovecot.Problem));
    }

    void init() { Clear(); }

    void readsEachNewMessageOnceInBatches()
    {
        for (int i = 1; i <= 600; ++i)
            m_dovecot.Deliver(TestMessage(i));
        SourceAccount account = Account();
        RecordingSink sink;
        const SourceReadResult first = ImapReader().Read(account, sink);
        QVERIFY2(!first.Failed, qPrintable(first.Failure + m_dovecot.ReadLog()));
        QCOMPARE(first.NewMessages, 600);
        QCOMPARE(Numbers(sink).size(), 600);
        // 600 messages in batches of at most 250: three commits.
        QCOMPARE(sink.Commits, 3);
        const SourceMessage &one = sink.Queued.first();
        QVERIFY(one.UID.contains(u'.'));
        QCOMPARE(SourceMime::HeaderValue(one.Mime, "Postvane-AccountID"), account.AccountID.toUtf8());
        QCOMPARE(SourceMime::HeaderValue(one.Mime, "Postvane-Source"), QByteArray("IMAP"));
        QCOMPARE(SourceMime::HeaderValue(one.Mime, "Postvane-UID"), one.UID.toUtf8());
        QCOMPARE(SourceMime::HeaderValue(one.Mime, "Postvane-IsRead"), QByteArray("0"));
        QVERIFY(one.Mime.contains("\r\n\r\nBody of message "));
        QVERIFY(account.ImapLastEmail.isValid());

        // Left on the server, marked as seen, and not taken again.
        const SourceReadResult second = ImapReader().Read(account, sink);
        QVERIFY2(!second.Failed, qPrintable(second.Failure));
        QCOMPARE(second.NewMessages, 0);
        QCOMPARE(sink.Duplicates, 0);
        QCOMPARE(m_dovecot.Count(), 600);
        const QStringList cur = QDir(m_dovecot.MailDir() + QStringLiteral("/cur")).entryList(QDir::Files);
        QCOMPARE(cur.size(), 600);
        QVERIFY(cur.first().section(u',', -1).contains(u'S'));
    }

    void takesMessagesNewerThanTheLastDayAndAtMostMaxPerRun()
    {
        for (int i = 1; i <= 30; ++i)
            m_dovecot.Deliver(TestMessage(i));
        SourceAccount account = Account();
        account.ImapLastEmail = QDateTime::currentDateTime().addDays(1);
        RecordingSink sink;
        QCOMPARE(ImapReader().Read(account, sink).NewMessages, 0);
        account.ImapLastEmail = QDateTime::currentDateTime().addDays(-1);
        account.MaxMessagesPerRun = 12;
        QCOMPARE(ImapReader().Read(account, sink).NewMessages, 12);
        QCOMPARE(ImapReader().Read(account, sink).NewMessages, 12);
        QCOMPARE(ImapReader().Read(account, sink).NewMessages, 6);
        QCOMPARE(Numbers(sink).size(), 30);
        QCOMPARE(sink.Duplicates, 0);
    }

    void connectsPlainByStartTlsAndByImplicitTls()
    {
        m_dovecot.Deliver(TestMessage(1));
        struct Mode
        {
            QString Host;
            quint16 Port;
            bool Secure;
        };
        const QList<Mode> modes = {{QStringLiteral("127.0.0.1"), m_dovecot.ImapPort, false},
                                   {QStringLiteral("localhost"), m_dovecot.ImapPort, true},
                                   {QStringLiteral("imaps://localhost"), m_dovecot.ImapsPort, true}};
        for (const Mode &mode : modes) {
            SourceAccount account = Account();
            account.Imap.Host = mode.Host;
            account.Imap.Port = mode.Port;
            account.Imap.Secure = mode.Secure;
            account.Imap.CAFile = m_dovecot.CertificateFile();
            RecordingSink sink;
            const SourceReadResult result = ImapReader().Read(account, sink);
            QVERIFY2(!result.Failed, qPrintable(mode.Host + u' ' + result.Failure));
            QCOMPARE(result.NewMessages, 1);
        }
    }

    void verifiesTheCertificateUnlessTheAccountAcceptsAny()
    {
        m_dovecot.Deliver(TestMessage(1));
        SourceAccount account = Account();
        account.Imap.Host = QStringLiteral("imaps://localhost");
        account.Imap.Port = m_dovecot.ImapsPort;
        account.Imap.Secure = true;
        RecordingSink sink;
        const SourceReadResult refused = ImapReader().Read(account, sink);
        QVERIFY(refused.Failed);
        QVERIFY2(refused.Failure.contains(QStringLiteral("certificate"), Qt::CaseInsensitive), qPrintable(refused.Failure));
        QVERIFY(refused.Failure.contains(QStringLiteral("localhost:%1").arg(m_dovecot.ImapsPort)));
        QCOMPARE(sink.Queued.size(), 0);

        account.Imap.AcceptAnyCertificate = true;
        const SourceReadResult accepted = ImapReader().Read(account, sink);
        QVERIFY2(!accepted.Failed, qPrintable(accepted.Failure));
        QCOMPARE(accepted.NewMessages, 1);
    }

    void wrongPasswordFailsOnceWithTheServersWordsAndNoPassword()
    {
        SourceAccount account = Account();
        account.Imap.Password = QStringLiteral("Wr0ngSecret");
        RecordingSink sink;
        const SourceReadResult result = ImapReader().Read(account, sink);
        QVERIFY(result.Failed);
        QVERIFY(result.Failure.contains(QStringLiteral("127.0.0.1:%1").arg(m_dovecot.ImapPort)));
        QVERIFY2(result.Failure.contains(QStringLiteral("server said"), Qt::CaseInsensitive), qPrintable(result.Failure));
        QVERIFY(!result.Failure.contains(QStringLiteral("Wr0ngSecret")));
    }

    void aHostThatNeverAnswersIsBoundedByTheTimeOut()
    {
        QTcpServer silent;
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        SourceAccount account = Account();
        account.Imap.Port = silent.serverPort();
        account.Imap.TimeoutSeconds = 2;
        RecordingSink sink;
        QElapsedTimer clock;
        clock.start();
        const SourceReadResult result = ImapReader().Read(account, sink);
        QVERIFY(result.Failed);
        QVERIFY2(clock.elapsed() < 8000, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(result.Failure.contains(QString::number(silent.serverPort())));
    }

    void deletesOrMovesOnlyWhatTheQueueCommitted()
    {
        for (int i = 1; i <= 5; ++i)
            m_dovecot.Deliver(TestMessage(i));
        SourceAccount account = Account();
        account.ImapLeaveMessageOn = false;
        RecordingSink sink;
        sink.Unreadable = true;
        QVERIFY(ImapReader().Read(account, sink).Failed);
        QCOMPARE(m_dovecot.Count(), 5);
        sink.Unreadable = false;
        sink.Refuse = true;
        const SourceReadResult refused = ImapReader().Read(account, sink);
        QVERIFY(refused.Failed);
        QCOMPARE(m_dovecot.Count(), 5);

        sink.Refuse = false;
        QCOMPARE(ImapReader().Read(account, sink).NewMessages, 5);
        QCOMPARE(m_dovecot.Count(), 0);

        m_dovecot.MakeFolder(QStringLiteral("Done"));
        for (int i = 6; i <= 8; ++i)
            m_dovecot.Deliver(TestMessage(i));
        SourceAccount mover = Account();
        mover.ImapMove = true;
        mover.ImapMoveToFolder = QStringLiteral("Done");
        QCOMPARE(ImapReader().Read(mover, sink).NewMessages, 3);
        QCOMPARE(m_dovecot.Count(), 0);
        QCOMPARE(m_dovecot.Count(QStringLiteral("Done")), 3);
        QCOMPARE(sink.Duplicates, 0);
    }

    void aServerStoppedMidBatchLosesNothingAndDuplicatesNothing()
    {
        for (int i = 1; i <= 400; ++i)
            m_dovecot.Deliver(TestMessage(i));
        SourceAccount account = Account();
        account.ImapLeaveMessageOn = false;
        RecordingSink sink;
        sink.OnQueue = [this](const QList<SourceMessage> &) { m_dovecot.Kill(); };
        const SourceReadResult broken = ImapReader().Read(account, sink);
        QVERIFY(broken.Failed);
        QCOMPARE(broken.NewMessages, 250);
        QVERIFY(m_dovecot.Start());
        QCOMPARE(m_dovecot.Count(), 400);

        sink.OnQueue = nullptr;
        const SourceReadResult resumed = ImapReader().Read(account, sink);
        QVERIFY2(!resumed.Failed, qPrintable(resumed.Failure));
        QCOMPARE(resumed.NewMessages, 150);
        QCOMPARE(Numbers(sink).size(), 400);
        QCOMPARE(sink.Duplicates, 0);
        QCOMPARE(m_dovecot.Count(), 0);
    }

    void messageIdIdentitySurvivesANewUidValidity()
    {
        for (int i = 1; i <= 4; ++i)
            m_dovecot.Deliver(TestMessage(i));
        SourceAccount account = Account();
        account.ImapServerIDs = false;
        RecordingSink sink;
        QCOMPARE(ImapReader().Read(account, sink).NewMessages, 4);
        QCOMPARE(sink.Queued.first().UID, QStringLiteral("<m1@example.com>"));

        m_dovecot.Stop();
        for (const QString &file : QDir(m_dovecot.MailDir()).entryList({QStringLiteral("dovecot*")}, QDir::Files))
            QFile::remove(m_dovecot.MailDir() + u'/' + file);
        QVERIFY(m_dovecot.Start());
        m_dovecot.Deliver(TestMessage(5));
        QCOMPARE(ImapReader().Read(account, sink).NewMessages, 1);
        QCOMPARE(sink.Duplicates, 0);
    }

    void serverIdsSurviveANewUidValidityByArrival()
    {
        for (int i = 1; i <= 4; ++i)
            m_dovecot.Deliver(TestMessage(i));
        SourceAccount account = Account();
        RecordingSink sink;
        QCOMPARE(ImapReader().Read(account, sink).NewMessages, 4);
        QVERIFY(account.ImapUidValidity != 0);

        m_dovecot.Stop();
        for (const QString &file : QDir(m_dovecot.MailDir()).entryList({QStringLiteral("dovecot*")}, QDir::Files))
            QFile::remove(m_dovecot.MailDir() + u'/' + file);
        QVERIFY(m_dovecot.Start());
        QTest::qWait(1100); // arrivals are told apart by the second
        m_dovecot.Deliver(TestMessage(5));
        const SourceReadResult result = ImapReader().Read(account, sink);
        QCOMPARE(result.NewMessages, 1);
        QVERIFY(result.Note.contains(QStringLiteral("UIDVALIDITY")));
        QCOMPARE(TestMessageNumber(sink.Queued.last().Mime), 5);
        QCOMPARE(sink.Duplicates, 0);
    }

    void largeAndMalformedMessagesArriveWhole()
    {
        const QByteArray large = TestMessage(1, 25 * 1024 * 1024);
        m_dovecot.Deliver(large);
        m_dovecot.Deliver("this is no mail at all\r\njust two lines\r\n");
        SourceAccount account = Account();
        RecordingSink sink;
        const SourceReadResult result = ImapReader().Read(account, sink);
        QVERIFY2(!result.Failed, qPrintable(result.Failure));
        QCOMPARE(result.NewMessages, 2);
        QVERIFY(sink.Queued.at(0).Mime.endsWith(large));
        const QByteArray odd = sink.Queued.at(1).Mime;
        QVERIFY(odd.contains("Postvane-IsRead: 0\r\n\r\nthis is no mail at all\r\n"));
        QVERIFY(sink.Queued.at(1).MessageDate.isValid());
    }

    void uidSetsAreCompact()
    {
        QCOMPARE(ImapReader::UidSet({7, 1, 2, 3, 9, 10}), QByteArray("1:3,7,9:10"));
        QCOMPARE(ImapReader::InternalDate(" 3-Nov-2026 10:00:00 +0100"),
                 QDateTime(QDate(2026, 11, 3), QTime(9, 0), QTimeZone(0)));
    }
};

POSTVANE_TEST(tst_ImapSource)
#include "tst_ImapSource.moc"
