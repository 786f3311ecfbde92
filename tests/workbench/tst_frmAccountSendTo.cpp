#include "ModalCloser.h"
#include "ShellFixture.h"
#include "TestRegistry.h"
#include "editors/frmAccountSendTo.h"
#include "foundation/Registry.h"

#include <QComboBox>
#include <QLineEdit>
#include <QTest>

using namespace ShellFixture;

// Deployment of an account from one real server to a second one.
class tst_frmAccountSendTo : public QObject
{
    Q_OBJECT
    ServerFixture source;
    ServerFixture target;

    QString TargetAccounts() { return target.Get(QStringLiteral("getaccounts.xml")).Text(); }

private slots:
    void initTestCase()
    {
        QVERIFY2(source.Start(), qPrintable(source.Problem));
        QVERIFY2(target.Start(), qPrintable(target.Problem));
        QVERIFY(Fill(source));
        QCOMPARE(source.Get(QStringLiteral("addfolder.xml?folderid=FDep&folder=Deployed")).Text(), QStringLiteral("OK"));
        QCOMPARE(source.Get(QStringLiteral("addfolder.xml?folderid=FGone&folder=Gone")).Text(), QStringLiteral("OK"));
        auto stored = MakeTrigger(QStringLiteral("T1"), QStringLiteral("Orders"));
        stored->SaveToFolderID = QStringLiteral("FDep");
        QCOMPARE(source.Post(Requests::PostTrigger(QStringLiteral("A01"), QStringLiteral("T1")), stored->XML().toUtf8()).Text(),
                 QStringLiteral("OK"));
        auto gone = MakeTrigger(QStringLiteral("T2"), QStringLiteral("Paused"), false);
        gone->SaveToFolderID = QStringLiteral("FGone");
        QCOMPARE(source.Post(Requests::PostTrigger(QStringLiteral("A01"), QStringLiteral("T2")), gone->XML().toUtf8()).Text(),
                 QStringLiteral("OK"));
        QVERIFY(LogOn(source));
        // The console knows the folder no longer, as after its deletion elsewhere.
        UserFolders().Delete(QStringLiteral("FGone"));
    }

    void cleanupTestCase() { Remote().Close(); }

    void sameServerIsRefused()
    {
        frmAccountSendTo dialog(QStringLiteral("A01"));
        dialog.cmboServer->setEditText(QStringLiteral("localhost:%1").arg(source.Port));
        ModalCloser closer(QMessageBox::Yes);
        QVERIFY(!dialog.Deploy());
        QCOMPARE(closer.Texts.size(), 1);
        QVERIFY(closer.Texts[0].startsWith(QStringLiteral("You cannot deploy to the same Postvane Server")));
    }

    void wrongPasswordSendsNothing()
    {
        frmAccountSendTo dialog(QStringLiteral("A01"));
        dialog.cmboServer->setEditText(QStringLiteral("127.0.0.1:%1").arg(target.Port));
        dialog.txtUserName->setText(QStringLiteral("Admin"));
        dialog.txtPassword->setText(QStringLiteral("wrong"));
        ModalCloser closer(QMessageBox::Yes);
        QVERIFY(!dialog.Deploy());
        QCOMPARE(closer.Texts.size(), 2); // the question, then the refusal
        QVERIFY2(closer.Texts[1].contains(QStringLiteral("Authorization Required")), qPrintable(closer.Texts[1]));
        QVERIFY(dialog.FolderRequests.isEmpty());
        QVERIFY(!TargetAccounts().contains(QStringLiteral("A01")));
    }

    void accountTriggersAndFolderArriveOnTheTarget()
    {
        const QString server = QStringLiteral("localhost:%1").arg(target.Port);
        for (int round = 0; round < 2; ++round) { // the second round updates what the first made
            frmAccountSendTo dialog(QStringLiteral("A01"));
            dialog.cmboServer->setEditText(server);
            dialog.txtUserName->setText(QStringLiteral("Admin"));
            ModalCloser closer(QMessageBox::Yes);
            QVERIFY(dialog.Deploy());
            QVERIFY2(closer.Texts.last().startsWith(QStringLiteral("Account Deployed Successfully")),
                     qPrintable(closer.Texts.join(u'|')));
            // The folder of the trigger whose folder is gone is not sent.
            QCOMPARE(dialog.FolderRequests.size(), 1);
            QVERIFY(dialog.FolderRequests[0].startsWith(QStringLiteral("deployfolder.xml?folderid=FDep")));
        }
        const auto deployed = ServerAccount(target, QStringLiteral("A01"));
        QVERIFY(deployed);
        QCOMPARE(deployed->Name, QStringLiteral("<Tom & 'Jerry' \"Co\">"));
        QCOMPARE(deployed->Triggers.Count(), 2);
        QCOMPARE(deployed->Triggers.Item(QStringLiteral("T1"))->SaveToFolderID, QStringLiteral("FDep"));
        colUserFolders folders;
        folders.setXML(target.Get(Requests::GetFolders()).Text());
        QVERIFY(folders.Item(QStringLiteral("FDep")));
        QCOMPARE(folders.Item(QStringLiteral("FDep"))->Name, QStringLiteral("Deployed"));
        QVERIFY(!folders.Item(QStringLiteral("FGone")));
        QCOMPARE(GetUserSetting(Global.ProductName, QStringLiteral("LastServerDeploy")), server);
        QVERIFY(GetUserSetting(Global.ProductName, QStringLiteral("RemoteServers")).split(u';').contains(server));
        frmAccountSendTo again(QStringLiteral("A01"));
        QCOMPARE(again.cmboServer->itemText(0), server);
    }

    void deployRequestsNeedAnAdministrator()
    {
        clsUser plain;
        plain.ID = QStringLiteral("UPlain");
        plain.Username = QStringLiteral("plain");
        plain.Password = QStringLiteral("pw");
        QCOMPARE(target.Post(QStringLiteral("postuser.htm?userid=UPlain"), plain.XML().toUtf8()).Text(), QStringLiteral("OK"));
        const HttpReply folder = target.Get(QStringLiteral("deployfolder.xml?folderid=FX&folder=X"), QStringLiteral("plain"),
                                            QStringLiteral("pw"));
        QVERIFY(folder.Text().startsWith(QStringLiteral("Error:")));
        const HttpReply account = target.Post(Requests::DeployAccount(QStringLiteral("A02")),
                                              MakeAccount(AccountCases()[1])->XML().toUtf8(), QStringLiteral("plain"),
                                              QStringLiteral("pw"));
        QVERIFY(account.Text().startsWith(QStringLiteral("Error:")));
        QVERIFY(!TargetAccounts().contains(QStringLiteral("A02")));
    }
};

POSTVANE_TEST(tst_frmAccountSendTo)
#include "tst_frmAccountSendTo.moc"
