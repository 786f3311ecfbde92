#include "TestRegistry.h"
#include "actions/ActionItem.h"
#include "actions/clsActionLogical.h"
#include "actions/clsActionSetVariable.h"
#include "actions/colActions.h"
#include "e2e/ServerFixture.h"
#include "foundation/GlobalBlock.h"
#include "foundation/clsXML.h"
#include "session/clsPushStream.h"
#include "model/Condition.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"
#include "store/clsMessageStore.h"

#include <QFile>
#include <QProcess>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>
#include <csignal>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

// The account A1 with the trigger T1: it reads Customer from the body, sets
// Size by the quantity in an If block and writes Customer in capitals. T2
// takes messages whose subject holds "invoice".
QByteArray AccountFragment()
{
    clsAccount account;
    account.AccountID = u"A1"_s;
    account.Name = u"Orders"_s;
    account.Enabled = true;
    account.XMLIncludeTriggers = true;

    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->TriggerID = u"T1"_s;
    trigger->Name = u"New Order"_s;
    trigger->SubjectLineLIKE = u"order\t"_s;
    trigger->ReceivedAfter = QDateTime(QDate(2020, 1, 1), QTime(0, 0));
    for (const auto &[name, look] : {std::pair{u"Customer"_s, u"Name:"_s}, std::pair{u"Qty"_s, u"Qty:"_s}}) {
        auto field = std::make_unique<clsTriggerField>();
        field->Name = name;
        field->LookFor = look;
        trigger->FieldsToProcess().Add(std::move(field));
    }
    auto size = std::make_unique<clsTriggerField>();
    size->Name = u"Size"_s;
    size->ExtractBuiltIn = true;
    trigger->FieldsToProcess().Add(std::move(size));

    ConditionFragment many;
    many.Lines = {{QString(), u"%qty%"_s, u">"_s, u"5"_s}};
    clsActionLogical ifBlock;
    ifBlock.Condition = ConditionXML(many);
    trigger->ActionList().Add(ActionItem::Make(ifBlock));
    clsActionSetVariable big;
    big.Name = u"Size"_s;
    big.Value = u"big"_s;
    trigger->ActionList().Add(ActionItem::Make(big));
    clsActionLogical elseBlock;
    elseBlock.LogicalType = 2;
    trigger->ActionList().Add(ActionItem::Make(elseBlock));
    clsActionSetVariable small = big;
    small.ID = NewUniqueID();
    small.Value = u"small"_s;
    trigger->ActionList().Add(ActionItem::Make(small));
    clsActionLogical endIf;
    endIf.LogicalType = 3;
    trigger->ActionList().Add(ActionItem::Make(endIf));
    clsActionSetVariable upper;
    upper.Name = u"Customer"_s;
    upper.Value = u"%customer%"_s;
    upper.Operation = 7;
    trigger->ActionList().Add(ActionItem::Make(upper));
    account.Triggers.Add(std::move(trigger));

    auto invoices = std::make_unique<clsAccountTrigger>();
    invoices->TriggerID = u"T2"_s;
    invoices->Name = u"Invoice"_s;
    invoices->SubjectLineLIKE = u"invoice\t"_s;
    invoices->ReceivedAfter = QDateTime(QDate(2020, 1, 1), QTime(0, 0));
    account.Triggers.Add(std::move(invoices));
    return account.XML().toUtf8();
}

QString Mail(const QString &UID, const QString &Subject, const QString &Body)
{
    return u"Postvane-AccountID: A1\r\nPostvane-Source: POP3\r\nPostvane-UID: %1\r\nFrom: ann@example.com\r\n"
           "To: orders@example.com\r\nSubject: %2\r\nDate: Mon, 2 Mar 2026 10:00:00 +0000\r\n"
           "Content-Type: text/plain; charset=utf-8\r\n\r\n%3\r\n"_s.arg(UID, Subject, Body);
}

// Reads the server's databases beside it, and writes its queue, as another
// process of the machine would.
class DataFolder
{
public:
    explicit DataFolder(const QString &Path) : m_saved(Global)
    {
        Global.DataPath = Path;
        Global.DatabaseKind = 99;
        m_store = std::make_unique<clsMessageStore>();
        m_store->Dialect = 99;
        Opened = m_store->OpenMessageStore();
    }
    ~DataFolder()
    {
        m_store.reset();
        Global = m_saved;
    }

