#pragma once
#include <QByteArray>
#include <QHash>
#include <QString>

class clsUser;

// The users' passwords, kept apart from the user records so that no password
// is ever part of a fragment the server sends or stores.
//
// The console sends the Base64 MD5 digest of a password in every request;
// that digest is the credential. What is kept is a verifier of it:
// "pbkdf2-sha256$iterations$salt$hash" (PBKDF2-HMAC-SHA256 over the digest's
// text, 16 random bytes of salt, salt and hash in Base64). A request passes
// when its password is the digest, or the plain password whose digest it is.
// Accepted texts are remembered for the process (their SHA-256), so that the
// slow derivation runs once per user and password, not once per request.
class UserPasswords
{
public:
    // The verifier of a password as a user fragment posts it: the digest
    // (24 Base64 characters ending "==") or the plain text.
    static QString MakeVerifier(const QString &Password);

    QString Verifier(const QString &UserID) const { return m_verifiers.value(UserID); }
    void Set(const QString &UserID, const QString &Verifier);
    void Remove(const QString &UserID);

    // True when the user's password is the empty one.
    bool HasEmptyPassword(const QString &UserID);

    // The user of exactly that name whose password it is; nullptr otherwise,
    // and always for an empty name or password.
    clsUser *Authenticate(const QString &Username, const QString &Password);

private:
    bool Verify(const QString &UserID, const QString &Supplied);

    QHash<QString, QString> m_verifiers;
    QHash<QString, QByteArray> m_accepted;
};
