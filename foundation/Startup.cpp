#include "Startup.h"
#include "GlobalBlock.h"
#include "Registry.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QSysInfo>
#include <QThread>
#include <cstdio>

namespace {

void PrintError(const QString &title, const QString &text)
{
    std::fprintf(stderr, "%s: %s\n", qPrintable(title), qPrintable(QString(text).replace(u'\n', u' ')));
}

ErrorSink &Sink()
{
    static ErrorSink sink = PrintError;
    return sink;
}

thread_local DeferredErrors *t_deferredErrors = nullptr;

QString WithTrailingSlash(QString path)
{
    if (!path.endsWith(u'/'))
        path += u'/';
    return path;
}

QString XdgFolder(const char *variable, const QString &fallbackBelowHome)
{
    QString base = qEnvironmentVariable(variable);
    if (base.isEmpty())
        base = QDir::homePath() + u'/' + fallbackBelowHome;
    return base;
}

ProgramKind KindFromExecutable(const QString &name, const QString &product)
{
    const QString lower = name.toLower();
    const QString p = product.toLower();
    if (lower.contains(p + QStringLiteral("server")) || lower.contains(p + QStringLiteral("-server")))
        return ProgramKind::Server;
    if (lower.contains(p + QStringLiteral("client")) || lower.contains(p + QStringLiteral("administrator"))
        || lower.contains(p + QStringLiteral("-console")))
        return ProgramKind::Console;
    return ProgramKind::Other;
}

} // namespace

void SetErrorSink(ErrorSink sink)
{
    Sink() = sink ? std::move(sink) : ErrorSink(PrintError);
}

QString LogError(const QString &Routine, const QString &Text, int Number)
{
    QString text = Text;
    const qsizetype sql = text.indexOf(QStringLiteral("INSERT INTO "));
    if (sql >= 0)
        text.truncate(sql);
    text.truncate(200);
    text.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    text.replace(u'\r', u' ').replace(u'\n', u' ');

    const QString message = text + u' ' + Global.VersionText + QStringLiteral(" FROM ") + Routine;
    if (t_deferredErrors) {
        t_deferredErrors->push_back({Routine, Text, Number});
        return message;
    }
    Global.LastErrorNumber = Number;
    Global.LastErrorText = text;
    Sink()(Global.AppTitle, QStringLiteral("System Error\r\n\r\n") + message);
    return message;
}

DeferErrors::DeferErrors(DeferredErrors &Errors) : m_previous(t_deferredErrors)
{
    t_deferredErrors = &Errors;
}

DeferErrors::~DeferErrors()
{
    t_deferredErrors = m_previous;
}

void ReplayErrors(const DeferredErrors &Errors)
{
    for (const DeferredError &error : Errors)
        LogError(error.Routine, error.Text, error.Number);
}

QString LogError(const QString &Routine, const std::exception &error)
{
    return LogError(Routine, QString::fromLocal8Bit(error.what()), 1);
}

