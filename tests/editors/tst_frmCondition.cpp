#include "EditorSession.h"
#include "TestRegistry.h"
#include "actions/clsActionLogical.h"
#include "editors/frmCondition.h"
#include "model/clsAccountTrigger.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

// The condition editor: rows to the fragment and back, the joiner rules, and
// where the fragment goes.
class tst_frmCondition : public QObject
{
    Q_OBJECT

    static ConditionLine Line(const char *Joiner, const char *Left, const char *Operator, const char *Right)
    {
        return {QString::fromUtf8(Joiner), QString::fromUtf8(Left), QString::fromUtf8(Operator),
                QString::fromUtf8(Right)};
    }

private slots:
    void rowsBecomeTheFragmentAndComeBack()
    {
        clsAccount account;
        account.Name = QStringLiteral("Shop");
        auto owned = std::make_unique<clsAccountTrigger>();
        owned->Name = QStringLiteral("Orders");
        clsAccountTrigger &trigger = *account.Triggers.Add(std::move(owned));
        {
            frmCondition editor(trigger, nullptr);
            editor.FillCondition();
            QCOMPARE(editor.windowTitle(), QStringLiteral("Trigger Condition: Shop - Orders"));
            QCOMPARE(editor.RowCount(), 1);
            editor.SetRow(0, Line("", "%Total%", ">=", " 100 "));
            editor.AddRow();
            editor.SetRow(1, Line("Or", "%msg_subject%", "?", "urgent"));
            editor.AddRow();
            editor.SetRow(2, Line("", "", "=", "orphan right side"));
            editor.AddRow();
            editor.SetRow(3, Line("And", "%Customer%", "!", ""));
            editor.chkScriptEnabled->setChecked(true);
            editor.Script = QStringLiteral("Function Main\r\n  Main = 1 < 2\r\nEnd Function");
            editor.btnOK->click();
        }
        QVERIFY2(trigger.Condition.startsWith(QStringLiteral(
                     "<Lines><Line>|%Total%|&gt;=|100</Line><Line>Or|%msg_subject%|?|urgent</Line>"
                     "<Line>And|%Customer%|!|</Line></Lines><ScriptEnabled>-1</ScriptEnabled><Script>")),
                 qPrintable(trigger.Condition));
        QCOMPARE(ReadCondition(trigger.Condition).Script, QStringLiteral("Function Main\r\n  Main = 1 < 2\r\nEnd Function"));

        frmCondition again(trigger, nullptr);
        again.FillCondition();
        QCOMPARE(again.RowCount(), 3);
        QCOMPARE(again.Row(0).LeftSide, QStringLiteral("%Total%"));
        QCOMPARE(again.Row(0).Operator, QStringLiteral(">="));
        QCOMPARE(again.Row(1).Joiner, QStringLiteral("Or"));
        QCOMPARE(again.Row(2).Operator, QStringLiteral("!"));
        QVERIFY(again.chkScriptEnabled->isChecked() && again.btnEditScript->isEnabled());
        QCOMPARE(again.ConditionXMLText(), trigger.Condition);
    }

    void joinersFollowTheRows()
    {
        clsAccountTrigger trigger;
        frmCondition editor(trigger, nullptr);
        editor.FillCondition();
        editor.AddRow();
        // A new row below the first is joined with And at once.
        QCOMPARE(editor.Row(1).Joiner, QStringLiteral("And"));
        editor.SetRow(1, Line("", "", "=", ""));
        editor.Grid->setCurrentCell(0, 1);
        editor.Grid->setCurrentCell(1, 1);
        QCOMPARE(editor.Row(1).Joiner, QStringLiteral("And"));
        // Filling the left side of a later row with an empty joiner joins it too.
        editor.SetRow(1, Line("", "", "=", ""));
        editor.Grid->setCurrentCell(0, 1);
        qobject_cast<QComboBox *>(editor.Grid->cellWidget(1, 1))->setEditText(QStringLiteral("%msg_to%"));
        QCOMPARE(editor.Row(1).Joiner, QStringLiteral("And"));
        // The first row keeps no joiner, also when a joined row moves up.
        editor.SetRow(1, Line("Or", "%msg_to%", "=", "a@b.example"));
        editor.Grid->setCurrentCell(0, 1);
        editor.btnDelete->click();
        QCOMPARE(editor.RowCount(), 1);
        editor.btnOK->click();
        QCOMPARE(trigger.Condition, QStringLiteral("<Lines><Line>|%msg_to%|=|a@b.example</Line></Lines>"));
    }

    void aScriptOnlyConditionShowsOneEmptyRow()
    {
        clsAccountTrigger trigger;
        trigger.Condition = QStringLiteral("<Lines></Lines><ScriptEnabled>-1</ScriptEnabled><Script>x</Script>");
        frmCondition editor(trigger, nullptr);
        editor.FillCondition();
        QCOMPARE(editor.RowCount(), 1);
        QCOMPARE(editor.Row(0).LeftSide, QString());
        QCOMPARE(editor.Script, QStringLiteral("x"));
    }

    void anActionsConditionGoesToTheAction()
    {
        clsAccountTrigger trigger;
        trigger.Condition = QStringLiteral("<Lines><Line>|%a%|=|1</Line></Lines>");
        ActionItem *action = trigger.ActionList().Add(ActionItem::Make(clsActionLogical()));
        frmCondition editor(trigger, action);
        editor.FillCondition();
        QCOMPARE(editor.windowTitle(), QStringLiteral("Action Condition"));
        QCOMPARE(editor.Row(0).LeftSide, QString());
        editor.SetRow(0, Line("", "%b%", "<>", "2"));
        editor.btnOK->click();
        QCOMPARE(action->Condition(), QStringLiteral("<Lines><Line>|%b%|&lt;&gt;|2</Line></Lines>"));
        QCOMPARE(trigger.Condition, QStringLiteral("<Lines><Line>|%a%|=|1</Line></Lines>"));
    }

    void clearAsksAndEmptiesTheCondition()
    {
        clsAccountTrigger trigger;
        trigger.Condition = QStringLiteral("<Lines><Line>|%a%|=|1</Line></Lines>");
        frmCondition editor(trigger, nullptr);
        editor.FillCondition();
        {
            ModalHandler modal(QMessageBox::No);
            editor.btnClear->click();
            QCOMPARE(modal.Texts, QStringList{QStringLiteral("Clear Condition\nAre you sure you want to clear this condition?")});
        }
        QVERIFY(!trigger.Condition.isEmpty());
        ModalHandler modal(QMessageBox::Yes);
        editor.btnClear->click();
        QCOMPARE(trigger.Condition, QString());
        QCOMPARE(editor.result(), int(QDialog::Accepted));
    }

    void cancelChangesNothing()
    {
        clsAccountTrigger trigger;
        frmCondition editor(trigger, nullptr);
        editor.FillCondition();
        editor.SetRow(0, Line("", "%a%", "=", "1"));
        Global.DialogCancelled = false;
        editor.btnCancel->click();
        QVERIFY(Global.DialogCancelled);
        QCOMPARE(trigger.Condition, QString());
    }
};

POSTVANE_TEST(tst_frmCondition)
#include "tst_frmCondition.moc"
