#ifndef AGENT_PROCESS_SERVERENVIRONMENT_H
#define AGENT_PROCESS_SERVERENVIRONMENT_H

#include <string>

namespace Kestrany::Agent {

/// Environment variable that names the scenario file.
inline constexpr wchar_t ScenarioVariable[] = L"PELLWICK_SCENARIO";

/// This process's environment as a block for a server process, which has another current folder and is to have the same
/// settings folder: the simulator's own variables name full paths there.
std::wstring ServerEnvironment();

} // namespace Kestrany::Agent

#endif
