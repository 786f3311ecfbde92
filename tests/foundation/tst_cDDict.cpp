#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "foundation/cDDict.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <memory>
#include <random>

class tst_cDDict : public QObject
{
    Q_OBJECT

    GlobalBlock m_saved;
    std::unique_ptr<QTemporaryDir> m_dir;

    QString DictionaryPath() const { return Global.AppPath + cDDict::FileName(); }

    void WriteDictionary(const QByteArray &content) const
    {
        QFile file(DictionaryPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QStringList DictionaryLines() const
    {
        QFile file(DictionaryPath());
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            return {};
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    static QString RandomText(QRandomGenerator &random)
    {
        static const QString alphabet = QStringLiteral("aAbBzZ09.[]$_ \x00e9\x0416");
        QString text;
        const int length = random.bounded(0, 12);
        for (int i = 0; i < length; ++i)
            text += alphabet.at(random.bounded(int(alphabet.size())));
        return text;
    }

private slots:
    void init()
    {
        m_saved = Global;
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        Global.AppPath = m_dir->path() + u'/';
    }
    void cleanup()
    {
        ReleaseDDict();
        m_dir.reset();
        Global = m_saved;
    }

    void defaultsOnlyExpandProductPlaceholders()
    {
        WriteDictionary("[PROG]$String.HELLO.0\tTranslated\n");
        cDDict dict(QStringLiteral("prog"));
        QCOMPARE(dict.GetString(QStringLiteral("HELLO"), QStringLiteral("%APPNAME% and %APPNAME% on %APPDOMAIN%")),
                 Global.ProductName + QStringLiteral(" and ") + Global.ProductName + QStringLiteral(" on ")
                     + Global.AppDomain);
        QCOMPARE(dict.GetString(QStringLiteral("NEWKEY"), QString()), QString());
        QCOMPARE(dict.EntryCount(), 1);
        QVERIFY(!dict.Dirty());
        QVERIFY(!dict.SaveDDICT());
    }

    void crlfIsExpandedByGetStringOnly()
    {
        cDDict dict(QStringLiteral("prog"));
        const QString text = QStringLiteral("one%CRLF%two");
        QCOMPARE(dict.GetString(QStringLiteral("K"), text), QStringLiteral("one\r\ntwo"));
        QCOMPARE(dict.GetCaption(QStringLiteral("frmX"), QStringLiteral("Label1"), text), text);
        QCOMPARE(dict.GetDD(QStringLiteral("frmX"), QStringLiteral("Label1"), 2, text, false), text);
    }

    void getStringCachesTheLastKeyOfAClass()
    {
        cDDict dict(QStringLiteral("prog"));
        QCOMPARE(dict.GetString(QStringLiteral("K"), QStringLiteral("first")), QStringLiteral("first"));
        QCOMPARE(dict.GetString(QStringLiteral("K"), QStringLiteral("second")), QStringLiteral("first"));
        QCOMPARE(dict.GetString(QStringLiteral("K"), QStringLiteral("other class"), QStringLiteral("frmX")),
                 QStringLiteral("other class"));
        QCOMPARE(dict.GetString(QString(), QStringLiteral("empty key")), QStringLiteral("empty key"));
    }

    void translationModeReadsEntriesByComposedKey()
    {
        WriteDictionary("[POSTVANE-CONSOLE]$String.NOTCONNECTED.0\tNicht verbunden mit %APPNAME%\n"
                        "[POSTVANE-CONSOLE]frmLogin.cmdOK.3\tAnmelden\r\n"
                        "[POSTVANE-CONSOLE]frmLogin.Caption.0\t\n"
                        "[OTHERPROGRAM]frmLogin.cmdOK.3\tWrong section\n");
        cDDict dict(QStringLiteral("postvane-console"));
        dict.TranslationMode = QStringLiteral("DE");
        QCOMPARE(dict.SectionPrefix(), QStringLiteral("[POSTVANE-CONSOLE]"));
        QCOMPARE(dict.EntryCount(), 4);

        QCOMPARE(dict.GetString(QStringLiteral("NOTCONNECTED"), QStringLiteral("Not Connected")),
                 QStringLiteral("Nicht verbunden mit ") + Global.ProductName);
        QCOMPARE(dict.GetDD(QStringLiteral("frmLogin"), QStringLiteral("cmdOK"), 3, QStringLiteral("OK"), false),
                 QStringLiteral("Anmelden"));
        QCOMPARE(dict.GetCaption(QStringLiteral("frmLogin"), QStringLiteral("Caption"), QStringLiteral("Login")),
                 QString());
        QVERIFY(!dict.Dirty());
    }

    void unknownKeysAreLearnedAndSavedSorted()
    {
        WriteDictionary("[PROG]$String.AAA.0\tA\n"
                        "[PROG]$String.ZZZ.0\tZ\n");
        {
            cDDict dict(QStringLiteral("prog"));
            dict.TranslationMode = QStringLiteral("1");
            QCOMPARE(dict.GetString(QStringLiteral("MMM"), QStringLiteral("Hello %APPNAME%")),
                     QStringLiteral("Hello ") + Global.ProductName);
            QVERIFY(dict.Dirty());
            QCOMPARE(dict.EntryCount(), 3);
            QVERIFY(dict.SaveDDICT());
            QVERIFY(!dict.Dirty());
            QVERIFY(!dict.SaveDDICT());
        }
        QCOMPARE(DictionaryLines(), (QStringList{QStringLiteral("[PROG]$String.AAA.0\tA"),
                                                 QStringLiteral("[PROG]$String.MMM.0\tHello %APPNAME%"),
                                                 QStringLiteral("[PROG]$String.ZZZ.0\tZ")}));

        cDDict reread(QStringLiteral("prog"));
        reread.TranslationMode = QStringLiteral("1");
        QCOMPARE(reread.GetString(QStringLiteral("MMM"), QStringLiteral("changed")),
                 QStringLiteral("Hello ") + Global.ProductName);
        QVERIFY(!reread.Dirty());
    }

    void overwriteReplacesTheEntry()
    {
        WriteDictionary("[PROG]frmX.Label1.0\told\n");
        cDDict dict(QStringLiteral("prog"));
        dict.TranslationMode = QStringLiteral("1");
        QCOMPARE(dict.GetDD(QStringLiteral("frmX"), QStringLiteral("Label1"), 0, QStringLiteral("new"), false),
                 QStringLiteral("old"));
        QVERIFY(!dict.Dirty());
        QCOMPARE(dict.GetDD(QStringLiteral("frmX"), QStringLiteral("Label1"), 0, QStringLiteral("new"), true),
                 QStringLiteral("new"));
        QVERIFY(dict.Dirty());
        QCOMPARE(dict.EntryCount(), 1);
        QVERIFY(dict.SaveDDICT());
        QCOMPARE(DictionaryLines(), QStringList{QStringLiteral("[PROG]frmX.Label1.0\tnew")});
    }

    void learnedKeysAreNotSavedOutsideTranslationMode()
    {
        cDDict dict(QStringLiteral("prog"));
        dict.TranslationMode = QStringLiteral("1");
        dict.GetString(QStringLiteral("NEW"), QStringLiteral("text"));
        dict.TranslationMode.clear();
        QVERIFY(!dict.SaveDDICT());
        QVERIFY(!QFile::exists(DictionaryPath()));
    }

    void unusableFilesGiveDefaults_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("no tabs") << QByteArray("[PROG]$String.K.0 text\nno tab here\n\n");
        QByteArray noise(8192, '\0');
        QRandomGenerator random(20240611);
        for (char &byte : noise)
            byte = char(random.bounded(256));
        QTest::newRow("random bytes") << noise;
    }
    void unusableFilesGiveDefaults()
    {
        QFETCH(QByteArray, content);
        WriteDictionary(content);
        cDDict dict(QStringLiteral("prog"));
        dict.TranslationMode = QStringLiteral("1");
        if (!content.contains('\t'))
            QCOMPARE(dict.EntryCount(), 0);
        QCOMPARE(dict.GetString(QStringLiteral("K"), QStringLiteral("default")), QStringLiteral("default"));
        QVERIFY(dict.Dirty());
    }

    void badlyOrderedFileIsSearchedThrough()
    {
        QStringList keys;
        for (int i = 0; i < 60; ++i)
            keys << QStringLiteral("KEY%1").arg(i, 3, 10, QChar(u'0'));
        std::shuffle(keys.begin(), keys.end(), std::mt19937(7));
        QByteArray content;
        for (const QString &key : keys)
            content += "[PROG]$String." + key.toUtf8() + ".0\ttext of " + key.toUtf8() + "\n";
        WriteDictionary(content);

        cDDict dict(QStringLiteral("prog"));
        dict.TranslationMode = QStringLiteral("1");
        for (const QString &key : keys)
            QCOMPARE(dict.GetCaption(QStringLiteral("$String"), key, QStringLiteral("missing")),
                     QStringLiteral("text of ") + key);
        QVERIFY(!dict.Dirty());
        QCOMPARE(dict.EntryCount(), keys.size());
    }

    // With a key twice in the file the binary search and the scan find
    // different lines, which shows the direction the search takes: a key
    // below the middle entry moves the lower bound up.
    void binarySearchMovesUpForSmallerKeys()
    {
        WriteDictionary("[PROG]c.Z.0\tz\n"
                        "[PROG]c.K.0\tfound by the scan\n"
                        "[PROG]c.M.0\tm\n"
                        "[PROG]c.K.0\tfound by the binary search\n"
                        "[PROG]c.A.0\ta\n");
        cDDict dict(QStringLiteral("prog"));
        dict.TranslationMode = QStringLiteral("1");
        QCOMPARE(dict.GetCaption(QStringLiteral("c"), QStringLiteral("K"), QString()),
                 QStringLiteral("found by the binary search"));
    }

    void shellSortAgreesWithStdSort()
    {
        QRandomGenerator random(99);
        for (const int size : {0, 1, 2, 3, 4, 5, 13, 14, 40, 41, 500}) {
            QStringList data;
            for (int i = 0; i < size; ++i)
                data << RandomText(random);
            QStringList expected = data;
            std::sort(expected.begin(), expected.end(), [](const QString &a, const QString &b) {
                return QString::compare(a, b, Qt::CaseSensitive) < 0;
            });
            cDDict::ShellSort(data);
            QCOMPARE(data, expected);
        }
    }

    void processWideDictionaryIsSavedWhenReleased()
    {
        cDDict &first = DDict();
        QCOMPARE(&DDict(), &first);
        first.TranslationMode = QStringLiteral("1");
        first.GetString(QStringLiteral("LEARNED"), QStringLiteral("learned text"));
        ReleaseDDict();

        QVERIFY(DDict().TranslationMode.isEmpty());
        const QStringList lines = DictionaryLines();
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines.first().startsWith(DDict().SectionPrefix() + QStringLiteral("$String.LEARNED.0\t")));
        QVERIFY(lines.first().endsWith(QStringLiteral("\tlearned text")));
    }
};

POSTVANE_TEST(tst_cDDict)
#include "tst_cDDict.moc"
