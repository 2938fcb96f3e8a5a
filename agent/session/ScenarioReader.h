#ifndef AGENT_SESSION_SCENARIOREADER_H
#define AGENT_SESSION_SCENARIOREADER_H

#include <optional>
#include <string>

#include "session/Scenario.h"

namespace Kestrany::Agent {

/// Reads the JSON form of docs/schema/simulator-scenario.schema.json. Nothing for any other text; `problem` then says
/// file, line, column, key and cause, and what is allowed there. `file` is for that message alone.
std::optional<Scenario> ReadScenario(const std::string& contents, const std::string& file, std::string& problem);

} // namespace Kestrany::Agent

#endif
