#include "ServerCommand.h"
#include "session/frmRemote.h"

bool ServerCommand(const QString &URL)
{
    return Remote().HTTPGet(URL) && !Remote().ReplyText.startsWith(QStringLiteral("Error:"));
}
