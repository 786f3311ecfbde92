// Builds a configuration of N accounts, each with 20 triggers of 10 fields and
// 10 actions of a realistic mix, writes colAccounts.XML with the triggers,
// reads it back into a new collection, and prints the size, the throughput
// each way and the time per trigger, for N = 100, 1,000 and 2,000. Then times
// keyed look-ups (Item by AccountID) against the size of the collection.
//
// Usage: bench_configuration [--no-lookups] [N ...]
#include "SampleConfiguration.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <cstdio>

namespace {

using namespace SampleConfiguration;

double Seconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e9;
}

void RunConfiguration(int accounts)
{
    colAccounts built;
    for (int n = 1; n <= accounts; ++n)
        built.Add(Account(n));

    QElapsedTimer timer;
    timer.start();
    const QString xml = built.XML();
    const double writeSeconds = Seconds(timer);
    const double megabytes = double(xml.toUtf8().size()) / (1024.0 * 1024.0);

    colAccounts read;
    timer.start();
    read.setXML(xml);
    const double readSeconds = Seconds(timer);

    const int triggers = read.TotalTriggers();
    if (read.Count() != accounts || triggers != accounts * TriggersPerAccount) {
        std::printf("N=%d: read %d accounts and %d triggers\n", accounts, read.Count(), triggers);
        return;
    }
    std::printf("%6d accounts %7.1f MB | write %7.3f s %6.1f MB/s %6.1f us/trigger | "
                "read %7.3f s %6.1f MB/s %6.1f us/trigger\n",
                accounts, megabytes, writeSeconds, megabytes / writeSeconds, writeSeconds * 1e6 / triggers, readSeconds,
                megabytes / readSeconds, readSeconds * 1e6 / triggers);
    std::fflush(stdout);
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
    for (const QString &argument : app.arguments().mid(1)) {
        if (argument == QStringLiteral("--no-lookups"))
            lookups = false;
        else if (argument.toInt() > 0)
            sizes << argument.toInt();
    }
    if (sizes.isEmpty())
        sizes = {100, 1000, 2000};

    std::printf("Configuration: %d triggers per account, %d fields and 10 actions per trigger\n", TriggersPerAccount,
                FieldsPerTrigger);
    for (int accounts : sizes)
        RunConfiguration(accounts);
    if (!lookups)
        return 0;
    std::printf("Keyed look-ups:\n");
    for (int accounts : {1000, 10000, 100000, 1000000})
        RunLookups(accounts);
    return 0;
}
