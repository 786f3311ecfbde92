#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/StoreFixture.h"
#include "store/clsMessage.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString Mail = u"Postvane-AccountID: A1\r\nPostvane-Source: POP3\r\nPostvane-UID: u-1\r\n"
                     "From: \"Ann Smith\" <ann@example.com>\r\nTo: box@example.com\r\nSubject: =?utf-8?q?caf=C3=A9?=\r\n"
                     "Importance: high\r\nMIME-Version: 1.0\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nOrder 42\r\n"_s;

} // namespace

// The queue operations of the store on a real SQLite store: identities,
// taking rows, releasing and returning them.
class tst_EdgeQueue : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;

private slots:
    void init()
    {
        m_errors.clear();
        ResetGlobalCollections();
        ReplaceCurrentMessage(nullptr);
    }
    void cleanup() { ResetGlobalCollections(); }

    void anIdentityIsNewUntilQueuedOrStored()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        QVERIFY(f.Store.IsNewMessage(u"A1"_s, u"POP3"_s, u"u-1"_s));
        const qint64 row = f.Store.AddEMLToEdgeQueue(u"A1"_s, u"POP3"_s, u"u-1"_s, QDateTime::currentDateTime(), Mail);
        QVERIFY(row > 0);
        QVERIFY(!f.Store.IsNewMessage(u"A1"_s, u"POP3"_s, u"u-1"_s));
        QVERIFY(f.Store.IsNewMessage(u"A1"_s, u"IMAP"_s, u"u-1"_s)); // the source is part of the identity
        QVERIFY(f.Store.ValidateRequired(row, u"V1"_s, QDateTime::currentDateTime(), u"ok?"_s));
        QVERIFY2(!f.Store.IsNewMessage(u"A1"_s, u"POP3"_s, u"u-1"_s), "a parked row holds its identity too");
        QVERIFY(f.Store.DeleteEdgeQueueRecord(row));
        QVERIFY(f.Store.IsNewMessage(u"A1"_s, u"POP3"_s, u"u-1"_s));
        QVERIFY(f.Add(u"MessageStore"_s, {{u"AccountID"_s, u"A1"_s}, {u"Source"_s, u"POP3"_s}, {u"UID"_s, u"u-1"_s}}) > 0);
        QVERIFY(!f.Store.IsNewMessage(u"A1"_s, u"POP3"_s, u"u-1"_s));
        QVERIFY(f.Store.IsStoredMessage(u"A1"_s, u"POP3"_s, u"u-1"_s));
        QVERIFY(m_errors.isEmpty());
    }

    void takingLoadsTheMessageWithItsProcessHeaders()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        auto *account = Accounts().AddXML(u"<Account><AccountID>A1</AccountID><Name>Orders</Name></Account>"_s);
        QVERIFY(account);
        QVERIFY(f.Store.AddEMLToEdgeQueue(u"A1"_s, u"POP3"_s, u"u-1"_s, QDateTime::currentDateTime(), Mail) > 0);
        QCOMPARE(f.Store.GetEdgeQueueCount(), 1);

        clsMessage &m = CurrentMessage();
        QVERIFY(f.Store.GetEdgeQueue(m));
        QCOMPARE(f.Store.GetEdgeQueueCount(), 0);
        QCOMPARE(m.Account, account);
        QCOMPARE(m.Source, u"POP3"_s);
        QCOMPARE(m.MessageID, u"u-1"_s);
        QCOMPARE(m.From, u"ann@example.com"_s);
        QCOMPARE(m.FromName, u"Ann Smith"_s);
        QCOMPARE(m.Subject, u"café"_s);
        QCOMPARE(m.Importance, u"HIGH"_s);
        QCOMPARE(m.Body.trimmed(), u"Order 42"_s);
        QVERIFY(m.NewMessage);
        QVERIFY(m.IsRead);
        QVERIFY(m.EdgeQueueRecordNo > 0);
        QCOMPARE(f.Store.GetEdgeQueueUID(m.EdgeQueueRecordNo), u"A1\t\tu-1"_s);
        QVERIFY2(!f.Store.GetEdgeQueue(m), "a taken row is not taken again");
    }

    void aTestMessageNamesItsTriggerAndMakesUpItsAddresses()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        auto *account = Accounts().AddXML(
            u"<Account><AccountID>A1</AccountID><AccountAddress>*@example.com</AccountAddress></Account>"_s);
        auto *trigger = account->Triggers.AddXML(u"<Trigger><TriggerID>T1</TriggerID></Trigger>"_s);
        QVERIFY(f.Store.AddTestToEdgeQueue(u"A1"_s, u"T1"_s, u"Name: Bob"_s) > 0);
        clsMessage &m = CurrentMessage();
        QVERIFY(f.Store.GetEdgeQueue(m));
        QCOMPARE(m.Trigger(), trigger);
        QVERIFY(m.TestMessage);
        QCOMPARE(m.Source, u"TEST"_s);
        QCOMPARE(m.MessageID.size(), 32);
        QVERIFY(m.From.startsWith(u"test@"_s));
        QVERIFY(m.ToAddress.startsWith(u"to@"_s));
        QCOMPARE(m.Subject, u"TEST"_s);
        QCOMPARE(m.Body.trimmed(), u"Name: Bob"_s);
    }

    void anAlreadyStoredIdentityIsNoNewMessageUnlessReprocessed()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        QVERIFY(f.Add(u"MessageStore"_s, {{u"AccountID"_s, u"A1"_s}, {u"Source"_s, u"POP3"_s}, {u"UID"_s, u"u-1"_s}}) > 0);
        QVERIFY(f.Store.AddEMLToEdgeQueue(u"A1"_s, u"POP3"_s, u"u-1"_s, QDateTime(), Mail) > 0);
        QVERIFY(f.Store.AddEMLToEdgeQueue(u"A1"_s, u"POP3"_s, u"u-1"_s, QDateTime(),
                                          u"Postvane-Reprocess: 1\r\n"_s + Mail)
                > 0);
        QVERIFY(f.Store.GetEdgeQueue(CurrentMessage()));
        QVERIFY(!CurrentMessage().NewMessage);
        ReplaceCurrentMessage(nullptr);
        QVERIFY(f.Store.GetEdgeQueue(CurrentMessage()));
        QVERIFY(CurrentMessage().REProcess);
        QVERIFY(CurrentMessage().NewMessage);
    }

    void rowsOfADeadTakerWaitAgainUnlessStored()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        // A process that has ended: its id and start time no longer match.
        QProcess gone;
        gone.start(u"true"_s);
        QVERIFY(gone.waitForFinished());
        const QString dead = QSysInfo::machineHostName() + u':' + QString::number(gone.processId()) + u":1"_s;
        const QString live = clsMessageStore::EdgeQueueTaker();
        const QString elsewhere = u"other-host:1:1"_s;
        for (const auto &[uid, taker] : {std::pair{u"stored"_s, dead}, std::pair{u"lost"_s, dead},
                                          std::pair{u"mine"_s, live}, std::pair{u"far"_s, elsewhere}})
            QVERIFY(f.Store.ExecuteEQ(u"INSERT INTO EdgeQueue (AccountID,Source,UID,Processed,TakenBy) "
                                      "VALUES ('A1','POP3','%1',1,'%2')"_s.arg(uid, taker))
                    == 1);
        QVERIFY(f.Add(u"MessageStore"_s, {{u"AccountID"_s, u"A1"_s}, {u"Source"_s, u"POP3"_s}, {u"UID"_s, u"stored"_s}}) > 0);

        QCOMPARE(f.Store.ReturnTakenEdgeQueue(), 1);
        const auto state = [&](const QString &uid) {
            return StoreFixture::ValueOn(f.Store.QueueConnection(),
                                         u"SELECT Processed FROM EdgeQueue WHERE UID='%1'"_s.arg(uid));
        };
        QVERIFY2(!state(u"stored"_s).isValid(), "a stored message's row goes");
        QCOMPARE(state(u"lost"_s).toInt(), 0);
        QCOMPARE(state(u"mine"_s).toInt(), 1);
        QCOMPARE(state(u"far"_s).toInt(), 1);
    }

    void releasingABatchDeletesExactlyItsRows()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        QList<qint64> rows;
        for (int n = 0; n < 5; ++n)
            rows << f.Store.AddEMLToEdgeQueue(u"A1"_s, u"POP3"_s, QString::number(n), QDateTime(), Mail);
        QVERIFY(f.Store.DeleteEdgeQueueRecords({rows.at(1), rows.at(3)}));
        QCOMPARE(f.Store.GetEdgeQueueCount(), 3);
        for (int n = 0; n < 3; ++n)
            QVERIFY(f.Store.GetEdgeQueue(CurrentMessage()));
        QCOMPARE(f.Store.DeleteEdgeQueueProcessed(), 3);
        QCOMPARE(StoreFixture::ValueOn(f.Store.QueueConnection(), u"SELECT COUNT(*) FROM EdgeQueue"_s).toInt(), 0);
    }
};

POSTVANE_TEST(tst_EdgeQueue)
#include "tst_EdgeQueue.moc"
