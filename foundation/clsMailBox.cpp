#include "clsMailBox.h"
#include "Registry.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>

namespace {

// Scripts may later run on worker threads, so the shared variables are locked.
struct SharedVariables
{
    QMutex Lock;
    QHash<QString, QVariant> Values;
};

SharedVariables &Variables()
{
    static SharedVariables variables;
    return variables;
}

QString VariableKey(const QString &Name)
{
    return Name.trimmed().toLower();
}

} // namespace

QString clsMailBox::GetRegistry(const QString &Section, const QString &Setting, const QString &Default) const
{
    return GetMachineSetting(Section, Setting, Default);
}

bool clsMailBox::SetRegistry(const QString &Section, const QString &Setting, const QVariant &Data)
{
    return SaveMachineSetting(Section, Setting, Data);
}

QVariant clsMailBox::GlobalVariable(const QString &Name) const
{
    SharedVariables &shared = Variables();
    QMutexLocker locker(&shared.Lock);
    return shared.Values.value(VariableKey(Name));
}

void clsMailBox::setGlobalVariable(const QString &Name, const QVariant &Value)
{
    SharedVariables &shared = Variables();
    QMutexLocker locker(&shared.Lock);
    shared.Values.insert(VariableKey(Name), Value);
}

void clsMailBox::AddToLog(const QString &MSG)
{
    if (TriggerLog)
        TriggerLog(MSG);
}
