#include "colAccounts.h"
#include "ItemFragments.h"
#include "MailAddresses.h"
#include "Selection.h"
#include "actions/ActionItem.h"
#include "clsUser.h"
#include "foundation/Formatting.h"
#include "foundation/LikeMatcher.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"

#include <QThread>
#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

namespace {

const QString AccountsSection = QStringLiteral("Accounts");
const QString LastDatesSection = QStringLiteral("LastDates");
const QString ValidationClass = QStringLiteral("Validation");

// The non-empty ";"-parts of a list, lower-cased and trimmed.
QStringList LowerParts(const QString &List)
{
    return SplitAddresses(List.toLower(), QStringLiteral(";"));
}

// The last-seen dates of the sources, by their tag in LastDates.
struct LastDate
{
    QString Tag;
    bool clsAccount::*Switch;
    QDateTime clsAccount::*Date;
};

const LastDate LastDates[] = {
    {QStringLiteral("IMAP"), &clsAccount::IMAP, &clsAccount::IMAPLastEmail},
    {QStringLiteral("POP3"), &clsAccount::SMTPServer, &clsAccount::ServerLastEmail},
    {QStringLiteral("RSS"), &clsAccount::RSS, &clsAccount::RSSLastMessage},
    {QStringLiteral("EWS"), &clsAccount::EWS, &clsAccount::EWSLastEmail},
};

void WriteValidation(clsXML &Writer, const ActionItem &Action)
{
    clsXML reader(Action.XML());
    QString confirmation;
    QString surveyFields;
    reader.Extract(confirmation, QStringLiteral("ConfirmationHTML"));
    reader.Extract(surveyFields, QStringLiteral("SurveyFieldsXML"), true);
    Writer.XMLSectionStart(ValidationClass);
    Writer.Append(Action.ID(), QStringLiteral("ID"));
    Writer.Append(confirmation, QStringLiteral("ConfirmationHTML"));
    Writer.AppendXML(surveyFields, QStringLiteral("SurveyFieldsXML"));
    Writer.XMLSectionEnd(ValidationClass);
}

void WriteTriggerForWebService(clsXML &Writer, const clsAccountTrigger &Trigger)
{
    Writer.XMLSectionStart(QStringLiteral("Trigger"));
    Writer.Append(Trigger.TriggerID, QStringLiteral("TriggerID"));
    Writer.Append(Trigger.Name, QStringLiteral("Name"));
    Writer.Append(Trigger.Enabled, QStringLiteral("Enabled"));
    Writer.XMLSectionStart(QStringLiteral("ValidationActions"));
    for (const ActionItem *action : Trigger.ActionList())
        if (action->ClassName() == ValidationClass && action->Enabled())
            WriteValidation(Writer, *action);
    Writer.XMLSectionEnd(QStringLiteral("ValidationActions"));
    Writer.XMLSectionEnd(QStringLiteral("Trigger"));
}

void WriteAccountForWebService(clsXML &Writer, const clsAccount &Account)
{
    Writer.XMLSectionStart(clsAccount::ClassName);
    Writer.Append(Account.AccountID, QStringLiteral("AccountID"));
    Writer.Append(Account.Name, QStringLiteral("Name"));
    Writer.Append(Account.Enabled, QStringLiteral("Enabled"));
    Writer.Append(Account.Dropbox, QStringLiteral("DropBox"));
    Writer.Append(Account.DropBoxSubject, QStringLiteral("DropBoxSubject"));
    Writer.Append(Account.DropBoxToAddress, QStringLiteral("DropBoxToAddress"));
    Writer.XMLSectionStart(QStringLiteral("Triggers"));
    for (const clsAccountTrigger *trigger : Account.Triggers)
        WriteTriggerForWebService(Writer, *trigger);
    Writer.XMLSectionEnd(QStringLiteral("Triggers"));
    Writer.XMLSectionEnd(clsAccount::ClassName);
}

} // namespace

QString colAccounts::XML() const
{
    try {
        return SectionOfItems(m_accounts, AccountsSection, [](const clsAccount &) { return true; });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colAccounts.XML.Get"), error);
        return QString();
    }
}

// An account read apart from the collection, with the errors of reading it.
struct colAccounts::AccountRead
{
    clsXML Fragment;
    std::unique_ptr<clsAccount> Account;
    bool ReadWell = false;
    DeferredErrors Errors;
};

// The accounts are read apart, in parallel, and then added in order as AddXML
// adds them: reading an account's own fragment touches nothing the accounts
// share, and the errors and the roles among all accounts wait for the adding.
void colAccounts::setXML(const QString &Value)
{
    try {
        SelectedAccount = nullptr;
        m_accounts.Clear();
        clsXML reader(Value);
        for (AccountRead &read : ReadApart(reader))
            AddRead(read);
        if (Count() > 0)
            SetLastChecked();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colAccounts.XML.Let"), error);
    }
}

