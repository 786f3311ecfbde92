#include "MailFixture.h"
#include "model/clsAccount.h"
#include "model/clsUser.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTcpServer>
#include <QTest>
#include <QUuid>

namespace {

// The keys of the settings file in the order the server reads them.
const QStringList SettingsOrder{
    QStringLiteral("AdminEmail"), QStringLiteral("DefaultFromAddress"), QStringLiteral("MailServerListenIncoming"), QStringLiteral("MailServerBindTo"),
    QStringLiteral("MailServerHostName"), QStringLiteral("MailServerPort"), QStringLiteral("MailServerPortSSL"),
    QStringLiteral("MailServerRelayIP"), QStringLiteral("MailServerRequireAuthentication"),
    QStringLiteral("MailServerAuthenticationTypes"), QStringLiteral("MailServerMaxMessageSize"),
    QStringLiteral("MailServerUseSmartHost"), QStringLiteral("MailServerSmartHostPassword"),
    QStringLiteral("MailServerSmartHostIP"), QStringLiteral("MailServerSmartHostPort"),
    QStringLiteral("MailServerSmartHostSSLOption"), QStringLiteral("MailServerSmartHostUserName")};

} // namespace

// Below 32768: the settings keep ports as 16-bit signed numbers.
quint16 MailFixture::FreePort()
{
    for (;;) {
        const quint16 port = quint16(20000 + QRandomGenerator::global()->bounded(12000));
        QTcpServer probe;
        if (probe.listen(QHostAddress::LocalHost, port))
            return port;
    }
}

bool MailFixture::Start()
{
    SmtpPort = FreePort();
    do
        SmtpsPort = FreePort();
    while (SmtpsPort == SmtpPort);
    QMap<QString, QString> values = Settings;
    values.insert(QStringLiteral("MailServerListenIncoming"), QStringLiteral("-1"));
    values.insert(QStringLiteral("MailServerHostName"), QStringLiteral("mx.postvane.test"));
    values.insert(QStringLiteral("MailServerPort"), QString::number(SmtpPort));
    values.insert(QStringLiteral("MailServerPortSSL"), QString::number(SmtpsPort));
    if (!values.contains(QStringLiteral("MailServerBindTo")))
        values.insert(QStringLiteral("MailServerBindTo"), QStringLiteral("127.0.0.1"));
    QString text = QStringLiteral("<GlobalSettings>");
    for (const QString &key : SettingsOrder)
        if (values.contains(key))
            text += u'<' + key + u'>' + values.value(key).toHtmlEscaped() + QStringLiteral("</") + key + u'>';
    text += QStringLiteral("</GlobalSettings>");
    QFile file(Server.DataPath() + QStringLiteral("SETTINGS.XML"));
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0) {
        Problem = QStringLiteral("cannot write the settings");
        return false;
    }
    file.close();
    if (!Server.Start()) {
        Problem = Server.Problem;
        return false;
    }
    QDeadlineTimer listening(10000);
    while (!Log(QStringLiteral("SMTP.LOG")).contains(QStringLiteral("Listening for mail on")) && !listening.hasExpired())
        QTest::qWait(50);
    if (listening.hasExpired()) {
        Problem = QStringLiteral("the mail server does not listen: ") + Log(QStringLiteral("SMTP.LOG"));
        return false;
    }
    static const QRegularExpression id(QStringLiteral("<ID>([^<]+)</ID>"));
    OrganizationID = id.match(Server.Get(QStringLiteral("getorganizations.xml")).Text()).captured(1);
    if (OrganizationID.isEmpty())
        Problem = QStringLiteral("no organization");
    return !OrganizationID.isEmpty();
}

QString MailFixture::PostAccount(const QString &ID, const QString &Domains, const QString &Aliases)
{
    clsAccount account;
    account.AccountID = ID;
    account.OrganizationID = OrganizationID;
    account.Name = ID;
    account.Enabled = true;
    account.MailServer = true;
    account.MailServerDomain = Domains;
    account.MailServerAliases = Aliases;
    const HttpReply reply = Server.Post(QStringLiteral("postaccount.htm?accountid=") + ID, account.XML().toUtf8());
    // The mail server reads a changed configuration at its next tick.
    QTest::qWait(600);
    return reply.Status == 200 ? reply.Text().trimmed() : QString::number(reply.Status);
}

