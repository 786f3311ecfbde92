#include "EditorSession.h"
#include "TestRegistry.h"
#include "actions/clsActionLogical.h"
#include "actions/clsActionPassTo.h"
#include "actions/clsActionScript.h"
#include "actions/clsActionSetVariable.h"
#include "actions/panels/ActionEditors.h"
#include "actions/panels/ctlActionPassTo.h"
#include "actions/panels/ctlActionSetVariable.h"
#include "editors/FieldsTree.h"
#include "editors/frmTriggerAction.h"
#include "model/clsAccountTrigger.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

namespace {

// A control of a family that comes later: it registers itself and the
// dialog shows it without knowing it.
class ctlActionProbe : public ActionEditor
{
public:
    using ActionEditor::ActionEditor;
    int Loads = 0;
    bool Accept = true;
    void Load() override { ++Loads; }
    bool Save() override { return Accept || Refuse(QStringLiteral("Probe refuses")); }
};

QStringList Children(const QTreeWidgetItem *Root, int Role)
{
    QStringList texts;
    for (int child = 0; child < Root->childCount(); ++child)
        texts << Root->child(child)->data(0, Role).toString();
    return texts;
}

QTreeWidgetItem *Root(FieldsTree *Tree, const QString &Key)
{
    for (int at = 0; at < Tree->topLevelItemCount(); ++at)
        if (Tree->topLevelItem(at)->data(0, FieldsTree::KeyRole).toString() == Key)
            return Tree->topLevelItem(at);
    return nullptr;
}

} // namespace

// The action dialog and the editor controls of the flow and value kinds.
class tst_frmTriggerAction : public QObject
{
    Q_OBJECT
    clsAccount account;
    clsAccountTrigger *trigger = nullptr;

    ActionItem *Add(std::unique_ptr<ActionItem> Action) { return trigger->ActionList().Add(std::move(Action)); }

private slots:
    void initTestCase()
    {
        auto owned = std::make_unique<clsAccountTrigger>();
        owned->Name = QStringLiteral("Orders");
        trigger = account.Triggers.Add(std::move(owned));
        for (const char *name : {"Customer", "Total"}) {
            auto field = std::make_unique<clsTriggerField>();
            field->Name = QString::fromLatin1(name);
            trigger->FieldsToProcess().Add(std::move(field));
        }
    }

