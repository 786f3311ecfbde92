#include "ErrorCapture.h"
#include "SourceTestMessages.h"
#include "TestRegistry.h"
#include "store/StoreFixture.h"

#include "engine/RoleLog.h"
#include "engine/sources/SourceScheduler.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTcpServer>
#include <QtTest>

// When accounts are read, what the edge log says of each read, and what is
// kept across a restart; with file pickup and a silent mail server as the
// sources, into a real edge queue.
class tst_SourceScheduler : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;

    static void Put(const QString &Folder, int N)
    {
        QFile file(QDir(Folder).filePath(QStringLiteral("m%1.eml").arg(N)));
        file.open(QIODevice::WriteOnly);
        file.write(TestMessage(N));
    }

    static clsAccount *AddFileAccount(const QString &ID, const QString &Folder)
    {
        auto account = std::make_unique<clsAccount>();
        account->AccountID = ID;
        account->Name = QStringLiteral("Files ") + ID;
        account->SCHEDULE = QStringLiteral("05|YYYYYYY");
        account->LastChecked = QDateTime(QDate(2000, 1, 1), QTime(0, 0));
        account->FilePickUp = true;
        account->FilePickupFolder = Folder;
        account->FilePickUpMask = QStringLiteral("*.eml");
        return Accounts().Add(std::move(account));
    }

    static int Queued(StoreFixture &f, const QString &AccountID)
    {
        return StoreFixture::ValueOn(f.Store.QueueConnection(),
                                     QStringLiteral("SELECT COUNT(*) FROM EdgeQueue WHERE AccountID='") + AccountID + u'\'')
            .toInt();
    }

    static QString LogText(const RoleLog &Log)
    {
        QFile file(Log.FilePath());
        file.open(QIODevice::ReadOnly);
        return QString::fromUtf8(file.readAll());
    }

    static std::unique_ptr<SourceScheduler> Scheduler(RoleLog &Log)
    {
        auto scheduler = std::make_unique<SourceScheduler>(Log, Global.DataPath, 2);
        scheduler->FileQuietMilliseconds = 0;
        scheduler->TimeoutSeconds = 3;
        return scheduler;
    }

