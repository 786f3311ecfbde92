#include "clsAccount.h"
#include "GlobalCollections.h"
#include "Selection.h"
#include "actions/ActionItem.h"
#include "actions/clsActionSetVariable.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "foundation/Startup.h"
#include "foundation/TextHelpers.h"
#include "foundation/TaggedMember.h"
#include "foundation/clsXML.h"

#include <QLocale>
#include <exception>
#include <vector>

namespace {

using A = clsAccount;
using AccountTag = TaggedMember<A>;

// The account's own tags in written order.
const std::vector<AccountTag> &FragmentTags()
{
    static const std::vector<AccountTag> tags{
        {QStringLiteral("AccountID"), &A::AccountID, TagForm::Identity},
        {QStringLiteral("OrganizationID"), &A::OrganizationID},
        {QStringLiteral("AccountAddress"), &A::AccountAddress},
        {QStringLiteral("CheckEveryMins"), &A::CheckEveryMins},
        {QStringLiteral("CreatedDate"), &A::CreatedDate},
        {QStringLiteral("ViewType"), &A::ViewType},
        {QStringLiteral("Details"), &A::Details},
        {QStringLiteral("Enabled"), &A::Enabled},
        {QStringLiteral("AutoPause"), &A::AutoPause},
        {QStringLiteral("GroupName"), &A::GroupName},
        {QStringLiteral("FilePickUp"), &A::FilePickUp},
        {QStringLiteral("FilePickUpFolder"), &A::FilePickupFolder},
        {QStringLiteral("FilePickUpMask"), &A::FilePickUpMask},
        {QStringLiteral("IMAP"), &A::IMAP},
        {QStringLiteral("IMAPAccount"), &A::IMAPAccount},
        {QStringLiteral("IMAPDeleteAll"), &A::IMAPDeleteAll},
        {QStringLiteral("IMAPFolder"), &A::IMAPFolder},
        {QStringLiteral("IMAPLastEmail"), &A::IMAPLastEmail},
        {QStringLiteral("IMAPLeaveMessageOn"), &A::IMAPLeaveMessageOn},
        {QStringLiteral("IMAPMarkAsRead"), &A::IMAPMarkAsRead},
        {QStringLiteral("IMAPMove"), &A::IMAPMove},
        {QStringLiteral("IMAPMoveToFolder"), &A::IMAPMoveToFolder},
        {QStringLiteral("IMAPPassword"), &A::IMAPPassword, TagForm::Password},
        {QStringLiteral("IMAPPort"), &A::IMAPPort},
        {QStringLiteral("IMAPServer"), &A::IMAPServer},
        {QStringLiteral("IMAPSSL"), &A::IMAPSSL},
        {QStringLiteral("IMAPServerIDs"), &A::IMAPServerIDs},
        {QStringLiteral("LastChecked"), &A::LastChecked},
        {QStringLiteral("Name"), &A::Name},
        {QStringLiteral("OutBox"), &A::Outbox},
        {QStringLiteral("Sample"), &A::Sample},
        {QStringLiteral("ServerAccount"), &A::ServerAccount},
        {QStringLiteral("ServerDeleteAll"), &A::ServerDeleteAll},
        {QStringLiteral("ServerIP"), &A::ServerIP},
        {QStringLiteral("ServerLastEmail"), &A::ServerLastEmail},
        {QStringLiteral("ServerLeaveMessageOn"), &A::ServerLeaveMessageOn},
        {QStringLiteral("ServerPassword"), &A::ServerPassword, TagForm::Password},
        {QStringLiteral("ServerPort"), &A::ServerPort},
        {QStringLiteral("ServerSSL"), &A::ServerSSL},
        {QStringLiteral("SMTPServer"), &A::SMTPServer},
        {QStringLiteral("StoreFull"), &A::StoreFull},
        {QStringLiteral("MailServer"), &A::MailServer},
        {QStringLiteral("MailServerAliases"), &A::MailServerAliases},
        {QStringLiteral("MailServerDomain"), &A::MailServerDomain},
        {QStringLiteral("MailServerPassword"), &A::MailServerPassword, TagForm::Password},
        {QStringLiteral("MailServerUserName"), &A::MailServerUserName},
        {QStringLiteral("MailServerPOP3"), &A::MailServerPOP3},
        {QStringLiteral("DBConnection"), &A::DBConnection},
        {QStringLiteral("DBDelete"), &A::DBDelete},
        {QStringLiteral("DBMSGBody"), &A::DBMSGBody},
        {QStringLiteral("DBMSGField"), &A::DBMSGField},
        {QStringLiteral("DBPull"), &A::DBPull},
        {QStringLiteral("DBSQL"), &A::DBSQL},
        {QStringLiteral("DBUIDField"), &A::DBUIDField},
        {QStringLiteral("DBUpdateField"), &A::DBUpdateField},
        {QStringLiteral("DBUpdateValue"), &A::DBUpdateValue},
        {QStringLiteral("RSS"), &A::RSS},
        {QStringLiteral("RSSUrl"), &A::RSSUrl},
        {QStringLiteral("RSSLastMessage"), &A::RSSLastMessage},
        {QStringLiteral("RSSAtom"), &A::RSSAtom},
        {QStringLiteral("HTTP"), &A::HTTP},
        {QStringLiteral("HTTPUrl"), &A::HTTPUrl},
        {QStringLiteral("HTTPFollow"), &A::HTTPFollow},
        {QStringLiteral("HTTPLogin"), &A::HTTPLogin},
        {QStringLiteral("HTTPPass"), &A::HTTPPass, TagForm::Password},
        {QStringLiteral("HTTPUser"), &A::HTTPUser},
        {QStringLiteral("HTTPClean"), &A::HTTPClean},
        {QStringLiteral("HTTPFail"), &A::HTTPFail},
        {QStringLiteral("EWS"), &A::EWS},
        {QStringLiteral("EWSUrl"), &A::EWSUrl},
        {QStringLiteral("EWSUsername"), &A::EWSUsername},
        {QStringLiteral("EWSPassword"), &A::EWSPassword, TagForm::Password},
        {QStringLiteral("EWSFolders"), &A::EWSFolders, TagForm::Fragment},
        {QStringLiteral("EWSMove"), &A::EWSMove},
        {QStringLiteral("EWSMoveToFolder"), &A::EWSMoveToFolder},
        {QStringLiteral("EWSDeleteProcessed"), &A::EWSDeleteProcessed},
        {QStringLiteral("EWSDeleteAll"), &A::EWSDeleteAll},
        {QStringLiteral("EWSLastEmail"), &A::EWSLastEmail},
        {QStringLiteral("EWSOtherMailbox"), &A::EWSOtherMailbox},
        {QStringLiteral("DropBox"), &A::Dropbox},
        {QStringLiteral("DropBoxToAddress"), &A::DropBoxToAddress},
        {QStringLiteral("DropBoxSubject"), &A::DropBoxSubject},
        {QStringLiteral("UnzipAttachments"), &A::UnzipAttachments},
        {QStringLiteral("AppendText"), &A::AppendText},
        {QStringLiteral("Schedule"), &A::SCHEDULE},
        {QStringLiteral("MaxMessagesPerRun"), &A::MaxMessagesPerRun},
        {QStringLiteral("EdgeServer"), &A::EdgeServer},
        {QStringLiteral("Archive"), &A::Archive},
        {QStringLiteral("ArchiveDays"), &A::ArchiveDays},
        {QStringLiteral("MarkAsReadType"), &A::MarkAsReadType},
        {QStringLiteral("AutoRun"), &A::AutoRun},
        {QStringLiteral("AutoRunMessageMime"), &A::AutoRunMessageMime},
        {QStringLiteral("CSVPickup"), &A::CSVPickUp},
        {QStringLiteral("CSVPickupFolder"), &A::CSVPickupFolder},
        {QStringLiteral("CSVPickupMask"), &A::CSVPickupMask},
        {QStringLiteral("CSVPickupDelete"), &A::CSVPickupDelete},
        {QStringLiteral("CSVPickupWorkSheet"), &A::CSVPickupWorkSheet},
        {QStringLiteral("CSVPickupHeaderRow"), &A::CSVPickupHeaderRow},
        {QStringLiteral("CSVPickupLastStatus"), &A::CSVPickupLastStatus},
        {QStringLiteral("TwitterFeed"), &A::TwitterFeed},
    };
    return tags;
}

const MarkupTag TwitterSection = QStringLiteral("TwitterSettings");
const MarkupTag TriggersSection = QStringLiteral("Triggers");
const QString VariablesSection = QStringLiteral("GlobalVariables");
const QString EveryDay = QStringLiteral("|YYYYYYY");

// The account's own Twitter section stands before its triggers; one inside a
// trigger's action must not become the bound of the account's tags.
bool HasOwnTwitterSection(clsXML Reader)
{
    Reader.setExtractUntil(TriggersSection);
    clsXML twitter;
    return Reader.Extract(twitter, TwitterSection);
}

QDateTime Midnight(const QDate &Day)
{
    return QDateTime(Day, QTime(0, 0));
}

// The parts of a schedule text: one character of type, the value up to the
// first "|", the day flags after it. A type that is no digit counts as 0.
struct ScheduleParts
{
    int Type = 0;
    QString Value;
    QString Days;
};

ScheduleParts SplitSchedule(const QString &Schedule)
{
    ScheduleParts parts;
    if (!Schedule.isEmpty() && Schedule.front() >= u'0' && Schedule.front() <= u'9')
        parts.Type = Schedule.front().unicode() - u'0';
    const qsizetype bar = Schedule.indexOf(u'|');
    const qsizetype valueEnd = bar < 0 ? Schedule.size() : bar;
    if (valueEnd > 1)
        parts.Value = Schedule.mid(1, valueEnd - 1);
    if (bar >= 0)
        parts.Days = Schedule.mid(bar + 1);
    return parts;
}

// 0-based position of a day's flag: Sunday first.
int DayFlagIndex(int QtDayOfWeek)
{
    return QtDayOfWeek % 7;
}

QTime ClockTime(const QString &Text)
{
    const QString text = Text.trimmed();
    QTime time = QTime::fromString(text, QStringLiteral("H:m"));
    if (!time.isValid())
        time = QTime::fromString(text, QStringLiteral("H:m:s"));
    return time;
}

bool SameMinute(const QTime &a, const QTime &b)
{
    return a.hour() == b.hour() && a.minute() == b.minute();
}

// A text cut to Bytes of UTF-16: the byte length is compared, but the cut
// keeps that many characters, as the stored limits always have.
QVariant CutText(const QVariant &Value, qsizetype Bytes)
{
    if (Value.typeId() != QMetaType::QString)
        return Value;
    const QString text = Value.toString();
    return text.size() * qsizetype(sizeof(QChar)) > Bytes ? QVariant(text.left(Bytes)) : Value;
}

} // namespace

