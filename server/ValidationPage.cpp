// The page "validate.aspx" that a person opens from a validation mail: it
// shows the question of the parked message with Yes and No (and the survey
// of its Validation action), and takes the answer. The link's id is the
// queue row's number, "-" and the MD5 of the message's UID: that is the
// credential, so the page needs no log-on.
#include "RequestTable.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "actions/ActionItem.h"
#include "actions/clsActionValidation.h"
#include "actions/colActions.h"
#include "engine/ServerRoles.h"
#include "engine/processor/ProcessorRole.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/MessageMime.h"
#include "store/clsMessageStore.h"

namespace {

ServerReply Page(const QString &Title, const QString &Content)
{
    ServerReply reply = ServerReply::Ok(
        QStringLiteral("<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>") + Title.toHtmlEscaped()
        + QStringLiteral("</title><style>body{font-family:Verdana,sans-serif;font-size:10pt;margin:2em}"
                         "button{margin-right:1em;padding:.4em 1.5em}label{display:block;margin-top:.8em}</style>"
                         "</head><body><h2>")
        + Title.toHtmlEscaped() + QStringLiteral("</h2>\n") + Content + QStringLiteral("\n</body></html>\n"));
    reply.ContentType = "text/html; charset=utf-8";
    return reply;
}

ServerReply NotValid()
{
    return Page(Global.ProductName + QStringLiteral(" Validation"),
                QStringLiteral("<p>This validation request is not valid, has been answered already or has expired.</p>"));
}

const clsActionValidation *ValidationAction(const QString &AccountID, const QString &ActionID)
{
    const clsAccount *account = Accounts().Item(AccountID);
    if (!account)
        return nullptr;
    for (const clsAccountTrigger *trigger : account->Triggers)
        if (const ActionItem *action = trigger->ActionList().Item(ActionID))
            return action->As<clsActionValidation>();
    return nullptr;
}

// The form of the question: the survey's inputs and the buttons.
QString Form(const QString &ID, const clsActionValidation *Action)
{
    QString form = QStringLiteral("<form method=\"get\" action=\"validate.aspx\"><input type=\"hidden\" name=\"id\" value=\"")
        + ID.toHtmlEscaped() + QStringLiteral("\">");
    const auto fields = Action ? clsActionValidation::ReadSurveyFields(Action->SurveyFieldsXML)
                               : QList<clsActionValidation::SurveyField>();
    for (int n = 0; n < fields.size(); ++n)
        form += QStringLiteral("<label>") + (fields[n].Prompt.isEmpty() ? fields[n].Name : fields[n].Prompt).toHtmlEscaped()
            + QStringLiteral(" <input name=\"survey%1\"></label>").arg(n + 1);
    if (!Action || Action->ShowYesNoButtons)
        form += QStringLiteral("<p><button name=\"answer\" value=\"yes\">Yes</button>"
                               "<button name=\"answer\" value=\"no\">No</button></p>");
    else
        form += QStringLiteral("<p><button name=\"answer\" value=\"yes\">Continue</button></p>");
    return form + QStringLiteral("</form>");
}

// The survey's answers, a "field" section each with its name, its assignto
// and its value.
QString Answers(const clsUserClient &Client, const clsActionValidation *Action)
{
    if (!Action)
        return QString();
    clsXML writer;
    const auto fields = clsActionValidation::ReadSurveyFields(Action->SurveyFieldsXML);
    for (int n = 0; n < fields.size(); ++n) {
        writer.XMLSectionStart(QStringLiteral("field"));
        writer.Append(fields[n].Name, QStringLiteral("name"));
        writer.Append(fields[n].AssignTo, QStringLiteral("assignto"));
        writer.Append(Client.Value(QStringLiteral("survey%1").arg(n + 1)), QStringLiteral("value"));
        writer.XMLSectionEnd(QStringLiteral("field"));
    }
    return writer.GetXML();
}

ServerReply Validate(RequestContext &Context)
{
    const QString title = Global.ProductName + QStringLiteral(" Validation");
    const QString id = Context.Client.Value(QStringLiteral("id")).trimmed();
    if (id == u"test")
        return Page(title, QStringLiteral("<p>This is how the validation page asks its question.</p>")
                               + Form(id, nullptr));
    bool number = false;
    const qint64 recordNo = id.section(u'-', 0, 0).toLongLong(&number);
    const QString hash = id.section(u'-', 1);
    if (!number || recordNo <= 0 || hash.isEmpty())
        return NotValid();
    clsMessageStore &store = Context.Services.MessageStore;
    const std::optional<QSqlRecord> row = store.GetValidationRequest(recordNo);
    if (!row || row->isEmpty())
        return NotValid();
    const QString uid = row->value(0).toString();
    const QString headerUID = MimeHeaderValue(row->value(1).toString(), QStringLiteral("Postvane-UID")).trimmed();
    if (hash != MD5Hash(uid) && hash != MD5Hash(headerUID))
        return NotValid();
    const clsActionValidation *action = ValidationAction(row->value(4).toString(), row->value(3).toString());
    const QString answer = Context.Client.Value(QStringLiteral("answer")).trimmed().toLower();
    if (answer.isEmpty())
        return Page(title, QStringLiteral("<p>") + row->value(2).toString() + QStringLiteral("</p>") + Form(id, action));
    const bool confirmed = answer == u"yes";
    if (answer != u"no" && !confirmed)
        return NotValid();
    if (!store.AnswerValidation(recordNo, confirmed, confirmed ? Answers(Context.Client, action) : QString()))
        return NotValid();
    Context.Services.Log.Add(QStringLiteral("Pending validation message %1 %2 from %3")
                                 .arg(recordNo)
                                 .arg(confirmed ? QStringLiteral("confirmed") : QStringLiteral("rejected"),
                                      Context.Peer.toString()));
    // A rejected message is settled now rather than at the next look at expiries.
    if (!confirmed)
        for (const QString &line : store.GetExpiredValidationMessage())
            Context.Services.Log.Add(line);
    if (Context.Services.Roles && Context.Services.Roles->Processor())
        Context.Services.Roles->Processor()->Role.Wake();
    return Page(title, confirmed ? QStringLiteral("<p>Thank you. The message will now be processed.</p>")
                                 : QStringLiteral("<p>Thank you. The message has been rejected.</p>"));
}

} // namespace

void AddValidationPage(RequestTable &Table)
{
    Table.AddPublic(QStringLiteral("validate.aspx"), RequestVerb::Any, Validate);
}
