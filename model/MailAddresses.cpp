#include "MailAddresses.h"
#include "foundation/LikeMatcher.h"

QStringList SplitAddresses(const QString &List, const QString &Separators)
{
    QStringList addresses;
    QString part;
    const auto keep = [&addresses](const QString &text) {
        const QString address = text.trimmed();
        if (!address.isEmpty())
            addresses << address;
    };
    for (QChar c : List) {
        if (Separators.contains(c)) {
            keep(part);
            part.clear();
        } else {
            part += c;
        }
    }
    keep(part);
    return addresses;
}

QStringList QualifiedAddresses(const QStringList &Addresses, const QString &DefaultDomain)
{
    QStringList qualified;
    for (const QString &address : Addresses)
        qualified << (address.contains(u'@') ? address : address + u'@' + DefaultDomain);
    return qualified;
}

bool LikeAnyAddress(const QString &Address, const QStringList &Patterns)
{
    const QString address = Address.trimmed();
    for (const QString &pattern : Patterns)
        if (Like(address, pattern))
            return true;
    return false;
}

bool AnyAddressInDomain(const QStringList &Addresses, const QString &Domain)
{
    for (const QString &address : Addresses) {
        const qsizetype at = address.indexOf(u'@');
        if (at >= 0 && address.mid(at + 1).compare(Domain, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}