QString MailFixture::PostUser(const QString &ID, const QString &Name, const QString &Password)
{
    clsUser user;
    user.ID = ID;
    user.Username = Name;
    user.Password = Password;
    user.OrganizationID = OrganizationID;
    const HttpReply reply = Server.Post(QStringLiteral("postuser.htm?userid=") + ID, user.XML().toUtf8());
    QTest::qWait(600);
    return reply.Status == 200 ? reply.Text().trimmed() : QString::number(reply.Status);
}

QVariant MailFixture::Scalar(const QString &File, const QString &SQL)
{
    const QString name = QUuid::createUuid().toString();
    QVariant value;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(Server.DataPath() + File);
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        if (db.open()) {
            QSqlQuery query(db);
            if (query.exec(SQL) && query.next())
                value = query.value(0);
        }
    }
    QSqlDatabase::removeDatabase(name);
    return value;
}

qint64 MailFixture::WaitForCount(const QString &File, const QString &SQL, qint64 Count, int TimeoutMs)
{
    QDeadlineTimer deadline(TimeoutMs);
    qint64 found = Scalar(File, SQL).toLongLong();
    while (found < Count && !deadline.hasExpired()) {
        QTest::qWait(100);
        found = Scalar(File, SQL).toLongLong();
    }
    return found;
}

QString MailFixture::Log(const QString &File)
{
    QFile file(Server.DataPath() + File);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

int MailFixture::Swaks(const QStringList &Arguments, QString *Output)
{
    QProcess swaks;
    swaks.setProcessChannelMode(QProcess::MergedChannels);
    swaks.start(QStringLiteral("swaks"), QStringList{QStringLiteral("--server"),
                                                     QStringLiteral("127.0.0.1:") + QString::number(SmtpPort)}
                                             + Arguments);
    if (!swaks.waitForFinished(30000)) {
        swaks.kill();
        swaks.waitForFinished();
    }
    if (Output)
        *Output = QString::fromUtf8(swaks.readAll());
    return swaks.exitStatus() == QProcess::NormalExit ? swaks.exitCode() : -1;
}

bool SmtpClient::Connect(quint16 Port, const QString &From, bool Tls)
{
    Socket.bind(QHostAddress(From));
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);
    Socket.setSslConfiguration(tls);
    if (Tls)
        Socket.connectToHostEncrypted(QStringLiteral("127.0.0.1"), Port);
    else
        Socket.connectToHost(QStringLiteral("127.0.0.1"), Port);
    if (!(Tls ? Socket.waitForEncrypted(10000) : Socket.waitForConnected(10000)))
        return false;
    Greeting = Reply();
    return Greeting.startsWith("220 ");
}

void SmtpClient::Send(const QByteArray &Bytes)
{
    Socket.write(Bytes);
    Socket.flush();
}

QByteArray SmtpClient::Reply(int TimeoutMs)
{
    QDeadlineTimer deadline(TimeoutMs);
    static const QRegularExpression last(QStringLiteral("(^|\\n)\\d{3} [^\\n]*\\r\\n"));
    while (!deadline.hasExpired()) {
        const QRegularExpressionMatch match = last.match(QString::fromLatin1(m_buffer));
        if (match.hasMatch()) {
            const qsizetype end = match.capturedEnd();
            const QByteArray reply = m_buffer.left(end);
            m_buffer.remove(0, end);
            return reply;
        }
        if (Socket.bytesAvailable() == 0 && !Socket.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime()))))
            break;
        m_buffer += Socket.readAll();
    }
    return QByteArray();
}

bool SmtpClient::StartTls()
{
    if (Code(Command("STARTTLS")) != 220)
        return false;
    Socket.startClientEncryption();
    return Socket.waitForEncrypted(10000);
}

bool SmtpClient::Closed(int TimeoutMs)
{
    QDeadlineTimer deadline(TimeoutMs);
    while (Socket.state() != QAbstractSocket::UnconnectedState && !deadline.hasExpired()) {
        if (Socket.waitForReadyRead(50))
            m_buffer += Socket.readAll();
    }
    return Socket.state() == QAbstractSocket::UnconnectedState;
}
