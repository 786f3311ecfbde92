#include "clsPushStream.h"

namespace {

const QByteArray HeaderEnd("\r\n\r\n");
const QByteArray LocationHeader("Content-Location: ");

// The value of a header within a header text; empty when absent.
QByteArray HeaderValue(const QByteArray &Headers, const QByteArray &Name)
{
    const qsizetype at = Headers.toLower().indexOf(Name.toLower());
    if (at < 0)
        return QByteArray();
    const qsizetype begin = at + Name.size();
    const qsizetype end = Headers.indexOf("\r\n", begin);
    return Headers.mid(begin, end < 0 ? -1 : end - begin).trimmed();
}

} // namespace

clsPushStream::clsPushStream(const QString &ProductName) : m_marker("X-Powered-By: " + ProductName.toUtf8()) {}

QList<clsPushStream::Block> clsPushStream::Append(const QByteArray &Data)
{
    m_buffer += Data;
    return Take(false);
}

QList<clsPushStream::Block> clsPushStream::Flush()
{
    return Take(true);
}

qsizetype clsPushStream::NextStart(qsizetype From) const
{
    // A block is known by its marker header at the start of a line; its
    // status line, when the server sends one, stands right before it.
    qsizetype marker = From;
    while ((marker = m_buffer.indexOf(m_marker, marker)) >= 0 && marker > 0 && m_buffer.at(marker - 1) != '\n')
        ++marker;
    if (marker <= 0)
        return marker;
    const qsizetype status = m_buffer.lastIndexOf("HTTP/", marker);
    if (status >= From && m_buffer.indexOf("\r\n", status) == marker - 2)
        return status;
    return marker;
}

QList<clsPushStream::Block> clsPushStream::Take(bool AtEnd)
{
    QList<Block> blocks;
    for (;;) {
        const qsizetype start = NextStart(0);
        if (start < 0) {
            // Keep-alive bytes, or the first bytes of a marker still to come.
            m_buffer = m_buffer.right(m_marker.size() + 16);
            return blocks;
        }
        m_buffer.remove(0, start);
        const qsizetype headerEnd = m_buffer.indexOf(HeaderEnd);
        if (headerEnd < 0)
            return blocks;
        const qsizetype bodyStart = headerEnd + HeaderEnd.size();
        const QByteArray length = HeaderValue(m_buffer.left(headerEnd + 2), "Content-Length: ");
        qsizetype blockEnd = -1;
        if (!length.isEmpty()) {
            blockEnd = bodyStart + length.toLongLong();
            if (blockEnd > m_buffer.size())
                return blocks; // the rest is on its way
        } else {
            blockEnd = NextStart(bodyStart);
            if (blockEnd < 0) {
                if (!AtEnd)
                    return blocks;
                blockEnd = m_buffer.size();
            }
        }
        AddBlock(m_buffer.left(blockEnd), blocks);
        m_buffer.remove(0, blockEnd);
    }
}

void clsPushStream::AddBlock(const QByteArray &Raw, QList<Block> &Blocks) const
{
    if (!Raw.contains(m_marker) || !Raw.contains(LocationHeader))
        return;
    const qsizetype at = Raw.indexOf(LocationHeader) + LocationHeader.size();
    const qsizetype lineEnd = Raw.indexOf("\r\n", at);
    Block block;
    block.Location = QString::fromUtf8(Raw.mid(at, lineEnd < 0 ? -1 : lineEnd - at)).trimmed().toLower();
    const qsizetype headerEnd = Raw.indexOf(HeaderEnd);
    if (headerEnd >= 0)
        block.Body = QString::fromUtf8(Raw.mid(headerEnd + HeaderEnd.size()));
    Blocks.append(block);
}
