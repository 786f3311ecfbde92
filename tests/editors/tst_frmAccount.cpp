#include "../engine/DovecotServer.h"
#include "EditorSession.h"
#include "TestRegistry.h"
#include "editors/SourceTabWidget.h"
#include "editors/frmAccount.h"
#include "editors/frmAccountEdgeServer.h"
#include "editors/frmAccountSchedule.h"
#include "editors/frmREOrderTriggers.h"
#include "model/clsAccountTrigger.h"

#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTableWidget>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeEdit>
#include <QTreeWidget>

namespace {

// The account as the server keeps it, read from "getaccount.xml".
std::unique_ptr<clsAccount> Stored(EditorSession &Session, const QString &AccountID)
{
    auto account = std::make_unique<clsAccount>();
    clsAccount *outbox = OutboxAccount;
    account->setXML(Session.Server.Get(QStringLiteral("getaccount.xml?accountid=") + AccountID).Text());
    OutboxAccount = outbox;
    return account;
}

// A new account's editor with its name set.
std::unique_ptr<frmAccount> NewEditor(const QString &Name)
{
    auto editor = std::make_unique<frmAccount>(nullptr);
    editor->txtName->setText(Name);
    return editor;
}

} // namespace

// The account editor against a real server and a Dovecot on loopback: every
// kind of source saved and read back, the checks before saving, the
// connection tests, and the schedule, edge server and trigger order dialogs.
class tst_frmAccount : public QObject
{
    Q_OBJECT
    EditorSession session;
    DovecotServer dovecot;
    QTemporaryDir pickup;

private slots:
    void initTestCase()
    {
        if (!session.Start())
            QFAIL(qPrintable(session.Problem));
        if (!dovecot.Start())
            QFAIL(qPrintable(dovecot.Problem));
        QVERIFY(pickup.isValid());
    }

    void unCrunchMapsTheInvertedAndComputedControls()
    {
        clsAccount account;
        account.Name = QStringLiteral("Mapped");
        account.ServerLeaveMessageOn = true;
        account.IMAPLeaveMessageOn = false;
        account.MarkAsReadType = 0;
        frmAccount editor(&account);
        QVERIFY(!editor.chkDelete->isChecked());
        QVERIFY(editor.chkIMAPDelete->isChecked());
        QVERIFY(!editor.chkMarkAsRead->isChecked());
        account.MarkAsReadType = 2;
        frmAccount second(&account);
        QVERIFY(second.chkMarkAsRead->isChecked());
        QCOMPARE(second.cmboMarkAsReadType->currentIndex(), 1);
        QVERIFY(!editor.Dirty);
    }

    void smallReactions()
    {
        auto editor = NewEditor(QStringLiteral("Reactions"));
        editor->chkIMAPSSL->setChecked(true);
        QCOMPARE(editor->txtIMAPPort->text(), QStringLiteral("993"));
        editor->chkIMAPSSL->setChecked(false);
        QCOMPARE(editor->txtIMAPPort->text(), QStringLiteral("143"));
        editor->txtPort->setText(QStringLiteral("110"));
        editor->chkPOP3SSL->setChecked(true);
        QCOMPARE(editor->txtPort->text(), QStringLiteral("995"));
        editor->txtPort->setText(QStringLiteral("2995"));
        editor->chkPOP3SSL->setChecked(false);
        QCOMPARE(editor->txtPort->text(), QStringLiteral("110"));
        editor->txtIMAPServer->setText(QStringLiteral("outlook.office365.com"));
        emit editor->txtIMAPServer->editingFinished();
        QVERIFY(editor->chkIMAPSSL->isChecked());
        QCOMPARE(editor->txtIMAPPort->text(), QStringLiteral("993"));

        editor->chkIMAPDelete->setChecked(true);
        QVERIFY(editor->chkIMAPDeleteAll->isEnabled());
        QVERIFY(!editor->chkIMAPMove->isEnabled());
        editor->chkIMAPDelete->setChecked(false);
        QVERIFY(!editor->chkIMAPDeleteAll->isEnabled());
        QVERIFY(editor->chkIMAPMove->isEnabled());

        editor->chkOutBox->setChecked(true);
        for (int page = frmAccount::PageEmail; page < editor->Tabs->count(); ++page)
            QVERIFY(!editor->Tabs->widget(page)->isEnabled());
        QVERIFY(editor->Tabs->widget(frmAccount::PageGeneral)->isEnabled());
        editor->chkOutBox->setChecked(false);
        QVERIFY(editor->Tabs->widget(frmAccount::PageRSS)->isEnabled());

        editor->FrameTwitter->setChecked(true);
        QCOMPARE(editor->Edited->SCHEDULE, QStringLiteral("010|YYYYYYY"));
        QVERIFY(editor->Edited->TwitterSettings.contains(QStringLiteral("<FeedMaxCount>100</FeedMaxCount>")));
        QVERIFY(editor->Dirty);
    }

    void captionsOfKindsInUseAreBold()
    {
        auto editor = NewEditor(QStringLiteral("Captions"));
        QVERIFY(editor->Tabs->tabBold(frmAccount::PageClients)); // the drop box is on for a new account
        QVERIFY(!editor->Tabs->tabBold(frmAccount::PageEmail));
        editor->FrameIMAP->setChecked(true);
        QVERIFY(editor->Tabs->tabBold(frmAccount::PageEmail));
        QVERIFY(editor->TabsRead->tabBold(frmAccount::ReadIMAP));
        QVERIFY(!editor->TabsRead->tabBold(frmAccount::ReadPOP3));
        QCOMPARE(editor->TabsRead->TabMarkup(frmAccount::ReadIMAP), QStringLiteral("<TextBlock><Bold>IMAP</Bold></TextBlock>"));
        QCOMPARE(editor->TabsRead->TabMarkup(frmAccount::ReadPOP3), QStringLiteral("POP3"));
        editor->FrameIMAP->setChecked(false);
        QVERIFY(!editor->Tabs->tabBold(frmAccount::PageEmail));
    }

