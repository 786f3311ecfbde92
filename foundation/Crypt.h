#pragma once
#include <QString>

// Symmetric text cipher for the "enc:" values of configuration fragments.
//
// Cipher: AES-128 in CBC mode with an all-zero initialisation vector and
// PKCS#7 padding (OpenSSL EVP). The plain text is encoded as UTF-8 before it
// is enciphered and decoded from UTF-8 after.
//
// Key: derived from a pass phrase as the first 16 bytes of the SHA-256 digest
// of the phrase's UTF-8 bytes. With an empty Key argument the built-in pass
// phrase of 55 characters is used, the same in every program of the product,
// so that values enciphered by the server read in the console and back. The
// key of the built-in phrase is derived once per process.
//
// Output: the cipher bytes percent-encoded ("url" encoding): letters, digits
// and "-._~" stand as they are, every other byte as "%XX".
//
// Failures are recorded as "EncryptString" and "DecryptString" and give an
// empty text.
QString EncryptText(const QString &Text, const QString &Key = QString());
QString DecryptText(const QString &Text, const QString &Key = QString());

// Percent encoding of a text's UTF-8 bytes; decoding also reads "+" as a blank.
QString URLEncode(const QString &Text);
QString URLDecode(const QString &Text);

// MD5 digest of the text in the single-byte code page (Latin-1), in the named
// encoding: "base64" (standard alphabet, padded) or "hex" (upper case).
// Errors, an unknown encoding among them, are recorded as "MD5Hash" and give
// an empty text.
QString MD5Hash(const QString &Text, const QString &Encoding = QStringLiteral("base64"));
