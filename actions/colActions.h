#pragma once
#include "ActionItem.h"
#include "foundation/KeyedCollection.h"

#include <QList>
#include <QString>
#include <memory>

class clsAccountTrigger;

// The ordered list of a trigger's actions, each kept under its ID. Positions
// are 1-based. The list makes actions from their class keys, places and
// orders them, and answers the questions of the If-block rules.
class colActions
{
public:
    // The owning trigger; it can be set only while it is empty.
    clsAccountTrigger *Parent() const { return m_parent; }
    void setParent(clsAccountTrigger *Value);

    // Makes the action of the fragment's class key, reads the fragment into
    // it and adds it under its ID; nullptr for a fragment without a key, for
    // an unknown key and for an ID already present.
    ActionItem *AddXML(const QString &XML);
    // The same from a reader of the fragment, such as one nested in a
    // trigger's.
    ActionItem *AddXML(clsXML &Reader);
    // A new action of the class key, not added; nullptr for an unknown key.
    static std::unique_ptr<ActionItem> NewObject(const QString &ClassName);
    // Appends under the action's ID; nullptr when the ID is already present.
    ActionItem *Add(std::unique_ptr<ActionItem> NewAction);
    // Insert beside the action with that ID; without such an action nothing
    // is inserted. The inserted action, or nullptr.
    ActionItem *AddAfter(std::unique_ptr<ActionItem> NewAction, const QString &AfterID);
    ActionItem *AddBefore(std::unique_ptr<ActionItem> NewAction, const QString &BeforeID);
    int Count() const { return m_actions.Count(); }
    // By position or ID.
    void Delete(int Index) { m_actions.Delete(Index); }
    void Delete(const QString &Key) { m_actions.Delete(Key); }
    // By position or ID; nullptr when there is none.
    ActionItem *Item(int Index) const { return m_actions.Item(Index); }
    ActionItem *Item(const QString &Key) const { return m_actions.Item(Key); }
    // ClassName of the action at that position; empty outside 1..Count.
    QString ItemType(int Index) const;
    // ConfirmationHTML of the Validation action with that ID; empty when
    // there is none.
    QString HTMLForValidationID(const QString &ID) const;

    // Number of If blocks open before the action: the action itself isn't
    // counted, and Else never counts.
    int IFBlockLevel(const QString &ForActionID) const;
    // Always False, whatever the list holds: a new If is always treated as
    // unclosed, so that it gets its own End If.
    bool IFBlockHasEndIf(const QString &ForActionID) const;
    // True when the list holds as many If as EndIf, in any order.
    bool IFBlocksClosed() const;
    // False when an Else has no EndIf at its level behind it, or when the
    // list holds more Else than EndIf.
    bool IFElseBlocksClosed() const;
    // ID of the innermost If open before the action; empty at top level.
    QString IFBlockID(const QString &ForActionID) const;

    // Exchanges the actions at two positions; nothing when either is outside
    // 1..Count.
    void Swap(int x, int y) { m_actions.Swap(x, y); }
    // Position of the action with that ID (blanks trimmed), 0 when none.
    int ActionNoFromID(const QString &ID) const;

    // The actions in list order.
    auto begin() const { return m_actions.begin(); }
    auto end() const { return m_actions.end(); }

private:
    // NewObject under the ID given.
    static std::unique_ptr<ActionItem> MakeObject(const QString &ClassName, const QString &ActionID);
    // The key between the first "<Class>" and the first "</Class>" behind it.
    static QString ClassFromXML(QStringView XML);
    // Makes the action of the fragment's class key, has Read fill it and adds it.
    template <typename Read> ActionItem *AddRead(const QString &key, Read read);
    QList<int> Levels() const;
    bool ElseBlockHasEndIf(const QList<int> &Levels, int Position) const;
    ActionItem *Insert(std::unique_ptr<ActionItem> NewAction, int Before);

    KeyedCollection<ActionItem> m_actions;
    clsAccountTrigger *m_parent = nullptr;
};
