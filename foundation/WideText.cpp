#include "WideText.h"

bool HasWideChars(const QString &Text)
{
    for (QChar c : Text)
        if (c.unicode() > 255)
            return true;
    return false;
}

QString PackWideText(const QString &Text)
{
    if (!HasWideChars(Text))
        return Text;
    QString packed;
    packed.reserve(1 + Text.size() * 4);
    packed += QChar(2);
    for (QChar c : Text)
        packed += QStringLiteral("%1").arg(c.unicode(), 4, 16, QChar(u'0')).toUpper();
    return packed;
}

QString UnpackWideText(const QString &Text)
{
    if (Text.isEmpty() || Text.at(0).unicode() != 2)
        return Text;
    QString plain;
    plain.reserve((Text.size() - 1) / 4);
    for (qsizetype i = 1; i + 4 <= Text.size(); i += 4) {
        bool ok = false;
        const ushort code = QStringView(Text).mid(i, 4).toUShort(&ok, 16);
        if (ok && code != 0)
            plain += QChar(code);
    }
    return plain;
}
