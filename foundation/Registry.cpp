#include "Registry.h"
#include "GlobalBlock.h"

#include <QSettings>
#include <QStandardPaths>

namespace {

QString ConfigFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u'/' + Global.RegistryRoot + u'/';
}

// Booleans were stored as "True"/"False" or as numbers; both read back.
bool TextToBool(const QString &text, bool fallback)
{
    const QString t = text.trimmed();
    if (t.compare(QStringLiteral("true"), Qt::CaseInsensitive) == 0)
        return true;
    if (t.compare(QStringLiteral("false"), Qt::CaseInsensitive) == 0)
        return false;
    bool ok = false;
    const double number = t.toDouble(&ok);
    return ok ? number != 0 : fallback;
}

QString Read(const QString &file, const QString &section, const QString &key, const QString &fallback)
{
    QSettings store(file, QSettings::IniFormat);
    const QVariant value = store.value(section + u'/' + key);
    return value.isValid() ? value.toString() : fallback;
}

bool Write(const QString &file, const QString &section, const QString &key, const QVariant &value)
{
    QSettings store(file, QSettings::IniFormat);
    store.setValue(section + u'/' + key, value);
    store.sync();
    return store.status() == QSettings::NoError;
}

} // namespace

QString MachineSettingsFile()
{
    return ConfigFolder() + Global.ProductName + QStringLiteral("-Machine.ini");
}

QString UserSettingsFile()
{
    return ConfigFolder() + Global.ProductName + QStringLiteral(".ini");
}

QString GetMachineSetting(const QString &Section, const QString &Key, const QString &Default)
{
    return Read(MachineSettingsFile(), Section, Key, Default);
}

bool GetMachineBool(const QString &Section, const QString &Key, bool Default)
{
    return TextToBool(GetMachineSetting(Section, Key), Default);
}

bool SaveMachineSetting(const QString &Section, const QString &Key, const QVariant &Value)
{
    return Write(MachineSettingsFile(), Section, Key, Value);
}

QString GetUserSetting(const QString &Section, const QString &Key, const QString &Default)
{
    return Read(UserSettingsFile(), Section, Key, Default);
}

bool GetUserBool(const QString &Section, const QString &Key, bool Default)
{
    return TextToBool(GetUserSetting(Section, Key), Default);
}

bool SaveUserSetting(const QString &Section, const QString &Key, const QVariant &Value)
{
    return Write(UserSettingsFile(), Section, Key, Value);
}
