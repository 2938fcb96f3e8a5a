#ifndef AGENT_IDENTITY_LOGINFILE_H
#define AGENT_IDENTITY_LOGINFILE_H

#include <string>

#include "orlindex/IdErrorCode.h"

namespace Kestrany::Agent {

/// File of the login at `server` that hosts of the server identity `identity` share; empty where either is invalid. The
/// server process alone writes it.
std::wstring LoginFile(const std::string& identity, Server server);

/// File, empty for an invalid identity, whose lock hosts and tools take that look at the login files. The server does
/// not need it: it replaces them whole.
std::wstring LoginLockFile(const std::string& identity);

} // namespace Kestrany::Agent

#endif
