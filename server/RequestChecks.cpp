#include "RequestChecks.h"
#include "ConfigStore.h"
#include "ServerLog.h"
#include "ServerServices.h"
#include "model/GlobalCollections.h"

#include <QRegularExpression>

bool IsIdentifier(const QString &Text)
{
    static const QRegularExpression identifier(QStringLiteral("^[A-Za-z0-9_{}-]{1,64}$"));
    return identifier.match(Text).hasMatch();
}

std::optional<ServerReply> CheckIdentifier(const RequestContext &Context, const QString &Key, bool Optional)
{
    const QString value = Context.Client.Value(Key);
    if ((Optional && value.isEmpty()) || IsIdentifier(value))
        return std::nullopt;
    return ServerReply::Refusal(QStringLiteral("The value of \"") + Key + QStringLiteral("\" is no identifier."));
}

std::optional<ServerReply> CheckPostedID(QString &PostedID, const QString &QueryID, const QString &Record,
                                         const QString &Key, Qt::CaseSensitivity Case)
{
    if (PostedID.isEmpty())
        PostedID = QueryID;
    if (PostedID.compare(QueryID, Case) == 0)
        return std::nullopt;
    return ServerReply::Refusal(QStringLiteral("The ") + Record + QStringLiteral("'s ID is not the one of ") + Key
                                       + u'.');
}

std::optional<ServerReply> CheckFragment(const QString &Body, const QString &Tag)
{
    QString text = Body.trimmed();
    if (text.startsWith(QStringLiteral("<?xml"), Qt::CaseInsensitive))
        text = text.mid(text.indexOf(QStringLiteral("?>")) + 2).trimmed();
    const QString open = u'<' + Tag + u'>';
    const QString close = QStringLiteral("</") + Tag + u'>';
    if (text.startsWith(open, Qt::CaseInsensitive)
        && text.endsWith(close, Qt::CaseInsensitive))
        return std::nullopt;
    return ServerReply::Refusal(QStringLiteral("The body is no ") + Tag + QStringLiteral(" fragment."));
}

bool MayManageUser(const clsUser &Actor, const clsUser &Target)
{
    colUsers visible;
    visible.setXML(Users().XMLForOrganization(&Actor));
    return visible.Item(Target.ID) != nullptr;
}

bool MayManageFolder(const clsUser &Actor, const clsUserFolder &Folder)
{
    if (Actor.Admin)
        return true;
    if (Actor.OrganizationAdmin)
        return Folder.OrganizationID == Actor.OrganizationID;
    return Folder.UserID == Actor.ID;
}

bool IsAdministrator(const clsUser &Actor)
{
    return Actor.Admin || Actor.OrganizationAdmin;
}

int AdministratorCount()
{
    int count = 0;
    for (const clsUser *user : Users())
        count += user->Admin ? 1 : 0;
    return count;
}

ServerReply StoreFailure(RequestContext &Context)
{
    Context.Services.Log.Add(QStringLiteral("* The configuration could not be saved: ") + Context.Services.Store.LastError);
    return ServerReply::Refusal(QStringLiteral("The change could not be saved."));
}
