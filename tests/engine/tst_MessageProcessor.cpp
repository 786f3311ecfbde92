#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "actions/ActionItem.h"
#include "actions/clsActionComment.h"
#include "actions/clsActionDB.h"
#include "actions/clsActionLogical.h"
#include "actions/clsActionPassTo.h"
#include "actions/clsActionScript.h"
#include "actions/clsActionSetVariable.h"
#include "actions/colActions.h"
#include "engine/databases/DatabaseConnections.h"
#include "engine/processor/MessageProcessor.h"
#include "model/Condition.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"
#include "store/StoreFixture.h"
#include "store/clsMessage.h"

#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

enum { If = 1, Else = 2, EndIf = 3, End = 4, Label = 5, GoTo = 6 };

QString Condition(const QString &Left, const QString &Operator, const QString &Right)
{
    ConditionFragment condition;
    condition.Lines = {{QString(), Left, Operator, Right}};
    return ConditionXML(condition);
}

clsActionLogical Logical(int Type, const QString &ConditionText = QString(), const QString &LabelName = QString())
{
    clsActionLogical action;
    action.LogicalType = qint16(Type);
    action.Condition = ConditionText;
    action.LabelName = LabelName;
    return action;
}

clsActionSetVariable Set(const QString &Name, const QString &Value, int Operation = 0, bool Append = false)
{
    clsActionSetVariable action;
    action.Name = Name;
    action.Value = Value;
    action.Operation = qint16(Operation);
    action.Append = Append;
    return action;
}

template <class T> T &Add(clsAccountTrigger &Trigger, T Action)
{
    return *Trigger.ActionList().Add(ActionItem::Make(std::move(Action)))->template As<T>();
}

// A trigger that every message matches, with a field Qty read from the body
// and empty fields of the names given, for Set actions to fill.
clsAccountTrigger &AddTrigger(clsAccount &Account, const QString &ID, const QStringList &Fields = {})
{
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->TriggerID = ID;
    trigger->Name = ID;
    trigger->FromAddressLIKE = u"*"_s;
    trigger->ReceivedAfter = QDateTime(QDate(2020, 1, 1), QTime(0, 0));
    auto qty = std::make_unique<clsTriggerField>();
    qty->Name = u"Qty"_s;
    qty->LookFor = u"Qty:"_s;
    trigger->FieldsToProcess().Add(std::move(qty));
    for (const QString &name : Fields) {
        auto field = std::make_unique<clsTriggerField>();
        field->Name = name;
        field->ExtractBuiltIn = true;
        trigger->FieldsToProcess().Add(std::move(field));
    }
    return *Account.Triggers.Add(std::move(trigger));
}

} // namespace

// The processor's run of triggers on a message, in this process: matching,
// fields, the action list's flow and values, chains, and failures.
class tst_MessageProcessor : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;
    std::unique_ptr<StoreFixture> m_fixture;
    clsAccount *m_account = nullptr;

    clsMessage &Message(const QString &Body, const QString &Subject = u"Order"_s)
    {
        ReplaceCurrentMessage(nullptr);
        clsMessage &message = CurrentMessage();
        message.Account = m_account;
        message.Subject = Subject;
        message.Body = Body;
        message.From = u"ann@example.com"_s;
        message.MessageID = u"M1"_s;
        message.Source = u"TEST"_s;
        return message;
    }
    QString Field(const clsMessage &Message, const QString &Name)
    {
        const int n = Message.ExtractedFields().FieldNoFromName(Name);
        return n > 0 ? Message.ExtractedFields().Item(n)->Value : u"(none)"_s;
    }
    QStringList Run(clsMessage &Message)
    {
        MessageProcessor processor(m_fixture->Store);
        processor.Process(Message);
        return processor.Lines;
    }