    void validationsInOrder()
    {
        auto editor = NewEditor(QString());
        ModalHandler modal;
        auto refused = [&](const QString &Message) {
            modal.Texts.clear();
            QVERIFY2(!editor->ButtonOK(), qPrintable(Message));
            QCOMPARE(modal.Texts.value(0), Message);
            QVERIFY(editor->IsNew);
        };
        refused(QStringLiteral("You must enter a name."));
        editor->txtName->setText(QStringLiteral("Checks"));

        editor->FrameSMTP->setChecked(true);
        refused(QStringLiteral("You must specify a mail server."));
        editor->txtServer->setText(QStringLiteral("127.0.0.1"));
        refused(QStringLiteral("You must specify an Account to use."));
        editor->txtAccount->setText(QStringLiteral("postvane"));

        editor->FrameIMAP->setChecked(true);
        refused(QStringLiteral("You must specific an IMAP server."));
        editor->txtIMAPServer->setText(QStringLiteral("127.0.0.1"));
        refused(QStringLiteral("You must specify an IMAP Account to use."));
        editor->txtIMAPAccount->setText(QStringLiteral("postvane"));
        QTreeWidgetItem *inbox = editor->TreeIMAP->topLevelItem(0)->child(0);
        QVERIFY(inbox);
        editor->TreeIMAP->setCurrentItem(nullptr);
        refused(QStringLiteral("You must select an IMAP folder."));
        editor->TreeIMAP->setCurrentItem(inbox);
        editor->chkIMAPMove->setChecked(true);
        editor->TreeIMAPMove->setCurrentItem(editor->TreeIMAPMove->topLevelItem(0)->child(0));
        refused(QStringLiteral("You must select a different IMAP folder to move the messages to."));
        editor->TreeIMAPMove->setCurrentItem(editor->TreeIMAPMove->topLevelItem(0));
        refused(QStringLiteral("You must select a different IMAP folder to move the messages to."));
        editor->chkIMAPMove->setChecked(false);

        editor->FrameFilePickup->setChecked(true);
        editor->txtFilePickupFolder->setText(pickup.filePath(QStringLiteral("missing")));
        refused(QStringLiteral("File pickup folder does not exist."));
        editor->txtFilePickupFolder->setText(pickup.path());
        editor->FrameCSVPickup->setChecked(true);
        refused(QStringLiteral("CSV pickup folder does not exist."));
        editor->txtCSVPickupFolder->setText(pickup.path());

        editor->FrameDirect->setChecked(true);
        refused(QStringLiteral("You must specify a domain name to receive direct emails for."));
        editor->txtSMTPDomain->setText(QStringLiteral("not a domain"));
        refused(QStringLiteral("You must specify a domain name to receive direct emails for."));
        editor->txtSMTPDomain->setText(QStringLiteral("orders.example;shop.example"));

        editor->FrameDatabasePull->setChecked(true);
        refused(QStringLiteral("You must specify the connection string and SQL statement for database pull."));
        editor->txtDBConnection->setText(QStringLiteral("Driver=SQLite3;Database=/tmp/none.db"));
        editor->txtDBSQL->setPlainText(QStringLiteral("SELECT * FROM Orders"));
        refused(QStringLiteral("You must specify the database field to use for the Message text."));
        editor->chkDBMSGBody->setChecked(true);

        editor->FrameRSS->setChecked(true);
        refused(QStringLiteral("You must specify the RSS Url"));
        editor->txtRSSUrl->setText(QStringLiteral("http://127.0.0.1:1/feed"));
        editor->FrameHTTP->setChecked(true);
        refused(QStringLiteral("You must specify the HTTP Lookup Url"));
        editor->txtHTTPUrl->setText(QStringLiteral("http://127.0.0.1:1/page"));

        editor->FrameExchange->setChecked(true);
        editor->txtEWSUrl->setText(frmAccount::EWSPrompt);
        refused(QStringLiteral("You must enter a valid Exchange EWS Url"));
        QVERIFY(editor->txtEWSUrl->text().isEmpty());
        editor->txtEWSUrl->setText(QStringLiteral("https://mail.example/ews/exchange.asmx"));

        editor->FrameTwitter->setChecked(true);
        refused(QStringLiteral("You must authenticate with your Twitter Account to read Twitter Feeds"));
    }

    void aSecondOutboxIsRefusedAndTheFirstSaves()
    {
        auto first = NewEditor(QStringLiteral("Outbox One"));
        first->chkOutBox->setChecked(true);
        ModalHandler modal;
        QVERIFY(first->ButtonOK());
        QVERIFY(Accounts().Item(first->Edited->AccountID));
        QCOMPARE(Accounts().FindOutboxID(), first->Edited->AccountID);

        auto second = NewEditor(QStringLiteral("Outbox Two"));
        second->chkOutBox->setChecked(true);
        QVERIFY(!second->ButtonOK());
        QCOMPARE(modal.Texts.value(0), QStringLiteral("A Outbox Account already exists. Only 1 Account can be used "
                                                      "for the Outbox processing."));
        frmAccount again(Accounts().Item(first->Edited->AccountID));
        again.txtDetails->setText(QStringLiteral("still the outbox"));
        QVERIFY(again.ButtonOK());
        QCOMPARE(Stored(session, first->Edited->AccountID)->Details, QStringLiteral("still the outbox"));
    }