// A new account takes defaults from shared settings and collections, so this
// thread finds and makes the accounts while the workers read them, and joins
// them when the list is through. Each account's fragment indexes its own
// text where it is read and lets it go when done.
std::deque<colAccounts::AccountRead> colAccounts::ReadApart(clsXML &Section)
{
    std::deque<AccountRead> reads;
    std::mutex lock;
    std::condition_variable found;
    std::size_t taken = 0;
    bool through = false;
    const auto work = [&] {
        std::unique_lock guard(lock);
        for (;;) {
            found.wait(guard, [&] { return taken < reads.size() || through; });
            if (taken == reads.size())
                return;
            AccountRead &read = reads[taken++];
            guard.unlock();
            DeferErrors defer(read.Errors);
            if (read.Account)
                read.ReadWell = read.Account->ReadOwnXML(read.Fragment);
            read.Fragment = clsXML();
            guard.lock();
        }
    };
    std::vector<std::thread> workers;
    for (int n = 1; n < QThread::idealThreadCount(); ++n)
        workers.emplace_back(work);

    AccountRead next;
    while (Section.ExtractItem(next.Fragment, clsAccount::ClassName)) {
        {
            DeferErrors defer(next.Errors);
            try {
                next.Account = std::make_unique<clsAccount>();
            } catch (const std::exception &error) {
                LogError(QStringLiteral("colAccounts.AddXML"), error);
            }
        }
        {
            const std::lock_guard guard(lock);
            reads.push_back(std::move(next));
        }
        found.notify_one();
        next = AccountRead();
    }
    {
        const std::lock_guard guard(lock);
        through = true;
    }
    found.notify_all();
    work();
    for (std::thread &worker : workers)
        worker.join();
    return reads;
}

void colAccounts::AddRead(AccountRead &Read)
{
    ReplayErrors(Read.Errors);
    if (!Read.Account)
        return;
    try {
        if (Read.ReadWell)
            Read.Account->SettleRoles();
        Add(std::move(Read.Account));
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colAccounts.AddXML"), error);
    }
}

QString colAccounts::XMLForWebService(const clsUser *ForUser, const QString &ForAccount) const
{
    try {
        clsXML writer;
        writer.XMLSectionStart(AccountsSection);
        for (const clsAccount *account : m_accounts) {
            const bool wanted = ForAccount.isEmpty() ? account->UserAccess(ForUser) : account->AccountID == ForAccount;
            if (wanted)
                WriteAccountForWebService(writer, *account);
        }
        writer.XMLSectionEnd(AccountsSection);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colAccounts.XMLForWebService"), error);
        return QString();
    }
}

QString colAccounts::LastDatesXML() const
{
    try {
        clsXML writer;
        writer.XMLSectionStart(LastDatesSection);
        for (const clsAccount *account : m_accounts) {
            writer.XMLSectionStart(clsAccount::ClassName);
            writer.Append(account->AccountID, QStringLiteral("AccountID"));
            for (const LastDate &source : LastDates)
                if (account->*source.Switch)
                    writer.Append(account->*source.Date, source.Tag);
            writer.XMLSectionEnd(clsAccount::ClassName);
        }
        writer.XMLSectionEnd(LastDatesSection);
        return writer.GetXML();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colAccounts.LastDatesXML.Get"), error);
        return QString();
    }
}

void colAccounts::setLastDatesXML(const QString &Value, const QDate &Today)
{
    try {
        ForEachItemFragment(Value, clsAccount::ClassName, [this, &Today](const QString &fragment) {
            clsXML reader(fragment);
            QString id;
            reader.Extract(id, QStringLiteral("AccountID"));
            clsAccount *account = Item(id);
            if (!account)
                return;
            account->RSSLastMessage = QDateTime(Today, QTime(0, 0));
            for (const LastDate &source : LastDates) {
                QString text;
                reader.Extract(text, source.Tag);
                const QDateTime date = text.isEmpty() ? NoDate() : SafeDate(text);
                if (date != NoDate())
                    account->*source.Date = QDateTime(date.date(), QTime(0, 0));
            }
        });
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colAccounts.LastDatesXML.Let"), error);
    }
}

clsAccount *colAccounts::AddXML(const QString &XML)
{
    clsXML reader(XML);
    return AddXML(reader);
}

clsAccount *colAccounts::AddXML(clsXML &Reader)
{
    try {
        auto account = std::make_unique<clsAccount>();
        account->ReadXML(Reader);
        return Add(std::move(account));
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colAccounts.AddXML"), error);
        return nullptr;
    }
}

clsAccount *colAccounts::Add(std::unique_ptr<clsAccount> NewAccount)
{
    if (!NewAccount)
        return nullptr;
    if (NewAccount->AccountID.isEmpty())
        NewAccount->AccountID = NewUniqueID();
    const QString key = NewAccount->AccountID;
    return m_accounts.Add(std::move(NewAccount), key);
}

