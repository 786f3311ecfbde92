#include "frmStartServices.h"
#include "TaskDialog.h"
#include "WindowDictionary.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "foundation/Startup.h"
#include "services/ServiceControl.h"
#include "store/clsMessageStore.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

frmStartServices::frmStartServices(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmStartServices"));
    setWindowTitle(Global.ProductName);
    lblStatus = new QLabel(this);
    lblStatus->setObjectName(QStringLiteral("lblStatus"));
    lblStatus->setMinimumWidth(360);
    prgStatus = new QProgressBar(this);
    prgStatus->setObjectName(QStringLiteral("prgStatus"));
    prgStatus->setRange(0, 0);
    prgStatus->setTextVisible(false);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(lblStatus);
    layout->addWidget(prgStatus);
    GetDDict(this);
}

void frmStartServices::ShowMessage(const QString &Text)
{
    lblStatus->setText(Text);
    Wait(1);
}

QString frmStartServices::ReadStatus()
{
    Global.ServiceState = ServiceControl::ServiceStatus(Global.ProductName);
    return Global.ServiceState;
}

void frmStartServices::StartUp()
{
    if (ReadStatus() == QStringLiteral("Stopped")) {
        bool started = false;
        StartService(started);
        for (int quarter = 0; started && quarter < StartQuarters && ReadStatus() != QStringLiteral("Running"); ++quarter)
            Wait(1);
    }
    const QString welcomed = GetUserSetting(Global.ProductName, QStringLiteral("LoginLoadedOnce"));
    if (Global.ServiceState == QStringLiteral("Running") && welcomed != QStringLiteral("Yes")) {
        ShowTaskDialog(this, DictText("WELCOME1", "Welcome To %APPNAME%"),
                       DictText("WELCOME2", "A default user has been created. Please login using username 'Admin' "
                                            "with no password."));
        SaveUserSetting(Global.ProductName, QStringLiteral("LoginLoadedOnce"), QStringLiteral("Yes"));
    }
}

void frmStartServices::StartService(bool &Started)
{
    Started = false;
    ShowMessage(QStringLiteral("Getting Service Status"));
    if (ReadStatus() != QStringLiteral("Stopped"))
        return;
    ShowMessage(QStringLiteral("Starting Service"));
    Started = ServiceControl::ServiceStart(Global.ProductName);
    if (!Started)
        ShowTaskDialog(this, DictText("SVCFAILED1", "Failed To Start Service") + u' ' + Global.ProductName,
                       DictText("SVCFAILED2", "You may not have sufficient rights. Try running the %APPNAME% "
                                              "Administrator 'as Administrator' or use the Windows Services Applet"),
                       DictText("SVCFAILED3", "If you are using Windows Vista or Windows 7, right click the %APPNAME% "
                                              "Administrator Shortcut and select 'Run As Administrator' and try again."));
}

bool frmStartServices::UpdateSchema()
{
    ShowMessage(QStringLiteral("Updating Message Store Schema. Please Wait."));
    clsMessageStore store;
    if (!store.OpenMessageStore())
        return false;
    const bool updated = store.UpdateDatabaseSchema();
    store.CloseMessageStore();
    return updated;
}
