#pragma once
#include "foundation/Formatting.h"

#include <QString>

#include <functional>

class clsXML;

// Hands a value to another trigger, which runs on it as on a message.
class clsActionPassTo
{
public:
    // Under a new ID unless one is given.
    explicit clsActionPassTo(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString TriggerID;
    QString Value;

    QString ClassName() const { return QStringLiteral("PassTo"); }
    QString ClassDesc() const { return QStringLiteral("Pass Value To Trigger"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);

    // The name of the first trigger with that ID in all accounts, in their
    // order; empty when there is none. The owner of the accounts installs it.
    static inline std::function<QString(const QString &TriggerID)> TriggerName;
};
