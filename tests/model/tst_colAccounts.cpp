#include "TestRegistry.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"
#include "model/Selection.h"
#include "actions/clsActionPassTo.h"
#include "model/clsAccountTrigger.h"

#include <QTest>

namespace {

QDateTime At(int year, int month, int day, int hour = 0, int minute = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute));
}

clsAccount *AddAccount(colAccounts &accounts, const QString &id, const QString &name = QString())
{
    auto account = std::make_unique<clsAccount>();
    account->AccountID = id;
    account->Name = name.isEmpty() ? id : name;
    return accounts.Add(std::move(account));
}

clsAccount *AddMailServer(colAccounts &accounts, const QString &id, const QString &domains, const QString &aliases)
{
    clsAccount *account = AddAccount(accounts, id);
    account->MailServer = true;
    account->MailServerDomain = domains;
    account->MailServerAliases = aliases;
    return account;
}

clsAccount *AddDropBox(colAccounts &accounts, const QString &id, const QString &toAddress)
{
    clsAccount *account = AddAccount(accounts, id);
    account->Dropbox = true;
    account->DropBoxToAddress = toAddress;
    return account;
}

clsAccountTrigger *AddTrigger(clsAccount *account, const QString &id, const QString &folderID = QString())
{
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->TriggerID = id;
    trigger->Name = QStringLiteral("Trigger ") + id;
    trigger->SaveToFolderID = folderID;
    return account->Triggers.Add(std::move(trigger));
}

void AddValidation(clsAccountTrigger *trigger, const QString &id, bool enabled)
{
    clsXML writer;
    writer.Append(QStringLiteral("Validation"), QStringLiteral("Class"));
    writer.Append(id, QStringLiteral("ID"));
    writer.Append(enabled, QStringLiteral("Enabled"));
    writer.Append(QStringLiteral("<p>Thanks & bye</p>"), QStringLiteral("ConfirmationHTML"));
    writer.AppendXML(QStringLiteral("<field><name>Rating</name><type>1</type></field>"),
                     QStringLiteral("SurveyFieldsXML"));
    trigger->ActionList().AddXML(writer.GetXML());
}

QStringList IDs(const colAccounts &accounts)
{
    QStringList ids;
    for (const clsAccount *account : accounts)
        ids << account->AccountID;
    return ids;
}

QString FoundID(const clsAccount *account)
{
    return account ? account->AccountID : QStringLiteral("none");
}

} // namespace

class tst_colAccounts : public QObject
{
    Q_OBJECT
private slots:
    void cleanup()
    {
        ResetGlobalCollections();
        SelectedAccount = nullptr;
    }

    void passToNamesItsTargetFromTheGlobalAccounts()
    {
        clsActionPassTo action;
        action.TriggerID = QStringLiteral("T-target");
        action.Value = QStringLiteral("%Order%");
        clsAccount *account = AddAccount(Accounts(), QStringLiteral("A1"));
        auto trigger = std::make_unique<clsAccountTrigger>();
        trigger->TriggerID = QStringLiteral("T-target");
        trigger->Name = QStringLiteral("Orders Of The Day");
        account->Triggers.Add(std::move(trigger));
        QVERIFY(action.ActionDescription().contains(QStringLiteral("Orders Of The Day")));
        action.TriggerID = QStringLiteral("T-unknown");
        QVERIFY(!action.ActionDescription().contains(QStringLiteral("Orders Of The Day")));
    }

    void collectionRoundTripsAndDueAccountsAreCheckedAtOnce()
    {
        colAccounts accounts;
        clsAccount *interval = AddAccount(accounts, QStringLiteral("A1"));
        clsAccount *daily = AddAccount(accounts, QStringLiteral("A2"));
        daily->SCHEDULE = QStringLiteral("108:00|YYYYYYY");
        daily->LastChecked = At(2024, 1, 1);
        AddTrigger(interval, QStringLiteral("T1"));
        interval->XMLIncludeTriggers = true;
        const QString xml = accounts.XML();
        QVERIFY(xml.startsWith(QStringLiteral("<Accounts>\n\t<Account>\n\t\t<AccountID>A1</AccountID>")));

        colAccounts copy;
        AddAccount(copy, QStringLiteral("OLD"));
        SelectedAccount = copy.Item(1);
        copy.setXML(xml);
        QVERIFY(!SelectedAccount);
        QCOMPARE(IDs(copy), (QStringList{QStringLiteral("A1"), QStringLiteral("A2")}));
        QCOMPARE(copy.Item(QStringLiteral("A1"))->Triggers.Count(), 1);
        QVERIFY(copy.Item(1)->MustCheckNow);
        QCOMPARE(copy.Item(1)->LastChecked, At(2000, 1, 1));
        QVERIFY(!copy.Item(2)->MustCheckNow);
        QCOMPARE(copy.Item(2)->LastChecked, At(2024, 1, 1));
        copy.Item(1)->XMLIncludeTriggers = true;
        QCOMPARE(copy.XML(), xml);

        copy.setXML(QStringLiteral("<Accounts></Accounts>"));
        QCOMPARE(copy.Count(), 0);
    }

