#include "TestRegistry.h"
#include "session/clsPushStream.h"

#include <QTest>

namespace {

QByteArray Block(const QByteArray &Location, const QByteArray &Body, bool WithLength = true)
{
    QByteArray block = "HTTP/1.1 200 OK\r\nX-Powered-By: Postvane\r\nContent-Location: " + Location + "\r\n";
    if (WithLength)
        block += "Content-Length: " + QByteArray::number(Body.size()) + "\r\n";
    return block + "\r\n" + Body;
}

} // namespace

class tst_clsPushStream : public QObject
{
    Q_OBJECT
private slots:
    void blockCutAcrossReadsIsPutTogether()
    {
        clsPushStream stream(QStringLiteral("Postvane"));
        const QByteArray block = Block("log.xml", "<Source>Server</Source><Log><Msg>hello</Msg></Log>");
        for (qsizetype cut : {qsizetype(5), qsizetype(40), block.size() - 3}) {
            QVERIFY(stream.Append(block.left(cut)).isEmpty());
            QVERIFY(stream.Pending());
            const auto blocks = stream.Append(block.mid(cut));
            QCOMPARE(blocks.size(), 1);
            QCOMPARE(blocks[0].Location, QStringLiteral("log.xml"));
            QCOMPARE(blocks[0].Body, QStringLiteral("<Source>Server</Source><Log><Msg>hello</Msg></Log>"));
            QVERIFY(!stream.Pending());
        }
    }

    void severalBlocksOfOneReadComeInOrder()
    {
        clsPushStream stream(QStringLiteral("Postvane"));
        const auto blocks = stream.Append(Block("Popup.XML", "<Message>a</Message>") + "\r\n"
                                          + Block("serverclosing.xml", ""));
        QCOMPARE(blocks.size(), 2);
        QCOMPARE(blocks[0].Location, QStringLiteral("popup.xml"));
        QCOMPARE(blocks[1].Location, QStringLiteral("serverclosing.xml"));
        QCOMPARE(blocks[1].Body, QString());
    }

    void blocksWithoutMarkerAndKeepAlivesAreDropped()
    {
        clsPushStream stream(QStringLiteral("Postvane"));
        const QByteArray foreign = "HTTP/1.1 200 OK\r\nX-Powered-By: Other\r\nContent-Location: popup.xml\r\n"
                                   "Content-Length: 2\r\n\r\nxx";
        const auto blocks = stream.Append("\r\n\r\n" + foreign + Block("log.xml", "<Log>1</Log>"));
        QCOMPARE(blocks.size(), 1);
        QCOMPARE(blocks[0].Location, QStringLiteral("log.xml"));
        QVERIFY(stream.Append("\r\n").isEmpty());
        QVERIFY(!stream.Pending());
    }

    void blockWithoutLengthEndsAtTheNextOrAtFlush()
    {
        clsPushStream stream(QStringLiteral("Postvane"));
        QVERIFY(stream.Append(Block("log.xml", "<Log>1</Log>", false)).isEmpty());
        auto blocks = stream.Append(Block("log.xml", "<Log>2</Log>", false));
        QCOMPARE(blocks.size(), 1);
        QCOMPARE(blocks[0].Body, QStringLiteral("<Log>1</Log>"));
        blocks = stream.Flush();
        QCOMPARE(blocks.size(), 1);
        QCOMPARE(blocks[0].Body, QStringLiteral("<Log>2</Log>"));
    }
};

POSTVANE_TEST(tst_clsPushStream)
#include "tst_clsPushStream.moc"
