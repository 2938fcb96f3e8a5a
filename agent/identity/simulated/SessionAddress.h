#ifndef AGENT_IDENTITY_SIMULATED_SESSIONADDRESS_H
#define AGENT_IDENTITY_SIMULATED_SESSIONADDRESS_H

#include <cstdint>
#include <string>

#include "orlindex/IdErrorCode.h"

namespace Kestrany::Agent::Simulated {

/// The origin of a server's addresses and tokens: scheme and domain.
std::string ServerOrigin(Server server);

/// The address that opens `target` in the session that `ticket` stands for.
std::string SessionAddress(Server server, const std::string& target, std::uint16_t flag, const std::string& ticket);

} // namespace Kestrany::Agent::Simulated

#endif