clsAccount::clsAccount()
    : AccountID(NewUniqueID()),
      CreatedDate(QDateTime::currentDateTime()),
      Archive(Global.Settings.Archive),
      ArchiveDays(Global.Settings.ArchiveDays),
      LastChecked(Midnight(QDate(2000, 1, 1))),
      ServerLastEmail(Midnight(QDate::currentDate())),
      IMAPLastEmail(Midnight(QDate::currentDate())),
      EWSLastEmail(ZeroDate()),
      HTTPLastMessage(ZeroDate()),
      RSSLastMessage(Midnight(QDate::currentDate()))
{
    if (const clsUserOrganization *first = Organizations().Item(1))
        OrganizationID = first->ID;
    Triggers.setParent(this);
}

clsAccount::~clsAccount()
{
    if (SelectedAccount == this)
        SelectedAccount = nullptr;
    if (OutboxAccount == this)
        OutboxAccount = nullptr;
}

void clsAccount::ReceivedAfterReset(const QDate &Today)
{
    for (clsAccountTrigger *trigger : Triggers) {
        if (!trigger->Enabled)
            continue;
        QDateTime oldest = Midnight(Today);
        if (trigger->ReceivedAfter.isValid() && trigger->ReceivedAfter < oldest)
            oldest = trigger->ReceivedAfter;
        if (oldest.date().year() < 1980)
            oldest = Midnight(QDate(1990, 1, 1));
        const auto rewind = [&](bool sourceOn, QDateTime &lastSeen) {
            if (!sourceOn || lastSeen <= oldest)
                return false;
            trigger->ReceivedAfterReset = true;
            lastSeen = oldest;
            return true;
        };
        rewind(IMAP, IMAPLastEmail);
        if (rewind(SMTPServer, ServerLastEmail))
            ServerLastMessageNoChecked = 0;
        rewind(RSS, RSSLastMessage);
    }
}

