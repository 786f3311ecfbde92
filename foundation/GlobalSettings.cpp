#include "GlobalSettings.h"
#include "GlobalBlock.h"
#include "Registry.h"
#include "Startup.h"
#include "TaggedMember.h"
#include "clsXML.h"

#include <QDateTime>
#include <QFile>
#include <QSysInfo>
#include <QTextStream>
#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

const QString SettingsFile = QStringLiteral("SETTINGS.XML");
const QString SettingsSection = QStringLiteral("GlobalSettings");

using Key = TaggedMember<GlobalSettings>;

#define PLAIN(name) Key{QStringLiteral(#name), &GlobalSettings::name}
#define SECRET(name) Key{QStringLiteral(#name), &GlobalSettings::name, TagForm::Password}

// The keys in the order the reader asks for them.
const std::vector<Key> &ReadOrder()
{
    static const std::vector<Key> keys = {
        PLAIN(AdminEmail), PLAIN(ProxyPort), PLAIN(ProxyServer), PLAIN(SendDailyLogToAdmin),
        PLAIN(SendErrorsToAdmin), PLAIN(DefaultFromAddress), PLAIN(ValidateOutgoing), PLAIN(FirewallIP),
        SECRET(FirewallPassword), PLAIN(FirewallPort), PLAIN(FirewallType), PLAIN(FirewallUser),
        PLAIN(MailServerListenIncoming), PLAIN(MailServerAutoWhiteList), PLAIN(MailServerAutoWhiteListUsers),
        PLAIN(MailServerBindTo), PLAIN(MailServerDNSServer), PLAIN(MailServerGreyListing),
        PLAIN(MailServerHostName), PLAIN(MailServerPort), PLAIN(MailServerPortSSL), PLAIN(MailServerRejectNoMX),
        PLAIN(MailServerRelayIP), PLAIN(MailServerRequireAuthentication), PLAIN(MailServerScriptInBound),
        PLAIN(MailServerScriptInBoundEnabled), PLAIN(MailServerScriptOutBound),
        PLAIN(MailServerScriptOutBoundEnabled), PLAIN(MailServerIMAPPort), PLAIN(MailServerPOP3Port),
        PLAIN(MailServerUseRBL), PLAIN(MailServerRBLList), PLAIN(MailServerSpam), PLAIN(MailServerSpamAutoIndex),
        PLAIN(MailServerSpamDeleteDays), PLAIN(MailServerSpamFolder), PLAIN(MailServerSpamMove),
        PLAIN(MailServerSpamRefuseOption), PLAIN(MailServerSpamRefuseScore), PLAIN(MailServerSpamScore),
        PLAIN(MailServerSpamScoreInSubject), PLAIN(MailServerSpamSURBL), PLAIN(MailServerSpamHTMLBlank),
        PLAIN(MailServerSpamHTMLDiff), PLAIN(MailServerBackupDomains), PLAIN(MailServerAuthenticationTypes),
        PLAIN(MailServerMaxMessageSize), PLAIN(MailServerUseSmartHost), SECRET(MailServerSmartHostPassword),
        PLAIN(MailServerSmartHostIP), PLAIN(MailServerSmartHostPort), PLAIN(MailServerSmartHostSSLOption),
        PLAIN(MailServerSmartHostUserName), PLAIN(MailServerOutgoingSendClient), PLAIN(Themes),
        PLAIN(ThemeFontSize), PLAIN(RightToLeft), PLAIN(LogLevel), PLAIN(SMSAccount), PLAIN(SMSPassword),
        PLAIN(SMSFrom), PLAIN(Archive), PLAIN(ArchiveDays), PLAIN(DeleteLog), PLAIN(DeleteLogDays),
        PLAIN(FaxPort), PLAIN(WebAccessPort), PLAIN(WebAccessBindTo), PLAIN(WebServicesURL),
        PLAIN(SSLCertPFXFile), PLAIN(SSLCertStore), SECRET(SSLCertStorePW), PLAIN(SSLCertSubject),
        PLAIN(MessageStoreAzure), PLAIN(MessageStoreAzureAccount), SECRET(MessageStoreAzureKey),
    };
    return keys;
}

#undef PLAIN
#undef SECRET

