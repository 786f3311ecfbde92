#pragma once
#include "GlobalSettings.h"

#include <QString>
#include <QStringList>

// Which program is running, decided from the executable's own name.
enum class ProgramKind { Console, Server, Other };

// The one process-wide record of plain fields that every part of the system
// reads and writes directly. Fields keep the names the rest of the code uses.
struct GlobalBlock
{
    // Paths and identity
    QString RegistryRoot = QStringLiteral("Halvarsoft");
    QString ProductName = QStringLiteral("Postvane");
    QString AppTitle = QStringLiteral("Postvane");
    QString AppDomain = QStringLiteral("postvane.net");
    QString AppPath;
    QString DataPath;
    QString WorkPath;
    QString TempPath;
    QString VersionText;
    QString BuildNo = QStringLiteral("3.0.1000");
    QString CommandLine;
    QString Quote = QStringLiteral("\"");
    int WindowsMajorVersion = 0;
    ProgramKind Program = ProgramKind::Other;

    // Start-up facts from the per-machine "Settings" section
    bool FirstRun = true;
    bool DBCreated = false;
    QString DBType;
    static constexpr int CurrentDBVersion = 1090;
    int DBVersion = CurrentDBVersion;
    bool RemoteAdmin = false;
    bool HostedEdition = false;
    QString DBConnection;
    QString DBConnectionMetaData;
    int DatabaseKind = 99; // 0 external server database, 99 embedded SQLite

    // Session
    QString ServerName;
    int ServerPort = 8855;
    QString ServerURL;
    QString AuthQuery;
    QString UserName;
    QString Password;
    QString PasswordHash;
    bool IsLocal = false;
    bool Connected = false;
    bool IsAdmin = false;
    bool IsOrganizationAdmin = false;
    QString UserID;
    QString UserOrganizationID;
    QString UserOrganization;
    QString UserEmail;
    QString UserFullName;
    bool Hosted = false;

    // Run-time switches
    bool DevMode = false;
    bool DialogCancelled = false;
    bool NoExitPrompt = false;
    bool SkipCloseHandling = false;
    bool StopWait = false; // ends a running Wait early
    QString ServiceState;
    QString TextAll = QStringLiteral("All");
    QString TextAny = QStringLiteral("Any");
    QString TextServiceRunning = QStringLiteral("Service (Running)");
    QString TextServiceNotRunning = QStringLiteral("Service (Not Running)");

    // The last error recorded by LogError; the stand-by message reads it.
    int LastErrorNumber = 0;
    QString LastErrorText;

    // Global settings, loaded from SETTINGS.XML or a server's reply
    GlobalSettings Settings;
};

extern GlobalBlock Global;
