#pragma once
#include <QString>

// The three forms of a message's word index:
// Plain      "apple pear"          each word once, sorted without case;
// WithCount  "2 apple 1 pear"      the words sorted, but each count left at
//                                  the place of its word's first sighting,
//                                  so a count need not belong to the word
//                                  beside it: stored indexes read so;
// Sorted     "3 pear 2 apple"      "count word" items sorted descending as
//                                  text, so a count of 9 stands above 10.
enum class WordIndexForm { Plain, WithCount, Sorted };

// The index of a text. Links are cut out and stand as their bare domains
// at the end; punctuation splits words; numbers, dates, stop words and
// words under 3 or over 24 characters are left out. Empty when no word is
// left or when indexing fails.
QString WordIndex(const QString &Text, WordIndexForm Form);
