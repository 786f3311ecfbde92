#pragma once
#include <QString>

// Runs a script of the product's Basic on the message.
class clsActionScript
{
public:
    clsActionScript();

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString SBScriptToRun; // the script's source text

    QString ClassName() const { return QStringLiteral("Script"); }
    QString ClassDesc() const;
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
};
