#include "PopupPush.h"
#include "foundation/clsXML.h"

#include <QMutex>
#include <QMutexLocker>

namespace {

QMutex &Lock()
{
    static QMutex lock;
    return lock;
}

PopupPush::Receiver &Current()
{
    static PopupPush::Receiver receiver;
    return receiver;
}

} // namespace

void PopupPush::setReceiver(Receiver Value)
{
    const QMutexLocker locker(&Lock());
    Current() = std::move(Value);
}

QString PopupPush::Body(const QString &Settings, const QString &Message, const QString &Title)
{
    clsXML body;
    body.Append(Settings, QStringLiteral("Settings"));
    body.Append(Message, QStringLiteral("Message"));
    body.Append(Title, QStringLiteral("Title"));
    return body.GetXML();
}

bool PopupPush::Send(const QString &Settings, const QString &Message, const QString &Title)
{
    Receiver receiver;
    {
        const QMutexLocker locker(&Lock());
        receiver = Current();
    }
    if (!receiver)
        return false;
    receiver(Body(Settings, Message, Title));
    return true;
}
