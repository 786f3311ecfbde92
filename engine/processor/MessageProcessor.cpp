#include "MessageProcessor.h"
#include "ActionRunner.h"
#include "ConditionEvaluator.h"
#include "SetOperations.h"
#include "foundation/Formatting.h"
#include "foundation/LikeMatcher.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "actions/colActions.h"
#include "model/clsFieldExtractor.h"
#include "model/clsTriggerField.h"
#include "store/Tokens.h"
#include "store/clsMessage.h"
#include "store/clsMessageStore.h"

#include <QLocale>
#include <QRegularExpression>
#include <QSet>

namespace {

QString Shown(const QString &Value)
{
    constexpr int Longest = 200;
    return Value.size() > Longest ? Value.left(Longest) + QStringLiteral("...") : Value;
}

// The level of a message's importance or sensitivity as the trigger's
// combos count them: 1 low, 2 normal, 3 high. Sensitivity: personal is low,
// private and confidential are high.
int Level(const QString &Text)
{
    const QString text = Text.trimmed().toUpper();
    if (text.startsWith(u'L') || text.startsWith(QStringLiteral("PE")))
        return 1;
    if (text.startsWith(u'H') || text.startsWith(QStringLiteral("PR")) || text.startsWith(u'C'))
        return 3;
    return 2;
}

bool WordsFound(const clsAccountTrigger &Trigger, const clsMessage &Message)
{
    const QStringList words = Trigger.SubjectLineLIKE.split(u'\t', Qt::SkipEmptyParts);
    if (words.isEmpty())
        return true;
    for (const QString &word : words) {
        const QString wanted = word.trimmed();
        if (wanted.isEmpty())
            continue;
        const bool here = Message.Subject.contains(wanted, Qt::CaseInsensitive)
            || (Trigger.CheckBodyAlso && Message.Body.contains(wanted, Qt::CaseInsensitive));
        if (here && !Trigger.CheckALLWords)
            return true;
        if (!here && Trigger.CheckALLWords)
            return false;
    }
    return Trigger.CheckALLWords;
}

bool SenderFits(const clsAccountTrigger &Trigger, const clsMessage &Message)
{
    const QString pattern = Trigger.FromAddressLIKE.trimmed();
    if (pattern.isEmpty() || pattern == u"*")
        return true;
    static const QRegularExpression separators(QStringLiteral("[;,]"));
    for (const QString &one : pattern.split(separators, Qt::SkipEmptyParts))
        if (Like(Message.From, one.trimmed()) || Like(Message.FromFull(), one.trimmed()))
            return true;
    return false;
}

// Whether a value passes its field's validation.
bool Valid(const clsTriggerField &Field, const QString &Value)
{
    switch (Field.ValidateOption) {
    case 0: {
        bool number = false;
        const double value = Value.trimmed().toDouble(&number);
        return !Value.trimmed().isEmpty() && !(number && value == 0);
    }
    case 1: {
        bool number = false;
        const double value = Value.trimmed().toDouble(&number);
        return number && value >= Field.ValidateLow.ToDouble() && value <= Field.ValidateHigh.ToDouble();
    }
    default: {
        static const QRegularExpression separators(QStringLiteral("[,;\\r\\n|]"));
        for (const QString &allowed : Field.ValidateList.split(separators, Qt::SkipEmptyParts))
            if (allowed.trimmed().compare(Value.trimmed(), Qt::CaseInsensitive) == 0)
                return true;
        return false;
    }
    }
}

// The trigger of the account whose list holds the action.
clsAccountTrigger *TriggerOfAction(const clsAccount &Account, const QString &ActionID)
{
    for (clsAccountTrigger *trigger : Account.Triggers)
        if (trigger->ActionList().ActionNoFromID(ActionID) > 0)
            return trigger;
    return nullptr;
}

} // namespace

MessageProcessor::MessageProcessor(clsMessageStore &Store) : m_store(Store) {}

void MessageProcessor::Log(clsMessage &Message, const QString &Text)
{
    Message.AddToLog(Text);
    Lines << Text;
}