    void theSetControlStoresEveryOperationAndTheLookup()
    {
        clsActionSetVariable set;
        set.Name = QStringLiteral("Sum");
        set.Condition = QStringLiteral("<Lines><Line>|%Total%|&gt;|5</Line></Lines>");
        ActionItem *action = Add(ActionItem::Make(set));
        frmTriggerAction dialog;
        dialog.Trigger = trigger;
        dialog.Action = action;
        dialog.Prepare();
        auto *control = qobject_cast<ctlActionSetVariable *>(dialog.ActiveView);
        QVERIFY(control);
        QCOMPARE(dialog.btnClassImage->text(), QStringLiteral("Set Variable"));
        QCOMPARE(dialog.Tabs->tabBar()->tabTextColor(1), QColor(Qt::blue));
        QVERIFY(dialog.lblCondition->text().contains(QStringLiteral("%Total%")));
        QCOMPARE(control->cmboOperation->count(), 31);
        QCOMPARE(control->cmboOperation->itemText(30), QStringLiteral("Create Global Unique Identifier"));
        QVERIFY(!control->Dirty);
        control->cmboOperation->setCurrentIndex(29);
        control->txtValue->setPlainText(QStringLiteral("%Customer%"));
        QVERIFY(control->Dirty);
        dialog.chkEnabled->setChecked(false);
        dialog.btnOK->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        const auto *stored = action->As<clsActionSetVariable>();
        QCOMPARE(stored->Operation, 29);
        QCOMPARE(stored->Value, QStringLiteral("%Customer%"));
        QVERIFY(!stored->DBLookup);
        QVERIFY(!action->Enabled());

        // The lookup tab open means a lookup: all three of its boxes are needed.
        frmTriggerAction lookup;
        lookup.Trigger = trigger;
        lookup.Action = action;
        lookup.Prepare();
        auto *again = qobject_cast<ctlActionSetVariable *>(lookup.ActiveView);
        QCOMPARE(again->cmboOperation->currentIndex(), 29);
        QVERIFY(!lookup.chkEnabled->isChecked());
        again->Tabs->setCurrentIndex(ctlActionSetVariable::TabLookup);
        again->txtLUConnection->setText(QStringLiteral("Driver=SQLite3;Database=/tmp/a.db"));
        {
            ModalHandler modal;
            lookup.btnOK->click();
            QCOMPARE(modal.Texts, QStringList{QStringLiteral(
                                      "You must specify database Connection String, SQL Statement and Return Field if "
                                      "you want to assign using a database lookup.")});
        }
        QVERIFY(lookup.isVisible() || lookup.result() != int(QDialog::Accepted));
        QVERIFY(!action->As<clsActionSetVariable>()->DBLookup);
        again->txtLUSQL->setPlainText(QStringLiteral("SELECT 1"));
        again->txtLUField->setText(QStringLiteral("one"));
        lookup.btnOK->click();
        QVERIFY(action->As<clsActionSetVariable>()->DBLookup);
        QCOMPARE(action->As<clsActionSetVariable>()->Value, QStringLiteral("%Customer%"));

        again->cmboName->setEditText(QStringLiteral("  "));
        ModalHandler modal;
        QVERIFY(!again->Save());
        QCOMPARE(modal.Texts, QStringList{QStringLiteral("You must enter a name")});
    }

    void thePassToControlNeedsATrigger()
    {
        ActionItem *action = Add(ActionItem::Make(clsActionPassTo()));
        ResetGlobalCollections();
        auto listed = std::make_unique<clsAccount>();
        listed->Name = QStringLiteral("Shop");
        auto target = std::make_unique<clsAccountTrigger>();
        target->Name = QStringLiteral("Refunds");
        const QString targetID = target->TriggerID;
        listed->Triggers.Add(std::move(target));
        Accounts().Add(std::move(listed));
        frmTriggerAction dialog;
        dialog.Trigger = trigger;
        dialog.Action = action;
        dialog.Prepare();
        auto *control = qobject_cast<ctlActionPassTo *>(dialog.ActiveView);
        QCOMPARE(control->cmboPassTo->itemText(0), QStringLiteral("Shop - Refunds"));
        QCOMPARE(control->cmboPassTo->currentIndex(), -1);
        {
            ModalHandler modal;
            QVERIFY(!control->Save());
            QCOMPARE(modal.Texts, QStringList{QStringLiteral("You Must Select A Trigger To Pass To")});
        }
        control->cmboPassTo->setCurrentIndex(0);
        QVERIFY(control->Save());
        QCOMPARE(action->As<clsActionPassTo>()->TriggerID, targetID);
        ResetGlobalCollections();
    }

