#pragma once
#include <QByteArray>
#include <QDateTime>

// Test mail: a plain message numbered N, padded to about Size bytes.
inline QByteArray TestMessage(int N, qsizetype Size = 0, const QByteArray &MessageId = QByteArray())
{
    QByteArray mime = "From: sender@example.com\r\nTo: postvane@example.com\r\nSubject: Message "
                      + QByteArray::number(N) + "\r\nMessage-ID: <"
                      + (MessageId.isEmpty() ? "m" + QByteArray::number(N) + "@example.com" : MessageId)
                      + ">\r\nDate: " + QDateTime::currentDateTime().toString(Qt::RFC2822Date).toLatin1()
                      + "\r\nMIME-Version: 1.0\r\nContent-Type: text/plain\r\n\r\nBody of message "
                      + QByteArray::number(N) + "\r\n";
    while (mime.size() < Size)
        mime += "Lorem ipsum dolor sit amet, consectetur adipiscing elit, sed do eiusmod tempor incididunt.\r\n";
    return mime;
}

// The number in a test message's subject; -1 when there is none.
inline int TestMessageNumber(const QByteArray &Mime)
{
    const qsizetype at = Mime.indexOf("Subject: Message ");
    if (at < 0)
        return -1;
    const qsizetype end = Mime.indexOf('\r', at);
    return Mime.mid(at + 17, end - at - 17).toInt();
}