    // Queues Count messages "order n" in one commit.
    bool Queue(int Count, const QString &Body = u"Name: Bob\r\nQty: 7"_s, int From = 0)
    {
        if (m_store->ExecuteEQ(u"BEGIN IMMEDIATE"_s) < 0)
            return false;
        for (int n = From; n < From + Count; ++n)
            if (m_store->AddEMLToEdgeQueue(u"A1"_s, u"POP3"_s, u"u%1"_s.arg(n), QDateTime::currentDateTime(),
                                           Mail(u"u%1"_s.arg(n), u"order %1"_s.arg(n), Body))
                <= 0)
                return false;
        return m_store->ExecuteEQ(u"COMMIT"_s) >= 0;
    }
    bool QueueText(const QString &AccountID, const QString &UID, const QString &Mime)
    {
        return m_store->AddEMLToEdgeQueue(AccountID, u"POP3"_s, UID, QDateTime::currentDateTime(), Mime) > 0;
    }
    QVariant Stored(const QString &SQL) const { return Value(m_store->StoreConnection(), SQL); }
    QVariant Queued(const QString &SQL) const { return Value(m_store->QueueConnection(), SQL); }
    qint64 StoredCount() const { return Stored(u"SELECT COUNT(*) FROM MessageStore"_s).toLongLong(); }
    qint64 DistinctStored() const
    {
        return Stored(u"SELECT COUNT(*) FROM (SELECT DISTINCT AccountID,Source,UID FROM MessageStore)"_s).toLongLong();
    }
    qint64 QueueRows() const { return Queued(u"SELECT COUNT(*) FROM EdgeQueue"_s).toLongLong(); }
    // The UIDs in the store and in the queue together.
    QSet<QString> KnownUIDs() const
    {
        QSet<QString> uids;
        for (const QString &connection : {m_store->StoreConnection(), m_store->QueueConnection()}) {
            QSqlQuery query(QSqlDatabase::database(connection, false));
            query.exec(connection == m_store->StoreConnection() ? u"SELECT UID FROM MessageStore"_s
                                                                : u"SELECT UID FROM EdgeQueue"_s);
            while (query.next())
                uids.insert(query.value(0).toString());
        }
        return uids;
    }

    bool Opened = false;

private:
    static QVariant Value(const QString &Connection, const QString &SQL)
    {
        QSqlQuery query(QSqlDatabase::database(Connection, false));
        return query.exec(SQL) && query.next() ? query.value(0) : QVariant();
    }

    GlobalBlock m_saved;
    std::unique_ptr<clsMessageStore> m_store;
};

bool Eventually(const std::function<bool()> &Done, int Milliseconds = 60000)
{
    return QTest::qWaitFor(Done, Milliseconds);
}

QString Body(const HttpReply &Reply)
{
    return Reply.Text();
}

} // namespace

// The message processor of a real server: test runs, storing, reprocessing,
// bad input, and messages that survive kills of the process.
class tst_ProcessorServer : public QObject
{
    Q_OBJECT

    bool StartWithAccount(ServerFixture &Server)
    {
        if (!Server.Start())
            return false;
        return Server.Post(u"postaccount.htm?accountid=A1"_s, AccountFragment()).Text() == u"OK"_s;
    }

private slots:
    void aTestRunIsStoredWithItsFieldsAndProcessLog()
    {
        ServerFixture server;
        QVERIFY2(StartWithAccount(server), qPrintable(server.Problem));
        QCOMPARE(Body(server.Post(u"runwith.xml?accountid=A1&triggerid=T1"_s, "Name: Bob Smith\r\nQty: 3")), u"OK"_s);
        HttpReply list;
        QVERIFY(Eventually([&] {
            list = server.Get(u"getmessages.xml?accountid=A1"_s);
            return list.Text().count(u'\n') == 1;
        }));
        const QString recordNo = list.Text().section(u'\t', 0, 0);
        const QString mime = server.Get(u"getmessage.xml?accountid=A1&recordno="_s + recordNo).Text();
        QVERIFY2(mime.contains(u"Field Customer = Bob Smith"_s), qPrintable(mime));
        QVERIFY(mime.contains(u"Field Qty = 3"_s));
        QVERIFY(mime.contains(u"Set Size = small"_s));
        QVERIFY(mime.contains(u"Set Customer = BOB SMITH"_s));
        QVERIFY(mime.contains(u"Postvane-TriggerMatch: Y"_s));
        QVERIFY(mime.contains(u"Postvane-TriggerSuccess: Y"_s));
        QCOMPARE(server.Get(u"getedgequeuecount.xml"_s).Text(), u"0"_s);

        const QString log = QString::fromUtf8([&] {
            QFile file(server.DataPath() + u"PostvaneMessageServerLog.LOG"_s);
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        }());
        QVERIFY(log.contains(u"Test message queued by Admin for trigger New Order of account Orders"_s));
        QVERIFY(log.contains(u" Set Customer = BOB SMITH\r\n"_s));

        // A posted MIME message keeps its own subject; refusals name their reason.
        QCOMPARE(Body(server.Post(u"runwith.xml?accountid=A1&triggerid=T1"_s,
                                  "Subject: Big order\r\nFrom: x@y.org\r\n\r\nName: Al\r\nQty: 9\r\n")),
                 u"OK"_s);
        QVERIFY(Eventually([&] { return server.Get(u"getmessages.xml?accountid=A1"_s).Text().contains(u"Big order"_s); }));
        const HttpReply unknown = server.Post(u"runwith.xml?accountid=NONE&triggerid=T1"_s, "text");
        QCOMPARE(unknown.Status, 200);
        QVERIFY(unknown.Text().startsWith(u"Error: "_s));
        QVERIFY(server.Post(u"runwith.xml?accountid=A1&triggerid=T9"_s, "text").Text().startsWith(u"Error: "_s));
        QVERIFY(server.Post(u"runwith.xml?accountid=A1"_s, "").Text().startsWith(u"Error: "_s));
        QCOMPARE(server.Stop(), 0);
    }

