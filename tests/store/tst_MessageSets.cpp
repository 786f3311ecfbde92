#include "ErrorCapture.h"
#include "StoreFixture.h"
#include "TestRegistry.h"
#include "foundation/Formatting.h"
#include "model/GlobalCollections.h"
#include "store/MimeMail.h"
#include "store/clsEventLog.h"

#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(MessageSetFilter)

namespace {

MessageSetFilter Filter(const QString &account = QString(), const QString &folder = QString())
{
    MessageSetFilter filter;
    filter.AccountID = account;
    filter.FolderID = folder;
    return filter;
}

MessageSetFilter Search(const QString &text)
{
    MessageSetFilter filter = Filter(u"A1"_s);
    filter.SearchText = text;
    return filter;
}

QStringList Lines(const QString &text)
{
    return text.split(u'\n', Qt::SkipEmptyParts);
}

} // namespace

class tst_MessageSets : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;

private slots:
    void init()
    {
        m_errors.clear();
        ResetGlobalCollections();
    }
    void cleanup()
    {
        ResetGlobalCollections();
        QVERIFY2(m_errors.isEmpty(), qPrintable(m_errors.join(u'\n')));
    }

    void whereClause_data()
    {
        QTest::addColumn<MessageSetFilter>("filter");
        QTest::addColumn<QString>("clause");
        const QDate today = QDate::currentDate();

        QTest::newRow("empty") << MessageSetFilter() << QString();
        QTest::newRow("an account keeps messages of none") << Filter(u"A1"_s) << u"(AccountID IN ('A1','','-'))"_s;
        QTest::newRow("a user sees its own")
            << Filter(u"U1"_s, u"F-own"_s) << u"(AccountID='U1') AND (FolderID='F-own')"_s;
        QTest::newRow("a user in a public folder sees all")
            << Filter(u"U1"_s, u"F-public"_s) << u"(FolderID='F-public')"_s;
        QTest::newRow("a user in an unknown folder")
            << Filter(u"U1"_s, u"F-gone"_s) << u"(AccountID='U1') AND (FolderID='F-gone')"_s;
        QTest::newRow("one-character folder") << Filter(QString(), u"-"_s) << QString();

        MessageSetFilter trigger = Filter(u"A1"_s);
        trigger.TriggerID = u"T1"_s;
        trigger.ErrorsOnly = true;
        QTest::newRow("trigger before account") << trigger << u"(TriggerID='T1') AND (TriggerSuccess=0)"_s;

        MessageSetFilter flags;
        flags.ErrorsOnly = true;
        flags.MatchesOnly = true;
        QTest::newRow("no leading AND") << flags << u"(TriggerSuccess=0) AND (TriggerMatch<>0)"_s;

        MessageSetFilter search;
        search.SearchText = u"%O'Brien"_s;
        QTest::newRow("search quoted, % only at the end")
            << search
            << u"(Subject LIKE '%O''Brien%' OR FromAddress LIKE '%O''Brien%' OR ToAddress LIKE '%O''Brien%')"_s;

        MessageSetFilter period;
        period.FromDate = QDate(2000, 1, 1);
        period.ToDate = today;
        QTest::newRow("from 2000 to today is no period") << period << QString();
        period.ToDate = today.addDays(-1);
        QTest::newRow("until yesterday")
            << period
            << u"(MessageDate BETWEEN { ts '2000-01-01 00:00:00'} AND { ts '%1 23:59:59'})"_s.arg(
                   period.ToDate.toString(u"yyyy-MM-dd"_s));

        MessageSetFilter all = Filter(u"A1"_s, u"F9"_s);
        all.FromDate = QDate(2024, 1, 2);
        all.MatchesOnly = true;
        all.SearchText = u"x"_s;
        all.OrganizationID = u"O1"_s;
        QTest::newRow("every member in order")
            << all
            << u"(AccountID IN ('A1','','-')) AND (TriggerMatch<>0) AND (Subject LIKE '%x%' OR FromAddress LIKE '%x%' "
               u"OR "
               "ToAddress LIKE '%x%') AND (MessageDate BETWEEN { ts '2024-01-02 00:00:00'} AND { ts '%1 23:59:59'}) "
               "AND "
               "(FolderID='F9') AND (OrganizationID='O1')"_s.arg(today.toString(u"yyyy-MM-dd"_s));
    }
    void whereClause()
    {
        QFETCH(MessageSetFilter, filter);
        QFETCH(QString, clause);
        auto user = std::make_unique<clsUser>();
        user->ID = u"U1"_s;
        Users().Add(std::move(user));
        for (const QString &id : {u"F-own"_s, u"F-public"_s}) {
            auto folder = std::make_unique<clsUserFolder>();
            folder->ID = id;
            folder->UserID = id == u"F-own"_s ? u"U1"_s : QString();
            UserFolders().Add(std::move(folder));
        }
        StoreFixture f;
        f.Store.Dialect = 0;
        QCOMPARE(f.Store.MessageSetWhere(filter), clause);
    }

    void pageStatementsOfEachBackEnd()
    {
        StoreFixture f;
        const QString columns
            = u"RecordNo,AccountID,FolderID,Subject,FromAddress,ToAddress,Importance,Sensitivity,MessageDate,"
              "MessageFlags,ProcessedDate,TriggerID,TriggerMatch,TriggerSuccess,TriggerError,Attachments"_s;
        const QString where = u"(AccountID IN ('A1','','-'))"_s;
        QCOMPARE(f.Store.MessageSetSQL(Filter(u"A1"_s), 201, 400),
                 u"SELECT "_s + columns + u" FROM MessageStore WHERE "_s + where
                     + u" ORDER BY MessageDate DESC LIMIT 200 OFFSET 200"_s);
        QVERIFY(f.Store.MessageSetSQL(Filter(u"A1"_s), 0, 0).endsWith(u" LIMIT 200 OFFSET 0"_s));

        f.Store.Dialect = 0;
        Global.DBConnection = u"DRIVER={FreeTDS};SERVER=db;DATABASE=Postvane"_s;
        QCOMPARE(f.Store.MessageSetSQL(Filter(u"A1"_s), 201, 400),
                 u"WITH PagedPostvane \r\nAS (\r\nSELECT "_s + columns
                     + u",ROW_NUMBER() OVER(ORDER BY MessageDate DESC) AS Row FROM MessageStore \r\nWHERE "_s + where
                     + u")\r\nSELECT * FROM PagedPostvane WHERE Row BETWEEN 201 AND 400"_s);

        Global.DBConnection = u"Provider=SQLOLEDB;Data Source=db"_s;
        QCOMPARE(f.Store.MessageSetSQL(Filter(u"A1"_s), 0, 0),
                 u"SELECT TOP 200 * FROM MessageStore WHERE "_s + where + u" ORDER BY MessageDate DESC"_s);
        QCOMPARE(
            f.Store.MessageSetSQL(Filter(u"A1"_s), 201, 250),
            u"SELECT TOP 50 * FROM MessageStore WHERE RecordNo > (SELECT TOP 1 RecordNo FROM (SELECT TOP 200 RecordNo "
            "FROM MessageStore WHERE "_s
                + where + u" ORDER BY RecordNo ASC) AS A ORDER BY A.MessageDate DESC) AND "_s + where
                + u" ORDER BY MessageDate DESC"_s);
    }

    void pagesFollowTheMessageDate()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        const QDateTime first(QDate(2024, 1, 1), QTime(8, 0));
        QVERIFY(f.Store.BeginTransaction());
        for (int i = 0; i < 450; ++i) { // out of date order, so that the order is the store's doing
            const int minute = (i * 7) % 450;
            QVERIFY(f.Add(u"MessageStore"_s,
                          {{u"AccountID"_s, u"A1"_s},
                           {u"Subject"_s, u"m%1"_s.arg(minute)},
                           {u"MessageDate"_s, first.addSecs(60 * minute)}})
                    > 0);
        }
        QVERIFY(f.Add(u"MessageStore"_s, {{u"AccountID"_s, u"A2"_s}, {u"MessageDate"_s, first}}) > 0);
        QVERIFY(f.Store.EndTransaction());

        QCOMPARE(f.Store.CountMessageSet(Filter(u"A1"_s)), 450);
        const QStringList page = Lines(f.Store.GetMessageSet(Filter(u"A1"_s), 201, 400));
        QCOMPARE(page.size(), 200);
        QCOMPARE(page.first().section(u'\t', 5, 5), u"m249"_s); // the 201st newest
        QCOMPARE(page.last().section(u'\t', 5, 5), u"m50"_s);
        QCOMPARE(Lines(f.Store.GetMessageSet(Filter(u"A1"_s))).size(), 200);
        QCOMPARE(Lines(f.Store.GetMessageSet(Filter(u"A1"_s), 401, 600)).size(), 50);
        QCOMPARE(f.Store.GetMessageSet(Filter(u"A1"_s), 501, 600), QString());
    }

    void rowTextOfStoredRecords()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        MessageSetFilter filter;
        filter.OrganizationID = u"O1"_s;
        const qint64 empty = f.Add(u"MessageStore"_s, {{u"OrganizationID"_s, u"O1"_s}});
        QCOMPARE(f.Store.GetMessageSet(filter),
                 QString::number(empty) + u"\t\tN\t\t\t\t1900-01-01 00:00:00\t1900-01-01 00:00:00\t0\tN\tN\t\t\n"_s);

        filter.OrganizationID = u"O2"_s;
        const qint64 full = f.Add(u"MessageStore"_s,
                                  {{u"OrganizationID"_s, u"O2"_s},
                                   {u"Importance"_s, u"H"_s},
                                   {u"Attachments"_s, true},
                                   {u"FolderID"_s, u"F1"_s},
                                   {u"FromAddress"_s, u"a@b.c\t"_s},
                                   {u"Subject"_s, u"Re:\r\n folded\u00A0subject"_s},
                                   {u"MessageDate"_s, QDateTime(QDate(2024, 6, 1), QTime(9, 30, 5))},
                                   {u"ProcessedDate"_s, QDateTime(QDate(2024, 6, 2), QTime(10, 0, 0))},
                                   {u"MessageFlags"_s, 2},
                                   {u"TriggerMatch"_s, true},
                                   {u"TriggerSuccess"_s, false},
                                   {u"TriggerError"_s, u"*no database"_s}});
        QCOMPARE(f.Store.GetMessageSet(filter),
                 QString::number(full)
                     + u"\tH\tY\tF1\ta@b.c\tRe: foldedsubject\t2024-06-01 09:30:05\t2024-06-02 10:00:00\t2\tY\tN\t"
                       "*no database\t\n"_s);
    }

    void searchTextsAreLiteralAndSetOperationsAgree()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        for (const QString &subject : {u"O'Brien's order"_s, u"100% off today"_s, u"1000 items"_s,
                                       u"'); DROP TABLE MessageStore; --"_s, u"plain"_s})
            QVERIFY(
                f.Add(u"MessageStore"_s, {{u"AccountID"_s, u"A1"_s}, {u"Subject"_s, subject}, {u"MessageFlags"_s, 0}})
                > 0);
        QCOMPARE(f.Store.CountMessageSet(Search(u"O'Brien"_s)), 1);
        QCOMPARE(f.Store.CountMessageSet(Search(u"100%"_s)), 2); // "%" is the wildcard
        QCOMPARE(f.Store.CountMessageSet(Search(u"'); DROP TABLE MessageStore; --"_s)), 1);
        QCOMPARE(f.Store.CountMessageSet(Search(u"' OR '1'='1"_s)), 0);

        QCOMPARE(f.Store.MarkAllAsRead(Search(u"100"_s)), 2);
        QCOMPARE(f.Store.MarkAllAsRead(Search(u"100"_s)), 0);
        QCOMPARE(f.Store.DeleteMessageSet(Search(u"'"_s)), 2);
        QCOMPARE(f.Store.CountMessageSet(Filter(u"A1"_s)), 3);
        QCOMPARE(f.Count(u"MessageStore"_s, u"MessageFlags=2"_s), 2);
    }

    void singleMessageOperations()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        const qint64 a
            = f.Add(u"MessageStore"_s, {{u"AccountID"_s, u"A1"_s}, {u"FolderID"_s, u"F1"_s}, {u"MessageFlags"_s, 0}});
        const qint64 b
            = f.Add(u"MessageStore"_s, {{u"AccountID"_s, u"A1"_s}, {u"FolderID"_s, u"F1"_s}, {u"MessageFlags"_s, 0}});
        const auto row = [&](qint64 recordNo) {
            return f
                .Value(u"SELECT AccountID||FolderID||MessageFlags FROM MessageStore WHERE RecordNo=%1"_s.arg(recordNo))
                .toString();
        };
        QVERIFY(f.Store.MarkAsRead(a));
        QCOMPARE(row(a), u"A1F12"_s);
        QCOMPARE(row(b), u"A1F10"_s);
        QVERIFY(f.Store.MarkAsUnRead(a));
        QCOMPARE(row(a), u"A1F10"_s);
        QVERIFY(f.Store.MoveMessage(a, u"F9"_s, u"F2"_s, u"U1"_s)); // not in F9: stays
        QCOMPARE(row(a), u"A1F10"_s);
        QVERIFY(f.Store.MoveMessage(a, u"F1"_s, u"F2"_s, QString()));
        QCOMPARE(row(a), u"-F20"_s);
        QVERIFY(f.Store.DeleteMessage(a));
        QCOMPARE(f.Count(u"MessageStore"_s), 1);
        QCOMPARE(row(b), u"A1F10"_s);
    }

    void lastMessageDateAndCounts()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        QCOMPARE(f.Store.GetLastMSGDate(u"A1"_s, u"POP3"_s), NoDate());
        const QDateTime stored(QDate(2024, 3, 1), QTime(10, 0));
        const QDateTime queued(QDate(2024, 3, 2), QTime(9, 0));
        const QDate today = QDate::currentDate();
        QVERIFY(f.Add(u"MessageStore"_s,
                      {{u"AccountID"_s, u"A1"_s},
                       {u"Source"_s, u"POP3"_s},
                       {u"MessageDate"_s, stored},
                       {u"OrganizationID"_s, u"O1"_s},
                       {u"ProcessedDate"_s, QDateTime(today, QTime(23, 59, 59))}})
                > 0);
        QVERIFY(f.Add(u"MessageStore"_s,
                      {{u"AccountID"_s, u"A1"_s},
                       {u"Source"_s, u"IMAP"_s},
                       {u"MessageDate"_s, queued.addDays(5)},
                       {u"OrganizationID"_s, u"O2"_s},
                       {u"ProcessedDate"_s, QDateTime(today.addDays(-1), QTime(12, 0))}})
                > 0);
        QCOMPARE(f.Store.GetLastMSGDate(u"A1"_s, u"POP3"_s), stored);
        QCOMPARE(
            f.Store.ExecuteEQ(u"INSERT INTO EdgeQueue (AccountID, Source, MessageDate) VALUES ('A1', 'POP3', %1)"_s.arg(
                f.Store.DateTimeLiteral(queued))),
            1);
        QCOMPARE(f.Store.GetLastMSGDate(u"A1"_s, u"POP3"_s), queued);

        QCOMPARE(f.Store.GetMessageStoreCount(today), 1);
        QCOMPARE(f.Store.GetMessageStoreCount(today.addDays(-1), u"O1"_s), 0);
        QCOMPARE(f.Store.GetMessageStoreTotalCount(), 2);
        QCOMPARE(f.Store.GetMessageStoreTotalCount(u"O2"_s), 1);
    }

    void getMessageGivesMimeWithProcessStateAndLog()
    {
        StoreFixture f;
        Global.Settings.WebServicesURL = u"https://mail.example.com/pv"_s;
        QVERIFY(f.Store.OpenMessageStore());
        const QString uid = u"0123456789ABCDEF0123456789ABCDEF"_s;
        {
            const QDateTime now = QDateTime::currentDateTime();
            clsEventLog log; // ServerLog.db3 is neither of the message's logs
            log.AddRemoteEvent(u"elsewhere"_s, now, u"A1"_s, QString(), uid);
            log.setFileName(Global.ProductName + u"EdgeServerLog.db3"_s);
            log.AddRemoteEvent(u"received"_s, now, u"A1"_s, QString(), uid);
            log.setFileName(Global.ProductName + u"MessageServerLog.db3"_s);
            log.AddRemoteEvent(u"stored"_s, now, u"A1"_s, QString(), uid);
            log.AddRemoteEvent(u"another message"_s, now, u"A1"_s, QString(), u"other"_s);
        }
        const qint64 recordNo = f.Add(u"MessageStore"_s,
                                      {{u"UID"_s, uid},
                                       {u"OrganizationID"_s, u"O1"_s},
                                       {u"Guid"_s, uid},
                                       {u"Headers"_s, u"From: a@b.c\r\nSubject: Hello\r\nX-Mailer: old\r\n\r\n"_s},
                                       {u"Body"_s, u"Body text"_s},
                                       {u"ProcessedDate"_s, QDateTime(QDate(2024, 6, 2), QTime(10, 0, 0))},
                                       {u"TriggerMatch"_s, true},
                                       {u"TriggerSuccess"_s, false},
                                       {u"TriggerError"_s, u"*failed"_s},
                                       {u"MessageFlags"_s, 0}});
        QCOMPARE(f.Store.GetMessage(recordNo, true), uid);
        QCOMPARE(f.Count(u"MessageStore"_s, u"MessageFlags=0"_s), 1);

        MimeMail mail;
        QVERIFY(mail.LoadMime(f.Store.GetMessage(recordNo)));
        QCOMPARE(f.Count(u"MessageStore"_s, u"MessageFlags=2"_s), 1); // reading marks it read
        QCOMPARE(mail.Header(u"Subject"_s), u"Hello"_s);
        QCOMPARE(mail.Header(u"X-Mailer"_s), QString());
        QCOMPARE(mail.Header(u"Postvane-ProcessedDate"_s), u"2024-06-02 10:00:00"_s);
        QCOMPARE(mail.Header(u"Postvane-TriggerMatch"_s) + mail.Header(u"Postvane-TriggerSuccess"_s), u"YN"_s);
        QCOMPARE(mail.Header(u"Postvane-TriggerError"_s), u"*failed"_s);
        QCOMPARE(mail.Header(u"Postvane-URL"_s), u"https://mail.example.com/pv/viewmessage.aspx?id=O1"_s + uid);
        QCOMPARE(mail.TextBody().trimmed(), u"Body text"_s);
        const QList<MimeAttachment> attachments = mail.Attachments();
        QCOMPARE(attachments.size(), 1);
        QCOMPARE(attachments.first().Name, u"ProcessLog.log"_s);
        QCOMPARE(QString::fromUtf8(attachments.first().Data).remove(u'\r'), u"received\nstored"_s);

        QCOMPARE(f.Store.GetMessage(recordNo + 1), QString());
        QCOMPARE(f.Store.GetMessageLogs(u"nobody"_s), QString());
    }
};

POSTVANE_TEST(tst_MessageSets)
#include "tst_MessageSets.moc"