    void theTreeOffersFieldsVariablesAndBuiltIns()
    {
        account.GlobalVarList(true);
        clsActionSetVariable set;
        set.Name = QStringLiteral("Counter");
        Add(ActionItem::Make(set));
        ActionItem *script = Add(ActionItem::Make(clsActionScript()));
        ActionItem *logical = Add(ActionItem::Make(clsActionLogical()));
        frmTriggerAction plain;
        plain.Trigger = trigger;
        plain.Action = logical;
        plain.FillFieldsTree();
        QTreeWidgetItem *fields = Root(plain.TreeFields, QStringLiteral("ROOT"));
        QVERIFY(fields && fields->isExpanded());
        QCOMPARE(Children(fields, Qt::DisplayRole), QStringList({"%Customer%", "%Total%"}));
        QCOMPARE(Children(fields, FieldsTree::KeyRole), QStringList({"f1", "f2"}));
        QTreeWidgetItem *globals = Root(plain.TreeFields, QStringLiteral("GLOBALS"));
        QVERIFY(globals);
        QVERIFY(Children(globals, Qt::DisplayRole).contains(QStringLiteral("%Counter%")));
        QTreeWidgetItem *builtIn = Root(plain.TreeFields, QStringLiteral("BUILTIN"));
        QVERIFY(Children(builtIn, Qt::DisplayRole).contains(QStringLiteral("%msg_subject%")));
        QVERIFY(!Root(plain.TreeFields, QStringLiteral("ORG")));

        // A script takes calls into its object model instead of tokens.
        frmTriggerAction scripted;
        scripted.Trigger = trigger;
        scripted.Action = script;
        scripted.FillFieldsTree();
        QCOMPARE(Children(Root(scripted.TreeFields, QStringLiteral("ROOT")), FieldsTree::DragRole),
                 QStringList({"FIELDS_Value(\"Customer\")", "FIELDS_Value(\"Total\")"}));
        QVERIFY(Children(Root(scripted.TreeFields, QStringLiteral("GLOBALS")), FieldsTree::DragRole)
                    .contains(QStringLiteral("AccountVariable(\"Counter\")")));
        QVERIFY(Children(Root(scripted.TreeFields, QStringLiteral("BUILTIN")), FieldsTree::DragRole)
                    .contains(QStringLiteral("msg_subject")));
    }

    void aKindWithoutAControlKeepsItsSettings()
    {
        const QString fragment =
            QStringLiteral("<Class>FTP</Class><ID>F1</ID><Enabled>-1</Enabled><Server>ftp.example</Server>");
        ActionItem *action = trigger->ActionList().AddXML(fragment);
        QVERIFY(action);
        frmTriggerAction dialog;
        dialog.Trigger = trigger;
        dialog.Action = action;
        dialog.Prepare();
        QVERIFY(!dialog.ActiveView);
        QVERIFY(dialog.lblKept->isVisibleTo(&dialog));
        dialog.btnOK->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(action->XML(), fragment);
    }

    void aLaterFamilyPlugsItsControlIn()
    {
        ctlActionProbe *made = nullptr;
        RegisterActionEditor(QStringLiteral("Popup"), [&made](QWidget *Parent) {
            made = new ctlActionProbe(Parent);
            return made;
        });
        ActionItem *action = trigger->ActionList().AddXML(QStringLiteral("<Class>Popup</Class><ID>P1</ID>"));
        frmTriggerAction dialog;
        dialog.Trigger = trigger;
        dialog.Action = action;
        dialog.Prepare();
        QVERIFY(made);
        QCOMPARE(dialog.ActiveView, made);
        QCOMPARE(made->Loads, 1);
        QCOMPARE(made->ThisAction, action);
        made->Accept = false;
        {
            ModalHandler modal;
            dialog.btnOK->click();
            QCOMPARE(modal.Texts, QStringList{QStringLiteral("Probe refuses")});
        }
        QVERIFY(dialog.result() != int(QDialog::Accepted));
        Global.DialogCancelled = false;
        dialog.btnCancel->click();
        QVERIFY(Global.DialogCancelled);
    }

    void theDialogKeepsItsSizePerKind()
    {
        ActionItem *action = Add(ActionItem::Make(clsActionScript()));
        {
            frmTriggerAction dialog;
            dialog.Trigger = trigger;
            dialog.Action = action;
            dialog.Prepare();
            QVERIFY(!dialog.btnOK->isDefault()); // the script editor takes Enter itself
            dialog.resize(777, 555);
            dialog.btnCancel->click();
        }
        frmTriggerAction again;
        again.Trigger = trigger;
        again.Action = action;
        again.Prepare();
        QCOMPARE(again.size(), QSize(777, 555));
    }
};

POSTVANE_TEST(tst_frmTriggerAction)
#include "tst_frmTriggerAction.moc"
