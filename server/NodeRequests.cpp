// Requests on the server processes that share this server's store.
#include "EdgeNodes.h"
#include "RequestTable.h"

void AddNodeRequests(RequestTable &Table)
{
    Table.Add(QStringLiteral("getnodes.xml"), RequestVerb::Get,
              [](RequestContext &) { return ServerReply::Ok(EdgeNodes::NodesXML()); });
}
