#ifndef AGENT_IDENTITY_LOGINFILE_H
#define AGENT_IDENTITY_LOGINFILE_H

#include <string>

#include "orlindex/IdErrorCode.h"

namespace Kestrany::Agent {

/// File of the login at `server` that the hosts of a server identity share; empty if either is invalid. Only the server
/// process writes it.
std::wstring LoginFile(const std::string& identity, Server server);

/// File that hosts and tools lock while they read the login files; empty for an invalid identity. The server process
/// does not lock it: it replaces login files atomically.
std::wstring LoginLockFile(const std::string& identity);

} // namespace Kestrany::Agent

#endif
