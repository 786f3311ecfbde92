#pragma once
#include <QString>

// The plain text of an HTML body, for the account readers, the scripts and
// the actions: lines by CR LF, each trimmed, runs of blanks collapsed,
// entities decoded.
//
// A text that holds only characters up to 255 goes through the fixed chain
// of replacements that stored messages have always been cleaned with (line
// ends as blanks, the line-breaking tags as CR LF, "<li>" as "-", script and
// style elements dropped, every other tag a blank). A text with wider
// characters is rendered as a browser would lay it out: white space
// collapsed, block tags breaking lines, list items as "- ", inline tags
// vanishing without a blank, head, script and style dropped.
QString HtmlToText(const QString &Html);