    void everyKindSavesAndReadsBack_data()
    {
        QTest::addColumn<int>("kind");
        for (int kind = 0; kind < 12; ++kind)
            QTest::newRow(qPrintable(QString::number(kind))) << kind;
    }

    void everyKindSavesAndReadsBack()
    {
        QFETCH(int, kind);
        clsAccount twitter;
        twitter.Name = QStringLiteral("Kind %1").arg(kind);
        twitter.TwitterFeed = kind == 10;
        twitter.TwitterSettings = QStringLiteral("<Class>Twitter</Class><ScreenName>postvane</ScreenName>"
                                                 "<UserID>42</UserID><FeedMaxCount>100</FeedMaxCount>");
        auto editor = kind == 10 ? std::make_unique<frmAccount>(&twitter) : NewEditor(twitter.Name);
        frmAccount &e = *editor;
        switch (kind) {
        case 0: // IMAP
            e.FrameIMAP->setChecked(true);
            e.txtIMAPServer->setText(QStringLiteral("imap.example"));
            e.chkIMAPSSL->setChecked(true);
            e.txtIMAPAccount->setText(QStringLiteral("orders"));
            e.txtIMAPPassword->setText(QStringLiteral("p&ss<word>"));
            e.chkIMAPDelete->setChecked(true);
            e.chkIMAPDeleteAll->setChecked(true);
            e.chkIMAPServerIDs->setChecked(true);
            break;
        case 1: // POP3
            e.FrameSMTP->setChecked(true);
            e.txtServer->setText(QStringLiteral("pop.example"));
            e.txtPort->setText(QStringLiteral("110"));
            e.chkPOP3SSL->setChecked(true);
            e.txtAccount->setText(QStringLiteral("orders"));
            e.txtPassword->setText(QStringLiteral("secret"));
            e.chkDelete->setChecked(false);
            break;
        case 2: // Exchange
            e.FrameExchange->setChecked(true);
            e.txtEWSUrl->setText(QStringLiteral("https://mail.example/ews/exchange.asmx"));
            e.txtEWSUsername->setText(QStringLiteral("orders"));
            e.txtEWSPassword->setText(QStringLiteral("secret"));
            e.txtEWSOtherMailbox->setText(QStringLiteral("sales@example.org"));
            e.chkEWSMove->setChecked(true);
            e.txtEWSMoveToFolder->setText(QStringLiteral("Done"));
            break;
        case 3: // Direct SMTP
            e.FrameDirect->setChecked(true);
            e.txtSMTPDomain->setText(QStringLiteral("orders.example;shop.example"));
            e.txtSMTPAliases->setText(QStringLiteral("in*;sales"));
            break;
        case 4: // File pickup
            e.FrameFilePickup->setChecked(true);
            e.txtFilePickupFolder->setText(pickup.path());
            e.txtFilePickupMask->setText(QStringLiteral("*.eml"));
            break;
        case 5: // Database pull
            e.FrameDatabasePull->setChecked(true);
            e.txtDBConnection->setText(QStringLiteral("Driver=SQLite3;Database=/tmp/orders.db"));
            e.txtDBSQL->setPlainText(QStringLiteral("SELECT * FROM Orders WHERE Done=0"));
            e.txtDBUIDField->setText(QStringLiteral("OrderID"));
            e.txtDBMessageField->setText(QStringLiteral("Body"));
            e.chkDBDelete->setChecked(true);
            e.txtDBUpdateField->setText(QStringLiteral("Done"));
            e.txtDBUpdateValue->setText(QStringLiteral("1"));
            break;
        case 6: // HTTP lookup
            e.FrameHTTP->setChecked(true);
            e.txtHTTPUrl->setText(QStringLiteral("https://shop.example/status?a=1&b=2"));
            e.chkHTTPFollow->setChecked(false);
            e.cmboHTTPLogin->setCurrentIndex(2);
            e.txtHTTPUser->setText(QStringLiteral("watcher"));
            e.txtHTTPPass->setText(QStringLiteral("secret"));
            e.chkHTTPFail->setChecked(true);
            break;
        case 7: // RSS / Atom
            e.FrameRSS->setChecked(true);
            e.txtRSSUrl->setText(QStringLiteral("https://shop.example/feed.atom"));
            e.chkRSSAtom->setChecked(true);
            break;
        case 8: // Clients
            e.txtDropBoxToAddress->setText(QStringLiteral("orders@shop.example;*@in.example"));
            e.txtDropBoxSubject->setText(QStringLiteral("From the client"));
            break;
        case 9: // CSV and Excel pickup
            e.FrameCSVPickup->setChecked(true);
            e.txtCSVPickupFolder->setText(pickup.path());
            e.txtCSVPickupMask->setText(QStringLiteral("*.csv"));
            e.chkCSVPickupDelete->setChecked(true);
            e.txtCSVPickupWorkSheet->setText(QStringLiteral("Orders"));
            e.txtCSVPickupHeaderRow->setValue(3);
            break;
        case 10: // Twitter
            e.FrameTwitter->setChecked(true);
            e.cmboTwitterFeedType->setCurrentIndex(3);
            e.txtTwitterQuery->setText(QStringLiteral("postvane & mail"));
            break;
        case 11: // all sources off, general settings
            e.FrameDropbox->setChecked(false);
            e.txtDetails->setText(QStringLiteral("General only"));
            e.chkEnabled->setChecked(false);
            e.chkStoreFull->setChecked(false);
            e.chkUnzip->setChecked(true);
            e.chkAppendText->setChecked(true);
            e.chkStopOnError->setChecked(true);
            e.chkDeleteAfter->setChecked(true);
            e.txtDeleteAfterDays->setValue(45);
            e.chkMarkAsRead->setChecked(true);
            e.cmboMarkAsReadType->setCurrentIndex(0);
            break;
        }
        ModalHandler modal;
        QVERIFY2(e.ButtonOK(), qPrintable(modal.Texts.join(u'\n')));
        QVERIFY(!e.Dirty);
        const std::unique_ptr<clsAccount> s = Stored(session, e.Edited->AccountID);
        QCOMPARE(s->Name, twitter.Name);
        switch (kind) {
        case 0:
            QVERIFY(s->IMAP);
            QCOMPARE(s->IMAPServer, QStringLiteral("imap.example"));
            QCOMPARE(s->IMAPPort, qint16(993));
            QVERIFY(s->IMAPSSL);
            QCOMPARE(s->IMAPAccount, QStringLiteral("orders"));
            QCOMPARE(s->IMAPPassword, QStringLiteral("p&ss<word>"));
            QCOMPARE(s->IMAPFolder, QStringLiteral("inbox"));
            QVERIFY(!s->IMAPLeaveMessageOn);
            QVERIFY(s->IMAPDeleteAll);
            QVERIFY(s->IMAPServerIDs);
            QVERIFY(!s->IMAPMove);
            break;
        case 1:
            QVERIFY(s->SMTPServer);
            QCOMPARE(s->ServerIP, QStringLiteral("pop.example"));
            QCOMPARE(s->ServerPort, qint16(995));
            QVERIFY(s->ServerSSL);
            QCOMPARE(s->ServerAccount, QStringLiteral("orders"));
            QCOMPARE(s->ServerPassword, QStringLiteral("secret"));
            QVERIFY(s->ServerLeaveMessageOn);
            break;
        case 2:
            QVERIFY(s->EWS);
            QCOMPARE(s->EWSUrl, QStringLiteral("https://mail.example/ews/exchange.asmx"));
            QCOMPARE(s->EWSUsername, QStringLiteral("orders"));
            QCOMPARE(s->EWSPassword, QStringLiteral("secret"));
            QCOMPARE(s->EWSOtherMailbox, QStringLiteral("sales@example.org"));
            QVERIFY(s->EWSMove);
            QCOMPARE(s->EWSMoveToFolder, QStringLiteral("Done"));
            break;
        case 3:
            QVERIFY(s->MailServer);
            QCOMPARE(s->MailServerDomain, QStringLiteral("orders.example;shop.example"));
            QCOMPARE(s->MailServerAliases, QStringLiteral("in*;sales"));
            break;
        case 4:
            QVERIFY(s->FilePickUp);
            QCOMPARE(s->FilePickupFolder, pickup.path());
            QCOMPARE(s->FilePickUpMask, QStringLiteral("*.eml"));
            break;
        case 5:
            QVERIFY(s->DBPull);
            QCOMPARE(s->DBConnection, QStringLiteral("Driver=SQLite3;Database=/tmp/orders.db"));
            QCOMPARE(s->DBSQL, QStringLiteral("SELECT * FROM Orders WHERE Done=0"));
            QCOMPARE(s->DBUIDField, QStringLiteral("OrderID"));
            QCOMPARE(s->DBMSGField, QStringLiteral("Body"));
            QVERIFY(!s->DBMSGBody);
            QVERIFY(s->DBDelete);
            QCOMPARE(s->DBUpdateField, QStringLiteral("Done"));
            QCOMPARE(s->DBUpdateValue, QStringLiteral("1"));
            break;
        case 6:
            QVERIFY(s->HTTP);
            QCOMPARE(s->HTTPUrl, QStringLiteral("https://shop.example/status?a=1&b=2"));
            QVERIFY(!s->HTTPFollow);
            QCOMPARE(s->HTTPLogin, qint16(2));
            QCOMPARE(s->HTTPUser, QStringLiteral("watcher"));
            QCOMPARE(s->HTTPPass, QStringLiteral("secret"));
            QVERIFY(s->HTTPClean);
            QVERIFY(s->HTTPFail);
            break;
        case 7:
            QVERIFY(s->RSS);
            QCOMPARE(s->RSSUrl, QStringLiteral("https://shop.example/feed.atom"));
            QVERIFY(s->RSSAtom);
            break;
        case 8:
            QVERIFY(s->Dropbox);
            QCOMPARE(s->DropBoxToAddress, QStringLiteral("orders@shop.example;*@in.example"));
            QCOMPARE(s->DropBoxSubject, QStringLiteral("From the client"));
            break;
        case 9:
            QVERIFY(s->CSVPickUp);
            QCOMPARE(s->CSVPickupFolder, pickup.path());
            QCOMPARE(s->CSVPickupMask, QStringLiteral("*.csv"));
            QVERIFY(s->CSVPickupDelete);
            QCOMPARE(s->CSVPickupWorkSheet, QStringLiteral("Orders"));
            QCOMPARE(s->CSVPickupHeaderRow, 3);
            break;
        case 10:
            QVERIFY(s->TwitterFeed);
            QVERIFY(s->TwitterSettings.contains(QStringLiteral("<ScreenName>postvane</ScreenName>")));
            QVERIFY(s->TwitterSettings.contains(QStringLiteral("<FeedType>3</FeedType>")));
            QVERIFY(s->TwitterSettings.contains(QStringLiteral("<FeedQuery>postvane &amp; mail</FeedQuery>")));
            break;
        case 11:
            QVERIFY(!s->Dropbox);
            QCOMPARE(s->Details, QStringLiteral("General only"));
            QVERIFY(!s->Enabled);
            QVERIFY(!s->StoreFull);
            QVERIFY(s->UnzipAttachments);
            QVERIFY(s->AppendText);
            QVERIFY(s->AutoPause);
            QVERIFY(s->Archive);
            QCOMPARE(s->ArchiveDays, qint16(45));
            QCOMPARE(s->MarkAsReadType, qint16(1));
            break;
        }
        if (kind != 8) {
            // An empty drop box subject and address take their defaults.
            QCOMPARE(s->DropBoxSubject, QStringLiteral("Message From Postvane Client"));
            QVERIFY(s->DropBoxToAddress.startsWith(QStringLiteral("Kind_%1@").arg(kind)));
        }
    }

