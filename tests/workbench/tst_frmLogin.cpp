#include "ModalCloser.h"
#include "ServerProcess.h"
#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "model/GlobalCollections.h"
#include "session/frmRemote.h"
#include "workbench/frmLogin.h"

#include <QComboBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

namespace {

void SetUserKey(const char *key, const QString &value)
{
    SaveUserSetting(Global.ProductName, QString::fromLatin1(key), value);
}

QString UserKey(const char *key)
{
    return GetUserSetting(Global.ProductName, QString::fromLatin1(key));
}

} // namespace

class tst_frmLogin : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        Global.RemoteAdmin = false;
        Global.Settings.WebAccessPort = 8855;
        for (const char *key : {"LastUser", "LastServer", "RemoteServers"})
            SetUserKey(key, QString());
    }
    void cleanup() { ResetGlobalCollections(); }

    void serverTextGivesHostPortAndLocalFlag_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("host");
        QTest::addColumn<int>("port");
        QTest::addColumn<bool>("local");
        QTest::newRow("host and port") << QStringLiteral(" Mail.Example.COM:9443 ") << QStringLiteral("mail.example.com") << 9443 << false;
        QTest::newRow("host alone") << QStringLiteral("server1") << QStringLiteral("server1") << 8855 << false;
        QTest::newRow("(local)") << QStringLiteral("(local)") << QStringLiteral("127.0.0.1") << 8855 << true;
        QTest::newRow("empty") << QString() << QStringLiteral("127.0.0.1") << 8855 << true;
        QTest::newRow("localhost with port") << QStringLiteral("LocalHost:9000") << QStringLiteral("127.0.0.1") << 9000 << true;
        QTest::newRow("local") << QStringLiteral("local") << QStringLiteral("127.0.0.1") << 8855 << true;
    }
    void serverTextGivesHostPortAndLocalFlag()
    {
        QFETCH(QString, text);
        frmLogin::SetServer(text);
        QTEST(Global.ServerName, "host");
        QTEST(Global.ServerPort, "port");
        QTEST(Global.IsLocal, "local");
        QCOMPARE(Global.ServerURL, QStringLiteral("https://%1:%2/").arg(Global.ServerName).arg(Global.ServerPort));
    }

    void dialogIsFilledFromTheUserKeys()
    {
        SetUserKey("LastUser", QStringLiteral("bob"));
        SetUserKey("LastServer", QStringLiteral("beta:9000"));
        SetUserKey("RemoteServers", QStringLiteral("alpha;;beta:9000;alpha"));
        frmRemote remote;
        frmLogin login(remote);
        QCOMPARE(login.txtUserName->text(), QStringLiteral("bob"));
        QCOMPARE(login.cboServer->count(), 3);
        QCOMPARE(login.cboServer->itemText(0), QStringLiteral("(local)"));
        QCOMPARE(login.cboServer->currentText(), QStringLiteral("beta:9000"));
        QVERIFY(login.btnConnect->isEnabled());
        login.txtUserName->clear();
        QVERIFY(!login.btnConnect->isEnabled());

        frmLogin named(remote, QStringLiteral("gamma"));
        QCOMPARE(named.cboServer->currentText(), QStringLiteral("gamma"));

        Global.RemoteAdmin = true;
        SetUserKey("LastServer", QString());
        frmLogin remoteOnly(remote);
        QCOMPARE(remoteOnly.cboServer->itemText(0), QStringLiteral("alpha"));
        QCOMPARE(remoteOnly.cboServer->currentText(), QStringLiteral("alpha"));
    }

    void unreachableServerEndsWithCodeTwoAndIsRemembered()
    {
        QTcpServer closed;
        closed.listen(QHostAddress::LocalHost);
        const QString text = QStringLiteral("127.0.0.1:%1").arg(closed.serverPort());
        closed.close();
        frmRemote remote;
        frmLogin login(remote);
        QSignalSpy shutdown(&login, &frmLogin::ShutdownRequested);
        QSignalSpy toolbar(&login, &frmLogin::ToolBarConnected);
        login.cboServer->setEditText(text);
        login.txtPassword->setText(QStringLiteral("x"));
        login.Connect();
        QCOMPARE(login.Result, 2);
        QCOMPARE(login.result(), int(QDialog::Accepted));
        // 127.0.0.1 is a local server: the main window stays.
        QCOMPARE(shutdown.size(), 0);
        QCOMPARE(toolbar.size(), 1);
        QVERIFY(UserKey("RemoteServers").split(u';').contains(text));
        QCOMPARE(UserKey("LastServer"), text);
    }

    void loginAgainstTheServer()
    {
        ServerProcess server;
        if (!server.Start(QStringLiteral(POSTVANE_SERVER_PROGRAM)))
            QSKIP(qPrintable(server.Problem));
        frmRemote remote;
        frmLogin login(remote);
        login.cboServer->setEditText(server.ServerText());
        login.txtUserName->setText(QStringLiteral("Admin"));
        login.txtPassword->setText(QStringLiteral("not the password"));
        {
            ModalCloser closer;
            login.Connect();
            QCOMPARE(login.Result, 1);
            QTRY_COMPARE(closer.Texts.size(), 1);
            QVERIFY(closer.Texts[0].startsWith(QStringLiteral("Not Connected To Postvane.")));
        }
        // A wrong password keeps the dialog with the server and user; only the password goes.
        QCOMPARE(login.result(), 0);
        QCOMPARE(login.txtPassword->text(), QString());
        QCOMPARE(login.cboServer->currentText(), server.ServerText());
        QCOMPARE(login.txtUserName->text(), QStringLiteral("Admin"));
        QVERIFY(login.btnConnect->isEnabled());

        QSignalSpy toolbar(&login, &frmLogin::ToolBarConnected);
        login.Connect();
        QCOMPARE(login.Result, 0);
        QCOMPARE(login.result(), int(QDialog::Accepted));
        QVERIFY(!Global.DialogCancelled);
        QCOMPARE(toolbar.size(), 1);
        QCOMPARE(toolbar[0].at(0).toBool(), true);
        QCOMPARE(login.prgLogin->value(), login.prgLogin->maximum());
        QVERIFY(Users().UserNoFromName(QStringLiteral("Admin")) > 0);
        remote.Close();
    }

    void cancelSetsDialogCancelled()
    {
        frmRemote remote;
        frmLogin login(remote);
        Global.DialogCancelled = false;
        login.btnCancel->click();
        QVERIFY(Global.DialogCancelled);
        QCOMPARE(login.result(), int(QDialog::Rejected));
    }
};

POSTVANE_TEST(tst_frmLogin)
#include "tst_frmLogin.moc"
