#include "ctlActionAZ.h"
#include "DatabasePanel.h"
#include "actions/ActionItem.h"
#include "actions/clsActionAZ.h"
#include "editors/EditorBoxes.h"
#include "engine/databases/ConnectionString.h"
#include "model/TriggerSQL.h"

#include <QFormLayout>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>

ctlActionAZ::ctlActionAZ(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("Azure"));
    txtServer = new QLineEdit(this);
    txtDatabase = new QLineEdit(this);
    txtUser = new QLineEdit(this);
    txtPassword = new QLineEdit(this);
    txtPassword->setEchoMode(QLineEdit::Password);
    btnConnectionTest = new QPushButton(EditorText("TEST", "Test"), this);
    txtDetails = new QPlainTextEdit(this);
    txtDetails->setReadOnly(true);
    txtDetails->setMaximumHeight(60);
    FrameSQLModified = new QCheckBox(EditorText("AZMODSQL", "Use A Modified SQL Statement"), this);
    btnInsert = new QPushButton(EditorText("SQLINSERT", "Insert"), this);
    btnSelect = new QPushButton(EditorText("SQLSELECT", "Select"), this);
    btnUpdate = new QPushButton(EditorText("SQLUPDATE", "Update"), this);
    txtSQL = DatabasePanel::StatementPane(this, true);
    txtSQLSelect = DatabasePanel::StatementPane(this, true);
    txtSQLUpdate = DatabasePanel::StatementPane(this, true);
    Statements = new QTabWidget(this);
    Statements->tabBar()->hide();
    for (QPlainTextEdit *pane : {txtSQL, txtSQLSelect, txtSQLUpdate})
        Statements->addTab(pane, QString());
    const QList<QPushButton *> shows{btnInsert, btnSelect, btnUpdate};
    for (int tab = 0; tab < shows.size(); ++tab)
        connect(shows.at(tab), &QPushButton::clicked, this, [this, tab] { Statements->setCurrentIndex(tab); });

    for (QLineEdit *box : {txtServer, txtDatabase, txtUser, txtPassword})
        connect(box, &QLineEdit::textChanged, this, [this] { ShowDetails(); });
    connect(btnConnectionTest, &QPushButton::clicked, this, [this] { DatabasePanel::TestConnection(this, Connection()); });
    connect(FrameSQLModified, &QCheckBox::clicked, this, [this](bool On) {
        Dirty = true;
        if (On && QuestionBox(this, QString(),
                              EditorText("USEMODSQL1", "Use A Modified SQL Statement To Update Your Database?"))
                      != QMessageBox::Yes)
            On = false;
        SetModified(On);
    });

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(FrameSQLModified);
    buttons->addStretch();
    buttons->addWidget(btnInsert);
    buttons->addWidget(btnSelect);
    buttons->addWidget(btnUpdate);
    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(EditorText("AZSERVER", "Server:"), txtServer);
    form->addRow(EditorText("AZDATABASE", "Database:"), txtDatabase);
    form->addRow(EditorText("AZUSER", "User Name:"), txtUser);
    form->addRow(EditorText("AZPASSWORD", "Password:"), txtPassword);
    form->addRow(QString(), btnConnectionTest);
    form->addRow(txtDetails);
    form->addRow(buttons);
    form->addRow(Statements);
    WatchEdits();
}

QString ctlActionAZ::Connection() const
{
    clsActionAZ typed;
    return typed.ConnectionString(txtServer->text().trimmed(), txtDatabase->text().trimmed(), txtUser->text().trimmed(),
                                  txtPassword->text());
}

void ctlActionAZ::ShowDetails()
{
    txtDetails->setPlainText(ConnectionString::Masked(Connection()));
}

void ctlActionAZ::SetModified(bool Modified)
{
    FrameSQLModified->setChecked(Modified);
    for (QPlainTextEdit *pane : {txtSQL, txtSQLSelect, txtSQLUpdate})
        pane->setReadOnly(!Modified);
    if (Modified)
        return;
    const QStringList generated = DatabasePanel::GeneratedStatements(ThisTrigger, DialectSQLServer);
    txtSQL->setPlainText(generated.value(0));
    txtSQLUpdate->setPlainText(generated.value(1));
    txtSQLSelect->setPlainText(generated.value(2));
}

void ctlActionAZ::Load()
{
    const auto *action = ThisAction->As<clsActionAZ>();
    txtServer->setText(action->Server);
    txtDatabase->setText(action->Database);
    txtUser->setText(action->Username);
    txtPassword->setText(action->Password);
    txtSQL->setPlainText(action->SQLStatement);
    txtSQLSelect->setPlainText(action->SQLSelectStatement);
    txtSQLUpdate->setPlainText(action->SQLUpdateStatement);
    SetModified(action->SQLModified);
    ShowDetails();
    Dirty = false;
}

bool ctlActionAZ::Save()
{
    if (txtServer->text().trimmed().isEmpty() || txtDatabase->text().trimmed().isEmpty())
        return Refuse(EditorText("ERRORNOSERVERAZURE", "You must specify a Server and Database."));
    auto *action = ThisAction->As<clsActionAZ>();
    action->Server = txtServer->text().trimmed();
    action->Database = txtDatabase->text().trimmed();
    action->Username = txtUser->text().trimmed();
    action->Password = txtPassword->text();
    action->SQLModified = FrameSQLModified->isChecked();
    action->SQLStatement = action->SQLModified ? txtSQL->toPlainText() : QString();
    action->SQLSelectStatement = action->SQLModified ? txtSQLSelect->toPlainText() : QString();
    action->SQLUpdateStatement = action->SQLModified ? txtSQLUpdate->toPlainText() : QString();
    return true;
}
