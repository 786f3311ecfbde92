#pragma once
#include <QDate>
#include <QDateTime>
#include <QString>

// One log database (table EventLog) and the text file beside it that takes
// the lines the database cannot. Each process keeps its own object; writers
// of one file are ordered by the database's busy time-out. The log is always
// a SQLite file, whatever back end the message store has.
class clsEventLog
{
public:
    // ServerLog.db3 in the data folder.
    clsEventLog();
    ~clsEventLog();
    clsEventLog(const clsEventLog &) = delete;
    clsEventLog &operator=(const clsEventLog &) = delete;

    // The database file. Setting it closes the log and takes the name up to
    // its last "." as the stem of both files, stem + ".db3" and stem + ".log";
    // a name without a folder stands in the data folder.
    QString FileName() const { return m_stem + QStringLiteral(".db3"); }
    void setFileName(const QString &Value);
    QString TextFileName() const { return m_stem + QStringLiteral(".log"); }

    // Opens the database, under a new FileName when one is given. A missing
    // database is made from the blank MetaLog.db3 of the installation, and a
    // text file left from its predecessor is deleted. True while open.
    bool OpenLog(const QString &FileName = QString());
    void CloseLog();
    bool IsOpen() const { return m_open; }

    // Lines written between the two share one commit: a writer of many lines
    // (the message processor) holds the log's file once for all of them.
    bool BeginTransaction();
    bool CommitTransaction();

    // A line for the current message: its account, trigger and MessageID.
    void AddEvent(const QString &Detail);
    // A line for another machine's message; a date before 2000 means now.
    void AddRemoteEvent(const QString &Detail, const QDateTime &Date, const QString &AccountID,
                        const QString &TriggerID, const QString &UID);
    // Deletes the lines before the day, logs how many went when any did, and
    // deletes the text file. The number deleted, -1 on failure.
    qint64 DeleteOldLogs(const QDate &Before);
    // Closes and deletes the database and the text file.
    void ClearLog();

    // The Detail of the message's lines in order, joined by line feeds.
    QString GetLogsForUID(const QString &UID);
    // "yyyy-mm-dd:hh:mm:ss Detail" lines closed by a line feed, from the
    // start of From to the end of To.
    QString GetLogs(const QDate &From, const QDate &To);
    // The day's lines of one account (all accounts for an empty one) whose
    // Detail holds SearchText when given: "hh:mm:ss Detail" closed by CR LF,
    // or for a grid as GetLogs gives them.
    QString GetTodaysLogs(const QString &AccountID, const QDate &Day, const QString &SearchText = QString(),
                          bool ForGrid = false);

private:
    void WriteEvent(const QDateTime &Stamp, const QString &AccountID, const QString &TriggerID, const QString &UID,
                    const QString &Detail);
    QString LogLines(const QDate &From, const QDate &To, const QString &Narrow, const QString &AccountID,
                     const QString &StampFormat, const QString &LineEnd);

    const QString m_connection;
    QString m_stem;
    bool m_open = false;
};
