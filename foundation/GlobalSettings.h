#pragma once
#include <QString>
#include <QStringList>
#include <QtGlobal>

// The flat record that describes how the server behaves. It is saved as
// SETTINGS.XML in DataPath and travels between console and server as the
// same fragment. The keys stand in the order the reader asks for them; the
// member initialisers are the defaults that are constants, the others are
// set by LoadGlobalSettings.
struct GlobalSettings
{
    QString AdminEmail;
    qint16 ProxyPort = 0;
    QString ProxyServer;
    bool SendDailyLogToAdmin = true;
    bool SendErrorsToAdmin = false;
    QString DefaultFromAddress;
    bool ValidateOutgoing = true;
    QString FirewallIP;
    QString FirewallPassword; // secret
    qint16 FirewallPort = 0;
    qint16 FirewallType = 0;
    QString FirewallUser;
    bool MailServerListenIncoming = false;
    bool MailServerAutoWhiteList = true;
    bool MailServerAutoWhiteListUsers = true;
    QString MailServerBindTo;
    QString MailServerDNSServer;
    bool MailServerGreyListing = false;
    QString MailServerHostName;
    qint16 MailServerPort = 25;
    qint16 MailServerPortSSL = 465;
    bool MailServerRejectNoMX = true;
    QString MailServerRelayIP = QStringLiteral("127.0.0.1;192.168.0.*;10.*");
    bool MailServerRequireAuthentication = false;
    QString MailServerScriptInBound;
    bool MailServerScriptInBoundEnabled = false;
    QString MailServerScriptOutBound;
    bool MailServerScriptOutBoundEnabled = false;
    qint16 MailServerIMAPPort = 143;
    qint16 MailServerPOP3Port = 110;
    bool MailServerUseRBL = true;
    QString MailServerRBLList = QStringLiteral("zen.spamhaus.org;bl.spamcop.net");
    bool MailServerSpam = true;
    bool MailServerSpamAutoIndex = false;
    qint16 MailServerSpamDeleteDays = 30;
    QString MailServerSpamFolder;
    bool MailServerSpamMove = true;
    qint16 MailServerSpamRefuseOption = 0;
    qint16 MailServerSpamRefuseScore = 9;
    qint16 MailServerSpamScore = 6;
    bool MailServerSpamScoreInSubject = true;
    bool MailServerSpamSURBL = false;
    qint16 MailServerSpamHTMLBlank = 4;
    qint16 MailServerSpamHTMLDiff = 2;
    QString MailServerBackupDomains;
    qint16 MailServerAuthenticationTypes = 0;
    qint32 MailServerMaxMessageSize = 10000000;
    bool MailServerUseSmartHost = false;
    QString MailServerSmartHostPassword; // secret
    QString MailServerSmartHostIP;
    qint16 MailServerSmartHostPort = 25;
    qint16 MailServerSmartHostSSLOption = 0;
    QString MailServerSmartHostUserName;
    bool MailServerOutgoingSendClient = true;
    bool Themes = false;
    qint16 ThemeFontSize = 0;
    bool RightToLeft = false;
    qint16 LogLevel = 2;
    QString SMSAccount;
    QString SMSPassword; // plain in the fragment, unlike the secrets
    QString SMSFrom;
    bool Archive = false;
    qint16 ArchiveDays = 365;
    bool DeleteLog = true;
    qint16 DeleteLogDays = 90;
    qint16 FaxPort = 0;
    qint16 WebAccessPort = 8855;
    QString WebAccessBindTo;
    QString WebServicesURL;
    QString SSLCertPFXFile;
    QString SSLCertStore = QStringLiteral("MY");
    QString SSLCertStorePW; // secret
    QString SSLCertSubject;
    bool MessageStoreAzure = false;
    QString MessageStoreAzureAccount;
    QString MessageStoreAzureKey; // secret

    // Not in the file: per-user values and the local time-zone offset
    // ("+hh:mm" or "-hh:mm").
    int Theme = 1;
    bool AskExit = true;
    QString TimeZoneOffset;

    // Derived while loading.
    bool DebugLogging = false; // LogLevel 4
    bool FileFound = false;    // SETTINGS.XML was read

    // Text tables that other parts look names up in.
    QStringList SystemTokens;          // "%Date%", "%Time%", ...
    QStringList ReservedWords;         // lower case
    QStringList ExchangeContactFields; // the editor grid of an Exchange contact
    QStringList OutlookContactFields;

    bool operator==(const GlobalSettings &) const = default;
};

// Fills Global.Settings: the defaults, the text tables, then the keys of the
// given fragment (FromText) or of SETTINGS.XML. Reading the file also fills an
// empty mail server host name and DNS server from the machine and writes the
// file when there was none. True when the keys came from a non-empty text,
// false when only the defaults stand.
bool LoadGlobalSettings(bool FromText = false, const QString &Text = QString());

// Writes Global.Settings as the GlobalSettings fragment and mirrors a few
// values to the per-machine "Settings" section. Returns the fragment when
// ToText, otherwise writes SETTINGS.XML and returns an empty text.
QString SaveGlobalData(bool ToText = false);

// Fills Global.Settings.ReservedWords: the built-in SQL words, then every
// non-empty line of SQLRESERVED.TXT in AppPath, all in lower case.
void LoadReservedWords();
bool IsReservedWord(const QString &Word);

// The first "nameserver" of a resolver configuration file; empty when none.
QString SystemDNSServer(const QString &ResolvConf = QStringLiteral("/etc/resolv.conf"));
