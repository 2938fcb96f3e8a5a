#ifndef AGENT_CONNECTION_SERVERREQUESTS_H
#define AGENT_CONNECTION_SERVERREQUESTS_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace Kestrany::Agent {

// Requests to one server process, on that process's own pipe. Time limits in milliseconds.

namespace Operations {
inline constexpr char Ping[] = "ping";
inline constexpr char Freeze[] = "freeze";
} // namespace Operations

/// Returns the texts of the process's response by their names; nullopt if there is no response within the limit.
std::optional<std::map<std::string, std::string>> PingServer(unsigned long processId, std::int64_t limit);

/// Makes the process ignore requests, and being asked to quit, until it is thawed, like one that hangs. True if it is
/// frozen, also if it was before.
bool FreezeServer(unsigned long processId, std::int64_t limit);
/// Lets a frozen process go on. False if it was not frozen, or does not respond within the limit.
bool ThawServer(unsigned long processId, std::int64_t limit);

} // namespace Kestrany::Agent

#endif
