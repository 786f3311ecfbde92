#include "frmTriggerAction.h"
#include "EditorBoxes.h"
#include "FieldsTree.h"
#include "workbench/MarkupDelegate.h"
#include "frmCondition.h"
#include "actions/ActionItem.h"
#include "actions/clsActionSetVariable.h"
#include "actions/panels/ActionEditor.h"
#include "actions/panels/ActionEditors.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "model/Condition.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/Tokens.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QUrl>
#include <QVBoxLayout>

namespace {

// Pixels that stand for the twips the dialog adds around its control.
constexpr int ExtraHeight = 140;
constexpr int ExtraWidth = 230;

// The kinds whose editors take Enter and Esc themselves.
bool OwnsEnterAndEsc(const QString &ClassName)
{
    return ClassName == QStringLiteral("Message") || ClassName == QStringLiteral("Script") ||
           ClassName == QStringLiteral("PassTo") || ClassName == QStringLiteral("DatabaseUpdateCustom");
}

QTreeWidgetItem *Node(QTreeWidgetItem *Parent, const QString &Text, const QString &Key, const QString &Drag)
{
    auto *node = new QTreeWidgetItem(Parent, {Text});
    node->setData(0, FieldsTree::KeyRole, Key);
    node->setData(0, FieldsTree::DragRole, Drag);
    return node;
}

QString Call(const char *Function, const QString &Name)
{
    return QString::fromLatin1(Function) + QStringLiteral("(\"") + Name + QStringLiteral("\")");
}

} // namespace

frmTriggerAction::frmTriggerAction(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmTriggerAction"));
    Tabs = new QTabWidget(this);
    auto *editorPage = new QWidget(Tabs);
    btnClassImage = new QPushButton(editorPage);
    btnClassImage->setFlat(true);
    btnClassImage->setStyleSheet(QStringLiteral("font-weight: bold; text-align: left;"));
    chkEnabled = new QCheckBox(EditorText("ACTIONENABLED", "Enabled"), editorPage);
    lblKept = new QLabel(EditorText("ACTIONKEPT", "This action has no editor in this console. Its settings are kept "
                                                  "as they were stored; its condition and Enabled can be changed."),
                         editorPage);
    lblKept->setWordWrap(true);
    lblKept->hide();
    auto *editorLayout = new QVBoxLayout(editorPage);
    auto *head = new QHBoxLayout;
    head->addWidget(btnClassImage);
    head->addStretch();
    head->addWidget(chkEnabled);
    editorLayout->addLayout(head);
    editorLayout->addWidget(lblKept);
    Tabs->addTab(editorPage, EditorText("ACTIONTAB", "Action"));

    auto *conditionPage = new QWidget(Tabs);
    btnCondition = new QPushButton(EditorText("BTNCONDITION", "Condition..."), conditionPage);
    lblCondition = new QLabel(conditionPage);
    lblCondition->setWordWrap(true);
    lblCondition->setTextFormat(Qt::RichText);
    lblCondition->setStyleSheet(
        QStringLiteral("QLabel { padding: 3px; border: 1px solid #9a9da1; background: #e4ecf7; font-family: Tahoma; }"));
    lblCondition->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    lblCondition->setMinimumHeight(60);
    auto *conditionLayout = new QVBoxLayout(conditionPage);
    conditionLayout->addWidget(btnCondition, 0, Qt::AlignLeft);
    conditionLayout->addWidget(lblCondition);
    conditionLayout->addStretch();
    Tabs->addTab(conditionPage, EditorText("CONDITIONTAB", "Condition"));
    connect(btnCondition, &QPushButton::clicked, this, &frmTriggerAction::EditCondition);

    TreeFields = new FieldsTree(this);
    TreeFields->setMinimumWidth(190);
    auto *split = new QSplitter(this);
    split->addWidget(Tabs);
    split->addWidget(TreeFields);
    split->setStretchFactor(0, 1);

    btnHelp = new QPushButton(EditorText("HELP", "Help"), this);
    btnOK = new QPushButton(EditorText("OK", "OK"), this);
    btnCancel = new QPushButton(EditorText("CANCEL", "Cancel"), this);
    connect(btnOK, &QPushButton::clicked, this, &frmTriggerAction::Accept);
    connect(btnCancel, &QPushButton::clicked, this, &frmTriggerAction::reject);
    connect(btnHelp, &QPushButton::clicked, this, [this] {
        QDesktopServices::openUrl(QUrl(QStringLiteral("https://") + Global.AppDomain + QStringLiteral("/help/Action_") +
                                       (Action ? Action->ClassName() : QString()) + QStringLiteral(".htm")));
    });
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(btnHelp);
    buttons->addStretch();
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(split);
    layout->addLayout(buttons);
}

QString frmTriggerAction::SettingKey(const char *Name) const
{
    return Action->ClassName() + QString::fromLatin1(Name);
}

