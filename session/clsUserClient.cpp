#include "clsUserClient.h"
#include "foundation/Crypt.h"

namespace {

const QString DateFormat = QStringLiteral("yyyy-MM-dd");

QString YesNo(bool Value)
{
    return Value ? QStringLiteral("Y") : QStringLiteral("N");
}

} // namespace

QString clsUserClient::URL() const
{
    const QString address = Name();
    return QueryString.isEmpty() ? address : address + u'?' + QueryString;
}

void clsUserClient::setURL(const QString &Value)
{
    Clear();
    const qsizetype slash = Value.indexOf(u'/');
    QString address = slash >= 0 ? Value.mid(slash + 1) : Value;
    const qsizetype question = address.indexOf(u'?');
    if (question >= 0) {
        QueryString = address.mid(question + 1);
        address.truncate(question);
    }
    address = address.toLower();
    const qsizetype dot = address.indexOf(u'.');
    Document = dot >= 0 ? address.left(dot) : address;
    Extension = dot >= 0 ? address.mid(dot + 1) : QString();

    for (const QString &pair : QueryString.split(u'&', Qt::SkipEmptyParts)) {
        const qsizetype equals = pair.indexOf(u'=');
        const QString key = URLDecode(equals >= 0 ? pair.left(equals) : pair).toLower();
        const QString value = equals >= 0 ? URLDecode(pair.mid(equals + 1)) : QString();
        if (DuplicateKey.isEmpty() && Has(key))
            DuplicateKey = key;
        Parameters.append({key, value});
        SetKey(key, value);
    }
}

QString clsUserClient::Name() const
{
    return Extension.isEmpty() ? Document : Document + u'.' + Extension;
}

QString clsUserClient::Value(const QString &Key) const
{
    const QString key = Key.toLower();
    for (const auto &[name, value] : Parameters)
        if (name == key)
            return value;
    return QString();
}

bool clsUserClient::Has(const QString &Key) const
{
    const QString key = Key.toLower();
    for (const auto &parameter : Parameters)
        if (parameter.first == key)
            return true;
    return false;
}

QString clsUserClient::ComposeQuery() const
{
    QStringList parts;
    const auto plain = [&parts](const char *key, const QString &value) {
        if (!value.isEmpty())
            parts << QString::fromLatin1(key) + u'=' + value;
    };
    const auto encoded = [&parts](const char *key, const QString &value) {
        if (!value.isEmpty())
            parts << QString::fromLatin1(key) + u'=' + URLEncode(value);
    };
    const auto number = [&parts](const char *key, qint64 value) {
        if (value != 0)
            parts << QString::fromLatin1(key) + u'=' + QString::number(value);
    };
    plain("accountid", AccountID);
    plain("triggerid", TriggerID);
    encoded("folderid", FolderID);
    plain("parentid", ParentID);
    plain("movetofolderid", MoveToFolderID);
    plain("userid", UserID);
    plain("organizationid", OrganizationID);
    encoded("folder", Folder);
    encoded("email", Email);
    number("recordno", RecordNo);
    encoded("messageuid", MessageUID);
    plain("fromdate", FromDate.isValid() ? FromDate.toString(DateFormat) : QString());
    plain("todate", ToDate.isValid() ? ToDate.toString(DateFormat) : QString());
    if (Has(QStringLiteral("errorsonly")) || ErrorsOnly)
        plain("errorsonly", YesNo(ErrorsOnly));
    if (Has(QStringLiteral("matchesonly")) || MatchesOnly)
        plain("matchesonly", YesNo(MatchesOnly));
    encoded("searchtext", SearchText);
    number("fromrow", FromRow);
    number("torow", ToRow);
    encoded("nodename", NodeName);
    encoded("nodetype", NodeType);
    number("clientid", ClientID);
    encoded("xml", XML);
    return parts.join(u'&');
}

void clsUserClient::Clear()
{
    *this = clsUserClient();
}

void clsUserClient::SetKey(const QString &Key, const QString &Value)
{
    QString *text = nullptr;
    if (Key == u"accountid")
        text = &AccountID;
    else if (Key == u"triggerid")
        text = &TriggerID;
    else if (Key == u"folderid")
        text = &FolderID;
    else if (Key == u"parentid")
        text = &ParentID;
    else if (Key == u"movetofolderid")
        text = &MoveToFolderID;
    else if (Key == u"userid")
        text = &UserID;
    else if (Key == u"organizationid")
        text = &OrganizationID;
    else if (Key == u"username")
        text = &Username;
    else if (Key == u"password")
        text = &Password;
    else if (Key == u"folder")
        text = &Folder;
    else if (Key == u"email")
        text = &Email;
    else if (Key == u"messageuid")
        text = &MessageUID;
    else if (Key == u"searchtext" || Key == u"text")
        text = &SearchText;
    else if (Key == u"nodename")
        text = &NodeName;
    else if (Key == u"nodetype")
        text = &NodeType;
    else if (Key == u"xml")
        text = &XML;
    if (text) {
        *text = Value;
        return;
    }

    if (Key == u"recordno")
        RecordNo = Value.toInt();
    else if (Key == u"fromrow")
        FromRow = Value.toInt();
    else if (Key == u"torow")
        ToRow = Value.toInt();
    else if (Key == u"clientid")
        ClientID = Value.toShort();
    else if (Key == u"fromdate")
        FromDate = QDate::fromString(Value, DateFormat);
    else if (Key == u"todate")
        ToDate = QDate::fromString(Value, DateFormat);
    else if (Key == u"errorsonly")
        ErrorsOnly = Value.compare(u"Y", Qt::CaseInsensitive) == 0;
    else if (Key == u"matchesonly")
        MatchesOnly = Value.compare(u"Y", Qt::CaseInsensitive) == 0;
}
