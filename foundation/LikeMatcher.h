#pragma once
#include <QString>

// Wildcard matching of the whole text against a pattern:
//   *        any run of characters, also none
//   ?        any one character
//   #        one digit 0-9
//   [list]   one character of the list; "a-z" in it is a range, and * ? # [
//            stand for themselves
//   [!list]  one character not in the list
// A "-" first or last in a list is itself, a range from high to low holds
// nothing; "[]" matches no character and "[!]" any one. A "[" without a
// closing "]" stands for itself, as do the characters after it. Case is
// ignored unless Case says otherwise. Runs in time proportional to text
// length times pattern length.
bool Like(const QString &Text, const QString &Pattern, Qt::CaseSensitivity Case = Qt::CaseInsensitive);
