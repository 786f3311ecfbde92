#pragma once
#include "foundation/Formatting.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

class clsXML;

// Sends an instant message to a Jabber ID through an XMPP server.
class clsActionJabber
{
public:
    // Under a new ID unless one is given, with a public server.
    explicit clsActionJabber(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    QString Server = QStringLiteral("jabber.org"); // host, or host:port
    qint16 MessageType = 0; // position in MessageTypeNames
    QString MessageSubject;
    QString MessageText;
    QString Username; // the sender's Jabber ID, or its local part on Server
    QString Password;
    QString ToJabberID;

    QString ClassName() const { return QStringLiteral("Jabber"); }
    QString ClassDesc() const { return QStringLiteral("Post To A Jabber Server"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);

    static QStringList MessageTypeNames();
};
