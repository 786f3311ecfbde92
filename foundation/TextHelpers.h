#pragma once
#include <QString>
#include <QStringList>

// Small text routines shared by the whole system.

// The text between the first open tag of that name ("<Tag>" or "<Tag ...>")
// and the next "</Tag>", names compared without case; empty when either is
// missing. A one-shot reader of small fragments, without a cursor.
QString GetTag(const QString &Tag, const QString &Text);

// Removes every "<...>"; an unclosed "<" and what follows it stay.
QString StripTags(const QString &Text);

// Replaces < > : / \ | ? * with "_", then collapses ".." and double blanks.
QString SafeFileName(const QString &Text);

// The name between single quotes.
QString QuoteName(const QString &Name);

// The text without the blanks at both ends; tabs and line ends are kept.
QStringView TrimBlanks(QStringView Text);
// The trimmed text without one pair of <>, [], () or {} around it. With
// EachEnd, one opening bracket at the start and one closing bracket at the
// end are removed each by itself, so the two need not match.
QString StripBrackets(const QString &Text, bool EachEnd = false);

// Collapses runs of blanks to one blank.
QString RemoveWhiteSpace(const QString &Text);

// Collapses runs of more than two CR LF to two.
QString RemoveRepeatedBlankLines(const QString &Text);

// Turns the words <CR>, <LF>, <CRLF>, <TAB>, <ESC> of a setting (in any case)
// into their characters; with Back, the characters into the words, a CR LF
// pair becoming <CRLF>.
QString ExpandControlCodes(const QString &Text, bool Back = false);

// The text with Suffix at its end, appended unless already there.
QString EnsureTrailing(const QString &Text, const QString &Suffix);

// The first mail address in a text such as "Name <a@b.c>" or "a@b.c, d@e.f":
// from the last "<" (or else the last blank, quote, ":", ";", "," or "(")
// before the first "@" to the next ">", blank, ",", ";" or ")". Empty when
// the text holds no "@".
QString ExtractEmailAddress(const QString &Text);

// Numeric references "&#233;" and "&#xE9;" to characters; a reference to no
// character (zero, a surrogate, beyond U+10FFFF) stays as written.
QString EntityDecode(const QString &Text);
// Characters to numeric references "&#233;": those that the code page
// "iso-8859-1" or "utf-8" (compared without case; any other name counts as
// "utf-8") cannot hold in one byte, so above 255 for iso-8859-1 and above 127
// for utf-8.
QString EntityEncode(const QString &Text, const QString &CodePage = QStringLiteral("utf-8"));
// Every character whose code is above Limit as a numeric reference "&#233;".
QString NumericReferencesAbove(const QString &Text, uint Limit);

// The whole of a text file, read as UTF-8 (a BOM is honoured), or as
// ISO-8859-1 when the bytes are no valid UTF-8. Empty when the file is missing
// or unreadable; an unreadable file is recorded as an error.
QString ReadTextFile(const QString &Path);
// Writes the text as UTF-8 without BOM, replacing the file; false on failure.
bool WriteTextFile(const QString &Path, const QString &Text);
// The text of a 16-bit file with CR LF lines: little-endian unless a BOM says
// otherwise; the BOM is not part of the text. Empty when unreadable.
QString UnicodeRead(const QString &Path);

// Shell's sort in place, gaps 1, 4, 13, 40, ..., ascending or descending,
// comparing by code or without case.
void ShellSort(QStringList &Array, bool Descending = false, Qt::CaseSensitivity Case = Qt::CaseSensitive);

// A string literal for SQL of the given dialect (0 SQL Server, 1 and 2 with
// CHAR(), 3 with CHR$(), 99 SQLite): "'" doubled unless Raw; in dialects
// above 0 but 2, CR, LF and TAB are taken out of the literal and joined to it
// with " + " and SQLChar.
QString SQLQuote(const QString &Text, int Dialect, bool Raw = false);
// "CHAR(code)" for dialects 1 and 2, "CHR$(code)" for 3, a blank otherwise.
QString SQLChar(int Code, int Dialect);
