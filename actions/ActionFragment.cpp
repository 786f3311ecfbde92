#include "ActionFragment.h"

namespace {
const MarkupTag ConditionTag = QStringLiteral("Condition");
const MarkupTag NoBound = QString();
} // namespace

void AppendActionHead(clsXML &Writer, const QString &ClassName, const QString &ID, bool Enabled)
{
    Writer.Append(ClassName, QStringLiteral("Class"));
    Writer.Append(ID, QStringLiteral("ID"));
    Writer.Append(Enabled, QStringLiteral("Enabled"));
}

void AppendActionCondition(clsXML &Writer, const QString &Condition)
{
    Writer.AppendXML(Condition, ConditionTag.Name());
}

void BeginActionRead(clsXML &Reader)
{
    Reader.setExtractUntil(ConditionTag);
}

void ExtractActionCondition(clsXML &Reader, QString &Condition)
{
    Reader.setExtractUntil(NoBound);
    Reader.Extract(Condition, ConditionTag, true);
}
