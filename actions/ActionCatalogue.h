#pragma once
#include <QList>
#include <QString>

// The kinds of action that a trigger can hold, as the trigger editor's task
// panel offers them.

// A group of the panel.
struct ActionGroup
{
    int Number = 0;
    QString Caption;
    bool Open = false; // starts open
};

// An item of the panel, or a kind that the panel doesn't show (Group and
// ItemID 0, no Caption). Key is what NewObject takes; a CRM item's key carries
// ".MSD" or ".SFDC". ClassDesc is the name that the object carries.
struct ActionKind
{
    int Group = 0;
    int ItemID = 0;
    QString Caption;
    QString Key;
    QString Class;
    QString ClassDesc;
    int Icon = 0; // image number
};

// The fourteen groups, in panel order.
QList<ActionGroup> ActionGroups();
// The items, in the order in which the panel shows them.
QList<ActionKind> ActionCatalogue();
// The kinds that still load from stored triggers although the panel doesn't
// offer them.
QList<ActionKind> ActionHiddenKinds();
// The image of the catalogue item with that key (without regard to case),
// 0 when there is none. A CRM action passes ClassName, "." and CRMType.
int ActionIcon(const QString &Key);