    void addGivesIdentifiersAndRefusesDuplicates()
    {
        colAccounts accounts;
        auto unnamed = std::make_unique<clsAccount>();
        unnamed->AccountID.clear();
        clsAccount *added = accounts.Add(std::move(unnamed));
        QVERIFY(added && !added->AccountID.isEmpty());
        QVERIFY(AddAccount(accounts, QStringLiteral("A1")));
        QVERIFY(!AddAccount(accounts, QStringLiteral("A1")));
        QVERIFY(!accounts.AddXML(QStringLiteral("<Account><AccountID>a1</AccountID></Account>")));
        QCOMPARE(accounts.AddXML(QStringLiteral("<Account><AccountID>A2</AccountID></Account>"))->AccountID,
                 QStringLiteral("A2"));
        QCOMPARE(accounts.Count(), 3);
        QCOMPARE(accounts.Item(QStringLiteral("A2")), accounts.Item(3));
        QVERIFY(!accounts.Item(QStringLiteral("missing")));
        QVERIFY(!accounts.Item(0) && !accounts.Item(4));
    }

    void positionsByAccountAndTriggerID()
    {
        colAccounts accounts;
        AddTrigger(AddAccount(accounts, QStringLiteral("A1")), QStringLiteral("T1"));
        AddTrigger(AddAccount(accounts, QStringLiteral("A2")), QStringLiteral("T2"));
        QCOMPARE(accounts.AccountNoFromID(QStringLiteral(" A2 ")), 2);
        QCOMPARE(accounts.AccountNoFromID(QStringLiteral("a2")), 0);
        QCOMPARE(accounts.AccountNoFromID(QStringLiteral("A9")), 0);
        QCOMPARE(accounts.AccountNoForTriggerID(QStringLiteral("T2 ")), 2);
        QCOMPARE(accounts.AccountNoForTriggerID(QStringLiteral("T9")), 0);
    }

    void deleteCurrentMovesTheSelectionToTheLast()
    {
        colAccounts accounts;
        for (const char *id : {"A1", "A2", "A3"})
            AddAccount(accounts, QString::fromLatin1(id));
        SelectedAccount = accounts.Item(2);
        accounts.DeleteCurrent();
        QCOMPARE(IDs(accounts), (QStringList{QStringLiteral("A1"), QStringLiteral("A3")}));
        QCOMPARE(SelectedAccount, accounts.Item(2));
        clsAccount stranger;
        SelectedAccount = &stranger;
        accounts.DeleteCurrent();
        QCOMPARE(accounts.Count(), 2);
        SelectedAccount = accounts.Item(1);
        accounts.DeleteCurrent();
        SelectedAccount = accounts.Item(1);
        accounts.DeleteCurrent();
        QVERIFY(!SelectedAccount);
        accounts.DeleteCurrent();
    }

