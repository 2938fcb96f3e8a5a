#ifndef AGENT_SERVER_CHOOSESOURCE_H
#define AGENT_SERVER_CHOOSESOURCE_H

#include <memory>
#include <string>

#include "identity/IdentitySource.h"
#include "platform/LogFile.h"

namespace Kestrany::Agent {

// The one place that knows which sources of identity there are.

/// Makes the source that this server process serves. Throws std::runtime_error if it cannot be made.
std::unique_ptr<IdentitySource> ChooseIdentitySource(const LogSink& log);

/// Checks a scenario file of the simulated source. Returns why it is not valid, empty if it is.
std::string CheckScenario(const std::wstring& file);

} // namespace Kestrany::Agent

#endif