// The writer puts WebAccessBindTo ahead of WebAccessPort, the reader asks for
// the port first. With both stored, the reader's cursor has passed the bind
// address when it asks for it, so the address reads back empty. Files and
// server replies in the field have this order; the two are kept as they are.
const std::vector<Key> &WriteOrder()
{
    static const std::vector<Key> keys = [] {
        std::vector<Key> order = ReadOrder();
        const auto port = std::find_if(order.begin(), order.end(),
                                       [](const Key &key) { return key.Tag.Name() == QLatin1String("WebAccessPort"); });
        std::iter_swap(port, port + 1);
        return order;
    }();
    return keys;
}

QString UserName()
{
    for (const char *variable : {"USER", "LOGNAME", "USERNAME"}) {
        const QString name = qEnvironmentVariable(variable);
        if (!name.isEmpty())
            return name;
    }
    return QStringLiteral("admin");
}

QString TimeZoneOffsetText()
{
    const int minutes = QDateTime::currentDateTime().offsetFromUtc() / 60;
    const int magnitude = std::abs(minutes);
    return QString(minutes < 0 ? u'-' : u'+')
        + QStringLiteral("%1:%2").arg(magnitude / 60, 2, 10, QChar(u'0')).arg(magnitude % 60, 2, 10, QChar(u'0'));
}

// Step 1: the defaults of the table, the per-user values, the certificate
// defaults.
GlobalSettings DefaultSettings()
{
    GlobalSettings settings;
    settings.AdminEmail = UserName() + u'@' + QSysInfo::machineHostName();
    settings.DefaultFromAddress = settings.AdminEmail;
    settings.SSLCertSubject = QStringLiteral("CN=") + Global.ProductName + QStringLiteral(",O=Halvar Systems Ltd");
    settings.Theme = GetUserSetting(Global.ProductName, QStringLiteral("Theme"), QStringLiteral("1")).toInt();
    settings.AskExit = GetUserBool(Global.ProductName, QStringLiteral("AskExit"), true);
    settings.TimeZoneOffset = TimeZoneOffsetText();
    return settings;
}

QStringList SystemTokenList()
{
    QStringList tokens = QStringLiteral("Date,Time,DateTime,SQLDate,SQLDateTime,DayOfWeek,WeekdayNumber,MonthNumber,"
                                        "LastErrorNumber,LastErrorText,FreeDiscSpace,Root,TriggerLog")
                             .split(u',');
    for (QString &token : tokens)
        token = u'%' + token + u'%';
    return tokens;
}

QStringList ExchangeContactFieldList()
{
    return {
        "AssistantName", "AssistantPhone", "Birthday", "BusinessPhone", "BusinessAddress",
        "BusinessAddressCity", "BusinessAddressCountry", "BusinessAddressPostalCode", "BusinessAddressState",
        "BusinessAddressStreet", "BusinessFax", "BusinessHomePage", "BusinessPhone2", "CallbackPhone",
        "CarPhone", "CompanyPhone", "CompanyName", "Department", "Email1Address", "Email1Type",
        "Email1DisplayAs", "Email1DisplayName", "Email2Address", "Email2Type", "Email2DisplayAs",
        "Email2DisplayName", "Email3Address", "Email3Type", "Email3DisplayAs", "Email3DisplayName", "FileAs",
        "GivenName", "Gender", "HomePhone2", "HomeAddress", "HomeAddressCity", "HomeAddressCountry",
        "HomeAddressPostalCode", "HomeAddressState", "HomeAddressStreet", "HomeFax", "HomePhone",
        "InstantMessengerAddress1", "InstantMessengerAddress2", "InstantMessengerAddress3", "Initials", "ISDN",
        "JobTitle", "Manager", "Surname", "MiddleName", "Mileage", "MobilePhone", "NickName", "OfficeLocation",
        "OtherAddress", "OtherAddressCity", "OtherAddressCountry", "OtherAddressPostalCode",
        "OtherAddressState", "OtherAddressStreet", "OtherFax", "OtherPhone", "Pager", "PrimaryPhone",
        "RadioPhone", "Profession", "Sensitivity", "SpouseName", "Telex", "Title", "TtyTddPhone",
        "WeddingAnniversary",
    };
}

