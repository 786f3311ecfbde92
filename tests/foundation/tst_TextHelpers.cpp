#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "foundation/Startup.h"
#include "foundation/TextHelpers.h"

#include <QFile>
#include <QHash>
#include <QTemporaryDir>
#include <QTest>
#include <functional>

class tst_TextHelpers : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;
    QTemporaryDir m_dir;

    QString WriteBytes(const QString &name, const QByteArray &bytes)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            return QString();
        return path;
    }

private slots:
    void init()
    {
        m_errors.clear();
    }

    void getTag_data()
    {
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << "Name" << "<a>1</a><Name>Bob</Name>" << "Bob";
        QTest::newRow("case ignored") << "name" << "<NAME>Bob</Name>" << "Bob";
        QTest::newRow("attributes") << "Name" << "<Name id=\"1\">Bob</Name>" << "Bob";
        QTest::newRow("longer tag skipped") << "Name" << "<NameX>no</NameX><Name>yes</Name>" << "yes";
        QTest::newRow("first one") << "b" << "<b>1</b><b>2</b>" << "1";
        QTest::newRow("nested other tags kept") << "b" << "<b><i>x</i></b>" << "<i>x</i>";
        QTest::newRow("no close") << "b" << "<b>open" << "";
        QTest::newRow("no open") << "b" << "text</b>" << "";
        QTest::newRow("tag at the very end") << "b" << "x<b" << "";
    }
    void getTag()
    {
        QFETCH(QString, tag);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(GetTag(tag, text), expected);
    }

    // The helpers that turn one text into another, by function name.
    void textToText_data()
    {
        QTest::addColumn<QString>("function");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::addRow("StripTags: nested") << "StripTags" << "<p>Hello <b>World</b></p>" << "Hello World";
        QTest::addRow("StripTags: lone angle") << "StripTags" << "a < b" << "a < b";
        QTest::addRow("StripTags: unclosed kept") << "StripTags" << "x<br/>y<" << "xy<";
        QTest::addRow("SafeFileName: unsafe characters")
            << "SafeFileName" << "a<b>c:d/e\\f|g?h*i" << "a_b_c_d_e_f_g_h_i";
        QTest::addRow("SafeFileName: dot runs") << "SafeFileName" << "report...txt" << "report.txt";
        QTest::addRow("SafeFileName: double blanks") << "SafeFileName" << "my   file.txt" << "my file.txt";
        QTest::addRow("SafeFileName: clean") << "SafeFileName" << "Invoice 12.pdf" << "Invoice 12.pdf";
        QTest::addRow("StripBrackets: angle") << "StripBrackets" << "<a@b.c>" << "a@b.c";
        QTest::addRow("StripBrackets: square") << "StripBrackets" << "[Orders]" << "Orders";
        QTest::addRow("StripBrackets: trimmed first") << "StripBrackets" << "  (x) " << "x";
        QTest::addRow("StripBrackets: curly") << "StripBrackets" << "{id}" << "id";
        QTest::addRow("StripBrackets: one pair only") << "StripBrackets" << "<<x>>" << "<x>";
        QTest::addRow("StripBrackets: mismatched") << "StripBrackets" << "<x]" << "<x]";
        QTest::addRow("StripBrackets: lone bracket") << "StripBrackets" << "<" << "<";
        QTest::addRow("RemoveWhiteSpace: blanks only") << "RemoveWhiteSpace" << "a  b   c\t\td" << "a b c\t\td";
        QTest::addRow("RemoveRepeatedBlankLines: runs")
            << "RemoveRepeatedBlankLines" << "a\r\n\r\n\r\n\r\nb" << "a\r\n\r\nb";
        QTest::addRow("RemoveRepeatedBlankLines: single kept")
            << "RemoveRepeatedBlankLines" << "a\r\n\r\nb\r\nc" << "a\r\n\r\nb\r\nc";
        QTest::addRow("ExpandControlCodes: words")
            << "ExpandControlCodes" << "A<CR>B<lf>C<CrLf>D<TAB>E<ESC>" << "A\rB\nC\r\nD\tE\x1b";
        QTest::addRow("ExpandControlCodes: unknown word") << "ExpandControlCodes" << "<CRX>" << "<CRX>";
        QTest::addRow("ExpandControlCodes back: characters")
            << "ExpandControlCodes back" << "A\rB\nC\r\nD\tE\x1b" << "A<CR>B<LF>C<CRLF>D<TAB>E<ESC>";
        QTest::addRow("ExpandControlCodes back: LF CR") << "ExpandControlCodes back" << "\n\r" << "<LF><CR>";
        QTest::addRow("EnsureTrailing: added") << "EnsureTrailing" << "/data" << "/data/";
        QTest::addRow("EnsureTrailing: not doubled") << "EnsureTrailing" << "/data/" << "/data/";
        QTest::addRow("ExtractEmailAddress: name and angle brackets")
            << "ExtractEmailAddress" << "Jane Doe <jane@example.com>" << "jane@example.com";
        QTest::addRow("ExtractEmailAddress: quoted name")
            << "ExtractEmailAddress" << "\"Doe, Jane\" <jane@example.com>" << "jane@example.com";
        QTest::addRow("ExtractEmailAddress: list takes first") << "ExtractEmailAddress" << "a@b.c, d@e.f" << "a@b.c";
        QTest::addRow("ExtractEmailAddress: bare")
            << "ExtractEmailAddress" << "  bob@example.org " << "bob@example.org";
        QTest::addRow("ExtractEmailAddress: within a sentence")
            << "ExtractEmailAddress" << "write to bob@example.org today" << "bob@example.org";
        QTest::addRow("ExtractEmailAddress: mailto")
            << "ExtractEmailAddress" << "mailto:bob@example.org" << "bob@example.org";
        QTest::addRow("ExtractEmailAddress: no address") << "ExtractEmailAddress" << "just some text" << "";
        QTest::addRow("EntityDecode: decimal and hex") << "EntityDecode" << "&#233;t&#xE9;" << QStringLiteral("été");
        QTest::addRow("EntityDecode: above 255") << "EntityDecode" << "&#8364; 5" << QStringLiteral("€ 5");
        QTest::addRow("EntityDecode: beyond the BMP") << "EntityDecode" << "&#128512;" << QStringLiteral("\U0001F600");
        QTest::addRow("EntityDecode: no characters stay")
            << "EntityDecode" << "&#0;&#55296;&#1114112;" << "&#0;&#55296;&#1114112;";
        QTest::addRow("EntityDecode: not numeric") << "EntityDecode" << "&#abc; &amp; &#12" << "&#abc; &amp; &#12";
    }
    void textToText()
    {
        static const QHash<QString, std::function<QString(const QString &)>> functions = {
            {QStringLiteral("StripTags"), [](const QString &t) { return StripTags(t); }},
            {QStringLiteral("SafeFileName"), [](const QString &t) { return SafeFileName(t); }},
            {QStringLiteral("StripBrackets"), [](const QString &t) { return StripBrackets(t); }},
            {QStringLiteral("RemoveWhiteSpace"), [](const QString &t) { return RemoveWhiteSpace(t); }},
            {QStringLiteral("RemoveRepeatedBlankLines"), [](const QString &t) { return RemoveRepeatedBlankLines(t); }},
            {QStringLiteral("ExpandControlCodes"), [](const QString &t) { return ExpandControlCodes(t); }},
            {QStringLiteral("ExpandControlCodes back"), [](const QString &t) { return ExpandControlCodes(t, true); }},
            {QStringLiteral("EnsureTrailing"), [](const QString &t) { return EnsureTrailing(t, QStringLiteral("/")); }},
            {QStringLiteral("ExtractEmailAddress"), [](const QString &t) { return ExtractEmailAddress(t); }},
            {QStringLiteral("EntityDecode"), [](const QString &t) { return EntityDecode(t); }},
        };
        QFETCH(QString, function);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QVERIFY(functions.contains(function));
        QCOMPARE(functions.value(function)(text), expected);
    }

    void entityEncode_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("codePage");
        QTest::addColumn<QString>("expected");
        QTest::newRow("latin-1 keeps its range") << QStringLiteral("café €") << "iso-8859-1" << QStringLiteral("café &#8364;");
        QTest::newRow("utf-8 leaves plain ASCII") << QStringLiteral("café €") << "utf-8" << "caf&#233; &#8364;";
        QTest::newRow("one reference per code point") << QStringLiteral("\U0001F600") << "utf-8" << "&#128512;";
        QTest::newRow("ampersand untouched") << "a & b" << "utf-8" << "a & b";
    }
    void entityEncode()
    {
        QFETCH(QString, text);
        QFETCH(QString, codePage);
        QFETCH(QString, expected);
        QCOMPARE(EntityEncode(text, codePage), expected);
        QCOMPARE(EntityDecode(expected), text);
    }

    void textFilesRoundTripAsUtf8()
    {
        const QString path = m_dir.filePath(QStringLiteral("round.txt"));
        const QString text = QStringLiteral("Grüße\r\n€ 5\r\n");
        QVERIFY(WriteTextFile(path, text));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), text.toUtf8());
        QCOMPARE(ReadTextFile(path), text);
        QVERIFY(m_errors.isEmpty());
    }

    void readTextFileEncodings_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        QTest::newRow("UTF-8 BOM dropped") << QByteArray("\xEF\xBB\xBF" "caf\xC3\xA9") << QStringLiteral("café");
        QTest::newRow("Latin-1 when no UTF-8") << QByteArray("caf\xE9") << QStringLiteral("café");
        QTest::newRow("UTF-16 by BOM") << QByteArray("\xFF\xFEh\0i\0", 6) << QStringLiteral("hi");
    }
    void readTextFileEncodings()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, expected);
        const QString path = WriteBytes(QStringLiteral("enc.txt"), bytes);
        QVERIFY(!path.isEmpty());
        QCOMPARE(ReadTextFile(path), expected);
    }

    void fileFailures()
    {
        QCOMPARE(ReadTextFile(m_dir.filePath(QStringLiteral("missing.txt"))), QString());
        QCOMPARE(UnicodeRead(m_dir.filePath(QStringLiteral("missing.txt"))), QString());
        QVERIFY(m_errors.isEmpty());

        QVERIFY(!WriteTextFile(m_dir.filePath(QStringLiteral("no/such/folder/x.txt")), QStringLiteral("x")));
        QCOMPARE(m_errors.size(), 1);
        QVERIFY(m_errors.first().endsWith(QStringLiteral("FROM WriteTextFile")));

        QCOMPARE(ReadTextFile(m_dir.path()), QString());
        QCOMPARE(m_errors.size(), 2);
        QVERIFY(m_errors.last().endsWith(QStringLiteral("FROM ReadTextFile")));
    }

    void unicodeRead_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QString text = QStringLiteral("Line 1\r\nZeile ß\r\n");
        QByteArray little(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
        QByteArray big;
        for (QChar c : text)
            big.append(char(c.unicode() >> 8)).append(char(c.unicode() & 0xFF));
        QTest::newRow("little-endian with BOM") << QByteArray("\xFF\xFE", 2) + little;
        QTest::newRow("big-endian with BOM") << QByteArray("\xFE\xFF", 2) + big;
        QTest::newRow("little-endian without BOM") << little;
    }
    void unicodeRead()
    {
        QFETCH(QByteArray, bytes);
        const QString path = WriteBytes(QStringLiteral("wide.txt"), bytes);
        QVERIFY(!path.isEmpty());
        QCOMPARE(UnicodeRead(path), QStringLiteral("Line 1\r\nZeile ß\r\n"));
    }

    void sqlQuote_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("dialect");
        QTest::addColumn<bool>("raw");
        QTest::addColumn<QString>("expected");
        QTest::newRow("quote doubled") << "it's" << 99 << false << "'it''s'";
        QTest::newRow("raw keeps quote") << "it's" << 99 << true << "'it's'";
        QTest::newRow("empty") << "" << 1 << false << "''";
        QTest::newRow("0 keeps line ends") << "a\r\nb" << 0 << false << "'a\r\nb'";
        QTest::newRow("2 keeps line ends") << "a\r\nb\tc" << 2 << false << "'a\r\nb\tc'";
        QTest::newRow("1 splits CR LF") << "a\r\nb" << 1 << false << "'a' + CHAR(13) + '' + CHAR(10) + 'b'";
        QTest::newRow("3 splits TAB") << "a\tb" << 3 << false << "'a' + CHR$(9) + 'b'";
        QTest::newRow("99 joins with a blank") << "a\tb" << 99 << false << "'a' +   + 'b'";
        QTest::newRow("leading piece cut") << "\r\nx" << 1 << false << "CHAR(13) + '' + CHAR(10) + 'x'";
        QTest::newRow("trailing piece cut") << "x\t" << 1 << false << "'x' + CHAR(9)";
        QTest::newRow("only a control") << "\t" << 1 << false << "CHAR(9)";
        QTest::newRow("quotes and controls") << "O'Neil\tX" << 1 << false << "'O''Neil' + CHAR(9) + 'X'";
        QTest::newRow("leading quote not cut") << "' + x\ty" << 1 << false << "''' + x' + CHAR(9) + 'y'";
    }
    void sqlQuote()
    {
        QFETCH(QString, text);
        QFETCH(int, dialect);
        QFETCH(bool, raw);
        QFETCH(QString, expected);
        QCOMPARE(SQLQuote(text, dialect, raw), expected);
    }
};

POSTVANE_TEST(tst_TextHelpers)
#include "tst_TextHelpers.moc"
