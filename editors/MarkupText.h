#pragma once
#include <QString>

// The small markup of list lines and condition texts (TextBlock, Run with
// Foreground and Text, Bold, Border, StackPanel) in the two forms the editors
// show it: rich text for labels, and the plain words for list cells.
QString MarkupToHtml(const QString &Markup);
QString MarkupPlainText(const QString &Markup);
