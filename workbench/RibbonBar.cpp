#include "RibbonBar.h"

#include <QAction>
#include <QApplication>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QTabBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

const char *ColumnProperty = "ribbonColumn";
constexpr int SmallPerColumn = 3;
constexpr int LargeIcon = 32;
constexpr int SmallIcon = 16;

} // namespace

RibbonBar::RibbonBar(QWidget *parent) : QTabWidget(parent)
{
    setObjectName(QStringLiteral("CommandBar"));
    setDocumentMode(true);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);

    SystemButton = new QToolButton(this);
    SystemButton->setObjectName(QStringLiteral("SystemButton"));
    SystemButton->setText(QStringLiteral("File"));
    SystemButton->setPopupMode(QToolButton::InstantPopup);
    SystemButton->setToolButtonStyle(Qt::ToolButtonTextOnly);
    SystemMenu = new QMenu(SystemButton);
    SystemButton->setMenu(SystemMenu);
    setCornerWidget(SystemButton, Qt::TopLeftCorner);

    QuickButton = new QToolButton(this);
    QuickButton->setObjectName(QStringLiteral("QuickButton"));
    QuickButton->setAutoRaise(true);
    setCornerWidget(QuickButton, Qt::TopRightCorner);

    connect(tabBar(), &QTabBar::tabBarClicked, this, [this](int) {
        if (m_minimized)
            SetMinimized(false);
    });
}

QWidget *RibbonBar::AddTab(const QString &Caption, const QString &ToolTip)
{
    auto *page = new QWidget;
    auto *layout = new QHBoxLayout(page);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->setSpacing(4);
    layout->addStretch(1);
    const int index = addTab(page, Caption);
    setTabToolTip(index, ToolTip);
    return page;
}

QGroupBox *RibbonBar::AddGroup(QWidget *Tab, const QString &Title)
{
    auto *group = new QGroupBox(Title, Tab);
    group->setAlignment(Qt::AlignHCenter);
    auto *layout = new QHBoxLayout(group);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->setSpacing(2);
    auto *tabLayout = static_cast<QHBoxLayout *>(Tab->layout());
    tabLayout->insertWidget(tabLayout->count() - 1, group);
    return group;
}

QWidget *RibbonBar::SmallColumn(QGroupBox *Group)
{
    auto *column = Group->property(ColumnProperty).value<QWidget *>();
    if (column && column->layout()->count() < SmallPerColumn)
        return column;
    column = new QWidget(Group);
    auto *layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->setAlignment(Qt::AlignTop);
    Group->layout()->addWidget(column);
    Group->setProperty(ColumnProperty, QVariant::fromValue(column));
    return column;
}

QAction *RibbonBar::AddCommand(QGroupBox *Group, int ID, const QString &Caption, const QString &ToolTip,
                               const QIcon &Icon, bool Large)
{
    auto *action = new QAction(Icon, Caption, this);
    action->setData(ID);
    action->setToolTip(ToolTip.isEmpty() ? Caption : ToolTip);
    addAction(action);
    m_commands.insert(ID, action);

    auto *button = new QToolButton(Group);
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    if (Large) {
        button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        button->setIconSize(QSize(LargeIcon, LargeIcon));
        button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
        Group->layout()->addWidget(button);
        Group->setProperty(ColumnProperty, QVariant());
    } else {
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setIconSize(QSize(SmallIcon, SmallIcon));
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        SmallColumn(Group)->layout()->addWidget(button);
    }
    m_buttons.insert(ID, button);
    return action;
}

QAction *RibbonBar::AddCommand(QGroupBox *Group, int ID, const QString &Caption, const QString &ToolTip,
                               QStyle::StandardPixmap Icon, bool Large)
{
    return AddCommand(Group, ID, Caption, ToolTip, style()->standardIcon(Icon), Large);
}

void RibbonBar::AddMenuCommand(QAction *Action)
{
    addAction(Action);
    m_commands.insert(Action->data().toInt(), Action);
}

QLabel *RibbonBar::AddLine(QGroupBox *Group, const QString &Text)
{
    auto *line = new QLabel(Text, SmallColumn(Group));
    line->parentWidget()->layout()->addWidget(line);
    return line;
}

QAction *RibbonBar::Command(int ID) const
{
    return m_commands.value(ID);
}

QToolButton *RibbonBar::Button(int ID) const
{
    return m_buttons.value(ID);
}

void RibbonBar::SetTabShown(QWidget *Tab, bool Shown)
{
    const int index = indexOf(Tab);
    if (index < 0)
        return;
    setTabVisible(index, Shown);
    if (Shown)
        setCurrentIndex(index);
}

void RibbonBar::SetMinimized(bool Minimized)
{
    if (m_minimized == Minimized)
        return;
    m_minimized = Minimized;
    if (Minimized)
        setFixedHeight(tabBar()->sizeHint().height());
    else {
        setMinimumHeight(0);
        setMaximumHeight(QWIDGETSIZE_MAX);
    }
    emit MinimizedChanged(Minimized);
}
