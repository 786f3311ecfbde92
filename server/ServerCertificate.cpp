#include "ServerCertificate.h"
#include "foundation/GlobalBlock.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSysInfo>
#include <memory>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

namespace {

template <typename T, void (*Free)(T *)> struct Freer
{
    void operator()(T *p) const { Free(p); }
};
using X509Ptr = std::unique_ptr<X509, Freer<X509, X509_free>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY, EVP_PKEY_free>>;
using BioPtr = std::unique_ptr<BIO, Freer<BIO, BIO_free_all>>;
using BignumPtr = std::unique_ptr<BIGNUM, Freer<BIGNUM, BN_free>>;
using ExtensionPtr = std::unique_ptr<X509_EXTENSION, Freer<X509_EXTENSION, X509_EXTENSION_free>>;

QString OpenSSLError(const QString &What)
{
    char text[256] = {};
    ERR_error_string_n(ERR_get_error(), text, sizeof text);
    return What + QStringLiteral(": ") + QString::fromLatin1(text);
}

QByteArray BioText(BIO *bio)
{
    char *data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    return QByteArray(data, size);
}

bool AddExtension(X509 *certificate, int Nid, const QByteArray &Value)
{
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    ExtensionPtr extension(X509V3_EXT_conf_nid(nullptr, &context, Nid, Value.constData()));
    return extension && X509_add_ext(certificate, extension.get(), -1) == 1;
}

// "DNS:localhost,IP:127.0.0.1,IP:::1", and the host name when it is one.
QByteArray AlternativeNames()
{
    QByteArray names = "DNS:localhost,IP:127.0.0.1,IP:::1";
    static const QRegularExpression hostName(QStringLiteral("^[A-Za-z0-9]([A-Za-z0-9.-]*[A-Za-z0-9])?$"));
    const QString host = QSysInfo::machineHostName();
    if (host != QStringLiteral("localhost") && hostName.match(host).hasMatch())
        names += ",DNS:" + host.toLatin1();
    return names;
}

bool WriteFile(const QString &Path, const QByteArray &Data, bool Private)
{
    QSaveFile file(Path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (Private && !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return false;
    return file.write(Data) == Data.size() && file.commit();
}

} // namespace

QString ServerCertificate::CertificateFile()
{
    return Global.DataPath + QStringLiteral("ServerCertificate.pem");
}

QString ServerCertificate::KeyFile()
{
    return Global.DataPath + QStringLiteral("ServerKey.pem");
}

bool ServerCertificate::Load()
{
    const QString pfx = Global.Settings.SSLCertPFXFile.trimmed();
    if (!pfx.isEmpty())
        return LoadPFX(QDir(Global.DataPath).absoluteFilePath(pfx), Global.Settings.SSLCertStorePW);
    return LoadSelfSigned();
}

bool ServerCertificate::LoadPFX(const QString &Path, const QString &PassPhrase)
{
    QFile file(Path);
    if (!file.open(QIODevice::ReadOnly)) {
        LastError = QStringLiteral("The certificate file ") + Path + QStringLiteral(" cannot be read.");
        return false;
    }
    if (!QSslCertificate::importPkcs12(&file, &Key, &Certificate, &Chain, PassPhrase.toUtf8())) {
        LastError = QStringLiteral("The certificate file ") + Path
                    + QStringLiteral(" is no PKCS#12 file or its pass phrase (SSLCertStorePW) is wrong.");
        return false;
    }
    Origin = Path;
    return true;
}

bool ServerCertificate::LoadSelfSigned()
{
    if (!QFile::exists(CertificateFile()) || !QFile::exists(KeyFile())) {
        if (!MakeSelfSigned(Global.Settings.SSLCertSubject))
            return false;
    }
    QFile certificate(CertificateFile());
    QFile key(KeyFile());
    if (!certificate.open(QIODevice::ReadOnly) || !key.open(QIODevice::ReadOnly)) {
        LastError = QStringLiteral("The certificate or key file in the data folder cannot be read.");
        return false;
    }
    Certificate = QSslCertificate(&certificate, QSsl::Pem);
    Key = QSslKey(&key, QSsl::Rsa, QSsl::Pem);
    if (Certificate.isNull() || Key.isNull()) {
        LastError = QStringLiteral("The certificate or key file in the data folder is damaged; delete both to have "
                                   "a new pair made.");
        return false;
    }
    Origin = CertificateFile();
    return true;
}

bool ServerCertificate::MakeSelfSigned(const QString &Subject)
{
    KeyPtr key(EVP_RSA_gen(2048));
    X509Ptr certificate(X509_new());
    BignumPtr serial(BN_new());
    if (!key || !certificate || !serial) {
        LastError = OpenSSLError(QStringLiteral("Making a key"));
        return false;
    }
    X509_set_version(certificate.get(), 2);
    BN_rand(serial.get(), 63, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ANY);
    BN_to_ASN1_INTEGER(serial.get(), X509_get_serialNumber(certificate.get()));
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 10L * 366 * 24 * 3600);
    X509_set_pubkey(certificate.get(), key.get());

    X509_NAME *name = X509_get_subject_name(certificate.get());
    for (const QString &part : Subject.split(u',', Qt::SkipEmptyParts)) {
        const QByteArray field = part.section(u'=', 0, 0).trimmed().toUtf8();
        const QByteArray value = part.section(u'=', 1).trimmed().toUtf8();
        if (!X509_NAME_add_entry_by_txt(name, field.constData(), MBSTRING_UTF8,
                                        reinterpret_cast<const unsigned char *>(value.constData()), -1, -1, 0)) {
            LastError = QStringLiteral("SSLCertSubject \"") + Subject + QStringLiteral("\" holds an unknown field ")
                        + QString::fromUtf8(field) + u'.';
            return false;
        }
    }
    X509_set_issuer_name(certificate.get(), name);
    if (!AddExtension(certificate.get(), NID_basic_constraints, "critical,CA:FALSE")
        || !AddExtension(certificate.get(), NID_key_usage, "critical,digitalSignature,keyEncipherment")
        || !AddExtension(certificate.get(), NID_ext_key_usage, "serverAuth")
        || !AddExtension(certificate.get(), NID_subject_alt_name, AlternativeNames())
        || !X509_sign(certificate.get(), key.get(), EVP_sha256())) {
        LastError = OpenSSLError(QStringLiteral("Signing the certificate"));
        return false;
    }

    BioPtr certificateText(BIO_new(BIO_s_mem()));
    BioPtr keyText(BIO_new(BIO_s_mem()));
    if (!PEM_write_bio_X509(certificateText.get(), certificate.get())
        || !PEM_write_bio_PrivateKey(keyText.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr)) {
        LastError = OpenSSLError(QStringLiteral("Writing the certificate"));
        return false;
    }
    if (!WriteFile(KeyFile(), BioText(keyText.get()), true)
        || !WriteFile(CertificateFile(), BioText(certificateText.get()), false)) {
        LastError = QStringLiteral("The certificate cannot be written to the data folder.");
        return false;
    }
    return true;
}
