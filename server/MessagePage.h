#pragma once
#include <QString>

// A stored message as a web page for a browser outside the console: the
// subject, the addresses and the date, then the body as text, then the
// names of the attachments. Every value is written as escaped text, so that
// nothing of the message (script, a remote image, a style sheet, a form) is
// active in the page; an HTML body is shown as its text. Preview leaves out
// the address block and the attachments, for the reading pane.
QString MessagePage(const QString &Mime, bool Preview);
