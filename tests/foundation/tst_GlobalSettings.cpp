#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "foundation/GlobalSettings.h"
#include "foundation/Registry.h"
#include "foundation/Startup.h"

#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

class tst_GlobalSettings : public QObject
{
    Q_OBJECT

    GlobalBlock m_saved;
    std::unique_ptr<QTemporaryDir> m_dir;
    ErrorCapture m_errors;

    QString SettingsPath() const { return Global.DataPath + QStringLiteral("SETTINGS.XML"); }

    static QByteArray ReadFile(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static void WriteFile(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    static void ClearStores()
    {
        QFile::remove(MachineSettingsFile());
        QFile::remove(UserSettingsFile());
    }

    // Every key away from its default; booleans that default to true are false.
    static GlobalSettings NonDefaultSettings()
    {
        LoadGlobalSettings(true, QString());
        GlobalSettings s = Global.Settings;
        s.SendErrorsToAdmin = s.MailServerListenIncoming = s.MailServerGreyListing = s.MailServerRequireAuthentication =
            s.MailServerScriptInBoundEnabled = s.MailServerScriptOutBoundEnabled = s.MailServerSpamAutoIndex =
            s.MailServerSpamSURBL = s.MailServerUseSmartHost = s.Themes = s.RightToLeft = s.Archive =
            s.MessageStoreAzure = true;
        s.SendDailyLogToAdmin = s.ValidateOutgoing = s.MailServerAutoWhiteList = s.MailServerAutoWhiteListUsers =
            s.MailServerRejectNoMX = s.MailServerUseRBL = s.MailServerSpam = s.MailServerSpamMove =
            s.MailServerSpamScoreInSubject = s.MailServerOutgoingSendClient = s.DeleteLog = false;
        s.AdminEmail = QStringLiteral("ops@example.org");
        s.ProxyPort = 3128;
        s.ProxyServer = QStringLiteral("proxy.example.org");
        s.DefaultFromAddress = QStringLiteral("\"No Reply\" <noreply@example.org>");
        s.FirewallIP = QStringLiteral("10.1.1.1");
        s.FirewallPassword = QStringLiteral("fw <secret> & pass");
        s.FirewallPort = 1080;
        s.FirewallType = 2;
        s.FirewallUser = QStringLiteral("fwuser");
        s.MailServerBindTo = QStringLiteral("192.168.1.5");
        s.MailServerDNSServer = QStringLiteral("9.9.9.9");
        s.MailServerHostName = QStringLiteral("mx.example.org");
        s.MailServerPort = 2525;
        s.MailServerPortSSL = 2465;
        s.MailServerRelayIP = QStringLiteral("10.0.0.*");
        s.MailServerScriptInBound = QStringLiteral("Sub Main()\r\n\tPostvaneAccept = True\r\nEnd Sub");
        s.MailServerScriptOutBound = QStringLiteral("Sub Main()\r\nEnd Sub");
        s.MailServerIMAPPort = 1143;
        s.MailServerPOP3Port = 1110;
        s.MailServerRBLList = QStringLiteral("rbl.example.org");
        s.MailServerSpamDeleteDays = 7;
        s.MailServerSpamFolder = QStringLiteral("Junk");
        s.MailServerSpamRefuseOption = 1;
        s.MailServerSpamRefuseScore = 12;
        s.MailServerSpamScore = 8;
        s.MailServerSpamHTMLBlank = 5;
        s.MailServerSpamHTMLDiff = 3;
        s.MailServerBackupDomains = QStringLiteral("backup.example.org");
        s.MailServerAuthenticationTypes = 3;
        s.MailServerMaxMessageSize = 52428800;
        s.MailServerSmartHostPassword = QStringLiteral("smart pass");
        s.MailServerSmartHostIP = QStringLiteral("smtp.example.org");
        s.MailServerSmartHostPort = 587;
        s.MailServerSmartHostSSLOption = 2;
        s.MailServerSmartHostUserName = QStringLiteral("smartuser");
        s.ThemeFontSize = 11;
        s.LogLevel = 3;
        s.SMSAccount = QStringLiteral("smsaccount");
        s.SMSPassword = QStringLiteral("sms-plain-pw");
        s.SMSFrom = QStringLiteral("+441234");
        s.ArchiveDays = 30;
        s.DeleteLogDays = 14;
        s.FaxPort = 4;
        s.WebAccessPort = 9443;
        s.WebAccessBindTo = QStringLiteral("127.0.0.2");
        s.WebServicesURL = QStringLiteral("https://mail.example.org/pv/");
        s.SSLCertPFXFile = QStringLiteral("/etc/pv/cert.pfx");
        s.SSLCertStore = QStringLiteral("ROOT");
        s.SSLCertStorePW = QStringLiteral("pfx pass");
        s.SSLCertSubject = QStringLiteral("CN=mail.example.org");
        s.MessageStoreAzureAccount = QStringLiteral("azaccount");
        s.MessageStoreAzureKey = QStringLiteral("az key==");
        return s;
    }

    static QString TextOf(const GlobalSettings &settings)
    {
        Global.Settings = settings;
        return SaveGlobalData(true);
    }

private slots:
    void init()
    {
        m_saved = Global;
        m_errors.clear();
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        Global.DataPath = m_dir->path() + QStringLiteral("/data/");
        Global.AppPath = m_dir->path() + u'/';
        QVERIFY(MakePath(Global.DataPath));
        Global.FirstRun = false;
        ClearStores();
    }
    void cleanup()
    {
        ClearStores();
        m_dir.reset();
        Global = m_saved;
        QVERIFY2(m_errors.isEmpty(), qPrintable(m_errors.join(u'\n')));
    }

    void roundTripKeepsEveryKeyButTheBindAddress()
    {
        GlobalSettings expected = NonDefaultSettings();
        const QString text = TextOf(expected);
        QVERIFY(text.startsWith(QStringLiteral("<GlobalSettings>\n")));
        QVERIFY(text.indexOf(QStringLiteral("<WebAccessBindTo>")) < text.indexOf(QStringLiteral("<WebAccessPort>")));

        QVERIFY(LoadGlobalSettings(true, text));
        // The reader asks for the port first, so the bind address written
        // ahead of it lies behind the cursor.
        QVERIFY(Global.Settings.WebAccessBindTo.isEmpty());
        expected.WebAccessBindTo.clear();
        const bool same = Global.Settings == expected;
        const QString reread = SaveGlobalData(true);
        QCOMPARE(reread, TextOf(expected));
        QVERIFY(same);
    }

    void bindAddressSurvivesWithoutPort()
    {
        GlobalSettings settings = NonDefaultSettings();
        settings.WebAccessPort = 0;
        QVERIFY(LoadGlobalSettings(true, TextOf(settings)));
        QCOMPARE(Global.Settings.WebAccessBindTo, QStringLiteral("127.0.0.2"));
        QCOMPARE(Global.Settings.WebAccessPort, qint16(0));
    }

    void secretsAreEncipheredExceptSmsPassword()
    {
        const GlobalSettings settings = NonDefaultSettings();
        const QString text = TextOf(settings);
        const QList<std::pair<QString, QString>> secrets = {
            {QStringLiteral("FirewallPassword"), settings.FirewallPassword},
            {QStringLiteral("MailServerSmartHostPassword"), settings.MailServerSmartHostPassword},
            {QStringLiteral("SSLCertStorePW"), settings.SSLCertStorePW},
            {QStringLiteral("MessageStoreAzureKey"), settings.MessageStoreAzureKey},
        };
        for (const auto &[tag, plain] : secrets) {
            QVERIFY2(text.contains(u'<' + tag + QStringLiteral(">enc:")), qPrintable(tag));
            QVERIFY2(!text.contains(plain), qPrintable(tag));
        }
        QVERIFY(!text.contains(QStringLiteral("&lt;secret&gt;")));
        QVERIFY(text.contains(QStringLiteral("<SMSPassword>sms-plain-pw</SMSPassword>")));
    }

    void falseLeavesNoTagAndOverridesTrueDefault()
    {
        LoadGlobalSettings(true, QString());
        QVERIFY(Global.Settings.ValidateOutgoing);
        Global.Settings.ValidateOutgoing = false;
        const QString text = SaveGlobalData(true);
        QVERIFY(!text.contains(QStringLiteral("ValidateOutgoing")));
        QVERIFY(text.contains(QStringLiteral("<SendDailyLogToAdmin>-1</SendDailyLogToAdmin>")));

        QVERIFY(LoadGlobalSettings(true, text));
        QVERIFY(!Global.Settings.ValidateOutgoing);
        QVERIFY(Global.Settings.SendDailyLogToAdmin);
    }

    // The defaults that are derived from the machine, not just written down.
    void defaultsStandWithoutText()
    {
        QVERIFY(!LoadGlobalSettings(true, QString()));
        const GlobalSettings &s = Global.Settings;
        const QString host = QSysInfo::machineHostName();
        QVERIFY(s.AdminEmail.endsWith(u'@' + host));
        QVERIFY(s.AdminEmail.size() > host.size() + 1);
        QCOMPARE(s.DefaultFromAddress, s.AdminEmail);
        QCOMPARE(s.WebServicesURL, QStringLiteral("http://") + host + u'/' + Global.ProductName + u'/');
        QVERIFY(QRegularExpression(QStringLiteral("^[+-]\\d\\d:\\d\\d$")).match(s.TimeZoneOffset).hasMatch());
        QVERIFY(IsReservedWord(QStringLiteral("SeLeCt")));
    }

    void logLevelFourTurnsOnDebugLogging_data()
    {
        QTest::addColumn<QString>("level");
        QTest::addColumn<bool>("debug");
        QTest::newRow("4") << QStringLiteral("4") << true;
        QTest::newRow("3") << QStringLiteral("3") << false;
        QTest::newRow("absent") << QString() << false;
    }
    void logLevelFourTurnsOnDebugLogging()
    {
        QFETCH(QString, level);
        QFETCH(bool, debug);
        LoadGlobalSettings(true, QStringLiteral("<GlobalSettings><ProxyPort>1</ProxyPort><LogLevel>") + level
                                     + QStringLiteral("</LogLevel></GlobalSettings>"));
        QCOMPARE(Global.Settings.DebugLogging, debug);
    }

    void perUserValuesComeFromTheUserStore_data()
    {
        QTest::addColumn<int>("stored");
        QTest::addColumn<int>("theme");
        QTest::newRow("in range") << 5 << 5;
        QTest::newRow("above five") << 6 << 0;
    }
    void perUserValuesComeFromTheUserStore()
    {
        QFETCH(int, stored);
        QFETCH(int, theme);
        SaveUserSetting(Global.ProductName, QStringLiteral("Theme"), stored);
        SaveUserSetting(Global.ProductName, QStringLiteral("AskExit"), false);
        LoadGlobalSettings(true, QString());
        QCOMPARE(Global.Settings.Theme, theme);
        QVERIFY(!Global.Settings.AskExit);
    }

    void formerDefaultPortMovesOnlyOnFirstRun_data()
    {
        QTest::addColumn<bool>("firstRun");
        QTest::addColumn<bool>("fromText");
        QTest::addColumn<int>("port");
        QTest::newRow("first run, file") << true << false << 8855;
        QTest::newRow("later run, file") << false << false << 8005;
        QTest::newRow("first run, text") << true << true << 8005;
    }
    void formerDefaultPortMovesOnlyOnFirstRun()
    {
        QFETCH(bool, firstRun);
        QFETCH(bool, fromText);
        QFETCH(int, port);
        const QString text = QStringLiteral("<GlobalSettings>\n\t<WebAccessPort>8005</WebAccessPort>\n</GlobalSettings>\n");
        WriteFile(SettingsPath(), text.toUtf8());
        Global.FirstRun = firstRun;

        LoadGlobalSettings(fromText, text);
        QCOMPARE(int(Global.Settings.WebAccessPort), port);
        Global.FirstRun = false;
        LoadGlobalSettings();
        QCOMPARE(int(Global.Settings.WebAccessPort), port);
    }

    void fromTextEndsTheUrlAndTouchesNeitherMachineValuesNorFile()
    {
        QVERIFY(LoadGlobalSettings(true, QStringLiteral("<GlobalSettings><ProxyPort>8080</ProxyPort><WebServicesURL>"
                                                     "https://a.example/pv</WebServicesURL></GlobalSettings>")));
        QCOMPARE(Global.Settings.ProxyPort, qint16(8080));
        QCOMPARE(Global.Settings.WebServicesURL, QStringLiteral("https://a.example/pv/"));
        QVERIFY(Global.Settings.MailServerHostName.isEmpty());
        QVERIFY(Global.Settings.MailServerDNSServer.isEmpty());
        QVERIFY(!Global.Settings.FileFound);
        QVERIFY(!QFile::exists(SettingsPath()));
    }

    void missingFileIsWrittenAtOnce()
    {
        QVERIFY(!LoadGlobalSettings());
        QVERIFY(!Global.Settings.FileFound);
        QVERIFY(QFile::exists(SettingsPath()));
        QCOMPARE(Global.Settings.MailServerHostName, QSysInfo::machineHostName());
        QCOMPARE(Global.Settings.MailServerDNSServer, SystemDNSServer());
        const GlobalSettings written = Global.Settings;

        QVERIFY(LoadGlobalSettings());
        QVERIFY(Global.Settings.FileFound);
        GlobalSettings reread = Global.Settings;
        reread.FileFound = false;
        QVERIFY(reread == written);
    }

    void corruptFileReadsAsEmptyValues()
    {
        QByteArray noise(4096, '\0');
        QRandomGenerator random(4711);
        for (char &byte : noise)
            byte = char(random.bounded(256));
        WriteFile(SettingsPath(), noise);

        QVERIFY(LoadGlobalSettings());
        const GlobalSettings &s = Global.Settings;
        QVERIFY(s.FileFound);
        QCOMPARE(s.MailServerPort, qint16(0));
        QCOMPARE(s.MailServerMaxMessageSize, 0);
        QVERIFY(!s.ValidateOutgoing);
        QVERIFY(s.SSLCertStore.isEmpty());
        QCOMPARE(s.MailServerHostName, QSysInfo::machineHostName());
        QVERIFY(s.WebServicesURL.endsWith(u'/'));
        QCOMPARE(ReadFile(SettingsPath()), noise);
    }

    void saveMirrorsFourValuesToTheMachineStore()
    {
        GlobalSettings settings = NonDefaultSettings();
        TextOf(settings);
        const QString section = QStringLiteral("Settings");
        QCOMPARE(GetMachineSetting(section, QStringLiteral("WebAccessPort")), QStringLiteral("9443"));
        QCOMPARE(GetMachineSetting(section, QStringLiteral("MessageStoreAzure")), QStringLiteral("True"));
        QCOMPARE(GetMachineSetting(section, QStringLiteral("MessageStoreAzureAccount")), QStringLiteral("azaccount"));
        QCOMPARE(GetMachineSetting(section, QStringLiteral("MessageStoreAzureKey")), QStringLiteral("az key=="));

        settings.MessageStoreAzure = false;
        Global.Settings = settings;
        QVERIFY(SaveGlobalData().isEmpty());
        QCOMPARE(GetMachineSetting(section, QStringLiteral("MessageStoreAzure")), QStringLiteral("False"));
        QVERIFY(ReadFile(SettingsPath()).contains("<MessageStoreAzureAccount>azaccount</MessageStoreAzureAccount>"));
    }

    void reservedWordsIncludeTheLocalList()
    {
        WriteFile(Global.AppPath + QStringLiteral("SQLRESERVED.TXT"), "Postvane\n\n  Merge  \r\n");
        LoadReservedWords();
        QVERIFY(IsReservedWord(QStringLiteral("POSTVANE")));
        QVERIFY(IsReservedWord(QStringLiteral("merge")));
        QVERIFY(IsReservedWord(QStringLiteral("yesno")));
        QVERIFY(!IsReservedWord(QString()));
        QVERIFY(!IsReservedWord(QStringLiteral("Customer")));
    }

    void dnsServerIsTheFirstNameserver()
    {
        const QString path = m_dir->path() + QStringLiteral("/resolv.conf");
        WriteFile(path, "# nameserver 1.1.1.1\nsearch example.org\nnameserver   10.0.0.53 \nnameserver 8.8.8.8\n");
        QCOMPARE(SystemDNSServer(path), QStringLiteral("10.0.0.53"));
        WriteFile(path, "search example.org\n");
        QVERIFY(SystemDNSServer(path).isEmpty());
        QVERIFY(SystemDNSServer(m_dir->path() + QStringLiteral("/missing")).isEmpty());
    }
};

POSTVANE_TEST(tst_GlobalSettings)
#include "tst_GlobalSettings.moc"
