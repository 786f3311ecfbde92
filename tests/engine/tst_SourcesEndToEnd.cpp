#include "DovecotServer.h"
#include "SourceTestMessages.h"
#include "TestRegistry.h"
#include "e2e/ServerFixture.h"

#include "model/clsAccount.h"


#include <QFile>
#include <QTemporaryDir>
#include <QSet>
#include <QtTest>

// A real server reading a real Dovecot: messages put into the mailbox are in
// the message store after "checknow.xml", each once, also when the server is
// killed in the middle of a read and started again.
class tst_SourcesEndToEnd : public QObject
{
    Q_OBJECT

    DovecotServer m_dovecot;
    ServerFixture m_server;

    QByteArray ImapAccount(const QString &ID)
    {
        clsAccount account;
        account.AccountID = ID;
        account.OrganizationID.clear();
        account.Name = QStringLiteral("Mailbox ") + ID;
        account.SCHEDULE = QStringLiteral("01440|YYYYYYY");
        account.IMAP = true;
        account.IMAPServer = QStringLiteral("127.0.0.1");
        account.IMAPPort = qint16(m_dovecot.ImapPort);
        account.IMAPAccount = QStringLiteral("postvane");
        account.IMAPPassword = QStringLiteral("secret");
        account.IMAPFolder = QStringLiteral("INBOX");
        account.IMAPLeaveMessageOn = false;
        account.IMAPServerIDs = true;
        account.IMAPLastEmail = QDateTime(QDate::currentDate().addDays(-1), QTime(0, 0));
        return account.XML().toUtf8();
    }

    // The subjects of the account's messages in the message store.
    QStringList StoredSubjects(const QString &AccountID = QStringLiteral("E2E1"))
    {
        const HttpReply reply = m_server.Get(QStringLiteral("getmessages.xml?accountid=") + AccountID
                                             + QStringLiteral("&fromrow=1&torow=1000000"));
        QStringList subjects;
        for (const QString &line : reply.Text().split(u'\n', Qt::SkipEmptyParts))
            subjects << line.split(u'\t').value(5);
        return subjects;
    }

    // Waits until Count messages are stored; the subjects then.
    QStringList AwaitStored(int Count, int TimeoutMs = 60000)
    {
        QStringList subjects;
        QDeadlineTimer deadline(TimeoutMs);
        while (!deadline.hasExpired()) {
            subjects = StoredSubjects();
            if (subjects.size() >= Count)
                break;
            QTest::qWait(200);
        }
        return subjects;
    }

    QString EdgeLog() { return Log(QStringLiteral("PostvaneEdgeServerLog.LOG")); }

    QString Log(const QString &Name)
    {
        QFile log(m_server.DataPath() + Name);
        log.open(QIODevice::ReadOnly);
        return QString::fromUtf8(log.readAll());
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(m_dovecot.Start(), qPrintable(m_dovecot.Problem));
        QVERIFY2(m_server.Start(), qPrintable(m_server.Problem));
        QCOMPARE(m_server.Post(QStringLiteral("postaccount.htm?accountid=E2E1"), ImapAccount(QStringLiteral("E2E1"))).Text(),
                 QStringLiteral("OK"));
    }

