#include "Tokens.h"
#include "clsMessage.h"
#include "actions/ActionItem.h"
#include "actions/clsActionSetVariable.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"

#include <QLocale>
#include <QStringList>
#include <array>

namespace {

const QString CRLF = QStringLiteral("\r\n");
const QString StampFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");
const QString HtmlToken = QStringLiteral("%msg_html%");
// Below this length a text holding %msg_html% is taken to be the token
// alone, and the whole text becomes the HTML.
constexpr qsizetype ShortTemplate = 105;

// The message tokens offered to users, in the order of the pickers.
const QString OfferedMessageTokens = QStringLiteral(
    "%msg_body%,%msg_html%,%msg_to%,%msg_from%,%msg_fromname%,%msg_fromip%,%msg_cc%,%msg_date%,%msg_bcc%,"
    "%msg_subject%,%msg_digest%,%msg_messageid%,%msg_replyto%,%msg_inreplyto%,%msg_references%,"
    "%msg_return_path%,%msg_headers%,%msg_mimetext%,%msg_attachments%,%msg_attachmentcount%,"
    "%msg_attachmentinlinecount%,%msg_attachmentlistwithsizes%,%msg_size%,%msg_geocity%,%msg_geocountry%,"
    "%msg_geoorganization%,%msg_wordindex%,%msg_wordindexwithcount%,%msg_wordindexwithcountsorted%,"
    "%msg_validationurl%,%msg_viewurl%");

struct MessageToken
{
    QString Token;
    QString (*Value)(const clsMessage &);
};

// One line for each attachment: the member followed by CR LF.
QString AttachmentLines(const clsMessage &Message, QString clsMessageAttachment::*Member)
{
    QString lines;
    for (const clsMessageAttachment *attachment : Message.Attachments)
        lines += attachment->*Member + CRLF;
    return lines;
}

// The tokens the expander knows, in the order they are replaced.
const std::array<MessageToken, 38> &MessageTokens()
{
    using M = const clsMessage &;
    static const std::array<MessageToken, 38> tokens{{
        {QStringLiteral("%msg_body%"), [](M m) { return m.Body; }},
        {QStringLiteral("%msg_to%"), [](M m) { return m.ToAddress; }},
        {QStringLiteral("%msg_from%"), [](M m) { return m.From; }},
        {QStringLiteral("%msg_fromip%"), [](M m) { return m.FromIP; }},
        {QStringLiteral("%msg_fromname%"), [](M m) { return m.FromName; }},
        {QStringLiteral("%msg_cc%"), [](M m) { return m.CC; }},
        {QStringLiteral("%msg_date%"), [](M m) { return m.Dated.toString(StampFormat); }},
        {QStringLiteral("%msg_dated%"), [](M m) { return m.Dated.toString(StampFormat); }},
        {QStringLiteral("%msg_datesent%"), [](M m) { return m.OrigDate.toString(StampFormat); }},
        {QStringLiteral("%msg_bcc%"), [](M m) { return m.BCC; }},
        {QStringLiteral("%msg_subject%"), [](M m) { return m.Subject; }},
        {QStringLiteral("%msg_digest%"), [](M m) { return m.Digest(); }},
        {QStringLiteral("%msg_replyto%"), [](M m) { return m.ReplyTo; }},
        {QStringLiteral("%msg_inreplyto%"), [](M m) { return m.InReplyTo; }},
        {QStringLiteral("%msg_references%"), [](M m) { return m.References; }},
        {QStringLiteral("%msg_sender%"), [](M m) { return m.Sender; }},
        {QStringLiteral("%msg_size%"), [](M m) { return QString::number(m.Size); }},
        {QStringLiteral("%msg_return_path%"), [](M m) { return m.ReturnPath; }},
        {QStringLiteral("%msg_messageid%"), [](M m) { return m.MessageID; }},
        {QStringLiteral("%msg_uid%"), [](M m) { return m.MessageID; }},
        {QStringLiteral("%msg_text%"), [](M m) { return m.MessageText; }},
        {QStringLiteral("%msg_mimetext%"), [](M m) { return m.MessageText; }},
        {QStringLiteral("%msg_headers%"), [](M m) { return m.MessageHeader(); }},
        {QStringLiteral("%msg_charset%"), [](M m) { return m.CharSet; }},
        {QStringLiteral("%msg_geoorganization%"), [](M m) { return m.GEOOrganization; }},
        {QStringLiteral("%msg_geocity%"), [](M m) { return m.GEOCity; }},
        {QStringLiteral("%msg_geocountry%"), [](M m) { return m.GEOCountry; }},
        {QStringLiteral("%msg_wordindex%"), [](M m) { return m.WordIndex(); }},
        {QStringLiteral("%msg_wordindexwithcount%"), [](M m) { return m.WordIndexWithCount(); }},
        {QStringLiteral("%msg_wordindexwithcountsorted%"), [](M m) { return m.WordIndexWithCountSorted(); }},
        {QStringLiteral("%msg_validationurl%"), [](M m) { return m.ValidateURL(); }},
        {QStringLiteral("%msg_viewurl%"), [](M m) { return m.ViewURL(); }},
        {QStringLiteral("%msg_attachmentcount%"), [](M m) { return QString::number(m.Attachments.Count()); }},
        {QStringLiteral("%msg_attachmentinlinecount%"), [](M m) { return QString::number(m.RelatedItems.Count()); }},
        {QStringLiteral("%msg_attachmentlistwithsizes%"), [](M m) { return m.Attachments.List(); }},
        {HtmlToken, [](M m) { return m.HTML; }},
        {QStringLiteral("%msg_attachments%"), [](M m) { return AttachmentLines(m, &clsMessageAttachment::Name); }},
        {QStringLiteral("%msg_attachments_savedto%"),
         [](M m) { return AttachmentLines(m, &clsMessageAttachment::SavedTo); }},
    }};
    return tokens;
}

// Replaces every occurrence of the token, in any case, by its value, which
// is only asked for when the token is there. A value that fails leaves the
// token in place.
template <typename Value> void ReplaceToken(QString &Text, const QString &Token, Value value)
{
    if (!Text.contains(Token, Qt::CaseInsensitive))
        return;
    try {
        Text.replace(Token, value(), Qt::CaseInsensitive);
    } catch (...) {
    }
}

// The value of an entry of the date token table.
QString DateTokenValue(const QString &Token, const clsMessage &Message, const QDateTime &Now)
{
    const QLocale locale = QLocale::system();
    const QString token = Token.toLower();
    if (token == QLatin1StringView("%date%"))
        return locale.toString(Now.date(), QLocale::ShortFormat);
    // The value formatted is today's date, which has no time of day.
    if (token == QLatin1StringView("%time%"))
        return QStringLiteral("00:00:00");
    if (token == QLatin1StringView("%datetime%"))
        return locale.toString(Now.date(), QLocale::ShortFormat) + u' ' + locale.toString(Now.time(), QLocale::ShortFormat);
    if (token == QLatin1StringView("%sqldate%"))
        return Now.toString(QStringLiteral("yyyy-MM-dd"));
    if (token == QLatin1StringView("%sqldatetime%"))
        return Now.toString(StampFormat);
    if (token == QLatin1StringView("%dayofweek%"))
        return locale.dayName(Now.date().dayOfWeek());
    if (token == QLatin1StringView("%weekdaynumber%"))
        return QString::number(Now.date().dayOfWeek() % 7 + 1); // Sunday is 1
    if (token == QLatin1StringView("%lasterrornumber%"))
        return QString::number(Message.LastErrorNumber);
    if (token == QLatin1StringView("%lasterrortext%"))
        return Message.LastError;
    if (token == QLatin1StringView("%root%"))
        return Message.Account ? Message.Account->DocumentRoot() : Global.DataPath;
    if (token == QLatin1StringView("%triggerlog%"))
        return Message.ErrorLog();
    // %MonthNumber% and %FreeDiscSpace% have always expanded to nothing and
    // templates rely on that.
    return QString();
}

void ExpandVariables(QString &Text, clsAccount *Account)
{
    if (!Account)
        return;
    for (const QString &name : Account->GlobalVarList().split(u',', Qt::SkipEmptyParts))
        ReplaceToken(Text, u'%' + name + u'%', [&] { return Account->GlobalVar(name, true).toString(); });
}

void ExpandDateTokens(QString &Text, const clsMessage &Message)
{
    const QDateTime now = QDateTime::currentDateTime();
    for (const QString &token : std::as_const(Global.Settings.SystemTokens)) {
        if (!Text.contains(u'%'))
            return;
        ReplaceToken(Text, token, [&] { return DateTokenValue(token, Message, now); });
    }
}

const clsUserOrganization *OrganizationOf(const clsAccount *Account)
{
    return Account ? Organizations().Item(Account->OrganizationID) : nullptr;
}

void ExpandConstants(QString &Text, const clsAccount *Account)
{
    const clsUserOrganization *organization = OrganizationOf(Account);
    if (!organization)
        return;
    for (int i = 1; i <= organization->NumConstants(); ++i)
        ReplaceToken(Text, u'%' + organization->ConstantName(i) + u'%', [&] { return organization->ConstantValue(i); });
}

} // namespace