bool clsAccount::UserAccess(const clsUser *ThisUser) const
{
    if (!ThisUser)
        return false;
    return ThisUser->OrganizationID == OrganizationID || ThisUser->Admin || OrganizationID.trimmed().isEmpty();
}

QString clsAccount::OrganizationName() const
{
    const clsUserOrganization *organization = Organizations().Item(OrganizationID);
    return organization ? organization->Name : QString();
}

QString clsAccount::DocumentRoot()
{
    try {
        if (m_documentRoot.isEmpty() || m_documentRootOrganization != OrganizationID) {
            QString folder = Global.DataPath + QStringLiteral("Documents/");
            const QString name = SafeFileName(OrganizationName()).trimmed();
            if (!name.isEmpty())
                folder += name + u'/';
            MakePath(folder);
            m_documentRoot = folder;
            m_documentRootOrganization = OrganizationID;
        }
        return m_documentRoot;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccount.DocumentRoot"), error);
        return QString();
    }
}

QString clsAccount::InternalDatabaseName() const
{
    QString name = OrganizationName().replace(u' ', u'_');
    if (name.isEmpty())
        name = QStringLiteral("Admin");
    return (Global.ProductName + QStringLiteral("I_") + name).left(123);
}

QString clsAccount::InternalDatabaseConnectionString(const QString &CatalogName) const
{
    static const QString key = QStringLiteral("Initial Catalog=");
    QString connection = Global.DBConnection;
    const qsizetype start = connection.indexOf(key, 0, Qt::CaseInsensitive);
    if (start < 0)
        return QString();
    const qsizetype valueStart = start + key.size();
    const qsizetype end = connection.indexOf(u';', valueStart);
    const qsizetype length = (end < 0 ? connection.size() : end) - valueStart;
    return connection.replace(valueStart, length, CatalogName.isEmpty() ? InternalDatabaseName() : CatalogName);
}

