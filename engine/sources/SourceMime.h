#pragma once
#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

// The MIME text a source message enters the edge queue with: the process
// headers that tell the processor whose it is ("Postvane-AccountID",
// "Postvane-Source", "Postvane-UID", "Postvane-IsRead") ahead of the text as
// it came. A text that does not begin with a header keeps all of it as body.
namespace SourceMime
{
QByteArray WithProcessHeaders(const QByteArray &Raw, const QString &AccountID, const QString &Source,
                              const QString &UID, bool IsRead);
// The value of the first header of that name in the head of the text,
// unfolded; empty when there is none.
QByteArray HeaderValue(const QByteArray &Raw, const QByteArray &Name);
// The message's "Date:" header; invalid when it has none that reads.
QDateTime DateHeader(const QByteArray &Raw);
// True when the text is a whole message: a head with a "From:", "Subject:"
// or "Date:" header, rather than words that happen to begin with "Name:".
bool IsMessage(const QByteArray &Raw);
// A message made for a source that gives values rather than mail: "Date:",
// "Subject:" (encoded when it is not ASCII) and a UTF-8 body, plain text or
// HTML.
QByteArray Compose(const QString &Subject, const QString &Body, const QDateTime &Date, bool Html = false);
// A body of named values, "Name: value" a line, in the order given; a name
// missing at the end of Names is "Column" and the value's position.
QString NamedValues(const QStringList &Names, const QStringList &Values);
}
