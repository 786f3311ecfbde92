#pragma once
#include <QString>
#include <QVariant>
#include <functional>

// What a mail-server script sees: the per-machine store, the variables shared
// by all scripts of the process, and the trigger log of its message.
class clsMailBox
{
public:
    // Value from the per-machine store; Default when it is missing.
    QString GetRegistry(const QString &Section, const QString &Setting, const QString &Default = QString()) const;
    // Stores Data in the per-machine store; true when it was written.
    bool SetRegistry(const QString &Section, const QString &Setting, const QVariant &Data);

    // A variant shared by all scripts of the process, by name compared
    // trimmed and lower-cased. An unknown name gives an invalid variant;
    // setting one adds it.
    QVariant GlobalVariable(const QString &Name) const;
    void setGlobalVariable(const QString &Name, const QVariant &Value);

    // The trigger log belongs to the message the script runs on: the message
    // object sets TriggerLog when it is attached. Until then AddToLog has no
    // log to write to and drops the line.
    std::function<void(const QString &)> TriggerLog;
    void AddToLog(const QString &MSG);
};
