#ifndef AGENT_SERVER_CHOOSESOURCE_H
#define AGENT_SERVER_CHOOSESOURCE_H

#include <memory>
#include <string>

#include "identity/IdentitySource.h"
#include "platform/Base.h"
#include "platform/LogFile.h"

namespace Kestrany::Agent {

// The one place that knows which sources of identity there are.

/// Makes the source that this server process serves: OpenID Connect providers if there is a configuration file beside
/// the executable, else simulated users. `wake`: set when the source has something to do. Throws std::runtime_error if
/// the source cannot be made.
std::unique_ptr<IdentitySource> ChooseIdentitySource(const LogSink& log, HANDLE wake);

/// Checks a scenario file of the simulated source. Returns why it is not valid, empty if it is.
std::string CheckScenario(const std::wstring& file);

} // namespace Kestrany::Agent

#endif
