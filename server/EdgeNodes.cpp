#include "EdgeNodes.h"
#include "foundation/GlobalBlock.h"
#include "foundation/clsXML.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkInterface>
#include <QSaveFile>
#include <QSysInfo>

namespace EdgeNodes {
namespace {

const QString LocalHost = QStringLiteral("127.0.0.1");

QString Folder()
{
    return Global.DataPath + QStringLiteral("Nodes/");
}

QString OwnFile()
{
    return Folder() + QSysInfo::machineHostName() + u'-' + QString::number(QCoreApplication::applicationPid()) +
           QStringLiteral(".node");
}

// The first address of the machine that another machine could reach.
QString OwnAddress()
{
    for (const QHostAddress &address : QNetworkInterface::allAddresses())
        if (address.protocol() == QAbstractSocket::IPv4Protocol && !address.isLoopback())
            return address.toString();
    return LocalHost;
}

void AppendNode(clsXML &Writer, const QString &Name, const QString &Host, const QString &Build)
{
    Writer.XMLSectionStart(QStringLiteral("Node"));
    Writer.Append(QStringLiteral("edge"), QStringLiteral("Type"));
    Writer.Append(Build, QStringLiteral("Build"));
    Writer.Append(Name, QStringLiteral("Name"));
    Writer.Append(Host, QStringLiteral("Host"));
    Writer.XMLSectionEnd(QStringLiteral("Node"));
}

} // namespace

void Announce()
{
    QDir().mkpath(Folder());
    clsXML writer;
    writer.Append(QSysInfo::machineHostName(), QStringLiteral("Name"));
    writer.Append(OwnAddress(), QStringLiteral("Host"));
    writer.Append(Global.BuildNo, QStringLiteral("Build"));
    QSaveFile file(OwnFile());
    if (file.open(QIODevice::WriteOnly)) {
        file.write(writer.GetXML().toUtf8());
        file.commit();
    }
}

QString NodesXML()
{
    clsXML writer;
    writer.XMLSectionStart(QStringLiteral("Nodes"));
    AppendNode(writer, QSysInfo::machineHostName(), LocalHost, Global.BuildNo);
    const QDateTime stale = QDateTime::currentDateTime().addSecs(-StaleSeconds);
    const QString own = QFileInfo(OwnFile()).fileName();
    for (const QFileInfo &entry : QDir(Folder()).entryInfoList({QStringLiteral("*.node")}, QDir::Files)) {
        if (entry.fileName() == own || entry.lastModified() < stale)
            continue;
        QFile file(entry.filePath());
        if (!file.open(QIODevice::ReadOnly))
            continue;
        clsXML reader(QString::fromUtf8(file.readAll()));
        QString name, host, build;
        reader.Extract(name, QStringLiteral("Name"));
        reader.Extract(host, QStringLiteral("Host"));
        reader.Extract(build, QStringLiteral("Build"));
        if (!host.isEmpty())
            AppendNode(writer, name + QStringLiteral(" (") + entry.completeBaseName().section(u'-', -1) + u')', host,
                       build);
    }
    writer.XMLSectionEnd(QStringLiteral("Nodes"));
    return writer.GetXML();
}

} // namespace EdgeNodes
