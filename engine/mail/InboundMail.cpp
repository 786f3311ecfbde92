#include "InboundMail.h"
#include "foundation/Formatting.h"
#include "store/MessageMime.h"

#include <QLocale>

namespace {

// The header block of the message: up to the first empty line.
QString HeaderBlock(const QByteArray &Data)
{
    const qsizetype end = Data.indexOf("\r\n\r\n");
    return QString::fromUtf8(end < 0 ? Data : Data.left(end + 2));
}

} // namespace

QString InboundMail::UID() const
{
    QString id = MimeHeaderValue(HeaderBlock(Data), QStringLiteral("Message-ID")).trimmed();
    if (id.startsWith(u'<') && id.endsWith(u'>'))
        id = id.mid(1, id.size() - 2).trimmed();
    return id.isEmpty() || id.size() > 240 ? GUIDDigits() : id;
}

QByteArray InboundMail::WithReceivedLine(const QString &HostName, const QString &ID) const
{
    QString with = QStringLiteral("ESMTP");
    if (Encrypted)
        with += u'S';
    if (!AuthenticatedUser.isEmpty())
        with += u'A';
    const QString date = QLocale::c().toString(Received, QStringLiteral("ddd, ")) + Received.toString(Qt::RFC2822Date);
    const QString line = QStringLiteral("Received: from ") + Helo + QStringLiteral(" ([") + Peer.toString()
        + QStringLiteral("])\r\n\tby ") + HostName + QStringLiteral(" with ") + with + QStringLiteral(" id ") + ID
        + QStringLiteral(";\r\n\t") + date + QStringLiteral("\r\n");
    return line.toUtf8() + Data;
}

QStringList InboundMail::Accounts() const
{
    QStringList accounts;
    for (const InboundRecipient &recipient : Recipients)
        if (!recipient.AccountID.isEmpty() && !accounts.contains(recipient.AccountID))
            accounts << recipient.AccountID;
    return accounts;
}

QStringList InboundMail::RelayedAddresses() const
{
    QStringList addresses;
    for (const InboundRecipient &recipient : Recipients)
        if (recipient.AccountID.isEmpty())
            addresses << recipient.Address;
    return addresses;
}
