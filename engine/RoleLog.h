#pragma once
#include <QDateTime>
#include <QFile>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <functional>

// The running log of one role of the server: lines "yyyy-mm-dd:hh:mm:ss
// text" closed by CR LF in the role's file in the data folder, each line
// also handed to OnLine with the role's push source, so that a connected
// console shows it in the role's pane. Any thread may add lines; line ends
// inside a text become blanks.
class RoleLog
{
public:
    // FileName in the data folder ("PostvaneMessageServerLog.LOG"); Source as
    // the console's panes tell them apart ("Message Server").
    RoleLog(const QString &FileName, const QString &Source);

    void Add(const QString &Text);
    // Several lines under one stamp, written together.
    void AddLines(const QStringList &Lines);

    QString FilePath() const { return m_file.fileName(); }
    const QString Source;
    // Set before the role starts; called on the thread that logs.
    std::function<void(const QString &Source, const QDateTime &Stamp, const QString &Text)> OnLine;

private:
    QMutex m_lock;
    QFile m_file;
};
