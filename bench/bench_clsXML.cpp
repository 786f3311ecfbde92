// Writes N account-sized records (100 tags each) into one fragment with
// clsXML, reads them back record by record, and prints the throughput each
// way and the time per record, for N = 1,000, 10,000 and 100,000.
#include "foundation/clsXML.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <cstdio>
#include <map>
#include <vector>

namespace {

constexpr int StringTags = 60;
constexpr int IntTags = 18;
constexpr int BoolTags = 15;
constexpr int DateTags = 5;
constexpr int PasswordTags = 2;

struct Record
{
    QString strings[StringTags];
    qint32 ints[IntTags];
    bool bools[BoolTags];
    QDateTime dates[DateTags];
    QString passwords[PasswordTags];
};

// Tag names are made once, as a record class holds them as constants.
const QString &Tag(const char *kind, int i)
{
    static const auto names = [] {
        std::map<char, std::vector<QString>> all;
        for (char k : {'S', 'I', 'B', 'D', 'P'})
            for (int j = 0; j < StringTags; ++j)
                all[k].push_back(QStringLiteral("%1Property%2").arg(QChar(k)).arg(j));
        return all;
    }();
    return names.at(kind[0])[i];
}

Record MakeRecord(int n)
{
    Record r;
    for (int i = 0; i < StringTags; ++i)
        r.strings[i] = QStringLiteral("value %1 of record %2 & <more>").arg(i).arg(n);
    for (int i = 0; i < IntTags; ++i)
        r.ints[i] = n * 31 + i + 1;
    for (int i = 0; i < BoolTags; ++i)
        r.bools[i] = (n + i) % 2 == 0;
    for (int i = 0; i < DateTags; ++i)
        r.dates[i] = QDateTime(QDate(2026, 1 + i, 1 + n % 28), QTime(n % 24, i, 0));
    for (int i = 0; i < PasswordTags; ++i)
        r.passwords[i] = QStringLiteral("pw%1").arg(n % 97);
    return r;
}

void Write(clsXML &xml, const Record &r)
{
    xml.XMLSectionStart(QStringLiteral("Account"));
    for (int i = 0; i < StringTags; ++i)
        xml.Append(r.strings[i], Tag("S", i));
    for (int i = 0; i < IntTags; ++i)
        xml.Append(r.ints[i], Tag("I", i));
    for (int i = 0; i < BoolTags; ++i)
        xml.Append(r.bools[i], Tag("B", i));
    for (int i = 0; i < DateTags; ++i)
        xml.Append(r.dates[i], Tag("D", i));
    for (int i = 0; i < PasswordTags; ++i)
        xml.AppendPassword(r.passwords[i], Tag("P", i));
    xml.XMLSectionEnd(QStringLiteral("Account"));
}

Record Read(const QString &fragment)
{
    clsXML xml(fragment);
    Record r;
    for (int i = 0; i < StringTags; ++i)
        xml.Extract(r.strings[i], Tag("S", i));
    for (int i = 0; i < IntTags; ++i)
        xml.Extract(r.ints[i], Tag("I", i));
    for (int i = 0; i < BoolTags; ++i)
        xml.Extract(r.bools[i], Tag("B", i));
    for (int i = 0; i < DateTags; ++i)
        xml.Extract(r.dates[i], Tag("D", i));
    for (int i = 0; i < PasswordTags; ++i)
        xml.Extract(r.passwords[i], Tag("P", i), false, true);
    return r;
}

void Run(int count)
{
    // A pool of distinct records, made before the clock runs.
    std::vector<Record> pool;
    for (int n = 0; n < 64; ++n)
        pool.push_back(MakeRecord(n));

    QElapsedTimer clock;
    clock.start();
    clsXML writer;
    writer.XMLSectionStart(QStringLiteral("Accounts"));
    for (int n = 0; n < count; ++n) {
        pool[n % 64].ints[0] = n + 1;
        Write(writer, pool[n % 64]);
    }
    writer.XMLSectionEnd(QStringLiteral("Accounts"));
    const QString text = writer.GetXML();
    const double writeSeconds = clock.nsecsElapsed() / 1e9;

    clock.restart();
    clsXML reader(text);
    QString fragment;
    int read = 0;
    qint64 check = 0;
    while (reader.Extract(fragment, QStringLiteral("Account"), true)) {
        const Record r = Read(fragment);
        check += r.ints[0] + r.passwords[0].size();
        ++read;
    }
    const double readSeconds = clock.nsecsElapsed() / 1e9;
    const double megabytes = text.toUtf8().size() / 1e6;

    std::printf("%8d records  %8.1f MB  write %7.1f MB/s %7.2f us/record  read %7.1f MB/s %7.2f us/record%s\n",
                count, megabytes, megabytes / writeSeconds, writeSeconds * 1e6 / count, megabytes / readSeconds,
                readSeconds * 1e6 / count, read == count && check > 0 ? "" : "  READ MISMATCH");
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    std::printf("clsXML: N account-sized records of %d tags each, written to one fragment and read back\n",
                StringTags + IntTags + BoolTags + DateTags + PasswordTags);
    // Counts may be given on the command line, for profiling a single size.
    QList<int> counts{1000, 10000, 100000};
    if (argc > 1) {
        counts.clear();
        for (int i = 1; i < argc; ++i)
            counts << QByteArray(argv[i]).toInt();
    }
    for (int count : counts)
        Run(count);
    return 0;
}
