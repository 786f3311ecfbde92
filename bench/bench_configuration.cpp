// Builds a configuration of N accounts, each with 20 triggers of 10 fields and
// 10 actions of a realistic mix, writes colAccounts.XML with the triggers,
// reads it back into a new collection, and prints the size, the throughput
// each way and the time per trigger, for N = 100, 1,000 and 2,000. Then times
// keyed look-ups (Item by AccountID) against the size of the collection.
// The built collection is gone before the read, as on a start, where only the
// file is there.
//
// Usage: bench_configuration [--no-lookups] [--save FILE] [--read FILE] [N ...]
//   --save FILE  keeps the text of the last configuration written in FILE
//   --read FILE  times reading FILE only (a saved or a real configuration),
//                twice: the second read reuses the memory the first freed
#include "SampleConfiguration.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <algorithm>
#include <cstdio>
#include <sys/resource.h>

namespace {

using namespace SampleConfiguration;

double Seconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e9;
}

double Megabytes(const QString &xml)
{
    return double(xml.toUtf8().size()) / (1024.0 * 1024.0);
}

struct ReadFigures
{
    double Seconds;
    double UserSeconds; // on all threads
    double SystemSeconds;
    int Accounts;
    int Triggers;
};

std::pair<double, double> ProcessorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return {seconds(usage.ru_utime), seconds(usage.ru_stime)};
}

ReadFigures TimeRead(const QString &xml)
{
    colAccounts read;
    QElapsedTimer timer;
    const auto [user, system] = ProcessorSeconds();
    timer.start();
    read.setXML(xml);
    const double seconds = Seconds(timer);
    const auto [userAfter, systemAfter] = ProcessorSeconds();
    return {seconds, userAfter - user, systemAfter - system, read.Count(), read.TotalTriggers()};
}

void PrintRead(const ReadFigures &figures, double megabytes)
{
    const double triggers = std::max(figures.Triggers, 1);
    std::printf("read %7.3f s %6.1f MB/s %6.1f us/trigger (processor: user %5.1f, system %5.1f us/trigger)\n",
                figures.Seconds, megabytes / figures.Seconds, figures.Seconds * 1e6 / triggers,
                figures.UserSeconds * 1e6 / triggers, figures.SystemSeconds * 1e6 / triggers);
    std::fflush(stdout);
}

QString WrittenConfiguration(int accounts, double &writeSeconds)
{
    colAccounts built;
    for (int n = 1; n <= accounts; ++n)
        built.Add(Account(n));
    QElapsedTimer timer;
    timer.start();
    const QString xml = built.XML();
    writeSeconds = Seconds(timer);
    return xml;
}

bool SaveText(const QString &path, const QString &xml)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(xml.toUtf8()) >= 0;
}

void RunConfiguration(int accounts, const QString &savePath)
{
    double writeSeconds = 0;
    const QString xml = WrittenConfiguration(accounts, writeSeconds);
    const double megabytes = Megabytes(xml);
    if (!savePath.isEmpty() && !SaveText(savePath, xml))
        std::printf("could not save %s\n", qPrintable(savePath));

    const ReadFigures figures = TimeRead(xml);
    const int triggers = accounts * TriggersPerAccount;
    if (figures.Accounts != accounts || figures.Triggers != triggers) {
        std::printf("N=%d: read %d accounts and %d triggers\n", accounts, figures.Accounts, figures.Triggers);
        return;
    }
    std::printf("%6d accounts %7.1f MB | write %7.3f s %6.1f MB/s %6.1f us/trigger | ", accounts, megabytes,
                writeSeconds, megabytes / writeSeconds, writeSeconds * 1e6 / triggers);
    PrintRead(figures, megabytes);
}

int RunFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::printf("cannot read %s\n", qPrintable(path));
        return 1;
    }
    const QString xml = QString::fromUtf8(file.readAll());
    // The second read finds the memory the first one freed: the difference is
    // what the system charges for handing a process fresh pages.
    for (const char *which : {"first read", "read again"}) {
        const ReadFigures figures = TimeRead(xml);
        std::printf("%-10s %6d accounts %6d triggers %7.1f MB | ", which, figures.Accounts, figures.Triggers,
                    Megabytes(xml));
        PrintRead(figures, Megabytes(xml));
    }
    return 0;
}

// Accounts without triggers: what is timed is the look-up, not the records.
void RunLookups(int accounts)
{
    constexpr int Lookups = 1000000;
    colAccounts collection;
    QStringList keys;
    for (int n = 1; n <= accounts; ++n) {
        auto account = std::make_unique<clsAccount>();
        account->AccountID = QStringLiteral("ACC%1").arg(n, 7, 10, QLatin1Char('0'));
        keys << account->AccountID;
        collection.Add(std::move(account));
    }
    QRandomGenerator random(accounts);
    QStringList probes;
    for (int i = 0; i < 1024; ++i)
        probes << keys.at(random.bounded(accounts));

    QElapsedTimer timer;
    timer.start();
    qsizetype found = 0;
    for (int i = 0; i < Lookups; ++i)
        found += collection.Item(probes.at(i & 1023)) != nullptr;
    const double seconds = Seconds(timer);
    std::printf("%8d accounts: %6.1f ns per Item(key)%s\n", accounts, seconds * 1e9 / Lookups,
                found == Lookups ? "" : " (some keys not found)");
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QList<int> sizes;
    bool lookups = true;
    QString savePath;
    const QStringList arguments = app.arguments().mid(1);
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        const QString next = arguments.value(i + 1);
        if (argument == QStringLiteral("--no-lookups"))
            lookups = false;
        else if (argument == QStringLiteral("--read"))
            return RunFile(next);
        else if (argument == QStringLiteral("--save"))
            savePath = arguments.value(++i);
        else if (argument.toInt() > 0)
            sizes << argument.toInt();
    }
    if (sizes.isEmpty())
        sizes = {100, 1000, 2000};

    std::printf("Configuration: %d triggers per account, %d fields and 10 actions per trigger\n", TriggersPerAccount,
                FieldsPerTrigger);
    for (int accounts : sizes)
        RunConfiguration(accounts, savePath);
    if (!lookups)
        return 0;
    std::printf("Keyed look-ups:\n");
    for (int accounts : {1000, 10000, 100000, 1000000})
        RunLookups(accounts);
    return 0;
}