QString ExpandTokens(const QString &Text)
{
    if (!Text.contains(u'%'))
        return Text;
    const clsMessage &message = CurrentMessage();
    QString text = Text;
    for (const MessageToken &token : MessageTokens()) {
        if (token.Token == HtmlToken && text.size() < ShortTemplate && text.contains(HtmlToken, Qt::CaseInsensitive))
            text = message.HTML;
        else
            ReplaceToken(text, token.Token, [&] { return token.Value(message); });
    }
    for (const clsMessageField *field : message.ExtractedFields())
        ReplaceToken(text, u'%' + field->Name.toLower() + u'%', [&] { return field->Value; });
    if (!text.contains(u'%'))
        return text;
    ExpandVariables(text, message.Account);
    ExpandDateTokens(text, message);
    ExpandConstants(text, message.Account);
    return text;
}

bool HasTokens(const QString &Text)
{
    return Text.contains(u'%');
}

QString MessageTokenList()
{
    QStringList tokens{OfferedMessageTokens};
    for (const QString &token : std::as_const(Global.Settings.SystemTokens))
        if (!token.trimmed().isEmpty())
            tokens << token;
    return tokens.join(u',');
}

QString FieldTokenList(clsAccountTrigger *Trigger, bool WithoutFields, bool WithoutBuiltIn, bool WithConstants)
{
    QStringList tokens;
    if (!WithoutBuiltIn)
        tokens = MessageTokenList().split(u',');
    if (!Trigger)
        return tokens.join(u',');
    const auto add = [&](const QString &Name) {
        const QString token = u'%' + Name + u'%';
        if (!Name.isEmpty() && !tokens.contains(token, Qt::CaseInsensitive))
            tokens << token;
    };
    if (!WithoutFields)
        for (const clsTriggerField *field : Trigger->FieldsToProcess())
            add(field->Name);
    clsAccount *account = Trigger->Parent;
    if (account)
        for (const QString &name : account->GlobalVarList().split(u',', Qt::SkipEmptyParts))
            add(name);
    if (const clsUserOrganization *organization = WithConstants ? OrganizationOf(account) : nullptr)
        for (int i = 1; i <= organization->NumConstants(); ++i)
            add(organization->ConstantName(i));
    for (const ActionItem *action : Trigger->ActionList())
        if (const auto *set = action->As<clsActionSetVariable>())
            add(set->Name);
    return tokens.join(u',');
}
