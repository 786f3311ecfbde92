#include "ServerLog.h"
#include "foundation/GlobalBlock.h"

#include <cstdio>

ServerLog::ServerLog() : m_file(Global.DataPath + FileName())
{
    m_file.open(QIODevice::WriteOnly | QIODevice::Append);
    m_events.OpenLog();
}

QString ServerLog::FileName()
{
    return Global.ProductName + QStringLiteral("ServerLog.LOG");
}

void ServerLog::Add(const QString &Text)
{
    const QDateTime stamp = QDateTime::currentDateTime();
    QString text = Text;
    text.replace(QStringLiteral("\r\n"), QStringLiteral(" ")).replace(u'\n', u' ').replace(u'\r', u' ');
    const QByteArray line = (stamp.toString(QStringLiteral("yyyy-MM-dd:HH:mm:ss")) + u' ' + text).toUtf8();
    m_file.write(line + "\r\n");
    m_file.flush();
    std::fprintf(stdout, "%s\n", line.constData());
    std::fflush(stdout);
    if (m_adding)
        return;
    m_adding = true;
    m_events.AddEvent(text);
    if (OnLine)
        OnLine(stamp, text);
    m_adding = false;
}
