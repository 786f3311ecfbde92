#pragma once
#include <QString>

// Texts with characters above 255 travel inside markup as the character 2
// followed by each character's code in four upper-case hexadecimal digits.
QString PackWideText(const QString &Text);
QString UnpackWideText(const QString &Text);
// True when a character lies outside the single-byte range.
bool HasWideChars(const QString &Text);
