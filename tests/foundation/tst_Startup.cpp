#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "foundation/Startup.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

class tst_Startup : public QObject
{
    Q_OBJECT

    QStringList m_titles;
    QStringList m_texts;
    GlobalBlock m_saved;

private slots:
    void init()
    {
        m_saved = Global;
        m_titles.clear();
        m_texts.clear();
        SetErrorSink([this](const QString &title, const QString &text) {
            m_titles << title;
            m_texts << text;
        });
    }
    void cleanup()
    {
        SetErrorSink(nullptr);
        Global = m_saved;
        QFile::remove(MachineSettingsFile());
    }

    void errorMessageIsBuiltAndShown()
    {
        Global.AppTitle = QStringLiteral("Postvane");
        Global.VersionText = QStringLiteral("3.0.0001");
        const QString sql = QStringLiteral("near \"x\": syntax error\r\nin INSERT INTO Messages VALUES ('secret')");
        const QString message = LogError(QStringLiteral("AddToMailStore"), sql, 19);
        QCOMPARE(message, QStringLiteral("near \"x\": syntax error in  3.0.0001 FROM AddToMailStore"));
        QCOMPARE(m_titles, QStringList{QStringLiteral("Postvane")});
        QCOMPARE(m_texts.first(), QStringLiteral("System Error\r\n\r\n") + message);
        QCOMPARE(Global.LastErrorNumber, 19);

        const QString longText(500, u'e');
        QCOMPARE(LogError(QStringLiteral("R"), longText).size(),
                 200 + QStringLiteral(" 3.0.0001 FROM R").size());
    }

    void devModeIsASubstringInAnyCase()
    {
        SetStartupProperties({QStringLiteral("postvane-console"), QStringLiteral("--myDevModeSwitch")});
        QVERIFY(Global.DevMode);
        QCOMPARE(Global.CommandLine, QStringLiteral("--MYDEVMODESWITCH"));
        SetStartupProperties({QStringLiteral("postvane-console"), QStringLiteral("server.example")});
        QVERIFY(!Global.DevMode);
        QVERIFY(Global.AppPath.endsWith(u'/'));
        QVERIFY(Global.DataPath.endsWith(QStringLiteral("/Postvane/")));
        QCOMPARE(Global.TempPath, Global.WorkPath + QStringLiteral("Temp/"));
        QVERIFY(QRegularExpression(QStringLiteral("^\\d+\\.\\d+\\.\\d{4}$")).match(Global.VersionText).hasMatch());
    }

    void databaseKindFollowsTypeAndStoreFile()
    {
        QTemporaryDir dir;
        Global.DataPath = dir.path() + u'/';

        Global.DBType = QStringLiteral("MSSQL");
        Global.DBVersion = 1000;
        SettleDatabaseKind();
        QCOMPARE(Global.DatabaseKind, 0);
        QCOMPARE(Global.DBVersion, 1000);

        // No store file: never counts as out of date.
        Global.DBType.clear();
        Global.DBCreated = false;
        SettleDatabaseKind();
        QCOMPARE(Global.DatabaseKind, 99);
        QVERIFY(!Global.DBCreated);
        QCOMPARE(Global.DBVersion, GlobalBlock::CurrentDBVersion);

        QFile store(dir.filePath(QStringLiteral("MessageStore.db3")));
        QVERIFY(store.open(QIODevice::WriteOnly));
        store.close();
        Global.DBType = QStringLiteral("none");
        Global.DBVersion = 1000;
        SettleDatabaseKind();
        QCOMPARE(Global.DatabaseKind, 99);
        QVERIFY(Global.DBCreated);
        QCOMPARE(Global.DBVersion, 1000);
    }

    void remoteAdminNeedsNoDatabase()
    {
        QVERIFY(SaveMachineSetting(QStringLiteral("Settings"), QStringLiteral("RemoteAdmin"), QStringLiteral("True")));
        QVERIFY(SaveMachineSetting(QStringLiteral("Settings"), QStringLiteral("DBCreated"), QStringLiteral("False")));
        SetStartupProperties({QStringLiteral("postvane-console")});
        QVERIFY(Global.RemoteAdmin);
        QVERIFY(Global.DBCreated);
        QCOMPARE(Global.AppTitle, Global.ProductName);
    }

    void waitTurnsTheEventLoopAndStopsEarly()
    {
        bool fired = false;
        QTimer::singleShot(50, [&] { fired = true; });
        QElapsedTimer clock;
        clock.start();
        Wait(1);
        QVERIFY(fired);
        QVERIFY(clock.elapsed() >= 240);

        QTimer::singleShot(50, [] { Global.StopWait = true; });
        clock.restart();
        Wait(40);
        QVERIFY(clock.elapsed() < 5000);
        Global.StopWait = false;
    }

    void makePathCreatesNestedFolders()
    {
        QTemporaryDir dir;
        const QString path = dir.path() + QStringLiteral("/a/b/c/");
        QVERIFY(MakePath(path));
        QVERIFY(QFileInfo(path).isDir());
        QVERIFY(MakePath(path));
        QVERIFY(!MakePath(QString()));
        QFile blocker(dir.filePath(QStringLiteral("file")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        QVERIFY(!MakePath(dir.filePath(QStringLiteral("file/sub"))));
    }

    void programsRunAndReportTheirExit()
    {
        QCOMPARE(ShellProgram(QStringLiteral("sh -c \"exit 3\"")), 3);
        QCOMPARE(ShellProgram(QStringLiteral("/nonexistent/program")), -1);
        QCOMPARE(ShellProgram(QString()), -1);

        QTemporaryDir dir;
        const QString marker = dir.filePath(QStringLiteral("ran"));
        QVERIFY(!RunProgram(QStringLiteral("/nonexistent/program")));
        QVERIFY(RunProgram(QStringLiteral("/usr/bin/touch"), {marker}));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(marker), 5000);
    }
};

POSTVANE_TEST(tst_Startup)
#include "tst_Startup.moc"