QStringList OutlookContactFieldList()
{
    return {
        "Account", "Anniversary", "AssistantName", "AssistantTelephoneNumber", "BillingInformation",
        "Birthday", "Body", "Business2TelephoneNumber", "BusinessAddress", "BusinessAddressCity",
        "BusinessAddressCountry", "BusinessAddressPostalCode", "BusinessAddressPostOfficeBox",
        "BusinessAddressState", "BusinessAddressStreet", "BusinessFaxNumber", "BusinessHomePage",
        "BusinessTelephoneNumber", "CallbackTelephoneNumber", "CarTelephoneNumber", "Categories", "Children",
        "Companies", "CompanyMainTelephoneNumber", "CompanyName", "ComputerNetworkName", "CustomerID",
        "Department", "Email1Address", "Email1AddressType", "Email1DisplayName", "Email2Address",
        "Email2AddressType", "Email2DisplayName", "Email3Address", "Email3AddressType", "Email3DisplayName",
        "FileAs", "FirstName", "FTPSite", "FullName", "Gender", "GovernmentIDNumber", "Hobby",
        "Home2TelephoneNumber", "HomeAddress", "HomeAddressCity", "HomeAddressCountry",
        "HomeAddressPostalCode", "HomeAddressPostOfficeBox", "HomeAddressState", "HomeAddressStreet",
        "HomeFaxNumber", "HomeTelephoneNumber", "IMAddress", "Importance", "Initials",
        "InternetFreeBusyAddress", "ISDNNumber", "JobTitle", "Journal", "Language", "LastName",
        "MailingAddress", "MailingAddressCity", "MailingAddressCountry", "MailingAddressPostalCode",
        "MailingAddressPostOfficeBox", "MailingAddressState", "MailingAddressStreet", "ManagerName",
        "MessageClass", "MiddleName", "Mileage", "MobileTelephoneNumber", "NetMeetingAlias",
        "NetMeetingServer", "NickName", "NoAging", "OfficeLocation", "OrganizationalIDNumber", "OtherAddress",
        "OtherAddressCity", "OtherAddressCountry", "OtherAddressPostalCode", "OtherAddressPostOfficeBox",
        "OtherAddressState", "OtherAddressStreet", "OtherFaxNumber", "OtherTelephoneNumber", "PagerNumber",
        "PersonalHomePage", "PrimaryTelephoneNumber", "Profession", "RadioTelephoneNumber", "ReferredBy",
        "Sensitivity", "Spouse", "Subject", "Suffix", "TelexNumber", "Title", "TTYTDDTelephoneNumber",
        "UnRead", "User1", "User2", "User3", "User4", "UserCertificate", "WebPage", "YomiCompanyName",
        "YomiFirstName", "YomiLastName",
    };
}

QStringList BuiltInReservedWords()
{
    return {
        "Name", "Domain", "Add", "All", "Alter", "AND", "ANY", "AS", "AT", "Asc", "AutoIncrement", "AVA",
        "Backup", "Between", "Binary", "Bit", "BOOLEAN", "By", "Create", "BYTE", "Char", "Character", "Column",
        "Constraint", "Count", "Counter", "CURRENCY", "Database", "Date", "DateTime", "Delete", "Desc",
        "Disallow", "Distinct", "Distinct", "Row", "DOUBLE", "Drop", "Exists", "From", "Float", "Float4",
        "Float8", "Foreign", "General", "Group", "Guid", "Having", "Inner", "Insert", "Ignore", "IMP", "IN",
        "Index", "INT", "INTEGER", "Integer1", "Integer2", "Integer4", "Into", "IS", "JOIN", "Key", "Left",
        "Level", "LIKE", "Logical", "LONG", "LongBinary", "LONGTEXTMAX", "Memo", "Min", "MOD", "Money", "NOT",
        "NULL", "Number", "Numeric", "OLEObject", "ON", "Pivot", "OPTION", "Primary", "Order", "Outer",
        "OwnerAccess", "Parameters", "Percent", "Real", "References", "Right", "SELECT", "SET", "Short",
        "SINGLE", "SmallInt", "Some", "Stdev", "Stdevp", "STRING", "Sum", "Table", "TableId", "Text", "Time",
        "TimeStamp", "Top", "Transform", "Union", "Unique", "Update", "Value", "Values", "Var", "VarBinary",
        "VarChar", "Varp", "Where", "WITH", "YesNo",
    };
}

// Step 2.
void BuildTextTables(GlobalSettings &settings)
{
    LoadReservedWords();
    settings.ExchangeContactFields = ExchangeContactFieldList();
    settings.OutlookContactFields = OutlookContactFieldList();
    settings.SystemTokens = SystemTokenList();
}

