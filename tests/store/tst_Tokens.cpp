#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "actions/clsActionSetVariable.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "store/Tokens.h"
#include "store/clsMessage.h"

#include <QLocale>
#include <QTest>

namespace {

std::unique_ptr<ActionItem> SetAction(const QString &id, const QString &name)
{
    clsActionSetVariable set;
    set.ID = id;
    set.Name = name;
    return ActionItem::Make(set);
}

std::unique_ptr<clsTriggerField> Field(const QString &id, const QString &name)
{
    auto field = std::make_unique<clsTriggerField>();
    field->ID = id;
    field->Name = name;
    return field;
}

} // namespace

class tst_Tokens : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;

    // An account of organization O1 (constants Region and Code) with a
    // trigger that has the fields OrderNo and Customer and sets the
    // variables Total, Customer and Extra.
    clsAccount &AccountWithTrigger()
    {
        auto organization = std::make_unique<clsUserOrganization>();
        organization->ID = QStringLiteral("O1");
        organization->setConstants(QStringLiteral("Region=North\t Code = 7 "));
        Organizations().Add(std::move(organization));

        auto trigger = std::make_unique<clsAccountTrigger>();
        trigger->TriggerID = QStringLiteral("T1");
        trigger->FieldsToProcess().Add(Field(QStringLiteral("F1"), QStringLiteral("OrderNo")));
        trigger->FieldsToProcess().Add(Field(QStringLiteral("F2"), QStringLiteral("Customer")));
        trigger->ActionList().Add(SetAction(QStringLiteral("S1"), QStringLiteral("Total")));
        trigger->ActionList().Add(SetAction(QStringLiteral("S2"), QStringLiteral("Customer")));
        trigger->ActionList().Add(SetAction(QStringLiteral("S3"), QStringLiteral("Extra")));

        auto account = std::make_unique<clsAccount>();
        account->AccountID = QStringLiteral("A1");
        account->OrganizationID = QStringLiteral("O1");
        account->Triggers.Add(std::move(trigger));
        return *Accounts().Add(std::move(account));
    }

