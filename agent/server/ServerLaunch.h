#ifndef AGENT_SERVER_SERVERLAUNCH_H
#define AGENT_SERVER_SERVERLAUNCH_H

#include <string>
#include <vector>

namespace Kestrany::Agent {

// What a server process is launched with.

/// A command line that the program's runtime splits into exactly these texts.
std::wstring JoinCommandLine(const std::vector<std::wstring>& texts);

/// This process's environment as a block for a server process. That process has another current folder and must have
/// the same settings folder: the agent's own variables hold full paths in the block.
std::wstring ServerEnvironment();

} // namespace Kestrany::Agent

#endif