void colAccounts::SetLastChecked(const QString &OrganizationID, bool All)
{
    for (clsAccount *account : m_accounts) {
        if (!OrganizationID.isEmpty() && account->OrganizationID != OrganizationID)
            continue;
        if (All || account->SCHEDULE.isEmpty() || account->SCHEDULE.startsWith(u'0')) {
            account->MustCheckNow = true;
            account->LastChecked = QDateTime(QDate(2000, 1, 1), QTime(0, 0));
        }
    }
}

void colAccounts::ResetRecDateFlags()
{
    for (clsAccount *account : m_accounts)
        account->Triggers.setReceivedAfterReset(false);
}

int colAccounts::AccountNoFromID(const QString &ID) const
{
    const QString id = ID.trimmed();
    const int index = m_accounts.IndexOf(id);
    return index > 0 && m_accounts.Item(index)->AccountID == id ? index : 0;
}

int colAccounts::AccountNoForTriggerID(const QString &TriggerID) const
{
    const QString id = TriggerID.trimmed();
    for (int index = 1; index <= Count(); ++index)
        if (m_accounts.Item(index)->TriggerNoFromID(id) > 0)
            return index;
    return 0;
}

void colAccounts::DeleteCurrent()
{
    if (!SelectedAccount)
        return;
    const int index = m_accounts.IndexOf(SelectedAccount->AccountID);
    if (m_accounts.Item(index) != SelectedAccount)
        return;
    m_accounts.Delete(index);
    SelectedAccount = m_accounts.Item(Count());
}

int colAccounts::TotalTriggers() const
{
    int total = 0;
    for (const clsAccount *account : m_accounts)
        if (!account->Sample)
            total += account->Triggers.Count();
    return total;
}

clsAccount *colAccounts::FindAccountForEmail(const QString &ToAddress) const
{
    const QString address = ToAddress.toLower();
    for (clsAccount *account : m_accounts) {
        if (!account->MailServer || !account->Enabled)
            continue;
        const QStringList aliases = LowerParts(account->MailServerAliases);
        for (const QString &domain : LowerParts(account->MailServerDomain))
            for (const QString &alias : aliases)
                if (Like(address, alias + u'@' + domain))
                    return account;
    }
    return nullptr;
}

clsAccount *colAccounts::FindAccountForDropBoxEmail(const QString &ToAddress) const
{
    const QString address = ToAddress.toLower();
    clsAccount *found = nullptr;
    for (clsAccount *account : m_accounts) {
        if (!account->Enabled || !account->Dropbox || account->DropBoxToAddress.isEmpty())
            continue;
        for (const QString &pattern : LowerParts(account->DropBoxToAddress)) {
            if (Like(address, pattern)) {
                found = account;
                break;
            }
        }
    }
    return found;
}

QString colAccounts::FindAccountIDForFolderID(const QString &FolderID) const
{
    if (FolderID.isEmpty())
        return QString();
    QString found;
    for (const clsAccount *account : m_accounts)
        for (const clsAccountTrigger *trigger : account->Triggers)
            if (trigger->SaveToFolderID == FolderID)
                found = account->AccountID;
    return found;
}

QString colAccounts::FindOutboxID() const
{
    for (const clsAccount *account : m_accounts)
        if (account->Outbox)
            return account->AccountID;
    return QString();
}

void colAccounts::ClearDayTotals()
{
    for (clsAccount *account : m_accounts) {
        account->MessageCount = 0;
        account->MessageCountOut = 0;
        account->Errors = 0;
        account->BytesReceived = Currency{};
        for (clsAccountTrigger *trigger : account->Triggers) {
            trigger->MessageCount = 0;
            trigger->ErrorCount = 0;
        }
    }
}

qint64 colAccounts::MessagesProcessed() const
{
    qint64 total = 0;
    for (const clsAccount *account : m_accounts)
        total += account->MessageCount;
    return total;
}

qint64 colAccounts::MessagesSent() const
{
    qint64 total = 0;
    for (const clsAccount *account : m_accounts)
        total += account->MessageCountOut;
    return total;
}

Currency colAccounts::BytesProcessed() const
{
    Currency total;
    for (const clsAccount *account : m_accounts)
        total.TenThousandths += account->BytesReceived.TenThousandths;
    return total;
}

bool colAccounts::AcceptedDomain(const QString &Domain) const
{
    const QString domain = Domain.toLower();
    for (const clsAccount *account : m_accounts)
        if (account->MailServer && account->Enabled && LowerParts(account->MailServerDomain).contains(domain))
            return true;
    return false;
}

bool colAccounts::HasSamples() const
{
    for (const clsAccount *account : m_accounts)
        if (account->Sample)
            return true;
    return false;
}