void MessageProcessor::Process(clsMessage &Message)
{
    Lines.clear();
    clsAccount *account = Message.Account;
    const QString accountID = Message.HeaderValue(QStringLiteral("Postvane-AccountID")).trimmed();
    Log(Message, QStringLiteral("Processing message ") + Message.MessageID + QStringLiteral(" from ") + Message.From
                     + QStringLiteral(" \"") + Shown(Message.Subject) + u'"'
                     + (account ? QStringLiteral(" for account ") + account->Name : QString()));
    if (!account) {
        Log(Message, QStringLiteral("* The account ") + accountID
                         + QStringLiteral(" does not exist: the message is stored without running triggers"));
        return;
    }
    if (!account->Enabled) {
        Log(Message, QStringLiteral("The account ") + account->Name
                         + QStringLiteral(" is disabled: the message is stored without running triggers"));
        return;
    }
    clsAccountTrigger *trigger = Message.Trigger();
    if (!trigger && !Message.ValidateActionID.isEmpty())
        trigger = TriggerOfAction(*account, Message.ValidateActionID);
    const QString forced = Message.HeaderValue(QStringLiteral("Postvane-TriggerID")).trimmed();
    if (!forced.isEmpty() && !trigger)
        Log(Message, QStringLiteral("* The trigger ") + forced + QStringLiteral(" does not exist in account ") + account->Name);
    if (trigger)
        Log(Message, QStringLiteral("Trigger ") + trigger->Name + QStringLiteral(" runs as the message names it"));
    else if (forced.isEmpty())
        trigger = FirstMatch(*account, Message);
    if (!trigger) {
        Message.setTrigger(nullptr);
        Log(Message, QStringLiteral("No trigger matched"));
        return;
    }
    Message.TriggerConditionPassed = true;
    QSet<QString> run;
    while (trigger) {
        if (run.contains(trigger->TriggerID)) {
            Log(Message, QStringLiteral("* Trigger ") + trigger->Name
                             + QStringLiteral(" was run for this message already: the chain of triggers ends here"));
            break;
        }
        run.insert(trigger->TriggerID);
        clsAccountTrigger *next = RunTrigger(*trigger, Message);
        if (next && !Matches(*next, Message))
            next = nullptr;
        trigger = next;
    }
}

clsAccountTrigger *MessageProcessor::FirstMatch(clsAccount &Account, clsMessage &Message)
{
    for (clsAccountTrigger *trigger : Account.Triggers)
        if (trigger->Enabled && Matches(*trigger, Message))
            return trigger;
    return nullptr;
}

bool MessageProcessor::Matches(clsAccountTrigger &Trigger, clsMessage &Message)
{
    // Tokens of the condition read the trigger's fields: bound, still empty.
    Message.setTrigger(&Trigger);
    QString problem;
    const QString reason = MismatchReason(Trigger, Message, &problem);
    if (!problem.isEmpty())
        Log(Message, QStringLiteral("* Trigger ") + Trigger.Name + QStringLiteral(": ") + problem);
    if (reason.isEmpty()) {
        Log(Message, QStringLiteral("Trigger ") + Trigger.Name + QStringLiteral(" matched"));
        return true;
    }
    Log(Message, QStringLiteral("Trigger ") + Trigger.Name + QStringLiteral(" did not match: ") + reason);
    return false;
}

QString MessageProcessor::MismatchReason(const clsAccountTrigger &Trigger, const clsMessage &Message, QString *Problem)
{
    if (!Trigger.Enabled)
        return QStringLiteral("the trigger is disabled");
    if (!Trigger.INSchedule())
        return QStringLiteral("outside its hours");
    if (Trigger.ReceivedAfter.isValid() && Message.Dated <= Trigger.ReceivedAfter)
        return QStringLiteral("received before ") + Trigger.ReceivedAfter.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    if (!WordsFound(Trigger, Message))
        return QStringLiteral("the words are not found");
    if (!SenderFits(Trigger, Message))
        return QStringLiteral("the sender is not like ") + Trigger.FromAddressLIKE;
    if (Trigger.MarkedAsImportant > 0 && Level(Message.Importance) != Trigger.MarkedAsImportant)
        return QStringLiteral("the importance differs");
    if (Trigger.MarkedAsSenstive > 0 && Level(Message.Sensitivity) != Trigger.MarkedAsSenstive)
        return QStringLiteral("the sensitivity differs");
    if (Trigger.SBScriptTriggerEnabled && !Trigger.SBScriptTrigger.trimmed().isEmpty()) {
        *Problem = QStringLiteral("the condition script cannot run: the script engine is not available");
        return QStringLiteral("the condition script did not run");
    }
    const ConditionEvaluator::Result condition = ConditionEvaluator::Evaluate(Trigger.Condition);
    if (!condition.Problem.isEmpty())
        *Problem = condition.Problem;
    if (!condition.Holds)
        return QStringLiteral("the condition does not hold");
    return QString();
}

clsAccountTrigger *MessageProcessor::RunTrigger(clsAccountTrigger &Trigger, clsMessage &Message)
{
    Message.setTrigger(&Trigger);
    if (!Trigger.SaveToFolderID.trimmed().isEmpty())
        Message.FolderID = Trigger.SaveToFolderID.trimmed();
    const int errorsBefore = Message.ErrorCount;
    bool goOn = ExtractFields(Trigger, Message);
    if (goOn)
        goOn = ActionRunner(*this, Trigger, Message).Run();
    ++Trigger.MessageCount;
    Message.Executed = true;
    if (Message.ErrorCount > errorsBefore && Message.Account && Message.Account->AutoPause && PauseAccount) {
        Log(Message, QStringLiteral("The account ") + Message.Account->Name
                         + QStringLiteral(" pauses after the error: it processes no further messages"));
        PauseAccount(Message.Account->AccountID, Message.LastError);
    }
    if (!goOn || Trigger.ThenProcessID.trimmed().isEmpty())
        return nullptr;
    clsAccountTrigger *next = Message.Account ? Message.Account->TriggerFromID(Trigger.ThenProcessID.trimmed()) : nullptr;
    if (!next) {
        Log(Message, QStringLiteral("* Trigger ") + Trigger.Name + QStringLiteral(" passes on to the trigger ")
                         + Trigger.ThenProcessID + QStringLiteral(", which does not exist"));
        return nullptr;
    }
    Log(Message, QStringLiteral("Trigger ") + Trigger.Name + QStringLiteral(" passes processing on to trigger ")
                     + next->Name);
    return next;
}