void frmTriggerAction::Prepare()
{
    const QString kind = Action->ClassName();
    ActiveView = CreateActionEditor(kind, Tabs->widget(0));
    if (ActiveView) {
        ActiveView->setObjectName(QStringLiteral("ActiveView"));
        ActiveView->ThisTrigger = Trigger;
        ActiveView->ThisAction = Action;
        ActiveView->Load();
        qobject_cast<QVBoxLayout *>(Tabs->widget(0)->layout())->insertWidget(1, ActiveView, 1);
    } else {
        lblKept->show();
    }
    setWindowTitle(Action->ClassDesc());
    const QSize control = ActiveView ? ActiveView->sizeHint() : QSize(420, 160);
    const int height = GetUserSetting(Global.ProductName, SettingKey(".Height")).toInt();
    const int width = GetUserSetting(Global.ProductName, SettingKey(".Width")).toInt();
    resize(width > 0 ? width : control.width() + ExtraWidth, height > 0 ? height : control.height() + ExtraHeight);
    const QString left = GetUserSetting(Global.ProductName, SettingKey(".Left"));
    const QString top = GetUserSetting(Global.ProductName, SettingKey(".Top"));
    if (!left.isEmpty() && !top.isEmpty())
        move(left.toInt(), top.toInt());
    else if (QWidget *main = parentWidget() ? parentWidget()->window() : nullptr)
        move(main->geometry().center() - rect().center());

    chkEnabled->setChecked(Action->Enabled());
    btnClassImage->setText(Action->ClassDesc());
    FillFieldsTree();
    ShowCondition();
    if (OwnsEnterAndEsc(kind)) {
        btnOK->setDefault(false);
        btnOK->setAutoDefault(false);
        btnCancel->setAutoDefault(false);
    } else {
        btnOK->setDefault(true);
    }
}

int frmTriggerAction::ShowForm()
{
    Prepare();
    return exec();
}

void frmTriggerAction::ShowCondition()
{
    const QString condition = Action->Condition();
    Tabs->setTabText(1, EditorText("CONDITIONTAB", "Condition"));
    Tabs->tabBar()->setTabTextColor(1, condition.isEmpty() ? palette().color(QPalette::WindowText) : QColor(Qt::blue));
    lblCondition->setText(MarkupDelegate::ToHtml(QStringLiteral("<TextBlock TextWrapping='Wrap'>") +
                                       ConditionDisplay(condition, true, false) + QStringLiteral("</TextBlock>")));
}

void frmTriggerAction::FillFieldsTree()
{
    TreeFields->clear();
    const bool script = Action->ClassName() == QStringLiteral("Script");
    auto drag = [script](const char *Function, const QString &Name) {
        return script ? Call(Function, Name) : u'%' + Name + u'%';
    };
    auto *fields = new QTreeWidgetItem(TreeFields, {EditorText("TREEFIELDS", "Fields")});
    fields->setData(0, FieldsTree::KeyRole, QStringLiteral("ROOT"));
    int position = 0;
    for (const clsTriggerField *field : Trigger->FieldsToProcess()) {
        ++position;
        Node(fields, u'%' + field->Name + u'%', QStringLiteral("f%1").arg(position), drag("FIELDS_Value", field->Name));
    }
    fields->setExpanded(true);

    QStringList variables;
    if (Trigger->Parent)
        for (const QString &name : Trigger->Parent->GlobalVarList().split(u',', Qt::SkipEmptyParts))
            variables << QString(name).remove(u'%');
    for (const ActionItem *action : Trigger->ActionList())
        if (const auto *set = action->As<clsActionSetVariable>())
            if (!set->Name.isEmpty() && !variables.contains(set->Name))
                variables << set->Name;
    if (!variables.isEmpty()) {
        auto *globals = new QTreeWidgetItem(TreeFields, {EditorText("TREEGLOBALS", "Global Variables")});
        globals->setData(0, FieldsTree::KeyRole, QStringLiteral("GLOBALS"));
        for (int number = 0; number < variables.size(); ++number)
            Node(globals, u'%' + variables.at(number) + u'%', QStringLiteral("v%1").arg(number + 1),
                 drag("AccountVariable", variables.at(number)));
    }

    auto *builtIn = new QTreeWidgetItem(TreeFields, {EditorText("TREEBUILTIN", "Built In")});
    builtIn->setData(0, FieldsTree::KeyRole, QStringLiteral("BUILTIN"));
    for (const QString &token : MessageTokenList().split(u',', Qt::SkipEmptyParts))
        Node(builtIn, token, QStringLiteral("bi") + token, script ? QString(token).remove(u'%') : token);

    if (clsUserOrganization *organization = Organizations().Item(Global.UserOrganizationID);
        organization && organization->NumConstants() > 0) {
        auto *constants = new QTreeWidgetItem(TreeFields, {EditorText("TREECONSTANTS", "Constants")});
        constants->setData(0, FieldsTree::KeyRole, QStringLiteral("ORG"));
        for (int number = 1; number <= organization->NumConstants(); ++number) {
            const QString name = organization->ConstantName(number);
            Node(constants, u'%' + name + u'%', QStringLiteral("cn") + name, drag("Constant", name));
        }
    }
}

void frmTriggerAction::EditCondition()
{
    frmCondition editor(*Trigger, Action, this);
    editor.FillCondition();
    editor.exec();
    Global.DialogCancelled = false;
    ShowCondition();
}

void frmTriggerAction::Accept()
{
    Action->setEnabled(chkEnabled->isChecked());
    if (ActiveView && !ActiveView->Save())
        return;
    Global.DialogCancelled = false;
    accept();
}

void frmTriggerAction::reject()
{
    Global.DialogCancelled = true;
    QDialog::reject();
}

void frmTriggerAction::done(int Result)
{
    if (Action) {
        SaveUserSetting(Global.ProductName, SettingKey(".Height"), height());
        SaveUserSetting(Global.ProductName, SettingKey(".Width"), width());
        SaveUserSetting(Global.ProductName, SettingKey(".Left"), x());
        SaveUserSetting(Global.ProductName, SettingKey(".Top"), y());
    }
    QDialog::done(Result);
}
