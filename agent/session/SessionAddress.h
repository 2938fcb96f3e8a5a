#ifndef AGENT_SESSION_SESSIONADDRESS_H
#define AGENT_SESSION_SESSIONADDRESS_H

#include <cstdint>
#include <string>

#include "orlindex/IdErrorCode.h"

namespace Kestrany::Agent {

/// Where a server's addresses and tokens come from, as scheme and domain.
std::string ServerOrigin(Server server);

/// Whether `address` names a host over http or https.
bool IsWebAddress(const std::string& address);

/// The address that opens `target` for the bearer of `ticket`.
std::string SessionAddress(Server server, const std::string& target, std::uint16_t flag, const std::string& ticket);

} // namespace Kestrany::Agent

#endif