bool clsAccount::AnyTriggersActive() const
{
    if (!Enabled)
        return false;
    for (const clsAccountTrigger *trigger : Triggers)
        if (trigger->Enabled && trigger->INSchedule())
            return true;
    return false;
}

clsAccountTrigger *clsAccount::TriggerFromID(const QString &TriggerID) const
{
    return Triggers.Item(Triggers.TriggerNoFromID(TriggerID));
}

int clsAccount::TriggerNoFromID(const QString &TriggerID) const
{
    return Triggers.TriggerNoFromID(TriggerID);
}

QString clsAccount::TriggerNames() const
{
    if (Triggers.Count() == 0)
        return TriggerNameList;
    QStringList names;
    for (const clsAccountTrigger *trigger : Triggers)
        names << trigger->Name;
    return names.join(QStringLiteral("\r\n"));
}

void clsAccount::IncBytesReceived(qint64 MSGSize)
{
    BytesReceived.TenThousandths += MSGSize * 10000;
}

bool clsAccount::CheckNow(const QDateTime &Now)
{
    try {
        if (MustCheckNow) {
            MustCheckNow = false;
            return true;
        }
        if (SCHEDULE.isEmpty())
            SCHEDULE = QStringLiteral("03") + EveryDay;
        const ScheduleParts parts = SplitSchedule(SCHEDULE);
        if (parts.Days.mid(DayFlagIndex(Now.date().dayOfWeek()), 1) == u"N")
            return false;
        switch (parts.Type) {
        case 0: {
            bool isNumber = false;
            const qint16 minutes = parts.Value.trimmed().toShort(&isNumber);
            if (isNumber && minutes > 0)
                CheckEveryMins = minutes;
            if (CheckEveryMins > 0)
                return LastChecked.secsTo(Now) / 60 >= CheckEveryMins;
            return LastChecked.secsTo(Now) >= 31;
        }
        case 1:
        case 2: {
            // Once in a minute: a run stamped in this very minute is not repeated.
            if (LastChecked.date() == Now.date() && SameMinute(LastChecked.time(), Now.time()))
                return false;
            for (const QString &part : parts.Value.split(u',', Qt::SkipEmptyParts)) {
                const QTime at = ClockTime(part);
                if (at.isValid() && SameMinute(at, Now.time()))
                    return true;
            }
            return false;
        }
        default:
            return false;
        }
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccount.CheckNow"), error);
        return false;
    }
}

