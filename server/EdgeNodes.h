#pragma once
#include <QString>

// The server processes of the edge role that share one data folder. Each
// announces itself every few seconds by a file of its own in the folder
// "Nodes" of the data folder; a file not renewed for StaleSeconds belongs to
// a process that has ended. "getnodes.xml" lists the answering process as
// "127.0.0.1" and every other live one by its address.
namespace EdgeNodes {

constexpr int AnnounceSeconds = 10;
constexpr int StaleSeconds = 35;

// Writes this process's file: its name, address and build.
void Announce();
// Section "Nodes" with one "Node" (Type, Name, Host, Build) per edge process.
QString NodesXML();

} // namespace EdgeNodes
