#ifndef AGENT_SESSION_SERVERNAMES_H
#define AGENT_SESSION_SERVERNAMES_H

#include <string>

#include "orlindex/IdErrorCode.h"

namespace Kestrany::Agent {

/// The servers that the simulator has.
inline constexpr Server Servers[] = {TALIX_SERVER_PRODUCTION, TALIX_SERVER_STAGING, TALIX_SERVER_DEVELOPMENT};

/// The server's name in addresses, files and log lines; empty for a value that names no server.
std::string ServerName(Server server);
/// The server of a name, letter by letter; TALIX_SERVER_UNAVAILABLE for a name of none.
Server ServerOfName(const std::string& name);

} // namespace Kestrany::Agent

#endif
