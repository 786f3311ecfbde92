#include "DataActions.h"
#include "DatabaseActionRun.h"
#include "FileActionRun.h"
#include "actions/ActionItem.h"
#include "actions/clsActionAZ.h"
#include "actions/clsActionCSV.h"
#include "actions/clsActionDB.h"
#include "actions/clsActionDBCustom.h"
#include "actions/clsActionDBToken.h"
#include "actions/clsActionExcel.h"
#include "actions/clsActionReport.h"
#include "actions/clsActionText.h"
#include "model/clsAccount.h"
#include "store/Tokens.h"
#include "store/clsMessage.h"
#include "store/clsMessageStore.h"

bool DataActions::Run(const ActionItem &Action, clsAccountTrigger &Trigger, clsMessage &Message, clsMessageStore *Store,
                      const LogFunction &Log)
{
    if (const auto *direct = Action.As<clsActionDB>())
        DatabaseActionRun(Message, Log).RunDirect(*direct, Trigger);
    else if (const auto *custom = Action.As<clsActionDBCustom>())
        DatabaseActionRun(Message, Log).RunCustom(*custom);
    else if (const auto *azure = Action.As<clsActionAZ>())
        DatabaseActionRun(Message, Log).RunAzure(*azure, Trigger);
    else if (const auto *csv = Action.As<clsActionCSV>())
        FileActionRun(Message, Log, Store).RunCSV(*csv);
    else if (const auto *excel = Action.As<clsActionExcel>())
        FileActionRun(Message, Log, Store).RunExcel(*excel);
    else if (const auto *text = Action.As<clsActionText>())
        FileActionRun(Message, Log).RunText(*text);
    else if (const auto *token = Action.As<clsActionDBToken>())
        RunUpdateToken(*token, Message, Store, Log);
    else if (const auto *report = Action.As<clsActionReport>())
        Log(QStringLiteral("* Run A Report ") + report->Name
            + QStringLiteral(": this server has no report designer, so reports cannot run; nothing was printed or exported"));
    else
        return false;
    return true;
}

void DataActions::RunUpdateToken(const clsActionDBToken &Action, clsMessage &Message, clsMessageStore *Store,
                                 const LogFunction &Log)
{
    const QString name = ExpandTokens(Action.TokenName).trimmed();
    const QString token = ExpandTokens(Action.Value).trimmed();
    const QString of = QStringLiteral("Update Message Store Count For Token ") + name;
    if (name.isEmpty() || token.isEmpty()) {
        Log(QStringLiteral("* ") + of + QStringLiteral(": the token name or its value is empty"));
        return;
    }
    const QString accountID = Message.Account ? Message.Account->AccountID : QString();
    if (!Store || !Store->UpdateDaySummaryTokenCustom(Message.OrganizationID(), accountID, name, token)) {
        Log(QStringLiteral("* ") + of + QStringLiteral(": the message store did not take the count")
            + (Store ? QStringLiteral(": ") + Store->LastError : QString()));
        return;
    }
    Log(of + QStringLiteral(" = ") + token + QStringLiteral(": counted"));
    if (Action.AssignResultTo.trimmed().isEmpty())
        return;
    QString variable = Action.AssignResultTo.trimmed();
    if (variable.size() > 1 && variable.startsWith(u'%') && variable.endsWith(u'%'))
        variable = variable.mid(1, variable.size() - 2);
    if (Message.Account)
        Message.Account->setGlobalVar(variable, false, token);
}
