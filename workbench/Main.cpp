#include "Main.h"
#include "frmClient.h"
#include "VisualStyle.h"
#include "frmStartServices.h"
#include "foundation/GlobalBlock.h"
#include "foundation/GlobalSettings.h"
#include "foundation/Startup.h"
#include "services/ServiceControl.h"
#include "store/GlobalObjects.h"

#include <QApplication>
#include <QDir>
#include <QLockFile>
#include <QMessageBox>
#include <QProcess>
#include <QStandardPaths>

namespace {

// The server program makes a missing store: the data folder, its databases
// and the first user. The console waits for it and goes on when the store
// is there; otherwise it ends without a word.
bool CreateStore()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QProcess::execute(ServiceControl::ServerProgramPath(),
                      {QStringLiteral("--data"), Global.DataPath, QStringLiteral("--create-store")});
    QApplication::restoreOverrideCursor();
    SettleDatabaseKind();
    return Global.DBCreated;
}

void UpdateStoreSchema()
{
    frmStartServices progress;
    progress.show();
    Wait(1);
    progress.UpdateSchema();
}

} // namespace

QString InstanceLockFile()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder + u'/' + QCoreApplication::applicationName() + QStringLiteral(".lock");
}

QString CommandLineServer(const QStringList &Arguments)
{
    for (const QString &argument : Arguments.mid(1)) {
        if (!argument.startsWith(u'-') && !argument.contains(QStringLiteral("devmode"), Qt::CaseInsensitive))
            return argument;
    }
    return QString();
}

int Main(QApplication &App)
{
    QLockFile instance(InstanceLockFile());
    if (!instance.tryLock(0))
        return 0;

    SetStartupProperties(App.arguments());
    SetErrorSink([](const QString &title, const QString &text) {
        QMessageBox::critical(QApplication::activeWindow(), title, text);
    });
    CreateSampleMessage();
    if (!Global.DBCreated && !CreateStore())
        return 0;
    if (Global.DBVersion < GlobalBlock::CurrentDBVersion)
        UpdateStoreSchema();
    EventLog();
    LoadGlobalSettings();

    VisualStyle::Stored().Apply(App);
    frmClient window(CommandLineServer(App.arguments()));
    window.show();
    return App.exec();
}