    void aNewAccountGetsAFolderUnderTheRoot()
    {
        QCOMPARE(session.Server.Get(QStringLiteral("addfolder.xml?folderid=ROOTFOLDER&folder=Organization")).Text(),
                 QStringLiteral("OK"));
        QVERIFY(Remote().HTTPGet(QStringLiteral("getfolders.xml")));
        auto editor = NewEditor(QStringLiteral("Foldered"));
        const clsUserFolder *root = UserFolders().RootFolder(editor->Edited->OrganizationID);
        QVERIFY(root);
        QCOMPARE(root->ID, QStringLiteral("ROOTFOLDER"));
        ModalHandler modal;
        QVERIFY(editor->ButtonOK());
        QVERIFY(Remote().HTTPGet(QStringLiteral("getfolders.xml")));
        const QString id = UserFolders().AccountRootFolderID(editor->Edited->AccountID);
        QVERIFY(!id.isEmpty());
        QCOMPARE(UserFolders().Item(id)->Name, QStringLiteral("Foldered"));
        QCOMPARE(UserFolders().Item(id)->Parent, QStringLiteral("ROOTFOLDER"));
    }

    void closingAsksToSaveChanges()
    {
        auto editor = NewEditor(QStringLiteral("Asked"));
        editor->txtDetails->setText(QStringLiteral("x"));
        emit editor->txtDetails->textEdited(QStringLiteral("x"));
        QVERIFY(editor->Dirty);
        ModalHandler modal(QMessageBox::Cancel);
        QVERIFY(!editor->SaveChanges());
        QCOMPARE(modal.Texts.value(0), QStringLiteral("Save Changes?\nDo you want to save the changes made to this Account?"));
        modal.Answer = QMessageBox::No;
        QVERIFY(editor->SaveChanges());
        QVERIFY(!Accounts().Item(editor->Edited->AccountID));
    }

