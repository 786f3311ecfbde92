#include "Main.h"
#include "frmClient.h"
#include "foundation/GlobalBlock.h"
#include "foundation/GlobalSettings.h"
#include "foundation/Startup.h"

#include <QApplication>
#include <QDir>
#include <QLockFile>
#include <QMessageBox>
#include <QStandardPaths>

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
    // The server keeps and upgrades the store; the console only reads the
    // settings it has locally until the server sends its own.
    LoadGlobalSettings();

    frmClient window(CommandLineServer(App.arguments()));
    window.show();
    return App.exec();
}
