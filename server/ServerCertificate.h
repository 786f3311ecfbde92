#pragma once
#include <QList>
#include <QSslCertificate>
#include <QSslKey>
#include <QString>

// The certificate and private key the web service presents.
//
// With SSLCertPFXFile set, the PKCS#12 file it names (a bare name stands in
// the data folder), opened with SSLCertStorePW. Otherwise a self-signed pair
// kept in the data folder: ServerCertificate.pem and ServerKey.pem (mode
// 0600), made on the first start with the subject of SSLCertSubject
// ("CN=...,O=..."), an RSA key of 2048 bits, valid for ten years, for the
// names localhost, 127.0.0.1, ::1 and this machine's host name.
class ServerCertificate
{
public:
    bool Load();

    QSslCertificate Certificate;
    QSslKey Key;
    QList<QSslCertificate> Chain;
    // Where the pair came from, for the log; the failure after a false Load.
    QString Origin;
    QString LastError;

    static QString CertificateFile();
    static QString KeyFile();

private:
    bool LoadPFX(const QString &Path, const QString &PassPhrase);
    bool LoadSelfSigned();
    bool MakeSelfSigned(const QString &Subject);
};
