#pragma once
#include <QByteArray>
#include <QString>

// One HTTP(S) GET through libcurl, for the HTTP lookup and the feeds:
// redirects followed when asked, Basic or Digest log-on, the wait bounded by
// TimeoutSeconds and the content by MaxBytes. Error says why a fetch failed
// (the address without its password, libcurl's reason or the status line);
// it never holds the password.
class HttpFetch
{
public:
    enum Login { None = 0, Basic = 1, Digest = 2 };

    QString Url;
    bool Follow = true;
    int LogOn = None;
    QString User;
    QString Password;
    int TimeoutSeconds = 30;
    qint64 MaxBytes = 50 * 1024 * 1024;

    // True for a 2xx answer; its content in Content.
    bool Get();

    long Status = 0;
    QByteArray Content;
    QString ContentType;
    QString Error;

    // The address as a log shows it: without a password.
    QString Where() const { return Displayed(Url); }
    static QString Displayed(const QString &Url);
};
