#include "TestRegistry.h"
#include "session/Requests.h"

#include <QTest>

class tst_Requests : public QObject
{
    Q_OBJECT
private slots:
    void credentialsFollowTheQueryOrStartIt()
    {
        const QString auth = Requests::AuthQuery(QStringLiteral("J Smith&Co"), QStringLiteral("a+b/c=="));
        QCOMPARE(auth, QStringLiteral("username=J%20Smith%26Co&password=a%2Bb%2Fc%3D%3D"));
        QCOMPARE(Requests::WithAuth(Requests::GetUsers(), auth), QStringLiteral("getusers.xml?") + auth);
        QCOMPARE(Requests::WithAuth(Requests::GetUser(QStringLiteral("U1")), auth),
                 QStringLiteral("getuser.xml?userid=U1&") + auth);
    }

    void freeTextIsEncodedAndIdentifiersAreNot()
    {
        const QString amp = QStringLiteral("a&b c");
        QCOMPARE(Requests::GetTrigger(QStringLiteral("A 1"), QStringLiteral("T&2")),
                 QStringLiteral("gettrigger.xml?accountid=A 1&triggerid=T&2"));
        QCOMPARE(Requests::UpdateFolder(amp, QStringLiteral("P1"), amp, QStringLiteral("A1"), QStringLiteral("x+y@z.com")),
                 QStringLiteral("updatefolder.xml?folderid=a%26b%20c&parentid=P1&folder=a%26b%20c&accountid=A1"
                                "&email=x%2By%40z.com"));
        QCOMPARE(Requests::ForwardMessage(QStringLiteral("F/1"), 42, QStringLiteral("a@b.c")),
                 QStringLiteral("forwardmessage.xml?folderid=F%2F1&recordno=42&email=a%40b.c"));
        QCOMPARE(Requests::TestDBConnection(QStringLiteral("Server=x;Pwd=a&b")),
                 QStringLiteral("testdbconnection.htm?text=Server%3Dx%3BPwd%3Da%26b"));
        QCOMPARE(Requests::DeleteDocumentFile(QStringLiteral("Docs/Sub Folder"), QStringLiteral("a&b.pdf")),
                 QStringLiteral("deletedocumentfile.xml?folder=Docs%2FSub%20Folder&searchtext=a%26b.pdf"));
        QCOMPARE(Requests::GetMessagePage(QStringLiteral("me&you"), QStringLiteral("p=w"), QStringLiteral("F1"), 7, true),
                 QStringLiteral("getmessage.aspx?username=me%26you&password=p%3Dw&folderid=F1&recordno=7&preview=y"));
    }

    void keysStandInCatalogueOrder()
    {
        QCOMPARE(Requests::SwapTrigger(QStringLiteral("A1"), QStringLiteral("T1"), QStringLiteral("T2")),
                 QStringLiteral("swaptrigger.xml?accountid=A1&triggerid=T1&movetofolderid=T2"));
        QCOMPARE(Requests::MoveMessage(QStringLiteral("F1"), 3, QStringLiteral("F2"), QStringLiteral("A1")),
                 QStringLiteral("movemessage.xml?folderid=F1&recordno=3&movetofolderid=F2&accountid=A1"));
        QCOMPARE(Requests::ReprocessMessage(QStringLiteral("A1"), QStringLiteral("F1"), 9),
                 QStringLiteral("reprocessmessage.xml?accountid=A1&folderid=F1&recordno=9"));
        QCOMPARE(Requests::GetDaySummary(QStringLiteral("A1"), QStringLiteral("2024-01-01"), QStringLiteral("2024-01-31"),
                                         QStringLiteral("x y")),
                 QStringLiteral("getdaysummary.xml?accountid=A1&fromdate=2024-01-01&todate=2024-01-31&searchtext=x%20y"));
        QCOMPARE(Requests::GetScheduledMessages(QStringLiteral("A1"), QStringLiteral("T1"), QStringLiteral("50%")),
                 QStringLiteral("getscheduledmessages.xml?accountid=A1&triggerid=T1&searchtext=50%25"));
        QCOMPARE(Requests::Subscribe(QStringLiteral("username=Admin&password=x"), QStringLiteral("desk1"),
                                     QStringLiteral("3.0.0001")),
                 QStringLiteral("subscribe.xml?username=Admin&password=x&nodename=desk1&text=3.0.0001"));
    }

    void optionalKeysAreLeftOut()
    {
        QCOMPARE(Requests::ReceivedAfterReset(QStringLiteral("A1")), QStringLiteral("receivedafterreset.xml?accountid=A1"));
        QCOMPARE(Requests::ReceivedAfterReset(QStringLiteral("A1"), QStringLiteral("T1")),
                 QStringLiteral("receivedafterreset.xml?accountid=A1&triggerid=T1"));
    }

    void messageSetQueryKeepsItsOrder()
    {
        Requests::MessageSet set;
        set.AccountID = QStringLiteral("A1");
        set.FromDate = QStringLiteral("2024-02-01");
        set.ToDate = QStringLiteral("2024-02-29");
        set.ErrorsOnly = true;
        set.SearchText = QStringLiteral("R&D");
        set.FolderID = QStringLiteral("F 1");
        QCOMPARE(Requests::CountMessages(set),
                 QStringLiteral("countmessages.xml?accountid=A1&fromdate=2024-02-01&todate=2024-02-29&errorsonly=Y"
                                "&matchesonly=N&searchtext=R%26D&folderid=F%201"));
        set.TriggerID = QStringLiteral("T1");
        set.FromRow = 1;
        set.ToRow = 50;
        QCOMPARE(Requests::GetMessages(set),
                 QStringLiteral("getmessages.xml?accountid=A1&triggerid=T1&fromdate=2024-02-01&todate=2024-02-29"
                                "&errorsonly=Y&matchesonly=N&searchtext=R%26D&folderid=F%201&fromrow=1&torow=50"));
        QCOMPARE(Requests::MessageSetQuery(set), Requests::GetMessages(set).mid(QStringLiteral("getmessages.xml?").size()));
    }
};

POSTVANE_TEST(tst_Requests)
#include "tst_Requests.moc"
