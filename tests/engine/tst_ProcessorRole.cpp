#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "engine/processor/ProcessorRole.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "store/StoreFixture.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <atomic>

using namespace Qt::StringLiterals;

namespace {

// An account of its own thread's copy, as the server would read it.
ConfigurationCopy::Loader AccountLoader(const QString &Fragment)
{
    return [Fragment] {
        return [Fragment] {
            Accounts().setXML(u"<Accounts>"_s + Fragment + u"</Accounts>"_s);
            return true;
        };
    };
}

} // namespace

// The processor role in this process: its threads, its log, and its daily
// and periodic work.
class tst_ProcessorRole : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;

private slots:
    void init() { m_errors.clear(); }

    void itsThreadsStoreQueuedMessagesAndLogThem()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        for (int n = 0; n < 50; ++n)
            QVERIFY(f.Store.AddEMLToEdgeQueue(u"A1"_s, u"POP3"_s, u"m%1"_s.arg(n), QDateTime::currentDateTime(),
                                              u"Postvane-UID: m%1\r\nSubject: hello\r\n\r\nbody"_s.arg(n))
                    > 0);
        QStringList pushed;
        QMutex lock;
        {
            ProcessorRole role(AccountLoader(u"<Account><AccountID>A1</AccountID><Enabled>-1</Enabled></Account>"_s), 2);
            role.Role.Log.OnLine = [&](const QString &source, const QDateTime &, const QString &text) {
                QMutexLocker locked(&lock);
                pushed << source + u": "_s + text;
            };
            role.Role.Start();
            QVERIFY(QTest::qWaitFor([&] { return f.Count(u"MessageStore"_s) == 50; }, 20000));
            role.Role.Stop();
        }
        QCOMPARE(f.Store.GetEdgeQueueCount(), 0);
        QCOMPARE(StoreFixture::ValueOn(f.Store.QueueConnection(), u"SELECT COUNT(*) FROM EdgeQueue"_s).toInt(), 0);
        QMutexLocker locked(&lock);
        QVERIFY(pushed.contains(u"Message Server: Message Processor ready with 2 threads"_s));
        QCOMPARE(pushed.filter(u"Message Server: No trigger matched"_s).size(), 50);
        QCOMPARE(pushed.last(), u"Message Server: Message Processor stopped"_s);
        QFile log(Global.DataPath + u"PostvaneMessageServerLog.LOG"_s);
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray text = log.readAll();
        QVERIFY(QRegularExpression(u"^\\d{4}-\\d\\d-\\d\\d:\\d\\d:\\d\\d:\\d\\d Message Processor ready"_s)
                    .match(QString::fromUtf8(text))
                    .hasMatch());
        QVERIFY(text.endsWith(" Message Processor stopped\r\n"));
    }

    void aMessageTakenAfterAChangeIsRunAgainstTheChangedConfiguration()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        QVERIFY(f.Store.AddEMLToEdgeQueue(u"A1"_s, u"TEST"_s, u"t1"_s, QDateTime::currentDateTime(),
                                          u"Postvane-UID: t1\r\nSubject: hello\r\n\r\nbody"_s)
                > 0);
        // The first reading knows no account A1; a change (the account
        // saved) lands right after it, before the queued message is taken.
        std::atomic<int> readings = 0;
        const ConfigurationCopy::Loader load = [&readings] {
            return [&readings] {
                if (readings++ == 0) {
                    Accounts().setXML(u"<Accounts><Account><AccountID>OTHER</AccountID></Account></Accounts>"_s);
                    CountConfigurationChange();
                } else {
                    Accounts().setXML(u"<Accounts><Account><AccountID>A1</AccountID></Account></Accounts>"_s);
                }
                return true;
            };
        };
        ProcessorRole role(load, 1);
        role.Role.Start();
        QVERIFY(QTest::qWaitFor([&] { return f.Count(u"MessageStore"_s) == 1; }, 10000));
        role.Role.Stop();
        QCOMPARE(f.Count(u"MessageStore"_s, u"AccountID='A1'"_s), 1);
        QCOMPARE(f.Store.GetEdgeQueueCount(), 0);
    }

    void archivingDeletesOnlyOldMessagesOfArchivingAccounts()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        const QDateTime old = QDateTime::currentDateTime().addDays(-40);
        const QDateTime recent = QDateTime::currentDateTime().addDays(-5);
        for (const QString &account : {u"KEEP"_s, u"ARCH"_s})
            for (const QDateTime &date : {old, recent})
                QVERIFY(f.Add(u"MessageStore"_s, {{u"AccountID"_s, account}, {u"MessageDate"_s, date}}) > 0);
        ProcessorRole role(AccountLoader(u"<Account><AccountID>KEEP</AccountID></Account>"
                                         "<Account><AccountID>ARCH</AccountID><Archive>-1</Archive>"
                                         "<ArchiveDays>30</ArchiveDays></Account>"_s),
                           1);
        role.Role.Start();
        QVERIFY(QTest::qWaitFor([&] { return f.Count(u"MessageStore"_s) == 3; }, 10000));
        role.Role.Stop();
        QCOMPARE(f.Count(u"MessageStore"_s, u"AccountID='ARCH'"_s), 1);
        QCOMPARE(f.Count(u"MessageStore"_s, u"AccountID='KEEP'"_s), 2);
    }
};

POSTVANE_TEST(tst_ProcessorRole)
#include "tst_ProcessorRole.moc"
