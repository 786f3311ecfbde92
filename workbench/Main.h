#pragma once
#include <QString>
#include <QStringList>

class QApplication;

// The console's entry routine: one instance per user session (a second
// start ends at once, silently), the start-up properties, the sample
// message, the local store (made when missing, its schema brought up to
// date), the event log and the global settings, then the main window's
// event loop. The process's exit code.
int Main(QApplication &App);

// The lock that marks the running console of this user session.
QString InstanceLockFile();
// A server named on the command line for the login box; empty when none.
QString CommandLineServer(const QStringList &Arguments);
