#include "clsActionLogical.h"
#include "ActionFragment.h"
#include "foundation/Formatting.h"
#include "foundation/Startup.h"
#include "model/Condition.h"

#include <exception>

namespace {

// The tags of the fragment, in their written order; reading follows the same
// order because the reader only moves forward.
const MarkupTag IDTag = QStringLiteral("ID");
const MarkupTag LogicalTypeTag = QStringLiteral("LogicalType");
const MarkupTag LabelNameTag = QStringLiteral("LabelName");

QString Keyword(const QString &Closing)
{
    return QStringLiteral("<Bold><Run Foreground='") + MarkupColors.ColorKeyword + QStringLiteral("' Text='") + Closing;
}

// End Processing and GoTo stand behind their condition when they have one;
// in the plain form a blank separates the two.
QString BehindCondition(const QString &Condition, bool UseMarkUp, const QString &Text)
{
    if (Condition.isEmpty())
        return Text;
    const QString condition = ConditionDisplay(Condition, UseMarkUp, true);
    return condition + (UseMarkUp || condition.isEmpty() ? QString() : QStringLiteral(" ")) + Text;
}

} // namespace

clsActionLogical::clsActionLogical(const QString &ActionID) : ID(ActionID) {}

QString clsActionLogical::ClassName() const
{
    switch (LogicalType) {
    case 1: return QStringLiteral("If");
    case 2: return QStringLiteral("Else");
    case 3: return QStringLiteral("EndIf");
    case 4: return QStringLiteral("End");
    case 5: return QStringLiteral("Label");
    case 6: return QStringLiteral("GoTo");
    default: return QStringLiteral("Logical");
    }
}

QString clsActionLogical::ClassDesc() const
{
    switch (LogicalType) {
    case 2: return QStringLiteral("Else");
    case 3: return QStringLiteral("End If");
    case 4: return QStringLiteral("End Processing");
    case 5: return QStringLiteral("Label");
    case 6: return QStringLiteral("Go To Label");
    default: return QStringLiteral("If Block");
    }
}

QString clsActionLogical::LogicalTypeString(bool UseMarkUp) const
{
    switch (LogicalType) {
    case 1: return ConditionDisplay(Condition, UseMarkUp, true);
    case 2: return UseMarkUp ? Keyword(QStringLiteral("Else'/></Bold>")) : QStringLiteral("Else");
    case 3: return UseMarkUp ? Keyword(QStringLiteral("End If '/></Bold>")) : QStringLiteral("End If");
    case 4:
        return BehindCondition(Condition, UseMarkUp,
                               UseMarkUp ? Keyword(QStringLiteral("End Processing '/></Bold>"))
                                         : QStringLiteral("End Processing"));
    case 5:
        if (!UseMarkUp)
            return LabelName + u':';
        return QStringLiteral("<Run Foreground='") + MarkupColors.ColorLabel + QStringLiteral("' Text='") + LabelName
               + QStringLiteral(":'/>");
    case 6:
        if (!UseMarkUp)
            return BehindCondition(Condition, false, QStringLiteral("Go To ") + LabelName);
        return BehindCondition(Condition, true,
                               Keyword(QStringLiteral("Go To ' /></Bold>")) + QStringLiteral("<Run Foreground='")
                                   + MarkupColors.ColorLabel + QStringLiteral("' Text='") + LabelName
                                   + QStringLiteral("' />"));
    default: return QString();
    }
}

QString clsActionLogical::ActionDescription() const
{
    return QStringLiteral("<TextBlock VerticalAlignment='Center'>") + LogicalTypeString(true)
           + QStringLiteral("</TextBlock>");
}

QString clsActionLogical::XML() const
{
    try {
        clsXML writer;
        writer.Append(ClassName(), QStringLiteral("Class"));
        writer.Append(ID, IDTag.Name());
        writer.Append(LogicalType, LogicalTypeTag.Name());
        writer.Append(LabelName, LabelNameTag.Name());
        AppendActionCondition(writer, Condition);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionLogical.XML.Get"), error);
        return QString();
    }
}

void clsActionLogical::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionLogical::ReadXML(clsXML &Reader)
{
    try {
        BeginActionRead(Reader);
        Reader.Extract(ID, IDTag);
        Reader.Extract(LogicalType, LogicalTypeTag);
        Reader.Extract(LabelName, LabelNameTag);
        ExtractActionCondition(Reader, Condition);
        Enabled = true;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsActionLogical.XML.Let"), error);
    }
}
