#pragma once
#include <QDateTime>
#include <QHash>
#include <QString>

class clsAccount;
struct SourceAccount;

// What the edge keeps of each account between reads and across restarts, in
// "EdgeSources.ini" of the data folder: when it was last checked, the newest
// message dates of its sources, the POP3 position, the last CSV pickup's
// status and what the last HTTP lookup returned. The configuration has
// the same dates; a date there that differs from the one this state last
// took from it was set on purpose (a widened trigger rewinds the sources)
// and wins over the state's.
class EdgeSourceState
{
public:
    // The file in the folder; nothing is read until Load.
    explicit EdgeSourceState(const QString &Folder);

    void Load();
    // The account's LastChecked, dates and position from the state.
    void ApplyTo(clsAccount &Account);
    // What the account has in the state that the account itself does not hold.
    void ApplyTo(SourceAccount &Source) const;
    // The account was found due at Stamp.
    void Checked(const clsAccount &Account, const QDateTime &Stamp);
    // A read ended: the dates and position it moved on to.
    void Read(const SourceAccount &Source);
    QString FilePath() const { return m_file; }

private:
    struct Dates
    {
        QDateTime LastChecked;
        QDateTime ImapLastEmail, ImapFromConfiguration;
        QDateTime Pop3LastEmail, Pop3FromConfiguration;
        int Pop3LastMessageNoChecked = 0;
        quint32 ImapUidValidity = 0;
        QDateTime RssLastMessage, RssFromConfiguration;
        QString CsvLastStatus;
        QDateTime HttpLastMessage;
        QString HttpLastContentHash;
        int HttpMessages = 0;
    };

    void Save(const QString &AccountID);

    QString m_file;
    QHash<QString, Dates> m_accounts;
};
