#pragma once
#include <QHash>
#include <QStyle>
#include <QTabWidget>

class QAction;
class QGroupBox;
class QLabel;
class QMenu;
class QToolButton;

// The console's ribbon: a tab bar whose pages hold groups (group boxes) of
// tool buttons, each button showing one command. Commands are QActions of
// the ribbon itself, numbered by their data, so that the dictionary's
// GetCommandBar and GetRibbonBar apply to them as to any command bar.
// Minimized, only the tab bar shows; a click on a tab opens its page again.
class RibbonBar : public QTabWidget
{
    Q_OBJECT
public:
    explicit RibbonBar(QWidget *parent = nullptr);

    // A page; its tool tip goes with the tab.
    QWidget *AddTab(const QString &Caption, const QString &ToolTip = QString());
    QGroupBox *AddGroup(QWidget *Tab, const QString &Title);
    // A command with its button in the group. Large buttons show the icon
    // above the caption, small ones beside it, three to a column.
    QAction *AddCommand(QGroupBox *Group, int ID, const QString &Caption, const QString &ToolTip,
                        const QIcon &Icon, bool Large = true);
    QAction *AddCommand(QGroupBox *Group, int ID, const QString &Caption, const QString &ToolTip,
                        QStyle::StandardPixmap Icon, bool Large = true);
    // A command shown elsewhere (a menu), numbered by its data, so that
    // Command finds it and the dictionary translates it.
    void AddMenuCommand(QAction *Action);
    // A read-only line of the group, such as a statistic.
    QLabel *AddLine(QGroupBox *Group, const QString &Text);
    // The command of an identifier; nullptr when there is none.
    QAction *Command(int ID) const;
    // The button that shows a command.
    QToolButton *Button(int ID) const;

    // Contextual tabs are shown only while their editor has the focus.
    void SetTabShown(QWidget *Tab, bool Shown);

    bool Minimized() const { return m_minimized; }
    void SetMinimized(bool Minimized);

    // The system menu's button, left of the tabs.
    QToolButton *SystemButton = nullptr;
    QMenu *SystemMenu = nullptr;
    // The quick strip, right of the tabs: minimize and expand.
    QToolButton *QuickButton = nullptr;

signals:
    void MinimizedChanged(bool Minimized);

private:
    // The column of small buttons being filled in a group.
    QWidget *SmallColumn(QGroupBox *Group);

    QHash<int, QAction *> m_commands;
    QHash<int, QToolButton *> m_buttons;
    bool m_minimized = false;
};
