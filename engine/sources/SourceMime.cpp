#include "SourceMime.h"

#include <QLocale>

namespace
{
// A header line: a name of printable characters without blanks, then ":".
bool StartsWithHeader(const QByteArray &Raw)
{
    for (qsizetype i = 0; i < Raw.size() && i < 1000; ++i) {
        const char c = Raw.at(i);
        if (c == ':')
            return i > 0;
        if (c <= ' ' || c > '~')
            return false;
    }
    return false;
}

// The end of the head: the position of the empty line, or the whole text.
qsizetype HeadEnd(const QByteArray &Raw)
{
    qsizetype crlf = Raw.indexOf("\r\n\r\n");
    qsizetype lf = Raw.indexOf("\n\n");
    if (crlf < 0 && lf < 0)
        return Raw.size();
    if (crlf < 0)
        return lf;
    if (lf < 0)
        return crlf;
    return std::min(crlf, lf);
}
}

QByteArray SourceMime::WithProcessHeaders(const QByteArray &Raw, const QString &AccountID, const QString &Source,
                                          const QString &UID, bool IsRead)
{
    QByteArray text;
    text.reserve(Raw.size() + 200);
    text += "Postvane-AccountID: " + AccountID.toUtf8() + "\r\n";
    text += "Postvane-Source: " + Source.toUtf8() + "\r\n";
    text += "Postvane-UID: " + UID.toUtf8() + "\r\n";
    text += IsRead ? "Postvane-IsRead: 1\r\n" : "Postvane-IsRead: 0\r\n";
    if (!StartsWithHeader(Raw))
        text += "\r\n";
    text += Raw;
    return text;
}

QByteArray SourceMime::HeaderValue(const QByteArray &Raw, const QByteArray &Name)
{
    const QByteArray head = Raw.left(HeadEnd(Raw));
    const QByteArray wanted = Name.toLower() + ':';
    qsizetype at = 0;
    while (at < head.size()) {
        qsizetype end = head.indexOf('\n', at);
        if (end < 0)
            end = head.size();
        if (head.mid(at, wanted.size()).toLower() == wanted) {
            QByteArray value = head.mid(at + wanted.size(), end - at - wanted.size());
            // Folded continuation lines belong to the value.
            while (end + 1 < head.size() && (head.at(end + 1) == ' ' || head.at(end + 1) == '\t')) {
                qsizetype next = head.indexOf('\n', end + 1);
                if (next < 0)
                    next = head.size();
                value += ' ' + head.mid(end + 1, next - end - 1).trimmed();
                end = next;
            }
            return value.trimmed();
        }
        at = end + 1;
    }
    return {};
}

QDateTime SourceMime::DateHeader(const QByteArray &Raw)
{
    QString value = QString::fromLatin1(HeaderValue(Raw, "Date"));
    // A trailing comment such as "(UTC)" is not part of the date.
    const qsizetype comment = value.indexOf(u'(');
    if (comment > 0)
        value = value.left(comment).trimmed();
    return QDateTime::fromString(value, Qt::RFC2822Date);
}

bool SourceMime::IsMessage(const QByteArray &Raw)
{
    return StartsWithHeader(Raw)
        && (!HeaderValue(Raw, "From").isEmpty() || !HeaderValue(Raw, "Subject").isEmpty()
            || !HeaderValue(Raw, "Date").isEmpty());
}

QByteArray SourceMime::Compose(const QString &Subject, const QString &Body, const QDateTime &Date, bool Html)
{
    const QString oneLine = QString(Subject).replace(u'\r', u' ').replace(u'\n', u' ').simplified();
    bool ascii = true;
    for (const QChar c : oneLine)
        ascii = ascii && c.unicode() < 128;
    const QByteArray subject = ascii ? oneLine.toLatin1() : "=?utf-8?B?" + oneLine.toUtf8().toBase64() + "?=";
    const QDateTime when = (Date.isValid() ? Date : QDateTime::currentDateTime()).toUTC();
    QByteArray text;
    text += "Date: " + QLocale::c().toString(when, QStringLiteral("ddd, dd MMM yyyy HH:mm:ss")).toLatin1() + " +0000\r\n";
    text += "Subject: " + subject + "\r\n";
    text += "MIME-Version: 1.0\r\n";
    text += Html ? "Content-Type: text/html; charset=utf-8\r\n" : "Content-Type: text/plain; charset=utf-8\r\n";
    text += "Content-Transfer-Encoding: 8bit\r\n\r\n";
    QString body = Body;
    body.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n').replace(u'\n', QStringLiteral("\r\n"));
    text += body.toUtf8();
    if (!text.endsWith("\r\n"))
        text += "\r\n";
    return text;
}

QString SourceMime::NamedValues(const QStringList &Names, const QStringList &Values)
{
    QString body;
    for (qsizetype i = 0; i < Values.size(); ++i) {
        const QString name = i < Names.size() && !Names.at(i).trimmed().isEmpty() ? Names.at(i).trimmed()
                                                                                  : QStringLiteral("Column%1").arg(i + 1);
        body += name + QStringLiteral(": ") + Values.at(i) + QStringLiteral("\r\n");
    }
    return body;
}