private slots:
    void initTestCase() { LoadGlobalSettings(true, QString()); }

    void init()
    {
        m_errors.clear();
        ReplaceCurrentMessage(nullptr);
        ResetGlobalCollections();
    }
    void cleanup() { QVERIFY2(m_errors.isEmpty(), qPrintable(m_errors.join(u'\n'))); }

    void messageTokens_data()
    {
        QTest::addColumn<QString>("token");
        QTest::addColumn<QString>("expected");
        const QStringList rows = QStringLiteral(
            "%MSG_BODY%=body|%msg_to%=to@x|%msg_from%=from@x|%msg_fromip%=10.0.0.1|%msg_fromname%=Ann|%msg_cc%=cc@x|"
            "%msg_date%=2024-03-05 06:07:08|%msg_dated%=2024-03-05 06:07:08|%msg_datesent%=2023-12-31 23:59:00|"
            "%msg_bcc%=bcc@x|%msg_subject%=Subject|%msg_digest%=body|%msg_replyto%=reply@x|%msg_inreplyto%=<p@x>|"
            "%msg_references%=<r@x>|%msg_sender%=sender@x|%msg_size%=1234|%msg_return_path%=bounce@x|"
            "%msg_messageid%=ID1|%msg_uid%=ID1|%msg_text%=raw|%msg_mimetext%=raw|%msg_headers%=H: v\r\n|"
            "%msg_charset%=utf-8|%msg_geoorganization%=ISP|%msg_geocity%=Leeds|%msg_geocountry%=UK|"
            "%msg_wordindex%=body subject|%msg_wordindexwithcount%=1 body 1 subject|"
            "%msg_wordindexwithcountsorted%=1 subject 1 body|%msg_attachmentcount%=2|%msg_attachmentinlinecount%=1|"
            "%msg_attachmentlistwithsizes%=a.pdf (10 Bytes),b.txt (0 Bytes)|%msg_attachments%=a.pdf\r\nb.txt\r\n|"
            "%msg_attachments_savedto%=/t/a.pdf\r\n\r\n|%msg_viewurl%=http://h/pv/viewmessage.aspx?id=O9|"
            "%msg_validationurl%=http://h/pv/validate.aspx?id=")
                                     .split(u'|');
        for (const QString &row : rows) {
            const qsizetype at = row.indexOf(u'=');
            QTest::newRow(qPrintable(row.left(at))) << row.left(at) << row.mid(at + 1);
        }
    }
    void messageTokens()
    {
        QFETCH(QString, token);
        QFETCH(QString, expected);
        clsMessage &m = CurrentMessage();
        m.Body = QStringLiteral("body");
        m.ToAddress = QStringLiteral("to@x");
        m.From = QStringLiteral("from@x");
        m.FromIP = QStringLiteral("10.0.0.1");
        m.FromName = QStringLiteral("Ann");
        m.CC = QStringLiteral("cc@x");
        m.Dated = QDateTime(QDate(2024, 3, 5), QTime(6, 7, 8));
        m.OrigDate = QDateTime(QDate(2023, 12, 31), QTime(23, 59));
        m.BCC = QStringLiteral("bcc@x");
        m.Subject = QStringLiteral("Subject");
        m.ReplyTo = QStringLiteral("reply@x");
        m.InReplyTo = QStringLiteral("<p@x>");
        m.References = QStringLiteral("<r@x>");
        m.Sender = QStringLiteral("sender@x");
        m.Size = 1234;
        m.ReturnPath = QStringLiteral("bounce@x");
        m.MessageID = QStringLiteral("ID1");
        m.MessageText = QStringLiteral("raw");
        m.AddHeader(QStringLiteral("H"), QStringLiteral("v"));
        m.CharSet = QStringLiteral("utf-8");
        m.GEOOrganization = QStringLiteral("ISP");
        m.GEOCity = QStringLiteral("Leeds");
        m.GEOCountry = QStringLiteral("UK");
        clsMessageAttachment *a = m.Attachments.Add();
        a->Name = QStringLiteral("a.pdf");
        a->Size = 10;
        a->SavedTo = QStringLiteral("/t/a.pdf");
        m.Attachments.Add()->Name = QStringLiteral("b.txt");
        m.RelatedItems.Add();
        auto organization = std::make_unique<clsUserOrganization>();
        organization->ID = QStringLiteral("O9");
        Organizations().Add(std::move(organization));
        const QString savedURL = Global.Settings.WebServicesURL;
        Global.Settings.WebServicesURL = QStringLiteral("http://h/pv/");
        if (token == QLatin1StringView("%msg_viewurl%"))
            expected += m.LinkGUID();
        if (token == QLatin1StringView("%msg_validationurl%"))
            expected += URLEncode(QStringLiteral("0-") + MD5Hash(QStringLiteral("ID1")));

        QCOMPARE(ExpandTokens(u'[' + token + u']'), u'[' + expected + u']');
        Global.Settings.WebServicesURL = savedURL;
    }

    // The HTML is read again by the later steps only: fields expand in it,
    // message tokens that came before %msg_html% don't.
    void htmlTokenInAShortTextIsTheWholeText()
    {
        clsMessage &m = CurrentMessage();
        m.HTML = QStringLiteral("<b>%name%</b> %msg_subject%");
        m.Subject = QStringLiteral("Hi");
        clsMessageField *field = m.ExtractedFields().Add();
        field->Name = QStringLiteral("Name");
        field->Value = QStringLiteral("Bob");
        const QString shortText = QStringLiteral("<p>%MSG_HTML%</p>") + QString(104 - 17, u'.');
        QCOMPARE(shortText.size(), 104);
        QCOMPARE(ExpandTokens(shortText), QStringLiteral("<b>Bob</b> %msg_subject%"));
        const QString longText = shortText + u'.';
        QCOMPARE(ExpandTokens(longText), QStringLiteral("<p><b>Bob</b> %msg_subject%</p>") + QString(88, u'.'));
    }

    void fieldsComeAfterMessageTokens()
    {
        clsMessage &m = CurrentMessage();
        m.Subject = QStringLiteral("order %Order No%");
        clsMessageField *field = m.ExtractedFields().Add();
        field->Name = QStringLiteral("Order No");
        field->Value = QStringLiteral("%msg_body%");
        m.Body = QStringLiteral("body");
        QCOMPARE(ExpandTokens(QStringLiteral("%msg_subject% / %ORDER NO%")), QStringLiteral("order %msg_body% / %msg_body%"));
    }

    void textWithoutTokensIsKept()
    {
        CurrentMessage().Subject = QStringLiteral("Hi");
        QCOMPARE(ExpandTokens(QStringLiteral("plain")), QStringLiteral("plain"));
        QCOMPARE(ExpandTokens(QStringLiteral("50% of %msg_subject% %nothing% %crlf%%Ddfpath%")),
                 QStringLiteral("50% of Hi %nothing% %crlf%%Ddfpath%"));
        QVERIFY(!HasTokens(QString()));
        QVERIFY(!HasTokens(QStringLiteral("plain")));
        QVERIFY(HasTokens(QStringLiteral("50%")));
    }

    void dateTokens()
    {
        clsMessage &m = CurrentMessage();
        m.LastErrorNumber = 53;
        m.LastError = QStringLiteral("*gone");
        m.AddToLog(QStringLiteral("step"));
        const QDate today = QDate::currentDate();
        QCOMPARE(ExpandTokens(QStringLiteral("%time%|%MonthNumber%|%FreeDiscSpace%|%LastErrorNumber%|%lasterrortext%")),
                 QStringLiteral("00:00:00|||53|*gone"));
        QCOMPARE(ExpandTokens(QStringLiteral("%SQLDate%")), today.toString(QStringLiteral("yyyy-MM-dd")));
        QCOMPARE(ExpandTokens(QStringLiteral("%WeekdayNumber%")), QString::number(today.dayOfWeek() == 7 ? 1 : today.dayOfWeek() + 1));
        QCOMPARE(ExpandTokens(QStringLiteral("%DayOfWeek%")), QLocale::system().dayName(today.dayOfWeek()));
        QVERIFY(ExpandTokens(QStringLiteral("%SQLDateTime%")).startsWith(today.toString(QStringLiteral("yyyy-MM-dd "))));
        QCOMPARE(ExpandTokens(QStringLiteral("%TriggerLog%")), QStringLiteral("step\r\n"));
        const QString savedData = Global.DataPath;
        Global.DataPath = QStringLiteral("/srv/pv/");
        QCOMPARE(ExpandTokens(QStringLiteral("%Root%")), QStringLiteral("/srv/pv/"));
        Global.DataPath = savedData;
    }

    void variablesAndConstantsOfTheAccount()
    {
        clsMessage &m = CurrentMessage();
        const QString text = QStringLiteral("%total% %EXTRA% %region% %code% %customer%");
        QCOMPARE(ExpandTokens(text), text);

        clsAccount &account = AccountWithTrigger();
        account.setGlobalVar(QStringLiteral("Total"), false, 99);
        m.Account = &account;
        QCOMPARE(ExpandTokens(text), QStringLiteral("99  North 7 %customer%"));

        account.OrganizationID = QStringLiteral("unknown");
        QCOMPARE(ExpandTokens(text), QStringLiteral("99  %region% %code% %customer%"));
    }

    void tokenLists()
    {
        QVERIFY(MessageTokenList().startsWith(QStringLiteral("%msg_body%,")));
        QCOMPARE(FieldTokenList(nullptr), MessageTokenList());

        clsAccountTrigger *trigger = AccountWithTrigger().Triggers.Item(1);
        QCOMPARE(FieldTokenList(trigger, false, true, true), QStringLiteral("%OrderNo%,%Customer%,%Total%,%Extra%,%Region%,%Code%"));
        QCOMPARE(FieldTokenList(trigger, true, true), QStringLiteral("%Total%,%Extra%,%Customer%"));
        QCOMPARE(FieldTokenList(trigger), MessageTokenList() + QStringLiteral(",%OrderNo%,%Customer%,%Total%,%Extra%"));
    }
};

POSTVANE_TEST(tst_Tokens)
#include "tst_Tokens.moc"
