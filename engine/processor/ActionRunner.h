#pragma once
#include <QString>

class clsAccountTrigger;
class clsActionLogical;
class clsActionPassTo;
class clsActionSetVariable;
class clsMessage;
class MessageProcessor;
class ActionItem;

// Runs a trigger's action list on the current message. If, Else and End If
// choose the actions that run; GoTo jumps to its Label ("#Start" and "#End"
// to the head and the end of the list); End Processing ends the list and the
// message's processing when its condition holds. Every other action runs
// when it is enabled and its own condition holds. Kinds whose run-time this
// server does not have write an error line naming the kind, so that the run
// counts as failed; a Script action does the same until there is a script
// engine.
class ActionRunner
{
public:
    // The longest run: a GoTo that loops ends here with an error line.
    static constexpr int MaxSteps = 100000;

    ActionRunner(MessageProcessor &Processor, clsAccountTrigger &Trigger, clsMessage &Message);

    // Runs the list. False when End Processing ended it: no trigger follows.
    bool Run();

private:
    // The position to go on with after the action at Position.
    int Step(int Position);
    int RunLogical(const clsActionLogical &Action, int Position);
    void RunSet(const clsActionSetVariable &Action);
    void RunPassTo(const clsActionPassTo &Action);
    void RunOther(const ActionItem &Action);
    // The position of the Else or End If that ends the block of the If or
    // Else at Position (WithElse false: only End If); past the end when none.
    int BlockEnd(int Position, bool WithElse) const;
    bool ConditionHolds(const QString &Condition, const QString &Of);
    void Log(const QString &Text);

    MessageProcessor &m_processor;
    clsAccountTrigger &m_trigger;
    clsMessage &m_message;
    bool m_ended = false;
    bool m_failed = false;
};
