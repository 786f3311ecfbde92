#pragma once
#include <QString>
#include <QStringList>

class QLineEdit;
class QPlainTextEdit;
class QWidget;
class clsAccountTrigger;

// What the panels of the data kinds share: the dialect list, the panes that
// show statements, the connection text and its test.
namespace DatabasePanel {

// The positions are the stored SQLDialect: "Generic", "SQL Server", "MySQL", "Access JET".
QStringList DialectLabels();
// A box of statements in a fixed-pitch font; read-only for generated ones.
QPlainTextEdit *StatementPane(QWidget *Parent, bool ReadOnly);
// The trigger's generated insert, update and select statements for the dialect.
QStringList GeneratedStatements(const clsAccountTrigger *Trigger, int Dialect);

// The connection text in a text entry, where Windows has its
// connection-string dialog; an accepted change counts as an edit of Box.
void EditConnectionString(QWidget *Parent, QLineEdit *Box);

// The console does not open the database itself: the server must be able
// to. Asks "testdbconnection.htm" and shows DBCONOK, or DBTESTFAIL1 with
// DBTESTFAIL2 and the server's reason; true when the server opened it.
bool TestConnection(QWidget *Parent, const QString &ConnectionString);

} // namespace DatabasePanel
