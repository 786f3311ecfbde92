#include "EdgeSourceState.h"

#include "SourceAccount.h"
#include "model/clsAccount.h"

#include <QDir>
#include <QSettings>

namespace
{
QString Text(const QDateTime &Value)
{
    return Value.isValid() ? Value.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : QString();
}

QDateTime Date(const QVariant &Value)
{
    return QDateTime::fromString(Value.toString(), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

// The state's date unless the configuration's moved away from what the
// state last took from it.
QDateTime Settle(const QDateTime &Configured, const QDateTime &Kept, QDateTime &FromConfiguration, bool &Rewound)
{
    Rewound = Text(Configured) != Text(FromConfiguration) && FromConfiguration.isValid();
    if (!Kept.isValid() || Rewound || !FromConfiguration.isValid()) {
        FromConfiguration = Configured;
        return Configured;
    }
    return Kept;
}
}

EdgeSourceState::EdgeSourceState(const QString &Folder)
    : m_file(QDir(Folder).filePath(QStringLiteral("EdgeSources.ini")))
{
}

void EdgeSourceState::Load()
{
    m_accounts.clear();
    QSettings file(m_file, QSettings::IniFormat);
    for (const QString &id : file.childGroups()) {
        file.beginGroup(id);
        Dates dates;
        dates.LastChecked = Date(file.value(QStringLiteral("LastChecked")));
        dates.ImapLastEmail = Date(file.value(QStringLiteral("IMAPLastEmail")));
        dates.ImapFromConfiguration = Date(file.value(QStringLiteral("IMAPLastEmailConfigured")));
        dates.Pop3LastEmail = Date(file.value(QStringLiteral("ServerLastEmail")));
        dates.Pop3FromConfiguration = Date(file.value(QStringLiteral("ServerLastEmailConfigured")));
        dates.Pop3LastMessageNoChecked = file.value(QStringLiteral("ServerLastMessageNoChecked")).toInt();
        dates.ImapUidValidity = file.value(QStringLiteral("IMAPUIDValidity")).toUInt();
        dates.RssLastMessage = Date(file.value(QStringLiteral("RSSLastMessage")));
        dates.RssFromConfiguration = Date(file.value(QStringLiteral("RSSLastMessageConfigured")));
        dates.CsvLastStatus = file.value(QStringLiteral("CSVPickupLastStatus")).toString();
        dates.HttpLastMessage = Date(file.value(QStringLiteral("HTTPLastMessage")));
        dates.HttpLastContentHash = file.value(QStringLiteral("HTTPLastContentHash")).toString();
        dates.HttpMessages = file.value(QStringLiteral("HTTPMessages")).toInt();
        file.endGroup();
        m_accounts.insert(id, dates);
    }
}

void EdgeSourceState::Save(const QString &AccountID)
{
    const Dates &dates = m_accounts[AccountID];
    QSettings file(m_file, QSettings::IniFormat);
    file.beginGroup(AccountID);
    file.setValue(QStringLiteral("LastChecked"), Text(dates.LastChecked));
    file.setValue(QStringLiteral("IMAPLastEmail"), Text(dates.ImapLastEmail));
    file.setValue(QStringLiteral("IMAPLastEmailConfigured"), Text(dates.ImapFromConfiguration));
    file.setValue(QStringLiteral("ServerLastEmail"), Text(dates.Pop3LastEmail));
    file.setValue(QStringLiteral("ServerLastEmailConfigured"), Text(dates.Pop3FromConfiguration));
    file.setValue(QStringLiteral("ServerLastMessageNoChecked"), dates.Pop3LastMessageNoChecked);
    file.setValue(QStringLiteral("IMAPUIDValidity"), dates.ImapUidValidity);
    file.setValue(QStringLiteral("RSSLastMessage"), Text(dates.RssLastMessage));
    file.setValue(QStringLiteral("RSSLastMessageConfigured"), Text(dates.RssFromConfiguration));
    file.setValue(QStringLiteral("CSVPickupLastStatus"), dates.CsvLastStatus);
    file.setValue(QStringLiteral("HTTPLastMessage"), Text(dates.HttpLastMessage));
    file.setValue(QStringLiteral("HTTPLastContentHash"), dates.HttpLastContentHash);
    file.setValue(QStringLiteral("HTTPMessages"), dates.HttpMessages);
    file.endGroup();
}

void EdgeSourceState::ApplyTo(clsAccount &Account)
{
    const auto found = m_accounts.find(Account.AccountID);
    if (found == m_accounts.end())
        return;
    Dates &dates = *found;
    if (dates.LastChecked.isValid())
        Account.LastChecked = dates.LastChecked;
    bool rewound = false;
    Account.IMAPLastEmail = Settle(Account.IMAPLastEmail, dates.ImapLastEmail, dates.ImapFromConfiguration, rewound);
    dates.ImapLastEmail = Account.IMAPLastEmail;
    Account.ServerLastEmail = Settle(Account.ServerLastEmail, dates.Pop3LastEmail, dates.Pop3FromConfiguration, rewound);
    dates.Pop3LastEmail = Account.ServerLastEmail;
    if (rewound)
        dates.Pop3LastMessageNoChecked = 0;
    Account.ServerLastMessageNoChecked = dates.Pop3LastMessageNoChecked;
    Account.RSSLastMessage = Settle(Account.RSSLastMessage, dates.RssLastMessage, dates.RssFromConfiguration, rewound);
    dates.RssLastMessage = Account.RSSLastMessage;
    if (!dates.CsvLastStatus.isEmpty())
        Account.CSVPickupLastStatus = dates.CsvLastStatus;
    if (dates.HttpLastMessage.isValid())
        Account.HTTPLastMessage = dates.HttpLastMessage;
}

void EdgeSourceState::ApplyTo(SourceAccount &Source) const
{
    const Dates dates = m_accounts.value(Source.AccountID);
    Source.ImapUidValidity = dates.ImapUidValidity;
    Source.HTTPLastContentHash = dates.HttpLastContentHash;
    Source.HTTPMessages = dates.HttpMessages;
}

void EdgeSourceState::Checked(const clsAccount &Account, const QDateTime &Stamp)
{
    Dates &dates = m_accounts[Account.AccountID];
    dates.LastChecked = Stamp;
    if (!dates.ImapFromConfiguration.isValid())
        dates.ImapFromConfiguration = Account.IMAPLastEmail;
    if (!dates.Pop3FromConfiguration.isValid())
        dates.Pop3FromConfiguration = Account.ServerLastEmail;
    if (!dates.RssFromConfiguration.isValid())
        dates.RssFromConfiguration = Account.RSSLastMessage;
    Save(Account.AccountID);
}

void EdgeSourceState::Read(const SourceAccount &Source)
{
    Dates &dates = m_accounts[Source.AccountID];
    dates.ImapLastEmail = Source.ImapLastEmail;
    dates.Pop3LastEmail = Source.Pop3LastEmail;
    dates.Pop3LastMessageNoChecked = Source.Pop3LastMessageNoChecked;
    dates.ImapUidValidity = Source.ImapUidValidity;
    dates.RssLastMessage = Source.RSSLastMessage;
    dates.CsvLastStatus = Source.CSVPickupLastStatus;
    dates.HttpLastMessage = Source.HTTPLastMessage;
    dates.HttpLastContentHash = Source.HTTPLastContentHash;
    dates.HttpMessages = Source.HTTPMessages;
    Save(Source.AccountID);
}
