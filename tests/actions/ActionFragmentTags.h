#pragma once
#include "actions/ActionItem.h"
#include "actions/colActions.h"

#include <QRegularExpression>
#include <QString>
#include <QStringList>

// Helpers of the tests of action records.

// The tags of a fragment's top level, in order.
inline QStringList TopTags(const QString &Fragment)
{
    QStringList tags;
    static const QRegularExpression tag(QStringLiteral("<([A-Za-z]+)>"));
    qsizetype at = 0;
    while (true) {
        const QRegularExpressionMatch match = tag.match(Fragment, at);
        if (!match.hasMatch())
            break;
        tags << match.captured(1);
        const qsizetype close = Fragment.indexOf(QStringLiteral("</") + match.captured(1) + u'>', match.capturedEnd());
        at = close < 0 ? match.capturedEnd() : close;
    }
    return tags;
}

// The fragment read back into a new list and written again.
inline QString Reread(const QString &Fragment, ActionItem **Read, colActions &List)
{
    *Read = List.AddXML(Fragment);
    return *Read ? (*Read)->XML() : QString();
}
