#include "UserPasswords.h"
#include "foundation/Crypt.h"
#include "model/GlobalCollections.h"

#include <QCryptographicHash>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <openssl/evp.h>

namespace {

constexpr int Iterations = 50000;
const QString Scheme = QStringLiteral("pbkdf2-sha256");

QByteArray Derive(const QString &Digest, const QByteArray &Salt, int Rounds)
{
    const QByteArray secret = Digest.toUtf8();
    QByteArray hash(32, '\0');
    PKCS5_PBKDF2_HMAC(secret.constData(), int(secret.size()), reinterpret_cast<const unsigned char *>(Salt.constData()),
                      int(Salt.size()), Rounds, EVP_sha256(), int(hash.size()),
                      reinterpret_cast<unsigned char *>(hash.data()));
    return hash;
}

QString VerifierOf(const QString &Digest)
{
    QByteArray salt(16, '\0');
    QRandomGenerator::system()->fillRange(reinterpret_cast<quint32 *>(salt.data()), salt.size() / 4);
    return Scheme + u'$' + QString::number(Iterations) + u'$' + QString::fromLatin1(salt.toBase64()) + u'$'
           + QString::fromLatin1(Derive(Digest, salt, Iterations).toBase64());
}

bool Matches(const QString &Verifier, const QString &Digest)
{
    const QStringList parts = Verifier.split(u'$');
    if (parts.size() != 4 || parts.at(0) != Scheme)
        return false;
    const int rounds = parts.at(1).toInt();
    if (rounds < 1)
        return false;
    const QByteArray salt = QByteArray::fromBase64(parts.at(2).toLatin1());
    const QByteArray expected = QByteArray::fromBase64(parts.at(3).toLatin1());
    const QByteArray actual = Derive(Digest, salt, rounds);
    return actual.size() == expected.size() && CRYPTO_memcmp(actual.constData(), expected.constData(), actual.size()) == 0;
}

bool IsDigest(const QString &Password)
{
    static const QRegularExpression digest(QStringLiteral("^[A-Za-z0-9+/]{22}==$"));
    return digest.match(Password).hasMatch();
}

QByteArray Fingerprint(const QString &Supplied)
{
    return QCryptographicHash::hash(Supplied.toUtf8(), QCryptographicHash::Sha256);
}

} // namespace

QString UserPasswords::MakeVerifier(const QString &Password)
{
    return VerifierOf(IsDigest(Password) ? Password : MD5Hash(Password));
}

void UserPasswords::Set(const QString &UserID, const QString &Verifier)
{
    m_verifiers.insert(UserID, Verifier);
    m_accepted.remove(UserID);
}

void UserPasswords::Remove(const QString &UserID)
{
    m_verifiers.remove(UserID);
    m_accepted.remove(UserID);
}

clsUser *UserPasswords::Authenticate(const QString &Username, const QString &Password)
{
    if (Username.isEmpty() || Password.isEmpty())
        return nullptr;
    for (clsUser *user : Users())
        if (user->Username == Username)
            return Verify(user->ID, Password) ? user : nullptr;
    // The same work as for a known name, so that timing tells no names apart.
    static const QString unknown = VerifierOf(QString());
    Matches(unknown, Password);
    Matches(unknown, MD5Hash(Password));
    return nullptr;
}

bool UserPasswords::HasEmptyPassword(const QString &UserID)
{
    return Verify(UserID, MD5Hash(QString()));
}

bool UserPasswords::Verify(const QString &UserID, const QString &Supplied)
{
    const QByteArray fingerprint = Fingerprint(Supplied);
    if (m_accepted.value(UserID) == fingerprint)
        return true;
    const QString verifier = m_verifiers.value(UserID);
    if (!Matches(verifier, Supplied) && !Matches(verifier, MD5Hash(Supplied)))
        return false;
    m_accepted.insert(UserID, fingerprint);
    return true;
}
