#include "DatabaseTest.h"
#include "EditorBoxes.h"
#include "engine/databases/DatabaseConnections.h"
#include "foundation/GlobalBlock.h"
#include "foundation/TextHelpers.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QSqlError>
#include <QSqlQuery>

bool ServerOpensDatabase(QWidget *Parent, const QString &ConnectionString)
{
    frmRemote &remote = Remote();
    const bool sent = remote.HTTPGet(Requests::TestDBConnection(ConnectionString), 0, true);
    const QString result = GetTag(QStringLiteral("result"), remote.ReplyText);
    const bool opened = result.compare(QStringLiteral("OK"), Qt::CaseInsensitive) == 0 ||
                        result.compare(QStringLiteral("true"), Qt::CaseInsensitive) == 0;
    if (sent && !remote.ReplyText.startsWith(QStringLiteral("Error:")) && opened)
        return true;
    WarningBox(Parent, EditorText("DBTESTFAIL1", "Failed To Open Database Using The Specified Connection String") +
                           QStringLiteral("\r\n\r\n") +
                           EditorText("DBTESTFAIL2", "Check that the login credentials are correct and that the "
                                                     "%APPNAME% Server service's user can reach the database.")
                               .replace(QStringLiteral("%APPNAME%"), Global.AppTitle) +
                           (result.isEmpty() ? QString() : QStringLiteral("\r\n\r\n") + result));
    return false;
}

DatabaseRun RunQuery(const QString &ConnectionString, const QString &Statement, int TimeoutSeconds)
{
    DatabaseRun run;
    {
        QSqlDatabase db = DatabaseConnections::Open(ConnectionString, &run.Error, TimeoutSeconds, true);
        if (db.isValid() && db.isOpen()) {
            QSqlQuery query(db);
            query.setForwardOnly(true);
            if (!query.exec(Statement))
                run.Error = DatabaseConnections::Reason(query.lastError(), ConnectionString);
            while (run.Error.isEmpty() && query.next())
                ++run.Rows;
        } else if (run.Error.isEmpty()) {
            run.Error = QStringLiteral("The database does not open.");
        }
    }
    DatabaseConnections::Discard(ConnectionString);
    return run;
}
