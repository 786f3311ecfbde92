#include "ctlActionSetVariable.h"
#include "actions/ActionItem.h"
#include "actions/clsActionSetVariable.h"
#include "editors/EditorBoxes.h"
#include "editors/frmInputEditor.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

ctlActionSetVariable::ctlActionSetVariable(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("Set"));
    cmboName = new QComboBox(this);
    cmboName->setEditable(true);
    cmboName->setMinimumWidth(260);
    txtValue = new QPlainTextEdit(this);
    txtValue->setMaximumHeight(90);
    cmboOperation = new QComboBox(this);
    chkAppend = new QCheckBox(EditorText("SETAPPEND", "Append To Existing Value"), this);
    chkPersist = new QCheckBox(EditorText("SETPERSIST", "Persist Value Between Messages"), this);
    txtLUConnection = new QLineEdit(this);
    txtLUSQL = new QPlainTextEdit(this);
    txtLUSQL->setMaximumHeight(90);
    txtLUField = new QLineEdit(this);
    btnEditSQL = new QPushButton(EditorText("EDITSQL", "Edit SQL..."), this);
    connect(btnEditSQL, &QPushButton::clicked, this, [this] {
        frmInputEditor editor(this);
        editor.setWindowTitle(EditorText("SQLSTATEMENT", "SQL Statement"));
        editor.setText(txtLUSQL->toPlainText());
        if (editor.exec() == QDialog::Accepted) {
            txtLUSQL->setPlainText(editor.text());
            Dirty = true;
        }
    });

    auto *valuePage = new QWidget(this);
    auto *valueForm = new QFormLayout(valuePage);
    valueForm->addRow(EditorText("SETVALUE", "Value:"), txtValue);
    auto *lookupPage = new QWidget(this);
    auto *lookupForm = new QFormLayout(lookupPage);
    lookupForm->addRow(EditorText("CONNECTIONSTRING", "Connection String:"), txtLUConnection);
    lookupForm->addRow(EditorText("SQLSTATEMENT", "SQL Statement"), txtLUSQL);
    lookupForm->addRow(QString(), btnEditSQL);
    lookupForm->addRow(EditorText("RETURNFIELD", "Return Field:"), txtLUField);
    Tabs = new QTabWidget(this);
    Tabs->addTab(valuePage, EditorText("SETTABVALUE", "Assign Value"));
    Tabs->addTab(lookupPage, EditorText("SETTABLOOKUP", "Database Lookup"));

    auto *form = new QFormLayout;
    form->addRow(EditorText("SETNAME", "Variable Name:"), cmboName);
    form->addRow(Tabs);
    form->addRow(EditorText("SETOPERATION", "Then:"), cmboOperation);
    form->addRow(chkAppend);
    form->addRow(chkPersist);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(form);
    WatchEdits();
}

void ctlActionSetVariable::Load()
{
    const auto *action = ThisAction->As<clsActionSetVariable>();
    cmboOperation->clear();
    for (int number = 0; number < clsActionSetVariable::OperationCount; ++number)
        cmboOperation->addItem(clsActionSetVariable::OperationDesc(number));
    ListVariables(cmboName, action->Name);
    txtValue->setPlainText(action->Value);
    cmboOperation->setCurrentIndex(qBound(0, int(action->Operation), clsActionSetVariable::OperationCount - 1));
    chkAppend->setChecked(action->Append);
    chkPersist->setChecked(action->Persist);
    txtLUConnection->setText(action->DBConnectionString);
    txtLUSQL->setPlainText(action->DBSQL);
    txtLUField->setText(action->DBReturnField);
    Tabs->setCurrentIndex(action->DBLookup ? TabLookup : TabValue);
    Dirty = false;
}

bool ctlActionSetVariable::Save()
{
    const QString name = cmboName->currentText().trimmed();
    if (name.isEmpty())
        return Refuse(EditorText("NONAME", "You must enter a name"));
    const bool lookup = Tabs->currentIndex() == TabLookup;
    if (lookup && (txtLUConnection->text().trimmed().isEmpty() || txtLUSQL->toPlainText().trimmed().isEmpty() ||
                   txtLUField->text().trimmed().isEmpty()))
        return Refuse(EditorText("NOLOOKUPFIELD",
                                 "You must specify database Connection String, SQL Statement and Return Field if you "
                                 "want to assign using a database lookup."));
    auto *action = ThisAction->As<clsActionSetVariable>();
    action->Name = name;
    action->Value = txtValue->toPlainText();
    action->Operation = qint16(cmboOperation->currentIndex());
    action->Append = chkAppend->isChecked();
    action->Persist = chkPersist->isChecked();
    action->DBLookup = lookup;
    action->DBConnectionString = txtLUConnection->text();
    action->DBSQL = txtLUSQL->toPlainText();
    action->DBReturnField = txtLUField->text();
    return true;
}
