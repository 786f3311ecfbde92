#include "TestRegistry.h"
#include "actions/clsActionPassTo.h"
#include "actions/clsActionRaw.h"
#include "actions/clsActionSetVariable.h"
#include "model/clsAccountTrigger.h"

#include <QLocale>
#include <QTest>

namespace {

std::unique_ptr<clsTriggerField> NewField(const QString &id, const QString &name)
{
    auto field = std::make_unique<clsTriggerField>();
    field->ID = id;
    field->Name = name;
    field->InsertInto = QStringLiteral("Orders");
    return field;
}

const QString DirectDatabaseAction = QStringLiteral("<Class>DatabaseUpdate</Class><ID>DB1</ID><Enabled>-1</Enabled>"
                                                     "<Table>Orders</Table><UseInternal>-1</UseInternal>");
const QString PostAction = QStringLiteral("<Class>HTTPPost</Class><ID>POST1</ID><Enabled>-1</Enabled>"
                                          "<URL>https://b.example/in</URL>");

// A trigger with every heading property away from its default, two fields,
// two built actions and two actions held as they came.
void FillTrigger(clsAccountTrigger &t)
{
    t.Name = QStringLiteral("Orders <in>");
    t.Details = QStringLiteral("line one\r\nline two");
    t.TriggerID = QStringLiteral("T1");
    t.ThenProcessID = QStringLiteral("T2");
    t.SaveToFolderID = QStringLiteral("F9");
    t.SubjectLineLIKE = QStringLiteral("order\tinvoice\t");
    t.CheckBodyAlso = true;
    t.CheckALLWords = true;
    t.FromAddressLIKE = QStringLiteral("*@shop.example");
    t.CCAddressLike = QStringLiteral("cc*");
    t.MarkedAsImportant = 3;
    t.MarkedAsSenstive = 2;
    t.FlaggedForAction = 1;
    t.SBScriptTriggerEnabled = true;
    t.SBScriptTrigger = QStringLiteral("Main = True");
    t.ReceivedAfter = QDateTime(QDate(2023, 4, 5), QTime(6, 7, 8));
    t.ReceivedAfterReset = true;
    t.Condition = QStringLiteral("<Lines><Line>|%a%|=|1</Line></Lines><ScriptEnabled>-1</ScriptEnabled>");
    t.HelperMessage = QStringLiteral("Order: 12\tQty: 3");
    t.HelperSubject = QStringLiteral("New order");
    t.HelperTo = QStringLiteral("orders@shop.example");
    t.SCHEDULE = QString(170, u'Y');
    t.StopProcessingFollowingActions = true;
    t.FieldsToProcess().Add(NewField(QStringLiteral("F1"), QStringLiteral("OrderNo")));
    t.FieldsToProcess().Add(NewField(QStringLiteral("F2"), QStringLiteral("Qty")));
    clsActionSetVariable set;
    set.ID = QStringLiteral("SET1");
    set.Name = QStringLiteral("total");
    set.Value = QStringLiteral("%Qty%");
    t.ActionList().Add(ActionItem::Make(set));
    t.ActionList().AddXML(DirectDatabaseAction);
    t.ActionList().AddXML(PostAction);
    t.ActionList().AddXML(QStringLiteral("<Class>Comment</Class><ID>C1</ID><Comment>done</Comment>"));
}

QStringList ActionIDs(const clsAccountTrigger &t)
{
    QStringList ids;
    for (const ActionItem *action : t.ActionList())
        ids << action->ID();
    return ids;
}

// A schedule of "Y" with "N" at the given 1-based positions.
QString ScheduleWithout(std::initializer_list<int> positions)
{
    QString schedule(170, u'Y');
    for (int position : positions)
        schedule[position - 1] = u'N';
    return schedule;
}

} // namespace