    void mailboxTestsAgainstDovecot()
    {
        auto editor = NewEditor(QStringLiteral("Mailbox"));
        dovecot.Deliver("From: a@example.org\r\nSubject: one\r\n\r\nBody\r\n");
        dovecot.Deliver("From: a@example.org\r\nSubject: two\r\n\r\nBody\r\n");
        dovecot.MakeFolder(QStringLiteral("Done"));
        editor->txtServer->setText(QStringLiteral("127.0.0.1"));
        editor->txtPort->setText(QString::number(dovecot.Pop3Port));
        editor->txtAccount->setText(QStringLiteral("postvane"));
        editor->txtPassword->setText(QStringLiteral("secret"));
        ModalHandler modal;
        editor->TestPOP3();
        QCOMPARE(editor->LastTestResult, QStringLiteral("Connected Successfully. Messages Waiting: %1").arg(dovecot.Count()));
        editor->txtPassword->setText(QStringLiteral("wrong"));
        editor->TestPOP3();
        QVERIFY2(editor->LastTestResult.contains(QStringLiteral("POP3 127.0.0.1")), qPrintable(editor->LastTestResult));
        QVERIFY(!editor->LastTestResult.contains(QStringLiteral("wrong")));

        editor->txtIMAPServer->setText(QStringLiteral("127.0.0.1"));
        editor->txtIMAPPort->setText(QString::number(dovecot.ImapPort));
        editor->txtIMAPAccount->setText(QStringLiteral("postvane"));
        editor->txtIMAPPassword->setText(QStringLiteral("wrong"));
        editor->LastTestResult.clear();
        editor->ConnectIMAP();
        QVERIFY2(editor->LastTestResult.contains(QStringLiteral("IMAP 127.0.0.1")), qPrintable(editor->LastTestResult));
        QCOMPARE(editor->btnIMAPConnect->text(), QStringLiteral("Connect"));
        editor->txtIMAPPassword->setText(QStringLiteral("secret"));
        editor->ConnectIMAP();
        QCOMPARE(editor->btnIMAPConnect->text(), QStringLiteral("Disconnect"));
        QTreeWidgetItem *root = editor->TreeIMAP->topLevelItem(0);
        QCOMPARE(root->text(0), QStringLiteral("IMAP Folders"));
        QStringList names;
        for (int i = 0; i < root->childCount(); ++i)
            names << root->child(i)->text(0);
        QVERIFY2(names.contains(QStringLiteral("INBOX")) && names.contains(QStringLiteral("Done")),
                 qPrintable(names.join(u',')));
        QCOMPARE(editor->TreeIMAPMove->topLevelItem(0)->childCount(), root->childCount());
        editor->ConnectIMAP();
        QCOMPARE(editor->btnIMAPConnect->text(), QStringLiteral("Connect"));
    }

