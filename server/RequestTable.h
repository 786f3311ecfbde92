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
//
// The console takes every status but 200 and 401 for a broken connection, so
// this is the one place that decides a reply's form: a refusal of a
// well-formed request (no right, no such record, a fragment that does not
// read, a rule broken, a store that failed) is status 200 with "Error: " and
// the reason; credentials that fail are 401 (WebService); only faults of the
// transport itself (an unknown request name, the wrong verb) keep a 4xx.
struct ServerReply
{
    int Status = 200;
    QString Text;
    QByteArray ContentType = "text/xml; charset=utf-8";
    // The handler has taken the connection over (the push stream); nothing
    // more is written for the request.
    bool ConnectionTaken = false;
    // A refusal: its location is "/error", which the console shows in its
    // message bar instead of taking the text for the record it asked for.
    bool Refused = false;

    static ServerReply Ok(const QString &Text = QStringLiteral("OK"));
    // Status 200, text "Error: " + Reason: a reason a person understands,
    // naming the record or the right that is missing.
    static ServerReply Refusal(const QString &Reason);
    // A 4xx of the transport, text "Error: " + Reason.
    static ServerReply Fault(int Status, const QString &Reason);
    // Status 401 with an empty body.
    static ServerReply Unauthorized();
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
    // A page a person opens from a link, which carries its own credential:
    // answered without a log-on, for a user with no rights.
    bool Public = false;
};

// The requests the web service answers, by name with extension in lower case
// ("getusers.xml").
class RequestTable
{
public:
    void Add(const QString &Name, RequestVerb Verb, RequestHandler Handler);
    void AddPublic(const QString &Name, RequestVerb Verb, RequestHandler Handler);
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
void AddMailRequests(RequestTable &Table);
void AddLogRequests(RequestTable &Table);
void AddSourceRequests(RequestTable &Table);
void AddProcessorRequests(RequestTable &Table);
void AddDeployRequests(RequestTable &Table);
void AddValidationPage(RequestTable &Table);
void AddNodeRequests(RequestTable &Table);

// The table of every family.
RequestTable BuildRequestTable();
