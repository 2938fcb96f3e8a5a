#ifndef AGENT_PROCESS_COMMANDLINE_H
#define AGENT_PROCESS_COMMANDLINE_H

#include <string>
#include <vector>

namespace Kestrany::Agent {

/// A command line that the program's runtime splits into exactly these texts again.
std::wstring JoinCommandLine(const std::vector<std::wstring>& texts);

/// This process's arguments after the program's name.
std::vector<std::string> ProcessArguments();

} // namespace Kestrany::Agent

#endif