private slots:
    void init() { ResetGlobalCollections(); }
    void cleanup() { ResetGlobalCollections(); }

    void anAccountIsReadWhenDueOrAskedAndTheDateSurvivesARestart()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        RoleLog log(QStringLiteral("Edge.LOG"), QStringLiteral("Edge Server"));
        QTemporaryDir pickup;
        for (int i = 1; i <= 3; ++i)
            Put(pickup.path(), i);
        clsAccount *account = AddFileAccount(QStringLiteral("F1"), pickup.path());
        {
            auto scheduler = Scheduler(log);
            scheduler->Run();
            scheduler->Finish();
            QCOMPARE(Queued(f, QStringLiteral("F1")), 3);
            QVERIFY2(LogText(log).contains(QStringLiteral("Account Files F1: file pickup ") + pickup.path()
                                           + QStringLiteral(", 3 new messages")),
                     qPrintable(LogText(log)));

            // Not due again within its five minutes, unless asked.
            Put(pickup.path(), 4);
            scheduler->Run();
            scheduler->Finish();
            QCOMPARE(Queued(f, QStringLiteral("F1")), 3);
            SourceScheduler::CheckNow({QStringLiteral("F1")});
            scheduler->Run();
            scheduler->Finish();
            QCOMPARE(Queued(f, QStringLiteral("F1")), 4);
            QCOMPARE(LogText(log).count(QStringLiteral("Account Files F1:")), 2);
        }
        // A restart reads the configuration's old LastChecked again; the
        // edge's own record says the account was just read.
        account->LastChecked = QDateTime(QDate(2000, 1, 1), QTime(0, 0));
        Put(pickup.path(), 5);
        auto restarted = Scheduler(log);
        restarted->Run();
        restarted->Finish();
        QCOMPARE(Queued(f, QStringLiteral("F1")), 4);
        QVERIFY(account->LastChecked.secsTo(QDateTime::currentDateTime()) < 60);
    }

    void aDeadMailServerHoldsUpNoOtherAccountAndIsLoggedWithoutItsPassword()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        RoleLog log(QStringLiteral("Edge.LOG"), QStringLiteral("Edge Server"));
        QTcpServer silent;
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        auto dead = std::make_unique<clsAccount>();
        dead->AccountID = QStringLiteral("DEAD");
        dead->Name = QStringLiteral("Dead");
        dead->LastChecked = QDateTime(QDate(2000, 1, 1), QTime(0, 0));
        dead->IMAP = true;
        dead->IMAPServer = QStringLiteral("127.0.0.1");
        dead->IMAPPort = qint16(silent.serverPort());
        dead->IMAPAccount = QStringLiteral("someone");
        dead->IMAPPassword = QStringLiteral("S3cretWord");
        Accounts().Add(std::move(dead));
        QTemporaryDir pickup;
        Put(pickup.path(), 1);
        AddFileAccount(QStringLiteral("LIVE"), pickup.path());

        auto scheduler = Scheduler(log);
        QElapsedTimer clock;
        clock.start();
        scheduler->Run();
        QTRY_COMPARE_WITH_TIMEOUT(Queued(f, QStringLiteral("LIVE")), 1, 2500);
        QVERIFY(clock.elapsed() < 2500);
        scheduler->Finish();
        const QString text = LogText(log);
        QVERIFY2(text.contains(QStringLiteral("* Account Dead: IMAP 127.0.0.1:%1 inbox, 0 new messages, failed: ")
                                   .arg(silent.serverPort())),
                 qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("3 seconds")) || text.contains(QStringLiteral("timed out"), Qt::CaseInsensitive), qPrintable(text));
        QVERIFY(!text.contains(QStringLiteral("S3cretWord")));
    }

    void aFileThatIsNotCSVIsNamedInTheLogAndTheStatusIsKept()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        RoleLog log(QStringLiteral("Edge.LOG"), QStringLiteral("Edge Server"));
        QTemporaryDir pickup;
        QFile good(QDir(pickup.path()).filePath(QStringLiteral("good.csv")));
        good.open(QIODevice::WriteOnly);
        good.write("Name,Qty\r\npears,3\r\n");
        good.close();
        QFile bad(QDir(pickup.path()).filePath(QStringLiteral("bad.csv")));
        bad.open(QIODevice::WriteOnly);
        bad.write(QByteArray("PK\x03\x04\0\0\x14\0", 8));
        bad.close();
        auto account = std::make_unique<clsAccount>();
        account->AccountID = QStringLiteral("CSV");
        account->Name = QStringLiteral("Sheets");
        account->LastChecked = QDateTime(QDate(2000, 1, 1), QTime(0, 0));
        account->CSVPickUp = true;
        account->CSVPickupFolder = pickup.path();
        account->CSVPickupMask = QStringLiteral("*.csv");
        clsAccount *sheets = Accounts().Add(std::move(account));

        Scheduler(log)->Run();
        QCOMPARE(Queued(f, QStringLiteral("CSV")), 1);
        const QString text = LogText(log);
        QVERIFY2(text.contains(QStringLiteral("* Account Sheets: CSV and Excel pickup ") + pickup.path()
                               + QStringLiteral(", 1 new message, failed: \"bad.csv\" is not a CSV file: it holds binary data, not text")),
                 qPrintable(text));
        QVERIFY(QFile::exists(bad.fileName()));

        // The status the read left is the account's after a restart.
        sheets->CSVPickupLastStatus.clear();
        Scheduler(log)->Run();
        QVERIFY2(sheets->CSVPickupLastStatus.endsWith(QStringLiteral("\"bad.csv\" is not a CSV file: it holds binary data, not text")),
                 qPrintable(sheets->CSVPickupLastStatus));
    }

    void sourcesNotAvailableHereSayISoAtEachCheck()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        RoleLog log(QStringLiteral("Edge.LOG"), QStringLiteral("Edge Server"));
        auto account = std::make_unique<clsAccount>();
        account->AccountID = QStringLiteral("EX");
        account->Name = QStringLiteral("Exchange");
        account->LastChecked = QDateTime(QDate(2000, 1, 1), QTime(0, 0));
        account->EWS = true;
        account->TwitterFeed = true;
        Accounts().Add(std::move(account));
        auto scheduler = Scheduler(log);
        scheduler->Run();
        SourceScheduler::CheckNow({QStringLiteral("EX")});
        scheduler->Run();
        scheduler->Finish();
        const QString text = LogText(log);
        QCOMPARE(text.count(QStringLiteral("Account Exchange: Exchange (EWS) is not available on this server.")), 2);
        QCOMPARE(text.count(QStringLiteral("Account Exchange: Twitter feed is not available on this server.")), 2);
    }
};

POSTVANE_TEST(tst_SourceScheduler)
#include "tst_SourceScheduler.moc"
