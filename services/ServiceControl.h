#pragma once
#include <QString>

// Control of the server "service" of this machine. Without a service manager
// the service is the postvane-server program beside the console, run as a
// detached process on the console's data folder. Its state is read from two
// files of that folder: the lock the running server holds, and the state the
// server writes once it listens and again when it begins to stop.
//
// The texts are those of a service manager: "Stopped", "Start Pending",
// "Stop Pending", "Running", and "Not Installed" when the program is missing
// or the name is no service of this product.
namespace ServiceControl {

QString ServiceStatus(const QString &ServiceName);
// Starts the service; false when it is not installed or did not start.
bool ServiceStart(const QString &ServiceName);
// Asks the running service to stop; false when none runs.
bool ServiceStop(const QString &ServiceName);

// The server program beside the console.
QString ServerProgramPath();

// The files of a data folder (with trailing separator) that carry the state.
QString ServerLockFile(const QString &DataPath);
QString ServerStateFile(const QString &DataPath);
// Written by the server: "Running", "Stop Pending"; an empty text removes it.
void WriteServerState(const QString &DataPath, const QString &State);

} // namespace ServiceControl
