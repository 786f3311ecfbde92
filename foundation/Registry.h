#pragma once
#include <QString>
#include <QVariant>

// The per-machine and per-user key stores. Both are INI files addressed by
// RegistryRoot, ProductName and a section: the per-user one in the user's
// configuration folder (Halvarsoft/Postvane.ini), the per-machine one beside
// it (Halvarsoft/Postvane-Machine.ini), so console and server of one machine
// share it.
QString GetMachineSetting(const QString &Section, const QString &Key, const QString &Default = QString());
bool GetMachineBool(const QString &Section, const QString &Key, bool Default);
bool SaveMachineSetting(const QString &Section, const QString &Key, const QVariant &Value);

QString GetUserSetting(const QString &Section, const QString &Key, const QString &Default = QString());
bool GetUserBool(const QString &Section, const QString &Key, bool Default);
bool SaveUserSetting(const QString &Section, const QString &Key, const QVariant &Value);

// File paths of the two stores, for diagnostics and tests.
QString MachineSettingsFile();
QString UserSettingsFile();
