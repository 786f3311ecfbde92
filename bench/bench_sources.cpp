// Measures reading mail servers into the edge queue: a Dovecot on loopback
// (started here, as the tests start it) holds 10,000 messages of 5 KB;
// 1. the IMAP reader takes them all into an empty edge queue, leaving them on
//    the server; messages per second;
// 2. the curl program fetches messages of the same mailbox one at a time in
//    a loop (a new curl per message, as a script would), over a sample of
//    the messages; messages per second and the ratio of the two;
// 3. the same two for POP3.
//
// Usage: bench_sources [--messages N] [--size BYTES] [--curl N]
#include "../tests/engine/DovecotServer.h"
#include "engine/sources/EdgeQueueSink.h"
#include "engine/sources/ImapReader.h"
#include "engine/sources/Pop3Reader.h"
#include "BenchSetup.h"
#include "store/clsMessageStore.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

namespace {

QByteArray Message(int N, int Size)
{
    QByteArray mime = "From: sender@example.com\r\nTo: postvane@example.com\r\nSubject: Bench message "
                      + QByteArray::number(N) + "\r\nMessage-ID: <bench" + QByteArray::number(N)
                      + "@example.com>\r\nDate: " + QDateTime::currentDateTime().toString(Qt::RFC2822Date).toLatin1()
                      + "\r\nMIME-Version: 1.0\r\nContent-Type: text/plain\r\n\r\n";
    while (mime.size() < Size)
        mime += "The goods of order " + QByteArray::number(N) + " were shipped as agreed on the day before.\r\n";
    mime.truncate(Size - 2);
    return mime + "\r\n";
}

SourceAccount Account(const QString &ID, const DovecotServer &Dovecot)
{
    SourceAccount account;
    account.AccountID = ID;
    for (SourceEndpoint *endpoint : {&account.Imap, &account.Pop3}) {
        endpoint->Host = QStringLiteral("127.0.0.1");
        endpoint->User = QStringLiteral("postvane");
        endpoint->Password = QStringLiteral("secret");
    }
    account.Imap.Port = Dovecot.ImapPort;
    account.Pop3.Port = Dovecot.Pop3Port;
    account.ImapFolder = QStringLiteral("INBOX");
    account.ImapServerIDs = true;
    account.ImapMarkAsRead = false;
    account.ImapLeaveMessageOn = true;
    account.Pop3LeaveMessageOn = true;
    return account;
}

double Reader(SourceReader &Reader, SourceAccount Account, clsMessageStore &Store, int Expected)
{
    EdgeQueueSink sink(Store);
    QElapsedTimer clock;
    clock.start();
    const SourceReadResult result = Reader.Read(Account, sink);
    const double seconds = clock.nsecsElapsed() / 1e9;
    if (result.Failed || result.NewMessages != Expected) {
        std::fprintf(stderr, "%s read %d of %d: %s\n", qPrintable(Reader.Source()), result.NewMessages, Expected,
                     qPrintable(result.Failure));
        return 0;
    }
    return Expected / seconds;
}

// curl fetching messages 1..Count, one process each; %1 in the pattern is the number.
double CurlLoop(const QString &UrlPattern, int Count)
{
    QElapsedTimer clock;
    clock.start();
    for (int n = 1; n <= Count; ++n) {
        QProcess curl;
        curl.start(QStringLiteral("curl"), {QStringLiteral("-s"), QStringLiteral("-o"), QStringLiteral("/dev/null"),
                                            QStringLiteral("-u"), QStringLiteral("postvane:secret"), UrlPattern.arg(n)});
        if (!curl.waitForFinished(30000) || curl.exitCode() != 0) {
            std::fprintf(stderr, "curl failed on message %d\n", n);
            return 0;
        }
    }
    return Count / (clock.nsecsElapsed() / 1e9);
}

void Report(const char *Protocol, double Ours, double Loop, int Messages, int Size, int Sample)
{
    std::printf("%-5s reader into the edge queue: %8.0f messages/s (%d messages of %d bytes)\n", Protocol, Ours,
                Messages, Size);
    std::printf("%-5s curl, one process a message:  %8.0f messages/s (first %d messages)\n", Protocol, Loop, Sample);
    std::printf("%-5s ratio reader / curl loop:     %8.1f\n", Protocol, Loop > 0 ? Ours / Loop : 0.0);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const int messages = IntArgument(args, QStringLiteral("--messages"), 10000);
    const int size = IntArgument(args, QStringLiteral("--size"), 5 * 1024);
    const int sample = std::min(messages, IntArgument(args, QStringLiteral("--curl"), 200));

    QTemporaryDir folder;
    UseStoreIn(folder.path());
    clsMessageStore store;
    if (!store.OpenMessageStore()) {
        std::fprintf(stderr, "cannot open the store: %s\n", qPrintable(store.LastError));
        return 1;
    }
    DovecotServer dovecot;
    if (!dovecot.Start()) {
        std::fprintf(stderr, "dovecot did not start: %s\n", qPrintable(dovecot.Problem));
        return 1;
    }
    for (int n = 1; n <= messages; ++n)
        dovecot.Deliver(Message(n, size));
    // Dovecot indexes a new mailbox on its first look; that is not the reader's time.
    {
        SourceAccount warm = Account(QStringLiteral("WARM"), dovecot);
        warm.MaxMessagesPerRun = 1;
        ImapReader reader;
        Reader(reader, warm, store, 1);
    }

    ImapReader imap;
    const double imapRate = Reader(imap, Account(QStringLiteral("IMAP"), dovecot), store, messages);
    const double imapLoop = CurlLoop(QStringLiteral("imap://127.0.0.1:") + QString::number(dovecot.ImapPort) + QStringLiteral("/INBOX;UID=%1"), sample);
    Report("IMAP", imapRate, imapLoop, messages, size, sample);

    Pop3Reader pop3;
    const double pop3Rate = Reader(pop3, Account(QStringLiteral("POP3"), dovecot), store, messages);
    const double pop3Loop = CurlLoop(QStringLiteral("pop3://127.0.0.1:") + QString::number(dovecot.Pop3Port) + QStringLiteral("/%1"), sample);
    Report("POP3", pop3Rate, pop3Loop, messages, size, sample);
    return imapRate > 0 && pop3Rate > 0 ? 0 : 1;
}