private slots:
    void init()
    {
        ResetGlobalCollections();
        m_errors.clear();
        m_fixture = std::make_unique<StoreFixture>();
        QVERIFY(m_fixture->Store.OpenMessageStore());
        m_account = Accounts().AddXML(u"<Account><AccountID>A1</AccountID><Name>Orders</Name></Account>"_s);
        QVERIFY(m_account);
        m_account->Enabled = true;
    }
    void cleanup()
    {
        ReplaceCurrentMessage(nullptr);
        m_fixture.reset();
        ResetGlobalCollections();
    }

    void ifAndElseRunOneBranchAndSkipNestedBlocks()
    {
        clsAccountTrigger &trigger = AddTrigger(*m_account, u"T1"_s, {u"Size"_s, u"Inner"_s});
        Add(trigger, Logical(If, Condition(u"%qty%"_s, u">"_s, u"5"_s)));
        Add(trigger, Set(u"Size"_s, u"big"_s));
        Add(trigger, Logical(If, Condition(u"1"_s, u"="_s, u"1"_s)));
        Add(trigger, Set(u"Inner"_s, u"ran"_s));
        Add(trigger, Logical(EndIf));
        Add(trigger, Logical(Else));
        Add(trigger, Set(u"Size"_s, u"small"_s));
        Add(trigger, Logical(EndIf));

        clsMessage &big = Message(u"Qty: 7"_s);
        Run(big);
        QCOMPARE(Field(big, u"Qty"_s), u"7"_s);
        QCOMPARE(Field(big, u"Size"_s), u"big"_s);
        QCOMPARE(Field(big, u"Inner"_s), u"ran"_s);
        QCOMPARE(big.ErrorCount, 0);

        clsMessage &small = Message(u"Qty: 3"_s);
        Run(small);
        QCOMPARE(Field(small, u"Size"_s), u"small"_s);
        QCOMPARE(Field(small, u"Inner"_s), QString());
    }

    void goToJumpsToItsLabelAndAMissingLabelFails()
    {
        clsAccountTrigger &trigger = AddTrigger(*m_account, u"T1"_s, {u"A"_s, u"B"_s});
        Add(trigger, Logical(GoTo, QString(), u"skip"_s));
        Add(trigger, Set(u"A"_s, u"never"_s));
        Add(trigger, Logical(Label, QString(), u"Skip"_s));
        Add(trigger, Set(u"B"_s, u"done"_s));
        clsMessage &jumped = Message(u"Qty: 1"_s);
        Run(jumped);
        QCOMPARE(Field(jumped, u"A"_s), QString());
        QCOMPARE(Field(jumped, u"B"_s), u"done"_s);

        trigger.ActionList().Item(1)->As<clsActionLogical>()->LabelName = u"nowhere"_s;
        clsMessage &lost = Message(u"Qty: 1"_s);
        const QStringList lines = Run(lost);
        QCOMPARE(lost.ErrorCount, 1);
        QVERIFY(lost.LastError.contains(u"nowhere"_s));
        QCOMPARE(Field(lost, u"B"_s), QString());
        QVERIFY(lines.contains(u"Stored"_s) == false);
    }

    void aLoopOfGoToEndsWithAnError()
    {
        clsAccountTrigger &trigger = AddTrigger(*m_account, u"T1"_s, {u"N"_s});
        Add(trigger, Logical(Label, QString(), u"top"_s));
        Add(trigger, Set(u"N"_s, QString(), 1));
        Add(trigger, Logical(GoTo, Condition(u"%n%"_s, u">"_s, u"0"_s), u"#Start"_s));
        clsMessage &message = Message(u"Qty: 1"_s);
        Run(message);
        QCOMPARE(message.ErrorCount, 1);
        QVERIFY(message.LastError.contains(u"without ending"_s));
    }

    void endProcessingEndsTheListAndTheChain()
    {
        clsAccountTrigger &first = AddTrigger(*m_account, u"T1"_s, {u"A"_s});
        clsAccountTrigger &second = AddTrigger(*m_account, u"T2"_s, {u"A"_s});
        first.ThenProcessID = u"T2"_s;
        Add(first, Logical(End, Condition(u"%qty%"_s, u"="_s, u"9"_s)));
        Add(first, Set(u"A"_s, u"after end"_s));
        Add(second, Set(u"A"_s, u"second"_s));

        clsMessage &ended = Message(u"Qty: 9"_s);
        Run(ended);
        QCOMPARE(ended.Trigger(), &first);
        QCOMPARE(Field(ended, u"A"_s), QString());

        second.SaveToFolderID = u"F2"_s;
        clsMessage &passed = Message(u"Qty: 8"_s);
        const QStringList lines = Run(passed);
        QCOMPARE(passed.Trigger(), &second);
        QCOMPARE(passed.FolderID, u"F2"_s); // the folder of the trigger that ran last
        QCOMPARE(Field(passed, u"A"_s), u"second"_s);
        QVERIFY(lines.contains(u"Trigger T1 passes processing on to trigger T2"_s));
    }

    void aTriggerMetTwiceEndsTheChain()
    {
        clsAccountTrigger &first = AddTrigger(*m_account, u"T1"_s);
        clsAccountTrigger &second = AddTrigger(*m_account, u"T2"_s);
        first.ThenProcessID = u"T2"_s;
        second.ThenProcessID = u"T1"_s;
        clsMessage &message = Message(u"Qty: 1"_s);
        Run(message);
        QCOMPARE(message.ErrorCount, 1);
        QVERIFY(message.LastError.contains(u"T1 was run for this message already"_s));
        QVERIFY(message.TriggerConditionPassed);
    }

    void actionsRunOnlyWhenEnabledAndTheirConditionHolds()
    {
        clsAccountTrigger &trigger = AddTrigger(*m_account, u"T1"_s, {u"A"_s, u"B"_s, u"C"_s});
        clsActionSetVariable off = Set(u"A"_s, u"off"_s);
        off.Enabled = false;
        Add(trigger, off);
        clsActionSetVariable unmet = Set(u"B"_s, u"unmet"_s);
        unmet.Condition = Condition(u"%qty%"_s, u"<"_s, u"2"_s);
        Add(trigger, unmet);
        clsActionComment comment;
        comment.Comment = u"only a note"_s;
        Add(trigger, comment);
        Add(trigger, Set(u"C"_s, u"%qty% and %b%"_s));
        clsMessage &message = Message(u"Qty: 5"_s);
        Run(message);
        QCOMPARE(Field(message, u"A"_s), QString());
        QCOMPARE(Field(message, u"B"_s), QString());
        QCOMPARE(Field(message, u"C"_s), u"5 and "_s);
    }

    void setWorksOnFieldsAndAccountVariables()
    {
        clsAccountTrigger &trigger = AddTrigger(*m_account, u"T1"_s, {u"Name"_s});
        Add(trigger, Set(u"Name"_s, u"%msg_from%"_s, 17));
        Add(trigger, Set(u"Name"_s, u" <- sender"_s, 0, true));
        Add(trigger, Set(u"%Total%"_s, u"%qty%"_s, 3));
        Add(trigger, Set(u"Total"_s, u"%qty%"_s, 3));
        Add(trigger, Set(u"Total"_s, u"x"_s, 3));
        clsMessage &message = Message(u"Qty: 2.5"_s);
        Run(message);
        QCOMPARE(Field(message, u"Name"_s), u"ann@example.com <- sender"_s);
        QCOMPARE(m_account->GlobalVar(u"total"_s).toString(), u"5"_s);
        QCOMPARE(message.ErrorCount, 1);
        QVERIFY(message.LastError.contains(u"Add To"_s));
    }

    void databaseActionsRunWithTheirTriggers()
    {
        clsAccountTrigger &trigger = AddTrigger(*m_account, u"T1"_s);
        clsTriggerField &qty = *trigger.Field(1);
        qty.InsertInto = u"Orders"_s;
        qty.InsertFieldName = u"Qty"_s;
        qty.FieldType = 6;
        qty.KeyExists = true;
        clsActionDB action;
        action.UseInternal = true;
        Add(trigger, action);
        QStringList lines = Run(Message(u"Qty: 5"_s));
        QVERIFY2(lines.contains(u"Update A Database: 1 row(s) inserted, 0 updated"_s), qPrintable(lines.join(u'\n')));
        lines = Run(Message(u"Qty: 5"_s));
        // Its only column is the key: the row found stays as it is.
        QVERIFY2(lines.contains(u"Update A Database: 0 row(s) inserted, 0 updated"_s), qPrintable(lines.join(u'\n')));
        clsMessage &bad = Message(u"Qty: five"_s);
        Run(bad);
        QCOMPARE(bad.ErrorCount, 1);
        QVERIFY2(bad.LastError.contains(u"is not a whole number"_s), qPrintable(bad.LastError));
        QVERIFY(!bad.SQLSuccess);
        {
            QSqlDatabase db = DatabaseConnections::Open(u"Driver=SQLite3;Database="_s + trigger.InternalDatabaseFile(), nullptr);
            QSqlQuery rows(db);
            QVERIFY(rows.exec(u"SELECT Qty, pvane_msg_uid FROM Orders"_s) && rows.next());
            QCOMPARE(rows.value(0).toInt(), 5);
            QCOMPARE(rows.value(1).toString(), u"M1"_s);
            QVERIFY(!rows.next());
        }
        DatabaseConnections::CloseAll();
    }

    void kindsWithoutARunTimeFailTheRunByName()
    {
        clsAccountTrigger &trigger = AddTrigger(*m_account, u"T1"_s, {u"A"_s});
        trigger.ActionList().AddXML(u"<Class>DNS</Class><ID>X1</ID><Enabled>-1</Enabled>"_s);
        clsActionScript script;
        script.SBScriptToRun = u"Main"_s;
        Add(trigger, script);
        Add(trigger, Set(u"A"_s, u"still runs"_s));
        clsMessage &message = Message(u"Qty: 1"_s);
        const QStringList lines = Run(message);
        QCOMPARE(message.ErrorCount, 2);
        QVERIFY(lines.contains(u"* Action DNS (DNS Lookup) cannot run on this server yet"_s));
        QVERIFY(message.LastError.contains(u"Script"_s));
        QCOMPARE(Field(message, u"A"_s), u"still runs"_s);

        trigger.StopProcessingFollowingActions = true;
        clsMessage &stopped = Message(u"Qty: 1"_s);
        Run(stopped);
        QCOMPARE(stopped.ErrorCount, 1);
        QCOMPARE(Field(stopped, u"A"_s), QString());
    }

    void anAccountWithAutoPauseIsPausedOnAnError()
    {
        clsAccountTrigger &trigger = AddTrigger(*m_account, u"T1"_s);
        Add(trigger, Logical(GoTo, QString(), u"missing"_s));
        QStringList paused;
        MessageProcessor processor(m_fixture->Store);
        processor.PauseAccount = [&](const QString &id, const QString &) { paused << id; };
        processor.Process(Message(u"Qty: 1"_s));
        QVERIFY(paused.isEmpty());
        m_account->AutoPause = true;
        processor.Process(Message(u"Qty: 1"_s));
        QCOMPARE(paused, QStringList{u"A1"_s});
    }

    void triggersMatchByTheirTests()
    {
        clsAccountTrigger &trigger = AddTrigger(*m_account, u"T1"_s);
        clsMessage &message = Message(u"please ship it"_s, u"New Order 12"_s);
        message.Importance = u"HIGH"_s;
        message.Sensitivity = u"NORMAL"_s;
        QString problem;
        QCOMPARE(MessageProcessor::MismatchReason(trigger, message, &problem), QString());

        trigger.SubjectLineLIKE = u"invoice\tship\t"_s;
        QVERIFY(!MessageProcessor::MismatchReason(trigger, message, &problem).isEmpty());
        trigger.CheckBodyAlso = true;
        QCOMPARE(MessageProcessor::MismatchReason(trigger, message, &problem), QString());
        trigger.CheckALLWords = true;
        QVERIFY(MessageProcessor::MismatchReason(trigger, message, &problem).contains(u"words"_s));
        trigger.SubjectLineLIKE = u"order\tSHIP\t"_s;
        QCOMPARE(MessageProcessor::MismatchReason(trigger, message, &problem), QString());

        trigger.FromAddressLIKE = u"*@other.com; *@example.com"_s;
        QCOMPARE(MessageProcessor::MismatchReason(trigger, message, &problem), QString());
        trigger.FromAddressLIKE = u"bob@*"_s;
        QVERIFY(MessageProcessor::MismatchReason(trigger, message, &problem).contains(u"sender"_s));
        trigger.FromAddressLIKE = u"*"_s;

        trigger.MarkedAsImportant = 3;
        trigger.MarkedAsSenstive = 2;
        QCOMPARE(MessageProcessor::MismatchReason(trigger, message, &problem), QString());
        trigger.MarkedAsImportant = 1;
        QVERIFY(MessageProcessor::MismatchReason(trigger, message, &problem).contains(u"importance"_s));
        trigger.MarkedAsImportant = 0;

        trigger.ReceivedAfter = message.Dated.addSecs(60);
        QVERIFY(MessageProcessor::MismatchReason(trigger, message, &problem).contains(u"received before"_s));
        trigger.ReceivedAfter = message.Dated.addDays(-1);

        trigger.SCHEDULE = QString(170, u'N');
        QVERIFY(MessageProcessor::MismatchReason(trigger, message, &problem).contains(u"hours"_s));
        trigger.SCHEDULE.clear();

        trigger.Condition = Condition(u"%msg_subject%"_s, u"s?"_s, u"new"_s);
        QCOMPARE(MessageProcessor::MismatchReason(trigger, message, &problem), QString());
        trigger.Condition = Condition(u"%msg_subject%"_s, u"len<"_s, u"5"_s);
        QVERIFY(MessageProcessor::MismatchReason(trigger, message, &problem).contains(u"condition"_s));
        QVERIFY(problem.isEmpty());
    }

    void theFirstMatchingTriggerRunsAndNoMatchKeepsNone()
    {
        clsAccountTrigger &invoices = AddTrigger(*m_account, u"Invoices"_s);
        invoices.SubjectLineLIKE = u"invoice\t"_s;
        clsAccountTrigger &orders = AddTrigger(*m_account, u"Orders"_s);
        orders.SubjectLineLIKE = u"order\t"_s;
        AddTrigger(*m_account, u"Also orders"_s).SubjectLineLIKE = u"order\t"_s;
        clsMessage &order = Message(u"Qty: 1"_s, u"An order"_s);
        Run(order);
        QCOMPARE(order.Trigger(), &orders);
        QVERIFY(order.TriggerConditionPassed);

        clsMessage &other = Message(u"Qty: 1"_s, u"Hello"_s);
        const QStringList lines = Run(other);
        QVERIFY(!other.TriggerConditionPassed);
        QCOMPARE(other.Trigger(), nullptr);
        QCOMPARE(lines.last(), u"No trigger matched"_s);
        QCOMPARE(other.ErrorCount, 0);
    }

    void aNamedTriggerRunsWithoutTestsAndUnknownAccountsFail()
    {
        clsAccountTrigger &invoices = AddTrigger(*m_account, u"Invoices"_s);
        invoices.SubjectLineLIKE = u"invoice\t"_s;
        clsMessage &named = Message(u"Qty: 4"_s, u"TEST"_s);
        named.AddHeader(u"Postvane-TriggerID"_s, u"Invoices"_s);
        named.setTrigger(&invoices);
        Run(named);
        QCOMPARE(Field(named, u"Qty"_s), u"4"_s);

        clsMessage &orphan = Message(u"Qty: 4"_s);
        orphan.Account = nullptr;
        orphan.AddHeader(u"Postvane-AccountID"_s, u"GONE"_s);
        Run(orphan);
        QCOMPARE(orphan.ErrorCount, 1);
        QVERIFY(orphan.LastError.contains(u"GONE does not exist"_s));
    }

    void passToQueuesAMessageForItsTrigger()
    {
        clsAccountTrigger &source = AddTrigger(*m_account, u"T1"_s);
        AddTrigger(*m_account, u"T2"_s);
        clsActionPassTo pass;
        pass.TriggerID = u"T2"_s;
        pass.Value = u"Qty was %qty%"_s;
        Add(source, pass);
        clsActionPassTo nowhere;
        nowhere.TriggerID = u"T9"_s;
        Add(source, nowhere);
        clsMessage &message = Message(u"Qty: 3"_s);
        Run(message);
        QCOMPARE(message.ErrorCount, 1);
        QCOMPARE(m_fixture->Store.GetEdgeQueueCount(), 1);
        ReplaceCurrentMessage(nullptr);
        clsMessage &passed = CurrentMessage();
        QVERIFY(m_fixture->Store.GetEdgeQueue(passed));
        QCOMPARE(passed.Body.trimmed(), u"Qty was 3"_s);
        QCOMPARE(passed.Trigger()->TriggerID, u"T2"_s);
        QCOMPARE(passed.Source, u"PassTo"_s);
    }
};

POSTVANE_TEST(tst_MessageProcessor)
#include "tst_MessageProcessor.moc"
