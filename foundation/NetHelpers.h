#pragma once
#include <QHostAddress>
#include <QString>

// The host of an address: what follows "//" (or all of it), without a leading
// "www.", up to the next "/".
QString GetDomain(const QString &Address);

// The preferred mail exchanger of a mail address's domain, or empty. The
// address is trimmed, text up to the last "<" before the "@" and from the
// next ">" on is dropped; addresses of 6 characters or fewer, or with the "@"
// among the first two, are not looked up. The DNS answer is awaited for at
// most 10 seconds while the event loop turns. NameServer, when given, is asked
// instead of the system's resolver. The same address (and name server) as in
// the previous call gives the previous answer without a new lookup. Lookup
// failures other than "no such record" are recorded as "FCN.GetMXRecord".
QString GetMXRecord(const QString &Address, const QHostAddress &NameServer = QHostAddress());

// Fetches a page by HTTP GET, with the user agent "Mozilla/4.0 (compatible;
// MSIE 9.0; " + product name + ")", turning a local event loop until the
// reply is complete or TimeoutSeconds have passed. The page's bytes are kept
// as a file in Global.TempPath (the system's temporary folder when that is
// not set), whose path goes to SavedPath when asked for. Returns the page as
// text, decoded by the charset of the reply or of the page; empty on a
// failure, which is recorded.
QString GetPage(const QString &URL, QString *SavedPath = nullptr, int TimeoutSeconds = 30);
