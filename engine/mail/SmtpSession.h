#pragma once
#include "InboundMail.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

class QSslSocket;
class SmtpListener;

// One client of the SMTP listener, from the greeting to the close.
//
// Lines end in CR LF; a command line with a bare LF is refused, and a
// message holding one is refused whole at its end (a bare LF never ends
// the data, so nothing can be smuggled behind it). Commands may be
// pipelined: they are read in order, and reading rests while a message is
// being committed, so that replies keep the order of the commands. Lines
// longer than the limits are refused without being kept; so is a message
// over the size limit, which is read to its end and dropped. A client that
// goes away in the middle of a message leaves nothing behind.
class SmtpSession : public QObject
{
public:
    SmtpSession(SmtpListener &Listener, QSslSocket *Socket, bool ImplicitTls);
    ~SmtpSession() override;

    // The longest command line, and the longest line of a message
    // (998 characters and CR LF).
    static constexpr int MaxCommandLine = 4096;
    static constexpr int MaxTextLine = 1000;
    // Commands that are refused before the client is sent away.
    static constexpr int MaxErrors = 20;

private:
    enum class Phase { Command, Data, AuthPlain, AuthLoginUser, AuthLoginPassword };

    void Greet();
    void OnReadable();
    void ProcessInput();
    bool TakeLine(QByteArray &Line, bool &BareLF);
    void Command(const QByteArray &Line, bool BareLF);
    void DataLine(const QByteArray &Line, bool BareLF);
    void EndOfData();
    void AuthLine(const QByteArray &Line);

    void Ehlo(const QString &Argument, bool Extended);
    void MailFrom(const QString &Argument);
    void RcptTo(const QString &Argument);
    void Data();
    void StartTls();
    void Auth(const QString &Argument);
    void Authenticated(const QString &User, const QString &Password);

    void Reply(const QByteArray &Text);
    void Refuse(const QByteArray &Text);
    void Close(const QByteArray &Text);
    void ResetTransaction();
    bool Encrypted() const;
    bool AuthOffered() const;

    SmtpListener &m_listener;
    QSslSocket *m_socket;
    QTimer m_idle;
    QByteArray m_in;
    Phase m_phase = Phase::Command;
    bool m_waiting = false;     // a message is being committed
    bool m_discarding = false;  // the rest of an over-long line is dropped
    bool m_closing = false;
    int m_errors = 0;

    QString m_helo;
    QString m_user;
    QString m_loginUser;
    bool m_hasSender = false;
    InboundMail m_mail;
    // Faults of the message being read, answered at its end.
    bool m_overSize = false;
    bool m_bareLF = false;
    bool m_longLine = false;
    qint64 m_declaredSize = 0;
};
