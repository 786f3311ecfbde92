#include "frmExplorerBar.h"
#include "ServerCommand.h"
#include "TaskDialog.h"
#include "WindowDictionary.h"
#include "foundation/GlobalBlock.h"
#include "frmList.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"

#include <QAction>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QScrollArea>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

const char *CaptionProperty = "taskCaption";

bool Confirmed(QWidget *Parent, const QString &Question)
{
    return ShowTaskDialog(Parent, Question, QString(), QString(), QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

} // namespace

frmExplorerBar::frmExplorerBar(frmList *List, const Tasks &Commands, QWidget *parent)
    : QWidget(parent), List(List), Commands(Commands)
{
    setObjectName(QStringLiteral("frmExplorerBar"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_scroll = new QScrollArea(this);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFrameShape(QFrame::NoFrame);
    layout->addWidget(m_scroll);
    setMinimumWidth(190);

    cmboOrganizations = new QComboBox(this);
    cmboOrganizations->setObjectName(QStringLiteral("cmboOrganizations"));
    cmboOrganizations->hide();
    connect(cmboOrganizations, &QComboBox::activated, this, [this] {
        this->List->OrganizationFilter = cmboOrganizations->currentData().toString();
        this->List->FillUserList();
        emit PageChanged();
    });
    Clear();
    Publish();
}

void frmExplorerBar::Clear()
{
    cmboOrganizations->setParent(this);
    cmboOrganizations->hide();
    m_panel = new QWidget;
    m_panel->setObjectName(QStringLiteral("TaskPanel"));
    m_groups = new QVBoxLayout(m_panel);
    m_groups->setContentsMargins(6, 6, 6, 6);
    m_groups->setSpacing(8);
    m_groups->addStretch(1);
}

void frmExplorerBar::Publish()
{
    m_scroll->setWidget(m_panel); // the old panel goes with its groups
}

QWidget *frmExplorerBar::AddGroup(const QString &Title)
{
    auto *group = new QFrame(m_panel);
    group->setFrameShape(QFrame::StyledPanel);
    group->setProperty(CaptionProperty, Title);
    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(0, 0, 0, 4);
    layout->setSpacing(0);
    auto *title = new QLabel(Title, group);
    title->setTextFormat(Qt::PlainText);
    title->setAutoFillBackground(true);
    title->setBackgroundRole(QPalette::Highlight);
    title->setForegroundRole(QPalette::HighlightedText);
    title->setContentsMargins(6, 3, 6, 3);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    layout->addWidget(title);
    m_groups->insertWidget(m_groups->count() - 1, group);
    return group;
}

void frmExplorerBar::AddTask(QWidget *Group, QAction *Command, const QString &Caption)
{
    auto *link = new QToolButton(Group);
    link->setText(Caption);
    link->setProperty(CaptionProperty, Caption);
    link->setIcon(Command->icon());
    link->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    link->setAutoRaise(true);
    link->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    link->setEnabled(Command->isEnabled());
    link->setCursor(Qt::PointingHandCursor);
    connect(Command, &QAction::changed, link, [link, Command] { link->setEnabled(Command->isEnabled()); });
    connect(link, &QToolButton::clicked, Command, &QAction::trigger);
    Group->layout()->addWidget(link);
}

QLabel *frmExplorerBar::AddDetail(QWidget *Group, const QString &Text)
{
    auto *detail = new QLabel(Text, Group);
    detail->setTextFormat(Qt::PlainText);
    detail->setWordWrap(true);
    detail->setContentsMargins(8, 2, 6, 2);
    detail->setProperty(CaptionProperty, Text);
    Group->layout()->addWidget(detail);
    return detail;
}

QStringList frmExplorerBar::Captions() const
{
    QStringList captions;
    for (QWidget *child : m_panel->findChildren<QWidget *>()) {
        const QString caption = child->property(CaptionProperty).toString();
        if (!caption.isEmpty())
            captions.append(caption);
    }
    return captions;
}

void frmExplorerBar::ExplorerBarRefresh()
{
    switch (Showing) {
    case PageTop:
        ExplorerBarTop();
        break;
    case PageAccount:
        ExplorerBarAccount();
        break;
    case PageUsers:
        ExplorerBarUser();
        break;
    }
}

void frmExplorerBar::ExplorerBarTop()
{
    Showing = PageTop;
    Clear();
    QWidget *tasks = AddGroup(DictText("TASKS", "Tasks"));
    AddTask(tasks, Commands.AddAccount, DictText("ADDACCOUNT", "Add Account"));
    QWidget *details = AddGroup(DictText("DETAILS", "Details"));
    AddDetail(details, QString::number(Accounts().Count()) + QStringLiteral(" Accounts"));
    Publish();
    RefreshListItems();
}

void frmExplorerBar::ExplorerBarAccount()
{
    const clsAccount *account = Accounts().Item(List->CurrentAccountID);
    if (!account) {
        ExplorerBarTop();
        return;
    }
    Showing = PageAccount;
    Clear();
    QWidget *tasks = AddGroup(DictText("TASKS", "Tasks"));
    AddTask(tasks, Commands.UpLevel, DictText("UPLEVEL", "Up Level"));
    AddTask(tasks, Commands.AddTrigger, DictText("ADDTRIGGER", "Add Trigger"));
    AddTask(tasks, Commands.Delete, DictText("DELETETHISACCOUNT", "Delete This Account"));
    if (!List->CurrentTriggerID.isEmpty()) {
        AddTask(tasks, Commands.Delete, DictText("DELETETRIGGERTASK", "Delete Trigger"));
        AddTask(tasks, Commands.RunWith, DictText("RUNWITH", "Run With"));
    }
    QWidget *details = AddGroup(DictText("DETAILS", "Details"));
    AddDetail(details, account->Name);
    AddTask(details, Commands.Properties, DictText("ACCOUNTPROPERTIES", "Account Properties"));
    Publish();
    if (List->Level != frmList::LevelTriggers || List->ListedAccountID != account->AccountID)
        RefreshListItems();
}

void frmExplorerBar::FillOrganizations()
{
    const QString chosen = List->OrganizationFilter;
    cmboOrganizations->clear();
    cmboOrganizations->addItem(Global.TextAll.isEmpty() ? QStringLiteral("All") : Global.TextAll, QString());
    for (const clsUserOrganization *organization : Organizations())
        cmboOrganizations->addItem(organization->Name, organization->ID);
    const int index = cmboOrganizations->findData(chosen);
    cmboOrganizations->setCurrentIndex(index < 0 ? 0 : index);
    List->OrganizationFilter = cmboOrganizations->currentData().toString();
}

void frmExplorerBar::ExplorerBarUser()
{
    Showing = PageUsers;
    Clear();
    QWidget *organizations = AddGroup(DictText("ORGANIZATIONS", "Organizations"));
    FillOrganizations();
    cmboOrganizations->setParent(organizations);
    organizations->layout()->addWidget(cmboOrganizations);
    cmboOrganizations->show();
    QWidget *tasks = AddGroup(DictText("TASKS", "Tasks"));
    AddTask(tasks, Commands.AddUser, DictText("NEWUSER", "New User"));
    AddTask(tasks, Commands.DeleteUser, DictText("DELETETHISUSER", "Delete This User"));
    QWidget *details = AddGroup(DictText("DETAILS", "Details"));
    if (const clsUser *person = Users().Item(List->CurrentUserID)) {
        AddDetail(details, person->Username + (person->Admin ? QStringLiteral(" (Admin)") : QString()));
        if (!person->Fullname.isEmpty())
            AddDetail(details, person->Fullname);
        AddDetail(details, QString::number(person->EmailCount()) + QStringLiteral(" Addresses"));
    }
    Publish();
    if (List->Level != frmList::LevelUsers)
        RefreshListItems();
}

void frmExplorerBar::RefreshListItems()
{
    switch (Showing) {
    case PageTop:
        List->FillList();
        break;
    case PageAccount:
        List->FillTriggerList();
        break;
    case PageUsers:
        List->FillUserList();
        break;
    }
    emit PageChanged();
}

void frmExplorerBar::DeleteAccount()
{
    const clsAccount *account = Accounts().Item(List->CurrentAccountID);
    if (!account)
        return;
    const QString accountID = account->AccountID;
    if (!Confirmed(this, DictText("DELETEACCOUNT", "Delete Account:") + u' ' + account->Name))
        return;
    if (!ServerCommand(Requests::DeleteAccount(accountID)))
        return;
    Accounts().Delete(accountID);
    UserFolders().DeleteForAccount(accountID);
    List->CurrentAccountID.clear();
    List->CurrentTriggerID.clear();
    ExplorerBarTop();
}

void frmExplorerBar::DeleteTrigger()
{
    clsAccount *account = Accounts().Item(List->CurrentAccountID);
    const clsAccountTrigger *trigger = account ? account->Triggers.Item(List->CurrentTriggerID) : nullptr;
    if (!trigger)
        return;
    const QString accountID = account->AccountID;
    const QString triggerID = trigger->TriggerID;
    if (!Confirmed(this, DictText("DELETETRIGGER", "Delete Trigger:") + u' ' + trigger->Name + QStringLiteral("\r\n\r\n")
                             + QStringLiteral("From Account: ") + account->Name))
        return;
    if (!ServerCommand(Requests::DeleteTrigger(accountID, triggerID)))
        return;
    if ((account = Accounts().Item(accountID)))
        account->Triggers.Delete(triggerID);
    List->CurrentTriggerID.clear();
    ExplorerBarAccount();
    List->FillTriggerList();
}

void frmExplorerBar::DeleteUser()
{
    const clsUser *person = Users().Item(List->CurrentUserID);
    if (!person)
        return;
    if (person->ID == Global.UserID) {
        ShowTaskDialog(this, DictText("DELETEOWNUSER", "You cannot delete the user you are logged in with."), QString());
        return;
    }
    const QString userID = person->ID;
    if (!Confirmed(this, DictText("DELETEUSER", "Delete User:") + u' ' + person->Username))
        return;
    if (!ServerCommand(Requests::DeleteUser(userID)))
        return;
    Users().Delete(userID);
    List->CurrentUserID.clear();
    ExplorerBarUser();
    List->FillUserList();
}