class tst_clsAccountTrigger : public QObject
{
    Q_OBJECT
private slots:
    void newTriggerHasItsOwnIDAndLooksBackThirtyDays()
    {
        clsAccountTrigger t;
        QVERIFY(!t.TriggerID.isEmpty());
        QVERIFY(t.TriggerID != clsAccountTrigger().TriggerID);
        QCOMPARE(t.ReceivedAfter, QDateTime(QDate::currentDate().addDays(-30), QTime(0, 0)));
        QCOMPARE(t.FieldsToProcess().Parent(), &t);
        QCOMPARE(t.ActionList().Parent(), &t);
    }

    void fullFragmentWritesReadsAndWritesAlike()
    {
        clsAccountTrigger t;
        FillTrigger(t);
        const QString written = t.XML();

        QVERIFY(written.contains(QStringLiteral("<ReceivedAfter>2023-04-05 06:07:08</ReceivedAfter>")));
        QVERIFY(!written.contains(QStringLiteral("FieldsList")));

        clsAccountTrigger read;
        read.setXML(written);
        QCOMPARE(read.XML(), written);
        QCOMPARE(read.Details, t.Details);
        QCOMPARE(read.HelperMessage, t.HelperMessage);
        QCOMPARE(read.FieldsList(), QStringLiteral("OrderNo,Qty"));
        QCOMPARE(read.Field(2)->Name, QStringLiteral("Qty"));
        QCOMPARE(read.Field(2)->Parent, &read);
        QCOMPARE(ActionIDs(read), ActionIDs(t));
        QCOMPARE(read.ActionList().Item(QStringLiteral("SET1"))->As<clsActionSetVariable>()->Value,
                 QStringLiteral("%Qty%"));
        QCOMPARE(read.ActionList().Item(QStringLiteral("POST1"))->As<clsActionRaw>()->TagValue(QStringLiteral("URL")),
                 QStringLiteral("https://b.example/in"));
    }

    // Stored configurations hold these tags: a renamed, dropped or moved tag
    // would leave them unread, which no round trip shows.
    void fullFragmentKeepsTheStoredTagOrder()
    {
        clsAccountTrigger t;
        FillTrigger(t);
        const QString text = t.XML();
        const QStringList order{
            "<Trigger>", "<TriggerID>", "<CCAddressLike>", "<CheckALLWords>", "<CheckBodyAlso>", "<TriggerDetails>",
            "<TriggerEnabled>", "<FlaggedForAction>", "<FromAddressLIKE>", "<HelperMessage>", "<HelperSubject>",
            "<HelperTo>", "<MarkedAsImportant>", "<MarkedAsSenstive>", "<TriggerName>", "<ReceivedAfter>",
            "<ReceivedAfterReset>", "<SBScriptTrigger>", "<SBScriptTriggerEnabled>", "<Schedule>",
            "<StopProcessingFollowingActions>", "<SubjectLineLIKE>", "<ThenProcessID>", "<SaveToFolderID>",
            "<TriggerCondition>", "<Trigger.Fields>", "<Trigger.Field>", "<Trigger.Actions>", "<Trigger.Action>",
            "</Trigger>"};
        qsizetype last = -1;
        for (const QString &tag : order) {
            const qsizetype at = text.indexOf(tag);
            QVERIFY2(at > last, qPrintable(tag));
            last = at;
        }
    }

    void readingReplacesTheWholeTrigger()
    {
        clsAccountTrigger t;
        FillTrigger(t);
        QVERIFY(t.DatabaseUpdate() != nullptr);
        t.setXML(QStringLiteral("<Trigger><TriggerName>bare</TriggerName></Trigger>"));
        QCOMPARE(t.Name, QStringLiteral("bare"));
        QVERIFY(!t.Enabled);
        QVERIFY(t.FromAddressLIKE.isEmpty());
        QVERIFY(t.TriggerID.isEmpty());
        QVERIFY(t.Condition.isEmpty());
        QCOMPARE(t.MarkedAsImportant, qint16(0));
        QCOMPARE(t.FieldsToProcess().Count(), 0);
        QCOMPARE(t.ActionList().Count(), 0);
        QVERIFY(t.DatabaseUpdate() == nullptr);
        QCOMPARE(t.FieldsToProcess().Parent(), &t);
    }

