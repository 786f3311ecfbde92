#pragma once
#include <QByteArray>
#include <QDateTime>
#include <QString>

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
}
