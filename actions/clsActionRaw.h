#pragma once
#include "foundation/Formatting.h"

#include <QString>

class clsXML;

// Holds an action of a kind whose own record isn't part of the system yet.
// It reads what every action shares and keeps the fragment as it came, so
// that storing the trigger again loses nothing of it.
class clsActionRaw
{
public:
    // Under a new ID unless one is given.
    clsActionRaw(const QString &ClassName, const QString &ClassDesc, const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString CRMType; // of the CRM kinds: "MSD", "SFDC" or empty; read only

    QString ClassName() const { return m_className; }
    QString ClassDesc() const { return m_classDesc; }
    // The head alone.
    QString ActionDescription() const;

    // The fragment exactly as it was read while ID, Enabled and Condition keep
    // the values read. When one of them changed, the envelope is written anew
    // around the kind's own tags, which stay as they came. A new action writes
    // the bare envelope.
    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);

    // An own tag of the fragment, decoded; empty when it isn't there.
    QString TagValue(const QString &Tag) const;

private:
    void ReadFragment(const QString &Fragment);
    QStringView OwnTags() const;
    // The CRM kinds store no condition.
    bool StoresCondition() const;
    bool IsCRM() const;

    QString m_className;
    QString m_classDesc;
    QString m_fragment; // as read
    qsizetype m_ownBegin = 0; // of the tags between the head and the condition
    qsizetype m_ownEnd = 0;
    QString m_readID;
    bool m_readEnabled = true;
    QString m_readCondition;
};
