#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

namespace {

// The text between the first "<Tag>" and the first "</Tag>" behind it.
QString PlainSearchOf(const QString &Text, const QString &Tag)
{
    const QString open = u'<' + Tag + u'>';
    const qsizetype start = Text.indexOf(open);
    const qsizetype end = start < 0 ? -1 : Text.indexOf(QStringLiteral("</") + Tag + u'>', start + open.size());
    return end < 0 ? QString() : Text.mid(start + open.size(), end - start - open.size());
}

} // namespace

class tst_clsXML : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;

private slots:
    void init() { m_errors.clear(); }

    void extractReadsForwardOnly()
    {
        clsXML xml(QStringLiteral("<a>1</a><b>2</b>"));
        int b = -1;
        int a = -1;
        QVERIFY(xml.Extract(b, QStringLiteral("b")));
        QCOMPARE(b, 2);
        QVERIFY(!xml.Extract(a, QStringLiteral("a")));
        QCOMPARE(a, 0);
    }

    void repeatedTagsReadInTurn()
    {
        clsXML xml(QStringLiteral("<Line>one</Line><Line>two</Line><Line></Line>"));
        QString value;
        QStringList lines;
        while (xml.Extract(value, QStringLiteral("Line")))
            lines << value;
        QCOMPARE(lines, (QStringList{QStringLiteral("one"), QStringLiteral("two"), QString()}));
    }

    void missingCloseTagLeavesCursor()
    {
        clsXML xml(QStringLiteral("<a>open<b>x</b>"));
        QString a = QStringLiteral("old");
        QString b;
        QVERIFY(!xml.Extract(a, QStringLiteral("a")));
        QVERIFY(a.isEmpty());
        QVERIFY(xml.Extract(b, QStringLiteral("b")));
        QCOMPARE(b, QStringLiteral("x"));
    }

    void tagsMatchWithoutCaseValuesKeepCase()
    {
        clsXML xml(QStringLiteral("<CheckALLWords>-1</CheckALLWords><Name>MiXeD</Name>"));
        bool all = false;
        QString name;
        QVERIFY(xml.Extract(all, QStringLiteral("CheckAllWords")));
        QVERIFY(all);
        QVERIFY(xml.Extract(name, QStringLiteral("NAME")));
        QCOMPARE(name, QStringLiteral("MiXeD"));
    }

    void attributesAndNestingAreNotUnderstood()
    {
        clsXML withAttribute(QStringLiteral("<a x=\"1\">v</a>"));
        QString v;
        QVERIFY(!withAttribute.Extract(v, QStringLiteral("a")));

        // The inner close tag ends the outer value.
        clsXML nested(QStringLiteral("<a><a>in</a>out</a>"));
        QVERIFY(nested.Extract(v, QStringLiteral("a"), true));
        QCOMPARE(v, QStringLiteral("<a>in"));
    }

    void settingXmlCleansText()
    {
        clsXML xml(QStringLiteral("  \t<a>x\ty\nz\r</a>\n  "));
        QCOMPARE(xml.XML(), QStringLiteral("<a>xyz\r</a>"));
        QString a;
        QVERIFY(xml.Extract(a, QStringLiteral("a")));
        QCOMPARE(a, QStringLiteral("xyz\r"));
    }

    void extractUntilBoundsReads()
    {
        clsXML xml(QStringLiteral("<Name>acc</Name><Triggers><Name>trg</Name><Extra>1</Extra></Triggers>"));
        xml.setExtractUntil(QStringLiteral("Triggers"));
        QString name;
        QString extra;
        QVERIFY(xml.Extract(name, QStringLiteral("Name")));
        QCOMPARE(name, QStringLiteral("acc"));
        QVERIFY(!xml.Extract(extra, QStringLiteral("Extra")));
        xml.setExtractUntil(QString());
        QVERIFY(xml.Extract(extra, QStringLiteral("Extra")));
        QCOMPARE(xml.ExtractUntil(), QString());
    }

    void extractUntilUnknownTagIsClearedSilently()
    {
        clsXML xml(QStringLiteral("<a>1</a><b>2</b>"));
        xml.setExtractUntil(QStringLiteral("nowhere"));
        int b = 0;
        QVERIFY(xml.Extract(b, QStringLiteral("b")));
        QCOMPARE(b, 2);
        QVERIFY(xml.ExtractUntil().isEmpty());
        QVERIFY(m_errors.isEmpty());
    }

    // A marker whose first occurrence lies before the cursor blocks every
    // later read until it is cleared.
    void extractUntilBehindCursorBlocks()
    {
        clsXML xml(QStringLiteral("<Stop>0</Stop><a>1</a>"));
        int stop = 0;
        QVERIFY(xml.Extract(stop, QStringLiteral("Stop")));
        xml.setExtractUntil(QStringLiteral("Stop"));
        int a = 0;
        QVERIFY(!xml.Extract(a, QStringLiteral("a")));
        xml.setExtractUntil(QString());
        QVERIFY(xml.Extract(a, QStringLiteral("a")));
    }

    // A child reader shares the parent's text but must read exactly as a
    // reader set to the raw text between the tags: same values, same bound,
    // same misses, and nothing beyond the element.
    void nestedReaderReadsLikeRawText()
    {
        QRandomGenerator random(7);
        const QStringList pieces = {QStringLiteral("<Outer>"), QStringLiteral("</Outer>"), QStringLiteral("<a>"),
                                    QStringLiteral("</a>"), QStringLiteral("<B>"), QStringLiteral("</b>"),
                                    QStringLiteral("<Stop>"), QStringLiteral("</Stop>"), QStringLiteral("x"),
                                    QStringLiteral(" "), QStringLiteral("<"), QStringLiteral(">")};
        const QStringList tags = {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("Stop")};
        for (int round = 0; round < 3000; ++round) {
            QString text;
            for (int k = random.bounded(40); k > 0; --k)
                text += pieces.at(random.bounded(pieces.size()));
            clsXML parent(text);
            clsXML rawParent(text);
            clsXML child;
            QString raw;
            const bool found = parent.Extract(child, QStringLiteral("Outer"));
            QCOMPARE(found, rawParent.Extract(raw, QStringLiteral("Outer"), true));
            clsXML fromRaw(raw);
            QCOMPARE(child.XML(), fromRaw.XML());
            QCOMPARE(child.IsEmpty(), fromRaw.XML().isEmpty());
            if (round % 2)
                child.setExtractUntil(QStringLiteral("Stop")), fromRaw.setExtractUntil(QStringLiteral("Stop"));
            for (int read = 0; read < 6; ++read) {
                const QString &tag = tags.at(random.bounded(tags.size()));
                QString a, b;
                QCOMPARE(child.Extract(a, tag, true), fromRaw.Extract(b, tag, true));
                QCOMPARE(a, b);
            }
        }
    }

    // The text is read where it lies, TABs and LFs and all: every read, the
    // item scan and the plain search must give what they give on the same
    // text with those deleted beforehand, wherever the TABs and LFs fall.
    void textIsReadAsIfCleaned()
    {
        QRandomGenerator random(11);
        const QStringList pieces = {QStringLiteral("<Item>"), QStringLiteral("</Item>"), QStringLiteral("<a>"),
                                    QStringLiteral("</a>"),   QStringLiteral("<B>"),     QStringLiteral("</b>"),
                                    QStringLiteral("<Class>"), QStringLiteral("</Class>"), QStringLiteral("<cl\tass>"),
                                    QStringLiteral("<I\ntem>"), QStringLiteral("</\titem>"), QStringLiteral("<a\n>"),
                                    QStringLiteral("x"),      QStringLiteral("7"),       QStringLiteral(" "),
                                    QStringLiteral("\t"),     QStringLiteral("\n"),      QStringLiteral("<"),
                                    QStringLiteral(">"),      QStringLiteral("&amp;"),   QStringLiteral("\u00c9")};
        const QStringList tags = {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("Item")};
        for (int round = 0; round < 3000; ++round) {
            QString text;
            for (int k = random.bounded(120); k > 0; --k)
                text += pieces.at(random.bounded(pieces.size()));
            QString cleaned = text;
            cleaned.remove(u'\t').remove(u'\n');
            clsXML raw(text);
            clsXML clean(cleaned);
            clsXML rawItem, cleanItem;
            const bool itemFound = round % 2 ? raw.ExtractItem(rawItem, QStringLiteral("Item"))
                                             : raw.Extract(rawItem, QStringLiteral("Item"));
            QCOMPARE(itemFound, clean.Extract(cleanItem, QStringLiteral("Item")));
            QCOMPARE(rawItem.XML(), cleanItem.XML());
            QCOMPARE(raw.XML(), clean.XML());
            QCOMPARE(raw.IsEmpty(), clean.IsEmpty());
            QCOMPARE(raw.PlainSearch(QStringLiteral("Class")), PlainSearchOf(clean.XML(), QStringLiteral("Class")));
            for (int read = 0; read < 6; ++read) {
                const QString &tag = tags.at(random.bounded(tags.size()));
                QString a, b;
                int n = -1, m = -1;
                QCOMPARE(rawItem.Extract(a, tag, read % 2), cleanItem.Extract(b, tag, read % 2));
                QCOMPARE(a, b);
                QCOMPARE(raw.Extract(n, tag), clean.Extract(m, tag));
                QCOMPARE(n, m);
            }
        }
    }

    // A list read item by item finds the same items, scanned or indexed, and
    // an item's reader reads on after a scan as after an indexed read.
    void itemsScannedOrIndexedAlike()
    {
        const QString text = QStringLiteral("<Head>h</Head>\n<Item>\n\t<Name>one</Name>\n</Item>\n<Skip><Item>"
                                            "<Name>two</Name></Item></Skip><ITEM><Name>three</Name></ITEM><Item>open");
        clsXML scanned(text);
        clsXML indexed(text);
        QString head;
        QVERIFY(indexed.Extract(head, QStringLiteral("Head")));
        QVERIFY(scanned.Extract(head, QStringLiteral("Head")));
        clsXML fresh(text);
        QStringList names;
        clsXML item;
        while (fresh.ExtractItem(item, QStringLiteral("Item"))) {
            QString name;
            item.Extract(name, QStringLiteral("Name"));
            names << name;
        }
        QCOMPARE(names, QStringList({QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")}));
        QString tail;
        QVERIFY(!fresh.Extract(tail, QStringLiteral("Head")));
        QVERIFY(fresh.Extract(tail, QStringLiteral("Item"), true) == false);
    }

    void emptyAndTinyTexts()
    {
        for (const QString &text : {QString(), QStringLiteral("<"), QStringLiteral("<a>"), QStringLiteral("</a>"),
                                    QStringLiteral("<a></a"), QStringLiteral("   ")}) {
            clsXML xml(text);
            QString s = QStringLiteral("x");
            int n = 5;
            QDateTime d = QDateTime::currentDateTime();
            QVERIFY(!xml.Extract(s, QStringLiteral("a")));
            QVERIFY(!xml.Extract(n, QStringLiteral("a")));
            QVERIFY(!xml.Extract(d, QStringLiteral("a")));
            QVERIFY(s.isEmpty());
            QCOMPARE(n, 0);
            QCOMPARE(d, ZeroDate());
        }
        clsXML empty(QStringLiteral("<a></a>"));
        QString s = QStringLiteral("x");
        QVERIFY(empty.Extract(s, QStringLiteral("a")));
        QVERIFY(s.isEmpty());
    }

    // What the round trip of every type does not reach: texts no writer
    // makes, read as the target type takes them.
    void unusualTextsConvertByTargetType()
    {
        clsXML xml(QStringLiteral("<d>-1.25e3</d><bf>0</bf><btext>True</btext><bbad>yes</bbad>"
                                  "<bad>12abc</bad><over>70000</over><round>2.5</round>"));
        double d = 0;
        bool bf = true, btext = false, bbad = true;
        qint32 bad = 9;
        qint16 over = 9;
        qint32 round = 0;
        QVERIFY(xml.Extract(d, QStringLiteral("d")));
        QVERIFY(xml.Extract(bf, QStringLiteral("bf")));
        QVERIFY(xml.Extract(btext, QStringLiteral("btext")));
        QVERIFY(xml.Extract(bbad, QStringLiteral("bbad")));
        QVERIFY(xml.Extract(bad, QStringLiteral("bad")));
        QVERIFY(xml.Extract(over, QStringLiteral("over")));
        QVERIFY(xml.Extract(round, QStringLiteral("round")));
        QCOMPARE(d, -1250.0);
        QVERIFY(!bf);
        QVERIFY(btext);
        QVERIFY(!bbad);
        QCOMPARE(bad, 0); // unparsable: silently 0, yet found
        QCOMPARE(over, qint16(0));
        QCOMPARE(round, 2); // half to even
        QVERIFY(m_errors.isEmpty());
    }

    void datesWithAndWithoutTime()
    {
        clsXML xml(QStringLiteral("<d1>2024-02-29 13:45:10</d1><d2>2024-02-29</d2><d3>not a date</d3>"
                                  "<d4>2024-02-29 25:00:00</d4>"));
        QDateTime d1, d2, d3, d4;
        QVERIFY(xml.Extract(d1, QStringLiteral("d1")));
        QVERIFY(xml.Extract(d2, QStringLiteral("d2")));
        QVERIFY(xml.Extract(d3, QStringLiteral("d3")));
        QVERIFY(xml.Extract(d4, QStringLiteral("d4")));
        QCOMPARE(d1, QDateTime(QDate(2024, 2, 29), QTime(13, 45, 10)));
        QCOMPARE(d2, QDateTime(QDate(2024, 2, 29), QTime(0, 0)));
        QCOMPARE(d3, ZeroDate());
        QCOMPARE(d4, ZeroDate());
    }

    void writerLeavesOutEmptyValues()
    {
        clsXML xml;
        xml.Append(QString(), QStringLiteral("s"));
        xml.Append(false, QStringLiteral("b"));
        xml.Append(qint16(0), QStringLiteral("i16"));
        xml.Append(qint32(0), QStringLiteral("i32"));
        xml.Append(Currency{}, QStringLiteral("c"));
        xml.AppendPassword(QString(), QStringLiteral("p"));
        xml.AppendXML(QString(), QStringLiteral("Section"));
        QCOMPARE(xml.GetXML(), QString());

        xml.Append(0.0, QStringLiteral("f"));
        xml.Append(QDateTime(), QStringLiteral("d"));
        xml.Append(true, QStringLiteral("t"));
        QCOMPARE(xml.GetXML(), QStringLiteral("<f>0</f>\n<d>1899-12-30 00:00:00</d>\n<t>-1</t>\n"));
    }

    void sectionsIndentWithTabs()
    {
        clsXML xml;
        xml.XMLAddHeader();
        xml.XMLSectionStart(QStringLiteral("Account"));
        xml.Append(QStringLiteral("x"), QStringLiteral("Name"));
        xml.XMLSectionStart(QStringLiteral("Triggers"));
        xml.Append(qint32(3), QStringLiteral("Count"));
        xml.XMLSectionEnd(QStringLiteral("Triggers"));
        xml.XMLSectionEnd(QStringLiteral("Account"));
        xml.XMLSectionEnd(QStringLiteral("Extra"));
        QCOMPARE(xml.GetXML(), QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<Account>\n\t<Name>x</Name>\n"
                                              "\t<Triggers>\n\t\t<Count>3</Count>\n\t</Triggers>\n</Account>\n"
                                              "</Extra>\n"));
    }

    void appendXmlReindents()
    {
        clsXML inner;
        inner.XMLSectionStart(QStringLiteral("Field"));
        inner.Append(QStringLiteral("v"), QStringLiteral("Name"));
        inner.XMLSectionEnd(QStringLiteral("Field"));

        clsXML outer;
        outer.XMLSectionStart(QStringLiteral("Trigger"));
        outer.AppendXML(QStringLiteral("   <x>1</x>   \n\n  <y>2</y>"), QString());
        outer.AppendXML(inner.GetXML(), QStringLiteral("Fields"));
        outer.XMLSectionEnd(QStringLiteral("Trigger"));
        QCOMPARE(outer.GetXML(), QStringLiteral("<Trigger>\n\t<x>1</x>\n\t<y>2</y>\n\t<Fields>\n\t\t<Field>\n"
                                                "\t\t\t<Name>v</Name>\n\t\t</Field>\n\t</Fields>\n</Trigger>\n"));
    }

    void stringsRoundTrip_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("markup characters") << QStringLiteral("a & b < c > d 'e' \"f\"");
        QTest::newRow("control characters") << QStringLiteral("line1\r\nline2\tcol\nend") + QChar(26);
        QTest::newRow("escaped entity stays") << QStringLiteral("&amp; and &lt; literally");
        QTest::newRow("latin1") << QStringLiteral("caf\u00e9 \u00fcber \u00a3");
        QTest::newRow("wide") << QStringLiteral("\u65e5\u672c & <\u00e9> \"q\"\r\n");
        QTest::newRow("surrogates") << QStringLiteral("emoji \U0001F600 end");
        QTest::newRow("blanks kept inside") << QStringLiteral("  padded  ");
    }
    void stringsRoundTrip()
    {
        QFETCH(QString, value);
        clsXML writer;
        writer.XMLSectionStart(QStringLiteral("R"));
        writer.Append(value, QStringLiteral("v"));
        writer.AppendPassword(value, QStringLiteral("p"));
        writer.XMLSectionEnd(QStringLiteral("R"));

        clsXML reader(writer.GetXML());
        QString read;
        QString password;
        QVERIFY(reader.Extract(read, QStringLiteral("v")));
        QVERIFY(reader.Extract(password, QStringLiteral("p"), false, true));
        QCOMPARE(read, value);
        QCOMPARE(password, value);
    }

    void wideTextIsPackedWhole()
    {
        clsXML writer;
        writer.Append(QStringLiteral("A<\u0100"), QStringLiteral("w"));
        // Escaped first, then every character of the escaped text in hexadecimal.
        const QString expected = QStringLiteral("<w>") + QChar(2)
                                 + QStringLiteral("0041" "0026" "006C" "0074" "003B" "0100") + QStringLiteral("</w>\n");
        QCOMPARE(writer.GetXML(), expected);
    }

    void passwordsAreEnciphered()
    {
        clsXML writer;
        writer.AppendPassword(QStringLiteral("s3cret"), QStringLiteral("Password"));
        const QString text = writer.GetXML();
        QVERIFY(text.startsWith(QStringLiteral("<Password>enc:")));
        QVERIFY(!text.contains(QStringLiteral("s3cret")));

        clsXML reader(text);
        QString plainRead;
        QVERIFY(reader.Extract(plainRead, QStringLiteral("Password")));
        QVERIFY(plainRead.startsWith(QStringLiteral("enc:")));

        // A value written before passwords were enciphered still reads.
        clsXML older(QStringLiteral("<Password>old &amp; plain</Password>"));
        QString old;
        QVERIFY(older.Extract(old, QStringLiteral("Password"), false, true));
        QCOMPARE(old, QStringLiteral("old & plain"));
    }

    void everyValueTypeRoundTrips()
    {
        const QDateTime when(QDate(2025, 12, 31), QTime(23, 59, 58));
        clsXML writer;
        writer.Append(qint16(-32768), QStringLiteral("i16"));
        writer.Append(qint32(2147483647), QStringLiteral("i32"));
        writer.Append(Q_INT64_C(-9000000000123), QStringLiteral("i64"));
        writer.Append(1.1f, QStringLiteral("f"));
        writer.Append(0.1 + 0.2, QStringLiteral("d"));
        writer.Append(Currency{-1234567}, QStringLiteral("c"));
        writer.Append(when, QStringLiteral("dt"));
        writer.Append(true, QStringLiteral("b"));
        writer.Append(QVariant(QStringLiteral("v<1>")), QStringLiteral("var"));

        clsXML reader(writer.GetXML());
        qint16 i16 = 0;
        qint32 i32 = 0;
        qint64 i64 = 0;
        float f = 0;
        double d = 0;
        Currency c;
        QDateTime dt;
        bool b = false;
        QVariant var;
        QVERIFY(reader.Extract(i16, QStringLiteral("i16")));
        QVERIFY(reader.Extract(i32, QStringLiteral("i32")));
        QVERIFY(reader.Extract(i64, QStringLiteral("i64")));
        QVERIFY(reader.Extract(f, QStringLiteral("f")));
        QVERIFY(reader.Extract(d, QStringLiteral("d")));
        QVERIFY(reader.Extract(c, QStringLiteral("c")));
        QVERIFY(reader.Extract(dt, QStringLiteral("dt")));
        QVERIFY(reader.Extract(b, QStringLiteral("b")));
        QVERIFY(reader.Extract(var, QStringLiteral("var")));
        QCOMPARE(i16, qint16(-32768));
        QCOMPARE(i32, 2147483647);
        QCOMPARE(i64, Q_INT64_C(-9000000000123));
        QCOMPARE(f, 1.1f);
        QCOMPARE(d, 0.1 + 0.2);
        QCOMPARE(c.TenThousandths, Q_INT64_C(-1234567));
        QCOMPARE(dt, when);
        QVERIFY(b);
        QCOMPARE(var.toString(), QStringLiteral("v<1>"));
    }

    // The "other type" reading decodes unconditionally but neither unpacks
    // wide text nor the substitute character.
    void variantTargetDecodesWithoutUnpacking()
    {
        clsXML reader(QStringLiteral("<v>&lt;#xA;#1A;</v><w>") + QChar(2) + QStringLiteral("0041</w>"));
        QVariant v;
        QVariant w;
        QVERIFY(reader.Extract(v, QStringLiteral("v")));
        QVERIFY(reader.Extract(w, QStringLiteral("w")));
        QCOMPARE(v.toString(), QStringLiteral("<\n#1A;"));
        QCOMPARE(w.toString(), QString(QChar(2)) + QStringLiteral("0041"));
        QVariant missing = 5;
        QVERIFY(!reader.Extract(missing, QStringLiteral("v")));
        QVERIFY(!missing.isValid());
    }

    void filesLiveInDataPath()
    {
        QTemporaryDir dir;
        const QString saved = Global.DataPath;
        Global.DataPath = dir.path() + u'/';

        clsXML writer;
        writer.XMLSectionStart(QStringLiteral("GlobalSettings"));
        writer.Append(QStringLiteral("caf\u00e9 \u4e2d"), QStringLiteral("Name"));
        writer.XMLSectionEnd(QStringLiteral("GlobalSettings"));
        QVERIFY(writer.XMLWriteFile(QStringLiteral("TEST.XML")));
        QFile file(dir.filePath(QStringLiteral("TEST.XML")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().endsWith("</GlobalSettings>\n\r\n"));

        clsXML reader;
        QVERIFY(reader.XMLReadFile(QStringLiteral("TEST.XML")));
        QString name;
        QVERIFY(reader.Extract(name, QStringLiteral("Name")));
        QCOMPARE(name, QStringLiteral("caf\u00e9 \u4e2d"));

        clsXML missing(QStringLiteral("<keep>1</keep>"));
        QVERIFY(!missing.XMLReadFile(QStringLiteral("NOPE.XML")));
        QCOMPARE(missing.XML(), QStringLiteral("<keep>1</keep>"));
        Global.DataPath = saved;
    }

    // Thousands of random and truncated fragments: no crash, no exception,
    // and every read either finds its element or resets the target.
    void survivesRandomAndTruncatedFragments()
    {
        QRandomGenerator random(20261121);
        clsXML writer;
        writer.XMLSectionStart(QStringLiteral("Account"));
        writer.Append(QStringLiteral("Name & <x>"), QStringLiteral("Name"));
        writer.Append(qint32(77), QStringLiteral("Port"));
        writer.Append(QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5)), QStringLiteral("When"));
        writer.AppendPassword(QStringLiteral("pw"), QStringLiteral("Password"));
        writer.Append(QStringLiteral("\u4e2d\u6587"), QStringLiteral("Wide"));
        writer.XMLSectionEnd(QStringLiteral("Account"));
        const QString good = writer.GetXML();
        const QString alphabet = QStringLiteral("<>/&;#xAD9enc:%\u0002\u4e2d abNamePortWhen-1\r\n\t");

        for (int round = 0; round < 5000; ++round) {
            QString text;
            switch (round % 3) {
            case 0: text = good.left(random.bounded(good.size() + 1)); break;
            case 1: {
                text = good;
                for (int k = 0; k < 4; ++k)
                    text[random.bounded(text.size())] = alphabet.at(random.bounded(alphabet.size()));
                break;
            }
            default:
                for (int k = random.bounded(200); k > 0; --k)
                    text += alphabet.at(random.bounded(alphabet.size()));
            }
            clsXML reader(text);
            if (round % 7 == 0)
                reader.setExtractUntil(QStringLiteral("Port"));
            QString name, password, wide, raw;
            qint32 port = -1;
            QDateTime when;
            bool found = reader.Extract(name, QStringLiteral("Name"));
            QVERIFY(found || name.isEmpty());
            found = reader.Extract(port, QStringLiteral("Port"));
            QVERIFY(found || port == 0);
            reader.Extract(when, QStringLiteral("When"));
            QVERIFY(when.isValid());
            reader.Extract(password, QStringLiteral("Password"), false, true);
            reader.Extract(wide, QStringLiteral("Wide"));
            reader.Extract(raw, QStringLiteral("Account"), true);
        }
    }
};

POSTVANE_TEST(tst_clsXML)
#include "tst_clsXML.moc"
