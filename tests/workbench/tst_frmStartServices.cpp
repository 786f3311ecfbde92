#include "ModalCloser.h"
#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "foundation/GlobalSettings.h"
#include "foundation/Registry.h"
#include "services/ServiceControl.h"
#include "workbench/frmStartServices.h"

#include <QFileInfo>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

namespace {

quint16 FreePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost);
    return probe.serverPort();
}

} // namespace

// The local server as a service: started by the console when stopped, read
// back through its lock and state files, stopped again.
class tst_frmStartServices : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        m_savedAppPath = Global.AppPath;
        m_savedDataPath = Global.DataPath;
        m_savedSettings = Global.Settings;
        Global.AppPath = QFileInfo(QStringLiteral(POSTVANE_SERVER_PROGRAM)).absolutePath() + u'/';
        Global.DataPath = m_data.path() + u'/';
        Global.Settings.WebAccessPort = qint16(FreePort());
        Global.Settings.WebAccessBindTo = QStringLiteral("127.0.0.1");
        SaveGlobalData();
        SaveUserSetting(Global.ProductName, QStringLiteral("LoginLoadedOnce"), QString());
    }

    void cleanup()
    {
        if (ServiceControl::ServiceStop(Global.ProductName))
            QTRY_COMPARE_WITH_TIMEOUT(ServiceControl::ServiceStatus(Global.ProductName), QStringLiteral("Stopped"), 10000);
        Global.AppPath = m_savedAppPath;
        Global.DataPath = m_savedDataPath;
        Global.Settings = m_savedSettings;
    }

    void startUpStartsTheStoppedServerAndWelcomesOnce()
    {
        QCOMPARE(ServiceControl::ServiceStatus(Global.ProductName), QStringLiteral("Stopped"));
        frmStartServices services;
        {
            ModalCloser closer;
            services.StartUp();
            QCOMPARE(Global.ServiceState, QStringLiteral("Running"));
            QCOMPARE(closer.Texts.size(), 1);
            QVERIFY(closer.Texts[0].startsWith(QStringLiteral("Welcome To Postvane\nA default user has been created.")));
        }
        QVERIFY(QFileInfo::exists(Global.DataPath + QStringLiteral("MessageStore.db3")));
        QCOMPARE(GetUserSetting(Global.ProductName, QStringLiteral("LoginLoadedOnce")), QStringLiteral("Yes"));

        ModalCloser closer;
        services.StartUp();
        QCOMPARE(Global.ServiceState, QStringLiteral("Running"));
        QVERIFY(closer.Texts.isEmpty());

        QVERIFY(ServiceControl::ServiceStop(Global.ProductName));
        QTRY_COMPARE_WITH_TIMEOUT(ServiceControl::ServiceStatus(Global.ProductName), QStringLiteral("Stopped"), 10000);
        QVERIFY(!QFileInfo::exists(ServiceControl::ServerStateFile(Global.DataPath)));
        QVERIFY(!ServiceControl::ServiceStop(Global.ProductName));
    }

    void aLockLeftByADeadServerReadsStopped()
    {
        QFile lock(ServiceControl::ServerLockFile(Global.DataPath));
        QVERIFY(lock.open(QIODevice::WriteOnly));
        lock.write("999999\npostvane-server\nlocalhost\n");
        lock.close();
        ServiceControl::WriteServerState(Global.DataPath, QStringLiteral("Running"));
        QCOMPARE(ServiceControl::ServiceStatus(Global.ProductName), QStringLiteral("Stopped"));
    }

    void withoutTheServerProgramNothingIsInstalled()
    {
        Global.AppPath = m_data.path() + QStringLiteral("/nowhere/");
        QCOMPARE(ServiceControl::ServiceStatus(Global.ProductName), QStringLiteral("Not Installed"));
        QVERIFY(!ServiceControl::ServiceStart(Global.ProductName));

        frmStartServices services;
        ModalCloser closer;
        services.StartUp();
        QCOMPARE(Global.ServiceState, QStringLiteral("Not Installed"));
        QVERIFY(closer.Texts.isEmpty());
    }

private:
    QTemporaryDir m_data;
    QString m_savedAppPath;
    QString m_savedDataPath;
    GlobalSettings m_savedSettings;
};

POSTVANE_TEST(tst_frmStartServices)
#include "tst_frmStartServices.moc"
