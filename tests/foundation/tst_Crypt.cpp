#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "foundation/Crypt.h"
#include "foundation/Startup.h"

#include <QRegularExpression>
#include <QTest>

class tst_Crypt : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;

private slots:
    void init() { m_errors.clear(); }

    void cipherRoundTripsAndIsUrlSafe_data()
    {
        QTest::addColumn<QString>("plain");
        QTest::newRow("short") << QStringLiteral("a");
        QTest::newRow("block sized") << QStringLiteral("0123456789abcdef");
        QTest::newRow("wide") << QStringLiteral("p\u00e4ss \u5bc6\u7801 \U0001F511");
        QTest::newRow("markup") << QStringLiteral("<tag>&amp;</tag>\r\n");
    }
    void cipherRoundTripsAndIsUrlSafe()
    {
        QFETCH(QString, plain);
        const QString cipher = EncryptText(plain);
        QVERIFY(QRegularExpression(QStringLiteral("^[A-Za-z0-9._~%-]+$")).match(cipher).hasMatch());
        QCOMPARE(DecryptText(cipher), plain);
        // Zero IV and a fixed key: the same text always gives the same cipher.
        QCOMPARE(EncryptText(plain), cipher);
        QVERIFY(m_errors.isEmpty());
    }

    void keysAreNotInterchangeable()
    {
        const QString cipher = EncryptText(QStringLiteral("secret"), QStringLiteral("other phrase"));
        QCOMPARE(DecryptText(cipher, QStringLiteral("other phrase")), QStringLiteral("secret"));
        QVERIFY(cipher != EncryptText(QStringLiteral("secret")));
        QVERIFY(DecryptText(cipher) != QStringLiteral("secret"));
    }

    void badCipherTextGivesEmptyAndIsRecorded()
    {
        for (const QString &bad : {QStringLiteral("not%ZZcipher"), QStringLiteral("%00%01"), QString()}) {
            m_errors.clear();
            QCOMPARE(DecryptText(bad), QString());
            QCOMPARE(m_errors.size(), 1);
            QVERIFY(m_errors.first().endsWith(QStringLiteral("FROM DecryptString")));
        }
    }

    void md5KnownDigests()
    {
        QCOMPARE(MD5Hash(QString()), QStringLiteral("1B2M2Y8AsgTpgAmY7PhCfg=="));
        QCOMPARE(MD5Hash(QStringLiteral("password")), QStringLiteral("X03MO1qnZdYdgyfeuILPmQ=="));
        QCOMPARE(MD5Hash(QStringLiteral("password"), QStringLiteral("hex")),
                 QStringLiteral("5F4DCC3B5AA765D61D8327DEB882CF99"));
        // Digest over single-byte text: "é" is one byte, 0xE9.
        QCOMPARE(MD5Hash(QStringLiteral("\u00e9"), QStringLiteral("hex")),
                 QStringLiteral("3406877694691DDD1DFB0ACA54681407"));
        QCOMPARE(MD5Hash(QStringLiteral("x"), QStringLiteral("rot13")), QString());
        QVERIFY(m_errors.last().endsWith(QStringLiteral("FROM MD5Hash")));
    }

    void urlEncodingRoundTrips()
    {
        const QString text = QStringLiteral("a b&c=d+e/f?\u00e9\u4e2d%");
        const QString encoded = URLEncode(text);
        QCOMPARE(encoded, QStringLiteral("a%20b%26c%3Dd%2Be%2Ff%3F%C3%A9%E4%B8%AD%25"));
        QCOMPARE(URLDecode(encoded), text);
        QCOMPARE(URLDecode(QStringLiteral("a+b%2Bc")), QStringLiteral("a b+c"));
    }
};

POSTVANE_TEST(tst_Crypt)
#include "tst_Crypt.moc"
