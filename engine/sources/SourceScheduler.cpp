#include "SourceScheduler.h"

#include "AutoRunReader.h"
#include "CSVPickupReader.h"
#include "DatabasePullReader.h"
#include "EdgeQueueSink.h"
#include "FeedReader.h"
#include "FilePickupReader.h"
#include "HttpFetch.h"
#include "HttpLookupReader.h"
#include "ImapReader.h"
#include "Pop3Reader.h"
#include "engine/EdgeRole.h"
#include "engine/databases/ConnectionString.h"
#include "engine/RoleLog.h"
#include "foundation/Startup.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "store/clsMessageStore.h"

#include <QMutexLocker>

namespace
{
QMutex s_requestLock;
QSet<QString> s_requested; // accounts "checknow.xml" asked for

// The message store of a reader thread, opened on its first read.
clsMessageStore *ThreadStore(QString &Problem)
{
    thread_local std::unique_ptr<clsMessageStore> store;
    if (!store) {
        auto opened = std::make_unique<clsMessageStore>();
        if (!opened->OpenMessageStore()) {
            Problem = opened->LastError;
            return nullptr;
        }
        store = std::move(opened);
    }
    return store.get();
}

// Where a reader reads, as the log names it.
QString Where(const SourceReader &Reader, const SourceAccount &Account)
{
    if (Reader.Source() == QStringLiteral("IMAP"))
        return QStringLiteral("IMAP ") + Account.Imap.Where() + u' ' + Account.ImapFolder;
    if (Reader.Source() == QStringLiteral("POP3"))
        return QStringLiteral("POP3 ") + Account.Pop3.Where();
    if (Reader.Source() == QStringLiteral("FILE"))
        return QStringLiteral("file pickup ") + Account.FilePickupFolder;
    if (Reader.Source() == QStringLiteral("CSV"))
        return QStringLiteral("CSV and Excel pickup ") + Account.CSVPickupFolder;
    if (Reader.Source() == QStringLiteral("DB"))
        return QStringLiteral("database pull ") + ConnectionString::Masked(Account.DBConnection);
    if (Reader.Source() == QStringLiteral("HTTP"))
        return QStringLiteral("HTTP lookup ") + HttpFetch::Displayed(Account.HTTPUrl);
    if (Reader.Source() == QStringLiteral("RSS"))
        return QStringLiteral("feed ") + HttpFetch::Displayed(Account.RSSUrl);
    return QStringLiteral("auto run");
}
}

SourceScheduler::SourceScheduler(RoleLog &Log, const QString &DataFolder, int Threads)
    : m_log(Log)
    , m_state(DataFolder)
{
    m_pool.setMaxThreadCount(Threads);
    m_state.Load();
}

SourceScheduler::~SourceScheduler()
{
    Finish();
}

void SourceScheduler::AddTo(EdgeRole &Edge, const QString &DataFolder)
{
    auto scheduler = std::make_shared<SourceScheduler>(Edge.Role.Log, DataFolder);
    scheduler->ReadEnded = [&Edge] { Edge.Role.Wake(); };
    Edge.AddJob(QStringLiteral("Sources"), 1000, [scheduler](EdgeRole &) { scheduler->Run(); });
}

void SourceScheduler::CheckNow(const QStringList &AccountIDs)
{
    QMutexLocker locker(&s_requestLock);
    for (const QString &id : AccountIDs)
        s_requested.insert(id);
}

void SourceScheduler::Finish()
{
    m_pool.waitForDone();
    TakeEnded();
}

bool SourceScheduler::ReadsAnything(const clsAccount &Account)
{
    return Account.IMAP || Account.SMTPServer || Account.FilePickUp || Account.AutoRun || Account.EWS
        || Account.TwitterFeed || Account.CSVPickUp || Account.DBPull || Account.HTTP || Account.RSS;
}

QStringList SourceScheduler::Unavailable(const clsAccount &Account)
{
    QStringList kinds;
    if (Account.AutoRun)
        return kinds;
    if (Account.EWS)
        kinds << QStringLiteral("Exchange (EWS)");
    if (Account.TwitterFeed)
        kinds << QStringLiteral("Twitter feed");
    return kinds;
}

