#include "ServerFixture.h"
#include "TestRegistry.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTest>

using namespace Qt::StringLiterals;

// A fresh data folder started with the sample: the three sample orders are
// read from the pickup folder, processed and stored, and their fields are
// rows of the trigger's internal database.
class tst_ServerSample : public QObject
{
    Q_OBJECT
    ServerFixture server;

    QString Pickup() const { return server.DataPath() + u"Pickup/"_s; }
    QString Database() const { return server.DataPath() + u"InternalDatabases/SampleOrdersTrigger.db3"_s; }

    QStringList Subjects()
    {
        QStringList subjects;
        for (const QString &line : server.Get(u"getmessages.xml?accountid=SampleOrders"_s).Text().split(u'\n', Qt::SkipEmptyParts))
            subjects << line.split(u'\t').value(5);
        subjects.sort();
        return subjects;
    }

    // Each row as "OrderNo|Customer|Amount|OrderDate" with the types SQLite keeps.
    QStringList Rows()
    {
        QStringList rows;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"sample"_s);
            db.setDatabaseName(Database());
            db.setConnectOptions(u"QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=5000"_s);
            QSqlQuery query(db);
            if (!db.open() || !query.exec(u"SELECT OrderNo, typeof(OrderNo), Customer, Amount, typeof(Amount), OrderDate"
                                          " FROM Orders ORDER BY OrderNo"_s))
                rows << u"no rows: "_s + query.lastError().text();
            while (query.next()) {
                QStringList values;
                for (int n = 0; n < query.record().count(); ++n)
                    values << query.value(n).toString();
                rows << values.join(u'|');
            }
        }
        QSqlDatabase::removeDatabase(u"sample"_s);
        return rows;
    }

    // Waits until the pickup folder is empty and Count messages are stored.
    bool Processed(int Count)
    {
        QDeadlineTimer deadline(60000);
        while (!deadline.hasExpired()) {
            if (QDir(Pickup()).isEmpty() && Subjects().size() == Count)
                return true;
            QTest::qWait(250);
        }
        return false;
    }

private slots:
    void initTestCase()
    {
        server.Arguments << u"--sample"_s;
        QVERIFY2(server.Start(), qPrintable(server.Problem));
    }

    void theSampleOrdersAreProcessedIntoTheInternalDatabase()
    {
        QVERIFY2(Processed(3), qPrintable(Subjects().join(u", "_s)));
        QCOMPARE(Subjects(), (QStringList{u"Order 1001"_s, u"Order 1002"_s, u"Order 1003"_s}));
        QCOMPARE(Rows(), (QStringList{u"1001|integer|Ada Lovelace|125.5|real|2026-11-02"_s,
                                      u"1002|integer|Charles Babbage|89.9|real|2026-11-03"_s,
                                      u"1003|integer|Grace Hopper|1240.75|real|2026-11-05"_s}));
    }

    // The order number is the key: a message for an order already there
    // changes its row instead of adding one.
    void aMessageDroppedInUpdatesItsOrder()
    {
        QFile file(Pickup() + u"again.eml"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("From: Charles Babbage <charles@example.com>\r\nSubject: Order 1002 corrected\r\n\r\n"
                   "Order No: 1002\r\nCustomer: Charles Babbage\r\nAmount: 99.95\r\nOrder Date: 2026-11-04\r\n");
        QVERIFY(file.flush() && file.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFileDevice::FileModificationTime));
        file.close();
        QVERIFY(server.Get(u"checknow.xml"_s).Status == 200);
        QVERIFY2(Processed(4), qPrintable(Subjects().join(u", "_s)));
        QCOMPARE(Rows().value(1), u"1002|integer|Charles Babbage|99.95|real|2026-11-04"_s);
        QCOMPARE(Rows().size(), 3);
    }

    // Only a fresh data folder gets the sample: a restart adds nothing.
    void aRestartLeavesTheSampleAlone()
    {
        QCOMPARE(server.Stop(), 0);
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QTest::qWait(3000);
        QVERIFY(QDir(Pickup()).isEmpty());
        QCOMPARE(Subjects().size(), 4);
        QCOMPARE(Rows().size(), 3);
    }
};

POSTVANE_TEST(tst_ServerSample)
#include "tst_ServerSample.moc"
