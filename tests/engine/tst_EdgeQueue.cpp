#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/StoreFixture.h"
#include "store/clsMessage.h"

#include <QFile>
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

    void expiredValidationsAreSettledByTheirType()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        auto *account = Accounts().AddXML(u"<Account><AccountID>A1</AccountID></Account>"_s);
        QVERIFY(account);
        const QDateTime past = QDateTime::currentDateTime().addSecs(-60);
        const QDateTime future = QDateTime::currentDateTime().addSecs(3600);
        const auto park = [&](const QString &accountID, const QString &uid, int type, const QDateTime &expires) {
            const qint64 row = f.Store.AddEMLToEdgeQueue(accountID, u"POP3"_s, uid, QDateTime::currentDateTime(),
                                                         Mail, 2);
            f.Store.ExecuteEQ(u"UPDATE EdgeQueue SET ValidateActionID='V1',ValidateExpiresType=%1 WHERE RecordNo=%2"_s
                                  .arg(type)
                                  .arg(row));
            f.Store.ValidateRequired(row, u"V1"_s, expires, u"Confirm?"_s);
            return row;
        };
        const qint64 store = park(u"A1"_s, u"store"_s, 0, past);
        const qint64 run = park(u"A1"_s, u"run"_s, 1, past);
        const qint64 drop = park(u"A1"_s, u"drop"_s, 2, past);
        const qint64 orphan = park(u"GONE"_s, u"orphan"_s, 1, past);
        const qint64 waiting = park(u"A1"_s, u"waiting"_s, 0, future);

        const QStringList lines = f.Store.GetExpiredValidationMessage();
        QCOMPARE(lines.size(), 4);
        QVERIFY(lines.contains(u"Expired or rejected pending validation message added to Message Store %1"_s.arg(store)));
        QVERIFY(lines.contains(u"Expired or rejected pending validation message will now be processed %1"_s.arg(run)));
        QVERIFY(lines.contains(u"Expired or rejected pending validation message deleted %1"_s.arg(drop)));
        QVERIFY(lines.last().endsWith(QString::number(orphan)));
        const auto processed = [&](qint64 row) {
            return StoreFixture::ValueOn(f.Store.QueueConnection(),
                                         u"SELECT Processed FROM EdgeQueue WHERE RecordNo=%1"_s.arg(row));
        };
        QVERIFY(!processed(store).isValid());
        QVERIFY(f.Store.IsStoredMessage(u"A1"_s, u"POP3"_s, u"store"_s));
        QCOMPARE(processed(run).toInt(), 0);
        QCOMPARE(f.Store.GetEdgeQueueUID(run), u"A1\tV1\trun"_s); // it keeps its action
        QVERIFY(!processed(drop).isValid());
        QVERIFY(!processed(orphan).isValid());
        QCOMPARE(processed(waiting).toInt(), 2);
        QVERIFY(f.Store.GetExpiredValidationMessage().isEmpty());
    }

    void aRowWithoutTriggerWaitsUntilOneIsAssigned()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        Accounts().AddXML(u"<Account><AccountID>A1</AccountID></Account>"_s);
        const qint64 row = f.Store.AddEMLToEdgeQueue(u"A1"_s, u"POP3"_s, u"u-1"_s, QDateTime(), Mail, 99);
        QCOMPARE(f.Store.GetEdgeQueueCount(), 0);
        clsMessage &m = CurrentMessage();
        QVERIFY(f.Store.GetEdgeQueueNoTriggerAssigned(m));
        QCOMPARE(m.EdgeQueueRecordNo, row);
        QCOMPARE(m.Account, Accounts().Item(u"A1"_s));
        QCOMPARE(m.MessageID, u"u-1"_s);
        QVERIFY(f.Store.AssignEdgeQueueTrigger(row, u"T7"_s));
        QVERIFY(!f.Store.GetEdgeQueueNoTriggerAssigned(m));
        ReplaceCurrentMessage(nullptr);
        QVERIFY(f.Store.GetEdgeQueue(CurrentMessage()));
        QCOMPARE(CurrentMessage().HeaderValue(u"Postvane-TriggerID"_s), u"T7"_s);
        QCOMPARE(CurrentMessage().Subject, u"café"_s);
    }

    void storedMessagesCopyWriteAndPend()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        const qint64 row = f.Add(u"MessageStore"_s, {{u"AccountID"_s, u"A1"_s}, {u"Source"_s, u"POP3"_s},
                                                     {u"UID"_s, u"u-1"_s}, {u"FolderID"_s, u"F1"_s},
                                                     {u"Headers"_s, u"Subject: hi\r\n"_s}, {u"Body"_s, u"text"_s},
                                                     {u"MessageDate"_s, QDateTime(QDate(2026, 3, 1), QTime(9, 0))}});
        const qint64 copy = f.Store.CopyMessage(row, u"F2"_s);
        QVERIFY(copy > row);
        QCOMPARE(f.Value(u"SELECT FolderID||UID||Body FROM MessageStore WHERE RecordNo=%1"_s.arg(copy)).toString(),
                 u"F2u-1text"_s);
        QCOMPARE(f.Store.CopyMessage(999, u"F2"_s), 0);

        const QString file = f.Path(u"out.eml"_s);
        QVERIFY(f.Store.WriteMessageToFile(row, file));
        QFile written(file);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.readAll(), QByteArray("Subject: hi\r\n\r\ntext"));

        QVERIFY(f.Store.AddEMLToPendingStore(u"A1"_s, QString(), u"POP3"_s, u"p-1"_s, u"Subject: first\r\n\r\nA"_s) > 0);
        QTest::qWait(1100); // DateAdded orders them
        QVERIFY(f.Store.AddEMLToPendingStore(u"A1"_s, QString(), u"POP3"_s, u"p-2"_s, u"Subject: second\r\n\r\nB"_s) > 0);
        QVERIFY(f.Store.GetPendingMessage(CurrentMessage()));
        QCOMPARE(CurrentMessage().MessageID, u"p-1"_s);
        QCOMPARE(CurrentMessage().Importance, u"NORMAL"_s);
        QCOMPARE(f.Count(u"Pending"_s), 1);

        Accounts().AddXML(u"<Account><AccountID>A1</AccountID><IMAP>-1</IMAP></Account>"_s);
        const QString dates = f.Store.GetLastMessageDates();
        QVERIFY2(dates.contains(u"<AccountID>A1</AccountID>"_s) && dates.contains(u"<POP3>2026-03-01 09:00:00</POP3>"_s),
                 qPrintable(dates));
        QVERIFY(!dates.contains(u"<IMAP>"_s));
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