    void findAccountForEmailTakesTheFirstAliasMatch_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("account");
        QTest::newRow("trailing wildcard, first domain") << "Orders-EU@Example.com" << "WILD";
        QTest::newRow("trailing wildcard, second domain") << "orders7@example.org" << "WILD";
        QTest::newRow("first match wins over catch-all") << "ordersx@example.com" << "WILD";
        QTest::newRow("catch-all alias") << "anyone@example.com" << "ALL";
        QTest::newRow("no alias takes nothing") << "info@noalias.com" << "none";
        QTest::newRow("disabled account") << "x@off.com" << "none";
        QTest::newRow("digit pattern") << "po42@shop.com" << "DIGITS";
        QTest::newRow("digit pattern, letter") << "poxx@shop.com" << "none";
    }

    void findAccountForEmailTakesTheFirstAliasMatch()
    {
        QFETCH(QString, address);
        QFETCH(QString, account);
        colAccounts accounts;
        AddMailServer(accounts, QStringLiteral("NOALIAS"), QStringLiteral("noalias.com"), QString());
        AddMailServer(accounts, QStringLiteral("WILD"), QStringLiteral("Example.com; example.org"),
                      QStringLiteral(";orders*;"));
        AddMailServer(accounts, QStringLiteral("ALL"), QStringLiteral("example.com"), QStringLiteral("*"));
        AddMailServer(accounts, QStringLiteral("OFF"), QStringLiteral("off.com"), QStringLiteral("*"))->Enabled = false;
        AddMailServer(accounts, QStringLiteral("DIGITS"), QStringLiteral("shop.com"), QStringLiteral("po##"));
        AddDropBox(accounts, QStringLiteral("DROP"), QStringLiteral("*"));
        QCOMPARE(FoundID(accounts.FindAccountForEmail(address)), account);
    }

    void findAccountForDropBoxEmailTakesTheLastMatch()
    {
        colAccounts accounts;
        AddDropBox(accounts, QStringLiteral("D1"), QStringLiteral("drop@example.com;*@drop.example.com"));
        AddDropBox(accounts, QStringLiteral("D2"), QStringLiteral("*@DROP.example.com"));
        AddDropBox(accounts, QStringLiteral("OFF"), QStringLiteral("*"))->Enabled = false;
        AddDropBox(accounts, QStringLiteral("NODROP"), QStringLiteral("*"))->Dropbox = false;
        AddDropBox(accounts, QStringLiteral("EMPTY"), QString());
        AddMailServer(accounts, QStringLiteral("MAIL"), QStringLiteral("drop.example.com"), QStringLiteral("*"));

        QCOMPARE(FoundID(accounts.FindAccountForDropBoxEmail(QStringLiteral("Drop@Example.com"))), QStringLiteral("D1"));
        QCOMPARE(FoundID(accounts.FindAccountForDropBoxEmail(QStringLiteral("a@drop.example.com"))),
                 QStringLiteral("D2"));
        QCOMPARE(FoundID(accounts.FindAccountForEmail(QStringLiteral("a@drop.example.com"))), QStringLiteral("MAIL"));
        QCOMPARE(FoundID(accounts.FindAccountForDropBoxEmail(QStringLiteral("other@else.com"))), QStringLiteral("none"));
    }

    void acceptedDomainIsAnExactPartOfAnEnabledMailServer()
    {
        colAccounts accounts;
        AddMailServer(accounts, QStringLiteral("A1"), QStringLiteral("Example.com;shop.example.com"), QString());
        AddMailServer(accounts, QStringLiteral("OFF"), QStringLiteral("off.com"), QString())->Enabled = false;
        AddAccount(accounts, QStringLiteral("PLAIN"))->MailServerDomain = QStringLiteral("plain.com");
        AddMailServer(accounts, QStringLiteral("WILD"), QStringLiteral("*.wild.com"), QString());
        QVERIFY(accounts.AcceptedDomain(QStringLiteral("EXAMPLE.COM")));
        QVERIFY(accounts.AcceptedDomain(QStringLiteral("shop.example.com")));
        QVERIFY(!accounts.AcceptedDomain(QStringLiteral("example")));
        QVERIFY(!accounts.AcceptedDomain(QStringLiteral("off.com")));
        QVERIFY(!accounts.AcceptedDomain(QStringLiteral("plain.com")));
        QVERIFY(!accounts.AcceptedDomain(QStringLiteral("a.wild.com")));
        QVERIFY(!accounts.AcceptedDomain(QString()));
    }

    void lastDatesTravelForTheSourcesThatAreOn()
    {
        colAccounts accounts;
        clsAccount *imap = AddAccount(accounts, QStringLiteral("A1"));
        imap->IMAP = true;
        imap->IMAPLastEmail = At(2024, 3, 1, 10, 30);
        imap->EWS = true;
        imap->EWSLastEmail = At(2024, 3, 2);
        clsAccount *none = AddAccount(accounts, QStringLiteral("A2"));
        const QString xml = accounts.LastDatesXML();
        QVERIFY(xml.contains(QStringLiteral("<IMAP>2024-03-01 10:30:00</IMAP>")));
        QVERIFY(xml.contains(QStringLiteral("<EWS>2024-03-02 00:00:00</EWS>")));
        QVERIFY(!xml.contains(QStringLiteral("<POP3>")) && !xml.contains(QStringLiteral("<RSS>")));
        QCOMPARE(xml.count(QStringLiteral("<Account>")), 2);

        const QDate today(2024, 6, 1);
        none->RSSLastMessage = At(2020, 1, 1);
        none->ServerLastEmail = At(2020, 1, 1);
        accounts.setLastDatesXML(QStringLiteral(
            "<LastDates><Account><AccountID>UNKNOWN</AccountID><IMAP>2001-01-01</IMAP></Account>"
            "<Account><AccountID>A2</AccountID><POP3>2023-07-08 13:14:15</POP3><RSS></RSS></Account>"
            "<Account><AccountID>A1</AccountID><IMAP>2023-05-06 07:08:09</IMAP><EWS>garbage</EWS></Account>"
            "</LastDates>"),
            today);
        QCOMPARE(none->ServerLastEmail, At(2023, 7, 8)); // time of day dropped
        QCOMPARE(none->RSSLastMessage, At(2024, 6, 1));  // RSS off, still today
        QCOMPARE(imap->IMAPLastEmail, At(2023, 5, 6));
        QCOMPARE(imap->EWSLastEmail, At(2024, 3, 2));
        QCOMPARE(imap->RSSLastMessage, At(2024, 6, 1));
    }

    void webServiceTreeShowsWhatTheUserMaySee()
    {
        auto organization = std::make_unique<clsUserOrganization>();
        organization->ID = QStringLiteral("ORG-1");
        Organizations().Add(std::move(organization));
        colAccounts accounts;
        clsAccount *own = AddAccount(accounts, QStringLiteral("OWN"), QStringLiteral("Own & Co"));
        own->OrganizationID = QStringLiteral("ORG-1");
        own->DropBoxSubject = QStringLiteral("Subject");
        clsAccountTrigger *trigger = AddTrigger(own, QStringLiteral("T1"));
        AddValidation(trigger, QStringLiteral("V1"), true);
        AddValidation(trigger, QStringLiteral("V2"), false);
        AddAccount(accounts, QStringLiteral("OTHER"))->OrganizationID = QStringLiteral("ORG-2");
        clsUser user;
        user.OrganizationID = QStringLiteral("ORG-1");

        const QString xml = accounts.XMLForWebService(&user);
        QVERIFY(xml.contains(QStringLiteral("<Name>Own &amp; Co</Name>")));
        QVERIFY(!xml.contains(QStringLiteral("OTHER")));
        QVERIFY(xml.contains(QStringLiteral("<ID>V1</ID>")) && !xml.contains(QStringLiteral("V2")));
        clsXML reader(xml);
        QString value;
        QVERIFY(reader.Extract(value, QStringLiteral("ConfirmationHTML")));
        QCOMPARE(value, QStringLiteral("<p>Thanks & bye</p>"));
        QVERIFY(reader.Extract(value, QStringLiteral("SurveyFieldsXML"), true));
        QCOMPARE(value, QStringLiteral("<field><name>Rating</name><type>1</type></field>"));

        const QString single = accounts.XMLForWebService(nullptr, QStringLiteral("OTHER"));
        QVERIFY(single.contains(QStringLiteral("<AccountID>OTHER</AccountID>")));
        QCOMPARE(single.count(QStringLiteral("<Account>")), 1);
        QCOMPARE(accounts.XMLForWebService(nullptr).count(QStringLiteral("<Account>")), 0);
    }

    void routingByFolderOutboxAndSamples()
    {
        colAccounts accounts;
        AddTrigger(AddAccount(accounts, QStringLiteral("A1")), QStringLiteral("T1"), QStringLiteral("F1"));
        clsAccount *second = AddAccount(accounts, QStringLiteral("A2"));
        AddTrigger(second, QStringLiteral("T2"));
        AddTrigger(second, QStringLiteral("T3"), QStringLiteral("F1"));
        QCOMPARE(accounts.FindAccountIDForFolderID(QStringLiteral("F1")), QStringLiteral("A2"));
        QVERIFY(accounts.FindAccountIDForFolderID(QString()).isEmpty());
        QVERIFY(accounts.FindOutboxID().isEmpty());
        accounts.Item(2)->Outbox = true;
        accounts.Item(1)->Outbox = true;
        QCOMPARE(accounts.FindOutboxID(), QStringLiteral("A1"));

        QCOMPARE(accounts.TotalTriggers(), 3);
        QVERIFY(!accounts.HasSamples());
        second->Sample = true;
        QCOMPARE(accounts.TotalTriggers(), 1);
        QVERIFY(accounts.HasSamples());
    }

    void dayTotalsAddUpAndClear()
    {
        colAccounts accounts;
        clsAccount *a1 = AddAccount(accounts, QStringLiteral("A1"));
        clsAccount *a2 = AddAccount(accounts, QStringLiteral("A2"));
        clsAccountTrigger *trigger = AddTrigger(a2, QStringLiteral("T1"));
        a1->MessageCount = 3;
        a2->MessageCount = 4;
        a1->MessageCountOut = 2;
        a1->Errors = 1;
        a1->IncBytesReceived(1000);
        a2->IncBytesReceived(24);
        trigger->MessageCount = 4;
        trigger->ErrorCount = 2;
        QCOMPARE(accounts.MessagesProcessed(), qint64(7));
        QCOMPARE(accounts.MessagesSent(), qint64(2));
        QCOMPARE(accounts.BytesProcessed().ToDouble(), 1024.0);
        accounts.ClearDayTotals();
        QCOMPARE(accounts.MessagesProcessed() + accounts.MessagesSent(), qint64(0));
        QVERIFY(accounts.BytesProcessed().IsZero());
        QCOMPARE(a1->Errors + trigger->MessageCount + trigger->ErrorCount, 0);
    }

    void scheduleAndDateFlagsAcrossAccounts()
    {
        colAccounts accounts;
        clsAccount *interval = AddAccount(accounts, QStringLiteral("A1"));
        interval->OrganizationID = QStringLiteral("ORG-1");
        clsAccount *daily = AddAccount(accounts, QStringLiteral("A2"));
        daily->OrganizationID = QStringLiteral("ORG-1");
        daily->SCHEDULE = QStringLiteral("109:00|YYYYYYY");
        clsAccount *empty = AddAccount(accounts, QStringLiteral("A3"));
        empty->OrganizationID = QStringLiteral("ORG-2");
        empty->SCHEDULE.clear();

        accounts.SetLastChecked(QStringLiteral("ORG-1"));
        QVERIFY(interval->MustCheckNow && !daily->MustCheckNow && !empty->MustCheckNow);
        accounts.SetLastChecked(QStringLiteral("ORG-1"), true);
        QVERIFY(daily->MustCheckNow && !empty->MustCheckNow);
        accounts.SetLastChecked();
        QVERIFY(empty->MustCheckNow);
        QCOMPARE(empty->LastChecked, At(2000, 1, 1));

        AddTrigger(interval, QStringLiteral("T1"))->ReceivedAfterReset = true;
        AddTrigger(daily, QStringLiteral("T2"))->ReceivedAfterReset = true;
        accounts.ResetRecDateFlags();
        QVERIFY(!interval->Triggers.ReceivedAfterReset() && !daily->Triggers.ReceivedAfterReset());
    }

    void badCollectionFragmentsGiveWhatCanBeRead()
    {
        colAccounts accounts;
        accounts.setXML(QStringLiteral("<Accounts><Account><AccountID>A1</AccountID></Account><Account>"));
        QCOMPARE(IDs(accounts), QStringList{QStringLiteral("A1")});
        accounts.setXML(QStringLiteral("<Accounts><Account><AccountID>A1</AccountID></Account>"
                                       "<Account><AccountID>A1</AccountID></Account></Accounts>"));
        QCOMPARE(accounts.Count(), 1);
        accounts.setXML(QStringLiteral("garbage"));
        QCOMPARE(accounts.Count(), 0);
        accounts.setLastDatesXML(QStringLiteral("<LastDates><Account>"));
        QCOMPARE(accounts.LastDatesXML(), QStringLiteral("<LastDates>\n</LastDates>\n"));
    }
};

POSTVANE_TEST(tst_colAccounts)
#include "tst_colAccounts.moc"
