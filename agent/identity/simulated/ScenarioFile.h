#ifndef AGENT_IDENTITY_SIMULATED_SCENARIOFILE_H
#define AGENT_IDENTITY_SIMULATED_SCENARIOFILE_H

#include <optional>
#include <string>

#include "identity/simulated/Scenario.h"

namespace Kestrany::Agent::Simulated {

/// The scenario that a server process plays: what the file says that the environment variable PELLWICK_SCENARIO names,
/// else Pellwick.scenario.json beside the executable, else the built-in one.
struct ScenarioChoice
{
    std::optional<Scenario> scenario; ///< None where a file is there, and wrong.
    std::wstring file;                ///< Empty for the built-in one.
    std::string problem;              ///< What is wrong with the file.
};

ScenarioChoice ChooseScenario();

/// Reads one file.
ScenarioChoice LoadScenario(const std::wstring& file);

} // namespace Kestrany::Agent::Simulated

#endif
