#include "ctlActionDBCustom.h"
#include "DatabasePanel.h"
#include "actions/ActionItem.h"
#include "actions/clsActionDBCustom.h"
#include "editors/EditorBoxes.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>

ctlActionDBCustom::ctlActionDBCustom(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("DatabaseUpdateCustom"));
    txtConnectionString = new QLineEdit(this);
    txtConnectionString->setMinimumWidth(320);
    btnConnectionString = new QPushButton(QStringLiteral("..."), this);
    btnConnectionString->setMaximumWidth(32);
    btnConnectionTest = new QPushButton(EditorText("TEST", "Test"), this);
    cmboDialect = new QComboBox(this);
    cmboDialect->addItems(DatabasePanel::DialectLabels());
    txtTimeout = new QSpinBox(this);
    txtTimeout->setRange(0, 3600);
    txtTimeout->setSpecialValueText(EditorText("DBTIMEOUTDEFAULT", "Driver Default"));
    txtTimeout->setSuffix(QStringLiteral(" s"));
    txtSQL = DatabasePanel::StatementPane(this, false);
    txtSQLUpdate = DatabasePanel::StatementPane(this, false);
    txtSQLSelect = DatabasePanel::StatementPane(this, false);
    Statements = new QTabWidget(this);
    Statements->addTab(txtSQL, EditorText("SQLINSERT", "Insert"));
    Statements->addTab(txtSQLUpdate, EditorText("SQLUPDATE", "Update"));
    Statements->addTab(txtSQLSelect, EditorText("SQLSELECT", "Select"));

    connect(cmboDialect, &QComboBox::activated, this, [this] { Generate(false); });
    connect(txtTimeout, &QSpinBox::valueChanged, this, [this] { Dirty = true; });
    connect(btnConnectionString, &QPushButton::clicked, this,
            [this] { DatabasePanel::EditConnectionString(this, txtConnectionString); });
    connect(btnConnectionTest, &QPushButton::clicked, this,
            [this] { DatabasePanel::TestConnection(this, txtConnectionString->text().trimmed()); });

    auto *connection = new QHBoxLayout;
    connection->addWidget(txtConnectionString, 1);
    connection->addWidget(btnConnectionString);
    connection->addWidget(btnConnectionTest);
    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(EditorText("CONNECTIONSTRING", "Connection String:"), connection);
    form->addRow(EditorText("SQLDIALECT", "SQL Dialect:"), cmboDialect);
    form->addRow(EditorText("DBTIMEOUT", "Command Time-out:"), txtTimeout);
    form->addRow(Statements);
    WatchEdits();
}

void ctlActionDBCustom::Generate(bool EmptyOnly)
{
    const QStringList generated = DatabasePanel::GeneratedStatements(ThisTrigger, cmboDialect->currentIndex());
    const QList<QPlainTextEdit *> panes{txtSQL, txtSQLUpdate, txtSQLSelect};
    for (int n = 0; n < panes.size(); ++n)
        if (!EmptyOnly || panes.at(n)->toPlainText().trimmed().isEmpty())
            panes.at(n)->setPlainText(generated.value(n));
}

void ctlActionDBCustom::Load()
{
    const auto *action = ThisAction->As<clsActionDBCustom>();
    txtConnectionString->setText(action->ConnectionString);
    cmboDialect->setCurrentIndex(qBound(0, int(action->SQLDialect), int(cmboDialect->count()) - 1));
    txtTimeout->setValue(action->Timeout);
    txtSQL->setPlainText(action->SQLStatement);
    txtSQLUpdate->setPlainText(action->SQLUpdateStatement);
    txtSQLSelect->setPlainText(action->SQLSelectStatement);
    Generate(true);
    Dirty = false;
}

bool ctlActionDBCustom::Save()
{
    if (txtConnectionString->text().trimmed().isEmpty())
        return Refuse(EditorText("ERRORNODBCONSTRING",
                                 "You must specify a connection string if you want to update a SQL database."));
    auto *action = ThisAction->As<clsActionDBCustom>();
    action->ConnectionString = txtConnectionString->text().trimmed();
    action->SQLDialect = qint16(cmboDialect->currentIndex());
    action->Timeout = txtTimeout->value();
    action->SQLStatement = txtSQL->toPlainText();
    action->SQLUpdateStatement = txtSQLUpdate->toPlainText();
    action->SQLSelectStatement = txtSQLSelect->toPlainText();
    return true;
}
