#include "NamedStatement.h"

namespace {

bool IsNameCharacter(QChar Character)
{
    return Character.isLetterOrNumber() || Character == u'_';
}

bool IsCommentLine(const QString &Line)
{
    const QString line = Line.trimmed();
    return line.startsWith(QStringLiteral("--")) || line.startsWith(u'#');
}

// The statement without its comment lines and its closing ";".
QString Cleaned(const QString &Part)
{
    QStringList lines;
    for (const QString &line : Part.split(u'\n'))
        if (!IsCommentLine(line))
            lines << QString(line).remove(u'\r');
    QString text = lines.join(u'\n').trimmed();
    while (text.endsWith(u';'))
        text = text.chopped(1).trimmed();
    return text;
}

} // namespace

NamedStatement NamedStatement::Parse(const QString &Statement)
{
    NamedStatement result;
    QChar quote;
    for (qsizetype i = 0; i < Statement.size(); ++i) {
        const QChar c = Statement.at(i);
        if (!quote.isNull()) {
            if (c == quote)
                quote = QChar();
            result.Text += c;
            continue;
        }
        if (c == u'\'' || c == u'"' || c == u'`' || c == u'[') {
            quote = c == u'[' ? QChar(u']') : c;
            result.Text += c;
            continue;
        }
        const bool named = c == u'@' && i + 1 < Statement.size() && IsNameCharacter(Statement.at(i + 1))
                           && (i == 0 || Statement.at(i - 1) != u'@');
        if (!named) {
            result.Text += c;
            continue;
        }
        qsizetype end = i + 1;
        while (end < Statement.size() && IsNameCharacter(Statement.at(end)))
            ++end;
        result.Names << Statement.mid(i + 1, end - i - 1);
        result.Text += u'?';
        i = end - 1;
    }
    return result;
}

QList<NamedStatement> NamedStatement::Split(const QString &Script)
{
    QList<NamedStatement> statements;
    QString part;
    const auto close = [&] {
        if (!part.trimmed().isEmpty())
            statements << Parse(Cleaned(part));
        part.clear();
    };
    for (const QString &rawLine : Script.split(u'\n')) {
        const QString line = QString(rawLine).remove(u'\r');
        if (line.trimmed().isEmpty()) {
            close();
            continue;
        }
        part += line + u'\n';
        if (!IsCommentLine(line) && line.trimmed().endsWith(u';'))
            close();
    }
    close();
    return statements;
}
