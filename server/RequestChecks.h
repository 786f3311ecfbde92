#pragma once
#include "RequestTable.h"

#include <QString>
#include <optional>

class clsUser;
class clsUserFolder;

// Forms of request input that handlers insist on, and the rights of a user
// over the records of others.

// Letters, digits, "-", "_", "{" and "}", 1 to 64 characters: the form of
// every record ID.
bool IsIdentifier(const QString &Text);
// The 400 reply when the query value of Key is no identifier; nothing when
// it is one, or when it is empty and Optional.
std::optional<ServerReply> CheckIdentifier(const RequestContext &Context, const QString &Key, bool Optional = false);
// The 400 reply when Body is no markup fragment of the section Tag (after
// an optional declaration line).
std::optional<ServerReply> CheckFragment(const QString &Body, const QString &Tag);
// A posted record that names no ID takes the one of the query key Key; one
// that names another gets the 400 reply. Record names the kind in the reply.
std::optional<ServerReply> CheckPostedID(QString &PostedID, const QString &QueryID, const QString &Record,
                                         const QString &Key, Qt::CaseSensitivity Case = Qt::CaseSensitive);

// The user is one Actor sees and manages: every user for a system
// administrator, the users of its organization that are no system
// administrators for an organization administrator, else only itself.
bool MayManageUser(const clsUser &Actor, const clsUser &Target);
// Every folder for a system administrator, the folders of its organization
// for an organization administrator, else the actor's own folders.
bool MayManageFolder(const clsUser &Actor, const clsUserFolder &Folder);
bool IsAdministrator(const clsUser &Actor);
// The number of system administrators.
int AdministratorCount();

// The 500 reply and the log line for a change the store did not take.
ServerReply StoreFailure(RequestContext &Context);