    // A PassTo action carries its own TriggerID: it must not stand in for the
    // trigger's missing one.
    void childTagsAreNotTakenForTheTriggers()
    {
        clsActionPassTo pass;
        pass.ID = QStringLiteral("P1");
        pass.TriggerID = QStringLiteral("OTHER");
        clsAccountTrigger source;
        source.TriggerID.clear();
        source.ActionList().Add(ActionItem::Make(pass));
        auto field = NewField(QStringLiteral("F1"), QStringLiteral("x"));
        field->PassToTrigger = QStringLiteral("OTHER");
        source.FieldsToProcess().Add(std::move(field));

        clsAccountTrigger t;
        t.setXML(source.XML());
        QVERIFY(t.TriggerID.isEmpty());
        QCOMPARE(t.ActionList().Item(1)->As<clsActionPassTo>()->TriggerID, QStringLiteral("OTHER"));
        QCOMPARE(t.Field(1)->PassToTrigger, QStringLiteral("OTHER"));
    }

    void shortFormCarriesFieldNamesInsteadOfChildren()
    {
        clsAccountTrigger t;
        FillTrigger(t);
        t.JustHeaderInXML = true;
        const QString header = t.XML();
        QVERIFY(header.contains(QStringLiteral("<FieldsList>OrderNo,Qty</FieldsList>")));
        QVERIFY(!header.contains(QStringLiteral("Trigger.Fields")));
        QVERIFY(!header.contains(QStringLiteral("Trigger.Actions")));
        QVERIFY(header.contains(QStringLiteral("<TriggerCondition>")));

        clsAccountTrigger read;
        read.setXML(header);
        QCOMPARE(read.FieldsToProcess().Count(), 0);
        QCOMPARE(read.FieldsList(), QStringLiteral("OrderNo,Qty"));
        QCOMPARE(read.Name, t.Name);
        QCOMPARE(read.Condition, t.Condition);

        // A full fragment brings no list of its own: the names are the fields'.
        t.JustHeaderInXML = false;
        read.setXML(t.XML());
        read.FieldsToProcess().Delete(1);
        QCOMPARE(read.FieldsList(), QStringLiteral("Qty"));
    }

    void subsetHoldsTheHeadingAndLeavesTheRest()
    {
        clsAccountTrigger source;
        FillTrigger(source);
        const QString subset = source.XMLSubset();
        QVERIFY(subset.startsWith(QStringLiteral("<TriggerSubset>")));
        for (const char *tag : {"HelperMessage", "StopProcessing", "SaveToFolderID", "Trigger.Fields"})
            QVERIFY2(!subset.contains(QLatin1String(tag)), tag);

        // A bare trigger given the subset tells the same rule.
        clsAccountTrigger bare;
        bare.setXMLSubset(subset);
        QCOMPARE(bare.ConditionAsText(), source.ConditionAsText());
        QCOMPARE(bare.TriggerID, source.TriggerID);

        clsAccountTrigger t;
        FillTrigger(t);
        t.Name = QStringLiteral("old");
        t.Condition.clear();
        t.HelperMessage = QStringLiteral("kept");
        t.setXMLSubset(subset);
        QCOMPARE(t.Name, source.Name);
        QCOMPARE(t.Condition, source.Condition);
        QCOMPARE(t.HelperMessage, QStringLiteral("kept"));
        QCOMPARE(t.FieldsToProcess().Count(), 2);
        QCOMPARE(t.ActionList().Count(), 4);
        QCOMPARE(t.XMLSubset(), subset);
    }