void SourceScheduler::TakeEnded()
{
    QList<SourceAccount> ended;
    {
        QMutexLocker locker(&m_lock);
        ended.swap(m_ended);
        for (const SourceAccount &account : ended)
            m_running.remove(account.AccountID);
    }
    for (const SourceAccount &account : ended)
        m_state.Read(account);
}

void SourceScheduler::Run()
{
    TakeEnded();
    QSet<QString> requested;
    {
        QMutexLocker locker(&s_requestLock);
        requested.swap(s_requested);
    }
    const QDateTime now = QDateTime::currentDateTime();
    for (clsAccount *account : Accounts()) {
        if (!account || !account->Enabled || account->Outbox || !ReadsAnything(*account))
            continue;
        bool running = false;
        {
            QMutexLocker locker(&m_lock);
            running = m_running.contains(account->AccountID);
        }
        if (running) {
            // Asked again while it reads: it is read once more afterwards.
            if (requested.contains(account->AccountID))
                CheckNow({account->AccountID});
            continue;
        }
        m_state.ApplyTo(*account);
        account->MustCheckNow = requested.contains(account->AccountID);
        if (!account->CheckNow(now))
            continue;
        m_state.Checked(*account, now);
        account->LastChecked = now;
        Start(*account);
    }
}

void SourceScheduler::Start(clsAccount &Account)
{
    for (const QString &kind : Unavailable(Account))
        m_log.Add(QStringLiteral("Account ") + Account.Name + QStringLiteral(": ") + kind
                  + QStringLiteral(" is not available on this server."));
    std::vector<std::shared_ptr<SourceReader>> readers;
    if (Account.AutoRun) {
        readers.push_back(std::make_shared<AutoRunReader>());
    } else {
        if (Account.IMAP)
            readers.push_back(std::make_shared<ImapReader>());
        if (Account.SMTPServer)
            readers.push_back(std::make_shared<Pop3Reader>());
        if (Account.FilePickUp) {
            auto files = std::make_shared<FilePickupReader>();
            files->QuietMilliseconds = FileQuietMilliseconds;
            readers.push_back(files);
        }
        if (Account.CSVPickUp) {
            auto sheets = std::make_shared<CSVPickupReader>();
            sheets->QuietMilliseconds = FileQuietMilliseconds;
            readers.push_back(sheets);
        }
        if (Account.DBPull)
            readers.push_back(std::make_shared<DatabasePullReader>());
        if (Account.HTTP)
            readers.push_back(std::make_shared<HttpLookupReader>());
        if (Account.RSS)
            readers.push_back(std::make_shared<FeedReader>());
    }
    if (readers.empty())
        return;
    {
        QMutexLocker locker(&m_lock);
        m_running.insert(Account.AccountID);
    }
    SourceAccount source = SourceAccount::From(Account);
    m_state.ApplyTo(source);
    source.Imap.TimeoutSeconds = TimeoutSeconds;
    source.Pop3.TimeoutSeconds = TimeoutSeconds;
    source.TimeoutSeconds = TimeoutSeconds;
    m_pool.start([this, source, readers]() mutable {
        DeferredErrors kept;
        {
            DeferErrors keep(kept);
            QString problem;
            clsMessageStore *store = ThreadStore(problem);
            if (!store) {
                m_log.Add(QStringLiteral("* Account ") + source.Name + QStringLiteral(": the message store cannot be opened: ") + problem);
            } else {
                EdgeQueueSink sink(*store);
                for (const auto &reader : readers) {
                    const SourceReadResult result = reader->Read(source, sink);
                    QString line = QStringLiteral("Account ") + source.Name + QStringLiteral(": ") + Where(*reader, source)
                        + QStringLiteral(", ") + QString::number(result.NewMessages) + QStringLiteral(" new message")
                        + (result.NewMessages == 1 ? QString() : QStringLiteral("s"));
                    if (!result.Note.isEmpty())
                        line += QStringLiteral(" (") + result.Note + u')';
                    if (result.Failed)
                        line = QStringLiteral("* ") + line + QStringLiteral(", failed: ") + result.Failure;
                    m_log.Add(line);
                }
            }
        }
        for (const DeferredError &error : kept)
            m_log.Add(QStringLiteral("* ") + error.Routine + QStringLiteral(": ") + error.Text);
        {
            QMutexLocker locker(&m_lock);
            m_ended.append(source);
        }
        if (ReadEnded)
            ReadEnded();
    });
}
