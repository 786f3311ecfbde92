#include "TestRegistry.h"
#include "e2e/ServerFixture.h"

#include "foundation/Crypt.h"
#include "model/clsAccount.h"

#include <QDeadlineTimer>
#include <QUrlQuery>
#include <QtTest>

// The drop box call of the web service on a real server: a message posted as
// the client program posts it is queued for the account and stored.
class tst_DropBox : public QObject
{
    Q_OBJECT

    ServerFixture m_server;

    static QByteArray Account(const QString &ID, bool DropBox)
    {
        clsAccount account;
        account.AccountID = ID;
        account.OrganizationID.clear();
        account.Name = QStringLiteral("Drop ") + ID;
        account.Dropbox = DropBox;
        account.DropBoxToAddress = QStringLiteral("*@example.com;orders@example.com");
        account.DropBoxSubject = QStringLiteral("Posted order");
        return account.XML().toUtf8();
    }

    // The form of the client program; the reply's result as it reads it.
    QString AddMessage(const QString &AccountID, const QString &Text, const QString &Password = QString())
    {
        QUrlQuery form;
        const auto field = [&form](const QString &Name, const QString &Value) {
            form.addQueryItem(Name, QString::fromLatin1(QUrl::toPercentEncoding(Value)));
        };
        field(QStringLiteral("UserName"), QStringLiteral("Admin"));
        field(QStringLiteral("Password"), MD5Hash(Password));
        field(QStringLiteral("AccountID"), AccountID);
        field(QStringLiteral("TriggerID"), QString());
        field(QStringLiteral("MimeText"), Text);
        QNetworkRequest request(QUrl(QStringLiteral("https://127.0.0.1:%1/PostvaneWS.asmx/AddMessage").arg(m_server.Port)));
        request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/x-www-form-urlencoded"));
        QNetworkReply *sent = m_server.Network.post(request, form.toString(QUrl::FullyEncoded).toUtf8());
        const HttpReply reply = ServerFixture::Finish(sent);
        if (reply.Status != 200)
            return QStringLiteral("status %1").arg(reply.Status);
        const QString body = reply.Text();
        const qsizetype open = body.indexOf(u'>', 49);
        return body.mid(open + 1, body.indexOf(u'<', open) - open - 1);
    }

    QStringList Stored(const QString &AccountID, int Count)
    {
        QStringList lines;
        QDeadlineTimer deadline(20000);
        while (!deadline.hasExpired() && lines.size() < Count) {
            lines = m_server.Get(QStringLiteral("getmessages.xml?accountid=") + AccountID).Text().split(u'\n', Qt::SkipEmptyParts);
            QTest::qWait(100);
        }
        return lines;
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(m_server.Start(), qPrintable(m_server.Problem));
        QCOMPARE(m_server.Post(QStringLiteral("postaccount.htm?accountid=DROP1"), Account(QStringLiteral("DROP1"), true)).Text(),
                 QStringLiteral("OK"));
        QCOMPARE(m_server.Post(QStringLiteral("postaccount.htm?accountid=SHUT1"), Account(QStringLiteral("SHUT1"), false)).Text(),
                 QStringLiteral("OK"));
    }

    void aPostedMessageIsStoredWithTheAccountsDefaultsWhenItHasNoHeaders()
    {
        QCOMPARE(AddMessage(QStringLiteral("DROP1"), QStringLiteral("Subject: Order 7 & more\r\nFrom: shop@example.com\r\n\r\n3 chairs\r\n")),
                 QStringLiteral("OK"));
        QCOMPARE(AddMessage(QStringLiteral("DROP1"), QStringLiteral("just a line of text + more")), QStringLiteral("OK"));
        const QStringList lines = Stored(QStringLiteral("DROP1"), 2);
        QCOMPARE(lines.size(), 2);
        QStringList subjects;
        for (const QString &line : lines)
            subjects << line.split(u'\t').value(5);
        subjects.sort();
        QCOMPARE(subjects, QStringList({QStringLiteral("Order 7 & more"), QStringLiteral("Posted order")}));
    }

    void refusalsAreResultsAndWrongCredentialsAre401()
    {
        QCOMPARE(AddMessage(QStringLiteral("SHUT1"), QStringLiteral("text")),
                 QStringLiteral("Error: The account does not accept messages from clients."));
        QCOMPARE(AddMessage(QStringLiteral("NOSUCH"), QStringLiteral("text")),
                 QStringLiteral("Error: There is no account with this ID."));
        QCOMPARE(AddMessage(QStringLiteral("DROP1"), QStringLiteral("text"), QStringLiteral("wrong")), QStringLiteral("status 401"));
    }

    void cleanupTestCase() { m_server.Stop(); }
};

POSTVANE_TEST(tst_DropBox)
#include "tst_DropBox.moc"
