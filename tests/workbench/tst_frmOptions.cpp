#include "ModalCloser.h"
#include "ShellFixture.h"
#include "TestRegistry.h"
#include "foundation/GlobalSettings.h"
#include "workbench/frmOptions.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>

using namespace ShellFixture;

// The program options against a real server: the settings it posts, read
// back as the server keeps them, the organizations it lists and deletes,
// and the test message.
class tst_frmOptions : public QObject
{
    Q_OBJECT
    ServerFixture server;

    GlobalSettings ServerSettings()
    {
        const GlobalSettings mine = Global.Settings;
        LoadGlobalSettings(true, server.Get(Requests::GetGlobals()).Text());
        const GlobalSettings theirs = Global.Settings;
        Global.Settings = mine;
        return theirs;
    }
    int RowOf(const frmOptions &Options, const QString &Name)
    {
        for (int row = 0; row < Options.GridOrgs->rowCount(); ++row)
            if (Options.GridOrgs->item(row, 0)->text() == Name)
                return row;
        return -1;
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QVERIFY(Fill(server));
        QVERIFY(LogOn(server));
    }

    void cleanupTestCase() { Remote().Close(); }

    void okPostsTheSettingsTheServerKeeps()
    {
        frmOptions options;
        QCOMPARE(options.txtWebServicesURL->text(), Global.Settings.WebServicesURL);
        QVERIFY(!options.txtFWIP->isEnabled()); // firewall type "None"
        options.txtSendTo->setText(QStringLiteral("ops@alpha.test"));
        options.txtFromAddress->setText(QStringLiteral("robot@alpha.test"));
        options.chkEmailErrors->setChecked(true);
        options.chkLog->setChecked(true);
        options.optLogging->button(3)->setChecked(true);
        options.chkDeleteLog->setChecked(true);
        options.txtDeleteLogDays->setText(QStringLiteral("30"));
        options.cmboFWtype->setCurrentIndex(3);
        QVERIFY(options.txtFWIP->isEnabled());
        options.txtFWIP->setText(QStringLiteral("proxy.alpha.test"));
        options.txtFWPort->setText(QStringLiteral("1080"));
        options.txtFWPassword->setText(QStringLiteral("p&ss<word>"));
        options.txtSMSFrom->setText(QStringLiteral("Alpha"));
        options.cmboFaxPort->setCurrentIndex(2);
        options.show();
        Picture(&options, QStringLiteral("options"));
        QVERIFY(options.ButtonOK());

        const GlobalSettings stored = ServerSettings();
        QCOMPARE(stored.AdminEmail, QStringLiteral("ops@alpha.test"));
        QCOMPARE(stored.DefaultFromAddress, QStringLiteral("robot@alpha.test"));
        QVERIFY(stored.SendErrorsToAdmin);
        QCOMPARE(stored.LogLevel, qint16(4));
        QVERIFY(stored.DebugLogging);
        QVERIFY(stored.DeleteLog);
        QCOMPARE(stored.DeleteLogDays, qint16(30));
        QCOMPARE(stored.FirewallType, qint16(3));
        QCOMPARE(stored.FirewallIP, QStringLiteral("proxy.alpha.test"));
        QCOMPARE(stored.FirewallPort, qint16(1080));
        QCOMPARE(stored.FirewallPassword, QStringLiteral("p&ss<word>"));
        QCOMPARE(stored.SMSFrom, QStringLiteral("Alpha"));
        QCOMPARE(stored.FaxPort, qint16(3));

        // A new window shows what was kept, logging switched off included.
        frmOptions again;
        QCOMPARE(again.optLogging->checkedId(), 3);
        again.chkLog->setChecked(false);
        QVERIFY(!again.optLogging->button(0)->isEnabled());
        QVERIFY(again.ButtonOK());
        QCOMPARE(ServerSettings().LogLevel, qint16(0));
    }

    void testMessageNeedsBothAddresses()
    {
        frmOptions options;
        options.txtFromAddress->clear();
        {
            ModalCloser closer;
            QVERIFY(!options.SendTest());
            QCOMPARE(closer.Texts.value(0).section(u'\n', 0, 0),
                     QStringLiteral("Please enter an Administrator Email Address and the default From Address"));
        }
        options.txtFromAddress->setText(QStringLiteral("robot@alpha.test"));
        ModalCloser closer;
        QVERIFY(options.SendTest());
        QCOMPARE(closer.Texts.value(0).section(u'\n', 0, 0), QStringLiteral("Test Message Added To Postvane Send Queue"));
        for (const char *address : {"https://ws.alpha.test/Postvane", "https://ws.alpha.test/Postvane/"}) {
            options.txtWebServicesURL->setText(QString::fromLatin1(address));
            QCOMPARE(options.WebServicesTestURL(), QStringLiteral("https://ws.alpha.test/Postvane/WS.asmx"));
        }
    }

    void organizationsAreCountedAndDeletedWithTheirRules()
    {
        clsUserOrganization spare;
        spare.ID = QStringLiteral("OrgC");
        spare.Name = QStringLiteral("Gamma <spare>");
        QVERIFY(Posted(server, QStringLiteral("postorganization.htm?organizationid=OrgC"), spare.XML()));
        Remote().HTTPGet(Requests::GetOrganizations());

        frmOptions options;
        const int alpha = RowOf(options, QStringLiteral("Alpha Ltd"));
        QVERIFY(alpha >= 0);
        QCOMPARE(options.GridOrgs->item(alpha, 2)->text(), QStringLiteral("2")); // alice and pat
        QCOMPARE(options.GridOrgs->item(alpha, 3)->text(), QString::number(AccountCases().size() - 1));

        // The organization of the logged-on user is refused before anything is asked.
        const int own = RowOf(options, Organizations().Item(Global.UserOrganizationID)->Name);
        options.GridOrgs->selectRow(own);
        {
            ModalCloser closer(QMessageBox::Yes);
            QVERIFY(!options.DeleteOrganization());
            QCOMPARE(closer.Texts.size(), 1);
            QVERIFY(closer.Texts[0].startsWith(QStringLiteral("You cannot delete the Organization that you are currently logged on to.")));
        }
        // The server's refusal shows its reason and keeps the row.
        QSignalSpy bar(&Remote(), &frmRemote::MessageBar);
        options.GridOrgs->selectRow(RowOf(options, QStringLiteral("Beta & Co")));
        {
            ModalCloser closer(QMessageBox::Yes);
            QVERIFY(!options.DeleteOrganization());
        }
        QVERIFY(!bar.isEmpty());
        QVERIFY(bar.last().at(0).toString().contains(QStringLiteral("still has")));
        QVERIFY(RowOf(options, QStringLiteral("Beta & Co")) >= 0);

        options.GridOrgs->selectRow(RowOf(options, QStringLiteral("Gamma <spare>")));
        {
            ModalCloser closer(QMessageBox::Yes);
            QVERIFY(options.DeleteOrganization());
            QCOMPARE(closer.Texts.value(0).section(u'\n', 0, 0), QStringLiteral("Delete Organization: Gamma <spare>"));
        }
        QCOMPARE(RowOf(options, QStringLiteral("Gamma <spare>")), -1);
        QVERIFY(!server.Get(Requests::GetOrganizations()).Text().contains(QStringLiteral("OrgC")));
    }
};

POSTVANE_TEST(tst_frmOptions)
#include "tst_frmOptions.moc"
