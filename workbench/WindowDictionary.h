#pragma once
#include <QList>
#include <QString>

class QDockWidget;
class QTabWidget;
class QWidget;

// The dictionary applied to windows: every caption on screen passes through
// DDict under the window's name, so that a translator's build can replace it.
// The window's object name is the class of the keys, a control's object name
// their property.

// A dictionary text by key, with its default.
QString DictText(const char *Key, const char *Default);

// The window title and the captions of its named controls; numbered items
// (tabs, the entries of a fixed list) by their position. Controls without
// text of their own, text boxes and lists are left alone.
void GetDDict(QWidget *Window);
// Tabs by number from 0, each "caption|tool tip|description"; the groups of
// a tab (its group boxes) as "||title" under "GROUPTAB" + the tab's number.
void GetRibbonBar(const QString &Name, QTabWidget *Ribbon);
// Every command of a tool bar, menu bar or menu, through sub-menus, as
// "caption|tool tip|description" with the command's identifier (its data) as index.
void GetCommandBar(const QString &Name, QWidget *Bar);
// A docking pane's id, a dynamic property of the pane set when it is made;
// it stays the pane's own whatever order the panes are listed in.
inline constexpr const char *PaneIDProperty = "PaneID";
// The titles of docking panes, the pane's name as property, its id as index.
void GetPanes(const QString &Name, const QList<QDockWidget *> &Panes);