QString clsAccount::CheckedEvery() const
{
    const ScheduleParts parts = SplitSchedule(SCHEDULE.isEmpty() ? u'0' + QString::number(CheckEveryMins) + EveryDay : SCHEDULE);
    QString text;
    switch (parts.Type) {
    case 0: {
        const int minutes = parts.Value.trimmed().toInt();
        text = QStringLiteral("Every ") + QString::number(minutes > 0 ? minutes : CheckEveryMins) + QStringLiteral(" Minutes");
        break;
    }
    case 1:
    case 2:
        text = QStringLiteral("Daily At ") + QString(parts.Value).replace(u',', u' ');
        break;
    default:
        return QString();
    }
    const QString days = parts.Days.left(7);
    if (days.contains(u'N')) {
        QStringList names;
        for (int day = 0; day < days.size(); ++day)
            if (days.at(day) == u'Y')
                names << QLocale::c().dayName(day == 0 ? 7 : day, QLocale::ShortFormat);
        text += QStringLiteral(" (") + names.join(u',') + u')';
    }
    return text;
}

void clsAccount::WriteScalars(clsXML &Writer) const
{
    for (const AccountTag &entry : FragmentTags())
        WriteTaggedMember(Writer, *this, entry);
}

void clsAccount::ReadScalars(clsXML &Reader)
{
    for (const AccountTag &entry : FragmentTags())
        ReadTaggedMember(Reader, *this, entry);
}

QString clsAccount::XML() const
{
    try {
        clsXML writer;
        writer.XMLSectionStart(ClassName);
        WriteScalars(writer);
        if (TwitterFeed)
            writer.AppendXML(TwitterSettings, TwitterSection.Name());
        writer.Append(qint32(Triggers.Count()), QStringLiteral("TriggersCount"));
        if (XMLIncludeTriggers)
            writer.AppendXML(Triggers.XML());
        writer.XMLSectionEnd(ClassName);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccount.XML.Get"), error);
        return QString();
    }
}

// Tag names repeat inside the triggers, so each step bounds the reader to
// the text before the next nested section.
void clsAccount::setXML(const QString &Value)
{
    clsXML reader(Value);
    ReadXML(reader);
}

