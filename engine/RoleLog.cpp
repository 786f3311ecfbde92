#include "RoleLog.h"
#include "foundation/GlobalBlock.h"

namespace {

QString OneLine(QString Text)
{
    return Text.replace(QStringLiteral("\r\n"), QStringLiteral(" ")).replace(u'\n', u' ').replace(u'\r', u' ');
}

} // namespace

RoleLog::RoleLog(const QString &FileName, const QString &Source)
    : Source(Source)
    , m_file(Global.DataPath + FileName)
{
    m_file.open(QIODevice::WriteOnly | QIODevice::Append);
}

void RoleLog::Add(const QString &Text)
{
    AddLines({Text});
}

void RoleLog::AddLines(const QStringList &Lines)
{
    if (Lines.isEmpty())
        return;
    const QDateTime stamp = QDateTime::currentDateTime();
    const QString prefix = stamp.toString(QStringLiteral("yyyy-MM-dd:HH:mm:ss")) + u' ';
    QStringList texts;
    QByteArray block;
    for (const QString &line : Lines) {
        texts << OneLine(line);
        block += (prefix + texts.constLast()).toUtf8() + "\r\n";
    }
    {
        QMutexLocker locked(&m_lock);
        m_file.write(block);
        m_file.flush();
    }
    if (OnLine)
        for (const QString &text : texts)
            OnLine(Source, stamp, text);
}