    void messagesArriveOnceAfterCheckNow()
    {
        for (int i = 1; i <= 20; ++i)
            m_dovecot.Deliver(TestMessage(i));
        QCOMPARE(m_server.Get(QStringLiteral("checknow.xml")).Text(), QStringLiteral("OK"));
        const QStringList subjects = AwaitStored(20, 20000);
        QVERIFY2(subjects.size() == 20, qPrintable(EdgeLog().right(3000)));
        QCOMPARE(QSet<QString>(subjects.begin(), subjects.end()).size(), 20);
        QTRY_COMPARE_WITH_TIMEOUT(m_dovecot.Count(), 0, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(EdgeLog().contains(QStringLiteral("Account Mailbox E2E1: IMAP 127.0.0.1:")), 10000);

        // Read again: nothing new.
        const qsizetype lines = EdgeLog().count(QStringLiteral("Mailbox E2E1: IMAP"));
        QCOMPARE(m_server.Get(QStringLiteral("checknow.xml")).Text(), QStringLiteral("OK"));
        QTRY_VERIFY_WITH_TIMEOUT(EdgeLog().count(QStringLiteral("Mailbox E2E1: IMAP")) > lines, 10000);
        QVERIFY(EdgeLog().contains(QStringLiteral(", 0 new messages")));
        QCOMPARE(StoredSubjects().size(), 20);
    }

    void aServerKilledMidReadStoresEachMessageOnce()
    {
        constexpr int Count = 3000;
        for (int i = 1001; i < 1001 + Count; ++i)
            m_dovecot.Deliver(TestMessage(i));
        QCOMPARE(m_server.Get(QStringLiteral("checknow.xml")).Text(), QStringLiteral("OK"));
        QDeadlineTimer deadline(60000);
        while (!deadline.hasExpired() && StoredSubjects().size() <= 20)
            QTest::qWait(20);
        m_server.Kill();
        const int before = m_dovecot.Count();
        QVERIFY2(before > 0, "the read ended before the server was killed");

        QVERIFY2(m_server.Start(), qPrintable(m_server.Problem));
        QCOMPARE(m_server.Get(QStringLiteral("checknow.xml")).Text(), QStringLiteral("OK"));
        const QStringList subjects = AwaitStored(20 + Count, 120000);
        QCOMPARE(subjects.size(), 20 + Count);
        QCOMPARE(QSet<QString>(subjects.begin(), subjects.end()).size(), 20 + Count);
        QTRY_COMPARE_WITH_TIMEOUT(m_dovecot.Count(), 0, 20000);
        QTest::qWait(1000);
        QCOMPARE(StoredSubjects().size(), 20 + Count);
    }

    void csvRowsArriveInTheStoreOnce()
    {
        QTemporaryDir pickup;
        QFile sheet(pickup.filePath(QStringLiteral("orders.csv")));
        QVERIFY(sheet.open(QIODevice::WriteOnly));
        sheet.write("Order;Customer\r\n1;Ann\r\n2;Bob\r\n");
        sheet.flush();
        sheet.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFileDevice::FileModificationTime);
        sheet.close();
        clsAccount account;
        account.AccountID = QStringLiteral("E2E2");
        account.OrganizationID.clear();
        account.Name = QStringLiteral("Sheets");
        account.SCHEDULE = QStringLiteral("01440|YYYYYYY");
        account.CSVPickUp = true;
        account.CSVPickupFolder = pickup.path();
        account.CSVPickupMask = QStringLiteral("*.csv");
        account.CSVPickupDelete = true;
        QCOMPARE(m_server.Post(QStringLiteral("postaccount.htm?accountid=E2E2"), account.XML().toUtf8()).Text(),
                 QStringLiteral("OK"));
        QCOMPARE(m_server.Get(QStringLiteral("checknow.xml")).Text(), QStringLiteral("OK"));
        QDeadlineTimer deadline(20000);
        while (!deadline.hasExpired() && StoredSubjects(QStringLiteral("E2E2")).size() < 2)
            QTest::qWait(200);
        QStringList subjects = StoredSubjects(QStringLiteral("E2E2"));
        subjects.sort();
        QCOMPARE(subjects, QStringList({QStringLiteral("orders.csv row 2"), QStringLiteral("orders.csv row 3")}));
        QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(sheet.fileName()), 10000);
        QVERIFY2(EdgeLog().contains(QStringLiteral("Account Sheets: CSV and Excel pickup ") + pickup.path()
                                    + QStringLiteral(", 2 new messages")),
                 qPrintable(EdgeLog().right(2000)));
    }

    void cleanupTestCase() { m_server.Stop(); }
};

POSTVANE_TEST(tst_SourcesEndToEnd)
#include "tst_SourcesEndToEnd.moc"
