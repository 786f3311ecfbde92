// Requests on the logs: the server's own, the edge server's and the message
// server's. Each is an event log database in the data folder; the console's
// log panes take today's lines from here when the server is remote, and the
// push channel brings the lines that follow. The logs are the server's: only
// system administrators read or clear them.
#include "RequestChecks.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "foundation/GlobalBlock.h"
#include "model/clsUser.h"
#include "store/clsEventLog.h"

#include <QFile>
#include <QFileInfo>

namespace {

// A first batch beyond this would only slow the console's log pane down.
constexpr int RecentLineLimit = 1000;

QString EdgeLogFile()
{
    return Global.DataPath + Global.ProductName + QStringLiteral("EdgeServerLog.db3");
}

QString MessageLogFile()
{
    return Global.DataPath + Global.ProductName + QStringLiteral("MessageServerLog.db3");
}

// The last lines of the text, each closed by a line feed.
QString LastLines(const QString &Lines, int Count)
{
    qsizetype start = Lines.size() - 1; // behind the last line's feed
    for (int i = 0; i < Count && start > 0; ++i)
        start = Lines.lastIndexOf(u'\n', start - 1);
    return start <= 0 ? Lines : Lines.mid(start + 1);
}

// Today's lines of the event log "yyyy-mm-dd:hh:mm:ss text", each closed by
// a line feed. A log that was never written stays unwritten: empty text.
QString RecentLines(const QString &File)
{
    if (!QFileInfo::exists(File))
        return QString();
    clsEventLog log;
    log.setFileName(File);
    const QDate today = QDate::currentDate();
    return LastLines(log.GetLogs(today, today), RecentLineLimit);
}

ServerReply LogReply(RequestContext &Context, const QString &File)
{
    ServerReply reply = ServerReply::Ok(Context.User.Admin ? RecentLines(File) : QString());
    reply.ContentType = "text/plain; charset=utf-8";
    return reply;
}

ServerReply GetLog(RequestContext &Context)
{
    return LogReply(Context, Context.Services.Log.EventLogFile());
}

ServerReply GetEdgeLog(RequestContext &Context)
{
    return LogReply(Context, EdgeLogFile());
}

ServerReply GetMessageLog(RequestContext &Context)
{
    return LogReply(Context, MessageLogFile());
}

// Rows are deleted rather than files: the services keep their logs open and
// would go on writing into a deleted file. The server's text log is cut to
// nothing, which the console's local log pane takes as a new log.
ServerReply DeleteLog(RequestContext &Context)
{
    if (!Context.User.Admin)
        return ServerReply::Refusal(QStringLiteral("Only a system administrator can clear the logs."));
    const QDate everything = QDate::currentDate().addDays(1);
    bool cleared = true;
    for (const QString &file : {Context.Services.Log.EventLogFile(), EdgeLogFile(), MessageLogFile()}) {
        if (!QFileInfo::exists(file))
            continue;
        clsEventLog log;
        log.setFileName(file);
        cleared = log.DeleteOldLogs(everything) >= 0 && cleared;
    }
    cleared = QFile::resize(Global.DataPath + ServerLog::FileName(), 0) && cleared;
    if (!cleared) {
        Context.Services.Log.Add(QStringLiteral("* The logs could not all be cleared."));
        return ServerReply::Refusal(QStringLiteral("The logs could not all be cleared."));
    }
    Context.Services.Log.Add(QStringLiteral("Logs cleared by ") + Context.User.Username);
    return ServerReply::Ok();
}

} // namespace

void AddLogRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("getlog.xml"), RequestVerb::Get, GetLog);
    Table.Add(QStringLiteral("getedgelog.xml"), RequestVerb::Get, GetEdgeLog);
    Table.Add(QStringLiteral("getmsgplog.xml"), RequestVerb::Get, GetMessageLog);
    Table.Add(QStringLiteral("deletelog.xml"), RequestVerb::Get, DeleteLog);
}