    void processLogLinesReachTheMessageProcessorPaneOfASubscriber()
    {
        ServerFixture server;
        QVERIFY2(StartWithAccount(server), qPrintable(server.Problem));
        clsPushStream stream(u"Postvane"_s);
        QList<clsPushStream::Block> blocks;
        std::unique_ptr<QNetworkReply> subscription(server.Send(server.Url(u"subscribe.xml?nodename=test&text=3.0"_s)));
        QObject::connect(subscription.get(), &QNetworkReply::readyRead,
                         [&] { blocks += stream.Append(subscription->readAll()); });
        const auto linesOf = [&](const QString &Source) {
            QStringList lines;
            for (const clsPushStream::Block &block : std::as_const(blocks)) {
                QString source, log, message;
                clsXML body(block.Body);
                body.Extract(source, u"Source"_s);
                body.Extract(log, u"Log"_s, true);
                clsXML(log).Extract(message, u"Msg"_s);
                if (block.Location == u"log.xml"_s && source == Source)
                    lines << message;
            }
            return lines;
        };
        QVERIFY(Eventually([&] { return subscription->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() == 200; },
                           10000));
        QCOMPARE(server.Post(u"runwith.xml?accountid=A1&triggerid=T1"_s, "Name: Pat\r\nQty: 1").Text(), u"OK"_s);
        QVERIFY(Eventually([&] { return linesOf(u"Message Server"_s).contains(u"Field Customer = Pat"_s); }, 20000));
        QVERIFY(linesOf(u"Message Server"_s).contains(u"Test message queued by Admin for trigger New Order of account Orders"_s));
        QVERIFY2(!linesOf(u"Server"_s).contains(u"Field Customer = Pat"_s), "the lines belong to the processor's pane");
        subscription.reset();
        QCOMPARE(server.Stop(), 0);
    }

    void queuedMessagesAreMatchedOrStoredWithoutTrigger()
    {
        ServerFixture server;
        QVERIFY2(StartWithAccount(server), qPrintable(server.Problem));
        DataFolder data(server.DataPath());
        QVERIFY(data.Opened);
        QVERIFY(data.QueueText(u"A1"_s, u"m1"_s, Mail(u"m1"_s, u"Order 5"_s, u"Name: Eve\r\nQty: 8"_s)));
        QVERIFY(data.QueueText(u"A1"_s, u"m2"_s, Mail(u"m2"_s, u"Invoice 7"_s, u"Total: 3"_s)));
        QVERIFY(data.QueueText(u"A1"_s, u"m3"_s, Mail(u"m3"_s, u"Hello"_s, u"Hi there"_s)));
        QVERIFY(Eventually([&] { return data.StoredCount() == 3; }));
        QCOMPARE(data.Stored(u"SELECT TriggerID FROM MessageStore WHERE UID='m1'"_s).toString(), u"T1"_s);
        QCOMPARE(data.Stored(u"SELECT TriggerID FROM MessageStore WHERE UID='m2'"_s).toString(), u"T2"_s);
        QCOMPARE(data.Stored(u"SELECT TriggerID||TriggerMatch||TriggerSuccess FROM MessageStore WHERE UID='m3'"_s)
                     .toString(),
                 u"-01"_s);
        QVERIFY(Eventually([&] { return data.QueueRows() == 0; }));
    }