QString WithTrailingSlash(const QString &text)
{
    return text.endsWith(u'/') ? text : text + u'/';
}

// Step 6: what only the local file's machine can supply.
void FillFromMachine(GlobalSettings &settings)
{
    if (settings.MailServerHostName.isEmpty())
        settings.MailServerHostName = QSysInfo::machineHostName();
    if (settings.MailServerDNSServer.isEmpty())
        settings.MailServerDNSServer = SystemDNSServer();
}

// Step 3 of the writer: values the server's services read before any file.
void MirrorToMachineStore(const GlobalSettings &settings)
{
    const QString section = QStringLiteral("Settings");
    SaveMachineSetting(section, QStringLiteral("WebAccessPort"), int(settings.WebAccessPort));
    SaveMachineSetting(section, QStringLiteral("MessageStoreAzure"),
                       settings.MessageStoreAzure ? QStringLiteral("True") : QStringLiteral("False"));
    SaveMachineSetting(section, QStringLiteral("MessageStoreAzureAccount"), settings.MessageStoreAzureAccount);
    SaveMachineSetting(section, QStringLiteral("MessageStoreAzureKey"), settings.MessageStoreAzureKey);
}

} // namespace

bool LoadGlobalSettings(bool FromText, const QString &Text)
{
    try {
        GlobalSettings &settings = Global.Settings;
        settings = DefaultSettings();
        BuildTextTables(settings);

        clsXML xml;
        if (FromText)
            xml.setXML(Text);
        else
            settings.FileFound = xml.XMLReadFile(SettingsFile);
        const bool haveText = !xml.XML().isEmpty();
        if (haveText) {
            for (const Key &key : ReadOrder())
                ReadTaggedMember(xml, settings, key);
        }

        if (settings.WebServicesURL.isEmpty())
            settings.WebServicesURL = QStringLiteral("http://") + QSysInfo::machineHostName() + u'/' + Global.ProductName;
        settings.WebServicesURL = WithTrailingSlash(settings.WebServicesURL);

        if (!FromText) {
            FillFromMachine(settings);
            if (!settings.FileFound)
                SaveGlobalData();
        }

        settings.DebugLogging = settings.LogLevel == 4;
        if (settings.Theme > 5)
            settings.Theme = 0;

        // Installations are moved off a former default port on their first run.
        if (!FromText && Global.FirstRun && settings.WebAccessPort == 8005) {
            settings.WebAccessPort = 8855;
            SaveGlobalData();
        }
        return haveText;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("LoadGlobalSettings"), error);
        return false;
    }
}

QString SaveGlobalData(bool ToText)
{
    try {
        const GlobalSettings &settings = Global.Settings;
        clsXML xml;
        xml.XMLSectionStart(SettingsSection);
        for (const Key &key : WriteOrder())
            WriteTaggedMember(xml, settings, key);
        xml.XMLSectionEnd(SettingsSection);
        MirrorToMachineStore(settings);

        if (ToText)
            return xml.GetXML();
        if (!xml.XMLWriteFile(SettingsFile))
            LogError(QStringLiteral("SaveGlobalData"), SettingsFile + QStringLiteral(" could not be written"));
        return QString();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("SaveGlobalData"), error);
        return QString();
    }
}

void LoadReservedWords()
{
    QStringList words = BuiltInReservedWords();
    QFile file(Global.AppPath + QStringLiteral("SQLRESERVED.TXT"));
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream stream(&file);
        QString line;
        while (stream.readLineInto(&line)) {
            line = line.trimmed();
            if (!line.isEmpty())
                words.append(line);
        }
    }
    for (QString &word : words)
        word = word.toLower();
    Global.Settings.ReservedWords = words;
}

bool IsReservedWord(const QString &Word)
{
    return Global.Settings.ReservedWords.contains(Word.toLower());
}

QString SystemDNSServer(const QString &ResolvConf)
{
    QFile file(ResolvConf);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    QTextStream stream(&file);
    QString line;
    while (stream.readLineInto(&line)) {
        const QStringList words = line.simplified().split(u' ');
        if (words.size() >= 2 && words.first() == QLatin1String("nameserver"))
            return words.at(1);
    }
    return QString();
}
