#include "ActionRunner.h"
#include "ConditionEvaluator.h"
#include "MessageProcessor.h"
#include "SetOperations.h"
#include "actions/ActionItem.h"
#include "engine/actions/DataActions.h"
#include "engine/actions/MessageActions.h"
#include "actions/clsActionComment.h"
#include "actions/clsActionLogical.h"
#include "actions/clsActionPassTo.h"
#include "actions/clsActionSetVariable.h"
#include "actions/colActions.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/Condition.h"
#include "model/clsAccountTrigger.h"
#include "store/Tokens.h"
#include "store/clsMessage.h"

namespace {

enum LogicalKind { IfBlock = 1, ElseBlock = 2, EndIfBlock = 3, EndProcessing = 4, LabelMark = 5, GoToLabel = 6 };

QString Shown(const QString &Value)
{
    constexpr int Longest = 200;
    return Value.size() > Longest ? Value.left(Longest) + QStringLiteral("...") : Value;
}

QString VariableName(const QString &Name)
{
    QString name = Name.trimmed();
    if (name.size() > 1 && name.startsWith(u'%') && name.endsWith(u'%'))
        name = name.mid(1, name.size() - 2);
    return name;
}

QString TriggerName(const QString &TriggerID)
{
    const clsAccount *account = Accounts().Item(Accounts().AccountNoForTriggerID(TriggerID));
    const clsAccountTrigger *trigger = account ? account->TriggerFromID(TriggerID) : nullptr;
    return trigger ? trigger->Name : TriggerID;
}

} // namespace

ActionRunner::ActionRunner(MessageProcessor &Processor, clsAccountTrigger &Trigger, clsMessage &Message)
    : m_processor(Processor)
    , m_trigger(Trigger)
    , m_message(Message)
{
}

void ActionRunner::Log(const QString &Text)
{
    if (Text.startsWith(u'*'))
        m_failed = true;
    m_processor.Log(m_message, Text);
}

bool ActionRunner::Run()
{
    const colActions &actions = m_trigger.ActionList();
    // A message back from validation goes on at its Validation action.
    int position = qMax(1, actions.ActionNoFromID(m_message.ValidateActionID));
    int steps = 0;
    while (position >= 1 && position <= actions.Count() && !m_ended) {
        if (++steps > MaxSteps) {
            Log(QStringLiteral("* The actions of trigger %1 ran %2 steps without ending: stopped")
                    .arg(m_trigger.Name)
                    .arg(MaxSteps));
            break;
        }
        const bool failedBefore = m_failed;
        position = Step(position);
        if (m_failed && !failedBefore && m_trigger.StopProcessingFollowingActions) {
            Log(QStringLiteral("Following actions are not run after the error"));
            break;
        }
    }
    return !m_ended;
}

int ActionRunner::Step(int Position)
{
    const ActionItem *action = m_trigger.ActionList().Item(Position);
    if (const auto *logical = action->As<clsActionLogical>())
        return RunLogical(*logical, Position);
    if (!action->Enabled() || action->As<clsActionComment>())
        return Position + 1;
    if (!ConditionHolds(action->Condition(), action->ClassDesc()))
        return Position + 1;
    if (const auto *set = action->As<clsActionSetVariable>())
        RunSet(*set);
    else if (const auto *passTo = action->As<clsActionPassTo>())
        RunPassTo(*passTo);
    else
        RunOther(*action);
    return Position + 1;
}

bool ActionRunner::ConditionHolds(const QString &Condition, const QString &Of)
{
    const ConditionEvaluator::Result result = ConditionEvaluator::Evaluate(Condition);
    if (!result.Problem.isEmpty())
        Log(QStringLiteral("* ") + Of + QStringLiteral(": ") + result.Problem);
    return result.Holds;
}

