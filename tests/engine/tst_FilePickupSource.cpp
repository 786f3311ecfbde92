#include "SourceTestMessages.h"
#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "store/StoreFixture.h"

#include "engine/sources/EdgeQueueSink.h"
#include "engine/sources/FilePickupReader.h"
#include "engine/sources/SourceMime.h"

#include <QDir>
#include <QFile>
#include <QtTest>

// File pickup into a real edge queue.
class tst_FilePickupSource : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;

    // A file in the folder, last changed SecondsAgo.
    static QString Put(const QDir &Folder, const QString &Name, const QByteArray &Text, int SecondsAgo = 60)
    {
        QFile file(Folder.filePath(Name));
        file.open(QIODevice::WriteOnly);
        file.write(Text);
        file.close();
        Age(file.fileName(), SecondsAgo);
        return file.fileName();
    }

    static void Age(const QString &Path, int SecondsAgo)
    {
        QFile file(Path);
        file.open(QIODevice::ReadWrite);
        file.setFileTime(QDateTime::currentDateTime().addSecs(-SecondsAgo), QFileDevice::FileModificationTime);
    }

    static SourceAccount Account(const QString &Folder)
    {
        SourceAccount account;
        account.AccountID = QStringLiteral("FILES");
        account.FilePickupFolder = Folder;
        account.FilePickUpMask = QStringLiteral("*.eml;*.msg.txt");
        return account;
    }

private slots:
    void takesSettledMatchingFilesOnceAndDeletesThemAfterTheirRows()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        QTemporaryDir pickup;
        const QDir folder(pickup.path());
        Put(folder, QStringLiteral("a.eml"), TestMessage(1));
        Put(folder, QStringLiteral("b.msg.txt"), TestMessage(2));
        Put(folder, QStringLiteral("c.eml"), "no headers at all, just words\r\n");
        Put(folder, QStringLiteral("notes.doc"), TestMessage(3));
        const QString writing = Put(folder, QStringLiteral("d.eml"), TestMessage(4), 0);

        EdgeQueueSink sink(f.Store);
        SourceAccount account = Account(pickup.path());
        FilePickupReader reader;
        const SourceReadResult result = reader.Read(account, sink);
        QVERIFY2(!result.Failed, qPrintable(result.Failure));
        QCOMPARE(result.NewMessages, 3);
        QCOMPARE(StoreFixture::ValueOn(f.Store.QueueConnection(),
                                       QStringLiteral("SELECT COUNT(*) FROM EdgeQueue WHERE AccountID='FILES' AND Source='FILE'"))
                     .toInt(),
                 3);
        QCOMPARE(folder.entryList(QDir::Files), QStringList({QStringLiteral("d.eml"), QStringLiteral("notes.doc")}));
        const QString mime = StoreFixture::ValueOn(f.Store.QueueConnection(),
                                                   QStringLiteral("SELECT Mime FROM EdgeQueue WHERE UID LIKE 'c.eml|%'"))
                                 .toString();
        QVERIFY(mime.contains(QStringLiteral("Postvane-Source: FILE\r\n")));
        QVERIFY(mime.endsWith(QStringLiteral("\r\n\r\nno headers at all, just words\r\n")));

        // The file being written is taken once it has rested.
        QCOMPARE(reader.Read(account, sink).NewMessages, 0);
        Age(writing, 30);
        QCOMPARE(reader.Read(account, sink).NewMessages, 1);
        QCOMPARE(folder.entryList(QDir::Files), QStringList({QStringLiteral("notes.doc")}));
    }

    void aQueueThatCannotBeWrittenOrReadKeepsEveryFile()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        QTemporaryDir pickup;
        const QDir folder(pickup.path());
        for (int i = 1; i <= 3; ++i)
            Put(folder, QStringLiteral("m%1.eml").arg(i), TestMessage(i));
        // A queue that refuses the rows: a reader holds the file's write lock.
        QSqlDatabase blocker = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("Blocker"));
        blocker.setDatabaseName(f.Path(QStringLiteral("EdgeQueue.db3")));
        blocker.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=100"));
        QVERIFY(blocker.open());
        QSqlQuery(blocker).exec(QStringLiteral("BEGIN IMMEDIATE"));

        EdgeQueueSink sink(f.Store);
        SourceAccount account = Account(pickup.path());
        const SourceReadResult refused = FilePickupReader().Read(account, sink);
        QVERIFY(refused.Failed);
        QCOMPARE(folder.entryList(QDir::Files).size(), 3);

        QSqlQuery(blocker).exec(QStringLiteral("ROLLBACK"));
        blocker.close();
        blocker = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("Blocker"));
        f.Store.CloseMessageStore();
        const SourceReadResult unreadable = FilePickupReader().Read(account, sink);
        QVERIFY(unreadable.Failed);
        QCOMPARE(folder.entryList(QDir::Files).size(), 3);
    }
};

POSTVANE_TEST(tst_FilePickupSource)
#include "tst_FilePickupSource.moc"
