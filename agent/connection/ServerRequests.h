#ifndef AGENT_CONNECTION_SERVERREQUESTS_H
#define AGENT_CONNECTION_SERVERREQUESTS_H

#include <cstdint>
#include <optional>

#include "connection/KeyValueMessage.h"

namespace Kestrany::Agent {

// What one server process is asked for. Time limits in milliseconds.

/// What the process answers to a ping; nothing when it does not answer within the limit.
std::optional<Answers> PingServer(unsigned long processId, std::int64_t limit);

/// Makes the process stop answering and quitting until it is thawed, as one that hangs. True when it has stopped, also
/// when it had before.
bool FreezeServer(unsigned long processId, std::int64_t limit);
/// Lets a frozen process go on. False when it was not frozen, or does not go on within the limit.
bool ThawServer(unsigned long processId, std::int64_t limit);

} // namespace Kestrany::Agent

#endif
