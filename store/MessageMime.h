#pragma once
#include <QString>

class clsMessage;

// Fills a message from its MIME text, as the processor reads a queued
// message: MessageText is the text itself, the header block becomes
// MessageHeader (values unfolded and decoded), the addressing, subject and
// date come from their headers, Body from the plain text part (or the text
// of the HTML part when there is none), and each further part is listed in
// Attachments by name, type and size without being written to disk.
// Importance and Sensitivity are "LOW", "NORMAL" or "HIGH", and "NORMAL",
// "PERSONAL", "PRIVATE" or "CONFIDENTIAL"; "NORMAL" when the message says
// nothing. A text that is no MIME at all becomes the body of a message
// without headers. False only for an empty text.
bool LoadMessageMime(clsMessage &Message, const QString &Mime);

// The value of the first header of that name in the header block of a MIME
// text, unfolded; empty when there is none. Cheap: the body is not parsed.
QString MimeHeaderValue(const QString &Mime, const QString &Name);
