#include "ctlActionDB.h"
#include "DatabasePanel.h"
#include "actions/ActionItem.h"
#include "actions/clsActionDB.h"
#include "editors/EditorBoxes.h"
#include "model/TriggerSQL.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>

ctlActionDB::ctlActionDB(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("DatabaseUpdate"));
    optDBInt = new QRadioButton(EditorText("DBINTERNAL", "Internal Database"), this);
    optDBExt = new QRadioButton(EditorText("DBEXTERNAL", "External Database"), this);
    lblConnection = new QLabel(this);
    txtConnectionString = new QLineEdit(this);
    txtConnectionString->setMinimumWidth(320);
    btnConnectionString = new QPushButton(QStringLiteral("..."), this);
    btnConnectionString->setMaximumWidth(32);
    btnConnectionTest = new QPushButton(EditorText("TEST", "Test"), this);
    cmboDialect = new QComboBox(this);
    cmboDialect->addItems(DatabasePanel::DialectLabels());
    txtInsert = DatabasePanel::StatementPane(this, true);
    txtUpdate = DatabasePanel::StatementPane(this, true);
    txtSelect = DatabasePanel::StatementPane(this, true);
    Statements = new QTabWidget(this);
    Statements->addTab(txtInsert, EditorText("SQLINSERT", "Insert"));
    Statements->addTab(txtUpdate, EditorText("SQLUPDATE", "Update"));
    Statements->addTab(txtSelect, EditorText("SQLSELECT", "Select"));

    connect(optDBInt, &QRadioButton::toggled, this, [this] { ShowChoice(); });
    connect(optDBInt, &QRadioButton::clicked, this, [this] { Dirty = true; });
    connect(optDBExt, &QRadioButton::clicked, this, [this] { Dirty = true; });
    connect(cmboDialect, &QComboBox::currentIndexChanged, this, [this] { ShowChoice(); });
    connect(btnConnectionString, &QPushButton::clicked, this, [this] { DatabasePanel::EditConnectionString(this, txtConnectionString); });
    connect(btnConnectionTest, &QPushButton::clicked, this,
            [this] { DatabasePanel::TestConnection(this, txtConnectionString->text().trimmed()); });

    auto *choice = new QHBoxLayout;
    choice->addWidget(optDBInt);
    choice->addWidget(optDBExt);
    choice->addStretch();
    auto *connection = new QHBoxLayout;
    connection->addWidget(txtConnectionString, 1);
    connection->addWidget(btnConnectionString);
    connection->addWidget(btnConnectionTest);
    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(choice);
    form->addRow(lblConnection);
    form->addRow(connection);
    form->addRow(EditorText("SQLDIALECT", "SQL Dialect:"), cmboDialect);
    form->addRow(Statements);
    optDBExt->setChecked(true);
    WatchEdits();
}

void ctlActionDB::DisableInternal()
{
    optDBExt->setChecked(true);
    optDBInt->setEnabled(false);
}

void ctlActionDB::ShowChoice()
{
    const bool internal = optDBInt->isChecked();
    lblConnection->setText(internal ? EditorText("DBINTAUTO", "Internal Database Will Be Created Automatically")
                                    : EditorText("DBEXTCONSTRING", "External Database Connection String:"));
    for (QWidget *control : {static_cast<QWidget *>(txtConnectionString), static_cast<QWidget *>(btnConnectionString),
                             static_cast<QWidget *>(btnConnectionTest), static_cast<QWidget *>(cmboDialect)})
        control->setEnabled(!internal);
    const QStringList statements
        = DatabasePanel::GeneratedStatements(ThisTrigger, internal ? DialectSQLite : cmboDialect->currentIndex());
    txtInsert->setPlainText(statements.value(0));
    txtUpdate->setPlainText(statements.value(1));
    txtSelect->setPlainText(statements.value(2));
}

void ctlActionDB::Load()
{
    const auto *action = ThisAction->As<clsActionDB>();
    txtConnectionString->setText(action->ConnectionString);
    cmboDialect->setCurrentIndex(qBound(0, int(action->Dialect), int(cmboDialect->count()) - 1));
    (action->UseInternal && optDBInt->isEnabled() ? optDBInt : optDBExt)->setChecked(true);
    ShowChoice();
    Dirty = false;
}

bool ctlActionDB::Save()
{
    const bool internal = optDBInt->isChecked();
    if (!internal && txtConnectionString->text().trimmed().isEmpty())
        return Refuse(EditorText("ERRORNODBCONSTRING",
                                 "You must specify a connection string if you want to update a SQL database."));
    auto *action = ThisAction->As<clsActionDB>();
    action->ConnectionString = txtConnectionString->text().trimmed();
    action->UseInternal = internal;
    action->Dialect = qint16(cmboDialect->currentIndex());
    return true;
}
