#include "DatabasePanel.h"
#include "editors/EditorBoxes.h"
#include "editors/frmInputEditor.h"
#include "foundation/GlobalBlock.h"
#include "foundation/TextHelpers.h"
#include "model/clsAccountTrigger.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QFontDatabase>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>

namespace DatabasePanel {

QStringList DialectLabels()
{
    return {QStringLiteral("Generic"), QStringLiteral("SQL Server"), QStringLiteral("MySQL"), QStringLiteral("Access JET")};
}

QPlainTextEdit *StatementPane(QWidget *Parent, bool ReadOnly)
{
    auto *pane = new QPlainTextEdit(Parent);
    pane->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    pane->setReadOnly(ReadOnly);
    pane->setLineWrapMode(QPlainTextEdit::NoWrap);
    return pane;
}

QStringList GeneratedStatements(const clsAccountTrigger *Trigger, int Dialect)
{
    if (!Trigger)
        return {QString(), QString(), QString()};
    int insert = Dialect;
    int update = Dialect;
    int select = Dialect;
    return {Trigger->SQLInsertStatement(insert), Trigger->SQLUpdateStatement(update), Trigger->SQLSelectStatement(select)};
}

void EditConnectionString(QWidget *Parent, QLineEdit *Box)
{
    frmInputEditor editor(Parent);
    editor.setWindowTitle(EditorText("CONNECTIONSTRING", "Connection String:"));
    editor.setText(Box->text());
    if (editor.exec() == QDialog::Accepted) {
        Box->setText(editor.text().simplified());
        emit Box->textEdited(Box->text());
    }
}

bool TestConnection(QWidget *Parent, const QString &ConnectionString)
{
    frmRemote &remote = Remote();
    const bool sent = remote.HTTPGet(Requests::TestDBConnection(ConnectionString), 0, true);
    QString result = GetTag(QStringLiteral("result"), remote.ReplyText);
    if (!sent)
        result = QStringLiteral("Error: ") + remote.ErrorText;
    else if (remote.ReplyText.startsWith(QStringLiteral("Error:")))
        result = remote.ReplyText;
    if (result.left(6).compare(QStringLiteral("Error:"), Qt::CaseInsensitive) != 0) {
        QMessageBox::information(Parent, Global.AppTitle, EditorText("DBCONOK", "Database Opened Successfully"));
        return true;
    }
    QMessageBox box(QMessageBox::Critical, Global.AppTitle,
                    EditorText("DBTESTFAIL1", "Failed To Open Database Using The Specified Connection String"),
                    QMessageBox::Ok, Parent);
    box.setInformativeText(
        EditorText("DBTESTFAIL2",
                   "The %APPNAME% Server could not open the database. Please check your login credentials. If Windows "
                   "Authentication is being used please check that the %APPNAME% Service has access to the database. "
                   "You may need to grant a login for the NT AUTHORITY\\SYSTEM user, or change the user that the "
                   "%APPNAME% Message Service runs under.")
            .replace(QStringLiteral("%APPNAME%"), Global.AppTitle));
    box.setDetailedText(result.mid(6).trimmed());
    box.exec();
    return false;
}

} // namespace DatabasePanel
