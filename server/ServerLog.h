#pragma once
#include "store/clsEventLog.h"

#include <QDateTime>
#include <QFile>
#include <QString>
#include <functional>

// The server's running log: lines "yyyy-mm-dd:hh:mm:ss text" closed by CR LF
// in PostvaneServerLog.LOG of the data folder, the same lines in the event
// log database, on standard output, and handed to whoever follows the log
// (the push channel).
class ServerLog
{
public:
    // Opens the files in the data folder of the global block.
    ServerLog();

    void Add(const QString &Text);
    // Called for every line after it is written.
    std::function<void(const QDateTime &Stamp, const QString &Text)> OnLine;

    static QString FileName();
    // The event log database that takes the same lines.
    QString EventLogFile() const { return m_events.FileName(); }

private:
    QFile m_file;
    clsEventLog m_events;
    bool m_adding = false; // a line logged while one is being written is only kept in the file
};