bool MessageProcessor::ExtractFields(clsAccountTrigger &Trigger, clsMessage &Message)
{
    clsFieldExtractor extractor;
    extractor.Subject = Message.Subject;
    extractor.Body = Message.Body;
    const colFields &fields = Trigger.FieldsToProcess();
    for (int n = 1; n <= fields.Count(); ++n) {
        const clsTriggerField &field = *fields.Item(n);
        clsMessageField *target = Message.ExtractedFields().Item(n);
        if (!field.Enabled || !target)
            continue;
        QString value;
        if (field.ExtractBuiltIn) {
            value = ExpandTokens(field.ExtractBuiltInField);
        } else if (field.Lookup) {
            Log(Message, QStringLiteral("* Field ") + field.Name
                             + QStringLiteral(": database lookups cannot run on this server yet"));
            if (field.LookupCancelOnFail)
                return false;
        } else if (field.SBScriptExtractEnabled && !field.SBScriptExtract.trimmed().isEmpty()) {
            Log(Message, QStringLiteral("* Field ") + field.Name
                             + QStringLiteral(": the extraction script cannot run: the script engine is not available"));
        } else {
            QStringList values;
            for (const clsFieldExtractor::FoundValue &found : extractor.Extract(field))
                values << found.Value;
            value = values.join(QStringLiteral("\r\n"));
        }
        if (value.isEmpty() && !field.DefaultValue.isEmpty())
            value = ExpandTokens(field.DefaultValue);
        if (field.ChangeCase == 1)
            value = value.toUpper();
        else if (field.ChangeCase == 2)
            value = SetOperations::WordCapitalize(value);
        if (field.Validate && !Valid(field, value)) {
            if (field.ValidateAction == 1) {
                Log(Message, QStringLiteral("* Field ") + field.Name + QStringLiteral(" = ") + Shown(value)
                                 + QStringLiteral(" fails its validation: the trigger is cancelled"));
                return false;
            }
            Log(Message, QStringLiteral("Field ") + field.Name + QStringLiteral(" = ") + Shown(value)
                             + QStringLiteral(" fails its validation: it takes its default value"));
            value = ExpandTokens(field.DefaultValue);
        }
        target->Value = value;
        Log(Message, QStringLiteral("Field ") + field.Name + QStringLiteral(" = ") + Shown(value));
        if (!field.PassToTrigger.trimmed().isEmpty()) {
            const QString subject = ExpandTokens(field.PassToSubject);
            const QString body = ExpandTokens(QString(field.PassToBody).replace(QStringLiteral("%fieldvalue%"), value,
                                                                                  Qt::CaseInsensitive));
            if (!PassToTrigger(Message, field.PassToTrigger.trimmed(), subject, body))
                Log(Message, QStringLiteral("* Field ") + field.Name + QStringLiteral(": the trigger ")
                                 + field.PassToTrigger + QStringLiteral(" to pass it to does not exist"));
        }
    }
    return true;
}

bool MessageProcessor::PassToTrigger(clsMessage &Message, const QString &TriggerID, const QString &Subject,
                                     const QString &Body)
{
    const clsAccount *account = Accounts().Item(Accounts().AccountNoForTriggerID(TriggerID));
    if (!account)
        return false;
    const QString uid = GUIDDigits();
    const QStringList lines{
        QStringLiteral("Postvane-AccountID: ") + account->AccountID,
        QStringLiteral("Postvane-TriggerID: ") + TriggerID,
        QStringLiteral("Postvane-UID: ") + uid,
        QStringLiteral("Postvane-Source: PassTo"),
        QStringLiteral("MIME-Version: 1.0"),
        QStringLiteral("Content-Type: text/plain; charset=utf-8"),
        QStringLiteral("Content-Transfer-Encoding: 8bit"),
        QStringLiteral("Date: ")
            + QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("ddd, dd MMM yyyy HH:mm:ss")),
        QStringLiteral("From: ") + Message.FromFull(),
        QStringLiteral("To: ") + Message.ToAddress,
        QStringLiteral("Subject: ") + QString(Subject).replace(u'\r', u' ').replace(u'\n', u' '),
        QString(),
        Body};
    return m_store.AddEMLToEdgeQueue(account->AccountID, QStringLiteral("PassTo"), uid, QDateTime::currentDateTime(),
                                     lines.join(QStringLiteral("\r\n")))
        > 0;
}