void clsAccount::ReadXML(clsXML &Reader)
{
    if (ReadOwnXML(Reader))
        SettleRoles();
}

bool clsAccount::ReadOwnXML(clsXML &Reader)
{
    try {
        Reader.setExtractUntil(HasOwnTwitterSection(Reader) ? TwitterSection : TriggersSection);
        ReadScalars(Reader);

        Reader.setExtractUntil(TriggersSection);
        if (TwitterFeed)
            Reader.Extract(TwitterSettings, TwitterSection, true);
        else
            TwitterSettings.clear();

        Reader.setExtractUntil(QString());
        clsXML triggers;
        if (Reader.Extract(triggers, TriggersSection) && !triggers.IsEmpty())
            Triggers.ReadXML(triggers);

        if (SCHEDULE.isEmpty())
            SCHEDULE = u'0' + QString::number(CheckEveryMins) + EveryDay;
        m_varList.clear();
        return true;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccount.XML.Let"), error);
        return false;
    }
}

void clsAccount::SettleRoles()
{
    try {
        if (Outbox && Enabled)
            TakeOutboxRole();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccount.XML.Let"), error);
    }
}

// The outbox stores what it sends in the Sent Items folder unless a trigger
// names another.
void clsAccount::TakeOutboxRole()
{
    OutboxAccount = this;
    const clsUserFolder *sentItems = UserFolders().SentItemsFolder();
    if (!sentItems)
        return;
    for (clsAccountTrigger *trigger : Triggers)
        if (trigger->SaveToFolderID.isEmpty())
            trigger->SaveToFolderID = sentItems->ID;
}

int clsAccount::AddVariable(const QString &Key)
{
    m_varNames << Key;
    m_varValues << QVariant(QString());
    m_varIndex.insert(Key, int(m_varNames.size()) - 1);
    return int(m_varNames.size()) - 1;
}

QVariant clsAccount::GlobalVar(const QString &Name, bool Persisted)
{
    try {
        const QString key = Name.trimmed().toLower();
        int index = m_varIndex.value(key, -1);
        if (index < 0) {
            index = AddVariable(key);
            if (Persisted)
                m_varValues[index] = GetMachineSetting(VariablesSection, AccountID + u'.' + key);
        }
        return m_varValues.at(index);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccount.GlobalVar.Get"), error);
        return QVariant();
    }
}

void clsAccount::setGlobalVar(const QString &Name, bool Persisted, const QVariant &Value)
{
    try {
        const QString key = Name.trimmed().toLower();
        int index = m_varIndex.value(key, -1);
        if (index < 0)
            index = AddVariable(key);
        QVariant value = CutText(Value, MaxVarBytes);
        if (Persisted) {
            value = CutText(value, MaxPersistedVarBytes);
            SaveMachineSetting(VariablesSection, AccountID + u'.' + key, value);
        }
        m_varValues[index] = value;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccount.GlobalVar.Let"), error);
    }
}

int clsAccount::GlobalVarNumber(const QString &Name) const
{
    return m_varIndex.value(Name.trimmed().toLower(), -1) + 1;
}

QString clsAccount::GlobalVarList(bool Reset)
{
    try {
        if (Reset)
            m_varList.clear();
        if (!m_varList.isEmpty())
            return m_varList;
        QStringList names;
        for (const clsAccountTrigger *trigger : Triggers) {
            for (ActionItem *action : trigger->ActionList()) {
                const auto *set = action->As<clsActionSetVariable>();
                if (!set || set->Name.isEmpty() || names.contains(set->Name))
                    continue;
                if (trigger->FieldsToProcess().FieldNoFromName(set->Name) != 0)
                    continue;
                names << set->Name;
                GlobalVar(set->Name, set->Persist);
            }
        }
        m_varList = names.join(u',');
        return m_varList;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsAccount.GlobalVarList"), error);
        return QString();
    }
}