int ActionRunner::RunLogical(const clsActionLogical &Action, int Position)
{
    switch (Action.LogicalType) {
    case IfBlock: {
        if (ConditionHolds(Action.Condition, QStringLiteral("If"))) {
            Log(QStringLiteral("If ") + ConditionDisplay(Action.Condition, false, false).mid(3) + QStringLiteral(": true"));
            return Position + 1;
        }
        Log(QStringLiteral("If ") + ConditionDisplay(Action.Condition, false, false).mid(3) + QStringLiteral(": false"));
        const int end = BlockEnd(Position, true);
        return end + 1; // behind the Else, or behind the End If
    }
    case ElseBlock:
        // Reached from the branch that ran: the Else part is skipped.
        return BlockEnd(Position, false) + 1;
    case EndProcessing:
        if (ConditionHolds(Action.Condition, QStringLiteral("End Processing"))) {
            Log(QStringLiteral("End Processing"));
            m_ended = true;
        }
        return Position + 1;
    case GoToLabel: {
        if (!ConditionHolds(Action.Condition, QStringLiteral("Go To")))
            return Position + 1;
        const QString label = Action.LabelName.trimmed();
        const colActions &actions = m_trigger.ActionList();
        if (label.compare(QStringLiteral("#Start"), Qt::CaseInsensitive) == 0)
            return 1;
        if (label.compare(QStringLiteral("#End"), Qt::CaseInsensitive) == 0)
            return actions.Count() + 1;
        for (int n = 1; n <= actions.Count(); ++n) {
            const auto *target = actions.Item(n)->As<clsActionLogical>();
            if (target && target->LogicalType == LabelMark
                && target->LabelName.trimmed().compare(label, Qt::CaseInsensitive) == 0) {
                Log(QStringLiteral("Go To ") + label);
                return n + 1;
            }
        }
        Log(QStringLiteral("* Go To: there is no label \"") + label + QStringLiteral("\": the actions end here"));
        return actions.Count() + 1;
    }
    default: // End If, Label, and kinds that do nothing
        return Position + 1;
    }
}

int ActionRunner::BlockEnd(int Position, bool WithElse) const
{
    const colActions &actions = m_trigger.ActionList();
    int depth = 0;
    for (int n = Position + 1; n <= actions.Count(); ++n) {
        const auto *logical = actions.Item(n)->As<clsActionLogical>();
        if (!logical)
            continue;
        if (logical->LogicalType == IfBlock)
            ++depth;
        else if (logical->LogicalType == EndIfBlock && depth-- == 0)
            return n;
        else if (logical->LogicalType == ElseBlock && depth == 0 && WithElse)
            return n;
    }
    return actions.Count();
}

void ActionRunner::RunSet(const clsActionSetVariable &Action)
{
    const QString name = VariableName(Action.Name);
    if (name.isEmpty()) {
        Log(QStringLiteral("* Set Variable: the action has no name"));
        return;
    }
    if (Action.DBLookup) {
        Log(QStringLiteral("* Set ") + name
            + QStringLiteral(": database lookups cannot run on this server yet (Set Variable with a lookup)"));
        return;
    }
    clsMessageField *field = nullptr;
    const int fieldNo = m_message.ExtractedFields().FieldNoFromName(name);
    if (fieldNo > 0)
        field = m_message.ExtractedFields().Item(fieldNo);
    clsAccount *account = m_message.Account;
    if (!field && !account) {
        Log(QStringLiteral("* Set ") + name + QStringLiteral(": no field of that name and no account for a variable"));
        return;
    }
    const QString current = field ? field->Value : account->GlobalVar(name, Action.Persist).toString();
    const SetOperations::Result result = SetOperations::Apply(Action.Operation, current, ExpandTokens(Action.Value));
    if (!result.Problem.isEmpty()) {
        Log(QStringLiteral("* Set ") + name + QStringLiteral(" (") + clsActionSetVariable::OperationDesc(Action.Operation)
            + QStringLiteral("): ") + result.Problem);
        return;
    }
    const QString value = Action.Append ? current + result.Value : result.Value;
    if (field)
        field->Value = value;
    else
        account->setGlobalVar(name, Action.Persist, value);
    Log(QStringLiteral("Set ") + name + QStringLiteral(" = ") + Shown(value));
}

void ActionRunner::RunPassTo(const clsActionPassTo &Action)
{
    const QString body = ExpandTokens(Action.Value);
    if (m_processor.PassToTrigger(m_message, Action.TriggerID, m_message.Subject, body))
        Log(QStringLiteral("Value passed to trigger ") + TriggerName(Action.TriggerID));
    else
        Log(QStringLiteral("* Pass Value To Trigger: the trigger ") + Action.TriggerID
            + QStringLiteral(" does not exist or the queue refused the message"));
}

void ActionRunner::RunOther(const ActionItem &Action)
{
    const auto log = [this](const QString &Text) { Log(Text); };
    if (DataActions::Run(Action, m_trigger, m_message, &m_processor.Store(), log))
        return;
    const MessageActions::Outcome outcome = MessageActions::Run(Action, m_trigger, m_message, &m_processor.Store(), log);
    m_ended = m_ended || outcome == MessageActions::Outcome::Stop;
    if (outcome != MessageActions::Outcome::NotMine)
        return;
    if (Action.ClassName() == u"Script") {
        Log(QStringLiteral("* Action Script (") + Action.ClassDesc()
            + QStringLiteral(") cannot run: the script engine is not available"));
        return;
    }
    Log(QStringLiteral("* Action ") + Action.ClassName() + QStringLiteral(" (") + Action.ClassDesc()
        + QStringLiteral(") cannot run on this server yet"));
}
