#include "ErrorCapture.h"
#include "StoreFixture.h"
#include "TestRegistry.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/MimeMail.h"
#include "store/clsMessage.h"

#include <QSet>
#include <QTest>
#include <functional>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// What the test knows of each message it stored.
struct Stored
{
    QString Account;
    QString Trigger;
    QString Folder;
    QString Organization;
    QString Subject;
    QDate Day;
    bool Failed;
    bool Matched;
};

// The record numbers of every page of the set, 37 rows a page, so that pages
// join at odd places.
QList<qint64> PagedRecordNumbers(clsMessageStore &store, const MessageSetFilter &filter)
{
    QList<qint64> numbers;
    for (qint64 first = 1;; first += 37) {
        const QString page = store.GetMessageSet(filter, first, first + 36);
        const QStringList lines = page.split(u'\n', Qt::SkipEmptyParts);
        for (const QString &line : lines)
            numbers << line.section(u'\t', 0, 0).toLongLong();
        if (lines.size() < 37)
            return numbers;
    }
}

} // namespace

// Messages stored through the store's own writer come back the same through
// every filter, page by page, and as MIME text.
class tst_StoreRoundTrip : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;

private slots:
    void init()
    {
        m_errors.clear();
        ResetGlobalCollections();
    }
    void cleanup() { ResetGlobalCollections(); }

    void thousandMessagesCountAndPageUnderEveryFilter()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        std::vector<std::unique_ptr<clsAccount>> accounts;
        for (int a = 0; a < 4; ++a) {
            accounts.push_back(std::make_unique<clsAccount>());
            accounts.back()->AccountID = u"ACC%1"_s.arg(a);
            accounts.back()->OrganizationID = a < 2 ? u"ORGA"_s : u"ORGB"_s;
            accounts.back()->StoreFull = true;
        }
        clsAccountTrigger trigger;
        trigger.TriggerID = u"TRG1"_s;

        const QStringList subjects = {u"Invoice %1"_s, u"O'Brien's order %1"_s, u"100% sure %1"_s,
                                      u"Delivery; DROP TABLE MessageStore; %1"_s, u"Ärger mit der Lieferung %1"_s};
        QMap<qint64, Stored> stored;
        QVERIFY(f.Store.BeginTransaction()); // one commit; each add must join it, not start its own
        for (int n = 0; n < 1000; ++n) {
            clsMessage message;
            message.Account = accounts[n % 4].get();
            message.setTrigger(n % 3 == 0 ? &trigger : nullptr);
            message.FolderID = u"FOLDER%1"_s.arg(n % 5);
            message.Subject = subjects.at(n % subjects.size()).arg(n);
            message.From = u"sender%1@example.com"_s.arg(n % 7);
            message.ToAddress = u"orders@example.com"_s;
            message.Dated = QDateTime(QDate(2024, 1, 1).addDays(n % 90), QTime(n % 24, n % 60));
            message.TriggerConditionPassed = n % 2 == 0;
            message.ErrorCount = n % 10 == 0 ? 1 : 0;
            message.MessageText = u"Body of message %1"_s.arg(n);
            const qint64 recordNo = f.Store.AddToMailStore(message);
            QVERIFY(recordNo > 0);
            stored.insert(recordNo, {message.Account->AccountID, message.Trigger() ? trigger.TriggerID : u"-"_s,
                                     message.FolderID, message.Account->OrganizationID, message.Subject,
                                     message.Dated.date(), message.ErrorCount > 0, message.TriggerConditionPassed});
        }
        QVERIFY(f.Store.EndTransaction());

        MessageSetFilter base;
        base.FromDate = QDate(2000, 1, 1);
        base.ToDate = QDate::currentDate();
        base.OrganizationID = u"ORGA"_s;
        const auto inOrganization = [](const Stored &s) { return s.Organization == u"ORGA"_s; };
        struct Case
        {
            const char *Name;
            std::function<void(MessageSetFilter &)> Set;
            std::function<bool(const Stored &)> Keep;
        };
        const QList<Case> cases = {
            {"organization", [](MessageSetFilter &) {}, [](const Stored &) { return true; }},
            {"account", [](MessageSetFilter &m) { m.AccountID = u"ACC1"_s; },
             [](const Stored &s) { return s.Account == u"ACC1"_s; }},
            {"trigger", [](MessageSetFilter &m) { m.TriggerID = u"TRG1"_s; },
             [](const Stored &s) { return s.Trigger == u"TRG1"_s; }},
            {"period", [](MessageSetFilter &m) { m.FromDate = QDate(2024, 2, 1), m.ToDate = QDate(2024, 2, 10); },
             [](const Stored &s) { return s.Day >= QDate(2024, 2, 1) && s.Day <= QDate(2024, 2, 10); }},
            {"errors", [](MessageSetFilter &m) { m.ErrorsOnly = true; }, [](const Stored &s) { return s.Failed; }},
            {"matches", [](MessageSetFilter &m) { m.MatchesOnly = true; }, [](const Stored &s) { return s.Matched; }},
            {"search with quote", [](MessageSetFilter &m) { m.SearchText = u"O'Brien"_s; },
             [](const Stored &s) { return s.Subject.contains(u"O'Brien"_s); }},
            {"search with SQL", [](MessageSetFilter &m) { m.SearchText = u"DROP TABLE"_s; },
             [](const Stored &s) { return s.Subject.contains(u"DROP TABLE"_s); }},
            {"folder", [](MessageSetFilter &m) { m.FolderID = u"FOLDER2"_s; },
             [](const Stored &s) { return s.Folder == u"FOLDER2"_s; }},
            {"everything at once",
             [](MessageSetFilter &m) {
                 m.AccountID = u"ACC0"_s, m.FolderID = u"FOLDER0"_s, m.MatchesOnly = true,
                 m.SearchText = u"Invoice"_s;
             },
             [](const Stored &s) {
                 return s.Account == u"ACC0"_s && s.Folder == u"FOLDER0"_s && s.Matched
                     && s.Subject.startsWith(u"Invoice"_s);
             }},
        };
        for (const Case &c : cases) {
            MessageSetFilter filter = base;
            c.Set(filter);
            QList<qint64> expected;
            for (auto it = stored.cbegin(); it != stored.cend(); ++it)
                if (inOrganization(*it) && c.Keep(*it))
                    expected << it.key();
            QVERIFY2(!expected.isEmpty(), c.Name);
            QCOMPARE(f.Store.CountMessageSet(filter), qint64(expected.size()));
            const QList<qint64> paged = PagedRecordNumbers(f.Store, filter);
            QCOMPARE(QSet<qint64>(paged.cbegin(), paged.cend()).size(), paged.size()); // no row on two pages
            QList<qint64> sortedPaged = paged;
            std::sort(sortedPaged.begin(), sortedPaged.end());
            QVERIFY2(sortedPaged == expected, c.Name);
            for (qsizetype i = 1; i < paged.size(); ++i) // newest first
                QVERIFY(stored[paged[i - 1]].Day >= stored[paged[i]].Day);
        }
        QCOMPARE(f.Count(u"MessageStore"_s), 1000);

        const qint64 someRecord = stored.firstKey() + 4;
        MimeMail mail;
        QVERIFY(mail.LoadMime(f.Store.GetMessage(someRecord)));
        QCOMPARE(mail.TextBody().trimmed(), u"Body of message 4"_s);
        QCOMPARE(mail.Header(u"Postvane-TriggerMatch"_s), u"Y"_s);
        QVERIFY(m_errors.isEmpty());
    }

    // The extremes of size: nothing at all, and a message of 50 MB.
    void emptyAndHugeMessagesAreStoredWhole()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        clsMessage empty;
        const qint64 emptyNo = f.Store.AddToMailStore(empty);
        QVERIFY(emptyNo > 0);
        MimeMail mail;
        QVERIFY(mail.LoadMime(f.Store.GetMessage(emptyNo)));
        QCOMPARE(mail.Header(u"Postvane-TriggerSuccess"_s), u"Y"_s);

        clsMessage huge;
        const QString line = u"0123456789abcdefghijklmnopqrstuvwxyz0123456789abcdefghijklmnopqrs\r\n"_s;
        huge.MessageText = u"Subject: big\r\n\r\n"_s + line.repeated(50 * 1024 * 1024 / line.size());
        huge.Size = qint32(huge.MessageText.size());
        const qint64 hugeNo = f.Store.AddToMailStore(huge);
        QVERIFY(hugeNo > 0);
        QCOMPARE(f.Value(u"SELECT length(Body) FROM MessageStore WHERE RecordNo=%1"_s.arg(hugeNo)).toLongLong(),
                 qint64(huge.MessageText.size() - 16));
        QVERIFY(f.Store.GetMessage(hugeNo).size() > 50 * 1000 * 1000);
        QVERIFY(m_errors.isEmpty());
    }
};

POSTVANE_TEST(tst_StoreRoundTrip)
#include "tst_StoreRoundTrip.moc"
