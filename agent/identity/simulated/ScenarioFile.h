#ifndef AGENT_IDENTITY_SIMULATED_SCENARIOFILE_H
#define AGENT_IDENTITY_SIMULATED_SCENARIOFILE_H

#include <optional>
#include <string>

#include "identity/simulated/Scenario.h"

namespace Kestrany::Agent::Simulated {

/// The scenario of a server process: the file that the environment variable PELLWICK_SCENARIO names, else
/// Pellwick.scenario.json beside the executable, else the built-in one.
struct ScenarioChoice
{
    std::optional<Scenario> scenario; ///< nullopt if there is a file that is wrong.
    std::wstring file;                ///< Empty for the built-in one.
    std::string problem;              ///< What is wrong with the file.
};

ScenarioChoice ChooseScenario();

/// Reads one scenario file.
ScenarioChoice LoadScenario(const std::wstring& file);

} // namespace Kestrany::Agent::Simulated

#endif