void SetStartupProperties(const QStringList &arguments)
{
    try {
        Global.CommandLine = arguments.mid(1).join(u' ').trimmed().toUpper();
        Global.DevMode = Global.CommandLine.contains(QStringLiteral("DEVMODE"));
        Global.VersionText = QStringLiteral("%1.%2.%3")
                                 .arg(POSTVANE_VERSION_MAJOR)
                                 .arg(POSTVANE_VERSION_MINOR)
                                 .arg(POSTVANE_VERSION_PATCH, 4, 10, QChar(u'0'));
        Global.Quote = QStringLiteral("\"");
        Global.RegistryRoot = QStringLiteral("Halvarsoft");
        Global.WindowsMajorVersion = QSysInfo::kernelVersion().section(u'.', 0, 0).toInt();
        Global.ProductName = QStringLiteral("Postvane");

        const QString executable = QCoreApplication::instance() ? QCoreApplication::applicationFilePath()
                                                                : (arguments.isEmpty() ? QString() : arguments.first());
        Global.AppPath = WithTrailingSlash(QFileInfo(executable).absolutePath());
        Global.DataPath = WithTrailingSlash(XdgFolder("XDG_DATA_HOME", QStringLiteral(".local/share")) + u'/'
                                            + Global.ProductName);
        Global.WorkPath = WithTrailingSlash(XdgFolder("XDG_CACHE_HOME", QStringLiteral(".cache")) + u'/'
                                            + Global.ProductName);
        Global.TempPath = Global.WorkPath + QStringLiteral("Temp/");
        MakePath(Global.DataPath);
        Global.Program = KindFromExecutable(QFileInfo(executable).fileName(), Global.ProductName);

        Global.BuildNo = GetMachineSetting(QStringLiteral("Settings"), QStringLiteral("AppBuildNo"), QStringLiteral("3.0.1000"));
        Global.FirstRun = GetMachineBool(QStringLiteral("Settings"), QStringLiteral("FirstRun"), true);
        Global.DBCreated = GetMachineBool(QStringLiteral("Settings"), QStringLiteral("DBCreated"), false);
        Global.DBType = GetMachineSetting(QStringLiteral("Settings"), QStringLiteral("DBType"));
        Global.DBVersion = GetMachineSetting(QStringLiteral("Settings"), QStringLiteral("DBVersion"),
                                             QString::number(GlobalBlock::CurrentDBVersion)).toInt();
        Global.RemoteAdmin = GetMachineBool(QStringLiteral("Settings"), QStringLiteral("RemoteAdmin"), false);
        Global.HostedEdition = GetMachineBool(QStringLiteral("Settings"), QStringLiteral("HostedEdition"), false);
        Global.DBConnection = GetMachineSetting(QStringLiteral("Settings"), QStringLiteral("DBConnection"));
        Global.DBConnectionMetaData = GetMachineSetting(QStringLiteral("Settings"), QStringLiteral("DBConnectionMetaData"));

        if (Global.Program == ProgramKind::Console)
            MakePath(Global.WorkPath);
        if (Global.HostedEdition || Global.RemoteAdmin) {
            Global.AppTitle = Global.ProductName;
            Global.DBCreated = true;
        }
        SettleDatabaseKind();
    } catch (const std::exception &error) {
        LogError(QStringLiteral("SetStartupProperties"), error);
    }
}

void SettleDatabaseKind()
{
    const QString type = Global.DBType.trimmed().toUpper();
    Global.DatabaseKind = (type.isEmpty() || type == QStringLiteral("NONE")) ? 99 : 0;
    if (Global.DatabaseKind != 99)
        return;
    if (QFileInfo::exists(Global.DataPath + QStringLiteral("MessageStore.db3")))
        Global.DBCreated = true;
    else
        Global.DBVersion = GlobalBlock::CurrentDBVersion;
}

void Wait(int Quarters)
{
    QDeadlineTimer deadline(qMax(1, Quarters) * 250);
    while (!deadline.hasExpired() && !Global.StopWait) {
        if (QCoreApplication::instance()) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        }
        QThread::msleep(qMin<qint64>(10, qMax<qint64>(0, deadline.remainingTime())));
    }
}

bool MakePath(const QString &Path)
{
    if (Path.isEmpty())
        return false;
    QDir dir(Path);
    return dir.exists() || dir.mkpath(QStringLiteral("."));
}

bool RunProgram(const QString &Path, const QStringList &Arguments)
{
    if (!QFileInfo::exists(Path))
        return false;
    return QProcess::startDetached(Path, Arguments);
}

int ShellProgram(const QString &CommandLine)
{
    QStringList parts = QProcess::splitCommand(CommandLine);
    if (parts.isEmpty())
        return -1;
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    const QString program = parts.takeFirst();
    process.start(program, parts);
    if (!process.waitForStarted())
        return -1;
    process.waitForFinished(-1);
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}