    void selfSignedCertificateAsksFirst()
    {
        auto editor = NewEditor(QStringLiteral("Certificate"));
        // TLS from the first byte on the IMAPS port, STARTTLS on the POP3 port.
        editor->txtIMAPServer->setText(QStringLiteral("imaps://127.0.0.1"));
        editor->chkIMAPSSL->setChecked(true);
        editor->txtIMAPPort->setText(QString::number(dovecot.ImapsPort));
        editor->txtIMAPAccount->setText(QStringLiteral("postvane"));
        editor->txtIMAPPassword->setText(QStringLiteral("secret"));
        {
            ModalHandler refuse(QMessageBox::No);
            editor->ConnectIMAP();
            QCOMPARE(refuse.Texts.size(), 1);
            const QString asked = refuse.Texts.first();
            QVERIFY2(asked.startsWith(QStringLiteral("IMAP Server provided the following certificate:")), qPrintable(asked));
            QVERIFY2(asked.contains(QRegularExpression(QStringLiteral("    Issuer: \\S*CN ?= ?\\S"))), qPrintable(asked));
            QVERIFY(asked.contains(QStringLiteral("    Subject: ")));
            QVERIFY(asked.contains(QStringLiteral("Would you like to continue or cancel the connection?")));
            QCOMPARE(editor->btnIMAPConnect->text(), QStringLiteral("Connect"));
            QCOMPARE(editor->TreeIMAP->topLevelItem(0)->child(0)->text(0), QStringLiteral("inbox"));
        }
        ModalHandler accept(QMessageBox::Yes);
        editor->ConnectIMAP();
        QVERIFY2(editor->btnIMAPConnect->text() == QStringLiteral("Disconnect"), qPrintable(accept.Texts.join(u'\n')));

        editor->txtServer->setText(QStringLiteral("127.0.0.1"));
        editor->chkPOP3SSL->setChecked(true);
        editor->txtPort->setText(QString::number(dovecot.Pop3Port));
        editor->txtAccount->setText(QStringLiteral("postvane"));
        editor->txtPassword->setText(QStringLiteral("secret"));
        accept.Texts.clear();
        editor->TestPOP3();
        QVERIFY(accept.Texts.value(0).startsWith(QStringLiteral("POP3 Server provided the following certificate:")));
        QVERIFY2(editor->LastTestResult.startsWith(QStringLiteral("Connected Successfully")), qPrintable(editor->LastTestResult));
    }

