#include "MessageActions.h"
#include "CalendarActionRun.h"
#include "MessageActionRun.h"
#include "PopupPush.h"
#include "ValidationActionRun.h"
#include "XmppClient.h"
#include "actions/ActionItem.h"
#include "actions/clsActionFax.h"
#include "actions/clsActionForward.h"
#include "actions/clsActionJabber.h"
#include "actions/clsActionMSG.h"
#include "actions/clsActionPopup.h"
#include "actions/clsActionSMS.h"
#include "actions/clsActionVCal.h"
#include "actions/clsActionValidation.h"
#include "foundation/GlobalBlock.h"
#include "store/Tokens.h"

MessageActions::Outcome MessageActions::Run(const ActionItem &Action, clsAccountTrigger &Trigger, clsMessage &Message,
                                            clsMessageStore *Store, const LogFunction &Log)
{
    MessageActionRun mailer(Message, Trigger, Store, Log);
    if (const auto *mail = Action.As<clsActionMSG>())
        mailer.RunMessage(*mail);
    else if (const auto *forward = Action.As<clsActionForward>())
        mailer.RunForward(*forward);
    else if (const auto *sms = Action.As<clsActionSMS>())
        mailer.RunSMS(*sms);
    else if (const auto *calendar = Action.As<clsActionVCal>())
        CalendarActionRun(mailer, Log).Run(*calendar);
    else if (const auto *validation = Action.As<clsActionValidation>())
        return ValidationActionRun(Message, mailer, Log).Run(*validation) ? Outcome::Done : Outcome::Stop;
    else if (const auto *popup = Action.As<clsActionPopup>()) {
        const QString text = ExpandTokens(popup->PopupMessage);
        if (PopupPush::Send(popup->PopupStyle, text, Global.ProductName))
            Log(QStringLiteral("Popup sent to the connected consoles: ") + text.left(200));
        else
            Log(QStringLiteral("* Send Popup Message: this process serves no consoles, so the popup was not shown"));
    } else if (const auto *fax = Action.As<clsActionFax>())
        Log(QStringLiteral("* Send A Fax to ") + ExpandTokens(fax->FaxNumber)
            + QStringLiteral(": this server has no fax device, so nothing was sent"));
    else if (const auto *jabber = Action.As<clsActionJabber>())
        RunJabber(*jabber, Log);
    else
        return Outcome::NotMine;
    return Outcome::Done;
}

void MessageActions::RunJabber(const clsActionJabber &Action, const LogFunction &Log)
{
    XmppClient client;
    XmppClient::Message stanza;
    stanza.To = ExpandTokens(Action.ToJabberID).trimmed();
    stanza.Type = XmppClient::TypeName(Action.MessageType);
    stanza.Subject = ExpandTokens(Action.MessageSubject);
    stanza.Body = ExpandTokens(Action.MessageText);
    if (stanza.To.isEmpty()) {
        Log(QStringLiteral("* Post To A Jabber Server: the action has no recipient"));
        return;
    }
    if (client.Send(ExpandTokens(Action.Server).trimmed(), ExpandTokens(Action.Username).trimmed(), Action.Password,
                    stanza))
        Log(QStringLiteral("Jabber message sent to ") + stanza.To);
    else
        Log(QStringLiteral("* Post To A Jabber Server: the message to ") + stanza.To + QStringLiteral(" was not sent: ")
            + client.Error);
}