    void directDatabaseActionIsTheFirstOfItsClass()
    {
        clsAccountTrigger t;
        QVERIFY(t.DatabaseUpdate() == nullptr);
        QVERIFY(!t.DatabaseUpdateEnabled());

        FillTrigger(t);
        t.ActionList().AddXML(QStringLiteral("<Class>DatabaseUpdate</Class><ID>DB2</ID>"));
        QCOMPARE(t.DatabaseUpdate()->ID(), QStringLiteral("DB1"));
        QVERIFY(t.DatabaseUpdateEnabled());
        t.DatabaseUpdate()->setEnabled(false);
        QVERIFY(!t.DatabaseUpdateEnabled());

        // The remembered action is gone: the next one answers, nothing dangles.
        t.ActionList().Delete(QStringLiteral("DB1"));
        QCOMPARE(t.DatabaseUpdate()->ID(), QStringLiteral("DB2"));
        QVERIFY(!t.DatabaseUpdateEnabled());
        t.ActionList().Delete(QStringLiteral("DB2"));
        QVERIFY(t.DatabaseUpdate() == nullptr);
    }

    void inScheduleReadsTheCellOfWeekdayAndHour_data()
    {
        QTest::addColumn<QString>("schedule");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<bool>("active");

        // 2024-06-02 is a Sunday. Cells: Sunday column 24 (24), Monday
        // column 1 (25), Saturday column 13 (157).
        const QString gaps = ScheduleWithout({24, 25, 157});
        const QDate sunday(2024, 6, 2);
        QTest::newRow("empty is always") << QString() << QDateTime(sunday, QTime(0, 30)) << true;
        QTest::newRow("all cells on") << QString(170, u'Y') << QDateTime(sunday.addDays(3), QTime(0, 5)) << true;
        QTest::newRow("Sunday midnight reads column 24") << gaps << QDateTime(sunday, QTime(0, 30)) << false;
        QTest::newRow("Sunday 1 o'clock") << gaps << QDateTime(sunday, QTime(1, 0)) << true;
        QTest::newRow("Sunday 23 o'clock") << gaps << QDateTime(sunday, QTime(23, 59)) << true;
        QTest::newRow("Monday 1 o'clock") << gaps << QDateTime(sunday.addDays(1), QTime(1, 10)) << false;
        QTest::newRow("Monday midnight is not column 1") << gaps << QDateTime(sunday.addDays(1), QTime(0, 10)) << true;
        QTest::newRow("Saturday 13 o'clock") << gaps << QDateTime(sunday.addDays(6), QTime(13, 0)) << false;
        QTest::newRow("Saturday 12 o'clock") << gaps << QDateTime(sunday.addDays(6), QTime(12, 59)) << true;
        QTest::newRow("schedule too short") << QStringLiteral("NNNN") << QDateTime(sunday, QTime(5, 0)) << true;
        QTest::newRow("schedule short, cell inside") << QStringLiteral("NNNN") << QDateTime(sunday, QTime(4, 0))
                                                     << false;
    }

    void inScheduleReadsTheCellOfWeekdayAndHour()
    {
        QFETCH(QString, schedule);
        QFETCH(QDateTime, now);
        QFETCH(bool, active);
        clsAccountTrigger t;
        t.SCHEDULE = schedule;
        QCOMPARE(t.INSchedule(now), active);
    }

