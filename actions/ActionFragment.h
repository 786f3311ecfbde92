#pragma once
#include "foundation/clsXML.h"

#include <QString>

// The envelope that every action's fragment shares: Class, ID and Enabled at
// the head, the kind's own tags, and the condition last as a nested fragment.

void AppendActionHead(clsXML &Writer, const QString &ClassName, const QString &ID, bool Enabled);
void AppendActionCondition(clsXML &Writer, const QString &Condition);

// Bounds the reader to the text before the nested condition, so that an
// absent own tag is never found inside it.
void BeginActionRead(clsXML &Reader);
// Lifts the bound and reads the nested condition.
void ExtractActionCondition(clsXML &Reader, QString &Condition);
