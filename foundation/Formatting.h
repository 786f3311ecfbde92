#pragma once
#include <QDateTime>
#include <QString>
#include <QVariant>

// Numbers, dates, sizes and identifiers as the console shows and stores them.
// All numbers are written in the C locale.

// "512 Bytes" up to 1024, "3 K" below 1048576, then "1.50 Mb".
QString FormatBytes(qint64 Bytes);

// Seconds as days, hours and minutes: "1 Day 2 Hours 5 Mins". Days and hours
// appear only when not zero, minutes always ("0 Mins" below a minute); empty
// for a negative value.
QString FormatDuration(qint64 Seconds);

// Minutes as "hh:mm" of their magnitude; the caller puts the sign in front.
QString FormatOffset(int Minutes);

// The marker of no date, 1900-01-01 00:00:00.
QDateTime NoDate();

// A date (with its time, if any) from a value: a QDate or QDateTime is taken
// as it is, a text is read in the ISO forms, the RFC 2822 form, the log stamp
// "yyyy-MM-dd:HH:mm:ss" and "yyyy/M/d" or "M/d/yyyy" with an optional time.
// A null or unreadable value gives NoDate().
QDateTime SafeDate(const QVariant &Value);

// A time of day from a value: a QTime or the time of a QDateTime, a text as
// "H:mm[:ss]", "h:mm[:ss] AP" or any text SafeDate reads. Otherwise midnight.
QTime SafeTime(const QVariant &Value);

// True when the trimmed text is a decimal number: a sign, digits with at most
// one point, and an exponent.
bool IsNumeric(const QString &Text);
// True when SafeDate reads a date from the text.
bool IsDate(const QString &Text);

// "yyyyMMdd_HHmmss_XXXX" with four random hexadecimal digits; names
// temporary files.
QString UniqueName(const QDateTime &Now = QDateTime::currentDateTime());

// A new GUID as text, "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", upper case.
QString GetGUID();
// A new GUID as 32 upper-case hexadecimal digits without separators: the
// form of a message's MessageID and of the store's Guid column.
QString GUIDDigits();

// The local time now, as a date and time without zone. The zone's offset is
// looked up at most once a second on each thread, since every look-up reads
// the zone's file.
QDateTime LocalWallClock();

// Identifier of a new account, trigger, field, action or folder: 11 upper-case
// hexadecimal digits, four random, four for the fraction of the day gone (in
// 65536ths) and three for the day of the year, of the local time now or Now.
QString NewUniqueID();
QString NewUniqueID(const QDateTime &Now);

// The time-zone names offered by the console: "GMT,Eastern,Central,Mountain,
// Pacific," then world cities, ending with "UTC". Combos store the position
// of a name, so the order of this list is fixed.
QString TimeZoneList();