    void conditionAsTextTellsTheWholeRule()
    {
        clsAccountTrigger t;
        t.ReceivedAfter = QDateTime(QDate(2024, 1, 31), QTime(10, 0));
        const QString date = QLocale().toString(QDate(2024, 1, 31), QLocale::ShortFormat);
        QCOMPARE(t.ConditionAsText(), QStringLiteral("If Sender Is Any And Received After ") + date);

        t.FromAddressLIKE = QStringLiteral("*@shop.example");
        t.MarkedAsImportant = 1;
        t.SubjectLineLIKE = QStringLiteral("order\tinvoice\t");
        QCOMPARE(t.ConditionAsText(), QStringLiteral("If Sender Is *@shop.example And Received After ") + date +
                                          QStringLiteral(" And Important And Subject Contains Any Of These order,invoice"));

        t.MarkedAsImportant = 0;
        t.CheckBodyAlso = true;
        t.CheckALLWords = true;
        t.Condition = QStringLiteral("|%a%|=|1\n\nAnd|%b%|?|x\n");
        QCOMPARE(t.ConditionAsText(), QStringLiteral("If Sender Is *@shop.example And Received After ") + date +
                                          QStringLiteral(" And Message Text Contains All These order,invoice"
                                                         " And If %a%= 1 And%b%Contains x"));
        QCOMPARE(t.ConditionText(QString(), false), QStringLiteral("No Condition"));
    }

    void badFragmentsGiveDefaults_data()
    {
        QTest::addColumn<QString>("fragment");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("fields");
        QTest::addColumn<int>("actions");

        QTest::newRow("unclosed tag") << QStringLiteral("<Trigger><TriggerName>abc") << QString() << QString() << 0
                                      << 0;
        QTest::newRow("repeated tag, first wins")
            << QStringLiteral("<TriggerName>a</TriggerName><TriggerName>b</TriggerName>") << QString() << "a" << 0 << 0;
        QTest::newRow("misordered, the later tag is passed")
            << QStringLiteral("<TriggerName>n</TriggerName><TriggerID>x</TriggerID>") << "x" << QString() << 0 << 0;
        QTest::newRow("nested trigger")
            << QStringLiteral("<Trigger><Trigger><TriggerName>in</TriggerName></Trigger></Trigger>") << QString()
            << "in" << 0 << 0;
        QTest::newRow("empty fields section")
            << QStringLiteral("<Trigger><Trigger.Fields></Trigger.Fields><Trigger.Actions></Trigger.Actions></Trigger>")
            << QString() << QString() << 0 << 0;
        QTest::newRow("fields section without fields")
            << QStringLiteral("<Trigger><TriggerID>t</TriggerID><Trigger.Fields><Name>x</Name></Trigger.Fields>"
                              "</Trigger>")
            << "t" << QString() << 0 << 0;
        QTest::newRow("action without class")
            << QStringLiteral("<Trigger.Actions><Trigger.Action><ID>A</ID></Trigger.Action></Trigger.Actions>")
            << QString() << QString() << 0 << 0;
        QTest::newRow("fields after actions are passed")
            << QStringLiteral("<Trigger.Actions><Trigger.Action><Class>End</Class><ID>A</ID></Trigger.Action>"
                              "</Trigger.Actions><Trigger.Fields><Trigger.Field><ID>F</ID></Trigger.Field>"
                              "</Trigger.Fields>")
            << QString() << QString() << 0 << 1;
        QTest::newRow("repeated field ID, first kept")
            << QStringLiteral("<Trigger.Fields><Trigger.Field><ID>F</ID><Name>a</Name></Trigger.Field>"
                              "<Trigger.Field><ID>F</ID><Name>b</Name></Trigger.Field></Trigger.Fields>")
            << QString() << QString() << 1 << 0;
    }

    void badFragmentsGiveDefaults()
    {
        QFETCH(QString, fragment);
        QFETCH(QString, id);
        QFETCH(QString, name);
        QFETCH(int, fields);
        QFETCH(int, actions);
        clsAccountTrigger t;
        FillTrigger(t);
        t.setXML(fragment);
        QCOMPARE(t.TriggerID, id);
        QCOMPARE(t.Name, name);
        QCOMPARE(t.FieldsToProcess().Count(), fields);
        QCOMPARE(t.ActionList().Count(), actions);
        clsAccountTrigger again;
        again.setXML(t.XML());
        QCOMPARE(again.XML(), t.XML());
    }
};

POSTVANE_TEST(tst_clsAccountTrigger)
#include "tst_clsAccountTrigger.moc"
