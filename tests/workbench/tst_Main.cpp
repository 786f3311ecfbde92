#include "TestRegistry.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

// A console's environment with folders of its own below Home.
QProcessEnvironment ConsoleEnvironment(const QString &Home)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *folder : {"XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        const QString path = Home + u'/' + QString::fromLatin1(folder);
        QDir().mkpath(path);
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        environment.insert(QString::fromLatin1(folder), path);
    }
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    return environment;
}

} // namespace

class tst_Main : public QObject
{
    Q_OBJECT
private slots:
    // The first console also finds no store and has the server program make it.
    void secondConsoleOfASessionExitsSilently()
    {
        QTemporaryDir home;
        const QProcessEnvironment environment = ConsoleEnvironment(home.path());

        QProcess first;
        first.setProcessEnvironment(environment);
        first.start(QStringLiteral(POSTVANE_CONSOLE_PROGRAM), {QStringLiteral("devmode")});
        QVERIFY(first.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(QDir(home.path() + QStringLiteral("/XDG_RUNTIME_DIR")).entryList({QStringLiteral("*.lock")}, QDir::Files).size() == 1, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(home.path() + QStringLiteral("/XDG_DATA_HOME/Postvane/MessageStore.db3")), 20000);

        QProcess second;
        second.setProcessEnvironment(environment);
        QElapsedTimer clock;
        clock.start();
        second.start(QStringLiteral(POSTVANE_CONSOLE_PROGRAM), {QStringLiteral("devmode")});
        QVERIFY(second.waitForFinished(10000));
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(second.readAll(), QByteArray());
        QCOMPARE(first.state(), QProcess::Running);

        first.terminate();
        QVERIFY(first.waitForFinished(10000));
    }

    void withoutStoreAndServerProgramTheConsoleEndsSilently()
    {
        QTemporaryDir home;
        const QString console = home.path() + QStringLiteral("/postvane-console");
        QVERIFY(QFile::copy(QStringLiteral(POSTVANE_CONSOLE_PROGRAM), console));

        QProcess process;
        process.setProcessEnvironment(ConsoleEnvironment(home.path()));
        process.start(console, {QStringLiteral("devmode")});
        QVERIFY(process.waitForFinished(10000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QVERIFY(!QFile::exists(home.path() + QStringLiteral("/XDG_DATA_HOME/Postvane/MessageStore.db3")));
    }
};

POSTVANE_TEST(tst_Main)
#include "tst_Main.moc"
