#include "ServerFixture.h"
#include "TestRegistry.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>
#include <QUrl>

namespace {

const QString Guid = QStringLiteral("0123456789abcdef0123456789abcdef");

} // namespace

// The pages of a stored message for browsers outside the console:
// "getmessage.aspx" with the user's credentials, "viewmessage.aspx" with the
// message's link. The stored message is hostile: a script, a remote image,
// markup in its subject.
class tst_ServerMessagePages : public QObject
{
    Q_OBJECT
    ServerFixture server;
    qint64 record = 0;

    HttpReply Anonymous(const QString &Request)
    {
        return ServerFixture::Finish(server.Send(QUrl(QStringLiteral("https://127.0.0.1:%1/").arg(server.Port) + Request)));
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("pages"));
        db.setDatabaseName(server.DataPath() + QStringLiteral("MessageStore.db3"));
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        QVERIFY(db.open());
        QSqlQuery query(db);
        query.prepare(QStringLiteral("INSERT INTO MessageStore (AccountID, OrganizationID, UID, Subject, FromAddress, "
                                     "MessageDate, Body, Headers, HasFullBody, ProcessedDate, MessageFlags, FolderID, Guid) "
                                     "VALUES ('A1', 'Org', 'u1', ?, 'x@y.example', '2024-03-01 10:00:00', ?, ?, 1, "
                                     "'2024-03-01 10:00:05', 0, 'F1', ?)"));
        query.addBindValue(QStringLiteral("<b>Hello</b>"));
        query.addBindValue(QStringLiteral("<html><body><p>Total due</p><script>alert(1)</script>"
                                          "<img src=\"http://tracker.example/p.png\"></body></html>\r\n"));
        query.addBindValue(QStringLiteral("From: x@y.example\r\nTo: in@alpha.test\r\nSubject: <b>Hello</b>\r\n"
                                          "Content-Type: text/html; charset=utf-8\r\n"));
        query.addBindValue(Guid);
        QVERIFY(query.exec());
        record = query.lastInsertId().toLongLong();
    }

    void theMessagePageIsSafeAndNeedsTheCredentials()
    {
        const QString request = QStringLiteral("getmessage.aspx?folderid=F1&recordno=%1").arg(record);
        const HttpReply page = server.Get(request);
        QCOMPARE(page.Status, 200);
        const QString text = page.Text();
        QVERIFY(text.contains(QStringLiteral("Total due")));
        QVERIFY(text.contains(QStringLiteral("&lt;b&gt;Hello&lt;/b&gt;")));
        QVERIFY(!text.contains(QStringLiteral("<script"), Qt::CaseInsensitive));
        QVERIFY(!text.contains(QStringLiteral("tracker.example")));
        QVERIFY(!text.contains(QStringLiteral("<img"), Qt::CaseInsensitive));
        QVERIFY(text.contains(QStringLiteral("<table>")));

        const HttpReply preview = server.Get(request + QStringLiteral("&preview=y"));
        QVERIFY(preview.Text().contains(QStringLiteral("Total due")));
        QVERIFY(!preview.Text().contains(QStringLiteral("<table>")));

        const HttpReply wrong = server.Get(request, QStringLiteral("Admin"), QStringLiteral("wrong"));
        QCOMPARE(wrong.Status, 401);
        QVERIFY(wrong.Body.isEmpty());
        QCOMPARE(Anonymous(request).Status, 401);
        QVERIFY(server.Get(QStringLiteral("getmessage.aspx?folderid=F1&recordno=99999")).Refused());
    }

    void theLinkPageNeedsTheRightLink()
    {
        const HttpReply page = Anonymous(QStringLiteral("viewmessage.aspx?id=Org") + Guid);
        QCOMPARE(page.Status, 200);
        QVERIFY(page.Text().contains(QStringLiteral("Total due")));
        QVERIFY(!page.Text().contains(QStringLiteral("<script"), Qt::CaseInsensitive));
        for (const QString &id : {QStringLiteral("Other") + Guid, QStringLiteral("Org") + QString(Guid).replace(u'0', u'1'),
                                  QStringLiteral("Org'--"), QString()}) {
            const HttpReply refused = Anonymous(QStringLiteral("viewmessage.aspx?id=") + QUrl::toPercentEncoding(id));
            QCOMPARE(refused.Status, 200);
            QVERIFY(!refused.Text().contains(QStringLiteral("Total due")));
            QVERIFY(refused.Text().contains(QStringLiteral("There is no such message.")));
        }
    }
};

POSTVANE_TEST(tst_ServerMessagePages)
#include "tst_ServerMessagePages.moc"
