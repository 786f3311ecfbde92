#pragma once
#include "foundation/Formatting.h"

#include <QString>

class clsXML;

// A note in the action list; the server passes over it.
class clsActionComment
{
public:
    // Under a new ID unless one is given.
    explicit clsActionComment(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true; // not stored
    QString Condition;   // not stored
    QString Comment;

    QString ClassName() const { return QStringLiteral("Comment"); }
    QString ClassDesc() const { return QStringLiteral("Comment"); }
    QString ActionDescription() const;

    // Only Class, ID and Comment. Reading leaves Enabled and Condition as a
    // new comment has them.
    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);
};
