#pragma once
#include "session/clsUserClient.h"

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QString>

class clsUser;
class QTcpSocket;
struct ServerServices;

// What a request handler answers: a status, the text of the body and its
// type. Status replies of commands are "OK" or a text beginning "Error:".
struct ServerReply
{
    int Status = 200;
    QString Text;
    QByteArray ContentType = "text/xml; charset=utf-8";
    // The handler has taken the connection over (the push stream); nothing
    // more is written for the request.
    bool ConnectionTaken = false;

    static ServerReply Ok(const QString &Text = QStringLiteral("OK"));
    // Text "Error: " + Message. 400 for a malformed request, 403 for one the
    // user has no right to, 404 for a record that doesn't exist; 200 for a
    // command the server refuses by its rules.
    static ServerReply Error(int Status, const QString &Message);
};

// One request as a handler sees it: parsed, its user authenticated.
struct RequestContext
{
    const clsUserClient &Client;
    clsUser &User;
    QHostAddress Peer;
    QTcpSocket *Socket;
    ServerServices &Services;
};

enum class RequestVerb { Get, Post, Any };
using RequestHandler = ServerReply (*)(RequestContext &);

struct RequestRoute
{
    RequestVerb Verb = RequestVerb::Get;
    RequestHandler Handler = nullptr;
};

// The requests the web service answers, by name with extension in lower case
// ("getusers.xml").
class RequestTable
{
public:
    void Add(const QString &Name, RequestVerb Verb, RequestHandler Handler);
    const RequestRoute *Find(const QString &Name) const;

private:
    QHash<QString, RequestRoute> m_routes;
};

// Each family of requests lives in its own file and adds its rows here.
void AddSessionRequests(RequestTable &Table);
void AddUserRequests(RequestTable &Table);
void AddFolderRequests(RequestTable &Table);
void AddAccountRequests(RequestTable &Table);
void AddMessageRequests(RequestTable &Table);
void AddLogRequests(RequestTable &Table);
void AddSourceRequests(RequestTable &Table);

// The table of every family.
RequestTable BuildRequestTable();
