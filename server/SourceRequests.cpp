// Requests on the reading of the message sources: "checknow.xml" has every
// account the user may see read at once, whatever its schedule; the drop box
// call of the web service, "PostvaneWS.asmx/AddMessage", queues a message
// posted by a client program for an account that takes them.
#include "RequestTable.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "engine/EdgeRole.h"
#include "engine/ServerRoles.h"
#include "engine/processor/ProcessorRole.h"
#include "engine/sources/EdgeQueueSink.h"
#include "engine/sources/SourceMime.h"
#include "engine/sources/SourceScheduler.h"
#include "foundation/Formatting.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsUser.h"
#include "store/clsMessageStore.h"

#include <QUrlQuery>

namespace {

// The reply of a web service call as its callers read it: the result is the
// text of the element after the declaration.
ServerReply WebServiceReply(const QString &Result)
{
    QString text = Result;
    text.replace(u'&', QStringLiteral("&amp;")).replace(u'<', QStringLiteral("&lt;")).replace(u'>', QStringLiteral("&gt;"));
    ServerReply reply = ServerReply::Ok(QStringLiteral("<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                                                       "<string xmlns=\"http://tempuri.org/\">")
                                        + text + QStringLiteral("</string>"));
    return reply;
}

// A posted text without a header block becomes the body of a message to the
// account's default address, under its default subject.
QByteArray DropBoxMime(const clsAccount &Account, const QString &Text)
{
    const QByteArray raw = Text.toUtf8();
    if (!SourceMime::HeaderValue(raw, "From").isEmpty() || !SourceMime::HeaderValue(raw, "Subject").isEmpty()
        || !SourceMime::HeaderValue(raw, "To").isEmpty())
        return raw;
    QString to;
    for (const QString &part : Account.DropBoxToAddress.split(u';', Qt::SkipEmptyParts)) {
        if (!part.contains(u'*') && !part.contains(u'?')) {
            to = part.trimmed();
            break;
        }
    }
    return "To: " + to.toUtf8() + "\r\nSubject: " + Account.DropBoxSubject.toUtf8()
        + "\r\nDate: " + QDateTime::currentDateTime().toString(Qt::RFC2822Date).toLatin1()
        + "\r\nMIME-Version: 1.0\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n" + raw;
}

ServerReply AddMessage(RequestContext &Context)
{
    QUrlQuery form(QString(Context.Client.Body).replace(u'+', u' '));
    const QString accountID = form.queryItemValue(QStringLiteral("AccountID"), QUrl::FullyDecoded).trimmed();
    const QString triggerID = form.queryItemValue(QStringLiteral("TriggerID"), QUrl::FullyDecoded).trimmed();
    const QString text = form.queryItemValue(QStringLiteral("MimeText"), QUrl::FullyDecoded);
    clsAccount *account = Accounts().Item(accountID);
    if (!account || !account->UserAccess(&Context.User))
        return WebServiceReply(QStringLiteral("Error: There is no account with this ID."));
    if (!account->Enabled || !account->Dropbox)
        return WebServiceReply(QStringLiteral("Error: The account does not accept messages from clients."));
    if (!triggerID.isEmpty() && !account->TriggerFromID(triggerID))
        return WebServiceReply(QStringLiteral("Error: The account has no trigger with this ID."));
    if (text.trimmed().isEmpty())
        return WebServiceReply(QStringLiteral("Error: The message is empty."));

    const QString uid = NewUniqueID();
    QByteArray mime = DropBoxMime(*account, text);
    if (!triggerID.isEmpty())
        mime = "Postvane-TriggerID: " + triggerID.toUtf8() + "\r\n" + mime;
    mime = SourceMime::WithProcessHeaders(mime, account->AccountID, QStringLiteral("DROPBOX"), uid, false);
    QDateTime date = SourceMime::DateHeader(mime);
    if (!date.isValid())
        date = QDateTime::currentDateTime();
    clsMessageStore &store = Context.Services.MessageStore;
    if (store.AddEMLToEdgeQueue(account->AccountID, QStringLiteral("DROPBOX"), uid, date, EdgeQueueSink::MimeText(mime)) <= 0) {
        Context.Services.Log.Add(QStringLiteral("* The edge queue refused a drop box message: ") + store.LastError);
        return WebServiceReply(QStringLiteral("Error: The edge queue refused the message."));
    }
    Context.Services.Log.Add(QStringLiteral("Drop box message from ") + Context.User.Username
                             + QStringLiteral(" queued for account ") + account->Name);
    if (Context.Services.Roles && Context.Services.Roles->Processor())
        Context.Services.Roles->Processor()->Role.Wake();
    return WebServiceReply(QStringLiteral("OK"));
}

// Interval accounts of the user's organization (of all organizations for a
// system administrator) are read at once; accounts that run at set times
// keep them. The edge reads its own copy of the configuration: it is told
// which accounts, and woken.
ServerReply CheckNow(RequestContext &Context)
{
    const clsUser &actor = Context.User;
    Accounts().SetLastChecked(actor.Admin ? QString() : actor.OrganizationID);
    QStringList due;
    for (clsAccount *account : Accounts()) {
        if (account && account->MustCheckNow)
            due << account->AccountID;
    }
    SourceScheduler::CheckNow(due);
    if (Context.Services.Roles && Context.Services.Roles->Edge())
        Context.Services.Roles->Edge()->Role.Wake();
    Context.Services.Log.Add(QStringLiteral("Check for new messages now, asked by ") + actor.Username);
    return ServerReply::Ok();
}

} // namespace

void AddSourceRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("checknow.xml"), RequestVerb::Get, CheckNow);
    Table.Add(QStringLiteral("postvanews.asmx/addmessage"), RequestVerb::Post, AddMessage);
}
