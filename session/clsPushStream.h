#pragma once
#include <QByteArray>
#include <QList>
#include <QString>

// Cuts the byte stream of the push channel into its blocks. Each block is a
// small HTTP-like response carrying the marker header "X-Powered-By: " +
// ProductName, a "Content-Location: " header with the event's name, an empty
// line and a markup body. Reads of the connection need not fall on block
// boundaries: what is not complete yet waits for the next read.
//
// A block whose headers hold "Content-Length" ends after that many body
// bytes. Without it the body runs to the start of the next block, or to the
// end of what arrived when Flush is called (the stream ended or fell quiet).
class clsPushStream
{
public:
    struct Block
    {
        QString Location; // lower-cased
        QString Body;
    };

    explicit clsPushStream(const QString &ProductName);

    // Adds what one read brought; the blocks completed by it, in order.
    // Blocks without the marker, keep-alives among them, are dropped.
    QList<Block> Append(const QByteArray &Data);
    // Ends the pending block without a length, if any; a block whose length
    // is not complete yet goes on waiting.
    QList<Block> Flush();
    // True while bytes of an incomplete block are held.
    bool Pending() const { return !m_buffer.trimmed().isEmpty(); }
    void Clear() { m_buffer.clear(); }

private:
    // Position of the next block start at or after From, or -1.
    qsizetype NextStart(qsizetype From) const;
    // Takes complete blocks off the front of the buffer.
    QList<Block> Take(bool AtEnd);
    void AddBlock(const QByteArray &Raw, QList<Block> &Blocks) const;

    QByteArray m_marker;
    QByteArray m_buffer;
};