    void badInputEndsStoredWithAClearError()
    {
        ServerFixture server;
        QVERIFY2(StartWithAccount(server), qPrintable(server.Problem));
        DataFolder data(server.DataPath());
        QVERIFY(data.QueueText(u"A1"_s, u"plain"_s, u"no headers, no MIME, just words"_s));
        QVERIFY(data.QueueText(u"GONE"_s, u"orphan"_s,
                               u"Postvane-AccountID: GONE\r\nSubject: order\r\n\r\nName: X"_s));
        QVERIFY(data.QueueText(u"A1"_s, u"longheader"_s,
                               u"Postvane-AccountID: A1\r\nPostvane-UID: longheader\r\nX-Long: "_s + QString(1 << 20, u'x')
                                   + u"\r\nSubject: order\r\n\r\nName: Long\r\n"_s));
        QString parts = u"Postvane-AccountID: A1\r\nPostvane-UID: parts\r\nSubject: order with parts\r\n"
                        "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n"
                        "Content-Type: text/plain\r\n\r\nName: Many\r\n"_s;
        for (int n = 0; n < 10000; ++n)
            parts += u"--b\r\nContent-Type: application/octet-stream\r\nContent-Disposition: attachment; "
                     "filename=\"f%1.bin\"\r\n\r\nAAAA\r\n"_s.arg(n);
        parts += u"--b--\r\n"_s;
        QVERIFY(data.QueueText(u"A1"_s, u"parts"_s, parts));
        QVERIFY(Eventually([&] { return data.StoredCount() == 4; }));
        QCOMPARE(data.Stored(u"SELECT TriggerID||AccountID FROM MessageStore WHERE UID='plain'"_s).toString(), u"-A1"_s);
        QVERIFY(data.Stored(u"SELECT TriggerError FROM MessageStore WHERE UID='orphan'"_s)
                    .toString()
                    .contains(u"The account GONE does not exist"_s));
        QCOMPARE(data.Stored(u"SELECT TriggerID FROM MessageStore WHERE UID='longheader'"_s).toString(), u"T1"_s);
        QCOMPARE(data.Stored(u"SELECT TriggerID||Attachments FROM MessageStore WHERE UID='parts'"_s).toString(), u"T11"_s);
        QCOMPARE(server.Stop(), 0);
    }

    void anAccountWithAutoPauseIsDisabledByATriggerError()
    {
        ServerFixture server;
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        clsAccount account;
        account.AccountID = u"P1"_s;
        account.Name = u"Pausing"_s;
        account.Enabled = true;
        account.AutoPause = true;
        account.XMLIncludeTriggers = true;
        auto trigger = std::make_unique<clsAccountTrigger>();
        trigger->TriggerID = u"PT"_s;
        trigger->ReceivedAfter = QDateTime(QDate(2020, 1, 1), QTime(0, 0));
        trigger->ActionList().AddXML(u"<Class>Excel</Class><ID>X1</ID><Enabled>-1</Enabled>"_s);
        account.Triggers.Add(std::move(trigger));
        QCOMPARE(server.Post(u"postaccount.htm?accountid=P1"_s, account.XML().toUtf8()).Text(), u"OK"_s);
        QVERIFY(server.Get(u"getaccount.xml?accountid=P1"_s).Text().contains(u"<Enabled>-1</Enabled>"_s));
        QCOMPARE(server.Post(u"runwith.xml?accountid=P1&triggerid=PT"_s, "anything").Text(), u"OK"_s);
        QVERIFY(Eventually([&] {
            return !server.Get(u"getaccount.xml?accountid=P1"_s).Text().contains(u"<Enabled>-1</Enabled>"_s);
        }, 20000));
        // The pause is stored: it outlasts a restart.
        QCOMPARE(server.Stop(), 0);
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QVERIFY(!server.Get(u"getaccount.xml?accountid=P1"_s).Text().contains(u"<Enabled>-1</Enabled>"_s));
        QCOMPARE(server.Stop(), 0);
    }

    void aThousandQueuedMessagesAreEachStoredOnce()
    {
        ServerFixture server;
        QVERIFY2(StartWithAccount(server), qPrintable(server.Problem));
        DataFolder data(server.DataPath());
        QVERIFY(data.Queue(1000));
        QVERIFY(Eventually([&] { return data.QueueRows() == 0; }));
        QCOMPARE(data.StoredCount(), 1000);
        QCOMPARE(data.DistinctStored(), 1000);
        QCOMPARE(data.Stored(u"SELECT COUNT(*) FROM MessageStore WHERE TriggerID='T1' AND TriggerSuccess=1"_s).toInt(),
                 1000);
    }

