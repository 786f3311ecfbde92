#include "RequestTable.h"

ServerReply ServerReply::Ok(const QString &Text)
{
    ServerReply reply;
    reply.Text = Text;
    return reply;
}

ServerReply ServerReply::Refusal(const QString &Reason)
{
    ServerReply reply = Fault(200, Reason);
    reply.Refused = true;
    return reply;
}

ServerReply ServerReply::Fault(int Status, const QString &Reason)
{
    ServerReply reply;
    reply.Status = Status;
    reply.Text = QStringLiteral("Error: ") + Reason;
    reply.ContentType = "text/plain; charset=utf-8";
    return reply;
}

ServerReply ServerReply::Unauthorized()
{
    ServerReply reply;
    reply.Status = 401;
    return reply;
}

void RequestTable::Add(const QString &Name, RequestVerb Verb, RequestHandler Handler)
{
    m_routes.insert(Name.toLower(), RequestRoute{Verb, Handler});
}

void RequestTable::AddPublic(const QString &Name, RequestVerb Verb, RequestHandler Handler)
{
    m_routes.insert(Name.toLower(), RequestRoute{Verb, Handler, true});
}

const RequestRoute *RequestTable::Find(const QString &Name) const
{
    const auto found = m_routes.constFind(Name.toLower());
    return found == m_routes.constEnd() ? nullptr : &found.value();
}

// A new family of requests (accounts and triggers, messages, logs) is one
// more line here and a file of its own.
RequestTable BuildRequestTable()
{
    RequestTable table;
    AddSessionRequests(table);
    AddUserRequests(table);
    AddFolderRequests(table);
    AddAccountRequests(table);
    AddMessageRequests(table);
    AddMailRequests(table);
    AddLogRequests(table);
    AddSourceRequests(table);
    AddProcessorRequests(table);
    AddDeployRequests(table);
    AddValidationPage(table);
    AddNodeRequests(table);
    return table;
}
