#pragma once
#include "clsAccount.h"
#include "foundation/KeyedCollection.h"

#include <QDate>
#include <QString>
#include <deque>
#include <memory>
#include <vector>

class clsUser;

// All accounts, keyed by AccountID, in the order of addition. Besides access
// it answers the routing questions: which account takes an address, which
// holds a trigger or a folder, which is the outbox.
class colAccounts
{
public:
    // Section "Accounts" with each account's fragment. Setting it clears the
    // selected account, replaces the collection and, when any account was
    // read, has every account checked at once (SetLastChecked).
    QString XML() const;
    void setXML(const QString &Value);
    // The reduced tree of the client program: ForAccount alone when it is
    // given, else the accounts ForUser may see, each with its triggers and
    // their enabled validation actions.
    QString XMLForWebService(const clsUser *ForUser, const QString &ForAccount = QString()) const;
    // Section "LastDates": each account's last-seen dates of the sources
    // switched on. Setting it moves them back, and RSSLastMessage to Today
    // whatever the fragment holds.
    QString LastDatesXML() const;
    void setLastDatesXML(const QString &Value, const QDate &Today = QDate::currentDate());

    // A new account read from the fragment and added; nullptr when its
    // AccountID is already present.
    clsAccount *AddXML(const QString &XML);
    clsAccount *AddXML(clsXML &Reader);
    // Adds under AccountID, giving an account without one a new identifier;
    // nullptr when the AccountID is already present.
    clsAccount *Add(std::unique_ptr<clsAccount> NewAccount);
    int Count() const { return m_accounts.Count(); }
    bool Delete(int Index) { return m_accounts.Delete(Index); }
    bool Delete(const QString &Key) { return m_accounts.Delete(Key); }
    // By 1-based position or AccountID; nullptr when there is none.
    clsAccount *Item(int Index) const { return m_accounts.Item(Index); }
    clsAccount *Item(const QString &Key) const { return m_accounts.Item(Key); }
    auto begin() const { return m_accounts.begin(); }
    auto end() const { return m_accounts.end(); }

    // Makes the accounts of the organization (all when it is empty) due now:
    // those on an interval schedule or without one, or every one with All.
    void SetLastChecked(const QString &OrganizationID = QString(), bool All = false);
    // Clears ReceivedAfterReset on every trigger.
    void ResetRecDateFlags();
    // 1-based positions, 0 when there is none; the arguments are trimmed.
    int AccountNoFromID(const QString &ID) const;
    int AccountNoForTriggerID(const QString &TriggerID) const;
    // Removes SelectedAccount when it is one of these; the selection moves to
    // the last account, or to nothing when none is left.
    void DeleteCurrent();
    // Triggers of all accounts that are no samples.
    int TotalTriggers() const;
    // The first enabled mail server account with an alias@domain pattern
    // that matches the address; an account without aliases takes nothing.
    clsAccount *FindAccountForEmail(const QString &ToAddress) const;
    // The LAST enabled drop box account with a DropBoxToAddress pattern
    // that matches the address.
    clsAccount *FindAccountForDropBoxEmail(const QString &ToAddress) const;
    // AccountID of the last account with a trigger that stores in the folder.
    QString FindAccountIDForFolderID(const QString &FolderID) const;
    // AccountID of the first outbox account; empty when there is none.
    QString FindOutboxID() const;
    // Zeroes today's counters of every account and trigger.
    void ClearDayTotals();
    qint64 MessagesProcessed() const;
    qint64 MessagesSent() const;
    Currency BytesProcessed() const;
    // True when the domain is one of the MailServerDomain parts of an
    // enabled mail server account; case is ignored, wildcards are not.
    bool AcceptedDomain(const QString &Domain) const;
    bool HasSamples() const;

private:
    struct AccountRead;
    // Reads each account element of Section into an account of its own,
    // several at a time on as many threads as the machine runs; see setXML.
    static std::deque<AccountRead> ReadApart(clsXML &Section);
    // Adds an account read apart, as AddXML adds one it reads itself.
    void AddRead(AccountRead &Read);

    KeyedCollection<clsAccount> m_accounts;
};
