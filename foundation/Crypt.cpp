#include "Crypt.h"
#include "Startup.h"

#include <QCryptographicHash>
#include <QUrl>
#include <openssl/evp.h>

#include <memory>

namespace {

// 55 characters; changing it makes every stored "enc:" value unreadable.
const QString BuiltInPassPhrase = QStringLiteral("Postvane/Halvarsoft:fragment-cipher#2026!kx7Qm4Zr9Tw2Lb");
static_assert(sizeof("Postvane/Halvarsoft:fragment-cipher#2026!kx7Qm4Zr9Tw2Lb") - 1 == 55);

QByteArray DeriveKey(const QString &passPhrase)
{
    return QCryptographicHash::hash(passPhrase.toUtf8(), QCryptographicHash::Sha256).left(16);
}

QByteArray KeyFor(const QString &key)
{
    if (!key.isEmpty())
        return DeriveKey(key);
    static const QByteArray builtIn = DeriveKey(BuiltInPassPhrase);
    return builtIn;
}

using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

// Runs AES-128-CBC with a zero IV one way; false on any OpenSSL failure,
// a wrong padding on decryption among them.
bool RunCipher(const QByteArray &key, const QByteArray &input, bool encrypt, QByteArray &output)
{
    CipherContext context(EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
    if (!context)
        return false;
    const unsigned char iv[16] = {};
    const auto *k = reinterpret_cast<const unsigned char *>(key.constData());
    if (EVP_CipherInit_ex(context.get(), EVP_aes_128_cbc(), nullptr, k, iv, encrypt ? 1 : 0) != 1)
        return false;
    output.resize(input.size() + 32);
    int written = 0;
    int last = 0;
    auto *out = reinterpret_cast<unsigned char *>(output.data());
    if (EVP_CipherUpdate(context.get(), out, &written, reinterpret_cast<const unsigned char *>(input.constData()),
                         int(input.size()))
        != 1)
        return false;
    if (EVP_CipherFinal_ex(context.get(), out + written, &last) != 1)
        return false;
    output.resize(written + last);
    return true;
}

} // namespace

QString EncryptText(const QString &Text, const QString &Key)
{
    QByteArray cipher;
    if (!RunCipher(KeyFor(Key), Text.toUtf8(), true, cipher)) {
        LogError(QStringLiteral("EncryptString"), QStringLiteral("The text could not be enciphered."));
        return QString();
    }
    return QString::fromLatin1(cipher.toPercentEncoding());
}

QString DecryptText(const QString &Text, const QString &Key)
{
    const QByteArray cipher = QByteArray::fromPercentEncoding(Text.toLatin1());
    QByteArray plain;
    if (cipher.isEmpty() || cipher.size() % 16 != 0 || !RunCipher(KeyFor(Key), cipher, false, plain)) {
        LogError(QStringLiteral("DecryptString"), QStringLiteral("The text could not be deciphered."));
        return QString();
    }
    return QString::fromUtf8(plain);
}

QString URLEncode(const QString &Text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(Text));
}

QString URLDecode(const QString &Text)
{
    QByteArray bytes = Text.toUtf8();
    bytes.replace('+', ' ');
    return QString::fromUtf8(QByteArray::fromPercentEncoding(bytes));
}

QString MD5Hash(const QString &Text, const QString &Encoding)
{
    const QByteArray digest = QCryptographicHash::hash(Text.toLatin1(), QCryptographicHash::Md5);
    const QString encoding = Encoding.trimmed().toLower();
    if (encoding == QStringLiteral("base64"))
        return QString::fromLatin1(digest.toBase64());
    if (encoding == QStringLiteral("hex"))
        return QString::fromLatin1(digest.toHex().toUpper());
    LogError(QStringLiteral("MD5Hash"), QStringLiteral("Unknown encoding ") + Encoding);
    return QString();
}