    void aServerThatNeverAnswersEndsWithinItsTimeOut()
    {
        QTcpServer silent;
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        auto editor = NewEditor(QStringLiteral("Silent"));
        editor->TestTimeoutSeconds = 2;
        editor->txtServer->setText(QStringLiteral("127.0.0.1"));
        editor->txtPort->setText(QString::number(silent.serverPort()));
        editor->txtAccount->setText(QStringLiteral("postvane"));
        ModalHandler modal;
        QElapsedTimer clock;
        clock.start();
        editor->TestPOP3();
        QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));
        QVERIFY2(editor->LastTestResult.contains(QStringLiteral("POP3 127.0.0.1:%1").arg(silent.serverPort())),
                 qPrintable(editor->LastTestResult));
        QVERIFY(editor->btnTest->isEnabled());

        editor->txtHTTPUrl->setText(QStringLiteral("http://127.0.0.1:%1/page").arg(silent.serverPort()));
        clock.restart();
        editor->CheckHTTP();
        QVERIFY(clock.elapsed() < 10000);
        QCOMPARE(editor->LastTestResult,
                 QStringLiteral("No answer from 127.0.0.1 within 2 seconds."));
    }

    void feedsAndPagesShowWhatTheyRead()
    {
        // A one-shot web server on loopback that answers every request with
        // the body given.
        QTcpServer web;
        QVERIFY(web.listen(QHostAddress::LocalHost));
        QByteArray body;
        QByteArray type = "application/rss+xml";
        connect(&web, &QTcpServer::newConnection, this, [&] {
            QTcpSocket *socket = web.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket, [socket, &body, &type] {
                socket->readAll();
                socket->write("HTTP/1.1 200 OK\r\nContent-Type: " + type + "\r\nContent-Length: " +
                              QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
                socket->disconnectFromHost();
            });
        });
        const QString url = QStringLiteral("http://127.0.0.1:%1/feed").arg(web.serverPort());
        auto editor = NewEditor(QStringLiteral("Feeds"));
        editor->txtRSSUrl->setText(url);
        body = "<?xml version=\"1.0\"?><rss version=\"2.0\"><channel><title>Shop</title>"
               "<item><title>First &amp; best</title><pubDate>Mon, 02 Mar 2026 10:00:00 GMT</pubDate>"
               "<description>&lt;b&gt;New&lt;/b&gt; order</description></item>"
               "<item><title>Second</title></item></channel></rss>";
        ModalHandler modal;
        editor->CheckRSS();
        QCOMPARE(editor->LastTestResult, QStringLiteral("RSS Feed (First Item)\r\nFirst & best\r\nPub Date: Mon, 02 Mar "
                                                        "2026 10:00:00 GMT\r\n\r\nNew order"));
        type = "application/atom+xml";
        body = "<feed xmlns=\"http://www.w3.org/2005/Atom\"><title>Shop</title><entry><title>Atom one</title>"
               "<updated>2026-03-02T10:00:00Z</updated><summary>Summary text</summary></entry></feed>";
        editor->chkRSSAtom->setChecked(true);
        editor->CheckRSS();
        QCOMPARE(editor->LastTestResult, QStringLiteral("Atom Feed (First Item)\r\nAtom one\r\nPub Date: "
                                                        "2026-03-02T10:00:00Z\r\n\r\nSummary text"));
        editor->chkRSSAtom->setChecked(false);
        editor->CheckRSS();
        QCOMPARE(editor->LastTestResult, QStringLiteral("The feed has no item."));

        type = "text/html; charset=utf-8";
        body = "<html><body><p>Stock: 12 items</p>" + QByteArray(600, 'x') + "</body></html>";
        editor->txtHTTPUrl->setText(url);
        editor->CheckHTTP();
        QVERIFY2(editor->LastTestResult.startsWith(QStringLiteral("Received %1 Bytes\r\n\r\nStock: 12 items").arg(body.size())),
                 qPrintable(editor->LastTestResult));
        QVERIFY(editor->LastTestResult.endsWith(QStringLiteral("...")));
    }

    void databaseTestRunsAtTheServerAndHere()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("orders.db"));
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("orders-test"));
            db.setDatabaseName(file);
            QVERIFY(db.open());
            QSqlQuery query(db);
            QVERIFY(query.exec(QStringLiteral("CREATE TABLE Orders (ID INTEGER, Body TEXT)")));
            QVERIFY(query.exec(QStringLiteral("INSERT INTO Orders VALUES (1, 'a'), (2, 'b')")));
        }
        QSqlDatabase::removeDatabase(QStringLiteral("orders-test"));
        auto editor = NewEditor(QStringLiteral("Database"));
        ModalHandler modal;
        editor->TestDatabase();
        QCOMPARE(editor->LastTestResult, QStringLiteral("You need to specify the Connection String and SQL Statement"));
        editor->txtDBConnection->setText(QStringLiteral("Driver=SQLite3;Database=") + file);
        editor->txtDBSQL->setPlainText(QStringLiteral("SELECT * FROM Orders"));
        editor->TestDatabase();
        QCOMPARE(editor->LastTestResult, QStringLiteral("SQL Query Executed Successfully. Returned: 2 Rows"));
        editor->txtDBSQL->setPlainText(QStringLiteral("SELECT * FROM Orders WHERE ID > 5"));
        editor->TestDatabase();
        QCOMPARE(editor->LastTestResult, QStringLiteral("No Data"));
        editor->txtDBConnection->setText(QStringLiteral("Driver=SQLite3;Database=") + dir.filePath(QStringLiteral("none.db")));
        editor->TestDatabase();
        QCOMPARE(editor->LastTestResult, QStringLiteral("Failed To Open Database Using The Specified Connection String"));
    }

    void exchangeAndTwitterAreNotAvailable()
    {
        auto editor = NewEditor(QStringLiteral("Unavailable"));
        editor->FrameExchange->setChecked(true);
        editor->FrameTwitter->setChecked(true);
        ModalHandler modal;
        editor->btnExchangeSelect->click();
        QCOMPARE(modal.Texts.value(0), QStringLiteral("You must enter the Exchange Web Services URL, Username & Password"));
        editor->txtEWSUrl->setText(QStringLiteral("https://mail.example/ews/exchange.asmx"));
        editor->txtEWSUsername->setText(QStringLiteral("u"));
        editor->txtEWSPassword->setText(QStringLiteral("p"));
        editor->btnExchangeSelect->click();
        QCOMPARE(editor->LastTestResult, QStringLiteral("This source kind is not available on this server."));
        editor->LastTestResult.clear();
        editor->btnTwitterGetPin->click();
        QCOMPARE(editor->LastTestResult, QStringLiteral("This source kind is not available on this server."));
    }

    void scheduleTexts()
    {
        clsAccount account;
        account.SCHEDULE = QStringLiteral("05|YYYYYYY");
        frmAccountSchedule dialog(account, false);
        QVERIFY(dialog.optAt[0]->isChecked());
        QCOMPARE(dialog.txtEvery->text(), QStringLiteral("5"));
        QCOMPARE(dialog.ScheduleText(), QStringLiteral("05|YYYYYYY"));
        dialog.txtEvery->setText(QStringLiteral("0"));
        QCOMPARE(dialog.ScheduleText(), QStringLiteral("01|YYYYYYY"));
        dialog.txtEvery->setText(QStringLiteral("10"));
        dialog.chkDay[0]->setChecked(false);
        dialog.chkDay[6]->setChecked(false);
        QCOMPARE(dialog.ScheduleText(), QStringLiteral("010|NYYYYYN"));
        dialog.optAt[1]->setChecked(true);
        dialog.txtDailyAt->setTime(QTime(8, 30));
        QCOMPARE(dialog.ScheduleText(), QStringLiteral("108:30|NYYYYYN"));
        dialog.optAt[2]->setChecked(true);
        dialog.GridTimes->setItem(0, 0, new QTableWidgetItem(QStringLiteral("8:00")));
        dialog.GridTimes->setItem(1, 0, new QTableWidgetItem(QStringLiteral("17:30")));
        dialog.GridTimes->setItem(3, 0, new QTableWidgetItem(QStringLiteral("08:00")));
        dialog.GridTimes->setItem(4, 0, new QTableWidgetItem(QStringLiteral("soon")));
        dialog.chkAutoRun->setChecked(true);
        dialog.ButtonOK();
        QCOMPARE(account.SCHEDULE, QStringLiteral("208:00,17:30|NYYYYYN"));
        QVERIFY(account.AutoRun);
        QCOMPARE(dialog.GridTimes->rowCount(), frmAccountSchedule::TimeRows);

        frmAccountSchedule reread(account, false);
        QVERIFY(reread.optAt[2]->isChecked());
        QCOMPARE(reread.GridTimes->item(1, 0)->text(), QStringLiteral("17:30"));
        QVERIFY(!reread.chkDay[0]->isChecked() && reread.chkDay[1]->isChecked());

        account.SCHEDULE = QStringLiteral("03|YYYYYYY");
        frmAccountSchedule twitter(account, true);
        twitter.txtEvery->setText(QStringLiteral("5"));
        ModalHandler modal;
        twitter.ButtonOK();
        QCOMPARE(account.SCHEDULE, QStringLiteral("010|YYYYYYY"));
        QCOMPARE(account.CheckEveryMins, qint16(10));
        QCOMPARE(modal.Texts.value(0), QStringLiteral("The minimum schedule for Twitter Feeds is every 10 minutes."));

        clsAccount shown;
        shown.Name = QStringLiteral("Shown");
        shown.SCHEDULE = QStringLiteral("208:00,17:30|NYYYYYN");
        shown.AutoRun = true;
        frmAccount editor(&shown);
        QCOMPARE(editor.lblSchedule->text(), QStringLiteral("Daily At 08:00 17:30 (Mon,Tue,Wed,Thu,Fri) (Plus Auto Run)"));
    }

    void aTwitterSearchScheduledBelowTenMinutesMovesToTen()
    {
        clsAccount account;
        account.Name = QStringLiteral("Search");
        account.TwitterFeed = true;
        account.SCHEDULE = QStringLiteral("05|YYYYYYY");
        account.TwitterSettings = QStringLiteral("<Class>Twitter</Class><ScreenName>postvane</ScreenName><FeedType>4</FeedType>");
        frmAccount editor(&account);
        ModalHandler modal;
        QVERIFY(editor.ButtonOK());
        QCOMPARE(modal.Texts.value(0), QStringLiteral("The minimum schedule for Twitter Feeds (Search) is every 10 minutes."));
        QCOMPARE(Stored(session, account.AccountID)->SCHEDULE, QStringLiteral("010|YYYYYYY"));
    }

    void edgeServerDialogListsTheNodes()
    {
        QDir().mkpath(session.Server.DataPath() + QStringLiteral("Nodes"));
        QFile other(session.Server.DataPath() + QStringLiteral("Nodes/edgebox-4242.node"));
        QVERIFY(other.open(QIODevice::WriteOnly));
        other.write("<Name>edgebox</Name><Host>10.1.2.3</Host><Build>3.0.1000</Build>");
        other.close();
        QFile stale(session.Server.DataPath() + QStringLiteral("Nodes/oldbox-17.node"));
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.write("<Name>oldbox</Name><Host>10.9.9.9</Host>");
        stale.close();
        QVERIFY(stale.open(QIODevice::ReadOnly));
        QVERIFY(stale.setFileTime(QDateTime::currentDateTime().addSecs(-600), QFileDevice::FileModificationTime));
        stale.close();

        frmAccountEdgeServer dialog(QStringLiteral("10.1.2.3"));
        QStringList hosts;
        for (int i = 0; i < dialog.ListNodes->topLevelItemCount(); ++i)
            hosts << dialog.ListNodes->topLevelItem(i)->text(1);
        QCOMPARE(hosts.join(u','), QStringLiteral("127.0.0.1,10.1.2.3"));
        QCOMPARE(dialog.ListNodes->topLevelItem(1)->text(0), QStringLiteral("edgebox (4242)"));
        QCOMPARE(dialog.ListNodes->currentItem()->text(1), QStringLiteral("10.1.2.3"));
        dialog.ListNodes->setCurrentItem(dialog.ListNodes->topLevelItem(0));
        dialog.btnOK->click();
        QCOMPARE(dialog.SelectedHost, QStringLiteral("127.0.0.1"));
    }

    void reorderedTriggersReadBack()
    {
        clsAccount account;
        account.Name = QStringLiteral("Ordered");
        for (const char *name : {"First", "Second", "Third"}) {
            auto trigger = std::make_unique<clsAccountTrigger>();
            trigger->TriggerID = account.AccountID + QString::fromLatin1(name);
            trigger->Name = QString::fromLatin1(name);
            account.Triggers.Add(std::move(trigger));
        }
        clsAccount *live = session.Post(account);
        QVERIFY(live);
        QCOMPARE(live->Triggers.Count(), 3);
        frmREOrderTriggers dialog(*live);
        QVERIFY(!dialog.MoveUp(0));
        QVERIFY(!dialog.MoveDown(2));
        QVERIFY(dialog.MoveDown(0));
        QCOMPARE(dialog.Grid->currentRow(), 1);
        QVERIFY(dialog.MoveDown(1));
        QCOMPARE(dialog.Grid->item(2, 1)->text(), QStringLiteral("First"));
        QVERIFY(dialog.MoveUp(1));

        clsAccount stored;
        stored.Triggers.setXML(session.Server.Get(QStringLiteral("gettriggers.xml?accountid=") + account.AccountID).Text());
        QStringList names;
        for (const clsAccountTrigger *trigger : stored.Triggers)
            names << trigger->Name;
        QCOMPARE(names, (QStringList{QStringLiteral("Third"), QStringLiteral("Second"), QStringLiteral("First")}));
        QCOMPARE(dialog.Grid->item(0, 1)->text(), QStringLiteral("Third"));
    }
};

POSTVANE_TEST(tst_frmAccount)
#include "tst_frmAccount.moc"