    void aKilledServerStoresEachMessageExactlyOnceAfterItsRestart()
    {
        ServerFixture server;
        QVERIFY2(StartWithAccount(server), qPrintable(server.Problem));
        QCOMPARE(server.Stop(), 0);
        constexpr int Count = 4000;
        {
            DataFolder data(server.DataPath());
            QVERIFY(data.Queue(Count, u"Name: Bob\r\nQty: 7\r\n"_s + QString(4000, u'x')));
        }
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        {
            DataFolder data(server.DataPath());
            QVERIFY(Eventually([&] { return data.StoredCount() > 100; }));
            server.Kill();
            const qint64 before = data.StoredCount();
            QVERIFY2(before < Count, "the kill came too late to cut processing");
            QCOMPARE(data.KnownUIDs().size(), Count); // nothing lost, whatever the kill cut
        }
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        DataFolder data(server.DataPath());
        QVERIFY(Eventually([&] { return data.QueueRows() == 0; }));
        QCOMPARE(data.StoredCount(), Count);
        QCOMPARE(data.DistinctStored(), Count);
        QCOMPARE(data.Stored(u"SELECT COUNT(*) FROM MessageStore WHERE UID BETWEEN 'u0' AND 'u9999'"_s).toInt(), Count);
        QCOMPARE(server.Stop(), 0);
    }

    void aStoppedServerFinishesWhatItHasInHand()
    {
        ServerFixture server;
        QVERIFY2(StartWithAccount(server), qPrintable(server.Problem));
        DataFolder data(server.DataPath());
        QVERIFY(data.Queue(3000));
        QVERIFY(Eventually([&] { return data.StoredCount() > 100; }));
        QCOMPARE(server.Stop(), 0);
        // Nothing is left taken: what was in hand is stored and released.
        QCOMPARE(data.Queued(u"SELECT COUNT(*) FROM EdgeQueue WHERE Processed<>0"_s).toInt(), 0);
        QCOMPARE(data.StoredCount() + data.QueueRows(), 3000);
        QCOMPARE(data.DistinctStored(), data.StoredCount());
    }

    void twoProcessorProcessesNeverTakeOneRow()
    {
        ServerFixture server;
        QVERIFY2(StartWithAccount(server), qPrintable(server.Problem));
        QProcess second;
        second.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        second.start(QStringLiteral(POSTVANE_SERVER_PROGRAM),
                     {u"--data"_s, server.DataPath(), u"--roles"_s, u"processor"_s});
        QVERIFY(second.waitForStarted());
        QVERIFY(second.waitForReadyRead(20000)); // its start lines
        DataFolder data(server.DataPath());
        QVERIFY(data.Queue(3000));
        QVERIFY(Eventually([&] { return data.QueueRows() == 0; }));
        QCOMPARE(data.StoredCount(), 3000);
        QCOMPARE(data.DistinctStored(), 3000);
        ::kill(pid_t(second.processId()), SIGTERM);
        QVERIFY(second.waitForFinished(15000));
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(server.Stop(), 0);
    }

    void reprocessingTwiceLeavesOneQueueRowAndOneStoredRow()
    {
        ServerFixture server;
        QVERIFY2(StartWithAccount(server), qPrintable(server.Problem));
        {
            DataFolder data(server.DataPath());
            QVERIFY(data.QueueText(u"A1"_s, u"r1"_s, Mail(u"r1"_s, u"Order 1"_s, u"Name: Ray\r\nQty: 2"_s)));
            QVERIFY(Eventually([&] { return data.StoredCount() == 1; }));
        }
        QCOMPARE(server.Stop(), 0);
        server.Arguments = {u"--roles"_s, u"web"_s};
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        const QString recordNo = server.Get(u"getmessages.xml?accountid=A1"_s).Text().section(u'\t', 0, 0);
        QCOMPARE(server.Get(u"reprocessmessage.xml?accountid=A1&recordno="_s + recordNo).Text(), u"OK"_s);
        QCOMPARE(server.Get(u"reprocessmessage.xml?accountid=A1&recordno="_s + recordNo).Text(), u"OK"_s);
        QCOMPARE(server.Get(u"getedgequeuecount.xml"_s).Text(), u"1"_s);
        QVERIFY(server.Get(u"reprocessmessage.xml?accountid=A1&recordno=999"_s).Text().startsWith(u"Error: "_s));
        QCOMPARE(server.Stop(), 0);

        server.Arguments.clear();
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        DataFolder data(server.DataPath());
        QVERIFY(Eventually([&] { return data.QueueRows() == 0; }));
        QCOMPARE(data.StoredCount(), 1);
        QCOMPARE(server.Stop(), 0);
    }
};

POSTVANE_TEST(tst_ProcessorServer)
#include "tst_ProcessorServer.moc"
